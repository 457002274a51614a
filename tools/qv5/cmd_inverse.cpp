// `qv5 inverse`: bearing, distances and gradient from one point to another.
#include "commands.h"
#include "number_args.h"
#include "output.h"

#include "qv5/qv5lib.h"

#include <fmt/format.h>

#include <array>
#include <iostream>
#include <memory>

namespace qv5::cli {
namespace {

constexpr std::array<const char*, 6> kNames = {"from_north", "from_east", "from_elevation",
                                               "to_north",   "to_east",   "to_elevation"};

struct InverseOptions {
    std::array<std::string, 6> text;
    bool json = false;
};

int run_inverse(const InverseOptions& options) {
    std::array<double, 6> v{};
    bool ok = true;
    for (std::size_t i = 0; i < kNames.size(); ++i) {
        if (!parse_number(options.text[i], v[i])) {
            report_error("inverse: " + not_a_number(kNames[i], options.text[i]));
            ok = false;
        }
    }
    if (!ok) {
        return kExitBadArguments;
    }
    geo_nee from{v[0], v[1], v[2]};
    geo_nee to{v[3], v[4], v[5]};
    CGeoLine line(from, to);
    const double bearing = geo_grid_bearing(from, to);
    const double horizontal = geo_horz_dist(from, to);
    const double vertical = geo_vert_dist(from, to);
    const double slope = line.GridSlopeDistance();
    const double gradient = geo_gradient(from, to);

    if (options.json) {
        nlohmann::json out = {{"bearing_rad", json_number(bearing)},
                              {"horizontal_distance_m", json_number(horizontal)},
                              {"vertical_distance_m", json_number(vertical)},
                              {"slope_distance_m", json_number(slope)},
                              {"gradient_rad", json_number(gradient)}};
        std::cout << out.dump(2) << '\n';
        return 0;
    }
    std::cout << fmt::format("Bearing              {} rad\n", fixed(bearing, 9))
              << fmt::format("Horizontal distance  {} m\n", fixed(horizontal, 4))
              << fmt::format("Vertical distance    {} m\n", fixed(vertical, 4))
              << fmt::format("Slope distance       {} m\n", fixed(slope, 4))
              << fmt::format("Gradient             {} rad (angle of elevation)\n",
                             fixed(gradient, 9));
    return 0;
}

} // namespace

CommandRunner add_inverse_command(CLI::App& app) {
    auto options = std::make_shared<InverseOptions>();
    CLI::App* cmd = app.add_subcommand(
        "inverse", "Bearing, horizontal, vertical and slope distance, and gradient between two "
                   "points (metres, radians)");
    for (std::size_t i = 0; i < kNames.size(); ++i) {
        cmd->add_option(kNames[i], options->text[i], "metres")->required();
    }
    cmd->add_flag("--json", options->json, "Write JSON");
    return [options] { return run_inverse(*options); };
}

} // namespace qv5::cli
