// The reference ellipsoid and the WGS84 conversions geodetic <-> ECEF <-> local north/east/up.
#include "qv5/geoellipsoid.h"

#include "geodesy/wgs84.h"

#include <cmath>

namespace qv5::detail {

namespace {

/// (1 - sin^2(lat) e^2)^0.5, the common factor of both radii of curvature.
double curvature_w(double lat) {
    const double s = std::sin(lat);
    return std::pow(1.0 - s * s * kWgs84E2, 0.5);
}

/// a / sqrt(1 - s^2 e^2): the prime-vertical radius from sin(lat), as the latitude iteration
/// writes it.
double prime_vertical_from_sin(double s) {
    return kWgs84A / std::sqrt(1.0 - s * s * kWgs84E2);
}

} // namespace

Curvature wgs84_curvature(double lat) {
    const double w = curvature_w(lat);
    return Curvature{kWgs84AOneMinusE2 / std::pow(w, 3.0), kWgs84A / w};
}

double wgs84_prime_vertical(double lat) {
    return kWgs84A / curvature_w(lat);
}

geo_vector llh_to_xyz(double lat, double lon, double height) {
    const double n = wgs84_prime_vertical(lat);
    const double cos_lat = std::cos(lat);
    return geo_vector{(height + n) * std::cos(lon) * cos_lat,
                      (height + n) * std::sin(lon) * cos_lat,
                      (n * kOneMinusE2ForZ + height) * std::sin(lat)};
}

GeodeticResult xyz_to_llh(double x, double y, double z, double tolerance) {
    GeodeticResult result{false, false, 0.0, 0.0, 0.0};
    const double p = std::sqrt(y * y + x * x);
    double lat = std::atan2(z, p * kOneMinusE2ForLatitude);
    double s = std::sin(lat);
    if (tolerance < kNoIterationTolerance) {
        double previous = kLatitudeSeed;
        int rounds = 0;
        while (true) {
            const double n = prime_vertical_from_sin(s);
            lat = std::atan2(n * s * kWgs84E2 + z, p);
            s = std::sin(lat);
            const double change = std::fabs(lat - previous);
            previous = lat;
            ++rounds;
            if (rounds > kMaxLatitudeRounds) {
                return result;
            }
            if (change <= tolerance) {
                break;
            }
        }
    }
    result.converged = true;
    result.lat = lat;
    if (std::fabs(lat) <= kHeightLatitudeLimit) {
        result.height_written = true;
        result.height = p / std::cos(lat) - prime_vertical_from_sin(s);
    }
    result.lon = std::atan2(y, x);
    return result;
}

} // namespace qv5::detail

using namespace qv5::detail;

CGeoEllipsoid::CGeoEllipsoid(double a, double f)
    : m_a(a), m_f(f), m_e(0.0), m_e2(0.0), m_ep(0.0), m_ep2(0.0) {
    m_e2 = 2.0 * f - f * f;
    m_e = std::sqrt(m_e2);
    m_ep2 = m_e2 / (1.0 - m_e2);
    m_ep = std::sqrt(m_ep2);
}

CGeoEllipsoid::CGeoEllipsoid(const CGeoEllipsoid& other) = default;

CGeoEllipsoid& CGeoEllipsoid::operator=(const CGeoEllipsoid& other) = default;

CGeoEllipsoid::~CGeoEllipsoid() = default;

double CGeoEllipsoid::Radius() const {
    return m_a;
}

double CGeoEllipsoid::Flattening() const {
    return m_f;
}

double CGeoEllipsoid::E() const {
    return m_e;
}

double CGeoEllipsoid::ESquared() const {
    return m_e2;
}

double CGeoEllipsoid::SecondE() const {
    return m_ep;
}

double CGeoEllipsoid::SecondESquared() const {
    return m_ep2;
}

void _wgs84curvature(double lat, double& M, double& N) {
    const Curvature c = wgs84_curvature(lat);
    M = c.meridian;
    N = c.prime_vertical;
}

int _llh2xyz(geo_llh const* llh, geo_vector* xyz) {
    if (llh == nullptr || xyz == nullptr) {
        return 0;
    }
    // The all-zero position is how hosts have always said "no position"; it is not converted.
    if (llh->lat == 0.0 && llh->lon == 0.0 && llh->height == 0.0) {
        return 0;
    }
    *xyz = llh_to_xyz(llh->lat, llh->lon, llh->height);
    return 1;
}

int _xyz2llh(geo_vector const* xyz, geo_llh* llh, double tolerance) {
    if (xyz == nullptr || llh == nullptr) {
        return 0;
    }
    if (xyz->x == 0.0 && xyz->y == 0.0 && xyz->z == 0.0) {
        return 0;
    }
    const GeodeticResult r = xyz_to_llh(xyz->x, xyz->y, xyz->z, tolerance);
    if (!r.converged) {
        return 0;
    }
    llh->lat = r.lat;
    if (r.height_written) {
        llh->height = r.height;
    }
    llh->lon = r.lon;
    return 1;
}

int _xyz2nez(geo_vector const* reference, geo_vector const* point, geo_nee* nee) {
    if (reference == nullptr || point == nullptr || nee == nullptr) {
        return 1;
    }
    geo_llh origin{0.0, 0.0, 0.0};
    if (_xyz2llh(reference, &origin, kLocalFrameTolerance) == 0) {
        return 1;
    }
    const double sin_lat = std::sin(origin.lat);
    const double cos_lat = std::cos(origin.lat);
    const double sin_lon = std::sin(origin.lon);
    const double cos_lon = std::cos(origin.lon);
    const double north_row[3] = {-sin_lat * cos_lon, -sin_lat * sin_lon, cos_lat};
    const double east_row[3] = {-sin_lon, cos_lon, 0.0};
    const double up_row[3] = {cos_lat * cos_lon, cos_lat * sin_lon, sin_lat};
    const double d[3] = {point->x - reference->x, point->y - reference->y, point->z - reference->z};
    geo_nee result{0.0, 0.0, 0.0};
    for (int k = 0; k < 3; ++k) {
        result.north += north_row[k] * d[k];
    }
    for (int k = 0; k < 3; ++k) {
        result.east += east_row[k] * d[k];
    }
    for (int k = 0; k < 3; ++k) {
        result.elev += up_row[k] * d[k];
    }
    *nee = result;
    return 1;
}
