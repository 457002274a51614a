// The road iterator's cross sections: template choice and blending, the surface under a point,
// the roadway test, break lines and section profiles.
#include "road/iterator_roads.h"

#include "qv5/georoad.h"
#include "qv5/georoaditer.h"
#include "qv5/geosection.h"
#include "qv5/geotemplate.h"

#include "support/test_numbers.h"

#include <gtest/gtest.h>

#include <cmath>
#include <string>

using qv5::test::flat_template;
using qv5::test::grid_point;
using qv5::test::is_geo_null;
using qv5::test::RoadBuilder;
using qv5::test::TestIterator;

namespace {

/// A straight northbound road from (1000, 2000), 700 m, with the test profile.
void build_straight_road(CGeoRoad& road) {
    RoadBuilder(road, 1000.0, 2000.0, 0.0).line(700.0);
    qv5::test::add_profile(road);
}

/// Applications of templates A (5 m wide) at 100 and B (7 m wide) at 200 on both sides.
void apply_a_and_b(CGeoRoad& road) {
    CGeoTemplate a = flat_template("A", 5.0, -0.02, 0.0);
    CGeoTemplate b = flat_template("B", 7.0, -0.04, 0.0);
    road.AddTemplate(&a);
    road.AddTemplate(&b);
    road.AddTemplateApplication(CString("A"), 100.0, geodef_BothSides);
    road.AddTemplateApplication(CString("B"), 200.0, geodef_BothSides);
}

double shoulder_at(CGeoRoadIterator& it, geodef_RoadSide side, double station) {
    CGeoTemplate t;
    it.CalcTemplate(side, station, &t);
    return t.NumberElements() == 0 ? GEO_NULL : t.HOffsetShoulder();
}

double first_angle(CGeoRoadIterator& it, double station) {
    CGeoTemplate t;
    it.CalcTemplate(geodef_RightSide, station, &t);
    double sh = 0, sv = 0, dh = 0, dv = 0, angle = GEO_NULL;
    t.GetNthElement(0, geotemp_GradeWidth, sh, sv, dh, dv, angle);
    return angle;
}

std::string name_of(const unsigned short* name) {
    std::string out;
    for (; *name != 0; ++name) {
        out.push_back(static_cast<char>(*name));
    }
    return out;
}

} // namespace

TEST(CalcTemplate, BlendsBetweenPreviousAndNextApplication) {
    CGeoRoad road;
    build_straight_road(road);
    apply_a_and_b(road);
    CGeoRoadIterator it;
    it.Set(&road);
    EXPECT_NEAR(shoulder_at(it, geodef_RightSide, 150.0), 6.0, 1e-12);
    EXPECT_NEAR(first_angle(it, 150.0), -0.03, 1e-15);      // the angle is blended, not its tangent
    EXPECT_EQ(shoulder_at(it, geodef_LeftSide, 50.0), 5.0); // before the first: A
    EXPECT_EQ(shoulder_at(it, geodef_RightSide, 250.0), 7.0); // after the last: B
    // Within 0.001 m of the previous application the template is used unblended.
    EXPECT_EQ(shoulder_at(it, geodef_RightSide, 100.0005), 5.0);
    EXPECT_EQ(first_angle(it, 100.0005), -0.02);
}

TEST(CalcTemplate, EarlierApplicationWinsTieAtOneStation) {
    CGeoRoad road;
    build_straight_road(road);
    CGeoTemplate a = flat_template("A", 5.0, 0.0, 0.0);
    CGeoTemplate b = flat_template("B", 7.0, 0.0, 0.0);
    road.AddTemplate(&a);
    road.AddTemplate(&b);
    road.AddTemplateApplication(CString("B"), 100.0, geodef_BothSides);
    road.AddTemplateApplication(CString("A"), 100.0, geodef_BothSides);
    CGeoRoadIterator it;
    it.Set(&road);
    EXPECT_EQ(shoulder_at(it, geodef_RightSide, 150.0), 7.0);
    EXPECT_EQ(shoulder_at(it, geodef_RightSide, 50.0), 7.0);
}

TEST(CalcTemplate, SideApplicationsAreKeptApart) {
    CGeoRoad road;
    build_straight_road(road);
    CGeoTemplate a = flat_template("A", 5.0, 0.0, 0.0);
    road.AddTemplate(&a);
    road.AddTemplateApplication(CString("A"), 0.0, geodef_LeftSide);
    CGeoRoadIterator it;
    it.Set(&road);
    EXPECT_EQ(shoulder_at(it, geodef_LeftSide, 10.0), 5.0);
    EXPECT_TRUE(is_geo_null(shoulder_at(it, geodef_RightSide, 10.0)));
}

