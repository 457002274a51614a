// CGeoLine::Intersection: crossing, touching and overlapping lines within a tolerance.
//
// The cases that differ only in their coordinates are rows of tests/data/line_intersection.csv;
// the ones below it check something a row cannot (roles swapped, links kept, missing points).
// Unless stated otherwise "this" line runs 100 m due north from (0, 0, 10) to (100, 0, 20), so
// its elevation at station s is 10 + 0.1 s, and the tolerance is 1 mm.
#include "qv5/geoline.h"

#include "support/csv_table.h"

#include <gtest/gtest.h>

#include <cmath>
#include <ostream>
#include <string>
#include <vector>

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
// The table of cases

struct IntersectionCase {
    std::string name;
    geo_nee this_start;
    geo_nee this_end;
    double other[4]; // n1, e1, n2, e2
    double tolerance;
    unsigned short result;
    std::string station_check;
    double station;
    std::string point_check;
    geo_nee point;
};

std::vector<IntersectionCase> intersection_cases() {
    static const qv5::test::CsvTable table("line_intersection.csv");
    std::vector<IntersectionCase> cases;
    for (const qv5::test::CsvRow& row : table.rows()) {
        IntersectionCase c;
        c.name = row.text("name");
        c.this_start = {row.number("this_n1"), row.number("this_e1"), row.number("this_z1")};
        c.this_end = {row.number("this_n2"), row.number("this_e2"), row.number("this_z2")};
        c.other[0] = row.number("other_n1");
        c.other[1] = row.number("other_e1");
        c.other[2] = row.number("other_n2");
        c.other[3] = row.number("other_e2");
        c.tolerance = row.number("tolerance");
        c.result = static_cast<unsigned short>(row.number("result"));
        c.station_check = row.text("station_check");
        c.station = row.number("station");
        c.point_check = row.text("point_check");
        if (!c.point_check.empty()) {
            c.point = {row.number("point_n"), row.number("point_e"), row.number("point_z")};
        }
        cases.push_back(c);
    }
    return cases;
}

/// Names a case in test listings by its row name instead of its bytes.
void PrintTo(const IntersectionCase& c, std::ostream* os) {
    *os << c.name;
}

class LineIntersectionTable : public testing::TestWithParam<IntersectionCase> {};

TEST_P(LineIntersectionTable, GivesTheResultStationAndPoint) {
    const IntersectionCase& c = GetParam();
    CGeoLine line = line_between(c.this_start, c.this_end);
    CGeoLine other = other_line(c.other[0], c.other[1], c.other[2], c.other[3]);
    double station = kUntouched;
    CGeoPoint point = untouched_point();
    EXPECT_EQ(line.Intersection(other, station, point, c.tolerance), c.result);
    if (c.station_check == "untouched") {
        EXPECT_EQ(station, kUntouched);
    } else if (c.station_check == "near") {
        EXPECT_NEAR(station, c.station, kTol);
    } else {
        ASSERT_EQ(c.station_check, "exact");
        EXPECT_EQ(station, c.station);
    }
    if (c.point_check == "untouched") {
        expect_untouched(point);
    } else if (c.point_check == "near") {
        expect_at(point, c.point.north, c.point.east, c.point.elev);
    } else if (c.point_check == "exact") {
        EXPECT_EQ(point.Northing(), c.point.north);
        EXPECT_EQ(point.Easting(), c.point.east);
        EXPECT_EQ(point.Elevation(), c.point.elev);
    } else {
        ASSERT_TRUE(c.point_check.empty()) << c.point_check;
    }
}

INSTANTIATE_TEST_SUITE_P(Cases, LineIntersectionTable, testing::ValuesIn(intersection_cases()),
                         [](const testing::TestParamInfo<IntersectionCase>& param_info) {
                             return param_info.param.name;
                         });

TEST(LineIntersection, TableHoldsEveryCase) {
    EXPECT_EQ(intersection_cases().size(), 27u);
}

// ---------------------------------------------------------------------------------------------
// Cases a row cannot hold

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

TEST(LineIntersection, IdenticalLinesGiveSixAtTheEnd) {
    CGeoLine line = this_line();
    CGeoLine same = this_line();
    double station = kUntouched;
    CGeoPoint point;
    EXPECT_EQ(line.Intersection(same, station, point, kMm), 6);
    EXPECT_EQ(station, 100.0);
    expect_at(point, 100.0, 0.0, 20.0);
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
