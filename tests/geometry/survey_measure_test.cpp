// Distances, bearings, gradients, point equality, forward computation and the reduction and
// inverse computation of instrument observations.
#include "qv5/geosurvey.h"
#include "support/test_numbers.h"

#include <gtest/gtest.h>

#include <cmath>
#include <cstdint>
#include <cstring>
#include <limits>

namespace {

using qv5::test::bits_of;
using qv5::test::is_geo_null;
using qv5::test::kHalfPi;
using qv5::test::kPi;
using qv5::test::kTwoPi;
using qv5::test::radians;

// Metres: closed forms on coordinates of a few thousand metres.
constexpr double kMetreTol = 1e-9;
// Radians: a few operations on values of a few radians.
constexpr double kAngleTol = 1e-12;

// ---- geo_horz_dist, geo_vert_dist, geo_slope_dist -------------------------------------------

TEST(HorizontalDistance, IsThePlanDistanceIgnoringElevation) {
    const geo_nee a{0.0, 0.0, 0.0};
    const geo_nee b{3.0, 4.0, 100.0};
    EXPECT_EQ(geo_horz_dist(a, b), 5.0);
    EXPECT_EQ(geo_horz_dist(b, a), 5.0);
}

TEST(HorizontalDistance, IsExactAtLargeGridCoordinates) {
    const geo_nee a{6543210.5, 432109.25, 12.0};
    const geo_nee b{6543210.5 - 30.0, 432109.25 + 40.0, -7.0};
    EXPECT_NEAR(geo_horz_dist(a, b), 50.0, kMetreTol);
}

TEST(HorizontalDistance, CoincidentPointsAreZeroApart) {
    const geo_nee a{12.5, -7.25, 3.0};
    EXPECT_EQ(geo_horz_dist(a, a), 0.0);
}

TEST(VerticalDistance, IsPositiveWhenTargetIsHigher) {
    const geo_nee from{0.0, 0.0, 10.0};
    const geo_nee higher{500.0, -300.0, 15.5};
    const geo_nee lower{1.0, 1.0, 4.25};
    EXPECT_EQ(geo_vert_dist(from, higher), 5.5);
    EXPECT_EQ(geo_vert_dist(from, lower), -5.75);
    EXPECT_EQ(geo_vert_dist(higher, from), -5.5);
}

TEST(SlopeDistance, AddsTheElevationProductToThePlainPlanDistance) {
    // Not the Pythagorean 5: sqrt(0 * 0 + 5).
    const geo_nee a{0.0, 0.0, 0.0};
    const geo_nee b{3.0, 4.0, 0.0};
    EXPECT_NEAR(geo_slope_dist(a, b), std::sqrt(5.0), kMetreTol);
}

TEST(SlopeDistance, UsesTheProductOfTheElevationsNotTheirDifference) {
    // sqrt(2 * 3 + 5) = sqrt(11); a height difference of 1 would have given sqrt(26).
    const geo_nee a{0.0, 0.0, 2.0};
    const geo_nee b{3.0, 4.0, 3.0};
    EXPECT_NEAR(geo_slope_dist(a, b), std::sqrt(11.0), kMetreTol);
}

TEST(SlopeDistance, VerticallyAlignedPointsGiveRootOfElevationProduct) {
    const geo_nee a{10.0, 20.0, 4.0};
    const geo_nee b{10.0, 20.0, 9.0};
    EXPECT_NEAR(geo_slope_dist(a, b), 6.0, kMetreTol);
}

// ---- geo_grid_bearing -----------------------------------------------------------------------

TEST(GridBearing, CardinalDirectionsAreMeasuredClockwiseFromNorth) {
    const geo_nee o{100.0, 200.0, 0.0};
    EXPECT_EQ(geo_grid_bearing(o, geo_nee{110.0, 200.0, 0.0}), 0.0);
    EXPECT_NEAR(geo_grid_bearing(o, geo_nee{100.0, 210.0, 0.0}), kHalfPi, kAngleTol);
    EXPECT_NEAR(geo_grid_bearing(o, geo_nee{90.0, 200.0, 0.0}), kPi, kAngleTol);
    EXPECT_NEAR(geo_grid_bearing(o, geo_nee{100.0, 190.0, 0.0}), 3.0 * kHalfPi, kAngleTol);
}

TEST(GridBearing, DiagonalsFallInTheirQuadrants) {
    const geo_nee o{0.0, 0.0, 0.0};
    EXPECT_NEAR(geo_grid_bearing(o, geo_nee{1.0, 1.0, 0.0}), radians(45.0), kAngleTol);
    EXPECT_NEAR(geo_grid_bearing(o, geo_nee{-1.0, 1.0, 0.0}), radians(135.0), kAngleTol);
    EXPECT_NEAR(geo_grid_bearing(o, geo_nee{-1.0, -1.0, 0.0}), radians(225.0), kAngleTol);
    EXPECT_NEAR(geo_grid_bearing(o, geo_nee{1.0, -1.0, 0.0}), radians(315.0), kAngleTol);
    // 30 degrees: north cos 30, east sin 30.
    EXPECT_NEAR(geo_grid_bearing(o, geo_nee{std::sqrt(3.0) / 2.0, 0.5, 0.0}), radians(30.0),
                kAngleTol);
}

TEST(GridBearing, CoincidentPointsGiveZero) {
    const geo_nee p{123.4, 567.8, 9.0};
    const geo_nee above{123.4, 567.8, 19.0};
    EXPECT_EQ(geo_grid_bearing(p, p), 0.0);
    EXPECT_EQ(geo_grid_bearing(p, above), 0.0);
}

TEST(GridBearing, JustWestOfNorthIsJustBelowTwoPi) {
    const geo_nee o{0.0, 0.0, 0.0};
    const double bearing = geo_grid_bearing(o, geo_nee{1000.0, -1e-6, 0.0});
    EXPECT_LT(bearing, kTwoPi);
    EXPECT_NEAR(bearing, kTwoPi - 1e-9, kAngleTol);
}

// ---- geo_gradient ---------------------------------------------------------------------------

TEST(Gradient, IsTheAngleOfElevation) {
    const geo_nee from{0.0, 0.0, 50.0};
    // 100 m in plan (60 north, 80 east), 10 m up: atan(0.1) = 0.09966865249116204.
    EXPECT_NEAR(geo_gradient(from, geo_nee{60.0, 80.0, 60.0}), 0.09966865249116204, kAngleTol);
    EXPECT_NEAR(geo_gradient(from, geo_nee{60.0, 80.0, 40.0}), -0.09966865249116204, kAngleTol);
    EXPECT_NEAR(geo_gradient(from, geo_nee{60.0, 80.0, 150.0}), radians(45.0), kAngleTol);
}

TEST(Gradient, LevelPointsHaveZeroGradient) {
    EXPECT_EQ(geo_gradient(geo_nee{0.0, 0.0, 5.0}, geo_nee{3.0, 4.0, 5.0}), 0.0);
}

TEST(Gradient, LevelPointsCloserThanATenthOfAMillimetreGiveMinusHalfPi) {
    const geo_nee from{1000.0, 2000.0, 30.0};
    const geo_nee to{1000.0, 2000.00005, 30.0};
    EXPECT_EQ(geo_gradient(from, to), -kHalfPi);
}

TEST(Gradient, CoincidentLevelPointsGiveMinusHalfPi) {
    const geo_nee p{1.0, 2.0, 3.0};
    EXPECT_EQ(geo_gradient(p, p), -kHalfPi);
}

TEST(Gradient, PointStraightAboveGivesHalfPi) {
    EXPECT_EQ(geo_gradient(geo_nee{1.0, 2.0, 3.0}, geo_nee{1.0, 2.0, 3.001}), kHalfPi);
    EXPECT_EQ(geo_gradient(geo_nee{1.0, 2.0, 3.0}, geo_nee{1.00005, 2.0, 4.0}), kHalfPi);
}

TEST(Gradient, PointStraightBelowGivesMinusHalfPi) {
    EXPECT_EQ(geo_gradient(geo_nee{1.0, 2.0, 3.0}, geo_nee{1.0, 2.0, 2.0}), -kHalfPi);
    EXPECT_EQ(geo_gradient(geo_nee{1.0, 2.0, 3.0}, geo_nee{1.0, 2.00005, 2.0}), -kHalfPi);
}

TEST(Gradient, FromATenthOfAMillimetreInPlanTheRatioIsUsed) {
    // 0.0002 m in plan, 0.0001 m up: atan(0.5), not the vertical figure.
    const geo_nee from{0.0, 0.0, 0.0};
    const geo_nee to{0.0002, 0.0, 0.0001};
    EXPECT_NEAR(geo_gradient(from, to), std::atan(0.5), kAngleTol);
    const geo_nee level{0.0, 0.0002, 0.0};
    EXPECT_EQ(geo_gradient(from, level), 0.0);
}

// ---- nee_equal ------------------------------------------------------------------------------

TEST(NeeEqual, IdenticalPointsAreEqual) {
    const geo_nee p{6543210.123, 432109.876, 54.321};
    EXPECT_EQ(nee_equal(p, p), 1);
}

TEST(NeeEqual, PointsWithinHalfAMillimetreAreEqual) {
    const geo_nee a{0.0, 0.0, 0.0};
    const geo_nee b{0.00049, -0.00049, 0.00049};
    EXPECT_EQ(nee_equal(a, b), 1);
    EXPECT_EQ(nee_equal(b, a), 1);
}

TEST(NeeEqual, HalfAMillimetreApartInNorthIsNotEqual) {
    EXPECT_EQ(nee_equal(geo_nee{0.0, 0.0, 0.0}, geo_nee{0.0005, 0.0, 0.0}), 0);
    EXPECT_EQ(nee_equal(geo_nee{0.0, 0.0, 0.0}, geo_nee{-0.0005, 0.0, 0.0}), 0);
}

TEST(NeeEqual, HalfAMillimetreApartInEastIsNotEqual) {
    EXPECT_EQ(nee_equal(geo_nee{0.0, 0.0, 0.0}, geo_nee{0.0, 0.0005, 0.0}), 0);
    EXPECT_EQ(nee_equal(geo_nee{0.0, 0.0, 0.0}, geo_nee{0.0, -0.0005, 0.0}), 0);
}

TEST(NeeEqual, HalfAMillimetreApartInElevationIsNotEqual) {
    EXPECT_EQ(nee_equal(geo_nee{0.0, 0.0, 0.0}, geo_nee{0.0, 0.0, 0.0005}), 0);
    EXPECT_EQ(nee_equal(geo_nee{0.0, 0.0, 0.0}, geo_nee{0.0, 0.0, -0.0005}), 0);
}

TEST(NeeEqual, NullCoordinatesAreComparedAsNumbers) {
    // The marker is a number next to zero: equal to zero, to itself, and not to anything else.
    const geo_nee unset{GEO_NULL, GEO_NULL, GEO_NULL};
    EXPECT_EQ(nee_equal(unset, unset), 1);
    EXPECT_EQ(nee_equal(unset, geo_nee{0.0, 0.0, 0.0}), 1);
    EXPECT_EQ(nee_equal(unset, geo_nee{1.0, 0.0, 0.0}), 0);
    EXPECT_EQ(nee_equal(geo_nee{5.0, 6.0, GEO_NULL}, geo_nee{5.0, 6.0, 7.0}), 0);
}

TEST(NeeEqual, NotANumberIsNeverEqual) {
    const double nan = std::numeric_limits<double>::quiet_NaN();
    const geo_nee p{1.0, 2.0, 3.0};
    EXPECT_EQ(nee_equal(p, geo_nee{nan, 2.0, 3.0}), 0);
    EXPECT_EQ(nee_equal(p, geo_nee{1.0, nan, 3.0}), 0);
    EXPECT_EQ(nee_equal(p, geo_nee{1.0, 2.0, nan}), 0);
}

// ---- geo_grid_follow ------------------------------------------------------------------------

TEST(GridFollow, MovesAlongTheBearingByThePlanDistance) {
    // 50 m on a bearing of 60 degrees: 25 m north, 43.30127018922193 m east.
    const geo_nee start{100.0, 200.0, 10.0};
    geo_nee result{};
    geo_grid_follow(start, radians(60.0), 50.0, 0.0, result);
    EXPECT_NEAR(result.north, 125.0, kMetreTol);
    EXPECT_NEAR(result.east, 243.30127018922192, kMetreTol);
    EXPECT_EQ(result.elev, 10.0);
}

TEST(GridFollow, GradientAngleRaisesTheElevation) {
    // A 5 % rise over 50 m: 2.5 m.
    const geo_nee start{100.0, 200.0, 10.0};
    geo_nee result{};
    geo_grid_follow(start, radians(60.0), 50.0, std::atan(0.05), result);
    EXPECT_NEAR(result.north, 125.0, kMetreTol);
    EXPECT_NEAR(result.east, 243.30127018922192, kMetreTol);
    EXPECT_NEAR(result.elev, 12.5, kMetreTol);
}

TEST(GridFollow, NegativeGradientAngleLowersTheElevation) {
    const geo_nee start{0.0, 0.0, 10.0};
    geo_nee result{};
    geo_grid_follow(start, kPi, 20.0, -radians(45.0), result);
    EXPECT_NEAR(result.north, -20.0, kMetreTol);
    EXPECT_NEAR(result.east, 0.0, kMetreTol);
    EXPECT_NEAR(result.elev, -10.0, kMetreTol);
}

TEST(GridFollow, NegativeDistanceGoesBackwards) {
    const geo_nee start{0.0, 0.0, 0.0};
    geo_nee result{};
    geo_grid_follow(start, kHalfPi, -7.0, std::atan(0.1), result);
    EXPECT_NEAR(result.north, 0.0, kMetreTol);
    EXPECT_NEAR(result.east, -7.0, kMetreTol);
    EXPECT_NEAR(result.elev, -0.7, kMetreTol);
}

TEST(GridFollow, ZeroGradientCopiesTheElevationExactly) {
    const geo_nee start{1.0, 2.0, 98.7654321012345};
    geo_nee result{};
    geo_grid_follow(start, 1.0, 1234.5, 0.0, result);
    EXPECT_EQ(result.elev, 98.7654321012345);
}

TEST(GridFollow, ZeroGradientKeepsANullElevation) {
    const geo_nee start{1.0, 2.0, GEO_NULL};
    geo_nee result{};
    geo_grid_follow(start, 1.0, 100.0, 0.0, result);
    EXPECT_TRUE(is_geo_null(result.elev));
    EXPECT_NEAR(result.north, 1.0 + 100.0 * std::cos(1.0), kMetreTol);
}

TEST(GridFollow, NegativeZeroGradientKeepsANullElevation) {
    const geo_nee start{1.0, 2.0, GEO_NULL};
    geo_nee result{};
    geo_grid_follow(start, 1.0, 100.0, -0.0, result);
    EXPECT_TRUE(is_geo_null(result.elev));
}

TEST(GridFollow, NonZeroGradientComputesWithANullElevationAsANumber) {
    // No null test here: the marker is taken as (almost) zero and the rise is added to it.
    const geo_nee start{0.0, 0.0, GEO_NULL};
    geo_nee result{};
    geo_grid_follow(start, 0.0, 10.0, 0.1, result);
    EXPECT_FALSE(is_geo_null(result.elev));
    EXPECT_NEAR(result.elev, 10.0 * std::tan(0.1), kMetreTol);
}

TEST(GridFollow, ZeroDistanceStaysAtTheStart) {
    const geo_nee start{11.0, 22.0, 33.0};
    geo_nee result{};
    geo_grid_follow(start, 2.0, 0.0, 0.3, result);
    EXPECT_EQ(result.north, 11.0);
    EXPECT_EQ(result.east, 22.0);
    EXPECT_EQ(result.elev, 33.0);
}

TEST(GridFollow, StartAndResultMayBeTheSameRecord) {
    geo_nee point{100.0, 200.0, 10.0};
    geo_grid_follow(point, radians(60.0), 50.0, std::atan(0.05), point);
    EXPECT_NEAR(point.north, 125.0, kMetreTol);
    EXPECT_NEAR(point.east, 243.30127018922192, kMetreTol);
    EXPECT_NEAR(point.elev, 12.5, kMetreTol);
}

// ---- geo_reduce_obs -------------------------------------------------------------------------

TEST(ReduceObservation, ReducesAnObservationFromAStation) {
    // 100 m slope at zenith 80 degrees on bearing 30 degrees, instrument 1.5 m:
    // plan 100 sin 80 = 98.4807753012208, rise 100 cos 80 = 17.364817766693033.
    const geo_hvd obs{radians(30.0), radians(80.0), 100.0};
    const geo_nee station{1000.0, 2000.0, 50.0};
    geo_nee result{};
    geo_reduce_obs(obs, station, 1.5, result);
    EXPECT_NEAR(result.north, 1085.2868531952442, kMetreTol);
    EXPECT_NEAR(result.east, 2049.2403876506105, kMetreTol);
    EXPECT_NEAR(result.elev, 68.86481776669304, kMetreTol);
}

TEST(ReduceObservation, HeightCorrectionIsAddedToTheElevationOnly) {
    const geo_hvd obs{radians(30.0), radians(80.0), 100.0};
    const geo_nee station{1000.0, 2000.0, 50.0};
    geo_nee without{};
    geo_nee with{};
    geo_reduce_obs(obs, station, 0.0, without);
    geo_reduce_obs(obs, station, 2.25, with);
    EXPECT_EQ(with.north, without.north);
    EXPECT_EQ(with.east, without.east);
    EXPECT_NEAR(with.elev - without.elev, 2.25, kMetreTol);
}

TEST(ReduceObservation, FaceTwoZenithStillGivesAPositivePlanDistance) {
    // Zenith 280 degrees: |sin| is sin 80 and cos 280 = cos 80, so the same point comes out as
    // for zenith 80 degrees on the same horizontal angle.
    const geo_nee station{1000.0, 2000.0, 50.0};
    geo_nee result{};
    geo_reduce_obs(geo_hvd{radians(30.0), radians(280.0), 100.0}, station, 1.5, result);
    EXPECT_NEAR(result.north, 1085.2868531952442, kMetreTol);
    EXPECT_NEAR(result.east, 2049.2403876506105, kMetreTol);
    EXPECT_NEAR(result.elev, 68.86481776669304, kMetreTol);
}

TEST(ReduceObservation, LevelSightAddsOnlyTheHeightCorrection) {
    const geo_nee station{0.0, 0.0, 20.0};
    geo_nee result{};
    geo_reduce_obs(geo_hvd{kPi, kHalfPi, 40.0}, station, 1.6, result);
    EXPECT_NEAR(result.north, -40.0, kMetreTol);
    EXPECT_NEAR(result.east, 0.0, kMetreTol);
    EXPECT_NEAR(result.elev, 21.6, kMetreTol);
}

TEST(ReduceObservation, SightStraightUpStaysOverTheStation) {
    const geo_nee station{10.0, 20.0, 30.0};
    geo_nee result{};
    geo_reduce_obs(geo_hvd{1.0, 0.0, 5.0}, station, 0.0, result);
    EXPECT_EQ(result.north, 10.0);
    EXPECT_EQ(result.east, 20.0);
    EXPECT_EQ(result.elev, 35.0);
}

TEST(ReduceObservation, NullDistanceNullsAllThreeFields) {
    geo_nee result{7.0, 8.0, 9.0};
    geo_reduce_obs(geo_hvd{1.0, 1.5, GEO_NULL}, geo_nee{1.0, 2.0, 3.0}, 1.5, result);
    EXPECT_TRUE(is_geo_null(result.north));
    EXPECT_TRUE(is_geo_null(result.east));
    EXPECT_TRUE(is_geo_null(result.elev));
}

TEST(ReduceObservation, NullHorizontalAngleNullsAllThreeFields) {
    geo_nee result{7.0, 8.0, 9.0};
    geo_reduce_obs(geo_hvd{GEO_NULL, 1.5, 10.0}, geo_nee{1.0, 2.0, 3.0}, 1.5, result);
    EXPECT_TRUE(is_geo_null(result.north));
    EXPECT_TRUE(is_geo_null(result.east));
    EXPECT_TRUE(is_geo_null(result.elev));
}

TEST(ReduceObservation, NullZenithAngleNullsAllThreeFields) {
    geo_nee result{7.0, 8.0, 9.0};
    geo_reduce_obs(geo_hvd{1.0, GEO_NULL, 10.0}, geo_nee{1.0, 2.0, 3.0}, 1.5, result);
    EXPECT_TRUE(is_geo_null(result.north));
    EXPECT_TRUE(is_geo_null(result.east));
    EXPECT_TRUE(is_geo_null(result.elev));
}

TEST(ReduceObservation, NullHeightCorrectionIsUsedAsANumber) {
    geo_nee result{};
    geo_reduce_obs(geo_hvd{0.0, kHalfPi, 10.0}, geo_nee{1.0, 2.0, 3.0}, GEO_NULL, result);
    EXPECT_NEAR(result.north, 11.0, kMetreTol);
    EXPECT_NEAR(result.east, 2.0, kMetreTol);
    EXPECT_FALSE(is_geo_null(result.elev));
    EXPECT_NEAR(result.elev, 3.0, kMetreTol);
}

TEST(ReduceObservation, NullStationCoordinatesAreUsedAsNumbers) {
    geo_nee result{};
    // 10 m level on a bearing of 30 degrees from a station whose fields all hold the marker.
    geo_reduce_obs(geo_hvd{radians(30.0), kHalfPi, 10.0}, geo_nee{GEO_NULL, GEO_NULL, GEO_NULL},
                   1.0, result);
    EXPECT_NEAR(result.north, 5.0 * std::sqrt(3.0), kMetreTol);
    EXPECT_NEAR(result.east, 5.0, kMetreTol);
    EXPECT_FALSE(is_geo_null(result.elev));
    EXPECT_NEAR(result.elev, 1.0, kMetreTol);
}

TEST(ReduceObservation, StationAndResultMayBeTheSameRecord) {
    geo_nee point{1000.0, 2000.0, 50.0};
    geo_reduce_obs(geo_hvd{radians(30.0), radians(80.0), 100.0}, point, 1.5, point);
    EXPECT_NEAR(point.north, 1085.2868531952442, kMetreTol);
    EXPECT_NEAR(point.east, 2049.2403876506105, kMetreTol);
    EXPECT_NEAR(point.elev, 68.86481776669304, kMetreTol);
}

// ---- geo_calc_obs ---------------------------------------------------------------------------

TEST(CalcObservation, ComputesTheObservationBetweenTwoPoints) {
    // 100 m north and 100 m east, target 2 m rod at 60 m, instrument 1.5 m at 50 m:
    // rise 10.5 m over 141.42135623730951 m in plan.
    const geo_nee from{1000.0, 2000.0, 50.0};
    const geo_nee to{1100.0, 2100.0, 60.0};
    geo_hvd obs{};
    geo_calc_obs(from, 1.5, to, 2.0, obs);
    EXPECT_NEAR(obs.hz, radians(45.0), kAngleTol);
    EXPECT_NEAR(obs.vz, 1.4966860927203796, kAngleTol);
    EXPECT_NEAR(obs.dist, 141.81061314302255, kMetreTol);
}

TEST(CalcObservation, EqualInstrumentAndTargetHeightsCancel) {
    const geo_nee from{0.0, 0.0, 10.0};
    const geo_nee to{-30.0, -40.0, 10.0};
    geo_hvd obs{};
    geo_calc_obs(from, 1.7, to, 1.7, obs);
    EXPECT_NEAR(obs.hz, kPi + std::atan2(4.0, 3.0), kAngleTol);
    EXPECT_NEAR(obs.vz, kHalfPi, kAngleTol);
    EXPECT_NEAR(obs.dist, 50.0, kMetreTol);
}

TEST(CalcObservation, HorizontalAngleWestOfNorthIsNormalised) {
    geo_hvd obs{};
    geo_calc_obs(geo_nee{0.0, 0.0, 0.0}, 0.0, geo_nee{10.0, -10.0, 0.0}, 0.0, obs);
    EXPECT_NEAR(obs.hz, radians(315.0), kAngleTol);
}

TEST(CalcObservation, TargetStraightBelowHasZenithPi) {
    geo_hvd obs{};
    geo_calc_obs(geo_nee{5.0, 5.0, 20.0}, 0.0, geo_nee{5.0, 5.0, 12.0}, 0.0, obs);
    EXPECT_EQ(obs.hz, 0.0);
    EXPECT_NEAR(obs.vz, kPi, kAngleTol);
    EXPECT_NEAR(obs.dist, 8.0, kMetreTol);
}

TEST(CalcObservation, TargetStraightAboveHasZenithZero) {
    geo_hvd obs{};
    geo_calc_obs(geo_nee{5.0, 5.0, 20.0}, 1.5, geo_nee{5.0, 5.0, 30.0}, 0.0, obs);
    EXPECT_EQ(obs.hz, 0.0);
    EXPECT_NEAR(obs.vz, 0.0, kAngleTol);
    EXPECT_NEAR(obs.dist, 8.5, kMetreTol);
}

TEST(CalcObservation, CoincidentPointsGiveALevelSightOfZeroLength) {
    const geo_nee p{5.0, 5.0, 20.0};
    geo_hvd obs{9.0, 9.0, 9.0};
    geo_calc_obs(p, 0.0, p, 0.0, obs);
    EXPECT_EQ(obs.hz, 0.0);
    EXPECT_NEAR(obs.vz, kHalfPi, kAngleTol);
    EXPECT_EQ(obs.dist, 0.0);
}

TEST(CalcObservation, NullTargetHeightIsUsedAsANumber) {
    // toHeight is not tested for null: the marker acts as a zero-height target.
    const geo_nee from{0.0, 0.0, 10.0};
    const geo_nee to{30.0, 40.0, 12.0};
    geo_hvd with_null{9.0, 9.0, 9.0};
    geo_hvd with_zero{};
    geo_calc_obs(from, 1.0, to, GEO_NULL, with_null);
    geo_calc_obs(from, 1.0, to, 0.0, with_zero);
    EXPECT_NEAR(with_null.hz, with_zero.hz, kAngleTol);
    EXPECT_NEAR(with_null.vz, with_zero.vz, kAngleTol);
    EXPECT_NEAR(with_null.dist, with_zero.dist, kMetreTol);
    EXPECT_NEAR(with_null.dist, std::sqrt(2501.0), kMetreTol);
}

// geo_calc_obs with one null input: the observation keeps exactly what it held.
void expect_observation_untouched(const geo_nee& from, double from_height, const geo_nee& to,
                                  double to_height) {
    geo_hvd obs{1.25, 2.5, 3.75};
    geo_calc_obs(from, from_height, to, to_height, obs);
    EXPECT_EQ(obs.hz, 1.25);
    EXPECT_EQ(obs.vz, 2.5);
    EXPECT_EQ(obs.dist, 3.75);
}

TEST(CalcObservation, NullFromNorthLeavesObservationUntouched) {
    expect_observation_untouched(geo_nee{GEO_NULL, 0.0, 10.0}, 1.5, geo_nee{30.0, 40.0, 12.0}, 2.0);
}

TEST(CalcObservation, NullFromEastLeavesObservationUntouched) {
    expect_observation_untouched(geo_nee{0.0, GEO_NULL, 10.0}, 1.5, geo_nee{30.0, 40.0, 12.0}, 2.0);
}

TEST(CalcObservation, NullFromElevationLeavesObservationUntouched) {
    expect_observation_untouched(geo_nee{0.0, 0.0, GEO_NULL}, 1.5, geo_nee{30.0, 40.0, 12.0}, 2.0);
}

TEST(CalcObservation, NullToNorthLeavesObservationUntouched) {
    expect_observation_untouched(geo_nee{0.0, 0.0, 10.0}, 1.5, geo_nee{GEO_NULL, 40.0, 12.0}, 2.0);
}

TEST(CalcObservation, NullToEastLeavesObservationUntouched) {
    expect_observation_untouched(geo_nee{0.0, 0.0, 10.0}, 1.5, geo_nee{30.0, GEO_NULL, 12.0}, 2.0);
}

TEST(CalcObservation, NullToElevationLeavesObservationUntouched) {
    expect_observation_untouched(geo_nee{0.0, 0.0, 10.0}, 1.5, geo_nee{30.0, 40.0, GEO_NULL}, 2.0);
}

TEST(CalcObservation, NullFromHeightLeavesObservationUntouched) {
    expect_observation_untouched(geo_nee{0.0, 0.0, 10.0}, GEO_NULL, geo_nee{30.0, 40.0, 12.0}, 2.0);
}

TEST(CalcObservation, ReducingTheObservationGivesTheTargetPlusItsHeight) {
    // The reduction knows nothing of the target height: it lands on the top of the rod.
    const geo_nee from{1000.0, 2000.0, 50.0};
    const geo_nee to{1100.0, 1900.0, 45.0};
    geo_hvd obs{};
    geo_calc_obs(from, 1.5, to, 2.0, obs);
    geo_nee reduced{};
    geo_reduce_obs(obs, from, 1.5, reduced);
    EXPECT_NEAR(reduced.north, 1100.0, kMetreTol);
    EXPECT_NEAR(reduced.east, 1900.0, kMetreTol);
    EXPECT_NEAR(reduced.elev, 47.0, kMetreTol);
}

} // namespace
