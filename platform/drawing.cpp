// The host-framework drawing layer over Cairo.
//
// Bitmaps are Cairo image surfaces of 32-bit pixels. Lines and polygons are not stroked by
// Cairo: their pixels are decided by the exact rules of platform/raster.cpp (the Windows
// graphics engine's rules) and handed to Cairo as pixel-aligned rectangles, which Cairo fills
// exactly with antialiasing off. Text is drawn by Cairo in DejaVu Sans with antialiasing off, so
// every pixel of a picture is one of the colours drawn. A context can also keep its calls and
// replay them onto a Cairo SVG surface as vector drawing.
#include "platform/drawing.h"

#include <cairo-svg.h>

#include <algorithm>
#include <cmath>
#include <cstdint>
#include <utility>

namespace qv5::detail {

gdi_object::~gdi_object() {
    if (surface != nullptr) {
        cairo_surface_destroy(surface);
    }
}

dc_state::dc_state() = default;

dc_state::~dc_state() {
    if (cairo != nullptr) {
        cairo_destroy(cairo);
    }
}

} // namespace qv5::detail

namespace {

using namespace qv5::detail;

/// The default objects of every context, as the framework's stock objects: a 1 x 1 monochrome
/// bitmap that takes no drawing, a black one-pixel pen, a white brush. They never change and are
/// never released, so a pointer to one stays valid for the life of the process.
struct stock_objects {
    CBitmap bitmap;
    CPen pen;
    CBrush brush;

