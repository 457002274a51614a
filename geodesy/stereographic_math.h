// The plain maths of the ellipsoidal stereographic projection. Internal header; never
// installed.
#ifndef QV5_GEODESY_STEREOGRAPHIC_MATH_H
#define QV5_GEODESY_STEREOGRAPHIC_MATH_H

namespace qv5::detail {

/// Cases of the projection, numbered as CGeoStereographic::stereo_Region.
inline constexpr int kStereoNorthPolar = 0;
inline constexpr int kStereoSouthPolar = 1;
inline constexpr int kStereoEquatorial = 2;
inline constexpr int kStereoOblique = 3;

/// An origin this close to a pole (radians) is polar, this close to the equator equatorial.
inline constexpr double kStereoCaseTolerance = 1e-10;
/// Latitude of true scale of the polar case: the pole itself.
inline constexpr double kStereoTrueScaleLatitude = 1.5707963267948966;
/// A plane position within this distance of the origin (metres) is the origin.
inline constexpr double kStereoOriginRadius = 1e-10;
/// Convergence of the inverse latitude iteration, radians.
inline constexpr double kStereoLatitudeTolerance = 1e-10;
/// Rounds of the inverse latitude iteration.
inline constexpr int kStereoMaxRounds = 8;

/// What the formulas read: fixed by the origin and the ellipsoid.
struct StereoShape {
    int region;
    double k;        ///< scaled constant (a times the case's factor)
    double e;        ///< first eccentricity
    double half_e;   ///< e / 2
    double cos_chi1; ///< conformal latitude of the origin (oblique); 1 otherwise
    double sin_chi1; ///< 0 unless oblique
    double origin_lat;
    double origin_lon;
};

/// tan((phi + pi/2) / 2) ((1 - e sinphi) / (1 + e sinphi))^(e/2) (Snyder 3-1 before the
/// arctangent): the reciprocal of Snyder's t (15-9).
double stereo_ss(double e, double half_e, double phi, double sinphi);

/// Conformal latitude chi = 2 atan(SS(phi)) - pi/2.
double conformal_latitude(double e, double half_e, double phi, double sinphi);

/// The case of an origin latitude.
int stereo_region(double origin_lat);

/// The unscaled constant of the polar case: 2 k0 / sqrt((1+e)^(1+e) (1-e)^(1-e)) (Snyder
/// 21-33) when the latitude of true scale phi_c is the pole, which is the only latitude of true
/// scale the projection is built with; for any other phi_c the long-standing general form
/// cos(phi_c) / SS(phi_c) / sqrt(1 - (e sin phi_c)^2), which carries no k0.
double polar_constant(double e, double half_e, double k0, double phi_c);

/// The shape of a projection: case, constants and conformal latitude of the origin. The
/// equatorial case takes cos chi1 = 1 and sin chi1 = 0 (chi1 = 0), which its inverse reads.
StereoShape stereo_shape(double origin_lat, double origin_lon, double k0, double e, double a,
                         double phi_c);

/// Plane offsets from the false origin.
struct PlaneOffset {
    double north;
    double east;
};

/// Forward projection of latitude and longitude (radians) to offsets from the false origin.
PlaneOffset stereo_forward(const StereoShape& shape, double lat, double lon);

/// Result of the inverse projection.
struct StereoInverse {
    bool converged; ///< false: 8 rounds without convergence; only `lat` is meaningful
    double lat;
    double lon; ///< absolute longitude when converged
};

/// Inverse projection of offsets from the false origin: x east, y north.
StereoInverse stereo_reverse(const StereoShape& shape, double x, double y);

} // namespace qv5::detail

#endif // QV5_GEODESY_STEREOGRAPHIC_MATH_H
