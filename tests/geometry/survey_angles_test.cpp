// Bearings and angle conversions: normalisation, divergence, bisection, face change, degrees,
// radians and degrees-minutes-seconds.
#include "qv5/geosurvey.h"
#include "support/test_numbers.h"

#include <gtest/gtest.h>

#include <climits>
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

// Radians. The closed forms here are a few operations on values of a few radians, a handful of
// ulps; 1e-12 rad is a micrometre at a kilometre.
constexpr double kAngleTol = 1e-12;
// Seconds of arc. The conversion works in seconds (up to about 1.3e6 for a whole turn, ulp
// 2.3e-10), so a few ulps of that.
constexpr double kSecondsTol = 1e-8;

// The unsigned gap between two directions, whole turns ignored.
double angular_gap(double a, double b) {
    return std::fabs(std::remainder(a - b, kTwoPi));
}

// ---- geo_normalised_bearing / _normalisedbearing -------------------------------------------

TEST(NormalisedBearing, ValueAlreadyInRangeIsReturnedUnchanged) {
    EXPECT_EQ(geo_normalised_bearing(1.234), 1.234);
    EXPECT_EQ(geo_normalised_bearing(kPi), kPi);
    const double just_below_turn = std::nextafter(kTwoPi, 0.0);
    EXPECT_EQ(geo_normalised_bearing(just_below_turn), just_below_turn);
}

TEST(NormalisedBearing, ExactZeroStaysZero) {
    const double result = geo_normalised_bearing(0.0);
    EXPECT_EQ(result, 0.0);
    EXPECT_FALSE(std::signbit(result));
}

TEST(NormalisedBearing, NegativeZeroComparesAsZero) {
    EXPECT_EQ(geo_normalised_bearing(-0.0), 0.0);
}

TEST(NormalisedBearing, ExactWholeTurnGivesZero) {
    EXPECT_EQ(geo_normalised_bearing(kTwoPi), 0.0);
    EXPECT_EQ(geo_normalised_bearing(2.0 * kTwoPi), 0.0);
}

TEST(NormalisedBearing, NegativeWholeTurnGivesZero) {
    EXPECT_EQ(geo_normalised_bearing(-kTwoPi), 0.0);
    EXPECT_EQ(geo_normalised_bearing(-2.0 * kTwoPi), 0.0);
}

TEST(NormalisedBearing, NegativeAngleWrapsToJustBelowTwoPi) {
    // One whole turn added to -0.1: 6.283185307179586 - 0.1 rounds to 6.183185307179587.
    EXPECT_EQ(geo_normalised_bearing(-0.1), 6.183185307179587);
    EXPECT_NEAR(geo_normalised_bearing(-0.1), kTwoPi - 0.1, kAngleTol);
}

TEST(NormalisedBearing, ThreeTurnsAndATenthComeBackToATenth) {
    // 0.1 + 3 * 6.283185307179586 is 18.94955592153876; three subtractions of a whole turn
    // leave 0.10000000000000142.
    EXPECT_EQ(geo_normalised_bearing(18.94955592153876), 0.10000000000000142);
    EXPECT_NEAR(geo_normalised_bearing(18.94955592153876), 0.1, kAngleTol);
}

TEST(NormalisedBearing, NegativeThreeTurnsAndATenthWrapsUp) {
    // Four whole turns added one at a time to -18.94955592153876.
    EXPECT_EQ(geo_normalised_bearing(-18.94955592153876), 6.183185307179585);
}

TEST(NormalisedBearing, TurnsAreTakenOffOneAtATimeBelowAMillionTurns) {
    // 999999 turns + 0.5 = 6283179.523994279. Taking off one turn at a time rounds at every
    // step and ends at 0.5000097006071016 (a remainder would give 0.5000000000416307); hosts
    // have always seen the stepwise figure, so it is asserted to the last bit.
    EXPECT_EQ(geo_normalised_bearing(6283179.523994279), 0.5000097006071016);
}

