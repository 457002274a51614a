// Survey functions and the straight line, each beside the bare maths it wraps.
//
// Naming: BM_<call> times the library; BM_<call>_Bare times the same arithmetic written here as
// a plain function, called through a function pointer the compiler cannot see through, so that
// both sides pay for one indirect call and the ratio shows what the library adds (null handling,
// caches, normalisation). bench/ratios.py turns a JSON run into the table of docs/performance.md.
#include "bench_support.h"

#include "qv5/qv5lib.h"

#include <benchmark/benchmark.h>

#include <cmath>
#include <cstdio>
#include <cstdlib>
#include <memory>
#include <string>
#include <vector>

namespace {

using namespace qv5::bench;

// ---- the bare maths ------------------------------------------------------------------------

QV5_BARE double bare_normalised_bearing_impl(double b) {
    return bare_normalise(b);
}

QV5_BARE double bare_grid_bearing_impl(const geo_nee& a, const geo_nee& b) {
    return bare_normalise(std::atan2(b.east - a.east, b.north - a.north));
}

QV5_BARE double bare_grid_divergence_impl(double b1, double b2) {
    const double d = bare_normalise(b1 - b2);
    return d > kPi ? kTwoPi - d : d;
}

QV5_BARE double bare_bisected_bearing_impl(double b1, double b2) {
    double d = bare_normalise(b2 - b1);
    if (d > kPi) {
        d -= kTwoPi;
    }
    return bare_normalise(b1 + 0.5 * d);
}

QV5_BARE void bare_radtodms_impl(double r, int* d, int* m, double* s) {
    const double deg = r * 57.29577951308232;
    double t = std::fabs(deg) * 3600.0 + 5e-6;
    const int dd = static_cast<int>(t * 0.0002777777777777778);
    t -= dd * 3600.0;
    const int mm = static_cast<int>(t * 0.016666666666666666);
    *s = t - mm * 60.0 - 5e-6;
    *d = deg >= 0.0 ? dd : -dd;
    *m = mm;
}

QV5_BARE void bare_dmstorad_impl(int d, int m, double s, double* r) {
    const double v = std::fabs(static_cast<double>(d)) * 0.017453292519943295 +
                     m * 0.0002908882086657216 + s * 4.84813681109536e-6;
    *r = d < 0 ? -v : v;
}

QV5_BARE double bare_horz_dist_impl(const geo_nee& a, const geo_nee& b) {
    const double dn = a.north - b.north;
    const double de = a.east - b.east;
    return std::sqrt(dn * dn + de * de);
}

QV5_BARE double bare_slope_dist_impl(const geo_nee& a, const geo_nee& b) {
    const double dn = a.north - b.north;
    const double de = a.east - b.east;
    return std::sqrt(a.elev * b.elev + std::sqrt(dn * dn + de * de));
}

QV5_BARE double bare_gradient_impl(const geo_nee& a, const geo_nee& b) {
    const double dn = a.north - b.north;
    const double de = a.east - b.east;
    const double h = std::sqrt(dn * dn + de * de);
    const double v = b.elev - a.elev;
    return h < 0.0001 ? (v > 0.0 ? kHalfPi : -kHalfPi) : std::atan(v / h);
}

QV5_BARE void bare_grid_follow_impl(const geo_nee& s, double bearing, double distance,
                                    double gradient, geo_nee& out) {
    out = s;
    out.north += std::cos(bearing) * distance;
    out.east += std::sin(bearing) * distance;
    out.elev += std::tan(gradient) * distance;
}

QV5_BARE void bare_reduce_obs_impl(const geo_hvd& obs, const geo_nee& st, double hi, geo_nee& out) {
    const double hd = obs.dist * std::fabs(std::sin(obs.vz));
    const double dz = obs.dist * std::cos(obs.vz);
    out.north = st.north + std::cos(obs.hz) * hd;
    out.east = st.east + std::sin(obs.hz) * hd;
    out.elev = st.elev + dz + hi;
}

QV5_BARE void bare_calc_obs_impl(const geo_nee& a, double ha, const geo_nee& b, double hb,
                                 geo_hvd& obs) {
    const double dn = b.north - a.north;
    const double de = b.east - a.east;
    const double dz = (b.elev + hb) - a.elev - ha;
    obs.hz = bare_normalise(std::atan2(de, dn));
    const double hd = std::sqrt(de * de + dn * dn);
    obs.vz = bare_normalise(kHalfPi - std::atan2(dz, hd));
    obs.dist = std::sqrt(hd * hd + dz * dz);
}

QV5_BARE int bare_point_on_line_impl(const geo_nee& a, const geo_nee& b, const geo_nee& p,
                                     double tol) {
    double theta = bare_normalise(bare_normalise(std::atan2(b.east - a.east, b.north - a.north)) -
                                  bare_normalise(std::atan2(p.east - a.east, p.north - a.north)));
    const double tc = theta > kPi ? kTwoPi - theta : theta;
    const double l = std::sqrt((a.north - b.north) * (a.north - b.north) +
                               (a.east - b.east) * (a.east - b.east));
    const double d = std::sqrt((a.north - p.north) * (a.north - p.north) +
                               (a.east - p.east) * (a.east - p.east));
    const double along = std::cos(tc) * d;
    if (along < -tol || along > l + tol) {
        return 0;
    }
    if (theta > kPi) {
        theta -= kTwoPi;
    }
    return std::fabs(-std::sin(theta) * d) <= tol ? 1 : 0;
}

QV5_BARE int bare_point_in_poly_impl(int n, const geo_nee* poly, const geo_nee* point) {
    const geo_nee& p = *point;
    bool inside = false;
    for (int k = 0, j = n - 1; k < n; j = k++) {
        if (p.east == poly[k].east && p.north == poly[k].north) {
            return 1;
        }
        if ((poly[k].north <= p.north && p.north < poly[j].north) ||
            (poly[j].north <= p.north && p.north < poly[k].north)) {
            double dn = poly[j].north - poly[k].north;
            if (dn == 0.0) {
                dn = 1e-8;
            }
            if (p.east <
                (poly[j].east - poly[k].east) / dn * (p.north - poly[k].north) + poly[k].east) {
                inside = !inside;
            }
        }
    }
    return inside ? 1 : 0;
}

QV5_BARE int bare_lines_cross_impl(const geo_nee& a1, const geo_nee& a2, const geo_nee& b1,
                                   const geo_nee& b2) {
    const auto straddles = [](const geo_nee& p1, const geo_nee& p2, const geo_nee& q1,
                              const geo_nee& q2) {
        const double de = p2.east - p1.east;
        const double dn = p2.north - p1.north;
        const double c = de * p1.north - dn * p1.east;
        return (de * q1.north - dn * q1.east < c) != (de * q2.north - dn * q2.east < c);
    };
    return straddles(a1, a2, b1, b2) && straddles(b1, b2, a1, a2) ? 1 : 0;
}

// Station and offset of p against a line a->b: two atan2, a cos, a sin and a square root, the
// least any such computation needs.
QV5_BARE void bare_station_offset_impl(const geo_nee& a, const geo_nee& b, const geo_nee& p,
                                       double& station, double& offset) {
    const double line_az = std::atan2(b.east - a.east, b.north - a.north);
    const double dn = p.north - a.north;
    const double de = p.east - a.east;
    const double d = std::atan2(de, dn) - line_az;
    const double h = std::sqrt(dn * dn + de * de);
    station = h * std::cos(d);
    offset = h * std::sin(d);
}

// Point at station s and offset o on the line a->b with the line's grade.
QV5_BARE void bare_horz_offset_point_impl(const geo_nee& a, const geo_nee& b, double s, double o,
                                          geo_nee& out) {
    const double dn = b.north - a.north;
    const double de = b.east - a.east;
    const double az = bare_normalise(std::atan2(de, dn));
    const double len = std::sqrt(dn * dn + de * de);
    const double grade = std::atan((b.elev - a.elev) / len);
    const double perp = bare_normalise(az + kHalfPi);
    out.north = a.north + std::cos(az) * s + std::cos(perp) * o;
    out.east = a.east + std::sin(az) * s + std::sin(perp) * o;
    out.elev = a.elev + std::tan(grade) * s;
}

/// Station and offset from the dot and cross products of the start -> point vector with the
/// line's direction: the fastest way to the same two numbers (they agree with the trigonometric
/// forms to about 1e-11 m), with one square root and no trigonometry at all.
QV5_BARE void bare_station_offset_dot_cross_impl(const geo_nee& a, const geo_nee& b,
                                                 const geo_nee& p, double& station,
                                                 double& offset) {
    const double ln = b.north - a.north;
    const double le = b.east - a.east;
    const double inverse_length = 1.0 / std::sqrt(ln * ln + le * le);
    const double pn = p.north - a.north;
    const double pe = p.east - a.east;
    station = (pn * ln + pe * le) * inverse_length;
    offset = (pe * ln - pn * le) * inverse_length; // positive to the right of travel
}

/// A warm line's point at a station: the start stepped along the line's cosine and sine and up
/// its grade's tangent, all three worked out beforehand, as a line that has answered before
/// holds them. Three multiply-adds: the floor of GridHorzPoint on a warm line.
struct WarmLine {
    geo_nee start;
    double cos_azimuth;
    double sin_azimuth;
    double tan_grade;
};

QV5_BARE void bare_warm_line_point_impl(const WarmLine& line, double station, geo_nee& out) {
    out.north = line.start.north + line.cos_azimuth * station;
    out.east = line.start.east + line.sin_azimuth * station;
    out.elev = line.start.elev + line.tan_grade * station;
}

// ---- benchmarks ----------------------------------------------------------------------------

void register_all() {
    const auto& in = inputs();
    const auto bare_normalised_bearing = opaque(&bare_normalised_bearing_impl);
    const auto bare_grid_bearing = opaque(&bare_grid_bearing_impl);
    const auto bare_grid_divergence = opaque(&bare_grid_divergence_impl);
    const auto bare_bisected_bearing = opaque(&bare_bisected_bearing_impl);
    const auto bare_radtodms = opaque(&bare_radtodms_impl);
    const auto bare_dmstorad = opaque(&bare_dmstorad_impl);
    const auto bare_horz_dist = opaque(&bare_horz_dist_impl);
    const auto bare_slope_dist = opaque(&bare_slope_dist_impl);
    const auto bare_gradient = opaque(&bare_gradient_impl);
    const auto bare_grid_follow = opaque(&bare_grid_follow_impl);
    const auto bare_reduce_obs = opaque(&bare_reduce_obs_impl);
    const auto bare_calc_obs = opaque(&bare_calc_obs_impl);
    const auto bare_point_on_line = opaque(&bare_point_on_line_impl);
    const auto bare_point_in_poly = opaque(&bare_point_in_poly_impl);
    const auto bare_lines_cross = opaque(&bare_lines_cross_impl);
    const auto bare_station_offset = opaque(&bare_station_offset_impl);
    const auto bare_horz_offset_point = opaque(&bare_horz_offset_point_impl);
    const auto bare_station_offset_dot_cross = opaque(&bare_station_offset_dot_cross_impl);
    const auto bare_warm_line_point = opaque(&bare_warm_line_point_impl);
    const auto p = [&in](std::size_t i, int k) -> const geo_nee& {
        while (k-- > 0) {
            i = next(i);
        }
        return in.points[i];
    };
    const auto a = [&in](std::size_t i, int k) { return in.angles[k == 0 ? i : next(i)]; };
    const auto d = [&in](std::size_t i) { return in.distances[i]; };

    pair(
        "geo_normalised_bearing",
        [=](std::size_t i) { benchmark::DoNotOptimize(geo_normalised_bearing(a(i, 0))); },
        [=](std::size_t i) { benchmark::DoNotOptimize(bare_normalised_bearing(a(i, 0))); });
    pair(
        "geo_grid_bearing",
        [=](std::size_t i) { benchmark::DoNotOptimize(geo_grid_bearing(p(i, 0), p(i, 1))); },
        [=](std::size_t i) { benchmark::DoNotOptimize(bare_grid_bearing(p(i, 0), p(i, 1))); });
    pair(
        "geo_grid_divergence",
        [=](std::size_t i) { benchmark::DoNotOptimize(geo_grid_divergence(a(i, 0), a(i, 1))); },
        [=](std::size_t i) { benchmark::DoNotOptimize(bare_grid_divergence(a(i, 0), a(i, 1))); });
    pair(
        "geo_bisected_bearing",
        [=](std::size_t i) { benchmark::DoNotOptimize(geo_bisected_bearing(a(i, 0), a(i, 1))); },
        [=](std::size_t i) { benchmark::DoNotOptimize(bare_bisected_bearing(a(i, 0), a(i, 1))); });
    pair(
        "radtodms",
        [=](std::size_t i) {
            int deg, min;
            double sec;
            _radtodms(a(i, 0), &deg, &min, &sec);
            benchmark::DoNotOptimize(sec);
        },
        [=](std::size_t i) {
            int deg, min;
            double sec;
            bare_radtodms(a(i, 0), &deg, &min, &sec);
            benchmark::DoNotOptimize(sec);
        });
    pair(
        "dmstorad",
        [=](std::size_t i) {
            double r;
            _dmstorad(static_cast<int>(i) - 512, static_cast<int>(i & 63), d(i), &r);
            benchmark::DoNotOptimize(r);
        },
        [=](std::size_t i) {
            double r;
            bare_dmstorad(static_cast<int>(i) - 512, static_cast<int>(i & 63), d(i), &r);
            benchmark::DoNotOptimize(r);
        });
    pair(
        "geo_horz_dist",
        [=](std::size_t i) { benchmark::DoNotOptimize(geo_horz_dist(p(i, 0), p(i, 1))); },
        [=](std::size_t i) { benchmark::DoNotOptimize(bare_horz_dist(p(i, 0), p(i, 1))); });
    pair(
        "geo_slope_dist",
        [=](std::size_t i) { benchmark::DoNotOptimize(geo_slope_dist(p(i, 0), p(i, 1))); },
        [=](std::size_t i) { benchmark::DoNotOptimize(bare_slope_dist(p(i, 0), p(i, 1))); });
    pair(
        "geo_gradient",
        [=](std::size_t i) { benchmark::DoNotOptimize(geo_gradient(p(i, 0), p(i, 1))); },
        [=](std::size_t i) { benchmark::DoNotOptimize(bare_gradient(p(i, 0), p(i, 1))); });
    pair(
        "geo_grid_follow",
        [=](std::size_t i) {
            geo_nee out;
            geo_grid_follow(p(i, 0), a(i, 0), d(i), a(i, 1) * 0.01, out);
            benchmark::DoNotOptimize(out);
        },
        [=](std::size_t i) {
            geo_nee out;
            bare_grid_follow(p(i, 0), a(i, 0), d(i), a(i, 1) * 0.01, out);
            benchmark::DoNotOptimize(out);
        });
    pair(
        "geo_reduce_obs",
        [=](std::size_t i) {
            geo_nee out;
            geo_reduce_obs(geo_hvd{a(i, 0), 1.5 + a(i, 1) * 0.01, d(i)}, p(i, 0), 1.5, out);
            benchmark::DoNotOptimize(out);
        },
        [=](std::size_t i) {
            geo_nee out;
            bare_reduce_obs(geo_hvd{a(i, 0), 1.5 + a(i, 1) * 0.01, d(i)}, p(i, 0), 1.5, out);
            benchmark::DoNotOptimize(out);
        });
    pair(
        "geo_calc_obs",
        [=](std::size_t i) {
            geo_hvd obs;
            geo_calc_obs(p(i, 0), 1.5, p(i, 1), 1.8, obs);
            benchmark::DoNotOptimize(obs);
        },
        [=](std::size_t i) {
            geo_hvd obs;
            bare_calc_obs(p(i, 0), 1.5, p(i, 1), 1.8, obs);
            benchmark::DoNotOptimize(obs);
        });
    pair(
        "geo_point_on_line",
        [=](std::size_t i) {
            benchmark::DoNotOptimize(geo_point_on_line(p(i, 0), p(i, 1), p(i, 2), 10.0));
        },
        [=](std::size_t i) {
            benchmark::DoNotOptimize(bare_point_on_line(p(i, 0), p(i, 1), p(i, 2), 10.0));
        });
    pair(
        "geo_point_in_poly",
        [=](std::size_t i) {
            benchmark::DoNotOptimize(
                geo_point_in_poly(12, &in.points[i & ~std::size_t{15}], &p(i, 0)));
        },
        [=](std::size_t i) {
            benchmark::DoNotOptimize(
                bare_point_in_poly(12, &in.points[i & ~std::size_t{15}], &p(i, 0)));
        });
    pair(
        "geo_lines_cross",
        [=](std::size_t i) {
            benchmark::DoNotOptimize(geo_lines_cross(p(i, 0), p(i, 1), p(i, 2), p(i, 3)));
        },
        [=](std::size_t i) {
            benchmark::DoNotOptimize(bare_lines_cross(p(i, 0), p(i, 1), p(i, 2), p(i, 3)));
        });

    // A fresh line each time (Set clears every cache), between points the host already holds,
    // so the station and offset pay for the line's own azimuth as well as the point's.
    auto held = std::make_shared<std::vector<CGeoPoint>>();
    for (const geo_nee& point : in.points) {
        held->emplace_back(point);
    }
    auto line = std::make_shared<CGeoLine>();
    pair(
        "CGeoLine_StationOffset_FreshLine",
        [=](std::size_t i) {
            std::vector<CGeoPoint>& pts = *held;
            line->Set(pts[i], pts[next(i)]);
            benchmark::DoNotOptimize(line->GridStation(pts[next(next(i))]));
            benchmark::DoNotOptimize(line->GridOffset(pts[next(next(i))]));
        },
        [=](std::size_t i) {
            double station;
            double offset;
            bare_station_offset(p(i, 0), p(i, 1), p(i, 2), station, offset);
            benchmark::DoNotOptimize(station);
            benchmark::DoNotOptimize(offset);
        });
    // The products give the trigonometric baseline's values to well within a nanometre.
    for (std::size_t i = 0; i < kTableSize; ++i) {
        double s1;
        double o1;
        double s2;
        double o2;
        bare_station_offset(p(i, 0), p(i, 1), p(i, 2), s1, o1);
        bare_station_offset_dot_cross(p(i, 0), p(i, 1), p(i, 2), s2, o2);
        if (std::fabs(s1 - s2) > 1e-9 || std::fabs(o1 - o2) > 1e-9) {
            std::fprintf(stderr, "dot/cross baseline differs at %zu: %.12g %.12g / %.12g %.12g\n",
                         i, s1, o1, s2, o2);
            std::abort();
        }
    }
    single("CGeoLine_StationOffset_FreshLine_DotCross", [=](std::size_t i) {
        double station;
        double offset;
        bare_station_offset_dot_cross(p(i, 0), p(i, 1), p(i, 2), station, offset);
        benchmark::DoNotOptimize(station);
        benchmark::DoNotOptimize(offset);
    });
    pair(
        "CGeoLine_HorzOffsetPoint_FreshLine",
        [=](std::size_t i) {
            std::vector<CGeoPoint>& pts = *held;
            line->Set(pts[i], pts[next(i)]);
            CGeoPoint result;
            line->GridHorzOffsetPoint(d(i), a(i, 0), result);
            benchmark::DoNotOptimize(result.Northing());
        },
        [=](std::size_t i) {
            geo_nee out;
            bare_horz_offset_point(p(i, 0), p(i, 1), d(i), a(i, 0), out);
            benchmark::DoNotOptimize(out.north);
        });

    // A warm line (set once, asked before): the point at a station, into a point the host
    // holds, as the road iterator asks its element on every call of a walking surveyor.
    geo_nee warm_start{5000.0, 2000.0, 100.0};
    geo_nee warm_end{5600.0, 2450.0, 104.5};
    auto warm = std::make_shared<CGeoLine>(warm_start, warm_end);
    auto warm_out = std::make_shared<CGeoPoint>();
    warm->GridHorzPoint(1.0, *warm_out);
    const double warm_azimuth = warm->GridAzimuth();
    const WarmLine warm_bare{warm_start, std::cos(warm_azimuth), std::sin(warm_azimuth),
                             std::tan(warm->GeoidGrade())};
    pair(
        "CGeoLine_GridHorzPoint_WarmLine",
        [=](std::size_t i) {
            warm->GridHorzPoint(d(i), *warm_out);
            benchmark::DoNotOptimize(*warm_out);
        },
        [=](std::size_t i) {
            geo_nee out;
            bare_warm_line_point(warm_bare, d(i), out);
            benchmark::DoNotOptimize(out.north);
        });
}

} // namespace

int main(int argc, char** argv) {
    return qv5::bench::run_benchmarks(argc, argv, register_all);
}
