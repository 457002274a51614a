// CGeoStereographic: the ellipsoidal stereographic projection through the conformal latitude
// (Snyder, "Map Projections: A Working Manual", USGS PP 1395, 1987, chapter 21).
#include "qv5/geostereo.h"

#include "core/constants.h"
#include "core/null_records.h"
#include "geodesy/stereographic_math.h"

#include <cmath>

using namespace qv5::detail;

namespace {

StereoShape shape_of(int region, double k, double e, double half_e, double cos_chi1,
                     double sin_chi1, double origin_lat, double origin_lon) {
    return StereoShape{region, k, e, half_e, cos_chi1, sin_chi1, origin_lat, origin_lon};
}

} // namespace

CGeoStereographic::CGeoStereographic(geo_llh const& origin, geo_nee const& falseOrigin,
                                     double scale, CGeoEllipsoid& ellipsoid)
    : m_originLat(origin.lat), m_originLon(origin.lon), m_cosChi1(1.0), m_sinChi1(0.0), m_k(0.0),
      m_e(ellipsoid.E()), m_phiC(kStereoTrueScaleLatitude), m_k0(scale), m_a(ellipsoid.Radius()),
      m_falseNorth(falseOrigin.north), m_falseEast(falseOrigin.east), m_halfE(m_e / 2.0),
      m_region(stereo_Oblique) {
    const StereoShape shape = stereo_shape(m_originLat, m_originLon, m_k0, m_e, m_a, m_phiC);
    m_region = static_cast<stereo_Region>(shape.region);
    m_k = shape.k;
    m_cosChi1 = shape.cos_chi1;
    m_sinChi1 = shape.sin_chi1;
}

CGeoStereographic::CGeoStereographic(const CGeoStereographic& other) = default;

CGeoStereographic& CGeoStereographic::operator=(const CGeoStereographic& other) = default;

CGeoStereographic::~CGeoStereographic() = default;

void CGeoStereographic::Forward(geo_llh const& llh, geo_nee& nee) {
    if (llh.lat == GEO_NULL || llh.lon == GEO_NULL) {
        nee = qv5::detail::kNullGrid;
        return;
    }
    const double lat = llh.lat;
    const double lon = llh.lon;
    nee.elev = llh.height;
    const PlaneOffset offset = stereo_forward(
        shape_of(m_region, m_k, m_e, m_halfE, m_cosChi1, m_sinChi1, m_originLat, m_originLon), lat,
        lon);
    nee.east = offset.east + m_falseEast;
    nee.north = offset.north + m_falseNorth;
}

void CGeoStereographic::Reverse(geo_nee const& nee, geo_llh& llh) {
    if (nee.north == GEO_NULL || nee.east == GEO_NULL) {
        llh = qv5::detail::kNullWgs84;
        return;
    }
    const double x = nee.east - m_falseEast;
    const double y = nee.north - m_falseNorth;
    llh.height = nee.elev;
    const StereoInverse r = stereo_reverse(
        shape_of(m_region, m_k, m_e, m_halfE, m_cosChi1, m_sinChi1, m_originLat, m_originLon), x,
        y);
    llh.lat = r.lat;
    // Without convergence the longitude is what the caller's record held, shifted to the
    // origin's meridian: hosts have always received it so.
    llh.lon = r.converged ? r.lon : llh.lon + m_originLon;
}

CGeoStereographic::stereo_Region CGeoStereographic::Region() const {
    return m_region;
}

double CGeoStereographic::OriginNorth() const {
    return m_falseNorth;
}

double CGeoStereographic::OriginEast() const {
    return m_falseEast;
}

double CGeoStereographic::OriginLat() const {
    return m_originLat;
}

double CGeoStereographic::OriginLon() const {
    return m_originLon;
}

double CGeoStereographic::Scale() const {
    return m_k0;
}

double CGeoStereographic::SS(double phi, double sinphi) {
    return stereo_ss(m_e, m_halfE, phi, sinphi);
}
