// The road as JSON, value for value what its road file stores, and the loading of either form.
#include "road_text.h"

#include "output.h"
#include "road_json.h"

#include "qv5/geoarc.h"
#include "qv5/geoline.h"
#include "qv5/geospiral.h"
#include "qv5/geotemplate.h"
#include "qv5/landxml.h"

#include <fmt/format.h>

#include <cmath>
#include <cstddef>
#include <cstring>
#include <filesystem>
#include <initializer_list>
#include <iostream>
#include <limits>
#include <optional>

namespace qv5::cli {
namespace {

using json = nlohmann::ordered_json;

/// The magic at the start of a road file, with its zero.
constexpr char kRoadFileMagic[] = "Halvik QV5";
/// The "format" field that marks a road file's text.
constexpr const char* kRoadFileTextFormat = "qv5 road file as text: metres and radians";
/// Files larger than this are not read as JSON (a road file is checked by the library).
constexpr std::size_t kMaxRoadTextBytes = std::size_t{64} << 20;

/// A double as JSON: a number (nlohmann writes the shortest text that reads back to the same
/// bits), null for undefined, and a word for values JSON has no number for.
json exact(double value) {
    if (value == GEO_NULL) {
        return nullptr;
    }
    if (std::isnan(value)) {
        return "nan";
    }
    if (std::isinf(value)) {
        return value > 0 ? "inf" : "-inf";
    }
    return value;
}

/// A UTF-16 name as UTF-8 text.
std::string text_of(const CString& name) {
    return name.ToUtf8();
}

/// The road's point of beginning, set as the road file's first horizontal record sets it. The
/// road keeps these values as protected members; a derived class may name them.
struct PointOfBeginning : CGeoRoad {
    static void set(CGeoRoad& road, double north, double east, double elevation, double azimuth,
                    double station, double interval) {
        (road.*(&PointOfBeginning::m_startPt)).SetGrid(north, east, elevation);
        road.*(&PointOfBeginning::m_startAzimuth) = azimuth;
        road.*(&PointOfBeginning::m_startStation) = station;
        road.*(&PointOfBeginning::m_stationInterval) = interval;
        road.*(&PointOfBeginning::m_endPt) = road.*(&PointOfBeginning::m_startPt);
        road.*(&PointOfBeginning::m_endStation) = station;
        road.*(&PointOfBeginning::m_endAzimuth) = azimuth;
    }
    static void clear_modified(CGeoRoad& road) { road.SetModifiedFlag(0); }
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

json template_json(const CGeoTemplate& templ) {
    json elements = json::array();
    for (int e = 0; e < templ.NumberElements(); ++e) {
        const geotemp_ElementType type = templ.NthElementType(e);
        double h = 0;
        double v = 0;
        double dh = 0;
        double dv = 0;
        double angle = 0;
        alignas(double) unsigned char record[96] = {};
        if (!templ.GetNthElement(e, type, h, v, dh, dv, angle, record)) {
            continue; // an element of unknown type has no record and is not stored
        }
        json element;
        switch (type) {
        case geotemp_Step:
        case geotemp_DeltaHV: {
            geotemp_StepData d;
            std::memcpy(&d, record, sizeof d);
            element = {{"type", type == geotemp_Step ? "step" : "delta hv"},
                       {"deltaH", exact(d.DeltaH)},
                       {"deltaV", exact(d.DeltaV)}};
            break;
        }
        case geotemp_GradeWidth: {
            geotemp_GradeWidthData d;
            std::memcpy(&d, record, sizeof d);
            element = {
                {"type", "grade width"}, {"angle", exact(d.Angle)}, {"width", exact(d.Width)}};
            break;
        }
        case geotemp_Feature: {
            geotemp_FeatureData d;
            std::memcpy(&d, record, sizeof d);
            d.Name[32] = 0;
            element = {{"type", "feature"},
                       {"name", text_of(CString(d.Name))},
                       {"valueA", exact(d.ValueA)},
                       {"valueB", exact(d.ValueB)}};
            break;
        }
        case geotemp_FixedPoint: {
            geotemp_FixedPointData d;
            std::memcpy(&d, record, sizeof d);
            std::string reserved;
            for (unsigned char b : d.Reserved) {
                reserved += fmt::format("{:02x}", b);
            }
            element = {{"type", "fixed point"},
                       {"h", exact(d.H)},
                       {"v", exact(d.V)},
                       {"angle", exact(d.Angle)},
                       {"reserved", reserved}};
            break;
        }
        case geotemp_SideSlope: {
            geotemp_SideSlopeData d;
            std::memcpy(&d, record, sizeof d);
            element = {{"type", "side slope"},
                       {"cutAngle", exact(d.CutAngle)},
                       {"fillAngle", exact(d.FillAngle)},
                       {"ditchWidth", exact(d.DitchWidth)}};
            break;
        }
        default:
            continue;
        }
        elements.push_back(element);
    }
    return {{"name", text_of(templ.Name())}, {"elements", elements}};
}

/// Reads JSON fields, naming the place of the first bad one.
class Fields {
public:
    explicit Fields(std::string& error) : m_error(error) {}

