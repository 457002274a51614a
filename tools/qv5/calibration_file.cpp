#include "calibration_file.h"

#include "number_args.h"
#include "output.h"

#include "qv5/geoadjust.h"
#include "qv5/geosurvey.h"
#include "qv5/hostfw.h"

#include <nlohmann/json.hpp>

#include <algorithm>
#include <cctype>
#include <cmath>
#include <map>

namespace qv5::cli {
namespace {

constexpr int kMinutesPerDegree = 60;
constexpr double kSecondsPerMinute = 60.0;
constexpr int kLatitudeLimit = 90;
constexpr int kLongitudeLimit = 180;
constexpr double kHalfPi = 1.5707963267948966;
constexpr double kPi = 3.141592653589793;
/// The UTF-8 encoding of the degree sign U+00B0.
constexpr std::string_view kDegreeSign = "\xC2\xB0";
constexpr std::string_view kFormatName = "qv5-calibration";
constexpr int kFormatVersion = 1;
constexpr std::size_t kControlFields = 8;

std::string lower(std::string_view text) {
    std::string out(text);
    std::transform(out.begin(), out.end(), out.begin(),
                   [](unsigned char c) { return static_cast<char>(std::tolower(c)); });
    return out;
}

bool starts_with_sign(std::string_view text) {
    return !text.empty() && (text.front() == '+' || text.front() == '-');
}

/// Splits degrees-minutes-seconds text at blanks, colons and the marks ° ' ".
std::vector<std::string_view> angle_tokens(std::string_view text) {
    std::vector<std::string_view> tokens;
    std::size_t start = 0;
    std::size_t i = 0;
    const auto flush = [&](std::size_t end) {
        if (end > start) {
            tokens.push_back(text.substr(start, end - start));
        }
    };
    while (i < text.size()) {
        const char c = text[i];
        std::size_t width = 0;
        if (c == ' ' || c == '\t' || c == ':' || c == '\'' || c == '"') {
            width = 1;
        } else if (text.substr(i, kDegreeSign.size()) == kDegreeSign) {
            width = kDegreeSign.size();
        }
        if (width > 0) {
            flush(i);
            i += width;
            start = i;
        } else {
            ++i;
        }
    }
    flush(text.size());
    return tokens;
}

/// The parsed value of an optional number field: empty text is `GEO_NULL`.
bool optional_number(std::string_view text, double& value) {
    if (trim(text).empty()) {
        value = GEO_NULL;
        return true;
    }
    return parse_number(text, value);
}

bool parse_use(std::string_view text, std::uint32_t& flags) {
    const std::string use = lower(trim(text));
    if (use == "h") {
        flags = geotrans_UseHorizontal;
    } else if (use == "v") {
        flags = geotrans_UseVertical;
    } else if (use == "hv" || use == "vh") {
        flags = geotrans_UseHorizontal | geotrans_UseVertical;
    } else if (use == "-") {
        flags = 0;
    } else {
        return false;
    }
    return true;
}

} // namespace

std::string use_text(std::uint32_t flags) {
    const bool h = (flags & geotrans_UseHorizontal) != 0;
    const bool v = (flags & geotrans_UseVertical) != 0;
    return h && v ? "hv" : h ? "h" : v ? "v" : "-";
}

namespace {

/// The problems of a point's coordinates that its use makes necessary, as "field: reason".
std::vector<std::string> missing_for_use(const ControlPoint& p) {
    std::vector<std::string> missing;
    if ((p.flags & geotrans_UseHorizontal) != 0) {
        if (p.nee.north == GEO_NULL) {
            missing.push_back("north: a horizontal point needs its north");
        }
        if (p.nee.east == GEO_NULL) {
            missing.push_back("east: a horizontal point needs its east");
        }
    }
    if ((p.flags & geotrans_UseVertical) != 0) {
        if (p.llh.height == GEO_NULL) {
            missing.push_back("height: a vertical point needs its ellipsoidal height");
        }
        if (p.nee.elev == GEO_NULL) {
            missing.push_back("elevation: a vertical point needs its elevation");
        }
    }
    return missing;
}

std::string check_name(std::string_view name) {
    if (name.empty()) {
        return "the name is empty";
    }
    if (CString::FromUtf8(name).GetLength() > kMaxNameUnits) {
        return "the name is longer than " + std::to_string(kMaxNameUnits) + " characters";
    }
    return {};
}

/// Collects the problems of one line.
class LineErrors {
public:
    LineErrors(int line, std::vector<JobError>& errors) : m_line(line), m_errors(errors) {}

    void fail(std::string message) {
        m_failed = true;
        m_errors.push_back({m_line, std::move(message)});
    }
    bool failed() const { return m_failed; }

