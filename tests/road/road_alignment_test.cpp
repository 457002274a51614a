// The road's horizontal alignment: adding, chaining, stationing and editing elements.
#include "qv5/georoad.h"

#include "road_test_support.h"
#include "support/test_numbers.h"

#include <gtest/gtest.h>

#include <cmath>
#include <limits>

using qv5::test::arc_of;
using qv5::test::bits_of;
using qv5::test::entry_of;
using qv5::test::exit_of;
using qv5::test::is_geo_null;
using qv5::test::kHalfPi;
using qv5::test::kPi;
using qv5::test::kTwoPi;
using qv5::test::line_of;
using qv5::test::OpenRoad;
using qv5::test::radians;

namespace {

// A road of a northbound line of 100 m, a right arc of radius 200 m and length 100 m, and an
// eastbound line of 50 m whose own azimuth differs from the arc's exit.
void build_three(CGeoRoad& road) {
    CGeoLine north = line_of(0.0, 100.0);
    CGeoArc arc = arc_of(0.0, 200.0, 100.0, geodef_Right);
    CGeoLine east = line_of(kHalfPi, 50.0);
    road.AddHorizontal(georoad_Line, &north);
    road.AddHorizontal(georoad_Arc, &arc);
    road.AddHorizontal(georoad_Line, &east);
}

// The end point of element n, read back through a copy of the element.
geo_nee end_of(CGeoRoad& road, int n) {
    double station = 0.0;
    double azimuth = 0.0;
    CGeoPoint start;
    switch (road.NthHorizontalType(n)) {
    case georoad_Line: {
        CGeoLine e;
        road.GetNthHorizontal(n, georoad_Line, station, start, azimuth, &e);
        return e.EndPt().Grid();
    }
    case georoad_Arc: {
        CGeoArc e;
        road.GetNthHorizontal(n, georoad_Arc, station, start, azimuth, &e);
        return e.EndPt().Grid();
    }
    case georoad_EntrySpiral: {
        CGeoEntrySpiral e;
        road.GetNthHorizontal(n, georoad_EntrySpiral, station, start, azimuth, &e);
        return e.EndPt().Grid();
    }
    case georoad_ExitSpiral: {
        CGeoExitSpiral e;
        road.GetNthHorizontal(n, georoad_ExitSpiral, station, start, azimuth, &e);
        return e.EndPt().Grid();
    }
    default:
        return geo_nee{GEO_NULL, GEO_NULL, GEO_NULL};
    }
}

// Entry azimuth of element n as the element itself tells it.
double entry_azimuth_of(CGeoRoad& road, int n) {
    double station = 0.0;
    double azimuth = 0.0;
    CGeoPoint start;
    switch (road.NthHorizontalType(n)) {
    case georoad_Line: {
        CGeoLine e;
        road.GetNthHorizontal(n, georoad_Line, station, start, azimuth, &e);
        return e.GridAzimuth();
    }
    case georoad_Arc: {
        CGeoArc e;
        road.GetNthHorizontal(n, georoad_Arc, station, start, azimuth, &e);
        return e.EntryAzimuth();
    }
    case georoad_EntrySpiral: {
        CGeoEntrySpiral e;
        road.GetNthHorizontal(n, georoad_EntrySpiral, station, start, azimuth, &e);
        return e.EntryAzimuth();
    }
    default: {
        CGeoExitSpiral e;
        road.GetNthHorizontal(n, georoad_ExitSpiral, station, start, azimuth, &e);
        return e.EntryAzimuth();
    }
    }
}

double angle_gap(double a, double b) {
    double d = std::fmod(std::fabs(a - b), kTwoPi);
    return d > kPi ? kTwoPi - d : d;
}

} // namespace

TEST(RoadConstruction, NewRoadIsEmptyAtStationZero) {
    CGeoRoad road;
    EXPECT_EQ(road.NumberHorizontalElements(), 0);
    EXPECT_EQ(road.NumberVerticalElements(), 0);
    EXPECT_EQ(road.NumberTemplates(), 0);
    EXPECT_EQ(road.NumberTemplateApplications(), 0);
    EXPECT_EQ(road.StartStationHorizontal(), 0.0);
    EXPECT_EQ(road.EndStationHorizontal(), 0.0);
    EXPECT_TRUE(is_geo_null(road.StartAzimuthHorizontal()));
    EXPECT_TRUE(is_geo_null(road.EndAzimuthHorizontal()));
    EXPECT_TRUE(is_geo_null(road.StationInterval()));
    EXPECT_TRUE(is_geo_null(road.StartStationVertical()));
    EXPECT_TRUE(is_geo_null(road.EndStationVertical()));
    EXPECT_EQ(road.StartPtHorizontal().Northing(), 0.0);
    EXPECT_EQ(road.EndPtHorizontal().Easting(), 0.0);
    EXPECT_EQ(road.IsModified(), 0);
    EXPECT_EQ(road.Name().GetLength(), 0);
    EXPECT_EQ(road.FilePath().GetLength(), 0);
}

