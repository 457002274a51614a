#include "calibration_json.h"

#include "output.h"

#include <nlohmann/json.hpp>

#include <cmath>
#include <numbers>
#include <tuple>
#include <utility>

namespace qv5::cli {
namespace {

constexpr std::string_view kFormatName = "qv5-calibration";
constexpr int kFormatVersion = 1;

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
        if (errors.size() == failures && (std::fabs(p.llh.lat) > std::numbers::pi / 2 ||
                                          std::fabs(p.llh.lon) > std::numbers::pi)) {
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

} // namespace qv5::cli
