// The road iterator's positioning: station and offset to grid, a measured point to station,
// offset and height, and the profile at a station.
#include "road/iterator_roads.h"

#include "qv5/georoad.h"
#include "qv5/georoaditer.h"

#include "support/test_numbers.h"

#include <gtest/gtest.h>

#include <cmath>
#include <random>

using qv5::test::grid_point;
using qv5::test::is_geo_null;
using qv5::test::kHalfPi;
using qv5::test::kPi;
using qv5::test::radians;
using qv5::test::RoadBuilder;

namespace {

/// North 100 m from (1000, 2000), then east 100 m: a 90 degree kink at (1100, 2000).
void build_kinked_road(CGeoRoad& road) {
    RoadBuilder(road, 1000.0, 2000.0, 0.0).line(100.0).turn(kHalfPi).line(100.0);
}

struct Deltas {
    double station = 0.0, offset = 0.0, dz = 0.0, azimuth = 0.0, grade = 0.0, radius = 0.0;
};

Deltas deltas_of(CGeoRoadIterator& it, CGeoPoint p) {
    Deltas d;
    it.CenterlineDeltas(p, d.station, d.offset, d.dz, d.azimuth, d.grade, &d.radius);
    return d;
}

// Independent profile values (a throwaway python3 evaluation of the profile formulas for PVIs
// 0/100, 300/106 with a 100 m parabola, 700/101).
constexpr double kElevationAtPvi300 = 105.59375891356167;
constexpr double kElevationAt280 = 105.45378569803876;
constexpr double kGradeAt280 = 0.01024832907539687;

} // namespace

TEST(IteratorReset, StationAtJointSelectsLaterElementWhileCenterlinePointKeepsEarlier) {
    CGeoRoad road;
    build_kinked_road(road);
    CGeoRoadIterator it;
    it.Set(&road);
    it.Reset(100.0);
    EXPECT_EQ(it.CurrentHorizontalElement(), 1);

    CGeoPoint p;
    double azimuth = GEO_NULL;
    it.CenterlinePoint(100.0, 0.0, 0.0, p, azimuth, nullptr, nullptr);
    EXPECT_EQ(it.CurrentHorizontalElement(), 0);
    EXPECT_NEAR(azimuth, 0.0, 1e-12); // element 0 runs north
    EXPECT_NEAR(p.Northing(), 1100.0, 1e-9);
    EXPECT_NEAR(p.Easting(), 2000.0, 1e-9);
}

TEST(IteratorReset, BeforeStartSelectsFirstAndPastEndSelectsLast) {
    CGeoRoad road;
    build_kinked_road(road);
    CGeoRoadIterator it;
    it.Set(&road);
    it.Reset(-5.0);
    EXPECT_EQ(it.CurrentHorizontalElement(), 0);
    it.Reset(200.0);
    EXPECT_EQ(it.CurrentHorizontalElement(), 1);
    it.Reset(GEO_NULL);
    EXPECT_EQ(it.CurrentHorizontalElement(), -1);
}

TEST(IteratorReset, EmptyRoadLeavesNoElement) {
    CGeoRoad road;
    CGeoRoadIterator it;
    it.Set(&road);
    it.Reset(10.0);
    EXPECT_EQ(it.CurrentHorizontalElement(), -1);
}

TEST(IteratorSet, ForgetsHorizontalElementButKeepsAdditionalOffset) {
    CGeoRoad road;
    build_kinked_road(road);
    CGeoRoadIterator it;
    it.SetAdditionalOffset(0.5);
    it.Set(&road);
    it.Reset(150.0);
    EXPECT_EQ(it.CurrentHorizontalElement(), 1);
    it.Set(&road);
    EXPECT_EQ(it.CurrentHorizontalElement(), -1);
    EXPECT_EQ(it.AdditionalOffset(), 0.5);
}

TEST(CenterlinePoint, TenMetresBeforeStartExtrapolatesFirstElementBackwards) {
    CGeoRoad road;
    build_kinked_road(road);
    CGeoRoadIterator it;
    it.Set(&road);
    CGeoPoint p;
    double azimuth = GEO_NULL;
    double radius = GEO_NULL;
    it.CenterlinePoint(-10.0, 5.0, 0.0, p, azimuth, &radius, nullptr);
    EXPECT_NEAR(p.Northing(), 990.0, 1e-9);
    EXPECT_NEAR(p.Easting(), 2005.0, 1e-9); // right of a northbound line is east
    EXPECT_EQ(radius, 2e100);
    EXPECT_TRUE(is_geo_null(p.Elevation())); // no profile
}

