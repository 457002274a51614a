// The subcommands of the qv5 program, and how one joins it.
//
// Each subcommand lives in its own file, cmd_<name>.cpp, and registers itself with ONE line at
// the end of that file (outside any namespace):
//
//     QV5_COMMAND("inverse", "Bearing and distances between two points", add_inverse_options);
//
// `add_inverse_options` has the signature `qv5::cli::CommandRunner (CLI::App& cmd)`: it adds
// the command's arguments and options to `cmd` (already created with that name and help text)
// and returns what runs when the command is chosen, giving the process exit status. Nothing
// else is edited to add a command: main() creates every registered command, in name order,
// parses the arguments and runs the one chosen. The cmd_*.cpp files must be linked into the
// program itself (not a static library), or the linker drops their registrations.
//
// main() also adds the output and input options to every command (--csv, --json, --jsonl, --raw,
// --precision, --angle-format, --units, --delimiter, --strict, --progress; see
// output_options.h): a command does not add them itself, and reads them with output_options().
// It shows quantities with `DisplayUnits show(output_options());`, writes a single answer built
// as JSON with write_structured() when the format is not the table, and checks its answers with
// check_results() (a non-finite or null answer: "cannot be computed", exit status 1). A command
// that takes rows streams them as cmd_convert.cpp does (LineSource, FieldSplitter, BlockWriter).
#ifndef QV5_TOOLS_COMMANDS_H
#define QV5_TOOLS_COMMANDS_H

#include <CLI/CLI.hpp>

#include <functional>
#include <optional>
#include <vector>

namespace qv5::cli {

/// What a registered command runs once the arguments are parsed; returns the exit status.
using CommandRunner = std::function<int()>;

/// Adds a command's arguments and options to its (sub)command and returns its runner.
using CommandSetup = CommandRunner (*)(CLI::App& cmd);

/// One registered subcommand.
struct CommandEntry {
    const char* name;
    const char* help;
    CommandSetup setup;
};

/// Every registered subcommand, in the order they registered.
std::vector<CommandEntry>& command_registry();

/// Registers a subcommand when the program starts (see QV5_COMMAND).
struct CommandRegistrar {
    CommandRegistrar(const char* name, const char* help, CommandSetup setup) {
        command_registry().push_back({name, help, setup});
    }
};

/// What the road file subcommands run: their exit code, or nothing when none was chosen.
using RoadFileRunner = std::function<std::optional<int>()>;
/// `road convert` and `road name`, added to the `road` command.
RoadFileRunner add_road_file_commands(CLI::App& road);

/// The default job, run when no subcommand is given: the bundled sample shots staked against
/// the bundled sample road. Its options go on the program itself.
CommandRunner add_default_options(CLI::App& app);

} // namespace qv5::cli

#define QV5_COMMAND_JOIN2(a, b) a##b
#define QV5_COMMAND_JOIN(a, b) QV5_COMMAND_JOIN2(a, b)
/// Registers a subcommand: QV5_COMMAND("name", "help", setup_function);
#define QV5_COMMAND(name, help, setup)                                                             \
    static const ::qv5::cli::CommandRegistrar QV5_COMMAND_JOIN(qv5_command_, __LINE__) {           \
        name, help, setup                                                                          \
    }

#endif
