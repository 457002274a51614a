// qv5: the library's command-line program. With no arguments it runs the bundled sample job.
#include "commands.h"
#include "output.h"

#include <CLI/CLI.hpp>

#include <algorithm>
#include <cstring>
#include <exception>
#include <utility>

namespace qv5::cli {

std::vector<CommandEntry>& command_registry() {
    static std::vector<CommandEntry> registry;
    return registry;
}

} // namespace qv5::cli

int main(int argc, char** argv) {
    using namespace qv5::cli;
    CLI::App app{"qv5 - survey and road-design computations with QV5lib", "qv5"};
    app.set_version_flag("--version", QV5_VERSION);
    app.require_subcommand(0, 1);

    const CommandRunner sample = add_sample_options(app);
    std::vector<CommandEntry> entries = command_registry();
    std::sort(entries.begin(), entries.end(), [](const CommandEntry& a, const CommandEntry& b) {
        return std::strcmp(a.name, b.name) < 0;
    });
    std::vector<std::pair<CLI::App*, CommandRunner>> commands;
    for (const CommandEntry& entry : entries) {
        CLI::App* cmd = app.add_subcommand(entry.name, entry.help);
        commands.emplace_back(cmd, entry.setup(*cmd));
    }

    try {
        app.parse(argc, argv);
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

    try {
        for (const auto& [cmd, run] : commands) {
            if (cmd->parsed()) {
                return run();
            }
        }
        return sample();
    } catch (const std::exception& e) {
        report_error(e.what());
        return kExitBadData;
    }
}
