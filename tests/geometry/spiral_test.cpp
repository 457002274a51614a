// CGeoEntrySpiral and CGeoExitSpiral: definition, azimuths, radius, end point, positions on the
// spiral and its continuations, and the station and offset of a point.
#include "qv5/geoarc.h"
#include "qv5/geoline.h"
#include "qv5/geospiral.h"
#include "qv5/geosurvey.h"
#include "support/test_numbers.h"

#include "support/clothoid_reference.h"

#include <gtest/gtest.h>

#include <cmath>
#include <cstdint>
#include <cstring>
#include <random>
#include <type_traits>

namespace {

using qv5::test::bits_of;
using qv5::test::kHalfPi;
using qv5::test::kPi;
using qv5::test::kTwoPi;

/// Closed forms and positions rebuilt from the same series values: metres.
constexpr double kTol = 1e-9;
/// Angles from a few operations: radians.
constexpr double kAngleTol = 1e-12;

constexpr double kInfinite = 2e100;

// The reference spiral: radius 100, length 50 (C = 10000), from (2000, 1000, 25) on azimuth 0.4.
// Its series end point (tolerance 1e-5) is x = 49.68840292036703, y = 4.148102426827097.
constexpr double kR = 100.0;
constexpr double kL = 50.0;
constexpr double kAzimuth = 0.4;
constexpr double kEndX = 49.68840292036703;
constexpr double kEndY = 4.148102426827097;
const geo_nee kStart{2000.0, 1000.0, 25.0};

template <class Spiral>
Spiral reference(geodef_Direction direction) {
    CGeoPoint start(kStart);
    Spiral spiral;
    spiral.Set(start, kAzimuth, direction, kR, kL);
    return spiral;
}

/// +1 for a right turn, -1 for a left turn.
double side_of(geodef_Direction direction) {
    return direction == geodef_Right ? 1.0 : -1.0;
}

/// The point `along` metres on azimuth `azimuth` and then `across` metres square to its right.
geo_nee offset_from(const geo_nee& from, double azimuth, double along, double across) {
    return {from.north + along * std::cos(azimuth) + across * std::cos(azimuth + kHalfPi),
            from.east + along * std::sin(azimuth) + across * std::sin(azimuth + kHalfPi),
            from.elev};
}

void expect_at(CGeoPoint& p, const geo_nee& at, double tol = kTol) {
    EXPECT_NEAR(p.Northing(), at.north, tol);
    EXPECT_NEAR(p.Easting(), at.east, tol);
}

void expect_same_point(CGeoPoint& a, CGeoPoint& b, double tol = kTol) {
    EXPECT_NEAR(a.Northing(), b.Northing(), tol);
    EXPECT_NEAR(a.Easting(), b.Easting(), tol);
}

bool all_null(CGeoPoint& p) {
    return p.Northing() == GEO_NULL && p.Easting() == GEO_NULL && p.Elevation() == GEO_NULL;
}

double angle_between(double a, double b) {
    return std::fabs(std::remainder(a - b, kTwoPi));
}

template <class Spiral>
class SpiralBoth : public ::testing::Test {};
using SpiralKinds = ::testing::Types<CGeoEntrySpiral, CGeoExitSpiral>;
TYPED_TEST_SUITE(SpiralBoth, SpiralKinds);

// ---------------------------------------------------------------------------------------------
// Definition, defaults and copies

TYPED_TEST(SpiralBoth, NeverSetReportsLeftAndNulls) {
    TypeParam spiral;
    EXPECT_EQ(spiral.Direction(), geodef_Left);
    EXPECT_EQ(spiral.Length(), GEO_NULL);
    EXPECT_EQ(spiral.Length(), GEO_NULL);
    EXPECT_EQ(spiral.Radius(), GEO_NULL);
    EXPECT_EQ(spiral.EntryAzimuth(), GEO_NULL);
    EXPECT_EQ(spiral.ExitAzimuth(), GEO_NULL);
    EXPECT_EQ(spiral.GridAzimuth(1.0), GEO_NULL);
    EXPECT_EQ(spiral.RadiusAtStation(1.0), GEO_NULL);
    EXPECT_TRUE(all_null(spiral.StartPt()));
    EXPECT_TRUE(all_null(spiral.EndPt()));
}

TYPED_TEST(SpiralBoth, NeverSetGivesNoPointAndNoDeltas) {
    TypeParam spiral;
    CGeoPoint result(geo_nee{1.0, 2.0, 3.0});
    spiral.GridHorzPoint(1.0, 1e-5, result);
    EXPECT_TRUE(all_null(result)); // made all-null first
    spiral.Direction();            // a known direction alone gives no position either
    spiral.GridHorzPoint(-1.0, 1e-5, result);
    EXPECT_TRUE(all_null(result));
    CGeoPoint p(geo_nee{1.0, 2.0, 3.0});
    double station = 0.0;
    double offset = 0.0;
    double azimuth = 0.0;
    spiral.GridDeltas(p, 0.0, 1e-5, station, offset, azimuth);
    EXPECT_EQ(station, GEO_NULL);
    EXPECT_EQ(offset, GEO_NULL);
    EXPECT_EQ(azimuth, GEO_NULL);
}

TYPED_TEST(SpiralBoth, SetStoresWhatItIsGiven) {
    TypeParam spiral = reference<TypeParam>(geodef_Right);
    EXPECT_EQ(spiral.Length(), kL);
    EXPECT_EQ(spiral.Radius(), kR);
    EXPECT_EQ(spiral.EntryAzimuth(), kAzimuth);
    EXPECT_EQ(spiral.Direction(), geodef_Right);
    EXPECT_EQ(spiral.StartPt().Northing(), kStart.north);
    EXPECT_EQ(spiral.StartPt().Elevation(), kStart.elev);
}

TYPED_TEST(SpiralBoth, CopiesAreIndependent) {
    TypeParam spiral = reference<TypeParam>(geodef_Left);
    CGeoPoint end = spiral.EndPt();
    TypeParam copy(spiral);
    TypeParam assigned;
    assigned = spiral;
    CGeoPoint elsewhere(geo_nee{0.0, 0.0, 0.0});
    spiral.Set(elsewhere, 1.0, geodef_Right, 10.0, 5.0);
    for (TypeParam* s : {&copy, &assigned}) {
        EXPECT_EQ(s->Length(), kL);
        EXPECT_EQ(s->Direction(), geodef_Left);
        expect_same_point(s->EndPt(), end);
    }
}

TYPED_TEST(SpiralBoth, ExitAzimuthTurnsByLengthOverTwiceTheRadius) {
    for (geodef_Direction d : {geodef_Left, geodef_Right}) {
        TypeParam spiral = reference<TypeParam>(d);
        EXPECT_NEAR(spiral.ExitAzimuth(), kAzimuth + side_of(d) * kL / (2.0 * kR), kAngleTol);
    }
    CGeoPoint start(kStart);
    TypeParam north;
    north.Set(start, 0.1, geodef_Left, kR, kL); // 0.1 - 0.25 wraps round
    EXPECT_NEAR(north.ExitAzimuth(), kTwoPi - 0.15, kAngleTol);
}

TYPED_TEST(SpiralBoth, SeriesThatDoesNotConvergeGivesNullsNotGarbage) {
    // 100 m of spiral onto a 10 m radius: the tangent would turn through 5 rad, and the series
    // (C = 2000) stops converging 87 m from the straight end.
    constexpr bool entry = std::is_same_v<TypeParam, CGeoEntrySpiral>;
    CGeoPoint start(kStart);
    TypeParam spiral;
    spiral.Set(start, 0.0, geodef_Right, 10.0, 100.0);
    EXPECT_TRUE(all_null(spiral.EndPt()));
    const double far = entry ? 95.0 : 5.0; // 95 m from the straight end
    CGeoPoint q;
    spiral.GridHorzPoint(far, 1e-5, q);
    EXPECT_TRUE(all_null(q));
    CGeoPoint p(geo_nee{2050.0, 1010.0, 0.0});
    double station = 0.0;
    double offset = 0.0;
    double azimuth = 0.0;
    spiral.GridDeltas(p, far, 1e-5, station, offset, azimuth);
    EXPECT_EQ(station, GEO_NULL);
    EXPECT_EQ(offset, GEO_NULL);
    EXPECT_EQ(azimuth, GEO_NULL);
}

TYPED_TEST(SpiralBoth, NullDefinitionGivesNullPositions) {
    CGeoPoint nowhere;
    TypeParam spiral;
    spiral.Set(nowhere, kAzimuth, geodef_Right, kR, kL);
    EXPECT_TRUE(all_null(spiral.EndPt()));
    CGeoPoint q;
    for (double s : {-10.0, 10.0, 60.0}) {
        spiral.GridHorzPoint(s, 1e-5, q);
        EXPECT_TRUE(all_null(q)) << s;
    }
    CGeoPoint start(kStart);
    spiral.Set(start, GEO_NULL, geodef_Right, kR, kL);
    EXPECT_EQ(spiral.ExitAzimuth(), GEO_NULL);
    EXPECT_EQ(spiral.GridAzimuth(10.0), GEO_NULL);
    EXPECT_TRUE(all_null(spiral.EndPt()));
    spiral.Set(start, kAzimuth, geodef_Right, kR, GEO_NULL);
    EXPECT_EQ(spiral.RadiusAtStation(10.0), GEO_NULL);
    spiral.GridHorzPoint(0.0, 1e-5, q);
    EXPECT_TRUE(all_null(q));
}

TYPED_TEST(SpiralBoth, ZeroLengthSpiralIsAPoint) {
    CGeoPoint start(kStart);
    TypeParam spiral;
    spiral.Set(start, kAzimuth, geodef_Right, kR, 0.0);
    EXPECT_NEAR(spiral.ExitAzimuth(), kAzimuth, kAngleTol);
    expect_at(spiral.EndPt(), kStart);
}

TYPED_TEST(SpiralBoth, DerivedPointsKeepTheStartsElevationAndLinks) {
    CGeoPoint known(kStart);
    CGeoPoint station;
    station.SetStation(known, 1.6);
    TypeParam spiral;
    spiral.Set(station, kAzimuth, geodef_Right, kR, kL);
    EXPECT_EQ(spiral.EndPt().Elevation(), kStart.elev);
    EXPECT_EQ(spiral.EndPt().HI(), 1.6);
    EXPECT_EQ(spiral.EndPt().Flags(), CGeoPoint::PT_GRID);
    for (double s : {-5.0, 20.0, 70.0}) {
        CGeoPoint q;
        spiral.GridHorzPoint(s, 1e-5, q);
        EXPECT_EQ(q.Elevation(), kStart.elev) << s;
        EXPECT_EQ(q.HI(), 1.6) << s;
    }
}

// ---------------------------------------------------------------------------------------------
// Radius and azimuth along the spiral

TEST(EntrySpiral, RadiusRunsFromAStraightToTheArc) {
    CGeoEntrySpiral spiral = reference<CGeoEntrySpiral>(geodef_Right);
    EXPECT_EQ(spiral.RadiusAtStation(-1.0), kInfinite);
    EXPECT_EQ(spiral.RadiusAtStation(0.0), kInfinite);
    EXPECT_EQ(spiral.RadiusAtStation(10.0), kR * kL / 10.0);
    EXPECT_EQ(spiral.RadiusAtStation(kL), kR);
    EXPECT_EQ(spiral.RadiusAtStation(80.0), kR);
}

TEST(ExitSpiral, RadiusRunsFromTheArcToAStraight) {
    CGeoExitSpiral spiral = reference<CGeoExitSpiral>(geodef_Right);
    EXPECT_EQ(spiral.RadiusAtStation(-1.0), kR);
    EXPECT_EQ(spiral.RadiusAtStation(0.0), kR);
    EXPECT_EQ(spiral.RadiusAtStation(10.0), kR * kL / (kL - 10.0));
    EXPECT_EQ(spiral.RadiusAtStation(kL), kInfinite);
    EXPECT_EQ(spiral.RadiusAtStation(80.0), kInfinite);
}

TEST(EntrySpiral, AzimuthTurnsWithTheSquareOfTheStation) {
    for (geodef_Direction d : {geodef_Left, geodef_Right}) {
        CGeoEntrySpiral spiral = reference<CGeoEntrySpiral>(d);
        EXPECT_EQ(spiral.GridAzimuth(-5.0), kAzimuth); // on the straight
        EXPECT_EQ(spiral.GridAzimuth(0.0), kAzimuth);
        EXPECT_NEAR(spiral.GridAzimuth(20.0), kAzimuth + side_of(d) * 400.0 / 10000.0, kAngleTol);
        EXPECT_EQ(spiral.GridAzimuth(kL), spiral.ExitAzimuth());
    }
}

TEST(ExitSpiral, AzimuthTurnsBackFromTheExitStraight) {
    for (geodef_Direction d : {geodef_Left, geodef_Right}) {
        CGeoExitSpiral spiral = reference<CGeoExitSpiral>(d);
        const double exit = spiral.ExitAzimuth();
        EXPECT_EQ(spiral.GridAzimuth(kL), exit);
        EXPECT_EQ(spiral.GridAzimuth(kL + 7.0), exit); // on the straight
        EXPECT_NEAR(spiral.GridAzimuth(30.0), exit - side_of(d) * 400.0 / 10000.0, kAngleTol);
        EXPECT_NEAR(spiral.GridAzimuth(0.0), kAzimuth, kAngleTol);
    }
}

// ---------------------------------------------------------------------------------------------
// End point

TEST(EntrySpiral, EndPointLiesOffTheEntryTangentOnTheSideOfTheTurn) {
    for (geodef_Direction d : {geodef_Left, geodef_Right}) {
        CGeoEntrySpiral spiral = reference<CGeoEntrySpiral>(d);
        expect_at(spiral.EndPt(), offset_from(kStart, kAzimuth, kEndX, side_of(d) * kEndY));
        EXPECT_EQ(spiral.EndPt().Elevation(), kStart.elev);
    }
}

TEST(ExitSpiral, EndPointLiesOffTheExitTangentAwayFromTheTurn) {
    for (geodef_Direction d : {geodef_Left, geodef_Right}) {
        CGeoExitSpiral spiral = reference<CGeoExitSpiral>(d);
        const double exit = kAzimuth + side_of(d) * 0.25;
        expect_at(spiral.EndPt(), offset_from(kStart, exit, kEndX, -side_of(d) * kEndY));
    }
}

TEST(EntrySpiral, EndPointIsTwoLevelLineStepsToTheLastBit) {
    // From the start along the entry azimuth, then square to it; for a left turn the square
    // step has a negative length.
    CGeoEntrySpiral spiral = reference<CGeoEntrySpiral>(geodef_Left);
    CGeoPoint start(kStart);
    CGeoLine along;
    along.Set(start, kAzimuth, kEndX, 0.0);
    CGeoLine across;
    across.Set(along.EndPt(), geo_normalised_bearing(kAzimuth + kHalfPi), -kEndY, 0.0);
    EXPECT_EQ(bits_of(spiral.EndPt().Northing()), bits_of(across.EndPt().Northing()));
    EXPECT_EQ(bits_of(spiral.EndPt().Easting()), bits_of(across.EndPt().Easting()));
}

TEST(EntryAndExitSpiral, AnExitSpiralIsAnEntrySpiralDrivenBackwards) {
    for (geodef_Direction d : {geodef_Left, geodef_Right}) {
        CGeoEntrySpiral entry = reference<CGeoEntrySpiral>(d);
        const geodef_Direction mirrored = d == geodef_Right ? geodef_Left : geodef_Right;
        CGeoExitSpiral exit;
        exit.Set(entry.EndPt(), geo_normalised_bearing(entry.ExitAzimuth() + kPi), mirrored, kR,
                 kL);
        expect_at(exit.EndPt(), kStart);
        EXPECT_LT(angle_between(exit.ExitAzimuth(), kAzimuth + kPi), kAngleTol);
        for (double s : {0.0, 12.5, 31.0, kL}) {
            CGeoPoint a;
            CGeoPoint b;
            exit.GridHorzPoint(s, 1e-5, a);
            entry.GridHorzPoint(kL - s, 1e-5, b);
            expect_same_point(a, b);
            EXPECT_LT(angle_between(exit.GridAzimuth(s), entry.GridAzimuth(kL - s) + kPi), 1e-12);
        }
    }
}

// ---------------------------------------------------------------------------------------------
// Positions

TEST(EntrySpiral, PositionsAgreeWithTheIntegratedClothoid) {
    for (geodef_Direction d : {geodef_Left, geodef_Right}) {
        CGeoEntrySpiral spiral = reference<CGeoEntrySpiral>(d);
        for (double s : {5.0, 17.0, 33.3, kL}) {
            double x = 0.0;
            double y = 0.0;
            qv5::test::integrated_clothoid(s, 2.0 * kR * kL, x, y);
            CGeoPoint q;
            spiral.GridHorzPoint(s, 1e-6, q);
            // Each series is within its tolerance, so the point within sqrt(2) times it.
            expect_at(q, offset_from(kStart, kAzimuth, x, side_of(d) * y), 1.5e-6);
        }
    }
}

TEST(ExitSpiral, PositionsAgreeWithTheIntegratedClothoid) {
    for (geodef_Direction d : {geodef_Left, geodef_Right}) {
        CGeoExitSpiral spiral = reference<CGeoExitSpiral>(d);
        const double exit = spiral.ExitAzimuth();
        CGeoPoint end = spiral.EndPt();
        const geo_nee end_grid{end.Northing(), end.Easting(), 0.0};
        for (double s : {0.0, 11.0, 40.0}) {
            double x = 0.0;
            double y = 0.0;
            qv5::test::integrated_clothoid(kL - s, 2.0 * kR * kL, x, y);
            CGeoPoint q;
            spiral.GridHorzPoint(s, 1e-6, q);
            // Back along the exit straight from the end, to the outside of the turn. The end
            // point itself carries the 1e-5 series tolerance.
            expect_at(q, offset_from(end_grid, exit, -x, side_of(d) * y), 1.5e-6 + 1.5e-5);
        }
    }
}

TEST(EntrySpiral, PointAtTheFullLengthIsTheEndPoint) {
    for (geodef_Direction d : {geodef_Left, geodef_Right}) {
        CGeoEntrySpiral spiral = reference<CGeoEntrySpiral>(d);
        CGeoPoint q;
        spiral.GridHorzPoint(kL, 1e-5, q);
        expect_same_point(q, spiral.EndPt(), 1e-12);
    }
}

TEST(ExitSpiral, PointAtTheStartIsTheStartPoint) {
    for (geodef_Direction d : {geodef_Left, geodef_Right}) {
        CGeoExitSpiral spiral = reference<CGeoExitSpiral>(d);
        CGeoPoint q;
        spiral.GridHorzPoint(0.0, 1e-5, q);
        expect_at(q, kStart, 1e-12);
        spiral.GridHorzPoint(kL, 1e-5, q);
        expect_same_point(q, spiral.EndPt(), 1e-12);
    }
}

TEST(EntrySpiral, BeforeTheStartLiesOnTheEntryTangent) {
    CGeoEntrySpiral spiral = reference<CGeoEntrySpiral>(geodef_Right);
    CGeoPoint q;
    spiral.GridHorzPoint(-12.0, 1e-5, q);
    expect_at(q, offset_from(kStart, kAzimuth, -12.0, 0.0));
    EXPECT_EQ(q.Elevation(), kStart.elev);
}

TEST(ExitSpiral, BeyondTheEndLiesOnTheExitTangent) {
    CGeoExitSpiral spiral = reference<CGeoExitSpiral>(geodef_Left);
    CGeoPoint end = spiral.EndPt();
    const geo_nee end_grid{end.Northing(), end.Easting(), 0.0};
    CGeoPoint q;
    spiral.GridHorzPoint(kL + 20.0, 1e-5, q);
    expect_at(q, offset_from(end_grid, spiral.ExitAzimuth(), 20.0, 0.0));
}

/// Centre of the circle of radius R tangent at `at` on `azimuth`, on the side of the turn.
geo_nee centre_from(CGeoPoint& at, double azimuth, geodef_Direction d) {
    const geo_nee grid{at.Northing(), at.Easting(), 0.0};
    return offset_from(grid, azimuth, 0.0, side_of(d) * kR);
}

double distance_to(CGeoPoint& p, const geo_nee& c) {
    return std::hypot(p.Northing() - c.north, p.Easting() - c.east);
}

TEST(EntrySpiral, JustBeyondTheEndLiesOnTheCircleTangentAtTheEnd) {
    for (geodef_Direction d : {geodef_Left, geodef_Right}) {
        CGeoEntrySpiral spiral = reference<CGeoEntrySpiral>(d);
        const geo_nee centre = centre_from(spiral.EndPt(), spiral.ExitAzimuth(), d);
        for (double beyond : {1e-3, 1.0, 40.0}) {
            CGeoPoint q;
            spiral.GridHorzPoint(kL + beyond, 1e-5, q);
            EXPECT_NEAR(distance_to(q, centre), kR, kTol) << beyond;
        }
    }
}

TEST(ExitSpiral, BeforeTheStartLiesOnTheCircleTangentAtTheStart) {
    for (geodef_Direction d : {geodef_Left, geodef_Right}) {
        CGeoExitSpiral spiral = reference<CGeoExitSpiral>(d);
        const geo_nee centre = centre_from(spiral.StartPt(), kAzimuth, d);
        CGeoPoint q;
        spiral.GridHorzPoint(-15.0, 1e-5, q);
        EXPECT_NEAR(distance_to(q, centre), kR, kTol);
    }
}

TEST(SpiralPosition, OnTheSpiralIsTwoLevelLineStepsToTheLastBit) {
    CGeoEntrySpiral entry = reference<CGeoEntrySpiral>(geodef_Right);
    double x = 0.0;
    double y = 0.0;
    geo_spiral_deltas(21.0, 2.0 * kR * kL, 1e-6, x, y);
    CGeoPoint start(kStart);
    CGeoLine along;
    along.Set(start, kAzimuth, x, 0.0);
    CGeoLine across;
    across.Set(along.EndPt(), kAzimuth + kHalfPi, y, 0.0);
    CGeoPoint q;
    entry.GridHorzPoint(21.0, 1e-6, q);
    EXPECT_EQ(bits_of(q.Northing()), bits_of(across.EndPt().Northing()));
    EXPECT_EQ(bits_of(q.Easting()), bits_of(across.EndPt().Easting()));

    CGeoExitSpiral exit = reference<CGeoExitSpiral>(geodef_Left);
    geo_spiral_deltas(kL - 21.0, 2.0 * kR * kL, 1e-6, x, y);
    CGeoLine back;
    back.Set(exit.EndPt(), geo_normalised_bearing(exit.ExitAzimuth() + kPi), x, 0.0);
    CGeoLine out;
    out.Set(back.EndPt(), exit.ExitAzimuth() + kHalfPi, -y, 0.0);
    exit.GridHorzPoint(21.0, 1e-6, q);
    EXPECT_EQ(bits_of(q.Northing()), bits_of(out.EndPt().Northing()));
    EXPECT_EQ(bits_of(q.Easting()), bits_of(out.EndPt().Easting()));
}

TEST(SpiralPosition, NotANumberStationGivesNoPoint) {
    CGeoEntrySpiral spiral = reference<CGeoEntrySpiral>(geodef_Right);
    CGeoPoint q;
    spiral.GridHorzPoint(std::nan(""), 1e-5, q);
    EXPECT_TRUE(all_null(q));
    EXPECT_EQ(spiral.RadiusAtStation(std::nan("")), GEO_NULL);
}

// ---------------------------------------------------------------------------------------------
// Continuity of a whole curve: straight, entry spiral, arc, exit spiral, straight

struct Curve {
    CGeoEntrySpiral entry;
    CGeoArc arc;
    CGeoExitSpiral exit;
    double arc_length = 80.0;
};

Curve chained_curve(geodef_Direction d) {
    Curve c;
    c.entry = reference<CGeoEntrySpiral>(d);
    c.arc.Set(c.entry.EndPt(), c.entry.ExitAzimuth(), kR, c.arc_length, d, kL);
    c.exit.Set(c.arc.EndPt(), c.arc.GridAzimuth(c.arc_length), d, kR, kL);
    return c;
}

TEST(SpiralContinuity, EntrySpiralEndsWhereAndHowTheArcBegins) {
    for (geodef_Direction d : {geodef_Left, geodef_Right}) {
        Curve c = chained_curve(d);
        CGeoPoint end;
        c.entry.GridHorzPoint(kL, 1e-5, end);
        expect_same_point(end, c.arc.CentreToStart().EndPt());
        EXPECT_EQ(c.entry.GridAzimuth(kL), c.arc.EntryAzimuth());
        EXPECT_EQ(c.entry.RadiusAtStation(kL), c.arc.Radius());
        // Same curvature at the join: the spiral osculates the arc's circle, leaving it by
        // only eps^3 / (6 R L) over the last eps metres (3.3e-5 m for eps = 1).
        CGeoPoint before;
        c.entry.GridHorzPoint(kL - 1.0, 1e-8, before);
        const double gap =
            distance_to(before, {c.arc.CentrePt().Northing(), c.arc.CentrePt().Easting(), 0.0}) -
            kR;
        EXPECT_NEAR(std::fabs(gap), 1.0 / (6.0 * kR * kL), 2e-6);
        // The entry spiral's own continuation is that arc.
        for (double beyond : {5.0, 60.0}) {
            CGeoPoint a;
            CGeoPoint b;
            c.entry.GridHorzPoint(kL + beyond, 1e-5, a);
            c.arc.GridHorzPoint(beyond, b);
            expect_same_point(a, b);
        }
    }
}

TEST(SpiralContinuity, ExitSpiralBeginsWhereAndHowTheArcEnds) {
    for (geodef_Direction d : {geodef_Left, geodef_Right}) {
        Curve c = chained_curve(d);
        expect_same_point(c.exit.StartPt(), c.arc.EndPt());
        EXPECT_LT(angle_between(c.exit.GridAzimuth(0.0), c.arc.GridAzimuth(c.arc_length)),
                  kAngleTol);
        EXPECT_EQ(c.exit.RadiusAtStation(0.0), c.arc.Radius());
        CGeoPoint after;
        c.exit.GridHorzPoint(1.0, 1e-8, after);
        const double gap =
            distance_to(after, {c.arc.CentrePt().Northing(), c.arc.CentrePt().Easting(), 0.0}) - kR;
        EXPECT_NEAR(std::fabs(gap), 1.0 / (6.0 * kR * kL), 2e-6);
        // Before its start the exit spiral runs back along the arc.
        for (double back : {3.0, 50.0}) {
            CGeoPoint a;
            CGeoPoint b;
            c.exit.GridHorzPoint(-back, 1e-5, a);
            c.arc.GridHorzPoint(c.arc_length - back, b);
            expect_same_point(a, b);
        }
        // And the curve as a whole turns by L/R + arc angle.
        const double turned = c.exit.ExitAzimuth() - kAzimuth;
        EXPECT_LT(angle_between(turned, side_of(d) * (kL / kR + c.arc_length / kR)), 1e-12);
    }
}

// ---------------------------------------------------------------------------------------------
// Station and offset

struct Found {
    double station = 0.0;
    double offset = 0.0;
    double azimuth = 0.0;
};

template <class Spiral>
Found deltas_of(Spiral& spiral, const geo_nee& at, double start_station, double tolerance) {
    CGeoPoint p(at);
    Found f;
    spiral.GridDeltas(p, start_station, tolerance, f.station, f.offset, f.azimuth);
    return f;
}

TEST(EntrySpiralDeltas, PointOnTheTangentBeforeTheStartGetsTheTangentsStationAndOffset) {
    CGeoEntrySpiral spiral = reference<CGeoEntrySpiral>(geodef_Right);
    const Found f = deltas_of(spiral, offset_from(kStart, kAzimuth, -8.0, -3.0), 10.0, 1e-6);
    EXPECT_NEAR(f.station, -8.0, kTol);
    EXPECT_NEAR(f.offset, -3.0, kTol);
    EXPECT_EQ(f.azimuth, kAzimuth);
}

TEST(EntrySpiralDeltas, PointBeyondTheEndIsOnTheArc) {
    for (geodef_Direction d : {geodef_Left, geodef_Right}) {
        CGeoEntrySpiral spiral = reference<CGeoEntrySpiral>(d);
        // 30 m round the continuing arc, 4 m outside it.
        const geo_nee centre = centre_from(spiral.EndPt(), spiral.ExitAzimuth(), d);
        const double radial = spiral.ExitAzimuth() - side_of(d) * kHalfPi + side_of(d) * 0.3;
        const geo_nee at{centre.north + 104.0 * std::cos(radial),
                         centre.east + 104.0 * std::sin(radial), 0.0};
        const Found f = deltas_of(spiral, at, 0.0, 1e-6);
        EXPECT_NEAR(f.station, kL + 30.0, kTol);
        EXPECT_NEAR(f.offset, -side_of(d) * 4.0, kTol); // outside the turn
        EXPECT_LT(angle_between(f.azimuth, spiral.ExitAzimuth() + side_of(d) * 0.3), kAngleTol);
    }
}

TEST(ExitSpiralDeltas, PointBeforeTheStartIsOnTheArc) {
    for (geodef_Direction d : {geodef_Left, geodef_Right}) {
        CGeoExitSpiral spiral = reference<CGeoExitSpiral>(d);
        const geo_nee centre = centre_from(spiral.StartPt(), kAzimuth, d);
        const double radial = kAzimuth - side_of(d) * kHalfPi - side_of(d) * 0.2;
        const geo_nee at{centre.north + 97.0 * std::cos(radial),
                         centre.east + 97.0 * std::sin(radial), 0.0};
        const Found f = deltas_of(spiral, at, 20.0, 1e-6);
        EXPECT_NEAR(f.station, -20.0, kTol);
        EXPECT_NEAR(f.offset, side_of(d) * 3.0, kTol); // inside the turn
    }
}

TEST(ExitSpiralDeltas, PointBeyondTheEndIsOnTheExitTangent) {
    CGeoExitSpiral spiral = reference<CGeoExitSpiral>(geodef_Right);
    CGeoPoint end = spiral.EndPt();
    const geo_nee end_grid{end.Northing(), end.Easting(), 0.0};
    const Found f =
        deltas_of(spiral, offset_from(end_grid, spiral.ExitAzimuth(), 6.0, 2.5), 0.0, 1e-6);
    EXPECT_NEAR(f.station, kL + 6.0, kTol);
    EXPECT_NEAR(f.offset, 2.5, kTol);
    EXPECT_EQ(f.azimuth, spiral.ExitAzimuth());
}

TEST(EntrySpiralDeltas, PointOnTheSpiralHasZeroOffset) {
    CGeoEntrySpiral spiral = reference<CGeoEntrySpiral>(geodef_Left);
    CGeoPoint q;
    spiral.GridHorzPoint(22.0, 1e-6, q);
    const Found f = deltas_of(spiral, {q.Northing(), q.Easting(), 0.0}, 22.0, 1e-6);
    EXPECT_EQ(f.station, 22.0);
    EXPECT_EQ(f.offset, 0.0);
    EXPECT_EQ(f.azimuth, spiral.GridAzimuth(22.0));
}

TYPED_TEST(SpiralBoth, NullStartingStationStartsTheSearchAtTheStart) {
    TypeParam spiral = reference<TypeParam>(geodef_Right);
    const Found f = deltas_of(spiral, {kStart.north, kStart.east, 0.0}, GEO_NULL, 1e-6);
    EXPECT_EQ(f.station, 0.0);
    EXPECT_EQ(f.offset, 0.0);
    EXPECT_NEAR(f.azimuth, kAzimuth, kAngleTol);
}

TEST(EntrySpiralDeltas, PointWithoutPlanCoordinatesGivesThreeNulls) {
    CGeoEntrySpiral spiral = reference<CGeoEntrySpiral>(geodef_Left);
    CGeoPoint nowhere;
    double station = 1.0;
    double offset = 1.0;
    double azimuth = 1.0;
    spiral.GridDeltas(nowhere, 10.0, 1e-6, station, offset, azimuth);
    EXPECT_EQ(station, GEO_NULL);
    EXPECT_EQ(offset, GEO_NULL);
    EXPECT_EQ(azimuth, GEO_NULL);
}

// A spiral so gentle (R = 1e9) that it is a straight northwards for the projection.
template <class Spiral>
Spiral gentle() {
    CGeoPoint start(geo_nee{0.0, 0.0, 0.0});
    Spiral spiral;
    spiral.Set(start, 0.0, geodef_Right, 1e9, 100.0);
    return spiral;
}

TEST(EntrySpiralDeltas, PointsToTheLeftTakeHalfStepsAndMayRunOutOfSteps) {
    CGeoEntrySpiral spiral = gentle<CGeoEntrySpiral>();
    // 40 m to go from station 10 to 50 on the left: halving the distance each step reaches
    // 2e-4 within 18 steps but 1e-6 only after 25, beyond the 20 allowed.
    const geo_nee left{50.0, -5.0, 0.0};
    Found f = deltas_of(spiral, left, 10.0, 2e-4);
    EXPECT_NEAR(f.station, 50.0, 2e-4);
    EXPECT_NEAR(f.offset, -5.0, 1e-6);
    f = deltas_of(spiral, left, 10.0, 1e-6);
    EXPECT_EQ(f.station, GEO_NULL);
    EXPECT_EQ(f.offset, GEO_NULL);
    EXPECT_EQ(f.azimuth, GEO_NULL);
    // On the right the whole step is taken and the same search converges at once.
    f = deltas_of(spiral, {50.0, 5.0, 0.0}, 10.0, 1e-6);
    EXPECT_NEAR(f.station, 50.0, 1e-6);
    EXPECT_NEAR(f.offset, 5.0, 1e-6);
}

TEST(ExitSpiralDeltas, PointsToTheLeftTakeHalfStepsToo) {
    CGeoExitSpiral spiral = gentle<CGeoExitSpiral>();
    const geo_nee left{50.0, -5.0, 0.0};
    Found f = deltas_of(spiral, left, 10.0, 2e-4);
    EXPECT_NEAR(f.station, 50.0, 2e-4);
    f = deltas_of(spiral, left, 10.0, 1e-6);
    EXPECT_EQ(f.station, GEO_NULL);
    f = deltas_of(spiral, {50.0, 5.0, 0.0}, 10.0, 1e-6);
    EXPECT_NEAR(f.station, 50.0, 1e-6);
}

TEST(EntrySpiralDeltas, StartingBeforeTheStartTriesTheTangentThenTheSpiral) {
    // Starting at -30 for a point on the spiral: the tangent says it is ahead of the start,
    // so the search goes on from station 0.
    CGeoEntrySpiral spiral = reference<CGeoEntrySpiral>(geodef_Right);
    CGeoPoint q;
    spiral.GridHorzPoint(3.0, 1e-6, q);
    const Found f = deltas_of(spiral, {q.Northing(), q.Easting(), 0.0}, -30.0, 1e-6);
    EXPECT_NEAR(f.station, 3.0, 1e-6);
    EXPECT_NEAR(f.offset, 0.0, 1e-6);
}

TEST(EntrySpiralDeltas, StartingBeyondTheEndTriesTheArcThenTheSpiral) {
    CGeoEntrySpiral spiral = reference<CGeoEntrySpiral>(geodef_Right);
    CGeoPoint q;
    spiral.GridHorzPoint(47.0, 1e-6, q);
    const Found f = deltas_of(spiral, {q.Northing(), q.Easting(), 0.0}, 90.0, 1e-6);
    EXPECT_NEAR(f.station, 47.0, 1e-6);
}

/// The station, offset and azimuth put back through the spiral and a square offset.
template <class Spiral>
double round_trip_error(Spiral& spiral, const geo_nee& at, const Found& f, double tolerance) {
    CGeoPoint q;
    spiral.GridHorzPoint(f.station, tolerance, q);
    CGeoLine square;
    square.Set(q, f.azimuth + kHalfPi, f.offset, 0.0);
    return std::hypot(square.EndPt().Northing() - at.north, square.EndPt().Easting() - at.east);
}

/// A point `across` metres square off the element (spiral or continuation) at `along`.
template <class Spiral>
geo_nee beside(Spiral& spiral, double along, double across) {
    constexpr bool entry = std::is_same_v<Spiral, CGeoEntrySpiral>;
    const double length = spiral.Length();
    double azimuth = spiral.GridAzimuth(along);
    if (entry && along > length) {
        CGeoArc arc;
        arc.Set(spiral.EndPt(), spiral.ExitAzimuth(), spiral.Radius(), 1.0, spiral.Direction(),
                0.0);
        azimuth = arc.GridAzimuth(along - length);
    } else if (!entry && along < 0.0) {
        CGeoArc arc;
        arc.Set(spiral.StartPt(), spiral.EntryAzimuth(), spiral.Radius(), 1.0, spiral.Direction(),
                0.0);
        azimuth = arc.GridAzimuth(along);
    }
    CGeoPoint q;
    spiral.GridHorzPoint(along, 1e-9, q);
    return offset_from({q.Northing(), q.Easting(), 0.0}, azimuth, 0.0, across);
}

// Round trips. The projection stops once the chord to the point is square to the tangent
// within atan(tolerance / chord), so the point lies less than `tolerance` along the tangent
// from the foot it reports; rebuilding it square off that foot misses it by less than that.
// The series tolerance does not enter: the search and the rebuild evaluate the same series.
// So the rebuilt point is within the iteration tolerance (plus rounding).
TYPED_TEST(SpiralBoth, RoundTripFromANearbyStartReproducesThePoint) {
    struct Shape {
        double radius;
        double length;
        double guess_error; // how far the starting station is from the point's
    };
    // A tight spiral, where points on the inside of a left turn converge slowly with the half
    // steps, searched from within 1 cm; and a road spiral searched from within 10 cm.
    const Shape shapes[] = {{100.0, 50.0, 0.01}, {300.0, 120.0, 0.1}};
    constexpr double kIterationTol = 1e-5;
    std::mt19937_64 rng(7);
    for (const Shape& shape : shapes) {
        for (geodef_Direction d : {geodef_Left, geodef_Right}) {
            CGeoPoint start(geo_nee{4000.0, 6000.0, 80.0});
            TypeParam spiral;
            spiral.Set(start, 2.2, d, shape.radius, shape.length);
            std::uniform_real_distribution<double> along(-60.0, shape.length + 60.0);
            std::uniform_real_distribution<double> across(-50.0, 50.0);
            std::uniform_real_distribution<double> error(-shape.guess_error, shape.guess_error);
            for (int i = 0; i < 400; ++i) {
                const double s = along(rng);
                const double o = across(rng);
                const geo_nee at = beside(spiral, s, o);
                const Found f = deltas_of(spiral, at, s + error(rng), kIterationTol);
                ASSERT_NE(f.station, GEO_NULL) << s << " " << o;
                EXPECT_LT(round_trip_error(spiral, at, f, kIterationTol), kIterationTol + 1e-9)
                    << s << " " << o;
                // The station found is the one the point was built at, within the iteration
                // tolerance magnified by the curvature (at most 1 / (1 - 50 / 100)).
                EXPECT_NEAR(f.station, s, 2.0 * kIterationTol + 1e-9) << s << " " << o;
                EXPECT_NEAR(std::fabs(f.offset), std::fabs(o), 1e-9 + kIterationTol);
            }
        }
    }
}

TYPED_TEST(SpiralBoth, RoundTripFromAPoorStartIsExactWheneverItConverges) {
    // From station 0 some points on the inside of a left turn need more than 20 half steps
    // and come back null; every point that is found is found exactly.
    constexpr double kIterationTol = 1e-6;
    std::mt19937_64 rng(11);
    std::uniform_real_distribution<double> along(-60.0, kL + 60.0);
    std::uniform_real_distribution<double> across(-50.0, 50.0);
    for (geodef_Direction d : {geodef_Left, geodef_Right}) {
        TypeParam spiral = reference<TypeParam>(d);
        int found = 0;
        for (int i = 0; i < 400; ++i) {
            const geo_nee at = beside(spiral, along(rng), across(rng));
            const Found f = deltas_of(spiral, at, 0.0, kIterationTol);
            if (f.station == GEO_NULL) {
                EXPECT_EQ(f.offset, GEO_NULL);
                EXPECT_EQ(f.azimuth, GEO_NULL);
                continue;
            }
            ++found;
            EXPECT_LT(round_trip_error(spiral, at, f, kIterationTol), kIterationTol + 1e-9);
        }
        EXPECT_GT(found, 300);
    }
}

} // namespace