    double angle(std::string_view text, bool latitude, std::string_view field) {
        double radians = 0.0;
        std::string why;
        if (!parse_angle(text, latitude, radians, why)) {
            fail(std::string(field) + ": '" + std::string(trim(text)) + "' " + why);
        }
        return radians;
    }

    double number(std::string_view text, std::string_view field, bool optional) {
        double value = 0.0;
        const bool ok = optional ? optional_number(text, value) : parse_number(text, value);
        if (!ok) {
            fail(std::string(field) + ": '" + std::string(trim(text)) + "' is not a number");
        }
        return value;
    }

private:
    int m_line;
    std::vector<JobError>& m_errors;
    bool m_failed = false;
};

/// Checks names for uniqueness across points, reporting the later of two.
class NameRegister {
public:
    /// @return empty, or the message for a name already used
    std::string add(const std::string& name, const std::string& where) {
        const auto [it, fresh] = m_seen.emplace(name, where);
        return fresh ? std::string() : "the name '" + name + "' is already used " + it->second;
    }

private:
    std::map<std::string, std::string> m_seen;
};

nlohmann::ordered_json point_json(const ControlPoint& p) {
    return {{"name", p.name},
            {"latitude_rad", p.llh.lat},
            {"longitude_rad", p.llh.lon},
            {"height", json_number(p.llh.height)},
            {"north", json_number(p.nee.north)},
            {"east", json_number(p.nee.east)},
            {"elevation", json_number(p.nee.elev)},
            {"use", use_text(p.flags)}};
}

/// Reads one member of a JSON point: a finite number, or null where `nullable`.
bool json_coordinate(const nlohmann::json& point, const char* key, bool nullable, double& value,
                     std::string& why) {
    const auto it = point.find(key);
    if (it == point.end()) {
        why = std::string(key) + ": missing";
        return false;
    }
    if (nullable && it->is_null()) {
        value = GEO_NULL;
        return true;
    }
    if (!it->is_number() || !std::isfinite(it->get<double>())) {
        why = std::string(key) + (nullable ? ": must be a number or null" : ": must be a number");
        return false;
    }
    value = it->get<double>();
    return true;
}

} // namespace

bool parse_angle(std::string_view text, bool latitude, double& radians, std::string& why) {
    std::string_view body = trim(text);
    if (body.empty()) {
        why = "is empty";
        return false;
    }
    bool negative = false;
    const bool signed_text = starts_with_sign(body);
    if (signed_text) {
        negative = body.front() == '-';
        body.remove_prefix(1);
    }
    char hemisphere = 0;
    if (!body.empty()) {
        const char last = static_cast<char>(std::toupper(static_cast<unsigned char>(body.back())));
        if (latitude ? (last == 'N' || last == 'S') : (last == 'E' || last == 'W')) {
            hemisphere = last;
            body.remove_suffix(1);
        }
    }
    if (hemisphere != 0 && signed_text) {
        why = "has both a sign and a hemisphere letter";
        return false;
    }
    negative = negative || hemisphere == 'S' || hemisphere == 'W';
    const int limit = latitude ? kLatitudeLimit : kLongitudeLimit;
    const std::string range = latitude ? "a latitude is at most 90 degrees either way"
                                       : "a longitude is at most 180 degrees either way";
    const std::vector<std::string_view> tokens = angle_tokens(body);
    for (std::string_view token : tokens) {
        if (starts_with_sign(token)) {
            why = "has a sign inside it";
            return false;
        }
    }
    if (tokens.size() == 1) {
        double degrees = 0.0;
        if (!parse_number(tokens[0], degrees)) {
            why = "is not an angle in decimal degrees or degrees, minutes and seconds";
            return false;
        }
        if (degrees > limit) {
            why = "is out of range: " + range;
            return false;
        }
        radians = _degtorad(degrees);
    } else if (tokens.size() == 3) {
        int degrees = 0;
        int minutes = 0;
        double seconds = 0.0;
        if (!parse_integer(tokens[0], degrees) || !parse_integer(tokens[1], minutes) ||
            !parse_number(tokens[2], seconds) || minutes < 0 || minutes >= kMinutesPerDegree ||
            seconds < 0.0 || seconds >= kSecondsPerMinute) {
            why = "is not in whole degrees, whole minutes (0-59) and seconds (below 60)";
            return false;
        }
        if (degrees > limit || (degrees == limit && (minutes != 0 || seconds != 0.0))) {
            why = "is out of range: " + range;
            return false;
        }
        _dmstorad(degrees, minutes, seconds, &radians);
    } else {
        why = "is not an angle in decimal degrees or degrees, minutes and seconds";
        return false;
    }
    if (negative) {
        radians = -radians;
    }
    return true;
}

bool parse_control_points(std::string_view text, std::vector<ControlPoint>& points,
                          std::vector<JobError>& errors) {
    points.clear();
    const std::size_t errors_before = errors.size();
    bool first = true;
    NameRegister names;
    for_each_record(text, [&](int line, std::string_view record) {
        const std::vector<std::string_view> fields = split_fields(record);
        const bool header = first && lower(trim(fields.front())) == "name";
        first = false;
        if (header) {
            return;
        }
        LineErrors row(line, errors);
        if (fields.size() != kControlFields) {
            row.fail("expected 8 fields (name,latitude,longitude,height,north,east,elevation,use)"
                     ", found " +
                     std::to_string(fields.size()));
            return;
        }
        ControlPoint p{std::string(trim(fields[0])), geo_llh{}, geo_nee{}, 0, line};
        if (const std::string why = check_name(p.name); !why.empty()) {
            row.fail("name: " + why);
        }
        p.llh.lat = row.angle(fields[1], true, "latitude");
        p.llh.lon = row.angle(fields[2], false, "longitude");
        p.llh.height = row.number(fields[3], "height", true);
        p.nee.north = row.number(fields[4], "north", true);
        p.nee.east = row.number(fields[5], "east", true);
        p.nee.elev = row.number(fields[6], "elevation", true);
        if (!parse_use(fields[7], p.flags)) {
            row.fail("use: '" + std::string(trim(fields[7])) + "' is not h, v, hv or -");
        }
        if (row.failed()) {
            return;
        }
        for (const std::string& message : missing_for_use(p)) {
            row.fail(message);
        }
        if (const std::string dup = names.add(p.name, "on line " + std::to_string(line));
            !dup.empty()) {
            row.fail("name: " + dup);
        }
        if (!row.failed()) {
            points.push_back(std::move(p));
        }
    });
    if (errors.size() == errors_before && points.empty()) {
        errors.push_back({0, "the file holds no calibration points"});
    }
    if (points.size() > kMaxCalibrationPoints) {
        errors.push_back(
            {0, "more than " + std::to_string(kMaxCalibrationPoints) + " calibration points"});
    }
    if (errors.size() != errors_before) {
        points.clear();
        return false;
    }
    return true;
}

bool parse_calibration_json(std::string_view text, SavedCalibration& calibration,
                            std::vector<JobError>& errors) {
    calibration = SavedCalibration{};
    const std::size_t errors_before = errors.size();
    const auto fail = [&](std::string message) { errors.push_back({0, std::move(message)}); };
    const nlohmann::json doc = nlohmann::json::parse(text.begin(), text.end(), nullptr, false);
    if (doc.is_discarded() || !doc.is_object()) {
        fail("not a JSON object");
        return false;
    }
    const auto format = doc.find("format");
    if (format == doc.end() || !format->is_string() || format->get<std::string>() != kFormatName) {
        fail("format: must be \"" + std::string(kFormatName) + "\"");
        return false;
    }
    const auto version = doc.find("version");
    if (version == doc.end() || !version->is_number_integer() ||
        version->get<long long>() != kFormatVersion) {
        fail("version: only version " + std::to_string(kFormatVersion) + " is known");
        return false;
    }
    SavedCalibration read;
    std::string why;
    if (!json_coordinate(doc, "default_scale", false, read.default_scale, why) ||
        !json_coordinate(doc, "default_rotation_rad", false, read.default_rotation, why)) {
        fail(why);
    }
    const auto points = doc.find("points");
    if (points == doc.end() || !points->is_array() || points->empty()) {
        fail("points: must be a list of at least one point");
        return false;
    }
    if (points->size() > kMaxCalibrationPoints) {
        fail("points: more than " + std::to_string(kMaxCalibrationPoints));
        return false;
    }
    NameRegister names;
    int number = 0;
    for (const nlohmann::json& item : *points) {
        ++number;
        const std::string where = "point " + std::to_string(number);
        if (!item.is_object()) {
            fail(where + ": must be an object");
            continue;
        }
        ControlPoint p{{}, geo_llh{}, geo_nee{}, 0, 0};
        const auto name = item.find("name");
        if (name == item.end() || !name->is_string()) {
            fail(where + ": name: must be text");
            continue;
        }
        p.name = name->get<std::string>();
        const std::size_t failures = errors.size();
        if (const std::string bad = check_name(p.name); !bad.empty()) {
            fail(where + ": name: " + bad);
        }
        const std::string label = where + " ('" + p.name + "')";
        for (const auto& [key, nullable, target] :
             {std::tuple<const char*, bool, double*>{"latitude_rad", false, &p.llh.lat},
              {"longitude_rad", false, &p.llh.lon},
              {"height", true, &p.llh.height},
              {"north", true, &p.nee.north},
              {"east", true, &p.nee.east},
              {"elevation", true, &p.nee.elev}}) {
            if (!json_coordinate(item, key, nullable, *target, why)) {
                fail(label + ": " + why);
            }
        }
        if (errors.size() == failures &&
            (std::fabs(p.llh.lat) > kHalfPi || std::fabs(p.llh.lon) > kPi)) {
            fail(label + ": latitude_rad, longitude_rad: out of range");
        }
        const auto use = item.find("use");
        if (use == item.end() || !use->is_string() ||
            !parse_use(use->get<std::string>(), p.flags)) {
            fail(label + ": use: must be \"h\", \"v\", \"hv\" or \"-\"");
        }
        if (errors.size() != failures) {
            continue;
        }
        for (const std::string& message : missing_for_use(p)) {
            fail(label + ": " + message);
        }
        if (const std::string dup = names.add(p.name, "by " + where); !dup.empty()) {
            fail(label + ": name: " + dup);
        }
        read.points.push_back(std::move(p));
    }
    if (errors.size() != errors_before) {
        return false;
    }
    calibration = std::move(read);
    return true;
}

bool build_calibration(const SavedCalibration& saved, CGeoTransformation& transformation,
                       geotrans_Error& error) {
    transformation.Reset();
    transformation.SetDefaultScaleAndRotation(saved.default_scale, saved.default_rotation);
    error = geotrans_NoError;
    for (const ControlPoint& p : saved.points) {
        geotrans_CalibrationPoint record{};
        const CString name = CString::FromUtf8(p.name);
        const unsigned short* units = name.GetString();
        for (int i = 0; i < kMaxNameUnits && units[i] != 0; ++i) {
            record.name[i] = units[i];
        }
        record.llh = p.llh;
        record.nee = p.nee;
        record.flags = p.flags;
        error = geotrans_NoError;
        transformation.AddPoint(&record, &error);
    }
    return transformation.IsCalibrated() == 1;
}

std::string calibration_json(const SavedCalibration& saved, CGeoTransformation& t) {
    nlohmann::ordered_json points = nlohmann::ordered_json::array();
    for (const ControlPoint& p : saved.points) {
        points.push_back(point_json(p));
    }
    nlohmann::ordered_json doc = {
        {"format", kFormatName},
        {"version", kFormatVersion},
        {"default_scale", saved.default_scale},
        {"default_rotation_rad", saved.default_rotation},
        {"points", points},
        {"solution",
         {{"note", "for information: a calibration file is solved again when it is loaded"},
          {"calibrated", t.IsCalibrated() == 1},
          {"origin_latitude_rad", json_number(t.OriginLat())},
          {"origin_longitude_rad", json_number(t.OriginLon())},
          {"origin_north", json_number(t.OriginNorth())},
          {"origin_east", json_number(t.OriginEast())},
          {"scale", json_number(t.HorizontalScale())},
          {"rotation_rad", json_number(t.HorizontalRotation())},
          {"height_shift", json_number(t.VerticalHeightAdjustment())},
          {"slope_north", json_number(t.VerticalSlopeNorth())},
          {"slope_east", json_number(t.VerticalSlopeEast())}}}};
    return doc.dump(2) + "\n";
}

bool parse_conversion_rows(std::string_view text, ConversionTarget target,
                           std::vector<ConversionInput>& inputs, std::vector<JobError>& errors) {
    inputs.clear();
    const std::size_t errors_before = errors.size();
    const bool to_grid = target == ConversionTarget::grid;
    bool first = true;
    for_each_record(text, [&](int line, std::string_view record) {
        const std::vector<std::string_view> fields = split_fields(record);
        const std::string head = lower(trim(fields.front()));
        const bool header = first && (head == "name" || head == (to_grid ? "latitude" : "north"));
        first = false;
        if (header) {
            return;
        }
        LineErrors row(line, errors);
        if (fields.size() != 3 && fields.size() != 4) {
            row.fail(std::string("expected 3 or 4 fields ([name,]") +
                     (to_grid ? "latitude,longitude,height" : "north,east,elevation") +
                     "), found " + std::to_string(fields.size()));
            return;
        }
        const std::size_t at = fields.size() - 3;
        ConversionInput in{at == 1 ? std::string(trim(fields[0])) : std::string(), 0.0, 0.0,
                           GEO_NULL, line};
        if (to_grid) {
            in.a = row.angle(fields[at], true, "latitude");
            in.b = row.angle(fields[at + 1], false, "longitude");
            in.c = row.number(fields[at + 2], "height", true);
        } else {
            in.a = row.number(fields[at], "north", false);
            in.b = row.number(fields[at + 1], "east", false);
            in.c = row.number(fields[at + 2], "elevation", true);
        }
        if (!row.failed()) {
            inputs.push_back(std::move(in));
        }
    });
    if (errors.size() != errors_before) {
        inputs.clear();
        return false;
    }
    return true;
}

} // namespace qv5::cli
