// The plain maths under the spirals: azimuth and position along the clothoid, and one step of
// the projection of a point onto it.
#include "geometry/spiral_math.h"

#include <gtest/gtest.h>

#include <cmath>

namespace {

using qv5::detail::ProjectionStep;
using qv5::detail::spiral_azimuth;
using qv5::detail::spiral_point;
using qv5::detail::spiral_projection_step;
using qv5::detail::SpiralKind;
using qv5::detail::SpiralShape;

constexpr double kTwoPi = 6.283185307179586;

/// A spiral that is for every practical purpose a straight northwards, with station s at
/// northing s.
SpiralShape straightish(SpiralKind kind) {
    const geo_nee straight_end{kind == SpiralKind::Entry ? 0.0 : 100.0, 0.0, 0.0};
    return SpiralShape{kind, straight_end, 0.0, 100.0, 2e11, true};
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
