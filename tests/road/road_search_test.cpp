// The road's nearest-point and station searches.
#include "road/iterator_roads.h"

#include "qv5/georoad.h"
#include "qv5/georoaditer.h"
#include "qv5/geosurvey.h"

#include "support/test_numbers.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <cmath>
#include <random>

using qv5::test::build_curve_road;
using qv5::test::flat_template;
using qv5::test::grid_point;
using qv5::test::is_geo_null;
using qv5::test::kHalfPi;
using qv5::test::RoadBuilder;
using qv5::test::TestIterator;

namespace {

struct Snap {
    int result;
    double station;
    georoad_HorzTransitionType type;
};

Snap snap(CGeoRoad& road, CGeoPoint p, double tolerance) {
    // A kind no test here can give: shows that the type was left untouched.
    Snap s{-1, -999.0, georoad_TransArcArc};
    s.result = road.FindClosestHorzPt(p, tolerance, s.station, s.type);
    return s;
}

/// The design point at a station and offset, at elevation 0.
CGeoPoint road_point(CGeoRoad& road, double station, double offset) {
    CGeoRoadIterator it;
    it.Set(&road);
    CGeoPoint p;
    double azimuth = GEO_NULL;
    it.CenterlinePoint(station, offset, 0.0, p, azimuth, nullptr, nullptr);
    p.SetGrid(p.Northing(), p.Easting(), 0.0);
    return p;
}

} // namespace

TEST(FindClosestHorzPt, RoadWithoutElementsReturnsZero) {
    CGeoRoad road;
    const Snap s = snap(road, grid_point(0.0, 0.0, 0.0), 0.05);
    EXPECT_EQ(s.result, 0);
    EXPECT_EQ(s.station, -999.0);
}

TEST(FindClosestHorzPt, PointNearStartSnapsToStartWithNoTransition) {
    CGeoRoad road;
    RoadBuilder(road, 1000.0, 2000.0, 0.0, 20.0).line(100.0);
    const Snap s = snap(road, grid_point(1000.01, 2000.0, 0.0), 0.05);
    EXPECT_EQ(s.result, 1);
    EXPECT_EQ(s.station, 0.0);
    EXPECT_EQ(s.type, georoad_TransNone);
}

TEST(FindClosestHorzPt, PointNearEvenStationSnapsToIt) {
    CGeoRoad road;
    RoadBuilder(road, 1000.0, 2000.0, 0.0, 20.0).line(100.0);
    const Snap s = snap(road, grid_point(1039.97, 2000.01, 0.0), 0.05);
    EXPECT_EQ(s.result, 1);
    EXPECT_NEAR(s.station, 40.0, 1e-12);
    EXPECT_EQ(s.type, georoad_TransStationInterval);
    const Snap after = snap(road, grid_point(1060.03, 2000.0, 0.0), 0.05);
    EXPECT_EQ(after.result, 1);
    EXPECT_NEAR(after.station, 60.0, 1e-12);
}

TEST(FindClosestHorzPt, PointBeforeArcEndSnapsToArcLineTransition) {
    CGeoRoad road;
    RoadBuilder(road, 1000.0, 2000.0, 0.0, 7.0)
        .line(100.0)
        .arc(200.0, 100.0, geodef_Right)
        .line(100.0);
    const Snap s = snap(road, road_point(road, 199.98, 0.0), 0.05);
    EXPECT_EQ(s.result, 1);
    EXPECT_NEAR(s.station, 200.0, 1e-9);
    EXPECT_EQ(s.type, georoad_TransArcLine);
    // The start of the arc, from inside it.
    const Snap start = snap(road, road_point(road, 100.02, 0.01), 0.05);
    EXPECT_EQ(start.result, 1);
    EXPECT_NEAR(start.station, 100.0, 1e-9);
    EXPECT_EQ(start.type, georoad_TransLineArc);
}

