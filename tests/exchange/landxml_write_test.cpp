// Writing roads as LandXML, and round trips LandXML -> road -> LandXML -> road.
#include "exchange/landxml_text.h"
#include "qv5/geoarc.h"
#include "qv5/geoline.h"
#include "qv5/geopoint.h"
#include "qv5/geospiral.h"
#include "qv5/landxml.h"

#include <gtest/gtest.h>

#include <cmath>
#include <fstream>
#include <random>
#include <sstream>
#include <string>

namespace {

constexpr double kPi = 3.141592653589793;
/// Round trips compare stations and points to this, metres.
constexpr double kRoundTrip = 1e-9;

std::string fixture(const std::string& name) {
    std::ifstream in(std::string(QV5_TEST_DATA_DIR) + "/landxml/" + name, std::ios::binary);
    std::ostringstream text;
    text << in.rdbuf();
    return text.str();
}

qv5::landxml::WriteOptions fixed_date() {
    qv5::landxml::WriteOptions options;
    options.date = "2026-11-25";
    options.time = "10:00:00";
    return options;
}

void expect_same_road(CGeoRoad& a, CGeoRoad& b, double tolerance) {
    ASSERT_EQ(a.NumberHorizontalElements(), b.NumberHorizontalElements());
    for (int n = 0; n < a.NumberHorizontalElements(); ++n) {
        SCOPED_TRACE("element " + std::to_string(n));
        EXPECT_EQ(a.NthHorizontalType(n), b.NthHorizontalType(n));
        EXPECT_NEAR(a.HorzElementStartStation(n), b.HorzElementStartStation(n), tolerance);
        EXPECT_NEAR(a.HorzElementStartCoords(n).north, b.HorzElementStartCoords(n).north,
                    tolerance);
        EXPECT_NEAR(a.HorzElementStartCoords(n).east, b.HorzElementStartCoords(n).east, tolerance);
        EXPECT_NEAR(a.HorzElementEndStation(n), b.HorzElementEndStation(n), tolerance);
    }
    EXPECT_NEAR(a.EndPtHorizontal().Grid().north, b.EndPtHorizontal().Grid().north, tolerance);
    EXPECT_NEAR(a.EndPtHorizontal().Grid().east, b.EndPtHorizontal().Grid().east, tolerance);
    EXPECT_NEAR(a.EndAzimuthHorizontal(), b.EndAzimuthHorizontal(), 1e-12);
    ASSERT_EQ(a.NumberVerticalElements(), b.NumberVerticalElements());
    for (int n = 0; n < a.NumberVerticalElements(); ++n) {
        EXPECT_EQ(a.NthVerticalType(n), b.NthVerticalType(n));
        EXPECT_NEAR(a.NthPVIStation(n), b.NthPVIStation(n), tolerance);
        EXPECT_NEAR(a.NthPVIElevation(n), b.NthPVIElevation(n), tolerance);
    }
}

TEST(LandXmlWrite, RoundTripOfEachFixtureKeepsTheRoad) {
    const char* files[] = {"metric-line-arc.xml", "imperial-line-arc.xml",
                           "spirals-1.1-prefixed.xml"};
    for (const char* file : files) {
        SCOPED_TRACE(file);
        CGeoRoad first;
        ASSERT_TRUE(qv5::landxml::read_road(fixture(file), first).ok);
        const std::string written = qv5::landxml::write_road(first, fixed_date());
        CGeoRoad second;
        const auto result = qv5::landxml::read_road(written, second);
        ASSERT_TRUE(result.ok) << written;
        EXPECT_TRUE(result.warnings.empty()) << written;
        expect_same_road(first, second, kRoundTrip);
    }
}

TEST(LandXmlWrite, FeetAndGradsRoundTrip) {
    CGeoRoad first;
    ASSERT_TRUE(qv5::landxml::read_road(fixture("spirals-1.1-prefixed.xml"), first).ok);
    auto options = fixed_date();
    options.linear = qv5::landxml::LinearUnit::USSurveyFoot;
    options.angular = qv5::landxml::AngularUnit::Grads;
    const std::string written = qv5::landxml::write_road(first, options);
    EXPECT_NE(written.find("<Imperial linearUnit=\"USSurveyFoot\""), std::string::npos);
    EXPECT_NE(written.find("directionUnit=\"grads\""), std::string::npos);
    CGeoRoad second;
    ASSERT_TRUE(qv5::landxml::read_road(written, second).ok);
    expect_same_road(first, second, kRoundTrip);
}

TEST(LandXmlWrite, LineIsWrittenWithItsPointsNorthingFirstAndCounterClockwiseDirection) {
    CGeoRoad road;
    road.SetPOBInfo(100.0, 5000.0, 2000.0, 20.0);
    CGeoPoint from;
    from.SetGrid(5000.0, 2000.0, 0.0);
    CGeoLine line;
    line.Set(from, kPi / 2.0, 100.0, 0.0); // due east
    ASSERT_EQ(road.AddHorizontal(georoad_Line, &line), 1);
    const std::string written = qv5::landxml::write_road(road, fixed_date());
    EXPECT_NE(written.find("<Start>5000 2000</Start><End>5000 2100</End>"), std::string::npos)
        << written;
    // Due east is 270 degrees counter-clockwise from north.
    EXPECT_NE(written.find("dir=\"270\""), std::string::npos) << written;
    EXPECT_NE(written.find("staStart=\"100\""), std::string::npos) << written;
    EXPECT_NE(written.find("date=\"2026-11-25\" time=\"10:00:00\""), std::string::npos);
}

TEST(LandXmlWrite, CurveCarriesCentreAndPI) {
    CGeoRoad road;
    ASSERT_TRUE(qv5::landxml::read_road(fixture("metric-line-arc.xml"), road).ok);
    const std::string written = qv5::landxml::write_road(road, fixed_date());
    EXPECT_NE(written.find("<Center>4800 2100</Center>"), std::string::npos) << written;
    // PI 200 tan(22.5 degrees) east of the curve's start.
    const double tangent = 200.0 * std::tan(kPi / 8.0);
    const std::string pi = "<PI>5000 " + qv5::landxml::detail::format_number(2100.0 + tangent);
    const auto at = written.find("<PI>5000 2182.84271247");
    EXPECT_NE(at, std::string::npos) << written << "\n" << pi;
}

// A curve of three quarters of a turn has no PI ahead of its start: the PI, only a check on the
// curve, is left out, and the file reads back to the same road.
TEST(LandXmlWrite, CurveOfHalfATurnOrMoreHasNoPI) {
    CGeoRoad road;
    road.SetPOBInfo(0.0, 1000.0, 2000.0, 20.0);
    CGeoPoint origin(geo_nee{0.0, 0.0, 0.0});
    CGeoArc arc;
    arc.Set(origin, 0.0, 100.0, 1.5 * kPi * 100.0, geodef_Right, 0.0);
    ASSERT_EQ(road.AddHorizontal(georoad_Arc, &arc), 1);
    const std::string written = qv5::landxml::write_road(road, fixed_date());
    EXPECT_NE(written.find("<Center>"), std::string::npos) << written;
    EXPECT_EQ(written.find("<PI>"), std::string::npos) << written;
    CGeoRoad back;
    ASSERT_TRUE(qv5::landxml::read_road(written, back).ok);
    expect_same_road(road, back, kRoundTrip);
}

TEST(LandXmlWrite, RandomAlignmentsRoundTrip) {
    std::mt19937 random(20261125);
    std::uniform_real_distribution<double> length(5.0, 300.0);
    std::uniform_real_distribution<double> radius(60.0, 2000.0);
    std::uniform_int_distribution<int> kind(0, 3);
    for (int trial = 0; trial < 50; ++trial) {
        CGeoRoad road;
        road.SetPOBInfo(length(random) - 100.0, 1000.0 + length(random), 2000.0, 20.0);
        CGeoPoint origin;
        origin.SetGrid(0.0, 0.0, 0.0);
        double azimuth = std::uniform_real_distribution<double>(0.0, 2.0 * kPi)(random);
        for (int n = 0; n < 12; ++n) {
            const geodef_Direction turn = (random() & 1) != 0 ? geodef_Right : geodef_Left;
            const double r = radius(random);
            // Spirals short enough for the series: length below 2 R.
            const double l = std::min(length(random), r);
            switch (kind(random)) {
            case 0: {
                CGeoLine line;
                line.Set(origin, azimuth, l, 0.0);
                ASSERT_EQ(road.AddHorizontal(georoad_Line, &line), 1);
                break;
            }
            case 1: {
                CGeoArc arc;
                arc.Set(origin, azimuth, r, l, turn, 0.0);
                ASSERT_EQ(road.AddHorizontal(georoad_Arc, &arc), 1);
                break;
            }
            case 2: {
                CGeoEntrySpiral spiral;
                spiral.Set(origin, azimuth, turn, r, l);
                ASSERT_EQ(road.AddHorizontal(georoad_EntrySpiral, &spiral), 1);
                break;
            }
            default: {
                CGeoExitSpiral spiral;
                spiral.Set(origin, azimuth, turn, r, l);
                ASSERT_EQ(road.AddHorizontal(georoad_ExitSpiral, &spiral), 1);
                break;
            }
            }
            azimuth = road.EndAzimuthHorizontal();
        }
        const std::string written = qv5::landxml::write_road(road, fixed_date());
        CGeoRoad back;
        const auto result = qv5::landxml::read_road(written, back);
        ASSERT_TRUE(result.ok) << written;
        EXPECT_TRUE(result.warnings.empty()) << written;
        expect_same_road(road, back, kRoundTrip);
    }
}

TEST(LandXmlText, NumbersAreShortestRoundTripAndNeverNegativeZero) {
    using qv5::landxml::detail::format_number;
    using qv5::landxml::detail::parse_number;
    EXPECT_EQ(format_number(-0.0), "0");
    EXPECT_EQ(format_number(0.1), "0.1");
    EXPECT_EQ(*parse_number(format_number(1.0 / 3.0)), 1.0 / 3.0);
    EXPECT_EQ(*parse_number(" +12.5 "), 12.5);
    EXPECT_FALSE(parse_number("12.5m"));
    EXPECT_FALSE(parse_number("nan"));
    EXPECT_FALSE(parse_number("INF"));
    EXPECT_TRUE(std::isinf(*parse_number("INF", true)));
    EXPECT_FALSE(parse_number(""));
    EXPECT_FALSE(parse_number("--1"));
}

TEST(LandXmlText, UnitsConvertToMetresAndRadians) {
    using namespace qv5::landxml::detail;
    EXPECT_EQ(*metres_per_unit("USSurveyFoot"), 1200.0 / 3937.0);
    EXPECT_EQ(*metres_per_unit("foot"), 0.3048);
    EXPECT_EQ(*metres_per_unit("meter"), 1.0);
    EXPECT_FALSE(metres_per_unit("furlong"));
    EXPECT_NEAR(to_radians(100.0, AngleForm::Grads), kPi / 2.0, 1e-15);
    EXPECT_NEAR(to_radians(90.0, AngleForm::Degrees), kPi / 2.0, 1e-15);
    // 45.3025 is 45 degrees 30 minutes 25 seconds.
    EXPECT_NEAR(to_radians(45.3025, AngleForm::DegreesMinutesSeconds),
                (45.0 + 30.0 / 60.0 + 25.0 / 3600.0) * kPi / 180.0, 1e-12);
    EXPECT_NEAR(azimuth_from_direction(kPi / 2.0), 1.5 * kPi, 1e-15);
    EXPECT_NEAR(direction_from_azimuth(1.5 * kPi), kPi / 2.0, 1e-15);
}

TEST(LandXmlText, LinesCountEveryLineEnd) {
    const qv5::landxml::detail::LineIndex lines("a\nb\r\nc\rd");
    EXPECT_EQ(lines.line_of(0), 1);
    EXPECT_EQ(lines.line_of(2), 2);
    EXPECT_EQ(lines.line_of(5), 3);
    EXPECT_EQ(lines.line_of(7), 4);
    EXPECT_EQ(qv5::landxml::detail::escaped("a\x1b[31m"), "a\\x1B[31m");
}

} // namespace