    stock_objects() {
        auto b = std::make_shared<gdi_object>();
        b->kind = gdi_kind::bitmap;
        b->stock = true;
        b->width = 1;
        b->height = 1;
        gdi_access::object(bitmap) = std::move(b);
        auto p = std::make_shared<gdi_object>();
        p->kind = gdi_kind::pen;
        p->stock = true;
        p->colour = RGB(0, 0, 0);
        gdi_access::object(pen) = std::move(p);
        auto r = std::make_shared<gdi_object>();
        r->kind = gdi_kind::brush;
        r->stock = true;
        r->colour = RGB(255, 255, 255);
        gdi_access::object(brush) = std::move(r);
    }
};

stock_objects& stock() {
    // Never destroyed: contexts living in other static objects may still point at them.
    static stock_objects* const objects = new stock_objects;
    return *objects;
}

void set_source(cairo_t* cairo, COLORREF colour) {
    cairo_set_source_rgb(cairo, GetRValue(colour) / 255.0, GetGValue(colour) / 255.0,
                         GetBValue(colour) / 255.0);
}

/// Selects the default font into a Cairo context; `pixel_exact` turns antialiasing off.
void select_font(cairo_t* cairo, bool pixel_exact) {
    cairo_select_font_face(cairo, kTextFamily, CAIRO_FONT_SLANT_NORMAL, CAIRO_FONT_WEIGHT_NORMAL);
    cairo_set_font_size(cairo, kTextPixelSize);
    cairo_font_options_t* options = cairo_font_options_create();
    cairo_font_options_set_hint_metrics(options, CAIRO_HINT_METRICS_ON);
    if (pixel_exact) {
        cairo_font_options_set_antialias(options, CAIRO_ANTIALIAS_NONE);
        cairo_font_options_set_hint_style(options, CAIRO_HINT_STYLE_FULL);
    }
    cairo_set_font_options(cairo, options);
    cairo_font_options_destroy(options);
}

void fill_spans(cairo_t* cairo, const std::vector<pixel_span>& spans, COLORREF colour) {
    if (spans.empty()) {
        return;
    }
    for (const pixel_span& span : spans) {
        cairo_rectangle(cairo, span.x, span.y, span.length, 1);
    }
    set_source(cairo, colour);
    cairo_fill(cairo);
}

void select_bitmap(dc_state& state, std::shared_ptr<gdi_object> bitmap, CBitmap* handle) {
    if (state.cairo != nullptr) {
        cairo_destroy(state.cairo);
        state.cairo = nullptr;
    }
    state.bitmap = std::move(bitmap);
    state.bitmap_handle = handle;
    state.calls.clear();
    if (state.bitmap && state.bitmap->surface != nullptr) {
        state.cairo = cairo_create(state.bitmap->surface);
        cairo_set_antialias(state.cairo, CAIRO_ANTIALIAS_NONE);
        cairo_set_fill_rule(state.cairo, CAIRO_FILL_RULE_WINDING);
        select_font(state.cairo, true);
    }
}

void select_defaults(dc_state& state, bool memory) {
    state.memory = memory;
    if (memory) {
        select_bitmap(state, gdi_access::object(stock().bitmap), &stock().bitmap);
    } else {
        select_bitmap(state, nullptr, nullptr);
    }
    state.pen = gdi_access::object(stock().pen);
    state.pen_handle = &stock().pen;
    state.brush = gdi_access::object(stock().brush);
    state.brush_handle = &stock().brush;
    state.position = CPoint();
    state.background_mode = OPAQUE;
    state.background = RGB(255, 255, 255);
    state.text_colour = RGB(0, 0, 0);
    state.recording = false;
}

recorded_pen pen_of(const dc_state& state) {
    return {state.pen->style, state.pen->pen_width, state.pen->colour};
}

bool recording(const dc_state& state) {
    return state.recording && state.cairo != nullptr;
}

/// The pixels of one segment drawn with a pen, added to `spans`.
void segment_spans(const recorded_pen& pen, const pixel_point& a, const pixel_point& b, int width,
                   int height, std::vector<pixel_span>& spans) {
    if (pen.width <= 1) {
        thin_line_spans(a.x, a.y, b.x, b.y, width, height, spans);
    } else {
        wide_line_spans(a.x, a.y, b.x, b.y, pen.width, width, height, spans);
    }
}

/// Draws connected segments through `points` with the selected pen (closed: back to the first).
void draw_lines(dc_state& state, const std::vector<pixel_point>& points, bool closed) {
    const recorded_pen pen = pen_of(state);
    if (state.cairo == nullptr || pen.style == PS_NULL || points.empty()) {
        return;
    }
    state.scratch.clear();
    const std::size_t count = closed ? points.size() : points.size() - 1;
    for (std::size_t i = 0; i < count; ++i) {
        segment_spans(pen, points[i], points[(i + 1) % points.size()], state.bitmap->width,
                      state.bitmap->height, state.scratch);
    }
    fill_spans(state.cairo, state.scratch, pen.colour);
}

template <class Point>
std::vector<pixel_point> pixel_points(const Point* points, int count) {
    std::vector<pixel_point> result;
    result.reserve(static_cast<std::size_t>(count));
    for (int i = 0; i < count; ++i) {
        result.push_back({clamp_coordinate(points[i].x), clamp_coordinate(points[i].y)});
    }
    return result;
}

struct text_metrics {
    int ascent;  ///< pixels from the top of the cell to the baseline
    int height;  ///< pixels of the cell
    int advance; ///< pixels from the start of the text to its end
};

text_metrics measure_text(cairo_t* cairo, const std::string& utf8) {
    cairo_font_extents_t font{};
    cairo_font_extents(cairo, &font);
    cairo_text_extents_t text{};
    cairo_text_extents(cairo, utf8.c_str(), &text);
    return {static_cast<int>(std::lround(font.ascent)),
            static_cast<int>(std::lround(font.ascent + font.descent)),
            static_cast<int>(std::lround(text.x_advance))};
}

/// Writes text with its cell's top-left corner at (x, top); with `clip`, only inside `rect`.
/// Cairo works in 24.8 fixed point, so text far off the bitmap is not handed to it at all.
int draw_text(cairo_t* cairo, int width, int height, const recorded_call& call) {
    const text_metrics metrics = measure_text(cairo, call.text);
    const long long right = static_cast<long long>(call.x) + metrics.advance + metrics.height;
    const long long bottom = static_cast<long long>(call.y) + 2LL * metrics.height;
    if (call.x >= width || call.y >= height || right < 0 || bottom < 0) {
        return metrics.height;
    }
    cairo_save(cairo);
    if (call.clip) {
        const RECT& r = call.rect;
        const double left = std::clamp(r.left, -1, width + 1);
        const double top = std::clamp(r.top, -1, height + 1);
        const double rr = std::clamp(r.right, -1, width + 1);
        const double rb = std::clamp(r.bottom, -1, height + 1);
        cairo_rectangle(cairo, left, top, std::max(0.0, rr - left), std::max(0.0, rb - top));
        cairo_clip(cairo);
    }
    if (call.opaque) {
        cairo_rectangle(cairo, call.x, call.y, metrics.advance, metrics.height);
        set_source(cairo, call.background);
        cairo_fill(cairo);
    }
    set_source(cairo, call.text_colour);
    cairo_move_to(cairo, call.x, call.y + metrics.ascent);
    cairo_show_text(cairo, call.text.c_str());
    cairo_new_path(cairo);
    cairo_restore(cairo);
    return metrics.height;
}

/// Replays one kept call as vector drawing. Pixel (x, y) is the unit square from (x, y), so a
/// pixel's centre is (x + 0.5, y + 0.5).
void replay(cairo_t* cairo, int width, int height, const recorded_call& call) {
    auto trace = [&](bool closed) {
        cairo_new_path(cairo);
        for (const pixel_point& p : call.points) {
            cairo_line_to(cairo, p.x + 0.5, p.y + 0.5);
        }
        if (closed) {
            cairo_close_path(cairo);
        }
    };
    auto stroke = [&]() {
        if (call.pen.style == PS_NULL) {
            cairo_new_path(cairo);
            return;
        }
        cairo_set_line_width(cairo, std::max(1, call.pen.width));
        const bool round = call.pen.width > 1;
        cairo_set_line_cap(cairo, round ? CAIRO_LINE_CAP_ROUND : CAIRO_LINE_CAP_BUTT);
        cairo_set_line_join(cairo, round ? CAIRO_LINE_JOIN_ROUND : CAIRO_LINE_JOIN_MITER);
        set_source(cairo, call.pen.colour);
        cairo_stroke(cairo);
    };
    switch (call.what) {
    case recorded_call::kind::fill_rect:
        cairo_rectangle(cairo, call.rect.left, call.rect.top, call.rect.right - call.rect.left,
                        call.rect.bottom - call.rect.top);
        set_source(cairo, call.fill);
        cairo_fill(cairo);
        break;
    case recorded_call::kind::line:
    case recorded_call::kind::polyline:
        trace(false);
        stroke();
        break;
    case recorded_call::kind::polygon:
        trace(true);
        cairo_set_fill_rule(cairo, CAIRO_FILL_RULE_EVEN_ODD);
        set_source(cairo, call.fill);
        cairo_fill_preserve(cairo);
        stroke();
        break;
    case recorded_call::kind::text:
        draw_text(cairo, width, height, call);
        break;
    }
}

} // namespace

