// The road's vertical profile: PVIs, their validation and the quantities derived from them.
#include "qv5/georoad.h"

#include "road_test_support.h"
#include "support/test_numbers.h"

#include <gtest/gtest.h>

#include <cmath>
#include <limits>

using qv5::test::is_geo_null;
using qv5::test::kPi;
using qv5::test::OpenRoad;

namespace {

// PVIs at 1000 (point, 100.000), 1200 (parabola of 200 m, 106.000), 1500 (circular curve of
// 120 m, 97.000) and 1800 (point, 103.000): grades +3 %, -3 %, +2 %.
void build_profile(CGeoRoad& road) {
    ASSERT_EQ(road.AddVertical(georoad_VertPoint, 1000.0, 100.0, 0.0, nullptr), 1);
    ASSERT_EQ(road.AddVertical(georoad_VertParabola, 1200.0, 106.0, 200.0, nullptr), 1);
    ASSERT_EQ(road.AddVertical(georoad_VertCircular, 1500.0, 97.0, 120.0, nullptr), 1);
    ASSERT_EQ(road.AddVertical(georoad_VertPoint, 1800.0, 103.0, 0.0, nullptr), 1);
}

struct Pvi {
    double station, elevation, atPvi, gradeIn, gradeOut, curveStart, curveEnd, length;
};

} // namespace

TEST(RoadProfile, GradesAreAnglesOfRiseOverRun) {
    CGeoRoad road;
    build_profile(road);
    Pvi p{};
    ASSERT_EQ(road.GetNthVertical(1, georoad_VertParabola, p.station, p.elevation, p.atPvi,
                                  p.gradeIn, p.gradeOut, p.curveStart, p.curveEnd, p.length),
              1);
    EXPECT_EQ(p.gradeIn, std::atan(6.0 / 200.0));
    EXPECT_EQ(p.gradeOut, std::atan(-9.0 / 300.0));
    EXPECT_EQ(p.curveStart, 1100.0);
    EXPECT_EQ(p.curveEnd, 1300.0);
    EXPECT_EQ(p.length, 200.0);
    EXPECT_EQ(road.StartStationVertical(), 1000.0);
    EXPECT_EQ(road.EndStationVertical(), 1800.0);
    EXPECT_EQ(road.NumberVerticalElements(), 4);
    EXPECT_EQ(road.NthPVIStation(2), 1500.0);
    EXPECT_EQ(road.NthPVIElevation(2), 97.0);
    EXPECT_EQ(road.NthVerticalType(2), georoad_VertCircular);
    EXPECT_EQ(road.NthVerticalType(4), georoad_NoVertical);
}

// The equal-tangent parabolic vertical curve of the surveying textbooks (for example Wolf and
// Ghilani, Elementary Surveying, "Equal-tangent vertical curves"): with x measured from the
// beginning of the curve (BVC), y = y_BVC + g1 x + (g2 - g1) x^2 / (2 L), and the curve passes
// (g2 - g1) L / 8 from the PVI. Here g1 = +3 %, g2 = -3 %, L = 200 m, PVI 1200 at 106.000:
// y_BVC = y_EVC = 103.000, the curve at the PVI is 104.500, at 1150 and 1250 it is 104.125.
// The profile keeps grades as angles, so its curve differs from the textbook's by the
// difference between a grade and its angle (under a millimetre here).
TEST(RoadProfile, ParabolaFollowsTheTextbookEqualTangentCurve) {
    OpenRoad road;
    build_profile(road);
    const VertElementRecord& curve = road.VertRecords()[1];
    EXPECT_DOUBLE_EQ(curve.curveStartElev, 103.0);
    EXPECT_DOUBLE_EQ(curve.curveEndElev, 103.0);
    const double textbook[][2] = {
        {1100.0, 103.0}, {1150.0, 104.125}, {1200.0, 104.5}, {1250.0, 104.125}, {1300.0, 103.0}};
    for (const auto& row : textbook) {
        const double x = row[0] - curve.station;
        const double elevation =
            curve.curveElevAtPVI + curve.meanGrade * x + curve.curveRate * x * x;
        EXPECT_NEAR(elevation, row[1], 1e-3) << row[0];
    }
    // Stated in angles a1 = atan(g1), a2 = atan(g2), the textbook polynomial is met exactly
    // for this symmetric curve: at 1150, 103 + 50 a1 + (a2 - a1) 2500 / 400.
    const double a1 = std::atan(0.03);
    const double a2 = std::atan(-0.03);
    const double x = 1150.0 - curve.station;
    EXPECT_NEAR(curve.curveElevAtPVI + curve.meanGrade * x + curve.curveRate * x * x,
                103.0 + 50.0 * a1 + (a2 - a1) * 2500.0 / 400.0, 1e-9);
    EXPECT_DOUBLE_EQ(curve.curveRate, (a2 - a1) / 400.0);
    EXPECT_DOUBLE_EQ(curve.meanGrade, 0.0);
}

