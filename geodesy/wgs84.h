// The WGS84 ellipsoid's numbers and the plain maths of the geodetic conversions. Internal
// header; never installed.
#ifndef QV5_GEODESY_WGS84_H
#define QV5_GEODESY_WGS84_H

#include "qv5/geodef.h"

namespace qv5::detail {

/// WGS84 semi-major axis, metres.
inline constexpr double kWgs84A = 6378137.0;
/// WGS84 flattening, 1 / 298.257223563.
inline constexpr double kWgs84F = 0.0033528106647474805;
/// WGS84 first eccentricity squared as positions have always been computed with it (rounded).
inline constexpr double kWgs84E2 = 0.00669437999014;
/// a(1 - e^2): numerator of the meridian radius.
inline constexpr double kWgs84AOneMinusE2 = 6335439.327292829;
/// 1 - e^2 as written for the Z component of geodetic -> ECEF.
inline constexpr double kOneMinusE2ForZ = 0.9933056200098587;
/// 1 - e^2 as written for the first latitude estimate of ECEF -> geodetic. It differs from
/// kOneMinusE2ForZ in the last digits; both are kept so that positions match to the bit.
inline constexpr double kOneMinusE2ForLatitude = 0.99330562000986;
/// A tolerance at or above this takes the first latitude estimate without iterating.
inline constexpr double kNoIterationTolerance = 10.0;
/// Previous-latitude seed of the iteration: far from any latitude, so round 1 never stops it.
inline constexpr double kLatitudeSeed = -100.0;
/// More rounds than this and the latitude iteration gives up.
inline constexpr int kMaxLatitudeRounds = 10;
/// Heights are written only within this latitude (pi/4): the formula p / cos(lat) - N loses
/// accuracy towards the poles, so beyond it the caller's height is kept.
inline constexpr double kHeightLatitudeLimit = 0.7853981633974483;
/// Latitude tolerance with which the reference of a local frame is converted.
inline constexpr double kLocalFrameTolerance = 5e-10;

/// Meridian (M) and prime-vertical (N) radii of curvature.
struct Curvature {
    double meridian;
    double prime_vertical;
};

/// Radii of curvature at a latitude: w = (1 - sin^2(lat) e^2)^0.5, M = a(1 - e^2) / w^3,
/// N = a / w.
Curvature wgs84_curvature(double lat);

/// The prime-vertical radius N alone, by the same w as wgs84_curvature.
double wgs84_prime_vertical(double lat);

/// Geodetic (radians, metres) to ECEF (metres), with no special cases.
geo_vector llh_to_xyz(double lat, double lon, double height);

/// Result of ECEF -> geodetic.
struct GeodeticResult {
    bool converged;      ///< false: ten rounds passed without convergence; nothing else is set
    bool height_written; ///< true within +-45 degrees of latitude
    double lat;
    double lon;
    double height;
};

/// ECEF to geodetic by the usual fixed-point iteration on the latitude,
/// lat = atan2(Z + N e^2 sin(lat), p), started from atan2(Z, p (1 - e^2)). The caller handles
/// the earth's centre.
GeodeticResult xyz_to_llh(double x, double y, double z, double tolerance);

} // namespace qv5::detail

#endif // QV5_GEODESY_WGS84_H