TEST(RoadConstruction, ResetEmptiesTheRoadButKeepsNameAndPath) {
    CGeoRoad road;
    road.SetName(CString("Main Street"));
    build_three(road);
    road.SetPOBInfo(1000.0, 5000.0, 2000.0, 20.0);
    road.Reset();
    EXPECT_EQ(road.NumberHorizontalElements(), 0);
    EXPECT_EQ(road.EndStationHorizontal(), 0.0);
    EXPECT_EQ(road.StartStationHorizontal(), 0.0);
    EXPECT_TRUE(is_geo_null(road.StationInterval()));
    EXPECT_TRUE(is_geo_null(road.EndAzimuthHorizontal()));
    EXPECT_EQ(road.StartPtHorizontal().Northing(), 0.0);
    EXPECT_EQ(road.IsModified(), 0);
    EXPECT_EQ(road.Name().ToUtf8(), "Main Street");
}

TEST(RoadFlags, SetNameLeavesModifiedFlagAndIntervalSetsIt) {
    CGeoRoad road;
    road.SetName(CString("A"));
    EXPECT_EQ(road.IsModified(), 0);
    road.SetStationInterval(25.0);
    EXPECT_EQ(road.StationInterval(), 25.0);
    EXPECT_EQ(road.IsModified(), 1);
    road.SetModifiedFlag(7);
    EXPECT_EQ(road.IsModified(), 7);
    road.ResetFilePath();
    EXPECT_EQ(road.FilePath().GetLength(), 0);
}

TEST(RoadAlignment, AddedLineAdvancesEndStationPointAndAzimuth) {
    CGeoRoad road;
    CGeoLine line = line_of(kHalfPi, 100.0); // due east
    ASSERT_EQ(road.AddHorizontal(georoad_Line, &line), 1);
    EXPECT_EQ(road.NumberHorizontalElements(), 1);
    EXPECT_EQ(road.EndStationHorizontal(), 100.0);
    EXPECT_NEAR(road.EndPtHorizontal().Easting(), 100.0, 1e-12);
    EXPECT_NEAR(road.EndPtHorizontal().Northing(), 0.0, 1e-12);
    EXPECT_DOUBLE_EQ(road.EndAzimuthHorizontal(), kHalfPi);
    EXPECT_DOUBLE_EQ(road.StartAzimuthHorizontal(), kHalfPi);
    EXPECT_EQ(road.IsModified(), 1);
}

TEST(RoadAlignment, AddedElementIsACopyTranslatedToTheRoadEnd) {
    CGeoRoad road;
    road.SetPOBInfo(0.0, 1000.0, 500.0, 20.0);
    CGeoLine line = line_of(0.0, 10.0);
    ASSERT_EQ(road.AddHorizontal(georoad_Line, &line), 1);
    // The caller's element is untouched; the road's copy starts at the point of beginning.
    EXPECT_EQ(line.StartPt().Northing(), 0.0);
    EXPECT_NEAR(road.EndPtHorizontal().Northing(), 1010.0, 1e-12);
    EXPECT_NEAR(road.EndPtHorizontal().Easting(), 500.0, 1e-12);
    EXPECT_EQ(road.HorzElementStartCoords(0).north, 1000.0);
}