// A circular vertical curve centred on its PVI: the tangent points lie L / 2 either side of the
// PVI on the grade lines, y = y_PVI - (L / 2) tan(a1) before and y_PVI + (L / 2) tan(a2) after.
// The radius field holds ((L / 2) / cos(mean)) / tan(mean) with mean = (a1 + a2) / 2.
TEST(RoadProfile, CircularCurveTangentPointsAndRadius) {
    OpenRoad road;
    build_profile(road);
    const VertElementRecord& curve = road.VertRecords()[2];
    const double a1 = std::atan(-9.0 / 300.0);
    const double a2 = std::atan(6.0 / 300.0);
    EXPECT_EQ(curve.curveStart, 1440.0);
    EXPECT_EQ(curve.curveEnd, 1560.0);
    EXPECT_NEAR(curve.curveStartElev, 97.0 + 60.0 * 0.03, 1e-12); // 98.800
    EXPECT_NEAR(curve.curveEndElev, 97.0 + 60.0 * 0.02, 1e-12);   // 98.200
    const double mean = (a1 + a2) / 2.0;
    EXPECT_NEAR(curve.meanGrade, mean, 1e-15);
    // Independent value of the stated radius: -12007.64971799696 (computed by hand-written
    // script from the grades above).
    EXPECT_NEAR(curve.curveRate, -12007.64971799696, 1e-7);
    Pvi p{};
    p.atPvi = 5.0;
    ASSERT_EQ(road.GetNthVertical(2, georoad_VertCircular, p.station, p.elevation, p.atPvi,
                                  p.gradeIn, p.gradeOut, p.curveStart, p.curveEnd, p.length),
              1);
    EXPECT_TRUE(is_geo_null(p.atPvi)); // a circular curve reports no elevation at its PVI
    EXPECT_EQ(p.length, 120.0);
    EXPECT_EQ(p.curveStart, 1440.0);
}

TEST(RoadProfile, CircularCurveBetweenEqualGradesIsStraight) {
    OpenRoad road;
    road.AddVertical(georoad_VertPoint, 0.0, 10.0, 0.0, nullptr);
    road.AddVertical(georoad_VertCircular, 100.0, 11.0, 40.0, nullptr);
    road.AddVertical(georoad_VertPoint, 200.0, 12.0, 0.0, nullptr);
    const VertElementRecord& curve = road.VertRecords()[1];
    EXPECT_EQ(curve.curveRate, 1e100);
    EXPECT_EQ(curve.curveElevAtPVI, 0.0);
}

TEST(RoadProfile, ParabolaOnAnEmptyProfileIsRefused) {
    CGeoRoad road;
    georoad_Error error = georoad_ReadError;
    EXPECT_EQ(road.AddVertical(georoad_VertParabola, 0.0, 10.0, 50.0, &error), 0);
    EXPECT_EQ(error, georoad_VerticalError);
    error = georoad_ReadError;
    EXPECT_EQ(road.AddVertical(georoad_VertCircular, 0.0, 10.0, 50.0, &error), 0);
    EXPECT_EQ(error, georoad_VerticalError);
    EXPECT_EQ(road.NumberVerticalElements(), 0);
    EXPECT_EQ(road.IsModified(), 0);
}

TEST(RoadProfile, ErrorIsWrittenOnlyOnFailure) {
    CGeoRoad road;
    georoad_Error error = georoad_WriteError;
    EXPECT_EQ(road.AddVertical(georoad_VertPoint, 0.0, 10.0, 0.0, &error), 1);
    EXPECT_EQ(error, georoad_WriteError);
}

