// Reading a LandXML alignment into a road.
//
// Real exports differ from program to program, so the reader trusts no one program's habits:
// element names are matched without their namespace prefix (LandXML 1.0, 1.1 and 1.2 name the
// elements alike), every number is checked, and geometry is taken from coordinates wherever an
// element gives them. A dimension given beside the coordinates (a radius, a length, a
// direction) is compared with what the coordinates say, and a disagreement beyond the
// tolerance is a warning with the element's line and station. The road is built through its
// own edit operations (SetPOBInfo, AddHorizontal, AddVertical), so every rule of the road
// applies to what is read.
#include "exchange/landxml_text.h"
#include "qv5/geoarc.h"
#include "qv5/geoline.h"
#include "qv5/geopoint.h"
#include "qv5/geospiral.h"
#include "qv5/hostfw.h"

#include <pugixml.hpp>

#include <cmath>
#include <cstring>
#include <string>

namespace qv5::landxml {

namespace {

using detail::AngleForm;

/// The shortest element, and the smallest radius, a road read from LandXML may have: a
/// micrometre. A shorter element's points coincide once written, so the road would not read back
/// from what it writes. The largest radius is detail::kLargestMeasure: beyond it a curve's centre
/// is too far away for its angle to be told from its points.
constexpr double kShortestElement = 1e-6;

/// A length or radius between kShortestElement and detail::kLargestMeasure.
bool sensible_size(double value) {
    return value >= kShortestElement && value <= detail::kLargestMeasure;
}

/// Station interval given to a road read from LandXML, which has no such setting: even
/// stations every 20 m, the usual staking interval.
constexpr double kDefaultStationInterval = 20.0;

/// The element's name without a namespace prefix.
std::string_view local_name(const pugi::xml_node& node) {
    std::string_view name = node.name();
    const auto colon = name.find(':');
    return colon == std::string_view::npos ? name : name.substr(colon + 1);
}

/// Whether the zero-terminated `full` name, less any namespace prefix, is `name` (letter case
/// ignored when `any_case`). The names of every element and attribute are matched on every
/// look-up, so the comparison stops at the first differing letter instead of measuring them.
bool local_name_is(const char* full, std::string_view name, bool any_case) {
    const char* local = full;
    for (const char* p = full; *p != '\0'; ++p) {
        if (*p == ':') {
            local = p + 1;
        }
    }
    const auto fold = [any_case](char c) {
        return any_case && c >= 'A' && c <= 'Z' ? char(c - 'A' + 'a') : c;
    };
    std::size_t i = 0;
    for (; i < name.size(); ++i) {
        if (local[i] == '\0' || fold(local[i]) != fold(name[i])) {
            return false;
        }
    }
    return local[i] == '\0';
}

bool is(const pugi::xml_node& node, std::string_view name) {
    return node.type() == pugi::node_element && local_name_is(node.name(), name, false);
}

pugi::xml_node child(const pugi::xml_node& node, std::string_view name) {
    for (pugi::xml_node c = node.first_child(); c; c = c.next_sibling()) {
        if (is(c, name)) {
            return c;
        }
    }
    return {};
}

/// An attribute by name, ignoring a namespace prefix and letter case (exports differ on both).
pugi::xml_attribute attribute(const pugi::xml_node& node, std::string_view name) {
    for (pugi::xml_attribute a = node.first_attribute(); a; a = a.next_attribute()) {
        if (local_name_is(a.name(), name, true)) {
            return a;
        }
    }
    return {};
}

struct Units {
    double metres = 1.0;
    AngleForm angles = AngleForm::Degrees;
    AngleForm directions = AngleForm::Degrees;
};

struct Point {
    double north = 0.0;
    double east = 0.0;
};

double distance(const Point& a, const Point& b) {
    return std::hypot(a.north - b.north, a.east - b.east);
}

double bearing(const Point& from, const Point& to) {
    return detail::normalised(std::atan2(to.east - from.east, to.north - from.north));
}

CGeoPoint grid_point(const Point& p) {
    CGeoPoint point;
    point.SetGrid(p.north, p.east, GEO_NULL);
    return point;
}

Point plan_of(CGeoPoint& point) {
    const geo_nee& g = point.Grid();
    return {g.north, g.east};
}

/// The reader of one document: the parsed tree, its line index and the findings so far.
class Reader {
public:
    Reader(std::string_view xml, ReadResult& result)
        : m_text(xml), m_lines(xml), m_result(result) {}

