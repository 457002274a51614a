// CGeoStereographic: the cases of the origin, the exact origin, GEO_NULL, and the ellipsoidal
// formulas against PROJ's +proj=stere (Snyder's oblique ellipsoidal stereographic through the
// conformal latitude, the same formulation).
//
// Tolerances against PROJ: both evaluate the same closed forms with operations in a different
// order, so plane coordinates within 20 km of the origin agree to a few ulps of numbers of that
// size (1e-12 m); 1e-9 m leaves room and is still far below anything a surveyor sees. The
// inverse iterates the latitude to 1e-10 rad in both libraries, and a converged iteration is
// accurate well beyond its stopping step; 1e-12 rad (6 micrometres) is asserted.
#include "geodesy/stereographic_math.h"
#include "proj_reference.h"
#include "qv5/geostereo.h"

#include <gtest/gtest.h>

#include <cmath>
#include <limits>

namespace {

using qv5::test::ProjOperation;
using qv5::test::stereographic_definition;

constexpr double kDeg = 0.017453292519943295;
constexpr double kHalfPi = 1.5707963267948966;
/// Plane coordinates against PROJ, metres (see the file comment).
constexpr double kPlane = 1e-9;
/// Latitude and longitude against PROJ or a round trip, radians (see the file comment).
constexpr double kAngle = 1e-12;

CGeoEllipsoid wgs84() {
    return CGeoEllipsoid(6378137.0, 0.0033528106647474805);
}

CGeoStereographic projection(double lat0, double lon0, double false_north = 0.0,
                             double false_east = 0.0, double scale = 1.0) {
    CGeoEllipsoid e = wgs84();
    return CGeoStereographic(geo_llh{lat0, lon0, 0.0}, geo_nee{false_north, false_east, 0.0}, scale,
                             e);
}

struct ExposedStereographic : CGeoStereographic {
    using CGeoStereographic::CGeoStereographic;
    using CGeoStereographic::SS;
};

// ---------------------------------------------------------------------------------------------
// Cases

TEST(StereographicRegion, OriginLatitudeChoosesTheCase) {
    EXPECT_EQ(projection(0.0, 0.0).Region(), CGeoStereographic::stereo_Equatorial);
    EXPECT_EQ(projection(1e-10, 0.0).Region(), CGeoStereographic::stereo_Equatorial);
    EXPECT_EQ(projection(-1e-10, 0.0).Region(), CGeoStereographic::stereo_Equatorial);
    EXPECT_EQ(projection(2e-10, 0.0).Region(), CGeoStereographic::stereo_Oblique);
    EXPECT_EQ(projection(52.0 * kDeg, 0.0).Region(), CGeoStereographic::stereo_Oblique);
    EXPECT_EQ(projection(-33.0 * kDeg, 0.0).Region(), CGeoStereographic::stereo_Oblique);
    EXPECT_EQ(projection(kHalfPi, 0.0).Region(), CGeoStereographic::stereo_NorthPolar);
    EXPECT_EQ(projection(kHalfPi - 5e-11, 0.0).Region(), CGeoStereographic::stereo_NorthPolar);
    EXPECT_EQ(projection(-kHalfPi, 0.0).Region(), CGeoStereographic::stereo_SouthPolar);
    EXPECT_EQ(projection(-kHalfPi + 5e-11, 0.0).Region(), CGeoStereographic::stereo_SouthPolar);
    EXPECT_EQ(projection(kHalfPi - 1e-9, 0.0).Region(), CGeoStereographic::stereo_Oblique);
}

TEST(Stereographic, AccessorsReportTheOrigin) {
    CGeoStereographic p = projection(0.9, -0.2, 5000.0, 2000.0, 0.9996);
    EXPECT_EQ(p.OriginLat(), 0.9);
    EXPECT_EQ(p.OriginLon(), -0.2);
    EXPECT_EQ(p.OriginNorth(), 5000.0);
    EXPECT_EQ(p.OriginEast(), 2000.0);
    EXPECT_EQ(p.Scale(), 0.9996);
}

TEST(Stereographic, CopiesProjectAlike) {
    CGeoStereographic a = projection(0.9, -0.2, 5000.0, 2000.0);
    CGeoStereographic b(a);
    CGeoStereographic c = projection(0.0, 0.0);
    c = a;
    const geo_llh llh{0.9005, -0.1993, 12.0};
    geo_nee pa{};
    geo_nee pb{};
    geo_nee pc{};
    a.Forward(llh, pa);
    b.Forward(llh, pb);
    c.Forward(llh, pc);
    EXPECT_EQ(pa.north, pb.north);
    EXPECT_EQ(pa.east, pc.east);
    EXPECT_EQ(c.Region(), CGeoStereographic::stereo_Oblique);
}

// ---------------------------------------------------------------------------------------------
// The origin and GEO_NULL

TEST(StereographicForward, OriginGoesExactlyToTheFalseOrigin) {
    for (double lat0 : {52.1 * kDeg, -33.9 * kDeg, 0.3 * kDeg, 78.0 * kDeg}) {
        CGeoStereographic p = projection(lat0, 0.1, 5000.25, 2000.75);
        geo_nee out{};
        p.Forward(geo_llh{lat0, 0.1, 33.0}, out);
        EXPECT_EQ(out.north, 5000.25);
        EXPECT_EQ(out.east, 2000.75);
        EXPECT_EQ(out.elev, 33.0);
    }
}

TEST(StereographicReverse, FalseOriginGoesExactlyToTheOrigin) {
    for (double lat0 : {52.1 * kDeg, -33.9 * kDeg, 0.0}) {
        CGeoStereographic p = projection(lat0, 0.1, 5000.25, 2000.75);
        geo_llh out{};
        p.Reverse(geo_nee{5000.25, 2000.75, 12.5}, out);
        EXPECT_EQ(out.lat, lat0);
        EXPECT_EQ(out.lon, 0.1);
        EXPECT_EQ(out.height, 12.5);
    }
}

TEST(StereographicForward, NullLatitudeOrLongitudeGivesNullEverywhere) {
    CGeoStereographic p = projection(0.9, 0.1);
    geo_nee out{1.0, 2.0, 3.0};
    p.Forward(geo_llh{0.9, GEO_NULL, 10.0}, out);
    EXPECT_EQ(out.north, GEO_NULL);
    EXPECT_EQ(out.east, GEO_NULL);
    EXPECT_EQ(out.elev, GEO_NULL);
    out = geo_nee{1.0, 2.0, 3.0};
    p.Forward(geo_llh{GEO_NULL, 0.1, 10.0}, out);
    EXPECT_EQ(out.north, GEO_NULL);
    EXPECT_EQ(out.elev, GEO_NULL);
}

TEST(StereographicReverse, NullNorthOrEastGivesNullEverywhere) {
    CGeoStereographic p = projection(0.9, 0.1);
    geo_llh out{1.0, 2.0, 3.0};
    p.Reverse(geo_nee{GEO_NULL, 5.0, 10.0}, out);
    EXPECT_EQ(out.lat, GEO_NULL);
    EXPECT_EQ(out.lon, GEO_NULL);
    EXPECT_EQ(out.height, GEO_NULL);
    out = geo_llh{1.0, 2.0, 3.0};
    p.Reverse(geo_nee{5.0, GEO_NULL, 10.0}, out);
    EXPECT_EQ(out.lat, GEO_NULL);
}

TEST(Stereographic, ElevationPassesThroughBothWaysEvenWhenNull) {
    CGeoStereographic p = projection(0.9, 0.1);
    geo_nee plane{};
    p.Forward(geo_llh{0.9001, 0.1002, GEO_NULL}, plane);
    EXPECT_EQ(plane.elev, GEO_NULL);
    EXPECT_NE(plane.north, GEO_NULL);
    geo_llh back{};
    p.Reverse(geo_nee{plane.north, plane.east, -4.5}, back);
    EXPECT_EQ(back.height, -4.5);
}

// ---------------------------------------------------------------------------------------------
// Oblique case against PROJ

struct Origin {
    double lat;
    double lon;
};

constexpr Origin kOrigins[] = {{52.1 * kDeg, 5.2 * kDeg},
                               {-33.9 * kDeg, 151.2 * kDeg},
                               {10.5 * kDeg, -66.9 * kDeg},
                               {70.0 * kDeg, 25.0 * kDeg},
                               {-0.2 * kDeg, 36.8 * kDeg}};

TEST(StereographicOblique, ForwardAgreesWithProj) {
    for (const Origin& o : kOrigins) {
        ProjOperation reference(stereographic_definition(o.lat, o.lon));
        ASSERT_TRUE(reference.ok());
        CGeoStereographic p = projection(o.lat, o.lon);
        for (double dlat = -0.15; dlat <= 0.15; dlat += 0.05) {
            for (double dlon = -0.15; dlon <= 0.15; dlon += 0.05) {
                const double lat = o.lat + dlat * kDeg;
                const double lon = o.lon + dlon * kDeg;
                geo_nee out{};
                p.Forward(geo_llh{lat, lon, 0.0}, out);
                const PJ_COORD expected = reference.forward(lon, lat);
                EXPECT_NEAR(out.east, expected.xy.x, kPlane) << o.lat << " " << dlat << " " << dlon;
                EXPECT_NEAR(out.north, expected.xy.y, kPlane)
                    << o.lat << " " << dlat << " " << dlon;
            }
        }
    }
}

TEST(StereographicOblique, ReverseAgreesWithProj) {
    for (const Origin& o : kOrigins) {
        ProjOperation reference(stereographic_definition(o.lat, o.lon));
        ASSERT_TRUE(reference.ok());
        CGeoStereographic p = projection(o.lat, o.lon, 1000.0, 2000.0);
        for (double y = -15000.0; y <= 15000.0; y += 5000.0) {
            for (double x = -15000.0; x <= 15000.0; x += 5000.0) {
                geo_llh out{};
                p.Reverse(geo_nee{y + 1000.0, x + 2000.0, 0.0}, out);
                const PJ_COORD expected = reference.inverse(x, y);
                if (x == 0.0 && y == 0.0) {
                    EXPECT_EQ(out.lat, o.lat);
                    continue;
                }
                EXPECT_NEAR(out.lat, expected.lp.phi, kAngle) << o.lat << " " << x << " " << y;
                EXPECT_NEAR(out.lon, expected.lp.lam, kAngle) << o.lat << " " << x << " " << y;
            }
        }
    }
}

TEST(StereographicOblique, RoundTripWithinAFewKilometresRestoresThePosition) {
    CGeoStereographic p = projection(47.3 * kDeg, 8.5 * kDeg, 250000.0, 600000.0);
    for (double dlat = -0.04; dlat <= 0.04; dlat += 0.02) {
        for (double dlon = -0.06; dlon <= 0.06; dlon += 0.03) {
            const geo_llh llh{(47.3 + dlat) * kDeg, (8.5 + dlon) * kDeg, 412.0};
            geo_nee plane{};
            p.Forward(llh, plane);
            geo_llh back{};
            p.Reverse(plane, back);
            EXPECT_NEAR(back.lat, llh.lat, 1e-10);
            EXPECT_NEAR(back.lon, llh.lon, 1e-10);
            EXPECT_EQ(back.height, 412.0);
        }
    }
}

TEST(StereographicOblique, ScaleFactorScalesThePlane) {
    CGeoStereographic unit = projection(52.1 * kDeg, 5.2 * kDeg);
    CGeoStereographic scaled = projection(52.1 * kDeg, 5.2 * kDeg, 0.0, 0.0, 0.9999);
    const geo_llh llh{52.15 * kDeg, 5.27 * kDeg, 0.0};
    geo_nee a{};
    geo_nee b{};
    unit.Forward(llh, a);
    scaled.Forward(llh, b);
    EXPECT_NEAR(b.north, a.north * 0.9999, kPlane);
    EXPECT_NEAR(b.east, a.east * 0.9999, kPlane);
}

TEST(StereographicReverse, WithoutConvergenceKeepsTheCallersLongitudeShiftedToTheOrigin) {
    // A NaN north is not GEO_NULL: the latitude iteration never settles.
    CGeoStereographic p = projection(0.9, 0.1);
    geo_llh out{0.0, 0.25, 0.0};
    p.Reverse(geo_nee{std::numeric_limits<double>::quiet_NaN(), 10.0, 7.0}, out);
    EXPECT_TRUE(std::isnan(out.lat));
    EXPECT_EQ(out.lon, 0.25 + 0.1);
    EXPECT_EQ(out.height, 7.0);
}

// ---------------------------------------------------------------------------------------------
// Equatorial case: the forward plane is drawn at twice the size of Snyder's (and PROJ's); the
// inverse is Snyder's, with cos chi1 = 1 and sin chi1 = 0.

TEST(StereographicEquatorial, ForwardIsTwiceSnyders) {
    const double lon0 = 36.8 * kDeg;
    ProjOperation reference(stereographic_definition(0.0, lon0));
    ASSERT_TRUE(reference.ok());
    CGeoStereographic p = projection(0.0, lon0);
    for (double lat : {-0.1, 0.0, 0.05, 0.12}) {
        for (double dlon : {-0.1, 0.03, 0.1}) {
            geo_nee out{};
            p.Forward(geo_llh{lat * kDeg, lon0 + dlon * kDeg, 0.0}, out);
            const PJ_COORD expected = reference.forward(lon0 + dlon * kDeg, lat * kDeg);
            EXPECT_NEAR(out.east, 2.0 * expected.xy.x, 2.0 * kPlane);
            EXPECT_NEAR(out.north, 2.0 * expected.xy.y, 2.0 * kPlane);
        }
    }
}

TEST(StereographicEquatorial, ReverseAgreesWithProj) {
    const double lon0 = 36.8 * kDeg;
    ProjOperation reference(stereographic_definition(0.0, lon0));
    CGeoStereographic p = projection(0.0, lon0);
    for (double y : {-12000.0, 0.0, 8000.0}) {
        for (double x : {-9000.0, 4000.0}) {
            geo_llh out{};
            p.Reverse(geo_nee{y, x, 0.0}, out);
            const PJ_COORD expected = reference.inverse(x, y);
            EXPECT_NEAR(out.lat, expected.lp.phi, kAngle) << x << " " << y;
            EXPECT_NEAR(out.lon, expected.lp.lam, kAngle) << x << " " << y;
        }
    }
}

// ---------------------------------------------------------------------------------------------
// Polar cases: the inverse is Snyder's polar stereographic (and PROJ's); the forward mapping
// takes the distance from the pole as K SS(lat), where Snyder's is K / SS(lat). So the product
// of the two distances is K^2, with K = 2 a / sqrt((1+e)^(1+e) (1-e)^(1-e)).

double polar_k() {
    const double e = wgs84().E();
    return 2.0 * 6378137.0 / std::sqrt(std::pow(1.0 + e, 1.0 + e) * std::pow(1.0 - e, 1.0 - e));
}

TEST(StereographicPolar, NorthForwardScalesByTheConformalFunction) {
    ProjOperation reference(stereographic_definition(kHalfPi, 0.0));
    CGeoStereographic p = projection(kHalfPi, 0.0);
    for (double lat : {80.0, 85.0, 89.0}) {
        const double lon = 0.3;
        geo_nee out{};
        p.Forward(geo_llh{lat * kDeg, lon, 0.0}, out);
        const PJ_COORD snyder = reference.forward(lon, lat * kDeg);
        const double rho_snyder = std::hypot(snyder.xy.x, snyder.xy.y);
        const double rho = polar_k() * polar_k() / rho_snyder;
        EXPECT_NEAR(out.north, -rho * std::cos(lon), 1e-9 * rho) << lat;
        EXPECT_NEAR(out.east, rho * std::sin(lon), 1e-9 * rho) << lat;
    }
}

TEST(StereographicPolar, SouthForwardScalesByTheConformalFunction) {
    ProjOperation reference(stereographic_definition(-kHalfPi, 0.0));
    CGeoStereographic p = projection(-kHalfPi, 0.0);
    for (double lat : {-80.0, -87.0}) {
        const double lon = -0.7;
        geo_nee out{};
        p.Forward(geo_llh{lat * kDeg, lon, 0.0}, out);
        const PJ_COORD snyder = reference.forward(lon, lat * kDeg);
        const double rho = polar_k() * polar_k() / std::hypot(snyder.xy.x, snyder.xy.y);
        EXPECT_NEAR(out.north, rho * std::cos(lon), 1e-9 * rho) << lat;
        EXPECT_NEAR(out.east, rho * std::sin(lon), 1e-9 * rho) << lat;
    }
}

/// Longitudes are compared modulo a whole turn: PROJ brings them into [-pi, pi], the library
/// adds the origin longitude to atan2 without reducing.
double turn_difference(double a, double b) {
    return std::remainder(a - b, 2.0 * M_PI);
}

TEST(StereographicPolar, ReverseAgreesWithProjAtBothPoles) {
    for (double pole : {kHalfPi, -kHalfPi}) {
        ProjOperation reference(stereographic_definition(pole, 0.2));
        CGeoStereographic p = projection(pole, 0.2);
        for (double y : {-500000.0, 300000.0}) {
            for (double x : {-200000.0, 100000.0}) {
                geo_llh out{};
                p.Reverse(geo_nee{y, x, 0.0}, out);
                const PJ_COORD expected = reference.inverse(x, y);
                EXPECT_NEAR(out.lat, expected.lp.phi, kAngle) << pole;
                EXPECT_NEAR(turn_difference(out.lon, expected.lp.lam), 0.0, kAngle) << pole;
            }
        }
    }
}

TEST(StereographicPolar, PoleReversesToThePoleAndTheOriginLongitude) {
    CGeoStereographic p = projection(kHalfPi, 0.2, 100.0, 200.0);
    geo_llh out{};
    p.Reverse(geo_nee{100.0, 200.0, 0.0}, out);
    EXPECT_NEAR(out.lat, kHalfPi, 1e-15);
    EXPECT_EQ(out.lon, 0.2); // atan2(0, 0) is taken as 0.0
}

// ---------------------------------------------------------------------------------------------
// The internal maths

TEST(StereographicMaths, SsIsTheConformalFunction) {
    // SS(30 deg) for WGS84 (Python): tan(60 deg) ((1 - e sin)/(1 + e sin))^(e/2).
    CGeoEllipsoid ellipsoid = wgs84();
    ExposedStereographic p(geo_llh{0.5, 0.0, 0.0}, geo_nee{0.0, 0.0, 0.0}, 1.0, ellipsoid);
    const double phi = 30.0 * kDeg;
    const double e = wgs84().E();
    const double expected =
        std::tan(60.0 * kDeg) * std::pow((1.0 - e * 0.5) / (1.0 + e * 0.5), e / 2.0);
    EXPECT_NEAR(p.SS(phi, std::sin(phi)), expected, 1e-15);
    EXPECT_NEAR(p.SS(0.0, 0.0), 1.0, 1e-15);
}

TEST(StereographicMaths, ConformalLatitudeIsSmallerThanGeodeticAwayFromEquatorAndPoles) {
    const double e = wgs84().E();
    const double phi = 45.0 * kDeg;
    const double chi = qv5::detail::conformal_latitude(e, e / 2.0, phi, std::sin(phi));
    // Snyder's series 3-5: chi - phi = -(e^2/2 + 5e^4/24 + 3e^6/32) sin 2phi + (...) sin 4phi,
    // at 45 deg -0.00335655 rad = -0.192316 deg (the series is good to about e^8 ~ 1e-7 deg).
    EXPECT_NEAR((chi - phi) / kDeg, -0.192316, 1e-6);
    EXPECT_EQ(qv5::detail::conformal_latitude(e, e / 2.0, 0.0, 0.0), 0.0);
}

TEST(StereographicMaths, PolarConstantForTheTrueScaleLatitudeOfThePole) {
    const double e = wgs84().E();
    EXPECT_NEAR(qv5::detail::polar_constant(e, e / 2.0, 1.0, kHalfPi) * 6378137.0, polar_k(), 1e-6);
}

TEST(StereographicMaths, PolarConstantForAnotherTrueScaleLatitude) {
    // cos(phi_c) / SS(phi_c) / sqrt(1 - (e sin phi_c)^2) at 70 deg (Python).
    const double e = wgs84().E();
    const double phi_c = 70.0 * kDeg;
    const double s = std::sin(phi_c);
    const double ss =
        std::tan((phi_c + kHalfPi) * 0.5) * std::pow((1 - e * s) / (1 + e * s), e / 2);
    const double expected = std::cos(phi_c) / ss / std::sqrt(1.0 - (e * s) * (e * s));
    EXPECT_NEAR(qv5::detail::polar_constant(e, e / 2.0, 0.5, phi_c), expected, 1e-15);
}

TEST(StereographicMaths, EquatorialShapeUsesChiOneOfZero) {
    const auto shape = qv5::detail::stereo_shape(0.0, 0.3, 1.0, 0.08, 6378137.0, kHalfPi);
    EXPECT_EQ(shape.region, qv5::detail::kStereoEquatorial);
    EXPECT_EQ(shape.cos_chi1, 1.0);
    EXPECT_EQ(shape.sin_chi1, 0.0);
    EXPECT_EQ(shape.k, 2.0 * 6378137.0);
}

TEST(StereographicMaths, InverseReportsConvergence) {
    const auto shape = qv5::detail::stereo_shape(0.9, 0.1, 1.0, wgs84().E(), 6378137.0, kHalfPi);
    const auto ok = qv5::detail::stereo_reverse(shape, 1000.0, -2000.0);
    EXPECT_TRUE(ok.converged);
    const auto nan = qv5::detail::stereo_reverse(shape, std::nan(""), 0.0);
    EXPECT_FALSE(nan.converged);
}

} // namespace
