// The clothoid series and the two exported spiral functions.
//
// A clothoid's curvature grows linearly with the distance l from its straight end: 1/r = l / C
// with C = 2 R L, so its tangent has turned by l^2 / C. Its coordinates in the frame of the
// straight are the Fresnel-type integrals
//     x = integral_0^l cos(u^2 / C) du,   y = integral_0^l sin(u^2 / C) du,
// which expand term by term into
//     x = sum_k (-1)^k l^(4k+1) / ((4k+1) (2k)! C^(2k)),
//     y = sum_k (-1)^k l^(4k+3) / ((4k+3) (2k+1)! C^(2k+1)).
// Each term is the previous one times q = l^4 / C^2 over the next two factorial factors, so the
// sums are formed with a running product. Hosts compare positions to the last bit, so the order
// of operations below is part of the result: l^4 as ((l l) l) l, the product t q / ((n-1) n),
// each term divided by its own power index, and the y series started at l^3 / C times 1/3.
#include "geometry/clothoid.h"

#include "qv5/geosurvey.h"

#include <cmath>

namespace qv5::detail {
namespace {

/// Sums one of the two alternating series. `t` is the leading term before its divisor,
/// `first_divisor` that divisor (1 for x, 3 for y) and `first_factor` the smaller factorial
/// factor of the first correction term (1 for x: 1 x 2; 2 for y: 2 x 3).
/// @return false when the last allowed term is still not below the tolerance
bool alternating_sum(double t, double leading, double first_factor, double first_divisor, double q,
                     double tolerance, double& sum) {
    double s = leading;
    double sign = -1.0;
    double n = first_factor + 1.0;
    double d = first_divisor + 4.0;
    for (int k = 1; k <= kClothoidMaxCorrections; ++k) {
        t = t * q / ((n - 1.0) * n);
        const double term = t / d;
        s = s + sign * term;
        if (std::fabs(term) < tolerance) {
            sum = s;
            return true;
        }
        sign = -sign;
        n += 2.0;
        d += 4.0;
    }
    return false;
}

} // namespace

double clothoid_deflection(double length, double spiral_constant) {
    if (length == GEO_NULL || spiral_constant == GEO_NULL) {
        return GEO_NULL;
    }
    // Behind the straight end (and at it) the tangent is the straight's. Testing l <= 0 rather
    // than l < 0 changes nothing for a real spiral (0 / C * 0 is 0) and keeps a zero-length
    // spiral, whose constant is 0, from giving 0 / 0.
    if (!(length > 0.0)) {
        return length == length ? 0.0 : GEO_NULL;
    }
    const double deflection = (length / spiral_constant) * length;
    return std::isfinite(deflection) ? deflection : GEO_NULL;
}

bool clothoid_deltas(double length, double spiral_constant, double tolerance, double& x,
                     double& y) {
    x = GEO_NULL;
    y = GEO_NULL;
    if (length == GEO_NULL || spiral_constant == GEO_NULL || tolerance == GEO_NULL) {
        return false;
    }
    if (length == 0.0) {
        // The straight end itself: every term is 0, and C (0 for a zero-length spiral) must not
        // be divided by.
        x = 0.0;
        y = 0.0;
        return true;
    }
    const double l = length;
    const double c = spiral_constant;
    const double q = (((l * l) * l) * l) / (c * c);
    double sum_x = 0.0;
    if (!alternating_sum(l, l, 1.0, 1.0, q, tolerance, sum_x)) {
        return false;
    }
    const double t = ((l * l) * l) / c;
    double sum_y = 0.0;
    if (!alternating_sum(t, t * (1.0 / 3.0), 2.0, 3.0, q, tolerance, sum_y)) {
        return false;
    }
    x = sum_x;
    y = sum_y;
    return true;
}

} // namespace qv5::detail

double geo_spiral_deflection(double l, double C) {
    return qv5::detail::clothoid_deflection(l, C);
}

void geo_spiral_deltas(double l, double C, double tolerance, double& x, double& y) {
    qv5::detail::clothoid_deltas(l, C, tolerance, x, y);
}