TEST(FindClosestHorzPt, TransitionWinsOverEvenStation) {
    CGeoRoad road;
    RoadBuilder(road, 1000.0, 2000.0, 0.0, 20.0)
        .line(100.0)
        .entry_spiral(300.0, 60.0, geodef_Left)
        .line(100.0);
    const Snap s = snap(road, road_point(road, 99.98, 0.0), 0.05);
    EXPECT_EQ(s.result, 1);
    EXPECT_NEAR(s.station, 100.0, 1e-9);
    EXPECT_EQ(s.type, georoad_TransLineSpiral);
}

TEST(FindClosestHorzPt, LineToLineWritesStationButNotTypeAndNeedsEvenStation) {
    CGeoRoad odd;
    RoadBuilder(odd, 1000.0, 2000.0, 0.0, 7.0).line(100.0).turn(0.2).line(100.0);
    const Snap s = snap(odd, grid_point(1099.98, 2000.0, 0.0), 0.05);
    EXPECT_EQ(s.result, 0);
    EXPECT_NEAR(s.station, 100.0, 1e-9);    // written although the result is 0
    EXPECT_EQ(s.type, georoad_TransArcArc); // not written

    CGeoRoad even;
    RoadBuilder(even, 1000.0, 2000.0, 0.0, 20.0).line(100.0).turn(0.2).line(100.0);
    const Snap e = snap(even, grid_point(1099.98, 2000.0, 0.0), 0.05);
    EXPECT_EQ(e.result, 1);
    EXPECT_NEAR(e.station, 100.0, 1e-9);
    EXPECT_EQ(e.type, georoad_TransStationInterval);
}

TEST(FindClosestHorzPt, FarFromCentrelineOrSignificantStationWritesNothing) {
    CGeoRoad road;
    RoadBuilder(road, 1000.0, 2000.0, 0.0, 20.0).line(100.0);
    Snap s = snap(road, grid_point(1040.0, 2000.2, 0.0), 0.05); // offset beyond tolerance
    EXPECT_EQ(s.result, 0);
    EXPECT_EQ(s.station, -999.0);
    s = snap(road, grid_point(1050.0, 2000.0, 0.0), 0.05); // nothing significant near 50
    EXPECT_EQ(s.result, 0);
    EXPECT_EQ(s.station, -999.0);
    s = snap(road, grid_point(1200.0, 2000.0, 0.0), 0.05); // past the end
    EXPECT_EQ(s.result, 0);
    s = snap(road, grid_point(1050.0, 2000.0, GEO_NULL), 0.05); // no 3-D grid
    EXPECT_EQ(s.result, 0);
}

TEST(FindClosestHorzPt, UndefinedIntervalSnapsOnlyToStartAndTransitions) {
    CGeoRoad road;
    RoadBuilder(road, 1000.0, 2000.0, 0.0, GEO_NULL).line(100.0).arc(100.0, 50.0, geodef_Left);
    EXPECT_EQ(snap(road, grid_point(1040.0, 2000.0, 0.0), 0.05).result, 0);
    const Snap s = snap(road, grid_point(1099.99, 2000.0, 0.0), 0.05);
    EXPECT_EQ(s.result, 1);
    EXPECT_EQ(s.type, georoad_TransLineArc);
}

TEST(Min3DStationing, WithoutApplicationsIsUndefined) {
    CGeoRoad road;
    RoadBuilder(road, 0.0, 0.0, 0.0).line(200.0);
    EXPECT_TRUE(is_geo_null(road.Min3DStationing()));
}

TEST(Min3DStationing, GreaterOfStartsAndFirstApplication) {
    CGeoRoad road;
    RoadBuilder(road, 0.0, 0.0, 0.0).line(200.0);
    georoad_Error error = georoad_Error{};
    road.AddVertical(georoad_VertPoint, 10.0, 50.0, 0.0, &error);
    road.AddVertical(georoad_VertPoint, 200.0, 52.0, 0.0, &error);
    CGeoTemplate t = flat_template("T", 4.0, 0.0, 0.0);
    road.AddTemplate(&t);
    road.AddTemplateApplication(CString("T"), 120.0, geodef_BothSides);
    road.AddTemplateApplication(CString("T"), 50.0, geodef_LeftSide);
    EXPECT_EQ(road.Min3DStationing(), 50.0);
    CGeoRoad early;
    RoadBuilder(early, 0.0, 0.0, 0.0).line(200.0);
    early.AddVertical(georoad_VertPoint, 10.0, 50.0, 0.0, &error);
    early.AddTemplate(&t);
    early.AddTemplateApplication(CString("T"), 5.0, geodef_BothSides);
    EXPECT_EQ(early.Min3DStationing(), 10.0); // the profile starts later
}

