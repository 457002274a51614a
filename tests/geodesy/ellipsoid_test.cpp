// CGeoEllipsoid and the WGS84 conversions: geodetic <-> ECEF <-> local north/east/up.
//
// Expected values come from a plain Python transcription of the textbook formulas with the
// library's WGS84 constants (a = 6378137, e^2 = 0.00669437999014), and from GeographicLib's
// Geocentric and LocalCartesian classes, which use the exact WGS84 flattening 1/298.257223563.
//
// Agreement with GeographicLib: the rounded e^2 differs from f(2 - f) by 1.3e-15, which moves
// the prime-vertical radius N by at most a * 1.3e-15 / 2 = 4.2e-9 m; X, Y, Z differ by at most
// 4.7e-9 m over all latitudes and heights from -100 m to 10 km (measured in Python with both
// values of e^2). A double near 6.4e6 m has a spacing of 9.3e-10 m, so 1e-8 m covers the
// constant and a few roundings. The latitude moves by about the same relative amount:
// 1e-14 rad (6e-8 m on the ground) covers it with the iteration's own 1e-13 rad tolerance.
#include "geodesy/wgs84.h"
#include "qv5/geoellipsoid.h"

#include <GeographicLib/Geocentric.hpp>
#include <GeographicLib/LocalCartesian.hpp>
#include <gtest/gtest.h>

#include <cmath>