// ---- drawing objects ---------------------------------------------------------------------------

CGdiObject::CGdiObject() = default;

CGdiObject::~CGdiObject() = default;

BOOL CGdiObject::DeleteObject() {
    if (!m_object || m_object->stock) {
        return 0;
    }
    m_object.reset();
    return 1;
}

BOOL CGdiObject::IsCreated() const {
    return m_object ? 1 : 0;
}

BOOL CBitmap::CreateCompatibleBitmap(CDC* dc, int width, int height) {
    if (m_object || dc == nullptr || width <= 0 || height <= 0 || width > kBitmapSideLimit ||
        height > kBitmapSideLimit ||
        static_cast<long long>(width) * static_cast<long long>(height) > kBitmapPixelLimit) {
        return 0;
    }
    cairo_surface_t* surface = cairo_image_surface_create(CAIRO_FORMAT_RGB24, width, height);
    if (cairo_surface_status(surface) != CAIRO_STATUS_SUCCESS) {
        cairo_surface_destroy(surface);
        return 0;
    }
    auto object = std::make_shared<gdi_object>();
    object->kind = gdi_kind::bitmap;
    object->surface = surface;
    object->width = width;
    object->height = height;
    m_object = std::move(object);
    return 1;
}

int CBitmap::GetBitmap(BITMAP* bitmap) const {
    if (bitmap == nullptr || !m_object) {
        return 0;
    }
    *bitmap = BITMAP{};
    bitmap->bmWidth = m_object->width;
    bitmap->bmHeight = m_object->height;
    bitmap->bmPlanes = 1;
    if (m_object->surface != nullptr) {
        bitmap->bmWidthBytes = cairo_image_surface_get_stride(m_object->surface);
        bitmap->bmBitsPixel = 32;
    } else {
        bitmap->bmWidthBytes = 2; // a monochrome row is padded to 16 bits
        bitmap->bmBitsPixel = 1;
    }
    return static_cast<int>(sizeof(BITMAP));
}

