// `qv5 element`: one alignment element - a straight, an arc, an entry or an exit spiral - given
// on the command line, evaluated at a station and offset or inverted for a given point.
#include "args.h"
#include "commands.h"
#include "output.h"
#include "output_options.h"
#include "units_output.h"

#include "qv5/qv5lib.h"

#include <fmt/format.h>

#include <array>
#include <cctype>
#include <cmath>
#include <iostream>
#include <memory>
#include <numbers>
#include <optional>
#include <string>
#include <vector>

namespace qv5::cli {
namespace {

/// Series and search tolerance for spirals unless --tolerance says otherwise, metres: the one
/// the library uses for a spiral's end point.
constexpr double kDefaultTolerance = 1e-5;

enum class Kind { Line, Arc, EntrySpiral, ExitSpiral };

const char* name_of(Kind kind) {
    switch (kind) {
    case Kind::Line:
        return "line";
    case Kind::Arc:
        return "arc";
    case Kind::EntrySpiral:
        return "entry-spiral";
    case Kind::ExitSpiral:
        return "exit-spiral";
    }
    return "";
}

/// Everything typed on the command line, as text until it is checked.
struct ElementOptions {
    Kind kind = Kind::Line;
    std::string start;
    std::string azimuth;
    std::string length;
    std::string radius;
    std::string direction;
    std::string grade;
    std::string at;
    std::string offset;
    std::string point;
    std::string from;
    std::string tolerance;
    bool degrees = false;
};

/// The checked values.
struct Element {
    Kind kind = Kind::Line;
    geo_nee start{GEO_NULL, GEO_NULL, GEO_NULL};
    double azimuth = 0.0;
    double length = 0.0;
    double radius = 0.0;
    geodef_Direction direction = geodef_Right;
    double grade = 0.0;
    double tolerance = kDefaultTolerance;
};

struct Query {
    bool locate = false; // a point to find, rather than a station to go to
    double station = 0.0;
    double offset = 0.0;
    geo_nee point{GEO_NULL, GEO_NULL, GEO_NULL};
    std::optional<double> from;
};

/// What the element answers.
struct Answer {
    double station = GEO_NULL;
    double offset = GEO_NULL;
    double azimuth = GEO_NULL;
    geo_nee point{GEO_NULL, GEO_NULL, GEO_NULL};
};

/// Collects one line per bad argument.
class Problems {
public:
    void add(const std::string& message) { m_lines.push_back("element: " + message); }
    bool any() const { return !m_lines.empty(); }
    void report() const {
        for (const std::string& line : m_lines) {
            report_error(line);
        }
    }

private:
    std::vector<std::string> m_lines;
};

std::optional<double> number(const std::string& name, const std::string& text, Problems& problems) {
    double value = 0.0;
    if (!parse_number(text, value)) {
        problems.add(not_a_number(name, text));
        return std::nullopt;
    }
    return value;
}

/// A required number that must be positive.
void positive(const std::string& name, const std::string& text, double& value, Problems& problems) {
    if (text.empty()) {
        problems.add("argument '" + name + "' is missing");
        return;
    }
    if (const auto v = number(name, text, problems)) {
        if (*v > 0.0) {
            value = *v;
        } else {
            problems.add("argument '" + name + "': '" + text + "' must be greater than 0");
        }
    }
}

/// "N,E" or "N,E,Z" in metres; a missing elevation stays `GEO_NULL`.
std::optional<geo_nee> coordinates(const std::string& name, const std::string& text,
                                   Problems& problems) {
    std::vector<std::string> parts;
    std::size_t begin = 0;
    while (true) {
        const std::size_t comma = text.find(',', begin);
        parts.push_back(text.substr(begin, comma - begin));
        if (comma == std::string::npos) {
            break;
        }
        begin = comma + 1;
    }
    geo_nee grid{GEO_NULL, GEO_NULL, GEO_NULL};
    double* fields[] = {&grid.north, &grid.east, &grid.elev};
    bool ok = parts.size() == 2 || parts.size() == 3;
    for (std::size_t i = 0; ok && i < parts.size(); ++i) {
        ok = parse_number(parts[i], *fields[i]);
    }
    if (!ok) {
        problems.add("argument '" + name + "': '" + text +
                     "' is not NORTH,EAST or NORTH,EAST,ELEVATION in numbers");
        return std::nullopt;
    }
    return grid;
}

bool is_curve(Kind kind) {
    return kind != Kind::Line;
}

bool is_spiral(Kind kind) {
    return kind == Kind::EntrySpiral || kind == Kind::ExitSpiral;
}

std::optional<geodef_Direction> direction_of(const std::string& text) {
    const std::string name = lower(text);
    if (name == "left" || name == "l") {
        return geodef_Left;
    }
    if (name == "right" || name == "r") {
        return geodef_Right;
    }
    return std::nullopt;
}

/// Checks every argument, reporting each bad one; fills the element and the query.
bool read_arguments(const ElementOptions& o, Element& element, Query& query) {
    Problems problems;
    element.kind = o.kind;
    const double angle_unit = o.degrees ? kRadiansPerDegree : 1.0;

    if (o.start.empty()) {
        problems.add("argument 'start' is missing");
    } else if (const auto grid = coordinates("start", o.start, problems)) {
        element.start = *grid;
    }
    if (o.azimuth.empty()) {
        problems.add("argument 'azimuth' is missing");
    } else if (const auto a = number("azimuth", o.azimuth, problems)) {
        element.azimuth = *a * angle_unit;
    }
    positive("length", o.length, element.length, problems);
    if (is_curve(o.kind)) {
        positive("radius", o.radius, element.radius, problems);
        if (o.direction.empty()) {
            problems.add("argument 'direction' is missing");
        } else if (const auto d = direction_of(o.direction)) {
            element.direction = *d;
        } else {
            problems.add("argument 'direction': '" + o.direction + "' is not left or right");
        }
    }
    if (!o.grade.empty()) {
        if (const auto g = number("grade", o.grade, problems)) {
            element.grade = *g * angle_unit;
        }
    }
    if (!o.tolerance.empty()) {
        positive("tolerance", o.tolerance, element.tolerance, problems);
    }

    if (o.at.empty() == o.point.empty()) {
        problems.add(o.at.empty() ? "give --at STATION (with --offset) or --point NORTH,EAST"
                                  : "give either --at or --point, not both");
    } else if (!o.at.empty()) {
        if (const auto s = number("at", o.at, problems)) {
            query.station = *s;
        }
        if (!o.offset.empty()) {
            if (const auto off = number("offset", o.offset, problems)) {
                query.offset = *off;
            }
        }
        if (!o.from.empty()) {
            problems.add("argument 'from' goes with --point, not --at");
        }
    } else {
        query.locate = true;
        if (const auto grid = coordinates("point", o.point, problems)) {
            query.point = *grid;
        }
        if (!o.offset.empty()) {
            problems.add("argument 'offset' goes with --at, not --point");
        }
        if (!o.from.empty()) {
            if (const auto f = number("from", o.from, problems)) {
                query.from = *f;
            }
        }
    }
    if (problems.any()) {
        problems.report();
        return false;
    }
    return true;
}

/// The point `offset` metres square to the right of `azimuth` from `on_line`.
geo_nee square_off(CGeoPoint& on_line, double azimuth, double offset) {
    CGeoLine square;
    square.Set(on_line, azimuth + std::numbers::pi / 2, offset, 0.0);
    return square.EndPt().Grid();
}

/// A continuing arc, as the spirals build it, to tell the tangent azimuth beyond their ends.
double arc_azimuth(CGeoPoint& from, double azimuth, double radius, geodef_Direction direction,
                   double distance) {
    CGeoArc arc;
    arc.Set(from, azimuth, radius, radius * 0.5, direction, 0.0);
    return arc.GridAzimuth(distance);
}

/// Tangent azimuth on a spiral or its continuation: the straight or the arc beyond its ends.
template <class Spiral>
double spiral_tangent(Spiral& spiral, double station) {
    constexpr bool entry = std::is_same_v<Spiral, CGeoEntrySpiral>;
    const double length = spiral.Length();
    if (entry && station > length) {
        return arc_azimuth(spiral.EndPt(), spiral.ExitAzimuth(), spiral.Radius(),
                           spiral.Direction(), station - length);
    }
    if (!entry && station < 0.0) {
        return arc_azimuth(spiral.StartPt(), spiral.EntryAzimuth(), spiral.Radius(),
                           spiral.Direction(), station);
    }
    return spiral.GridAzimuth(station);
}

template <class Spiral>
bool evaluate_spiral(const Element& e, const Query& q, Answer& answer, std::string& why) {
    CGeoPoint start(e.start);
    Spiral spiral;
    spiral.Set(start, e.azimuth, e.direction, e.radius, e.length);
    if (q.locate) {
        CGeoPoint p(q.point);
        double from = 0.0;
        if (q.from) {
            from = *q.from;
        } else if (spiral.EndPt().Ok2DGrid() != 0) {
            // Where the point falls along the chord: close to its station on any usable spiral.
            CGeoLine chord(start, spiral.EndPt());
            from = chord.GridStation(p);
        }
        spiral.GridDeltas(p, from, e.tolerance, answer.station, answer.offset, answer.azimuth);
        if (answer.station == GEO_NULL) {
            why = fmt::format("no station found for the point: the search from station {} did "
                              "not converge in 20 steps (try --from nearer the point)",
                              fixed(from, 3));
            return false;
        }
        return true;
    }
    CGeoPoint on_line;
    spiral.GridHorzPoint(q.station, e.tolerance, on_line);
    if (on_line.Ok2DGrid() == 0) {
        why = "the spiral gives no point there: its series does not converge that far along "
              "(the spiral is too long for its radius)";
        return false;
    }
    answer.station = q.station;
    answer.offset = q.offset;
    answer.azimuth = spiral_tangent(spiral, q.station);
    answer.point = square_off(on_line, answer.azimuth, q.offset);
    return true;
}

bool evaluate(const Element& e, const Query& q, Answer& answer, std::string& why) {
    CGeoPoint start(e.start);
    switch (e.kind) {
    case Kind::Line: {
        CGeoLine line;
        line.Set(start, e.azimuth, e.length, e.grade);
        answer.azimuth = line.GridAzimuth();
        if (q.locate) {
            CGeoPoint p(q.point);
            answer.station = line.GridStation(p);
            answer.offset = line.GridOffset(p);
        } else {
            CGeoPoint result;
            line.GridHorzOffsetPoint(q.station, q.offset, result);
            answer.station = q.station;
            answer.offset = q.offset;
            answer.point = result.Grid();
        }
        return true;
    }
    case Kind::Arc: {
        CGeoArc arc;
        arc.Set(start, e.azimuth, e.radius, e.length, e.direction, 0.0);
        if (q.locate) {
            CGeoPoint p(q.point);
            arc.GridDeltas(p, answer.station, answer.offset, answer.azimuth);
            return true;
        }
        CGeoPoint on_arc;
        arc.GridHorzPoint(q.station, on_arc);
        answer.station = q.station;
        answer.offset = q.offset;
        answer.azimuth = arc.GridAzimuth(q.station);
        answer.point = square_off(on_arc, answer.azimuth, q.offset);
        return true;
    }
    case Kind::EntrySpiral:
        return evaluate_spiral<CGeoEntrySpiral>(e, q, answer, why);
    case Kind::ExitSpiral:
        return evaluate_spiral<CGeoExitSpiral>(e, q, answer, why);
    }
    return false;
}

std::string describe(const Element& e, const DisplayUnits& show) {
    const char* turn = e.direction == geodef_Right ? "right" : "left";
    const std::string radius = show.distance(e.radius, 3);
    const std::string length = show.distance(e.length, 3);
    switch (e.kind) {
    case Kind::Line:
        return fmt::format("Straight, {}", length);
    case Kind::Arc:
        return fmt::format("Arc turning {}, radius {}, {} long", turn, radius, length);
    case Kind::EntrySpiral:
        return fmt::format("Entry spiral turning {} onto radius {}, {} long", turn, radius, length);
    case Kind::ExitSpiral:
        return fmt::format("Exit spiral turning {} off radius {}, {} long", turn, radius, length);
    }
    return "";
}

const char* side_of(double offset) {
    if (offset == GEO_NULL || offset == 0.0) {
        return "";
    }
    return offset > 0.0 ? " (right)" : " (left)";
}

int run_element(const ElementOptions& options) {
    Element element;
    Query query;
    if (!read_arguments(options, element, query)) {
        return kExitBadArguments;
    }
    Answer answer;
    std::string why;
    if (!evaluate(element, query, answer, why)) {
        report_error("element: " + why);
        return kExitBadData;
    }
    const bool with_elevation = element.start.elev != GEO_NULL;
    if (!check_results(
            "element",
            {{"station", answer.station}, {"offset", answer.offset}, {"azimuth", answer.azimuth}},
            "the element gives no finite answer there") ||
        (!query.locate && !check_results("element",
                                         {{"north", answer.point.north},
                                          {"east", answer.point.east},
                                          {"elevation", with_elevation ? answer.point.elev : 0.0}},
                                         "the element gives no finite answer there"))) {
        return kExitBadData;
    }
    const DisplayUnits show(output_options());
    const OutputFormat format = output_options().format();
    if (format != OutputFormat::table) {
        nlohmann::ordered_json out = {{"element", name_of(element.kind)},
                                      {"station", json_number(answer.station)},
                                      {"offset", json_number(answer.offset)},
                                      {"azimuth_rad", json_number(answer.azimuth)}};
        if (!query.locate) {
            out["north"] = json_number(answer.point.north);
            out["east"] = json_number(answer.point.east);
            out["elevation"] = json_number(answer.point.elev);
        }
        if (!show.raw()) {
            nlohmann::ordered_json formatted = {{"station", show.station(answer.station, 4)},
                                                {"offset", show.distance(answer.offset, 4)},
                                                {"azimuth", show.bearing(answer.azimuth, 9)}};
            if (!query.locate) {
                formatted["north"] = show.distance(answer.point.north, 4);
                formatted["east"] = show.distance(answer.point.east, 4);
                formatted["elevation"] = show.height(answer.point.elev, 4);
            }
            out["formatted"] = formatted;
            out["units"] = show.description();
        }
        write_structured(out, format_name(format));
        return 0;
    }
    std::cout << describe(element, show) << '\n'
              << fmt::format("{:<11}{}\n", "Station", show.station(answer.station, 4))
              << fmt::format("{:<11}{}{}\n", "Offset", show.distance(answer.offset, 4),
                             side_of(answer.offset));
    if (!query.locate) {
        for (const auto& [label, text] : show.position(answer.point, 4)) {
            std::cout << fmt::format("{:<11}{}\n", label, text);
        }
    }
    std::cout << fmt::format("{:<11}{} (tangent)\n", "Azimuth", show.bearing(answer.azimuth, 9));
    return 0;
}

void add_kind(CLI::App& parent, Kind kind, const char* description,
              const std::shared_ptr<ElementOptions>& options) {
    CLI::App* cmd = parent.add_subcommand(name_of(kind), description);
    cmd->callback([options, kind] { options->kind = kind; });
    cmd->add_option("--start", options->start,
                    "Start point NORTH,EAST[,ELEVATION], metres (e.g. --start=-120.5,300)");
    cmd->add_option("--azimuth", options->azimuth,
                    "Tangent azimuth at the start, radians (degrees with --degrees)");
    cmd->add_option("--length", options->length,
                    kind == Kind::Line ? "Horizontal length, metres" : "Length along it, metres");
    if (kind == Kind::Line) {
        cmd->add_option("--grade", options->grade,
                        "Grade as an angle of elevation, radians (degrees with --degrees); "
                        "default 0");
    } else {
        cmd->add_option("--radius", options->radius,
                        kind == Kind::Arc ? "Radius, metres"
                                          : "Radius of the arc it joins, metres");
        cmd->add_option("--direction", options->direction, "Which way it turns: left or right");
    }
    if (is_spiral(kind)) {
        cmd->add_option("--tolerance", options->tolerance,
                        "Series and search tolerance, metres; default 1e-5");
        cmd->add_option("--from", options->from,
                        "With --point: station to start the search from; default the point's "
                        "station along the chord");
    }
    cmd->add_option("--at", options->at, "Station from the start, metres");
    cmd->add_option("--offset", options->offset,
                    "With --at: offset, metres, positive to the right; default 0");
    cmd->add_option("--point", options->point,
                    "A point NORTH,EAST[,ELEVATION] to find the station and offset of");
    cmd->add_flag("--degrees", options->degrees,
                  "Azimuth and grade given in decimal degrees instead of radians");
    add_output_options(*cmd);
}

} // namespace

CommandRunner add_element_options(CLI::App& element) {
    auto options = std::make_shared<ElementOptions>();
    element.require_subcommand(1);
    add_kind(element, Kind::Line, "A straight", options);
    add_kind(element, Kind::Arc, "A circular arc", options);
    add_kind(element, Kind::EntrySpiral, "A transition spiral from a straight onto an arc",
             options);
    add_kind(element, Kind::ExitSpiral, "A transition spiral from an arc onto a straight", options);
    return [options] { return run_element(*options); };
}

} // namespace qv5::cli

QV5_COMMAND("element",
            "One alignment element: the point at a station and offset, or the station "
            "and offset of a point (given in metres and radians; shown in the units chosen "
            "with 'qv5 units')",
            qv5::cli::add_element_options);
