// `qv5 road` with road files: conversion to and from text without losing a bit, the name read
// from the header alone, and bad files named with what was wrong.
#include "qv5_program.h"
#include "road/road_file_fixture.h"

#include <gtest/gtest.h>
#include <nlohmann/json.hpp>

#include <string>
#include <vector>

namespace {

using namespace qv5::test;

// A small road as text, with values whose bits the file must keep (0.1 and 1/3 have no short
// binary form).
const char* const kRoadText = R"({
  "format": "qv5 road file as text: metres and radians",
  "name": "Quarry access",
  "start": {"north": 5000.1, "east": 3000.25, "elevation": 12.5, "azimuth": 0.7853981633974483,
            "station": 0, "interval": 20},
  "horizontal": [
    {"type": "line", "azimuth": 0.7853981633974483, "length": 120.1},
    {"type": "entry spiral", "direction": "left", "radius": 250, "length": 40},
    {"type": "arc", "direction": "left", "radius": 250, "length": 0.3333333333333333}
  ],
  "vertical": [
    {"type": "point", "station": 0, "elevation": 12.5},
    {"type": "parabola", "station": 80, "elevation": 14, "length": 40}
  ],
  "templates": [
    {"name": "Haul", "elements": [
      {"type": "grade width", "angle": -0.03, "width": 4.5},
      {"type": "step", "deltaH": 0, "deltaV": -0.15},
      {"type": "fixed point", "h": 5, "v": -0.1, "angle": 0,
       "reserved": "000102030405060708090a0b0c0d0e0f"}
    ]}
  ],
  "applications": [{"template": "haul", "station": 0, "side": "both"}]
})";

/// The same road as the format's tables lay it out.
Bytes expected_file() {
    Bytes fixed_point = doubles_data({5, -0.1, 0});
    for (unsigned char b = 0; b < 16; ++b) {
        fixed_point.push_back(b);
    }
    return assemble_road_file(
        "Quarry access",
        {{1,
          {{1, pob_data(5000.1, 3000.25, 12.5, 0.7853981633974483, 0, 20)},
           {2, line_data(0.7853981633974483, 120.1)},
           {3, spiral_data(true, false, 250, 40)},
           {4, arc_data(false, 250, 0.3333333333333333)}}},
         {2, {{10, Bytes(8, 0)}, {11, pvi_data(0, 12.5)}, {12, curve_data(80, 14, 40)}}},
         {5,
          {{21, template_name_data("Haul")},
           {22, doubles_data({-0.03, 4.5})},
           {26, doubles_data({0, -0.15})},
           {27, fixed_point}}},
         {3, {{20, application_data("Haul", 0, 3)}}}});
}

std::size_t count_lines(const std::string& text) {
    std::size_t n = 0;
    for (char c : text) {
        n += c == '\n' ? 1 : 0;
    }
    return n;
}

class QV5RoadFile : public ::testing::Test {
protected:
    ScratchFolder scratch;
    std::string text_path = scratch.file("road.json");
    std::string file_path = scratch.file("road.qv5r");

    void SetUp() override { write_text(text_path, kRoadText); }

    static void write_text(const std::string& path, const std::string& text) {
        std::ofstream(path, std::ios::binary) << text;
    }
    static std::string read_text(const std::string& path) {
        std::ifstream in(path, std::ios::binary);
        return std::string(std::istreambuf_iterator<char>(in), std::istreambuf_iterator<char>());
    }
    static Bytes read_bytes(const std::string& path) {
        const std::string text = read_text(path);
        return Bytes(text.begin(), text.end());
    }
    static void write_bytes(const std::string& path, const Bytes& bytes) {
        write_text(path, std::string(bytes.begin(), bytes.end()));
    }
};

TEST_F(QV5RoadFile, ConvertWritesTheTextAsTheRoadFileTheTablesLayOut) {
    const auto r = run_qv5({"road", "convert", text_path, file_path});
    ASSERT_EQ(r.exit_code, 0) << r.err;
    EXPECT_EQ(read_bytes(file_path), expected_file());
}

TEST_F(QV5RoadFile, FileToTextToFileGivesTheSameBytes) {
    write_bytes(file_path, expected_file());
    const std::string again = scratch.file("again.qv5r");
    const std::string text = scratch.file("again.json");
    ASSERT_EQ(run_qv5({"road", "convert", file_path, text}).exit_code, 0);
    ASSERT_EQ(run_qv5({"road", "convert", text, again}).exit_code, 0);
    EXPECT_EQ(read_bytes(again), expected_file());
    // The text the file gives is the text it was made from, value for value.
    EXPECT_EQ(nlohmann::json::parse(read_text(text)), [] {
        auto j = nlohmann::json::parse(kRoadText);
        j["applications"][0]["template"] = "Haul"; // the file names the template as it is named
        return j;
    }());
}

TEST_F(QV5RoadFile, EditedTextWritesTheEditedFile) {
    write_bytes(file_path, expected_file());
    const std::string text = scratch.file("edit.json");
    ASSERT_EQ(run_qv5({"road", "convert", file_path, text}).exit_code, 0);
    auto j = nlohmann::json::parse(read_text(text));
    j["name"] = "Quarry access B";
    write_text(text, j.dump());
    const std::string edited = scratch.file("edited.qv5r");
    ASSERT_EQ(run_qv5({"road", "convert", text, edited}).exit_code, 0);
    Bytes expected = expected_file();
    poke_u16(expected, 30 + 2 * 13, ' ');
    poke_u16(expected, 30 + 2 * 14, 'B');
    EXPECT_EQ(read_bytes(edited), expected);
}

