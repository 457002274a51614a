// The subcommands of the qv5 program. Each registers itself on the application and runs when
// chosen; `run` returns the process exit code.
#ifndef QV5_TOOLS_COMMANDS_H
#define QV5_TOOLS_COMMANDS_H

#include <CLI/CLI.hpp>

#include <functional>
#include <optional>

namespace qv5::cli {

/// What a registered command runs once the arguments are parsed.
using CommandRunner = std::function<int()>;

/// The default job: the bundled (or a given) job file reduced and checked against its straight.
CommandRunner add_sample_command(CLI::App& app);
/// `inverse`: bearing, distances and gradient between two points.
CommandRunner add_inverse_command(CLI::App& app);
/// `follow`: the point at a bearing, distance and gradient from a start.
CommandRunner add_follow_command(CLI::App& app);
/// `calibrate`: a site calibration fitted to control points.
CommandRunner add_calibrate_command(CLI::App& app);
/// `convert`: WGS84 to grid and back through a saved calibration.
CommandRunner add_convert_command(CLI::App& app);
/// `element`: one line, arc or spiral evaluated at a station and offset, or inverted for a point.
CommandRunner add_element_command(CLI::App& app);
/// `units`: the user's unit choices, shown and set.
CommandRunner add_units_command(CLI::App& app);
/// `template`: a cross-section template's chain, and its design height or catch at an offset.
CommandRunner add_template_command(CLI::App& app);
/// `draw`: a cross-section template's picture written to PNG and/or SVG.
CommandRunner add_draw_command(CLI::App& app);
/// `road`: a road read from its JSON description or its road file, stationed and listed;
/// `road convert` between the forms, `road name` from a road file's header.
CommandRunner add_road_command(CLI::App& app);
/// What the road file subcommands run: their exit code, or nothing when none was chosen.
using RoadFileRunner = std::function<std::optional<int>()>;
/// `road convert` and `road name`, added to the `road` command.
RoadFileRunner add_road_file_commands(CLI::App& road);

} // namespace qv5::cli

#endif
