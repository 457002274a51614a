// Cross-section templates: the height above the surface, the side-slope catch and the blend of
// two templates, each beside the same arithmetic written as a plain loop over arrays.
//
// Naming as in bench_geometry.cpp: BM_<call> times the library, BM_<call>_Bare the baseline,
// called through a pointer the compiler cannot see through. The template has 12 elements: lanes,
// a gutter, a curb face, a walk, features, a curb fixed point and a side slope.
#include "bench_support.h"

#include "qv5/qv5lib.h"

#include <benchmark/benchmark.h>

#include <array>
#include <cmath>
#include <cstring>
#include <random>

namespace {

using namespace qv5::bench;

constexpr int kElements = 12;

/// One template side as the baselines hold it: the records and the derived chain in arrays.
struct BareTemplate {
    int type[kElements];
    double a[kElements]; // first record field (DeltaH, Angle, H, CutAngle)
    double b[kElements]; // second record field (DeltaV, Width, V, FillAngle)
    double c[kElements]; // third record field (Angle of a fixed point, DitchWidth)
    double angle[kElements];
    double slope[kElements];
    double start_h[kElements];
    double start_v[kElements];
    double end_h[kElements];
    double end_v[kElements];
    double shoulder_h;
    double shoulder_v;
};

/// The chain walk of a template, as the library derives it.
QV5_BARE void bare_derive(BareTemplate& t) {
    double h = 0.0;
    double v = 0.0;
    for (int i = 0; i < kElements; ++i) {
        switch (t.type[i]) {
        case 0:
            t.angle[i] = t.slope[i] = GEO_NULL;
            t.start_h[i] = h;
            t.start_v[i] = v;
            h += t.a[i];
            v += t.b[i];
            t.end_h[i] = h;
            t.end_v[i] = v;
            break;
        case 1:
            t.angle[i] = t.a[i];
            t.slope[i] = std::tan(t.angle[i]);
            t.start_h[i] = h;
            t.start_v[i] = v;
            h += t.b[i];
            v += t.b[i] * t.slope[i];
            t.end_h[i] = h;
            t.end_v[i] = v;
            break;
        case 2:
            if (std::fabs(t.a[i]) < 0.0005) {
                t.angle[i] = t.b[i] > 0.0 ? kHalfPi : -kHalfPi;
                t.slope[i] = GEO_NULL;
            } else {
                t.angle[i] = std::atan(t.b[i] / t.a[i]);
                t.slope[i] = std::tan(t.angle[i]);
            }
            t.start_h[i] = h;
            t.start_v[i] = v;
            h += t.a[i];
            v += t.b[i];
            t.end_h[i] = h;
            t.end_v[i] = v;
            break;
        case 4:
            t.start_h[i] = t.end_h[i] = t.a[i];
            t.start_v[i] = t.end_v[i] = t.b[i];
            t.angle[i] = t.c[i];
            t.slope[i] = std::tan(t.angle[i]);
            break;
        default:
            t.angle[i] = t.slope[i] = GEO_NULL;
            t.start_h[i] = t.end_h[i] = h;
            t.start_v[i] = t.end_v[i] = v;
            break;
        }
    }
    t.shoulder_h = h;
    t.shoulder_v = v;
}

QV5_BARE void bare_template_deltas(const BareTemplate& t, double offset, double height, double& dv,
                                   double& angle) {
    dv = angle = GEO_NULL;
    for (int i = 0; i < kElements; ++i) {
        const int type = t.type[i];
        if (type == 0) {
            if (offset <= t.end_h[i]) {
                return;
            }
        } else if (type == 1 || type == 2) {
            if (offset <= t.end_h[i]) {
                dv = height - (t.start_v[i] + (offset - t.start_h[i]) * t.slope[i]);
                angle = t.angle[i];
                return;
            }
        } else if (type == 5) {
            return;
        }
    }
}

QV5_BARE void bare_slope_deltas(const BareTemplate& t, double offset, double height, int cut,
                                int& in_ditch, double& dv, double& slope_angle, double& point_angle,
                                double& catch_offset) {
    dv = point_angle = catch_offset = GEO_NULL;
    in_ditch = 0;
    const int last = kElements - 1;
    if (t.type[last] != 5 || !(std::fabs(offset) > t.shoulder_h)) {
        return;
    }
    slope_angle = cut != 0 ? t.a[last] : t.b[last];
    const double dh = offset - t.shoulder_h;
    const double dv0 = height - t.shoulder_v;
    double run;
    if (cut != 0) {
        if (dh < t.c[last]) {
            in_ditch = 1;
            return;
        }
        run = dh - t.c[last];
        dv = dv0 - std::tan(t.a[last]) * run;
        catch_offset = dv / std::tan(t.a[last]) + offset;
    } else {
        run = dh;
        dv = std::tan(t.b[last]) * run + dv0;
        catch_offset = offset - dv / std::tan(t.b[last]);
    }
    point_angle = run < 0.001 ? (dv0 > 0.0 ? kHalfPi : -kHalfPi) : std::atan(dv0 / run);
}

QV5_BARE void bare_interpolate(const BareTemplate& x, const BareTemplate& y, double ratio,
                               BareTemplate& r) {
    for (int i = 0; i < kElements; ++i) {
        r.type[i] = x.type[i];
        r.a[i] = x.a[i] + (y.a[i] - x.a[i]) * ratio;
        r.b[i] = x.b[i] + (y.b[i] - x.b[i]) * ratio;
        r.c[i] = x.c[i] + (y.c[i] - x.c[i]) * ratio;
    }
    bare_derive(r);
}

// ---- the two templates, as the library and as arrays ---------------------------------------

struct Pair {
    CGeoTemplate lib[2];
    BareTemplate bare[2];
};

void add(CGeoTemplate& lib, BareTemplate& bare, int i, int type, double a, double b, double c) {
    bare.type[i] = type;
    bare.a[i] = a;
    bare.b[i] = b;
    bare.c[i] = c;
    switch (type) {
    case 0: {
        geotemp_StepData r{a, b};
        lib.AddElement(geotemp_Step, &r);
        break;
    }
    case 1: {
        geotemp_GradeWidthData r{a, b};
        lib.AddElement(geotemp_GradeWidth, &r);
        break;
    }
    case 2: {
        geotemp_DeltaHVData r{a, b};
        lib.AddElement(geotemp_DeltaHV, &r);
        break;
    }
    case 3: {
        geotemp_FeatureData r;
        std::memset(&r, 0, sizeof r);
        r.Name[0] = 'F';
        lib.AddElement(geotemp_Feature, &r);
        break;
    }
    case 4: {
        geotemp_FixedPointData r;
        std::memset(&r, 0, sizeof r);
        r.H = a;
        r.V = b;
        r.Angle = c;
        lib.AddElement(geotemp_FixedPoint, &r);
        break;
    }
    default: {
        geotemp_SideSlopeData r{a, b, c};
        lib.AddElement(geotemp_SideSlope, &r);
        break;
    }
    }
}

const Pair& templates() {
    static const Pair pair = [] {
        Pair p;
        for (int k = 0; k < 2; ++k) {
            const double s = 1.0 + 0.1 * k; // the second template is a little wider
            int i = 0;
            add(p.lib[k], p.bare[k], i++, 1, -0.02, 3.5 * s, 0.0);
            add(p.lib[k], p.bare[k], i++, 3, 0.0, 0.0, 0.0);
            add(p.lib[k], p.bare[k], i++, 1, -0.02, 3.5 * s, 0.0);
            add(p.lib[k], p.bare[k], i++, 3, 0.0, 0.0, 0.0);
            add(p.lib[k], p.bare[k], i++, 2, 1.5 * s, -0.06, 0.0);
            add(p.lib[k], p.bare[k], i++, 1, -0.04, 0.45, 0.0);
            add(p.lib[k], p.bare[k], i++, 4, 9.0 * s, -0.2, 0.0);
            add(p.lib[k], p.bare[k], i++, 0, 0.0, 0.15, 0.0);
            add(p.lib[k], p.bare[k], i++, 2, 0.15, 0.0, 0.0);
            add(p.lib[k], p.bare[k], i++, 2, 1.8 * s, 0.036, 0.0);
            add(p.lib[k], p.bare[k], i++, 3, 0.0, 0.0, 0.0);
            add(p.lib[k], p.bare[k], i++, 5, 0.46, 0.32, 1.0 * s);
            bare_derive(p.bare[k]);
        }
        return p;
    }();
    return pair;
}

/// Offsets across the whole surface, offsets beyond the shoulder, heights and blend ratios.
struct Queries {
    std::array<double, kTableSize> surface{};
    std::array<double, kTableSize> beyond{};
    std::array<double, kTableSize> height{};
    std::array<double, kTableSize> ratio{};
    Queries() {
        const double shoulder = templates().lib[0].HOffsetShoulder();
        std::mt19937_64 rng(4242);
        std::uniform_real_distribution<double> unit(0.0, 1.0);
        for (std::size_t i = 0; i < kTableSize; ++i) {
            surface[i] = unit(rng) * shoulder;
            beyond[i] = shoulder + 0.01 + unit(rng) * 20.0;
            height[i] = unit(rng) * 6.0 - 3.0;
            ratio[i] = unit(rng);
        }
    }
};

const Queries& queries() {
    static const Queries q;
    return q;
}

void register_all() {
    const Pair& p = templates();
    const Queries& q = queries();
    pair(
        "CGeoTemplate_TemplateDeltas",
        [&p, &q](std::size_t i) {
            double dv;
            double angle;
            p.lib[0].TemplateDeltas(q.surface[i], q.height[i], dv, angle);
            benchmark::DoNotOptimize(dv);
            benchmark::DoNotOptimize(angle);
        },
        [&p, &q](std::size_t i) {
            double dv;
            double angle;
            opaque(bare_template_deltas)(p.bare[0], q.surface[i], q.height[i], dv, angle);
            benchmark::DoNotOptimize(dv);
            benchmark::DoNotOptimize(angle);
        });
    pair(
        "CGeoTemplate_SlopeDeltas",
        [&p, &q](std::size_t i) {
            int in_ditch;
            double dv, slope, point, catch_offset;
            p.lib[0].SlopeDeltas(q.beyond[i], q.height[i], static_cast<int>(i & 1), in_ditch, dv,
                                 slope, point, catch_offset);
            benchmark::DoNotOptimize(dv);
            benchmark::DoNotOptimize(catch_offset);
            benchmark::DoNotOptimize(point);
        },
        [&p, &q](std::size_t i) {
            int in_ditch;
            double dv, slope, point, catch_offset;
            opaque(bare_slope_deltas)(p.bare[0], q.beyond[i], q.height[i], static_cast<int>(i & 1),
                                      in_ditch, dv, slope, point, catch_offset);
            benchmark::DoNotOptimize(dv);
            benchmark::DoNotOptimize(catch_offset);
            benchmark::DoNotOptimize(point);
        });
    static CGeoTemplate lib_result;
    static BareTemplate bare_result;
    pair(
        "CGeoTemplate_Interpolate",
        [&p, &q](std::size_t i) {
            p.lib[0].Interpolate(&p.lib[1], q.ratio[i], &lib_result);
            benchmark::DoNotOptimize(lib_result.HOffsetShoulder());
        },
        [&p, &q](std::size_t i) {
            opaque(bare_interpolate)(p.bare[0], p.bare[1], q.ratio[i], bare_result);
            benchmark::DoNotOptimize(bare_result.shoulder_h);
        });
}

} // namespace

int main(int argc, char** argv) {
    return run_benchmarks(argc, argv, register_all);
}