TEST(CalcTemplate, NoApplicationsLeavesResultEmpty) {
    CGeoRoad road;
    build_straight_road(road);
    CGeoRoadIterator it;
    it.Set(&road);
    CGeoTemplate t = flat_template("X", 3.0, 0.0, 0.0);
    it.CalcTemplate(geodef_RightSide, 10.0, &t);
    EXPECT_EQ(t.NumberElements(), 0);
    it.CalcTemplate(geodef_RightSide, 10.0, nullptr); // no crash
}

TEST(Intersection, FlatTemplateReproducesProfileElevationPlusTemplateHeight) {
    CGeoRoad road;
    build_straight_road(road);
    CGeoTemplate t = flat_template("Raised", 8.0, 0.0, 0.3);
    road.AddTemplate(&t);
    road.AddTemplateApplication(CString("Raised"), 0.0, geodef_BothSides);
    CGeoRoadIterator it;
    it.Set(&road);
    for (const double station : {20.0, 100.0, 240.0, 280.0, 330.0, 500.0}) {
        for (const double offset : {-7.9, -2.5, 0.5, 3.0, 7.9}) {
            CGeoPoint p = grid_point(1000.0 + station, 2000.0 + offset, 90.0);
            CGeoPoint surface;
            double along = GEO_NULL;
            double across = GEO_NULL;
            it.Intersection(p, 0.0, surface, along, across);
            double profile = GEO_NULL;
            double grade = GEO_NULL;
            it.VerticalCurveDeltas(station, profile, grade);
            EXPECT_NEAR(surface.Elevation(), profile + 0.3, 1e-9) << station << " " << offset;
            EXPECT_NEAR(surface.Northing(), 1000.0 + station, 1e-9);
            EXPECT_NEAR(across, 0.0, 1e-12);
            EXPECT_NEAR(along, std::atan(std::tan(grade)), 1e-12);
        }
    }
    // On the rising tangent the profile is known by hand: 100 + 0.02 x station.
    CGeoPoint p = grid_point(1100.0, 2002.0, 0.0);
    EXPECT_NEAR(it.Elevation(p), 102.3, 1e-9);
}

TEST(Intersection, PointOnCentrelineUsesLeftTemplate) {
    CGeoRoad road;
    build_straight_road(road);
    CGeoTemplate left = flat_template("Left", 5.0, 0.0, 0.0);
    CGeoTemplate right = flat_template("Right", 5.0, 0.0, 0.3); // a step at the centreline
    road.AddTemplate(&left);
    road.AddTemplate(&right);
    road.AddTemplateApplication(CString("Left"), 0.0, geodef_LeftSide);
    road.AddTemplateApplication(CString("Right"), 0.0, geodef_RightSide);
    CGeoRoadIterator it;
    it.Set(&road);
    CGeoPoint on_cl = grid_point(1100.0, 2000.0, 50.0);
    CGeoPoint surface;
    double along = GEO_NULL;
    double across = GEO_NULL;
    it.Intersection(on_cl, 0.0, surface, along, across);
    EXPECT_NEAR(surface.Elevation(), 102.0, 1e-9); // the left template, no step
    // Just right of it the right template's step at offset 0 is passed: 0.3 higher.
    CGeoPoint right_of = grid_point(1100.0, 2000.5, 50.0);
    it.Intersection(right_of, 0.0, surface, along, across);
    EXPECT_NEAR(surface.Elevation(), 102.3, 1e-9);
}

TEST(Intersection, BeyondShoulderOrWithoutGridGivesNothing) {
    CGeoRoad road;
    build_straight_road(road);
    CGeoTemplate t = flat_template("T", 5.0, -0.02, 0.0, true);
    road.AddTemplate(&t);
    road.AddTemplateApplication(CString("T"), 0.0, geodef_BothSides);
    CGeoRoadIterator it;
    it.Set(&road);
    CGeoPoint beyond = grid_point(1100.0, 2006.0, 100.0); // on the side slope: not evaluated
    CGeoPoint surface;
    double along = 1.0;
    double across = 1.0;
    it.Intersection(beyond, 0.0, surface, along, across);
    EXPECT_TRUE(is_geo_null(surface.Northing()));
    EXPECT_TRUE(is_geo_null(along));
    EXPECT_TRUE(is_geo_null(across));
    CGeoPoint flat = grid_point(1100.0, 2003.0, GEO_NULL);
    it.Intersection(flat, 0.0, surface, along, across);
    EXPECT_TRUE(is_geo_null(surface.Elevation()));
    EXPECT_TRUE(is_geo_null(it.Elevation(beyond)));
}

