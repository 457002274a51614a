// Which pixels the drawing layer's lines and polygons cover: exact integer rules, independent of
// any graphics library, so that a picture can be checked pixel by pixel.
#ifndef QV5_PLATFORM_RASTER_H
#define QV5_PLATFORM_RASTER_H

#include <vector>

namespace qv5::detail {

/// Coordinates are limited to +-2^27 pixels, as the Windows graphics engine limits them; this
/// also keeps every product of the exact rules below within 64 bits.
inline constexpr int kCoordinateLimit = 1 << 27;

/// A run of `length` pixels of row y starting at column x.
struct pixel_span {
    int x;
    int y;
    int length;
    bool operator==(const pixel_span&) const = default;
};

/// A vertex of a polygon or polyline, in pixels.
struct pixel_point {
    int x;
    int y;
};

/// Limits a coordinate to +-kCoordinateLimit.
int clamp_coordinate(long long value);

/// The pixels of a one-pixel line from (x1, y1) to (x2, y2) inside a width x height bitmap: one
/// pixel per column (per row when steeper than 45 degrees), the nearest to the line, ties to the
/// upper or the left pixel; the first point drawn, the last not.
void thin_line_spans(int x1, int y1, int x2, int y2, int width, int height,
                     std::vector<pixel_span>& spans);

/// True when pixel (px, py) lies within pen_width / 2 of the segment (x1, y1)-(x2, y2), a
/// centre exactly on the outline counting when it is on the top or left side.
bool wide_line_covers(int x1, int y1, int x2, int y2, int pen_width, int px, int py);

/// The pixels of a line of pen_width (2 or more) pixels, round-ended, inside the bitmap.
void wide_line_spans(int x1, int y1, int x2, int y2, int pen_width, int width, int height,
                     std::vector<pixel_span>& spans);

/// The pixels inside a closed polygon by the even-odd rule, centres on left and top edges
/// included and on right and bottom edges excluded, inside the bitmap.
void polygon_spans(const std::vector<pixel_point>& points, int width, int height,
                   std::vector<pixel_span>& spans);

} // namespace qv5::detail

#endif // QV5_PLATFORM_RASTER_H
