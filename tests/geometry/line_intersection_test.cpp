// CGeoLine::Intersection: crossing, touching and overlapping lines within a tolerance.
//
// Unless stated otherwise "this" line runs 100 m due north from (0, 0, 10) to (100, 0, 20), so
// its elevation at station s is 10 + 0.1 s, and the tolerance is 1 mm.
#include "qv5/geoline.h"

#include <gtest/gtest.h>

#include <cmath>

namespace {

/// Closed-form coordinates and lengths: metres.
constexpr double kTol = 1e-9;
/// The intersection tolerance used throughout: metres.
constexpr double kMm = 0.001;

/// A station value the call must not write.
constexpr double kUntouched = -999.0;

CGeoLine line_between(const geo_nee& a, const geo_nee& b) {
    CGeoPoint start(a);
    CGeoPoint end(b);
    return CGeoLine(start, end);
}

CGeoLine this_line() {
    return line_between({0.0, 0.0, 10.0}, {100.0, 0.0, 20.0});
}

/// A line of the other party; its elevations are deliberately far from this line's.
CGeoLine other_line(double n1, double e1, double n2, double e2) {
    return line_between({n1, e1, 999.0}, {n2, e2, 999.0});
}

/// A marker point that the call must not change.
CGeoPoint untouched_point() {
    return CGeoPoint(geo_nee{7.0, 7.0, 7.0});
}

void expect_untouched(CGeoPoint& point) {
    EXPECT_EQ(point.Flags(), CGeoPoint::PT_GRID);
    EXPECT_EQ(point.Northing(), 7.0);
    EXPECT_EQ(point.Easting(), 7.0);
    EXPECT_EQ(point.Elevation(), 7.0);
}

void expect_at(CGeoPoint& point, double north, double east, double elevation) {
    EXPECT_NEAR(point.Northing(), north, kTol);
    EXPECT_NEAR(point.Easting(), east, kTol);
    EXPECT_NEAR(point.Elevation(), elevation, kTol);
}

// ---------------------------------------------------------------------------------------------
// Crossing lines

TEST(LineIntersection, XCrossingGivesOneAndTheStation) {
    // From (40, -30) to (70, 30): crosses east 0 at north 55.
    CGeoLine line = this_line();
    CGeoLine other = other_line(40.0, -30.0, 70.0, 30.0);
    double station = kUntouched;
    CGeoPoint point;
    EXPECT_EQ(line.Intersection(other, station, point, kMm), 1);
    EXPECT_NEAR(station, 55.0, kTol);
    expect_at(point, 55.0, 0.0, 15.5); // this line's elevation, not the other's 999
}

TEST(LineIntersection, StationIsAlongTheLineAsked) {
    // Asked the other way round: the crossing is half-way along the other line
    // (sqrt(30^2 + 60^2) / 2) and takes its elevation.
    CGeoLine line = this_line();
    CGeoLine other = other_line(40.0, -30.0, 70.0, 30.0);
    double station = kUntouched;
    CGeoPoint point;
    EXPECT_EQ(other.Intersection(line, station, point, kMm), 1);
    EXPECT_NEAR(station, 33.54101966249684, kTol);
    expect_at(point, 55.0, 0.0, 999.0);
}

TEST(LineIntersection, DirectionOfTheOtherLineDoesNotMatter) {
    CGeoLine line = this_line();
    CGeoLine other = other_line(70.0, 30.0, 40.0, -30.0);
    double station = kUntouched;
    CGeoPoint point;
    EXPECT_EQ(line.Intersection(other, station, point, kMm), 1);
    EXPECT_NEAR(station, 55.0, kTol);
}

TEST(LineIntersection, LinesOnOneSideGiveZero) {
    CGeoLine line = this_line();
    CGeoLine right = other_line(10.0, 5.0, 90.0, 8.0);
    double station = kUntouched;
    CGeoPoint point = untouched_point();
    EXPECT_EQ(line.Intersection(right, station, point, kMm), 0);
    EXPECT_EQ(station, kUntouched);
    expect_untouched(point);
}

TEST(LineIntersection, OtherLineCrossingOnlyTheExtensionGivesZero) {
    // The other line straddles this one's extension beyond the end, but this line lies wholly on
    // one side of it.
    CGeoLine line = this_line();
    CGeoLine other = other_line(140.0, -30.0, 170.0, 30.0);
    double station = kUntouched;
    CGeoPoint point = untouched_point();
    EXPECT_EQ(line.Intersection(other, station, point, kMm), 0);
    EXPECT_EQ(station, kUntouched);
    expect_untouched(point);
}

TEST(LineIntersection, CrossingBeyondTheEndGivesZeroButWritesTheStation) {
    // A shallow line from (91, -0.05) to (111, 0.05) crosses east 0 at north 101. This line's
    // end is only 1 m x sin(0.005) = 5 mm from it, within a 10 mm tolerance, so the side tests
    // pass; the crossing station 101 lies beyond 100 + 0.01.
    CGeoLine line = this_line();
    CGeoLine other = other_line(91.0, -0.05, 111.0, 0.05);
    double station = kUntouched;
    CGeoPoint point = untouched_point();
    EXPECT_EQ(line.Intersection(other, station, point, 0.01), 0);
    EXPECT_NEAR(station, 101.0, kTol);
    expect_untouched(point);
}

TEST(LineIntersection, CrossingBehindTheStartGivesZeroButWritesTheStation) {
    CGeoLine line = this_line();
    CGeoLine other = other_line(-11.0, -0.05, 9.0, 0.05); // crosses east 0 at north -1
    double station = kUntouched;
    CGeoPoint point = untouched_point();
    EXPECT_EQ(line.Intersection(other, station, point, 0.01), 0);
    EXPECT_NEAR(station, -1.0, kTol);
    expect_untouched(point);
}

// ---------------------------------------------------------------------------------------------
// Touching lines

TEST(LineIntersection, LineEndingOnTheOtherWithinToleranceGivesFive) {
    CGeoLine line = this_line();
    CGeoLine other = other_line(50.0, -30.0, 50.0, 0.0004);
    double station = kUntouched;
    CGeoPoint point;
    EXPECT_EQ(line.Intersection(other, station, point, kMm), 5);
    EXPECT_NEAR(station, 50.0, kTol);
    expect_at(point, 50.0, 0.0, 15.0);
}

TEST(LineIntersection, LineEndingExactlyOnTheOtherGivesFive) {
    CGeoLine line = this_line();
    CGeoLine other = other_line(30.0, 25.0, 30.0, 0.0);
    double station = kUntouched;
    CGeoPoint point;
    EXPECT_EQ(line.Intersection(other, station, point, kMm), 5);
    EXPECT_NEAR(station, 30.0, kTol);
    expect_at(point, 30.0, 0.0, 13.0);
}

TEST(LineIntersection, LineEndingShortOfTheOtherByMoreThanToleranceGivesZero) {
    CGeoLine line = this_line();
    CGeoLine other = other_line(50.0, -30.0, 50.0, -0.002);
    double station = kUntouched;
    CGeoPoint point = untouched_point();
    EXPECT_EQ(line.Intersection(other, station, point, kMm), 0);
    EXPECT_EQ(station, kUntouched);
}

TEST(LineIntersection, CrossingNearTheEndSnapsToTheEndPoint) {
    // Crossing at station 99.9995: within the tolerance of the end.
    CGeoLine line = this_line();
    CGeoLine other = other_line(99.9995, -30.0, 99.9995, 30.0);
    double station = kUntouched;
    CGeoPoint point;
    EXPECT_EQ(line.Intersection(other, station, point, kMm), 5);
    EXPECT_EQ(station, 100.0);
    EXPECT_EQ(point.Northing(), 100.0);
    EXPECT_EQ(point.Easting(), 0.0);
    EXPECT_EQ(point.Elevation(), 20.0);
}

TEST(LineIntersection, CrossingJustBeyondTheEndSnapsToTheEndPoint) {
    CGeoLine line = this_line();
    CGeoLine other = other_line(100.0005, -30.0, 100.0005, 30.0);
    double station = kUntouched;
    CGeoPoint point;
    EXPECT_EQ(line.Intersection(other, station, point, kMm), 5);
    EXPECT_EQ(station, 100.0);
    EXPECT_EQ(point.Northing(), 100.0);
    EXPECT_EQ(point.Elevation(), 20.0);
}

TEST(LineIntersection, CrossingNearTheStartSnapsToTheStartPoint) {
    CGeoLine line = this_line();
    CGeoLine other = other_line(0.0005, -30.0, 0.0005, 30.0);
    double station = kUntouched;
    CGeoPoint point;
    EXPECT_EQ(line.Intersection(other, station, point, kMm), 5);
    EXPECT_EQ(station, 0.0);
    EXPECT_EQ(point.Northing(), 0.0);
    EXPECT_EQ(point.Easting(), 0.0);
    EXPECT_EQ(point.Elevation(), 10.0);
}

TEST(LineIntersection, CrossingJustBehindTheStartSnapsToTheStartPoint) {
    CGeoLine line = this_line();
    CGeoLine other = other_line(-0.0005, -30.0, -0.0005, 30.0);
    double station = kUntouched;
    CGeoPoint point;
    EXPECT_EQ(line.Intersection(other, station, point, kMm), 5);
    EXPECT_EQ(station, 0.0);
    EXPECT_EQ(point.Northing(), 0.0);
    EXPECT_EQ(point.Elevation(), 10.0);
}

TEST(LineIntersection, SnappedStartPointIsThisLinesStartPoint) {
    CGeoPoint start;
    start.SetStation(CGeoPoint(geo_nee{0.0, 0.0, 10.0}), 1.5);
    CGeoPoint end(geo_nee{100.0, 0.0, 20.0});
    CGeoLine line(start, end);
    CGeoLine other = other_line(0.0005, -30.0, 0.0005, 30.0);
    double station = kUntouched;
    CGeoPoint point;
    EXPECT_EQ(line.Intersection(other, station, point, kMm), 5);
    EXPECT_EQ(point.Flags(), CGeoPoint::PT_GRID | CGeoPoint::PT_STATION);
    EXPECT_EQ(point.HI(), 1.5);
}

// ---------------------------------------------------------------------------------------------
// Collinear lines

TEST(LineIntersection, CollinearLineInsideGivesSixAtItsFarStation) {
    CGeoLine line = this_line();
    CGeoLine other = other_line(20.0, 0.0, 60.0, 0.0);
    double station = kUntouched;
    CGeoPoint point;
    EXPECT_EQ(line.Intersection(other, station, point, kMm), 6);
    EXPECT_NEAR(station, 60.0, kTol);
    expect_at(point, 60.0, 0.0, 16.0);

    CGeoLine reversed = other_line(60.0, 0.0, 20.0, 0.0);
    station = kUntouched;
    EXPECT_EQ(line.Intersection(reversed, station, point, kMm), 6);
    EXPECT_NEAR(station, 60.0, kTol);
}

TEST(LineIntersection, IdenticalLinesGiveSixAtTheEnd) {
    CGeoLine line = this_line();
    CGeoLine same = this_line();
    double station = kUntouched;
    CGeoPoint point;
    EXPECT_EQ(line.Intersection(same, station, point, kMm), 6);
    EXPECT_EQ(station, 100.0);
    expect_at(point, 100.0, 0.0, 20.0);
}

TEST(LineIntersection, ParallelLineWithinToleranceCountsAsCollinear) {
    CGeoLine line = this_line();
    CGeoLine other = other_line(10.0, 0.0005, 40.0, 0.0005);
    double station = kUntouched;
    CGeoPoint point;
    EXPECT_EQ(line.Intersection(other, station, point, kMm), 6);
    EXPECT_NEAR(station, 40.0, kTol);
    expect_at(point, 40.0, 0.0, 14.0);
}

TEST(LineIntersection, CollinearLineOverlappingTheStartGivesSevenAtTheStart) {
    CGeoLine line = this_line();
    CGeoLine other = other_line(-50.0, 0.0, 30.0, 0.0);
    double station = kUntouched;
    CGeoPoint point;
    EXPECT_EQ(line.Intersection(other, station, point, kMm), 7);
    EXPECT_EQ(station, 0.0);
    expect_at(point, 0.0, 0.0, 10.0);
}

TEST(LineIntersection, CollinearLineOverlappingTheEndGivesSevenAtTheEnd) {
    CGeoLine line = this_line();
    CGeoLine other = other_line(20.0, 0.0, 150.0, 0.0);
    double station = kUntouched;
    CGeoPoint point;
    EXPECT_EQ(line.Intersection(other, station, point, kMm), 7);
    EXPECT_EQ(station, 100.0);
    expect_at(point, 100.0, 0.0, 20.0);
}

TEST(LineIntersection, CollinearLineCoveringBothEndsGivesSevenAtTheEnd) {
    CGeoLine line = this_line();
    CGeoLine other = other_line(-50.0, 0.0, 150.0, 0.0);
    double station = kUntouched;
    CGeoPoint point;
    EXPECT_EQ(line.Intersection(other, station, point, kMm), 7);
    EXPECT_EQ(station, 100.0);
    expect_at(point, 100.0, 0.0, 20.0);
}

TEST(LineIntersection, CollinearLinesWithoutOverlapGiveZero) {
    CGeoLine line = this_line();
    double station = kUntouched;
    CGeoPoint point = untouched_point();
    CGeoLine beyond = other_line(120.0, 0.0, 150.0, 0.0);
    EXPECT_EQ(line.Intersection(beyond, station, point, kMm), 0);
    CGeoLine behind = other_line(-50.0, 0.0, -20.0, 0.0);
    EXPECT_EQ(line.Intersection(behind, station, point, kMm), 0);
    EXPECT_EQ(station, kUntouched);
    expect_untouched(point);
}

TEST(LineIntersection, ShortLineLyingAlongALongOneIsCollinear) {
    // This line (0, 0) -> (1, 0) lies within 1 cm of the long line (-100, -0.5) -> (100, 0.5)
    // (its end is 1 m x 0.5 / 100 = 5 mm off it), although the long line's ends are 0.5 m to
    // either side of this one. Both of this line's ends lie on the other line, so the lines are
    // collinear; the other line covers both ends, giving the end point.
    CGeoLine line = line_between({0.0, 0.0, 10.0}, {1.0, 0.0, 11.0});
    CGeoLine other = other_line(-100.0, -0.5, 100.0, 0.5);
    double station = kUntouched;
    CGeoPoint point;
    EXPECT_EQ(line.Intersection(other, station, point, 0.01), 7);
    EXPECT_EQ(station, 1.0);
    expect_at(point, 1.0, 0.0, 11.0);
}

TEST(LineIntersection, CollinearLineEndingExactlyOneToleranceOutsideGivesZero) {
    // The overlap test takes stations strictly inside (-tol, length + tol); the test for a line
    // that reaches beyond this one takes them as outside only beyond those limits. A collinear
    // line that ends exactly at length + tol (or exactly at -tol) and starts inside falls between
    // the two and is reported as no intersection. Half a metre is exact in binary, so the
    // stations land exactly on the limits.
    CGeoLine line = this_line();
    double station = kUntouched;
    CGeoPoint point = untouched_point();
    CGeoLine past_end = other_line(100.5, 0.0, 50.0, 0.0);
    EXPECT_EQ(line.Intersection(past_end, station, point, 0.5), 0);
    CGeoLine before_start = other_line(-0.5, 0.0, 50.0, 0.0);
    EXPECT_EQ(line.Intersection(before_start, station, point, 0.5), 0);
    EXPECT_EQ(station, kUntouched);
    expect_untouched(point);
    // A hair further out, the line reaches beyond and the overlap is found.
    CGeoLine further = other_line(100.5001, 0.0, 50.0, 0.0);
    EXPECT_EQ(line.Intersection(further, station, point, 0.5), 7);
    EXPECT_EQ(station, 100.0);
}

TEST(LineIntersection, ParallelLinesTwoTolerancesApartGiveZero) {
    CGeoLine line = this_line();
    CGeoLine other = other_line(0.0, 2.0 * kMm, 100.0, 2.0 * kMm);
    double station = kUntouched;
    CGeoPoint point = untouched_point();
    EXPECT_EQ(line.Intersection(other, station, point, kMm), 0);
    EXPECT_EQ(station, kUntouched);
    expect_untouched(point);
    CGeoLine left = other_line(0.0, -2.0 * kMm, 100.0, -2.0 * kMm);
    EXPECT_EQ(line.Intersection(left, station, point, kMm), 0);
}

// ---------------------------------------------------------------------------------------------
// Missing coordinates

TEST(LineIntersection, OtherLineWithoutEndGivesZero) {
    CGeoLine line = this_line();
    CGeoPoint start(geo_nee{40.0, -30.0, 0.0});
    CGeoPoint end;
    CGeoLine other(start, end);
    double station = kUntouched;
    CGeoPoint point = untouched_point();
    EXPECT_EQ(line.Intersection(other, station, point, kMm), 0);
    EXPECT_EQ(station, kUntouched);
    expect_untouched(point);
}

TEST(LineIntersection, ThisLineWithoutEndGivesZero) {
    CGeoPoint start(geo_nee{0.0, 0.0, 0.0});
    CGeoPoint end;
    CGeoLine line(start, end);
    CGeoLine other = other_line(40.0, -30.0, 70.0, 30.0);
    double station = kUntouched;
    CGeoPoint point = untouched_point();
    EXPECT_EQ(line.Intersection(other, station, point, kMm), 0);
    EXPECT_EQ(station, kUntouched);
    expect_untouched(point);
}

} // namespace