TEST(FindStationWithClosestOffset, RoadWithoutElementsIsUndefined) {
    CGeoRoad road;
    CGeoPoint p = grid_point(1.0, 1.0, 0.0);
    double offset = 0.0;
    int element = 7;
    EXPECT_TRUE(is_geo_null(road.FindStationWithClosestOffset(p, offset, 0.01, &element)));
    EXPECT_EQ(element, -1);
    EXPECT_EQ(road.FindStationWithClosestOffset(p, offset, 0.01, nullptr), GEO_NULL);
}

TEST(FindStationWithClosestOffset, BeforeStartReportsTheLargerDistance) {
    CGeoRoad road;
    RoadBuilder(road, 1000.0, 2000.0, 0.0).line(100.0).line(100.0);
    CGeoPoint p = grid_point(990.0, 2003.0, 0.0);
    double offset = 0.0;
    int element = 7;
    const double station = road.FindStationWithClosestOffset(p, offset, 0.01, &element);
    EXPECT_NEAR(station, -10.0, 1e-9);
    EXPECT_NEAR(offset, 10.0, 1e-9); // |station| beats the 3 m offset
    EXPECT_EQ(element, 0);
    CGeoPoint near_line = grid_point(999.0, 2003.0, 0.0);
    road.FindStationWithClosestOffset(near_line, offset, 0.01, &element);
    EXPECT_NEAR(offset, 3.0, 1e-9);
}

TEST(FindStationWithClosestOffset, PastEndReportsTheSmallerDistance) {
    CGeoRoad straight;
    RoadBuilder(straight, 1000.0, 2000.0, 0.0).line(100.0);
    CGeoPoint p = grid_point(1102.0, 2005.0, 0.0);
    double offset = 0.0;
    int element = 7;
    const double station = straight.FindStationWithClosestOffset(p, offset, 0.01, &element);
    EXPECT_NEAR(station, 102.0, 1e-9);
    EXPECT_NEAR(offset, 2.0, 1e-9);
    EXPECT_EQ(element, 0);
    CGeoPoint q = grid_point(1110.0, 2002.0, 0.0);
    straight.FindStationWithClosestOffset(q, offset, 0.01, &element);
    EXPECT_NEAR(offset, 2.0, 1e-9); // the offset is now the smaller
}

TEST(FindStationWithClosestOffset, OutsideCornerOfTwoLinesGivesCornerDistance) {
    CGeoRoad road;
    RoadBuilder(road, 1000.0, 2000.0, 0.0).line(100.0).turn(kHalfPi).line(100.0);
    CGeoPoint p = grid_point(1104.0, 1997.0, 0.0);
    double offset = 0.0;
    int element = 7;
    const double station = road.FindStationWithClosestOffset(p, offset, 0.01, &element);
    EXPECT_NEAR(station, 100.0, 1e-9);
    EXPECT_NEAR(offset, 5.0, 1e-9); // 3-4-5 from the corner (1100, 2000)
    EXPECT_EQ(element, 0);
}

TEST(FindStationWithClosestOffset, InsideTheSmallerOffsetWins) {
    CGeoRoad road;
    RoadBuilder(road, 1000.0, 2000.0, 0.0).line(100.0).turn(kHalfPi).line(100.0);
    CGeoPoint p = grid_point(1096.0, 2001.0, 0.0); // 1 m right of line 0, 4 m left of line 1
    double offset = 0.0;
    int element = 7;
    double station = road.FindStationWithClosestOffset(p, offset, 0.01, &element);
    EXPECT_NEAR(station, 96.0, 1e-9);
    EXPECT_NEAR(offset, 1.0, 1e-9);
    EXPECT_EQ(element, 0);
}

