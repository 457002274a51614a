// `qv5 road`: a road description read and shown as a surveyor runs it.
#include "qv5_program.h"

#include "support/scratch.h"

#include <gtest/gtest.h>
#include <nlohmann/json.hpp>

#include <cmath>
#include <string>
#include <vector>

namespace {

const std::string kSample = std::string(QV5_SAMPLE_DATA_DIR) + "/sample-road.json";

qv5::test::ProgramResult run_road(const std::vector<std::string>& args) {
    return qv5::test::run_qv5(args);
}

} // namespace

TEST(QV5Road, SampleRoadAsJsonListsEveryPart) {
    const auto r = run_road({"road", kSample, "--json"});
    ASSERT_EQ(r.exit_code, 0) << r.err;
    EXPECT_TRUE(r.err.empty()) << r.err;
    const auto doc = nlohmann::json::parse(r.out);
    EXPECT_EQ(doc["name"], "Sample two-lane road");
    ASSERT_EQ(doc["alignment"].size(), 9u);
    EXPECT_EQ(doc["alignment"][0]["type"], "line");
    EXPECT_EQ(doc["alignment"][1]["type"], "entry-spiral");
    EXPECT_EQ(doc["alignment"][2]["radius"].get<double>(), 500.0);
    EXPECT_EQ(doc["alignment"][6]["direction"], "left");
    EXPECT_NEAR(doc["alignment"][4]["start_station"].get<double>(), 1810.0, 1e-9);
    EXPECT_NEAR(doc["end"]["station"].get<double>(), 2660.0, 1e-9);
    EXPECT_TRUE(doc["alignment"][0]["radius"].is_null());
    ASSERT_EQ(doc["profile"].size(), 5u);
    EXPECT_EQ(doc["profile"][1]["type"], "parabola");
    EXPECT_EQ(doc["profile"][1]["curve_start"].get<double>(), 1220.0);
    EXPECT_EQ(doc["profile"][1]["curve_end"].get<double>(), 1380.0);
    EXPECT_NEAR(doc["profile"][1]["grade_in_rad"].get<double>(), std::atan(4.5 / 300.0), 1e-15);
    EXPECT_NEAR(doc["profile"][1]["grade_out_rad"].get<double>(), std::atan(-4.0 / 400.0), 1e-15);
    EXPECT_EQ(doc["profile"][3]["curve_start"].get<double>(), 2025.0);
    ASSERT_EQ(doc["templates"].size(), 2u);
    ASSERT_EQ(doc["applications"].size(), 6u);
    EXPECT_EQ(doc["applications"][4]["side"], "left");
    EXPECT_EQ(doc["applications"][4]["template"], "Rural two-lane with ditch");
    EXPECT_TRUE(doc.contains("units"));
    EXPECT_TRUE(doc["alignment"][0].contains("formatted"));
}

TEST(QV5Road, RawJsonCarriesNoFormattedTexts) {
    const auto r = run_road({"road", kSample, "--json", "--raw"});
    ASSERT_EQ(r.exit_code, 0) << r.err;
    const auto doc = nlohmann::json::parse(r.out);
    EXPECT_FALSE(doc.contains("units"));
    EXPECT_FALSE(doc["alignment"][0].contains("formatted"));
}

TEST(QV5Road, TextShowsStationsInTheUsersUnits) {
    const auto r = run_road({"road", kSample});
    ASSERT_EQ(r.exit_code, 0) << r.err;
    EXPECT_NE(r.out.find("Road \"Sample two-lane road\""), std::string::npos);
    EXPECT_NE(r.out.find("Horizontal alignment: 9 elements"), std::string::npos);
    EXPECT_NE(r.out.find("Profile: 5 PVIs"), std::string::npos);
    EXPECT_NE(r.out.find("Template applications: 6"), std::string::npos);
    // A fresh store shows US survey feet: 2660 m is 8727.02 ft (2660 x 3937 / 1200).
    EXPECT_NE(r.out.find("87+27.02"), std::string::npos) << r.out;
    const auto raw = run_road({"road", kSample, "--raw"});
    ASSERT_EQ(raw.exit_code, 0) << raw.err;
    EXPECT_NE(raw.out.find("2660.000"), std::string::npos) << raw.out;
}

TEST(QV5Road, BadDescriptionExitsTwoNamingEachField) {
    const qv5::test::ScratchFolder scratch;
    const std::string path = scratch.file("bad.json");
    qv5::test::write_file(path, R"({"start": {"north": 0, "east": 0, "azimuth": 0},
        "horizontal": [{"type": "arc", "radius": 0, "length": 10, "direction": "left"}],
        "profile": [{"type": "parabola", "station": 0, "elevation": 1, "length": 10}]})");
    const auto r = run_road({"road", path});
    EXPECT_EQ(r.exit_code, 2);
    EXPECT_TRUE(r.out.empty());
    EXPECT_NE(r.err.find("horizontal[0].radius: must be greater than 0"), std::string::npos)
        << r.err;
    EXPECT_NE(r.err.find("profile[0]: the first PVI must be a point"), std::string::npos) << r.err;
}

TEST(QV5Road, MissingFileExitsTwo) {
    const auto r = run_road({"road", "/no/such/road.json"});
    EXPECT_EQ(r.exit_code, 2);
    EXPECT_NE(r.err.find("cannot read"), std::string::npos);
}