TEST(RoadAlignment, AddedArcKeepsItsOwnAzimuthLeavingAKink) {
    OpenRoad road;
    CGeoLine line = line_of(0.0, 50.0); // due north
    CGeoArc arc = arc_of(radians(10.0), 200.0, 100.0, geodef_Right);
    ASSERT_EQ(road.AddHorizontal(georoad_Line, &line), 1);
    ASSERT_EQ(road.AddHorizontal(georoad_Arc, &arc), 1);
    // Translated, not rotated: the exit is the arc's own entry turned right by L / R.
    EXPECT_NEAR(road.EndAzimuthHorizontal(), radians(10.0) + 100.0 / 200.0, 1e-12);
    // The record tells the azimuth the road arrived with.
    EXPECT_EQ(road.HorzElementStartAzimuth(1), 0.0);
    EXPECT_EQ(road.EndStationHorizontal(), 150.0);
    EXPECT_NEAR(entry_azimuth_of(road, 1), radians(10.0), 1e-12);
    // Rechaining tangentially turns the arc to follow the line.
    road.UpdateHorizontalElements(0, 1);
    EXPECT_NEAR(entry_azimuth_of(road, 1), 0.0, 1e-12);
    EXPECT_NEAR(road.EndAzimuthHorizontal(), 100.0 / 200.0, 1e-12);
    EXPECT_EQ(road.EndStationHorizontal(), 150.0);
}

TEST(RoadAlignment, FirstArcRecordTakesTheRoadStartAzimuth) {
    CGeoRoad road;
    CGeoArc arc = arc_of(radians(30.0), 100.0, 50.0, geodef_Left);
    ASSERT_EQ(road.AddHorizontal(georoad_Arc, &arc), 1);
    EXPECT_NEAR(road.StartAzimuthHorizontal(), radians(30.0), 1e-15);
    EXPECT_NEAR(road.HorzElementStartAzimuth(0), radians(30.0), 1e-15);
    EXPECT_NEAR(road.EndAzimuthHorizontal(), radians(30.0) - 0.5, 1e-12);
}

TEST(RoadAlignment, SpiralsAdvanceByTheirLengthAndExitAzimuth) {
    CGeoRoad road;
    CGeoLine line = line_of(0.0, 100.0);
    CGeoEntrySpiral in = entry_of(0.0, 300.0, 60.0, geodef_Right);
    CGeoArc arc = arc_of(0.1, 300.0, 90.0, geodef_Right);
    CGeoExitSpiral out = exit_of(0.4, 300.0, 60.0, geodef_Right);
    ASSERT_EQ(road.AddHorizontal(georoad_Line, &line), 1);
    ASSERT_EQ(road.AddHorizontal(georoad_EntrySpiral, &in), 1);
    EXPECT_NEAR(road.EndAzimuthHorizontal(), 60.0 / 600.0, 1e-12); // L / 2R
    ASSERT_EQ(road.AddHorizontal(georoad_Arc, &arc), 1);
    EXPECT_NEAR(road.EndAzimuthHorizontal(), 0.1 + 90.0 / 300.0, 1e-12);
    ASSERT_EQ(road.AddHorizontal(georoad_ExitSpiral, &out), 1);
    EXPECT_NEAR(road.EndAzimuthHorizontal(), 0.4 + 60.0 / 600.0, 1e-12);
    EXPECT_DOUBLE_EQ(road.EndStationHorizontal(), 310.0);
    EXPECT_DOUBLE_EQ(road.HorzElementEndStation(1), 160.0);
    EXPECT_DOUBLE_EQ(road.HorzElementStartStation(3), 250.0);
}

TEST(RoadAlignment, EndStationPastTheCountIsUndefined) {
    CGeoRoad road;
    build_three(road);
    EXPECT_TRUE(is_geo_null(road.HorzElementEndStation(3)));
    EXPECT_TRUE(is_geo_null(road.HorzElementEndStation(100)));
    EXPECT_EQ(road.NthHorizontalType(3), georoad_NoHorizontal);
    EXPECT_EQ(road.NthHorizontalType(1), georoad_Arc);
}

TEST(RoadAlignment, GetNthHorizontalWithWrongTypeWritesNothing) {
    CGeoRoad road;
    build_three(road);
    double station = -1.0;
    double azimuth = -2.0;
    CGeoPoint start(geo_nee{7.0, 8.0, 9.0});
    CGeoLine out = line_of(1.0, 3.0);
    EXPECT_EQ(road.GetNthHorizontal(1, georoad_Line, station, start, azimuth, &out), 0);
    EXPECT_EQ(station, -1.0);
    EXPECT_EQ(azimuth, -2.0);
    EXPECT_EQ(start.Northing(), 7.0);
    EXPECT_DOUBLE_EQ(out.GridHDistance(), 3.0);
    EXPECT_EQ(road.GetNthHorizontal(3, georoad_Line, station, start, azimuth, &out), 0);
    EXPECT_EQ(station, -1.0);
}