    bool number(const json& object, const char* key, const std::string& where, double& out) {
        const auto it = object.find(key);
        if (it == object.end()) {
            return fail(where + ": \"" + key + "\" is missing");
        }
        if (it->is_null()) {
            out = GEO_NULL;
            return true;
        }
        if (it->is_number()) {
            out = it->get<double>();
            return true;
        }
        if (it->is_string()) {
            const std::string word = it->get<std::string>();
            if (word == "nan" || word == "inf" || word == "-inf") {
                out = word == "nan"   ? std::numeric_limits<double>::quiet_NaN()
                      : word == "inf" ? std::numeric_limits<double>::infinity()
                                      : -std::numeric_limits<double>::infinity();
                return true;
            }
        }
        return fail(where + ": \"" + key + "\" is not a number");
    }

    bool text(const json& object, const char* key, const std::string& where, std::string& out) {
        const auto it = object.find(key);
        if (it == object.end() || !it->is_string()) {
            return fail(where + ": \"" + key + "\" is missing or not text");
        }
        out = it->get<std::string>();
        return true;
    }

    bool list(const json& object, const char* key, const json*& out) {
        static const json empty = json::array();
        const auto it = object.find(key);
        if (it == object.end()) {
            out = &empty;
            return true;
        }
        if (!it->is_array()) {
            return fail(std::string("\"") + key + "\" is not a list");
        }
        out = &*it;
        return true;
    }

