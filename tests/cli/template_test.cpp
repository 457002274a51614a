// `qv5 template`: a cross-section template read from JSON, its chain, the design height or
// catch point at an offset, and the blend of two templates.
#include "qv5_program.h"

#include "support/scratch.h"

#include <gtest/gtest.h>
#include <nlohmann/json.hpp>

#include <cmath>
#include <fstream>
#include <string>
#include <vector>

namespace {

const std::string kUrban = std::string(QV5_SAMPLE_DATA_DIR) + "/template-urban.json";
const std::string kRural = std::string(QV5_SAMPLE_DATA_DIR) + "/template-rural.json";

double radians(double degrees) {
    return degrees * (3.141592653589793 / 180.0);
}

qv5::test::ProgramResult run(const std::vector<std::string>& args) {
    return qv5::test::run_qv5(args);
}

nlohmann::json json_of(const std::vector<std::string>& args) {
    const auto r = run(args);
    EXPECT_EQ(r.exit_code, 0) << r.err;
    return r.exit_code == 0 ? nlohmann::json::parse(r.out) : nlohmann::json();
}

/// Writes `text` to a file of the test's own and returns its path.
std::string file_with(const std::string& name, const std::string& text) {
    static const qv5::test::ScratchFolder scratch;
    const std::string path = scratch.file(name);
    std::ofstream(path) << text;
    return path;
}

// Shoulder of the rural sample, by hand: three grade/width elements.
const double kRuralShoulderV = 3.65 * std::tan(radians(-1.1458)) +
                               2.4 * std::tan(radians(-2.8624)) + 1.2 * std::tan(radians(-14.0362));

} // namespace

TEST(QV5Template, RuralChainAndShoulder) {
    const auto doc = json_of({"template", kRural, "--json"});
    ASSERT_EQ(doc["elements"].size(), 6u);
    EXPECT_EQ(doc["elements"][0]["type"], "grade-width");
    EXPECT_NEAR(doc["elements"][0]["end_v"].get<double>(), 3.65 * std::tan(radians(-1.1458)),
                1e-12);
    EXPECT_EQ(doc["elements"][1]["name"], "Edge of lane");
    EXPECT_TRUE(doc["elements"][5]["angle_rad"].is_null());
    EXPECT_NEAR(doc["shoulder"]["h"].get<double>(), 7.25, 1e-12);
    EXPECT_NEAR(doc["shoulder"]["v"].get<double>(), kRuralShoulderV, 1e-12);
}

TEST(QV5Template, CutCatchPointBeyondTheDitch) {
    const auto doc =
        json_of({"template", kRural, "--offset", "9", "--ground-height", "0.5", "--json"});
    const auto& at = doc["at"];
    EXPECT_TRUE(at["on_side_slope"].get<bool>());
    EXPECT_EQ(at["slope"], "cut");
    EXPECT_FALSE(at["in_ditch"].get<bool>());
    // The cut line rises at 1:2 from (7.25 + 1.0, shoulder height).
    const double slope = std::tan(radians(26.5651));
    const double line = kRuralShoulderV + (9.0 - 8.25) * slope;
    EXPECT_NEAR(at["design_height"].get<double>(), line, 1e-9);
    EXPECT_NEAR(at["ground_above_design"].get<double>(), 0.5 - line, 1e-9);
    EXPECT_NEAR(at["catch_offset"].get<double>(), 8.25 + (0.5 - kRuralShoulderV) / slope, 1e-9);
}

TEST(QV5Template, FillCatchPoint) {
    const auto doc =
        json_of({"template", kRural, "--offset", "10", "--ground-height", "-3", "--json"});
    const auto& at = doc["at"];
    EXPECT_EQ(at["slope"], "fill");
    const double slope = std::tan(radians(18.4349));
    EXPECT_NEAR(at["catch_offset"].get<double>(), 7.25 + (kRuralShoulderV + 3.0) / slope, 1e-9);
    EXPECT_NEAR(at["design_height"].get<double>(), kRuralShoulderV - 2.75 * slope, 1e-9);
}

TEST(QV5Template, PointInTheDitch) {
    const auto doc =
        json_of({"template", kRural, "--offset", "7.8", "--ground-height", "0", "--json"});
    EXPECT_TRUE(doc["at"]["in_ditch"].get<bool>());
    EXPECT_NEAR(doc["at"]["design_height"].get<double>(), kRuralShoulderV, 1e-12);
    EXPECT_TRUE(doc["at"]["catch_offset"].is_null());
}

TEST(QV5Template, UrbanDesignHeightOnTheWalk) {
    const auto doc = json_of({"template", kUrban, "--offset", "4.5", "--json"});
    const double walk_start =
        3.5 * std::tan(radians(-1.1458)) + 0.45 * std::tan(radians(-2.2906)) + 0.15;
    EXPECT_NEAR(doc["at"]["design_height"].get<double>(), walk_start + 0.4 * 0.02, 1e-12);
    EXPECT_NEAR(doc["at"]["angle_rad"].get<double>(), std::atan(0.02), 1e-12);
    EXPECT_FALSE(doc["at"]["on_side_slope"].get<bool>());
}

