// `qv5 convert`: WGS84 to site grid and back through a saved calibration, for positions given as
// arguments or as CSV on standard input.
#include "args.h"
#include "calibration.h"
#include "calibration_json.h"
#include "commands.h"
#include "control_points_csv.h"
#include "conversion_rows.h"
#include "dms.h"
#include "output.h"
#include "units_output.h"

#include "qv5/qv5lib.h"

#include <fmt/format.h>

#include <iostream>
#include <iterator>
#include <memory>

namespace qv5::cli {
namespace {

struct ConvertOptions {
    std::string calibration_file;
    std::string to;
    std::vector<std::string> values;
    bool json = false;
    bool raw = false;
};

struct Converted {
    ConversionInput input;
    geo_nee grid;
    geo_llh wgs84;
};

/// The positions given on the command line, three values each. @return false with every bad
/// argument reported
bool read_arguments(const ConvertOptions& options, ConversionTarget target,
                    std::vector<ConversionInput>& inputs) {
    const bool to_grid = target == ConversionTarget::grid;
    const char* names[3] = {to_grid ? "latitude" : "north", to_grid ? "longitude" : "east",
                            to_grid ? "height" : "elevation"};
    if (options.values.size() % 3 != 0) {
        report_error(fmt::format("convert: give {}, {} and {} for each point ({} values given)",
                                 names[0], names[1], names[2], options.values.size()));
        return false;
    }
    bool ok = true;
    const std::size_t count = options.values.size() / 3;
    for (std::size_t k = 0; k < count; ++k) {
        const std::string suffix = count > 1 ? " " + std::to_string(k + 1) : "";
        double v[3] = {0.0, 0.0, 0.0};
        for (std::size_t j = 0; j < 3; ++j) {
            const std::string& text = options.values[3 * k + j];
            const std::string name = names[j] + suffix;
            if (to_grid && j < 2) {
                std::string why;
                if (!parse_angle(text, j == 0, v[j], why)) {
                    report_error("convert: argument '" + name + "': '" + text + "' " + why);
                    ok = false;
                }
            } else if (!parse_number(text, v[j])) {
                report_error("convert: " + not_a_number(name, text));
                ok = false;
            }
        }
        inputs.push_back(ConversionInput{std::string(), v[0], v[1], v[2], 0});
    }
    return ok;
}

void print_text(ConversionTarget target, const std::vector<Converted>& results,
                const DisplayUnits& show) {
    // Headings in the user's coordinate order.
    const auto heads = show.position(geo_nee{0.0, 0.0, 0.0}, 4);
    const std::string grid_heads =
        fmt::format("{:>16}{:>16}{:>12}", heads[0].first, heads[1].first, heads[2].first);
    const std::string wgs84_heads =
        fmt::format("{:>20}{:>20}{:>12}", "Latitude", "Longitude", "Height");
    std::cout << fmt::format("{:<12}", "Point")
              << (target == ConversionTarget::grid ? wgs84_heads + grid_heads
                                                   : grid_heads + wgs84_heads)
              << '\n';
    for (const Converted& r : results) {
        const auto g = show.position(r.grid, 4);
        const std::string grid =
            fmt::format("{:>16}{:>16}{:>12}", g[0].second, g[1].second, g[2].second);
        const std::string wgs84 =
            fmt::format("{:>20}{:>20}{:>12}", show.latitude(r.wgs84.lat, 11),
                        show.longitude(r.wgs84.lon, 11), show.height(r.wgs84.height, 4));
        std::cout << fmt::format("{:<12}", r.input.name)
                  << (target == ConversionTarget::grid ? wgs84 + grid : grid + wgs84) << '\n';
    }
    std::cout << show.legend() << '\n';
}

void print_json(const std::string& calibration, ConversionTarget target,
                const std::vector<Converted>& results, const DisplayUnits& show) {
    nlohmann::ordered_json points = nlohmann::ordered_json::array();
    for (const Converted& r : results) {
        nlohmann::ordered_json point = {{"name", r.input.name},
                                        {"latitude_rad", json_number(r.wgs84.lat)},
                                        {"longitude_rad", json_number(r.wgs84.lon)},
                                        {"latitude_deg", json_degrees(r.wgs84.lat)},
                                        {"longitude_deg", json_degrees(r.wgs84.lon)},
                                        {"height", json_number(r.wgs84.height)},
                                        {"north", json_number(r.grid.north)},
                                        {"east", json_number(r.grid.east)},
                                        {"elevation", json_number(r.grid.elev)}};
        if (!show.raw()) {
            point["formatted"] = {{"latitude", show.latitude(r.wgs84.lat, 11)},
                                  {"longitude", show.longitude(r.wgs84.lon, 11)},
                                  {"height", show.height(r.wgs84.height, 4)},
                                  {"north", show.distance(r.grid.north, 4)},
                                  {"east", show.distance(r.grid.east, 4)},
                                  {"elevation", show.height(r.grid.elev, 4)}};
        }
        points.push_back(point);
    }
    nlohmann::ordered_json out = {{"calibration", calibration},
                                  {"to", target == ConversionTarget::grid ? "grid" : "wgs84"},
                                  {"points", points}};
    if (!show.raw()) {
        out["units"] = show.description();
    }
    std::cout << out.dump(2) << '\n';
}

int run_convert(const ConvertOptions& options) {
    const ConversionTarget target =
        options.to == "grid" ? ConversionTarget::grid : ConversionTarget::wgs84;
    std::vector<ConversionInput> inputs;
    if (!options.values.empty() && !read_arguments(options, target, inputs)) {
        return kExitBadArguments;
    }

    std::string text;
    if (!read_whole_file(options.calibration_file, text)) {
        report_error("convert: cannot read calibration '" + options.calibration_file + "'");
        return kExitBadData;
    }
    SavedCalibration saved;
    std::vector<JobError> errors;
    if (!parse_calibration_json(text, saved, errors)) {
        report_file_errors(options.calibration_file, errors, "convert: calibration rejected");
        return kExitBadData;
    }
    CGeoTransformation transformation;
    geotrans_Error error = geotrans_NoError;
    if (!build_calibration(saved, transformation, error)) {
        report_error("convert: " + options.calibration_file +
                     ": the calibration cannot be solved with these points");
        return kExitBadData;
    }

    if (options.values.empty()) {
        const std::string input((std::istreambuf_iterator<char>(std::cin)),
                                std::istreambuf_iterator<char>());
        if (!parse_conversion_rows(input, target, inputs, errors)) {
            report_file_errors("standard input", errors,
                               "convert: input rejected, nothing was converted");
            return kExitBadData;
        }
    }

    // Through points with the calibration attached, as a host converts them.
    std::vector<Converted> results;
    for (const ConversionInput& in : inputs) {
        CGeoPoint point;
        point.SetTransformation(transformation);
        Converted r{in, geo_nee{}, geo_llh{}};
        if (target == ConversionTarget::grid) {
            point.SetWGS84(geo_llh{in.a, in.b, in.c});
            r.grid = point.Grid();
            r.wgs84 = geo_llh{in.a, in.b, in.c};
        } else {
            point.SetGrid(in.a, in.b, in.c);
            r.grid = geo_nee{in.a, in.b, in.c};
            r.wgs84 = geo_llh{point.WGS84Lat(), point.WGS84Lon(), point.WGS84Hgt()};
        }
        results.push_back(r);
    }
    const DisplayUnits show(options.raw);
    if (options.json) {
        print_json(options.calibration_file, target, results, show);
    } else {
        print_text(target, results, show);
    }
    return 0;
}

} // namespace

CommandRunner add_convert_options(CLI::App& cmd) {
    auto options = std::make_shared<ConvertOptions>();
    cmd.add_option("--calibration", options->calibration_file,
                   "Calibration JSON written by 'qv5 calibrate --save'")
        ->required();
    cmd.add_option("--to", options->to, "grid (from WGS84) or wgs84 (from grid)")
        ->required()
        ->check(CLI::IsMember({"grid", "wgs84"}));
    cmd.add_option("values", options->values,
                   "LATITUDE LONGITUDE HEIGHT (to grid) or NORTH EAST ELEVATION (to wgs84), "
                   "repeated; angles in decimal degrees or D:M:S with N/S/E/W");
    cmd.add_flag("--json", options->json, "Write JSON");
    add_raw_flag(cmd, options->raw);
    return [options] { return run_convert(*options); };
}

} // namespace qv5::cli

QV5_COMMAND("convert",
            "Convert WGS84 positions to site grid coordinates, or back, through a saved "
            "calibration (positions as arguments, or CSV on standard input)",
            qv5::cli::add_convert_options);