    bool parse() {
        const pugi::xml_parse_result parsed = m_doc.load_buffer(
            m_text.data(), m_text.size(), pugi::parse_default, pugi::encoding_auto);
        if (!parsed) {
            error(m_lines.line_of(parsed.offset), "",
                  std::string("not well-formed XML: ") + parsed.description());
            return false;
        }
        m_root = m_doc.document_element();
        if (!m_root || local_name(m_root) != "LandXML") {
            error(m_root ? line(m_root) : 0, m_root ? std::string(local_name(m_root)) : "",
                  "the document's root element is not LandXML");
            return false;
        }
        return read_units();
    }

    void list() {
        for (pugi::xml_node group = m_root.first_child(); group; group = group.next_sibling()) {
            if (!is(group, "Alignments")) {
                continue;
            }
            for (pugi::xml_node a = group.first_child(); a; a = a.next_sibling()) {
                if (!is(a, "Alignment")) {
                    continue;
                }
                AlignmentSummary summary;
                summary.name = a.attribute("name").value();
                summary.line = line(a);
                summary.start_station = 0.0;
                if (const auto sta = detail::parse_number(attribute(a, "staStart").value())) {
                    summary.start_station = *sta * m_units.metres;
                }
                for (pugi::xml_node e = child(a, "CoordGeom").first_child(); e;
                     e = e.next_sibling()) {
                    if (e.type() == pugi::node_element) {
                        ++summary.horizontal_elements;
                    }
                }
                for (pugi::xml_node e = first_profile(a).first_child(); e; e = e.next_sibling()) {
                    if (e.type() == pugi::node_element) {
                        ++summary.profile_points;
                    }
                }
                m_alignments.push_back(a);
                m_result.alignments.push_back(summary);
            }
        }
    }

    /// The alignment to read: by name, or the only one.
    pugi::xml_node choose(const std::string& name) {
        if (m_alignments.empty()) {
            error(line(m_root), "LandXML", "the file holds no <Alignments>/<Alignment>");
            return {};
        }
        if (name.empty()) {
            if (m_alignments.size() == 1) {
                return m_alignments.front();
            }
            error(0, "Alignments",
                  "the file holds " + std::to_string(m_alignments.size()) +
                      " alignments; name the one to read");
            return {};
        }
        for (const pugi::xml_node& a : m_alignments) {
            if (name == a.attribute("name").value()) {
                return a;
            }
        }
        error(0, "Alignments", "the file holds no alignment named \"" + name + "\"");
        return {};
    }

    bool read(const pugi::xml_node& alignment, CGeoRoad& road, double tolerance) {
        m_tolerance = tolerance;
        road.Reset();
        const std::string name = alignment.attribute("name").value();
        road.SetName(CString(name.c_str()));
        double start_station = 0.0;
        if (!number(alignment, "staStart", m_units.metres, start_station, false)) {
            return false;
        }
        m_station = start_station;
        bool ok = read_geometry(child(alignment, "CoordGeom"), road, start_station);
        ok = ok && within_reach(child(alignment, "CoordGeom"), road);
        ok = ok && read_profile(alignment, road);
        if (ok) {
            check_length(alignment, road);
        }
        return ok;
    }

private:
    int line(const pugi::xml_node& node) const { return m_lines.line_of(node.offset_debug()); }

    void error(int at, std::string element, std::string text) {
        m_result.errors.push_back({at, std::move(element), m_station, detail::escaped(text)});
    }

    void warning(const pugi::xml_node& node, std::string text) {
        m_result.warnings.push_back(
            {line(node), std::string(local_name(node)), m_station, detail::escaped(text)});
    }

    void error(const pugi::xml_node& node, std::string text) {
        error(line(node), std::string(local_name(node)), std::move(text));
    }

