// How far converted points lie from a calibration's control points: the box around them, its
// diagonal as the measure of the calibration's size, and the verdict a host warns on.
#include "calibration_points.h"
#include "geodesy/calibration_reach.h"
#include "qv5/geotrans.h"

#include <gtest/gtest.h>

#include <cmath>
#include <limits>

namespace {

using namespace qv5::test;
using qv5::CalibrationReach;
using qv5::detail::distance_to_box;
using qv5::detail::PlanBox;
using qv5::detail::reach_limit;

constexpr double kDeg = 0.017453292519943295;

TEST(CalibrationReachBox, InsideAndOnTheEdgeIsZero) {
    const PlanBox box{100.0, 200.0, 50.0, 80.0};
    EXPECT_EQ(distance_to_box(box, 150.0, 60.0), 0.0);
    EXPECT_EQ(distance_to_box(box, 100.0, 80.0), 0.0);
}

TEST(CalibrationReachBox, OutsideASideOrACorner) {
    const PlanBox box{100.0, 200.0, 50.0, 80.0};
    EXPECT_EQ(distance_to_box(box, 250.0, 60.0), 50.0);
    EXPECT_EQ(distance_to_box(box, 150.0, 40.0), 10.0);
    EXPECT_EQ(distance_to_box(box, 203.0, 84.0), 5.0); // 3-4-5 from the corner
    EXPECT_EQ(distance_to_box(box, 97.0, 46.0), 5.0);
}

TEST(CalibrationReachBox, TheLimitIsTheDiagonalTimesTheMultipleOrTheMinimum) {
    const PlanBox box{0.0, 3000.0, 0.0, 4000.0};
    EXPECT_EQ(reach_limit(box, 1.0, 1000.0), 5000.0);
    EXPECT_EQ(reach_limit(box, 2.0, 1000.0), 10000.0);
    const PlanBox point{10.0, 10.0, 20.0, 20.0};
    EXPECT_EQ(reach_limit(point, 1.0, 1000.0), 1000.0);
}

void add(CGeoTransformation& t, const std::vector<geotrans_CalibrationPoint>& points) {
    for (const geotrans_CalibrationPoint& p : points) {
        t.AddPoint(&p, nullptr);
    }
}

TEST(CalibrationReach, ControlPointsAndPointsBetweenThemAreWithinReach) {
    const KnownSite site(dutch_positions());
    CGeoTransformation t;
    add(t, site.points());
    ASSERT_EQ(t.IsCalibrated(), 1);
    double distance = -1.0;
    double limit = -1.0;
    for (int i = 0; i < t.NumberOfPoints(); ++i) {
        EXPECT_EQ(CalibrationReach(t, t.NthPoint(i)->nee, distance, limit), 0);
        EXPECT_EQ(distance, 0.0);
    }
    // The box by hand from the control points' site coordinates.
    double min_n = 1e300, max_n = -1e300, min_e = 1e300, max_e = -1e300;
    for (const geotrans_CalibrationPoint& p : site.points()) {
        min_n = std::min(min_n, p.nee.north);
        max_n = std::max(max_n, p.nee.north);
        min_e = std::min(min_e, p.nee.east);
        max_e = std::max(max_e, p.nee.east);
    }
    EXPECT_DOUBLE_EQ(limit, std::hypot(max_n - min_n, max_e - min_e));
    // 200 m east of the box: outside, but well within reach.
    EXPECT_EQ(
        CalibrationReach(t, geo_nee{(min_n + max_n) / 2, max_e + 200.0, 0.0}, distance, limit), 0);
    EXPECT_NEAR(distance, 200.0, 1e-9);
}

TEST(CalibrationReach, APointInTheOtherHemisphereIsFarOutside) {
    const KnownSite site(dutch_positions());
    CGeoTransformation t;
    add(t, site.points());
    geo_nee far{};
    t.Forward(geo_llh{-52.1 * kDeg, 5.21 * kDeg, 45.0}, far);
    double distance = 0.0;
    double limit = 0.0;
    EXPECT_EQ(CalibrationReach(t, far, distance, limit), 1);
    EXPECT_GT(distance, 1e6);
    EXPECT_GT(limit, 1000.0);
    EXPECT_LT(limit, 20000.0);
}

TEST(CalibrationReach, AOnePointCalibrationReachesAFixedDistance) {
    CGeoTransformation t;
    const geotrans_CalibrationPoint p = calibration_point(
        u"ONE", geo_llh{52.1 * kDeg, 5.2 * kDeg, 40.0}, geo_nee{1000.0, 2000.0, 3.0}, kBoth);
    t.AddPoint(&p, nullptr);
    ASSERT_EQ(t.IsCalibrated(), 1);
    double distance = 0.0;
    double limit = 0.0;
    EXPECT_EQ(CalibrationReach(t, geo_nee{1600.0, 2800.0, 0.0}, distance, limit), 0);
    EXPECT_EQ(distance, 1000.0); // 600-800-1000: exactly at the limit is within reach
    EXPECT_EQ(limit, qv5::kCalibrationReachMinimum);
    EXPECT_EQ(CalibrationReach(t, geo_nee{1000.0, 3000.5, 0.0}, distance, limit), 1);
    EXPECT_EQ(distance, 1000.5);
}

TEST(CalibrationReach, CannotTellWithoutACalibrationOrUsableCoordinates) {
    CGeoTransformation empty;
    double distance = 0.0;
    double limit = 0.0;
    EXPECT_EQ(CalibrationReach(empty, geo_nee{0.0, 0.0, 0.0}, distance, limit), -1);
    EXPECT_EQ(distance, GEO_NULL);
    EXPECT_EQ(limit, GEO_NULL);
    const KnownSite site(dutch_positions());
    CGeoTransformation t;
    add(t, site.points());
    const double nan = std::numeric_limits<double>::quiet_NaN();
    const double inf = std::numeric_limits<double>::infinity();
    for (const geo_nee& bad : {geo_nee{GEO_NULL, 0.0, 0.0}, geo_nee{0.0, GEO_NULL, 0.0},
                               geo_nee{nan, 0.0, 0.0}, geo_nee{0.0, -inf, 0.0}}) {
        EXPECT_EQ(CalibrationReach(t, bad, distance, limit), -1);
        EXPECT_EQ(distance, GEO_NULL);
    }
    // Beyond what a double can measure: far, with no distance given.
    EXPECT_EQ(CalibrationReach(t, geo_nee{1.7e308, -1.7e308, 0.0}, distance, limit), 1);
    EXPECT_EQ(distance, GEO_NULL);
}

} // namespace
