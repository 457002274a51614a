// `qv5 stake` and the default job: measured positions against the sample road.
//
// The expected table tests/data/sample-stake-expected.csv is computed without the library by
// tests/cli/stake_expected.py from the design table the sample shots were made from
// (tests/data/sample-shots-design.csv): station, offset and cut or fill as designed, design and
// centreline elevation, azimuth and grade from the road description with plain formulas.
#include "csv_text.h"
#include "qv5_program.h"
#include "road_text.h"
#include "stake_rows.h"

#include "qv5/qv5lib.h"

#include <gtest/gtest.h>
#include <nlohmann/json.hpp>

#include <cmath>
#include <fstream>
#include <map>
#include <sstream>
#include <string>
#include <vector>

namespace {

const std::string kData = QV5_SAMPLE_DATA_DIR;
const std::string kTestData = QV5_TEST_DATA_DIR;

std::string read_file(const std::string& path) {
    std::ifstream in(path, std::ios::binary);
    std::ostringstream text;
    text << in.rdbuf();
    return text.str();
}

std::vector<std::string> sample_args() {
    return {"stake", "--road", kData + "/sample-road.json", "--control",
            kData + "/sample-calibration.csv"};
}

std::vector<std::string> with(std::vector<std::string> args, const std::vector<std::string>& more) {
    args.insert(args.end(), more.begin(), more.end());
    return args;
}

/// CSV rows keyed by their first field (the header row is skipped).
std::map<std::string, std::vector<std::string>> rows_of(const std::string& text) {
    std::map<std::string, std::vector<std::string>> rows;
    bool header = true;
    qv5::cli::for_each_record(text, [&](int, std::string_view line) {
        if (header) {
            header = false;
            return;
        }
        std::vector<std::string> fields;
        for (const std::string_view f : qv5::cli::split_fields(line)) {
            fields.emplace_back(f);
        }
        rows[fields[0]] = fields;
    });
    return rows;
}

double number(const std::string& text) {
    return std::stod(text);
}

std::size_t count_of(const std::string& text, const std::string& what) {
    std::size_t n = 0;
    for (std::size_t at = text.find(what); at != std::string::npos; at = text.find(what, at + 1)) {
        ++n;
    }
    return n;
}

} // namespace

// Tolerances: the shots were rounded to 1e-10 degrees (about 0.01 mm) and 0.1 mm of height,
// the calibration's forward and reverse chains agree to far below that, and on the spirals the
// station iteration stops at 1 mm: 3 mm on station and offset. Elevations move with the
// position by at most the steepest design slope (1:2 cut slope): 3 mm. Azimuths move by the
// position error over the radius (3 mm / 400 m), grades by far less.
TEST(StakeSample, EveryShotMatchesTheIndependentTable) {
    const auto r = qv5::test::run_qv5(with(sample_args(), {"--input", kData + "/sample-shots.csv",
                                                           "--csv", "--raw", "--threads", "1"}));
    ASSERT_EQ(r.exit_code, 0) << r.err;
    EXPECT_TRUE(r.err.empty()) << r.err;
    const auto got = rows_of(r.out);
    const auto expected = rows_of(read_file(kTestData + "/sample-stake-expected.csv"));
    ASSERT_GE(expected.size(), 20u);
    ASSERT_EQ(got.size(), expected.size());
    int cut = 0, fill = 0, slopes = 0, off_ends = 0;
    for (const auto& [name, e] : expected) {
        ASSERT_TRUE(got.count(name)) << name;
        const std::vector<std::string>& g = got.at(name);
        // got: name,station,offset,side,design,cut_fill,centreline,azimuth,grade,surface,...
        EXPECT_NEAR(number(g[1]), number(e[1]), 0.003) << name << " station";
        EXPECT_NEAR(number(g[2]), number(e[2]), 0.003) << name << " offset";
        EXPECT_NEAR(number(g[4]), number(e[3]), 0.003) << name << " design elevation";
        EXPECT_NEAR(number(g[5]), number(e[4]), 0.003) << name << " cut/fill";
        EXPECT_NEAR(number(g[6]), number(e[5]), 0.003) << name << " centreline elevation";
        EXPECT_NEAR(number(g[7]), number(e[6]), 1e-5) << name << " azimuth";
        EXPECT_NEAR(number(g[8]), number(e[7]), 1e-5) << name << " grade";
        EXPECT_EQ(g[9], e[8]) << name << " surface";
        cut += number(e[4]) > 0.0 ? 1 : 0;
        fill += number(e[4]) < 0.0 ? 1 : 0;
        slopes += e[8] != "road" ? 1 : 0;
        off_ends += (number(e[1]) < 1000.0 || number(e[1]) > 2660.0) ? 1 : 0;
    }
    EXPECT_GT(cut, 3);
    EXPECT_GT(fill, 3);
    EXPECT_GE(slopes, 3);
    EXPECT_GE(off_ends, 1);
}

