// The subcommands of the qv5 program. Each registers itself on the application and runs when
// chosen; `run` returns the process exit code.
#ifndef QV5_TOOLS_COMMANDS_H
#define QV5_TOOLS_COMMANDS_H

#include <CLI/CLI.hpp>

#include <functional>

namespace qv5::cli {

/// What a registered command runs once the arguments are parsed.
using CommandRunner = std::function<int()>;

/// `straight`: the bundled (or a given) job file reduced and checked against its straight.
CommandRunner add_sample_command(CLI::App& app);
/// `stake`: measured positions against a road; a station and offset to stake; a section.
CommandRunner add_stake_command(CLI::App& app);
/// The default job (options on the program itself): the bundled sample shots staked against the
/// bundled sample road through the sample calibration.
CommandRunner add_default_stake(CLI::App& app);
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
/// `road`: a road read from its JSON description, stationed and listed.
CommandRunner add_road_command(CLI::App& app);

} // namespace qv5::cli

#endif
