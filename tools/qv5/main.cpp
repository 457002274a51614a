// qv5: the library's command-line program. With no arguments it stakes the bundled sample shots
// against the bundled sample road.
#include "commands.h"
#include "output.h"

#include <CLI/CLI.hpp>

#include <exception>
#include <iostream>

int main(int argc, char** argv) {
    using namespace qv5::cli;
    CLI::App app{"qv5 - survey and road-design computations with QV5lib", "qv5"};
    app.set_version_flag("--version", QV5_VERSION);
    app.require_subcommand(0, 1);

    const CommandRunner sample = add_sample_command(*app.add_subcommand(
        "straight", "Reduce instrument observations and place them against a straight"));
    const CommandRunner stake = add_stake_command(app);
    const CommandRunner stake_sample = add_default_stake(app);
    const CommandRunner inverse = add_inverse_command(app);
    const CommandRunner follow = add_follow_command(app);
    const CommandRunner calibrate = add_calibrate_command(app);
    const CommandRunner convert = add_convert_command(app);
    const CommandRunner element = add_element_command(app);
    const CommandRunner units = add_units_command(app);
    const CommandRunner templ = add_template_command(app);
    const CommandRunner road = add_road_command(app);

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
        if (app.got_subcommand("inverse")) {
            return inverse();
        }
        if (app.got_subcommand("follow")) {
            return follow();
        }
        if (app.got_subcommand("calibrate")) {
            return calibrate();
        }
        if (app.got_subcommand("convert")) {
            return convert();
        }
        if (app.got_subcommand("element")) {
            return element();
        }
        if (app.got_subcommand("units")) {
            return units();
        }
        if (app.got_subcommand("template")) {
            return templ();
        }
        if (app.got_subcommand("road")) {
            return road();
        }
        if (app.got_subcommand("straight")) {
            return sample();
        }
        if (app.got_subcommand("stake")) {
            return stake();
        }
        return stake_sample();
    } catch (const std::exception& e) {
        report_error(e.what());
        return kExitBadData;
    }
}
