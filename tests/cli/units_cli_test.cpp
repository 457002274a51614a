// `qv5 units`, and the other subcommands' output in the user's units.
#include "qv5_program.h"

#include <gtest/gtest.h>
#include <nlohmann/json.hpp>

#include <sys/stat.h>

#include <string>
#include <vector>

namespace {

using qv5::test::program_registry;
using qv5::test::read_file;
using qv5::test::run_qv5;

bool contains(const std::string& text, const std::string& part) {
    return text.find(part) != std::string::npos;
}

TEST(QV5Units, AFreshStoreShowsTheLibraryDefaults) {
    const auto r = run_qv5({"units"});
    ASSERT_EQ(r.exit_code, 0) << r.err;
    EXPECT_TRUE(contains(r.out, "horizontal-distance  us-survey-feet      US Survey feet"))
        << r.out;
    EXPECT_TRUE(contains(r.out, "stationing           plus-hundreds       1+00.000"));
    EXPECT_TRUE(contains(r.out, "bearings             dms                 DD\xC2\xB0MM'SS\""));
    EXPECT_TRUE(contains(r.out, "volume               cubic-yards         Cubic yards"));
}

TEST(QV5Units, SetIsKeptInTheSettingsStore) {
    const auto set = run_qv5({"units", "set", "horizontal-distance", "metres"});
    ASSERT_EQ(set.exit_code, 0) << set.err;
    EXPECT_EQ(set.out, "horizontal-distance set to metres (Meters)\n");
    EXPECT_TRUE(contains(read_file(program_registry()), "\"Horizontal distance\"=hex:00,00,00,00"));
    const auto shown = run_qv5({"units", "--json"});
    ASSERT_EQ(shown.exit_code, 0) << shown.err;
    const auto doc = nlohmann::json::parse(shown.out);
    EXPECT_EQ(doc["units"]["horizontal-distance"]["value"], "metres");
    EXPECT_EQ(doc["units"]["horizontal-distance"]["row"], 0);
    EXPECT_EQ(doc["units"]["horizontal-distance"]["name"], "Meters");
    EXPECT_EQ(doc["units"]["vertical-distance"]["value"], "us-survey-feet");
    EXPECT_EQ(doc["units"]["vertical-circle"]["settable"], false);
    EXPECT_EQ(doc["key"], "HKEY_LOCAL_MACHINE\\SOFTWARE\\Halvik\\QV5\\Units");
}

TEST(QV5Units, ValuesMayBeGivenByDisplayNameOrRow) {
    ASSERT_EQ(run_qv5({"units", "set", "stationing", "10+0.000"}).exit_code, 0);
    ASSERT_EQ(run_qv5({"units", "set", "Bearings", "1"}).exit_code, 0);
    ASSERT_EQ(run_qv5({"units", "set", "area", "HECTARES"}).exit_code, 0);
    const auto doc = nlohmann::json::parse(run_qv5({"units", "--json"}).out);
    EXPECT_EQ(doc["units"]["stationing"]["value"], "plus-tens");
    EXPECT_EQ(doc["units"]["bearings"]["value"], "quadrant");
    EXPECT_EQ(doc["units"]["area"]["value"], "hectares");
}

TEST(QV5Units, UnknownKindIsRefusedWithTheValidOnes) {
    const auto r = run_qv5({"units", "set", "furlongs", "1"});
    EXPECT_EQ(r.exit_code, 2);
    EXPECT_TRUE(r.out.empty());
    EXPECT_EQ(r.err, "qv5: units: unknown kind 'furlongs'; valid kinds: horizontal-distance, "
                     "vertical-distance, length, angles, bearings, grade, stationing, area, "
                     "volume, coords\n");
}

TEST(QV5Units, UnknownValueIsRefusedWithTheValidOnes) {
    const auto r = run_qv5({"units", "set", "grade", "steep"});
    EXPECT_EQ(r.exit_code, 2);
    EXPECT_EQ(r.err, "qv5: units: unknown value 'steep' for grade; valid values: percent, "
                     "run-rise, rise-run\n");
    EXPECT_EQ(run_qv5({"units", "set", "grade", "3"}).exit_code, 2);
}

TEST(QV5Units, TheVerticalCircleCannotBeSet) {
    const auto r = run_qv5({"units", "set", "vertical-circle", "zero-level"});
    EXPECT_EQ(r.exit_code, 2);
    EXPECT_TRUE(contains(r.err, "vertical-circle"));
    EXPECT_TRUE(contains(r.err, "valid kinds: horizontal-distance"));
}

TEST(QV5Units, AStoreThatCannotBeWrittenIsReported) {
    const qv5::test::ScratchFolder scratch;
    qv5::test::write_file(scratch.file("plain"), "x");
    const auto r =
        qv5::test::run_program(QV5_CLI_PATH, {"units", "set", "horizontal-distance", "metres"},
                               {"QV5_REGISTRY=" + scratch.file("plain/registry.reg")});
    EXPECT_EQ(r.exit_code, 1);
    EXPECT_TRUE(contains(r.err, "could not be written")) << r.err;
}

TEST(QV5Units, InverseSpeaksTheUsersUnits) {
    const auto r = run_qv5({"inverse", "0", "0", "0", "3", "4", "5"});
    ASSERT_EQ(r.exit_code, 0) << r.err;
    EXPECT_EQ(r.out, "Bearing              53\xC2\xB0"
                     "07'48\"\n"
                     "Horizontal distance  16.40'\n"
                     "Vertical distance    16.40'\n"
                     "Slope distance       23.20'\n"
                     "Gradient             100.000% (angle of elevation)\n");
}

TEST(QV5Units, InverseRawIsMetresAndRadians) {
    ASSERT_EQ(run_qv5({"units", "set", "bearings", "gons"}).exit_code, 0);
    const auto r = run_qv5({"inverse", "0", "0", "0", "3", "4", "5", "--raw"});
    ASSERT_EQ(r.exit_code, 0) << r.err;
    EXPECT_EQ(r.out, "Bearing              0.927295218 rad\n"
                     "Horizontal distance  5.0000 m\n"
                     "Vertical distance    5.0000 m\n"
                     "Slope distance       7.0711 m\n"
                     "Gradient             0.785398163 rad (angle of elevation)\n");
}

TEST(QV5Units, JsonCarriesRawNumbersAndFormattedTexts) {
    ASSERT_EQ(run_qv5({"units", "set", "bearings", "quadrant"}).exit_code, 0);
    const auto r = run_qv5({"inverse", "0", "0", "0", "-3", "4", "5", "--json"});
    ASSERT_EQ(r.exit_code, 0) << r.err;
    const auto doc = nlohmann::json::parse(r.out);
    EXPECT_DOUBLE_EQ(doc["horizontal_distance_m"].get<double>(), 5.0);
    EXPECT_EQ(doc["formatted"]["bearing"], "S53\xC2\xB0"
                                           "07'48\"E");
    EXPECT_EQ(doc["formatted"]["horizontal_distance"], "16.40'");
    EXPECT_EQ(doc["units"]["bearings"], "quadrant");
    const auto raw = nlohmann::json::parse(
        run_qv5({"inverse", "0", "0", "0", "-3", "4", "5", "--json", "--raw"}).out);
    EXPECT_FALSE(raw.contains("formatted"));
    EXPECT_FALSE(raw.contains("units"));
    EXPECT_DOUBLE_EQ(raw["horizontal_distance_m"].get<double>(), 5.0);
}

TEST(QV5Units, FollowShowsThePositionInTheUsersOrder) {
    ASSERT_EQ(run_qv5({"units", "set", "horizontal-distance", "metres"}).exit_code, 0);
    ASSERT_EQ(run_qv5({"units", "set", "vertical-distance", "metres"}).exit_code, 0);
    ASSERT_EQ(run_qv5({"units", "set", "coords", "east-north-elev"}).exit_code, 0);
    const auto r = run_qv5({"follow", "100", "200", "10", "0", "50", "0"});
    ASSERT_EQ(r.exit_code, 0) << r.err;
    EXPECT_EQ(r.out, "East       200.000m\nNorth      150.000m\nElevation  10.000m\n");
}

TEST(QV5Units, StraightJobShowsFeetAndStations) {
    const auto r = run_qv5({"straight"});
    ASSERT_EQ(r.exit_code, 0) << r.err;
    // P4 (hand reduction in cli_test.cpp) at station 87.091 m, offset -8.245 m.
    EXPECT_TRUE(contains(r.out, "P4           16484.94'      6547.42'")) << r.out;
    EXPECT_TRUE(contains(r.out, "2+85.73'")) << r.out;
    EXPECT_TRUE(contains(r.out, "-27.05'"));
    EXPECT_TRUE(contains(r.out, "Distances in US Survey feet"));
}

TEST(QV5Units, StraightJobRawAndInMetres) {
    const auto raw = run_qv5({"straight", "--raw"});
    ASSERT_EQ(raw.exit_code, 0) << raw.err;
    EXPECT_TRUE(contains(raw.out, "Metres and radians."));
    EXPECT_TRUE(contains(raw.out, "87.091 m"));
    ASSERT_EQ(run_qv5({"units", "set", "horizontal-distance", "metres"}).exit_code, 0);
    const auto metres = run_qv5({"straight"});
    EXPECT_TRUE(contains(metres.out, "0+87.091m")) << metres.out;
    const auto doc = nlohmann::json::parse(run_qv5({"straight", "--json"}).out);
    EXPECT_EQ(doc["points"][3]["formatted"]["station"], "0+87.091m");
    EXPECT_EQ(doc["units"]["horizontal-distance"], "metres");
}

TEST(QV5Units, UnsetRegistryUsesTheXdgConfigFolder) {
    const qv5::test::ScratchFolder scratch;
    const auto r =
        qv5::test::run_program(QV5_CLI_PATH, {"units", "set", "grade", "rise-run"},
                               {"QV5_REGISTRY=", "XDG_CONFIG_HOME=" + scratch.path().string()});
    ASSERT_EQ(r.exit_code, 0) << r.err;
    EXPECT_TRUE(contains(read_file(scratch.file("qv5/registry.reg")), "\"Grade\"=hex:02,00,00,00"));
}

} // namespace