TEST(NormalisedBearing, BeyondAMillionTurnsTheAngleIsKeptToTheInputsPrecision) {
    // Ten million turns plus a quarter radian. The input carries the quarter only to within half
    // an ulp of 6.3e7 (3.7e-9), and the reduction must not lose more than that.
    const double bearing = 1e7 * kTwoPi + 0.25;
    const double result = geo_normalised_bearing(bearing);
    EXPECT_GE(result, 0.0);
    EXPECT_LT(result, kTwoPi);
    EXPECT_NEAR(result, 0.25, 1e-8);
}

TEST(NormalisedBearing, NullPassesThroughUnchanged) {
    EXPECT_TRUE(is_geo_null(geo_normalised_bearing(GEO_NULL)));
    EXPECT_TRUE(is_geo_null(_normalisedbearing(GEO_NULL)));
}

TEST(NormalisedBearing, TinyNegativeAngleBecomesExactlyOneTurn) {
    // -1e-300 + 2 pi rounds to 2 pi itself and the loop stops there: the one value that comes
    // back outside [0, 2 pi). It is the behaviour hosts have always had, and is kept.
    EXPECT_EQ(geo_normalised_bearing(-1e-300), kTwoPi);
    EXPECT_EQ(_normalisedbearing(-1e-300), kTwoPi);
}

TEST(NormalisedBearing, InfinityHasNoDirectionAndGivesNull) {
    EXPECT_TRUE(is_geo_null(geo_normalised_bearing(std::numeric_limits<double>::infinity())));
    EXPECT_TRUE(is_geo_null(geo_normalised_bearing(-std::numeric_limits<double>::infinity())));
    EXPECT_TRUE(is_geo_null(_normalisedbearing(std::numeric_limits<double>::infinity())));
    EXPECT_TRUE(is_geo_null(_normalisedbearing(-std::numeric_limits<double>::infinity())));
}

TEST(NormalisedBearing, NotANumberStaysNotANumber) {
    EXPECT_TRUE(std::isnan(geo_normalised_bearing(std::numeric_limits<double>::quiet_NaN())));
    EXPECT_TRUE(std::isnan(_normalisedbearing(std::numeric_limits<double>::quiet_NaN())));
}

TEST(NormalisedBearing, HugeValuesComeBackInRangePromptly) {
    for (const double huge : {1e300, -1e300, 1e20, -1e20, std::numeric_limits<double>::max(),
                              std::numeric_limits<double>::lowest()}) {
        SCOPED_TRACE(huge);
        for (const double result : {geo_normalised_bearing(huge), _normalisedbearing(huge)}) {
            EXPECT_GE(result, 0.0);
            EXPECT_LT(result, kTwoPi);
        }
    }
}

TEST(NormalisedBearing, BothNamesGiveIdenticalBits) {
    for (const double bearing :
         {0.0, -0.0, 1.0, kTwoPi, -kTwoPi, -0.1, 18.94955592153876, -18.94955592153876, 1e300,
          -1e300, -1e-300, GEO_NULL, std::numeric_limits<double>::infinity(),
          -std::numeric_limits<double>::infinity(), std::numeric_limits<double>::quiet_NaN()}) {
        SCOPED_TRACE(bearing);
        EXPECT_EQ(bits_of(_normalisedbearing(bearing)), bits_of(geo_normalised_bearing(bearing)));
    }
}

// ---- geo_grid_divergence --------------------------------------------------------------------

TEST(GridDivergence, TakesTheShortWayRound) {
    // 6.2 - 0.1 = 6.1 rad one way, 2 pi - 6.1 = 0.18318530717958623 the other.
    const double divergence = geo_grid_divergence(0.1, 6.2);
    EXPECT_NEAR(divergence, 0.18318530717958623, kAngleTol);
    EXPECT_LE(divergence, kPi);
}

TEST(GridDivergence, IsTheSameInEitherOrder) {
    EXPECT_NEAR(geo_grid_divergence(6.2, 0.1), 0.18318530717958623, kAngleTol);
    EXPECT_NEAR(geo_grid_divergence(radians(30.0), radians(100.0)), radians(70.0), kAngleTol);
    EXPECT_NEAR(geo_grid_divergence(radians(100.0), radians(30.0)), radians(70.0), kAngleTol);
}

