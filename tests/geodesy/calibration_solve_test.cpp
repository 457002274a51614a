// The plain maths under the calibration: the two-point and least-squares similarities and the
// least-squares plane, on small hand-made data.
#include "geodesy/calibration_solve.h"

#include <gtest/gtest.h>

#include <cmath>
#include <vector>

namespace {

using namespace qv5::detail;

constexpr double kHalfPi = 1.5707963267948966;

/// site = s R(theta) grid + t, with E' = s(E cos + N sin) + tE, N' = s(-E sin + N cos) + tN.
geo_nee apply(const Similarity& x, const geo_nee& g) {
    const double c = std::cos(x.rotation);
    const double s = std::sin(x.rotation);
    return geo_nee{x.scale * (-g.east * s + g.north * c) + x.shift_north,
                   x.scale * (g.east * c + g.north * s) + x.shift_east, g.elev};
}

TEST(TwoPointSimilarity, RotationAndScaleBetweenTheLines) {
    // Grid A->B points north, 100 m; site A->B points east, 200 m: a quarter turn, scale 2.
    Similarity x{};
    ASSERT_TRUE(two_point_similarity(geo_nee{0, 0, 0}, geo_nee{100, 0, 0}, geo_nee{5, 5, 0},
                                     geo_nee{5, 205, 0}, x));
    EXPECT_NEAR(x.rotation, kHalfPi, 1e-15);
    EXPECT_EQ(x.scale, 2.0);
    EXPECT_EQ(x.shift_north, 0.0);
    EXPECT_EQ(x.shift_east, 0.0);
}

TEST(TwoPointSimilarity, RotationIsNormalised) {
    // Site turned a quarter turn anticlockwise: -pi/2 normalised to 3 pi / 2.
    Similarity x{};
    ASSERT_TRUE(two_point_similarity(geo_nee{0, 0, 0}, geo_nee{100, 0, 0}, geo_nee{0, 0, 0},
                                     geo_nee{0, -100, 0}, x));
    EXPECT_NEAR(x.rotation, 3.0 * kHalfPi, 1e-15);
}

TEST(TwoPointSimilarity, CoincidentGridPointsHaveNoSolution) {
    Similarity x{};
    EXPECT_FALSE(two_point_similarity(geo_nee{1, 2, 0}, geo_nee{1, 2, 0}, geo_nee{0, 0, 0},
                                      geo_nee{0, 10, 0}, x));
}

TEST(FitSimilarity, RecoversAnExactSimilarity) {
    const Similarity truth{12.5, -7.25, 0.3, 1.0004};
    const std::vector<geo_nee> grid = {
        {-500, -300, 0}, {400, -200, 0}, {100, 600, 0}, {-50, 20, 0}};
    std::vector<geo_nee> site;
    for (const geo_nee& g : grid) {
        site.push_back(apply(truth, g));
    }
    const int index[] = {0, 1, 2, 3};
    Similarity x{};
    ASSERT_TRUE(fit_similarity(grid.data(), site.data(), index, 4, x));
    // The iteration stops once a round moves the rotation by less than a minute of arc
    // (2.9e-4 rad) and the scale by less than 1e-5; what is left after that round is of the
    // order of the square of its step: here 2e-9 rad and 2e-8 (2 and 20 micrometres at 1 km).
    EXPECT_NEAR(x.shift_east, truth.shift_east, 1e-5);
    EXPECT_NEAR(x.shift_north, truth.shift_north, 1e-5);
    EXPECT_NEAR(x.rotation, truth.rotation, 1e-8);
    EXPECT_NEAR(x.scale, truth.scale, 1e-7);
}

TEST(FitSimilarity, UsesOnlyTheListedPoints) {
    const Similarity truth{1.0, 2.0, -0.1, 0.999};
    std::vector<geo_nee> grid = {{-500, -300, 0}, {9e9, 9e9, 0}, {400, -200, 0}, {100, 600, 0}};
    std::vector<geo_nee> site;
    for (const geo_nee& g : grid) {
        site.push_back(apply(truth, g));
    }
    site[1] = geo_nee{-1e9, 3e9, 0}; // never read
    const int index[] = {0, 2, 3};
    Similarity x{};
    ASSERT_TRUE(fit_similarity(grid.data(), site.data(), index, 3, x));
    EXPECT_NEAR(x.rotation, truth.rotation, 1e-8); // as RecoversAnExactSimilarity
}

TEST(FitSimilarity, NotANumberNeverConverges) {
    const std::vector<geo_nee> grid = {{0, 0, 0}, {100, 0, 0}, {0, 100, 0}};
    const std::vector<geo_nee> site = {{0, 0, 0}, {std::nan(""), 0, 0}, {0, 100, 0}};
    const int index[] = {0, 1, 2};
    Similarity x{7, 7, 7, 7};
    EXPECT_FALSE(fit_similarity(grid.data(), site.data(), index, 3, x));
    EXPECT_EQ(x.scale, 7.0); // untouched on failure
}

TEST(MadeUpPlaneRow, LiesTwentyMetresToTheRightOfTheFirstPoint) {
    // A->B runs north; the made-up point is 20 m east of A, with A's height difference.
    const PlaneRow c = made_up_plane_row(geo_nee{10, 20, 0}, geo_nee{110, 20, 0}, 1.5);
    EXPECT_NEAR(c.north, 10.0, 1e-12);
    EXPECT_NEAR(c.east, 40.0, 1e-12);
    EXPECT_EQ(c.dh, 1.5);
}

TEST(FitPlane, RecoversAnExactPlane) {
    const std::vector<PlaneRow> rows = {{0, 0, 1.0}, {100, 0, 1.2}, {0, 100, 0.9}, {50, 50, 1.05}};
    Plane p{};
    ASSERT_TRUE(fit_plane(
        4, [&](int i) { return rows[static_cast<std::size_t>(i)]; }, p));
    EXPECT_NEAR(p.shift, 1.0, 1e-12);
    EXPECT_NEAR(p.slope_north, 0.002, 1e-15);
    EXPECT_NEAR(p.slope_east, -0.001, 1e-15);
}

TEST(FitPlane, LeastSquaresOfFourPointsAveragesTheMisfit) {
    // dh = 0 at three corners and 1 at the fourth of a unit square: the least-squares plane is
    // -0.25 + 0.5 n + 0.5 e (normal equations solved by hand).
    const std::vector<PlaneRow> rows = {{0, 0, 0}, {1, 0, 0}, {0, 1, 0}, {1, 1, 1}};
    Plane p{};
    ASSERT_TRUE(fit_plane(
        4, [&](int i) { return rows[static_cast<std::size_t>(i)]; }, p));
    EXPECT_NEAR(p.shift, -0.25, 1e-15);
    EXPECT_NEAR(p.slope_north, 0.5, 1e-15);
    EXPECT_NEAR(p.slope_east, 0.5, 1e-15);
}

TEST(FitPlane, CollinearPointsWithAnExactZeroPivotFail) {
    const std::vector<PlaneRow> rows = {{0, 0, 0}, {0, 0, 1}, {0, 0, 2}};
    Plane p{};
    EXPECT_FALSE(fit_plane(
        3, [&](int i) { return rows[static_cast<std::size_t>(i)]; }, p));
}

} // namespace