TEST(CenterlinePoint, BeyondEndExtrapolatesLastElement) {
    CGeoRoad road;
    build_kinked_road(road);
    CGeoRoadIterator it;
    it.Set(&road);
    CGeoPoint p;
    double azimuth = GEO_NULL;
    it.CenterlinePoint(230.0, -2.0, 0.0, p, azimuth, nullptr, nullptr);
    EXPECT_NEAR(p.Northing(), 1102.0, 1e-9); // left of an eastbound line is north
    EXPECT_NEAR(p.Easting(), 2130.0, 1e-9);
    EXPECT_NEAR(azimuth, kHalfPi, 1e-12);
}

TEST(CenterlinePoint, EmptyRoadGivesUndefinedPoint) {
    CGeoRoad road;
    CGeoRoadIterator it;
    it.Set(&road);
    CGeoPoint p(geo_nee{1.0, 2.0, 3.0});
    double azimuth = 1.0;
    it.CenterlinePoint(10.0, 0.0, 0.0, p, azimuth, nullptr, nullptr);
    EXPECT_TRUE(is_geo_null(p.Northing()));
    EXPECT_TRUE(is_geo_null(azimuth));
}

TEST(CenterlinePoint, NormalHeightIsSquareToTheGradeLine) {
    CGeoRoad road;
    RoadBuilder(road, 1000.0, 2000.0, 0.0).line(700.0);
    qv5::test::add_profile(road);
    CGeoRoadIterator it;
    it.Set(&road);
    CGeoPoint p;
    double azimuth = GEO_NULL;
    double grade = GEO_NULL;
    it.CenterlinePoint(100.0, 0.0, 1.0, p, azimuth, nullptr, &grade);
    const double g = std::atan(0.02);
    EXPECT_NEAR(grade, g, 1e-15);
    EXPECT_NEAR(p.Northing(), 1100.0 - std::sin(g), 1e-9);
    EXPECT_NEAR(p.Elevation(), 102.0 + std::cos(g), 1e-9);
}

TEST(CenterlinePoint, LeftTurningArcHasNegativeRadius) {
    CGeoRoad road;
    RoadBuilder(road, 0.0, 0.0, 0.0).arc(250.0, 100.0, geodef_Left);
    CGeoRoadIterator it;
    it.Set(&road);
    CGeoPoint p;
    double azimuth = GEO_NULL;
    double radius = GEO_NULL;
    it.CenterlinePoint(50.0, 0.0, 0.0, p, azimuth, &radius, nullptr);
    EXPECT_NEAR(radius, -250.0, 1e-9);
    // On a circle of radius 250 centred 250 west of the start.
    EXPECT_NEAR(std::hypot(p.Northing(), p.Easting() + 250.0), 250.0, 1e-9);
    EXPECT_NEAR(azimuth, 2.0 * kPi - 50.0 / 250.0, 1e-12);
}

TEST(CenterlineDeltas, PointInOutsideWedgeOfKinkGetsJointStationAndKeepsOffset) {
    CGeoRoad road;
    build_kinked_road(road);
    CGeoRoadIterator it;
    it.Set(&road);
    it.Reset(50.0); // warm on element 0
    const Deltas d = deltas_of(it, grid_point(1105.0, 1995.0, 0.0));
    EXPECT_NEAR(d.station, 100.0, 1e-9); // pinned to the joint
    EXPECT_NEAR(d.offset, -5.0, 1e-9);   // 5 m north of the eastbound line: left
    EXPECT_EQ(it.CurrentHorizontalElement(), 1);
}

TEST(CenterlineDeltas, ColdStartInKinkWedgeAlsoPinsToJoint) {
    CGeoRoad road;
    build_kinked_road(road);
    CGeoRoadIterator it;
    it.Set(&road);
    const Deltas d = deltas_of(it, grid_point(1105.0, 1995.0, 0.0));
    EXPECT_NEAR(d.station, 100.0, 1e-9);
    EXPECT_NEAR(d.offset, -5.0, 1e-9);
}