namespace {

/// Runs qv5 with its settings in `registry`.
qv5::test::ProgramResult run_with_settings(const std::string& registry,
                                           const std::vector<std::string>& args) {
    return qv5::test::run_program(QV5_CLI_PATH, args, {"QV5_REGISTRY=" + registry});
}

} // namespace

TEST(QV5SettingsFile, ADamagedFileIsNamedOnceAndTheDefaultsServe) {
    const qv5::test::ScratchFolder scratch;
    const std::string registry = scratch.file("registry.reg");
    ASSERT_EQ(run_with_settings(registry, {"units", "set", "grade", "rise-run"}).exit_code, 0);
    std::string text = read_file(registry);
    ASSERT_EQ(text.rfind("Windows Registry Editor Version 5.00", 0), 0u) << text;
    text[3] = 'x'; // one character of the signature line
    qv5::test::write_file(registry, text);

    const auto r = run_with_settings(registry, {"units"});
    EXPECT_EQ(r.exit_code, 0) << r.err;
    EXPECT_TRUE(contains(r.out, "grade                percent")) << r.out; // the default
    EXPECT_TRUE(contains(r.err, "warning: the settings file '" + registry + "'")) << r.err;
    EXPECT_TRUE(contains(r.err, "Windows Registry Editor Version 5.00")) << r.err;
    std::size_t lines = 0;
    for (const char c : r.err) {
        lines += c == '\n' ? 1 : 0;
    }
    EXPECT_EQ(lines, 1u) << r.err;
    EXPECT_EQ(read_file(registry), text); // never written over
}

TEST(QV5SettingsFile, AGoodFileGivesNoWarning) {
    const qv5::test::ScratchFolder scratch;
    const std::string registry = scratch.file("registry.reg");
    ASSERT_EQ(run_with_settings(registry, {"units", "set", "grade", "rise-run"}).exit_code, 0);
    const auto r = run_with_settings(registry, {"units"});
    EXPECT_EQ(r.exit_code, 0);
    EXPECT_TRUE(r.err.empty()) << r.err;
}

TEST(QV5SettingsFile, AReadOnlyFileRefusesAChangeAndSaysWhy) {
    // The mode bits count for every user, root too: a file marked read-only was marked so on
    // purpose.
    const qv5::test::ScratchFolder scratch;
    const std::string registry = scratch.file("registry.reg");
    ASSERT_EQ(run_with_settings(registry, {"units", "set", "grade", "percent"}).exit_code, 0);
    ASSERT_EQ(::chmod(registry.c_str(), 0444), 0);
    const auto r = run_with_settings(registry, {"units", "set", "grade", "rise-run"});
    EXPECT_EQ(r.exit_code, 1);
    EXPECT_TRUE(contains(r.err, "is read-only")) << r.err;
}
