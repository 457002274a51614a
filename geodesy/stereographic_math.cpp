// The ellipsoidal stereographic projection on plain values, through the conformal latitude
// (Snyder, "Map Projections: A Working Manual", USGS PP 1395, 1987, chapter 21): the projection
// constants of each aspect, the forward formulas and the iterated inverse. The class in
// stereographic.cpp holds the origin and the false origin and passes GEO_NULL through.
#include "geodesy/stereographic_math.h"

#include "core/constants.h"

#include <cmath>

namespace qv5::detail {

double stereo_ss(double e, double half_e, double phi, double sinphi) {
    return std::tan((phi + kHalfPi) * 0.5) *
           std::pow((1.0 - e * sinphi) / (1.0 + e * sinphi), half_e);
}

double conformal_latitude(double e, double half_e, double phi, double sinphi) {
    return 2.0 * std::atan(stereo_ss(e, half_e, phi, sinphi)) - kHalfPi;
}

int stereo_region(double origin_lat) {
    if (std::fabs(std::fabs(origin_lat) - kHalfPi) < kStereoCaseTolerance) {
        return origin_lat < 0.0 ? kStereoSouthPolar : kStereoNorthPolar;
    }
    return std::fabs(origin_lat) > kStereoCaseTolerance ? kStereoOblique : kStereoEquatorial;
}

double polar_constant(double e, double half_e, double k0, double phi_c) {
    if (phi_c == kStereoTrueScaleLatitude) {
        return 2.0 * k0 / std::sqrt(std::pow(1.0 + e, 1.0 + e) * std::pow(1.0 - e, 1.0 - e));
    }
    const double sin_c = std::sin(phi_c);
    const double e_sin_c = e * sin_c;
    return std::cos(phi_c) / stereo_ss(e, half_e, phi_c, sin_c) /
           std::sqrt(1.0 - e_sin_c * e_sin_c);
}

StereoShape stereo_shape(double origin_lat, double origin_lon, double k0, double e, double a,
                         double phi_c) {
    StereoShape shape{stereo_region(origin_lat), 0.0, e, e / 2.0, 1.0, 0.0, origin_lat, origin_lon};
    switch (shape.region) {
    case kStereoNorthPolar:
    case kStereoSouthPolar:
        shape.k = polar_constant(e, shape.half_e, k0, phi_c);
        break;
    case kStereoEquatorial:
        shape.k = 2.0 * k0;
        break;
    default: {
        const double sin_lat = std::sin(origin_lat);
        const double chi1 = conformal_latitude(e, shape.half_e, origin_lat, sin_lat);
        shape.sin_chi1 = std::sin(chi1);
        shape.cos_chi1 = std::cos(chi1);
        // 2 k0 m1 with m1 = cos(lat0) / sqrt(1 - e^2 sin^2(lat0)) (Snyder 14-15, 21-27).
        shape.k = 2.0 * k0 * std::cos(origin_lat) / std::sqrt(1.0 - e * e * (sin_lat * sin_lat));
        break;
    }
    }
    shape.k = shape.k * a;
    return shape;
}

PlaneOffset stereo_forward(const StereoShape& shape, double lat, double lon) {
    const double dlon = lon - shape.origin_lon;
    const double sin_dlon = std::sin(dlon);
    const double cos_dlon = std::cos(dlon);
    const double sin_lat = std::sin(lat);
    double sin_chi = 0.0;
    double cos_chi = 0.0;
    if (shape.region == kStereoEquatorial || shape.region == kStereoOblique) {
        const double chi = conformal_latitude(shape.e, shape.half_e, lat, sin_lat);
        sin_chi = std::sin(chi);
        cos_chi = std::cos(chi);
    }
    PlaneOffset out{0.0, 0.0};
    switch (shape.region) {
    case kStereoNorthPolar: {
        const double t = shape.k * stereo_ss(shape.e, shape.half_e, lat, sin_lat);
        out.north = -t * cos_dlon;
        out.east = t;
        break;
    }
    case kStereoSouthPolar: {
        const double t = shape.k * stereo_ss(shape.e, shape.half_e, -lat, -sin_lat);
        out.north = t * cos_dlon;
        out.east = t;
        break;
    }
    case kStereoEquatorial: {
        // Twice Snyder's 21-29: the equatorial plane has always been drawn at this size.
        const double a = 2.0 * shape.k / (1.0 + cos_chi * cos_dlon);
        out.north = a * sin_chi;
        out.east = a * cos_chi;
        break;
    }
    default: {
        // Snyder 21-27 to 21-29.
        const double a = shape.k / (shape.cos_chi1 * (1.0 + shape.sin_chi1 * sin_chi +
                                                      shape.cos_chi1 * cos_chi * cos_dlon));
        out.north = a * (shape.cos_chi1 * sin_chi - shape.sin_chi1 * cos_chi * cos_dlon);
        out.east = a * cos_chi;
        break;
    }
    }
    out.east = out.east * sin_dlon;
    return out;
}

StereoInverse stereo_reverse(const StereoShape& shape, double x, double y) {
    const double rho = std::sqrt(y * y + x * x);
    double t = 0.0;
    double phi_prev = 0.0;
    double p = 0.0;
    double h = 0.0;
    if (shape.region == kStereoEquatorial || shape.region == kStereoOblique) {
        // Snyder 21-38 to 21-41: back to the conformal latitude, then iterate 3-4.
        const double c = 2.0 * std::atan2(rho * shape.cos_chi1, shape.k);
        if (rho <= kStereoOriginRadius) {
            return StereoInverse{true, shape.origin_lat, shape.origin_lon};
        }
        const double sin_c = std::sin(c);
        const double cos_c = std::cos(c);
        phi_prev = std::asin(cos_c * shape.sin_chi1 + y * sin_c * shape.cos_chi1 / rho);
        t = std::tan(0.5 * (kHalfPi + phi_prev));
        x = x * sin_c;
        y = rho * shape.cos_chi1 * cos_c - y * shape.sin_chi1 * sin_c;
        p = kHalfPi;
        h = shape.half_e;
    } else {
        // Snyder 21-39 to 21-41 for the polar aspects; the north polar case mirrors north.
        if (shape.region == kStereoNorthPolar) {
            y = -y;
        }
        t = -rho / shape.k;
        phi_prev = kHalfPi - 2.0 * std::atan(t);
        p = -kHalfPi;
        h = -shape.half_e;
    }
    StereoInverse out{false, 0.0, 0.0};
    for (int round = 0; round < kStereoMaxRounds; ++round) {
        const double s = shape.e * std::sin(phi_prev);
        const double phi = 2.0 * std::atan(t * std::pow((1.0 + s) / (1.0 - s), h)) - p;
        out.lat = phi;
        if (std::fabs(phi_prev - phi) < kStereoLatitudeTolerance) {
            out.converged = true;
            break;
        }
        phi_prev = phi;
    }
    if (!out.converged) {
        return out;
    }
    if (shape.region == kStereoSouthPolar) {
        out.lat = -out.lat;
    }
    out.lon = (x == 0.0 && y == 0.0) ? 0.0 : std::atan2(x, y);
    out.lon += shape.origin_lon;
    return out;
}

} // namespace qv5::detail
