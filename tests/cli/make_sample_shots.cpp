// Writes data/sample-shots.csv: the WGS84 positions of the shots designed in
// tests/data/sample-shots-design.csv, on the sample road, through the sample calibration.
//
// Each shot is put at its station and offset (CGeoRoadIterator::CenterlinePoint), at its height
// above the design surface there (the finished road surface, or the cut or fill slope beyond
// the shoulder), and taken from site grid to WGS84 by the calibration's reverse chain. Staking
// the shots must give the design table back; tests/cli/stake_expected.py computes the rest of
// the expected results without the library.
//
// Usage: qv5_make_sample_shots ROAD.json CALIBRATION.csv DESIGN.csv > data/sample-shots.csv
#include "args.h"
#include "calibration.h"
#include "control_points_csv.h"
#include "csv_text.h"
#include "road_json.h"

#include "qv5/qv5lib.h"

#include <fmt/format.h>

#include <cmath>
#include <filesystem>
#include <iostream>
#include <optional>
#include <string>

using namespace qv5::cli;

namespace {

/// Heights far enough above or below the shoulder to choose the cut or the fill slope.
constexpr double kSlopeProbe = 10.0;

bool read(const std::string& path, std::string& text) {
    if (!read_whole_file(path, text)) {
        std::cerr << "cannot read " << path << '\n';
        return false;
    }
    return true;
}

/// The design elevation at a station and offset: the road surface, or the slope of `kind`.
std::optional<double> design_elevation(CGeoRoadIterator& it, double station, double offset,
                                       const std::string& kind, CGeoPoint& at) {
    double azimuth = GEO_NULL;
    it.CenterlinePoint(station, offset, 0.0, at, azimuth, nullptr, nullptr);
    if (kind == "road") {
        const double e = it.Elevation(at);
        return e == GEO_NULL ? std::nullopt : std::optional<double>(e);
    }
    double centreline = GEO_NULL;
    double grade = GEO_NULL;
    it.VerticalCurveDeltas(station, centreline, grade);
    CGeoTemplate t;
    it.CalcTemplate(offset > 0.0 ? geodef_RightSide : geodef_LeftSide, station, &t);
    const int cut = kind == "cut" ? 1 : 0;
    const double probe = t.VOffsetShoulder() + (cut != 0 ? kSlopeProbe : -kSlopeProbe);
    int in_ditch = 0;
    double above = GEO_NULL, slope = GEO_NULL, point_angle = GEO_NULL, catch_offset = GEO_NULL;
    t.SlopeDeltas(std::fabs(offset), probe, cut, in_ditch, above, slope, point_angle, catch_offset);
    if (above == GEO_NULL || centreline == GEO_NULL) {
        return std::nullopt;
    }
    return centreline + probe - above;
}

} // namespace

int main(int argc, char** argv) {
    if (argc != 4) {
        std::cerr << "usage: qv5_make_sample_shots ROAD.json CALIBRATION.csv DESIGN.csv\n";
        return 2;
    }
    std::string road_text, calibration_text, design_text;
    if (!read(argv[1], road_text) || !read(argv[2], calibration_text) ||
        !read(argv[3], design_text)) {
        return 1;
    }
    const std::filesystem::path folder = std::filesystem::path(argv[1]).parent_path();
    CGeoRoad road;
    std::vector<JobError> errors;
    const TemplateFileReader templates =
        [&](const std::string& name) -> std::optional<std::string> {
        std::string body;
        return read_whole_file((folder / name).string(), body) ? std::optional(body) : std::nullopt;
    };
    if (!parse_road_json(road_text, templates, road, errors)) {
        std::cerr << "road rejected\n";
        return 1;
    }
    SavedCalibration saved;
    if (!parse_control_points(calibration_text, saved.points, errors)) {
        std::cerr << "calibration rejected\n";
        return 1;
    }
    CGeoTransformation calibration;
    geotrans_Error error = geotrans_NoError;
    if (!build_calibration(saved, calibration, error)) {
        std::cerr << "calibration not solved\n";
        return 1;
    }
    CGeoRoadIterator it;
    it.Set(&road);
    std::cout << "# Sample shots for 'qv5 stake' (the default job): WGS84 latitude and longitude\n"
                 "# (decimal degrees) and ellipsoidal height, measured along and across\n"
                 "# data/sample-road.json. Made by tests/cli/make_sample_shots.cpp from the\n"
                 "# design table tests/data/sample-shots-design.csv through the sample\n"
                 "# calibration (data/sample-calibration.csv).\n"
                 "name,latitude,longitude,height\n";
    int status = 0;
    for_each_record(design_text, [&](int line, std::string_view record) {
        const std::vector<std::string_view> f = split_fields(record);
        if (f.size() != 5 || trim(f[0]) == "name") {
            return;
        }
        double station = 0.0, offset = 0.0, cut = 0.0;
        if (!parse_number(f[1], station) || !parse_number(f[2], offset) ||
            !parse_number(f[3], cut)) {
            std::cerr << "design line " << line << " is not good\n";
            status = 1;
            return;
        }
        CGeoPoint at;
        const std::optional<double> design =
            design_elevation(it, station, offset, std::string(trim(f[4])), at);
        if (!design) {
            std::cerr << "design line " << line << ": no design surface there\n";
            status = 1;
            return;
        }
        CGeoPoint shot;
        shot.SetTransformation(calibration);
        shot.SetGrid(at.Northing(), at.Easting(), *design + cut);
        std::cout << fmt::format("{},{:.10f},{:.10f},{:.4f}\n", trim(f[0]),
                                 shot.WGS84Lat() * kDegreesPerRadian,
                                 shot.WGS84Lon() * kDegreesPerRadian, shot.WGS84Hgt());
    });
    return status;
}
