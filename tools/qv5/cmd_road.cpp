// `qv5 road`: a road read from its JSON description (see docs/road-json.md), shown as the
// stationed alignment, the profile, the templates and their applications.
#include "commands.h"
#include "output.h"
#include "output_options.h"
#include "road_json.h"
#include "road_text.h"
#include "units_output.h"

#include "qv5/qv5lib.h"

#include <fmt/format.h>

#include <filesystem>
#include <iostream>
#include <string>
#include <vector>

namespace qv5::cli {
namespace {

struct RoadOptions {
    std::string file;
    std::string alignment; ///< of a LandXML file that holds several
    bool json = false;
    bool raw = false;
};

/// One horizontal element as shown.
struct ElementRow {
    georoad_HorzElementType type;
    double start_station;
    double end_station;
    geo_nee start;
    double azimuth; ///< the element's own entry azimuth
    double radius;  ///< `GEO_NULL` for a line
    const char* turn;
};

const char* type_name(georoad_HorzElementType type) {
    switch (type) {
    case georoad_Line:
        return "line";
    case georoad_Arc:
        return "arc";
    case georoad_EntrySpiral:
        return "entry-spiral";
    case georoad_ExitSpiral:
        return "exit-spiral";
    default:
        return "none";
    }
}

const char* turn_name(geodef_Direction direction) {
    return direction == geodef_Left ? "left" : "right";
}

/// A copy of the road's element n, of the class `Element` its type names.
template <class Element>
Element element_of(CGeoRoad& road, int n, georoad_HorzElementType type) {
    double station = 0.0;
    double azimuth = 0.0;
    CGeoPoint start;
    Element e;
    road.GetNthHorizontal(n, type, station, start, azimuth, &e);
    return e;
}

/// The entry azimuth, radius and turn of a curved element (arc or spiral) of type `Curve`.
template <class Curve>
void curve_of(CGeoRoad& road, int n, ElementRow& row) {
    Curve e = element_of<Curve>(road, n, row.type);
    row.azimuth = e.EntryAzimuth();
    row.radius = e.Radius();
    row.turn = turn_name(e.Direction());
}

ElementRow element_row(CGeoRoad& road, int n) {
    ElementRow row{road.NthHorizontalType(n),
                   road.HorzElementStartStation(n),
                   road.HorzElementEndStation(n),
                   road.HorzElementStartCoords(n),
                   GEO_NULL,
                   GEO_NULL,
                   ""};
    switch (row.type) {
    case georoad_Line:
        row.azimuth = element_of<CGeoLine>(road, n, row.type).GridAzimuth();
        break;
    case georoad_Arc:
        curve_of<CGeoArc>(road, n, row);
        break;
    case georoad_EntrySpiral:
        curve_of<CGeoEntrySpiral>(road, n, row);
        break;
    case georoad_ExitSpiral:
        curve_of<CGeoExitSpiral>(road, n, row);
        break;
    default:
        break;
    }
    return row;
}

/// One PVI as shown.
struct PviRow {
    georoad_VertElementType type;
    double station, elevation, at_pvi, grade_in, grade_out, curve_start, curve_end, length;
};

const char* pvi_name(georoad_VertElementType type) {
    switch (type) {
    case georoad_VertPoint:
        return "point";
    case georoad_VertParabola:
        return "parabola";
    case georoad_VertCircular:
        return "circular";
    default:
        return "none";
    }
}

PviRow pvi_row(CGeoRoad& road, int n) {
    PviRow row{road.NthVerticalType(n),
               GEO_NULL,
               GEO_NULL,
               GEO_NULL,
               GEO_NULL,
               GEO_NULL,
               GEO_NULL,
               GEO_NULL,
               GEO_NULL};
    road.GetNthVertical(n, row.type, row.station, row.elevation, row.at_pvi, row.grade_in,
                        row.grade_out, row.curve_start, row.curve_end, row.length);
    if (row.type == georoad_VertPoint) {
        row.curve_start = GEO_NULL;
        row.curve_end = GEO_NULL;
    }
    return row;
}

struct ApplicationRow {
    std::string name;
    double station;
    geodef_RoadSide side;
};

const char* side_name(geodef_RoadSide side) {
    switch (side) {
    case geodef_LeftSide:
        return "left";
    case geodef_RightSide:
        return "right";
    default:
        return "both";
    }
}

int curb_features(const CGeoTemplate& t) {
    int count = 0;
    for (int i = 0; i < t.NumberElements(); ++i) {
        count += t.NthElementType(i) == geotemp_FixedPoint ? 1 : 0;
    }
    return count;
}

int run_road(const RoadOptions& options) {
    CGeoRoad road;
    if (!load_road_or_report(options.file, road, options.alignment)) {
        return kExitBadArguments;
    }

    std::vector<ElementRow> elements;
    for (int i = 0; i < road.NumberHorizontalElements(); ++i) {
        elements.push_back(element_row(road, i));
    }
    std::vector<PviRow> pvis;
    for (int i = 0; i < road.NumberVerticalElements(); ++i) {
        pvis.push_back(pvi_row(road, i));
    }
    std::vector<CGeoTemplate> templates(static_cast<std::size_t>(road.NumberTemplates()));
    for (int i = 0; i < road.NumberTemplates(); ++i) {
        road.GetNthTemplate(i, &templates[static_cast<std::size_t>(i)]);
    }
    std::vector<ApplicationRow> applications;
    for (int i = 0; i < road.NumberTemplateApplications(); ++i) {
        CString name;
        ApplicationRow row{"", GEO_NULL, geodef_BothSides};
        if (road.GetNthTemplateApplication(i, name, row.station, row.side) != 0) {
            row.name = name.ToUtf8();
            applications.push_back(row);
        }
    }

    const DisplayUnits show(output_options());
    CGeoPoint& pob = road.StartPtHorizontal();
    if (options.json) {
        nlohmann::ordered_json out;
        out["name"] = road.Name().ToUtf8();
        out["start"] = {{"station", json_number(road.StartStationHorizontal())},
                        {"north", json_number(pob.Northing())},
                        {"east", json_number(pob.Easting())},
                        {"azimuth_rad", json_number(road.StartAzimuthHorizontal())}};
        out["end"] = {{"station", json_number(road.EndStationHorizontal())},
                      {"north", json_number(road.EndPtHorizontal().Northing())},
                      {"east", json_number(road.EndPtHorizontal().Easting())},
                      {"azimuth_rad", json_number(road.EndAzimuthHorizontal())}};
        out["station_interval"] = json_number(road.StationInterval());
        nlohmann::ordered_json alignment = nlohmann::ordered_json::array();
        for (const ElementRow& e : elements) {
            nlohmann::ordered_json row = {{"type", type_name(e.type)},
                                          {"start_station", json_number(e.start_station)},
                                          {"end_station", json_number(e.end_station)},
                                          {"north", json_number(e.start.north)},
                                          {"east", json_number(e.start.east)},
                                          {"azimuth_rad", json_number(e.azimuth)},
                                          {"radius", json_number(e.radius)}};
            if (e.type != georoad_Line) {
                row["direction"] = e.turn;
            }
            if (!show.raw()) {
                row["formatted"] = {{"start_station", show.station(e.start_station, 3)},
                                    {"end_station", show.station(e.end_station, 3)},
                                    {"azimuth", show.bearing(e.azimuth, 9)},
                                    {"radius", show.distance(e.radius, 3)}};
            }
            alignment.push_back(row);
        }
        out["alignment"] = alignment;
        nlohmann::ordered_json profile = nlohmann::ordered_json::array();
        for (const PviRow& p : pvis) {
            nlohmann::ordered_json row = {{"type", pvi_name(p.type)},
                                          {"station", json_number(p.station)},
                                          {"elevation", json_number(p.elevation)},
                                          {"grade_in_rad", json_number(p.grade_in)},
                                          {"grade_out_rad", json_number(p.grade_out)},
                                          {"curve_start", json_number(p.curve_start)},
                                          {"curve_end", json_number(p.curve_end)},
                                          {"length", json_number(p.length)}};
            if (!show.raw()) {
                row["formatted"] = {{"station", show.station(p.station, 3)},
                                    {"elevation", show.height(p.elevation, 3)},
                                    {"grade_in", show.grade(p.grade_in, 6)},
                                    {"grade_out", show.grade(p.grade_out, 6)}};
            }
            profile.push_back(row);
        }
        out["profile"] = profile;
        out["profile_start"] = json_number(road.StartStationVertical());
        out["profile_end"] = json_number(road.EndStationVertical());
        nlohmann::ordered_json library = nlohmann::ordered_json::array();
        for (const CGeoTemplate& t : templates) {
            library.push_back({{"name", t.Name().ToUtf8()},
                               {"elements", t.NumberElements()},
                               {"curb_features", curb_features(t)}});
        }
        out["templates"] = library;
        nlohmann::ordered_json uses = nlohmann::ordered_json::array();
        for (const ApplicationRow& a : applications) {
            nlohmann::ordered_json row = {{"station", json_number(a.station)},
                                          {"side", side_name(a.side)},
                                          {"template", a.name}};
            if (!show.raw()) {
                row["formatted"] = {{"station", show.station(a.station, 3)}};
            }
            uses.push_back(row);
        }
        out["applications"] = uses;
        if (!show.raw()) {
            out["units"] = show.description();
        }
        write_structured(out, format_name(output_options().format()));
        return 0;
    }

    std::cout << fmt::format("Road \"{}\"\n", road.Name().ToUtf8());
    std::cout << fmt::format(
        "Point of beginning  station {}  {} {}  {} {}\n",
        show.station(road.StartStationHorizontal(), 3), show.position(pob.Grid(), 3)[0].first,
        show.position(pob.Grid(), 3)[0].second, show.position(pob.Grid(), 3)[1].first,
        show.position(pob.Grid(), 3)[1].second);
    std::cout << fmt::format("Station interval    {}\n\n",
                             show.distance(road.StationInterval(), 3));

    std::cout << fmt::format("Horizontal alignment: {} elements, stations {} to {}\n",
                             elements.size(), show.station(road.StartStationHorizontal(), 3),
                             show.station(road.EndStationHorizontal(), 3));
    std::cout << fmt::format("{:>3}  {:<12}  {:>14}  {:>14}  {:>30}  {:>18}  {:>12}  {}\n", "#",
                             "Type", "Start", "End", "Start point", "Azimuth", "Radius", "Turn");
    for (std::size_t i = 0; i < elements.size(); ++i) {
        const ElementRow& e = elements[i];
        const auto at = show.position(e.start, 3);
        std::cout << fmt::format("{:>3}  {:<12}  {:>14}  {:>14}  {:>30}  {:>18}  {:>12}  {}\n", i,
                                 type_name(e.type), show.station(e.start_station, 3),
                                 show.station(e.end_station, 3), at[0].second + " " + at[1].second,
                                 show.bearing(e.azimuth, 9),
                                 e.type == georoad_Line ? "" : show.distance(e.radius, 3), e.turn);
    }
    std::cout << fmt::format("End point  {} {}  {} {}  azimuth {}\n\n",
                             show.position(road.EndPtHorizontal().Grid(), 3)[0].first,
                             show.position(road.EndPtHorizontal().Grid(), 3)[0].second,
                             show.position(road.EndPtHorizontal().Grid(), 3)[1].first,
                             show.position(road.EndPtHorizontal().Grid(), 3)[1].second,
                             show.bearing(road.EndAzimuthHorizontal(), 9));

    std::cout << fmt::format("Profile: {} PVIs\n", pvis.size());
    std::cout << fmt::format(
        "{:>3}  {:<9}  {:>14}  {:>11}  {:>11}  {:>11}  {:>14}  {:>14}  {:>10}\n", "#", "Type",
        "Station", "Elevation", "Grade in", "Grade out", "Curve start", "Curve end", "Length");
    for (std::size_t i = 0; i < pvis.size(); ++i) {
        const PviRow& p = pvis[i];
        const bool curve = p.type != georoad_VertPoint;
        std::cout << fmt::format(
            "{:>3}  {:<9}  {:>14}  {:>11}  {:>11}  {:>11}  {:>14}  {:>14}  {:>10}\n", i,
            pvi_name(p.type), show.station(p.station, 3), show.height(p.elevation, 3),
            show.grade(p.grade_in, 4), show.grade(p.grade_out, 4),
            curve ? show.station(p.curve_start, 3) : "", curve ? show.station(p.curve_end, 3) : "",
            curve ? show.distance(p.length, 3) : "");
    }
    std::cout << '\n';

    std::cout << fmt::format("Templates: {}\n", templates.size());
    for (std::size_t i = 0; i < templates.size(); ++i) {
        std::cout << fmt::format("{:>3}  {}  ({} elements, {} curb features)\n", i,
                                 templates[i].Name().ToUtf8(), templates[i].NumberElements(),
                                 curb_features(templates[i]));
    }
    std::cout << '\n';
    std::cout << fmt::format("Template applications: {}\n", applications.size());
    std::cout << fmt::format("{:>3}  {:>14}  {:<5}  {}\n", "#", "From station", "Side", "Template");
    for (std::size_t i = 0; i < applications.size(); ++i) {
        const ApplicationRow& a = applications[i];
        std::cout << fmt::format("{:>3}  {:>14}  {:<5}  {}\n", i, show.station(a.station, 3),
                                 side_name(a.side), a.name);
    }
    std::cout << '\n' << show.legend() << '\n';
    return 0;
}

} // namespace

CommandRunner add_road_options(CLI::App& command) {
    auto options = std::make_shared<RoadOptions>();
    CLI::App* cmd = &command;
    cmd->add_option("file", options->file,
                    "Road description (JSON, see docs/road-json.md), road file, a road file's "
                    "text, or LandXML (told apart by content)");
    cmd->add_option("--alignment", options->alignment,
                    "The alignment to read from a LandXML file that holds several");
    const RoadFileRunner file_commands = add_road_file_commands(*cmd);
    return [options, file_commands]() {
        if (const std::optional<int> code = file_commands()) {
            return *code;
        }
        if (options->file.empty()) {
            report_error("road: a road file or description is needed (run 'qv5 road --help')");
            return kExitBadArguments;
        }
        options->json = output_options().format() != OutputFormat::table;
        options->raw = output_options().raw;
        return run_road(*options);
    };
}

} // namespace qv5::cli

QV5_COMMAND("road",
            "A road read from its JSON description: the stationed alignment, the profile, "
            "the templates and their applications",
            qv5::cli::add_road_options);
