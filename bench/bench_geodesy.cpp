// The geodesy and the site calibration, each beside PROJ doing the same work on the same points
// in the same run.
//
// Naming: BM_<call> times the library; BM_<call>_Proj times PROJ's equivalent operation, one
// proj_trans per point as the library is called once per point:
//   _llh2xyz, _xyz2llh        +proj=cart +ellps=WGS84 (forward, inverse)
//   stereographic             +proj=stere +lat_0 +lon_0 +k_0=1 +x_0=0 +y_0=0 +ellps=WGS84
//   CGeo7PTrans::Transform    +proj=helmert ... +convention=coordinate_frame +exact
//   CGeoTransformation chain  +proj=pipeline of that stere and an affine step carrying the
//                             solved similarity and plane (forward, inverse)
// The geocentric conversions are also timed beside GeographicLib's Geocentric
// (BM_<call>_Geocentric) and beside the bare formula written here (BM_<call>_Formula): PROJ pays a
// per-call dispatch (about 22 ns for a no-op) that makes its figures slower than the maths is.
// bench/ratios.py pairs them through its BASELINES table and reports the fastest.
#include "bench_support.h"

#include "qv5/qv5lib.h"

#include <GeographicLib/Geocentric.hpp>
#include <benchmark/benchmark.h>
#include <proj.h>

#include <array>
#include <cmath>
#include <cstdio>
#include <string>
#include <vector>

namespace {

using qv5::bench::kTableSize;

constexpr double kDeg = 0.017453292519943295;
constexpr double kSiteLat = 52.1 * kDeg;
constexpr double kSiteLon = 5.2 * kDeg;

/// Positions within about 5 km of the site centre, with ellipsoidal heights.
struct GeodesyInputs {
    std::array<geo_llh, kTableSize> llh{};
    std::array<geo_vector, kTableSize> xyz{};

