// Randomised checks of the survey computations against each other and against independent
// formulas. Every generator is seeded, so a failure reproduces.
#include "qv5/geosurvey.h"
#include "support/test_numbers.h"

#include <gtest/gtest.h>

#include <cmath>
#include <cstdint>
#include <cstring>
#include <random>
#include <vector>

namespace {

using qv5::test::bits_of;
using qv5::test::kPi;
using qv5::test::kTwoPi;

constexpr int kCases = 4000;
// Metres: closed forms on site coordinates within 5 km, where one ulp is about 1e-12 m.
constexpr double kMetreTol = 1e-9;

// The unsigned gap between two directions, whole turns ignored.
double angular_gap(double a, double b) {
    return std::fabs(std::remainder(a - b, kTwoPi));
}

class Uniform {
public:
    explicit Uniform(std::uint64_t seed) : m_engine(seed) {}
    double operator()(double low, double high) {
        return std::uniform_real_distribution<double>(low, high)(m_engine);
    }

private:
    std::mt19937_64 m_engine;
};

TEST(SurveyProperties, CalcThenReduceReproducesTheTarget) {
    // Reducing the computed observation with the instrument height as the correction and no
    // target height lands back on the target.
    Uniform uniform(0x5eed0001);
    for (int i = 0; i < kCases; ++i) {
        const geo_nee from{uniform(-5000.0, 5000.0), uniform(-5000.0, 5000.0),
                           uniform(-100.0, 1000.0)};
        const geo_nee to{uniform(-5000.0, 5000.0), uniform(-5000.0, 5000.0),
                         uniform(-100.0, 1000.0)};
        const double instrument = uniform(0.0, 2.0);
        geo_hvd obs{};
        geo_calc_obs(from, instrument, to, 0.0, obs);
        geo_nee reduced{};
        geo_reduce_obs(obs, from, instrument, reduced);
        SCOPED_TRACE(i);
        ASSERT_NEAR(reduced.north, to.north, kMetreTol);
        ASSERT_NEAR(reduced.east, to.east, kMetreTol);
        ASSERT_NEAR(reduced.elev, to.elev, kMetreTol);
        ASSERT_GE(obs.hz, 0.0);
        ASSERT_LT(obs.hz, kTwoPi);
        ASSERT_GE(obs.vz, 0.0);
        ASSERT_LE(obs.vz, kPi);
    }
}

TEST(SurveyProperties, ObservationMatchesIndependentGeometry) {
    Uniform uniform(0x5eed0002);
    for (int i = 0; i < kCases; ++i) {
        const geo_nee from{uniform(-5000.0, 5000.0), uniform(-5000.0, 5000.0),
                           uniform(-100.0, 1000.0)};
        const geo_nee to{uniform(-5000.0, 5000.0), uniform(-5000.0, 5000.0),
                         uniform(-100.0, 1000.0)};
        const double instrument = uniform(0.0, 2.0);
        const double target = uniform(0.0, 3.0);
        geo_hvd obs{};
        geo_calc_obs(from, instrument, to, target, obs);
        const double dn = to.north - from.north;
        const double de = to.east - from.east;
        const double dz = to.elev + target - from.elev - instrument;
        const double plan = std::hypot(dn, de);
        SCOPED_TRACE(i);
        // Slope distance and zenith angle checked through their components.
        ASSERT_NEAR(obs.dist, std::sqrt(dn * dn + de * de + dz * dz), kMetreTol);
        ASSERT_NEAR(obs.dist * std::sin(obs.vz), plan, kMetreTol);
        ASSERT_NEAR(obs.dist * std::cos(obs.vz), dz, kMetreTol);
        ASSERT_NEAR(plan * std::cos(obs.hz), dn, kMetreTol);
        ASSERT_NEAR(plan * std::sin(obs.hz), de, kMetreTol);
    }
}

TEST(SurveyProperties, FollowThenInverseRecoversBearingDistanceAndGradient) {
    Uniform uniform(0x5eed0003);
    for (int i = 0; i < kCases; ++i) {
        const geo_nee start{uniform(-5000.0, 5000.0), uniform(-5000.0, 5000.0),
                            uniform(-100.0, 1000.0)};
        const double bearing = uniform(0.0, kTwoPi);
        const double distance = uniform(10.0, 2000.0);
        const double gradient = uniform(-1.0, 1.0);
        geo_nee end{};
        geo_grid_follow(start, bearing, distance, gradient, end);
        SCOPED_TRACE(i);
        ASSERT_NEAR(geo_horz_dist(start, end), distance, kMetreTol);
        // Radians: position rounding of ~1e-12 m over at least 10 m.
        ASSERT_LT(angular_gap(geo_grid_bearing(start, end), bearing), 1e-12);
        ASSERT_NEAR(geo_gradient(start, end), gradient, 1e-12);
        ASSERT_NEAR(geo_vert_dist(start, end), std::tan(gradient) * distance, kMetreTol);
    }
}

TEST(SurveyProperties, DivergenceIsWithinHalfATurnAndSymmetric) {
    Uniform uniform(0x5eed0004);
    for (int i = 0; i < kCases; ++i) {
        const double b1 = uniform(-50.0, 50.0);
        const double b2 = uniform(-50.0, 50.0);
        const double forward = geo_grid_divergence(b1, b2);
        const double backward = geo_grid_divergence(b2, b1);
        // The angle between the unit vectors, from their cross and dot products.
        const double expected = std::atan2(std::fabs(std::sin(b1 - b2)), std::cos(b1 - b2));
        SCOPED_TRACE(i);
        ASSERT_GE(forward, 0.0);
        ASSERT_LE(forward, kPi);
        // Radians: up to 16 whole turns are taken off one at a time, each rounding at 1e-14.
        ASSERT_NEAR(forward, backward, 1e-12);
        ASSERT_NEAR(forward, expected, 1e-12);
    }
}

TEST(SurveyProperties, DivergenceOfLinesMatchesDivergenceOfTheirBearings) {
    Uniform uniform(0x5eed0005);
    for (int i = 0; i < kCases; ++i) {
        const geo_nee a1{uniform(-1000.0, 1000.0), uniform(-1000.0, 1000.0), 0.0};
        const geo_nee a2{uniform(-1000.0, 1000.0), uniform(-1000.0, 1000.0), 0.0};
        const geo_nee b1{uniform(-1000.0, 1000.0), uniform(-1000.0, 1000.0), 0.0};
        const geo_nee b2{uniform(-1000.0, 1000.0), uniform(-1000.0, 1000.0), 0.0};
        const double lines = geo_grid_divergence(a1, a2, b1, b2);
        SCOPED_TRACE(i);
        ASSERT_EQ(bits_of(lines),
                  bits_of(geo_grid_divergence(geo_grid_bearing(a1, a2), geo_grid_bearing(b1, b2))));
        ASSERT_GE(lines, 0.0);
        ASSERT_LE(lines, kPi);
        ASSERT_NEAR(lines, geo_grid_divergence(b1, b2, a1, a2), 1e-12);
    }
}

TEST(SurveyProperties, NormalisedBearingIsInRangeAndAWholeNumberOfTurnsAway) {
    Uniform uniform(0x5eed0006);
    for (int i = 0; i < kCases; ++i) {
        const double bearing = uniform(-1000.0, 1000.0);
        const double normalised = geo_normalised_bearing(bearing);
        SCOPED_TRACE(i);
        ASSERT_GE(normalised, 0.0);
        ASSERT_LT(normalised, kTwoPi);
        // Radians: up to 160 whole turns taken off one at a time, each rounding at 6e-14.
        ASSERT_LT(angular_gap(normalised, bearing), 1e-11);
        ASSERT_EQ(bits_of(_normalisedbearing(bearing)), bits_of(normalised));
    }
}

TEST(SurveyProperties, BisectedBearingIsEquallyFarFromBoth) {
    Uniform uniform(0x5eed0007);
    for (int i = 0; i < kCases; ++i) {
        const double b1 = uniform(0.0, kTwoPi);
        const double b2 = uniform(0.0, kTwoPi);
        const double bisector = geo_bisected_bearing(b1, b2);
        SCOPED_TRACE(i);
        ASSERT_GE(bisector, 0.0);
        ASSERT_LT(bisector, kTwoPi);
        ASSERT_NEAR(angular_gap(bisector, b1), angular_gap(bisector, b2), 1e-12);
        ASSERT_LE(angular_gap(bisector, b1), kPi / 2.0 + 1e-12);
        ASSERT_NEAR(2.0 * angular_gap(bisector, b1), geo_grid_divergence(b1, b2), 1e-12);
    }
}

TEST(SurveyProperties, DmsRoundTripOfPositiveAngles) {
    Uniform uniform(0x5eed0008);
    for (int i = 0; i < kCases; ++i) {
        const double angle = uniform(0.0, 2.0 * kTwoPi);
        int degrees = -1;
        int minutes = -1;
        double seconds = -1.0;
        _radtodms(angle, &degrees, &minutes, &seconds);
        double back = -1.0;
        _dmstorad(degrees, minutes, seconds, &back);
        SCOPED_TRACE(i);
        ASSERT_NEAR(back, angle, 1e-12);
        ASSERT_GE(degrees, 0);
        ASSERT_GE(minutes, 0);
        ASSERT_LT(minutes, 60);
        // The rounding guard may leave seconds down to half a hundred-thousandth below zero.
        ASSERT_GT(seconds, -5e-6 - 1e-9);
        ASSERT_LT(seconds, 60.0);
    }
}

TEST(SurveyProperties, DmsRoundTripOfNegativeAnglesOfAtLeastADegree) {
    Uniform uniform(0x5eed0009);
    const double one_degree = kPi / 180.0;
    for (int i = 0; i < kCases; ++i) {
        const double angle = uniform(-2.0 * kTwoPi, -1.0001 * one_degree);
        int degrees = 0;
        int minutes = -1;
        double seconds = -1.0;
        _radtodms(angle, &degrees, &minutes, &seconds);
        double back = 0.0;
        _dmstorad(degrees, minutes, seconds, &back);
        SCOPED_TRACE(i);
        ASSERT_LT(degrees, 0);
        ASSERT_GE(minutes, 0);
        ASSERT_NEAR(back, angle, 1e-12);
    }
}

TEST(SurveyProperties, NegativeAnglesUnderADegreeComeBackPositive) {
    Uniform uniform(0x5eed000a);
    const double one_degree = kPi / 180.0;
    for (int i = 0; i < kCases; ++i) {
        const double angle = uniform(-0.9999 * one_degree, -1e-9);
        int degrees = -1;
        int minutes = -1;
        double seconds = -1.0;
        _radtodms(angle, &degrees, &minutes, &seconds);
        double back = 0.0;
        _dmstorad(degrees, minutes, seconds, &back);
        SCOPED_TRACE(i);
        ASSERT_EQ(degrees, 0);
        ASSERT_NEAR(back, -angle, 1e-12);
    }
}

TEST(SurveyProperties, PointOnLineMatchesAlongAndOffsetTests) {
    Uniform uniform(0x5eed000b);
    constexpr double tolerance = 0.05;
    int on = 0;
    int off = 0;
    for (int i = 0; i < kCases; ++i) {
        const geo_nee start{uniform(-1000.0, 1000.0), uniform(-1000.0, 1000.0), 0.0};
        const double bearing = uniform(0.0, kTwoPi);
        const double length = uniform(1.0, 200.0);
        const geo_nee end{start.north + length * std::cos(bearing),
                          start.east + length * std::sin(bearing), 0.0};
        const double along = uniform(-0.2, 1.2) * length;
        const double offset = uniform(-0.1, 0.1);
        // Right of the line is a quarter turn clockwise.
        const geo_nee point{start.north + along * std::cos(bearing) - offset * std::sin(bearing),
                            start.east + along * std::sin(bearing) + offset * std::cos(bearing),
                            0.0};
        // Keep clear of the tolerance limits, where rounding may decide either way.
        const double margin = 1e-6;
        if (std::fabs(std::fabs(offset) - tolerance) < margin ||
            std::fabs(along + tolerance) < margin ||
            std::fabs(along - length - tolerance) < margin) {
            continue;
        }
        const bool expected =
            along >= -tolerance && along <= length + tolerance && std::fabs(offset) <= tolerance;
        SCOPED_TRACE(i);
        ASSERT_EQ(geo_point_on_line(start, end, point, tolerance), expected ? 1 : 0);
        (expected ? on : off) += 1;
    }
    EXPECT_GT(on, kCases / 10);
    EXPECT_GT(off, kCases / 10);
}

// Which side of the directed line p->q the point r lies on: positive to the left.
double orientation(const geo_nee& p, const geo_nee& q, const geo_nee& r) {
    return (q.east - p.east) * (r.north - p.north) - (q.north - p.north) * (r.east - p.east);
}

TEST(SurveyProperties, LinesCrossMatchesOrientationTest) {
    Uniform uniform(0x5eed000c);
    int crossings = 0;
    for (int i = 0; i < kCases; ++i) {
        const geo_nee a1{uniform(-100.0, 100.0), uniform(-100.0, 100.0), 0.0};
        const geo_nee a2{uniform(-100.0, 100.0), uniform(-100.0, 100.0), 0.0};
        const geo_nee b1{uniform(-100.0, 100.0), uniform(-100.0, 100.0), 0.0};
        const geo_nee b2{uniform(-100.0, 100.0), uniform(-100.0, 100.0), 0.0};
        const double o1 = orientation(a1, a2, b1);
        const double o2 = orientation(a1, a2, b2);
        const double o3 = orientation(b1, b2, a1);
        const double o4 = orientation(b1, b2, a2);
        if (std::fabs(o1) < 1e-6 || std::fabs(o2) < 1e-6 || std::fabs(o3) < 1e-6 ||
            std::fabs(o4) < 1e-6) {
            continue; // touching or collinear: decided by the library's own rule
        }
        const bool expected = (o1 > 0.0) != (o2 > 0.0) && (o3 > 0.0) != (o4 > 0.0);
        SCOPED_TRACE(i);
        ASSERT_EQ(geo_lines_cross(a1, a2, b1, b2), expected ? 1 : 0);
        ASSERT_EQ(geo_lines_cross(b2, b1, a1, a2), expected ? 1 : 0);
        crossings += expected ? 1 : 0;
    }
    EXPECT_GT(crossings, kCases / 10);
}

TEST(SurveyProperties, PointInPolygonMatchesTheShapeItDescribes) {
    // A U open to the north: the union of the base (north 0..5, east 0..30) and the two arms
    // (north 5..20, east 0..10 and 20..30).
    const std::vector<geo_nee> u{{0.0, 0.0, 0.0},   {0.0, 30.0, 0.0}, {20.0, 30.0, 0.0},
                                 {20.0, 20.0, 0.0}, {5.0, 20.0, 0.0}, {5.0, 10.0, 0.0},
                                 {20.0, 10.0, 0.0}, {20.0, 0.0, 0.0}};
    const auto within = [](double value, double low, double high) {
        return value > low && value < high;
    };
    const auto near = [](double value, double edge) { return std::fabs(value - edge) < 1e-6; };
    Uniform uniform(0x5eed000d);
    int inside = 0;
    for (int i = 0; i < kCases; ++i) {
        const geo_nee p{uniform(-5.0, 25.0), uniform(-5.0, 35.0), 0.0};
        if (near(p.north, 0.0) || near(p.north, 5.0) || near(p.north, 20.0) || near(p.east, 0.0) ||
            near(p.east, 10.0) || near(p.east, 20.0) || near(p.east, 30.0)) {
            continue; // on or next to the boundary
        }
        const bool expected = (within(p.north, 0.0, 5.0) && within(p.east, 0.0, 30.0)) ||
                              (within(p.north, 5.0, 20.0) &&
                               (within(p.east, 0.0, 10.0) || within(p.east, 20.0, 30.0)));
        SCOPED_TRACE(i);
        ASSERT_EQ(geo_point_in_poly(static_cast<int>(u.size()), u.data(), &p), expected ? 1 : 0);
        ASSERT_EQ(geo_point_in_poly_2(static_cast<int>(u.size()), u.data(), &p, 1e-9),
                  expected ? 1 : 0);
        inside += expected ? 1 : 0;
    }
    EXPECT_GT(inside, kCases / 10);
}

TEST(SurveyProperties, TriangleAreaMatchesTheShoelaceFormula) {
    Uniform uniform(0x5eed000e);
    for (int i = 0; i < kCases; ++i) {
        const geo_nee a{uniform(-1000.0, 1000.0), uniform(-1000.0, 1000.0), uniform(0.0, 9.0)};
        const geo_nee b{uniform(-1000.0, 1000.0), uniform(-1000.0, 1000.0), uniform(0.0, 9.0)};
        const geo_nee c{uniform(-1000.0, 1000.0), uniform(-1000.0, 1000.0), uniform(0.0, 9.0)};
        // Shoelace with east as x and north as y.
        const double shoelace =
            0.5 * std::fabs(a.east * (b.north - c.north) + b.east * (c.north - a.north) +
                            c.east * (a.north - b.north));
        const double area = geo_triangle_area(a, b, c);
        SCOPED_TRACE(i);
        // Square metres: products of kilometre coordinates, rounding at about 1e-10 m^2.
        ASSERT_NEAR(area, shoelace, 1e-6);
        ASSERT_NEAR(geo_triangle_area(b, c, a), area, 1e-6);
        ASSERT_NEAR(geo_triangle_area(c, b, a), area, 1e-6);
        ASSERT_GE(area, 0.0);
    }
}

} // namespace