TEST(StakeSample, DefaultJobStakesTheBundledShots) {
    const auto r = qv5::test::run_qv5({});
    ASSERT_EQ(r.exit_code, 0) << r.err;
    EXPECT_TRUE(r.err.empty()) << r.err;
    for (const char* name : {"A01", "B07", "B12", "C01", "C02"}) {
        EXPECT_NE(r.out.find(name), std::string::npos) << name;
    }
    EXPECT_NE(r.out.find("Cut/Fill"), std::string::npos);
    EXPECT_NE(r.out.find("past road end"), std::string::npos);
    EXPECT_NE(r.out.find("fill slope"), std::string::npos);
    const auto json = qv5::test::run_qv5({"--json"});
    ASSERT_EQ(json.exit_code, 0) << json.err;
    const auto doc = nlohmann::json::parse(json.out);
    EXPECT_EQ(doc["shots"].size(),
              rows_of(read_file(kTestData + "/sample-stake-expected.csv")).size());
}

TEST(StakeThreads, OneAndFourThreadsGiveIdenticalBytes) {
    // Enough rows for several blocks, with bad rows among them.
    const std::string shots = read_file(kData + "/sample-shots.csv");
    std::string input;
    for (int i = 0; i < 220; ++i) {
        input += shots;
        if (i % 50 == 7) {
            input += "bad,52.1,not-a-longitude,4\n";
        }
    }
    // Larger than a pipe holds: the rows go through a file.
    const qv5::test::ScratchFolder scratch;
    const std::string file = scratch.file("shots.csv");
    std::ofstream(file, std::ios::binary) << input;
    const auto one =
        qv5::test::run_qv5(with(sample_args(), {"--csv", "--threads", "1", "--input", file}));
    const auto four =
        qv5::test::run_qv5(with(sample_args(), {"--csv", "--threads", "4", "--input", file}));
    EXPECT_EQ(one.exit_code, 1);
    EXPECT_EQ(four.exit_code, 1);
    EXPECT_GT(count_of(one.out, "\n"), 5000u);
    EXPECT_EQ(one.out, four.out);
    EXPECT_EQ(one.err, four.err);
}

TEST(StakeRows, BadRowsAreReportedWithTheirLineAndTheRunGoesOn) {
    const std::string input = "name,latitude,longitude,height\n"
                              "A,52.0849773217,5.1787671420,45.0\n"
                              "B,52.0849773217,5.1787671420\n"
                              "C,nan,5.17,45\n"
                              "D,52.0849773217,5.1787671420,inf\n"
                              "# a comment\n"
                              "E,52.0849773217,5.1787671420,45.0,9\n"
                              "\n"
                              "F,52.0849773217,5.1787671420,45.0\n";
    const auto r = qv5::test::run_qv5(with(sample_args(), {"--csv"}), {}, input);
    EXPECT_EQ(r.exit_code, 1);
    EXPECT_NE(r.err.find("standard input:3:"), std::string::npos) << r.err;
    EXPECT_NE(r.err.find("standard input:4:"), std::string::npos) << r.err;
    EXPECT_NE(r.err.find("standard input:5:"), std::string::npos) << r.err;
    EXPECT_NE(r.err.find("standard input:7:"), std::string::npos) << r.err;
    EXPECT_NE(r.err.find("4 bad row(s)"), std::string::npos) << r.err;
    EXPECT_EQ(rows_of(r.out).size(), 2u) << r.out; // A and F
    EXPECT_EQ(r.out.find("nan"), std::string::npos);
    EXPECT_EQ(r.out.find("inf"), std::string::npos);
}

