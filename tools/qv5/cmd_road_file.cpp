// `qv5 road`: a road read from its road file or its JSON (chosen by content), shown; `qv5 road
// convert IN OUT` writes the other form; `qv5 road name FILE` reads only the name.
#include "commands.h"
#include "output.h"
#include "road_text.h"

#include "qv5/qv5lib.h"

#include <fmt/format.h>

#include <fstream>
#include <iostream>
#include <memory>

namespace qv5::cli {
namespace {

/// A road file or JSON the program cannot use: reported with the file's name, exit 2.
constexpr int kExitBadRoad = 2;

struct RoadOptions {
    std::string file;
    std::string convert_in;
    std::string convert_out;
    std::string name_file;
    bool json = false;
};

int bad_road(const std::string& file, const std::string& what) {
    report_error(file + ": " + what);
    return kExitBadRoad;
}

int show(const RoadOptions& options) {
    CGeoRoad road;
    std::string error;
    if (!load_road(options.file, road, error)) {
        return bad_road(options.file, error);
    }
    if (options.json) {
        std::cout << road_to_json(road).dump(2) << '\n';
        return 0;
    }
    std::cout << fmt::format("Road \"{}\"\n", road.Name().ToUtf8());
    std::cout << fmt::format("  horizontal elements  {}", road.NumberHorizontalElements());
    if (road.NumberHorizontalElements() > 0) {
        std::cout << fmt::format(", stations {} to {} m", fixed(road.StartStationHorizontal(), 3),
                                 fixed(road.EndStationHorizontal(), 3));
    }
    std::cout << fmt::format("\n  PVIs                 {}\n", road.NumberVerticalElements());
    std::cout << fmt::format("  templates            {}\n", road.NumberTemplates());
    std::cout << fmt::format("  applications         {}\n", road.NumberTemplateApplications());
    return 0;
}

int convert(const RoadOptions& options) {
    std::ifstream probe(options.convert_in, std::ios::binary);
    char head[11] = {};
    probe.read(head, sizeof head);
    const bool from_file =
        looks_like_road_file(std::string(head, static_cast<std::size_t>(probe.gcount())));
    CGeoRoad road;
    std::string error;
    if (!load_road(options.convert_in, road, error)) {
        return bad_road(options.convert_in, error);
    }
    if (from_file) {
        std::ofstream out(options.convert_out, std::ios::binary | std::ios::trunc);
        out << road_to_json(road).dump(2) << '\n';
        if (!out.flush()) {
            return bad_road(options.convert_out, "cannot be written");
        }
        return 0;
    }
    if (!save_road_file(options.convert_out, road)) {
        return bad_road(options.convert_out, "cannot be written");
    }
    return 0;
}

int name(const RoadOptions& options) {
    const CString path = CString::FromUtf8(options.name_file);
    unsigned short units[33] = {};
    if (georoad_GetInternalName(path.GetString(), units)) {
        std::cout << CString(units).ToUtf8() << '\n';
        return 0;
    }
    // Say why: the header alone is enough for the reader to tell.
    std::ifstream in(options.name_file, std::ios::binary);
    if (!in) {
        return bad_road(options.name_file, "cannot be opened");
    }
    char header[218] = {};
    in.read(header, sizeof header);
    CGeoRoad road;
    georoad_FileReport report{};
    road.ReadBytes(reinterpret_cast<const unsigned char*>(header),
                   static_cast<std::size_t>(in.gcount()), nullptr, &report);
    if (report.problem == georoad_FileOk || report.problem >= georoad_FileRecordOutside) {
        return bad_road(options.name_file, "cannot be read");
    }
    return bad_road(options.name_file, describe_road_file_problem(report));
}

} // namespace

CommandRunner add_road_command(CLI::App& app) {
    auto options = std::make_shared<RoadOptions>();
    CLI::App* command = app.add_subcommand(
        "road",
        "A road from its road file or its JSON (chosen by content): shown, converted, named");
    command->require_subcommand(0, 1);
    command->add_option("file", options->file, "road file or JSON");
    command->add_flag("--json", options->json, "the road as JSON, value for value its road file");
    CLI::App* convert_command = command->add_subcommand(
        "convert", "Road file to JSON or JSON to road file (the other form of what IN holds)");
    convert_command->add_option("in", options->convert_in, "road file or JSON")->required();
    convert_command->add_option("out", options->convert_out, "file to write")->required();
    CLI::App* name_command =
        command->add_subcommand("name", "The road's name, read from the file's header alone");
    name_command->add_option("file", options->name_file, "road file")->required();
    return [options, convert_command, name_command]() {
        if (convert_command->parsed()) {
            return convert(*options);
        }
        if (name_command->parsed()) {
            return name(*options);
        }
        if (options->file.empty()) {
            report_error("road: give a road file or JSON (run 'qv5 road --help' for usage)");
            return kExitBadArguments;
        }
        return show(*options);
    };
}

} // namespace qv5::cli