TEST(RoadAlignment, GetNthHorizontalCopiesRecordAndElement) {
    CGeoRoad road;
    build_three(road);
    double station = 0.0;
    double azimuth = 0.0;
    CGeoPoint start;
    CGeoArc arc;
    ASSERT_EQ(road.GetNthHorizontal(1, georoad_Arc, station, start, azimuth, &arc), 1);
    EXPECT_EQ(station, 100.0);
    EXPECT_EQ(azimuth, 0.0);
    EXPECT_NEAR(start.Northing(), 100.0, 1e-12);
    EXPECT_DOUBLE_EQ(arc.Radius(), 200.0);
    EXPECT_DOUBLE_EQ(arc.GridArcLength(), 100.0);
    EXPECT_NEAR(arc.CentreToStart().EndPt().Northing(), 100.0, 1e-12);
}

TEST(RoadAlignment, InsertOnAnEmptyRoadFailsAndCannotAppend) {
    CGeoRoad road;
    CGeoLine line = line_of(0.0, 10.0);
    EXPECT_EQ(road.InsertHorizontal(0, georoad_Line, &line, 0), 0);
    EXPECT_EQ(road.NumberHorizontalElements(), 0);
    EXPECT_EQ(road.IsModified(), 0);
    ASSERT_EQ(road.AddHorizontal(georoad_Line, &line), 1);
    EXPECT_EQ(road.InsertHorizontal(1, georoad_Line, &line, 0), 0);
    EXPECT_EQ(road.InsertHorizontal(-1, georoad_Line, &line, 0), 0);
    EXPECT_EQ(road.NumberHorizontalElements(), 1);
}

TEST(RoadAlignment, InsertStartsWhereTheDisplacedElementStarted) {
    CGeoRoad road;
    build_three(road);
    CGeoLine extra = line_of(kHalfPi, 20.0);
    ASSERT_EQ(road.InsertHorizontal(1, georoad_Line, &extra, 0), 1);
    EXPECT_EQ(road.NumberHorizontalElements(), 4);
    EXPECT_EQ(road.HorzElementStartStation(1), 100.0);
    EXPECT_NEAR(road.HorzElementStartCoords(1).north, 100.0, 1e-12);
    EXPECT_EQ(road.HorzElementStartStation(2), 120.0);
    EXPECT_EQ(road.EndStationHorizontal(), 270.0);
    // Tangent 0: the inserted line keeps its own eastward azimuth.
    EXPECT_NEAR(road.HorzElementStartAzimuth(1), kHalfPi, 1e-15);
    geo_nee end = end_of(road, 1);
    EXPECT_NEAR(end.east, 20.0, 1e-12);
}

TEST(RoadAlignment, TangentInsertTakesTheStartAzimuthOfTheDisplacedElement) {
    CGeoRoad road;
    build_three(road); // record 1 (the arc) arrived northbound
    CGeoLine extra = line_of(kHalfPi, 20.0);
    ASSERT_EQ(road.InsertHorizontal(1, georoad_Line, &extra, 1), 1);
    EXPECT_NEAR(entry_azimuth_of(road, 1), 0.0, 1e-12);
    geo_nee end = end_of(road, 1);
    EXPECT_NEAR(end.north, 120.0, 1e-12);
    EXPECT_NEAR(end.east, 0.0, 1e-12);
}

TEST(RoadAlignment, InsertAtZeroMakesTheNewElementSetTheStartAzimuth) {
    CGeoRoad road;
    build_three(road);
    CGeoLine extra = line_of(kHalfPi, 20.0);
    ASSERT_EQ(road.InsertHorizontal(0, georoad_Line, &extra, 1), 1);
    EXPECT_NEAR(road.StartAzimuthHorizontal(), kHalfPi, 1e-15);
    EXPECT_NEAR(entry_azimuth_of(road, 0), kHalfPi, 1e-12);
    // The next elements are turned to follow it.
    EXPECT_NEAR(entry_azimuth_of(road, 1), kHalfPi, 1e-12);
}

TEST(RoadAlignment, SetNthKeepsItsOwnAzimuthAndTurnsFollowersWhenTangent) {
    CGeoRoad road;
    build_three(road);
    CGeoLine replacement = line_of(radians(45.0), 80.0);
    ASSERT_EQ(road.SetNthHorizontal(0, georoad_Line, &replacement, 1), 1);
    EXPECT_NEAR(road.StartAzimuthHorizontal(), radians(45.0), 1e-15);
    EXPECT_NEAR(road.HorzElementStartAzimuth(0), radians(45.0), 1e-15);
    EXPECT_NEAR(entry_azimuth_of(road, 1), radians(45.0), 1e-12);
    EXPECT_EQ(road.HorzElementStartStation(1), 80.0);
    EXPECT_EQ(road.EndStationHorizontal(), 230.0);
    geo_nee end = end_of(road, 0);
    geo_nee next = road.HorzElementStartCoords(1);
    EXPECT_EQ(end.north, next.north);
    EXPECT_EQ(end.east, next.east);
}