TEST(GridDivergence, OppositeDirectionsArePiApart) {
    EXPECT_NEAR(geo_grid_divergence(0.0, kPi), kPi, kAngleTol);
    EXPECT_NEAR(geo_grid_divergence(kHalfPi, 3.0 * kHalfPi), kPi, kAngleTol);
}

TEST(GridDivergence, SameDirectionIsZero) {
    EXPECT_EQ(geo_grid_divergence(1.0, 1.0), 0.0);
    EXPECT_NEAR(geo_grid_divergence(0.0, kTwoPi), 0.0, kAngleTol);
}

TEST(GridDivergence, BearingsOutsideOneTurnAreReducedFirst) {
    EXPECT_NEAR(geo_grid_divergence(0.1 + 2.0 * kTwoPi, -0.1), 0.2, kAngleTol);
}

TEST(GridDivergence, NullBearingGivesNull) {
    EXPECT_TRUE(is_geo_null(geo_grid_divergence(GEO_NULL, kPi)));
    EXPECT_TRUE(is_geo_null(geo_grid_divergence(kPi, GEO_NULL)));
    EXPECT_TRUE(is_geo_null(geo_grid_divergence(GEO_NULL, GEO_NULL)));
}

TEST(GridDivergenceOfLines, NorthAndEastLinesAreARightAngleApart) {
    const geo_nee a1{100.0, 200.0, 0.0};
    const geo_nee a2{150.0, 200.0, 0.0}; // due north
    const geo_nee b1{-10.0, -20.0, 5.0};
    const geo_nee b2{-10.0, 30.0, 9.0}; // due east
    EXPECT_NEAR(geo_grid_divergence(a1, a2, b1, b2), kHalfPi, kAngleTol);
    EXPECT_NEAR(geo_grid_divergence(b1, b2, a1, a2), kHalfPi, kAngleTol);
}

TEST(GridDivergenceOfLines, DirectionsEitherSideOfNorthAreMeasuredAcrossNorth) {
    const geo_nee origin{0.0, 0.0, 0.0};
    const geo_nee towards_350{100.0 * std::cos(radians(350.0)), 100.0 * std::sin(radians(350.0)),
                              0.0};
    const geo_nee towards_10{7.0 * std::cos(radians(10.0)), 7.0 * std::sin(radians(10.0)), 0.0};
    EXPECT_NEAR(geo_grid_divergence(origin, towards_350, origin, towards_10), radians(20.0),
                kAngleTol);
}

TEST(GridDivergenceOfLines, ReversedLineIsPiApart) {
    const geo_nee p{10.0, 10.0, 0.0};
    const geo_nee q{13.0, 14.0, 0.0};
    EXPECT_NEAR(geo_grid_divergence(p, q, q, p), kPi, kAngleTol);
    EXPECT_NEAR(geo_grid_divergence(p, q, p, q), 0.0, kAngleTol);
}

TEST(GridDivergenceOfLines, NullCoordinatesAreUsedAsNumbers) {
    // The four-point form tests only the bearings for null; a marker in a coordinate is just a
    // number next to zero, so a line from the origin to (null, 10) still runs due east.
    const geo_nee origin{0.0, 0.0, 0.0};
    const geo_nee east_with_null_north{GEO_NULL, 10.0, GEO_NULL};
    const geo_nee north{10.0, 0.0, 0.0};
    const double divergence = geo_grid_divergence(origin, east_with_null_north, origin, north);
    EXPECT_FALSE(is_geo_null(divergence));
    EXPECT_NEAR(divergence, kHalfPi, kAngleTol);
}

// ---- geo_bisected_bearing -------------------------------------------------------------------

