// Polygons, lines and shapes: point in polygon, point on line, line crossing, midpoint,
// triangle area, arc angle and length, and the vector helpers.
#include "qv5/geosurvey.h"
#include "support/test_numbers.h"

#include <gtest/gtest.h>

#include <cmath>
#include <cstdint>
#include <cstring>
#include <limits>
#include <vector>

namespace {

using qv5::test::bits_of;
using qv5::test::is_geo_null;
using qv5::test::kHalfPi;
using qv5::test::kPi;

// Metres: closed forms on coordinates of a few thousand metres.
constexpr double kMetreTol = 1e-9;
// Radians: a few operations on values of a few radians.
constexpr double kAngleTol = 1e-12;

// A 10 m square with its south-west corner at the origin: north 0..10, east 0..10.
const std::vector<geo_nee> kSquare{
    {0.0, 0.0, 0.0}, {0.0, 10.0, 0.0}, {10.0, 10.0, 0.0}, {10.0, 0.0, 0.0}};

int in_square(double north, double east) {
    const geo_nee p{north, east, 0.0};
    return geo_point_in_poly(static_cast<int>(kSquare.size()), kSquare.data(), &p);
}

int in_poly(const std::vector<geo_nee>& poly, double north, double east) {
    const geo_nee p{north, east, 0.0};
    return geo_point_in_poly(static_cast<int>(poly.size()), poly.data(), &p);
}

int near_square(double north, double east, double tolerance) {
    const geo_nee p{north, east, 0.0};
    return geo_point_in_poly_2(static_cast<int>(kSquare.size()), kSquare.data(), &p, tolerance);
}

// ---- geo_point_in_poly ----------------------------------------------------------------------

TEST(PointInPolygon, CentreOfSquareIsInside) {
    EXPECT_EQ(in_square(5.0, 5.0), 1);
    EXPECT_EQ(in_square(0.001, 9.999), 1);
}

TEST(PointInPolygon, PointsBeyondEachSideAreOutside) {
    EXPECT_EQ(in_square(-1.0, 5.0), 0);
    EXPECT_EQ(in_square(11.0, 5.0), 0);
    EXPECT_EQ(in_square(5.0, -1.0), 0);
    EXPECT_EQ(in_square(5.0, 11.0), 0);
    EXPECT_EQ(in_square(20.0, 20.0), 0);
}

TEST(PointInPolygon, DirectionOfTraversalDoesNotMatter) {
    const std::vector<geo_nee> reversed(kSquare.rbegin(), kSquare.rend());
    EXPECT_EQ(in_poly(reversed, 5.0, 5.0), 1);
    EXPECT_EQ(in_poly(reversed, 5.0, 11.0), 0);
    EXPECT_EQ(in_poly(reversed, -0.5, 5.0), 0);
}

TEST(PointInPolygon, RepeatingTheFirstVertexAtTheEndChangesNothing) {
    std::vector<geo_nee> closed = kSquare;
    closed.push_back(kSquare.front());
    EXPECT_EQ(in_poly(closed, 5.0, 5.0), 1);
    EXPECT_EQ(in_poly(closed, 5.0, 11.0), 0);
    EXPECT_EQ(in_poly(closed, 0.0, 5.0), 1);
    EXPECT_EQ(in_poly(closed, 10.0, 5.0), 0);
}

TEST(PointInPolygon, PointExactlyOnAVertexIsInside) {
    for (const geo_nee& vertex : kSquare) {
        SCOPED_TRACE(testing::Message() << vertex.north << ", " << vertex.east);
        EXPECT_EQ(in_square(vertex.north, vertex.east), 1);
    }
}

TEST(PointInPolygon, VertexTestIsExact) {
    // The north-east corner is inside only because it is a vertex; a hair beyond it is not.
    EXPECT_EQ(in_square(10.0, 10.0), 1);
    EXPECT_EQ(in_square(10.0 + 1e-9, 10.0), 0);
    EXPECT_EQ(in_square(10.0, 10.0 + 1e-9), 0);
}

TEST(PointInPolygon, VertexTestIgnoresElevation) {
    const geo_nee p{10.0, 10.0, 123.0};
    EXPECT_EQ(geo_point_in_poly(4, kSquare.data(), &p), 1);
}

TEST(PointInPolygon, SouthAndWestEdgesAreInsideNorthAndEastEdgesOutside) {
    // Each edge is half-open in northing and the crossing is strict in easting, so a point on
    // the south or west side counts, one on the north or east side does not.
    EXPECT_EQ(in_square(0.0, 5.0), 1);  // south edge
    EXPECT_EQ(in_square(5.0, 0.0), 1);  // west edge
    EXPECT_EQ(in_square(10.0, 5.0), 0); // north edge
    EXPECT_EQ(in_square(5.0, 10.0), 0); // east edge
}

TEST(PointInPolygon, ConcaveNotchIsOutside) {
    // A U open to the north: arms east 0..10 and 20..30 from north 5 to 20, base north 0..5.
    const std::vector<geo_nee> u{{0.0, 0.0, 0.0},   {0.0, 30.0, 0.0}, {20.0, 30.0, 0.0},
                                 {20.0, 20.0, 0.0}, {5.0, 20.0, 0.0}, {5.0, 10.0, 0.0},
                                 {20.0, 10.0, 0.0}, {20.0, 0.0, 0.0}};
    EXPECT_EQ(in_poly(u, 10.0, 15.0), 0); // in the notch
    EXPECT_EQ(in_poly(u, 10.0, 5.0), 1);  // west arm
    EXPECT_EQ(in_poly(u, 10.0, 25.0), 1); // east arm
    EXPECT_EQ(in_poly(u, 2.0, 15.0), 1);  // base
    EXPECT_EQ(in_poly(u, 25.0, 15.0), 0); // north of everything
    EXPECT_EQ(in_poly(u, 10.0, 35.0), 0); // east of everything
}

TEST(PointInPolygon, PointLevelWithAHorizontalEdgeIsClassifiedCorrectly) {
    // An L: north 0..5 spans east 0..20, north 5..10 spans east 0..10. The edge from (5, 20)
    // to (5, 10) has no northing difference and is never crossed by the test ray.
    const std::vector<geo_nee> ell{{0.0, 0.0, 0.0},  {0.0, 20.0, 0.0},  {5.0, 20.0, 0.0},
                                   {5.0, 10.0, 0.0}, {10.0, 10.0, 0.0}, {10.0, 0.0, 0.0}};
    EXPECT_EQ(in_poly(ell, 5.0, 5.0), 1);  // level with the horizontal edge, inside
    EXPECT_EQ(in_poly(ell, 5.0, -1.0), 0); // level with it, west of the polygon
    EXPECT_EQ(in_poly(ell, 5.0, 25.0), 0); // level with it, east of the polygon
    EXPECT_EQ(in_poly(ell, 5.0, 15.0), 0); // on the horizontal edge: a north side
    EXPECT_EQ(in_poly(ell, 5.0, 10.0), 1); // the inner corner is a vertex
    EXPECT_EQ(in_poly(ell, 2.0, 15.0), 1); // below the step
    EXPECT_EQ(in_poly(ell, 7.0, 15.0), 0); // above the step, outside
    EXPECT_EQ(in_poly(ell, 0.0, 15.0), 1); // on the south horizontal edge
    EXPECT_EQ(in_poly(ell, 10.0, 5.0), 0); // on the north horizontal edge
}

TEST(PointInPolygon, NoVerticesIsOutside) {
    const geo_nee p{5.0, 5.0, 0.0};
    EXPECT_EQ(geo_point_in_poly(0, kSquare.data(), &p), 0);
    EXPECT_EQ(geo_point_in_poly(-3, kSquare.data(), &p), 0);
    const geo_nee vertex = kSquare.front();
    EXPECT_EQ(geo_point_in_poly(0, kSquare.data(), &vertex), 0);
}

TEST(PointInPolygon, NullPointersAreOutside) {
    const geo_nee p{5.0, 5.0, 0.0};
    EXPECT_EQ(geo_point_in_poly(4, nullptr, &p), 0);
    EXPECT_EQ(geo_point_in_poly(4, kSquare.data(), nullptr), 0);
    EXPECT_EQ(geo_point_in_poly(4, nullptr, nullptr), 0);
}

TEST(PointInPolygon, SingleVertexContainsOnlyItself) {
    const geo_nee vertex{3.0, 4.0, 0.0};
    const geo_nee elsewhere{3.0, 4.001, 0.0};
    EXPECT_EQ(geo_point_in_poly(1, &vertex, &vertex), 1);
    EXPECT_EQ(geo_point_in_poly(1, &vertex, &elsewhere), 0);
}

// ---- geo_point_in_poly_2 --------------------------------------------------------------------

TEST(PointInPolygonWithTolerance, PointsOnAnyEdgeCountAsInside) {
    EXPECT_EQ(near_square(10.0, 5.0, 0.001), 1); // north edge, outside without tolerance
    EXPECT_EQ(near_square(5.0, 10.0, 0.001), 1); // east edge, likewise
    EXPECT_EQ(near_square(0.0, 5.0, 0.001), 1);
    EXPECT_EQ(near_square(5.0, 0.0, 0.001), 1);
}

TEST(PointInPolygonWithTolerance, ZeroToleranceStillCatchesAPointExactlyOnAnEdge) {
    EXPECT_EQ(near_square(10.0, 5.0, 0.0), 1);
    EXPECT_EQ(near_square(5.0, 10.0, 0.0), 1);
}

TEST(PointInPolygonWithTolerance, PointJustOutsideWithinToleranceCountsAsInside) {
    EXPECT_EQ(near_square(10.005, 5.0, 0.01), 1);
    EXPECT_EQ(near_square(5.0, -0.005, 0.01), 1);
    EXPECT_EQ(near_square(-0.009, 3.0, 0.01), 1);
    EXPECT_EQ(near_square(7.0, 10.0099, 0.01), 1);
}

TEST(PointInPolygonWithTolerance, PointOutsideBeyondToleranceIsOutside) {
    EXPECT_EQ(near_square(10.02, 5.0, 0.01), 0);
    EXPECT_EQ(near_square(5.0, -0.011, 0.01), 0);
    EXPECT_EQ(near_square(20.0, 20.0, 0.01), 0);
}

TEST(PointInPolygonWithTolerance, InteriorPointIsInside) {
    EXPECT_EQ(near_square(5.0, 5.0, 0.01), 1);
}

TEST(PointInPolygonWithTolerance, PointJustBeyondACornerWithinToleranceCountsAsInside) {
    EXPECT_EQ(near_square(10.003, 10.003, 0.005), 1);
    EXPECT_EQ(near_square(-0.003, -0.003, 0.005), 1);
}

TEST(PointInPolygonWithTolerance, HasNoExactVertexTest) {
    // With a negative tolerance nothing is near an edge, so only the crossing test is left;
    // the north-east corner then comes out as outside, where geo_point_in_poly says inside.
    EXPECT_EQ(near_square(10.0, 10.0, -1.0), 0);
    EXPECT_EQ(in_square(10.0, 10.0), 1);
    EXPECT_EQ(near_square(5.0, 5.0, -1.0), 1);
}

TEST(PointInPolygonWithTolerance, NoVerticesIsOutside) {
    const geo_nee p{5.0, 5.0, 0.0};
    EXPECT_EQ(geo_point_in_poly_2(0, kSquare.data(), &p, 100.0), 0);
    EXPECT_EQ(geo_point_in_poly_2(-1, kSquare.data(), &p, 100.0), 0);
}

TEST(PointInPolygonWithTolerance, NullPointersAreOutside) {
    const geo_nee p{5.0, 5.0, 0.0};
    EXPECT_EQ(geo_point_in_poly_2(4, nullptr, &p, 1.0), 0);
    EXPECT_EQ(geo_point_in_poly_2(4, kSquare.data(), nullptr, 1.0), 0);
    EXPECT_EQ(geo_point_in_poly_2(4, nullptr, nullptr, 1.0), 0);
}

TEST(PointInPolygonWithTolerance, SingleVertexCatchesPointsNearIt) {
    const geo_nee vertex{3.0, 4.0, 0.0};
    const geo_nee near{3.0, 4.001, 0.0};
    const geo_nee far{3.0, 4.1, 0.0};
    EXPECT_EQ(geo_point_in_poly_2(1, &vertex, &near, 0.01), 1);
    EXPECT_EQ(geo_point_in_poly_2(1, &vertex, &far, 0.01), 0);
}

// ---- geo_point_on_line ----------------------------------------------------------------------

// A 100 m line running due east from the origin.
const geo_nee kWest{0.0, 0.0, 0.0};
const geo_nee kEast{0.0, 100.0, 0.0};

int on_east_line(double north, double east, double tolerance) {
    return geo_point_on_line(kWest, kEast, geo_nee{north, east, 0.0}, tolerance);
}

TEST(PointOnLine, PointOnTheSegmentIsOnIt) {
    EXPECT_EQ(on_east_line(0.0, 50.0, 0.001), 1);
    EXPECT_EQ(on_east_line(0.0, 0.0, 0.001), 1);
    EXPECT_EQ(on_east_line(0.0, 100.0, 0.001), 1);
}

TEST(PointOnLine, OffsetWithinToleranceOnEitherSideIsOnIt) {
    EXPECT_EQ(on_east_line(0.5, 50.0, 0.6), 1);  // left of the eastward line
    EXPECT_EQ(on_east_line(-0.5, 50.0, 0.6), 1); // right
    EXPECT_EQ(on_east_line(0.5, 50.0, 0.4), 0);
    EXPECT_EQ(on_east_line(-0.5, 50.0, 0.4), 0);
}

TEST(PointOnLine, OffsetAtTheToleranceIsOnIt) {
    EXPECT_EQ(on_east_line(0.5, 50.0, 0.5 + 1e-9), 1);
    EXPECT_EQ(on_east_line(0.5, 50.0, 0.5 - 1e-9), 0);
}

TEST(PointOnLine, ToleranceReachesBeforeTheStart) {
    // Exactly the tolerance behind the start is still on the line; any further is not.
    EXPECT_EQ(on_east_line(0.0, -0.5, 0.5), 1);
    EXPECT_EQ(on_east_line(0.0, -0.5, 0.4999), 0);
    EXPECT_EQ(on_east_line(0.0, -1.0, 0.5), 0);
}

TEST(PointOnLine, ToleranceReachesBeyondTheEnd) {
    EXPECT_EQ(on_east_line(0.0, 100.5, 0.5), 1);
    EXPECT_EQ(on_east_line(0.0, 100.5, 0.4999), 0);
    EXPECT_EQ(on_east_line(0.0, 101.0, 0.5), 0);
}

TEST(PointOnLine, ToleranceZoneHasSquareEnds) {
    // 0.4 m beyond the end and 0.4 m aside is 0.57 m from the end point, but the along and
    // offset tests are separate, so with a 0.45 m tolerance it is on the line.
    EXPECT_EQ(on_east_line(0.4, 100.4, 0.45), 1);
    EXPECT_EQ(on_east_line(-0.4, -0.4, 0.45), 1);
}

TEST(PointOnLine, WorksOnADiagonalSegment) {
    // 50 m on bearing atan2(4, 3); 25 m along and 0.3 m to the right is (14.76, 20.18), to the
    // left (15.24, 19.82).
    const geo_nee start{0.0, 0.0, 0.0};
    const geo_nee end{30.0, 40.0, 0.0};
    EXPECT_EQ(geo_point_on_line(start, end, geo_nee{14.76, 20.18, 0.0}, 0.31), 1);
    EXPECT_EQ(geo_point_on_line(start, end, geo_nee{14.76, 20.18, 0.0}, 0.29), 0);
    EXPECT_EQ(geo_point_on_line(start, end, geo_nee{15.24, 19.82, 0.0}, 0.31), 1);
    EXPECT_EQ(geo_point_on_line(start, end, geo_nee{15.24, 19.82, 0.0}, 0.29), 0);
    EXPECT_EQ(geo_point_on_line(end, start, geo_nee{14.76, 20.18, 0.0}, 0.31), 1);
    EXPECT_EQ(geo_point_on_line(end, start, geo_nee{14.76, 20.18, 0.0}, 0.29), 0);
}

TEST(PointOnLine, ElevationIsIgnored) {
    EXPECT_EQ(geo_point_on_line(geo_nee{0.0, 0.0, 0.0}, geo_nee{0.0, 100.0, 50.0},
                                geo_nee{0.0, 50.0, -999.0}, 0.01),
              1);
}

TEST(PointOnLine, ZeroLengthSegmentCatchesPointsWithinTheToleranceBox) {
    const geo_nee p{2.0, 3.0, 0.0};
    EXPECT_EQ(geo_point_on_line(p, p, p, 0.0), 1);
    EXPECT_EQ(geo_point_on_line(p, p, geo_nee{2.3, 3.4, 0.0}, 0.45), 1);
    EXPECT_EQ(geo_point_on_line(p, p, geo_nee{5.0, 7.0, 0.0}, 0.45), 0);
}

TEST(PointOnLine, NotANumberToleranceMatchesNothing) {
    EXPECT_EQ(on_east_line(0.0, 50.0, std::numeric_limits<double>::quiet_NaN()), 0);
}

// ---- geo_lines_cross ------------------------------------------------------------------------

// Line A runs due east along north 0 from east 0 to east 10.
const geo_nee kA1{0.0, 0.0, 0.0};
const geo_nee kA2{0.0, 10.0, 0.0};

TEST(LinesCross, SegmentsThatCrossProperlyCross) {
    const geo_nee b1{5.0, 5.0, 0.0};
    const geo_nee b2{-5.0, 5.0, 0.0};
    EXPECT_EQ(geo_lines_cross(kA1, kA2, b1, b2), 1);
    EXPECT_EQ(geo_lines_cross(kA2, kA1, b1, b2), 1);
    EXPECT_EQ(geo_lines_cross(kA1, kA2, b2, b1), 1);
    EXPECT_EQ(geo_lines_cross(b1, b2, kA1, kA2), 1);
    EXPECT_EQ(geo_lines_cross(b2, b1, kA2, kA1), 1);
}

TEST(LinesCross, DiagonalSegmentsCross) {
    EXPECT_EQ(geo_lines_cross(geo_nee{0.0, 0.0, 0.0}, geo_nee{10.0, 10.0, 0.0},
                              geo_nee{0.0, 10.0, 0.0}, geo_nee{10.0, 0.0, 0.0}),
              1);
}

TEST(LinesCross, ParallelSegmentsDoNotCross) {
    EXPECT_EQ(geo_lines_cross(kA1, kA2, geo_nee{5.0, 0.0, 0.0}, geo_nee{5.0, 10.0, 0.0}), 0);
}

TEST(LinesCross, OverlappingCollinearSegmentsDoNotCross) {
    EXPECT_EQ(geo_lines_cross(kA1, kA2, geo_nee{0.0, 5.0, 0.0}, geo_nee{0.0, 15.0, 0.0}), 0);
}

TEST(LinesCross, SegmentsThatWouldCrossOnlyIfExtendedDoNotCross) {
    // B straddles the line through A, but beyond A's east end.
    EXPECT_EQ(geo_lines_cross(kA1, kA2, geo_nee{5.0, 20.0, 0.0}, geo_nee{-5.0, 20.0, 0.0}), 0);
    // A straddles the line through B, but B stops short of A.
    EXPECT_EQ(geo_lines_cross(kA1, kA2, geo_nee{5.0, 5.0, 0.0}, geo_nee{1.0, 5.0, 0.0}), 0);
}

TEST(LinesCross, TouchingCountsOnlyWhenTheOtherEndIsOnTheLessSide) {
    // B starts on A. For the eastward A the "less" side is the south: B running south from A
    // is reported as crossing, B running north is not.
    const geo_nee on_a{0.0, 5.0, 0.0};
    EXPECT_EQ(geo_lines_cross(kA1, kA2, on_a, geo_nee{-5.0, 5.0, 0.0}), 1);
    EXPECT_EQ(geo_lines_cross(kA1, kA2, on_a, geo_nee{5.0, 5.0, 0.0}), 0);
}

TEST(LinesCross, ReversingTheLineReversesTheTouchingVerdict) {
    const geo_nee on_a{0.0, 5.0, 0.0};
    EXPECT_EQ(geo_lines_cross(kA2, kA1, on_a, geo_nee{-5.0, 5.0, 0.0}), 0);
    EXPECT_EQ(geo_lines_cross(kA2, kA1, on_a, geo_nee{5.0, 5.0, 0.0}), 1);
}

TEST(LinesCross, SegmentEndingOnTheOtherDependsOnWhichWayItComes) {
    // B runs south along east 5. A segment from the west that ends on B counts as crossing it;
    // one from the east that ends on B does not.
    const geo_nee b1{5.0, 5.0, 0.0};
    const geo_nee b2{-5.0, 5.0, 0.0};
    EXPECT_EQ(geo_lines_cross(geo_nee{0.0, 0.0, 0.0}, geo_nee{0.0, 5.0, 0.0}, b1, b2), 1);
    EXPECT_EQ(geo_lines_cross(geo_nee{0.0, 10.0, 0.0}, geo_nee{0.0, 5.0, 0.0}, b1, b2), 0);
}

TEST(LinesCross, SharedEndPointDependsOnWhichWayTheOtherSegmentGoes) {
    EXPECT_EQ(geo_lines_cross(kA1, kA2, kA2, geo_nee{-10.0, 10.0, 0.0}), 1);
    EXPECT_EQ(geo_lines_cross(kA1, kA2, kA2, geo_nee{10.0, 10.0, 0.0}), 0);
}

TEST(LinesCross, ElevationIsIgnored) {
    EXPECT_EQ(geo_lines_cross(geo_nee{0.0, 0.0, 100.0}, geo_nee{0.0, 10.0, -100.0},
                              geo_nee{5.0, 5.0, 7.0}, geo_nee{-5.0, 5.0, 7.0}),
              1);
}

// ---- geo_grid_centroid ----------------------------------------------------------------------

TEST(GridCentroid, IsTheMidpointInAllThreeCoordinates) {
    geo_nee mid{};
    geo_grid_centroid(geo_nee{0.0, 0.0, 10.0}, geo_nee{10.0, 20.0, 30.0}, mid);
    EXPECT_EQ(mid.north, 5.0);
    EXPECT_EQ(mid.east, 10.0);
    EXPECT_EQ(mid.elev, 20.0);
}

TEST(GridCentroid, IsExactAtLargeGridCoordinates) {
    geo_nee mid{};
    geo_grid_centroid(geo_nee{6543210.0, 432100.0, 12.0}, geo_nee{6543220.0, 432110.0, 14.0}, mid);
    EXPECT_NEAR(mid.north, 6543215.0, kMetreTol);
    EXPECT_NEAR(mid.east, 432105.0, kMetreTol);
    EXPECT_NEAR(mid.elev, 13.0, kMetreTol);
}

TEST(GridCentroid, NullElevationAtEitherEndGivesNullElevation) {
    geo_nee mid{9.0, 9.0, 9.0};
    geo_grid_centroid(geo_nee{0.0, 0.0, GEO_NULL}, geo_nee{10.0, 20.0, 30.0}, mid);
    EXPECT_EQ(mid.north, 5.0);
    EXPECT_EQ(mid.east, 10.0);
    EXPECT_TRUE(is_geo_null(mid.elev));

    geo_nee other{9.0, 9.0, 9.0};
    geo_grid_centroid(geo_nee{0.0, 0.0, 10.0}, geo_nee{10.0, 20.0, GEO_NULL}, other);
    EXPECT_EQ(other.north, 5.0);
    EXPECT_EQ(other.east, 10.0);
    EXPECT_TRUE(is_geo_null(other.elev));
}

void expect_all_null_midpoint(const geo_nee& a, const geo_nee& b) {
    geo_nee mid{9.0, 9.0, 9.0};
    geo_grid_centroid(a, b, mid);
    EXPECT_TRUE(is_geo_null(mid.north));
    EXPECT_TRUE(is_geo_null(mid.east));
    EXPECT_TRUE(is_geo_null(mid.elev));
}

TEST(GridCentroid, NullPlanCoordinateNullsTheWholeMidpoint) {
    // Elevations are set at both ends, yet the elevation is not averaged without a plan position.
    {
        SCOPED_TRACE("first north");
        expect_all_null_midpoint(geo_nee{GEO_NULL, 0.0, 10.0}, geo_nee{10.0, 20.0, 30.0});
    }
    {
        SCOPED_TRACE("first east");
        expect_all_null_midpoint(geo_nee{0.0, GEO_NULL, 10.0}, geo_nee{10.0, 20.0, 30.0});
    }
    {
        SCOPED_TRACE("second north");
        expect_all_null_midpoint(geo_nee{0.0, 0.0, 10.0}, geo_nee{GEO_NULL, 20.0, 30.0});
    }
    {
        SCOPED_TRACE("second east");
        expect_all_null_midpoint(geo_nee{0.0, 0.0, 10.0}, geo_nee{10.0, GEO_NULL, 30.0});
    }
}

TEST(GridCentroid, OutputMayBeOneOfTheInputs) {
    geo_nee a{0.0, 0.0, 10.0};
    const geo_nee b{10.0, 20.0, 30.0};
    geo_grid_centroid(a, b, a);
    EXPECT_EQ(a.north, 5.0);
    EXPECT_EQ(a.east, 10.0);
    EXPECT_EQ(a.elev, 20.0);
}

// ---- geo_triangle_area ----------------------------------------------------------------------

TEST(TriangleArea, RightTriangleHasHalfTheProductOfItsLegs) {
    const geo_nee a{0.0, 0.0, 0.0};
    const geo_nee b{0.0, 4.0, 0.0};
    const geo_nee c{3.0, 0.0, 0.0};
    EXPECT_EQ(geo_triangle_area(a, b, c), 6.0);
}

TEST(TriangleArea, IsNeverNegativeWhateverTheOrder) {
    const geo_nee a{0.0, 0.0, 0.0};
    const geo_nee b{0.0, 4.0, 0.0};
    const geo_nee c{3.0, 0.0, 0.0};
    EXPECT_EQ(geo_triangle_area(a, c, b), 6.0);
    EXPECT_EQ(geo_triangle_area(b, a, c), 6.0);
    EXPECT_EQ(geo_triangle_area(c, b, a), 6.0);
}

TEST(TriangleArea, GeneralTriangle) {
    // East-north (2, 1), (-3, 4), (5, -2): shoelace 0.5 |2 * 6 + (-3)(-3) + 5(-3)| = 3.
    EXPECT_NEAR(
        geo_triangle_area(geo_nee{1.0, 2.0, 0.0}, geo_nee{4.0, -3.0, 0.0}, geo_nee{-2.0, 5.0, 0.0}),
        3.0, kMetreTol);
}

TEST(TriangleArea, CollinearPointsHaveNoArea) {
    EXPECT_EQ(
        geo_triangle_area(geo_nee{0.0, 0.0, 0.0}, geo_nee{1.0, 2.0, 0.0}, geo_nee{3.0, 6.0, 0.0}),
        0.0);
}

TEST(TriangleArea, ElevationIsIgnored) {
    EXPECT_EQ(geo_triangle_area(geo_nee{0.0, 0.0, 100.0}, geo_nee{0.0, 4.0, -50.0},
                                geo_nee{3.0, 0.0, 7.0}),
              6.0);
}

TEST(TriangleArea, IsExactAtLargeGridCoordinates) {
    const double n = 6543210.0;
    const double e = 432109.0;
    EXPECT_NEAR(
        geo_triangle_area(geo_nee{n, e, 0.0}, geo_nee{n, e + 4.0, 0.0}, geo_nee{n + 3.0, e, 0.0}),
        6.0, kMetreTol);
}

// ---- geo_arc_angle_to_length / geo_arc_length_to_angle --------------------------------------

TEST(ArcAngleToLength, IsAngleTimesRadius) {
    EXPECT_EQ(geo_arc_angle_to_length(0.5, 100.0), 50.0);
    EXPECT_EQ(geo_arc_angle_to_length(-0.5, 100.0), -50.0);
    EXPECT_EQ(geo_arc_angle_to_length(0.5, -100.0), -50.0);
    EXPECT_NEAR(geo_arc_angle_to_length(kHalfPi, 200.0), 100.0 * kPi, kMetreTol);
}

TEST(ArcAngleToLength, ZeroRadiusGivesZeroLength) {
    EXPECT_EQ(geo_arc_angle_to_length(1.0, 0.0), 0.0);
}

TEST(ArcAngleToLength, NullAngleOrRadiusGivesNull) {
    EXPECT_TRUE(is_geo_null(geo_arc_angle_to_length(GEO_NULL, 100.0)));
    EXPECT_TRUE(is_geo_null(geo_arc_angle_to_length(0.5, GEO_NULL)));
    EXPECT_TRUE(is_geo_null(geo_arc_angle_to_length(GEO_NULL, GEO_NULL)));
}

TEST(ArcLengthToAngle, IsLengthOverRadius) {
    EXPECT_EQ(geo_arc_length_to_angle(50.0, 100.0), 0.5);
    EXPECT_EQ(geo_arc_length_to_angle(-50.0, 100.0), -0.5);
    EXPECT_EQ(geo_arc_length_to_angle(50.0, -100.0), -0.5);
    EXPECT_NEAR(geo_arc_length_to_angle(100.0 * kPi, 200.0), kHalfPi, kAngleTol);
}

TEST(ArcLengthToAngle, RadiusBelowHalfAMillimetreGivesNull) {
    EXPECT_TRUE(is_geo_null(geo_arc_length_to_angle(10.0, 0.0004)));
    EXPECT_TRUE(is_geo_null(geo_arc_length_to_angle(10.0, -0.0004)));
    EXPECT_TRUE(is_geo_null(geo_arc_length_to_angle(10.0, 0.0)));
    EXPECT_TRUE(is_geo_null(geo_arc_length_to_angle(10.0, -0.0)));
}

TEST(ArcLengthToAngle, RadiusOfExactlyHalfAMillimetreIsUsed) {
    EXPECT_DOUBLE_EQ(geo_arc_length_to_angle(10.0, 0.0005), 20000.0);
    EXPECT_DOUBLE_EQ(geo_arc_length_to_angle(10.0, -0.0005), -20000.0);
}

TEST(ArcLengthToAngle, NullLengthOrRadiusGivesNull) {
    EXPECT_TRUE(is_geo_null(geo_arc_length_to_angle(GEO_NULL, 100.0)));
    EXPECT_TRUE(is_geo_null(geo_arc_length_to_angle(50.0, GEO_NULL)));
    EXPECT_TRUE(is_geo_null(geo_arc_length_to_angle(GEO_NULL, GEO_NULL)));
}

// ---- geo_vector_* ---------------------------------------------------------------------------

TEST(VectorLength, IsTheDistanceBetweenTwoPositionVectors) {
    geo_vector a{1.0, 2.0, 3.0};
    geo_vector b{4.0, 6.0, 15.0};
    EXPECT_EQ(geo_vector_length(a, b), 13.0);
    EXPECT_EQ(geo_vector_length(b, a), 13.0);
    EXPECT_EQ(geo_vector_length(a, a), 0.0);
}

TEST(VectorDirection, TakesXAsEastAndYAsNorth) {
    geo_vector north{0.0, 1.0, 5.0};
    geo_vector east{1.0, 0.0, 5.0};
    geo_vector south{0.0, -1.0, 5.0};
    geo_vector west{-1.0, 0.0, 5.0};
    geo_vector north_east{2.0, 2.0, -5.0};
    EXPECT_EQ(geo_vector_direction(north), 0.0);
    EXPECT_NEAR(geo_vector_direction(east), kHalfPi, kAngleTol);
    EXPECT_NEAR(geo_vector_direction(south), kPi, kAngleTol);
    EXPECT_NEAR(geo_vector_direction(west), 3.0 * kHalfPi, kAngleTol);
    EXPECT_NEAR(geo_vector_direction(north_east), kPi / 4.0, kAngleTol);
}

TEST(VectorDirection, ZeroVectorPointsNorth) {
    geo_vector zero{0.0, 0.0, 1.0};
    EXPECT_EQ(geo_vector_direction(zero), 0.0);
}

TEST(VectorReverse, NegatesAllComponentsInPlace) {
    geo_vector v{1.5, -2.5, 3.5};
    geo_vector& same = geo_vector_reverse(v);
    EXPECT_EQ(&same, &v);
    EXPECT_EQ(v.x, -1.5);
    EXPECT_EQ(v.y, 2.5);
    EXPECT_EQ(v.z, -3.5);
    geo_vector_reverse(v);
    EXPECT_EQ(v.x, 1.5);
    EXPECT_EQ(v.y, -2.5);
    EXPECT_EQ(v.z, 3.5);
}

TEST(VectorAdd, AddsComponentWise) {
    geo_vector a{1.0, 2.0, 3.0};
    geo_vector b{10.0, -20.0, 30.5};
    geo_vector sum{};
    geo_vector_add(a, b, sum);
    EXPECT_EQ(sum.x, 11.0);
    EXPECT_EQ(sum.y, -18.0);
    EXPECT_EQ(sum.z, 33.5);
}

TEST(VectorAdd, SumMayBeOneOfTheInputs) {
    geo_vector a{1.0, 2.0, 3.0};
    geo_vector b{10.0, 20.0, 30.0};
    geo_vector_add(a, b, a);
    EXPECT_EQ(a.x, 11.0);
    EXPECT_EQ(a.y, 22.0);
    EXPECT_EQ(a.z, 33.0);
    geo_vector_add(b, b, b);
    EXPECT_EQ(b.x, 20.0);
    EXPECT_EQ(b.y, 40.0);
    EXPECT_EQ(b.z, 60.0);
}

} // namespace
