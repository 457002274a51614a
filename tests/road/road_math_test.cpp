// The alignment's chaining and restationing and the profile's derivation as plain functions of
// records.
#include "road/horizontal_math.h"
#include "road/vertical_math.h"

#include "road_test_support.h"
#include "support/test_numbers.h"

#include <gtest/gtest.h>

#include <cmath>

using namespace qv5::detail;
using qv5::test::arc_of;
using qv5::test::is_geo_null;
using qv5::test::kHalfPi;
using qv5::test::kPi;
using qv5::test::line_of;

namespace {

HorzElementRecord record_of(georoad_HorzElementType type, void* element) {
    HorzElementRecord r{};
    r.type = type;
    r.element = element;
    return r;
}

} // namespace

TEST(ChainElements, TranslatesEachElementToItsPredecessorsEnd) {
    CGeoLine a = line_of(0.0, 10.0);
    CGeoLine b = line_of(kHalfPi, 5.0);
    HorzElementRecord records[] = {record_of(georoad_Line, &a), record_of(georoad_Line, &b)};
    ChainState start{100.0, 0.0, CGeoPoint(geo_nee{1.0, 2.0, 3.0})};
    ChainState end = chain_elements(records, 2, 0, 0, start);
    EXPECT_EQ(records[1].startStation, 110.0);
    EXPECT_EQ(records[1].startCoords.north, 11.0);
    EXPECT_EQ(records[1].startCoords.east, 2.0);
    EXPECT_EQ(records[1].startAzimuth, kHalfPi); // its own azimuth
    EXPECT_EQ(end.station, 115.0);
    EXPECT_EQ(end.point.Easting(), 7.0);
    EXPECT_EQ(end.point.Elevation(), 3.0); // the chain keeps the start's elevation
    EXPECT_EQ(end.azimuth, kHalfPi);
}

TEST(ChainElements, TangentTurnsEachElementOntoItsPredecessorsExit) {
    CGeoArc arc = arc_of(0.0, 100.0, 50.0, geodef_Right);
    CGeoLine line = line_of(kPi, 20.0);
    HorzElementRecord records[] = {record_of(georoad_Arc, &arc), record_of(georoad_Line, &line)};
    ChainState start{0.0, 0.0, CGeoPoint(geo_nee{0.0, 0.0, 0.0})};
    ChainState end = chain_elements(records, 2, 0, 1, start);
    EXPECT_NEAR(line.GridAzimuth(), 0.5, 1e-12);
    EXPECT_NEAR(records[1].startAzimuth, 0.5, 1e-12);
    // End of the arc: R sin(L/R), R (1 - cos(L/R)) for a right turn from north.
    EXPECT_NEAR(records[1].startCoords.north, 100.0 * std::sin(0.5), 1e-9);
    EXPECT_NEAR(records[1].startCoords.east, 100.0 * (1.0 - std::cos(0.5)), 1e-9);
    EXPECT_NEAR(end.point.Northing(), 100.0 * std::sin(0.5) + 20.0 * std::cos(0.5), 1e-9);
    EXPECT_NEAR(end.station, 70.0, 1e-12);
}

TEST(ChainElements, RecordsWithoutAnElementAreGivenTheRunningValuesAndSkipped) {
    CGeoLine line = line_of(0.0, 10.0);
    HorzElementRecord records[] = {record_of(static_cast<georoad_HorzElementType>(5), nullptr),
                                   record_of(georoad_Line, &line)};
    ChainState start{0.0, 1.0, CGeoPoint(geo_nee{0.0, 0.0, 0.0})};
    ChainState end = chain_elements(records, 2, 0, 0, start);
    EXPECT_EQ(records[0].startAzimuth, 1.0);
    EXPECT_EQ(records[1].startStation, 0.0);
    EXPECT_EQ(end.station, 10.0);
}

TEST(RestationElements, AddsLengthsFromTheFirstRecord) {
    CGeoLine a = line_of(0.0, 10.0);
    CGeoArc b = arc_of(0.0, 100.0, 30.0, geodef_Left);
    CGeoLine c = line_of(0.0, 5.0);
    HorzElementRecord records[] = {record_of(georoad_Line, &a), record_of(georoad_Arc, &b),
                                   record_of(georoad_Line, &c)};
    records[1].startStation = 1000.0;
    EXPECT_EQ(restation_elements(records, 3, 1, 1000.0), 1035.0);
    EXPECT_EQ(records[2].startStation, 1030.0);
    EXPECT_EQ(restation_elements(records, 3, 0, 0.0), 45.0);
    EXPECT_EQ(restation_elements(records, 3, 3, 7.0), 7.0);
}