BOOL CPen::CreatePen(int style, int width, COLORREF colour) {
    if (m_object || (style != PS_SOLID && style != PS_NULL) || width < 0) {
        return 0;
    }
    auto object = std::make_shared<gdi_object>();
    object->kind = gdi_kind::pen;
    object->style = style;
    object->pen_width = std::max(1, width);
    object->colour = colour;
    m_object = std::move(object);
    return 1;
}

BOOL CBrush::CreateSolidBrush(COLORREF colour) {
    if (m_object) {
        return 0;
    }
    auto object = std::make_shared<gdi_object>();
    object->kind = gdi_kind::brush;
    object->colour = colour;
    m_object = std::move(object);
    return 1;
}

// ---- device context ----------------------------------------------------------------------------

CDC::CDC() : m_state(std::make_unique<dc_state>()) {
    select_defaults(*m_state, false);
}

CDC::~CDC() = default;

BOOL CDC::CreateCompatibleDC(CDC* /*dc*/) {
    if (m_state->memory) {
        return 0;
    }
    select_defaults(*m_state, true);
    return 1;
}

BOOL CDC::DeleteDC() {
    if (!m_state->memory) {
        return 0;
    }
    select_defaults(*m_state, false);
    return 1;
}

CBitmap* CDC::SelectObject(CBitmap* bitmap) {
    if (!m_state->memory || bitmap == nullptr || !gdi_access::object(*bitmap)) {
        return nullptr;
    }
    CBitmap* previous = m_state->bitmap_handle;
    select_bitmap(*m_state, gdi_access::object(*bitmap), bitmap);
    return previous;
}

CPen* CDC::SelectObject(CPen* pen) {
    if (pen == nullptr || !gdi_access::object(*pen)) {
        return nullptr;
    }
    CPen* previous = m_state->pen_handle;
    m_state->pen = gdi_access::object(*pen);
    m_state->pen_handle = pen;
    return previous;
}

CBrush* CDC::SelectObject(CBrush* brush) {
    if (brush == nullptr || !gdi_access::object(*brush)) {
        return nullptr;
    }
    CBrush* previous = m_state->brush_handle;
    m_state->brush = gdi_access::object(*brush);
    m_state->brush_handle = brush;
    return previous;
}

void CDC::FillSolidRect(int x, int y, int cx, int cy, COLORREF colour) {
    dc_state& state = *m_state;
    state.background = colour;
    if (state.cairo == nullptr || cx <= 0 || cy <= 0) {
        return;
    }
    const long long left = std::max<long long>(0, x);
    const long long top = std::max<long long>(0, y);
    const long long right =
        std::min<long long>(state.bitmap->width, static_cast<long long>(x) + cx);
    const long long bottom =
        std::min<long long>(state.bitmap->height, static_cast<long long>(y) + cy);
    if (left >= right || top >= bottom) {
        return;
    }
    const RECT clipped{static_cast<int>(left), static_cast<int>(top), static_cast<int>(right),
                       static_cast<int>(bottom)};
    cairo_rectangle(state.cairo, clipped.left, clipped.top, clipped.right - clipped.left,
                    clipped.bottom - clipped.top);
    set_source(state.cairo, colour);
    cairo_fill(state.cairo);
    if (recording(state)) {
        recorded_call call;
        call.what = recorded_call::kind::fill_rect;
        call.rect = clipped;
        call.fill = colour;
        state.calls.push_back(std::move(call));
    }
}