TEST(StakeRows, WindowsLineEndsAndAByteOrderMarkReadAsPlainRows) {
    // A file saved by a Windows spreadsheet: a UTF-8 byte-order mark, CR LF line ends.
    const std::string shots = read_file(kData + "/sample-shots.csv");
    std::string windows = "\xEF\xBB\xBF";
    for (const char c : shots) {
        if (c == '\n') {
            windows += '\r';
        }
        windows += c;
    }
    const qv5::test::ScratchFolder scratch;
    const std::string plain_file = scratch.file("plain.csv");
    const std::string windows_file = scratch.file("windows.csv");
    std::ofstream(plain_file, std::ios::binary) << shots;
    std::ofstream(windows_file, std::ios::binary) << windows;
    const auto plain = qv5::test::run_qv5(with(sample_args(), {"--csv", "--input", plain_file}));
    const auto from_windows =
        qv5::test::run_qv5(with(sample_args(), {"--csv", "--input", windows_file}));
    EXPECT_EQ(from_windows.exit_code, plain.exit_code) << from_windows.err;
    EXPECT_GT(rows_of(plain.out).size(), 20u);
    EXPECT_EQ(from_windows.out, plain.out);
    EXPECT_EQ(from_windows.err, plain.err);
}

TEST(StakeRows, ArgumentsAndGridPositions) {
    const auto r = qv5::test::run_qv5(
        with(sample_args(), {"--grid", "--csv", "--raw", "449600", "129680", "4.5"}));
    ASSERT_EQ(r.exit_code, 0) << r.err;
    EXPECT_EQ(rows_of(r.out).size(), 1u);
    const auto wrong = qv5::test::run_qv5(with(sample_args(), {"--grid", "449600", "129680"}));
    EXPECT_EQ(wrong.exit_code, 2);
}

TEST(StakeRows, WgsPositionsNeedACalibration) {
    const auto r =
        qv5::test::run_qv5({"stake", "--road", kData + "/sample-road.json", "52.1", "5.2", "45"});
    EXPECT_EQ(r.exit_code, 2);
    EXPECT_NE(r.err.find("--calibration or --control"), std::string::npos) << r.err;
}

TEST(StakeRows, MissingRoadIsReported) {
    const auto r = qv5::test::run_qv5({"stake", "--road", "/nonexistent/road.json", "--grid"});
    EXPECT_EQ(r.exit_code, 1);
    EXPECT_NE(r.err.find("cannot read road"), std::string::npos);
}

TEST(StakeAt, StationAndOffsetStakedThenMeasuredComeBack) {
    const auto at = qv5::test::run_qv5(with(sample_args(), {"--at", "2123.4", "-5.5", "--json"}));
    ASSERT_EQ(at.exit_code, 0) << at.err;
    const auto doc = nlohmann::json::parse(at.out);
    const double north = doc["north"];
    const double east = doc["east"];
    const double design = doc["design_elevation"];
    EXPECT_TRUE(std::isfinite(doc["latitude_rad"].get<double>()));
    std::ostringstream n, e, z;
    n.precision(17);
    e.precision(17);
    z.precision(17);
    n << north;
    e << east;
    z << design;
    const auto back = qv5::test::run_qv5(
        with(sample_args(), {"--grid", "--csv", "--raw", n.str(), e.str(), z.str()}));
    ASSERT_EQ(back.exit_code, 0) << back.err;
    const auto rows = rows_of(back.out);
    ASSERT_EQ(rows.size(), 1u);
    const auto& row = rows.begin()->second;
    EXPECT_NEAR(number(row[1]), 2123.4, 1e-6);
    EXPECT_NEAR(number(row[2]), -5.5, 1e-6);
    EXPECT_NEAR(number(row[5]), 0.0, 1e-6); // on the design surface: neither cut nor fill
}

TEST(StakeSection, LineAcrossTheRoadListsItsBreaks) {
    // Across the first straight (azimuth 60 degrees) at station 1100: from 12 m left to 12 m
    // right of the centreline.
    const double pi = 3.141592653589793;
    const double az = 60.0 * pi / 180.0;
    const double n0 = 449500.0 + 100.0 * std::cos(az);
    const double e0 = 129500.0 + 100.0 * std::sin(az);
    const double across = az + pi / 2.0;
    std::vector<std::string> line;
    for (const double d : {-5.0, 5.0}) {
        std::ostringstream n, e;
        n.precision(12);
        e.precision(12);
        n << n0 + d * std::cos(across);
        e << e0 + d * std::sin(across);
        line.push_back(n.str());
        line.push_back(e.str());
    }
    const auto r = qv5::test::run_qv5(
        with(sample_args(), {"--section", line[0], line[1], line[2], line[3], "--csv", "--raw"}));
    ASSERT_EQ(r.exit_code, 0) << r.err;
    EXPECT_NE(r.out.find("CL###"), std::string::npos) << r.out;
    EXPECT_NE(r.out.find("Edge of lane"), std::string::npos) << r.out;
}