TEST(RoadProfile, PvisCloserThanATenthOfAMillimetreHaveAVerticalGrade) {
    CGeoRoad road;
    road.AddVertical(georoad_VertPoint, 0.0, 10.0, 0.0, nullptr);
    road.AddVertical(georoad_VertPoint, 0.00005, 11.0, 0.0, nullptr);
    road.AddVertical(georoad_VertPoint, 0.0001, 10.0, 0.0, nullptr);
    double s, e, cp, gi, go, cs, ce, len;
    ASSERT_EQ(road.GetNthVertical(1, georoad_VertPoint, s, e, cp, gi, go, cs, ce, len), 1);
    EXPECT_EQ(gi, kPi);
    ASSERT_EQ(road.GetNthVertical(2, georoad_VertPoint, s, e, cp, gi, go, cs, ce, len), 1);
    EXPECT_EQ(gi, -kPi);
    EXPECT_TRUE(is_geo_null(go));
}

TEST(RoadProfile, PointAtThePreviousCurveEndIsRefusedBySetNth) {
    CGeoRoad road;
    build_profile(road); // the parabola ends at 1300
    georoad_Error error = georoad_ReadError;
    EXPECT_EQ(road.SetNthVertical(2, georoad_VertPoint, 1300.0, 97.0, 0.0, &error), 0);
    EXPECT_EQ(error, georoad_VerticalError);
    EXPECT_EQ(road.NthVerticalType(2), georoad_VertCircular);
    EXPECT_EQ(road.NthPVIStation(2), 1500.0);
    EXPECT_EQ(road.SetNthVertical(2, georoad_VertPoint, 1300.01, 97.0, 0.0, &error), 1);
    EXPECT_EQ(road.NthVerticalType(2), georoad_VertPoint);
    // The next neighbour's curve start is tested strictly too.
    EXPECT_EQ(road.SetNthVertical(2, georoad_VertParabola, 1500.0, 97.0, 600.0, &error), 0);
}

TEST(RoadProfile, SetNthAllowsACurveAtIndexZero) {
    CGeoRoad road;
    build_profile(road);
    EXPECT_EQ(road.SetNthVertical(0, georoad_VertParabola, 1000.0, 100.0, 50.0, nullptr), 1);
    EXPECT_EQ(road.NthVerticalType(0), georoad_VertParabola);
    EXPECT_EQ(road.StartStationVertical(), 1000.0); // only a point sets the start
}

TEST(RoadProfile, DeletingTheLastPviLeavesTheEndStation) {
    OpenRoad road;
    build_profile(road);
    const double grade_out = road.VertRecords()[2].gradeOut;
    ASSERT_EQ(road.DeleteNthVertical(3), 1);
    EXPECT_EQ(road.EndStationVertical(), 1800.0);
    EXPECT_EQ(road.NumberVerticalElements(), 3);
    // The new last PVI keeps what the deleted one gave it.
    EXPECT_EQ(road.VertRecords()[2].gradeOut, grade_out);
    EXPECT_EQ(road.VertRecords()[2].curveEnd, 1560.0);
    EXPECT_EQ(road.DeleteNthVertical(3), 0);
    EXPECT_EQ(road.DeleteNthVertical(-1), 0);
}

TEST(RoadProfile, DeletingAMiddlePviRecomputesTheNeighbours) {
    OpenRoad road;
    build_profile(road);
    ASSERT_EQ(road.DeleteNthVertical(2), 1);
    // The parabola now runs into the point at 1800: grade out atan(-3 / 600).
    EXPECT_EQ(road.VertRecords()[1].gradeOut, std::atan(-3.0 / 600.0));
    EXPECT_EQ(road.VertRecords()[2].gradeIn, std::atan(-3.0 / 600.0));
}

TEST(RoadProfile, GetNthVerticalWithWrongTypeWritesNothing) {
    CGeoRoad road;
    build_profile(road);
    double v[8] = {1, 2, 3, 4, 5, 6, 7, 8};
    EXPECT_EQ(
        road.GetNthVertical(1, georoad_VertPoint, v[0], v[1], v[2], v[3], v[4], v[5], v[6], v[7]),
        0);
    EXPECT_EQ(
        road.GetNthVertical(4, georoad_VertPoint, v[0], v[1], v[2], v[3], v[4], v[5], v[6], v[7]),
        0);
    for (int i = 0; i < 8; ++i) {
        EXPECT_EQ(v[i], i + 1.0);
    }
}

