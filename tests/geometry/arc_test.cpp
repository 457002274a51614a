// CGeoArc: definition by end points or by start and length, lazy derivations, positions along
// the arc, and the station and offset of a point.
#include "geometry/arc_math.h"
#include "qv5/geoarc.h"
#include "qv5/geosurvey.h"
#include "support/test_numbers.h"

#include <gtest/gtest.h>

#include <cmath>
#include <cstdint>
#include <cstring>
#include <limits>
#include <random>

namespace {

using qv5::test::bits_of;
using qv5::test::kHalfPi;
using qv5::test::kPi;
using qv5::test::kTwoPi;

/// Closed-form coordinates and lengths of a few thousand metres: metres.
constexpr double kTol = 1e-9;
/// Angles from a few operations: radians.
constexpr double kAngleTol = 1e-12;

/// Start (1000, 2000, 50) heading north, radius 100, a quarter turn to the right: the centre
/// lies at (1000, 2100) and the end at (1100, 2100).
CGeoArc quarter_right() {
    CGeoPoint start(geo_nee{1000.0, 2000.0, 50.0});
    CGeoArc arc;
    arc.Set(start, 0.0, 100.0, 100.0 * kPi / 2.0, geodef_Right, 0.0);
    return arc;
}

/// The same arc given by its two end points.
CGeoArc quarter_right_by_ends() {
    CGeoPoint start(geo_nee{1000.0, 2000.0, 50.0});
    CGeoPoint end(geo_nee{1100.0, 2100.0, 50.0});
    CGeoArc arc;
    arc.Set(start, end, 100.0, kPi / 2.0, geodef_Right);
    return arc;
}

/// Start (0, 0, 10) heading north, radius 100, turning left: centre at (0, -100).
CGeoArc left_arc(double length) {
    CGeoPoint start(geo_nee{0.0, 0.0, 10.0});
    CGeoArc arc;
    arc.Set(start, 0.0, 100.0, length, geodef_Left, 1234.5);
    return arc;
}

void expect_at(CGeoPoint& p, double north, double east, double tol = kTol) {
    EXPECT_NEAR(p.Northing(), north, tol);
    EXPECT_NEAR(p.Easting(), east, tol);
}

bool all_null(CGeoPoint& p) {
    return p.Northing() == GEO_NULL && p.Easting() == GEO_NULL && p.Elevation() == GEO_NULL;
}

/// True when the arc gives no station, offset or azimuth for the point: all three null.
bool no_deltas(CGeoArc& arc, CGeoPoint& p) {
    double station = 0.0;
    double offset = 0.0;
    double azimuth = 0.0;
    arc.GridDeltas(p, station, offset, azimuth);
    return station == GEO_NULL && offset == GEO_NULL && azimuth == GEO_NULL;
}

// ---------------------------------------------------------------------------------------------
// Definition and derivations

TEST(ArcSet, FromStartAzimuthAndLengthDerivesCentreAndEnd) {
    CGeoArc arc = quarter_right();
    expect_at(arc.CentrePt(), 1000.0, 2100.0);
    EXPECT_EQ(arc.CentrePt().Elevation(), 50.0);
    expect_at(arc.EndPt(), 1100.0, 2100.0);
    EXPECT_EQ(arc.EndPt().Elevation(), 50.0);
    EXPECT_NEAR(arc.GridAzimuth(100.0 * kPi / 2.0), kHalfPi, kAngleTol);
    EXPECT_NEAR(arc.Angle(), kPi / 2.0, kAngleTol);
    EXPECT_EQ(arc.Radius(), 100.0);
    EXPECT_EQ(arc.Direction(), geodef_Right);
    EXPECT_EQ(arc.StartStation(), 0.0);
}

TEST(ArcSet, FromEndPointsGivesTheSameCentreAndEntryAzimuth) {
    CGeoArc arc = quarter_right_by_ends();
    expect_at(arc.CentrePt(), 1000.0, 2100.0);
    EXPECT_NEAR(arc.EntryAzimuth(), 0.0, kAngleTol);
    EXPECT_NEAR(std::sin(arc.EntryAzimuth()), 0.0, kAngleTol);
    EXPECT_NEAR(arc.GridArcLength(), 100.0 * kPi / 2.0, kTol);
    expect_at(arc.EndPt(), 1100.0, 2100.0);
    EXPECT_EQ(arc.StartStation(), GEO_NULL); // not given by this form
}

TEST(ArcSet, MajorArcFromEndPointsUsesItsAngleToFindTheCentre) {
    // Three quarters of a turn to the right from (0, 0) heading north, radius 100: the centre
    // is (0, 100) and the end (-100, 100); the chord alone would not tell which centre.
    CGeoPoint start(geo_nee{0.0, 0.0, 0.0});
    CGeoPoint end(geo_nee{-100.0, 100.0, 0.0});
    CGeoArc arc;
    arc.Set(start, end, 100.0, 1.5 * kPi, geodef_Right);
    expect_at(arc.CentrePt(), 0.0, 100.0);
    EXPECT_NEAR(std::sin(arc.EntryAzimuth()), 0.0, kAngleTol);
    EXPECT_NEAR(std::cos(arc.EntryAzimuth()), 1.0, kAngleTol);
    // And for a left turn the centre lies on the other side of the chord.
    CGeoPoint left_end(geo_nee{-100.0, -100.0, 0.0});
    arc.Set(start, left_end, 100.0, 1.5 * kPi, geodef_Left);
    expect_at(arc.CentrePt(), 0.0, -100.0);
}

TEST(ArcSet, LeftTurnPutsTheCentreOnTheLeft) {
    CGeoArc arc = left_arc(100.0);
    expect_at(arc.CentrePt(), 0.0, -100.0);
    // 1 rad round: the end is at centre + 100 (sin 1, cos 1).
    expect_at(arc.EndPt(), 100.0 * std::sin(1.0), -100.0 + 100.0 * std::cos(1.0));
    EXPECT_NEAR(arc.GridAzimuth(100.0), kTwoPi - 1.0, kAngleTol);
    EXPECT_EQ(arc.StartStation(), 1234.5);
}

TEST(ArcSet, SecondSetForgetsEverythingDerivedFromTheFirst) {
    CGeoArc arc = quarter_right();
    expect_at(arc.EndPt(), 1100.0, 2100.0);
    CGeoPoint start(geo_nee{0.0, 0.0, 0.0});
    arc.Set(start, kHalfPi, 10.0, 10.0 * kPi, geodef_Left, 5.0);
    expect_at(arc.CentrePt(), 10.0, 0.0);
    expect_at(arc.EndPt(), 20.0, 0.0);
    EXPECT_NEAR(arc.Angle(), kPi, kAngleTol);
}

TEST(ArcSet, CopiesAreIndependent) {
    CGeoArc arc = left_arc(100.0);
    CGeoArc copy(arc);
    CGeoArc assigned;
    assigned = arc;
    arc = quarter_right();
    for (CGeoArc* a : {&copy, &assigned}) {
        expect_at(a->CentrePt(), 0.0, -100.0);
        EXPECT_EQ(a->Direction(), geodef_Left);
        EXPECT_EQ(a->StartStation(), 1234.5);
        EXPECT_EQ(a->GridArcLength(), 100.0);
    }
}

TEST(ArcDefaults, NeverSetArcReportsRightAndNullRadius) {
    CGeoArc arc;
    EXPECT_EQ(arc.Direction(), geodef_Right);
    EXPECT_EQ(arc.Radius(), GEO_NULL);
    EXPECT_EQ(arc.Radius(), GEO_NULL); // and stays null
    EXPECT_EQ(arc.Angle(), GEO_NULL);
    EXPECT_EQ(arc.GridArcLength(), GEO_NULL);
    EXPECT_EQ(arc.EntryAzimuth(), GEO_NULL);
    EXPECT_EQ(arc.StartStation(), GEO_NULL);
    EXPECT_EQ(arc.GridAzimuth(10.0), GEO_NULL);
    EXPECT_EQ(arc.CentrePt().Ok2DGrid(), 0);
    EXPECT_EQ(arc.EndPt().Ok2DGrid(), 0);
    CGeoPoint p(geo_nee{1.0, 2.0, 3.0});
    EXPECT_TRUE(no_deltas(arc, p));
    CGeoPoint result(geo_nee{7.0, 8.0, 9.0});
    arc.GridHorzPoint(1.0, result);
    EXPECT_EQ(result.Northing(), 7.0); // untouched
    arc.GridHorzPointByAngle(1.0, result);
    EXPECT_TRUE(all_null(result));
}

TEST(ArcDerivation, LengthFromAngleAndAngleFromLength) {
    CGeoArc by_ends = quarter_right_by_ends();
    EXPECT_EQ(by_ends.GridArcLength(), kPi / 2.0 * 100.0); // angle x radius
    CGeoArc by_length = left_arc(150.0);
    EXPECT_EQ(by_length.Angle(), 150.0 / 100.0); // length / radius
}

TEST(ArcDerivation, EndPointWithoutAStartIsAllNullAndStaysSo) {
    CGeoPoint nowhere;
    CGeoArc arc;
    arc.Set(nowhere, 0.0, 100.0, 50.0, geodef_Right, 0.0);
    EXPECT_TRUE(all_null(arc.EndPt()));
    EXPECT_EQ(arc.CentrePt().Ok2DGrid(), 0);
    // Distance-based azimuths need no centre.
    EXPECT_NEAR(arc.GridAzimuth(50.0), 0.5, kAngleTol);
}

TEST(ArcDerivation, NullInputsDeriveNoCentre) {
    CGeoPoint start(geo_nee{0.0, 0.0, 0.0});
    CGeoArc arc;
    arc.Set(start, GEO_NULL, 100.0, 50.0, geodef_Right, 0.0);
    EXPECT_EQ(arc.CentrePt().Ok2DGrid(), 0);
    EXPECT_EQ(arc.GridAzimuth(10.0), GEO_NULL);
    arc.Set(start, 0.0, GEO_NULL, 50.0, geodef_Right, 0.0);
    EXPECT_EQ(arc.CentrePt().Ok2DGrid(), 0);
    CGeoPoint end(geo_nee{100.0, 100.0, 0.0});
    arc.Set(start, end, 100.0, GEO_NULL, geodef_Right);
    EXPECT_EQ(arc.CentrePt().Ok2DGrid(), 0);
    EXPECT_EQ(arc.EntryAzimuth(), GEO_NULL);
}

TEST(ArcDerivation, NonFiniteInputsDeriveNoCentre) {
    CGeoPoint start(geo_nee{0.0, 0.0, 0.0});
    CGeoArc arc;
    arc.Set(start, std::numeric_limits<double>::infinity(), 100.0, 50.0, geodef_Right, 0.0);
    EXPECT_EQ(arc.CentrePt().Ok2DGrid(), 0);
    CGeoPoint p(geo_nee{10.0, 10.0, 0.0});
    EXPECT_TRUE(no_deltas(arc, p));
    arc.Set(start, 0.0, std::numeric_limits<double>::quiet_NaN(), 50.0, geodef_Right, 0.0);
    EXPECT_EQ(arc.CentrePt().Ok2DGrid(), 0);
    CGeoPoint end(geo_nee{100.0, 100.0, 0.0});
    arc.Set(start, end, 100.0, std::numeric_limits<double>::infinity(), geodef_Left);
    EXPECT_EQ(arc.CentrePt().Ok2DGrid(), 0);
}

TEST(ArcDerivation, AFailedCentreLeavesNoCentreOfAnEarlierDefinition) {
    CGeoArc arc = quarter_right();
    expect_at(arc.CentrePt(), 1000.0, 2100.0);
    CGeoPoint nowhere;
    arc.Set(nowhere, 0.0, 100.0, 50.0, geodef_Right, 0.0);
    EXPECT_EQ(arc.CentrePt().Ok2DGrid(), 0);
    CGeoPoint p(geo_nee{1000.0, 2000.0, 0.0});
    EXPECT_TRUE(no_deltas(arc, p));
}

TEST(ArcDerivation, TinyRadiusMakesEveryDistanceBasedPositionNull) {
    CGeoPoint start(geo_nee{0.0, 0.0, 0.0});
    CGeoArc arc;
    arc.Set(start, 0.0, 0.0004, 1.0, geodef_Right, 0.0);
    EXPECT_EQ(arc.Angle(), GEO_NULL);
    EXPECT_EQ(arc.GridAzimuth(0.5), GEO_NULL);
    EXPECT_TRUE(all_null(arc.EndPt()));
    CGeoPoint result(geo_nee{3.0, 4.0, 5.0});
    arc.GridHorzPoint(0.5, result);
    EXPECT_EQ(result.Northing(), 3.0);
    EXPECT_EQ(result.Easting(), 4.0);
}

TEST(ArcDerivation, DerivedPointsKeepTheStartPointsLinks) {
    // The start is an instrument station; derived points are copies of it with new grid
    // coordinates, so they are plain grid points (and would keep a transformation link).
    CGeoPoint known(geo_nee{1000.0, 2000.0, 50.0});
    CGeoPoint station;
    station.SetStation(known, 1.5);
    CGeoArc arc;
    arc.Set(station, 0.0, 100.0, 10.0, geodef_Right, 0.0);
    EXPECT_EQ(arc.EndPt().Flags(), CGeoPoint::PT_GRID);
    EXPECT_EQ(arc.EndPt().HI(), 1.5);
    EXPECT_EQ(arc.CentrePt().HI(), 1.5);
}

// ---------------------------------------------------------------------------------------------
// Positions

TEST(ArcPosition, PointsAlongARightTurn) {
    CGeoArc arc = quarter_right();
    for (double s : {-50.0, 0.0, 30.0, 100.0, 157.0, 300.0}) {
        const double theta = s / 100.0;
        CGeoPoint p;
        arc.GridHorzPoint(s, p);
        // Clockwise from the start radius (west of the centre).
        expect_at(p, 1000.0 + 100.0 * std::sin(theta), 2100.0 - 100.0 * std::cos(theta));
        EXPECT_EQ(p.Elevation(), 50.0); // no grade on an arc
        EXPECT_NEAR(std::cos(arc.GridAzimuth(s)), std::cos(theta), kAngleTol);
        EXPECT_NEAR(std::sin(arc.GridAzimuth(s)), std::sin(theta), kAngleTol);
    }
}

TEST(ArcPosition, PointsAlongALeftTurn) {
    CGeoArc arc = left_arc(100.0);
    for (double s : {-20.0, 0.0, 60.0, 200.0}) {
        const double theta = s / 100.0;
        CGeoPoint p;
        arc.GridHorzPoint(s, p);
        expect_at(p, 100.0 * std::sin(theta), -100.0 + 100.0 * std::cos(theta));
        EXPECT_EQ(p.Elevation(), 10.0);
    }
}

TEST(ArcPosition, ByAngleFollowsTheDirection) {
    CGeoArc right = quarter_right();
    CGeoPoint p;
    right.GridHorzPointByAngle(kPi / 3.0, p);
    expect_at(p, 1000.0 + 100.0 * std::sin(kPi / 3.0), 2100.0 - 100.0 * std::cos(kPi / 3.0));
    CGeoArc left = left_arc(100.0);
    left.GridHorzPointByAngle(0.25, p);
    expect_at(p, 100.0 * std::sin(0.25), -100.0 + 100.0 * std::cos(0.25));
}

TEST(ArcPosition, ByAngleDoesNotTestTheAngleForNull) {
    // The marker is a tiny angle: the point is the start.
    CGeoArc arc = quarter_right();
    CGeoPoint p;
    arc.GridHorzPointByAngle(GEO_NULL, p);
    expect_at(p, 1000.0, 2000.0);
}

TEST(ArcPosition, ByAngleGivesAPlainGridPoint) {
    CGeoArc arc = quarter_right();
    CGeoPoint known(geo_nee{1.0, 2.0, 3.0});
    CGeoPoint result;
    result.SetStation(known, 1.7);
    arc.GridHorzPointByAngle(0.1, result);
    EXPECT_EQ(result.Flags(), CGeoPoint::PT_GRID); // no longer a station
    EXPECT_EQ(result.Elevation(), 50.0);
}

TEST(ArcPosition, AlongTheArcIsTheRadiusStepFromTheCentreToTheLastBit) {
    // A point along the arc is the end of a level line from the centre along the radial
    // azimuth, over the radius.
    CGeoArc arc = quarter_right();
    CGeoPoint p;
    arc.GridHorzPoint(77.7, p);
    const double radial = arc.CentreToStart().GridAzimuth() + 0.777;
    CGeoLine radius_line;
    radius_line.Set(arc.CentrePt(), radial, 100.0, 0.0);
    EXPECT_EQ(bits_of(p.Northing()), bits_of(radius_line.EndPt().Northing()));
    EXPECT_EQ(bits_of(p.Easting()), bits_of(radius_line.EndPt().Easting()));
}

// ---------------------------------------------------------------------------------------------
// Station and offset

void deltas_of(CGeoArc& arc, const geo_nee& at, double& station, double& offset, double& azimuth) {
    CGeoPoint p(at);
    arc.GridDeltas(p, station, offset, azimuth);
}

TEST(ArcDeltas, MidpointIsOnTheArcAtAnEighthTurn) {
    CGeoArc arc = quarter_right();
    double station = 0.0;
    double offset = 0.0;
    double azimuth = 0.0;
    const double r = 100.0 * std::sqrt(0.5);
    deltas_of(arc, {1000.0 + r, 2100.0 - r, 0.0}, station, offset, azimuth);
    EXPECT_NEAR(station, 100.0 * kPi / 4.0, kTol);
    EXPECT_NEAR(offset, 0.0, kTol);
    EXPECT_NEAR(azimuth, kPi / 4.0, kAngleTol);
}

TEST(ArcDeltas, CentreIsAFullRadiusToTheRightOfARightTurn) {
    CGeoArc arc = quarter_right();
    double station = 0.0;
    double offset = 0.0;
    double azimuth = 0.0;
    deltas_of(arc, {1000.0, 2100.0, 0.0}, station, offset, azimuth);
    EXPECT_NEAR(offset, 100.0, kTol);
}

TEST(ArcDeltas, CentreIsAFullRadiusToTheLeftOfALeftTurn) {
    CGeoArc arc = left_arc(100.0);
    double station = 0.0;
    double offset = 0.0;
    double azimuth = 0.0;
    deltas_of(arc, {0.0, -100.0, 0.0}, station, offset, azimuth);
    EXPECT_NEAR(offset, -100.0, kTol);
}

TEST(ArcDeltas, OutsideALeftTurnIsToTheRight) {
    CGeoArc arc = left_arc(100.0);
    double station = 0.0;
    double offset = 0.0;
    double azimuth = 0.0;
    // 0.5 rad round, 10 m outside the circle.
    deltas_of(arc, {110.0 * std::sin(0.5), -100.0 + 110.0 * std::cos(0.5), 0.0}, station, offset,
              azimuth);
    EXPECT_NEAR(station, 50.0, kTol);
    EXPECT_NEAR(offset, 10.0, kTol);
    EXPECT_NEAR(azimuth, kTwoPi - 0.5, kAngleTol);
}

TEST(ArcDeltas, PointJustBehindTheStartHasSmallNegativeStation) {
    CGeoArc arc = quarter_right();
    double station = 0.0;
    double offset = 0.0;
    double azimuth = 0.0;
    const double theta = -0.01;
    deltas_of(arc, {1000.0 + 100.0 * std::sin(theta), 2100.0 - 100.0 * std::cos(theta), 0.0},
              station, offset, azimuth);
    EXPECT_NEAR(station, -1.0, kTol);
    EXPECT_NEAR(offset, 0.0, kTol);
    EXPECT_NEAR(azimuth, kTwoPi - 0.01, kAngleTol);
}

TEST(ArcDeltas, CutOverLiesHalfWayRoundTheUncoveredPart) {
    // The quarter arc leaves three quarters of the circle uncovered; their middle is 5/8 of a
    // turn from the start radius. Just before it stations are positive, just after negative.
    CGeoArc arc = quarter_right();
    double station = 0.0;
    double offset = 0.0;
    double azimuth = 0.0;
    const double cut = kPi / 4.0 + kPi;
    for (double eps : {-1e-6, 1e-6}) {
        const double theta = cut + eps;
        deltas_of(arc, {1000.0 + 100.0 * std::sin(theta), 2100.0 - 100.0 * std::cos(theta), 0.0},
                  station, offset, azimuth);
        if (eps < 0.0) {
            EXPECT_NEAR(station, 100.0 * theta, 1e-8);
        } else {
            EXPECT_NEAR(station, -100.0 * (kTwoPi - theta), 1e-8);
        }
    }
}

TEST(ArcDeltas, PointExactlyOnTheStartRadiusOfARightTurnIsStationZero) {
    CGeoArc arc = quarter_right();
    double station = 1.0;
    double offset = 0.0;
    double azimuth = 0.0;
    deltas_of(arc, {1000.0, 1990.0, 0.0}, station, offset, azimuth);
    EXPECT_EQ(station, 0.0); // -0: swept 2 pi taken as just behind the start
    EXPECT_NEAR(offset, -10.0, kTol);
}

TEST(ArcDeltas, PointWithoutPlanCoordinatesGivesThreeNulls) {
    CGeoArc arc = quarter_right();
    CGeoPoint nowhere;
    EXPECT_TRUE(no_deltas(arc, nowhere));
}

TEST(ArcDeltas, AgreesToTheLastBitWithTheRadiusLines) {
    // The inversion compares the line centre -> point with the line centre -> start.
    CGeoArc arc = quarter_right_by_ends();
    CGeoPoint p(geo_nee{1040.3, 2031.7, 0.0});
    double station = 0.0;
    double offset = 0.0;
    double azimuth = 0.0;
    arc.GridDeltas(p, station, offset, azimuth);
    CGeoLine to_point(arc.CentrePt(), p);
    CGeoLine to_start(arc.CentreToStart());
    const double swept = kTwoPi - to_start.GridDivergenceClockwise(to_point);
    EXPECT_EQ(bits_of(station), bits_of(swept * 100.0));
    EXPECT_EQ(bits_of(offset), bits_of(100.0 - to_point.GridHDistance()));
    EXPECT_EQ(bits_of(azimuth), bits_of(geo_normalised_bearing(arc.EntryAzimuth() + swept)));
}

TEST(ArcDeltas, RoundTripReproducesPointsAroundTheArc) {
    // Points within 50 m either side of the arc, from 60 m before its start to 60 m beyond its
    // end, built from the circle by hand; their station and offset put back through the arc
    // give them again.
    std::mt19937_64 rng(31);
    std::uniform_real_distribution<double> along(-60.0, 100.0 * kPi / 2.0 + 60.0);
    std::uniform_real_distribution<double> across(-50.0, 50.0);
    for (geodef_Direction direction : {geodef_Right, geodef_Left}) {
        CGeoPoint start(geo_nee{5000.0, 3000.0, 12.0});
        const double entry = 0.7;
        const double r = 100.0;
        CGeoArc arc;
        arc.Set(start, entry, r, r * kPi / 2.0, direction, 0.0);
        const double side = direction == geodef_Right ? 1.0 : -1.0;
        // Centre square off the entry tangent on the inside.
        const double cn = 5000.0 + r * std::cos(entry + side * kHalfPi);
        const double ce = 3000.0 + r * std::sin(entry + side * kHalfPi);
        for (int i = 0; i < 500; ++i) {
            const double s = along(rng);
            const double o = across(rng);
            const double radial = entry - side * kHalfPi + side * s / r;
            const double dist = r - side * o; // right offsets lie inside a right turn
            CGeoPoint p(geo_nee{cn + dist * std::cos(radial), ce + dist * std::sin(radial), 0.0});
            double station = 0.0;
            double offset = 0.0;
            double azimuth = 0.0;
            arc.GridDeltas(p, station, offset, azimuth);
            EXPECT_NEAR(station, s, kTol);
            EXPECT_NEAR(offset, o, kTol);
            CGeoPoint on_arc;
            arc.GridHorzPoint(station, on_arc);
            CGeoLine square;
            square.Set(on_arc, azimuth + kHalfPi, offset, 0.0);
            EXPECT_NEAR(square.EndPt().Northing(), p.Northing(), kTol);
            EXPECT_NEAR(square.EndPt().Easting(), p.Easting(), kTol);
        }
    }
}

TEST(ArcMath, RadialAzimuthTurnsWithTheDirection) {
    const qv5::detail::ArcCircle circle{{0.0, 0.0, 0.0}, 0.5, 10.0};
    EXPECT_NEAR(qv5::detail::arc_radial_azimuth(circle, 0.25, true), 0.75, kAngleTol);
    EXPECT_NEAR(qv5::detail::arc_radial_azimuth(circle, 0.75, false), kTwoPi - 0.25, kAngleTol);
}

TEST(ArcMath, DeltasPassANullEntryAzimuthThrough) {
    const qv5::detail::ArcCircle circle{{0.0, 0.0, 0.0}, 0.0, 10.0};
    const auto d = qv5::detail::arc_deltas(circle, 1.0, GEO_NULL, geodef_Right, {0.0, 5.0, 0.0});
    EXPECT_EQ(d.azimuth, GEO_NULL);
    EXPECT_NEAR(d.station, 10.0 * kHalfPi, kTol);
    EXPECT_NEAR(d.offset, 5.0, kTol);
}

} // namespace
