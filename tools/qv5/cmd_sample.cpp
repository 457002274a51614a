// The default job: shots from an instrument station reduced to coordinates, each placed against
// a straight by station, offset and height above the straight's grade line.
#include "commands.h"
#include "job_file.h"
#include "output.h"
#include "output_options.h"
#include "units_output.h"

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
                const std::vector<ShotResult>& results, const DisplayUnits& show) {
    const JobStation& st = *job.station;
    std::cout << "QV5 job " << source << "\n\n";
    const auto station = show.position(st.grid, 3);
    std::cout << fmt::format("Station {}  {} {}  {} {}  {} {}  instrument height {}\n", st.name,
                             station[0].first, station[0].second, station[1].first,
                             station[1].second, station[2].first, station[2].second,
                             show.height(st.instrument_height, 3));
    std::cout << fmt::format("Straight {}  azimuth {}  length {}  grade {}\n\n", job.straight->name,
                             show.bearing(straight.GridAzimuth(), 6),
                             show.distance(straight.GridHDistance(), 3),
                             show.grade(straight.GeoidGrade(), 6));
    const auto headings = show.position(geo_nee{0.0, 0.0, 0.0}, 3);
    const std::string row = "{:<8}{:>14}{:>14}{:>12}{:>13}{:>12}{:>12}{:>12}\n";
    std::cout << fmt::format(fmt::runtime(row), "Point", headings[0].first, headings[1].first,
                             headings[2].first == "Elevation" ? "Elev" : headings[2].first,
                             "Station", "Offset", "Design Z", "Above (+)");
    for (const ShotResult& r : results) {
        const auto p = show.position(r.grid, 3);
        std::cout << fmt::format(fmt::runtime(row), r.name, p[0].second, p[1].second, p[2].second,
                                 show.station(r.station, 3), show.distance(r.offset, 3),
                                 show.height(r.design_elevation, 3),
                                 show.height(r.above_design, 3));
    }
    std::cout << "\n"
              << show.legend()
              << "\nStation is measured from the straight's start; offset is positive to the "
                 "right;\n'Above' is the height of the shot above the straight's grade line "
                 "(positive: cut).\n";
}

void print_json(const std::string& source, const Job& job, CGeoLine& straight,
                const std::vector<ShotResult>& results, const DisplayUnits& show,
                OutputFormat format) {
    nlohmann::ordered_json out;
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
    if (!show.raw()) {
        out["units"] = show.description();
        out["station"]["formatted"] = {{"north", show.distance(st.grid.north, 3)},
                                       {"east", show.distance(st.grid.east, 3)},
                                       {"elevation", show.height(st.grid.elev, 3)},
                                       {"instrument_height", show.height(st.instrument_height, 3)}};
        out["straight"]["formatted"] = {{"azimuth", show.bearing(straight.GridAzimuth(), 6)},
                                        {"length", show.distance(straight.GridHDistance(), 3)},
                                        {"grade", show.grade(straight.GeoidGrade(), 6)}};
    }
    nlohmann::ordered_json points = nlohmann::ordered_json::array();
    for (const ShotResult& r : results) {
        nlohmann::ordered_json point = {{"name", r.name},
                                        {"north", json_number(r.grid.north)},
                                        {"east", json_number(r.grid.east)},
                                        {"elevation", json_number(r.grid.elev)},
                                        {"station", json_number(r.station)},
                                        {"offset", json_number(r.offset)},
                                        {"design_elevation", json_number(r.design_elevation)},
                                        {"above_design", json_number(r.above_design)}};
        if (!show.raw()) {
            point["formatted"] = {{"north", show.distance(r.grid.north, 3)},
                                  {"east", show.distance(r.grid.east, 3)},
                                  {"elevation", show.height(r.grid.elev, 3)},
                                  {"station", show.station(r.station, 3)},
                                  {"offset", show.distance(r.offset, 3)},
                                  {"design_elevation", show.height(r.design_elevation, 3)},
                                  {"above_design", show.height(r.above_design, 3)}};
        }
        points.push_back(point);
    }
    out["points"] = points;
    write_structured(out, format_name(format));
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
    const DisplayUnits show(output_options());
    const OutputFormat format = output_options().format();
    if (format != OutputFormat::table) {
        print_json(path.string(), job, straight, results, show, format);
    } else {
        print_text(path.string(), job, straight, results, show);
    }
    return 0;
}

} // namespace

CommandRunner add_straight_options(CLI::App& cmd) {
    auto options = std::make_shared<SampleOptions>();
    cmd.add_option("--data", options->data_file,
                   "Job file to run instead of the bundled sample (see docs/cli.md)");
    return [options] { return run_sample(*options); };
}

} // namespace qv5::cli

QV5_COMMAND("straight",
            "Reduce instrument observations (a job file; the bundled sample by default) and place "
            "each shot against a straight of a road centreline",
            qv5::cli::add_straight_options);
