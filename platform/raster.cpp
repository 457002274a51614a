// Pixel coverage of lines and polygons.
//
// Pixel (x, y) is the one whose centre is the integer point (x, y). Every rule here is decided
// in integer arithmetic, so that a picture is the same on every machine and a test can name
// the exact pixels a shape covers:
//
// - One-pixel lines follow the grid-intersection ("diamond") rule of the Windows graphics
//   engine: a pixel is drawn when the line leaves the diamond |dx| + |dy| < 1/2 around its
//   centre. For integer end points that is one pixel per column of a line no steeper than 45
//   degrees (per row of a steeper one), the one nearest to the line; when the line passes
//   exactly half-way between two pixels the upper one (of two stacked) or the left one (of two
//   side by side) is drawn. The line starts inside its first pixel's diamond and ends inside its
//   last one's, so the first pixel is drawn and the last is not, which lets a polyline draw
//   each shared vertex once.
//
// - Wider pens draw a geometric line: the region within half the pen width of the segment (a
//   band with round ends), filled as any shape is filled: a pixel is drawn when its centre is
//   inside. A centre exactly on the outline is decided by the top-left convention, by asking
//   whether the point pushed by (d, d^2), for an infinitesimal d, is inside. That keeps centres
//   on the left and top of the outline and drops those on its right and bottom, exactly as a
//   polygon fill does, and it is decided by the sign of the first nonzero coefficient of a
//   polynomial in d. Working in doubled coordinates keeps the half width an integer.
//
// - Polygons fill by the even-odd rule with the same convention: along each row the crossings
//   of the edges that span it (each edge taken half open, top row in, bottom row out) are
//   rounded up, and each pair [in, out) of rounded crossings is filled.
#include "platform/raster.h"

#include <algorithm>
#include <cmath>
#include <cstdlib>