    bool read_units() {
        const pugi::xml_node units = child(m_root, "Units");
        pugi::xml_node system = child(units, "Metric");
        if (!system) {
            system = child(units, "Imperial");
        }
        if (!system) {
            return true; // LandXML's defaults: metres and decimal degrees
        }
        if (const pugi::xml_attribute a = attribute(system, "linearUnit")) {
            const auto metres = detail::metres_per_unit(a.value());
            if (!metres) {
                error(system, std::string("unknown linearUnit \"") + a.value() + "\"");
                return false;
            }
            m_units.metres = *metres;
        }
        const auto angle = [&](const char* name, AngleForm& form) {
            if (const pugi::xml_attribute a = attribute(system, name)) {
                const auto found = detail::angle_form(a.value());
                if (!found) {
                    error(system, std::string("unknown ") + name + " \"" + a.value() + "\"");
                    return false;
                }
                form = *found;
            }
            return true;
        };
        return angle("angularUnit", m_units.angles) && angle("directionUnit", m_units.directions);
    }

    /// An optional numeric attribute times `scale`; false (with an error) when it is present but
    /// not a finite number. `value` is left alone when the attribute is absent.
    bool number(const pugi::xml_node& node, const char* name, double scale, double& value,
                bool allow_infinite, bool* present = nullptr) {
        const pugi::xml_attribute a = attribute(node, name);
        if (present != nullptr) {
            *present = static_cast<bool>(a);
        }
        if (!a) {
            return true;
        }
        const auto parsed = detail::parse_number(a.value(), allow_infinite);
        if (!parsed) {
            error(node,
                  std::string("attribute ") + name + " is not a number: \"" + a.value() + "\"");
            return false;
        }
        value = std::isinf(*parsed) ? *parsed : *parsed * scale;
        return true;
    }

    /// A direction attribute as a grid azimuth.
    bool direction(const pugi::xml_node& node, const char* name, double& azimuth, bool& present) {
        double raw = 0.0;
        if (!number(node, name, 1.0, raw, false, &present)) {
            return false;
        }
        if (present) {
            azimuth = detail::azimuth_from_direction(detail::to_radians(raw, m_units.directions));
        }
        return true;
    }

    /// A point child ("northing easting [elevation]") in metres.
    bool point(const pugi::xml_node& node, const char* name, Point& p, bool& present) {
        const pugi::xml_node c = child(node, name);
        present = static_cast<bool>(c);
        if (!c) {
            return true;
        }
        const auto values = detail::parse_numbers(c.child_value());
        if (!values) {
            error(c, std::string("<") + name + "> is not \"northing easting [elevation]\": \"" +
                         c.child_value() + "\"");
            return false;
        }
        p = {(*values)[0] * m_units.metres, (*values)[1] * m_units.metres};
        return true;
    }

    /// Rotation: "cw" turns right, "ccw" left.
    bool rotation(const pugi::xml_node& node, geodef_Direction& direction, bool& present) {
        const pugi::xml_attribute a = attribute(node, "rot");
        present = static_cast<bool>(a);
        if (!a) {
            return true;
        }
        const std::string_view value = a.value();
        if (value == "cw") {
            direction = geodef_Right;
        } else if (value == "ccw") {
            direction = geodef_Left;
        } else {
            error(node, std::string("rot must be cw or ccw, not \"") + a.value() + "\"");
            return false;
        }
        return true;
    }

    void compare(const pugi::xml_node& node, const char* what, double given, double derived) {
        if (std::fabs(given - derived) > m_tolerance) {
            warning(node, std::string(what) + " " + detail::format_number(given) +
                              " m disagrees with the coordinates (" +
                              detail::format_number(derived) + " m); the coordinates are used");
        }
    }

    void compare_direction(const pugi::xml_node& node, const char* what, double given,
                           double derived, double radius) {
        // An angular disagreement is judged by the sideways distance it makes over the element.
        if (detail::bearing_difference(given, derived) * radius > m_tolerance) {
            warning(node, std::string(what) + " disagrees with the coordinates by " +
                              detail::format_number(detail::bearing_difference(given, derived)) +
                              " rad; the coordinates are used");
        }
    }