TEST(Intersection, CrossSlopeShowsAcrossTheRoad) {
    CGeoRoad road;
    RoadBuilder(road, 0.0, 0.0, 0.0).line(100.0);
    georoad_Error error = georoad_Error{};
    road.AddVertical(georoad_VertPoint, 0.0, 10.0, 0.0, &error);
    road.AddVertical(georoad_VertPoint, 100.0, 10.0, 0.0, &error);
    CGeoTemplate t = flat_template("T", 5.0, -0.05, 0.0);
    road.AddTemplate(&t);
    road.AddTemplateApplication(CString("T"), 0.0, geodef_BothSides);
    CGeoRoadIterator it;
    it.Set(&road);
    CGeoPoint p = grid_point(50.0, 2.0, 10.0);
    CGeoPoint surface;
    double along = GEO_NULL;
    double across = GEO_NULL;
    it.Intersection(p, 0.0, surface, along, across); // along north, across towards east
    EXPECT_NEAR(surface.Elevation(), 10.0 + 2.0 * std::tan(-0.05), 1e-12);
    EXPECT_NEAR(along, 0.0, 1e-12);
    EXPECT_NEAR(across, -0.05, 1e-12);                             // falling outward to the right
    it.Intersection(p, 3.141592653589793, surface, along, across); // across towards west
    EXPECT_NEAR(across, 0.05, 1e-12);
}

TEST(CheckPointOnRoadWay, ShoulderItselfIsOnRoadway) {
    CGeoRoad road;
    build_straight_road(road);
    CGeoTemplate left = flat_template("L", 4.0, 0.0, 0.0);
    CGeoTemplate right = flat_template("R", 6.0, 0.0, 0.0);
    road.AddTemplate(&left);
    road.AddTemplate(&right);
    road.AddTemplateApplication(CString("L"), 0.0, geodef_LeftSide);
    road.AddTemplateApplication(CString("R"), 0.0, geodef_RightSide);
    TestIterator it;
    it.Set(&road);
    EXPECT_EQ(it.CheckPointOnRoadWay(50.0, 6.0), 1);
    EXPECT_EQ(it.CheckPointOnRoadWay(50.0, 6.001), 0);
    EXPECT_EQ(it.CheckPointOnRoadWay(50.0, -4.0), 1);
    EXPECT_EQ(it.CheckPointOnRoadWay(50.0, -5.0), 0);
    EXPECT_EQ(it.CheckPointOnRoadWay(50.0, 0.0), 1); // 0 counts as right
}

TEST(CheckPointOnRoadWay, SideWithoutTemplateIsOffRoadway) {
    CGeoRoad road;
    build_straight_road(road);
    CGeoTemplate left = flat_template("L", 4.0, 0.0, 0.0);
    road.AddTemplate(&left);
    road.AddTemplateApplication(CString("L"), 0.0, geodef_LeftSide);
    TestIterator it;
    it.Set(&road);
    EXPECT_EQ(it.CheckPointOnRoadWay(50.0, 0.0), 0); // offset 0 asks the (empty) right side
    EXPECT_EQ(it.CheckPointOnRoadWay(50.0, -0.1), 1);
}

TEST(FindTemplateTransitionPoint, FindsCentrelineAndBreakOnACrossingLine) {
    CGeoRoad road;
    build_straight_road(road);
    CGeoTemplate t = flat_template("T", 5.0, -0.02, 0.0);
    road.AddTemplate(&t);
    road.AddTemplateApplication(CString("T"), 0.0, geodef_BothSides);
    TestIterator it;
    it.Set(&road);
    geo_nee a{1100.0, 1990.0, 0.0};
    geo_nee b{1100.0, 2010.0, 0.0};
    CGeoLine line(a, b);
    CGeoPoint found;
    ASSERT_EQ(it.FindTemplateTransitionPoint(line, 0, found), 1);
    EXPECT_NEAR(found.Easting(), 2000.0, 0.01);
    EXPECT_NEAR(found.Elevation(), 102.0, 1e-9);
    ASSERT_EQ(it.FindTemplateTransitionPoint(line, 1, found), 1);
    EXPECT_NEAR(found.Easting(), 2005.0, 0.01);
    EXPECT_NEAR(found.Elevation(), 102.0 + 5.0 * std::tan(-0.02), 1e-9);
    ASSERT_EQ(it.FindTemplateTransitionPoint(line, -1, found), 1);
    EXPECT_NEAR(found.Easting(), 1995.0, 0.01);
    EXPECT_EQ(it.FindTemplateTransitionPoint(line, 2, found), 0); // the template has 1 element
}

