// CGeoHorizontalAdjustment and CGeoVerticalAdjustment: the similarity and the inclined plane,
// their guards, and the zero-scale case. Expected values are worked by hand or with a few lines
// of plain Python.
#include "qv5/geoadjust.h"

#include <gtest/gtest.h>

#include <cmath>

namespace {

constexpr double kHalfPi = 1.5707963267948966;
constexpr double kMetres = 1e-9;

const geo_nee kOrigin{1000.0, 2000.0, 50.0};

TEST(HorizontalAdjustment, IdentityLeavesEveryPointUntouched) {
    CGeoHorizontalAdjustment identity(kOrigin, 1.0, 0.0, 0.0, 0.0);
    for (const geo_nee& start :
         {geo_nee{1234.5, 2345.5, GEO_NULL}, geo_nee{1.0, 2.0, 3.0}, geo_nee{GEO_NULL, 2.0, 3.0}}) {
        geo_nee p = start;
        identity.Forward(p);
        EXPECT_EQ(p.north, start.north);
        EXPECT_EQ(p.east, start.east);
        EXPECT_EQ(p.elev, start.elev);
        identity.Reverse(p);
        EXPECT_EQ(p.north, start.north);
        EXPECT_EQ(p.east, start.east);
    }
}

TEST(HorizontalAdjustment, QuarterTurnMovesNorthToEast) {
    CGeoHorizontalAdjustment turn(kOrigin, 1.0, kHalfPi, 0.0, 0.0);
    geo_nee p{kOrigin.north + 1.0, kOrigin.east, 7.0};
    turn.Forward(p);
    EXPECT_NEAR(p.north, kOrigin.north, 1e-12);
    EXPECT_NEAR(p.east, kOrigin.east + 1.0, 1e-12);
    EXPECT_EQ(p.elev, 7.0);
}

TEST(HorizontalAdjustment, ForwardFollowsTheSimilarity) {
    // s = 1.0002, theta = 0.01, shifts (N 3.5, E -1.25), point offset (dN 300, dE -400):
    // east  = s sin(t) dN + s cos(t) dE + 2000 - 1.25
    // north = s cos(t) dN - s sin(t) dE + 1000 + 3.5
    CGeoHorizontalAdjustment h(kOrigin, 1.0002, 0.01, 3.5, -1.25);
    geo_nee p{1300.0, 1600.0, 9.0};
    h.Forward(p);
    const double ss = 1.0002 * std::sin(0.01);
    const double sc = 1.0002 * std::cos(0.01);
    EXPECT_NEAR(p.east, ss * 300.0 + sc * -400.0 + 2000.0 - 1.25, kMetres);
    EXPECT_NEAR(p.north, sc * 300.0 - ss * -400.0 + 1000.0 + 3.5, kMetres);
    EXPECT_EQ(p.elev, 9.0);
    EXPECT_EQ(h.Scale(), 1.0002);
    EXPECT_EQ(h.Rotation(), 0.01);
    EXPECT_EQ(h.ShiftNorth(), 3.5);
    EXPECT_EQ(h.ShiftEast(), -1.25);
}

TEST(HorizontalAdjustment, ReverseUndoesForward) {
    CGeoHorizontalAdjustment h(kOrigin, 0.9997, -0.3, -12.5, 40.25);
    const geo_nee start{2345.678, -1234.567, 3.0};
    geo_nee p = start;
    h.Forward(p);
    h.Reverse(p);
    EXPECT_NEAR(p.north, start.north, kMetres);
    EXPECT_NEAR(p.east, start.east, kMetres);
}

TEST(HorizontalAdjustment, NullNorthOrEastIsLeftUntouched) {
    CGeoHorizontalAdjustment h(kOrigin, 1.0002, 0.01, 3.5, -1.25);
    for (const geo_nee& start : {geo_nee{1.0, GEO_NULL, 3.0}, geo_nee{GEO_NULL, 2.0, 3.0}}) {
        geo_nee p = start;
        h.Forward(p);
        EXPECT_EQ(p.north, start.north);
        EXPECT_EQ(p.east, start.east);
        h.Reverse(p);
        EXPECT_EQ(p.north, start.north);
        EXPECT_EQ(p.east, start.east);
    }
}

TEST(HorizontalAdjustment, ZeroScaleCollapsesForwardAndHasNoReverse) {
    CGeoHorizontalAdjustment h(kOrigin, 0.0, 0.4, 2.0, -3.0);
    EXPECT_EQ(h.Scale(), 0.0);
    geo_nee p{1500.0, 2500.0, 8.0};
    h.Forward(p);
    EXPECT_EQ(p.north, 1000.0 + 2.0);
    EXPECT_EQ(p.east, 2000.0 - 3.0);
    h.Reverse(p);
    EXPECT_EQ(p.north, GEO_NULL);
    EXPECT_EQ(p.east, GEO_NULL);
    EXPECT_EQ(p.elev, 8.0);
}

TEST(HorizontalAdjustment, CopiesAdjustAlike) {
    CGeoHorizontalAdjustment a(kOrigin, 1.0002, 0.01, 3.5, -1.25);
    CGeoHorizontalAdjustment b(a);
    CGeoHorizontalAdjustment c(kOrigin, 1.0, 0.0, 0.0, 0.0);
    c = a;
    geo_nee pa{1300.0, 1600.0, 0.0};
    geo_nee pb = pa;
    geo_nee pc = pa;
    a.Forward(pa);
    b.Forward(pb);
    c.Forward(pc);
    EXPECT_EQ(pa.north, pb.north);
    EXPECT_EQ(pa.east, pc.east);
}

TEST(VerticalAdjustment, AddsTheInclinedPlane) {
    CGeoVerticalAdjustment v(kOrigin, 1.25, 0.002, -0.001);
    geo_nee p{1300.0, 1600.0, 20.0};
    v.Forward(p);
    // 20 + 1.25 + 300 * 0.002 + (-400) * (-0.001) = 22.25
    EXPECT_NEAR(p.elev, 22.25, kMetres);
    EXPECT_EQ(p.north, 1300.0);
    EXPECT_EQ(p.east, 1600.0);
    EXPECT_EQ(v.VerticalShift(), 1.25);
    EXPECT_EQ(v.SlopeNorth(), 0.002);
    EXPECT_EQ(v.SlopeEast(), -0.001);
}

TEST(VerticalAdjustment, ReverseRestoresTheElevation) {
    CGeoVerticalAdjustment v(kOrigin, -3.75, 0.0123, 0.0456);
    geo_nee p{1234.5, 2345.5, 61.0};
    v.Forward(p);
    v.Reverse(p);
    EXPECT_NEAR(p.elev, 61.0, kMetres);
}

TEST(VerticalAdjustment, NullCoordinatesAreLeftUntouched) {
    CGeoVerticalAdjustment v(kOrigin, 1.25, 0.002, -0.001);
    for (const geo_nee& start :
         {geo_nee{1.0, GEO_NULL, 3.0}, geo_nee{GEO_NULL, 2.0, 3.0}, geo_nee{1.0, 2.0, GEO_NULL}}) {
        geo_nee p = start;
        v.Forward(p);
        EXPECT_EQ(p.elev, start.elev);
        v.Reverse(p);
        EXPECT_EQ(p.elev, start.elev);
    }
}

TEST(VerticalAdjustment, IdentityLeavesTheElevation) {
    CGeoVerticalAdjustment v(kOrigin, 0.0, 0.0, 0.0);
    geo_nee p{1.0e9, -1.0e9, 12.0};
    v.Forward(p);
    EXPECT_EQ(p.elev, 12.0);
    v.Reverse(p);
    EXPECT_EQ(p.elev, 12.0);
}

TEST(VerticalAdjustment, CopiesAdjustAlike) {
    CGeoVerticalAdjustment a(kOrigin, 1.25, 0.002, -0.001);
    CGeoVerticalAdjustment b(a);
    CGeoVerticalAdjustment c(kOrigin, 0.0, 0.0, 0.0);
    c = a;
    geo_nee pb{1300.0, 1600.0, 20.0};
    geo_nee pc = pb;
    b.Forward(pb);
    c.Forward(pc);
    EXPECT_NEAR(pb.elev, 22.25, kMetres);
    EXPECT_EQ(pc.elev, pb.elev);
}

} // namespace
