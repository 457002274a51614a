// `qv5 follow`: the point reached from a start along a bearing, distance and gradient.
#include "args.h"
#include "commands.h"
#include "output.h"
#include "output_options.h"
#include "units_output.h"

#include "qv5/qv5lib.h"

#include <fmt/format.h>

#include <array>
#include <iostream>
#include <memory>
#include <numbers>

namespace qv5::cli {
namespace {

constexpr std::array<const char*, 6> kNames = {"north",   "east",     "elevation",
                                               "bearing", "distance", "gradient"};
constexpr std::array<const char*, 6> kUnits = {"metres",
                                               "metres",
                                               "metres",
                                               "radians, clockwise from grid north",
                                               "metres, horizontal",
                                               "radians, angle of elevation"};

struct FollowOptions {
    std::array<std::string, 6> text;
    bool degrees = false;
};

int run_follow(const FollowOptions& options) {
    std::array<double, 6> v{};
    if (!read_number_arguments("follow", kNames.data(), options.text.data(), v.data(), v.size())) {
        return kExitBadArguments;
    }
    const geo_nee start{v[0], v[1], v[2]};
    geo_nee end{};
    const double angle_unit = options.degrees ? kRadiansPerDegree : 1.0;
    geo_grid_follow(start, v[3] * angle_unit, v[4], v[5] * angle_unit, end);
    if (!check_results("follow",
                       {{"north", end.north}, {"east", end.east}, {"elevation", end.elev}},
                       "the start or the distance is too large")) {
        return kExitBadData;
    }
    const DisplayUnits show(output_options());
    const auto position = show.position(end, 4);
    const OutputFormat format = output_options().format();
    if (format != OutputFormat::table) {
        nlohmann::ordered_json out = {{"north", json_number(end.north)},
                                      {"east", json_number(end.east)},
                                      {"elevation", json_number(end.elev)}};
        if (!show.raw()) {
            out["formatted"] = {{"north", show.distance(end.north, 4)},
                                {"east", show.distance(end.east, 4)},
                                {"elevation", show.height(end.elev, 4)}};
            out["units"] = show.description();
        }
        write_structured(out, format_name(format));
        return 0;
    }
    for (const auto& [label, text] : position) {
        std::cout << fmt::format("{:<11}{}\n", label, text);
    }
    return 0;
}

} // namespace

CommandRunner add_follow_options(CLI::App& cmd) {
    auto options = std::make_shared<FollowOptions>();
    for (std::size_t i = 0; i < kNames.size(); ++i) {
        cmd.add_option(kNames[i], options->text[i], kUnits[i])->required();
    }
    cmd.add_flag("--degrees", options->degrees,
                 "Bearing and gradient given in decimal degrees instead of radians");
    return [options] { return run_follow(*options); };
}

} // namespace qv5::cli

QV5_COMMAND("follow",
            "The point at a bearing, horizontal distance and gradient from a start (given in "
            "metres and radians; shown in the units chosen with 'qv5 units')",
            qv5::cli::add_follow_options);
