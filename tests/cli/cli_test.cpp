// The qv5 program as a surveyor runs it.
#include "qv5_program.h"

#include <gtest/gtest.h>
#include <nlohmann/json.hpp>

#include <cmath>
#include <string>

namespace {

qv5::test::ProgramResult qv5(const std::vector<std::string>& args) {
    return qv5::test::run_qv5(args);
}

std::size_t count_lines(const std::string& text) {
    std::size_t n = 0;
    for (char c : text) {
        n += c == '\n' ? 1 : 0;
    }
    return n;
}

TEST(QV5Program, StraightJobPlacesEverySampleShotAgainstTheStraight) {
    const auto r = qv5({"straight"});
    ASSERT_EQ(r.exit_code, 0) << r.err;
    EXPECT_TRUE(r.err.empty());
    for (const char* name : {"P1", "P2", "P3", "P4", "P5"}) {
        EXPECT_NE(r.out.find(name), std::string::npos) << name;
    }
    EXPECT_NE(r.out.find("Straight CL"), std::string::npos);
}

TEST(QV5Program, StraightJobJsonMatchesHandReduction) {
    const auto r = qv5({"straight", "--json"});
    ASSERT_EQ(r.exit_code, 0) << r.err;
    const auto doc = nlohmann::json::parse(r.out);
    ASSERT_EQ(doc["points"].size(), 5u);
    // P4: hz 350 deg, zenith 90 deg, 25 m from STN1 (5000, 2000, 102.450, hi 1.562).
    const auto& p4 = doc["points"][3];
    EXPECT_EQ(p4["name"], "P4");
    const double hz = 350.0 * M_PI / 180.0;
    const double north = 5000.0 + 25.0 * std::cos(hz);
    const double east = 2000.0 + 25.0 * std::sin(hz);
    EXPECT_NEAR(p4["north"].get<double>(), north, 1e-9);
    EXPECT_NEAR(p4["east"].get<double>(), east, 1e-9);
    // cos(90 deg) is not exactly 0 in floating point; the elevation is 102.450 + 1.562 within
    // 1e-12.
    EXPECT_NEAR(p4["elevation"].get<double>(), 104.012, 1e-9);
    // The straight runs from (4950, 1950) to (5150, 2100): unit direction (0.8, 0.6).
    const double dn = north - 4950.0;
    const double de = east - 1950.0;
    EXPECT_NEAR(p4["station"].get<double>(), dn * 0.8 + de * 0.6, 1e-9);
    EXPECT_NEAR(p4["offset"].get<double>(), de * 0.8 - dn * 0.6, 1e-9);
    const double station = dn * 0.8 + de * 0.6;
    const double design = 101.2 + station * (3.6 / 250.0);
    EXPECT_NEAR(p4["design_elevation"].get<double>(), design, 1e-9);
    EXPECT_NEAR(p4["above_design"].get<double>(), 104.012 - design, 1e-9);
}

TEST(QV5Program, InverseReportsBearingDistancesAndGradient) {
    const auto r = qv5({"inverse", "0", "0", "0", "3", "4", "5", "--json"});
    ASSERT_EQ(r.exit_code, 0) << r.err;
    const auto doc = nlohmann::json::parse(r.out);
    EXPECT_NEAR(doc["bearing_rad"].get<double>(), std::atan2(4.0, 3.0), 1e-15);
    EXPECT_DOUBLE_EQ(doc["horizontal_distance_m"].get<double>(), 5.0);
    EXPECT_DOUBLE_EQ(doc["vertical_distance_m"].get<double>(), 5.0);
    EXPECT_NEAR(doc["slope_distance_m"].get<double>(), std::sqrt(50.0), 1e-12);
    EXPECT_NEAR(doc["gradient_rad"].get<double>(), M_PI / 4.0, 1e-15);
}

TEST(QV5Program, InverseAcceptsNegativeCoordinates) {
    const auto r = qv5({"inverse", "-10", "-10", "0", "-10", "-20", "0", "--json"});
    ASSERT_EQ(r.exit_code, 0) << r.err;
    const auto doc = nlohmann::json::parse(r.out);
    EXPECT_NEAR(doc["bearing_rad"].get<double>(), 1.5 * M_PI, 1e-15);
}

TEST(QV5Program, FollowGoesAlongBearingWithGradient) {
    const auto r = qv5({"follow", "100", "200", "10", "0", "50", "0.1", "--json"});
    ASSERT_EQ(r.exit_code, 0) << r.err;
    const auto doc = nlohmann::json::parse(r.out);
    EXPECT_NEAR(doc["north"].get<double>(), 150.0, 1e-12);
    EXPECT_NEAR(doc["east"].get<double>(), 200.0, 1e-12);
    EXPECT_NEAR(doc["elevation"].get<double>(), 10.0 + std::tan(0.1) * 50.0, 1e-12);
}

TEST(QV5Program, FollowTextNamesEachQuantity) {
    const auto r = qv5({"follow", "0", "0", "0", "1.5707963267948966", "10", "0", "--raw"});
    ASSERT_EQ(r.exit_code, 0) << r.err;
    EXPECT_NE(r.out.find("East       10.0000 m"), std::string::npos) << r.out;
}

TEST(QV5Program, MalformedNumberIsReportedPerArgumentWithExitCode2) {
    const auto r = qv5({"inverse", "0", "abc", "0", "1", "1", "1e"});
    EXPECT_EQ(r.exit_code, 2);
    EXPECT_TRUE(r.out.empty());
    EXPECT_NE(r.err.find("argument 'from_east': 'abc' is not a number"), std::string::npos)
        << r.err;
    EXPECT_NE(r.err.find("argument 'to_elevation': '1e' is not a number"), std::string::npos);
    EXPECT_EQ(count_lines(r.err), 2u);
}

TEST(QV5Program, NonFiniteNumbersAreRejected) {
    const auto r = qv5({"follow", "0", "0", "0", "nan", "inf", "0"});
    EXPECT_EQ(r.exit_code, 2);
    EXPECT_NE(r.err.find("'bearing'"), std::string::npos);
    EXPECT_NE(r.err.find("'distance'"), std::string::npos);
}

TEST(QV5Program, MissingArgumentGivesOneLineAndExitCode2) {
    const auto r = qv5({"follow", "1", "2"});
    EXPECT_EQ(r.exit_code, 2);
    EXPECT_EQ(count_lines(r.err), 1u) << r.err;
}

TEST(QV5Program, UnknownSubcommandGivesOneLineAndExitCode2) {
    const auto r = qv5({"stakeout-everything"});
    EXPECT_EQ(r.exit_code, 2);
    EXPECT_EQ(count_lines(r.err), 1u) << r.err;
    EXPECT_EQ(r.err.rfind("qv5: ", 0), 0u);
}

TEST(QV5Program, MissingJobFileIsReported) {
    const auto r = qv5({"straight", "--data", "/nonexistent/job.csv"});
    EXPECT_EQ(r.exit_code, 1);
    EXPECT_NE(r.err.find("cannot read job file"), std::string::npos);
}

TEST(QV5Program, HelpExitsCleanly) {
    const auto r = qv5({"--help"});
    EXPECT_EQ(r.exit_code, 0);
    EXPECT_NE(r.out.find("inverse"), std::string::npos);
    EXPECT_NE(r.out.find("follow"), std::string::npos);
}

} // namespace