TEST(BisectedBearing, BearingsEitherSideOfNorthBisectToNorth) {
    const double forward = geo_bisected_bearing(radians(350.0), radians(10.0));
    const double backward = geo_bisected_bearing(radians(10.0), radians(350.0));
    EXPECT_LT(angular_gap(forward, 0.0), kAngleTol);
    EXPECT_LT(angular_gap(backward, 0.0), kAngleTol);
    for (const double result : {forward, backward}) {
        EXPECT_GE(result, 0.0);
        EXPECT_LT(result, kTwoPi);
    }
}

TEST(BisectedBearing, QuarterTurnApartGivesTheMiddleInEitherOrder) {
    EXPECT_NEAR(geo_bisected_bearing(radians(90.0), radians(180.0)), radians(135.0), kAngleTol);
    EXPECT_NEAR(geo_bisected_bearing(radians(180.0), radians(90.0)), radians(135.0), kAngleTol);
}

TEST(BisectedBearing, WideAngleIsSplitTheShortWayRound) {
    // 10 and 200 degrees are 170 degrees apart going anticlockwise through north; the middle of
    // that angle is 285 degrees, not 105.
    EXPECT_NEAR(geo_bisected_bearing(radians(10.0), radians(200.0)), radians(285.0), kAngleTol);
    EXPECT_NEAR(geo_bisected_bearing(radians(200.0), radians(10.0)), radians(285.0), kAngleTol);
}

TEST(BisectedBearing, OppositeBearingsAreBisectedClockwiseFromTheFirst) {
    // Exactly half a turn apart is not "more than half a turn": the bisector is a quarter turn
    // clockwise from the first bearing.
    EXPECT_NEAR(geo_bisected_bearing(0.0, kPi), kHalfPi, kAngleTol);
    EXPECT_NEAR(geo_bisected_bearing(kPi, 0.0), 3.0 * kHalfPi, kAngleTol);
}

TEST(BisectedBearing, EqualBearingsGiveThatBearing) {
    EXPECT_NEAR(geo_bisected_bearing(2.5, 2.5), 2.5, kAngleTol);
}

TEST(BisectedBearing, InputsOutsideOneTurnGiveANormalisedResult) {
    // 90 degrees plus two turns and -240 degrees: 90 and 120 degrees, bisected at 105.
    const double result = geo_bisected_bearing(radians(90.0) + 2.0 * kTwoPi, radians(-240.0));
    EXPECT_NEAR(result, radians(105.0), kAngleTol);
    const double wrapped = geo_bisected_bearing(radians(-20.0), radians(380.0));
    EXPECT_GE(wrapped, 0.0);
    EXPECT_LT(wrapped, kTwoPi);
    EXPECT_LT(angular_gap(wrapped, 0.0), kAngleTol);
}

// ---- geo_normalise_obs ----------------------------------------------------------------------

TEST(NormaliseObservation, FaceTwoIsTurnedToFaceOne) {
    geo_hvd obs{radians(10.0), radians(300.0), 123.456};
    geo_normalise_obs(obs);
    EXPECT_NEAR(obs.hz, radians(190.0), kAngleTol);
    EXPECT_NEAR(obs.vz, radians(60.0), kAngleTol);
    EXPECT_EQ(obs.dist, 123.456);
}

TEST(NormaliseObservation, FaceTwoHorizontalAngleWrapsPastNorth) {
    geo_hvd obs{radians(270.0), radians(260.0), 50.0};
    geo_normalise_obs(obs);
    EXPECT_NEAR(obs.hz, radians(90.0), kAngleTol);
    EXPECT_NEAR(obs.vz, radians(100.0), kAngleTol);
}

TEST(NormaliseObservation, FaceOneIsLeftAlone) {
    geo_hvd obs{radians(10.0), radians(80.0), 10.0};
    const geo_hvd before = obs;
    geo_normalise_obs(obs);
    EXPECT_EQ(obs.hz, before.hz);
    EXPECT_EQ(obs.vz, before.vz);
    EXPECT_EQ(obs.dist, before.dist);
}