    /// The running end of the alignment: where the next element starts.
    struct Running {
        bool started = false;
        Point end;
        double azimuth = GEO_NULL;
    };

    bool start_of(const pugi::xml_node& node, Running& run, Point& start, CGeoRoad& road,
                  double start_station) {
        bool has_start = false;
        if (!point(node, "Start", start, has_start)) {
            return false;
        }
        if (!run.started) {
            if (!has_start) {
                error(node, "the first element gives no <Start> point");
                return false;
            }
            road.SetPOBInfo(start_station, start.north, start.east, kDefaultStationInterval);
            run.started = true;
            run.end = start;
            return true;
        }
        if (!has_start) {
            start = run.end;
        } else if (distance(start, run.end) > m_tolerance) {
            warning(node, "starts " + detail::format_number(distance(start, run.end)) +
                              " m from the end of the element before it; the alignment is "
                              "joined there");
        }
        return true;
    }

    bool check_station(const pugi::xml_node& node, CGeoRoad& road) {
        double given = 0.0;
        bool present = false;
        if (!number(node, "staStart", m_units.metres, given, false, &present)) {
            return false;
        }
        const int n = road.NumberHorizontalElements() - 1;
        m_station = road.HorzElementStartStation(n);
        if (present && std::fabs(given - m_station) > m_tolerance) {
            warning(node, "staStart " + detail::format_number(given) +
                              " m disagrees with the stationing (" +
                              detail::format_number(m_station) + " m)");
        }
        return true;
    }

    bool read_line(const pugi::xml_node& node, Running& run, CGeoRoad& road, double start_station) {
        Point start;
        if (!start_of(node, run, start, road, start_station)) {
            return false;
        }
        Point end;
        bool has_end = false;
        double length = 0.0;
        bool has_length = false;
        double azimuth = 0.0;
        bool has_dir = false;
        if (!point(node, "End", end, has_end) ||
            !number(node, "length", m_units.metres, length, false, &has_length) ||
            !direction(node, "dir", azimuth, has_dir)) {
            return false;
        }
        CGeoLine line;
        CGeoPoint from = grid_point(start);
        if (has_end) {
            if (!sensible_size(distance(start, end))) {
                error(node, "the line's Start and End are less than a micrometre apart, or farther "
                            "apart than any survey");
                return false;
            }
            CGeoPoint to = grid_point(end);
            line.Set(from, to);
            if (has_length) {
                compare(node, "length", length, distance(start, end));
            }
            if (has_dir) {
                compare_direction(node, "dir", azimuth, bearing(start, end), distance(start, end));
            }
        } else {
            if (!has_dir || !has_length || !sensible_size(length)) {
                error(node, "a line needs an <End> point, or dir and a length of a micrometre or "
                            "more");
                return false;
            }
            line.Set(from, azimuth, length, 0.0);
        }
        if (road.AddHorizontal(georoad_Line, &line) == 0) {
            error(node, "the road cannot take the line");
            return false;
        }
        run.end = plan_of(line.EndPt());
        run.azimuth = line.GridAzimuth();
        return check_station(node, road);
    }

