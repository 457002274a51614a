// `qv5` in a pipeline: rows streamed through `convert` in every input form and output format,
// bounded memory on a long stream, per-run units, answers that cannot be computed, and the
// calibration as a PROJ pipeline checked with PROJ's own cct.
#include "qv5_program.h"

#include <gtest/gtest.h>
#include <nlohmann/json.hpp>

#include <cmath>
#include <cstdio>
#include <fcntl.h>
#include <fstream>
#include <sstream>
#include <string>
#include <sys/resource.h>
#include <sys/wait.h>
#include <unistd.h>
#include <vector>

namespace {

using qv5::test::ScratchFolder;

const std::string kSample = std::string(QV5_SAMPLE_DATA_DIR) + "/sample-calibration.csv";

qv5::test::ProgramResult qv5(const std::vector<std::string>& args, const std::string& input = {}) {
    return qv5::test::run_qv5(args, {}, input);
}

/// A calibration saved from the bundled sample, in a scratch folder of the test.
class SavedSample {
public:
    SavedSample() : m_path(m_scratch.file("site.json")) {
        const auto r = qv5({"calibrate", kSample, "--save", m_path});
        EXPECT_EQ(r.exit_code, 0) << r.err;
    }
    const std::string& path() const { return m_path; }
    std::string file(const std::string& name) const { return m_scratch.file(name); }

private:
    ScratchFolder m_scratch;
    std::string m_path;
};

std::vector<std::string> lines_of(const std::string& text) {
    std::vector<std::string> lines;
    std::istringstream in(text);
    for (std::string line; std::getline(in, line);) {
        lines.push_back(line);
    }
    return lines;
}

/// A plain CSV reader (comma, double quotes), independent of the program's.
std::vector<std::string> csv_fields(const std::string& line) {
    std::vector<std::string> fields(1);
    bool quoted = false;
    for (std::size_t i = 0; i < line.size(); ++i) {
        const char c = line[i];
        if (quoted) {
            if (c == '"' && i + 1 < line.size() && line[i + 1] == '"') {
                fields.back() += '"';
                ++i;
            } else if (c == '"') {
                quoted = false;
            } else {
                fields.back() += c;
            }
        } else if (c == '"') {
            quoted = true;
        } else if (c == ',') {
            fields.emplace_back();
        } else {
            fields.back() += c;
        }
    }
    return fields;
}

std::vector<std::string> convert_args(const SavedSample& saved, const char* to,
                                      std::vector<std::string> more) {
    std::vector<std::string> args = {"convert", "--calibration", saved.path(), "--to", to};
    args.insert(args.end(), more.begin(), more.end());
    return args;
}

constexpr const char* kRows = "name,latitude,longitude,height\n"
                              "CHK1,52.1,5.21,45\n"
                              "P2,52.12,5.19,50.5\n"
                              "P3,52.08,5.23,-12.25\n";

TEST(QV5Stream, CsvReadBackEqualsTheJsonNumbers) {
    const SavedSample saved;
    const auto csv = qv5(convert_args(saved, "grid", {"--csv", "--raw"}), kRows);
    const auto json = qv5(convert_args(saved, "grid", {"--json", "--raw"}), kRows);
    ASSERT_EQ(csv.exit_code, 0) << csv.err;
    ASSERT_EQ(json.exit_code, 0) << json.err;
    const auto points = nlohmann::json::parse(json.out)["points"];
    const auto lines = lines_of(csv.out);
    ASSERT_EQ(lines.size(), 4u) << csv.out;
    const auto header = csv_fields(lines[0]);
    ASSERT_EQ(header, (std::vector<std::string>{"name", "latitude_rad", "longitude_rad", "height_m",
                                                "north_m", "east_m", "elevation_m"}));
    const char* keys[] = {"latitude_rad", "longitude_rad", "height", "north", "east", "elevation"};
    for (std::size_t row = 0; row < 3; ++row) {
        const auto fields = csv_fields(lines[row + 1]);
        ASSERT_EQ(fields.size(), 7u);
        EXPECT_EQ(fields[0], points[row]["name"].get<std::string>());
        for (std::size_t k = 0; k < 6; ++k) {
            EXPECT_EQ(std::stod(fields[k + 1]), points[row][keys[k]].get<double>())
                << "row " << row << " " << keys[k];
        }
    }
}

TEST(QV5Stream, CsvIsInTheChosenUnitsWithoutUnitMarks) {
    const SavedSample saved;
    // The saved choice is US survey feet: 451148.801 m x 3937/1200 = 1480144.02 ft.
    const auto r = qv5(convert_args(saved, "grid", {"--csv", "--precision", "2"}), kRows);
    ASSERT_EQ(r.exit_code, 0) << r.err;
    const auto lines = lines_of(r.out);
    EXPECT_EQ(csv_fields(lines[0])[4], "north_usft");
    EXPECT_EQ(csv_fields(lines[0])[1], "latitude_deg");
    const auto fields = csv_fields(lines[1]);
    EXPECT_EQ(fields[4], "1480144.02");
    EXPECT_EQ(fields[1], "52.1");
    EXPECT_EQ(r.out.find('\''), std::string::npos);
}

TEST(QV5Stream, UnitsForOneRunLeaveTheSavedChoicesAlone) {
    const SavedSample saved;
    const auto r = qv5(convert_args(saved, "grid",
                                    {"--csv", "--precision", "3", "--units",
                                     "horizontal-distance=metres,vertical-distance=metres"}),
                       kRows);
    ASSERT_EQ(r.exit_code, 0) << r.err;
    EXPECT_EQ(csv_fields(lines_of(r.out)[1])[4], "451148.801");
    const auto units = qv5({"units", "--json"});
    EXPECT_EQ(nlohmann::json::parse(units.out)["units"]["horizontal-distance"]["value"],
              "us-survey-feet");
    const auto bad = qv5(convert_args(saved, "grid", {"--units", "colour=red"}), kRows);
    EXPECT_EQ(bad.exit_code, 2);
}

TEST(QV5Stream, JsonLinesGiveOneObjectPerRow) {
    const SavedSample saved;
    const auto r = qv5(convert_args(saved, "grid", {"--jsonl"}), kRows);
    ASSERT_EQ(r.exit_code, 0) << r.err;
    const auto lines = lines_of(r.out);
    ASSERT_EQ(lines.size(), 3u);
    EXPECT_EQ(nlohmann::json::parse(lines[2])["name"], "P3");
    EXPECT_NEAR(nlohmann::json::parse(lines[0])["north"].get<double>(), 451148.801, 0.002);
}

TEST(QV5Stream, TabBlankAndChosenDelimitersQuotesCommentsAndByteOrderMark) {
    const SavedSample saved;
    const std::vector<std::pair<std::string, std::vector<std::string>>> cases = {
        {"\xEF\xBB\xBFP1\t52.1\t5.21\t45\n", {}},
        {"  P1   52.1  5.21   45  \n", {}},
        {"P1;52.1;5.21;45\n", {"--delimiter", ";"}},
        {"\"P1\",52.1,5.21,45\n", {}},
        {"# made by hand\nP1,52:06:00N,E5d12'36\",45\n", {}},
    };
    for (const auto& [input, extra] : cases) {
        std::vector<std::string> more = {"--jsonl", "--raw"};
        more.insert(more.end(), extra.begin(), extra.end());
        const auto r = qv5(convert_args(saved, "grid", more), input);
        ASSERT_EQ(r.exit_code, 0) << input << r.err;
        const auto doc = nlohmann::json::parse(lines_of(r.out).at(0));
        EXPECT_EQ(doc["name"], "P1") << input;
        EXPECT_NEAR(doc["north"].get<double>(), 451148.801, 0.002) << input;
    }
    // A quoted name keeps its blank and comma, and CSV output quotes it again.
    const auto quoted =
        qv5(convert_args(saved, "grid", {"--csv", "--raw"}), "\"P 1, west\",52.1,5.21,45\n");
    ASSERT_EQ(quoted.exit_code, 0) << quoted.err;
    EXPECT_EQ(csv_fields(lines_of(quoted.out)[1])[0], "P 1, west");
    // Comments pass through to CSV and table output.
    const auto comment = qv5(convert_args(saved, "grid", {"--csv"}), "# site A\nP1,52.1,5.21,45\n");
    EXPECT_NE(comment.out.find("# site A\n"), std::string::npos) << comment.out;
}

TEST(QV5Stream, BadRowsAreNamedEscapedAndSkippedOrStopTheStreamWhenStrict) {
    const SavedSample saved;
    const std::string input = "P1,52.1,5.21,45\n"
                              "P2,52.1\x1b[31m,5.21,45\n"
                              "P3,52.1,5.21,45\n";
    const auto r = qv5(convert_args(saved, "grid", {"--jsonl"}), input);
    EXPECT_EQ(r.exit_code, 1);
    EXPECT_EQ(lines_of(r.out).size(), 2u);
    EXPECT_NE(r.err.find("standard input:2: latitude: '52.1\\x1b[31m'"), std::string::npos)
        << r.err;
    EXPECT_EQ(r.err.find('\x1b'), std::string::npos);
    const auto strict = qv5(convert_args(saved, "grid", {"--jsonl", "--strict"}), input);
    EXPECT_EQ(strict.exit_code, 1);
    EXPECT_EQ(lines_of(strict.out).size(), 1u);
}

TEST(QV5Stream, DashOrAFileNamesTheInput) {
    const SavedSample saved;
    const std::string path = saved.file("rows.csv");
    qv5::test::write_file(path, kRows);
    const auto from_file = qv5(convert_args(saved, "grid", {"--jsonl", path}));
    const auto from_dash = qv5(convert_args(saved, "grid", {"--jsonl", "-"}), kRows);
    ASSERT_EQ(from_file.exit_code, 0) << from_file.err;
    EXPECT_EQ(from_file.out, from_dash.out);
    EXPECT_EQ(lines_of(from_file.out).size(), 3u);
}

TEST(QV5Output, NegativeZeroIsNeverPrinted) {
    // A vertical distance of -0.0001 m shown with two decimals is zero, not "-0.00".
    const auto r =
        qv5({"inverse", "0", "0", "0", "3", "4", "-0.0001", "--raw", "--precision", "2"});
    ASSERT_EQ(r.exit_code, 0) << r.err;
    EXPECT_NE(r.out.find("Vertical distance    0.00 m"), std::string::npos) << r.out;
    EXPECT_EQ(r.out.find("-0.00 m"), std::string::npos) << r.out;
}

TEST(QV5Output, EveryFormatOptionWorksBeforeOrAfterTheCommand) {
    const auto before = qv5({"--json", "inverse", "0", "0", "0", "3", "4", "5"});
    const auto after = qv5({"inverse", "0", "0", "0", "3", "4", "5", "--json"});
    ASSERT_EQ(before.exit_code, 0) << before.err;
    EXPECT_EQ(before.out, after.out);
    EXPECT_DOUBLE_EQ(nlohmann::json::parse(before.out)["horizontal_distance_m"].get<double>(), 5.0);
    const auto set = qv5({"units", "set", "grade", "rise-run", "--json"});
    ASSERT_EQ(set.exit_code, 0) << set.err;
    EXPECT_EQ(nlohmann::json::parse(set.out)["value"], "rise-run");
    const auto csv = qv5({"inverse", "0", "0", "0", "3", "4", "5", "--csv", "--raw"});
    const auto lines = lines_of(csv.out);
    ASSERT_EQ(lines.size(), 2u);
    EXPECT_EQ(csv_fields(lines[0])[1], "horizontal_distance_m");
    EXPECT_EQ(csv_fields(lines[1])[1], "5");
    const auto degrees = qv5({"inverse", "0", "0", "0", "1", "1", "0", "--angle-format", "deg"});
    EXPECT_NE(degrees.out.find("45.000000000\u00b0"), std::string::npos) << degrees.out;
}

TEST(QV5Answers, NonFiniteAnswersCannotBeComputedAndExitWithOne) {
    const auto r = qv5({"inverse", "0", "1e308", "0", "3", "4", "5", "--raw"});
    EXPECT_EQ(r.exit_code, 1);
    EXPECT_TRUE(r.out.empty()) << r.out;
    EXPECT_NE(r.err.find("cannot be computed"), std::string::npos) << r.err;
    const auto inf = qv5({"inverse", "0", "-inf", "0", "3", "4", "5"});
    EXPECT_EQ(inf.exit_code, 2);
    EXPECT_NE(inf.err.find("argument 'from_east': '-inf' is not a finite number"),
              std::string::npos)
        << inf.err;
    const auto small = qv5({"inverse", "-5", "-.5", "0", "3", "4", "5", "--json"});
    EXPECT_EQ(small.exit_code, 0) << small.err;
}

TEST(QV5Answers, CalibrateRefusesToSaveANonFiniteCalibration) {
    ScratchFolder scratch;
    const std::string points = scratch.file("points.csv");
    const std::string saved = scratch.file("site.json");
    qv5::test::write_file(points, "A,52.1,5.2,44.1,1e308,2000,0.9,hv\n"
                                  "B,52.2,5.2,44.1,-1e308,2000,0.9,hv\n"
                                  "C,52.2,5.3,44.1,1000,2100,0.9,hv\n");
    const auto r = qv5({"calibrate", points, "--save", saved});
    EXPECT_EQ(r.exit_code, 1);
    EXPECT_FALSE(std::ifstream(saved).good());
}

#ifdef QV5_CCT_PATH
TEST(QV5Proj, CctOnThePipelineAgreesWithConvertToAMillimetre) {
    const SavedSample saved;
    const auto proj = qv5({"calibrate", kSample, "--proj"});
    ASSERT_EQ(proj.exit_code, 0) << proj.err;
    std::vector<std::string> args;
    std::istringstream words(proj.out);
    for (std::string word; words >> word;) {
        args.push_back(word);
    }
    // Across the site and 20 km beyond it.
    const std::string rows = "52.1 5.21 45\n52.2 5.0 100\n51.9 5.5 0\n52.05 5.3 12.5\n";
    const auto cct = qv5::test::run_program(
        QV5_CCT_PATH,
        [&] {
            std::vector<std::string> a = {"-d", "6"};
            a.insert(a.end(), args.begin(), args.end());
            return a;
        }(),
        {}, rows);
    ASSERT_EQ(cct.exit_code, 0) << cct.err;
    const auto ours = qv5(convert_args(saved, "grid", {"--jsonl", "--raw"}), rows);
    ASSERT_EQ(ours.exit_code, 0) << ours.err;
    const auto cct_lines = lines_of(cct.out);
    const auto our_lines = lines_of(ours.out);
    ASSERT_EQ(cct_lines.size(), 4u) << cct.out;
    ASSERT_EQ(our_lines.size(), 4u);
    for (std::size_t i = 0; i < 4; ++i) {
        std::istringstream in(cct_lines[i]);
        double north = 0.0;
        double east = 0.0;
        double elevation = 0.0;
        in >> north >> east >> elevation;
        const auto doc = nlohmann::json::parse(our_lines[i]);
        EXPECT_NEAR(north, doc["north"].get<double>(), 0.001) << i;
        EXPECT_NEAR(east, doc["east"].get<double>(), 0.001) << i;
        EXPECT_NEAR(elevation, doc["elevation"].get<double>(), 0.001) << i;
    }
}
#endif

/// Runs qv5 with standard input from a file and standard output to /dev/null.
/// @return the peak resident memory of the child in kilobytes, or -1 when it did not exit 0
long peak_rss_kb(const std::vector<std::string>& args, const std::string& input) {
    const std::string registry = "QV5_REGISTRY=" + qv5::test::program_registry();
    const pid_t pid = fork();
    if (pid == 0) {
        const int in = open(input.c_str(), O_RDONLY);
        const int out = open("/dev/null", O_WRONLY);
        dup2(in, STDIN_FILENO);
        dup2(out, STDOUT_FILENO);
        std::vector<char*> argv;
        std::string program = QV5_CLI_PATH;
        argv.push_back(program.data());
        std::vector<std::string> copy = args;
        for (std::string& a : copy) {
            argv.push_back(a.data());
        }
        argv.push_back(nullptr);
        std::string env = registry;
        char* envp[] = {env.data(), nullptr};
        execve(program.c_str(), argv.data(), envp);
        _exit(127);
    }
    int status = 0;
    rusage usage{};
    if (wait4(pid, &status, 0, &usage) != pid || !WIFEXITED(status) || WEXITSTATUS(status) != 0) {
        return -1;
    }
    return usage.ru_maxrss;
}

TEST(QV5Stream, AMillionRowsRunInBoundedMemory) {
    const SavedSample saved;
    const std::string input = saved.file("million.csv");
    {
        std::ofstream out(input);
        for (int i = 0; i < 1000000; ++i) {
            out << "P" << i << ',' << 52.0 + (i % 1000) * 1e-4 << ',' << 5.1 + (i / 1000) * 1e-4
                << ",45.5\n";
        }
    }
    for (const char* format : {"--csv", "--json"}) {
        const long kb = peak_rss_kb(convert_args(saved, "grid", {format, "--raw"}), input);
        ASSERT_GT(kb, 0) << format;
        EXPECT_LT(kb, 50 * 1024) << format << ": peak " << kb << " kB";
    }
}

} // namespace

