// The road description reader: a good description builds the road; every bad field is
// reported with its place and the road is left empty.
#include "road_json.h"

#include "qv5/geoline.h"
#include "qv5/georoad.h"
#include "qv5/geotemplate.h"

#include <gtest/gtest.h>

#include <cmath>
#include <fstream>
#include <sstream>
#include <string>
#include <vector>

using qv5::cli::JobError;
using qv5::cli::parse_road_json;

namespace {

constexpr double kPi = 3.141592653589793;

std::string sample_file(const std::string& name) {
    std::ifstream in(std::string(QV5_SAMPLE_DATA_DIR) + "/" + name, std::ios::binary);
    std::ostringstream s;
    s << in.rdbuf();
    return s.str();
}

qv5::cli::TemplateFileReader sample_templates() {
    return [](const std::string& name) -> std::optional<std::string> {
        const std::string text = sample_file(name);
        if (text.empty()) {
            return std::nullopt;
        }
        return text;
    };
}

std::vector<std::string> errors_of(const std::string& text) {
    CGeoRoad road;
    std::vector<JobError> errors;
    EXPECT_FALSE(parse_road_json(text, sample_templates(), road, errors));
    EXPECT_EQ(road.NumberHorizontalElements(), 0);
    EXPECT_EQ(road.NumberVerticalElements(), 0);
    EXPECT_EQ(road.NumberTemplates(), 0);
    std::vector<std::string> messages;
    for (const JobError& e : errors) {
        messages.push_back(e.message);
    }
    return messages;
}

bool has(const std::vector<std::string>& messages, const std::string& start) {
    for (const std::string& m : messages) {
        if (m.rfind(start, 0) == 0) {
            return true;
        }
    }
    return false;
}

const std::string kStart = R"("start": {"station": 0, "north": 100, "east": 200, "azimuth": 90})";

} // namespace

TEST(RoadJson, SampleRoadIsStationedAsDesigned) {
    CGeoRoad road;
    std::vector<JobError> errors;
    ASSERT_TRUE(parse_road_json(sample_file("sample-road.json"), sample_templates(), road, errors))
        << (errors.empty() ? "" : errors[0].message);
    EXPECT_EQ(road.Name().ToUtf8(), "Sample two-lane road");
    EXPECT_EQ(road.StationInterval(), 20.0);
    ASSERT_EQ(road.NumberHorizontalElements(), 9);
    const double starts[] = {1000, 1400, 1480, 1730, 1810, 2160, 2220, 2400, 2460};
    for (int i = 0; i < 9; ++i) {
        EXPECT_NEAR(road.HorzElementStartStation(i), starts[i], 1e-9) << i;
    }
    EXPECT_NEAR(road.EndStationHorizontal(), 2660.0, 1e-9);
    // The first straight: 400 m at 60 degrees from N 449500, E 129500.
    EXPECT_NEAR(road.HorzElementStartCoords(1).north, 449500.0 + 400.0 * 0.5, 1e-9);
    EXPECT_NEAR(road.HorzElementStartCoords(1).east, 129500.0 + 400.0 * std::sqrt(3.0) / 2.0, 1e-9);
    // Every element continues tangentially: the last straight has turned right by
    // 80/1000 + 250/500 + 80/1000 and back left by 60/800 + 180/400 + 60/800 radians.
    EXPECT_NEAR(road.EndAzimuthHorizontal(), kPi / 3.0 + 0.66 - 0.6, 1e-12);
    EXPECT_EQ(road.NthHorizontalType(2), georoad_Arc);
    ASSERT_EQ(road.NumberVerticalElements(), 5);
    EXPECT_EQ(road.NthVerticalType(3), georoad_VertCircular);
    EXPECT_EQ(road.StartStationVertical(), 1000.0);
    EXPECT_EQ(road.EndStationVertical(), 2660.0);
    EXPECT_EQ(road.NumberTemplates(), 2);
    EXPECT_EQ(road.NumberTemplateApplications(), 6);
    EXPECT_EQ(road.IsModified(), 0);
    CString name;
    double station = 0.0;
    geodef_RoadSide side = geodef_BothSides;
    ASSERT_EQ(road.GetNthTemplateApplication(5, name, station, side), 1);
    EXPECT_EQ(station, 1900.0);
    EXPECT_EQ(side, geodef_RightSide);
    EXPECT_EQ(road.TemplateIndex(name), 1);
}

TEST(RoadJson, LineByEndPointTakesTheBearingToIt) {
    CGeoRoad road;
    std::vector<JobError> errors;
    const std::string text = R"({"start": {"north": 0, "east": 0},
        "horizontal": [{"type": "line", "to": {"north": 30, "east": 40}},
                       {"type": "arc", "radius": 100, "length": 50, "direction": "left"}]})";
    ASSERT_TRUE(parse_road_json(text, {}, road, errors));
    EXPECT_NEAR(road.HorzElementEndStation(0), 50.0, 1e-12);
    EXPECT_NEAR(road.HorzElementStartAzimuth(1), std::atan2(40.0, 30.0), 1e-15);
    EXPECT_NEAR(road.EndAzimuthHorizontal(), std::atan2(40.0, 30.0) - 0.5, 1e-12);
    EXPECT_EQ(road.StationInterval(), 20.0);
}

