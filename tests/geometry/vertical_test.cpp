// The vertical profile elements: value holders for a grade break, a symmetric parabola and a
// circular curve at their PVIs.
#include "qv5/geovert.h"

#include <gtest/gtest.h>

namespace {

TEST(VertPoint, SetStoresStationAndElevation) {
    CGeoVertPoint pvi;
    pvi.Set(1250.5, 102.25);
    EXPECT_EQ(pvi.Station(), 1250.5);
    EXPECT_EQ(pvi.Elevation(), 102.25);
}

TEST(VertPoint, CopyEqualsItsSourceInEveryField) {
    CGeoVertPoint pvi;
    pvi.Set(-3.5, GEO_NULL);
    CGeoVertPoint copy(pvi);
    CGeoVertPoint assigned;
    assigned = pvi;
    for (CGeoVertPoint* p : {&copy, &assigned}) {
        EXPECT_EQ(p->Station(), -3.5);
        EXPECT_EQ(p->Elevation(), GEO_NULL);
    }
}

TEST(VertPoint, DefaultHoldsNullsUntilSet) {
    CGeoVertPoint pvi;
    EXPECT_EQ(pvi.Station(), GEO_NULL);
    EXPECT_EQ(pvi.Elevation(), GEO_NULL);
}

template <class Curve>
class VertCurve : public ::testing::Test {};
using CurveKinds = ::testing::Types<CGeoVertSymParabola, CGeoVertCircular>;
TYPED_TEST_SUITE(VertCurve, CurveKinds);

TYPED_TEST(VertCurve, SetStoresThePviAndTheCurveLength) {
    TypeParam curve;
    curve.Set(480.0, 96.125, 120.0);
    EXPECT_EQ(curve.StationPVI(), 480.0);
    EXPECT_EQ(curve.ElevationPVI(), 96.125);
    EXPECT_EQ(curve.CurveLength(), 120.0);
}

TYPED_TEST(VertCurve, ZeroOrNegativeCurveLengthIsStoredUnchanged) {
    TypeParam curve;
    curve.Set(480.0, 96.0, 0.0);
    EXPECT_EQ(curve.CurveLength(), 0.0);
    curve.Set(480.0, 96.0, -40.0);
    EXPECT_EQ(curve.CurveLength(), -40.0);
}

TYPED_TEST(VertCurve, CopyEqualsItsSourceInEveryField) {
    TypeParam curve;
    curve.Set(12.0, 34.0, 56.0);
    TypeParam copy(curve);
    TypeParam assigned;
    assigned.Set(1.0, 2.0, 3.0);
    TypeParam& same = (assigned = curve);
    EXPECT_EQ(&same, &assigned);
    curve.Set(0.0, 0.0, 0.0);
    for (TypeParam* c : {&copy, &assigned}) {
        EXPECT_EQ(c->StationPVI(), 12.0);
        EXPECT_EQ(c->ElevationPVI(), 34.0);
        EXPECT_EQ(c->CurveLength(), 56.0);
    }
}

TYPED_TEST(VertCurve, DefaultHoldsNullsUntilSet) {
    TypeParam curve;
    EXPECT_EQ(curve.StationPVI(), GEO_NULL);
    EXPECT_EQ(curve.ElevationPVI(), GEO_NULL);
    EXPECT_EQ(curve.CurveLength(), GEO_NULL);
}

} // namespace
