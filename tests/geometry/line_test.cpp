// CGeoLine: construction, the two Set forms, the lazily derived lengths, azimuth and grade, and
// the caching rules behind them.
//
// The reference line runs from (100, 200, 50) to (130, 240, 52.5): 30 m north and 40 m east,
// so 50 m long on azimuth atan2(40, 30), rising 2.5 m (grade atan(0.05)).
#include "qv5/geoline.h"

#include <gtest/gtest.h>

#include <cmath>

namespace {

/// Closed-form coordinates and lengths: metres.
constexpr double kTol = 1e-9;
/// Angles: radians (a few ulps of 2 pi).
constexpr double kAngleTol = 1e-12;

constexpr double kPi = 3.141592653589793;

constexpr double kRefAzimuth = 0.9272952180016122; // atan2(40, 30)
constexpr double kRefGrade = 0.049958395721942765; // atan(0.05)

CGeoLine reference_line() {
    geo_nee start{100.0, 200.0, 50.0};
    geo_nee end{130.0, 240.0, 52.5};
    return CGeoLine(start, end);
}

CGeoLine line_between(const geo_nee& a, const geo_nee& b) {
    CGeoPoint start(a);
    CGeoPoint end(b);
    return CGeoLine(start, end);
}

/// A line whose end point knows nothing, so that everything that needs the end fails.
CGeoLine line_without_end() {
    CGeoPoint start(geo_nee{100.0, 200.0, 50.0});
    CGeoPoint end;
    return CGeoLine(start, end);
}

// ---------------------------------------------------------------------------------------------
// Construction

TEST(LineConstruction, DefaultLineHasNoGeometry) {
    CGeoLine line;
    EXPECT_EQ(line.StartPt().Flags(), 0u);
    EXPECT_EQ(line.EndPt().Flags(), 0u);
    EXPECT_EQ(line.GridAzimuth(), GEO_NULL);
}

TEST(LineConstruction, FromRecordsMakesGridPoints) {
    CGeoLine line = reference_line();
    EXPECT_EQ(line.StartPt().Flags(), CGeoPoint::PT_GRID);
    EXPECT_EQ(line.StartPt().Northing(), 100.0);
    EXPECT_EQ(line.EndPt().Easting(), 240.0);
    EXPECT_EQ(line.EndPt().Elevation(), 52.5);
}

TEST(LineConstruction, FromPointsCopiesThem) {
    CGeoPoint start;
    start.SetStation(CGeoPoint(geo_nee{1.0, 2.0, 3.0}), 1.5);
    CGeoPoint end(geo_nee{4.0, 6.0, 3.0});
    CGeoLine line(start, end);
    start.SetGrid(9.0, 9.0, 9.0);
    end.SetGrid(9.0, 9.0, 9.0);
    EXPECT_EQ(line.StartPt().Northing(), 1.0);
    EXPECT_EQ(line.StartPt().HI(), 1.5);
    EXPECT_EQ(line.StartPt().Flags(), CGeoPoint::PT_GRID | CGeoPoint::PT_STATION);
    EXPECT_EQ(line.EndPt().Northing(), 4.0);
    EXPECT_NEAR(line.GridHDistance(), 5.0, kTol);
}

TEST(LineConstruction, SetWithPointsForgetsEveryCache) {
    CGeoLine line = reference_line();
    ASSERT_NEAR(line.GridAzimuth(), kRefAzimuth, kAngleTol);
    ASSERT_NEAR(line.GridHDistance(), 50.0, kTol);
    ASSERT_NEAR(line.GeoidVDistance(), 2.5, kTol);
    CGeoPoint start(geo_nee{0.0, 0.0, 0.0});
    CGeoPoint end(geo_nee{0.0, -10.0, -3.0}); // due west, 10 m, falling 3 m
    line.Set(start, end);
    EXPECT_NEAR(line.GridAzimuth(), 1.5 * kPi, kAngleTol);
    EXPECT_NEAR(line.GridHDistance(), 10.0, kTol);
    EXPECT_NEAR(line.GeoidVDistance(), -3.0, kTol);
    EXPECT_NEAR(line.GridDeltaNorth(), 0.0, kTol);
    EXPECT_NEAR(line.GridDeltaEast(), -10.0, kTol);
    EXPECT_NEAR(line.GeoidGrade(), std::atan(-0.3), kAngleTol);
}

// ---------------------------------------------------------------------------------------------
// Copies

TEST(LineCopy, CopyTakesTheCachesAsTheyAre) {
    CGeoLine line = reference_line();
    ASSERT_NEAR(line.GridAzimuth(), kRefAzimuth, kAngleTol);
    ASSERT_NEAR(line.GridHDistance(), 50.0, kTol);
    // Move the end behind the line's back: the filled caches keep the old geometry, the empty
    // ones will see the new end.
    line.EndPt().SetGrid(100.0, 200.0, 0.0);

    CGeoLine copy(line);
    EXPECT_NEAR(copy.GridAzimuth(), kRefAzimuth, kAngleTol);
    EXPECT_NEAR(copy.GridHDistance(), 50.0, kTol);
    EXPECT_NEAR(copy.GeoidVDistance(), -50.0, kTol); // not known before the copy
    EXPECT_EQ(copy.EndPt().Elevation(), 0.0);

    CGeoLine assigned;
    assigned = line;
    EXPECT_NEAR(assigned.GridAzimuth(), kRefAzimuth, kAngleTol);
    EXPECT_NEAR(assigned.GridDeltaNorth(), 30.0, kTol);
    EXPECT_NEAR(assigned.GeoidVDistance(), -50.0, kTol);
}

TEST(LineCopy, CopyIsIndependentOfTheOriginal) {
    CGeoLine line = reference_line();
    CGeoLine copy(line);
    line.StartPt().SetGrid(0.0, 0.0, 0.0);
    EXPECT_EQ(copy.StartPt().Northing(), 100.0);
    EXPECT_NEAR(copy.GridHDistance(), 50.0, kTol);
}

// ---------------------------------------------------------------------------------------------
// Derived quantities

TEST(LineDerived, DeltasAzimuthAndLengths) {
    CGeoLine line = reference_line();
    EXPECT_NEAR(line.GridDeltaNorth(), 30.0, kTol);
    EXPECT_NEAR(line.GridDeltaEast(), 40.0, kTol);
    EXPECT_NEAR(line.GridAzimuth(), kRefAzimuth, kAngleTol);
    EXPECT_NEAR(line.GridHDistance(), 50.0, kTol);
    EXPECT_NEAR(line.GeoidVDistance(), 2.5, kTol);
    EXPECT_NEAR(line.GeoidGrade(), kRefGrade, kAngleTol);
    EXPECT_NEAR(line.GridSlopeDistance(), 50.06246098625196, kTol);
}

TEST(LineDerived, AzimuthIsNormalisedIntoOneTurn) {
    // South-west: atan2 gives a negative angle, which comes back as 225 degrees.
    CGeoLine line = line_between({0.0, 0.0, 0.0}, {-10.0, -10.0, 0.0});
    EXPECT_NEAR(line.GridAzimuth(), 1.25 * kPi, kAngleTol);
    CGeoLine north = line_between({0.0, 0.0, 0.0}, {10.0, 0.0, 0.0});
    EXPECT_EQ(north.GridAzimuth(), 0.0);
    CGeoLine south = line_between({0.0, 0.0, 0.0}, {-10.0, 0.0, 0.0});
    EXPECT_NEAR(south.GridAzimuth(), kPi, kAngleTol);
}

TEST(LineDerived, PlanValuesNeedPlanCoordinatesAtBothEnds) {
    CGeoLine no_start_north = line_between({GEO_NULL, 0.0, 0.0}, {10.0, 10.0, 0.0});
    EXPECT_EQ(no_start_north.GridDeltaNorth(), GEO_NULL);
    CGeoLine no_end_east = line_between({0.0, 0.0, 0.0}, {10.0, GEO_NULL, 0.0});
    EXPECT_EQ(no_end_east.GridDeltaNorth(), GEO_NULL); // both deltas need both plan positions
    CGeoLine a = line_between({0.0, 0.0, 0.0}, {10.0, GEO_NULL, 0.0});
    EXPECT_EQ(a.GridAzimuth(), GEO_NULL);
    CGeoLine b = line_between({0.0, 0.0, 0.0}, {10.0, GEO_NULL, 0.0});
    EXPECT_EQ(b.GridHDistance(), GEO_NULL);
    CGeoLine c = line_between({0.0, 0.0, 0.0}, {10.0, GEO_NULL, 0.0});
    EXPECT_EQ(c.GridSlopeDistance(), GEO_NULL);
}

TEST(LineDerived, HeightDifferenceNeedsBothElevationsOnly) {
    CGeoLine no_plan = line_between({GEO_NULL, GEO_NULL, 4.0}, {GEO_NULL, GEO_NULL, 1.5});
    EXPECT_NEAR(no_plan.GeoidVDistance(), -2.5, kTol);
    CGeoLine no_end_elevation = line_between({0.0, 0.0, 4.0}, {1.0, 1.0, GEO_NULL});
    EXPECT_EQ(no_end_elevation.GeoidVDistance(), GEO_NULL);
}

TEST(LineDerived, DerivesObservedEndPoints) {
    // Station (0, 0, 0) hi 1.5, end point shot due north, level, 25 m: (25, 0, 1.5).
    CGeoPoint station;
    station.SetStation(CGeoPoint(geo_nee{0.0, 0.0, 0.0}), 1.5);
    CGeoPoint shot;
    shot.SetHVD(0.0, 0.5 * kPi, 25.0, station);
    CGeoPoint start(geo_nee{0.0, 0.0, 1.5});
    CGeoLine line(start, shot);
    EXPECT_NEAR(line.GridHDistance(), 25.0, kTol);
    EXPECT_NEAR(line.GridAzimuth(), 0.0, kAngleTol);
    EXPECT_NEAR(line.GeoidVDistance(), 0.0, kTol);
    EXPECT_NEAR(line.GeoidGrade(), 0.0, kAngleTol);
}

// ---------------------------------------------------------------------------------------------
// Stale caches: a cache counts as filled as soon as it is tried

TEST(LineStaleCache, FailedAzimuthIsNullOnceThenTheOldField) {
    CGeoLine line = line_without_end();
    EXPECT_EQ(line.GridAzimuth(), GEO_NULL);
    EXPECT_EQ(line.GridAzimuth(), 0.0); // a fresh line's field
}

TEST(LineStaleCache, FailedLengthIsNullOnceThenTheOldField) {
    CGeoLine line = line_without_end();
    EXPECT_EQ(line.GridHDistance(), GEO_NULL);
    EXPECT_EQ(line.GridHDistance(), 0.0);
}

TEST(LineStaleCache, FailedDeltasAreNullOnceThenTheOldField) {
    CGeoLine line = line_without_end();
    EXPECT_EQ(line.GridDeltaNorth(), GEO_NULL);
    EXPECT_EQ(line.GridDeltaNorth(), 0.0);
    EXPECT_EQ(line.GridDeltaEast(), GEO_NULL);
    EXPECT_EQ(line.GridDeltaEast(), 0.0);
}

TEST(LineStaleCache, FailedHeightDifferenceAndGradeAreNullOnceThenTheOldField) {
    CGeoLine line = line_between({0.0, 0.0, 5.0}, {10.0, 0.0, GEO_NULL});
    EXPECT_EQ(line.GeoidVDistance(), GEO_NULL);
    EXPECT_EQ(line.GeoidVDistance(), 0.0);
    CGeoLine other = line_between({0.0, 0.0, 5.0}, {10.0, 0.0, GEO_NULL});
    EXPECT_EQ(other.GeoidGrade(), GEO_NULL);
    EXPECT_EQ(other.GeoidGrade(), 0.0);
}

TEST(LineStaleCache, FailureAfterSetFallsBackToThePreviousLinesValue) {
    CGeoLine line = reference_line();
    ASSERT_NEAR(line.GridAzimuth(), kRefAzimuth, kAngleTol);
    CGeoPoint start(geo_nee{0.0, 0.0, 0.0});
    CGeoPoint end;
    line.Set(start, end);
    EXPECT_EQ(line.GridAzimuth(), GEO_NULL);
    EXPECT_NEAR(line.GridAzimuth(), kRefAzimuth, kAngleTol);
}

TEST(LineStaleCache, FailureAfterSetFallsBackToTheGivenDirectionLengthAndGrade) {
    // A line built from a direction holds its azimuth, length and grade in the caches without
    // ever having derived the coordinate differences; a failed derivation after the next Set
    // comes back to those fields, not to anything computed from differences.
    CGeoPoint start(geo_nee{0.0, 0.0, 0.0});
    CGeoPoint end;
    CGeoLine for_azimuth;
    for_azimuth.Set(start, 1.0, 12.5, 0.2);
    for_azimuth.Set(start, end);
    EXPECT_EQ(for_azimuth.GridAzimuth(), GEO_NULL);
    EXPECT_EQ(for_azimuth.GridAzimuth(), 1.0);

    CGeoLine for_length;
    for_length.Set(start, 1.0, 12.5, 0.2);
    for_length.Set(start, end);
    EXPECT_EQ(for_length.GridHDistance(), GEO_NULL);
    EXPECT_EQ(for_length.GridHDistance(), 12.5);

    CGeoLine for_grade;
    for_grade.Set(start, 1.0, 12.5, 0.2);
    for_grade.Set(start, end);
    EXPECT_EQ(for_grade.GeoidGrade(), GEO_NULL);
    EXPECT_EQ(for_grade.GeoidGrade(), 0.2);
}

TEST(LineCache, FilledCachesIgnoreLaterChangesToThePoints) {
    CGeoLine line = reference_line();
    ASSERT_NEAR(line.GridDeltaNorth(), 30.0, kTol);
    ASSERT_NEAR(line.GridDeltaEast(), 40.0, kTol);
    ASSERT_NEAR(line.GridAzimuth(), kRefAzimuth, kAngleTol);
    ASSERT_NEAR(line.GridHDistance(), 50.0, kTol);
    ASSERT_NEAR(line.GeoidVDistance(), 2.5, kTol);
    ASSERT_NEAR(line.GeoidGrade(), kRefGrade, kAngleTol);
    // The points are reachable by reference; changing them does not clear the caches.
    line.EndPt().SetGrid(100.0, 100.0, 0.0);
    line.StartPt().SetGrid(0.0, 0.0, 0.0);
    EXPECT_NEAR(line.GridDeltaNorth(), 30.0, kTol);
    EXPECT_NEAR(line.GridDeltaEast(), 40.0, kTol);
    EXPECT_NEAR(line.GridAzimuth(), kRefAzimuth, kAngleTol);
    EXPECT_NEAR(line.GridHDistance(), 50.0, kTol);
    EXPECT_NEAR(line.GeoidVDistance(), 2.5, kTol);
    EXPECT_NEAR(line.GeoidGrade(), kRefGrade, kAngleTol);
    EXPECT_NEAR(line.GridSlopeDistance(), 50.06246098625196, kTol); // from the cached parts
}

TEST(LineStaleCache, SlopeDistanceIsRecomputedOnEveryCall) {
    // The slope distance has no cache of its own: once the failed height difference has fallen
    // back to its field (0 on a fresh line), the slope distance is the plan length.
    CGeoLine line = line_between({0.0, 0.0, 0.0}, {3.0, 4.0, GEO_NULL});
    EXPECT_EQ(line.GridSlopeDistance(), GEO_NULL);
    EXPECT_NEAR(line.GridSlopeDistance(), 5.0, kTol);
}

// ---------------------------------------------------------------------------------------------
// Set from a start, an azimuth, a length and a grade

TEST(LineSetFromDirection, EndPointFollowsAzimuthLengthAndGrade) {
    CGeoPoint start(geo_nee{100.0, 200.0, 50.0});
    CGeoLine line;
    line.Set(start, 1.0, 20.0, 0.1);
    // 100 + 20 cos 1, 200 + 20 sin 1, 50 + 20 tan 0.1
    EXPECT_NEAR(line.EndPt().Northing(), 110.8060461173628, kTol);
    EXPECT_NEAR(line.EndPt().Easting(), 216.82941969615794, kTol);
    EXPECT_NEAR(line.EndPt().Elevation(), 52.00669344170901, kTol);
    EXPECT_EQ(line.StartPt().Northing(), 100.0);
    EXPECT_EQ(line.StartPt().Elevation(), 50.0);
}

TEST(LineSetFromDirection, CachesAzimuthLengthAndGradeAsGiven) {
    CGeoPoint start(geo_nee{100.0, 200.0, 50.0});
    CGeoLine line;
    line.Set(start, 1.0, 20.0, 0.1);
    // Exactly as given, not recomputed from the end point.
    EXPECT_EQ(line.GridAzimuth(), 1.0);
    EXPECT_EQ(line.GridHDistance(), 20.0);
    EXPECT_EQ(line.GeoidGrade(), 0.1);
    // The others are derived from the points.
    EXPECT_NEAR(line.GeoidVDistance(), 2.006693441709011, kTol);
    EXPECT_NEAR(line.GridDeltaNorth(), 10.806046117362796, kTol);
}

TEST(LineSetFromDirection, AzimuthIsNotNormalisedForAPositiveLength) {
    CGeoPoint start(geo_nee{0.0, 0.0, 0.0});
    CGeoLine line;
    line.Set(start, 7.0, 10.0, 0.0);
    EXPECT_EQ(line.GridAzimuth(), 7.0);
    EXPECT_NEAR(line.EndPt().Northing(), 7.539022543433046, kTol); // 10 cos 7
    EXPECT_NEAR(line.EndPt().Easting(), 6.569865987187891, kTol);  // 10 sin 7
    CGeoLine negative;
    negative.Set(start, -0.5, 10.0, 0.0);
    EXPECT_EQ(negative.GridAzimuth(), -0.5);
}

TEST(LineSetFromDirection, NegativeLengthRunsBackwards) {
    CGeoPoint start(geo_nee{100.0, 200.0, 50.0});
    CGeoLine line;
    line.Set(start, 1.0, -20.0, 0.1);
    // The same end as the positive length on the reversed azimuth with the negated grade.
    EXPECT_NEAR(line.EndPt().Northing(), 100.0 - 10.806046117362796, kTol);
    EXPECT_NEAR(line.EndPt().Easting(), 200.0 - 16.82941969615794, kTol);
    EXPECT_NEAR(line.EndPt().Elevation(), 50.0 - 2.006693441709011, kTol);
    EXPECT_NEAR(line.GridAzimuth(), 1.0 + kPi, kAngleTol);
    EXPECT_EQ(line.GridHDistance(), 20.0);
    EXPECT_EQ(line.GeoidGrade(), -0.1);

    CGeoLine reversed;
    reversed.Set(start, 1.0 + kPi, 20.0, -0.1);
    EXPECT_NEAR(line.EndPt().Northing(), reversed.EndPt().Northing(), kTol);
    EXPECT_NEAR(line.EndPt().Easting(), reversed.EndPt().Easting(), kTol);
    EXPECT_NEAR(line.EndPt().Elevation(), reversed.EndPt().Elevation(), kTol);
}

TEST(LineSetFromDirection, NegativeLengthNormalisesTheReversedAzimuth) {
    CGeoPoint start(geo_nee{0.0, 0.0, 0.0});
    CGeoLine line;
    line.Set(start, 4.0, -10.0, 0.0);
    EXPECT_NEAR(line.GridAzimuth(), 4.0 + kPi - 2.0 * kPi, kAngleTol); // 0.8584073464102069
    EXPECT_NEAR(line.EndPt().Northing(), -10.0 * std::cos(4.0), kTol);
    EXPECT_NEAR(line.EndPt().Easting(), -10.0 * std::sin(4.0), kTol);
}

TEST(LineSetFromDirection, NullStartElevationGivesNullEndElevation) {
    CGeoPoint start(geo_nee{100.0, 200.0, GEO_NULL});
    CGeoLine line;
    line.Set(start, 0.0, 20.0, 0.3);
    EXPECT_EQ(line.EndPt().Elevation(), GEO_NULL);
    EXPECT_NEAR(line.EndPt().Northing(), 120.0, kTol);
    EXPECT_NEAR(line.EndPt().Easting(), 200.0, kTol);
    // The grade is cached as given, even though neither end has an elevation.
    EXPECT_EQ(line.GeoidGrade(), 0.3);
    EXPECT_EQ(line.GeoidVDistance(), GEO_NULL);
}

TEST(LineSetFromDirection, EndPointIsTheStartPointMoved) {
    // The end is a copy of the start given new grid coordinates: it carries what the start
    // carries (its instrument height here) but is no longer a station.
    CGeoPoint start;
    start.SetStation(CGeoPoint(geo_nee{10.0, 20.0, 30.0}), 1.5);
    CGeoLine line;
    line.Set(start, 0.5 * kPi, 5.0, 0.0);
    EXPECT_EQ(line.EndPt().Flags(), CGeoPoint::PT_GRID);
    EXPECT_EQ(line.EndPt().HI(), 1.5);
    EXPECT_NEAR(line.EndPt().Easting(), 25.0, kTol);
    EXPECT_EQ(line.EndPt().Elevation(), 30.0);
    EXPECT_EQ(line.StartPt().Flags(), CGeoPoint::PT_GRID | CGeoPoint::PT_STATION);
    EXPECT_EQ(line.StartPt().HI(), 1.5);
}

TEST(LineSetFromDirection, ZeroLengthPutsTheEndOnTheStart) {
    CGeoPoint start(geo_nee{10.0, 20.0, 30.0});
    CGeoLine line;
    line.Set(start, 2.0, 0.0, 0.4);
    EXPECT_EQ(line.EndPt().Northing(), 10.0);
    EXPECT_EQ(line.EndPt().Easting(), 20.0);
    EXPECT_EQ(line.EndPt().Elevation(), 30.0);
    EXPECT_EQ(line.GridAzimuth(), 2.0);
    EXPECT_EQ(line.GridHDistance(), 0.0);
}

TEST(LineSetFromDirection, ForgetsTheOtherCaches) {
    CGeoLine line = reference_line();
    ASSERT_NEAR(line.GeoidVDistance(), 2.5, kTol);
    ASSERT_NEAR(line.GridDeltaEast(), 40.0, kTol);
    CGeoPoint start(geo_nee{0.0, 0.0, 0.0});
    line.Set(start, 0.0, 10.0, std::atan(0.5)); // due north, rising 5 m
    EXPECT_NEAR(line.GeoidVDistance(), 5.0, kTol);
    EXPECT_NEAR(line.GridDeltaEast(), 0.0, kTol);
    EXPECT_NEAR(line.GridDeltaNorth(), 10.0, kTol);
    EXPECT_NEAR(line.GridSlopeDistance(), std::sqrt(125.0), kTol);
}

// ---------------------------------------------------------------------------------------------
// Grade

TEST(LineGrade, IsAnAngleOfElevation) {
    CGeoLine rising = reference_line();
    EXPECT_NEAR(rising.GeoidGrade(), kRefGrade, kAngleTol);
    CGeoLine falling = line_between({0.0, 0.0, 10.0}, {0.0, 40.0, -20.0});
    EXPECT_NEAR(falling.GeoidGrade(), -0.6435011087932844, kAngleTol); // atan(-0.75)
}

TEST(LineGrade, ShortLevelLineHasGradeZero) {
    CGeoLine line = line_between({0.0, 0.0, 10.0}, {0.00005, 0.0, 10.00005});
    EXPECT_EQ(line.GeoidGrade(), 0.0);
    CGeoLine point = line_between({5.0, 5.0, 5.0}, {5.0, 5.0, 5.0});
    EXPECT_EQ(point.GeoidGrade(), 0.0);
}

TEST(LineGrade, ShortRisingLineHasGradePlusPi) {
    CGeoLine line = line_between({0.0, 0.0, 10.0}, {0.0, 0.0, 12.0});
    EXPECT_EQ(line.GeoidGrade(), kPi);
    // 0.00009 m in plan is still vertical.
    CGeoLine nearly = line_between({0.0, 0.0, 10.0}, {0.00009, 0.0, 12.0});
    EXPECT_EQ(nearly.GeoidGrade(), kPi);
}

TEST(LineGrade, ShortFallingLineHasGradeMinusPi) {
    CGeoLine line = line_between({0.0, 0.0, 12.0}, {0.0, 0.0, 10.0});
    EXPECT_EQ(line.GeoidGrade(), -kPi);
}

TEST(LineGrade, LevelTestIsStrict) {
    // A height difference of exactly 0.0001 is not level.
    CGeoLine up = line_between({0.0, 0.0, 0.0}, {0.00005, 0.0, 0.0001});
    EXPECT_EQ(up.GeoidGrade(), kPi);
    CGeoLine down = line_between({0.0, 0.0, 0.0001}, {0.00005, 0.0, 0.0});
    EXPECT_EQ(down.GeoidGrade(), -kPi);
}

TEST(LineGrade, SteepButNotVerticalLineUsesTheArctangent) {
    CGeoLine line = line_between({0.0, 0.0, 0.0}, {0.0002, 0.0, 1.0});
    EXPECT_NEAR(line.GeoidGrade(), 1.5705963267975633, kAngleTol); // atan(1 / 0.0002)
}

TEST(LineGrade, NeedsAllSixCoordinates) {
    CGeoLine no_plan = line_between({GEO_NULL, 0.0, 0.0}, {10.0, 10.0, 5.0});
    EXPECT_EQ(no_plan.GeoidGrade(), GEO_NULL);
    CGeoLine no_elevation = line_between({0.0, 0.0, GEO_NULL}, {10.0, 10.0, 5.0});
    EXPECT_EQ(no_elevation.GeoidGrade(), GEO_NULL);
}

// ---------------------------------------------------------------------------------------------
// Divergence

CGeoLine line_on_azimuth(double azimuth) {
    CGeoPoint start(geo_nee{0.0, 0.0, 0.0});
    CGeoLine line;
    line.Set(start, azimuth, 10.0, 0.0);
    return line;
}

TEST(LineDivergence, TakesTheShortWayRound) {
    CGeoLine line = line_on_azimuth(0.1);
    EXPECT_NEAR(line.GridDivergence(6.2), 0.1831853071795857, kAngleTol);
    CGeoLine other = line_on_azimuth(6.2);
    EXPECT_NEAR(line.GridDivergence(other), 0.1831853071795857, kAngleTol);
    EXPECT_NEAR(other.GridDivergence(line), 0.1831853071795857, kAngleTol);
}

TEST(LineDivergence, IsNeverMoreThanAHalfTurn) {
    CGeoLine line = line_on_azimuth(0.0);
    EXPECT_NEAR(line.GridDivergence(3.5), 2.7831853071795862, kAngleTol);
    EXPECT_NEAR(line.GridDivergence(kPi), kPi, kAngleTol);
    EXPECT_EQ(line.GridDivergence(0.0), 0.0);
}

TEST(LineDivergence, NullWhenEitherAzimuthIsMissing) {
    CGeoLine line = line_on_azimuth(0.1);
    EXPECT_EQ(line.GridDivergence(GEO_NULL), GEO_NULL);
    CGeoLine without_end = line_without_end();
    EXPECT_EQ(line.GridDivergence(without_end), GEO_NULL);
    CGeoLine without_end_2 = line_without_end();
    EXPECT_EQ(without_end_2.GridDivergence(0.5), GEO_NULL);
}

TEST(LineDivergenceClockwise, IsThisAzimuthMinusTheOther) {
    CGeoLine a = line_on_azimuth(0.1);
    CGeoLine b = line_on_azimuth(6.2);
    EXPECT_NEAR(a.GridDivergenceClockwise(b), 0.1831853071795857, kAngleTol);
    EXPECT_NEAR(b.GridDivergenceClockwise(a), 6.1, kAngleTol);
    CGeoLine c = line_on_azimuth(1.0);
    CGeoLine d = line_on_azimuth(4.0);
    EXPECT_NEAR(c.GridDivergenceClockwise(d), 1.0 - 4.0 + 2.0 * kPi, kAngleTol);
    EXPECT_NEAR(d.GridDivergenceClockwise(c), 3.0, kAngleTol);
    EXPECT_EQ(c.GridDivergenceClockwise(c), 0.0);
}

TEST(LineDivergenceClockwise, NullWhenEitherAzimuthIsMissing) {
    CGeoLine a = line_on_azimuth(0.1);
    CGeoLine b = line_without_end();
    EXPECT_EQ(a.GridDivergenceClockwise(b), GEO_NULL);
    CGeoLine c = line_without_end();
    EXPECT_EQ(c.GridDivergenceClockwise(a), GEO_NULL);
}

} // namespace