TEST(FindStationWithClosestOffset, PastEndKeepsCandidateOnRoadway) {
    // The point is 4.5 m right of line 0 (on its 5 m roadway) and 2 m past the end of the last
    // element with an offset of 3 there: the roadway candidate is kept. Without templates the
    // point is on no roadway and the past-end candidate (the smaller distance, 2) wins.
    CGeoTemplate t = flat_template("T", 5.0, 0.0, 0.0);
    CGeoRoad paved;
    RoadBuilder(paved, 0.0, 0.0, 0.0).line(100.0).turn(kHalfPi).line(2.5);
    paved.AddTemplate(&t);
    paved.AddTemplateApplication(CString("T"), 0.0, geodef_BothSides);
    CGeoPoint p = grid_point(97.0, 4.5, 0.0);
    double offset = 0.0;
    int element = 7;
    double station = paved.FindStationWithClosestOffset(p, offset, 0.01, &element);
    EXPECT_EQ(element, 0);
    EXPECT_NEAR(station, 97.0, 1e-9);
    EXPECT_NEAR(offset, 4.5, 1e-9);

    CGeoRoad bare;
    RoadBuilder(bare, 0.0, 0.0, 0.0).line(100.0).turn(kHalfPi).line(2.5);
    station = bare.FindStationWithClosestOffset(p, offset, 0.01, &element);
    EXPECT_EQ(element, 1);
    EXPECT_NEAR(station, 104.5, 1e-9);
    EXPECT_NEAR(offset, 2.0, 1e-9);
}

