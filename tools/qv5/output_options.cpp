#include "output_options.h"

#include "args.h"
#include "units_output.h"

#include "qv5/units.h"

namespace qv5::cli {

OutputFormat OutputOptions::format() const {
    if (jsonl) {
        return OutputFormat::jsonl;
    }
    if (json) {
        return OutputFormat::json;
    }
    return csv ? OutputFormat::csv : OutputFormat::table;
}

AngleFormat OutputOptions::angles() const {
    if (angle_format == "dms") {
        return AngleFormat::dms;
    }
    if (angle_format == "deg") {
        return AngleFormat::degrees;
    }
    if (angle_format == "rad") {
        return AngleFormat::radians;
    }
    return AngleFormat::units;
}

std::vector<std::pair<std::string, int>> OutputOptions::unit_overrides() const {
    std::vector<std::pair<std::string, int>> out;
    std::string_view rest = units;
    while (!rest.empty()) {
        const std::size_t comma = rest.find(',');
        const std::string_view item = trim(rest.substr(0, comma));
        rest = comma == std::string_view::npos ? std::string_view() : rest.substr(comma + 1);
        const std::size_t equals = item.find('=');
        if (equals == std::string_view::npos) {
            out.emplace_back(std::string(item), -1);
            continue;
        }
        const std::string name(trim(item.substr(0, equals)));
        const UnitKind* kind = find_unit_kind(name);
        int row = -1;
        if (kind != nullptr && kind->set != nullptr) {
            row = find_unit_value(*kind, trim(item.substr(equals + 1))).value_or(-1);
        }
        out.emplace_back(kind != nullptr ? std::string(kind->name) : name, row);
    }
    return out;
}

OutputOptions& output_options() {
    static OutputOptions options;
    return options;
}

void add_output_options(CLI::App& command) {
    OutputOptions& o = output_options();
    CLI::Option* csv = command.add_flag(
        "--csv", o.csv, "Write CSV: a header line, then plain numbers without unit marks");
    CLI::Option* json = command.add_flag("--json", o.json, "Write one JSON document");
    CLI::Option* jsonl =
        command.add_flag("--jsonl", o.jsonl, "Write JSON Lines: one object per result row");
    csv->excludes(json)->excludes(jsonl);
    json->excludes(jsonl);
    command.add_flag("--raw", o.raw,
                     "Show plain metres and radians instead of the units chosen with 'qv5 units'");
    command.add_option("--precision", o.precision, "Decimals of distances, 0 to 15")
        ->check(CLI::Range(0, CQuantityUnits::kMaxDecimals));
    command.add_option("--angle-format", o.angle_format, "Angles as dms, deg or rad")
        ->check(CLI::IsMember({"dms", "deg", "rad"}));
    command.add_option("--units", o.units,
                       "Unit choices for this run only, e.g. "
                       "horizontal-distance=metres,bearings=decimal-degrees");
    command.add_option("--delimiter", o.delimiter,
                       "Input fields separated by comma, tab, space (blanks) or one character; "
                       "default: detected from the first row");
    command.add_flag("--strict", o.strict, "Stop at the first bad input row");
    command.add_flag("--progress", o.progress,
                     "Show the progress of a long stream on standard error even when it is not "
                     "a terminal");
}

std::string check_output_options(const OutputOptions& options) {
    for (const auto& [name, row] : options.unit_overrides()) {
        const UnitKind* kind = find_unit_kind(name);
        if (kind == nullptr || kind->set == nullptr) {
            return "--units: unknown kind '" + name + "' (see 'qv5 units')";
        }
        if (row < 0) {
            return "--units: give " + name + "=VALUE with one of: " + joined(kind->values);
        }
    }
    const std::string& d = options.delimiter;
    if (!d.empty() && d != "comma" && d != "tab" && d != "space" && d.size() != 1) {
        return "--delimiter: give comma, tab, space or one character";
    }
    if (d == "\"" || d == "#") {
        return "--delimiter: '" + d + "' cannot separate fields";
    }
    return {};
}

} // namespace qv5::cli
