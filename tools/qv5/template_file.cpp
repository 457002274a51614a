#include "template_file.h"

#include "csv_text.h"
#include "output.h"

#include <nlohmann/json.hpp>

#include <cmath>
#include <cstring>
#include <optional>
#include <set>

namespace qv5::cli {
namespace {

constexpr double kRadiansPerDegree = 0.017453292519943295;

using Json = nlohmann::json;

struct TypeInfo {
    std::string_view name;
    geotemp_ElementType type;
};

constexpr TypeInfo kTypes[] = {
    {"step", geotemp_Step},
    {"grade-width", geotemp_GradeWidth},
    {"delta-hv", geotemp_DeltaHV},
    {"feature", geotemp_Feature},
    {"fixed-point", geotemp_FixedPoint},
    {"side-slope", geotemp_SideSlope},
};

/// Reads the fields of one element, noting every problem under its place.
class ElementReader {
public:
    ElementReader(const Json& element, std::string place, std::vector<JobError>& errors)
        : m_element(element), m_place(std::move(place)), m_errors(errors) {}

    void fail(const std::string& field, const std::string& message) {
        m_errors.push_back({0, m_place + (field.empty() ? "" : "." + field) + ": " + message});
        m_ok = false;
    }

    /// A finite number; `fallback` when absent and optional.
    double number(const char* field, bool required, double fallback = 0.0) {
        m_known.insert(field);
        const auto it = m_element.find(field);
        if (it == m_element.end()) {
            if (required) {
                fail(field, "is missing");
            }
            return fallback;
        }
        if (!it->is_number()) {
            fail(field, "is not a number");
            return fallback;
        }
        const double value = it->get<double>();
        if (!std::isfinite(value)) {
            fail(field, "is not a finite number");
            return fallback;
        }
        return value;
    }

    /// A length in metres.
    double metres(const char* field, bool required = true) { return number(field, required); }

    /// An angle given in decimal degrees, as radians; within (-90, 90) degrees.
    double angle(const char* field, bool required = true) {
        const std::size_t before = m_errors.size();
        const double degrees = number(field, required);
        if (m_errors.size() == before && !(std::fabs(degrees) < 90.0)) {
            fail(field, "must lie strictly between -90 and 90 degrees");
            return 0.0;
        }
        return degrees * kRadiansPerDegree;
    }

    /// A side-slope angle given in decimal degrees, as radians; within (0, 90) degrees (a level
    /// slope never reaches the ground).
    double slope_angle(const char* field) {
        const std::size_t before = m_errors.size();
        const double degrees = number(field, true);
        if (m_errors.size() == before && !(degrees > 0.0 && degrees < 90.0)) {
            fail(field, "must lie strictly between 0 and 90 degrees");
            return 0.0;
        }
        return degrees * kRadiansPerDegree;
    }

    /// A feature name: text of at most 32 UTF-16 code units, written into `units`.
    void name(unsigned short (&units)[33]) {
        m_known.insert("name");
        std::memset(units, 0, sizeof units);
        const auto it = m_element.find("name");
        if (it == m_element.end()) {
            fail("name", "is missing");
            return;
        }
        if (!it->is_string()) {
            fail("name", "is not text");
            return;
        }
        const CString text = CString::FromUtf8(it->get<std::string>());
        if (text.GetLength() > kMaxFeatureNameUnits) {
            fail("name", "is longer than 32 characters");
            return;
        }
        std::memcpy(units, text.GetString(),
                    static_cast<std::size_t>(text.GetLength()) * sizeof(unsigned short));
    }

    /// Reports every field that the element's type does not use (a misspelt field would
    /// otherwise be silently dropped).
    void refuse_unknown_fields() {
        for (const auto& [key, value] : m_element.items()) {
            if (key != "type" && m_known.count(key) == 0) {
                fail(key, "is not a field of this element type");
            }
        }
    }

