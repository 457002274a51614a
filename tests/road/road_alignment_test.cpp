// The road's horizontal alignment: adding, chaining, stationing and editing elements.
#include "qv5/geoarc.h"
#include "qv5/geoline.h"
#include "qv5/georoad.h"
#include "qv5/geospiral.h"

#include "support/test_numbers.h"

#include <gtest/gtest.h>

#include <cmath>

using qv5::test::is_geo_null;
using qv5::test::kPi;
using qv5::test::radians;

namespace {

CGeoLine line_of(double azimuth, double length) {
    CGeoPoint origin(geo_nee{0.0, 0.0, 0.0});
    CGeoLine line;
    line.Set(origin, azimuth, length, 0.0);
    return line;
}

CGeoArc arc_of(double azimuth, double radius, double length, geodef_Direction direction) {
    CGeoPoint origin(geo_nee{0.0, 0.0, 0.0});
    CGeoArc arc;
    arc.Set(origin, azimuth, radius, length, direction, 0.0);
    return arc;
}

} // namespace

TEST(RoadConstruction, NewRoadIsEmptyAtStationZero) {
    CGeoRoad road;
    EXPECT_EQ(road.NumberHorizontalElements(), 0);
    EXPECT_EQ(road.StartStationHorizontal(), 0.0);
    EXPECT_EQ(road.EndStationHorizontal(), 0.0);
    EXPECT_TRUE(is_geo_null(road.StartAzimuthHorizontal()));
    EXPECT_TRUE(is_geo_null(road.EndAzimuthHorizontal()));
    EXPECT_TRUE(is_geo_null(road.StationInterval()));
    EXPECT_EQ(road.StartPtHorizontal().Northing(), 0.0);
    EXPECT_EQ(road.IsModified(), 0);
}

TEST(RoadAlignment, AddedLineAdvancesEndStationPointAndAzimuth) {
    CGeoRoad road;
    CGeoLine line = line_of(kPi / 2.0, 100.0); // due east
    ASSERT_EQ(road.AddHorizontal(georoad_Line, &line), 1);
    EXPECT_EQ(road.EndStationHorizontal(), 100.0);
    EXPECT_NEAR(road.EndPtHorizontal().Easting(), 100.0, 1e-12);
    EXPECT_NEAR(road.EndPtHorizontal().Northing(), 0.0, 1e-12);
    EXPECT_DOUBLE_EQ(road.EndAzimuthHorizontal(), kPi / 2.0);
    EXPECT_DOUBLE_EQ(road.StartAzimuthHorizontal(), kPi / 2.0);
    EXPECT_EQ(road.IsModified(), 1);
}

TEST(RoadAlignment, AddedArcKeepsItsOwnAzimuthLeavingAKink) {
    CGeoRoad road;
    CGeoLine line = line_of(0.0, 50.0); // due north
    CGeoArc arc = arc_of(radians(10.0), 200.0, 100.0, geodef_Right);
    ASSERT_EQ(road.AddHorizontal(georoad_Line, &line), 1);
    ASSERT_EQ(road.AddHorizontal(georoad_Arc, &arc), 1);
    // The arc is translated, not rotated: its exit is its own entry turned by L / R.
    EXPECT_NEAR(road.EndAzimuthHorizontal(), radians(10.0) + 100.0 / 200.0, 1e-12);
    // Its record keeps the azimuth the road arrived with.
    EXPECT_EQ(road.HorzElementStartAzimuth(1), 0.0);
    EXPECT_EQ(road.EndStationHorizontal(), 150.0);
}