    bool read_curve(const pugi::xml_node& node, Running& run, CGeoRoad& road,
                    double start_station) {
        if (const pugi::xml_attribute type = attribute(node, "crvType")) {
            if (std::string_view(type.value()) != "arc") {
                error(node, std::string("crvType \"") + type.value() +
                                "\" is not supported: only arc-defined circular curves are");
                return false;
            }
        }
        Point start;
        if (!start_of(node, run, start, road, start_station)) {
            return false;
        }
        Point centre, end, pi;
        bool has_centre = false, has_end = false, has_pi = false;
        geodef_Direction turn = geodef_Right;
        bool has_rot = false;
        double radius = 0.0, length = 0.0, entry = 0.0;
        bool has_radius = false, has_length = false, has_dir = false;
        if (!point(node, "Center", centre, has_centre) || !point(node, "End", end, has_end) ||
            !point(node, "PI", pi, has_pi) || !rotation(node, turn, has_rot) ||
            !number(node, "radius", m_units.metres, radius, false, &has_radius) ||
            !number(node, "length", m_units.metres, length, false, &has_length) ||
            !direction(node, "dirStart", entry, has_dir)) {
            return false;
        }
        if (!has_rot && has_pi && has_end) {
            // The turn at the PI tells the rotation.
            const double cross = (pi.east - start.east) * (end.north - pi.north) -
                                 (pi.north - start.north) * (end.east - pi.east);
            turn = cross > 0.0 ? geodef_Left : geodef_Right;
            has_rot = cross != 0.0;
        }
        if (!has_rot) {
            error(node, "the curve gives no rot (cw or ccw) and no PI to tell its turn");
            return false;
        }
        const double sense = turn == geodef_Right ? 1.0 : -1.0;

        double r = radius;
        double azimuth = GEO_NULL;
        double arc_length = has_length ? length : GEO_NULL;
        if (has_centre) {
            r = distance(start, centre);
            azimuth = detail::normalised(bearing(centre, start) + sense * detail::kPi / 2.0);
            if (has_end) {
                const double from = bearing(centre, start);
                const double to = bearing(centre, end);
                const double angle = detail::normalised(sense * (to - from));
                arc_length = r * angle;
                compare(node, "End's distance from Center", distance(end, centre), r);
            }
        } else if (has_pi) {
            azimuth = bearing(start, pi);
            if (has_end && has_radius) {
                const double angle = detail::bearing_difference(bearing(pi, end), azimuth);
                arc_length = radius * angle;
            }
        } else if (has_end && has_radius && has_length && radius > 0.0) {
            // The chord turns half the central angle from the tangent.
            azimuth = detail::normalised(bearing(start, end) - sense * (length / radius) / 2.0);
        } else if (has_dir) {
            azimuth = entry;
        } else if (run.azimuth != GEO_NULL) {
            azimuth = run.azimuth;
        }
        if (!sensible_size(r) || azimuth == GEO_NULL || arc_length == GEO_NULL ||
            !sensible_size(arc_length)) {
            error(node, "the curve needs a radius and a length of a micrometre or more (or Center "
                        "and End points that give them) and a start direction");
            return false;
        }
        if (has_radius && has_centre) {
            compare(node, "radius", radius, r);
        }
        if (has_length && arc_length != length) {
            compare(node, "length", length, arc_length);
        }
        if (has_dir) {
            compare_direction(node, "dirStart", entry, azimuth, r);
        }
        CGeoArc arc;
        CGeoPoint from = grid_point(start);
        arc.Set(from, azimuth, r, arc_length, turn, 0.0);
        if (has_end) {
            CGeoPoint& computed = arc.EndPt();
            const double miss = distance(plan_of(computed), end);
            if (miss > m_tolerance) {
                warning(node, "the computed end lies " + detail::format_number(miss) +
                                  " m from the <End> point");
            }
        }
        if (road.AddHorizontal(georoad_Arc, &arc) == 0) {
            error(node, "the road cannot take the curve");
            return false;
        }
        run.end = plan_of(arc.EndPt());
        run.azimuth = arc.GridAzimuth(arc_length);
        return check_station(node, road);
    }

    template <typename Spiral>
    bool add_spiral(const pugi::xml_node& node, Running& run, CGeoRoad& road,
                    georoad_HorzElementType type, const Point& start, double azimuth,
                    geodef_Direction turn, double radius, double length, bool has_end,
                    const Point& end) {
        Spiral spiral;
        CGeoPoint from = grid_point(start);
        spiral.Set(from, azimuth, turn, radius, length);
        if (has_end) {
            CGeoPoint& computed = spiral.EndPt();
            if (computed.Grid().north == GEO_NULL) {
                error(node, "the clothoid's series does not converge for this length and radius");
                return false;
            }
            const double miss = distance(plan_of(computed), end);
            if (miss > m_tolerance) {
                warning(node, "the computed clothoid ends " + detail::format_number(miss) +
                                  " m from the <End> point");
            }
        }
        if (road.AddHorizontal(type, &spiral) == 0) {
            error(node, "the road cannot take the spiral");
            return false;
        }
        run.end = plan_of(spiral.EndPt());
        run.azimuth = spiral.ExitAzimuth();
        if (run.azimuth == GEO_NULL || run.end.north == GEO_NULL) {
            error(node, "the clothoid's series does not converge for this length and radius");
            return false;
        }
        return check_station(node, road);
    }