TEST(NormaliseObservation, ZenithOfExactlyPiIsLeftAlone) {
    geo_hvd obs{1.0, kPi, 10.0};
    geo_normalise_obs(obs);
    EXPECT_EQ(obs.hz, 1.0);
    EXPECT_EQ(obs.vz, kPi);
    EXPECT_EQ(obs.dist, 10.0);
}

TEST(NormaliseObservation, ZenithJustAbovePiIsTurned) {
    const double just_above_pi = std::nextafter(kPi, 4.0);
    geo_hvd obs{1.0, just_above_pi, 10.0};
    geo_normalise_obs(obs);
    EXPECT_LT(obs.vz, kPi);
    EXPECT_NEAR(obs.vz, kPi, kAngleTol);
    EXPECT_NEAR(obs.hz, 1.0 + kPi, kAngleTol);
}

TEST(NormaliseObservation, NullZenithLeavesObservationAlone) {
    geo_hvd obs{1.0, GEO_NULL, 10.0};
    geo_normalise_obs(obs);
    EXPECT_EQ(obs.hz, 1.0);
    EXPECT_TRUE(is_geo_null(obs.vz));
    EXPECT_EQ(obs.dist, 10.0);
}

TEST(NormaliseObservation, NullHorizontalAngleStaysNullWhileZenithIsTurned) {
    geo_hvd obs{GEO_NULL, radians(300.0), 10.0};
    geo_normalise_obs(obs);
    EXPECT_TRUE(is_geo_null(obs.hz));
    EXPECT_NEAR(obs.vz, radians(60.0), kAngleTol);
}

TEST(NormaliseObservation, ReturnsTheSameRecord) {
    geo_hvd obs{radians(10.0), radians(300.0), 1.0};
    EXPECT_EQ(&geo_normalise_obs(obs), &obs);
    geo_hvd face_one{radians(10.0), radians(30.0), 1.0};
    EXPECT_EQ(&geo_normalise_obs(face_one), &face_one);
}

// ---- _degtorad ------------------------------------------------------------------------------

TEST(DegreesToRadians, ConvertsCommonAngles) {
    EXPECT_EQ(_degtorad(0.0), 0.0);
    EXPECT_EQ(_degtorad(1.0), 0.017453292519943295);
    EXPECT_NEAR(_degtorad(180.0), kPi, 1e-15);
    EXPECT_NEAR(_degtorad(-90.0), -kHalfPi, 1e-15);
    EXPECT_NEAR(_degtorad(360.0), kTwoPi, 1e-15);
    EXPECT_NEAR(_degtorad(45.5), 0.7941248096574199, 1e-15);
}

// ---- _radtodms ------------------------------------------------------------------------------

struct Dms {
    int degrees = -999;
    int minutes = -999;
    double seconds = -999.0;
};

Dms to_dms(double angle) {
    Dms dms;
    _radtodms(angle, &dms.degrees, &dms.minutes, &dms.seconds);
    return dms;
}

TEST(RadiansToDms, TenAndAHalfDegreesIsTenDegreesThirtyMinutes) {
    // Without the rounding guard 10.5 degrees would come back as 10 29' 59.99999...".
    const Dms dms = to_dms(radians(10.5));
    EXPECT_EQ(dms.degrees, 10);
    EXPECT_EQ(dms.minutes, 30);
    EXPECT_NEAR(dms.seconds, 0.0, kSecondsTol);
}

TEST(RadiansToDms, ConvertsAGeneralAngle) {
    // 123 45' 6.789" = 123.75188583333... degrees.
    const Dms dms = to_dms(radians(123.0 + 45.0 / 60.0 + 6.789 / 3600.0));
    EXPECT_EQ(dms.degrees, 123);
    EXPECT_EQ(dms.minutes, 45);
    EXPECT_NEAR(dms.seconds, 6.789, kSecondsTol);
}

TEST(RadiansToDms, WholeDegreeHasNoMinutes) {
    const Dms dms = to_dms(radians(1.0));
    EXPECT_EQ(dms.degrees, 1);
    EXPECT_EQ(dms.minutes, 0);
    EXPECT_NEAR(dms.seconds, 0.0, kSecondsTol);
}

