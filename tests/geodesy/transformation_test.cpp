// CGeoTransformation: the point set, the recomputation in each of its branches, the solutions
// for every number of points, residuals, the seed point, the default scale and rotation,
// copying, and the WGS84 <-> site chain.
//
// Independent references: PROJ's +proj=stere gives the projected coordinates (the calibration's
// projection is the same Snyder formulation, checked to 1e-9 m in stereographic_test.cpp), and
// the similarity and plane are applied here by hand (calibration_points.h). A noisy
// calibration is compared with the closed-form linear least-squares Helmert solution.
#include "calibration_points.h"
#include "qv5/geosurvey.h"
#include "qv5/geotrans.h"

#include <gtest/gtest.h>

#include <cmath>
#include <limits>

namespace {

using namespace qv5::test;

constexpr double kDeg = 0.017453292519943295;
constexpr double kHalfPi = 1.5707963267948966;
/// Plane coordinates reproduced through projection and adjustments, metres: the projection
/// agrees with PROJ to 1e-9 m and the solved similarity reproduces exact data to well below a
/// micrometre.
constexpr double kPlane = 1e-6;

/// The site coordinates of a position by PROJ about an origin with a false origin.
geo_nee projected(const geo_llh& llh, double lat0, double lon0, double false_north,
                  double false_east) {
    ProjOperation stere(stereographic_definition(lat0, lon0));
    const PJ_COORD g = stere.forward(llh.lon, llh.lat);
    return geo_nee{false_north + g.xy.y, false_east + g.xy.x, llh.height};
}

void add(CGeoTransformation& t, const std::vector<geotrans_CalibrationPoint>& points) {
    for (const geotrans_CalibrationPoint& p : points) {
        geotrans_Error error = geotrans_NoError;
        t.AddPoint(&p, &error);
        ASSERT_EQ(error, geotrans_NoError);
    }
}

const geo_llh kP1{52.0812 * kDeg, 5.1630 * kDeg, 44.10};
const geo_llh kP2{52.1035 * kDeg, 5.2219 * kDeg, 45.73};
const geo_llh kP3{52.1298 * kDeg, 5.1804 * kDeg, 43.88};

// ---------------------------------------------------------------------------------------------
// Empty and uncalibrated states

TEST(Transformation, StartsEmptyAndUncalibrated) {
    CGeoTransformation t;
    EXPECT_EQ(t.NumberOfPoints(), 0);
    EXPECT_EQ(t.NumberOfCalibratedPoints(), 0);
    EXPECT_EQ(t.IsCalibrated(), 0);
    EXPECT_EQ(t.ProjectionType(), CGeoStereographic::stereo_None);
    EXPECT_EQ(t.OriginNorth(), GEO_NULL);
    EXPECT_EQ(t.OriginEast(), GEO_NULL);
    EXPECT_EQ(t.OriginLat(), GEO_NULL);
    EXPECT_EQ(t.OriginLon(), GEO_NULL);
    EXPECT_EQ(t.HorizontalScale(), GEO_NULL);
    EXPECT_EQ(t.HorizontalRotation(), GEO_NULL);
    EXPECT_EQ(t.VerticalHeightAdjustment(), GEO_NULL);
    EXPECT_EQ(t.VerticalSlopeNorth(), GEO_NULL);
    EXPECT_EQ(t.VerticalSlopeEast(), GEO_NULL);
    EXPECT_EQ(t.DefaultScale(), 1.0);
    EXPECT_EQ(t.DefaultRotation(), 0.0);
    EXPECT_EQ(t.MinEasting(), 0.0);
    EXPECT_EQ(t.MaxNorthing(), 0.0);
}

TEST(Transformation, WithoutAProjectionTheChainLeavesItsOutput) {
    CGeoTransformation t;
    geo_nee nee{1.0, 2.0, 3.0};
    t.Forward(kP1, nee);
    EXPECT_EQ(nee.north, 1.0);
    EXPECT_EQ(nee.east, 2.0);
    EXPECT_EQ(nee.elev, 3.0);
    geo_llh llh{0.1, 0.2, 0.3};
    t.Reverse(geo_nee{10.0, 20.0, 30.0}, llh);
    EXPECT_EQ(llh.lat, 0.1);
    EXPECT_EQ(llh.lon, 0.2);
    EXPECT_EQ(llh.height, 0.3);
}

TEST(Transformation, PointsInNoSolutionLeaveItUncalibratedButCountAsSuccess) {
    CGeoTransformation t;
    const auto p = calibration_point(u"X", kP1, geo_nee{100.0, 200.0, 3.0}, 0);
    geotrans_Error error = geotrans_NoError;
    EXPECT_EQ(t.AddPoint(&p, &error), 1);
    EXPECT_EQ(error, geotrans_NoError);
    EXPECT_EQ(t.IsCalibrated(), 0);
    EXPECT_EQ(t.NumberOfPoints(), 1);
    EXPECT_EQ(t.NumberOfCalibratedPoints(), 0);
    EXPECT_EQ(t.ProjectionType(), CGeoStereographic::stereo_None);
    EXPECT_EQ(t.NthPoint(0)->hResidual, GEO_NULL);
    EXPECT_EQ(t.NthPoint(0)->vResidual, GEO_NULL);
    // The extents still cover the point.
    EXPECT_EQ(t.MinNorthing(), 100.0);
    EXPECT_EQ(t.MaxEasting(), 200.0);
}

TEST(Transformation, FlagBitsBeyondTheTwoSolutionsAreIgnored) {
    CGeoTransformation t;
    const auto p = calibration_point(u"X", kP1, geo_nee{100.0, 200.0, 3.0}, 0xFFFFFFFCu);
    EXPECT_EQ(t.AddPoint(&p, nullptr), 1);
    EXPECT_EQ(t.NumberOfCalibratedPoints(), 0);
    EXPECT_EQ(t.IsCalibrated(), 0);
}

// ---------------------------------------------------------------------------------------------
// Extents

TEST(TransformationExtents, CoverTheKnownSiteCoordinatesOfAllPointsSkippingNull) {
    CGeoTransformation t;
    const auto a = calibration_point(u"A", kP1, geo_nee{100.0, 250.0, 1.0}, kBoth);
    const auto b = calibration_point(u"B", kP2, geo_nee{GEO_NULL, 900.0, 1.0}, 0);
    const auto c = calibration_point(u"C", kP3, geo_nee{-40.0, GEO_NULL, 1.0}, kBoth);
    add(t, {a, b, c});
    EXPECT_EQ(t.MinNorthing(), -40.0);
    EXPECT_EQ(t.MaxNorthing(), 100.0);
    EXPECT_EQ(t.MinEasting(), 250.0);
    EXPECT_EQ(t.MaxEasting(), 900.0);
}

TEST(TransformationExtents, WithoutAnyEastingAllFourAreZero) {
    CGeoTransformation t;
    const auto a = calibration_point(u"A", kP1, geo_nee{100.0, GEO_NULL, 1.0}, 0);
    add(t, {a});
    EXPECT_EQ(t.MinNorthing(), 0.0);
    EXPECT_EQ(t.MaxNorthing(), 0.0);
    EXPECT_EQ(t.MinEasting(), 0.0);
    EXPECT_EQ(t.MaxEasting(), 0.0);
}

// ---------------------------------------------------------------------------------------------
// One point

TEST(TransformationOnePoint, IsTheProjectionAboutThePointWithAHeightShift) {
    CGeoTransformation t;
    const geo_nee site{4500.0, 1200.0, 3.25};
    const auto p = calibration_point(u"BASE", kP1, site, kBoth);
    geotrans_Error error = geotrans_NoError;
    EXPECT_EQ(t.AddPoint(&p, &error), 1);
    ASSERT_EQ(t.IsCalibrated(), 1);
    EXPECT_EQ(t.ProjectionType(), CGeoStereographic::stereo_Oblique);
    EXPECT_EQ(t.OriginLat(), kP1.lat);
    EXPECT_EQ(t.OriginLon(), kP1.lon);
    EXPECT_EQ(t.OriginNorth(), 4500.0);
    EXPECT_EQ(t.OriginEast(), 1200.0);
    EXPECT_EQ(t.HorizontalScale(), 1.0);
    EXPECT_EQ(t.HorizontalRotation(), 0.0);
    EXPECT_NEAR(t.VerticalHeightAdjustment(), 3.25 - 44.10, 1e-12);
    EXPECT_EQ(t.VerticalSlopeNorth(), 0.0);
    EXPECT_EQ(t.VerticalSlopeEast(), 0.0);
    EXPECT_EQ(t.NthPoint(0)->hResidual, 0.0);
    EXPECT_NEAR(t.NthPoint(0)->vResidual, 0.0, 1e-12);

    // Another position: plain projection about the point, plus the height shift.
    const geo_llh other{52.09 * kDeg, 5.18 * kDeg, 50.0};
    geo_nee out{};
    t.Forward(other, out);
    const geo_nee expected = projected(other, kP1.lat, kP1.lon, 4500.0, 1200.0);
    EXPECT_NEAR(out.north, expected.north, kPlane);
    EXPECT_NEAR(out.east, expected.east, kPlane);
    EXPECT_NEAR(out.elev, 50.0 + 3.25 - 44.10, 1e-12);
}

TEST(TransformationOnePoint, HorizontalOnlyHasNoHeightShift) {
    CGeoTransformation t;
    const auto p =
        calibration_point(u"H", kP1, geo_nee{4500.0, 1200.0, GEO_NULL}, geotrans_UseHorizontal);
    EXPECT_EQ(t.AddPoint(&p, nullptr), 1);
    EXPECT_EQ(t.IsCalibrated(), 1);
    EXPECT_EQ(t.VerticalHeightAdjustment(), 0.0);
    EXPECT_EQ(t.NthPoint(0)->vResidual, GEO_NULL);
    geo_nee out{};
    t.Forward(kP1, out);
    EXPECT_EQ(out.elev, kP1.height); // an identity plane leaves the ellipsoidal height
}

// ---------------------------------------------------------------------------------------------
// Two horizontal points

TEST(TransformationTwoPoints, ReproduceTheSiteDistanceAndBearing) {
    CGeoTransformation t;
    const geo_nee site_a{1000.0, 1000.0, 1.0};
    const geo_nee site_b{3100.0, 4800.0, 2.0};
    add(t, {calibration_point(u"A", kP1, site_a, geotrans_UseHorizontal),
            calibration_point(u"B", kP2, site_b, geotrans_UseHorizontal)});
    ASSERT_EQ(t.IsCalibrated(), 1);
    geo_nee a{};
    geo_nee b{};
    t.Forward(kP1, a);
    t.Forward(kP2, b);
    EXPECT_NEAR(geo_horz_dist(a, b), geo_horz_dist(site_a, site_b), 1e-9);
    EXPECT_NEAR(geo_grid_bearing(a, b), geo_grid_bearing(site_a, site_b), 1e-12);
    // Without a shift the pair is not moved onto its site coordinates: the projection is
    // centred on the mean latitude and longitude, which does not project onto the midpoint of
    // the projected points (here by about 0.6 m over 4.6 km). The residuals say so.
    EXPECT_GT(t.NthPoint(0)->hResidual, 0.1);
    EXPECT_NEAR(t.NthPoint(0)->hResidual, geo_horz_dist(a, site_a), 1e-9);
    EXPECT_NEAR(t.NthPoint(1)->hResidual, geo_horz_dist(b, site_b), 1e-9);
}

TEST(TransformationTwoPoints, RotationAndScaleAreThoseBetweenTheLines) {
    CGeoTransformation t;
    const geo_nee site_a{1000.0, 1000.0, 1.0};
    const geo_nee site_b{3100.0, 4800.0, 2.0};
    add(t, {calibration_point(u"A", kP1, site_a, geotrans_UseHorizontal),
            calibration_point(u"B", kP2, site_b, geotrans_UseHorizontal)});
    const double lat0 = (kP1.lat + kP2.lat) / 2.0;
    const double lon0 = (kP1.lon + kP2.lon) / 2.0;
    const geo_nee ga = projected(kP1, lat0, lon0, 0.0, 0.0);
    const geo_nee gb = projected(kP2, lat0, lon0, 0.0, 0.0);
    double rotation = geo_grid_bearing(site_a, site_b) - geo_grid_bearing(ga, gb);
    rotation = rotation < 0.0 ? rotation + 2.0 * M_PI : rotation;
    EXPECT_NEAR(t.HorizontalRotation(), rotation, 1e-12);
    EXPECT_NEAR(t.HorizontalScale(), geo_horz_dist(site_a, site_b) / geo_horz_dist(ga, gb), 1e-12);
    EXPECT_GE(t.HorizontalRotation(), 0.0); // normalised
}

TEST(TransformationTwoPoints, CoincidentPositionsHaveNoScaleAndFail) {
    CGeoTransformation t;
    add(t, {calibration_point(u"A", kP1, geo_nee{1000.0, 1000.0, 1.0}, geotrans_UseHorizontal)});
    const auto b =
        calibration_point(u"B", kP1, geo_nee{1100.0, 1000.0, 1.0}, geotrans_UseHorizontal);
    geotrans_Error error = geotrans_NoError;
    EXPECT_EQ(t.AddPoint(&b, &error), 0);
    EXPECT_EQ(error, geotrans_SolutionFailed);
    EXPECT_EQ(t.IsCalibrated(), 0);
    EXPECT_EQ(t.NumberOfPoints(), 2); // the point set is kept as changed
    // The projection is left in place: Forward gives the plain projection, centred on the
    // position with the mean site coordinates as false origin.
    geo_nee out{};
    t.Forward(kP1, out);
    EXPECT_EQ(out.north, 1050.0);
    EXPECT_EQ(out.east, 1000.0);
    EXPECT_EQ(out.elev, kP1.height);
    int index = 7;
    double value = 7.0;
    t.GetMaxHResidual(&index, &value);
    EXPECT_EQ(index, -1);
    EXPECT_EQ(value, GEO_NULL);
}

// ---------------------------------------------------------------------------------------------
// Three or more points: a known similarity and plane on PROJ-projected positions

TEST(TransformationKnownSite, RecoversTheSimilarityAndThePlane) {
    const KnownSite site(dutch_positions());
    CGeoTransformation t;
    add(t, site.points());
    ASSERT_EQ(t.IsCalibrated(), 1);
    EXPECT_EQ(t.ProjectionType(), CGeoStereographic::stereo_Oblique);
    EXPECT_NEAR(t.OriginLat(), site.lat0, 1e-15);
    EXPECT_NEAR(t.OriginLon(), site.lon0, 1e-15);
    EXPECT_NEAR(t.OriginNorth(), site.mean_north, 1e-9);
    EXPECT_NEAR(t.OriginEast(), site.mean_east, 1e-9);
    EXPECT_NEAR(t.HorizontalScale(), site.scale, 1e-10);
    EXPECT_NEAR(t.HorizontalRotation(), site.rotation, 1e-10);
    EXPECT_NEAR(t.VerticalHeightAdjustment(), site.shift, 1e-6);
    EXPECT_NEAR(t.VerticalSlopeNorth(), site.slope_north, 1e-10);
    EXPECT_NEAR(t.VerticalSlopeEast(), site.slope_east, 1e-10);
    for (int i = 0; i < t.NumberOfPoints(); ++i) {
        EXPECT_NEAR(t.NthPoint(i)->hResidual, 0.0, kPlane) << i;
        EXPECT_NEAR(t.NthPoint(i)->vResidual, 0.0, kPlane) << i;
    }
}

TEST(TransformationKnownSite, ForwardGivesSiteCoordinatesOfOtherPositions) {
    const KnownSite site(dutch_positions());
    CGeoTransformation t;
    add(t, site.points());
    for (const geo_llh& llh :
         {geo_llh{52.095 * kDeg, 5.20 * kDeg, 41.0}, geo_llh{52.12 * kDeg, 5.24 * kDeg, 60.5},
          geo_llh{52.075 * kDeg, 5.17 * kDeg, 12.0}}) {
        geo_nee out{};
        t.Forward(llh, out);
        const geo_nee expected = site.site(llh);
        EXPECT_NEAR(out.north, expected.north, kPlane);
        EXPECT_NEAR(out.east, expected.east, kPlane);
        EXPECT_NEAR(out.elev, expected.elev, kPlane);
    }
}

TEST(TransformationKnownSite, ReverseUndoesForward) {
    const KnownSite site(dutch_positions());
    CGeoTransformation t;
    add(t, site.points());
    const geo_llh llh{52.095 * kDeg, 5.20 * kDeg, 41.0};
    geo_nee grid{};
    t.Forward(llh, grid);
    geo_llh back{};
    t.Reverse(grid, back);
    EXPECT_NEAR(back.lat, llh.lat, 1e-10);
    EXPECT_NEAR(back.lon, llh.lon, 1e-10);
    EXPECT_NEAR(back.height, llh.height, 1e-9);
}

TEST(TransformationKnownSite, ReverseGivesTheWgs84PositionOfSiteCoordinates) {
    const KnownSite site(dutch_positions());
    CGeoTransformation t;
    add(t, site.points());
    const geo_llh llh{52.11 * kDeg, 5.19 * kDeg, 47.5};
    geo_llh back{};
    t.Reverse(site.site(llh), back);
    EXPECT_NEAR(back.lat, llh.lat, 1e-10);
    EXPECT_NEAR(back.lon, llh.lon, 1e-10);
    EXPECT_NEAR(back.height, llh.height, 1e-6);
}

/// The linear least-squares similarity site = [a b; -b a] grid + t of centred coordinates, in
/// closed form: a = sum(E E' + N N') / sum(E^2 + N^2), b = sum(N E' - E N') / sum(E^2 + N^2).
struct Helmert {
    double scale;
    double rotation;
};

Helmert closed_form_helmert(const std::vector<geo_nee>& grid, const std::vector<geo_nee>& site) {
    double ge = 0.0;
    double gn = 0.0;
    double se = 0.0;
    double sn = 0.0;
    for (std::size_t i = 0; i < grid.size(); ++i) {
        ge += grid[i].east;
        gn += grid[i].north;
        se += site[i].east;
        sn += site[i].north;
    }
    const double n = static_cast<double>(grid.size());
    double num_a = 0.0;
    double num_b = 0.0;
    double den = 0.0;
    for (std::size_t i = 0; i < grid.size(); ++i) {
        const double e = grid[i].east - ge / n;
        const double no = grid[i].north - gn / n;
        const double e2 = site[i].east - se / n;
        const double n2 = site[i].north - sn / n;
        num_a += e * e2 + no * n2;
        num_b += no * e2 - e * n2;
        den += e * e + no * no;
    }
    const double a = num_a / den;
    const double b = num_b / den;
    return Helmert{std::hypot(a, b), std::atan2(b, a)};
}

TEST(TransformationLeastSquares, NoisyPointsGiveTheLeastSquaresSimilarity) {
    const KnownSite site(dutch_positions());
    std::vector<geotrans_CalibrationPoint> points = site.points(geotrans_UseHorizontal);
    const double noise[][2] = {{0.004, -0.002},  {-0.003, 0.005}, {0.001, 0.001},
                               {-0.005, -0.004}, {0.002, 0.003},  {0.0, -0.003}};
    std::vector<geo_nee> grid;
    std::vector<geo_nee> known;
    for (std::size_t i = 0; i < points.size(); ++i) {
        points[i].nee.north += noise[i][0];
        points[i].nee.east += noise[i][1];
        grid.push_back(projected(points[i].llh, site.lat0, site.lon0, 0.0, 0.0));
        known.push_back(points[i].nee);
    }
    CGeoTransformation t;
    add(t, points);
    ASSERT_EQ(t.IsCalibrated(), 1);
    const Helmert expected = closed_form_helmert(grid, known);
    // Gauss-Newton stops once a round moves the rotation by less than a minute of arc and the
    // scale by less than 1e-5; the round after that is already far smaller with millimetre
    // residuals over kilometres.
    EXPECT_NEAR(t.HorizontalScale(), expected.scale, 1e-9);
    EXPECT_NEAR(t.HorizontalRotation(), expected.rotation, 1e-9);
    // Residuals are the plan distances computed - known, a few millimetres here.
    double largest = 0.0;
    int largest_index = -1;
    for (int i = 0; i < t.NumberOfPoints(); ++i) {
        const double r = t.NthPoint(i)->hResidual;
        EXPECT_GT(r, 0.0);
        EXPECT_LT(r, 0.01);
        if (r > largest) {
            largest = r;
            largest_index = i;
        }
        geo_nee computed{};
        t.Forward(points[i].llh, computed);
        EXPECT_NEAR(r, geo_horz_dist(computed, points[i].nee), 1e-9) << i;
        EXPECT_EQ(t.NthPoint(i)->vResidual, GEO_NULL);
    }
    int index = -1;
    double value = 0.0;
    t.GetMaxHResidual(&index, &value);
    EXPECT_EQ(index, largest_index);
    EXPECT_EQ(value, largest);
}

TEST(TransformationLeastSquares, NonFiniteSiteCoordinatesDoNotConvergeAndFail) {
    const KnownSite site(dutch_positions());
    std::vector<geotrans_CalibrationPoint> points = site.points();
    points[2].nee.east = std::numeric_limits<double>::infinity();
    CGeoTransformation t;
    add(t, {points[0], points[1]});
    geotrans_Error error = geotrans_NoError;
    EXPECT_EQ(t.AddPoint(&points[2], &error), 0);
    EXPECT_EQ(error, geotrans_SolutionFailed);
    EXPECT_EQ(t.IsCalibrated(), 0);
    EXPECT_EQ(t.HorizontalScale(), GEO_NULL);
}

// ---------------------------------------------------------------------------------------------
// Vertical solutions

TEST(TransformationVertical, OnlyVerticalPointsUseTheDefaultsAboutSiteZero) {
    CGeoTransformation t;
    add(t, {calibration_point(u"V1", kP1, geo_nee{GEO_NULL, GEO_NULL, 5.0}, geotrans_UseVertical),
            calibration_point(u"V2", kP2, geo_nee{GEO_NULL, GEO_NULL, 6.0}, geotrans_UseVertical),
            calibration_point(u"V3", kP3, geo_nee{GEO_NULL, GEO_NULL, 4.0}, geotrans_UseVertical)});
    ASSERT_EQ(t.IsCalibrated(), 1);
    EXPECT_EQ(t.OriginNorth(), 0.0);
    EXPECT_EQ(t.OriginEast(), 0.0);
    EXPECT_EQ(t.OriginLat(), kP1.lat); // the first vertical point
    EXPECT_EQ(t.OriginLon(), kP1.lon);
    EXPECT_EQ(t.HorizontalScale(), 1.0);
    EXPECT_EQ(t.HorizontalRotation(), 0.0);
    geo_nee out{};
    t.Forward(kP3, out);
    const geo_nee expected = projected(kP3, kP1.lat, kP1.lon, 0.0, 0.0);
    EXPECT_NEAR(out.north, expected.north, kPlane);
    EXPECT_NEAR(out.east, expected.east, kPlane);
    // Three points define the plane exactly: every vertical residual vanishes.
    for (int i = 0; i < 3; ++i) {
        EXPECT_NEAR(t.NthPoint(i)->vResidual, 0.0, 1e-9);
        EXPECT_EQ(t.NthPoint(i)->hResidual, GEO_NULL);
    }
}

TEST(TransformationVertical, OnePointGivesAHeightShiftOnly) {
    CGeoTransformation t;
    add(t,
        {calibration_point(u"H1", kP1, geo_nee{1000.0, 1000.0, GEO_NULL}, geotrans_UseHorizontal),
         calibration_point(u"H2", kP2, geo_nee{3000.0, 5000.0, GEO_NULL}, geotrans_UseHorizontal),
         calibration_point(u"V", kP3, geo_nee{GEO_NULL, GEO_NULL, 1.5}, geotrans_UseVertical)});
    ASSERT_EQ(t.IsCalibrated(), 1);
    EXPECT_NEAR(t.VerticalHeightAdjustment(), 1.5 - kP3.height, 1e-12);
    EXPECT_EQ(t.VerticalSlopeNorth(), 0.0);
    EXPECT_EQ(t.VerticalSlopeEast(), 0.0);
    EXPECT_NEAR(t.NthPoint(2)->vResidual, 0.0, 1e-12);
}

TEST(TransformationVertical, TwoPointsTiltThePlaneOnlyAlongTheirLine) {
    // Site = projection (identity similarity): the plane's gradient must point along A->B with
    // magnitude (dh_B - dh_A) / |AB|, and have no component across it.
    CGeoTransformation t;
    const double lat0 = (kP1.lat + kP2.lat) / 2.0;
    const double lon0 = (kP1.lon + kP2.lon) / 2.0;
    const geo_nee ga = projected(kP1, lat0, lon0, 0.0, 0.0);
    const geo_nee gb = projected(kP2, lat0, lon0, 0.0, 0.0);
    const double dh_a = 2.0;
    const double dh_b = 2.9;
    add(t, {calibration_point(u"A", kP1, geo_nee{ga.north, ga.east, kP1.height + dh_a}, kBoth),
            calibration_point(u"B", kP2, geo_nee{gb.north, gb.east, kP2.height + dh_b}, kBoth)});
    ASSERT_EQ(t.IsCalibrated(), 1);
    const double length = geo_horz_dist(ga, gb);
    const double gradient = (dh_b - dh_a) / length;
    EXPECT_NEAR(t.VerticalSlopeNorth(), gradient * (gb.north - ga.north) / length, 1e-12);
    EXPECT_NEAR(t.VerticalSlopeEast(), gradient * (gb.east - ga.east) / length, 1e-12);
    EXPECT_NEAR(t.NthPoint(0)->vResidual, 0.0, 1e-9);
    EXPECT_NEAR(t.NthPoint(1)->vResidual, 0.0, 1e-9);
    // The plane's origin is the centroid of the site coordinates; in the plane of the
    // projection (centred on the mean latitude and longitude, the false origin subtracted
    // again) the points lie at ga and gb, so the height shift is the plane's value at 0:
    // dh_a - gradient * (ga . u) with u the unit vector A->B.
    const double along_a =
        (ga.north * (gb.north - ga.north) + ga.east * (gb.east - ga.east)) / length;
    EXPECT_NEAR(t.VerticalHeightAdjustment(), dh_a - gradient * along_a, 1e-9);
}

TEST(TransformationVertical, CoincidentVerticalPointsHaveNoPlane) {
    // Three vertical points, no horizontal one, at one position: all project onto the centre
    // and the normal matrix has an exactly zero pivot.
    // Two such points fail already: their made-up third point lies 20 m off them, but the two
    // rows are the same, so the plane is undetermined across.
    CGeoTransformation t;
    add(t, {calibration_point(u"V1", kP1, geo_nee{GEO_NULL, GEO_NULL, 5.0}, geotrans_UseVertical)});
    const auto second =
        calibration_point(u"V2", kP1, geo_nee{GEO_NULL, GEO_NULL, 6.0}, geotrans_UseVertical);
    geotrans_Error error = geotrans_NoError;
    EXPECT_EQ(t.AddPoint(&second, &error), 0);
    EXPECT_EQ(error, geotrans_SolutionFailed);
    const auto third =
        calibration_point(u"V3", kP1, geo_nee{GEO_NULL, GEO_NULL, 4.0}, geotrans_UseVertical);
    error = geotrans_NoError;
    EXPECT_EQ(t.AddPoint(&third, &error), 0);
    EXPECT_EQ(error, geotrans_SolutionFailed);
    EXPECT_EQ(t.IsCalibrated(), 0);
    EXPECT_EQ(t.VerticalHeightAdjustment(), GEO_NULL);
    EXPECT_EQ(t.NthPoint(0)->vResidual, GEO_NULL);
}

TEST(TransformationVertical, LargestAbsoluteVerticalResidualIsReported) {
    const KnownSite site(dutch_positions());
    std::vector<geotrans_CalibrationPoint> points = site.points(geotrans_UseVertical);
    const double noise[] = {0.004, -0.012, 0.001, 0.006, -0.002, 0.003};
    for (std::size_t i = 0; i < points.size(); ++i) {
        points[i].nee.elev += noise[i];
    }
    CGeoTransformation t;
    add(t, points);
    ASSERT_EQ(t.IsCalibrated(), 1);
    int best = -1;
    double largest = 0.0;
    for (int i = 0; i < t.NumberOfPoints(); ++i) {
        if (std::fabs(t.NthPoint(i)->vResidual) > largest) {
            largest = std::fabs(t.NthPoint(i)->vResidual);
            best = i;
        }
    }
    int index = -1;
    double value = 0.0;
    t.GetMaxVResidual(&index, &value);
    EXPECT_EQ(index, best);
    EXPECT_EQ(value, largest);
    EXPECT_GT(value, 0.0);
    EXPECT_LT(t.NthPoint(best)->vResidual, 0.0); // signed: known - computed, here negative
}

// ---------------------------------------------------------------------------------------------
// Residual queries

TEST(TransformationResiduals, AllZeroGivesNoIndexAndZero) {
    CGeoTransformation t;
    add(t, {calibration_point(u"A", kP1, geo_nee{10.0, 20.0, 30.0}, kBoth)});
    int index = 5;
    double value = 5.0;
    t.GetMaxHResidual(&index, &value);
    EXPECT_EQ(index, -1);
    EXPECT_EQ(value, 0.0);
}

TEST(TransformationResiduals, NotCalibratedGivesNull) {
    CGeoTransformation t;
    int index = 5;
    double value = 5.0;
    t.GetMaxVResidual(&index, &value);
    EXPECT_EQ(index, -1);
    EXPECT_EQ(value, GEO_NULL);
    t.GetMaxHResidual(nullptr, nullptr); // null outputs are allowed
}

// ---------------------------------------------------------------------------------------------
// Point set operations

TEST(TransformationPoints, GetSetAndDeleteByIndex) {
    const KnownSite site(dutch_positions());
    const auto points = site.points();
    CGeoTransformation t;
    add(t, {points[0], points[1], points[2]});
    geotrans_CalibrationPoint out{};
    t.GetNthPoint(1, &out);
    EXPECT_EQ(name_of(out), u"CP2");
    EXPECT_EQ(t.NthPoint(3), nullptr);
    EXPECT_EQ(t.NthPoint(-1), nullptr);
    out.flags = 0;
    t.GetNthPoint(3, &out); // out of range: untouched
    EXPECT_EQ(out.flags, 0u);
    t.GetNthPoint(0, nullptr);

    geotrans_Error error = geotrans_NoError;
    EXPECT_EQ(t.SetNthPoint(3, &points[3], &error), 0);
    EXPECT_EQ(t.SetNthPoint(-1, &points[3], &error), 0);
    EXPECT_EQ(t.SetNthPoint(0, nullptr, &error), 0);
    EXPECT_EQ(error, geotrans_NoError);
    EXPECT_EQ(t.SetNthPoint(2, &points[3], &error), 1);
    EXPECT_EQ(name_of(*t.NthPoint(2)), u"CP4");

    EXPECT_EQ(t.DeleteNthPoint(3, &error), 0);
    EXPECT_EQ(t.DeleteNthPoint(-1, &error), 0);
    EXPECT_EQ(error, geotrans_NoError);
    EXPECT_EQ(t.DeleteNthPoint(0, &error), 1);
    EXPECT_EQ(t.NumberOfPoints(), 2);
    EXPECT_EQ(name_of(*t.NthPoint(0)), u"CP2");
    EXPECT_EQ(name_of(*t.NthPoint(1)), u"CP4");
    EXPECT_EQ(t.AddPoint(nullptr, &error), 0);
    EXPECT_EQ(t.NumberOfPoints(), 2);
}

TEST(TransformationPoints, AddingAPointFromItsOwnBlockCopiesItFirst) {
    const KnownSite site(dutch_positions());
    CGeoTransformation t;
    add(t, site.points());
    for (int i = 0; i < 40; ++i) {
        EXPECT_EQ(t.AddPoint(t.NthPoint(0), nullptr), 1);
    }
    EXPECT_EQ(name_of(*t.NthPoint(45)), u"CP1");
}

TEST(TransformationPoints, DeletingEveryPointLeavesItEmpty) {
    CGeoTransformation t;
    add(t, {calibration_point(u"A", kP1, geo_nee{10.0, 20.0, 30.0}, kBoth)});
    EXPECT_EQ(t.DeleteNthPoint(0, nullptr), 1);
    EXPECT_EQ(t.NumberOfPoints(), 0);
    EXPECT_EQ(t.IsCalibrated(), 0);
    EXPECT_EQ(t.ProjectionType(), CGeoStereographic::stereo_None);
}

TEST(TransformationPoints, ResetForgetsEverything) {
    const KnownSite site(dutch_positions());
    CGeoTransformation t;
    add(t, site.points());
    t.SetDefaultScaleAndRotation(1.1, 0.2);
    t.SetSeedPoint(0, site.control[0]);
    t.Reset();
    EXPECT_EQ(t.NumberOfPoints(), 0);
    EXPECT_EQ(t.IsCalibrated(), 0);
    EXPECT_EQ(t.DefaultScale(), 1.0);
    EXPECT_EQ(t.DefaultRotation(), 0.0);
    EXPECT_EQ(t.GetSeedPoint(nullptr), -1);
    EXPECT_EQ(t.MaxEasting(), 0.0);
}

// ---------------------------------------------------------------------------------------------
// Seed point

TEST(TransformationSeed, SetSeedPointWritesThePositionAndRemembersTheName) {
    const KnownSite site(dutch_positions());
    CGeoTransformation t;
    add(t, site.points());
    const geo_llh moved{site.control[2].lat + 1e-6, site.control[2].lon, 50.0};
    t.SetSeedPoint(2, moved);
    EXPECT_EQ(t.NthPoint(2)->llh.lat, moved.lat);
    EXPECT_EQ(t.NthPoint(2)->llh.height, 50.0);
    geotrans_CalibrationPoint out{};
    EXPECT_EQ(t.GetSeedPoint(&out), 2);
    EXPECT_EQ(name_of(out), u"CP3");
    // Recomputed: the projection centre moved with the point.
    EXPECT_NEAR(t.OriginLat(), site.lat0 + 1e-6 / 6.0, 1e-15);
}

TEST(TransformationSeed, OutOfRangeIndexDoesNothing) {
    CGeoTransformation t;
    add(t, {calibration_point(u"A", kP1, geo_nee{10.0, 20.0, 30.0}, kBoth)});
    t.SetSeedPoint(1, kP2);
    t.SetSeedPoint(-1, kP2);
    EXPECT_EQ(t.GetSeedPoint(nullptr), -1);
    EXPECT_EQ(t.NthPoint(0)->llh.lat, kP1.lat);
}

TEST(TransformationSeed, DeletingTheSeedPointForgetsIt) {
    const KnownSite site(dutch_positions());
    CGeoTransformation t;
    add(t, site.points());
    t.SetSeedPoint(1, site.control[1]);
    EXPECT_EQ(t.GetSeedPoint(nullptr), 1);
    t.DeleteNthPoint(0, nullptr); // another point: the seed moves down with the records
    EXPECT_EQ(t.GetSeedPoint(nullptr), 0);
    t.DeleteNthPoint(0, nullptr);
    EXPECT_EQ(t.GetSeedPoint(nullptr), -1);
}

TEST(TransformationSeed, RenamedSeedIsForgottenAndTheLastPointExaminedIsReturned) {
    const KnownSite site(dutch_positions());
    CGeoTransformation t;
    add(t, site.points());
    t.SetSeedPoint(1, site.control[1]);
    geotrans_CalibrationPoint renamed = *t.NthPoint(1);
    renamed.name[0] = u'X';
    t.SetNthPoint(1, &renamed, nullptr);
    geotrans_CalibrationPoint out{};
    EXPECT_EQ(t.GetSeedPoint(&out), -1);
    EXPECT_EQ(name_of(out), u"CP6"); // the last point examined
    out.flags = 99;
    EXPECT_EQ(t.GetSeedPoint(&out), -1); // now no seed at all: nothing examined
    EXPECT_EQ(out.flags, 99u);
}

TEST(TransformationSeed, NamesAreComparedExactly) {
    CGeoTransformation t;
    add(t, {calibration_point(u"base", kP1, geo_nee{10.0, 20.0, 30.0}, kBoth),
            calibration_point(u"BASE", kP2, geo_nee{15.0, 20.0, 30.0}, kBoth)});
    t.SetSeedPoint(1, kP2);
    EXPECT_EQ(t.GetSeedPoint(nullptr), 1);
}

TEST(TransformationSeed, AFullHundredUnitNameIsMatched) {
    geotrans_CalibrationPoint p = calibration_point(u"", kP1, geo_nee{10.0, 20.0, 30.0}, kBoth);
    for (unsigned short& unit : p.name) {
        unit = u'Q'; // no terminator at all
    }
    CGeoTransformation t;
    add(t, {p});
    t.SetSeedPoint(0, kP1);
    EXPECT_EQ(t.GetSeedPoint(nullptr), 0);
}

// ---------------------------------------------------------------------------------------------
// Default scale and rotation

TEST(TransformationDefaults, WithOneCalibratedPointTheAdjustmentIsReplacedAtOnce) {
    CGeoTransformation t;
    const geo_nee site{4500.0, 1200.0, 3.25};
    add(t, {calibration_point(u"BASE", kP1, site, kBoth)});
    t.SetDefaultScaleAndRotation(1.001, 0.01);
    EXPECT_EQ(t.DefaultScale(), 1.001);
    EXPECT_EQ(t.DefaultRotation(), 0.01);
    EXPECT_EQ(t.HorizontalScale(), 1.001);
    EXPECT_EQ(t.HorizontalRotation(), 0.01);
    // About the point's site coordinates: the point stays, others rotate and scale about it.
    const geo_llh other{52.09 * kDeg, 5.18 * kDeg, 50.0};
    const geo_nee plain = projected(other, kP1.lat, kP1.lon, 4500.0, 1200.0);
    const double dn = plain.north - 4500.0;
    const double de = plain.east - 1200.0;
    geo_nee out{};
    t.Forward(other, out);
    EXPECT_NEAR(out.east, 1.001 * std::sin(0.01) * dn + 1.001 * std::cos(0.01) * de + 1200.0,
                kPlane);
    EXPECT_NEAR(out.north, 1.001 * std::cos(0.01) * dn - 1.001 * std::sin(0.01) * de + 4500.0,
                kPlane);
    geo_nee base{};
    t.Forward(kP1, base);
    EXPECT_NEAR(base.north, 4500.0, 1e-9);
}

TEST(TransformationDefaults, TheOriginIsTheFirstStoredPointEvenWhenItTakesNoPart) {
    CGeoTransformation t;
    add(t, {calibration_point(u"IDLE", kP2, geo_nee{0.0, 0.0, 0.0}, 0),
            calibration_point(u"BASE", kP1, geo_nee{4500.0, 1200.0, 3.25}, kBoth)});
    t.SetDefaultScaleAndRotation(1.0, kHalfPi);
    // The quarter turn is about (0, 0): the base point (4500, 1200) goes to (-1200, 4500).
    geo_nee base{};
    t.Forward(kP1, base);
    EXPECT_NEAR(base.north, -1200.0, 1e-9);
    EXPECT_NEAR(base.east, 4500.0, 1e-9);
}

TEST(TransformationDefaults, WithSeveralPointsTheyAreOnlyStoredForLater) {
    CGeoTransformation t;
    add(t, {calibration_point(u"A", kP1, geo_nee{1000.0, 1000.0, 1.0}, kBoth),
            calibration_point(u"B", kP2, geo_nee{3000.0, 5000.0, 1.0}, kBoth)});
    const double scale = t.HorizontalScale();
    t.SetDefaultScaleAndRotation(2.0, 1.0);
    EXPECT_EQ(t.HorizontalScale(), scale);
    t.DeleteNthPoint(1, nullptr);
    EXPECT_EQ(t.HorizontalScale(), 2.0); // one point left: the defaults apply
    EXPECT_EQ(t.HorizontalRotation(), 1.0);
}

// ---------------------------------------------------------------------------------------------
// Copies

TEST(TransformationCopy, AssignmentRecomputesWithUnitDefaultsThenCopiesThem) {
    CGeoTransformation source;
    source.SetDefaultScaleAndRotation(1.5, 0.2);
    add(source, {calibration_point(u"BASE", kP1, geo_nee{4500.0, 1200.0, 3.25}, kBoth)});
    source.SetSeedPoint(0, kP1);
    ASSERT_EQ(source.HorizontalScale(), 1.5);
    CGeoTransformation target;
    target = source;
    EXPECT_EQ(target.NumberOfPoints(), 1);
    EXPECT_EQ(target.IsCalibrated(), 1);
    EXPECT_EQ(target.HorizontalScale(), 1.0); // solved before the defaults came across
    EXPECT_EQ(target.HorizontalRotation(), 0.0);
    EXPECT_EQ(target.DefaultScale(), 1.5);
    EXPECT_EQ(target.DefaultRotation(), 0.2);
    EXPECT_EQ(target.GetSeedPoint(nullptr), -1); // the seed is not copied
    CGeoTransformation& same = target;
    target = same; // self-assignment keeps the points
    EXPECT_EQ(target.NumberOfPoints(), 1);
}

TEST(TransformationCopy, CopyConstructionBehavesAsAssignment) {
    const KnownSite site(dutch_positions());
    auto source = std::make_unique<CGeoTransformation>();
    add(*source, site.points());
    CGeoTransformation copy(*source);
    geo_nee a{};
    geo_nee b{};
    source->Forward(site.control[0], a);
    source.reset(); // the copy owns its own blocks
    copy.Forward(site.control[0], b);
    EXPECT_EQ(a.north, b.north);
    EXPECT_EQ(a.east, b.east);
    EXPECT_EQ(a.elev, b.elev);
}

// ---------------------------------------------------------------------------------------------
// GEO_NULL through the chain

TEST(TransformationChain, NullLatitudeGivesNullGrid) {
    const KnownSite site(dutch_positions());
    CGeoTransformation t;
    add(t, site.points());
    geo_nee out{};
    t.Forward(geo_llh{GEO_NULL, 0.09, 10.0}, out);
    EXPECT_EQ(out.north, GEO_NULL);
    EXPECT_EQ(out.east, GEO_NULL);
    EXPECT_EQ(out.elev, GEO_NULL);
    geo_llh back{};
    t.Reverse(geo_nee{GEO_NULL, 1000.0, 10.0}, back);
    EXPECT_EQ(back.lat, GEO_NULL);
    EXPECT_EQ(back.lon, GEO_NULL);
}

TEST(TransformationChain, NullElevationKeepsThePlanConversion) {
    const KnownSite site(dutch_positions());
    CGeoTransformation t;
    add(t, site.points());
    const geo_llh llh{52.095 * kDeg, 5.20 * kDeg, GEO_NULL};
    geo_nee out{};
    t.Forward(llh, out);
    EXPECT_EQ(out.elev, GEO_NULL);
    const geo_nee expected = site.site_plan(llh);
    EXPECT_NEAR(out.north, expected.north, kPlane);
    EXPECT_NEAR(out.east, expected.east, kPlane);
}

} // namespace
