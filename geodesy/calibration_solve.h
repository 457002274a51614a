// The plain maths of the site calibration: the horizontal similarity and the vertical plane.
// Internal header; never installed.
#ifndef QV5_GEODESY_CALIBRATION_SOLVE_H
#define QV5_GEODESY_CALIBRATION_SOLVE_H

#include "geodesy/gauss_jordan.h"
#include "qv5/geodef.h"

namespace qv5::detail {

/// Rounds of the horizontal least-squares iteration before it gives up.
inline constexpr int kSimilarityMaxRounds = 20;
/// The shifts have converged when a round changes them by less than this, metres.
inline constexpr double kShiftStep = 0.001;
/// The rotation has converged when a round changes it by less than one minute of arc, radians.
inline constexpr double kRotationStep = 0.016666666666666666 * 0.017453292519943295;
/// The scale has converged when a round changes it by less than this.
inline constexpr double kScaleStep = 1e-5;
/// Distance from the first of two vertical points to the made-up third one, metres.
inline constexpr double kMadeUpPointDistance = 20.0;

/// A plane similarity: E' = s (E cos r + N sin r) + shift_east,
/// N' = s (-E sin r + N cos r) + shift_north.
struct Similarity {
    double shift_east;
    double shift_north;
    double rotation;
    double scale;
};

/// Rotation and scale that take the grid line A->B onto the site line A->B (no shift: both
/// systems are centred on the same point). Rotation = normalised(bearing(site) -
/// bearing(grid)); scale = site length / grid length.
/// @return false when the grid points coincide in plan (no scale exists)
bool two_point_similarity(const geo_nee& grid_a, const geo_nee& grid_b, const geo_nee& site_a,
                          const geo_nee& site_b, Similarity& result);

/// Least-squares similarity from grid to site coordinates of the points `index[0..count)`
/// (Gauss-Newton from shift 0, rotation 0, scale 1; normal equations in the order shift east,
/// shift north, rotation, scale; each point adds its east row and then its north row).
/// Converged when a round changes the shifts by less than kShiftStep, the rotation by less than
/// kRotationStep and the scale by less than kScaleStep.
/// @return false after kSimilarityMaxRounds rounds without convergence
bool fit_similarity(const geo_nee* grid, const geo_nee* site, const int* index, int count,
                    Similarity& result);

/// A height correction dh = shift + north * slope_north + east * slope_east.
struct Plane {
    double shift;
    double slope_north;
    double slope_east;
};

/// One observation of a plane: its position and the height difference there.
struct PlaneRow {
    double north;
    double east;
    double dh;
};

/// The third row of a two-point plane: kMadeUpPointDistance from A at right angles (clockwise)
/// to A->B, with A's height difference, so that the plane tilts only along A-B.
PlaneRow made_up_plane_row(const geo_nee& grid_a, const geo_nee& grid_b, double dh_a);

/// Least-squares plane X = ((A^T A)^-1 A^T) L through `count` rows (1, north, east) with
/// heights L = dh, evaluated as the matrix products are written: A^T A accumulated over the rows
/// in order, inverted by Gauss-Jordan, multiplied by A^T, then by L.
/// @param row_at callable giving PlaneRow number i (called twice per row)
/// @return false when the normal matrix has an exactly zero pivot
template <class RowAt>
bool fit_plane(int count, RowAt row_at, Plane& result) {
    double normal[9] = {0.0, 0.0, 0.0, 0.0, 0.0, 0.0, 0.0, 0.0, 0.0};
    for (int j = 0; j < 3; ++j) {
        for (int k = 0; k < 3; ++k) {
            double sum = 0.0;
            for (int i = 0; i < count; ++i) {
                const PlaneRow row = row_at(i);
                const double a[3] = {1.0, row.north, row.east};
                sum += a[j] * a[k];
            }
            normal[k + 3 * j] = sum;
        }
    }
    double inverse[9];
    if (!gauss_jordan_invert(3, normal, inverse)) {
        return false;
    }
    double x[3] = {0.0, 0.0, 0.0};
    for (int i = 0; i < count; ++i) {
        const PlaneRow row = row_at(i);
        const double a[3] = {1.0, row.north, row.east};
        for (int j = 0; j < 3; ++j) {
            double b = 0.0; // (A^T A)^-1 A^T, element (j, i)
            for (int k = 0; k < 3; ++k) {
                b += inverse[k + 3 * j] * a[k];
            }
            x[j] += b * row.dh;
        }
    }
    result = Plane{x[0], x[1], x[2]};
    return true;
}

/// A longitude moved by whole turns to within half a turn of `reference`, radians: the same
/// place, on the same side of the antimeridian as the reference, so that a mean of longitudes
/// across it is a longitude between them. A longitude already within half a turn (and one that
/// is not finite) comes back bit for bit as it is.
double unwrapped_longitude(double lon, double reference);

/// A longitude brought into (-pi, pi] by whole turns, radians; one already in it (and one that
/// is not finite) comes back bit for bit as it is.
double longitude_in_range(double lon);

} // namespace qv5::detail

#endif // QV5_GEODESY_CALIBRATION_SOLVE_H
