#include "control_points_csv.h"

#include "row_errors.h"

#include <utility>

namespace qv5::cli {
namespace {

constexpr std::size_t kControlFields = 8;

} // namespace

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
        RowErrors row(line, errors);
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

} // namespace qv5::cli
