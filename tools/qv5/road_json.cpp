#include "road_json.h"

#include "template_file.h"

#include "qv5/geoarc.h"
#include "qv5/geoline.h"
#include "qv5/geospiral.h"
#include "qv5/geotemplate.h"

#include <nlohmann/json.hpp>

#include <cmath>
#include <set>

namespace qv5::cli {
namespace {

using nlohmann::json;

constexpr double kRadiansPerDegree = 0.017453292519943295;
constexpr double kTwoPi = 6.283185307179586;
/// Largest magnitude accepted for a coordinate or a station, metres.
constexpr double kMaxCoordinate = 1e8;
/// Largest length or radius accepted, metres.
constexpr double kMaxLength = 1e7;

/// Collects the problems of one description.
class Problems {
public:
    explicit Problems(std::vector<JobError>& errors) : m_errors(errors) {}
    void add(const std::string& place, const std::string& message) {
        m_errors.push_back(JobError{0, place.empty() ? message : place + ": " + message});
    }
    std::size_t count() const { return m_errors.size(); }

private:
    std::vector<JobError>& m_errors;
};

std::string at(const std::string& place, const std::string& key) {
    return place.empty() ? key : place + "." + key;
}

std::string item(const std::string& list, std::size_t index) {
    return list + "[" + std::to_string(index) + "]";
}

/// Reports fields of an object that the format does not know.
void only_fields(const json& object, const std::set<std::string>& known, const std::string& place,
                 Problems& problems) {
    for (auto it = object.begin(); it != object.end(); ++it) {
        if (known.count(it.key()) == 0) {
            problems.add(at(place, it.key()), "unknown field");
        }
    }
}

/// A number field. Missing: std::nullopt, reported when required.
std::optional<double> number(const json& object, const char* key, const std::string& place,
                             bool required, double limit, Problems& problems) {
    const auto it = object.find(key);
    if (it == object.end()) {
        if (required) {
            problems.add(at(place, key), "missing");
        }
        return std::nullopt;
    }
    if (!it->is_number()) {
        problems.add(at(place, key), "not a number");
        return std::nullopt;
    }
    const double value = it->get<double>();
    if (!std::isfinite(value) || std::fabs(value) > limit) {
        problems.add(at(place, key), "out of range");
        return std::nullopt;
    }
    return value;
}

/// A positive length or radius.
std::optional<double> positive(const json& object, const char* key, const std::string& place,
                               bool required, Problems& problems) {
    const auto value = number(object, key, place, required, kMaxLength, problems);
    if (value && !(*value > 0.0)) {
        problems.add(at(place, key), "must be greater than 0");
        return std::nullopt;
    }
    return value;
}

std::optional<std::string> string_field(const json& object, const char* key,
                                        const std::string& place, bool required,
                                        Problems& problems) {
    const auto it = object.find(key);
    if (it == object.end()) {
        if (required) {
            problems.add(at(place, key), "missing");
        }
        return std::nullopt;
    }
    if (!it->is_string()) {
        problems.add(at(place, key), "not a string");
        return std::nullopt;
    }
    return it->get<std::string>();
}

std::optional<geodef_Direction> direction(const json& object, const std::string& place,
                                          Problems& problems) {
    const auto word = string_field(object, "direction", place, true, problems);
    if (!word) {
        return std::nullopt;
    }
    if (*word == "left") {
        return geodef_Left;
    }
    if (*word == "right") {
        return geodef_Right;
    }
    problems.add(at(place, "direction"), "'" + *word + "' is not left or right");
    return std::nullopt;
}

/// A list field: an array, or nothing when it is missing.
const json* list(const json& root, const char* key, Problems& problems) {
    const auto it = root.find(key);
    if (it == root.end()) {
        return nullptr;
    }
    if (!it->is_array()) {
        problems.add(key, "not a list");
        return nullptr;
    }
    if (it->size() > kMaxRoadItems) {
        problems.add(key, "more than " + std::to_string(kMaxRoadItems) + " entries");
        return nullptr;
    }
    return &*it;
}

double normalised(double azimuth) {
    double a = std::fmod(azimuth, kTwoPi);
    return a < 0.0 ? a + kTwoPi : a;
}

void read_start(const json& root, CGeoRoad& road, std::optional<double>& start_azimuth,
                Problems& problems) {
    const auto it = root.find("start");
    if (it == root.end() || !it->is_object()) {
        problems.add("start", it == root.end() ? "missing" : "not an object");
        return;
    }
    const json& start = *it;
    only_fields(start, {"station", "north", "east", "azimuth"}, "start", problems);
    const auto station = number(start, "station", "start", false, kMaxCoordinate, problems);
    const auto north = number(start, "north", "start", true, kMaxCoordinate, problems);
    const auto east = number(start, "east", "start", true, kMaxCoordinate, problems);
    const auto azimuth = number(start, "azimuth", "start", false, 360.0, problems);
    if (azimuth) {
        start_azimuth = normalised(*azimuth * kRadiansPerDegree);
    }
    const auto interval = number(root, "station_interval", "", false, kMaxLength, problems);
    if (interval && !(*interval > 0.0)) {
        problems.add("station_interval", "must be greater than 0");
    }
    if (north && east) {
        road.SetPOBInfo(station.value_or(0.0), *north, *east, interval.value_or(20.0));
    }
}

/// Adds one horizontal element; false (with the problem reported) when it cannot be added.
bool add_element(const json& entry, const std::string& place, CGeoRoad& road,
                 const std::optional<double>& start_azimuth, Problems& problems) {
    if (!entry.is_object()) {
        problems.add(place, "not an object");
        return false;
    }
    const std::size_t before = problems.count();
    const auto type = string_field(entry, "type", place, true, problems);
    if (!type) {
        return false;
    }
    // The azimuth the element starts with: its own, else the road's exit, else the start's.
    std::optional<double> azimuth;
    if (const auto own = number(entry, "azimuth", place, false, 360.0, problems)) {
        azimuth = normalised(*own * kRadiansPerDegree);
    } else if (road.NumberHorizontalElements() > 0) {
        azimuth = road.EndAzimuthHorizontal();
    } else {
        azimuth = start_azimuth;
    }
    CGeoPoint& from = road.EndPtHorizontal();
    int added = 0;
    if (*type == "line") {
        only_fields(entry, {"type", "length", "to", "azimuth"}, place, problems);
        const auto to = entry.find("to");
        std::optional<double> length;
        if (to != entry.end()) {
            if (entry.contains("length") || entry.contains("azimuth")) {
                problems.add(place, "give either 'to' or 'length' (with 'azimuth'), not both");
                return false;
            }
            if (!to->is_object()) {
                problems.add(at(place, "to"), "not an object");
                return false;
            }
            only_fields(*to, {"north", "east"}, at(place, "to"), problems);
            const auto north =
                number(*to, "north", at(place, "to"), true, kMaxCoordinate, problems);
            const auto east = number(*to, "east", at(place, "to"), true, kMaxCoordinate, problems);
            if (!north || !east) {
                return false;
            }
            const double dn = *north - from.Northing();
            const double de = *east - from.Easting();
            length = std::hypot(dn, de);
            if (!(*length > 0.0)) {
                problems.add(at(place, "to"), "is where the road already ends");
                return false;
            }
            azimuth = normalised(std::atan2(de, dn));
        } else {
            length = positive(entry, "length", place, true, problems);
        }
        if (!length || problems.count() != before) {
            return false;
        }
        if (!azimuth) {
            problems.add(at(place, "azimuth"), "missing (the first element needs one, or "
                                               "start.azimuth)");
            return false;
        }
        CGeoLine line;
        line.Set(from, *azimuth, *length, 0.0);
        added = road.AddHorizontal(georoad_Line, &line);
    } else if (*type == "arc" || *type == "entry-spiral" || *type == "exit-spiral") {
        only_fields(entry, {"type", "length", "radius", "direction", "azimuth"}, place, problems);
        const auto length = positive(entry, "length", place, true, problems);
        const auto radius = positive(entry, "radius", place, true, problems);
        const auto turn = direction(entry, place, problems);
        if (!length || !radius || !turn || problems.count() != before) {
            return false;
        }
        if (!azimuth) {
            problems.add(at(place, "azimuth"), "missing (the first element needs one, or "
                                               "start.azimuth)");
            return false;
        }
        if (*type == "arc") {
            CGeoArc arc;
            arc.Set(from, *azimuth, *radius, *length, *turn, road.EndStationHorizontal());
            added = road.AddHorizontal(georoad_Arc, &arc);
        } else if (*type == "entry-spiral") {
            CGeoEntrySpiral spiral;
            spiral.Set(from, *azimuth, *turn, *radius, *length);
            added = road.AddHorizontal(georoad_EntrySpiral, &spiral);
        } else {
            CGeoExitSpiral spiral;
            spiral.Set(from, *azimuth, *turn, *radius, *length);
            added = road.AddHorizontal(georoad_ExitSpiral, &spiral);
        }
    } else {
        problems.add(at(place, "type"),
                     "'" + *type + "' is not line, arc, entry-spiral or exit-spiral");
        return false;
    }
    if (added == 0) {
        problems.add(place, "the element cannot be laid on the road");
        return false;
    }
    if (road.EndPtHorizontal().Ok2DGrid() == 0 || !std::isfinite(road.EndAzimuthHorizontal()) ||
        road.EndAzimuthHorizontal() == GEO_NULL) {
        problems.add(place, "the element gives no end point (a spiral too long for its radius)");
        return false;
    }
    return true;
}

void read_profile(const json& root, CGeoRoad& road, Problems& problems) {
    const json* pvis = list(root, "profile", problems);
    if (pvis == nullptr) {
        return;
    }
    double previous_end = 0.0;
    for (std::size_t i = 0; i < pvis->size(); ++i) {
        const std::string place = item("profile", i);
        const json& entry = (*pvis)[i];
        if (!entry.is_object()) {
            problems.add(place, "not an object");
            continue;
        }
        const std::size_t before = problems.count();
        only_fields(entry, {"type", "station", "elevation", "length"}, place, problems);
        const auto type = string_field(entry, "type", place, true, problems);
        const auto station = number(entry, "station", place, true, kMaxCoordinate, problems);
        const auto elevation = number(entry, "elevation", place, true, kMaxCoordinate, problems);
        georoad_VertElementType kind = georoad_VertPoint;
        double length = 0.0;
        if (type) {
            if (*type == "parabola") {
                kind = georoad_VertParabola;
            } else if (*type == "circular") {
                kind = georoad_VertCircular;
            } else if (*type != "point") {
                problems.add(at(place, "type"),
                             "'" + *type + "' is not point, parabola or circular");
            }
        }
        if (kind != georoad_VertPoint) {
            if (const auto l = positive(entry, "length", place, true, problems)) {
                length = *l;
            }
        } else if (entry.contains("length")) {
            problems.add(at(place, "length"), "a point has no curve length");
        }
        if (problems.count() != before || !station || !elevation) {
            continue;
        }
        if (kind != georoad_VertPoint && i == 0) {
            problems.add(place, "the first PVI must be a point");
            continue;
        }
        const double begin = *station - length / 2.0;
        if (i > 0 && !(begin > previous_end)) {
            problems.add(place, "overlaps the previous PVI (its curve or station ends at " +
                                    std::to_string(previous_end) + ")");
            continue;
        }
        georoad_Error error = georoad_VerticalError;
        if (road.AddVertical(kind, *station, *elevation, length, &error) == 0) {
            problems.add(place, "the profile refused the PVI");
            continue;
        }
        previous_end = *station + length / 2.0;
    }
}

void read_templates(const json& root, const TemplateFileReader& read_template, CGeoRoad& road,
                    Problems& problems) {
    const json* templates = list(root, "templates", problems);
    if (templates == nullptr) {
        return;
    }
    for (std::size_t i = 0; i < templates->size(); ++i) {
        const std::string place = item("templates", i);
        const json& entry = (*templates)[i];
        if (!entry.is_object()) {
            problems.add(place, "not an object");
            continue;
        }
        std::string source;
        std::string where = place;
        if (entry.contains("file")) {
            only_fields(entry, {"file"}, place, problems);
            const auto name = string_field(entry, "file", place, true, problems);
            if (!name) {
                continue;
            }
            std::optional<std::string> contents;
            if (read_template) {
                contents = read_template(*name);
            }
            if (!contents) {
                problems.add(at(place, "file"), "cannot read '" + *name + "'");
                continue;
            }
            source = std::move(*contents);
            where = place + " (" + *name + ")";
        } else {
            source = entry.dump();
        }
        CGeoTemplate templ;
        std::vector<JobError> template_errors;
        if (!parse_template(source, templ, template_errors)) {
            for (const JobError& e : template_errors) {
                const std::string line = e.line > 0 ? "line " + std::to_string(e.line) + ": " : "";
                problems.add(where, line + e.message);
            }
            continue;
        }
        if (road.TemplateIndex(templ.Name()) >= 0) {
            problems.add(place,
                         "a template named '" + templ.Name().ToUtf8() + "' is already in the road");
            continue;
        }
        if (road.AddTemplate(&templ) == 0) {
            problems.add(place, "the template cannot be stored");
        }
    }
}

void read_applications(const json& root, CGeoRoad& road, Problems& problems) {
    const json* applications = list(root, "applications", problems);
    if (applications == nullptr) {
        return;
    }
    for (std::size_t i = 0; i < applications->size(); ++i) {
        const std::string place = item("applications", i);
        const json& entry = (*applications)[i];
        if (!entry.is_object()) {
            problems.add(place, "not an object");
            continue;
        }
        const std::size_t before = problems.count();
        only_fields(entry, {"template", "station", "side"}, place, problems);
        const auto name = string_field(entry, "template", place, true, problems);
        const auto station = number(entry, "station", place, true, kMaxCoordinate, problems);
        const auto side_word = string_field(entry, "side", place, true, problems);
        geodef_RoadSide side = geodef_BothSides;
        if (side_word) {
            if (*side_word == "left") {
                side = geodef_LeftSide;
            } else if (*side_word == "right") {
                side = geodef_RightSide;
            } else if (*side_word != "both") {
                problems.add(at(place, "side"), "'" + *side_word + "' is not left, right or both");
            }
        }
        if (problems.count() != before || !name || !station) {
            continue;
        }
        if (road.AddTemplateApplication(CString::FromUtf8(*name), *station, side) == 0) {
            problems.add(at(place, "template"), "no template named '" + *name + "'");
        }
    }
}

int line_of_offset(std::string_view text, std::size_t offset) {
    int line = 1;
    for (std::size_t i = 0; i < offset && i < text.size(); ++i) {
        if (text[i] == '\n') {
            ++line;
        }
    }
    return line;
}

} // namespace

bool parse_road_json(std::string_view text, const TemplateFileReader& read_template, CGeoRoad& road,
                     std::vector<JobError>& errors) {
    road.Reset();
    Problems problems(errors);
    const std::size_t before = problems.count();
    json root;
    try {
        root = json::parse(text.begin(), text.end());
    } catch (const json::parse_error& e) {
        errors.push_back(JobError{line_of_offset(text, e.byte > 0 ? e.byte - 1 : 0),
                                  "not JSON: " + std::string(e.what())});
        return false;
    } catch (const json::exception& e) {
        // A number beyond the range of a double, for one.
        errors.push_back(JobError{0, "not usable JSON: " + std::string(e.what())});
        return false;
    }
    if (!root.is_object()) {
        problems.add("", "the road description is not a JSON object");
        return false;
    }
    only_fields(
        root,
        {"name", "station_interval", "start", "horizontal", "profile", "templates", "applications"},
        "", problems);
    const auto name = string_field(root, "name", "", false, problems);
    std::optional<double> start_azimuth;
    read_start(root, road, start_azimuth, problems);
    if (const json* elements = list(root, "horizontal", problems)) {
        for (std::size_t i = 0; i < elements->size(); ++i) {
            if (!add_element((*elements)[i], item("horizontal", i), road, start_azimuth,
                             problems)) {
                break; // later elements would start from the wrong place
            }
        }
    }
    read_profile(root, road, problems);
    read_templates(root, read_template, road, problems);
    read_applications(root, road, problems);
    if (problems.count() != before) {
        road.Reset();
        return false;
    }
    if (name) {
        road.SetName(CString::FromUtf8(*name));
    }
    road.SetModifiedFlag(0);
    return true;
}

} // namespace qv5::cli
