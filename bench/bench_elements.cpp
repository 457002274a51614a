// The alignment elements: the arc's inversion, the spiral's series, points and inversion, each
// beside a baseline.
//
// Naming as in bench_geometry.cpp: BM_<call> times the library, BM_<call>_Bare the same maths
// written here as a plain function, called through a pointer the compiler cannot see through. The
// spiral's GridDeltas is compared with one GridHorzPoint of the same spiral (BASELINES in
// bench/ratios.py): that is the unit its iteration is built from.
#include "bench_support.h"

#include "qv5/qv5lib.h"

#include <benchmark/benchmark.h>

#include <array>
#include <cmath>
#include <string>

namespace {

using namespace qv5::bench;

/// Series tolerance used throughout, metres (the library's own for spiral end points).
constexpr double kTolerance = 1e-5;

// A road spiral: radius 300 m, length 120 m (C = 72000), right-handed, from (5000, 3000).
constexpr double kRadius = 300.0;
constexpr double kLength = 120.0;
constexpr double kConstant = 2.0 * kRadius * kLength;
constexpr double kAzimuth = 0.6;
const geo_nee kStart{5000.0, 3000.0, 100.0};

// ---- the bare maths ------------------------------------------------------------------------

// The clothoid series term by term, as the library sums them: running product, each term over
// its own divisor, at most nine correction terms.
QV5_BARE bool bare_series_impl(double l, double c, double tol, double& x, double& y) {
    const double q = (((l * l) * l) * l) / (c * c);
    double t = l;
    double sx = l;
    double sign = -1.0;
    bool done = false;
    for (int k = 1; k <= 9 && !done; ++k) {
        const double n = 2.0 * k;
        t = t * q / ((n - 1.0) * n);
        const double term = t / (4.0 * k + 1.0);
        sx += sign * term;
        sign = -sign;
        done = std::fabs(term) < tol;
    }
    if (!done) {
        return false;
    }
    t = ((l * l) * l) / c;
    double sy = t * (1.0 / 3.0);
    sign = -1.0;
    done = false;
    for (int k = 1; k <= 9 && !done; ++k) {
        const double n = 2.0 * k + 1.0;
        t = t * q / ((n - 1.0) * n);
        const double term = t / (4.0 * k + 3.0);
        sy += sign * term;
        sign = -sign;
        done = std::fabs(term) < tol;
    }
    if (!done) {
        return false;
    }
    x = sx;
    y = sy;
    return true;
}

// A point on the spiral: the series, then along the entry tangent and square off it. The
// azimuth arrives as a run-time value so that its sines and cosines are not folded away.
QV5_BARE void bare_spiral_point_impl(double s, double azimuth, geo_nee& out) {
    double x = 0.0;
    double y = 0.0;
    bare_series_impl(s, kConstant, kTolerance, x, y);
    out.north = kStart.north + std::cos(azimuth) * x + std::cos(azimuth + kHalfPi) * y;
    out.east = kStart.east + std::sin(azimuth) * x + std::sin(azimuth + kHalfPi) * y;
    out.elev = kStart.elev;
}

// Station, offset and azimuth against a right-turning arc: the angle swept from the start
// radius to the radius through the point.
QV5_BARE void bare_arc_deltas_impl(const geo_nee& centre, double start_radial, double radius,
                                   double entry, const geo_nee& p, double& station, double& offset,
                                   double& azimuth) {
    const double dn = p.north - centre.north;
    const double de = p.east - centre.east;
    const double swept = kTwoPi - bare_normalise(start_radial - bare_normalise(std::atan2(de, dn)));
    station = swept > 0.25 + kPi ? -(radius * (kTwoPi - swept)) : swept * radius;
    offset = radius - std::sqrt(dn * dn + de * de);
    azimuth = bare_normalise(entry + swept);
}

// ---- inputs ----------------------------------------------------------------------------------

/// Shots along the spiral and stations to search from.
struct Walk {
    std::array<geo_nee, kTableSize> points{};
    std::array<double, kTableSize> stations{}; // where each shot was taken
    std::array<double, kTableSize> previous{}; // the station of the fix before it
};

/// A surveyor walking along the spiral at a steady offset, a fix every 0.1 m (1 m/s at 10 Hz):
/// each shot's search starts from the station of the previous fix.
Walk walk_at(double offset) {
    CGeoPoint start(kStart);
    CGeoEntrySpiral spiral;
    spiral.Set(start, kAzimuth, geodef_Right, kRadius, kLength);
    Walk walk;
    for (std::size_t i = 0; i < kTableSize; ++i) {
        const double s = 5.0 + 0.1 * static_cast<double>(i % 1100);
        CGeoPoint q;
        spiral.GridHorzPoint(s, 1e-9, q);
        const double square = spiral.GridAzimuth(s) + kHalfPi;
        walk.points[i] = {q.Northing() + offset * std::cos(square),
                          q.Easting() + offset * std::sin(square), 100.0};
        walk.stations[i] = s;
        walk.previous[i] = s - 0.1;
    }
    return walk;
}

void register_all() {
    const auto& in = inputs();
    const auto bare_series = opaque(&bare_series_impl);
    const auto bare_spiral_point = opaque(&bare_spiral_point_impl);
    const auto bare_arc_deltas = opaque(&bare_arc_deltas_impl);

    // The series over a road spiral's whole length (the distances table scaled to 0.24..120 m).
    pair(
        "geo_spiral_deltas",
        [&in](std::size_t i) {
            double x;
            double y;
            geo_spiral_deltas(in.distances[i] * 0.24, kConstant, kTolerance, x, y);
            benchmark::DoNotOptimize(x);
            benchmark::DoNotOptimize(y);
        },
        [&in, bare_series](std::size_t i) {
            double x;
            double y;
            bare_series(in.distances[i] * 0.24, kConstant, kTolerance, x, y);
            benchmark::DoNotOptimize(x);
            benchmark::DoNotOptimize(y);
        });

    // Points within 50 m of a quarter-turn right arc of radius 100 m: the arc is set once and
    // keeps its derived centre, as the road keeps its elements.
    static CGeoArc arc;
    {
        CGeoPoint start(geo_nee{1000.0, 2000.0, 50.0});
        arc.Set(start, 0.0, 100.0, 100.0 * kHalfPi, geodef_Right, 0.0);
        arc.CentrePt();
    }
    static std::array<CGeoPoint, kTableSize> arc_shots;
    static std::array<geo_nee, kTableSize> arc_grids;
    for (std::size_t i = 0; i < kTableSize; ++i) {
        const double theta = (in.angles[i] + 1.0) * 0.25; // -0 .. 2 rad round
        const double r = 50.0 + in.distances[i] * 0.2;    // 50 .. 150 m from the centre
        arc_shots[i] =
            CGeoPoint(geo_nee{1000.0 + r * std::sin(theta), 2100.0 - r * std::cos(theta), 50.0});
        arc_grids[i] = arc_shots[i].Grid(); // grid known, as for a measured point
    }
    pair(
        "CGeoArc_GridDeltas",
        [](std::size_t i) {
            double s;
            double o;
            double a;
            arc.GridDeltas(arc_shots[i], s, o, a);
            benchmark::DoNotOptimize(s);
            benchmark::DoNotOptimize(o);
            benchmark::DoNotOptimize(a);
        },
        [bare_arc_deltas](std::size_t i) {
            double s;
            double o;
            double a;
            bare_arc_deltas({1000.0, 2100.0, 50.0}, 1.5 * kPi, 100.0, 0.0, arc_grids[i], s, o, a);
            benchmark::DoNotOptimize(s);
            benchmark::DoNotOptimize(o);
            benchmark::DoNotOptimize(a);
        });

    static CGeoEntrySpiral spiral;
    {
        CGeoPoint start(kStart);
        spiral.Set(start, kAzimuth, geodef_Right, kRadius, kLength);
        spiral.EndPt();
        spiral.ExitAzimuth();
    }
    pair(
        "CGeoEntrySpiral_GridHorzPoint",
        [&in](std::size_t i) {
            CGeoPoint q;
            spiral.GridHorzPoint(in.distances[i] * 0.24, kTolerance, q);
            benchmark::DoNotOptimize(q.Grid());
        },
        [&in, bare_spiral_point](std::size_t i) {
            geo_nee q;
            double azimuth = kAzimuth;
            benchmark::DoNotOptimize(azimuth);
            bare_spiral_point(in.distances[i] * 0.24, azimuth, q);
            benchmark::DoNotOptimize(q);
        });

    // Walking 5 m right of the centreline (the inside of this right-hand spiral, where the
    // search takes whole steps), 5 m left of it (where it takes half steps), and on it.
    static const Walk right = walk_at(5.0);
    static const Walk left = walk_at(-5.0);
    static const Walk centre = walk_at(0.0);
    static std::array<CGeoPoint, kTableSize> right_shots;
    static std::array<CGeoPoint, kTableSize> left_shots;
    static std::array<CGeoPoint, kTableSize> centre_shots;
    for (std::size_t i = 0; i < kTableSize; ++i) {
        right_shots[i] = CGeoPoint(right.points[i]);
        left_shots[i] = CGeoPoint(left.points[i]);
        centre_shots[i] = CGeoPoint(centre.points[i]);
    }
    const auto deltas = [](std::array<CGeoPoint, kTableSize>& shots, const double* guesses) {
        return [&shots, guesses](std::size_t i) {
            double s;
            double o;
            double a;
            spiral.GridDeltas(shots[i], guesses[i], kTolerance, s, o, a);
            benchmark::DoNotOptimize(s);
            benchmark::DoNotOptimize(o);
        };
    };
    static const std::array<double, kTableSize> zero{};
    single("CGeoEntrySpiral_GridDeltas_GoodGuess_Right",
           deltas(right_shots, right.previous.data()));
    single("CGeoEntrySpiral_GridDeltas_GoodGuess_Left", deltas(left_shots, left.previous.data()));
    single("CGeoEntrySpiral_GridDeltas_GoodGuess_Centreline",
           deltas(centre_shots, centre.previous.data()));
    single("CGeoEntrySpiral_GridDeltas_ExactGuess_Right",
           deltas(right_shots, right.stations.data()));
    single("CGeoEntrySpiral_GridDeltas_PoorGuess_Right", deltas(right_shots, zero.data()));
    single("CGeoEntrySpiral_GridDeltas_PoorGuess_Left", deltas(left_shots, zero.data()));
}

} // namespace

int main(int argc, char** argv) {
    return qv5::bench::run_benchmarks(argc, argv, register_all);
}
