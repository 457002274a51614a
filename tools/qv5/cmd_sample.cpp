// The default job: shots from an instrument station reduced to coordinates, each placed against
// a straight by station, offset and height above the straight's grade line.
#include "commands.h"
#include "job_file.h"
#include "output.h"

#include "qv5/qv5lib.h"

#include <fmt/format.h>

#include <cstdlib>
#include <filesystem>
#include <iostream>
#include <memory>

namespace qv5::cli {
namespace {

constexpr const char* kSampleFileName = "sample-observations.csv";

struct SampleOptions {
    std::string data_file;
    bool json = false;
};

/// The bundled job: beside an installed program, else in the source tree it was built from.
std::filesystem::path default_job_path() {
    namespace fs = std::filesystem;
    if (const char* dir = std::getenv("QV5_DATA_DIR"); dir != nullptr && *dir != '\0') {
        return fs::path(dir) / kSampleFileName;
    }
    std::error_code error;
    const fs::path exe = fs::read_symlink("/proc/self/exe", error);
    if (!error) {
        const fs::path installed =
            exe.parent_path().parent_path() / QV5_INSTALL_DATA_SUBDIR / kSampleFileName;
        if (fs::exists(installed, error)) {
            return installed;
        }
    }
    return fs::path(QV5_SOURCE_DATA_DIR) / kSampleFileName;
}

struct ShotResult {
    std::string name;
    geo_nee grid;
    double station;
    double offset;
    double design_elevation;
    double above_design;
};

ShotResult place_shot(const JobShot& shot, CGeoPoint& instrument, CGeoLine& straight) {
    CGeoPoint point;
    point.SetHVD(shot.obs, instrument);
    ShotResult result{
        shot.name, point.Grid(), straight.GridStation(point), straight.GridOffset(point),
        GEO_NULL,  GEO_NULL};
    CGeoPoint on_line;
    straight.GridHorzPoint(result.station, on_line);
    result.design_elevation = on_line.Elevation();
    if (result.grid.elev != GEO_NULL && result.design_elevation != GEO_NULL) {
        result.above_design = result.grid.elev - result.design_elevation;
    }
    return result;
}

void print_text(const std::string& source, const Job& job, CGeoLine& straight,
                const std::vector<ShotResult>& results) {
    const JobStation& st = *job.station;
    std::cout << "QV5 job " << source << "\n\n";
    std::cout << fmt::format("Station {}  N {}  E {}  Z {}  instrument height {}\n", st.name,
                             fixed(st.grid.north, 3), fixed(st.grid.east, 3),
                             fixed(st.grid.elev, 3), fixed(st.instrument_height, 3));
    std::cout << fmt::format("Straight {}  azimuth {} rad  length {} m  grade {} rad\n\n",
                             job.straight->name, fixed(straight.GridAzimuth(), 6),
                             fixed(straight.GridHDistance(), 3), fixed(straight.GeoidGrade(), 6));
    std::cout << fmt::format("{:<8}{:>12}{:>12}{:>10}{:>11}{:>10}{:>11}{:>12}\n", "Point", "North",
                             "East", "Elev", "Station", "Offset", "Design Z", "Above (+)");
    for (const ShotResult& r : results) {
        std::cout << fmt::format("{:<8}{:>12}{:>12}{:>10}{:>11}{:>10}{:>11}{:>12}\n", r.name,
                                 fixed(r.grid.north, 3), fixed(r.grid.east, 3),
                                 fixed(r.grid.elev, 3), fixed(r.station, 3), fixed(r.offset, 3),
                                 fixed(r.design_elevation, 3), fixed(r.above_design, 3));
    }
    std::cout << "\nMetres and radians. Station is measured from the straight's start; offset is "
                 "positive to the right;\n'Above' is the height of the shot above the straight's "
                 "grade line (positive: cut).\n";
}

void print_json(const std::string& source, const Job& job, CGeoLine& straight,
                const std::vector<ShotResult>& results) {
    nlohmann::json out;
    out["job"] = source;
    const JobStation& st = *job.station;
    out["station"] = {{"name", st.name},
                      {"north", json_number(st.grid.north)},
                      {"east", json_number(st.grid.east)},
                      {"elevation", json_number(st.grid.elev)},
                      {"instrument_height", json_number(st.instrument_height)}};
    out["straight"] = {{"name", job.straight->name},
                       {"azimuth_rad", json_number(straight.GridAzimuth())},
                       {"length_m", json_number(straight.GridHDistance())},
                       {"grade_rad", json_number(straight.GeoidGrade())}};
    nlohmann::json points = nlohmann::json::array();
    for (const ShotResult& r : results) {
        points.push_back({{"name", r.name},
                          {"north", json_number(r.grid.north)},
                          {"east", json_number(r.grid.east)},
                          {"elevation", json_number(r.grid.elev)},
                          {"station", json_number(r.station)},
                          {"offset", json_number(r.offset)},
                          {"design_elevation", json_number(r.design_elevation)},
                          {"above_design", json_number(r.above_design)}});
    }
    out["points"] = points;
    std::cout << out.dump(2) << '\n';
}

int run_sample(const SampleOptions& options) {
    const std::filesystem::path path =
        options.data_file.empty() ? default_job_path() : std::filesystem::path(options.data_file);
    std::string text;
    if (!read_whole_file(path.string(), text)) {
        report_error("cannot read job file '" + path.string() + "'");
        return kExitBadData;
    }

    Job job;
    std::vector<JobError> errors;
    if (!parse_job(text, job, errors)) {
        report_file_errors(path.string(), errors, "job rejected");
        return kExitBadData;
    }

    CGeoPoint station_point(job.station->grid);
    CGeoPoint instrument;
    instrument.SetStation(station_point, job.station->instrument_height);
    CGeoLine straight(job.straight->start, job.straight->end);

    std::vector<ShotResult> results;
    for (const JobShot& shot : job.shots) {
        results.push_back(place_shot(shot, instrument, straight));
    }
    if (options.json) {
        print_json(path.string(), job, straight, results);
    } else {
        print_text(path.string(), job, straight, results);
    }
    return 0;
}

} // namespace

CommandRunner add_sample_command(CLI::App& app) {
    auto options = std::make_shared<SampleOptions>();
    app.add_option("--data", options->data_file,
                   "Job file to run instead of the bundled sample (see docs/cli.md)");
    app.add_flag("--json", options->json, "Write JSON instead of a table");
    return [options] { return run_sample(*options); };
}

} // namespace qv5::cli