TEST(FindTemplateTransitionPoint, LineNotCrossingBreakFails) {
    CGeoRoad road;
    build_straight_road(road);
    CGeoTemplate t = flat_template("T", 5.0, -0.02, 0.0);
    road.AddTemplate(&t);
    road.AddTemplateApplication(CString("T"), 0.0, geodef_BothSides);
    TestIterator it;
    it.Set(&road);
    geo_nee a{1100.0, 2001.0, 0.0};
    geo_nee b{1100.0, 2004.0, 0.0};
    CGeoLine line(a, b);
    CGeoPoint found;
    EXPECT_EQ(it.FindTemplateTransitionPoint(line, 0, found), 0);
    EXPECT_EQ(it.FindTemplateTransitionPoint(line, 1, found), 0);
}

TEST(Section, BreaksSortedNamedByFeaturesWithoutSurfaceOffTheRoad) {
    CGeoRoad road;
    build_straight_road(road);
    CGeoTemplate t;
    t.SetName(CString("Road"));
    const geotemp_GradeWidthData lane{-0.02, 3.5};
    geotemp_FeatureData eop{};
    const char* label = "EOP";
    for (int i = 0; label[i] != 0; ++i) {
        eop.Name[i] = static_cast<unsigned short>(label[i]);
    }
    const geotemp_GradeWidthData verge{-0.25, 1.5};
    const geotemp_SideSlopeData slope{0.5, -0.5, 1.0};
    t.AddElement(geotemp_GradeWidth, &lane);
    t.AddElement(geotemp_Feature, &eop);
    t.AddElement(geotemp_GradeWidth, &verge);
    t.AddElement(geotemp_SideSlope, &slope);
    road.AddTemplate(&t);
    road.AddTemplateApplication(CString("Road"), 0.0, geodef_BothSides);
    CGeoRoadIterator it;
    it.Set(&road);
    geo_nee start{1100.0, 1990.0, 0.0};
    geo_nee end{1100.0, 2010.0, 0.0};
    CGeoSection section(start, end);
    it.Section(section);
    ASSERT_EQ(section.NumberOfSegments(), 5);
    const double lane_z = 102.0 + 3.5 * std::tan(-0.02);
    const double edge_z = lane_z + 1.5 * std::tan(-0.25);
    const double stations[] = {5.0, 6.5, 10.0, 13.5, 15.0};
    const double elevations[] = {edge_z, lane_z, 102.0, lane_z, edge_z};
    const unsigned long users[] = {0xFFFFFFFFul, 0xFFFFFFFEul, 0ul, 2ul, 0xFFFFFFFFul};
    const char* names[] = {"", "EOP", "CL###", "EOP", ""};
    for (int i = 0; i < 5; ++i) {
        EXPECT_NEAR(section.NthStation(i), stations[i], 0.01) << i;
        EXPECT_NEAR(section.NthElevation(i), elevations[i], 1e-3) << i;
        EXPECT_EQ(section.NthUserDWORD(i), users[i]) << i;
        EXPECT_EQ(name_of(section.NthName(i)), names[i]) << i;
    }
    EXPECT_EQ(section.NthSegmentType(0), geosect_NoSurface); // the start is off the road
    EXPECT_EQ(section.NthSegmentType(1), geosect_Surface);
    EXPECT_TRUE(is_geo_null(section.Start().elev));
    EXPECT_EQ(section.End().elev, 0.0); // off the road too: kept, and no closing segment
}

TEST(Section, LineNotCrossingCentrelineHasNoCentrelineBreakAndClosesOnRoad) {
    CGeoRoad road;
    build_straight_road(road);
    CGeoTemplate t = flat_template("T", 5.0, -0.02, 0.0);
    road.AddTemplate(&t);
    road.AddTemplateApplication(CString("T"), 0.0, geodef_BothSides);
    CGeoRoadIterator it;
    it.Set(&road);
    geo_nee start{1100.0, 2001.0, 0.0};
    geo_nee end{1100.0, 2004.0, 0.0};
    CGeoSection section(start, end);
    it.Section(section);
    for (int i = 0; i < section.NumberOfSegments(); ++i) {
        EXPECT_NE(name_of(section.NthName(i)), "CL###");
    }
    // Only the closing segment at the end: both ends lie on the roadway.
    ASSERT_EQ(section.NumberOfSegments(), 1);
    EXPECT_NEAR(section.NthStation(0), 3.0, 1e-9);
    EXPECT_NEAR(section.NthElevation(0), 102.0 + 4.0 * std::tan(-0.02), 1e-9);
    EXPECT_EQ(section.NthSegmentType(0), geosect_Surface);
    EXPECT_NEAR(section.Start().elev, 102.0 + 1.0 * std::tan(-0.02), 1e-9);
}