TEST(RoadAlignment, SetNthMayChangeTheType) {
    CGeoRoad road;
    build_three(road);
    CGeoEntrySpiral spiral = entry_of(0.0, 200.0, 40.0, geodef_Right);
    ASSERT_EQ(road.SetNthHorizontal(1, georoad_EntrySpiral, &spiral, 0), 1);
    EXPECT_EQ(road.NthHorizontalType(1), georoad_EntrySpiral);
    EXPECT_EQ(road.EndStationHorizontal(), 190.0);
    EXPECT_EQ(road.SetNthHorizontal(3, georoad_EntrySpiral, &spiral, 0), 0);
}

TEST(RoadAlignment, SetNthWithoutTangentTranslatesFollowers) {
    CGeoRoad road;
    build_three(road);
    CGeoLine replacement = line_of(radians(45.0), 80.0);
    ASSERT_EQ(road.SetNthHorizontal(0, georoad_Line, &replacement, 0), 1);
    EXPECT_NEAR(entry_azimuth_of(road, 1), 0.0, 1e-12); // the arc keeps its own azimuth
    EXPECT_NEAR(entry_azimuth_of(road, 2), kHalfPi, 1e-12);
    EXPECT_NEAR(road.HorzElementStartAzimuth(1), 0.0, 1e-12);
}

TEST(RoadAlignment, DeletingTheLastElementLeavesTheOldEnd) {
    CGeoRoad road;
    build_three(road);
    const double end_station = road.EndStationHorizontal();
    const double end_azimuth = road.EndAzimuthHorizontal();
    const double end_north = road.EndPtHorizontal().Northing();
    const double end_east = road.EndPtHorizontal().Easting();
    ASSERT_EQ(road.DeleteNthHorizontal(2, 0), 1);
    EXPECT_EQ(road.NumberHorizontalElements(), 2);
    EXPECT_EQ(road.EndStationHorizontal(), end_station);
    EXPECT_EQ(road.EndAzimuthHorizontal(), end_azimuth);
    EXPECT_EQ(road.EndPtHorizontal().Northing(), end_north);
    EXPECT_EQ(road.EndPtHorizontal().Easting(), end_east);
    // The next element is appended at that old end.
    CGeoLine line = line_of(0.0, 10.0);
    ASSERT_EQ(road.AddHorizontal(georoad_Line, &line), 1);
    EXPECT_EQ(road.HorzElementStartStation(2), end_station);
    EXPECT_EQ(road.HorzElementStartCoords(2).east, end_east);
}

TEST(RoadAlignment, DeletingElementZeroRestartsTheChainAtThePointOfBeginning) {
    CGeoRoad road;
    road.SetPOBInfo(500.0, 100.0, 200.0, 20.0);
    build_three(road);
    const double arc_arrival = road.HorzElementStartAzimuth(1);
    ASSERT_EQ(road.DeleteNthHorizontal(0, 0), 1);
    EXPECT_EQ(road.StartAzimuthHorizontal(), arc_arrival);
    EXPECT_EQ(road.HorzElementStartStation(0), 500.0);
    EXPECT_EQ(road.HorzElementStartCoords(0).north, 100.0);
    EXPECT_EQ(road.HorzElementStartCoords(0).east, 200.0);
    EXPECT_NEAR(road.EndStationHorizontal(), 650.0, 1e-12);
    EXPECT_EQ(road.DeleteNthHorizontal(2, 0), 0);
}

TEST(RoadAlignment, DeletingTheOnlyElementEmptiesTheList) {
    CGeoRoad road;
    CGeoLine line = line_of(0.0, 10.0);
    road.AddHorizontal(georoad_Line, &line);
    ASSERT_EQ(road.DeleteNthHorizontal(0, 1), 1);
    EXPECT_EQ(road.NumberHorizontalElements(), 0);
    EXPECT_EQ(road.EndStationHorizontal(), 10.0);
}