    bool read_spiral(const pugi::xml_node& node, Running& run, CGeoRoad& road,
                     double start_station) {
        const pugi::xml_attribute type = attribute(node, "spiType");
        if (!type) {
            warning(node, "spiType is missing; read as a clothoid");
        } else if (std::string_view(type.value()) != "clothoid") {
            error(node, std::string("spiType \"") + type.value() +
                            "\" is not supported: only clothoids are");
            return false;
        }
        double r_start = 0.0, r_end = 0.0, length = 0.0, entry = 0.0;
        bool has_r_start = false, has_r_end = false, has_length = false, has_dir = false;
        geodef_Direction turn = geodef_Right;
        bool has_rot = false;
        if (!number(node, "radiusStart", m_units.metres, r_start, true, &has_r_start) ||
            !number(node, "radiusEnd", m_units.metres, r_end, true, &has_r_end) ||
            !number(node, "length", m_units.metres, length, false, &has_length) ||
            !rotation(node, turn, has_rot) || !direction(node, "dirStart", entry, has_dir)) {
            return false;
        }
        if (!has_r_start || !has_r_end || !has_length || !has_rot || !sensible_size(length)) {
            error(node, "a spiral needs radiusStart, radiusEnd, a length of a micrometre or more "
                        "and rot");
            return false;
        }
        const bool entry_spiral = std::isinf(r_start) && sensible_size(r_end);
        const bool exit_spiral = sensible_size(r_start) && std::isinf(r_end);
        if (!entry_spiral && !exit_spiral) {
            error(node, "only spirals between a straight (INF) and a radius are supported; "
                        "this one runs from " +
                            std::string(attribute(node, "radiusStart").value()) + " to " +
                            attribute(node, "radiusEnd").value());
            return false;
        }
        Point start;
        if (!start_of(node, run, start, road, start_station)) {
            return false;
        }
        Point end, pi;
        bool has_end = false, has_pi = false;
        if (!point(node, "End", end, has_end) || !point(node, "PI", pi, has_pi)) {
            return false;
        }
        const double radius = entry_spiral ? r_end : r_start;
        const auto make = [&](double azimuth) {
            return entry_spiral
                       ? add_spiral<CGeoEntrySpiral>(node, run, road, georoad_EntrySpiral, start,
                                                     azimuth, turn, radius, length, has_end, end)
                       : add_spiral<CGeoExitSpiral>(node, run, road, georoad_ExitSpiral, start,
                                                    azimuth, turn, radius, length, has_end, end);
        };
        double azimuth = GEO_NULL;
        if (has_pi) {
            azimuth = bearing(start, pi); // the start tangent runs through the PI
        } else if (has_end) {
            // The clothoid's shape does not depend on its direction: lay it out northward and
            // turn it so that its chord runs from Start to End.
            CGeoPoint origin = grid_point({0.0, 0.0});
            Point probe;
            if (entry_spiral) {
                CGeoEntrySpiral s;
                s.Set(origin, 0.0, turn, radius, length);
                probe = plan_of(s.EndPt());
            } else {
                CGeoExitSpiral s;
                s.Set(origin, 0.0, turn, radius, length);
                probe = plan_of(s.EndPt());
            }
            if (probe.north == GEO_NULL) {
                error(node, "the clothoid's series does not converge for this length and radius");
                return false;
            }
            azimuth = detail::normalised(bearing(start, end) - bearing({0.0, 0.0}, probe));
        } else if (has_dir) {
            azimuth = entry;
        } else if (run.azimuth != GEO_NULL) {
            azimuth = run.azimuth;
        } else {
            error(node, "the spiral gives no start direction (PI, End or dirStart)");
            return false;
        }
        if (has_dir && (has_pi || has_end)) {
            compare_direction(node, "dirStart", entry, azimuth, length);
        }
        return make(azimuth);
    }

