// `qv5 road convert IN OUT` writes a road in its other form (a road file as text, a road's JSON as
// a road file); `qv5 road name FILE` reads only a road file's name.
#include "args.h"
#include "commands.h"
#include "output.h"
#include "output_options.h"
#include "road_text.h"
#include "units_output.h"

#include "qv5/landxml.h"
#include "qv5/qv5lib.h"

#include <fmt/format.h>

#include <fstream>
#include <iostream>
#include <memory>
#include <optional>
#include <vector>

namespace qv5::cli {
namespace {

/// A road file or text the program cannot use: reported with the file's name, exit 2.
constexpr int kExitBadRoad = 2;

struct RoadFileOptions {
    std::string convert_in;
    std::string convert_out;
    std::string alignment;
    std::string name_file;
};

int bad_road(const std::string& file, const std::string& what) {
    report_error(file + ": " + what);
    return kExitBadRoad;
}

bool ends_with_xml(const std::string& path) {
    return path.size() >= 4 && lower(path.substr(path.size() - 4)) == ".xml";
}

/// LandXML is written in the user's distance unit (the saved choice, or --units for this run)
/// and in decimal degrees, or grads for a user who reads bearings in gons.
qv5::landxml::WriteOptions landxml_units() {
    const DisplayUnits show(output_options());
    qv5::landxml::WriteOptions options;
    if (!show.raw()) {
        switch (show.units().HorizontalDistance()) {
        case units_USSurveyFeet:
            options.linear = qv5::landxml::LinearUnit::USSurveyFoot;
            break;
        case units_InternationalFeet:
            options.linear = qv5::landxml::LinearUnit::Foot;
            break;
        default:
            break;
        }
        if (show.units().Bearings() == units_BearingGons) {
            options.angular = qv5::landxml::AngularUnit::Grads;
        }
    } else {
        options.angular = qv5::landxml::AngularUnit::Radians;
    }
    return options;
}

/// A road file becomes its text; a description, a road file's text or a LandXML alignment
/// becomes a road file; any road becomes LandXML when OUT ends in ".xml".
int convert(const RoadFileOptions& options) {
    CGeoRoad road;
    RoadForm form = RoadForm::description;
    std::vector<JobError> errors;
    if (!load_road(options.convert_in, road, form, errors, options.alignment)) {
        report_road_errors(options.convert_in, form, errors);
        return kExitBadRoad;
    }
    if (ends_with_xml(options.convert_out)) {
        std::ofstream out(options.convert_out, std::ios::binary | std::ios::trunc);
        out << qv5::landxml::write_road(road, landxml_units());
        if (!out.flush()) {
            return bad_road(options.convert_out, "cannot be written");
        }
        return 0;
    }
    if (form == RoadForm::road_file) {
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

int name(const RoadFileOptions& options) {
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

RoadFileRunner add_road_file_commands(CLI::App& road) {
    auto options = std::make_shared<RoadFileOptions>();
    CLI::App* convert_command = road.add_subcommand(
        "convert", "A road file to its text (JSON, value for value), or a road's JSON (its "
                   "description or a road file's text) to a road file");
    convert_command->add_option("in", options->convert_in, "road file, JSON or LandXML")
        ->required();
    convert_command
        ->add_option("out", options->convert_out, "file to write (LandXML when it ends in .xml)")
        ->required();
    convert_command->add_option("--alignment", options->alignment,
                                "The LandXML alignment to read, when IN holds several");
    CLI::App* name_command =
        road.add_subcommand("name", "A road file's road name, read from its header alone");
    name_command->add_option("file", options->name_file, "road file")->required();
    return [options, convert_command, name_command]() -> std::optional<int> {
        if (convert_command->parsed()) {
            return convert(*options);
        }
        if (name_command->parsed()) {
            return name(*options);
        }
        return std::nullopt;
    };
}

} // namespace qv5::cli