TEST(RoadPointOfBeginning, StationWithinTheDeadBandIsIgnored) {
    CGeoRoad road;
    road.SetPOBInfo(100.0, 0.0, 0.0, 20.0);
    build_three(road);
    road.SetPOBInfo(100.0004, 0.0, 0.0, 25.0);
    EXPECT_EQ(road.StartStationHorizontal(), 100.0);
    EXPECT_EQ(road.HorzElementStartStation(1), 200.0);
    EXPECT_EQ(road.StationInterval(), 25.0); // the interval is always taken
    road.SetPOBInfo(100.0005, 0.0, 0.0, 25.0);
    EXPECT_EQ(road.StartStationHorizontal(), 100.0005);
    EXPECT_EQ(road.HorzElementStartStation(1), 200.0005);
}

TEST(RoadPointOfBeginning, PointWithinTheDeadBandDoesNotMoveTheAlignment) {
    CGeoRoad road;
    road.SetPOBInfo(0.0, 1000.0, 2000.0, 20.0);
    build_three(road);
    const double end_north = road.EndPtHorizontal().Northing();
    road.SetPOBInfo(0.0, 1000.0004, 2000.0004, 20.0);
    EXPECT_EQ(road.StartPtHorizontal().Northing(), 1000.0);
    EXPECT_EQ(road.EndPtHorizontal().Northing(), end_north);
    road.SetPOBInfo(0.0, 1010.0, 2000.0, 20.0);
    EXPECT_EQ(road.StartPtHorizontal().Northing(), 1010.0);
    EXPECT_NEAR(road.EndPtHorizontal().Northing(), end_north + 10.0, 1e-9);
    EXPECT_TRUE(is_geo_null(road.StartPtHorizontal().Elevation()));
}

TEST(RoadPointOfBeginning, EmptyRoadStartsWhereThePointOfBeginningIs) {
    CGeoRoad road;
    road.SetPOBInfo(1000.0, 50.0, 60.0, 20.0);
    EXPECT_EQ(road.EndStationHorizontal(), 1000.0);
    EXPECT_EQ(road.EndPtHorizontal().Northing(), 50.0);
    CGeoLine line = line_of(0.0, 10.0);
    road.AddHorizontal(georoad_Line, &line);
    EXPECT_EQ(road.HorzElementStartStation(0), 1000.0);
    EXPECT_EQ(road.EndStationHorizontal(), 1010.0);
}

TEST(RoadAlignment, UpdateStationingOnlyRestations) {
    OpenRoad road;
    build_three(road);
    const double end_north = road.EndPtHorizontal().Northing();
    road.SetModifiedFlag(0);
    road.UpdateStationing(5); // past the count: only the end station is set
    EXPECT_EQ(road.EndStationHorizontal(), 250.0);
    EXPECT_EQ(road.IsModified(), 1);
    road.UpdateStationing(0);
    EXPECT_EQ(road.EndStationHorizontal(), 250.0);
    EXPECT_EQ(road.EndPtHorizontal().Northing(), end_north);
}

TEST(RoadAlignment, CopyHorizontalIsDeepAndLeavesTheRest) {
    CGeoRoad source;
    source.SetPOBInfo(10.0, 1.0, 2.0, 20.0);
    build_three(source);
    CGeoRoad road;
    road.SetStationInterval(50.0);
    road.AddVertical(georoad_VertPoint, 0.0, 10.0, 0.0, nullptr);
    ASSERT_EQ(road.CopyHorizontal(&source), 1);
    EXPECT_EQ(road.NumberHorizontalElements(), 3);
    EXPECT_EQ(road.StartStationHorizontal(), 10.0);
    EXPECT_EQ(road.EndStationHorizontal(), source.EndStationHorizontal());
    EXPECT_EQ(road.EndPtHorizontal().Easting(), source.EndPtHorizontal().Easting());
    EXPECT_EQ(road.StationInterval(), 50.0);
    EXPECT_EQ(road.NumberVerticalElements(), 1);
    // Independent: editing the source changes nothing here.
    source.DeleteNthHorizontal(0, 0);
    EXPECT_EQ(road.NumberHorizontalElements(), 3);
    EXPECT_DOUBLE_EQ(road.HorzElementEndStation(2), 260.0);
    CGeoRoad empty;
    ASSERT_EQ(road.CopyHorizontal(&empty), 1);
    EXPECT_EQ(road.NumberHorizontalElements(), 0);
    EXPECT_EQ(road.EndStationHorizontal(), 0.0);
    EXPECT_TRUE(is_geo_null(road.StartAzimuthHorizontal()));
}