TEST(RoadJson, InlineTemplateIsRead) {
    CGeoRoad road;
    std::vector<JobError> errors;
    const std::string text = "{" + kStart + R"(,
        "templates": [{"name": "Lane", "elements": [
            {"type": "grade-width", "angle": -2, "width": 3.5}]}],
        "applications": [{"station": 0, "side": "both", "template": "lane"}]})";
    ASSERT_TRUE(parse_road_json(text, {}, road, errors))
        << (errors.empty() ? "" : errors[0].message);
    EXPECT_EQ(road.NumberTemplates(), 1);
    EXPECT_EQ(road.IsAUsefulSurface(), 1);
}

TEST(RoadJson, BadHorizontalFieldsAreReportedWithTheirPlace) {
    const auto e = errors_of("{" + kStart + R"(, "horizontal": [
        {"type": "arc", "radius": 0, "length": -5, "direction": "up"}]})");
    EXPECT_TRUE(has(e, "horizontal[0].radius: must be greater than 0"));
    EXPECT_TRUE(has(e, "horizontal[0].length: must be greater than 0"));
    EXPECT_TRUE(has(e, "horizontal[0].direction: 'up' is not left or right"));
}

TEST(RoadJson, UnknownTypesAndFieldsAreReported) {
    const auto e = errors_of("{" + kStart + R"(, "colour": 1, "horizontal": [
        {"type": "clothoid", "length": 5}]})");
    EXPECT_TRUE(has(e, "colour: unknown field"));
    EXPECT_TRUE(has(e, "horizontal[0].type: 'clothoid' is not line"));
}

TEST(RoadJson, FirstElementWithoutAnyAzimuthIsReported) {
    const auto e = errors_of(R"({"start": {"north": 1, "east": 2},
        "horizontal": [{"type": "line", "length": 10}]})");
    EXPECT_TRUE(has(e, "horizontal[0].azimuth: missing"));
}

TEST(RoadJson, NonFiniteAndHugeNumbersAreRefused) {
    const auto e = errors_of(R"({"start": {"north": 1e400, "east": "x"}})");
    EXPECT_TRUE(has(e, "not usable JSON"));
    const auto f = errors_of(R"({"start": {"north": 1, "east": 2, "azimuth": 10},
        "horizontal": [{"type": "line", "length": 1e30}]})");
    EXPECT_TRUE(has(f, "horizontal[0].length: out of range"));
}

TEST(RoadJson, SpiralTooLongForItsRadiusIsReported) {
    const auto e = errors_of("{" + kStart + R"(, "horizontal": [
        {"type": "entry-spiral", "length": 5000, "radius": 10, "direction": "left"}]})");
    EXPECT_TRUE(has(e, "horizontal[0]: the element gives no end point"));
}

TEST(RoadJson, OverlappingPvisAreReported) {
    const auto e = errors_of("{" + kStart + R"(, "profile": [
        {"type": "point", "station": 0, "elevation": 1},
        {"type": "parabola", "station": 100, "elevation": 2, "length": 100},
        {"type": "parabola", "station": 160, "elevation": 1, "length": 40}]})");
    EXPECT_TRUE(has(e, "profile[2]: overlaps the previous PVI"));
}

TEST(RoadJson, CurveAsFirstPviAndPointWithLengthAreReported) {
    const auto e = errors_of("{" + kStart + R"(, "profile": [
        {"type": "circular", "station": 0, "elevation": 1, "length": 10},
        {"type": "point", "station": 100, "elevation": 2, "length": 3}]})");
    EXPECT_TRUE(has(e, "profile[0]: the first PVI must be a point"));
    EXPECT_TRUE(has(e, "profile[1].length: a point has no curve length"));
}

TEST(RoadJson, UnknownTemplateNameAndSideAreReported) {
    const auto e = errors_of("{" + kStart + R"(, "templates": [{"file": "template-urban.json"}],
        "applications": [{"station": 0, "side": "both", "template": "Motorway"},
                         {"station": 0, "side": "middle", "template": "x"}]})");
    EXPECT_TRUE(has(e, "applications[0].template: no template named 'Motorway'"));
    EXPECT_TRUE(has(e, "applications[1].side: 'middle' is not left, right or both"));
}

TEST(RoadJson, UnreadableTemplateFileIsReported) {
    const auto e = errors_of("{" + kStart + R"(, "templates": [{"file": "no-such.json"}]})");
    EXPECT_TRUE(has(e, "templates[0].file: cannot read 'no-such.json'"));
}

TEST(RoadJson, DuplicateTemplateNamesAreReported) {
    const auto e = errors_of("{" + kStart + R"(, "templates": [{"file": "template-urban.json"},
        {"file": "template-urban.json"}]})");
    EXPECT_TRUE(has(e, "templates[1]: a template named"));
}

TEST(RoadJson, SyntaxErrorGivesItsLine) {
    CGeoRoad road;
    std::vector<JobError> errors;
    EXPECT_FALSE(parse_road_json("{\n\"start\": {\n\"north\": ,\n}}", {}, road, errors));
    ASSERT_EQ(errors.size(), 1u);
    EXPECT_EQ(errors[0].line, 3);
}

TEST(RoadJson, NotAnObjectIsReported) {
    EXPECT_TRUE(has(errors_of("[1, 2]"), "the road description is not a JSON object"));
    EXPECT_TRUE(has(errors_of("{}"), "start: missing"));
}