namespace {

/// A spiral's station and offset of a point, its search started from the spiral's middle.
template <class Spiral>
void spiral_deltas(CGeoRoad& road, int k, georoad_HorzElementType type, CGeoPoint& p,
                   double tolerance, double& along, double& offset, double& length) {
    Spiral s;
    double station = GEO_NULL;
    double azimuth = GEO_NULL;
    CGeoPoint start;
    road.GetNthHorizontal(k, type, station, start, azimuth, &s);
    length = s.Length();
    s.GridDeltas(p, length * 0.5, tolerance, along, offset, azimuth);
}

/// Station and offset of a point against one element as the closest-offset search takes them:
/// lines by GridStation and GridOffset, arcs and spirals by GridDeltas, spirals from their middle.
bool element_deltas(CGeoRoad& road, int k, CGeoPoint& p, double tolerance, double& along,
                    double& offset, double& length) {
    double station = GEO_NULL;
    double azimuth = GEO_NULL;
    CGeoPoint start;
    double ignored = GEO_NULL;
    switch (road.NthHorizontalType(k)) {
    case georoad_Line: {
        CGeoLine line;
        road.GetNthHorizontal(k, georoad_Line, station, start, azimuth, &line);
        along = line.GridStation(p);
        offset = line.GridOffset(p);
        length = line.GridHDistance();
        return true;
    }
    case georoad_Arc: {
        CGeoArc arc;
        road.GetNthHorizontal(k, georoad_Arc, station, start, azimuth, &arc);
        arc.GridDeltas(p, along, offset, ignored);
        length = arc.GridArcLength();
        return true;
    }
    case georoad_EntrySpiral:
        spiral_deltas<CGeoEntrySpiral>(road, k, georoad_EntrySpiral, p, tolerance, along, offset,
                                       length);
        return true;
    case georoad_ExitSpiral:
        spiral_deltas<CGeoExitSpiral>(road, k, georoad_ExitSpiral, p, tolerance, along, offset,
                                      length);
        return true;
    default:
        return false;
    }
}

struct Closest {
    double station = GEO_NULL;
    double offset = 1e100;
    int element = -1;
};

/// The closest-offset search written out plainly: every element inverted, in order.
Closest reference_closest(CGeoRoad& road, CGeoPoint p, double tolerance) {
    Closest best;
    TestIterator on_road;
    on_road.Set(&road);
    const int count = road.NumberHorizontalElements();
    for (int k = 0; k < count; ++k) {
        double a = GEO_NULL;
        double o = GEO_NULL;
        double length = GEO_NULL;
        if (!element_deltas(road, k, p, tolerance, a, o, length) || a == GEO_NULL ||
            o == GEO_NULL) {
            continue;
        }
        const double s0 = road.HorzElementStartStation(k);
        if (a < 0.0) {
            if (k == 0) {
                best = {s0 + a, std::fabs(a) > std::fabs(o) ? std::fabs(a) : o, k};
            }
        } else if (a <= length) {
            if (std::fabs(o) < std::fabs(best.offset)) {
                best = {s0 + a, o, k};
            }
        } else if (k == count - 1) {
            const double beyond = a - length;
            if (std::fabs(o) < std::fabs(best.offset) && beyond < std::fabs(best.offset) &&
                on_road.CheckPointOnRoadWay(best.station, best.offset) == 0) {
                best = {s0 + a, beyond > std::fabs(o) ? o : beyond, k};
            }
        } else if (road.NthHorizontalType(k) == georoad_Line &&
                   road.NthHorizontalType(k + 1) == georoad_Line &&
                   std::fabs(o) < std::fabs(best.offset)) {
            CGeoLine line;
            double station = GEO_NULL;
            double azimuth = GEO_NULL;
            CGeoPoint start;
            road.GetNthHorizontal(k, georoad_Line, station, start, azimuth, &line);
            best = {s0 + length, geo_horz_dist(p.Grid(), line.EndPt().Grid()), k};
        }
    }
    return best;
}

/// A road that winds back and forth past itself: every kind of element, lines meeting at
/// corners, curves both ways, with a 2 m wide paved template (26 elements).
void build_winding_road(CGeoRoad& road) {
    RoadBuilder b(road, 5000.0, 7000.0, 0.3, 20.0);
    b.line(120.0);
    for (int i = 0; i < 5; ++i) {
        const geodef_Direction d = i % 2 == 0 ? geodef_Right : geodef_Left;
        b.entry_spiral(60.0, 40.0, d).arc(60.0, 110.0 + 10.0 * i, d).exit_spiral(60.0, 40.0, d);
        b.line(50.0).turn(i % 2 == 0 ? 0.4 : -0.4).line(70.0);
    }
    CGeoTemplate t = flat_template("Paved", 2.0, 0.0, 0.0);
    road.AddTemplate(&t);
    road.AddTemplateApplication(CString("Paved"), 0.0, geodef_BothSides);
}

} // namespace

TEST(FindStationWithClosestOffset, SameAsInvertingEveryElementOnAWindingRoad) {
    CGeoRoad road;
    build_winding_road(road);
    const int count = road.NumberHorizontalElements();
    ASSERT_EQ(count, 26);
    const double length = road.EndStationHorizontal() - road.StartStationHorizontal();
    std::mt19937 random(11);
    std::uniform_real_distribution<double> station(-60.0, length + 60.0);
    std::uniform_real_distribution<double> across(-1.0, 1.0);
    int skipped_somewhere = 0;
    for (int i = 0; i < 4000; ++i) {
        // Near the road, off it, and far out (where the inside of a bend sees many elements).
        const double reach = i % 4 == 0 ? 400.0 : (i % 4 == 1 ? 40.0 : 3.0);
        CGeoPoint p =
            road_point(road, std::clamp(station(random), 0.0, length), across(random) * reach);
        if (i % 7 == 0) {
            p.SetGrid(p.Northing() + station(random) * 0.1, p.Easting() - 30.0, 0.0);
        }
        const Closest expected = reference_closest(road, p, 0.01);
        double offset = GEO_NULL;
        int element = -2;
        const double found = road.FindStationWithClosestOffset(p, offset, 0.01, &element);
        ASSERT_EQ(element, expected.element) << i;
        ASSERT_EQ(offset, expected.offset) << i;
        if (expected.element >= 0) {
            ASSERT_EQ(found, expected.station) << i;
        }
        skipped_somewhere += expected.element >= 0 && expected.element < count - 2 ? 1 : 0;
    }
    // Most answers lie before the last elements, so the later ones were candidates for skipping.
    EXPECT_GT(skipped_somewhere, 2000);
}

