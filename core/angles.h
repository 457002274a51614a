// Angle helpers shared by every subsystem. Internal header; never installed.
#ifndef QV5_CORE_ANGLES_H
#define QV5_CORE_ANGLES_H

#include "core/constants.h"
#include "qv5/geodef.h"

#include <cmath>

namespace qv5::detail {

/// Beyond this many whole turns a bearing is first reduced by a remainder: whole-turn
/// subtraction one turn at a time would otherwise take unbounded time on a hostile value.
inline constexpr double kLiteralTurnLimit = 1.0e6;

/// Bearing brought into [0, 2 pi) by subtracting or adding whole turns one at a time, as hosts
/// have always seen it: the repeated subtraction (not a remainder) decides the last bits.
/// `GEO_NULL` passes through; an infinite bearing has no direction and gives `GEO_NULL`.
inline double normalised_bearing(double bearing) {
    // GEO_NULL (2e-308) lies in [0, 2 pi) and so comes back unchanged here, as it must.
    if (bearing >= 0.0 && bearing < kTwoPi) {
        return bearing;
    }
    if (!(std::fabs(bearing) < kTwoPi * kLiteralTurnLimit)) {
        if (std::isinf(bearing)) {
            return GEO_NULL;
        }
        bearing = std::fmod(bearing, kTwoPi); // NaN stays NaN
    }
    while (bearing >= kTwoPi) {
        bearing -= kTwoPi;
    }
    while (bearing < 0.0) {
        bearing += kTwoPi;
    }
    return bearing;
}

/// Grid bearing of the direction (dNorth, dEast).
inline double bearing_of(double d_north, double d_east) {
    return normalised_bearing(std::atan2(d_east, d_north));
}

/// Unsigned angle in [0, pi] between two bearings, `GEO_NULL` if either is.
inline double divergence(double bearing1, double bearing2) {
    if (bearing1 == GEO_NULL || bearing2 == GEO_NULL) {
        return GEO_NULL;
    }
    const double d = normalised_bearing(bearing1 - bearing2);
    return d > kPi ? kTwoPi - d : d;
}

/// Truncation toward zero into an int, saturating instead of overflowing (NaN gives 0).
inline int truncate_to_int(double value) {
    if (!(value > -2147483649.0)) {
        return value < 0.0 ? -2147483647 - 1 : 0;
    }
    if (!(value < 2147483648.0)) {
        return 2147483647;
    }
    return static_cast<int>(value);
}

} // namespace qv5::detail

#endif // QV5_CORE_ANGLES_H
