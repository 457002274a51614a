/// @file geostereo.h
/// The conformal stereographic projection of an ellipsoid, through the conformal latitude.
#ifndef QV5_GEOSTEREO_H
#define QV5_GEOSTEREO_H

#include "qv5/export.h"
#include "qv5/geodef.h"
#include "qv5/geoellipsoid.h"

/// Stereographic projection of an ellipsoid about an origin, mapping latitude and longitude to
/// a plane of north and east coordinates and back.
///
/// The formulas are those of the ellipsoidal stereographic projection through the conformal
/// latitude (Snyder, "Map Projections: A Working Manual", 1987, pp. 154-163), chosen by the case
/// of the origin (see stereo_Region). The elevation passes through both directions unchanged.
///
/// Only the oblique case is an exact pair of inverse mappings, and it is the case the site
/// calibration uses. The other cases keep the long-standing forms: the equatorial forward
/// mapping carries a factor 2 on top of the scale (so its plane is twice the size that Reverse
/// expects), and the polar forward mapping scales the distance from the origin by the
/// conformal-latitude function itself where Reverse takes its reciprocal.
class QV5_API CGeoStereographic {
public:
    /// The case chosen from the origin latitude.
    enum stereo_Region {
        stereo_NorthPolar = 0, ///< origin within 1e-10 rad of a pole, latitude not negative
        stereo_SouthPolar = 1, ///< origin within 1e-10 rad of a pole, latitude negative
        stereo_Equatorial = 2, ///< |origin latitude| <= 1e-10 rad
        stereo_Oblique = 3,    ///< every other origin
        stereo_None = 4        ///< no projection (an uncalibrated CGeoTransformation)
    };

    /// @param origin latitude and longitude of the projection centre (its height is not used)
    /// @param falseOrigin north and east given to the centre (its elevation is not used)
    /// @param scale scale factor k0 at the centre (1.0 keeps true scale there)
    /// @param ellipsoid supplies the first eccentricity and the semi-major axis
    CGeoStereographic(geo_llh const& origin, geo_nee const& falseOrigin, double scale,
                      CGeoEllipsoid& ellipsoid);
    CGeoStereographic(const CGeoStereographic& other);
    CGeoStereographic& operator=(const CGeoStereographic& other);
    virtual ~CGeoStereographic();

    /// Projects a position to the plane; nee.elev receives llh.height.
    /// A `GEO_NULL` latitude or longitude gives `GEO_NULL` in all three outputs.
    void Forward(geo_llh const& llh, geo_nee& nee);
    /// Takes a plane position back to latitude and longitude; llh.height receives nee.elev.
    ///
    /// The latitude is iterated for at most 8 rounds to 1e-10 rad. When that does not converge,
    /// the latitude is the last round's value and the longitude is the value llh.lon held on
    /// entry plus the origin longitude. A `GEO_NULL` north or east gives `GEO_NULL` in all three
    /// outputs.
    void Reverse(geo_nee const& nee, geo_llh& llh);

    /// The case of the projection.
    stereo_Region Region() const;
    /// False north of the origin.
    double OriginNorth() const;
    /// False east of the origin.
    double OriginEast() const;
    /// Latitude of the origin, radians.
    double OriginLat() const;
    /// Longitude of the origin, radians.
    double OriginLon() const;
    /// Scale factor k0 at the origin.
    double Scale() const;

protected:
    /// tan((phi + pi/2) / 2) * ((1 - e sinphi) / (1 + e sinphi))^(e/2): the function whose
    /// arctangent gives the conformal latitude.
    double SS(double phi, double sinphi);

private:
    double m_originLat;
    double m_originLon;
    double m_cosChi1; // conformal latitude of the origin (1 and 0 unless oblique)
    double m_sinChi1;
    double m_k; // the scaled constant: a times the case's factor
    double m_e;
    double m_phiC; // latitude of true scale of the polar case: the pole
    double m_k0;
    double m_a;
    double m_falseNorth;
    double m_falseEast;
    double m_halfE;
    stereo_Region m_region;
};

#endif // QV5_GEOSTEREO_H