    bool fail(const std::string& message) {
        m_error = message;
        return false;
    }

private:
    std::string& m_error;
};

bool direction_of(Fields& f, const json& e, const std::string& where, geodef_Direction& out) {
    std::string word;
    if (!f.text(e, "direction", where, word)) {
        return false;
    }
    if (word != "left" && word != "right") {
        return f.fail(where + ": \"direction\" must be \"left\" or \"right\"");
    }
    out = word == "right" ? geodef_Right : geodef_Left;
    return true;
}

/// A UTF-16 name field of a template record: at most 32 units, zero-padded.
void put_name(unsigned short* field, const std::string& utf8) {
    const CString name = CString::FromUtf8(utf8);
    const unsigned short* units = name.GetString();
    std::size_t u = 0;
    for (; u < 32 && units[u] != 0; ++u) {
        field[u] = units[u];
    }
    for (; u < 33; ++u) {
        field[u] = 0;
    }
}

bool template_from_json(Fields& f, const json& t, const std::string& where, CGeoTemplate& templ) {
    std::string name;
    const json* elements = nullptr;
    if (!t.is_object() || !f.text(t, "name", where, name) || !f.list(t, "elements", elements)) {
        return t.is_object() ? false : f.fail(where + " is not an object");
    }
    templ.Reset();
    templ.SetName(CString::FromUtf8(name));
    for (std::size_t i = 0; i < elements->size(); ++i) {
        const json& e = (*elements)[i];
        const std::string at = where + " element " + std::to_string(i + 1);
        std::string type;
        if (!e.is_object() || !f.text(e, "type", at, type)) {
            return e.is_object() ? false : f.fail(at + " is not an object");
        }
        // The records are packed: values are read into doubles and copied into place.
        alignas(double) unsigned char record[96] = {};
        double v[3] = {};
        const auto numbers = [&](std::initializer_list<const char*> keys) {
            std::size_t k = 0;
            for (const char* key : keys) {
                if (!f.number(e, key, at, v[k++])) {
                    return false;
                }
            }
            return true;
        };
        geotemp_ElementType kind = geotemp_None;
        if (type == "step" || type == "delta hv") {
            if (!numbers({"deltaH", "deltaV"})) {
                return false;
            }
            std::memcpy(record, v, sizeof(geotemp_StepData));
            kind = type == "step" ? geotemp_Step : geotemp_DeltaHV;
        } else if (type == "grade width") {
            if (!numbers({"angle", "width"})) {
                return false;
            }
            std::memcpy(record, v, sizeof(geotemp_GradeWidthData));
            kind = geotemp_GradeWidth;
        } else if (type == "feature") {
            std::string feature;
            if (!f.text(e, "name", at, feature) || !numbers({"valueA", "valueB"})) {
                return false;
            }
            unsigned short units[33];
            put_name(units, feature);
            std::memcpy(record, units, sizeof units);
            std::memcpy(record + offsetof(geotemp_FeatureData, ValueA), v, 2 * sizeof(double));
            kind = geotemp_Feature;
        } else if (type == "fixed point") {
            if (!numbers({"h", "v", "angle"})) {
                return false;
            }
            std::memcpy(record, v, 3 * sizeof(double));
            if (e.contains("reserved")) {
                std::string reserved;
                if (!f.text(e, "reserved", at, reserved) || reserved.size() != 32 ||
                    reserved.find_first_not_of("0123456789abcdefABCDEF") != std::string::npos) {
                    return f.fail(at + ": \"reserved\" must be 32 hexadecimal digits");
                }
                for (std::size_t b = 0; b < 16; ++b) {
                    record[offsetof(geotemp_FixedPointData, Reserved) + b] =
                        static_cast<unsigned char>(
                            std::stoul(reserved.substr(2 * b, 2), nullptr, 16));
                }
            }
            kind = geotemp_FixedPoint;
        } else if (type == "side slope") {
            if (!numbers({"cutAngle", "fillAngle", "ditchWidth"})) {
                return false;
            }
            std::memcpy(record, v, sizeof(geotemp_SideSlopeData));
            kind = geotemp_SideSlope;
        } else {
            return f.fail(at + ": unknown type \"" + type + "\"");
        }
        if (!templ.AddElement(kind, record)) {
            return f.fail(at + ": the template refused it");
        }
    }
    return true;
}

bool build_road(const json& text, CGeoRoad& road, Fields& f) {
    if (!text.is_object()) {
        return f.fail("the road is not a JSON object");
    }
    std::string name;
    if (text.contains("name") && !f.text(text, "name", "the road", name)) {
        return false;
    }
    road.SetName(CString::FromUtf8(name));
    const json* horizontal = nullptr;
    const json* vertical = nullptr;
    const json* templates = nullptr;
    const json* applications = nullptr;
    if (!f.list(text, "horizontal", horizontal) || !f.list(text, "vertical", vertical) ||
        !f.list(text, "templates", templates) || !f.list(text, "applications", applications)) {
        return false;
    }
    if (text.contains("start")) {
        const json& s = text["start"];
        double v[6];
        const char* keys[6] = {"north", "east", "elevation", "azimuth", "station", "interval"};
        if (!s.is_object()) {
            return f.fail("\"start\" is not an object");
        }
        for (int i = 0; i < 6; ++i) {
            if (!f.number(s, keys[i], "start", v[i])) {
                return false;
            }
        }
        PointOfBeginning::set(road, v[0], v[1], v[2], v[3], v[4], v[5]);
    }
    for (std::size_t i = 0; i < horizontal->size(); ++i) {
        const json& e = (*horizontal)[i];
        const std::string at = "horizontal element " + std::to_string(i + 1);
        std::string type;
        if (!e.is_object() || !f.text(e, "type", at, type)) {
            return e.is_object() ? false : f.fail(at + " is not an object");
        }
        double length = 0;
        if (!f.number(e, "length", at, length)) {
            return false;
        }
        int added = 0;
        if (type == "line") {
            // A line keeps its own azimuth.
            double azimuth = 0;
            if (!f.number(e, "azimuth", at, azimuth)) {
                return false;
            }
            CGeoLine line;
            line.Set(road.EndPtHorizontal(), azimuth, length, 0.0);
            added = road.AddHorizontal(georoad_Line, &line);
        } else if (type == "arc" || type == "entry spiral" || type == "exit spiral") {
            // Arcs and spirals are laid tangent to the road's end.
            double radius = 0;
            geodef_Direction direction = geodef_Left;
            if (!f.number(e, "radius", at, radius) || !direction_of(f, e, at, direction)) {
                return false;
            }
            const double azimuth = road.EndAzimuthHorizontal();
            if (type == "arc") {
                CGeoArc arc;
                arc.Set(road.EndPtHorizontal(), azimuth, radius, length, direction,
                        road.EndStationHorizontal());
                added = road.AddHorizontal(georoad_Arc, &arc);
            } else if (type == "entry spiral") {
                CGeoEntrySpiral spiral;
                spiral.Set(road.EndPtHorizontal(), azimuth, direction, radius, length);
                added = road.AddHorizontal(georoad_EntrySpiral, &spiral);
            } else {
                CGeoExitSpiral spiral;
                spiral.Set(road.EndPtHorizontal(), azimuth, direction, radius, length);
                added = road.AddHorizontal(georoad_ExitSpiral, &spiral);
            }
        } else {
            return f.fail(at + ": unknown type \"" + type + "\"");
        }
        if (!added) {
            return f.fail(at + ": the road refused it");
        }
    }
    for (std::size_t i = 0; i < vertical->size(); ++i) {
        const json& e = (*vertical)[i];
        const std::string at = "PVI " + std::to_string(i + 1);
        std::string type;
        double station = 0;
        double elevation = 0;
        double length = 0;
        if (!e.is_object() || !f.text(e, "type", at, type) ||
            !f.number(e, "station", at, station) || !f.number(e, "elevation", at, elevation)) {
            return e.is_object() ? false : f.fail(at + " is not an object");
        }
        georoad_VertElementType kind = georoad_VertPoint;
        if (type == "parabola" || type == "circular") {
            kind = type == "parabola" ? georoad_VertParabola : georoad_VertCircular;
            if (!f.number(e, "length", at, length)) {
                return false;
            }
        } else if (type != "point") {
            return f.fail(at + ": unknown type \"" + type + "\"");
        }
        georoad_Error error = georoad_VerticalError;
        if (!road.AddVertical(kind, station, elevation, length, &error)) {
            return f.fail(at + ": the profile refused it (it overlaps its neighbour or cannot "
                               "start a profile)");
        }
    }
    for (std::size_t i = 0; i < templates->size(); ++i) {
        CGeoTemplate templ;
        if (!template_from_json(f, (*templates)[i], "template " + std::to_string(i + 1), templ)) {
            return false;
        }
        if (!road.AddTemplate(&templ)) {
            return f.fail("template " + std::to_string(i + 1) + ": the road refused it");
        }
    }
    for (std::size_t i = 0; i < applications->size(); ++i) {
        const json& e = (*applications)[i];
        const std::string at = "application " + std::to_string(i + 1);
        std::string templ;
        std::string side;
        double station = 0;
        if (!e.is_object() || !f.text(e, "template", at, templ) ||
            !f.number(e, "station", at, station) || !f.text(e, "side", at, side)) {
            return e.is_object() ? false : f.fail(at + " is not an object");
        }
        if (side != "left" && side != "right" && side != "both") {
            return f.fail(at + ": \"side\" must be \"left\", \"right\" or \"both\"");
        }
        const geodef_RoadSide s = side == "left"    ? geodef_LeftSide
                                  : side == "right" ? geodef_RightSide
                                                    : geodef_BothSides;
        // The name field of the file holds 32 units; the text is cut the same way.
        unsigned short field[33];
        put_name(field, templ);
        if (!road.AddTemplateApplication(CString(field), station, s)) {
            return f.fail(at + ": no template named \"" + templ + "\" comes before it");
        }
    }
    return true;
}

} // namespace

nlohmann::ordered_json road_to_json(CGeoRoad& road) {
    json out;
    out["format"] = kRoadFileTextFormat;
    out["name"] = text_of(road.Name());
    json horizontal = json::array();
    if (road.NumberHorizontalElements() > 0) {
        // Without elements the file stores no point of beginning.
        const geo_nee start = road.StartPtHorizontal().Grid();
        out["start"] = {{"north", exact(start.north)},
                        {"east", exact(start.east)},
                        {"elevation", exact(start.elev)},
                        {"azimuth", exact(road.StartAzimuthHorizontal())},
                        {"station", exact(road.StartStationHorizontal())},
                        {"interval", exact(road.StationInterval())}};
    }
    for (int n = 0; n < road.NumberHorizontalElements(); ++n) {
        double station = 0;
        double azimuth = 0;
        CGeoPoint start;
        switch (road.NthHorizontalType(n)) {
        case georoad_Line: {
            CGeoLine line;
            road.GetNthHorizontal(n, georoad_Line, station, start, azimuth, &line);
            horizontal.push_back({{"type", "line"},
                                  {"azimuth", exact(line.GridAzimuth())},
                                  {"length", exact(line.GridHDistance())}});
            break;
        }
        case georoad_Arc: {
            CGeoArc arc;
            road.GetNthHorizontal(n, georoad_Arc, station, start, azimuth, &arc);
            horizontal.push_back({{"type", "arc"},
                                  {"direction", arc.Direction() == geodef_Right ? "right" : "left"},
                                  {"radius", exact(arc.Radius())},
                                  {"length", exact(arc.GridArcLength())}});
            break;
        }
        case georoad_EntrySpiral: {
            CGeoEntrySpiral spiral;
            road.GetNthHorizontal(n, georoad_EntrySpiral, station, start, azimuth, &spiral);
            horizontal.push_back(
                {{"type", "entry spiral"},
                 {"direction", spiral.Direction() == geodef_Right ? "right" : "left"},
                 {"radius", exact(spiral.Radius())},
                 {"length", exact(spiral.Length())}});
            break;
        }
        case georoad_ExitSpiral: {
            CGeoExitSpiral spiral;
            road.GetNthHorizontal(n, georoad_ExitSpiral, station, start, azimuth, &spiral);
            horizontal.push_back(
                {{"type", "exit spiral"},
                 {"direction", spiral.Direction() == geodef_Right ? "right" : "left"},
                 {"radius", exact(spiral.Radius())},
                 {"length", exact(spiral.Length())}});
            break;
        }
        default:
            break;
        }
    }
    out["horizontal"] = horizontal;
    json vertical = json::array();
    for (int n = 0; n < road.NumberVerticalElements(); ++n) {
        const georoad_VertElementType type = road.NthVerticalType(n);
        double v[8];
        road.GetNthVertical(n, type, v[0], v[1], v[2], v[3], v[4], v[5], v[6], v[7]);
        json pvi = {{"type", type == georoad_VertPoint      ? "point"
                             : type == georoad_VertParabola ? "parabola"
                                                            : "circular"},
                    {"station", exact(v[0])},
                    {"elevation", exact(v[1])}};
        if (type != georoad_VertPoint) {
            pvi["length"] = exact(v[7]);
        }
        vertical.push_back(pvi);
    }
    out["vertical"] = vertical;
    json templates = json::array();
    for (int t = 0; t < road.NumberTemplates(); ++t) {
        CGeoTemplate templ;
        road.GetNthTemplate(t, &templ);
        templates.push_back(template_json(templ));
    }
    out["templates"] = templates;
    json applications = json::array();
    for (int n = 0; n < road.NumberTemplateApplications(); ++n) {
        CString name;
        double station = 0;
        geodef_RoadSide side = geodef_BothSides;
        if (road.GetNthTemplateApplication(n, name, station, side)) {
            applications.push_back({{"template", text_of(name)},
                                    {"station", exact(station)},
                                    {"side", side_name(side)}});
        }
    }
    out["applications"] = applications;
    return out;
}

bool road_from_json(const nlohmann::ordered_json& text, CGeoRoad& road, std::string& error) {
    road.Reset();
    Fields fields(error);
    if (!build_road(text, road, fields)) {
        road.Reset();
        return false;
    }
    PointOfBeginning::clear_modified(road);
    return true;
}

bool looks_like_road_file(const std::string& bytes) {
    return bytes.size() >= sizeof kRoadFileMagic &&
           std::memcmp(bytes.data(), kRoadFileMagic, sizeof kRoadFileMagic) == 0;
}

std::string describe_road_file_problem(const georoad_FileReport& report) {
    const std::string at = fmt::format("{}", report.offset);
    const std::string record =
        report.recordType != 0 ? fmt::format(" (record type {})", report.recordType) : "";
    switch (report.problem) {
    case georoad_FileOk:
        return "no problem";
    case georoad_FileCannotOpen:
        return "cannot be opened, is not a regular file or is larger than 64 MiB";
    case georoad_FileTruncatedHeader:
        return fmt::format("truncated header: the file ends at byte {} inside the 218-byte header",
                           report.fileSize);
    case georoad_FileNotARoadFile:
        return "not a road file (no \"Halvik QV5\" at byte 0)";
    case georoad_FileBadNameLength:
        return "name length at byte 28 is larger than the 33-unit name field";
    case georoad_FileBadDirectorySize:
        return "directory size at byte 96 is larger than the 20-entry directory";
    case georoad_FileRecordOutside:
        return fmt::format("record at byte {} lies outside the file ({} bytes)", at,
                           report.fileSize);
    case georoad_FileTruncatedRecord:
        return fmt::format("truncated record at byte {}{}: its data runs past the end ({} bytes)",
                           at, record, report.fileSize);
    case georoad_FileRecordTooShort:
        return fmt::format("record at byte {}{} is too short for its type", at, record);
    case georoad_FileChainLoops:
        return fmt::format("the chain of records loops back after the record at byte {}", at);
    case georoad_FileElementRefused:
        return fmt::format("the road refused the element of the record at byte {}{}", at, record);
    case georoad_FileUnknownTemplate:
        return fmt::format("the application at byte {} names no template stored before it", at);
    case georoad_FileBadValue:
        return fmt::format("the record at byte {}{} holds a value out of range", at, record);
    case georoad_FileTooMany:
        return fmt::format("too many templates or template elements at byte {}{}", at, record);
    }
    return "unknown problem";
}

namespace {

/// "<Curve> at station 1 234.5 m: ..." for a LandXML finding.
std::string landxml_message(const qv5::landxml::Message& m) {
    std::string text;
    if (!m.element.empty()) {
        text += "<" + m.element + "> ";
    }
    if (m.station != GEO_NULL) {
        text += fmt::format("at station {:.3f} m ", m.station);
    }
    return text + m.text;
}

/// A road from a LandXML alignment; its warnings go to standard error as they are found.
bool load_landxml(const std::string& path, const std::string& content, const std::string& alignment,
                  CGeoRoad& road, std::vector<JobError>& errors) {
    qv5::landxml::ReadOptions options;
    options.alignment = alignment;
    const qv5::landxml::ReadResult result = qv5::landxml::read_road(content, road, options);
    for (const qv5::landxml::Message& w : result.warnings) {
        std::cerr << "qv5: warning: "
                  << escape_control(fmt::format("{}:{}: {}", path, w.line, landxml_message(w)))
                  << '\n';
    }
    if (result.ok) {
        return true;
    }
    for (const qv5::landxml::Message& e : result.errors) {
        errors.push_back({e.line, landxml_message(e)});
    }
    if (alignment.empty() && result.alignments.size() > 1) {
        std::string names;
        for (const qv5::landxml::AlignmentSummary& a : result.alignments) {
            names += fmt::format("{}\"{}\" (line {}, {} elements)", names.empty() ? "" : ", ",
                                 a.name, a.line, a.horizontal_elements);
        }
        errors.push_back({0, "choose one with --alignment NAME: " + names});
    }
    return false;
}

} // namespace

RoadForm road_form_of(const std::string& content) {
    if (looks_like_road_file(content)) {
        return RoadForm::road_file;
    }
    if (qv5::landxml::looks_like_landxml(content)) {
        return RoadForm::landxml;
    }
    const json text = json::parse(content, nullptr, false);
    if (!text.is_discarded() && text.is_object() && text.contains("format") &&
        text["format"] == kRoadFileTextFormat) {
        return RoadForm::road_file_text;
    }
    return RoadForm::description;
}

bool load_road(const std::string& path, CGeoRoad& road, RoadForm& form,
               std::vector<JobError>& errors, const std::string& alignment) {
    road.Reset();
    form = RoadForm::description;
    std::string content;
    if (!read_whole_file(path, content)) {
        errors.push_back({0, "cannot read the file"});
        return false;
    }
    if (content.size() > kMaxRoadTextBytes) {
        errors.push_back({0, "is larger than 64 MiB"});
        return false;
    }
    form = road_form_of(content);
    if (form == RoadForm::road_file) {
        georoad_FileReport report{};
        georoad_Error code = georoad_Error(0);
        if (!road.ReadBytes(reinterpret_cast<const unsigned char*>(content.data()), content.size(),
                            &code, &report)) {
            errors.push_back({0, describe_road_file_problem(report)});
            return false;
        }
        return true;
    }
    if (form == RoadForm::landxml) {
        return load_landxml(path, content, alignment, road, errors);
    }
    if (form == RoadForm::road_file_text) {
        std::string error;
        if (!road_from_json(json::parse(content), road, error)) {
            errors.push_back({0, error});
            return false;
        }
        return true;
    }
    // Text holds no zero byte: this is a damaged road file or something else altogether.
    if (content.find('\0') != std::string::npos) {
        errors.push_back({0, "neither a road file (no \"Halvik QV5\" at byte 0) nor JSON"});
        return false;
    }
    // Template files named by a description are found beside it.
    const std::filesystem::path folder = std::filesystem::path(path).parent_path();
    const TemplateFileReader read_template =
        [&folder](const std::string& name) -> std::optional<std::string> {
        std::filesystem::path file(name);
        if (file.is_relative()) {
            file = folder / file;
        }
        std::string contents;
        if (!read_whole_file(file.string(), contents)) {
            return std::nullopt;
        }
        return contents;
    };
    return parse_road_json(content, read_template, road, errors);
}

void report_road_errors(const std::string& path, RoadForm form,
                        const std::vector<JobError>& errors) {
    if (form == RoadForm::landxml) {
        for (const JobError& e : errors) {
            report_error(e.line > 0 ? fmt::format("{}:{}: {}", path, e.line, e.message)
                                    : path + ": " + e.message);
        }
        return;
    }
    if (form == RoadForm::description && !(errors.size() == 1 && errors[0].line == 0)) {
        report_file_errors(path, errors, "road description not used");
        return;
    }
    report_error(path + ": " +
                 (errors.empty() ? std::string("cannot be read") : errors[0].message));
}

bool save_road_file(const std::string& path, CGeoRoad& road) {
    const CString utf16 = CString::FromUtf8(path);
    georoad_Error error = georoad_Error(0);
    return road.Write(utf16.GetString(), &error) != 0;
}

bool load_road_or_report(const std::string& path, CGeoRoad& road, const std::string& alignment) {
    RoadForm form = RoadForm::description;
    std::vector<JobError> errors;
    if (!load_road(path, road, form, errors, alignment)) {
        report_road_errors(path, form, errors);
        return false;
    }
    return true;
}

} // namespace qv5::cli