void CDC::FillSolidRect(const RECT* rect, COLORREF colour) {
    if (rect == nullptr) {
        return;
    }
    const long long cx = static_cast<long long>(rect->right) - rect->left;
    const long long cy = static_cast<long long>(rect->bottom) - rect->top;
    FillSolidRect(rect->left, rect->top, static_cast<int>(std::clamp<long long>(cx, -1, INT32_MAX)),
                  static_cast<int>(std::clamp<long long>(cy, -1, INT32_MAX)), colour);
}

BOOL CDC::Polygon(const POINT* points, int count) {
    if (points == nullptr || count < 2) {
        return 0;
    }
    dc_state& state = *m_state;
    if (state.cairo == nullptr) {
        return 1;
    }
    const std::vector<pixel_point> vertices = pixel_points(points, count);
    state.scratch.clear();
    polygon_spans(vertices, state.bitmap->width, state.bitmap->height, state.scratch);
    fill_spans(state.cairo, state.scratch, state.brush->colour);
    draw_lines(state, vertices, true);
    if (recording(state)) {
        recorded_call call;
        call.what = recorded_call::kind::polygon;
        call.points = vertices;
        call.pen = pen_of(state);
        call.fill = state.brush->colour;
        state.calls.push_back(std::move(call));
    }
    return 1;
}

BOOL CDC::Polygon(const CPoint* points, int count) {
    if (points == nullptr || count < 2) {
        return 0;
    }
    const std::vector<POINT> plain(points, points + count);
    return Polygon(plain.data(), count);
}

BOOL CDC::Polyline(const POINT* points, int count) {
    if (points == nullptr || count < 2) {
        return 0;
    }
    dc_state& state = *m_state;
    if (state.cairo == nullptr) {
        return 1;
    }
    const std::vector<pixel_point> vertices = pixel_points(points, count);
    draw_lines(state, vertices, false);
    if (recording(state)) {
        recorded_call call;
        call.what = recorded_call::kind::polyline;
        call.points = vertices;
        call.pen = pen_of(state);
        state.calls.push_back(std::move(call));
    }
    return 1;
}

BOOL CDC::Polyline(const CPoint* points, int count) {
    if (points == nullptr || count < 2) {
        return 0;
    }
    const std::vector<POINT> plain(points, points + count);
    return Polyline(plain.data(), count);
}

CPoint CDC::MoveTo(int x, int y) {
    const CPoint previous = m_state->position;
    m_state->position = CPoint(x, y);
    return previous;
}

BOOL CDC::LineTo(int x, int y) {
    dc_state& state = *m_state;
    const std::vector<pixel_point> ends{
        {clamp_coordinate(state.position.x), clamp_coordinate(state.position.y)},
        {clamp_coordinate(x), clamp_coordinate(y)}};
    state.position = CPoint(x, y);
    if (state.cairo == nullptr) {
        return 1;
    }
    draw_lines(state, ends, false);
    if (recording(state)) {
        recorded_call call;
        call.what = recorded_call::kind::line;
        call.points = ends;
        call.pen = pen_of(state);
        state.calls.push_back(std::move(call));
    }
    return 1;
}

int CDC::SetBkMode(int mode) {
    if (mode != TRANSPARENT && mode != OPAQUE) {
        return 0;
    }
    return std::exchange(m_state->background_mode, mode);
}

int CDC::GetBkMode() const {
    return m_state->background_mode;
}

COLORREF CDC::SetBkColor(COLORREF colour) {
    return std::exchange(m_state->background, colour);
}