TEST(RoadProposals, NextLikelyFollowsLineSpiralArcSpiralLine) {
    CGeoRoad road;
    georoad_HorzElementType type = georoad_Arc;
    double station = 0.0;
    double azimuth = 0.0;
    double radius = 0.0;
    geodef_Direction direction = geodef_Left;
    CGeoPoint start;
    ASSERT_EQ(road.NextLikelyHorizontal(type, station, start, azimuth, radius, direction), 1);
    EXPECT_EQ(type, georoad_Line);
    EXPECT_TRUE(is_geo_null(radius));
    EXPECT_EQ(direction, geodef_Right);
    EXPECT_TRUE(is_geo_null(azimuth));

    CGeoLine line = line_of(0.0, 100.0);
    road.AddHorizontal(georoad_Line, &line);
    road.NextLikelyHorizontal(type, station, start, azimuth, radius, direction);
    EXPECT_EQ(type, georoad_EntrySpiral);
    EXPECT_EQ(station, 100.0);
    EXPECT_NEAR(start.Northing(), 100.0, 1e-12);

    CGeoEntrySpiral in = entry_of(0.0, 300.0, 60.0, geodef_Left);
    road.AddHorizontal(georoad_EntrySpiral, &in);
    road.NextLikelyHorizontal(type, station, start, azimuth, radius, direction);
    EXPECT_EQ(type, georoad_Arc);
    EXPECT_EQ(radius, 300.0);
    EXPECT_EQ(direction, geodef_Left);
    EXPECT_NEAR(azimuth, kTwoPi - 0.1, 1e-12);

    CGeoArc arc = arc_of(kTwoPi - 0.1, 300.0, 30.0, geodef_Left);
    road.AddHorizontal(georoad_Arc, &arc);
    road.NextLikelyHorizontal(type, station, start, azimuth, radius, direction);
    EXPECT_EQ(type, georoad_ExitSpiral);
    EXPECT_EQ(radius, 300.0);
    EXPECT_EQ(direction, geodef_Left);

    CGeoExitSpiral out = exit_of(kTwoPi - 0.2, 300.0, 60.0, geodef_Left);
    road.AddHorizontal(georoad_ExitSpiral, &out);
    radius = 5.0;
    road.NextLikelyHorizontal(type, station, start, azimuth, radius, direction);
    EXPECT_EQ(type, georoad_Line);
    EXPECT_TRUE(is_geo_null(radius));
    EXPECT_EQ(direction, geodef_Right);
    EXPECT_EQ(station, 250.0);
}

TEST(RoadProposals, PreviousLikelyProposesALineAtTheElementStart) {
    CGeoRoad road;
    build_three(road);
    georoad_HorzElementType type = georoad_Arc;
    double station = -1.0;
    double azimuth = -1.0;
    double radius = 0.0;
    geodef_Direction direction = geodef_Left;
    CGeoPoint start;
    ASSERT_EQ(road.PreviousLikelyHorizontal(1, type, station, start, azimuth, radius, direction),
              1);
    EXPECT_EQ(type, georoad_Line);
    EXPECT_EQ(station, 100.0);
    EXPECT_EQ(azimuth, 0.0);
    EXPECT_NEAR(start.Northing(), 100.0, 1e-12);
    EXPECT_TRUE(is_geo_null(radius));
    EXPECT_EQ(direction, geodef_Right);
    station = -1.0;
    EXPECT_EQ(road.PreviousLikelyHorizontal(3, type, station, start, azimuth, radius, direction),
              0);
    EXPECT_EQ(road.PreviousLikelyHorizontal(-1, type, station, start, azimuth, radius, direction),
              0);
    EXPECT_EQ(station, -1.0);
}

