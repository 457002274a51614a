// `qv5 inverse`: bearing, distances and gradient from one point to another.
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

namespace qv5::cli {
namespace {

constexpr std::array<const char*, 6> kNames = {"from_north", "from_east", "from_elevation",
                                               "to_north",   "to_east",   "to_elevation"};

struct InverseOptions {
    std::array<std::string, 6> text;
};

int run_inverse(const InverseOptions& options) {
    std::array<double, 6> v{};
    if (!read_number_arguments("inverse", kNames.data(), options.text.data(), v.data(), v.size())) {
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

    if (!check_results("inverse",
                       {{"bearing", bearing},
                        {"horizontal distance", horizontal},
                        {"vertical distance", vertical},
                        {"slope distance", slope},
                        {"gradient", gradient}},
                       "the points coincide in plan, or their coordinates are too large")) {
        return kExitBadData;
    }
    const DisplayUnits show(output_options());
    const OutputFormat format = output_options().format();
    if (format != OutputFormat::table) {
        nlohmann::ordered_json out = {{"bearing_rad", json_number(bearing)},
                                      {"horizontal_distance_m", json_number(horizontal)},
                                      {"vertical_distance_m", json_number(vertical)},
                                      {"slope_distance_m", json_number(slope)},
                                      {"gradient_rad", json_number(gradient)}};
        if (!show.raw()) {
            out["formatted"] = {{"bearing", show.bearing(bearing, 9)},
                                {"horizontal_distance", show.distance(horizontal, 4)},
                                {"vertical_distance", show.height(vertical, 4)},
                                {"slope_distance", show.distance(slope, 4)},
                                {"gradient", show.grade(gradient, 9)}};
            out["units"] = show.description();
        }
        write_structured(out, format_name(format));
        return 0;
    }
    std::cout << fmt::format("Bearing              {}\n", show.bearing(bearing, 9))
              << fmt::format("Horizontal distance  {}\n", show.distance(horizontal, 4))
              << fmt::format("Vertical distance    {}\n", show.height(vertical, 4))
              << fmt::format("Slope distance       {}\n", show.distance(slope, 4))
              << fmt::format("Gradient             {} (angle of elevation)\n",
                             show.grade(gradient, 9));
    return 0;
}

} // namespace

CommandRunner add_inverse_options(CLI::App& cmd) {
    auto options = std::make_shared<InverseOptions>();
    for (std::size_t i = 0; i < kNames.size(); ++i) {
        cmd.add_option(kNames[i], options->text[i], "metres")->required();
    }
    return [options] { return run_inverse(*options); };
}

} // namespace qv5::cli

QV5_COMMAND("inverse",
            "Bearing, horizontal, vertical and slope distance, and gradient between two "
            "points given in metres; shown in the units chosen with 'qv5 units'",
            qv5::cli::add_inverse_options);