TEST(CenterlineDeltas, OnALineAnswersTheLinesOwnStationAndOffsetToTheBit) {
    // A one-line road (every point stays on it, extrapolated either way) whose line keeps the
    // bearing it was set with, 7 rad, beyond a whole turn: the iterator must answer exactly
    // what the line's own GridStation, GridOffset and GridAzimuth answer, from any point.
    CGeoRoad road;
    road.SetPOBInfo(250.0, 5000.0, 3000.0, 20.0);
    CGeoPoint origin(geo_nee{0.0, 0.0, 0.0});
    CGeoLine set_line;
    set_line.Set(origin, 7.0, 180.0, 0.0);
    road.AddHorizontal(georoad_Line, &set_line);
    CGeoLine line;
    double start_station = 0.0;
    double start_azimuth = 0.0;
    CGeoPoint start;
    ASSERT_NE(road.GetNthHorizontal(0, georoad_Line, start_station, start, start_azimuth, &line),
              0);
    CGeoRoadIterator it;
    it.Set(&road);
    std::mt19937_64 random(20261125);
    std::uniform_real_distribution<double> spread(-400.0, 400.0);
    for (int i = 0; i < 4000; ++i) {
        const CGeoPoint p = grid_point(5000.0 + spread(random), 3000.0 + spread(random), 10.0);
        const Deltas d = deltas_of(it, p);
        CGeoPoint q(p);
        ASSERT_EQ(d.station, start_station + line.GridStation(q)) << i;
        ASSERT_EQ(d.offset, line.GridOffset(q)) << i;
        ASSERT_EQ(d.azimuth, line.GridAzimuth()) << i;
    }
    EXPECT_EQ(line.GridAzimuth(), 7.0);
}

TEST(CenterlineDeltas, WithoutProfileGivesStationOffsetAzimuthOnly) {
    CGeoRoad road;
    build_kinked_road(road);
    CGeoRoadIterator it;
    it.Set(&road);
    const Deltas d = deltas_of(it, grid_point(1040.0, 2003.0, 55.0));
    EXPECT_NEAR(d.station, 40.0, 1e-9);
    EXPECT_NEAR(d.offset, 3.0, 1e-9);
    EXPECT_NEAR(d.azimuth, 0.0, 1e-12);
    EXPECT_EQ(d.radius, 2e100);
    EXPECT_TRUE(is_geo_null(d.dz));
    EXPECT_TRUE(is_geo_null(d.grade));
}

TEST(CenterlineDeltas, AdditionalOffsetLowersEveryHeightByItself) {
    CGeoRoad road;
    RoadBuilder(road, 1000.0, 2000.0, 0.0).line(700.0);
    qv5::test::add_profile(road);
    CGeoRoadIterator it;
    it.Set(&road);
    const Deltas plain = deltas_of(it, grid_point(1100.0, 2001.0, 103.0));
    EXPECT_NEAR(plain.dz, 1.0, 1e-9); // design 102 on the rising tangent
    it.SetAdditionalOffset(0.25);
    const Deltas raised = deltas_of(it, grid_point(1100.0, 2001.0, 103.0));
    EXPECT_NEAR(raised.dz, 0.75, 1e-9);
    CGeoPoint p;
    double azimuth = GEO_NULL;
    it.CenterlinePoint(100.0, 0.0, 0.0, p, azimuth, nullptr, nullptr);
    EXPECT_NEAR(p.Elevation(), 102.25, 1e-9);
}

TEST(CenterlineDeltas, TwoDimensionalPointYieldsNothing) {
    CGeoRoad road;
    build_kinked_road(road);
    CGeoRoadIterator it;
    it.Set(&road);
    const Deltas d = deltas_of(it, grid_point(1040.0, 2003.0, GEO_NULL));
    EXPECT_TRUE(is_geo_null(d.station));
    EXPECT_TRUE(is_geo_null(d.offset));
    EXPECT_TRUE(is_geo_null(d.azimuth));
    EXPECT_TRUE(is_geo_null(d.radius));
}

TEST(CenterlineDeltas, EmptyRoadAndUnboundIteratorYieldNothing) {
    CGeoRoad road;
    CGeoRoadIterator it;
    Deltas d = deltas_of(it, grid_point(1.0, 2.0, 3.0));
    EXPECT_TRUE(is_geo_null(d.station));
    it.Set(&road);
    d = deltas_of(it, grid_point(1.0, 2.0, 3.0));
    EXPECT_TRUE(is_geo_null(d.station));
    EXPECT_EQ(it.CurrentHorizontalElement(), -1);
}