TEST(QV5Template, TextOutputListsTheChain) {
    const auto r = run({"template", kUrban, "--raw"});
    ASSERT_EQ(r.exit_code, 0) << r.err;
    EXPECT_NE(r.out.find("Template \"Urban two-lane, half section\", 9 element(s)"),
              std::string::npos);
    EXPECT_NE(r.out.find("\"Lip of gutter\""), std::string::npos);
    EXPECT_NE(r.out.find("Shoulder   H 5.900 m  V 0.098 m"), std::string::npos) << r.out;
}

TEST(QV5Template, OffsetFacingTheCurbHasNoSurface) {
    const auto r = run({"template", kUrban, "--offset", "3.95"});
    // 3.95 is the end of the gutter: the gutter's own end belongs to it.
    EXPECT_EQ(r.exit_code, 0) << r.err;
    const auto beyond = run({"template", kUrban, "--offset", "6"});
    EXPECT_EQ(beyond.exit_code, 1);
    EXPECT_NE(beyond.err.find("no surface at offset"), std::string::npos) << beyond.err;
}

TEST(QV5Template, SideSlopeWithoutGroundHeightIsRefused) {
    const auto r = run({"template", kRural, "--offset", "9"});
    EXPECT_EQ(r.exit_code, 1);
    EXPECT_NE(r.err.find("--ground-height"), std::string::npos) << r.err;
}

TEST(QV5Template, BlendHalfwayOfTwoSimilarTemplates) {
    const std::string wide = file_with("wide.json", R"({"name": "Wide", "elements": [
        {"type": "grade-width", "angle": -2, "width": 4},
        {"type": "feature", "name": "EDGE"},
        {"type": "side-slope", "cut_angle": 30, "fill_angle": 20, "ditch_width": 2}]})");
    const std::string narrow = file_with("narrow.json", R"({"name": "Narrow", "elements": [
        {"type": "grade-width", "angle": -4, "width": 3},
        {"type": "feature", "name": "edge"},
        {"type": "side-slope", "cut_angle": 40, "fill_angle": 30, "ditch_width": 1}]})");
    const auto doc = json_of({"template", wide, "--blend", narrow, "--ratio", "0.5", "--json"});
    EXPECT_NEAR(doc["elements"][0]["angle_rad"].get<double>(), radians(-3.0), 1e-15);
    EXPECT_NEAR(doc["shoulder"]["h"].get<double>(), 3.5, 1e-15);
    EXPECT_NEAR(doc["shoulder"]["v"].get<double>(), 3.5 * std::tan(radians(-3.0)), 1e-15);
    EXPECT_EQ(doc["elements"][1]["name"], "EDGE");
    EXPECT_EQ(doc["ratio"].get<double>(), 0.5);
}

TEST(QV5Template, DissimilarTemplatesAreNotBlended) {
    const auto r = run({"template", kUrban, "--blend", kRural, "--ratio", "0.5"});
    EXPECT_EQ(r.exit_code, 2);
    EXPECT_NE(r.err.find("cannot be blended"), std::string::npos) << r.err;
}

TEST(QV5Template, BadFieldsAreEachReportedWithTheirPlace) {
    const std::string bad = file_with("bad.json", R"({"name": "Bad", "elements": [
        {"type": "grade-width", "angle": "steep", "width": 3},
        {"type": "ramp", "width": 1},
        {"type": "side-slope", "cut_angle": 30, "fill_angle": 20},
        {"type": "feature", "name": "A name that is far too long for a feature record"},
        {"type": "step", "dh": 1, "dv": 0, "width": 2}]})");
    const auto r = run({"template", bad});
    EXPECT_EQ(r.exit_code, 2);
    for (const char* expected :
         {"elements[0].angle: is not a number", "elements[1].type: 'ramp' is not",
          "elements[2]: a side slope must be the last element",
          "elements[3].name: is longer than 32 characters",
          "elements[4].width: is not a field of this element type"}) {
        EXPECT_NE(r.err.find(expected), std::string::npos) << expected << "\n" << r.err;
    }
    EXPECT_EQ(r.out, "");
}

TEST(QV5Template, NumberBeyondDoubleRangeIsRefused) {
    const std::string bad = file_with("overflow.json", R"({"name": "Inf", "elements": [
        {"type": "delta-hv", "dh": 1, "dv": 1e999}]})");
    const auto r = run({"template", bad});
    EXPECT_EQ(r.exit_code, 2);
    EXPECT_NE(r.err.find("number overflow"), std::string::npos) << r.err;
    EXPECT_EQ(r.out, "");
}

TEST(QV5Template, SyntaxErrorNamesItsLine) {
    const std::string bad = file_with("syntax.json", "{\"name\": \"X\",\n\"elements\": [\n,]}");
    const auto r = run({"template", bad});
    EXPECT_EQ(r.exit_code, 2);
    EXPECT_NE(r.err.find("syntax.json:3: not JSON"), std::string::npos) << r.err;
}

TEST(QV5Template, BadArgumentsExitWithTwo) {
    EXPECT_EQ(run({"template", kRural, "--offset", "abc"}).exit_code, 2);
    EXPECT_EQ(run({"template", kRural, "--offset", "-1"}).exit_code, 2);
    EXPECT_EQ(run({"template", kRural, "--ground-height", "1"}).exit_code, 2);
    EXPECT_EQ(run({"template", kRural, "--blend", kRural}).exit_code, 2);
    EXPECT_EQ(run({"template", kRural, "--offset", "nan"}).exit_code, 2);
    EXPECT_EQ(run({"template", "/nonexistent/template.json"}).exit_code, 2);
}
