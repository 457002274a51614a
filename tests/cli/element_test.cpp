// `qv5 element`: one line, arc or spiral evaluated at a station and offset, or inverted for a
// point, as a surveyor types it.
#include "qv5_program.h"

#include "support/clothoid_reference.h"

#include <gtest/gtest.h>
#include <nlohmann/json.hpp>

#include <cmath>
#include <string>
#include <vector>

namespace {

qv5::test::ProgramResult qv5(const std::vector<std::string>& args) {
    return qv5::test::run_qv5(args);
}

nlohmann::json json_of(const std::vector<std::string>& args) {
    const auto r = qv5(args);
    EXPECT_EQ(r.exit_code, 0) << r.err;
    EXPECT_TRUE(r.err.empty()) << r.err;
    return nlohmann::json::parse(r.out);
}

std::size_t count_lines(const std::string& text) {
    std::size_t n = 0;
    for (char c : text) {
        n += c == '\n' ? 1 : 0;
    }
    return n;
}

constexpr double kPi = 3.141592653589793;

// The quarter-turn right arc from (1000, 2000, 50) heading north, radius 100: its centre is
// (1000, 2100), and a point at station s and offset o (right: towards the centre) lies
// 100 - o from the centre at s / 100 rad clockwise from due west.
const std::vector<std::string> kArc = {"element",   "arc",      "--start",     "1000,2000,50",
                                       "--azimuth", "0",        "--radius",    "100",
                                       "--length",  "157.0796", "--direction", "right"};

std::vector<std::string> with(std::vector<std::string> base, const std::vector<std::string>& more) {
    base.insert(base.end(), more.begin(), more.end());
    return base;
}

TEST(QV5Element, ArcPointAtStationAndOffset) {
    const auto doc = json_of(with(kArc, {"--at", "50", "--offset", "2", "--json"}));
    EXPECT_EQ(doc["element"], "arc");
    EXPECT_NEAR(doc["north"].get<double>(), 1000.0 + 98.0 * std::sin(0.5), 1e-9);
    EXPECT_NEAR(doc["east"].get<double>(), 2100.0 - 98.0 * std::cos(0.5), 1e-9);
    EXPECT_EQ(doc["elevation"].get<double>(), 50.0);
    EXPECT_NEAR(doc["azimuth_rad"].get<double>(), 0.5, 1e-12);
    EXPECT_EQ(doc["station"].get<double>(), 50.0);
    EXPECT_EQ(doc["offset"].get<double>(), 2.0);
}

TEST(QV5Element, ArcStationAndOffsetOfAPoint) {
    const double theta = 0.3;
    const std::string point = std::to_string(1000.0 + 103.0 * std::sin(theta)) + "," +
                              std::to_string(2100.0 - 103.0 * std::cos(theta));
    const auto doc = json_of(with(kArc, {"--point", point, "--json"}));
    EXPECT_NEAR(doc["station"].get<double>(), 30.0, 1e-4); // the point is typed to 1e-6 m
    EXPECT_NEAR(doc["offset"].get<double>(), -3.0, 1e-5);
    EXPECT_NEAR(doc["azimuth_rad"].get<double>(), 0.3, 1e-6);
    EXPECT_FALSE(doc.contains("north"));
}

TEST(QV5Element, ArcTextNamesEachQuantityInMetresAndRadiansWhenRaw) {
    const auto r = qv5(with(kArc, {"--at", "50", "--offset", "-1.5", "--raw"}));
    ASSERT_EQ(r.exit_code, 0) << r.err;
    EXPECT_NE(r.out.find("Arc turning right, radius 100.000 m"), std::string::npos) << r.out;
    EXPECT_NE(r.out.find("Station    50.0000 m"), std::string::npos) << r.out;
    EXPECT_NE(r.out.find("Offset     -1.5000 m (left)"), std::string::npos) << r.out;
    EXPECT_NE(r.out.find("Elevation  50.0000 m"), std::string::npos) << r.out;
    EXPECT_NE(r.out.find("Azimuth    0.500000000 rad (tangent)"), std::string::npos) << r.out;
}

TEST(QV5Element, LineGivenInDegreesWithAGrade) {
    const auto doc =
        json_of({"element", "line", "--start=-100,50,10", "--azimuth", "90", "--degrees",
                 "--length", "50", "--grade", "1", "--at", "30", "--offset", "2", "--json"});
    EXPECT_NEAR(doc["north"].get<double>(), -102.0, 1e-9);
    EXPECT_NEAR(doc["east"].get<double>(), 80.0, 1e-9);
    EXPECT_NEAR(doc["elevation"].get<double>(), 10.0 + 30.0 * std::tan(kPi / 180.0), 1e-9);
    EXPECT_NEAR(doc["azimuth_rad"].get<double>(), kPi / 2.0, 1e-12); // JSON is always radians
}

TEST(QV5Element, ShownInTheUsersUnits) {
    // A fresh settings store holds the library's defaults: US survey feet (1200/3937 m) and
    // bearings in degrees, minutes and seconds. 2 m is 6.5617 ft.
    const auto doc = json_of(with(kArc, {"--at", "50", "--offset", "2", "--json"}));
    EXPECT_EQ(doc["formatted"]["offset"], "6.56'");
    EXPECT_EQ(doc["units"]["horizontal-distance"], "us-survey-feet");
    EXPECT_EQ(doc["offset"].get<double>(), 2.0); // the numbers stay metres
    const auto r = qv5(with(kArc, {"--at", "50", "--offset", "2"}));
    ASSERT_EQ(r.exit_code, 0) << r.err;
    EXPECT_NE(r.out.find("Offset     6.56' (right)"), std::string::npos) << r.out;
    // 0.5 rad is 28 deg 38 min 52.4 s.
    EXPECT_NE(r.out.find("28°38'52"), std::string::npos) << r.out;
}

TEST(QV5Element, LineStationAndOffsetOfAPoint) {
    const auto doc = json_of({"element", "line", "--start", "0,0", "--azimuth", "0", "--length",
                              "100", "--point", "40,-3", "--json"});
    EXPECT_NEAR(doc["station"].get<double>(), 40.0, 1e-12);
    EXPECT_NEAR(doc["offset"].get<double>(), -3.0, 1e-12);
}

TEST(QV5Element, PointWithoutElevationHasNone) {
    const auto doc = json_of({"element", "line", "--start", "0,0", "--azimuth", "0", "--length",
                              "100", "--at", "1", "--json"});
    EXPECT_TRUE(doc["elevation"].is_null());
    const auto r = qv5(
        {"element", "line", "--start", "0,0", "--azimuth", "0", "--length", "100", "--at", "1"});
    EXPECT_NE(r.out.find("Elevation  -\n"), std::string::npos) << r.out;
}

TEST(QV5Element, EntrySpiralPointAgreesWithTheIntegratedClothoid) {
    // Left-turning, radius 300, length 120 from the origin heading east; station 80.
    const auto doc =
        json_of({"element", "entry-spiral", "--start", "0,0,5", "--azimuth", "1.5707963267948966",
                 "--radius", "300", "--length", "120", "--direction", "L", "--at", "80", "--json"});
    double x = 0.0;
    double y = 0.0;
    qv5::test::integrated_clothoid(80.0, 2.0 * 300.0 * 120.0, x, y);
    // East along the tangent, north (to the left) across it; within the default 1e-5 m series
    // tolerance in each coordinate.
    EXPECT_NEAR(doc["east"].get<double>(), x, 2e-5);
    EXPECT_NEAR(doc["north"].get<double>(), y, 2e-5);
    EXPECT_EQ(doc["elevation"].get<double>(), 5.0);
    EXPECT_NEAR(doc["azimuth_rad"].get<double>(), kPi / 2.0 - 6400.0 / 72000.0, 1e-12);
}

TEST(QV5Element, ExitSpiralPointFoundAgain) {
    const std::vector<std::string> spiral = {"element",   "exit-spiral", "--start",     "500,800",
                                             "--azimuth", "2.1",         "--radius",    "150",
                                             "--length",  "60",          "--direction", "Right"};
    for (const char* at : {"-12", "25", "71"}) { // on the arc, the spiral and the straight
        const auto there = json_of(with(spiral, {"--at", at, "--offset", "-4", "--json"}));
        const std::string point = std::to_string(there["north"].get<double>()) + "," +
                                  std::to_string(there["east"].get<double>());
        const auto back = json_of(with(spiral, {"--point", point, "--json"}));
        EXPECT_NEAR(back["station"].get<double>(), std::stod(at), 1e-5) << at;
        EXPECT_NEAR(back["offset"].get<double>(), -4.0, 1e-5) << at;
        EXPECT_NEAR(back["azimuth_rad"].get<double>(), there["azimuth_rad"].get<double>(), 1e-7)
            << at;
    }
}

TEST(QV5Element, SpiralSearchCanStartFromAGivenStation) {
    const auto doc =
        json_of({"element", "entry-spiral", "--start", "0,0", "--azimuth", "0", "--radius", "200",
                 "--length", "100", "--direction", "right", "--point", "50.5,3", "--from", "49",
                 "--tolerance", "1e-7", "--json"});
    EXPECT_GT(doc["station"].get<double>(), 49.0);
    EXPECT_LT(doc["station"].get<double>(), 51.0);
}

TEST(QV5Element, SpiralTooLongForItsRadiusIsReportedWithExitCode1) {
    const auto r = qv5({"element", "entry-spiral", "--start", "0,0", "--azimuth", "0", "--radius",
                        "10", "--length", "100", "--direction", "right", "--at", "95"});
    EXPECT_EQ(r.exit_code, 1);
    EXPECT_TRUE(r.out.empty());
    EXPECT_EQ(count_lines(r.err), 1u) << r.err;
    EXPECT_NE(r.err.find("does not converge"), std::string::npos) << r.err;
}

TEST(QV5Element, MalformedNumbersAreReportedPerArgument) {
    const auto r = qv5({"element", "arc", "--start", "1,x", "--azimuth", "abc", "--radius", "-3",
                        "--length", "10", "--direction", "up", "--at", "5m"});
    EXPECT_EQ(r.exit_code, 2);
    EXPECT_TRUE(r.out.empty());
    EXPECT_NE(r.err.find("qv5: element: argument 'start': '1,x'"), std::string::npos) << r.err;
    EXPECT_NE(r.err.find("argument 'azimuth': 'abc' is not a number"), std::string::npos);
    EXPECT_NE(r.err.find("argument 'radius': '-3' must be greater than 0"), std::string::npos);
    EXPECT_NE(r.err.find("argument 'direction': 'up' is not left or right"), std::string::npos);
    EXPECT_NE(r.err.find("argument 'at': '5m' is not a number"), std::string::npos);
    EXPECT_EQ(count_lines(r.err), 5u) << r.err;
}

TEST(QV5Element, MissingArgumentsAreEachNamed) {
    const auto r = qv5({"element", "exit-spiral", "--at", "5"});
    EXPECT_EQ(r.exit_code, 2);
    for (const char* name : {"start", "azimuth", "length", "radius", "direction"}) {
        EXPECT_NE(r.err.find(std::string("argument '") + name + "' is missing"), std::string::npos)
            << name << "\n"
            << r.err;
    }
    EXPECT_EQ(count_lines(r.err), 5u) << r.err;
}

TEST(QV5Element, AskingForBothOrNeitherQueryIsRefused) {
    const std::vector<std::string> line = {"element",   "line", "--start",  "0,0",
                                           "--azimuth", "0",    "--length", "10"};
    auto r = qv5(line);
    EXPECT_EQ(r.exit_code, 2);
    EXPECT_NE(r.err.find("give --at STATION"), std::string::npos) << r.err;
    r = qv5(with(line, {"--at", "1", "--point", "1,1"}));
    EXPECT_EQ(r.exit_code, 2);
    EXPECT_NE(r.err.find("not both"), std::string::npos) << r.err;
    r = qv5(with(line, {"--point", "1,1", "--offset", "2"}));
    EXPECT_EQ(r.exit_code, 2);
    EXPECT_NE(r.err.find("'offset' goes with --at"), std::string::npos) << r.err;
}

TEST(QV5Element, OptionsOfAnotherElementAreRefused) {
    const auto r = qv5({"element", "line", "--start", "0,0", "--azimuth", "0", "--length", "10",
                        "--radius", "3", "--at", "1"});
    EXPECT_EQ(r.exit_code, 2);
    EXPECT_EQ(count_lines(r.err), 1u) << r.err;
}

TEST(QV5Element, AnElementKindIsRequired) {
    const auto r = qv5({"element"});
    EXPECT_EQ(r.exit_code, 2);
    EXPECT_EQ(count_lines(r.err), 1u) << r.err;
}

} // namespace
