// `qv5 calibrate` and `qv5 convert` as a surveyor runs them, on the bundled sample calibration.
//
// The sample (data/sample-calibration.csv) was made from PROJ-projected positions with a known
// similarity (scale 1.000045, rotation 0.0123 rad) and plane (height shift -43.21 m, slopes
// 2.5e-5 north and -1.75e-5 east), rounded to millimetres; the millimetre rounding over a few
// kilometres leaves the solved parameters within about 1e-6 (relative) of the known ones.
#include "qv5_program.h"

#include <gtest/gtest.h>
#include <nlohmann/json.hpp>

#include <cmath>
#include <fstream>
#include <string>

namespace {

using qv5::test::ScratchFolder;

const std::string kSample = std::string(QV5_SAMPLE_DATA_DIR) + "/sample-calibration.csv";

qv5::test::ProgramResult qv5(const std::vector<std::string>& args, const std::string& input = {}) {
    return qv5::test::run_qv5(args, {}, input);
}

/// A file in a fresh scratch folder, removed with the test.
class TempFile {
public:
    explicit TempFile(const std::string& name) : m_path(m_scratch.file(name)) {}
    const std::string& path() const { return m_path; }
    void write(const std::string& text) const { qv5::test::write_file(m_path, text); }

private:
    ScratchFolder m_scratch;
    std::string m_path;
};

std::size_t count_lines(const std::string& text) {
    std::size_t n = 0;
    for (char c : text) {
        n += c == '\n' ? 1 : 0;
    }
    return n;
}

TEST(QV5Calibrate, RecoversTheSampleSimilarityAndPlane) {
    const auto r = qv5({"calibrate", kSample, "--json"});
    ASSERT_EQ(r.exit_code, 0) << r.err;
    EXPECT_TRUE(r.err.empty());
    const auto doc = nlohmann::json::parse(r.out);
    EXPECT_EQ(doc["points"], 7);
    EXPECT_EQ(doc["horizontal_points"], 6);
    EXPECT_EQ(doc["vertical_points"], 5);
    EXPECT_EQ(doc["projection"]["type"], "oblique");
    EXPECT_NEAR(doc["horizontal"]["scale"].get<double>(), 1.000045, 1e-6);
    EXPECT_NEAR(doc["horizontal"]["rotation_rad"].get<double>(), 0.0123, 1e-6);
    EXPECT_NEAR(doc["vertical"]["height_shift"].get<double>(), -43.21, 1e-3);
    EXPECT_NEAR(doc["vertical"]["slope_north"].get<double>(), 2.5e-5, 1e-6);
    EXPECT_NEAR(doc["vertical"]["slope_east"].get<double>(), -1.75e-5, 1e-6);
    ASSERT_EQ(doc["residuals"].size(), 7u);
    for (const auto& row : doc["residuals"]) {
        if (!row["horizontal"].is_null()) {
            EXPECT_LT(row["horizontal"].get<double>(), 0.001) << row["name"];
        }
        if (!row["vertical"].is_null()) {
            EXPECT_LT(std::fabs(row["vertical"].get<double>()), 0.001) << row["name"];
        }
    }
    // The check point takes part in neither solution.
    EXPECT_EQ(doc["residuals"][6]["name"], "CHK1");
    EXPECT_TRUE(doc["residuals"][6]["horizontal"].is_null());
    EXPECT_TRUE(doc["residuals"][6]["vertical"].is_null());
    EXPECT_TRUE(doc["largest_horizontal"].is_object());
    EXPECT_TRUE(doc["largest_vertical"].is_object());
}

TEST(QV5Calibrate, TextReportNamesEveryPointAndTheLargestResiduals) {
    const auto r = qv5({"calibrate", kSample});
    ASSERT_EQ(r.exit_code, 0) << r.err;
    for (const char* name : {"CP1", "CP2", "CP3", "CP4", "CP5", "CP6", "CHK1"}) {
        EXPECT_NE(r.out.find(name), std::string::npos) << name;
    }
    EXPECT_NE(r.out.find("Largest horizontal residual"), std::string::npos);
    EXPECT_NE(r.out.find("Largest vertical residual"), std::string::npos);
    EXPECT_NE(r.out.find("stereographic (oblique)"), std::string::npos);
    // The centre in the user's units: 52.0987 N 5.2149167 E, US survey feet by default.
    EXPECT_NE(r.out.find("N52\u00b005'55.32000\""), std::string::npos) << r.out;
    EXPECT_NE(r.out.find("US Survey feet"), std::string::npos) << r.out;
    const auto raw = qv5({"calibrate", kSample, "--raw"});
    ASSERT_EQ(raw.exit_code, 0) << raw.err;
    EXPECT_NE(raw.out.find("North 451000.6043 m"), std::string::npos) << raw.out;
    EXPECT_NE(raw.out.find("Metres and radians."), std::string::npos) << raw.out;
}

TEST(QV5Calibrate, SavedCalibrationConvertsTheCheckPointToItsKnownCoordinates) {
    TempFile saved("site.json");
    const auto r = qv5({"calibrate", kSample, "--save", saved.path()});
    ASSERT_EQ(r.exit_code, 0) << r.err;
    // CHK1: 52.1 N 5.21 E, 45.000 m; known N 451148.801 E 131664.876 Z 1.800 (rounded to mm).
    const auto c = qv5({"convert", "--calibration", saved.path(), "--to", "grid", "52.1",
                        "5 12 36E", "45", "--json"});
    ASSERT_EQ(c.exit_code, 0) << c.err;
    const auto doc = nlohmann::json::parse(c.out);
    ASSERT_EQ(doc["points"].size(), 1u);
    const auto& p = doc["points"][0];
    EXPECT_NEAR(p["north"].get<double>(), 451148.801, 0.002);
    EXPECT_NEAR(p["east"].get<double>(), 131664.876, 0.002);
    EXPECT_NEAR(p["elevation"].get<double>(), 1.800, 0.002);
    EXPECT_EQ(doc["to"], "grid");
}

TEST(QV5Convert, GridBackToWgs84) {
    TempFile saved("site.json");
    ASSERT_EQ(qv5({"calibrate", kSample, "--save", saved.path()}).exit_code, 0);
    const auto c = qv5({"convert", "--calibration", saved.path(), "--to", "wgs84", "451148.801",
                        "131664.876", "1.800", "--json"});
    ASSERT_EQ(c.exit_code, 0) << c.err;
    const auto p = nlohmann::json::parse(c.out)["points"][0];
    // A millimetre is 9e-9 degrees of latitude.
    EXPECT_NEAR(p["latitude_deg"].get<double>(), 52.1, 3e-8);
    EXPECT_NEAR(p["longitude_deg"].get<double>(), 5.21, 5e-8);
    EXPECT_NEAR(p["height"].get<double>(), 45.0, 0.002);
}

TEST(QV5Convert, ReadsNamedPositionsFromStandardInput) {
    TempFile saved("site.json");
    ASSERT_EQ(qv5({"calibrate", kSample, "--save", saved.path()}).exit_code, 0);
    const auto c = qv5({"convert", "--calibration", saved.path(), "--to", "grid", "--json"},
                       "name,latitude,longitude,height\n"
                       "CHK1,52.1,5.21,45\n"
                       "# a comment\n"
                       "P2,52 06 00N,5:12:36E,\n");
    ASSERT_EQ(c.exit_code, 0) << c.err;
    const auto doc = nlohmann::json::parse(c.out);
    ASSERT_EQ(doc["points"].size(), 2u);
    EXPECT_EQ(doc["points"][0]["name"], "CHK1");
    EXPECT_EQ(doc["points"][1]["name"], "P2");
    EXPECT_NEAR(doc["points"][1]["north"].get<double>(), 451148.801, 0.002);
    EXPECT_TRUE(doc["points"][1]["elevation"].is_null()); // no height given
}

TEST(QV5Convert, TextOutputIsInTheUsersUnits) {
    TempFile saved("site.json");
    ASSERT_EQ(qv5({"calibrate", kSample, "--save", saved.path()}).exit_code, 0);
    const auto c =
        qv5({"convert", "--calibration", saved.path(), "--to", "grid", "52.1", "5.21", "45"});
    ASSERT_EQ(c.exit_code, 0) << c.err;
    // The library's latitude and longitude texts, and US survey feet by default:
    // 451148.801 m = 1480144.02 ft (x 3937/1200).
    EXPECT_NE(c.out.find("N52\u00b006'00.00000\""), std::string::npos) << c.out;
    EXPECT_NE(c.out.find("E05\u00b012'36.00000\""), std::string::npos) << c.out;
    EXPECT_NE(c.out.find("1480144.02'"), std::string::npos) << c.out;
    EXPECT_NE(c.out.find("US Survey feet"), std::string::npos) << c.out;
}

TEST(QV5Convert, RawOutputIsInMetresAndRadians) {
    TempFile saved("site.json");
    ASSERT_EQ(qv5({"calibrate", kSample, "--save", saved.path()}).exit_code, 0);
    const auto c = qv5(
        {"convert", "--calibration", saved.path(), "--to", "grid", "52.1", "5.21", "45", "--raw"});
    ASSERT_EQ(c.exit_code, 0) << c.err;
    EXPECT_NE(c.out.find("451148.80"), std::string::npos) << c.out;
    EXPECT_NE(c.out.find("0.90931654029 rad"), std::string::npos) << c.out; // 52.1 degrees
    EXPECT_NE(c.out.find("Metres and radians."), std::string::npos) << c.out;
}

TEST(QV5Convert, JsonCarriesFormattedTextsAndUnitsUnlessRaw) {
    TempFile saved("site.json");
    ASSERT_EQ(qv5({"calibrate", kSample, "--save", saved.path()}).exit_code, 0);
    const auto c = qv5(
        {"convert", "--calibration", saved.path(), "--to", "grid", "52.1", "5.21", "45", "--json"});
    ASSERT_EQ(c.exit_code, 0) << c.err;
    const auto doc = nlohmann::json::parse(c.out);
    EXPECT_EQ(doc["units"]["horizontal-distance"], "us-survey-feet");
    EXPECT_EQ(doc["points"][0]["formatted"]["north"], "1480144.02'");
    const auto raw = qv5({"convert", "--calibration", saved.path(), "--to", "grid", "52.1", "5.21",
                          "45", "--json", "--raw"});
    const auto raw_doc = nlohmann::json::parse(raw.out);
    EXPECT_FALSE(raw_doc.contains("units"));
    EXPECT_FALSE(raw_doc["points"][0].contains("formatted"));
    EXPECT_EQ(raw_doc["points"][0]["north"], doc["points"][0]["north"]);
}

TEST(QV5Calibrate, BadRowsAreReportedWithTheirLinesAndTheFileRejected) {
    TempFile points("points.csv");
    points.write("A,52.1,5.2,44.1,1000,2000,0.9,hv\n"
                 "B,52.1,5.2,44.1,1000\n"
                 "C,52.2,east,44.1,1100,2000,0.9,hv\n");
    const auto r = qv5({"calibrate", points.path()});
    EXPECT_EQ(r.exit_code, 1);
    EXPECT_TRUE(r.out.empty());
    EXPECT_NE(r.err.find(points.path() + ":2: expected 8 fields"), std::string::npos) << r.err;
    EXPECT_NE(r.err.find(points.path() + ":3: longitude: 'east'"), std::string::npos) << r.err;
    EXPECT_NE(r.err.find("file rejected, nothing was calibrated: 2 error(s)"), std::string::npos)
        << r.err;
}

TEST(QV5Calibrate, UnsolvableCalibrationExitsWithOne) {
    TempFile points("points.csv");
    points.write("A,52.1,5.2,44.1,1000,2000,0.9,h\n"
                 "B,52.1,5.2,44.1,1100,2000,0.9,h\n");
    TempFile saved("site.json");
    const auto r = qv5({"calibrate", points.path(), "--save", saved.path()});
    EXPECT_EQ(r.exit_code, 1);
    EXPECT_NE(r.err.find("no calibration"), std::string::npos) << r.err;
    EXPECT_FALSE(std::ifstream(saved.path()).good()); // nothing saved
}

TEST(QV5Calibrate, MissingFileExitsWithOne) {
    const auto r = qv5({"calibrate", "/nonexistent/points.csv"});
    EXPECT_EQ(r.exit_code, 1);
    EXPECT_EQ(count_lines(r.err), 1u);
}

TEST(QV5Convert, BadArgumentsExitWithTwoOneLineEach) {
    TempFile saved("site.json");
    ASSERT_EQ(qv5({"calibrate", kSample, "--save", saved.path()}).exit_code, 0);
    const auto r =
        qv5({"convert", "--calibration", saved.path(), "--to", "grid", "abc", "5.21", "4x"});
    EXPECT_EQ(r.exit_code, 2);
    EXPECT_TRUE(r.out.empty());
    EXPECT_NE(r.err.find("argument 'latitude': 'abc'"), std::string::npos) << r.err;
    EXPECT_NE(r.err.find("argument 'height': '4x' is not a number"), std::string::npos);
    EXPECT_EQ(count_lines(r.err), 2u);

    const auto count = qv5({"convert", "--calibration", saved.path(), "--to", "wgs84", "1", "2"});
    EXPECT_EQ(count.exit_code, 2);
    EXPECT_EQ(count_lines(count.err), 1u);

    const auto to = qv5({"convert", "--calibration", saved.path(), "--to", "utm", "1", "2", "3"});
    EXPECT_EQ(to.exit_code, 2);
}

TEST(QV5Convert, BadStandardInputRowIsReportedAndSkippedAndTheExitIsOne) {
    // A stream keeps going past a bad row: the good rows are converted, the bad one is named
    // on standard error and gives no output row, and the exit status says that one was bad.
    TempFile saved("site.json");
    ASSERT_EQ(qv5({"calibrate", kSample, "--save", saved.path()}).exit_code, 0);
    const auto r = qv5({"convert", "--calibration", saved.path(), "--to", "wgs84", "--csv"},
                       "1000,2000,3\nP,abc,2,3\n");
    EXPECT_EQ(r.exit_code, 1);
    EXPECT_EQ(count_lines(r.out), 2u) << r.out; // the header and the good row
    EXPECT_EQ(r.out.find("\nP,"), std::string::npos) << r.out;
    EXPECT_NE(r.err.find("standard input:2: north: 'abc' is not a number"), std::string::npos)
        << r.err;
}

TEST(QV5Convert, UnusableCalibrationFileExitsWithOne) {
    TempFile saved("site.json");
    saved.write("{\"format\": \"qv5-calibration\", \"version\": 1");
    const auto r = qv5({"convert", "--calibration", saved.path(), "--to", "grid", "52", "5", "0"});
    EXPECT_EQ(r.exit_code, 1);
    EXPECT_NE(r.err.find("calibration rejected"), std::string::npos) << r.err;
    const auto missing =
        qv5({"convert", "--calibration", "/nonexistent.json", "--to", "grid", "52", "5", "0"});
    EXPECT_EQ(missing.exit_code, 1);
}

} // namespace