COLORREF CDC::SetTextColor(COLORREF colour) {
    return std::exchange(m_state->text_colour, colour);
}

int CDC::DrawText(const CString& text, RECT* rect, unsigned int format) {
    if (rect == nullptr) {
        return 0;
    }
    dc_state& state = *m_state;
    recorded_call call;
    call.what = recorded_call::kind::text;
    call.text = text.ToUtf8();
    call.x = rect->left;
    call.y = rect->top;
    call.rect = *rect;
    call.clip = (format & DT_NOCLIP) == 0;
    call.text_colour = state.text_colour;
    call.opaque = state.background_mode == OPAQUE;
    call.background = state.background;
    int height = 0;
    if (state.cairo == nullptr) {
        // Measured on a scratch surface: the height does not depend on where text goes.
        cairo_surface_t* surface = cairo_image_surface_create(CAIRO_FORMAT_RGB24, 1, 1);
        cairo_t* cairo = cairo_create(surface);
        select_font(cairo, true);
        height = measure_text(cairo, call.text).height;
        cairo_destroy(cairo);
        cairo_surface_destroy(surface);
        return height;
    }
    height = draw_text(state.cairo, state.bitmap->width, state.bitmap->height, call);
    if (recording(state)) {
        state.calls.push_back(std::move(call));
    }
    return height;
}

BOOL CDC::TextOut(int x, int y, const CString& text) {
    RECT rect{x, y, x, y};
    DrawText(text, &rect, DT_NOCLIP);
    return 1;
}

COLORREF CDC::GetPixel(int x, int y) const {
    const dc_state& state = *m_state;
    if (state.cairo == nullptr || x < 0 || y < 0 || x >= state.bitmap->width ||
        y >= state.bitmap->height) {
        return CLR_INVALID;
    }
    cairo_surface_t* surface = state.bitmap->surface;
    cairo_surface_flush(surface);
    const unsigned char* row =
        cairo_image_surface_get_data(surface) +
        static_cast<std::ptrdiff_t>(y) * cairo_image_surface_get_stride(surface);
    std::uint32_t pixel = 0; // 0x00RRGGBB in the machine's byte order
    std::copy_n(row + 4 * static_cast<std::ptrdiff_t>(x), sizeof pixel,
                reinterpret_cast<unsigned char*>(&pixel));
    return RGB(static_cast<unsigned char>(pixel >> 16), static_cast<unsigned char>(pixel >> 8),
               static_cast<unsigned char>(pixel));
}

BOOL CDC::SavePng(const CString& path) const {
    const dc_state& state = *m_state;
    if (state.cairo == nullptr) {
        return 0;
    }
    cairo_surface_flush(state.bitmap->surface);
    return cairo_surface_write_to_png(state.bitmap->surface, path.ToUtf8().c_str()) ==
                   CAIRO_STATUS_SUCCESS
               ? 1
               : 0;
}

void CDC::SetSvgRecording(BOOL record) {
    m_state->recording = record != 0;
    m_state->calls.clear();
}

BOOL CDC::SaveSvg(const CString& path) const {
    const dc_state& state = *m_state;
    if (state.cairo == nullptr || !state.recording) {
        return 0;
    }
    const int width = state.bitmap->width;
    const int height = state.bitmap->height;
    cairo_surface_t* surface = cairo_svg_surface_create(path.ToUtf8().c_str(), width, height);
    if (cairo_surface_status(surface) != CAIRO_STATUS_SUCCESS) {
        cairo_surface_destroy(surface);
        return 0;
    }
    cairo_t* cairo = cairo_create(surface);
    select_font(cairo, false);
    for (const recorded_call& call : state.calls) {
        replay(cairo, width, height, call);
    }
    const bool drawn = cairo_status(cairo) == CAIRO_STATUS_SUCCESS;
    cairo_destroy(cairo);
    cairo_surface_finish(surface);
    const bool written = cairo_surface_status(surface) == CAIRO_STATUS_SUCCESS;
    cairo_surface_destroy(surface);
    return drawn && written ? 1 : 0;
}