namespace {

TEST(QV5Calibrate, CheckPointsGetResidualsAgainstTheSolution) {
    // CHK1 takes part in neither solution; its known coordinates (rounded to millimetres) are
    // within a few millimetres of where the calibration puts it.
    const auto r = qv5({"calibrate", kSample, "--json"});
    ASSERT_EQ(r.exit_code, 0) << r.err;
    const auto row = nlohmann::json::parse(r.out)["residuals"][6];
    ASSERT_EQ(row["name"], "CHK1");
    EXPECT_TRUE(row["horizontal"].is_null());
    ASSERT_TRUE(row["check_horizontal"].is_number());
    EXPECT_LT(row["check_horizontal"].get<double>(), 0.002);
    EXPECT_LT(std::fabs(row["check_vertical"].get<double>()), 0.002);
    const auto text = qv5({"calibrate", kSample, "--raw"});
    EXPECT_NE(text.out.find(" m (check)"), std::string::npos) << text.out;
}

} // namespace

namespace {

TEST(QV5Follow, BearingAndGradientMayBeGivenInDegrees) {
    // 90 degrees east, 10 m, level: (0, 10).
    const auto r = qv5({"follow", "0", "0", "0", "90", "10", "0", "--degrees", "--json"});
    ASSERT_EQ(r.exit_code, 0) << r.err;
    const auto doc = nlohmann::json::parse(r.out);
    EXPECT_NEAR(doc["north"].get<double>(), 0.0, 1e-12);
    EXPECT_NEAR(doc["east"].get<double>(), 10.0, 1e-12);
}

// A point converted far from the control points (the other hemisphere) is still converted, but
// the program says on standard error, per row, that the calibration is carried far beyond its
// points, and JSON output says so too; points inside the control points' reach say nothing.
TEST(QV5Stream, FarOutsideTheCalibrationIsWarnedPerRow) {
    const SavedSample saved;
    const std::string rows = "IN,52.1,5.21,45\n"
                             "FAR,-52.1,5.21,45\n"
                             "IN2,52.11,5.2,45\n";
    const auto r = qv5(convert_args(saved, "grid", {"--jsonl", "--raw"}), rows);
    EXPECT_EQ(r.exit_code, 0) << r.err;
    EXPECT_EQ(lines_of(r.err).size(), 1u) << r.err;
    EXPECT_NE(r.err.find("standard input:2: warning:"), std::string::npos) << r.err;
    EXPECT_NE(r.err.find("outside the calibration's control points"), std::string::npos);
    const auto lines = lines_of(r.out);
    ASSERT_EQ(lines.size(), 3u) << r.out;
    EXPECT_EQ(nlohmann::json::parse(lines[0])["outside_calibration"], false);
    EXPECT_EQ(nlohmann::json::parse(lines[1])["outside_calibration"], true);
    EXPECT_EQ(nlohmann::json::parse(lines[2])["outside_calibration"], false);

    const auto one = qv5(convert_args(saved, "grid", {"--raw", "--", "-52.1", "5.21", "45"}));
    EXPECT_EQ(one.exit_code, 0) << one.err;
    EXPECT_NE(one.err.find("convert: warning:"), std::string::npos) << one.err;
}

} // namespace
