// The plain maths under the spirals: azimuth and position along the clothoid, and one step of
// the projection of a point onto it.
#include "geometry/clothoid.h"
#include "geometry/spiral_math.h"
#include "geometry/traverse.h"

#include <gtest/gtest.h>

#include <cmath>
#include <cstring>
#include <random>

namespace {

using qv5::detail::ProjectionStep;
using qv5::detail::spiral_azimuth;
using qv5::detail::spiral_point;
using qv5::detail::SpiralKind;
using qv5::detail::SpiralLayout;
using qv5::detail::SpiralShape;

constexpr double kPi = 3.141592653589793;
constexpr double kTwoPi = 6.283185307179586;
constexpr double kHalfPi = 1.5707963267948966;

/// A spiral that is for every practical purpose a straight northwards, with station s at
/// northing s.
SpiralShape straightish(SpiralKind kind) {
    const geo_nee straight_end{kind == SpiralKind::Entry ? 0.0 : 100.0, 0.0, 0.0};
    return SpiralShape{kind, straight_end, 0.0, 100.0, 2e11, true};
}

/// One projection step on a freshly laid-out spiral.
ProjectionStep spiral_projection_step(const SpiralShape& shape, const geo_nee& point,
                                      double tolerance, double& station, double& offset,
                                      double& azimuth) {
    SpiralLayout layout(shape);
    return qv5::detail::spiral_projection_step(layout, point, tolerance, station, offset, azimuth);
}

TEST(SpiralMath, AzimuthTurnsTowardsTheCurveFromTheStraightEnd) {
    SpiralShape entry{SpiralKind::Entry, {0.0, 0.0, 0.0}, 1.0, 50.0, 10000.0, true};
    EXPECT_NEAR(spiral_azimuth(entry, 20.0), 1.0 + 0.04, 1e-15);
    entry.turns_right = false;
    EXPECT_NEAR(spiral_azimuth(entry, 20.0), 1.0 - 0.04, 1e-15);
    // The exit spiral's reference is its exit straight, met at the end.
    SpiralShape exit{SpiralKind::Exit, {0.0, 0.0, 0.0}, 0.01, 50.0, 10000.0, true};
    EXPECT_NEAR(spiral_azimuth(exit, 30.0), kTwoPi + 0.01 - 0.04, 1e-15);
    EXPECT_EQ(spiral_azimuth(exit, 70.0), 0.01);
}

TEST(SpiralMath, AzimuthPassesNullThrough) {
    SpiralShape shape{SpiralKind::Entry, {0.0, 0.0, 0.0}, GEO_NULL, 50.0, 10000.0, true};
    EXPECT_EQ(spiral_azimuth(shape, 10.0), GEO_NULL);
    shape.tangent_azimuth = 0.0;
    shape.spiral_constant = GEO_NULL;
    EXPECT_EQ(spiral_azimuth(shape, 10.0), GEO_NULL);
}

TEST(SpiralMath, PointFailsWithoutAStraightEndOrASeries) {
    geo_nee out{1.0, 2.0, 3.0};
    SpiralShape shape{SpiralKind::Entry, {GEO_NULL, 0.0, 0.0}, 0.0, 50.0, 10000.0, true};
    EXPECT_FALSE(spiral_point(shape, 10.0, 1e-5, out));
    shape.straight_end = {0.0, 0.0, 0.0};
    EXPECT_FALSE(spiral_point(shape, 10.0, 0.0, out)); // a tolerance no series meets
    EXPECT_EQ(out.north, 1.0);
    EXPECT_TRUE(spiral_point(shape, 10.0, 1e-5, out));
}

TEST(SpiralMath, ExitPointIsMeasuredBackFromTheEnd) {
    const SpiralShape exit{SpiralKind::Exit, {100.0, 0.0, 7.0}, 0.0, 50.0, 2e11, true};
    geo_nee out{};
    ASSERT_TRUE(spiral_point(exit, 20.0, 1e-9, out));
    EXPECT_NEAR(out.north, 70.0, 1e-6);
    EXPECT_NEAR(out.east, 0.0, 1e-6);
    EXPECT_EQ(out.elev, 7.0);
}

TEST(SpiralMath, StepFromTheRightTakesTheWholeAlongTangentComponent) {
    for (SpiralKind kind : {SpiralKind::Entry, SpiralKind::Exit}) {
        double station = 10.0;
        double offset = 0.0;
        double azimuth = 0.0;
        EXPECT_EQ(spiral_projection_step(straightish(kind), {40.0, 5.0, 0.0}, 1e-6, station, offset,
                                         azimuth),
                  ProjectionStep::Moved);
        EXPECT_NEAR(station, 40.0, 1e-6);
    }
}

TEST(SpiralMath, StepFromTheLeftTakesHalfOfIt) {
    for (SpiralKind kind : {SpiralKind::Entry, SpiralKind::Exit}) {
        double station = 10.0;
        double offset = 0.0;
        double azimuth = 0.0;
        EXPECT_EQ(spiral_projection_step(straightish(kind), {40.0, -5.0, 0.0}, 1e-6, station,
                                         offset, azimuth),
                  ProjectionStep::Moved);
        EXPECT_NEAR(station, 25.0, 1e-6);
        // Backwards as well.
        station = 60.0;
        spiral_projection_step(straightish(kind), {40.0, -5.0, 0.0}, 1e-6, station, offset,
                               azimuth);
        EXPECT_NEAR(station, 50.0, 1e-6);
    }
}

TEST(SpiralMath, StepConvergesWhenTheChordIsSquareToTheTangent) {
    double station = 40.0;
    double offset = 0.0;
    double azimuth = 1.0;
    EXPECT_EQ(spiral_projection_step(straightish(SpiralKind::Entry), {40.0, -5.0, 0.0}, 1e-6,
                                     station, offset, azimuth),
              ProjectionStep::Converged);
    EXPECT_EQ(station, 40.0);
    // The spiral has left its straight by 40^3 / (3 C) = 1.1e-7 m and turned by 40^2 / C.
    EXPECT_NEAR(offset, -5.0, 2e-7);
    EXPECT_NEAR(azimuth, 1600.0 / 2e11, 1e-20);
    EXPECT_EQ(spiral_projection_step(straightish(SpiralKind::Entry), {40.0, 5.0, 0.0}, 1e-6,
                                     station, offset, azimuth),
              ProjectionStep::Converged);
    EXPECT_NEAR(offset, 5.0, 2e-7);
}

TEST(SpiralMath, PointWithinTheToleranceOfTheSpiralHasZeroOffset) {
    double station = 40.0;
    double offset = 1.0;
    double azimuth = 0.0;
    EXPECT_EQ(spiral_projection_step(straightish(SpiralKind::Entry), {40.0 + 5e-7, 0.0, 0.0}, 1e-6,
                                     station, offset, azimuth),
              ProjectionStep::Converged);
    EXPECT_EQ(offset, 0.0);
}

TEST(SpiralMath, LayoutStepsAgreeWithSingleLevelSteps) {
    // The layout works out the sines and cosines of its two directions once; the points it
    // gives are those of the one-off steps to the last bit, for both senses of a step.
    for (bool right : {true, false}) {
        const SpiralShape shape{SpiralKind::Exit, {512.25, -77.5, 3.0}, 5.9, 80.0, 48000.0, right};
        SpiralLayout layout(shape);
        for (double s : {0.0, 13.0, 41.5, 80.0}) {
            geo_nee a{};
            geo_nee b{};
            ASSERT_TRUE(layout.point(s, 1e-7, a));
            ASSERT_TRUE(spiral_point(shape, s, 1e-7, b));
            EXPECT_EQ(a.north, b.north);
            EXPECT_EQ(a.east, b.east);
            double x = 0.0;
            double y = 0.0;
            ASSERT_TRUE(qv5::detail::clothoid_deltas(80.0 - s, 48000.0, 1e-7, x, y));
            const geo_nee foot = qv5::detail::level_step(shape.straight_end, 5.9 + kPi - kTwoPi, x);
            const geo_nee c = qv5::detail::level_step(foot, 5.9 + kHalfPi, right ? y : -y);
            EXPECT_EQ(a.north, c.north);
            EXPECT_EQ(a.east, c.east);
            EXPECT_EQ(a.elev, 3.0);
        }
    }
}

TEST(SpiralMath, StepFailsWhereTheSpiralHasNoPoint) {
    SpiralShape shape = straightish(SpiralKind::Entry);
    shape.spiral_constant = 1.0; // no series converges 40 m out on this
    double station = 40.0;
    double offset = 0.0;
    double azimuth = 0.0;
    EXPECT_EQ(spiral_projection_step(shape, {40.0, 5.0, 0.0}, 1e-6, station, offset, azimuth),
              ProjectionStep::Failed);
}

} // namespace

