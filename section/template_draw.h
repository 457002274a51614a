// The picture of a template side, planned on plain values: extents, scale, the pixel mapping and
// every shape to draw, in pixels. CGeoTemplate::DrawSection hands the plan to a device context.
// Internal header; never installed.
#ifndef QV5_SECTION_TEMPLATE_DRAW_H
#define QV5_SECTION_TEMPLATE_DRAW_H

#include "qv5/hostfw.h"
#include "section/template_math.h"

#include <array>
#include <cstddef>
#include <vector>

namespace qv5::detail {

/// Left margin of the picture, pixels: the centreline is drawn at x = 10.
inline constexpr int kPictureMargin = 10;
/// The extents are drawn with a fifth more room than they need.
inline constexpr double kPictureRoom = 1.2;
/// A vertical range narrower than this (metres) is flat: the picture is then width-bound.
inline constexpr double kFlatRange = 0.0005;
/// Length of the drawn cut and fill slope lines, as a fraction of the horizontal extent to the
/// end of the ditch (the room the 1.2 factor leaves beyond it).
inline constexpr double kSlopeGlyphFraction = 0.2;
/// Room kept beyond a curb's anchor, metres.
inline constexpr double kCurbRoom = 0.5;
/// Depth of a curb below its anchor, metres (face 0.15 plus base 0.2).
inline constexpr double kCurbDepth = 0.35;
/// Curb profile: top width and face height, metres.
inline constexpr double kCurbTop = 0.15;
/// Curb profile: back offset from the anchor and base height, metres.
inline constexpr double kCurbBack = 0.2;
/// Curb profile: length of the base, metres (it reaches 0.2 in front of the anchor).
inline constexpr double kCurbBase = 0.4;
/// Half the size of a feature's cross, pixels.
inline constexpr int kCrossHalf = 5;
/// A feature's name starts this many pixels right of and below its position.
inline constexpr int kLabelOffset = 6;
/// Right edge of a feature's name rectangle, pixels from its position.
inline constexpr int kLabelRight = 105;
/// Bottom edge of a feature's name rectangle, pixels from its position.
inline constexpr int kLabelBottom = 17;
/// Width of the surface, slope and feature pens, pixels.
inline constexpr int kPictureLineWidth = 2;
/// Pixel coordinates are limited to +-2^30: anything beyond lies far outside every bitmap.
inline constexpr long long kFarPixel = 1LL << 30;

inline constexpr COLORREF kPictureBackground = RGB(0xFF, 0xFF, 0xFF);
inline constexpr COLORREF kSurfaceColour = RGB(0x00, 0xAF, 0x00);
inline constexpr COLORREF kFeatureColour = RGB(0xC0, 0x00, 0x00);
inline constexpr COLORREF kCurbColour = RGB(0xA0, 0xA0, 0xA0);

/// What the picture must show, in metres.
struct picture_extents {
    double h;            ///< horizontal extent
    double v_min;        ///< lowest height
    double v_max;        ///< highest height
    double slope_length; ///< length of the drawn cut and fill lines (0 without a side slope)
};

/// Extents of a template's picture: the shoulder (widened for a side slope's ditch and slope
/// lines), the running height after each element, and every curb with its room.
picture_extents section_extents(const ChainEntry* entries, std::size_t count, double h_shoulder,
                                double v_shoulder);

/// Scale and vertical placement of a picture.
struct picture_scale {
    double scale;      ///< pixels per metre
    int y0;            ///< pixel row of height 0
    bool height_bound; ///< the vertical range fills the height
    bool drawable;     ///< scale and row are finite numbers
};

/// The scale that fits the extents into width x height pixels and the row of height 0.
picture_scale section_scale(const picture_extents& extents, int width, int height);

/// Integer part (toward zero) of a pixel quantity, kept within +-2^30; NaN lands at -2^30.
long long pixel_part(double value);

/// The pixel of section point (h, v): x = int(h scale) + 10, y = y0 - int(v scale).
POINT section_pixel(const picture_scale& scale, double h, double v);

/// A feature's cross and name.
struct feature_mark {
    POINT at;
    CString name;
};

/// Every shape of a template's picture, in pixels.
struct section_picture {
    picture_scale scale{};
    std::vector<std::array<POINT, 7>> curbs;
    std::vector<POINT> surface; ///< starts at the centreline (10, y0)
    bool side_slope = false;
    bool ditch = false;
    POINT shoulder{};
    POINT ditch_end{};
    POINT cut_end{};
    POINT fill_end{};
    std::vector<feature_mark> features;
};

/// Plans the picture of a template's elements in width x height pixels.
section_picture plan_section(const ChainEntry* entries, std::size_t count, double h_shoulder,
                             double v_shoulder, int width, int height);

} // namespace qv5::detail

#endif // QV5_SECTION_TEMPLATE_DRAW_H