namespace qv5::detail {

namespace {

__extension__ typedef __int128 wide_int;

/// ceil(a / b) for b > 0.
long long ceil_div(long long a, long long b) {
    return a >= 0 ? (a + b - 1) / b : -((-a) / b);
}

/// Sign of the first nonzero coefficient of a polynomial in an infinitesimal d (0 when all
/// are zero).
int leading_sign(std::initializer_list<wide_int> coefficients) {
    for (const wide_int c : coefficients) {
        if (c != 0) {
            return c > 0 ? 1 : -1;
        }
    }
    return 0;
}

/// Appends a one-pixel span, joining it to the previous span when they touch in a row.
void append_pixel(std::vector<pixel_span>& spans, int x, int y) {
    if (!spans.empty()) {
        pixel_span& last = spans.back();
        if (last.y == y && last.x + last.length == x) {
            ++last.length;
            return;
        }
        if (last.y == y && last.x == x + 1) {
            last.x = x;
            ++last.length;
            return;
        }
    }
    spans.push_back({x, y, 1});
}

} // namespace

int clamp_coordinate(long long value) {
    return static_cast<int>(std::clamp<long long>(value, -kCoordinateLimit, kCoordinateLimit));
}

void thin_line_spans(int x1, int y1, int x2, int y2, int width, int height,
                     std::vector<pixel_span>& spans) {
    if (width <= 0 || height <= 0) {
        return;
    }
    const long long ax = clamp_coordinate(x1);
    const long long ay = clamp_coordinate(y1);
    const long long dx = clamp_coordinate(x2) - ax;
    const long long dy = clamp_coordinate(y2) - ay;
    if (dx == 0 && dy == 0) {
        return;
    }
    const bool x_major = std::llabs(dx) >= std::llabs(dy);
    // Along the major axis the pixel at step t is the start plus t; across it, the nearest
    // pixel to start + t * minor / n, ties toward the smaller coordinate: ceil((2 t minor - n)
    // / 2n). Only the steps whose major coordinate lies inside the bitmap are visited, so a
    // line that is mostly outside costs no more than one that is inside.
    const long long major_start = x_major ? ax : ay;
    const long long minor_start = x_major ? ay : ax;
    const long long major_delta = x_major ? dx : dy;
    const long long minor_delta = x_major ? dy : dx;
    const long long n = std::llabs(major_delta);
    const long long step = major_delta > 0 ? 1 : -1;
    const long long major_size = x_major ? width : height;
    const long long minor_size = x_major ? height : width;
    long long t_first = 0;
    long long t_last = n - 1;
    if (step > 0) {
        t_first = std::max(t_first, -major_start);
        t_last = std::min(t_last, major_size - 1 - major_start);
    } else {
        t_first = std::max(t_first, major_start - (major_size - 1));
        t_last = std::min(t_last, major_start);
    }
    for (long long t = t_first; t <= t_last; ++t) {
        const long long major = major_start + step * t;
        const long long minor = minor_start + ceil_div(2 * minor_delta * t - n, 2 * n);
        if (minor < 0 || minor >= minor_size) {
            continue;
        }
        if (x_major) {
            append_pixel(spans, static_cast<int>(major), static_cast<int>(minor));
        } else {
            append_pixel(spans, static_cast<int>(minor), static_cast<int>(major));
        }
    }
}

bool wide_line_covers(int x1, int y1, int x2, int y2, int pen_width, int px, int py) {
    // Doubled coordinates: the half width becomes the integer pen_width.
    const long long ax = 2LL * clamp_coordinate(x1);
    const long long ay = 2LL * clamp_coordinate(y1);
    const long long bx = 2LL * clamp_coordinate(x2);
    const long long by = 2LL * clamp_coordinate(y2);
    const long long qx = 2LL * clamp_coordinate(px);
    const long long qy = 2LL * clamp_coordinate(py);
    const wide_int r = pen_width;
    // Inside the round end at (cx, cy): |q + (d, d^2) - c|^2 - r^2 < 0, whose coefficients in d
    // are |q - c|^2 - r^2, 2 ex, 2 ey + 1 (the last never zero).
    auto in_end = [&](long long cx, long long cy) {
        const wide_int ex = qx - cx;
        const wide_int ey = qy - cy;
        return leading_sign({ex * ex + ey * ey - r * r, 2 * ex, 2 * ey + 1}) < 0;
    };
    if (in_end(ax, ay) || in_end(bx, by)) {
        return true;
    }
    const wide_int dx = bx - ax;
    const wide_int dy = by - ay;
    if (dx == 0 && dy == 0) {
        return false;
    }
    const wide_int ex = qx - ax;
    const wide_int ey = qy - ay;
    const wide_int length2 = dx * dx + dy * dy;
    // Between the ends: 0 < dot < |d|^2 and cross^2 < r^2 |d|^2, with dot and cross of the
    // pushed point being dot + d dx + d^2 dy and cross + d dy - d^2 dx.
    const wide_int dot = ex * dx + ey * dy;
    if (leading_sign({dot, dx, dy}) <= 0 || leading_sign({length2 - dot, -dx, -dy}) <= 0) {
        return false;
    }
    const wide_int cross = ex * dy - ey * dx;
    return leading_sign({cross * cross - r * r * length2, 2 * cross * dy, dy * dy - 2 * cross * dx,
                         -2 * dx * dy, dx * dx}) < 0;
}

void wide_line_spans(int x1, int y1, int x2, int y2, int pen_width, int width, int height,
                     std::vector<pixel_span>& spans) {
    if (width <= 0 || height <= 0 || pen_width <= 0) {
        return;
    }
    x1 = clamp_coordinate(x1);
    y1 = clamp_coordinate(y1);
    x2 = clamp_coordinate(x2);
    y2 = clamp_coordinate(y2);
    // Candidate pixels per row come from a generous floating-point bound of the band; the
    // exact test above decides each one.
    const double reach = pen_width / 2.0 + 1.0;
    const double dx = static_cast<double>(x2) - x1;
    const double dy = static_cast<double>(y2) - y1;
    const long long row_first =
        std::max<long long>(0, static_cast<long long>(std::floor(std::min(y1, y2) - reach)));
    const long long row_last = std::min<long long>(
        height - 1, static_cast<long long>(std::ceil(std::max(y1, y2) + reach)));
    for (long long row = row_first; row <= row_last; ++row) {
        double t0 = 0.0;
        double t1 = 1.0;
        if (dy != 0.0) {
            t0 = (static_cast<double>(row) - reach - y1) / dy;
            t1 = (static_cast<double>(row) + reach - y1) / dy;
            if (t0 > t1) {
                std::swap(t0, t1);
            }
            t0 = std::max(t0, 0.0);
            t1 = std::min(t1, 1.0);
            if (t0 > t1) {
                continue;
            }
        } else if (std::fabs(static_cast<double>(row) - y1) > reach) {
            continue;
        }
        const double xa = x1 + t0 * dx;
        const double xb = x1 + t1 * dx;
        const long long first =
            std::max<long long>(0, static_cast<long long>(std::floor(std::min(xa, xb) - reach)));
        const long long last = std::min<long long>(
            width - 1, static_cast<long long>(std::ceil(std::max(xa, xb) + reach)));
        for (long long column = first; column <= last; ++column) {
            if (wide_line_covers(x1, y1, x2, y2, pen_width, static_cast<int>(column),
                                 static_cast<int>(row))) {
                append_pixel(spans, static_cast<int>(column), static_cast<int>(row));
            }
        }
    }
}

void polygon_spans(const std::vector<pixel_point>& points, int width, int height,
                   std::vector<pixel_span>& spans) {
    if (width <= 0 || height <= 0 || points.size() < 3) {
        return;
    }
    struct edge {
        long long top_x, top_y, bottom_x, bottom_y;
    };
    std::vector<edge> edges;
    long long y_min = kCoordinateLimit;
    long long y_max = -kCoordinateLimit;
    for (std::size_t i = 0; i < points.size(); ++i) {
        const pixel_point& a = points[i];
        const pixel_point& b = points[(i + 1) % points.size()];
        const long long ay = clamp_coordinate(a.y);
        const long long by = clamp_coordinate(b.y);
        y_min = std::min({y_min, ay, by});
        y_max = std::max({y_max, ay, by});
        if (ay == by) {
            continue; // a horizontal edge crosses no row; the rows beside it decide
        }
        const long long ax = clamp_coordinate(a.x);
        const long long bx = clamp_coordinate(b.x);
        edges.push_back(ay < by ? edge{ax, ay, bx, by} : edge{bx, by, ax, ay});
    }
    std::vector<long long> crossings;
    const long long row_first = std::max<long long>(0, y_min);
    const long long row_last = std::min<long long>(height - 1, y_max - 1);
    for (long long row = row_first; row <= row_last; ++row) {
        crossings.clear();
        for (const edge& e : edges) {
            if (e.top_y <= row && row < e.bottom_y) {
                crossings.push_back(e.top_x + ceil_div((row - e.top_y) * (e.bottom_x - e.top_x),
                                                       e.bottom_y - e.top_y));
            }
        }
        std::sort(crossings.begin(), crossings.end());
        for (std::size_t i = 0; i + 1 < crossings.size(); i += 2) {
            const long long first = std::max<long long>(0, crossings[i]);
            const long long end = std::min<long long>(width, crossings[i + 1]);
            if (first < end) {
                spans.push_back({static_cast<int>(first), static_cast<int>(row),
                                 static_cast<int>(end - first)});
            }
        }
    }
}

} // namespace qv5::detail
