// The horizontal similarity and the vertical plane of a site calibration.
#include "geodesy/calibration_solve.h"

#include "core/constants.h"
#include "qv5/geosurvey.h"

#include <cmath>

namespace qv5::detail {

namespace {

constexpr int kUnknowns = 4; // shift east, shift north, rotation, scale

void add_observation(const double row[kUnknowns], double misclosure,
                     double normal[kUnknowns * kUnknowns], double rhs[kUnknowns]) {
    for (int j = 0; j < kUnknowns; ++j) {
        for (int k = 0; k < kUnknowns; ++k) {
            normal[k + kUnknowns * j] += row[j] * row[k];
        }
        rhs[j] += row[j] * misclosure;
    }
}

} // namespace

bool two_point_similarity(const geo_nee& grid_a, const geo_nee& grid_b, const geo_nee& site_a,
                          const geo_nee& site_b, Similarity& result) {
    const double grid_length = geo_horz_dist(grid_a, grid_b);
    if (grid_length == 0.0) {
        return false;
    }
    result.rotation =
        geo_normalised_bearing(geo_grid_bearing(site_a, site_b) - geo_grid_bearing(grid_a, grid_b));
    result.scale = geo_horz_dist(site_a, site_b) / grid_length;
    result.shift_north = 0.0;
    result.shift_east = 0.0;
    return true;
}

bool fit_similarity(const geo_nee* grid, const geo_nee* site, const int* index, int count,
                    Similarity& result) {
    // Linearised observation equations of E' and N' in (shift east, shift north, rotation,
    // scale), solved afresh each round through the normal equations.
    double x[kUnknowns] = {0.0, 0.0, 0.0, 1.0};
    for (int round = 0; round < kSimilarityMaxRounds; ++round) {
        double normal[kUnknowns * kUnknowns] = {};
        double rhs[kUnknowns] = {};
        const double c = std::cos(x[2]);
        const double s = std::sin(x[2]);
        const double scale = x[3];
        for (int n = 0; n < count; ++n) {
            const int i = index[n];
            const double e = grid[i].east;
            const double nn = grid[i].north;
            const double rotated_e = e * c + nn * s;
            const double rotated_n = nn * c - e * s;
            const double computed_e = scale * rotated_e + x[0];
            const double computed_n = scale * rotated_n + x[1];
            const double east_row[kUnknowns] = {1.0, 0.0, scale * rotated_n, rotated_e};
            const double north_row[kUnknowns] = {0.0, 1.0, -scale * rotated_e, rotated_n};
            add_observation(east_row, site[i].east - computed_e, normal, rhs);
            add_observation(north_row, site[i].north - computed_n, normal, rhs);
        }
        double work[kUnknowns * kUnknowns];
        double inverse[kUnknowns * kUnknowns];
        for (int k = 0; k < kUnknowns * kUnknowns; ++k) {
            work[k] = normal[k];
        }
        if (!gauss_jordan_invert(kUnknowns, work, inverse)) {
            // An inversion that fails leaves the matrix as it was, and the step is taken with
            // it unchecked; such a step rarely converges, and then the solution fails.
            for (int k = 0; k < kUnknowns * kUnknowns; ++k) {
                inverse[k] = normal[k];
            }
        }
        double step[kUnknowns];
        for (int j = 0; j < kUnknowns; ++j) {
            double sum = 0.0;
            for (int k = 0; k < kUnknowns; ++k) {
                sum += inverse[k + kUnknowns * j] * rhs[k];
            }
            step[j] = sum;
        }
        for (int j = 0; j < kUnknowns; ++j) {
            x[j] += step[j];
        }
        if (std::fabs(step[0]) < kShiftStep && std::fabs(step[1]) < kShiftStep &&
            std::fabs(step[2]) < kRotationStep && std::fabs(step[3]) < kScaleStep) {
            result = Similarity{x[0], x[1], x[2], x[3]};
            return true;
        }
    }
    return false;
}

PlaneRow made_up_plane_row(const geo_nee& grid_a, const geo_nee& grid_b, double dh_a) {
    const double bearing = geo_normalised_bearing(geo_grid_bearing(grid_a, grid_b) + kHalfPi);
    geo_nee c;
    geo_grid_follow(grid_a, bearing, kMadeUpPointDistance, 0.0, c);
    return PlaneRow{c.north, c.east, dh_a};
}

// Longitudes are added up for the calibration's centre. Points on both sides of the antimeridian
// (179.9995 E and 179.9995 W) would otherwise average to a meridian half a world away; taking
// each relative to the first point keeps the sum on one side. Only a longitude more than half a
// turn from the reference is touched, so every calibration that does not straddle the
// antimeridian keeps its centre to the last bit.
double unwrapped_longitude(double lon, double reference) {
    const double difference = lon - reference;
    if (!(std::fabs(difference) > kPi) || !std::isfinite(difference)) {
        return lon;
    }
    return lon - kTwoPi * std::round(difference / kTwoPi);
}

// std::remainder is exact: the result is lon minus the nearest whole multiple of kTwoPi, in
// [-pi, pi]; the one end that belongs to the other side is moved across.
double longitude_in_range(double lon) {
    if (!std::isfinite(lon) || (lon > -kPi && lon <= kPi)) {
        return lon;
    }
    const double wrapped = std::remainder(lon, kTwoPi);
    return wrapped <= -kPi ? wrapped + kTwoPi : wrapped;
}

} // namespace qv5::detail
