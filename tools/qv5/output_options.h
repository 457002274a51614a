// How the program writes its answers, chosen per run and the same for every command: the
// readable table, CSV, one JSON document or JSON Lines; decimals, angle notation and unit
// choices that hold for this run only (the saved unit choices are left as they are).
//
// main() adds these options to the program and to every subcommand, so `qv5 --json inverse ...`
// and `qv5 inverse ... --json` mean the same; a command reads them with output_options().
#ifndef QV5_TOOLS_OUTPUT_OPTIONS_H
#define QV5_TOOLS_OUTPUT_OPTIONS_H

#include <CLI/CLI.hpp>

#include <string>
#include <utility>
#include <vector>

namespace qv5::cli {

enum class OutputFormat { table, csv, json, jsonl };

/// How angles are written: as the saved unit choices say, or as given with --angle-format.
enum class AngleFormat { units, dms, degrees, radians };

struct OutputOptions {
    bool csv = false;
    bool json = false;
    bool jsonl = false;
    bool raw = false;
    int precision = -1;       ///< decimals of distances; -1: the unit's own
    std::string angle_format; ///< "dms", "deg" or "rad"; empty: the unit choices
    std::string units;        ///< "NAME=CHOICE,..." for this run
    std::string delimiter;    ///< input: "comma", "tab", "space" or one character
    bool strict = false;      ///< input: stop at the first bad row
    bool progress = false;    ///< force the progress bar (normally: stderr a terminal)

    OutputFormat format() const;
    AngleFormat angles() const;
    /// The unit choices of --units as (kind, row) pairs, checked by check_output_options.
    std::vector<std::pair<std::string, int>> unit_overrides() const;
};

/// The name of a format as write_structured takes it: "table", "csv", "json" or "jsonl".
inline const char* format_name(OutputFormat format) {
    switch (format) {
    case OutputFormat::csv:
        return "csv";
    case OutputFormat::json:
        return "json";
    case OutputFormat::jsonl:
        return "jsonl";
    case OutputFormat::table:
        break;
    }
    return "table";
}

/// The options of this run.
OutputOptions& output_options();

/// Adds the output and input options to the program or to one subcommand.
void add_output_options(CLI::App& command);

/// Checks the options once they are parsed. @return empty, or what is wrong (exit status 2)
std::string check_output_options(const OutputOptions& options);

} // namespace qv5::cli

#endif