    bool read_geometry(const pugi::xml_node& geometry, CGeoRoad& road, double start_station) {
        if (!geometry) {
            error(0, "Alignment", "the alignment has no <CoordGeom>");
            return false;
        }
        Running run;
        for (pugi::xml_node e = geometry.first_child(); e; e = e.next_sibling()) {
            if (e.type() != pugi::node_element) {
                continue;
            }
            bool ok = false;
            if (is(e, "Line")) {
                ok = read_line(e, run, road, start_station);
            } else if (is(e, "Curve")) {
                ok = read_curve(e, run, road, start_station);
            } else if (is(e, "Spiral")) {
                ok = read_spiral(e, run, road, start_station);
            } else {
                error(e, "<" + std::string(local_name(e)) +
                             "> is not supported: an alignment is read from Line, Curve and "
                             "Spiral elements");
            }
            if (!ok) {
                return false;
            }
        }
        if (!run.started) {
            error(geometry, "the alignment's <CoordGeom> holds no elements");
            return false;
        }
        return true;
    }

    pugi::xml_node first_profile(const pugi::xml_node& alignment) const {
        return child(child(alignment, "Profile"), "ProfAlign");
    }

    bool read_profile(const pugi::xml_node& alignment, CGeoRoad& road) {
        const pugi::xml_node profile = child(alignment, "Profile");
        const pugi::xml_node prof_align = first_profile(alignment);
        if (!prof_align) {
            return true; // an alignment without a design profile is still a road
        }
        for (pugi::xml_node other = prof_align.next_sibling(); other;
             other = other.next_sibling()) {
            if (is(other, "ProfAlign")) {
                warning(other, std::string("a second design profile (\"") +
                                   other.attribute("name").value() +
                                   "\") is ignored; the first is read");
            }
        }
        (void)profile;
        for (pugi::xml_node e = prof_align.first_child(); e; e = e.next_sibling()) {
            if (e.type() != pugi::node_element) {
                continue;
            }
            georoad_VertElementType type;
            if (is(e, "PVI")) {
                type = georoad_VertPoint;
            } else if (is(e, "ParaCurve")) {
                type = georoad_VertParabola;
            } else if (is(e, "CircCurve")) {
                type = georoad_VertCircular;
            } else {
                error(e, "<" + std::string(local_name(e)) +
                             "> is not supported in a profile: PVI, ParaCurve and CircCurve are");
                return false;
            }
            const auto values = detail::parse_numbers(e.child_value());
            if (!values || values->size() != 2) {
                error(e, std::string("a profile point is \"station elevation\", not \"") +
                             e.child_value() + "\"");
                return false;
            }
            const double station = (*values)[0] * m_units.metres;
            const double elevation = (*values)[1] * m_units.metres;
            if (!detail::within_measure(station) || !detail::within_measure(elevation)) {
                error(e, std::string("a profile point beyond ") +
                             detail::format_number(detail::kLargestMeasure) +
                             " m is not a survey on Earth: \"" + e.child_value() + "\"");
                return false;
            }
            m_station = station;
            double length = 0.0;
            if (type != georoad_VertPoint) {
                bool has_length = false;
                if (!number(e, "length", m_units.metres, length, false, &has_length)) {
                    return false;
                }
                if (!has_length || !(length > 0.0)) {
                    error(e, "a vertical curve needs a positive length");
                    return false;
                }
            }
            georoad_Error code = georoad_VerticalError;
            if (road.AddVertical(type, station, elevation, length, &code) == 0) {
                error(e, code == georoad_MemoryError
                             ? std::string("out of memory for the profile")
                             : std::string("the profile point overlaps the one before it, or a "
                                           "profile starts with a curve"));
                return false;
            }
        }
        return true;
    }