namespace {

bool same_bits(double a, double b) {
    return std::memcmp(&a, &b, sizeof a) == 0;
}

bool same_point(const geo_nee& a, const geo_nee& b) {
    return same_bits(a.north, b.north) && same_bits(a.east, b.east) && same_bits(a.elev, b.elev);
}

} // namespace

TEST(SpiralMath, KeptLayoutGivesWhatAFreshOneGives) {
    // One layout asked again and again, as an iterator asks it: the same station twice, then
    // another tolerance at that station, then stations that differ in the last bit only. Each
    // answer must be the fresh layout's, bit for bit.
    const SpiralShape shapes[] = {
        SpiralShape{SpiralKind::Entry, {1000.0, 2000.0, 5.0}, 0.7, 80.0, 80000.0, true},
        SpiralShape{SpiralKind::Exit, {1500.0, 2500.0, 5.0}, 4.1, 60.0, 48000.0, false}};
    std::mt19937 random(3);
    std::uniform_real_distribution<double> along(-5.0, 85.0);
    for (const SpiralShape& shape : shapes) {
        SpiralLayout kept(shape);
        for (int i = 0; i < 4000; ++i) {
            double station = along(random);
            if (i % 3 == 1) {
                station = std::nextafter(station, 1e9);
            }
            for (const double tolerance : {0.001, 0.001, 1e-5, 0.001}) {
                geo_nee from_kept{-1.0, -1.0, -1.0};
                geo_nee fresh{-1.0, -1.0, -1.0};
                const bool kept_ok = kept.point(station, tolerance, from_kept);
                const bool fresh_ok = spiral_point(shape, station, tolerance, fresh);
                ASSERT_EQ(kept_ok, fresh_ok) << station;
                ASSERT_TRUE(same_point(from_kept, fresh)) << station << " " << tolerance;
                ASSERT_TRUE(same_bits(kept.azimuth(station), spiral_azimuth(shape, station)))
                    << station;
            }
        }
    }
}

TEST(SpiralMath, KeptLayoutLeavesThePointAloneWhereItFails) {
    // A series that cannot converge (a tolerance of 0): false, and the point untouched, the
    // second time as the first.
    SpiralLayout kept(SpiralShape{SpiralKind::Entry, {0.0, 0.0, 0.0}, 0.0, 50.0, 10000.0, true});
    for (int i = 0; i < 2; ++i) {
        geo_nee out{7.0, 8.0, 9.0};
        EXPECT_FALSE(kept.point(40.0, 0.0, out));
        EXPECT_EQ(out.north, 7.0);
        EXPECT_EQ(out.east, 8.0);
    }
    geo_nee good{7.0, 8.0, 9.0};
    EXPECT_TRUE(kept.point(40.0, 0.001, good));
    EXPECT_NE(good.north, 7.0);
}