TEST(RadiansToDms, ZeroIsAllZero) {
    const Dms dms = to_dms(0.0);
    EXPECT_EQ(dms.degrees, 0);
    EXPECT_EQ(dms.minutes, 0);
    EXPECT_NEAR(dms.seconds, 0.0, kSecondsTol);
}

TEST(RadiansToDms, NegativeAngleCarriesItsSignOnTheDegrees) {
    const Dms dms = to_dms(radians(-10.5));
    EXPECT_EQ(dms.degrees, -10);
    EXPECT_EQ(dms.minutes, 30);
    EXPECT_NEAR(dms.seconds, 0.0, kSecondsTol);
}

TEST(RadiansToDms, NegativeHalfDegreeLosesItsSign) {
    // The sign travels on the degrees alone, and there are none: 0 30' 0" with no sign anywhere.
    const Dms dms = to_dms(radians(-0.5));
    EXPECT_EQ(dms.degrees, 0);
    EXPECT_EQ(dms.minutes, 30);
    EXPECT_NEAR(dms.seconds, 0.0, kSecondsTol);
}

TEST(RadiansToDms, AMillionthOfASecondShortRoundsUpToTheMinute) {
    // 10 29' 59.999999" (0.18325957145455646 rad) lies within the half hundred-thousandth of a
    // second guard of 10 30', so it comes back as 10 30' and seconds of -0.000001.
    const Dms dms = to_dms(0.18325957145455646);
    EXPECT_EQ(dms.degrees, 10);
    EXPECT_EQ(dms.minutes, 30);
    EXPECT_NEAR(dms.seconds, -1e-6, kSecondsTol);
}

TEST(RadiansToDms, AHundredThousandthOfASecondShortStaysInThePreviousMinute) {
    // 10 29' 59.99999" (0.18325957141092322 rad) is outside the guard.
    const Dms dms = to_dms(0.18325957141092322);
    EXPECT_EQ(dms.degrees, 10);
    EXPECT_EQ(dms.minutes, 29);
    EXPECT_NEAR(dms.seconds, 59.99999, kSecondsTol);
}

TEST(RadiansToDms, MoreThanAWholeTurnIsNotReduced) {
    const Dms dms = to_dms(radians(370.0));
    EXPECT_EQ(dms.degrees, 370);
    EXPECT_EQ(dms.minutes, 0);
    EXPECT_NEAR(dms.seconds, 0.0, kSecondsTol);
}

TEST(RadiansToDms, NullDegreesPointerIsSkipped) {
    int minutes = -1;
    double seconds = -1.0;
    _radtodms(radians(10.5), nullptr, &minutes, &seconds);
    EXPECT_EQ(minutes, 30);
    EXPECT_NEAR(seconds, 0.0, kSecondsTol);
}

TEST(RadiansToDms, NullMinutesPointerIsSkipped) {
    int degrees = -1;
    double seconds = -1.0;
    _radtodms(radians(12.0 + 34.0 / 60.0 + 56.0 / 3600.0), &degrees, nullptr, &seconds);
    EXPECT_EQ(degrees, 12);
    EXPECT_NEAR(seconds, 56.0, kSecondsTol);
}

TEST(RadiansToDms, NullSecondsPointerIsSkipped) {
    int degrees = -1;
    int minutes = -1;
    _radtodms(radians(12.0 + 34.0 / 60.0 + 56.0 / 3600.0), &degrees, &minutes, nullptr);
    EXPECT_EQ(degrees, 12);
    EXPECT_EQ(minutes, 34);
}

TEST(RadiansToDms, AllPointersNullIsHarmless) {
    _radtodms(radians(12.5), nullptr, nullptr, nullptr);
    SUCCEED();
}

TEST(RadiansToDms, NotANumberReturnsWithNotANumberSeconds) {
    const Dms dms = to_dms(std::numeric_limits<double>::quiet_NaN());
    EXPECT_TRUE(std::isnan(dms.seconds));
}