TEST(ElementShape, UsableOnlyWithFiniteAzimuthLengthAndPositiveRadius) {
    EXPECT_TRUE(is_usable_shape(georoad_Line, ElementShape{0.0, 0.0, GEO_NULL, geodef_Right}));
    EXPECT_FALSE(is_usable_shape(georoad_Arc, ElementShape{0.0, 10.0, 0.0, geodef_Right}));
    EXPECT_FALSE(is_usable_shape(georoad_Arc, ElementShape{0.0, 10.0, -5.0, geodef_Right}));
    EXPECT_FALSE(
        is_usable_shape(georoad_Line, ElementShape{GEO_NULL, 1.0, GEO_NULL, geodef_Right}));
    EXPECT_FALSE(is_usable_shape(georoad_Line, ElementShape{0.0, -1.0, GEO_NULL, geodef_Right}));
    EXPECT_FALSE(is_usable_shape(georoad_NoHorizontal, ElementShape{0.0, 1.0, 1.0, geodef_Right}));
}

TEST(DeriveProfile, ParabolaCoefficientsFollowFromItsNeighbours) {
    VertElementRecord records[3] = {empty_vertical_record(georoad_VertPoint, nullptr),
                                    empty_vertical_record(georoad_VertParabola, nullptr),
                                    empty_vertical_record(georoad_VertPoint, nullptr)};
    const PviEntry entries[3] = {{georoad_VertPoint, 0.0, 10.0, 0.0},
                                 {georoad_VertParabola, 100.0, 12.0, 40.0},
                                 {georoad_VertPoint, 200.0, 11.0, 0.0}};
    ProfileLimits limits{GEO_NULL, GEO_NULL};
    derive_profile(records, entries, 3, 0, limits);
    const double a1 = std::atan(0.02);
    const double a2 = std::atan(-0.01);
    const VertElementRecord& c = records[1];
    EXPECT_EQ(c.gradeIn, a1);
    EXPECT_EQ(c.gradeOut, a2);
    EXPECT_EQ(c.curveStart, 80.0);
    EXPECT_EQ(c.curveEnd, 120.0);
    EXPECT_NEAR(c.curveStartElev, 12.0 - 20.0 * 0.02, 1e-12);
    EXPECT_NEAR(c.curveEndElev, 12.0 - 20.0 * 0.01, 1e-12);
    EXPECT_NEAR(c.meanGrade, (a1 + a2) / 2.0, 1e-17);
    EXPECT_NEAR(c.curveRate, (a2 - a1) / 80.0, 1e-17);
    // The polynomial meets the grade line at both ends of the curve.
    EXPECT_NEAR(parabola_elevation(c, 120.0), c.curveEndElev, 1e-12);
    EXPECT_NEAR(c.curveElevAtPVI,
                12.0 - 20.0 * 0.01 - (a2 - a1) / 80.0 * 400.0 - (a1 + a2) / 2.0 * 20.0, 1e-12);
    EXPECT_EQ(limits.start, 0.0);
    EXPECT_EQ(limits.end, 200.0);
}

TEST(DeriveProfile, PointsClearTheirGradesAndCurveLimits) {
    VertElementRecord records[1] = {empty_vertical_record(georoad_VertPoint, nullptr)};
    records[0].gradeIn = 1.0;
    const PviEntry entries[1] = {{georoad_VertPoint, 5.0, 6.0, 0.0}};
    ProfileLimits limits{GEO_NULL, GEO_NULL};
    derive_profile(records, entries, 1, 0, limits);
    EXPECT_TRUE(is_geo_null(records[0].gradeIn));
    EXPECT_EQ(records[0].curveStart, 5.0);
    EXPECT_EQ(records[0].curveEnd, 5.0);
    EXPECT_EQ(records[0].curveEndElev, 6.0);
    EXPECT_EQ(limits.start, 5.0);
    EXPECT_EQ(limits.end, 5.0);
}

TEST(ProfileFits, StrictComparisonsAgainstBothNeighbours) {
    VertElementRecord before = empty_vertical_record(georoad_VertPoint, nullptr);
    before.curveEnd = 100.0;
    VertElementRecord after = empty_vertical_record(georoad_VertParabola, nullptr);
    after.curveStart = 200.0;
    EXPECT_TRUE(fits_between(&before, &after, georoad_VertParabola, 150.0, 99.0));
    EXPECT_FALSE(fits_between(&before, &after, georoad_VertParabola, 150.0, 100.0));
    EXPECT_FALSE(fits_between(&before, &after, georoad_VertPoint, 100.0, 0.0));
    EXPECT_FALSE(fits_between(&before, &after, georoad_VertPoint, 200.0, 0.0));
    EXPECT_TRUE(fits_between(nullptr, nullptr, georoad_VertCircular, 0.0, 1e9));
    EXPECT_FALSE(fits_after(nullptr, georoad_VertParabola, 0.0, 10.0));
    EXPECT_TRUE(fits_after(nullptr, georoad_VertPoint, 0.0, 0.0));
}