// A CSV column has one unit whatever the user chose: the default units are US survey feet with
// a stationing style, and the CSV still gives every station, offset and elevation in metres.
TEST(StakeCsv, ColumnsAreMetresWhateverTheUnits) {
    const std::string input = kData + "/sample-shots.csv";
    const auto units = qv5::test::run_qv5(with(sample_args(), {"--input", input, "--csv"}));
    const auto raw = qv5::test::run_qv5(with(sample_args(), {"--input", input, "--csv", "--raw"}));
    ASSERT_EQ(units.exit_code, 0) << units.err;
    EXPECT_EQ(units.out, raw.out);
    EXPECT_EQ(units.out.find('\''), std::string::npos) << units.out;
    EXPECT_EQ(units.out.find('+'), std::string::npos) << units.out;
}

// The significant station of a staked shot is what the road's own snapping search names for the
// shot's foot on the centreline, for shots spread every 7 cm along the whole sample road (so
// that every even station and element joint is passed close by) and for several snap distances.
TEST(StakeSignificantStation, IsTheRoadsOwnSearchForTheFoot) {
    CGeoRoad road;
    qv5::cli::RoadForm form{};
    std::vector<qv5::cli::JobError> errors;
    ASSERT_TRUE(qv5::cli::load_road(kData + "/sample-road.json", road, form, errors));
    CGeoRoadIterator placer;
    placer.Set(&road);
    CGeoRoadIterator it;
    it.Set(&road);
    const double start = road.StartStationHorizontal();
    const double end = road.EndStationHorizontal();
    int named = 0;
    int checked = 0;
    for (const double snap : {0.05, 1.0, 3.0}) {
        for (double station = start + 0.013; station < end; station += 0.07) {
            CGeoPoint shot;
            double azimuth = GEO_NULL;
            placer.CenterlinePoint(station, 2.5, 0.1, shot, azimuth, nullptr, nullptr);
            if (shot.Ok3DGrid() == 0) {
                continue;
            }
            const qv5::cli::Shot row{"", shot.Northing(), shot.Easting(), shot.Elevation()};
            const qv5::cli::StakeResult r =
                qv5::cli::stake_shot(road, it, nullptr, qv5::cli::ShotCoordinates::grid, row, snap);
            if (!r.ok) {
                continue;
            }
            CGeoPoint foot;
            it.Set(&road);
            it.CenterlinePoint(r.station, 0.0, 0.0, foot, azimuth, nullptr, nullptr);
            foot.SetGrid(foot.Northing(), foot.Easting(), r.centreline);
            double expected = GEO_NULL;
            georoad_HorzTransitionType type = georoad_TransNone;
            const int found = road.FindClosestHorzPt(foot, snap, expected, type);
            ++checked;
            if (found != 0) {
                ++named;
                EXPECT_EQ(r.significant_station, expected) << station << " snap " << snap;
                EXPECT_EQ(r.significant_type, type) << station << " snap " << snap;
            } else {
                EXPECT_EQ(r.significant_station, GEO_NULL) << station << " snap " << snap;
            }
        }
    }
    EXPECT_GT(checked, 50000);
    EXPECT_GT(named, 1000); // the comparison is not vacuous
}

// JSON Lines: one object per shot, each a whole JSON document with the numbers of --json.
TEST(StakeJsonLines, OneObjectPerShotWithTheNumbersOfTheJsonDocument) {
    const std::string input = kData + "/sample-shots.csv";
    const auto lines =
        qv5::test::run_qv5(with(sample_args(), {"--input", input, "--jsonl", "--raw"}));
    const auto doc = qv5::test::run_qv5(with(sample_args(), {"--input", input, "--json", "--raw"}));
    ASSERT_EQ(lines.exit_code, 0) << lines.err;
    ASSERT_EQ(doc.exit_code, 0) << doc.err;
    const auto shots = nlohmann::json::parse(doc.out)["shots"];
    std::istringstream in(lines.out);
    std::size_t n = 0;
    for (std::string line; std::getline(in, line); ++n) {
        ASSERT_LT(n, shots.size());
        const auto object = nlohmann::json::parse(line);
        EXPECT_EQ(object["name"], shots[n]["name"]);
        EXPECT_EQ(object["station"], shots[n]["station"]);
        EXPECT_EQ(object["cut_fill"], shots[n]["cut_fill"]);
    }
    EXPECT_EQ(n, shots.size());
    EXPECT_GE(n, 20u);
}