    GeodesyInputs() {
        std::mt19937_64 rng(20261122);
        std::uniform_real_distribution<double> offset(-0.05, 0.05);
        std::uniform_real_distribution<double> height(0.0, 100.0);
        for (std::size_t i = 0; i < kTableSize; ++i) {
            llh[i] =
                geo_llh{kSiteLat + offset(rng) * kDeg, kSiteLon + offset(rng) * kDeg, height(rng)};
            _llh2xyz(&llh[i], &xyz[i]);
        }
    }
};

const GeodesyInputs& inputs() {
    static const GeodesyInputs table;
    return table;
}

/// One PROJ operation for the whole run.
class Proj {
public:
    explicit Proj(const std::string& definition)
        : m_context(proj_context_create()),
          m_operation(proj_create(m_context, definition.c_str())) {
        if (m_operation == nullptr) {
            std::fprintf(stderr, "PROJ refused: %s\n", definition.c_str());
            std::abort();
        }
    }
    Proj(const Proj&) = delete;
    Proj& operator=(const Proj&) = delete;
    ~Proj() {
        proj_destroy(m_operation);
        proj_context_destroy(m_context);
    }
    PJ_COORD run(PJ_DIRECTION direction, double a, double b, double c) const {
        return proj_trans(m_operation, direction, proj_coord(a, b, c, 0.0));
    }

private:
    PJ_CONTEXT* m_context;
    PJ* m_operation;
};

std::string number(double value) {
    char text[40];
    std::snprintf(text, sizeof text, "%.17g", value);
    return text;
}

std::string stere_step(double lat0, double lon0) {
    return "+proj=stere +lat_0=" + number(lat0 / kDeg) + " +lon_0=" + number(lon0 / kDeg) +
           " +k_0=1 +x_0=0 +y_0=0 +ellps=WGS84";
}

/// A calibration of `count` control points on a known similarity and plane of the site.
void calibrate(CGeoTransformation& t, int count) {
    const GeodesyInputs& in = inputs();
    CGeoEllipsoid wgs84(6378137.0, 0.0033528106647474805);
    CGeoStereographic plane(geo_llh{kSiteLat, kSiteLon, 0.0}, geo_nee{0.0, 0.0, 0.0}, 1.0, wgs84);
    for (int i = 0; i < count; ++i) {
        geotrans_CalibrationPoint p{};
        p.name[0] = static_cast<unsigned short>('A' + i);
        p.llh = in.llh[static_cast<std::size_t>(i) * 37];
        geo_nee g{};
        plane.Forward(p.llh, g);
        const double c = std::cos(0.0123);
        const double s = std::sin(0.0123);
        p.nee = geo_nee{451000.0 + 1.000045 * (-g.east * s + g.north * c),
                        132000.0 + 1.000045 * (g.east * c + g.north * s),
                        p.llh.height - 43.21 + 2.5e-5 * g.north - 1.75e-5 * g.east};
        // A few millimetres of disagreement, as real control has.
        p.nee.north += 0.001 * ((i * 7) % 5 - 2);
        p.nee.east += 0.001 * ((i * 3) % 5 - 2);
        p.flags = geotrans_UseHorizontal | geotrans_UseVertical;
        t.AddPoint(&p, nullptr);
    }
}

/// The PROJ pipeline equivalent to a calibration's chain: the same projection, then one affine
/// step carrying the solved similarity and plane.
///
/// With (x, y) the projected east and north offsets from the centre and a = s cos(theta),
/// b = s sin(theta), the chain gives E' = e0 + tE + a x + b y, N' = n0 + tN - b x + a y and
/// z' = z + h0 + kN (N' - n0) + kE (E' - e0); expanded, the affine coefficients are those
/// below. The constant terms are what the chain gives at the projection centre itself, whose
/// projection is exactly the false origin (n0, e0).
std::string chain_pipeline(CGeoTransformation& t) {
    const double a = t.HorizontalScale() * std::cos(t.HorizontalRotation());
    const double b = t.HorizontalScale() * std::sin(t.HorizontalRotation());
    const double kn = t.VerticalSlopeNorth();
    const double ke = t.VerticalSlopeEast();
    geo_nee centre{};
    t.Forward(geo_llh{t.OriginLat(), t.OriginLon(), 0.0}, centre);
    return "+proj=pipeline +step " + stere_step(t.OriginLat(), t.OriginLon()) +
           " +step +proj=affine +xoff=" + number(centre.east) + " +yoff=" + number(centre.north) +
           " +zoff=" + number(centre.elev) + " +s11=" + number(a) + " +s12=" + number(b) +
           " +s13=0 +s21=" + number(-b) + " +s22=" + number(a) +
           " +s23=0 +s31=" + number(ke * a - kn * b) + " +s32=" + number(ke * b + kn * a) +
           " +s33=1";
}

constexpr double kWgs84A = 6378137.0;
constexpr double kWgs84F = 1.0 / 298.257223563;
constexpr double kWgs84E2 = kWgs84F * (2.0 - kWgs84F);

/// Geodetic to geocentric, the textbook formula with a square root for the prime vertical.
[[gnu::noinline]] geo_vector bare_llh2xyz(const geo_llh& p) {
    const double s = std::sin(p.lat);
    const double c = std::cos(p.lat);
    const double n = kWgs84A / std::sqrt(1.0 - kWgs84E2 * s * s);
    return geo_vector{(n + p.height) * c * std::cos(p.lon), (n + p.height) * c * std::sin(p.lon),
                      (n * (1.0 - kWgs84E2) + p.height) * s};
}

/// Geocentric to geodetic by the fixed-point iteration on the latitude, to 5e-10 rad as the
/// library is asked.
[[gnu::noinline]] geo_llh bare_xyz2llh(const geo_vector& v) {
    const double p = std::sqrt(v.x * v.x + v.y * v.y);
    double lat = std::atan2(v.z, p * (1.0 - kWgs84E2));
    double n = kWgs84A;
    double height = 0.0;
    for (int i = 0; i < 10; ++i) {
        const double s = std::sin(lat);
        n = kWgs84A / std::sqrt(1.0 - kWgs84E2 * s * s);
        height = p / std::cos(lat) - n;
        const double next_lat = std::atan2(v.z, p * (1.0 - kWgs84E2 * n / (n + height)));
        const bool done = std::fabs(next_lat - lat) < 5e-10;
        lat = next_lat;
        if (done) {
            break;
        }
    }
    return geo_llh{lat, std::atan2(v.y, v.x), height};
}

/// Registers BM_<name> beside PROJ's BM_<name>_Proj.
template <class Library, class Reference>
void pair(const std::string& name, Library library, Reference reference) {
    qv5::bench::pair(name, library, reference, "_Proj");
}

void register_all() {
    const GeodesyInputs& in = inputs();

    static const Proj cart("+proj=cart +ellps=WGS84");
    pair(
        "llh2xyz",
        [&in](std::size_t i) {
            geo_vector out;
            _llh2xyz(&in.llh[i], &out);
            benchmark::DoNotOptimize(out);
        },
        [&in](std::size_t i) {
            benchmark::DoNotOptimize(
                cart.run(PJ_FWD, in.llh[i].lon, in.llh[i].lat, in.llh[i].height));
        });
    pair(
        "xyz2llh",
        [&in](std::size_t i) {
            geo_llh out;
            _xyz2llh(&in.xyz[i], &out, 5e-10);
            benchmark::DoNotOptimize(out);
        },
        [&in](std::size_t i) {
            benchmark::DoNotOptimize(cart.run(PJ_INV, in.xyz[i].x, in.xyz[i].y, in.xyz[i].z));
        });

    const GeographicLib::Geocentric& earth = GeographicLib::Geocentric::WGS84();
    constexpr double kDegreesPerRadian = 57.29577951308232;
    qv5::bench::single("llh2xyz_Geocentric", [&in, &earth](std::size_t i) {
        double x;
        double y;
        double z;
        earth.Forward(in.llh[i].lat * kDegreesPerRadian, in.llh[i].lon * kDegreesPerRadian,
                      in.llh[i].height, x, y, z);
        benchmark::DoNotOptimize(x);
        benchmark::DoNotOptimize(y);
        benchmark::DoNotOptimize(z);
    });
    qv5::bench::single("xyz2llh_Geocentric", [&in, &earth](std::size_t i) {
        double lat;
        double lon;
        double h;
        earth.Reverse(in.xyz[i].x, in.xyz[i].y, in.xyz[i].z, lat, lon, h);
        benchmark::DoNotOptimize(lat);
        benchmark::DoNotOptimize(lon);
        benchmark::DoNotOptimize(h);
    });
    qv5::bench::single("llh2xyz_Formula",
                       [&in](std::size_t i) { benchmark::DoNotOptimize(bare_llh2xyz(in.llh[i])); });
    qv5::bench::single("xyz2llh_Formula",
                       [&in](std::size_t i) { benchmark::DoNotOptimize(bare_xyz2llh(in.xyz[i])); });

    static CGeoEllipsoid wgs84(6378137.0, 0.0033528106647474805);
    static CGeoStereographic stereo(geo_llh{kSiteLat, kSiteLon, 0.0}, geo_nee{0.0, 0.0, 0.0}, 1.0,
                                    wgs84);
    static const Proj stere(stere_step(kSiteLat, kSiteLon));
    static std::array<geo_nee, kTableSize> plane{};
    for (std::size_t i = 0; i < kTableSize; ++i) {
        stereo.Forward(in.llh[i], plane[i]);
    }
    pair(
        "CGeoStereographic_Forward",
        [&in](std::size_t i) {
            geo_nee out;
            stereo.Forward(in.llh[i], out);
            benchmark::DoNotOptimize(out);
        },
        [&in](std::size_t i) {
            benchmark::DoNotOptimize(stere.run(PJ_FWD, in.llh[i].lon, in.llh[i].lat, 0.0));
        });
    pair(
        "CGeoStereographic_Reverse",
        [](std::size_t i) {
            geo_llh out{};
            stereo.Reverse(plane[i], out);
            benchmark::DoNotOptimize(out);
        },
        [](std::size_t i) {
            benchmark::DoNotOptimize(stere.run(PJ_INV, plane[i].east, plane[i].north, 0.0));
        });

    const double rx = 2.0e-6;
    const double ry = -1.5e-6;
    const double rz = 3.0e-6;
    const double scale = 1.0000042;
    static CGeo7PTrans seven;
    seven.Set(geo_nee{0.0, 0.0, 0.0}, rx, ry, rz, 1.5, -2.5, 0.75, scale);
    static const Proj helmert(
        "+proj=helmert +x=1.5 +y=-2.5 +z=0.75 +rx=" + number(rx / kDeg * 3600.0) +
        " +ry=" + number(ry / kDeg * 3600.0) + " +rz=" + number(rz / kDeg * 3600.0) +
        " +s=" + number((scale - 1.0) * 1e6) + " +convention=coordinate_frame +exact");
    pair(
        "CGeo7PTrans_Transform",
        [](std::size_t i) {
            geo_nee p = plane[i];
            seven.Transform(p);
            benchmark::DoNotOptimize(p);
        },
        [](std::size_t i) {
            benchmark::DoNotOptimize(
                helmert.run(PJ_FWD, plane[i].east, plane[i].north, plane[i].elev));
        });

    static CGeoTransformation site;
    calibrate(site, 20);
    static const Proj chain(chain_pipeline(site));
    static std::array<geo_nee, kTableSize> grid{};
    for (std::size_t i = 0; i < kTableSize; ++i) {
        site.Forward(in.llh[i], grid[i]);
        // The pipeline must do the same work: it gives the same coordinates.
        const PJ_COORD c = chain.run(PJ_FWD, in.llh[i].lon, in.llh[i].lat, in.llh[i].height);
        if (std::fabs(c.xyz.x - grid[i].east) > 1e-6 || std::fabs(c.xyz.y - grid[i].north) > 1e-6 ||
            std::fabs(c.xyz.z - grid[i].elev) > 1e-6) {
            std::fprintf(stderr, "the PROJ pipeline differs from the calibration at point %zu\n",
                         i);
            std::abort();
        }
    }
    pair(
        "CGeoTransformation_Forward",
        [&in](std::size_t i) {
            geo_nee out;
            site.Forward(in.llh[i], out);
            benchmark::DoNotOptimize(out);
        },
        [&in](std::size_t i) {
            benchmark::DoNotOptimize(
                chain.run(PJ_FWD, in.llh[i].lon, in.llh[i].lat, in.llh[i].height));
        });
    pair(
        "CGeoTransformation_Reverse",
        [](std::size_t i) {
            geo_llh out{};
            site.Reverse(grid[i], out);
            benchmark::DoNotOptimize(out);
        },
        [](std::size_t i) {
            benchmark::DoNotOptimize(chain.run(PJ_INV, grid[i].east, grid[i].north, grid[i].elev));
        });

    // Recomputing a whole 20-point calibration (what every change of the point set costs).
    benchmark::RegisterBenchmark("BM_CGeoTransformation_Recompute20", [](benchmark::State& state) {
        CGeoTransformation t;
        calibrate(t, 19);
        const geotrans_CalibrationPoint last = *site.NthPoint(19);
        for (auto _ : state) {
            t.AddPoint(&last, nullptr);
            t.DeleteNthPoint(19, nullptr);
        }
        state.SetLabel("two recomputations per iteration");
    });
}

} // namespace

int main(int argc, char** argv) {
    return qv5::bench::run_benchmarks(argc, argv, register_all);
}