TEST(RoadProfile, GetNthVerticalOfAPointGivesOnlyItsGrades) {
    CGeoRoad road;
    build_profile(road);
    double v[8] = {1, 2, 3, 4, 5, 6, 7, 8};
    ASSERT_EQ(
        road.GetNthVertical(0, georoad_VertPoint, v[0], v[1], v[2], v[3], v[4], v[5], v[6], v[7]),
        1);
    EXPECT_EQ(v[0], 1000.0);
    EXPECT_EQ(v[1], 100.0);
    EXPECT_TRUE(is_geo_null(v[2]));
    EXPECT_TRUE(is_geo_null(v[3])); // first PVI: no grade in
    EXPECT_EQ(v[4], std::atan(0.03));
    EXPECT_TRUE(is_geo_null(v[5]));
    EXPECT_TRUE(is_geo_null(v[6]));
    EXPECT_TRUE(is_geo_null(v[7]));
    ASSERT_EQ(
        road.GetNthVertical(3, georoad_VertPoint, v[0], v[1], v[2], v[3], v[4], v[5], v[6], v[7]),
        1);
    EXPECT_EQ(v[3], std::atan(6.0 / 300.0));
    EXPECT_TRUE(is_geo_null(v[4])); // last PVI: no grade out
}

TEST(RoadProfile, AppendedPointMustLieBeyondTheLastCurveEnd) {
    CGeoRoad road;
    road.AddVertical(georoad_VertPoint, 100.0, 10.0, 0.0, nullptr);
    georoad_Error error = georoad_ReadError;
    EXPECT_EQ(road.AddVertical(georoad_VertPoint, 100.0, 12.0, 0.0, &error), 0);
    EXPECT_EQ(error, georoad_VerticalError);
    EXPECT_EQ(road.AddVertical(georoad_VertParabola, 120.0, 12.0, 40.0, &error), 0);
    EXPECT_EQ(road.AddVertical(georoad_VertParabola, 120.0, 12.0, 39.0, &error), 1);
}

TEST(RoadProfile, CurveAfterALastCurveIsAppendedWithoutAnOverlapTest) {
    CGeoRoad road;
    road.AddVertical(georoad_VertPoint, 0.0, 10.0, 0.0, nullptr);
    road.AddVertical(georoad_VertParabola, 100.0, 12.0, 100.0, nullptr);
    // Overlaps the parabola (which would end at 150), yet is taken.
    EXPECT_EQ(road.AddVertical(georoad_VertParabola, 120.0, 11.0, 100.0, nullptr), 1);
    EXPECT_EQ(road.NumberVerticalElements(), 3);
}

TEST(RoadProfile, InsertDoesNotTestTheRecordItGoesBefore) {
    CGeoRoad road;
    build_profile(road);
    // Inserted before PVI 1 (the parabola starting at 1100) at a station that overlaps it:
    // only PVI 0 and PVI 2 are neighbours for the test.
    EXPECT_EQ(road.InsertVertical(1, georoad_VertPoint, 1150.0, 101.0, 0.0, nullptr), 1);
    EXPECT_EQ(road.NumberVerticalElements(), 5);
    EXPECT_EQ(road.NthPVIStation(1), 1150.0);
    EXPECT_EQ(road.NthPVIStation(2), 1200.0);
    georoad_Error error = georoad_ReadError;
    EXPECT_EQ(road.InsertVertical(5, georoad_VertPoint, 2000.0, 1.0, 0.0, &error), 0);
    EXPECT_EQ(road.InsertVertical(-1, georoad_VertPoint, 2000.0, 1.0, 0.0, &error), 0);
    EXPECT_EQ(road.SetNthVertical(5, georoad_VertPoint, 2000.0, 1.0, 0.0, &error), 0);
    EXPECT_EQ(error, georoad_ReadError); // out of range: no error code
}

