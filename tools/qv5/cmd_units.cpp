// `qv5 units`: the user's unit choices, shown and changed. They live in the settings store under
// kUnitsKey, where every subcommand that prints quantities reads them.
#include "commands.h"
#include "output.h"
#include "output_options.h"
#include "units_output.h"

#include <fmt/format.h>

#include <iostream>
#include <memory>

namespace qv5::cli {
namespace {

struct UnitsOptions {
    std::string kind;
    std::string value;
};

std::vector<std::string_view> settable_kinds() {
    std::vector<std::string_view> names;
    for (const UnitKind& kind : unit_kinds()) {
        if (kind.set != nullptr) {
            names.push_back(kind.name);
        }
    }
    return names;
}

std::string key_text() {
    return "HKEY_LOCAL_MACHINE\\" + CString(kUnitsKey).ToUtf8();
}

int show_units() {
    const CQuantityUnits units{CString(kUnitsKey)};
    const OutputFormat format = output_options().format();
    if (format != OutputFormat::table) {
        nlohmann::ordered_json out;
        out["key"] = key_text();
        nlohmann::ordered_json choices = nlohmann::ordered_json::object();
        for (const UnitKind& kind : unit_kinds()) {
            const int row = (units.*kind.get)();
            choices[std::string(kind.name)] = {
                {"value", std::string(kind.values.at(static_cast<std::size_t>(row)))},
                {"row", row},
                {"name", display_name(kind, row)},
                {"values", kind.values},
                {"settable", kind.set != nullptr}};
        }
        out["units"] = choices;
        if (format == OutputFormat::csv) {
            // One row per kind of unit.
            nlohmann::ordered_json rows = nlohmann::ordered_json::array();
            for (auto it = choices.begin(); it != choices.end(); ++it) {
                rows.push_back({{"kind", it.key()},
                                {"value", (*it)["value"]},
                                {"row", (*it)["row"]},
                                {"name", (*it)["name"]},
                                {"settable", (*it)["settable"]}});
            }
            write_structured({{"units", rows}}, "csv");
            return 0;
        }
        write_structured(out, format_name(format));
        return 0;
    }
    std::cout << "Unit choices (" << key_text() << ")\n\n";
    for (const UnitKind& kind : unit_kinds()) {
        const int row = (units.*kind.get)();
        std::cout << fmt::format("{:<21}{:<20}{}\n", kind.name,
                                 kind.values.at(static_cast<std::size_t>(row)),
                                 display_name(kind, row));
    }
    std::cout << "\nChange one with: qv5 units set KIND VALUE\n";
    return 0;
}

int set_unit(const UnitsOptions& options) {
    const UnitKind* kind = find_unit_kind(options.kind);
    if (kind == nullptr) {
        report_error(fmt::format("units: unknown kind '{}'; valid kinds: {}", options.kind,
                                 joined(settable_kinds())));
        return kExitBadArguments;
    }
    if (kind->set == nullptr) {
        report_error(fmt::format("units: {} is kept by the library but cannot be set; valid "
                                 "kinds: {}",
                                 kind->name, joined(settable_kinds())));
        return kExitBadArguments;
    }
    const std::optional<int> row = find_unit_value(*kind, options.value);
    if (!row) {
        report_error(fmt::format("units: unknown value '{}' for {}; valid values: {}",
                                 options.value, kind->name, joined(kind->values)));
        return kExitBadArguments;
    }
    {
        CQuantityUnits units{CString(kUnitsKey)};
        (units.*kind->set)(*row);
    } // written back to the settings store here
    const CQuantityUnits check{CString(kUnitsKey)};
    if ((check.*kind->get)() != *row) {
        report_error("units: the settings store could not be written (see $QV5_REGISTRY)");
        return kExitBadData;
    }
    if (const OutputFormat format = output_options().format(); format != OutputFormat::table) {
        write_structured({{"kind", std::string(kind->name)},
                          {"value", std::string(kind->values.at(static_cast<std::size_t>(*row)))},
                          {"row", *row},
                          {"name", display_name(*kind, *row)}},
                         format_name(format));
        return 0;
    }
    std::cout << fmt::format("{} set to {} ({})\n", kind->name,
                             kind->values.at(static_cast<std::size_t>(*row)),
                             display_name(*kind, *row));
    return 0;
}

} // namespace

CommandRunner add_units_options(CLI::App& cmd) {
    auto options = std::make_shared<UnitsOptions>();
    cmd.require_subcommand(0, 1);
    CLI::App* set = cmd.add_subcommand("set", "Change one unit choice; it is kept for later runs");
    set->add_option("kind", options->kind,
                    "horizontal-distance, vertical-distance, length, angles, bearings, grade, "
                    "stationing, area, volume or coords")
        ->required();
    set->add_option("value", options->value,
                    "a value name (e.g. metres, us-survey-feet), the display name or the row "
                    "number")
        ->required();
    add_output_options(*set);
    return [options, set] { return set->parsed() ? set_unit(*options) : show_units(); };
}

} // namespace qv5::cli

QV5_COMMAND("units", "Show the units quantities are shown in, or change one with 'units set'",
            qv5::cli::add_units_options);