TEST(FindStationWithClosestOffset, SameAsInvertingEveryElementAcrossTheWholeArea) {
    // Every 6 m over the area the winding road covers and 100 m around it: many points lie
    // about as far from two or three elements, where skipping one wrongly would show.
    CGeoRoad road;
    build_winding_road(road);
    const double length = road.EndStationHorizontal() - road.StartStationHorizontal();
    double north[2] = {1e300, -1e300};
    double east[2] = {1e300, -1e300};
    for (double s = 0.0; s <= length; s += 5.0) {
        CGeoPoint p = road_point(road, s, 0.0);
        north[0] = std::min(north[0], p.Grid().north - 100.0);
        north[1] = std::max(north[1], p.Grid().north + 100.0);
        east[0] = std::min(east[0], p.Grid().east - 100.0);
        east[1] = std::max(east[1], p.Grid().east + 100.0);
    }
    constexpr double kStep = 6.0;
    int points = 0;
    for (double n = north[0]; n <= north[1]; n += kStep) {
        for (double e = east[0]; e <= east[1]; e += kStep) {
            CGeoPoint p = grid_point(n, e, 0.0);
            const Closest expected = reference_closest(road, p, 0.01);
            double offset = GEO_NULL;
            int element = -2;
            const double found = road.FindStationWithClosestOffset(p, offset, 0.01, &element);
            ASSERT_EQ(element, expected.element) << n << " " << e;
            ASSERT_EQ(offset, expected.offset) << n << " " << e;
            if (expected.element >= 0) {
                ASSERT_EQ(found, expected.station) << n << " " << e;
            }
            ++points;
        }
    }
    EXPECT_GT(points, 10000);
}

TEST(FindClosestHorzPt, WithTheCallersIteratorSameAsWithAFreshOne) {
    CGeoRoad road;
    build_winding_road(road);
    CGeoRoad other;
    build_curve_road(other);
    CGeoRoadIterator warm;
    warm.Set(&road);
    CGeoRoadIterator elsewhere;
    elsewhere.Set(&other);
    CGeoRoadIterator unbound;
    const double length = road.EndStationHorizontal() - road.StartStationHorizontal();
    std::mt19937 random(5);
    std::uniform_real_distribution<double> station(-5.0, length + 5.0);
    std::uniform_real_distribution<double> across(-0.3, 0.3);
    int snapped = 0;
    for (int i = 0; i < 3000; ++i) {
        // Half of them a few centimetres from an even station, where most snap.
        double s = station(random);
        if (i % 2 == 0) {
            s = std::round(s / 20.0) * 20.0 + across(random) * 0.1;
        }
        CGeoPoint p = road_point(road, std::clamp(s, 0.0, length), across(random) * 0.1);
        const Snap fresh = snap(road, p, 0.05);
        for (CGeoRoadIterator* it : {&warm, &elsewhere, &unbound}) {
            Snap with{-1, -999.0, georoad_TransArcArc};
            with.result = road.FindClosestHorzPt(p, 0.05, with.station, with.type, *it);
            ASSERT_EQ(with.result, fresh.result) << i;
            ASSERT_EQ(with.station, fresh.station) << i;
            ASSERT_EQ(with.type, fresh.type) << i;
        }
        snapped += fresh.result;
    }
    EXPECT_GT(snapped, 1000);
    // The iterator of another road was left alone.
    CGeoPoint q = road_point(other, 100.0, 0.0);
    double s = GEO_NULL, o = GEO_NULL, dz = GEO_NULL, azimuth = GEO_NULL, grade = GEO_NULL;
    elsewhere.CenterlineDeltas(q, s, o, dz, azimuth, grade, nullptr);
    EXPECT_NEAR(s, 100.0, 1e-6);
}