namespace {

constexpr double kDeg = 0.017453292519943295;
/// Closed forms, metres.
constexpr double kMetres = 1e-9;
/// Angles from closed forms, radians.
constexpr double kRadians = 1e-15;
/// ECEF against GeographicLib, metres (see the file comment).
constexpr double kEcefAgainstExact = 1e-8;
/// Latitude and longitude against GeographicLib, radians (see the file comment).
constexpr double kAngleAgainstExact = 1e-14;
/// Height against GeographicLib, metres: p / cos(lat) - N cancels numbers near 6.4e6 m whose
/// spacing is 9.3e-10 m, and the latitude error above multiplies into it.
constexpr double kHeightAgainstExact = 1e-7;

const GeographicLib::Geocentric& exact_wgs84() {
    return GeographicLib::Geocentric::WGS84();
}

// ---------------------------------------------------------------------------------------------
// CGeoEllipsoid

TEST(Ellipsoid, DerivesEccentricitiesFromTheFlattening) {
    const double f = 1.0 / 298.257223563;
    CGeoEllipsoid wgs84(6378137.0, f);
    EXPECT_EQ(wgs84.Radius(), 6378137.0);
    EXPECT_EQ(wgs84.Flattening(), f);
    // e^2 = 2f - f^2 = 0.0066943799901413165, e = 0.08181919084262149,
    // e'^2 = e^2 / (1 - e^2) = 0.006739496742276434 (Python).
    EXPECT_NEAR(wgs84.ESquared(), 0.0066943799901413165, 1e-18);
    EXPECT_NEAR(wgs84.E(), 0.08181919084262149, 1e-17);
    EXPECT_NEAR(wgs84.SecondESquared(), 0.006739496742276434, 1e-18);
    EXPECT_NEAR(wgs84.SecondE(), std::sqrt(0.006739496742276434), 1e-17);
}

TEST(Ellipsoid, ZeroFlatteningIsASphere) {
    CGeoEllipsoid sphere(6371000.0, 0.0);
    EXPECT_EQ(sphere.E(), 0.0);
    EXPECT_EQ(sphere.SecondE(), 0.0);
    EXPECT_EQ(sphere.ESquared(), 0.0);
}

TEST(Ellipsoid, CopiesCarryEveryValue) {
    CGeoEllipsoid a(6378137.0, 1.0 / 298.257223563);
    CGeoEllipsoid b(a);
    CGeoEllipsoid c(1.0, 0.0);
    c = a;
    EXPECT_EQ(b.E(), a.E());
    EXPECT_EQ(c.Radius(), a.Radius());
    EXPECT_EQ(c.SecondE(), a.SecondE());
}

// ---------------------------------------------------------------------------------------------
// _wgs84curvature

TEST(Wgs84Curvature, AtTheEquatorTheRadiiAreTheConstants) {
    double m = 0.0;
    double n = 0.0;
    _wgs84curvature(0.0, m, n);
    EXPECT_EQ(m, 6335439.327292829);
    EXPECT_EQ(n, 6378137.0);
}

TEST(Wgs84Curvature, AtFortyFiveDegrees) {
    double m = 0.0;
    double n = 0.0;
    _wgs84curvature(45.0 * kDeg, m, n);
    EXPECT_NEAR(m, 6367381.815619551, kMetres);
    EXPECT_NEAR(n, 6388838.290121146, kMetres);
}

// ---------------------------------------------------------------------------------------------
// _llh2xyz

TEST(LlhToXyz, AllZeroPositionIsNoPosition) {
    const geo_llh zero{0.0, 0.0, 0.0};
    geo_vector out{1.0, 2.0, 3.0};
    EXPECT_EQ(_llh2xyz(&zero, &out), 0);
    EXPECT_EQ(out.x, 1.0);
    EXPECT_EQ(out.y, 2.0);
    EXPECT_EQ(out.z, 3.0);
}

TEST(LlhToXyz, OneMetreAboveTheEquatorAndMeridian) {
    const geo_llh p{0.0, 0.0, 1.0};
    geo_vector out{};
    EXPECT_EQ(_llh2xyz(&p, &out), 1);
    EXPECT_EQ(out.x, 6378138.0);
    EXPECT_EQ(out.y, 0.0);
    EXPECT_EQ(out.z, 0.0);
}

TEST(LlhToXyz, NullPointersGiveZero) {
    const geo_llh p{0.5, 0.5, 1.0};
    geo_vector out{};
    EXPECT_EQ(_llh2xyz(nullptr, &out), 0);
    EXPECT_EQ(_llh2xyz(&p, nullptr), 0);
}

TEST(LlhToXyz, MatchesTheClosedFormWithTheRoundedConstants) {
    const geo_llh p{52.3 * kDeg, 4.9 * kDeg, 45.3};
    geo_vector out{};
    ASSERT_EQ(_llh2xyz(&p, &out), 1);
    EXPECT_NEAR(out.x, 3894344.9663178055, kMetres);
    EXPECT_NEAR(out.y, 333863.1355315049, kMetres);
    EXPECT_NEAR(out.z, 5023321.661016332, kMetres);
}

TEST(LlhToXyz, AgreesWithGeographicLibEverywhere) {
    for (int lat = -90; lat <= 90; lat += 5) {
        for (int lon = -180; lon <= 180; lon += 30) {
            for (double h : {-100.0, 0.0, 1000.0, 10000.0}) {
                const geo_llh p{lat * kDeg, lon * kDeg, h};
                geo_vector out{};
                if (_llh2xyz(&p, &out) == 0) {
                    continue; // the all-zero position
                }
                double x = 0.0;
                double y = 0.0;
                double z = 0.0;
                exact_wgs84().Forward(lat, lon, h, x, y, z);
                EXPECT_NEAR(out.x, x, kEcefAgainstExact) << lat << " " << lon << " " << h;
                EXPECT_NEAR(out.y, y, kEcefAgainstExact) << lat << " " << lon << " " << h;
                EXPECT_NEAR(out.z, z, kEcefAgainstExact) << lat << " " << lon << " " << h;
            }
        }
    }
}

// ---------------------------------------------------------------------------------------------
// _xyz2llh

// A point at 30 N 10 E, 100 m up, converted to ECEF with the library's constants (Python).
constexpr geo_vector kAt30{5444355.285869993, 959986.7294616274, 3170423.735383637};

TEST(XyzToLlh, EarthCentreIsNoPosition) {
    const geo_vector centre{0.0, 0.0, 0.0};
    geo_llh out{1.0, 2.0, 3.0};
    EXPECT_EQ(_xyz2llh(&centre, &out, 1e-12), 0);
    EXPECT_EQ(out.lat, 1.0);
    EXPECT_EQ(out.lon, 2.0);
    EXPECT_EQ(out.height, 3.0);
}

TEST(XyzToLlh, NullPointersGiveZero) {
    geo_llh out{};
    EXPECT_EQ(_xyz2llh(nullptr, &out, 1e-12), 0);
    EXPECT_EQ(_xyz2llh(&kAt30, nullptr, 1e-12), 0);
}

TEST(XyzToLlh, ConvergesToThePosition) {
    geo_llh out{};
    ASSERT_EQ(_xyz2llh(&kAt30, &out, 1e-12), 1);
    EXPECT_NEAR(out.lat, 0.5235987755982983, kRadians);
    EXPECT_NEAR(out.lon, 0.17453292519943292, kRadians);
    EXPECT_NEAR(out.height, 99.99999999813735, kMetres);
}

TEST(XyzToLlh, ToleranceOfTenTakesTheFirstEstimate) {
    // atan2(Z, p * 0.99330562000986) without iterating.
    geo_llh out{};
    ASSERT_EQ(_xyz2llh(&kAt30, &out, 10.0), 1);
    EXPECT_NEAR(out.lat, 0.5235988213138245, kRadians);
    EXPECT_NEAR(out.height, 100.16764007974416, kMetres);
}

TEST(XyzToLlh, FirstRoundNeverStopsTheIteration) {
    // With tolerance 9 the first round (change from -100) continues and the second stops: the
    // result is two rounds in, neither the first estimate nor one round.
    geo_llh out{};
    ASSERT_EQ(_xyz2llh(&kAt30, &out, 9.0), 1);
    EXPECT_NEAR(out.lat, 0.5235987755994544, kRadians);
    EXPECT_NEAR(out.height, 100.00000423844904, kMetres);
}

TEST(XyzToLlh, GivesUpAfterTenRoundsWithoutWriting) {
    // A negative tolerance is never met.
    geo_llh out{1.0, 2.0, 3.0};
    EXPECT_EQ(_xyz2llh(&kAt30, &out, -1.0), 0);
    EXPECT_EQ(out.lat, 1.0);
    EXPECT_EQ(out.lon, 2.0);
    EXPECT_EQ(out.height, 3.0);
}

TEST(XyzToLlh, BeyondFortyFiveDegreesTheHeightIsLeftAsGiven) {
    // 60 N 20 W, 250 m up (ECEF from Python).
    const geo_vector at60{3004413.0497908103, -1093516.9215647967, 5500693.640289582};
    geo_llh out{0.0, 0.0, -7.25};
    ASSERT_EQ(_xyz2llh(&at60, &out, 1e-12), 1);
    EXPECT_NEAR(out.lat, 1.0471975511965976, kRadians);
    EXPECT_NEAR(out.lon, -0.3490658503988659, kRadians);
    EXPECT_EQ(out.height, -7.25);
}

TEST(XyzToLlh, SouthernLatitudesBeyondFortyFiveKeepTheHeightToo) {
    double x = 0.0;
    double y = 0.0;
    double z = 0.0;
    exact_wgs84().Forward(-46.0, 100.0, 30.0, x, y, z);
    const geo_vector p{x, y, z};
    geo_llh out{0.0, 0.0, 12.5};
    ASSERT_EQ(_xyz2llh(&p, &out, 1e-12), 1);
    EXPECT_NEAR(out.lat, -46.0 * kDeg, kAngleAgainstExact);
    EXPECT_EQ(out.height, 12.5);
}

TEST(XyzToLlh, AgreesWithGeographicLib) {
    for (int lat = -89; lat <= 89; lat += 4) {
        for (int lon = -179; lon <= 179; lon += 37) {
            for (double h : {-100.0, 0.0, 1000.0, 10000.0}) {
                double x = 0.0;
                double y = 0.0;
                double z = 0.0;
                exact_wgs84().Forward(lat, lon, h, x, y, z);
                const geo_vector p{x, y, z};
                geo_llh out{0.0, 0.0, GEO_NULL};
                ASSERT_EQ(_xyz2llh(&p, &out, 1e-13), 1);
                EXPECT_NEAR(out.lat, lat * kDeg, kAngleAgainstExact) << lat << " " << lon;
                EXPECT_NEAR(out.lon, lon * kDeg, kAngleAgainstExact) << lat << " " << lon;
                if (std::abs(lat) <= 45) {
                    EXPECT_NEAR(out.height, h, kHeightAgainstExact) << lat << " " << lon;
                } else {
                    EXPECT_EQ(out.height, GEO_NULL);
                }
            }
        }
    }
}

TEST(XyzToLlh, RoundTripWithLlhToXyz) {
    const geo_llh p{-33.8568 * kDeg, 151.2153 * kDeg, 58.0};
    geo_vector v{};
    ASSERT_EQ(_llh2xyz(&p, &v), 1);
    geo_llh back{};
    ASSERT_EQ(_xyz2llh(&v, &back, 1e-13), 1);
    EXPECT_NEAR(back.lat, p.lat, kRadians);
    EXPECT_NEAR(back.lon, p.lon, kRadians);
    EXPECT_NEAR(back.height, p.height, 1e-8); // cancellation of 6.4e6 m numbers
}

// ---------------------------------------------------------------------------------------------
// _xyz2nez

TEST(XyzToNez, PointAtTheReferenceIsZero) {
    geo_nee out{9.0, 9.0, 9.0};
    EXPECT_EQ(_xyz2nez(&kAt30, &kAt30, &out), 1);
    EXPECT_EQ(out.north, 0.0);
    EXPECT_EQ(out.east, 0.0);
    EXPECT_EQ(out.elev, 0.0);
}

TEST(XyzToNez, ReferenceAtTheEarthCentreLeavesTheOutputButStillGivesOne) {
    const geo_vector centre{0.0, 0.0, 0.0};
    geo_nee out{9.0, 8.0, 7.0};
    EXPECT_EQ(_xyz2nez(&centre, &kAt30, &out), 1);
    EXPECT_EQ(out.north, 9.0);
    EXPECT_EQ(out.east, 8.0);
    EXPECT_EQ(out.elev, 7.0);
}

TEST(XyzToNez, NullPointersGiveOneAndWriteNothing) {
    geo_nee out{9.0, 8.0, 7.0};
    EXPECT_EQ(_xyz2nez(nullptr, &kAt30, &out), 1);
    EXPECT_EQ(_xyz2nez(&kAt30, nullptr, &out), 1);
    EXPECT_EQ(_xyz2nez(&kAt30, &kAt30, nullptr), 1);
    EXPECT_EQ(out.north, 9.0);
}

TEST(XyzToNez, AtTheEquatorAndMeridianTheAxesAreSimple) {
    // Reference on the X axis: north is +Z, east is +Y, up is +X.
    const geo_vector reference{6378137.0, 0.0, 0.0};
    const geo_vector point{6378137.0 + 3.0, 2.0, 1.0};
    geo_nee out{};
    ASSERT_EQ(_xyz2nez(&reference, &point, &out), 1);
    EXPECT_NEAR(out.north, 1.0, kMetres);
    EXPECT_NEAR(out.east, 2.0, kMetres);
    EXPECT_NEAR(out.elev, 3.0, kMetres);
}

TEST(XyzToNez, AgreesWithGeographicLibLocalCartesian) {
    const double lat0 = 41.3;
    const double lon0 = -72.9;
    const double h0 = 30.0;
    double rx = 0.0;
    double ry = 0.0;
    double rz = 0.0;
    exact_wgs84().Forward(lat0, lon0, h0, rx, ry, rz);
    const geo_vector reference{rx, ry, rz};
    const GeographicLib::LocalCartesian local(lat0, lon0, h0, exact_wgs84());
    for (const auto& offset :
         {geo_llh{0.01, 0.0, 0.0}, geo_llh{0.0, -0.02, 15.0}, geo_llh{-0.005, 0.007, -40.0}}) {
        double x = 0.0;
        double y = 0.0;
        double z = 0.0;
        exact_wgs84().Forward(lat0 + offset.lat, lon0 + offset.lon, h0 + offset.height, x, y, z);
        const geo_vector point{x, y, z};
        geo_nee out{};
        ASSERT_EQ(_xyz2nez(&reference, &point, &out), 1);
        double east = 0.0;
        double north = 0.0;
        double up = 0.0;
        local.Forward(lat0 + offset.lat, lon0 + offset.lon, h0 + offset.height, east, north, up);
        // Offsets of a few kilometres rotated by axes that agree to 1e-14 rad.
        EXPECT_NEAR(out.north, north, 1e-8);
        EXPECT_NEAR(out.east, east, 1e-8);
        EXPECT_NEAR(out.elev, up, 1e-8);
    }
}

// ---------------------------------------------------------------------------------------------
// The internal maths

TEST(Wgs84Maths, PrimeVerticalRadiusIsTheCurvaturesN) {
    for (double lat : {-1.2, -0.3, 0.0, 0.7, 1.5}) {
        EXPECT_EQ(qv5::detail::wgs84_prime_vertical(lat),
                  qv5::detail::wgs84_curvature(lat).prime_vertical);
    }
}

TEST(Wgs84Maths, ConversionReportsWhetherTheHeightWasWritten) {
    const auto r44 =
        qv5::detail::xyz_to_llh(4000000.0, 0.0, 4000000.0 * std::tan(44.0 * kDeg), 1e-12);
    EXPECT_TRUE(r44.converged);
    EXPECT_TRUE(r44.height_written);
    const auto r46 =
        qv5::detail::xyz_to_llh(4000000.0, 0.0, 4000000.0 * std::tan(46.0 * kDeg), 1e-12);
    EXPECT_TRUE(r46.converged);
    EXPECT_FALSE(r46.height_written);
}

} // namespace