TEST_F(QV5RoadFile, NameIsReadFromTheHeaderAlone) {
    Bytes bytes = expected_file();
    bytes.resize(218);
    write_bytes(file_path, bytes);
    const auto r = run_qv5({"road", "name", file_path});
    ASSERT_EQ(r.exit_code, 0) << r.err;
    EXPECT_EQ(r.out, "Quarry access\n");
}

TEST_F(QV5RoadFile, RoadFileIsShownLikeItsText) {
    write_bytes(file_path, expected_file());
    const auto from_file = run_qv5({"road", file_path});
    const auto from_text = run_qv5({"road", text_path});
    ASSERT_EQ(from_file.exit_code, 0) << from_file.err;
    EXPECT_EQ(from_file.out, from_text.out);
    EXPECT_NE(from_file.out.find("Quarry access"), std::string::npos);
    const auto json_file = run_qv5({"road", "--json", file_path});
    const auto json_text = run_qv5({"road", "--json", text_path});
    ASSERT_EQ(json_file.exit_code, 0) << json_file.err;
    EXPECT_EQ(nlohmann::json::parse(json_file.out), nlohmann::json::parse(json_text.out));
}

TEST_F(QV5RoadFile, TruncatedFileIsNamedWithTheByteOfItsTruncatedRecord) {
    Bytes bytes = expected_file();
    // Cut inside the data of the first record (the point of beginning at byte 218).
    bytes.resize(218 + 18 + 20);
    write_bytes(file_path, bytes);
    const auto r = run_qv5({"road", file_path});
    EXPECT_EQ(r.exit_code, 2);
    EXPECT_EQ(count_lines(r.err), 1u) << r.err;
    EXPECT_NE(r.err.find(file_path), std::string::npos) << r.err;
    EXPECT_NE(r.err.find("truncated record at byte 218"), std::string::npos) << r.err;
    EXPECT_TRUE(r.out.empty());
}

TEST_F(QV5RoadFile, FileWithAnotherMagicIsNotARoadFile) {
    Bytes bytes = expected_file();
    bytes[0] = 'h';
    write_bytes(file_path, bytes);
    for (const std::vector<std::string>& args :
         {std::vector<std::string>{"road", "name", file_path},
          std::vector<std::string>{"road", "convert", file_path, scratch.file("x.json")}}) {
        const auto r = run_qv5(args);
        EXPECT_EQ(r.exit_code, 2);
        EXPECT_EQ(count_lines(r.err), 1u) << r.err;
        EXPECT_NE(r.err.find(file_path), std::string::npos) << r.err;
    }
    EXPECT_NE(run_qv5({"road", "name", file_path}).err.find("not a road file"), std::string::npos);
    const auto shown = run_qv5({"road", file_path});
    EXPECT_EQ(shown.exit_code, 2);
    EXPECT_EQ(count_lines(shown.err), 1u) << shown.err;
    EXPECT_NE(shown.err.find("neither a road file"), std::string::npos) << shown.err;
}

TEST_F(QV5RoadFile, LoopingChainIsReportedNotFollowedForever) {
    Bytes bytes = expected_file();
    poke_u32(bytes, 218 + 10, 218); // the point of beginning names itself as next
    write_bytes(file_path, bytes);
    const auto r = run_qv5({"road", file_path});
    EXPECT_EQ(r.exit_code, 2);
    EXPECT_NE(r.err.find("loops"), std::string::npos) << r.err;
}

TEST_F(QV5RoadFile, BadFieldOfTheTextIsNamed) {
    auto j = nlohmann::json::parse(kRoadText);
    j["horizontal"][1]["radius"] = "wide";
    write_text(text_path, j.dump());
    const auto r = run_qv5({"road", "convert", text_path, file_path});
    EXPECT_EQ(r.exit_code, 2);
    EXPECT_NE(r.err.find("horizontal element 2: \"radius\" is not a number"), std::string::npos)
        << r.err;
}

TEST_F(QV5RoadFile, ApplicationOfAnUnknownTemplateIsRefused) {
    auto j = nlohmann::json::parse(kRoadText);
    j["applications"][0]["template"] = "Gravel";
    write_text(text_path, j.dump());
    const auto r = run_qv5({"road", "convert", text_path, file_path});
    EXPECT_EQ(r.exit_code, 2);
    EXPECT_NE(r.err.find("no template named \"Gravel\""), std::string::npos) << r.err;
}

} // namespace

namespace {

TEST_F(QV5RoadFile, BundledSampleRoadFileIsTheConversionOfTheBundledDescription) {
    const std::string converted = scratch.file("sample.qv5r");
    const auto r = run_qv5(
        {"road", "convert", std::string(QV5_SAMPLE_DATA_DIR) + "/sample-road.json", converted});
    ASSERT_EQ(r.exit_code, 0) << r.err;
    EXPECT_EQ(read_bytes(converted),
              read_bytes(std::string(QV5_SAMPLE_DATA_DIR) + "/sample-road.qv5r"));
}

TEST_F(QV5RoadFile, BundledSampleRoadFileRoundTripsThroughItsText) {
    const std::string sample = std::string(QV5_SAMPLE_DATA_DIR) + "/sample-road.qv5r";
    const std::string text = scratch.file("sample.json");
    const std::string again = scratch.file("again.qv5r");
    ASSERT_EQ(run_qv5({"road", "convert", sample, text}).exit_code, 0);
    ASSERT_EQ(run_qv5({"road", "convert", text, again}).exit_code, 0);
    EXPECT_EQ(read_bytes(again), read_bytes(sample));
    const auto name = run_qv5({"road", "name", sample});
    EXPECT_EQ(name.out, "Sample two-lane road\n");
}

} // namespace