TEST(CenterlineDeltas, NonFiniteCoordinatesNeverHang) {
    CGeoRoad road;
    qv5::test::build_curve_road(road);
    CGeoRoadIterator it;
    it.Set(&road);
    const double nan = std::nan("");
    const double inf = HUGE_VAL;
    for (const geo_nee g : {geo_nee{nan, 2000.0, 0.0}, geo_nee{1000.0, inf, 0.0},
                            geo_nee{-inf, inf, 0.0}, geo_nee{1e300, -1e300, 0.0}}) {
        const Deltas d = deltas_of(it, CGeoPoint(g));
        EXPECT_FALSE(std::isfinite(d.station) && std::isfinite(d.offset) &&
                     !is_geo_null(d.station) && std::fabs(d.offset) < 1e6);
    }
}

TEST(VerticalCurveDeltas, ProfileBranchesGiveHandValues) {
    CGeoRoad road;
    RoadBuilder(road, 0.0, 0.0, 0.0).line(800.0);
    qv5::test::add_profile(road);
    CGeoRoadIterator it;
    it.Set(&road);
    double e = GEO_NULL;
    double g = GEO_NULL;
    it.VerticalCurveDeltas(-50.0, e, g); // before the profile: first grade extended
    EXPECT_NEAR(e, 99.0, 1e-9);
    EXPECT_NEAR(g, std::atan(0.02), 1e-15);
    EXPECT_EQ(it.CurrentVerticalElement(), 0);
    it.VerticalCurveDeltas(100.0, e, g); // rising tangent
    EXPECT_NEAR(e, 102.0, 1e-9);
    it.VerticalCurveDeltas(280.0, e, g); // inside the parabola, before its PVI
    EXPECT_NEAR(e, kElevationAt280, 1e-9);
    EXPECT_NEAR(g, kGradeAt280, 1e-12);
    EXPECT_EQ(it.CurrentVerticalElement(), 1);
    it.VerticalCurveDeltas(300.0, e, g);
    EXPECT_NEAR(e, kElevationAtPvi300, 1e-9);
    it.VerticalCurveDeltas(500.0, e, g); // falling tangent
    EXPECT_NEAR(e, 103.5, 1e-9);
    EXPECT_NEAR(g, std::atan(-0.0125), 1e-15);
    it.VerticalCurveDeltas(700.0, e, g); // exactly the last PVI
    EXPECT_NEAR(e, 101.0, 1e-12);
    it.VerticalCurveDeltas(800.0, e, g); // past the end: last grade extended
    EXPECT_NEAR(e, 99.75, 1e-9);
    EXPECT_EQ(it.CurrentVerticalElement(), 2);
}

TEST(VerticalCurveDeltas, NoProfileGivesNullWithoutAdditionalOffset) {
    CGeoRoad road;
    build_kinked_road(road);
    CGeoRoadIterator it;
    it.Set(&road);
    it.SetAdditionalOffset(0.25);
    double e = 1.0;
    double g = 1.0;
    it.VerticalCurveDeltas(50.0, e, g);
    EXPECT_TRUE(is_geo_null(e));
    EXPECT_TRUE(is_geo_null(g));
}

// Line, entry spiral, arc, exit spiral, line: CenterlinePoint then CenterlineDeltas gives the
// station and offset back. Lines and arcs invert in closed form (1e-6 m covers rounding over
// 700 m of coordinates); on the spirals both the point series and the station iteration stop
// at the iterator's 0.001 m tolerance (the iteration ends once the along-track residual is below
// it), so their station and offset are good to a few millimetres: 0.003 m.
TEST(IteratorRoundTrip, RandomStationsAndOffsetsComeBack) {
    CGeoRoad road;
    qv5::test::build_curve_road(road);
    CGeoRoadIterator forward;
    CGeoRoadIterator back;
    forward.Set(&road);
    back.Set(&road);
    std::mt19937_64 rng(20261125);
    std::uniform_real_distribution<double> station_of(0.0, 710.0);
    std::uniform_real_distribution<double> offset_of(-30.0, 30.0);
    int spiral_points = 0;
    for (int i = 0; i < 10000; ++i) {
        const double station = station_of(rng);
        const double offset = offset_of(rng);
        CGeoPoint p;
        double azimuth = GEO_NULL;
        forward.CenterlinePoint(station, offset, 0.0, p, azimuth, nullptr, nullptr);
        p.SetGrid(p.Northing(), p.Easting(), 0.0);
        const Deltas d = deltas_of(back, p);
        const bool on_spiral =
            (station > 200.0 && station < 280.0) || (station > 430.0 && station < 510.0);
        spiral_points += on_spiral ? 1 : 0;
        const double tolerance = on_spiral ? 0.003 : 1e-6;
        ASSERT_NEAR(d.station, station, tolerance) << "station " << station << " offset " << offset;
        ASSERT_NEAR(d.offset, offset, tolerance) << "station " << station << " offset " << offset;
    }
    EXPECT_GT(spiral_points, 1000);
}

