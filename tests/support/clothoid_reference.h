// An independent evaluation of the clothoid for the tests: Simpson's rule on the integrals the
// library's series expands, sharing nothing with the series.
#ifndef QV5_TESTS_SUPPORT_CLOTHOID_REFERENCE_H
#define QV5_TESTS_SUPPORT_CLOTHOID_REFERENCE_H

#include <cmath>

namespace qv5::test {

/// x = integral_0^l cos(u^2 / C) du and y = integral_0^l sin(u^2 / C) du. With 20000 panels the
/// error stays far below 1e-10 m for spirals turning through up to a few radians.
inline void integrated_clothoid(double l, double c, double& x, double& y) {
    constexpr int kPanels = 20000;
    const double h = l / kPanels;
    double sx = 0.0;
    double sy = 0.0;
    for (int i = 0; i <= kPanels; ++i) {
        const double u = i * h;
        const double w = (i == 0 || i == kPanels) ? 1.0 : (i % 2 == 1 ? 4.0 : 2.0);
        sx += w * std::cos(u * u / c);
        sy += w * std::sin(u * u / c);
    }
    x = sx * h / 3.0;
    y = sy * h / 3.0;
}

} // namespace qv5::test

#endif
