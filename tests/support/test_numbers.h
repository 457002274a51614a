// Numbers and comparisons the tests share. The constants are written out here, not taken from
// the library, so that a wrong constant in the library shows up as a failing test.
#ifndef QV5_TESTS_SUPPORT_TEST_NUMBERS_H
#define QV5_TESTS_SUPPORT_TEST_NUMBERS_H

#include "qv5/geodef.h"

#include <cstdint>
#include <cstring>

namespace qv5::test {

inline constexpr double kPi = 3.141592653589793;
inline constexpr double kTwoPi = 6.283185307179586;
inline constexpr double kHalfPi = 1.5707963267948966;

/// Degrees to radians, written independently of the library's conversion.
inline double radians(double degrees) {
    return degrees * (kPi / 180.0);
}

/// The bit pattern of a double: compares results to the last bit, and tells -0.0 from 0.0.
inline std::uint64_t bits_of(double value) {
    std::uint64_t bits = 0;
    std::memcpy(&bits, &value, sizeof bits);
    return bits;
}

/// True when a value is exactly the no-value marker.
inline bool is_geo_null(double value) {
    return bits_of(value) == bits_of(GEO_NULL);
}

} // namespace qv5::test

#endif // QV5_TESTS_SUPPORT_TEST_NUMBERS_H
