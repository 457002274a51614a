// qv5: the library's command-line program. With no arguments it stakes the bundled sample shots
// against the bundled sample road.
#include "args.h"
#include "commands.h"
#include "output.h"
#include "output_options.h"

#include "qv5/hostfw.h"
#include "qv5/settings.h"

#include <CLI/CLI.hpp>

#include <algorithm>
#include <cstring>
#include <exception>
#include <filesystem>
#include <string>
#include <string_view>
#include <utility>
#include <vector>

namespace qv5::cli {

std::vector<CommandEntry>& command_registry() {
    static std::vector<CommandEntry> registry;
    return registry;
}

} // namespace qv5::cli

namespace {

/// Whether an argument is a negative value the option parser would take for an option: "-inf",
/// "-nan", "-.5". (Arguments such as "-5" it already reads as values.)
bool negative_value(std::string_view arg) {
    if (arg.size() < 2 || arg[0] != '-' || arg[1] == '-') {
        return false;
    }
    const std::string word = qv5::cli::lower(arg.substr(1));
    return word == "inf" || word == "infinity" || word == "nan" || arg[1] == '.';
}

/// Where the manual is installed beside this program: PREFIX/share/man/man1/qv5.1.
std::string man_page_path() {
    std::error_code error;
    const std::filesystem::path exe = std::filesystem::read_symlink("/proc/self/exe", error);
    if (error) {
        return QV5_INSTALL_MAN_PAGE;
    }
    return (exe.parent_path().parent_path() / QV5_INSTALL_MAN_PAGE).lexically_normal().string();
}

/// Warns once when the settings file that keeps the unit choices is there but cannot be read
/// (the default units are then in force) or cannot be written (a change would not be kept): the
/// library itself leaves such a file alone without a word.
void warn_about_settings_file() {
    CString file;
    CString reason;
    if (qv5::CheckSettingsFile(file, reason) == 0) {
        qv5::cli::report_error("warning: the settings file '" + file.ToUtf8() + "' " +
                               reason.ToUtf8());
    }
}

} // namespace

int main(int argc, char** argv) {
    using namespace qv5::cli;
    CLI::App app{"qv5 - survey and road-design computations with QV5lib.\n"
                 "Every command writes a readable table, or --csv, --json or --jsonl. The manual: "
                 "'man qv5', installed as " +
                     man_page_path() + ".",
                 "qv5"};
    app.set_version_flag("--version", QV5_VERSION);
    app.require_subcommand(0, 1);

    const CommandRunner default_job = add_default_options(app);
    add_output_options(app);
    std::vector<CommandEntry> entries = command_registry();
    std::sort(entries.begin(), entries.end(), [](const CommandEntry& a, const CommandEntry& b) {
        return std::strcmp(a.name, b.name) < 0;
    });
    std::vector<std::pair<CLI::App*, CommandRunner>> commands;
    for (const CommandEntry& entry : entries) {
        CLI::App* cmd = app.add_subcommand(entry.name, entry.help);
        commands.emplace_back(cmd, entry.setup(*cmd));
        add_output_options(*cmd);
    }

    // Negative values that look like options reach the commands with a minus sign (U+2212)
    // in place of the hyphen, which every reader of numbers takes for '-'.
    std::vector<std::string> args;
    for (int i = argc - 1; i > 0; --i) {
        args.emplace_back(argv[i]);
        if (negative_value(args.back())) {
            args.back() = std::string(kMinusSign) + args.back().substr(1);
        }
    }
    try {
        app.parse(args);
    } catch (const CLI::CallForHelp& e) {
        return app.exit(e);
    } catch (const CLI::CallForAllHelp& e) {
        return app.exit(e);
    } catch (const CLI::CallForVersion& e) {
        return app.exit(e);
    } catch (const CLI::ParseError& e) {
        report_error(std::string(e.what()) + " (run 'qv5 --help' for usage)");
        return kExitBadArguments;
    }

    if (const std::string bad = check_output_options(output_options()); !bad.empty()) {
        report_error(bad + " (run 'qv5 --help' for usage)");
        return kExitBadArguments;
    }
    warn_about_settings_file();
    try {
        for (const auto& [cmd, run] : commands) {
            if (cmd->parsed()) {
                return run();
            }
        }
        return default_job();
    } catch (const std::exception& e) {
        report_error(e.what());
        return kExitBadData;
    }
}