TEST(RadiansToDms, PositiveInfinitySaturatesTheDegrees) {
    const Dms dms = to_dms(std::numeric_limits<double>::infinity());
    EXPECT_EQ(dms.degrees, INT_MAX);
}

TEST(RadiansToDms, NegativeInfinitySaturatesTheDegreesNegatively) {
    const Dms dms = to_dms(-std::numeric_limits<double>::infinity());
    EXPECT_LE(dms.degrees, -INT_MAX);
}

TEST(RadiansToDms, HugeAngleSaturatesTheDegrees) {
    EXPECT_EQ(to_dms(1e300).degrees, INT_MAX);
    EXPECT_LE(to_dms(-1e300).degrees, -INT_MAX);
}

// ---- _dmstorad ------------------------------------------------------------------------------

double from_dms(int degrees, int minutes, double seconds) {
    double angle = -999.0;
    _dmstorad(degrees, minutes, seconds, &angle);
    return angle;
}

TEST(DmsToRadians, ConvertsAGeneralAngle) {
    EXPECT_NEAR(from_dms(123, 45, 6.789), radians(123.0 + 45.0 / 60.0 + 6.789 / 3600.0), kAngleTol);
}

TEST(DmsToRadians, NegativeDegreesMakeTheWholeAngleNegative) {
    EXPECT_NEAR(from_dms(-10, 30, 0.0), radians(-10.5), kAngleTol);
    EXPECT_NEAR(from_dms(-10, 30, 36.0), radians(-10.51), kAngleTol);
}

TEST(DmsToRadians, NegativeMinutesKeepTheirOwnSign) {
    // -10 -30' is -(10 - 0.5) degrees; 10 -30' is 9.5 degrees.
    EXPECT_NEAR(from_dms(-10, -30, 0.0), radians(-9.5), kAngleTol);
    EXPECT_NEAR(from_dms(10, -30, 0.0), radians(9.5), kAngleTol);
}

TEST(DmsToRadians, NegativeMinutesWithZeroDegreesGiveANegativeAngle) {
    EXPECT_NEAR(from_dms(0, -30, 0.0), radians(-0.5), kAngleTol);
}

TEST(DmsToRadians, NegativeSecondsKeepTheirOwnSign) {
    EXPECT_NEAR(from_dms(0, 0, -36.0), radians(-0.01), kAngleTol);
    EXPECT_NEAR(from_dms(1, 0, -36.0), radians(0.99), kAngleTol);
    EXPECT_NEAR(from_dms(-1, 0, -36.0), radians(-0.99), kAngleTol);
}

TEST(DmsToRadians, PositiveMinutesWithZeroDegreesArePositive) {
    // So -0.5 degrees, which becomes 0 30' 0", comes back as +0.5 degrees.
    EXPECT_NEAR(from_dms(0, 30, 0.0), radians(0.5), kAngleTol);
    const Dms dms = to_dms(radians(-0.5));
    EXPECT_NEAR(from_dms(dms.degrees, dms.minutes, dms.seconds), radians(0.5), kAngleTol);
}

TEST(DmsToRadians, NullOutputPointerIsIgnored) {
    _dmstorad(10, 30, 0.0, nullptr);
    SUCCEED();
}

TEST(DmsToRadians, MostNegativeDegreesDoNotOverflow) {
    // |INT_MIN| = 2147483648 degrees, taken in floating point: -2147483648 * 0.017453292519943295.
    EXPECT_DOUBLE_EQ(from_dms(INT_MIN, 0, 0.0), -37480660.29033894);
    // 2147483648 degrees less 2147483648 minutes, negated: -36855982.61883329 rad.
    EXPECT_DOUBLE_EQ(from_dms(INT_MIN, INT_MIN, 0.0), -36855982.61883329);
    EXPECT_TRUE(std::isfinite(from_dms(INT_MIN, INT_MIN, -1e300)));
    EXPECT_TRUE(std::isfinite(from_dms(INT_MAX, INT_MAX, 1e300)));
}

} // namespace
