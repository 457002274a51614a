// CGeoPoint: grid points, observed points and instrument stations, lazy derivation and its cache.
//
// Expected coordinates of observed points are worked out by hand from the radial reduction
//   hd = dist |sin vz|,  north = N0 + cos(hz) hd,  east = E0 + sin(hz) hd,
//   elevation = Z0 + dist cos(vz) + instrument height
// (checked with a few lines of plain Python).
#include "qv5/geopoint.h"

#include <gtest/gtest.h>

#include <cmath>
#include <cstdint>

namespace {

/// Closed-form coordinates: metres.
constexpr double kTol = 1e-9;

constexpr double kDeg = 0.017453292519943295;

constexpr std::uint64_t kGrid = CGeoPoint::PT_GRID;
constexpr std::uint64_t kObs = CGeoPoint::PT_OBS;
constexpr std::uint64_t kStation = CGeoPoint::PT_STATION;

// A station at (5000, 3000, 100) and a shot to the north-east: hz 30 deg, zenith 80 deg, 200 m.
// hd = 200 sin 80 = 196.96155060244163, dz = 200 cos 80 = 34.72963553338607.
constexpr double kStationN = 5000.0;
constexpr double kStationE = 3000.0;
constexpr double kStationZ = 100.0;
constexpr double kHz = 30.0 * kDeg;
constexpr double kVz = 80.0 * kDeg;
constexpr double kDist = 200.0;
constexpr double kShotN = 5170.573706390489;
constexpr double kShotE = 3098.480775301221;
constexpr double kShotZNoHi = 134.72963553338607; // station elevation + dz, no instrument height

CGeoPoint plain_station() {
    return CGeoPoint(geo_nee{kStationN, kStationE, kStationZ});
}

CGeoPoint instrument_station(double hi) {
    CGeoPoint station;
    station.SetStation(plain_station(), hi);
    return station;
}

// ---------------------------------------------------------------------------------------------
// Construction and grid points

TEST(PointDefault, KnowsNothingAndHasNoInstrumentHeight) {
    CGeoPoint point;
    EXPECT_EQ(point.Flags(), 0u);
    EXPECT_EQ(point.HI(), GEO_NULL);
}

TEST(PointDefault, DerivesNullGridAndCachesIt) {
    CGeoPoint point;
    EXPECT_EQ(point.Northing(), GEO_NULL);
    EXPECT_EQ(point.Easting(), GEO_NULL);
    EXPECT_EQ(point.Elevation(), GEO_NULL);
    // The failed derivation counts as a grid value from now on.
    EXPECT_EQ(point.Flags(), kGrid);
    EXPECT_EQ(point.Ok2DGrid(), 0);
    EXPECT_EQ(point.Ok3DGrid(), 0);
}

TEST(PointGrid, ConstructorFromRecordSetsGridOnly) {
    CGeoPoint point(geo_nee{10.5, -20.25, 3.125});
    EXPECT_EQ(point.Flags(), kGrid);
    EXPECT_EQ(point.Northing(), 10.5);
    EXPECT_EQ(point.Easting(), -20.25);
    EXPECT_EQ(point.Elevation(), 3.125);
    EXPECT_EQ(point.HI(), GEO_NULL);
}

TEST(PointGrid, BothSetGridFormsStoreTheCoordinatesAsGiven) {
    CGeoPoint a;
    a.SetGrid(geo_nee{1.0, 2.0, 3.0});
    CGeoPoint b;
    b.SetGrid(1.0, 2.0, 3.0);
    for (CGeoPoint* p : {&a, &b}) {
        EXPECT_EQ(p->Northing(), 1.0);
        EXPECT_EQ(p->Easting(), 2.0);
        EXPECT_EQ(p->Elevation(), 3.0);
        EXPECT_EQ(p->Flags(), kGrid);
    }
}

TEST(PointGrid, NullCoordinatesArePassedThrough) {
    CGeoPoint point(geo_nee{GEO_NULL, 7.0, GEO_NULL});
    EXPECT_EQ(point.Northing(), GEO_NULL);
    EXPECT_EQ(point.Easting(), 7.0);
    EXPECT_EQ(point.Elevation(), GEO_NULL);
}

TEST(PointGrid, SetGridOnAStationDropsTheStationBitButKeepsTheHeight) {
    CGeoPoint station = instrument_station(1.5);
    ASSERT_EQ(station.Flags(), kGrid | kStation);
    station.SetGrid(1.0, 2.0, 3.0);
    EXPECT_EQ(station.Flags(), kGrid);
    EXPECT_EQ(station.HI(), 1.5); // the height stays, but it is no longer valid as a station's

    // Observations from it no longer give a plan position.
    CGeoPoint shot;
    shot.SetHVD(kHz, kVz, kDist, station);
    EXPECT_EQ(shot.Northing(), GEO_NULL);
}

TEST(PointGrid, SetGridOnAnObservedPointForgetsTheObservation) {
    CGeoPoint station = instrument_station(1.5);
    CGeoPoint shot;
    shot.SetHVD(kHz, kVz, kDist, station);
    shot.SetGrid(7.0, 8.0, 9.0);
    EXPECT_EQ(shot.Flags(), kGrid);
    EXPECT_EQ(shot.Northing(), 7.0);
    EXPECT_EQ(shot.Easting(), 8.0);
    EXPECT_EQ(shot.Elevation(), 9.0);
}

// ---------------------------------------------------------------------------------------------
// Observed points

TEST(PointObserved, SetHVDSetsOnlyTheObservationBit) {
    CGeoPoint station = instrument_station(1.5);
    CGeoPoint shot(geo_nee{1.0, 2.0, 3.0});
    shot.SetHVD(kHz, kVz, kDist, station);
    EXPECT_EQ(shot.Flags(), kObs);
}

TEST(PointObserved, SetHVDOnAStationMakesItAnOrdinaryObservedPoint) {
    CGeoPoint station = instrument_station(1.5);
    CGeoPoint other = instrument_station(2.0);
    other.SetHVD(kHz, kVz, kDist, station);
    EXPECT_EQ(other.Flags(), kObs);
}

TEST(PointObserved, FromInstrumentStationReducesWithItsHeight) {
    CGeoPoint station = instrument_station(1.5);
    CGeoPoint shot;
    shot.SetHVD(geo_hvd{kHz, kVz, kDist}, station);
    EXPECT_NEAR(shot.Northing(), kShotN, kTol);
    EXPECT_NEAR(shot.Easting(), kShotE, kTol);
    EXPECT_NEAR(shot.Elevation(), kShotZNoHi + 1.5, kTol);
    EXPECT_EQ(shot.Flags(), kObs | kGrid);
}

TEST(PointObserved, RecordAndScalarFormsOfSetHVDAgree) {
    CGeoPoint station = instrument_station(1.5);
    CGeoPoint a;
    a.SetHVD(geo_hvd{kHz, kVz, kDist}, station);
    CGeoPoint b;
    b.SetHVD(kHz, kVz, kDist, station);
    EXPECT_EQ(a.Northing(), b.Northing());
    EXPECT_EQ(a.Easting(), b.Easting());
    EXPECT_EQ(a.Elevation(), b.Elevation());
}

TEST(PointObserved, ElevationAskedFirstFillsAllThreeCoordinates) {
    CGeoPoint station = instrument_station(2.25);
    CGeoPoint shot;
    shot.SetHVD(kHz, kVz, kDist, station);
    EXPECT_NEAR(shot.Elevation(), kShotZNoHi + 2.25, kTol);
    EXPECT_EQ(shot.Flags(), kObs | kGrid);
    EXPECT_NEAR(shot.Northing(), kShotN, kTol);
    EXPECT_NEAR(shot.Easting(), kShotE, kTol);
}

TEST(PointObserved, ZeroZenithAngleShotGoesStraightUp) {
    // Zenith angle 0: straight up, no plan displacement.
    CGeoPoint station = instrument_station(1.0);
    CGeoPoint shot;
    shot.SetHVD(1.0, 0.0, 10.0, station);
    EXPECT_NEAR(shot.Northing(), kStationN, kTol);
    EXPECT_NEAR(shot.Easting(), kStationE, kTol);
    EXPECT_NEAR(shot.Elevation(), kStationZ + 10.0 + 1.0, kTol);
}

TEST(PointObserved, NullDistanceGivesNullEverywhereEvenFromAStation) {
    CGeoPoint station = instrument_station(1.5);
    CGeoPoint shot;
    shot.SetHVD(kHz, kVz, GEO_NULL, station);
    EXPECT_EQ(shot.Elevation(), GEO_NULL);
    EXPECT_EQ(shot.Northing(), GEO_NULL);
    EXPECT_EQ(shot.Easting(), GEO_NULL);
}

TEST(PointObserved, FromPlainPointNorthingFirstCachesAllThreeAsNull) {
    CGeoPoint station = plain_station();
    CGeoPoint shot;
    shot.SetHVD(kHz, kVz, kDist, station);
    EXPECT_EQ(shot.Northing(), GEO_NULL);
    EXPECT_EQ(shot.Flags(), kObs | kGrid);
    EXPECT_EQ(shot.Easting(), GEO_NULL);
    // The elevation could have been reduced, but the failed plan derivation has been cached.
    EXPECT_EQ(shot.Elevation(), GEO_NULL);
}

TEST(PointObserved, FromPlainPointEastingFirstCachesAllThreeAsNull) {
    CGeoPoint station = plain_station();
    CGeoPoint shot;
    shot.SetHVD(kHz, kVz, kDist, station);
    EXPECT_EQ(shot.Easting(), GEO_NULL);
    EXPECT_EQ(shot.Northing(), GEO_NULL);
    EXPECT_EQ(shot.Elevation(), GEO_NULL);
}

TEST(PointObserved, FromPlainPointElevationFirstCachesTheWholeReduction) {
    // The elevation is reduced even from a point that was never made a station; its instrument
    // height is null and counts as the tiny number it is. Because the derivation fills all three
    // coordinates at once, north and east come out too.
    CGeoPoint station = plain_station();
    CGeoPoint shot;
    shot.SetHVD(kHz, kVz, kDist, station);
    EXPECT_NEAR(shot.Elevation(), kShotZNoHi, kTol);
    EXPECT_NEAR(shot.Northing(), kShotN, kTol);
    EXPECT_NEAR(shot.Easting(), kShotE, kTol);
}

TEST(PointObserved, FromPlainPointOnlyTheElevationCanBeReduced) {
    // Each coordinate asked first of its own freshly observed point.
    CGeoPoint station = plain_station();
    CGeoPoint for_north;
    for_north.SetHVD(kHz, kVz, kDist, station);
    CGeoPoint for_east;
    for_east.SetHVD(kHz, kVz, kDist, station);
    CGeoPoint for_elevation;
    for_elevation.SetHVD(kHz, kVz, kDist, station);
    EXPECT_EQ(for_north.Northing(), GEO_NULL);
    EXPECT_EQ(for_east.Easting(), GEO_NULL);
    EXPECT_NEAR(for_elevation.Elevation(), kShotZNoHi, kTol);
    EXPECT_EQ(for_elevation.Ok3DGrid(), 1); // and, having been derived whole, it is complete
}

TEST(PointObserved, ElevationFromFormerStationUsesItsLeftoverHeight) {
    // SetGrid dropped the station bit but left the instrument height; the elevation uses it as
    // it stands, while north and east are refused.
    CGeoPoint station = instrument_station(1.5);
    station.SetGrid(kStationN, kStationE, kStationZ);
    CGeoPoint shot;
    shot.SetHVD(kHz, kVz, kDist, station);
    EXPECT_NEAR(shot.Elevation(), kShotZNoHi + 1.5, kTol);

    CGeoPoint plan_first;
    plan_first.SetHVD(kHz, kVz, kDist, station);
    EXPECT_EQ(plan_first.Northing(), GEO_NULL);
    EXPECT_EQ(plan_first.Elevation(), GEO_NULL);
}

TEST(PointObserved, GetGridOfObservedPointAsksNorthingFirst) {
    CGeoPoint station = plain_station();
    CGeoPoint shot;
    shot.SetHVD(kHz, kVz, kDist, station);
    geo_nee grid{1.0, 2.0, 3.0};
    geo_nee& returned = shot.GetGrid(grid);
    EXPECT_EQ(&returned, &grid);
    EXPECT_EQ(grid.north, GEO_NULL);
    EXPECT_EQ(grid.east, GEO_NULL);
    EXPECT_EQ(grid.elev, GEO_NULL);
}

TEST(PointObserved, FailedDerivationIsNotRetriedUntilTheNextSet) {
    CGeoPoint station = plain_station();
    CGeoPoint shot;
    shot.SetHVD(kHz, kVz, kDist, station);
    ASSERT_EQ(shot.Northing(), GEO_NULL);

    // The station becomes an instrument station, but the shot keeps its cached failure.
    station.SetStation(station, 1.5);
    ASSERT_EQ(station.Flags(), kGrid | kStation);
    EXPECT_EQ(shot.Northing(), GEO_NULL);
    EXPECT_EQ(shot.Easting(), GEO_NULL);
    EXPECT_EQ(shot.Elevation(), GEO_NULL);

    // Setting the observation again clears the cache.
    shot.SetHVD(kHz, kVz, kDist, station);
    EXPECT_NEAR(shot.Northing(), kShotN, kTol);
    EXPECT_NEAR(shot.Easting(), kShotE, kTol);
    EXPECT_NEAR(shot.Elevation(), kShotZNoHi + 1.5, kTol);
}

TEST(PointObserved, DerivedGridIsCachedAndDoesNotFollowTheStation) {
    CGeoPoint station = instrument_station(1.5);
    CGeoPoint shot;
    shot.SetHVD(kHz, kVz, kDist, station);
    ASSERT_NEAR(shot.Northing(), kShotN, kTol);
    station.SetStation(CGeoPoint(geo_nee{0.0, 0.0, 0.0}), 1.5);
    EXPECT_NEAR(shot.Northing(), kShotN, kTol);
    EXPECT_NEAR(shot.Elevation(), kShotZNoHi + 1.5, kTol);
}

TEST(PointObserved, StationLinkIsReadAtDerivationTime) {
    // Nothing is derived at SetHVD: a station moved before the first request is used where it is.
    CGeoPoint station = instrument_station(1.5);
    CGeoPoint shot;
    shot.SetHVD(kHz, kVz, kDist, station);
    station.SetStation(CGeoPoint(geo_nee{kStationN + 10.0, kStationE - 20.0, kStationZ}), 1.5);
    EXPECT_NEAR(shot.Northing(), kShotN + 10.0, kTol);
    EXPECT_NEAR(shot.Easting(), kShotE - 20.0, kTol);
}

TEST(PointObserved, StationThatIsItselfObservedIsDerivedRecursively) {
    // S (5000, 3000, 100) hi 1.5 -> P1 (hz 30, vz 80, 200 m); P1 made a station with hi 1.7;
    // -> P2 (hz 135, vz 95, 150 m). hd2 = 150 sin 95 = 149.4292, dz2 = 150 cos 95 = -13.0734.
    CGeoPoint station = instrument_station(1.5);
    CGeoPoint p1;
    p1.SetHVD(kHz, kVz, kDist, station);
    CGeoPoint s1;
    s1.SetStation(p1, 1.7);
    EXPECT_EQ(s1.Flags(), kObs | kStation);
    CGeoPoint p2;
    p2.SetHVD(135.0 * kDeg, 95.0 * kDeg, 150.0, s1);
    EXPECT_NEAR(p2.Northing(), 5064.911302430075, kTol);
    EXPECT_NEAR(p2.Easting(), 3204.143179261635, kTol);
    EXPECT_NEAR(p2.Elevation(), 124.85627412123735, kTol);
    // The intermediate station has derived (and cached) its own grid on the way.
    EXPECT_EQ(s1.Flags(), kObs | kStation | kGrid);
    EXPECT_NEAR(s1.Northing(), kShotN, kTol);
    // The point it was copied from is untouched.
    EXPECT_EQ(p1.Flags(), kObs);
}

// ---------------------------------------------------------------------------------------------
// Stations and copies

TEST(PointStation, SetStationCopiesThePointAndAddsTheStationBit) {
    CGeoPoint source(geo_nee{1.0, 2.0, 3.0});
    CGeoPoint station;
    station.SetStation(source, 1.65);
    EXPECT_EQ(station.Flags(), kGrid | kStation);
    EXPECT_EQ(station.HI(), 1.65);
    EXPECT_EQ(station.Northing(), 1.0);
    EXPECT_EQ(station.Easting(), 2.0);
    EXPECT_EQ(station.Elevation(), 3.0);
    EXPECT_EQ(source.Flags(), kGrid);
    EXPECT_EQ(source.HI(), GEO_NULL);
}

TEST(PointStation, SetStationKeepsObservationAndCacheBits) {
    CGeoPoint base = instrument_station(1.5);
    CGeoPoint shot;
    shot.SetHVD(kHz, kVz, kDist, base);
    CGeoPoint underived;
    underived.SetStation(shot, 1.2);
    EXPECT_EQ(underived.Flags(), kObs | kStation);

    ASSERT_NEAR(shot.Northing(), kShotN, kTol);
    CGeoPoint derived;
    derived.SetStation(shot, 1.2);
    EXPECT_EQ(derived.Flags(), kObs | kGrid | kStation);
}

TEST(PointStation, SetStationCopiesTheStationLinkOfAnObservedPoint) {
    // The copy is observed from the same station (not from a copy of it): moving that station
    // before the first request moves the copy too.
    CGeoPoint base = instrument_station(1.5);
    CGeoPoint shot;
    shot.SetHVD(kHz, kVz, kDist, base);
    CGeoPoint station;
    station.SetStation(shot, 1.2);
    base.SetStation(CGeoPoint(geo_nee{kStationN + 1.0, kStationE + 2.0, kStationZ + 3.0}), 1.5);
    EXPECT_NEAR(station.Northing(), kShotN + 1.0, kTol);
    EXPECT_NEAR(station.Easting(), kShotE + 2.0, kTol);
    EXPECT_NEAR(station.Elevation(), kShotZNoHi + 1.5 + 3.0, kTol);
    EXPECT_EQ(station.HI(), 1.2);
}

TEST(PointStation, NewHeightReplacesTheOldOne) {
    CGeoPoint station = instrument_station(1.5);
    station.SetStation(station, 1.8);
    EXPECT_EQ(station.HI(), 1.8);
    CGeoPoint shot;
    shot.SetHVD(kHz, kVz, kDist, station);
    EXPECT_NEAR(shot.Elevation(), kShotZNoHi + 1.8, kTol);
}

TEST(PointStation, NullHeightStillMakesAStation) {
    CGeoPoint station;
    station.SetStation(plain_station(), GEO_NULL);
    EXPECT_EQ(station.Flags(), kGrid | kStation);
    CGeoPoint shot;
    shot.SetHVD(kHz, kVz, kDist, station);
    EXPECT_NEAR(shot.Northing(), kShotN, kTol);
    EXPECT_NEAR(shot.Elevation(), kShotZNoHi, kTol);
}

TEST(PointCopy, CopyConstructorCopiesEveryField) {
    CGeoPoint station = instrument_station(1.5);
    CGeoPoint copy(station);
    EXPECT_EQ(copy.Flags(), station.Flags());
    EXPECT_EQ(copy.HI(), 1.5);
    EXPECT_EQ(copy.Northing(), kStationN);
    EXPECT_EQ(copy.Easting(), kStationE);
    EXPECT_EQ(copy.Elevation(), kStationZ);
}

TEST(PointCopy, CopySharesTheStationInsteadOfCopyingIt) {
    CGeoPoint station = plain_station();
    CGeoPoint shot;
    shot.SetHVD(kHz, kVz, kDist, station);
    CGeoPoint copy(shot);
    CGeoPoint assigned;
    assigned = shot;
    EXPECT_EQ(copy.Flags(), kObs);
    EXPECT_EQ(assigned.Flags(), kObs);

    // Only now does the original station get its instrument height; both copies see it.
    station.SetStation(station, 1.5);
    EXPECT_NEAR(copy.Northing(), kShotN, kTol);
    EXPECT_NEAR(copy.Elevation(), kShotZNoHi + 1.5, kTol);
    EXPECT_NEAR(assigned.Easting(), kShotE, kTol);
}

TEST(PointCopy, CopyCarriesTheCachedFailure) {
    CGeoPoint station = plain_station();
    CGeoPoint shot;
    shot.SetHVD(kHz, kVz, kDist, station);
    ASSERT_EQ(shot.Northing(), GEO_NULL);
    station.SetStation(station, 1.5);
    CGeoPoint copy(shot);
    EXPECT_EQ(copy.Northing(), GEO_NULL);
    EXPECT_EQ(copy.Elevation(), GEO_NULL);
}

TEST(PointCopy, AssignmentReplacesEverything) {
    CGeoPoint target = instrument_station(1.5);
    CGeoPoint source(geo_nee{1.0, 2.0, 3.0});
    target = source;
    EXPECT_EQ(target.Flags(), kGrid);
    EXPECT_EQ(target.HI(), GEO_NULL);
    EXPECT_EQ(target.Northing(), 1.0);
}

// ---------------------------------------------------------------------------------------------
// Cycles of station links

TEST(PointCycle, PlainPointsObservedFromEachOtherGiveNulls) {
    CGeoPoint a;
    CGeoPoint b;
    a.SetHVD(kHz, kVz, kDist, b);
    b.SetHVD(kHz, kVz, kDist, a);
    // b's elevation asks a for its grid; a cannot reduce its plan position from b (not a
    // station), so a caches nulls and the recursion stops there.
    const double b_elevation = b.Elevation();
    EXPECT_NE(b_elevation, GEO_NULL); // null station elevation and height used as numbers
    EXPECT_NEAR(b_elevation, kShotZNoHi - kStationZ, kTol);
    EXPECT_EQ(a.Flags(), kObs | kGrid);
    EXPECT_EQ(a.Northing(), GEO_NULL);
    EXPECT_EQ(a.Easting(), GEO_NULL);
    EXPECT_EQ(a.Elevation(), GEO_NULL);
}

TEST(PointCycle, PlanRequestInPlainCycleIsNullAtOnce) {
    CGeoPoint a;
    CGeoPoint b;
    a.SetHVD(kHz, kVz, kDist, b);
    b.SetHVD(kHz, kVz, kDist, a);
    EXPECT_EQ(a.Northing(), GEO_NULL);
    EXPECT_EQ(b.Flags(), kObs); // b was never asked
    EXPECT_EQ(b.Northing(), GEO_NULL);
}

TEST(PointCycle, StationsObservedFromEachOtherTerminate) {
    // A is a station observed from B, B a station observed from A. Asking A derives B, which finds
    // A's grid already marked current (and null) and reduces from that; the recursion ends.
    CGeoPoint a;
    CGeoPoint b;
    CGeoPoint shot_of_a;
    shot_of_a.SetHVD(0.0, 90.0 * kDeg, 0.0, b); // zero distance: A coincides with B
    CGeoPoint shot_of_b;
    shot_of_b.SetHVD(0.0, 90.0 * kDeg, 0.0, a);
    b.SetStation(shot_of_b, 0.0);
    a.SetStation(shot_of_a, 0.0);
    ASSERT_EQ(a.Flags(), kObs | kStation);
    ASSERT_EQ(b.Flags(), kObs | kStation);

    // A zero-length level shot reproduces the station's plan position exactly, so the null
    // that B saw in A comes straight through to both points in plan.
    EXPECT_EQ(a.Northing(), GEO_NULL);
    EXPECT_EQ(a.Easting(), GEO_NULL);
    EXPECT_EQ(b.Northing(), GEO_NULL);
    EXPECT_EQ(b.Easting(), GEO_NULL);
    // Zero distance and zero heights: the elevations are the null marker plus exact zeros.
    EXPECT_EQ(a.Elevation(), GEO_NULL);
    EXPECT_EQ(b.Elevation(), GEO_NULL);
    EXPECT_EQ(a.Flags(), kObs | kStation | kGrid);
    EXPECT_EQ(b.Flags(), kObs | kStation | kGrid);
}

TEST(PointCycle, PointObservedFromItselfTerminates) {
    CGeoPoint a;
    a.SetHVD(kHz, kVz, kDist, a);
    EXPECT_EQ(a.Northing(), GEO_NULL); // not a station
    CGeoPoint b;
    b.SetHVD(kHz, kVz, kDist, b);
    b.SetStation(b, 1.5);
    // Reduced from its own grid, which is marked current and null while it is being derived.
    EXPECT_NEAR(b.Northing(), kShotN - kStationN, kTol);
    EXPECT_NEAR(b.Easting(), kShotE - kStationE, kTol);
}

// ---------------------------------------------------------------------------------------------
// GetGrid, Grid, Ok2DGrid, Ok3DGrid

TEST(PointGetGrid, CopiesTheGridOfAGridPoint) {
    CGeoPoint point(geo_nee{1.0, 2.0, GEO_NULL});
    geo_nee grid{9.0, 9.0, 9.0};
    EXPECT_EQ(&point.GetGrid(grid), &grid);
    EXPECT_EQ(grid.north, 1.0);
    EXPECT_EQ(grid.east, 2.0);
    EXPECT_EQ(grid.elev, GEO_NULL);
}

TEST(PointGetGrid, DerivesAnObservedPoint) {
    CGeoPoint station = instrument_station(1.5);
    CGeoPoint shot;
    shot.SetHVD(kHz, kVz, kDist, station);
    geo_nee grid{};
    shot.GetGrid(grid);
    EXPECT_NEAR(grid.north, kShotN, kTol);
    EXPECT_NEAR(grid.east, kShotE, kTol);
    EXPECT_NEAR(grid.elev, kShotZNoHi + 1.5, kTol);
    EXPECT_EQ(shot.Flags(), kObs | kGrid);
}

TEST(PointGrid, GridReturnsThePointsOwnUpToDateRecord) {
    CGeoPoint station = instrument_station(1.5);
    CGeoPoint shot;
    shot.SetHVD(kHz, kVz, kDist, station);
    geo_nee& grid = shot.Grid();
    EXPECT_EQ(&grid, &shot.Grid());
    EXPECT_NEAR(grid.north, kShotN, kTol);
    EXPECT_NEAR(grid.east, kShotE, kTol);
    EXPECT_NEAR(grid.elev, kShotZNoHi + 1.5, kTol);
    EXPECT_EQ(shot.Flags(), kObs | kGrid);
    // It is the point's own record: SetGrid shows through the reference.
    shot.SetGrid(1.0, 2.0, 3.0);
    EXPECT_EQ(grid.north, 1.0);
}

TEST(PointGrid, GridOfObservedFromPlainPointIsAllNull) {
    CGeoPoint station = plain_station();
    CGeoPoint shot;
    shot.SetHVD(kHz, kVz, kDist, station);
    const geo_nee& grid = shot.Grid();
    EXPECT_EQ(grid.north, GEO_NULL);
    EXPECT_EQ(grid.east, GEO_NULL);
    EXPECT_EQ(grid.elev, GEO_NULL);
}

TEST(PointOkGrid, PlanOnlyPointIs2DButNot3D) {
    CGeoPoint point(geo_nee{1.0, 2.0, GEO_NULL});
    EXPECT_EQ(point.Ok2DGrid(), 1);
    EXPECT_EQ(point.Ok3DGrid(), 0);
}

TEST(PointOkGrid, MissingNorthOrEastIsNeither) {
    CGeoPoint no_north(geo_nee{GEO_NULL, 2.0, 3.0});
    CGeoPoint no_east(geo_nee{1.0, GEO_NULL, 3.0});
    EXPECT_EQ(no_north.Ok2DGrid(), 0);
    EXPECT_EQ(no_north.Ok3DGrid(), 0);
    EXPECT_EQ(no_east.Ok2DGrid(), 0);
    EXPECT_EQ(no_east.Ok3DGrid(), 0);
}

TEST(PointOkGrid, FullPointIsBoth) {
    CGeoPoint point(geo_nee{0.0, 0.0, 0.0});
    EXPECT_EQ(point.Ok2DGrid(), 1);
    EXPECT_EQ(point.Ok3DGrid(), 1);
}

TEST(PointOkGrid, DerivesAnObservedPointFirst) {
    CGeoPoint station = instrument_station(1.5);
    CGeoPoint shot;
    shot.SetHVD(kHz, kVz, kDist, station);
    EXPECT_EQ(shot.Ok3DGrid(), 1);
    EXPECT_EQ(shot.Flags(), kObs | kGrid);

    CGeoPoint plain = plain_station();
    CGeoPoint from_plain;
    from_plain.SetHVD(kHz, kVz, kDist, plain);
    EXPECT_EQ(from_plain.Ok2DGrid(), 0);
    EXPECT_EQ(from_plain.Flags(), kObs | kGrid);
}

// ---------------------------------------------------------------------------------------------
// Is2DGridEqual, Is3DGridEqual

TEST(PointEquality, IdenticalPointsWithZeroToleranceAreNotEqual) {
    CGeoPoint a(geo_nee{1.0, 2.0, 3.0});
    CGeoPoint b(geo_nee{1.0, 2.0, 3.0});
    EXPECT_EQ(a.Is2DGridEqual(b, 0.0), 0);
    EXPECT_EQ(a.Is3DGridEqual(b, 0.0), 0);
    EXPECT_EQ(a.Is2DGridEqual(b, 1e-12), 1);
    EXPECT_EQ(a.Is3DGridEqual(b, 1e-12), 1);
}

TEST(PointEquality, PlanDistanceMustBeStrictlyBelowTolerance) {
    // 3-4-5 in plan; the elevations differ by much more but do not count.
    CGeoPoint a(geo_nee{100.0, 200.0, 0.0});
    CGeoPoint b(geo_nee{103.0, 204.0, 50.0});
    EXPECT_EQ(a.Is2DGridEqual(b, 5.0), 0);
    EXPECT_EQ(a.Is2DGridEqual(b, 5.000001), 1);
    EXPECT_EQ(b.Is2DGridEqual(a, 5.000001), 1);
}

TEST(PointEquality, SpatialDistanceMustBeStrictlyBelowTolerance) {
    // 2-3-6-7: 4 + 9 + 36 = 49.
    CGeoPoint a(geo_nee{10.0, 20.0, 30.0});
    CGeoPoint b(geo_nee{12.0, 17.0, 36.0});
    EXPECT_EQ(a.Is3DGridEqual(b, 7.0), 0);
    EXPECT_EQ(a.Is3DGridEqual(b, 7.000001), 1);
    EXPECT_EQ(a.Is2DGridEqual(b, 3.7), 1); // plan distance sqrt(13) = 3.606
}

TEST(PointEquality, MissingCoordinatesAreNeverEqual) {
    CGeoPoint full(geo_nee{1.0, 2.0, 3.0});
    CGeoPoint plan_only(geo_nee{1.0, 2.0, GEO_NULL});
    CGeoPoint no_north(geo_nee{GEO_NULL, 2.0, 3.0});
    EXPECT_EQ(full.Is2DGridEqual(no_north, 1e9), 0);
    EXPECT_EQ(no_north.Is2DGridEqual(full, 1e9), 0);
    EXPECT_EQ(full.Is3DGridEqual(plan_only, 1e9), 0);
    EXPECT_EQ(plan_only.Is3DGridEqual(full, 1e9), 0);
    EXPECT_EQ(plan_only.Is2DGridEqual(full, 1e-6), 1);
    // Two points that both lack the same coordinate are not equal either.
    CGeoPoint no_north_2(geo_nee{GEO_NULL, 2.0, 3.0});
    EXPECT_EQ(no_north.Is2DGridEqual(no_north_2, 1e9), 0);
}

TEST(PointEquality, ObservedPointsAreDerivedBeforeComparing) {
    CGeoPoint station = instrument_station(1.5);
    CGeoPoint shot;
    shot.SetHVD(kHz, kVz, kDist, station);
    CGeoPoint target(geo_nee{kShotN, kShotE, kShotZNoHi + 1.5});
    EXPECT_EQ(target.Is3DGridEqual(shot, 1e-6), 1);
    EXPECT_EQ(shot.Flags(), kObs | kGrid);
}

} // namespace