TEST(RoadBadInput, UnusableElementsAreRefusedAndChangeNothing) {
    CGeoRoad road;
    build_three(road);
    road.SetModifiedFlag(0);
    const double end = road.EndStationHorizontal();
    CGeoLine line = line_of(0.0, 10.0);
    CGeoArc zero_radius = arc_of(0.0, 0.0, 10.0, geodef_Right);
    CGeoArc negative = arc_of(0.0, 100.0, -10.0, geodef_Right);
    CGeoArc infinite = arc_of(0.0, 100.0, std::numeric_limits<double>::infinity(), geodef_Right);
    CGeoArc nan_length = arc_of(0.0, 100.0, std::nan(""), geodef_Right);
    CGeoEntrySpiral no_radius = entry_of(0.0, 0.0, 10.0, geodef_Right);
    CGeoExitSpiral null_length = exit_of(0.0, 100.0, GEO_NULL, geodef_Right);
    CGeoArc blank;
    EXPECT_EQ(road.AddHorizontal(georoad_Arc, &zero_radius), 0);
    EXPECT_EQ(road.AddHorizontal(georoad_Arc, &negative), 0);
    EXPECT_EQ(road.AddHorizontal(georoad_Arc, &infinite), 0);
    EXPECT_EQ(road.AddHorizontal(georoad_Arc, &nan_length), 0);
    EXPECT_EQ(road.AddHorizontal(georoad_Arc, &blank), 0);
    EXPECT_EQ(road.AddHorizontal(georoad_EntrySpiral, &no_radius), 0);
    EXPECT_EQ(road.AddHorizontal(georoad_ExitSpiral, &null_length), 0);
    EXPECT_EQ(road.AddHorizontal(static_cast<georoad_HorzElementType>(4), &line), 0);
    EXPECT_EQ(road.AddHorizontal(georoad_NoHorizontal, &line), 0);
    EXPECT_EQ(road.AddHorizontal(georoad_Line, nullptr), 0);
    EXPECT_EQ(road.SetNthHorizontal(0, georoad_Arc, &zero_radius, 1), 0);
    EXPECT_EQ(road.InsertHorizontal(0, georoad_Arc, &negative, 1), 0);
    EXPECT_EQ(road.SetNthHorizontal(-1, georoad_Line, &line, 1), 0);
    EXPECT_EQ(road.DeleteNthHorizontal(-1, 1), 0);
    EXPECT_EQ(road.DeleteNthHorizontal(3, 1), 0);
    EXPECT_EQ(road.NumberHorizontalElements(), 3);
    EXPECT_EQ(road.EndStationHorizontal(), end);
    EXPECT_EQ(road.NthHorizontalType(1), georoad_Arc);
    EXPECT_EQ(road.IsModified(), 0);
}

TEST(RoadAlignment, IndexesOutsideTheListReadNoValue) {
    CGeoRoad road;
    EXPECT_EQ(road.NthHorizontalType(0), georoad_NoHorizontal);
    EXPECT_TRUE(is_geo_null(road.HorzElementEndStation(0)));
    build_three(road);
    EXPECT_EQ(road.NthHorizontalType(-1), georoad_NoHorizontal);
    EXPECT_TRUE(is_geo_null(road.HorzElementEndStation(-1)));
    EXPECT_TRUE(is_geo_null(road.HorzElementStartStation(3)));
    EXPECT_TRUE(is_geo_null(road.HorzElementStartAzimuth(-2)));
    EXPECT_TRUE(is_geo_null(road.HorzElementStartCoords(7).north));
    EXPECT_TRUE(is_geo_null(road.NthPVIStation(0)));
    EXPECT_TRUE(is_geo_null(road.NthPVIElevation(-1)));
    EXPECT_EQ(road.NthVerticalType(-1), georoad_NoVertical);
}

TEST(RoadAlignment, ElementsStartExactlyWhereTheirPredecessorsEnd) {
    CGeoRoad road;
    road.SetPOBInfo(0.0, 5000.0, 3000.0, 20.0);
    CGeoLine line = line_of(radians(30.0), 120.0);
    CGeoEntrySpiral in = entry_of(radians(30.0), 250.0, 50.0, geodef_Right);
    CGeoArc arc = arc_of(radians(30.0) + 0.1, 250.0, 75.0, geodef_Right);
    CGeoExitSpiral out = exit_of(radians(30.0) + 0.4, 250.0, 50.0, geodef_Right);
    road.AddHorizontal(georoad_Line, &line);
    road.AddHorizontal(georoad_EntrySpiral, &in);
    road.AddHorizontal(georoad_Arc, &arc);
    road.AddHorizontal(georoad_ExitSpiral, &out);
    for (int i = 1; i < 4; ++i) {
        const geo_nee end = end_of(road, i - 1);
        const geo_nee start = road.HorzElementStartCoords(i);
        EXPECT_EQ(bits_of(end.north), bits_of(start.north)) << i;
        EXPECT_EQ(bits_of(end.east), bits_of(start.east)) << i;
        EXPECT_LT(angle_gap(entry_azimuth_of(road, i), radians(30.0) + (i == 1   ? 0.0
                                                                        : i == 2 ? 0.1
                                                                                 : 0.4)),
                  1e-12);
    }
}
