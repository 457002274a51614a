/// @file geoellipsoid.h
/// The reference ellipsoid, and the conversions between WGS84 geodetic coordinates,
/// earth-centred earth-fixed (ECEF) Cartesian coordinates and a local north/east/up frame.
///
/// The free functions use the WGS84 constants directly (a = 6378137 m, e^2 = 0.00669437999014,
/// with the rounded values of a(1 - e^2) and 1 - e^2 that positions have always been computed
/// with); they take no ellipsoid. `geo_vector` holds ECEF X, Y, Z in metres.
#ifndef QV5_GEOELLIPSOID_H
#define QV5_GEOELLIPSOID_H

#include "qv5/export.h"
#include "qv5/geodef.h"

/// A reference ellipsoid given by its semi-major axis and flattening; the eccentricities are
/// derived once, on construction.
class QV5_API CGeoEllipsoid {
public:
    /// @param a semi-major axis, metres
    /// @param f flattening itself (not its inverse): 1 / 298.257223563 for WGS84
    CGeoEllipsoid(double a, double f);
    CGeoEllipsoid(const CGeoEllipsoid& other);
    CGeoEllipsoid& operator=(const CGeoEllipsoid& other);
    virtual ~CGeoEllipsoid();

    /// Semi-major axis a, metres.
    double Radius() const;
    /// Flattening f.
    double Flattening() const;
    /// First eccentricity e = sqrt(2f - f^2) (not squared).
    double E() const;
    /// e^2 = 2f - f^2.
    double ESquared() const;
    /// Second eccentricity e' = sqrt(e^2 / (1 - e^2)).
    double SecondE() const;
    /// e'^2 = e^2 / (1 - e^2).
    double SecondESquared() const;

private:
    double m_a;
    double m_f;
    double m_e;
    double m_e2;
    double m_ep;
    double m_ep2;
};

/// Radii of curvature of the WGS84 ellipsoid at a latitude.
/// @param lat latitude, radians
/// @param[out] M meridian radius, metres
/// @param[out] N prime-vertical radius, metres
QV5_API void _wgs84curvature(double lat, double& M, double& N);

/// WGS84 geodetic coordinates to ECEF.
///
/// A position whose latitude, longitude and height are all exactly 0.0 is taken as no position
/// at all: the result is 0 and the output is left as it was. `GEO_NULL` has no special meaning
/// here.
/// @return 1 when `xyz` was written; 0 for the all-zero position or a null pointer
QV5_API int _llh2xyz(geo_llh const* llh, geo_vector* xyz);

/// ECEF to WGS84 geodetic coordinates, iterating on the latitude.
///
/// The latitude is refined until two successive rounds differ by no more than `tolerance`
/// (at the earliest in round 2); with a tolerance of 10.0 or more the first estimate is kept.
/// The height is written only within +-45 degrees of latitude (|lat| <= pi/4): beyond that the
/// height field of `llh` keeps the value the caller passed in. Callers that need heights at high
/// latitudes must not rely on this function for them.
/// @param tolerance convergence tolerance on the latitude, radians
/// @return 1 when latitude and longitude were written; 0 when X, Y and Z are all exactly 0.0,
/// when ten rounds do not converge (nothing is written), or for a null pointer
QV5_API int _xyz2llh(geo_vector const* xyz, geo_llh* llh, double tolerance);

/// ECEF point to local north, east and up about an ECEF reference point.
///
/// The rotation is taken at the reference point's latitude and longitude (found with a
/// tolerance of 5e-10 rad). When the reference point cannot be converted (the earth's centre),
/// or a pointer is null, the output is left as it was.
/// @param[out] nee north, east, up offsets of the point from the reference, metres
/// @return 1 always
QV5_API int _xyz2nez(geo_vector const* reference, geo_vector const* point, geo_nee* nee);

#endif // QV5_GEOELLIPSOID_H