    /// The alignment's length is only a check on its elements: one that is not a number is
    /// reported as a warning and the road stands as its elements give it.
    /// The alignment as built stays within kLargestMeasure in its stations and coordinates
    /// (element starts and the road's end); false, with an error at the first that does not.
    bool within_reach(const pugi::xml_node& geometry, CGeoRoad& road) {
        const auto far = [](const geo_nee& p) {
            return !detail::within_measure(p.north) || !detail::within_measure(p.east);
        };
        const int count = road.NumberHorizontalElements();
        for (int n = 0; n <= count; ++n) {
            const bool end = n == count;
            const double station =
                end ? road.EndStationHorizontal() : road.HorzElementStartStation(n);
            const geo_nee point =
                end ? road.EndPtHorizontal().Grid() : road.HorzElementStartCoords(n);
            if (!detail::within_measure(station) || far(point)) {
                m_station = GEO_NULL;
                error(geometry,
                      "the alignment reaches beyond " +
                          detail::format_number(detail::kLargestMeasure) +
                          " m in its stations or coordinates (" +
                          (end ? std::string("at its end") : "element " + std::to_string(n + 1)) +
                          "): not a survey on Earth");
                return false;
            }
        }
        return true;
    }

    void check_length(const pugi::xml_node& alignment, CGeoRoad& road) {
        const pugi::xml_attribute a = attribute(alignment, "length");
        if (!a) {
            return;
        }
        const auto parsed = detail::parse_number(a.value(), false);
        if (!parsed) {
            m_station = GEO_NULL;
            warning(alignment, std::string("attribute length is not a number: \"") + a.value() +
                                   "\"; the elements' total stands");
            return;
        }
        const double length = *parsed * m_units.metres;
        const double computed = road.EndStationHorizontal() - road.StartStationHorizontal();
        if (std::fabs(computed - length) > m_tolerance) {
            m_station = GEO_NULL;
            warning(alignment, "length " + detail::format_number(length) +
                                   " m disagrees with the elements' total (" +
                                   detail::format_number(computed) + " m)");
        }
    }

    std::string_view m_text;
    detail::LineIndex m_lines;
    ReadResult& m_result;
    pugi::xml_document m_doc;
    pugi::xml_node m_root;
    std::vector<pugi::xml_node> m_alignments;
    Units m_units;
    double m_tolerance = 0.001;
    double m_station = GEO_NULL;
};

} // namespace

ReadResult list_alignments(std::string_view xml) {
    ReadResult result;
    Reader reader(xml, result);
    if (reader.parse()) {
        reader.list();
        result.ok = true;
    }
    return result;
}

ReadResult read_road(std::string_view xml, CGeoRoad& road, const ReadOptions& options) {
    ReadResult result;
    Reader reader(xml, result);
    if (!reader.parse()) {
        road.Reset();
        return result;
    }
    reader.list();
    const pugi::xml_node alignment = reader.choose(options.alignment);
    if (!alignment) {
        road.Reset();
        return result;
    }
    result.ok = reader.read(alignment, road, options.tolerance);
    if (!result.ok) {
        road.Reset();
    }
    road.SetModifiedFlag(0);
    return result;
}

bool looks_like_landxml(std::string_view text) {
    if (text.substr(0, 3) == "\xEF\xBB\xBF") {
        text.remove_prefix(3);
    }
    // Skip the declaration, comments and white space before the root element.
    std::size_t i = 0;
    while (i < text.size()) {
        while (i < text.size() &&
               (text[i] == ' ' || text[i] == '\t' || text[i] == '\r' || text[i] == '\n')) {
            ++i;
        }
        if (text.substr(i, 2) == "<?" || text.substr(i, 4) == "<!--" || text.substr(i, 2) == "<!") {
            const std::string_view close = text.substr(i, 4) == "<!--" ? "-->" : ">";
            const auto end = text.find(close, i);
            if (end == std::string_view::npos) {
                return false;
            }
            i = end + close.size();
            continue;
        }
        break;
    }
    if (i >= text.size() || text[i] != '<') {
        return false;
    }
    std::size_t j = i + 1;
    while (j < text.size() && text[j] != ' ' && text[j] != '>' && text[j] != '/' &&
           text[j] != '\t' && text[j] != '\r' && text[j] != '\n') {
        ++j;
    }
    std::string_view name = text.substr(i + 1, j - i - 1);
    const auto colon = name.find(':');
    if (colon != std::string_view::npos) {
        name = name.substr(colon + 1);
    }
    return name == "LandXML";
}

} // namespace qv5::landxml
