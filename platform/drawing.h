// The drawing layer's internal state: what a drawing object and a device context hold. Only
// platform/ sees Cairo.
#ifndef QV5_PLATFORM_DRAWING_H
#define QV5_PLATFORM_DRAWING_H

#include "qv5/hostfw.h"

#include "platform/raster.h"

#include <cairo.h>

#include <memory>
#include <string>
#include <vector>

namespace qv5::detail {

/// The largest side of a bitmap, in pixels (Cairo's own limit).
inline constexpr int kBitmapSideLimit = 32767;
/// The most pixels one bitmap may hold (256 MB of 32-bit pixels).
inline constexpr long long kBitmapPixelLimit = 1LL << 26;
/// The pixel size of the default font.
inline constexpr double kTextPixelSize = 11.0;
/// The default font's family, installed with the library's set-up so that text draws the same
/// everywhere.
inline constexpr const char* kTextFamily = "DejaVu Sans";

enum class gdi_kind { bitmap, pen, brush };

/// A bitmap, pen or brush. Shared between the object the host holds and the contexts it is
/// selected into, so that deleting either never leaves the other dangling.
struct gdi_object {
    gdi_kind kind = gdi_kind::bitmap;
    bool stock = false; ///< a context's default object: never released, never drawn into
    cairo_surface_t* surface = nullptr; ///< bitmap pixels (null for the default bitmap)
    int width = 0;
    int height = 0;
    int style = PS_SOLID; ///< pen
    int pen_width = 1;    ///< pen, pixels
    COLORREF colour = 0;  ///< pen or brush

    gdi_object() = default;
    gdi_object(const gdi_object&) = delete;
    gdi_object& operator=(const gdi_object&) = delete;
    ~gdi_object();
};

/// Reaches the shared object behind a host-framework drawing object.
struct gdi_access {
    static std::shared_ptr<gdi_object>& object(CGdiObject& o) { return o.m_object; }
    static const std::shared_ptr<gdi_object>& object(const CGdiObject& o) { return o.m_object; }
};

/// The pen a call was drawn with, kept for the vector replay.
struct recorded_pen {
    int style = PS_SOLID;
    int width = 1;
    COLORREF colour = 0;
};

/// One drawing call, kept so that it can be replayed as vector drawing.
struct recorded_call {
    enum class kind { fill_rect, line, polyline, polygon, text } what = kind::fill_rect;
    std::vector<pixel_point> points; ///< line, polyline, polygon
    RECT rect{};                     ///< fill_rect; text: the clip rectangle
    recorded_pen pen;
    COLORREF fill = 0; ///< fill_rect and polygon colour
    std::string text;  ///< UTF-8
    int x = 0;         ///< text left
    int y = 0;         ///< text top
    COLORREF text_colour = 0;
    bool opaque = false; ///< text on its background colour
    COLORREF background = 0;
    bool clip = false; ///< text clipped to rect
};

/// What a device context holds.
struct dc_state {
    bool memory = false;
    std::shared_ptr<gdi_object> bitmap;
    std::shared_ptr<gdi_object> pen;
    std::shared_ptr<gdi_object> brush;
    CBitmap* bitmap_handle = nullptr;
    CPen* pen_handle = nullptr;
    CBrush* brush_handle = nullptr;
    cairo_t* cairo = nullptr; ///< on the selected bitmap, null when it takes no drawing
    CPoint position;
    int background_mode = OPAQUE;
    COLORREF background = RGB(255, 255, 255);
    COLORREF text_colour = RGB(0, 0, 0);
    bool recording = false;
    std::vector<recorded_call> calls;
    std::vector<pixel_span> scratch; ///< reused between calls

    dc_state();
    dc_state(const dc_state&) = delete;
    dc_state& operator=(const dc_state&) = delete;
    ~dc_state();
};

} // namespace qv5::detail

#endif // QV5_PLATFORM_DRAWING_H