TEST(RoadProfile, CircularCurveAsLastPviDoesNotMoveTheEndStation) {
    CGeoRoad road;
    road.AddVertical(georoad_VertPoint, 0.0, 10.0, 0.0, nullptr);
    road.AddVertical(georoad_VertPoint, 100.0, 12.0, 0.0, nullptr);
    ASSERT_EQ(road.EndStationVertical(), 100.0);
    road.AddVertical(georoad_VertCircular, 300.0, 11.0, 100.0, nullptr);
    EXPECT_EQ(road.EndStationVertical(), 100.0);
    road.AddVertical(georoad_VertParabola, 600.0, 15.0, 100.0, nullptr);
    EXPECT_EQ(road.EndStationVertical(), 600.0);
}

TEST(RoadProfile, UnusableValuesAreRefused) {
    CGeoRoad road;
    build_profile(road);
    road.SetModifiedFlag(0);
    const double inf = std::numeric_limits<double>::infinity();
    georoad_Error error = georoad_ReadError;
    EXPECT_EQ(road.AddVertical(georoad_VertPoint, std::nan(""), 1.0, 0.0, &error), 0);
    EXPECT_EQ(error, georoad_VerticalError);
    EXPECT_EQ(road.AddVertical(georoad_VertPoint, 3000.0, inf, 0.0, &error), 0);
    EXPECT_EQ(road.AddVertical(georoad_VertPoint, GEO_NULL, 1.0, 0.0, &error), 0);
    EXPECT_EQ(road.AddVertical(georoad_VertParabola, 3000.0, 1.0, -10.0, &error), 0);
    EXPECT_EQ(road.AddVertical(georoad_VertParabola, 3000.0, 1.0, 0.0, &error), 0);
    EXPECT_EQ(road.AddVertical(georoad_VertCircular, 3000.0, 1.0, inf, &error), 0);
    EXPECT_EQ(road.AddVertical(georoad_NoVertical, 3000.0, 1.0, 0.0, &error), 0);
    EXPECT_EQ(road.SetNthVertical(1, georoad_NoVertical, 1200.0, 1.0, 0.0, &error), 0);
    EXPECT_EQ(road.InsertVertical(1, georoad_VertCircular, 1010.0, 1.0, std::nan(""), &error), 0);
    EXPECT_EQ(road.NumberVerticalElements(), 4);
    EXPECT_EQ(road.IsModified(), 0);
    EXPECT_EQ(road.NthVerticalType(1), georoad_VertParabola);
}

TEST(RoadProfile, NextLikelyVerticalFollowsTheLastPvi) {
    CGeoRoad road;
    georoad_VertElementType type = georoad_VertCircular;
    double value = 1.0;
    EXPECT_EQ(road.NextLikelyVertical(type, value), 1);
    EXPECT_EQ(type, georoad_VertPoint);
    EXPECT_TRUE(is_geo_null(value));
    road.AddVertical(georoad_VertPoint, 0.0, 10.0, 0.0, nullptr);
    value = 2.0;
    road.NextLikelyVertical(type, value);
    EXPECT_EQ(type, georoad_VertParabola);
    EXPECT_EQ(value, 2.0);
    road.AddVertical(georoad_VertCircular, 100.0, 10.0, 10.0, nullptr);
    road.NextLikelyVertical(type, value);
    EXPECT_EQ(type, georoad_VertCircular);
    road.AddVertical(georoad_VertParabola, 200.0, 10.0, 10.0, nullptr);
    road.NextLikelyVertical(type, value);
    EXPECT_EQ(type, georoad_VertParabola);
}

TEST(RoadProfile, CopyVerticalIsDeepAndLeavesTheAlignment) {
    OpenRoad source;
    build_profile(source);
    OpenRoad road;
    CGeoLine line = qv5::test::line_of(0.0, 10.0);
    road.AddHorizontal(georoad_Line, &line);
    road.AddVertical(georoad_VertPoint, 5.0, 1.0, 0.0, nullptr);
    ASSERT_EQ(road.CopyVertical(&source), 1);
    EXPECT_EQ(road.NumberVerticalElements(), 4);
    EXPECT_NE(road.VertRecords()[1].element, source.VertRecords()[1].element);
    EXPECT_EQ(road.VertRecords()[1].curveRate, source.VertRecords()[1].curveRate);
    EXPECT_EQ(road.StartStationVertical(), 1000.0);
    EXPECT_EQ(road.EndStationVertical(), 1800.0);
    EXPECT_EQ(road.NumberHorizontalElements(), 1);
    source.Reset();
    EXPECT_EQ(road.NthPVIElevation(3), 103.0);
}