    bool ok() const { return m_ok; }

private:
    const Json& m_element;
    std::string m_place;
    std::vector<JobError>& m_errors;
    std::set<std::string> m_known;
    bool m_ok = true;
};

/// Reads one element and adds it to `result`.
void read_element(const Json& element, std::size_t index, bool last, CGeoTemplate& result,
                  std::vector<JobError>& errors) {
    const std::string place = "elements[" + std::to_string(index) + "]";
    if (!element.is_object()) {
        errors.push_back({0, place + ": is not an object"});
        return;
    }
    ElementReader r(element, place, errors);
    const auto type_it = element.find("type");
    if (type_it == element.end() || !type_it->is_string()) {
        r.fail("type", type_it == element.end() ? "is missing" : "is not text");
        return;
    }
    const std::string type_name = type_it->get<std::string>();
    std::optional<geotemp_ElementType> type;
    for (const TypeInfo& t : kTypes) {
        if (t.name == type_name) {
            type = t.type;
        }
    }
    if (!type) {
        r.fail("type", "'" + type_name +
                           "' is not step, grade-width, delta-hv, feature, fixed-point or "
                           "side-slope");
        return;
    }
    switch (*type) {
    case geotemp_Step: {
        geotemp_StepData d{r.metres("dh"), r.metres("dv")};
        r.refuse_unknown_fields();
        if (r.ok()) {
            result.AddElement(*type, &d);
        }
        break;
    }
    case geotemp_GradeWidth: {
        geotemp_GradeWidthData d{r.angle("angle"), r.metres("width")};
        r.refuse_unknown_fields();
        if (r.ok()) {
            result.AddElement(*type, &d);
        }
        break;
    }
    case geotemp_DeltaHV: {
        geotemp_DeltaHVData d{r.metres("dh"), r.metres("dv")};
        r.refuse_unknown_fields();
        if (r.ok()) {
            result.AddElement(*type, &d);
        }
        break;
    }
    case geotemp_Feature: {
        geotemp_FeatureData d;
        r.name(d.Name);
        d.ValueA = r.number("value_a", false);
        d.ValueB = r.number("value_b", false);
        r.refuse_unknown_fields();
        if (r.ok()) {
            result.AddElement(*type, &d);
        }
        break;
    }
    case geotemp_FixedPoint: {
        geotemp_FixedPointData d;
        std::memset(&d, 0, sizeof d);
        d.H = r.metres("h");
        d.V = r.metres("v");
        d.Angle = r.angle("angle", false);
        r.refuse_unknown_fields();
        if (r.ok()) {
            result.AddElement(*type, &d);
        }
        break;
    }
    default: {
        geotemp_SideSlopeData d{r.slope_angle("cut_angle"), r.slope_angle("fill_angle"),
                                r.metres("ditch_width", false)};
        if (d.DitchWidth < 0.0) {
            r.fail("ditch_width", "must not be negative");
        }
        if (!last) {
            r.fail("", "a side slope must be the last element");
        }
        r.refuse_unknown_fields();
        if (r.ok()) {
            result.AddElement(*type, &d);
        }
        break;
    }
    }
}

} // namespace

std::string_view template_type_name(geotemp_ElementType type) {
    for (const TypeInfo& t : kTypes) {
        if (t.type == type) {
            return t.name;
        }
    }
    return "";
}

bool parse_template(std::string_view text, CGeoTemplate& result, std::vector<JobError>& errors) {
    result.Reset();
    result.SetName(CString(""));
    errors.clear();
    Json doc;
    try {
        doc = Json::parse(text.begin(), text.end());
    } catch (const Json::parse_error& e) {
        // The byte position of the fault, as a line number.
        int line = 1;
        for (std::size_t i = 0; i < e.byte && i < text.size(); ++i) {
            line += text[i] == '\n' ? 1 : 0;
        }
        errors.push_back({line, std::string("not JSON: ") + e.what()});
        return false;
    } catch (const Json::exception& e) {
        // A number beyond the range of a double (1e999): JSON has no other way to say infinity.
        errors.push_back({0, std::string("not usable JSON: ") + e.what()});
        return false;
    }
    if (!doc.is_object()) {
        errors.push_back({0, "the file is not a JSON object with \"name\" and \"elements\""});
        return false;
    }
    for (const auto& [key, value] : doc.items()) {
        if (key != "name" && key != "elements") {
            errors.push_back({0, key + ": is not a field of a template file"});
        }
    }
    const auto name = doc.find("name");
    if (name == doc.end()) {
        errors.push_back({0, "name: is missing"});
    } else if (!name->is_string()) {
        errors.push_back({0, "name: is not text"});
    } else {
        result.SetName(CString::FromUtf8(name->get<std::string>()));
    }
    const auto elements = doc.find("elements");
    if (elements == doc.end()) {
        errors.push_back({0, "elements: is missing"});
    } else if (!elements->is_array()) {
        errors.push_back({0, "elements: is not a list"});
    } else if (elements->size() > kMaxTemplateElements) {
        errors.push_back(
            {0, "elements: more than " + std::to_string(kMaxTemplateElements) + " elements"});
    } else {
        for (std::size_t i = 0; i < elements->size(); ++i) {
            read_element((*elements)[i], i, i + 1 == elements->size(), result, errors);
        }
    }
    if (!errors.empty()) {
        result.Reset();
        return false;
    }
    return true;
}

bool load_template_file(const std::string& command, const std::string& path, CGeoTemplate& result) {
    std::string text;
    if (!read_whole_file(path, text)) {
        report_error(command + ": cannot read '" + path + "'");
        return false;
    }
    std::vector<JobError> errors;
    if (!parse_template(text, result, errors)) {
        report_file_errors(path, errors, "template file refused");
        return false;
    }
    return true;
}

} // namespace qv5::cli
