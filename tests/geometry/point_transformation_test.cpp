// CGeoPoint with a site calibration and a seven-parameter transformation: WGS84 positions,
// the WGS84 branch of the grid derivation, the geodetic derivation, and GridTransform.
//
// The calibration and the seven-parameter transformation are tested on their own in
// tests/geodesy; here the point must hand its values to them and cache what comes back, so the
// expected values are the transformation's own conversions of the same inputs.
#include "qv5/geo7ptrans.h"
#include "qv5/geopoint.h"
#include "qv5/geosurvey.h"
#include "qv5/geotrans.h"

#include <gtest/gtest.h>

#include <cstdint>

namespace {

constexpr double kDeg = 0.017453292519943295;
constexpr std::uint64_t kGrid = CGeoPoint::PT_GRID;
constexpr std::uint64_t kWgs84 = CGeoPoint::PT_WGS84;
constexpr std::uint64_t kObs = CGeoPoint::PT_OBS;

geotrans_CalibrationPoint control(unsigned short tag, geo_llh llh, geo_nee nee) {
    geotrans_CalibrationPoint p{};
    p.name[0] = tag;
    p.llh = llh;
    p.nee = nee;
    p.flags = geotrans_UseHorizontal | geotrans_UseVertical;
    return p;
}

/// A calibrated site around 47.3 N 8.5 E.
void calibrate(CGeoTransformation& t) {
    const geotrans_CalibrationPoint points[] = {
        control('A', geo_llh{47.30 * kDeg, 8.50 * kDeg, 450.0}, geo_nee{5000.0, 2000.0, 402.0}),
        control('B', geo_llh{47.31 * kDeg, 8.52 * kDeg, 455.0}, geo_nee{6112.5, 3510.0, 407.1}),
        control('C', geo_llh{47.32 * kDeg, 8.49 * kDeg, 448.0}, geo_nee{7222.0, 1245.0, 399.9})};
    for (const geotrans_CalibrationPoint& p : points) {
        t.AddPoint(&p, nullptr);
    }
    ASSERT_EQ(t.IsCalibrated(), 1);
}

const geo_llh kPosition{47.305 * kDeg, 8.505 * kDeg, 451.5};

TEST(PointWgs84, SetWgs84KeepsOnlyTheWgs84Flag) {
    CGeoPoint station;
    station.SetStation(CGeoPoint(geo_nee{1.0, 2.0, 3.0}), 1.5);
    station.SetWGS84(kPosition);
    EXPECT_EQ(station.Flags(), kWgs84);
    EXPECT_EQ(station.WGS84Lat(), kPosition.lat);
    EXPECT_EQ(station.WGS84Lon(), kPosition.lon);
    EXPECT_EQ(station.WGS84Hgt(), kPosition.height);
}

TEST(PointWgs84, GridComesFromTheCalibrationForward) {
    CGeoTransformation t;
    calibrate(t);
    CGeoPoint p;
    p.SetTransformation(t);
    p.SetWGS84(kPosition);
    geo_nee expected{};
    t.Forward(kPosition, expected);
    EXPECT_EQ(p.Northing(), expected.north);
    EXPECT_EQ(p.Easting(), expected.east);
    EXPECT_EQ(p.Elevation(), expected.elev);
    EXPECT_EQ(p.Flags(), kWgs84 | kGrid);
    EXPECT_EQ(p.Ok3DGrid(), 1);
}

TEST(PointWgs84, EachCoordinateAskedFirstDerivesAllThree) {
    CGeoTransformation t;
    calibrate(t);
    geo_nee expected{};
    t.Forward(kPosition, expected);
    CGeoPoint p;
    p.SetTransformation(t);
    p.SetWGS84(kPosition);
    EXPECT_EQ(p.Elevation(), expected.elev);
    geo_nee grid{};
    p.GetGrid(grid);
    EXPECT_EQ(grid.north, expected.north);
    EXPECT_EQ(grid.east, expected.east);
}

TEST(PointWgs84, WithoutTransformationTheGridIsNull) {
    CGeoPoint p;
    p.SetWGS84(kPosition);
    EXPECT_EQ(p.Northing(), GEO_NULL);
    EXPECT_EQ(p.Easting(), GEO_NULL);
    EXPECT_EQ(p.Elevation(), GEO_NULL);
    EXPECT_EQ(p.Ok2DGrid(), 0);
}

TEST(PointWgs84, UncalibratedTransformationGivesNullGrid) {
    CGeoTransformation t; // no points
    CGeoPoint p;
    p.SetTransformation(t);
    p.SetWGS84(kPosition);
    EXPECT_EQ(p.Northing(), GEO_NULL);
    EXPECT_EQ(p.Flags(), kWgs84 | kGrid); // the failure is cached
}

TEST(PointWgs84, FailedDerivationStaysCachedUntilACalibrationIsAttached) {
    CGeoTransformation t;
    CGeoPoint p;
    p.SetTransformation(t);
    p.SetWGS84(kPosition);
    EXPECT_EQ(p.Northing(), GEO_NULL); // not calibrated yet
    calibrate(t);
    EXPECT_EQ(p.Northing(), GEO_NULL); // still the cached failure
    p.SetTransformation(t);
    EXPECT_EQ(p.Flags(), kWgs84); // the derived grid is forgotten, the position kept
    geo_nee expected{};
    t.Forward(kPosition, expected);
    EXPECT_EQ(p.Northing(), expected.north);
    EXPECT_EQ(p.Easting(), expected.east);
    EXPECT_EQ(p.Elevation(), expected.elev);
}

TEST(PointWgs84, PositionGivenBeforeTheCalibrationIsConvertedOnceItIsAttached) {
    CGeoTransformation t;
    calibrate(t);
    CGeoPoint p;
    p.SetWGS84(kPosition);
    EXPECT_EQ(p.Northing(), GEO_NULL); // no calibration attached: the failure is cached
    p.SetTransformation(t);
    geo_nee expected{};
    t.Forward(kPosition, expected);
    EXPECT_EQ(p.Northing(), expected.north);
    EXPECT_EQ(p.WGS84Lat(), kPosition.lat);
}

TEST(PointWgs84, AttachingACalibrationKeepsAGivenGridAndForgetsItsDerivedPosition) {
    CGeoTransformation t;
    calibrate(t);
    CGeoTransformation none; // not calibrated
    CGeoPoint p;
    p.SetTransformation(none);
    p.SetGrid(5500.0, 2500.0, 404.0);
    EXPECT_EQ(p.WGS84Lat(), GEO_NULL); // cached failure
    p.SetTransformation(t);
    EXPECT_EQ(p.Flags(), kGrid);
    EXPECT_EQ(p.Northing(), 5500.0);
    geo_llh expected{};
    t.Reverse(geo_nee{5500.0, 2500.0, 404.0}, expected);
    EXPECT_EQ(p.WGS84Lat(), expected.lat);
}

TEST(PointWgs84, AttachingACalibrationKeepsAnObservationAndTheStationRole) {
    CGeoTransformation t;
    calibrate(t);
    CGeoPoint known(geo_nee{5000.0, 2000.0, 402.0});
    CGeoPoint station;
    station.SetStation(known, 1.6);
    station.SetTransformation(t);
    EXPECT_EQ(station.Flags(), kGrid | CGeoPoint::PT_STATION);
    EXPECT_EQ(station.HI(), 1.6);

    CGeoPoint shot;
    shot.SetHVD(0.5, 1.5, 120.0, station);
    shot.SetTransformation(t);
    EXPECT_EQ(shot.Flags(), kObs);
    geo_nee reduced{};
    geo_reduce_obs(geo_hvd{0.5, 1.5, 120.0}, geo_nee{5000.0, 2000.0, 402.0}, 1.6, reduced);
    EXPECT_EQ(shot.Northing(), reduced.north);
}

TEST(PointWgs84, AttachingACalibrationToAnEmptyPointLeavesItEmpty) {
    CGeoTransformation t;
    calibrate(t);
    CGeoPoint p;
    p.SetTransformation(t);
    EXPECT_EQ(p.Flags(), 0u);
    EXPECT_EQ(p.Northing(), GEO_NULL);
    EXPECT_EQ(p.WGS84Lat(), GEO_NULL);
}

TEST(PointWgs84, GridPointGetsItsWgs84FromTheCalibrationReverse) {
    CGeoTransformation t;
    calibrate(t);
    const geo_nee grid{5500.0, 2500.0, 404.0};
    CGeoPoint p;
    p.SetTransformation(t);
    p.SetGrid(grid);
    geo_llh expected{};
    t.Reverse(grid, expected);
    EXPECT_EQ(p.WGS84Lat(), expected.lat);
    EXPECT_EQ(p.WGS84Lon(), expected.lon);
    EXPECT_EQ(p.WGS84Hgt(), expected.height);
    EXPECT_EQ(p.Flags(), kGrid | kWgs84);
    EXPECT_EQ(p.Northing(), 5500.0); // the grid is left as given
}

TEST(PointWgs84, GridPointWithoutCalibrationHasNullWgs84) {
    CGeoTransformation t;
    CGeoPoint p;
    p.SetTransformation(t);
    p.SetGrid(5500.0, 2500.0, 404.0);
    EXPECT_EQ(p.WGS84Lat(), GEO_NULL);
    EXPECT_EQ(p.WGS84Lon(), GEO_NULL);
    EXPECT_EQ(p.WGS84Hgt(), GEO_NULL);
    CGeoPoint q;
    q.SetGrid(5500.0, 2500.0, 404.0);
    EXPECT_EQ(q.WGS84Lat(), GEO_NULL);
}

TEST(PointWgs84, ObservedPointHasNoWgs84UntilItsGridWasAsked) {
    CGeoTransformation t;
    calibrate(t);
    CGeoPoint known(geo_nee{5000.0, 2000.0, 402.0});
    CGeoPoint station;
    station.SetStation(known, 1.6);

    CGeoPoint first;
    first.SetTransformation(t);
    first.SetHVD(0.5, 1.5, 120.0, station);
    EXPECT_EQ(first.WGS84Lat(), GEO_NULL); // the grid is not derived on the way
    EXPECT_EQ(first.Flags(), kObs | kWgs84);
    // The cached (null) WGS84 value now comes first in the grid derivation too: with a
    // calibrated transformation attached, the grid is converted from it and is null as well.
    EXPECT_EQ(first.Northing(), GEO_NULL);
    EXPECT_EQ(first.WGS84Lat(), GEO_NULL);

    CGeoPoint second;
    second.SetTransformation(t);
    second.SetHVD(0.5, 1.5, 120.0, station);
    geo_nee grid{};
    second.GetGrid(grid);
    geo_llh expected{};
    t.Reverse(grid, expected);
    EXPECT_EQ(second.WGS84Lat(), expected.lat);
    EXPECT_EQ(second.WGS84Lon(), expected.lon);
}

TEST(PointWgs84, CachedWgs84IsKeptWhenTheCalibrationChanges) {
    CGeoTransformation t;
    calibrate(t);
    CGeoPoint p;
    p.SetTransformation(t);
    p.SetGrid(5500.0, 2500.0, 404.0);
    const double lat = p.WGS84Lat();
    t.DeleteNthPoint(0, nullptr);
    EXPECT_EQ(p.WGS84Lat(), lat);
}

TEST(PointWgs84, CopiesShareTheTransformation) {
    CGeoTransformation t;
    calibrate(t);
    CGeoPoint p;
    p.SetTransformation(t);
    CGeoPoint copy(p);
    copy.SetWGS84(kPosition);
    geo_nee expected{};
    t.Forward(kPosition, expected);
    EXPECT_EQ(copy.Northing(), expected.north);
}

TEST(PointGridTransform, AppliesTheSevenParametersToAGridInPlace) {
    CGeo7PTrans seven;
    seven.Set(geo_nee{0.0, 0.0, 0.0}, 0.0, 0.0, 0.0, 1.5, -2.5, 0.75, 1.0);
    CGeoPoint p(geo_nee{100.0, 200.0, 10.0});
    p.GridTransform(seven);
    EXPECT_EQ(p.Northing(), 100.0 - 2.5);
    EXPECT_EQ(p.Easting(), 200.0 + 1.5);
    EXPECT_EQ(p.Elevation(), 10.0 + 0.75);
    EXPECT_EQ(p.Flags(), kGrid);
}

TEST(PointGridTransform, KeepsTheFlagsSoACachedWgs84StaysAsItWas) {
    CGeoTransformation t;
    calibrate(t);
    CGeo7PTrans seven;
    seven.Set(geo_nee{0.0, 0.0, 0.0}, 0.0, 0.0, 0.0, 10.0, 10.0, 10.0, 1.0);
    CGeoPoint p;
    p.SetTransformation(t);
    p.SetGrid(5500.0, 2500.0, 404.0);
    const double lat = p.WGS84Lat();
    p.GridTransform(seven);
    EXPECT_EQ(p.Flags(), kGrid | kWgs84);
    EXPECT_EQ(p.Northing(), 5510.0);
    EXPECT_EQ(p.WGS84Lat(), lat);
}

TEST(PointGridTransform, DoesNothingWithoutAGridValue) {
    CGeo7PTrans seven;
    seven.Set(geo_nee{0.0, 0.0, 0.0}, 0.0, 0.0, 0.0, 1.5, -2.5, 0.75, 1.0);
    CGeoTransformation t;
    calibrate(t);
    CGeoPoint p;
    p.SetTransformation(t);
    p.SetWGS84(kPosition);
    p.GridTransform(seven); // the grid is not derived for it
    EXPECT_EQ(p.Flags(), kWgs84);
    geo_nee expected{};
    t.Forward(kPosition, expected);
    EXPECT_EQ(p.Northing(), expected.north);
}

TEST(PointGridTransform, NullGridIsLeftUntouched) {
    CGeo7PTrans seven;
    seven.Set(geo_nee{0.0, 0.0, 0.0}, 0.0, 0.0, 0.0, 1.5, -2.5, 0.75, 1.0);
    CGeoPoint p(geo_nee{100.0, 200.0, GEO_NULL});
    p.GridTransform(seven);
    EXPECT_EQ(p.Northing(), 100.0);
    EXPECT_EQ(p.Elevation(), GEO_NULL);
}

} // namespace