// A surveyor walking the road at 0.1 m steps: the station found never goes back and the
// current element never returns to one already left, at either offset.
TEST(IteratorWalk, StepsOfOneDecimetreNeverJumpBackAtJoints) {
    CGeoRoad road;
    qv5::test::build_curve_road(road);
    CGeoRoadIterator placer;
    placer.Set(&road);
    for (const double offset : {-7.5, 0.0, 7.5}) {
        CGeoRoadIterator walker;
        walker.Set(&road);
        double last_station = -1e9;
        int last_element = 0;
        for (int step = 0; step <= 7200; ++step) {
            const double station = -5.0 + 0.1 * step;
            CGeoPoint p;
            double azimuth = GEO_NULL;
            placer.CenterlinePoint(station, offset, 0.0, p, azimuth, nullptr, nullptr);
            p.SetGrid(p.Northing(), p.Easting(), 0.0);
            const Deltas d = deltas_of(walker, p);
            ASSERT_GT(d.station, last_station) << "at " << station;
            ASSERT_NEAR(d.station, station, 0.003);
            ASSERT_GE(walker.CurrentHorizontalElement(), last_element) << "at " << station;
            last_station = d.station;
            last_element = walker.CurrentHorizontalElement();
        }
        EXPECT_EQ(last_element, 4);
    }
}

TEST(IteratorCopy, CopyKeepsRoadElementsAndOffset) {
    CGeoRoad road;
    build_kinked_road(road);
    CGeoRoadIterator it;
    it.Set(&road);
    it.SetAdditionalOffset(0.1);
    it.Reset(150.0);
    CGeoRoadIterator copy(it);
    EXPECT_EQ(copy.CurrentHorizontalElement(), 1);
    EXPECT_EQ(copy.AdditionalOffset(), 0.1);
    CGeoRoadIterator assigned;
    assigned = it;
    const Deltas d = deltas_of(assigned, grid_point(1097.0, 2050.0, 0.0));
    EXPECT_NEAR(d.station, 150.0, 1e-9);
    EXPECT_NEAR(d.offset, 3.0, 1e-9); // south of an eastbound line: right
}

// ForgetPosition forgets the current element and the station as Set does, keeping only what the
// iterator took from the road: every point then gets, to the bit, what a freshly bound iterator
// gives it, however the points before it left the iterator.
TEST(IteratorForgetPosition, EveryQueryAnswersAsAfterSet) {
    CGeoRoad road;
    qv5::test::build_curve_road(road);
    qv5::test::add_profile(road);
    CGeoRoadIterator kept;
    kept.Set(&road);
    std::mt19937_64 rng(7);
    std::uniform_real_distribution<double> station_of(-20.0, 730.0);
    std::uniform_real_distribution<double> offset_of(-40.0, 40.0);
    for (int i = 0; i < 2000; ++i) {
        CGeoRoadIterator placer;
        placer.Set(&road);
        CGeoPoint p;
        double azimuth = GEO_NULL;
        placer.CenterlinePoint(station_of(rng), offset_of(rng), 0.3, p, azimuth, nullptr, nullptr);

        CGeoRoadIterator fresh;
        fresh.Set(&road);
        double s1, o1, dz1, a1, g1, r1;
        fresh.CenterlineDeltas(p, s1, o1, dz1, a1, g1, &r1);

        kept.ForgetPosition();
        EXPECT_EQ(kept.CurrentHorizontalElement(), -1);
        double s2, o2, dz2, a2, g2, r2;
        kept.CenterlineDeltas(p, s2, o2, dz2, a2, g2, &r2);
        ASSERT_EQ(qv5::test::bits_of(s1), qv5::test::bits_of(s2)) << i;
        ASSERT_EQ(qv5::test::bits_of(o1), qv5::test::bits_of(o2)) << i;
        ASSERT_EQ(qv5::test::bits_of(dz1), qv5::test::bits_of(dz2)) << i;
        ASSERT_EQ(qv5::test::bits_of(a1), qv5::test::bits_of(a2)) << i;
        ASSERT_EQ(qv5::test::bits_of(g1), qv5::test::bits_of(g2)) << i;
        ASSERT_EQ(qv5::test::bits_of(r1), qv5::test::bits_of(r2)) << i;
        ASSERT_EQ(fresh.CurrentHorizontalElement(), kept.CurrentHorizontalElement()) << i;
    }
}
