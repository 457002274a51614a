// A site calibration across the antimeridian (Fiji, 180 degrees): the projection is centred
// between the control points, not half a world away, and positions converted back come out as
// longitudes in (-pi, pi]. Calibrations elsewhere keep their centre to the last bit.
//
// Independent reference: PROJ's +proj=stere about the centre worked out here by hand (the
// longitudes taken east of Greenwich, 0 to 360 degrees, averaged, and brought back).
#include "calibration_points.h"
#include "geodesy/calibration_solve.h"
#include "qv5/geotrans.h"

#include <gtest/gtest.h>

#include <cmath>
#include <cstring>
#include <limits>

namespace {

using namespace qv5::test;
using qv5::detail::longitude_in_range;
using qv5::detail::unwrapped_longitude;

constexpr double kDeg = 0.017453292519943295;
constexpr double kPiHere = 3.141592653589793;
/// Plane coordinates through projection and adjustments, metres (as for any other site).
constexpr double kPlane = 1e-6;

bool same_bits(double a, double b) {
    return std::memcmp(&a, &b, sizeof a) == 0;
}

/// Four control points a few hundred metres apart on both sides of 180 degrees, near Suva.
std::vector<geo_llh> fiji_positions() {
    return {geo_llh{-17.7000 * kDeg, 179.9995 * kDeg, 12.0},
            geo_llh{-17.7100 * kDeg, -179.9995 * kDeg, 14.5},
            geo_llh{-17.6900 * kDeg, -179.9990 * kDeg, 11.2},
            geo_llh{-17.7050 * kDeg, 179.9985 * kDeg, 13.1}};
}

/// The centre by hand: the mean of the east longitudes 179.9995, 180.0005, 180.0010 and
/// 179.9985 degrees (179.999875, just east of the antimeridian).
constexpr double kFijiCentre = (179.9995 + 180.0005 + 180.0010 + 179.9985) / 4.0 * kDeg;

void add(CGeoTransformation& t, const std::vector<geotrans_CalibrationPoint>& points) {
    for (const geotrans_CalibrationPoint& p : points) {
        geotrans_Error error = geotrans_NoError;
        t.AddPoint(&p, &error);
        ASSERT_EQ(error, geotrans_NoError);
    }
}

double turn_difference(double a, double b) {
    return std::remainder(a - b, 2.0 * kPiHere);
}

TEST(CalibrationAcrossTheAntimeridian, CentresTheProjectionBetweenThePoints) {
    const KnownSite site(fiji_positions(), kFijiCentre);
    CGeoTransformation t;
    add(t, site.points());
    ASSERT_EQ(t.IsCalibrated(), 1);
    EXPECT_NEAR(turn_difference(t.OriginLon(), kFijiCentre), 0.0, 1e-12);
    EXPECT_GT(t.OriginLon(), -kPiHere);
    EXPECT_LE(t.OriginLon(), kPiHere);
    EXPECT_NEAR(t.OriginLat(), site.lat0, 1e-15);
    EXPECT_NEAR(t.HorizontalScale(), site.scale, 1e-9); // not 0.313
    EXPECT_NEAR(t.HorizontalRotation(), site.rotation, 1e-9);
    for (int i = 0; i < t.NumberOfPoints(); ++i) {
        EXPECT_NEAR(t.NthPoint(i)->hResidual, 0.0, kPlane) << i;
        EXPECT_NEAR(t.NthPoint(i)->vResidual, 0.0, kPlane) << i;
    }
}

TEST(CalibrationAcrossTheAntimeridian, ForwardAgreesWithProjOnBothSides) {
    const KnownSite site(fiji_positions(), kFijiCentre);
    CGeoTransformation t;
    add(t, site.points());
    for (const geo_llh& llh : {geo_llh{-17.702 * kDeg, 179.9991 * kDeg, 20.0},
                               geo_llh{-17.698 * kDeg, -179.9993 * kDeg, 5.0},
                               geo_llh{-17.80 * kDeg, -179.90 * kDeg, 0.0}}) {
        geo_nee out{};
        t.Forward(llh, out);
        const geo_nee expected = site.site(llh);
        EXPECT_NEAR(out.north, expected.north, kPlane);
        EXPECT_NEAR(out.east, expected.east, kPlane);
        EXPECT_NEAR(out.elev, expected.elev, kPlane);
    }
}

TEST(CalibrationAcrossTheAntimeridian, ReverseGivesLongitudesInRange) {
    const KnownSite site(fiji_positions(), kFijiCentre);
    CGeoTransformation t;
    add(t, site.points());
    // Near the points and far out west and east of them (tens of kilometres).
    for (const geo_llh& llh :
         {geo_llh{-17.701 * kDeg, -179.9992 * kDeg, 10.0},
          geo_llh{-17.701 * kDeg, 179.9992 * kDeg, 10.0}, geo_llh{-17.9 * kDeg, -179.5 * kDeg, 0.0},
          geo_llh{-17.5 * kDeg, 179.4 * kDeg, 0.0}}) {
        geo_llh back{};
        t.Reverse(site.site(llh), back);
        EXPECT_GT(back.lon, -kPiHere);
        EXPECT_LE(back.lon, kPiHere);
        EXPECT_NEAR(back.lon, llh.lon, 1e-10);
        EXPECT_NEAR(back.lat, llh.lat, 1e-10);
        EXPECT_NEAR(back.height, llh.height, 1e-6);
    }
}

TEST(CalibrationAcrossTheAntimeridian, AReverseConversionPastTheAntimeridianComesBackInRange) {
    // All points east of 180 W: the centre is about 179.9994 W, and a site position a few
    // kilometres further west is past the antimeridian, at 179.98 E.
    std::vector<geo_llh> west = {geo_llh{-17.70 * kDeg, -179.9990 * kDeg, 0.0},
                                 geo_llh{-17.71 * kDeg, -179.9995 * kDeg, 0.0},
                                 geo_llh{-17.69 * kDeg, -179.9997 * kDeg, 0.0}};
    const double centre = (-179.9990 * kDeg + -179.9995 * kDeg + -179.9997 * kDeg) / 3.0;
    const KnownSite site(west, centre);
    CGeoTransformation t;
    add(t, site.points());
    ASSERT_EQ(t.IsCalibrated(), 1);
    const geo_llh far{-17.70 * kDeg, 179.98 * kDeg, 0.0};
    geo_llh back{};
    t.Reverse(site.site(far), back);
    EXPECT_NEAR(back.lon, far.lon, 1e-10); // 179.98 E, not 180.02 W written as -180.02
    EXPECT_LE(back.lon, kPiHere);
}

TEST(CalibrationAcrossTheAntimeridian, ACalibrationElsewhereKeepsThePlainMeanBitForBit) {
    const std::vector<geo_llh> positions = dutch_positions();
    CGeoTransformation t;
    add(t, KnownSite(positions).points());
    double sum = 0.0;
    for (const geo_llh& p : positions) {
        sum += p.lon;
    }
    EXPECT_TRUE(same_bits(t.OriginLon(), sum / static_cast<double>(positions.size())));
    // Wide but not straddling: 100 W and 60 E are 160 degrees apart through Greenwich.
    const std::vector<geo_llh> wide = {geo_llh{0.1, -100.0 * kDeg, 0.0},
                                       geo_llh{0.2, 60.0 * kDeg, 0.0},
                                       geo_llh{0.15, 10.0 * kDeg, 0.0}};
    CGeoTransformation w;
    for (std::size_t i = 0; i < wide.size(); ++i) {
        const geotrans_CalibrationPoint p = calibration_point(
            u"W", wide[i], geo_nee{1000.0 * static_cast<double>(i), 500.0, 0.0}, kBoth);
        w.AddPoint(&p, nullptr);
    }
    const double plain = (-100.0 * kDeg + 60.0 * kDeg + 10.0 * kDeg) / 3.0;
    EXPECT_TRUE(same_bits(w.OriginLon(), plain));
}

TEST(CalibrationAcrossTheAntimeridian, AReverseConversionInRangeIsUntouched) {
    const KnownSite site(dutch_positions());
    CGeoTransformation t;
    add(t, site.points());
    // The calibration's chain by hand through the public classes: the longitude the projection
    // gives is passed on unchanged when it is in range.
    CGeoEllipsoid wgs84(6378137.0, 0.0033528106647474805);
    const geo_nee centre{t.OriginNorth(), t.OriginEast(), GEO_NULL};
    CGeoStereographic projection(geo_llh{t.OriginLat(), t.OriginLon(), GEO_NULL}, centre, 1.0,
                                 wgs84);
    const geo_nee grid{t.OriginNorth() + 1234.5, t.OriginEast() - 987.6, 10.0};
    geo_llh by_projection{};
    projection.Reverse(grid, by_projection);
    // Undo the calibration's similarity and plane first: with them in place, take the grid the
    // calibration's Forward gives for the projection's answer.
    geo_nee site_coordinates{};
    t.Forward(by_projection, site_coordinates);
    geo_llh back{};
    t.Reverse(site_coordinates, back);
    EXPECT_NEAR(back.lon, by_projection.lon, 1e-12);
}

TEST(LongitudeArithmetic, UnwrappingMovesOnlyLongitudesMoreThanHalfATurnAway) {
    const double first = 179.9995 * kDeg;
    EXPECT_TRUE(same_bits(unwrapped_longitude(179.0 * kDeg, first), 179.0 * kDeg));
    EXPECT_TRUE(same_bits(unwrapped_longitude(0.5, first), 0.5));
    EXPECT_NEAR(unwrapped_longitude(-179.9995 * kDeg, first), 180.0005 * kDeg, 1e-15);
    EXPECT_NEAR(unwrapped_longitude(179.9995 * kDeg, -179.9995 * kDeg), -180.0005 * kDeg, 1e-15);
    EXPECT_NEAR(unwrapped_longitude(5.0 * kDeg + 4.0 * kPiHere, 5.0 * kDeg), 5.0 * kDeg, 1e-14);
    EXPECT_TRUE(std::isnan(unwrapped_longitude(std::nan(""), first)));
    EXPECT_EQ(unwrapped_longitude(std::numeric_limits<double>::infinity(), first),
              std::numeric_limits<double>::infinity());
}

TEST(LongitudeArithmetic, InRangeKeepsValuesInRangeBitForBit) {
    for (const double lon : {0.0, -0.0, 1.0, -1.0, kPiHere, -3.1415926535897927, 2.5e-308}) {
        EXPECT_TRUE(same_bits(longitude_in_range(lon), lon)) << lon;
    }
    EXPECT_NEAR(longitude_in_range(185.0 * kDeg), -175.0 * kDeg, 1e-15);
    EXPECT_NEAR(longitude_in_range(-185.0 * kDeg), 175.0 * kDeg, 1e-15);
    EXPECT_NEAR(longitude_in_range(725.0 * kDeg), 5.0 * kDeg, 1e-14);
    EXPECT_EQ(longitude_in_range(-kPiHere), kPiHere); // the one end of the range that is in it
    EXPECT_TRUE(std::isnan(longitude_in_range(std::nan(""))));
}

} // namespace
