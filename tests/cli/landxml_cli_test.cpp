// `qv5 road` and `qv5 stake` with LandXML: a design brought in from office software, an
// alignment chosen from several, and a road written back out as LandXML.
#include "qv5_program.h"

#include <gtest/gtest.h>
#include <nlohmann/json.hpp>

#include <cmath>
#include <cstdio>
#include <string>

namespace {

using namespace qv5::test;

const std::string kFixtures = std::string(QV5_TEST_DATA_DIR) + "/landxml/";

double end_station(const std::string& json_text) {
    const auto doc = nlohmann::json::parse(json_text);
    return doc["alignment"].back()["end_station"].get<double>();
}

TEST(LandXmlCli, RoadReadsALandXmlAlignmentByContent) {
    const auto r = run_qv5({"road", kFixtures + "metric-line-arc.xml", "--json"});
    ASSERT_EQ(r.exit_code, 0) << r.err;
    // 1000 + 100 m of line + a quarter-circle's half (200 x pi / 4) + 50 m of line.
    EXPECT_NEAR(end_station(r.out), 1150.0 + 50.0 * 3.141592653589793, 1e-6);
    EXPECT_TRUE(r.err.empty()) << r.err;
}

TEST(LandXmlCli, SeveralAlignmentsAreListedUntilOneIsNamed) {
    const auto unnamed = run_qv5({"road", kFixtures + "two-alignments.xml"});
    EXPECT_EQ(unnamed.exit_code, 2);
    EXPECT_NE(unnamed.err.find("\"North Road\""), std::string::npos) << unnamed.err;
    EXPECT_NE(unnamed.err.find("\"East Road\""), std::string::npos) << unnamed.err;
    EXPECT_NE(unnamed.err.find("--alignment"), std::string::npos) << unnamed.err;

    const auto named =
        run_qv5({"road", kFixtures + "two-alignments.xml", "--alignment", "East Road", "--json"});
    ASSERT_EQ(named.exit_code, 0) << named.err;
    EXPECT_NEAR(end_station(named.out), 35.0, 1e-9);
}

TEST(LandXmlCli, PrefixedLandXml11WithSpiralsReadsWithoutWarnings) {
    const std::string fixture = kFixtures + "spirals-1.1-prefixed.xml";
    const auto r = run_qv5({"road", fixture, "--json"});
    ASSERT_EQ(r.exit_code, 0) << r.err;
    EXPECT_TRUE(r.err.empty()) << r.err;
}

TEST(LandXmlCli, ConvertWritesLandXmlThatReadsBackToTheSameRoad) {
    const ScratchFolder scratch;
    const std::string xml = scratch.file("sample.xml");
    const auto written =
        run_qv5({"road", "convert", std::string(QV5_SAMPLE_DATA_DIR) + "/sample-road.json", xml});
    ASSERT_EQ(written.exit_code, 0) << written.err;
    const auto original =
        run_qv5({"road", std::string(QV5_SAMPLE_DATA_DIR) + "/sample-road.json", "--json"});
    const auto back = run_qv5({"road", xml, "--json"});
    ASSERT_EQ(back.exit_code, 0) << back.err;
    const auto a = nlohmann::json::parse(original.out)["alignment"];
    const auto b = nlohmann::json::parse(back.out)["alignment"];
    ASSERT_EQ(a.size(), b.size());
    for (std::size_t i = 0; i < a.size(); ++i) {
        EXPECT_EQ(a[i]["type"], b[i]["type"]);
        EXPECT_NEAR(a[i]["start_station"].get<double>(), b[i]["start_station"].get<double>(), 1e-9);
        EXPECT_NEAR(a[i]["end_station"].get<double>(), b[i]["end_station"].get<double>(), 1e-9);
    }
}

TEST(LandXmlCli, MalformedLandXmlNamesTheFileAndLine) {
    const ScratchFolder scratch;
    const std::string bad = scratch.file("bad.xml");
    {
        std::FILE* f = std::fopen(bad.c_str(), "w");
        ASSERT_NE(f, nullptr);
        std::fputs("<?xml version=\"1.0\"?>\n<LandXML>\n<Alignments>\n</LandXML>\n", f);
        std::fclose(f);
    }
    const auto r = run_qv5({"road", bad});
    EXPECT_EQ(r.exit_code, 2);
    EXPECT_NE(r.err.find(bad + ":4:"), std::string::npos) << r.err;
}

} // namespace
