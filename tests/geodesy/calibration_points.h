// Calibration points for the tests: names, and control points made from PROJ-projected
// positions with a known similarity and inclined plane applied.
#ifndef QV5_TESTS_GEODESY_CALIBRATION_POINTS_H
#define QV5_TESTS_GEODESY_CALIBRATION_POINTS_H

#include "proj_reference.h"
#include "qv5/geotrans.h"

#include <cmath>
#include <cstdint>
#include <string>
#include <vector>

namespace qv5::test {

inline constexpr std::uint32_t kBoth = geotrans_UseHorizontal | geotrans_UseVertical;

inline geotrans_CalibrationPoint calibration_point(std::u16string_view name, geo_llh llh,
                                                   geo_nee nee, std::uint32_t flags) {
    geotrans_CalibrationPoint p{};
    for (std::size_t i = 0; i < name.size() && i < 99; ++i) {
        p.name[i] = name[i];
    }
    p.llh = llh;
    p.nee = nee;
    p.hResidual = 0.0;
    p.vResidual = 0.0;
    p.flags = flags;
    return p;
}

inline std::u16string name_of(const geotrans_CalibrationPoint& p) {
    std::u16string name;
    for (int i = 0; i < 100 && p.name[i] != 0; ++i) {
        name.push_back(static_cast<char16_t>(p.name[i]));
    }
    return name;
}

/// A site whose coordinates are a known similarity and inclined plane applied to the
/// stereographic projection (PROJ) about the mean latitude and longitude of its control points:
///   site plan = offset + s R(theta) grid,  R: E' = E cos + N sin, N' = -E sin + N cos
///   site elevation = height + shift + slope_north (N - mean N) + slope_east (E - mean E)
/// where (N, E) are site coordinates and the means are over the control points.
struct KnownSite {
    double scale = 1.000045;
    double rotation = 0.0123; // radians
    double offset_north = 451000.0;
    double offset_east = 132000.0;
    double shift = -43.21;        // metres
    double slope_north = 2.5e-5;  // metres per metre
    double slope_east = -1.75e-5; // metres per metre
    std::vector<geo_llh> control;
    double lat0 = 0.0;
    double lon0 = 0.0;
    double mean_north = 0.0;
    double mean_east = 0.0;

    explicit KnownSite(std::vector<geo_llh> positions) : control(std::move(positions)) {
        for (const geo_llh& p : control) {
            lat0 += p.lat;
            lon0 += p.lon;
        }
        lat0 /= static_cast<double>(control.size());
        lon0 /= static_cast<double>(control.size());
        centre_site();
    }

    /// A site projected about the given centre longitude (radians) rather than the plain mean.
    KnownSite(std::vector<geo_llh> positions, double centre_lon) : control(std::move(positions)) {
        for (const geo_llh& p : control) {
            lat0 += p.lat;
        }
        lat0 /= static_cast<double>(control.size());
        lon0 = centre_lon;
        centre_site();
    }

    void centre_site() {
        for (const geo_llh& p : control) {
            const geo_nee plan = site_plan(p);
            mean_north += plan.north;
            mean_east += plan.east;
        }
        mean_north /= static_cast<double>(control.size());
        mean_east /= static_cast<double>(control.size());
    }

    geo_nee site_plan(const geo_llh& llh) const {
        ProjOperation stere(stereographic_definition(lat0, lon0));
        const PJ_COORD g = stere.forward(llh.lon, llh.lat);
        const double e = g.xy.x;
        const double n = g.xy.y;
        const double c = std::cos(rotation);
        const double s = std::sin(rotation);
        return geo_nee{offset_north + scale * (-e * s + n * c),
                       offset_east + scale * (e * c + n * s), GEO_NULL};
    }

    geo_nee site(const geo_llh& llh) const {
        geo_nee p = site_plan(llh);
        p.elev = llh.height + shift + slope_north * (p.north - mean_north) +
                 slope_east * (p.east - mean_east);
        return p;
    }

    std::vector<geotrans_CalibrationPoint> points(std::uint32_t flags = kBoth) const {
        std::vector<geotrans_CalibrationPoint> result;
        for (std::size_t i = 0; i < control.size(); ++i) {
            const std::u16string name = u"CP" + std::u16string(1, char16_t(u'1' + i));
            result.push_back(calibration_point(name, control[i], site(control[i]), flags));
        }
        return result;
    }
};

/// Six control positions a few kilometres apart around 52.1 N 5.2 E, with ellipsoidal heights.
inline std::vector<geo_llh> dutch_positions() {
    constexpr double d = kRadiansPerDegree;
    return {geo_llh{52.0812 * d, 5.1630 * d, 44.10}, geo_llh{52.1035 * d, 5.2219 * d, 45.73},
            geo_llh{52.1298 * d, 5.1804 * d, 43.88}, geo_llh{52.0901 * d, 5.2487 * d, 47.02},
            geo_llh{52.1187 * d, 5.2650 * d, 46.15}, geo_llh{52.0689 * d, 5.2105 * d, 44.67}};
}

} // namespace qv5::test

#endif
