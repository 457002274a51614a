// `qv5 calibrate`: a site calibration fitted to control points, its parameters and residuals,
// and optionally the calibration saved for `qv5 convert`.
#include "calibration.h"
#include "calibration_json.h"
#include "commands.h"
#include "control_points_csv.h"
#include "conversion_rows.h"
#include "dms.h"
#include "output.h"
#include "output_options.h"
#include "proj_pipeline.h"
#include "units_output.h"

#include "qv5/qv5lib.h"

#include <fmt/format.h>

#include <fstream>
#include <iostream>
#include <memory>

namespace qv5::cli {
namespace {

struct CalibrateOptions {
    std::string points_file;
    std::string save_file;
    bool proj = false;
};

const char* region_name(CGeoStereographic::stereo_Region region) {
    switch (region) {
    case CGeoStereographic::stereo_NorthPolar:
        return "north polar";
    case CGeoStereographic::stereo_SouthPolar:
        return "south polar";
    case CGeoStereographic::stereo_Equatorial:
        return "equatorial";
    case CGeoStereographic::stereo_Oblique:
        return "oblique";
    default:
        return "none";
    }
}

std::string failure_reason(geotrans_Error error) {
    if (error == geotrans_OutOfMemory) {
        return "out of memory";
    }
    return "the solution failed: the horizontal fit did not converge in 20 rounds, or the "
           "vertical points do not define a plane (check for points at the same position)";
}

int count_use(const std::vector<ControlPoint>& points, std::uint32_t bit) {
    int n = 0;
    for (const ControlPoint& p : points) {
        n += (p.flags & bit) != 0 ? 1 : 0;
    }
    return n;
}

/// A plan position in the user's coordinate order: "North 1476.54'  East 433.07'".
std::string plan_text(const DisplayUnits& show, double north, double east, int raw_decimals) {
    const auto p = show.position(geo_nee{north, east, GEO_NULL}, raw_decimals);
    return p[0].first + " " + p[0].second + "  " + p[1].first + " " + p[1].second;
}

std::string largest_text(int index, const SavedCalibration& saved, const std::string& shown) {
    return index >= 0 ? saved.points[static_cast<std::size_t>(index)].name + "  " + shown
                      : std::string("none");
}

/// A point's residuals: the solution's own for the parts of the point it used, and for a part
/// it did not use but whose known coordinates were given, the same residual measured against
/// the solution (a check point's).
struct Residuals {
    double horizontal = GEO_NULL; ///< the solution's, for a point used horizontally
    double vertical = GEO_NULL;   ///< the solution's, for a point used vertically
    double check_horizontal = GEO_NULL;
    double check_vertical = GEO_NULL;
};

Residuals residuals_of(CGeoTransformation& t, int i) {
    const geotrans_CalibrationPoint* p = t.NthPoint(i);
    Residuals r{p->hResidual, p->vResidual, GEO_NULL, GEO_NULL};
    const bool used_h = (p->flags & geotrans_UseHorizontal) != 0;
    const bool used_v = (p->flags & geotrans_UseVertical) != 0;
    if (used_h && used_v) {
        return r;
    }
    geo_nee computed{};
    t.Forward(p->llh, computed);
    if (!used_h && p->nee.north != GEO_NULL && p->nee.east != GEO_NULL &&
        computed.north != GEO_NULL && computed.east != GEO_NULL) {
        r.check_horizontal = geo_horz_dist(computed, p->nee);
    }
    if (!used_v && p->nee.elev != GEO_NULL && computed.elev != GEO_NULL) {
        r.check_vertical = geo_vert_dist(computed, p->nee);
    }
    return r;
}

/// A residual column: the solution's residual, or a check residual marked as one.
std::string residual_text(const std::string& solution, const std::string& check) {
    return check == "-" ? solution : check + " (check)";
}

void print_text(const std::string& source, const SavedCalibration& saved, CGeoTransformation& t,
                const DisplayUnits& show) {
    std::cout << fmt::format("Calibration from {}: {} points ({} horizontal, {} vertical)\n\n",
                             source, saved.points.size(),
                             count_use(saved.points, geotrans_UseHorizontal),
                             count_use(saved.points, geotrans_UseVertical));
    std::cout << fmt::format("Projection     stereographic ({}) on WGS84, scale 1, centred on "
                             "{} {}\n",
                             region_name(t.ProjectionType()), show.latitude(t.OriginLat(), 11),
                             show.longitude(t.OriginLon(), 11));
    std::cout << fmt::format("Centre         {}\n",
                             plan_text(show, t.OriginNorth(), t.OriginEast(), 4));
    std::cout << fmt::format("Horizontal     scale {}  rotation {}\n",
                             fixed(t.HorizontalScale(), 9), show.angle(t.HorizontalRotation(), 9));
    std::cout << fmt::format("Vertical       height shift {}  slope north {}  slope east {} "
                             "(metres per metre)\n\n",
                             show.height(t.VerticalHeightAdjustment(), 4),
                             fixed(t.VerticalSlopeNorth(), 8), fixed(t.VerticalSlopeEast(), 8));
    std::cout << fmt::format("{:<16}{:>6}{:>24}{:>24}\n", "Point", "Use", "H residual",
                             "V residual");
    for (int i = 0; i < t.NumberOfPoints(); ++i) {
        const geotrans_CalibrationPoint* p = t.NthPoint(i);
        const Residuals r = residuals_of(t, i);
        std::cout << fmt::format(
            "{:<16}{:>6}{:>24}{:>24}\n", saved.points[static_cast<std::size_t>(i)].name,
            use_text(p->flags),
            residual_text(show.distance(r.horizontal, 4), show.distance(r.check_horizontal, 4)),
            residual_text(show.height(r.vertical, 4), show.height(r.check_vertical, 4)));
    }
    int index = -1;
    double value = GEO_NULL;
    t.GetMaxHResidual(&index, &value);
    std::cout << fmt::format("\nLargest horizontal residual  {}\n",
                             largest_text(index, saved, show.distance(value, 4)));
    t.GetMaxVResidual(&index, &value);
    std::cout << fmt::format("Largest vertical residual    {}\n",
                             largest_text(index, saved, show.height(value, 4)));
    std::cout << "\nHorizontal residual: plan distance between the computed and the known "
                 "position. Vertical\nresidual: known minus computed elevation.\n"
              << show.legend() << '\n';
}

nlohmann::ordered_json largest(int index, double value, const SavedCalibration& saved) {
    if (index < 0) {
        return nullptr;
    }
    return {{"name", saved.points[static_cast<std::size_t>(index)].name},
            {"value", json_number(value)}};
}

void print_json(const std::string& source, const SavedCalibration& saved, CGeoTransformation& t,
                const DisplayUnits& show, OutputFormat format) {
    nlohmann::ordered_json residuals = nlohmann::ordered_json::array();
    for (int i = 0; i < t.NumberOfPoints(); ++i) {
        const geotrans_CalibrationPoint* p = t.NthPoint(i);
        const Residuals r = residuals_of(t, i);
        nlohmann::ordered_json row = {{"name", saved.points[static_cast<std::size_t>(i)].name},
                                      {"use", use_text(p->flags)},
                                      {"horizontal", json_number(r.horizontal)},
                                      {"vertical", json_number(r.vertical)},
                                      {"check_horizontal", json_number(r.check_horizontal)},
                                      {"check_vertical", json_number(r.check_vertical)}};
        if (!show.raw()) {
            row["formatted"] = {{"horizontal", show.distance(r.horizontal, 4)},
                                {"vertical", show.height(r.vertical, 4)}};
        }
        residuals.push_back(row);
    }
    int h_index = -1;
    double h_value = GEO_NULL;
    t.GetMaxHResidual(&h_index, &h_value);
    int v_index = -1;
    double v_value = GEO_NULL;
    t.GetMaxVResidual(&v_index, &v_value);
    nlohmann::ordered_json out = {
        {"source", source},
        {"points", saved.points.size()},
        {"horizontal_points", count_use(saved.points, geotrans_UseHorizontal)},
        {"vertical_points", count_use(saved.points, geotrans_UseVertical)},
        {"projection",
         {{"type", region_name(t.ProjectionType())},
          {"origin_latitude_rad", json_number(t.OriginLat())},
          {"origin_longitude_rad", json_number(t.OriginLon())},
          {"origin_north", json_number(t.OriginNorth())},
          {"origin_east", json_number(t.OriginEast())}}},
        {"horizontal",
         {{"scale", json_number(t.HorizontalScale())},
          {"rotation_rad", json_number(t.HorizontalRotation())}}},
        {"vertical",
         {{"height_shift", json_number(t.VerticalHeightAdjustment())},
          {"slope_north", json_number(t.VerticalSlopeNorth())},
          {"slope_east", json_number(t.VerticalSlopeEast())}}},
        {"residuals", residuals},
        {"largest_horizontal", largest(h_index, h_value, saved)},
        {"largest_vertical", largest(v_index, v_value, saved)}};
    if (!show.raw()) {
        out["projection"]["formatted"] = {{"origin_latitude", show.latitude(t.OriginLat(), 11)},
                                          {"origin_longitude", show.longitude(t.OriginLon(), 11)},
                                          {"origin_north", show.distance(t.OriginNorth(), 4)},
                                          {"origin_east", show.distance(t.OriginEast(), 4)}};
        out["horizontal"]["formatted"] = {{"rotation", show.angle(t.HorizontalRotation(), 9)}};
        out["vertical"]["formatted"] = {
            {"height_shift", show.height(t.VerticalHeightAdjustment(), 4)}};
        out["units"] = show.description();
    }
    write_structured(out, format_name(format));
}

int run_calibrate(const CalibrateOptions& options) {
    std::string text;
    if (!read_whole_file(options.points_file, text)) {
        report_error("calibrate: cannot read '" + options.points_file + "'");
        return kExitBadData;
    }
    SavedCalibration saved;
    std::vector<JobError> errors;
    if (!parse_control_points(text, saved.points, errors)) {
        report_file_errors(options.points_file, errors,
                           "calibrate: file rejected, nothing was calibrated");
        return kExitBadData;
    }
    CGeoTransformation t;
    geotrans_Error error = geotrans_NoError;
    if (!build_calibration(saved, t, error)) {
        report_error("calibrate: " + options.points_file + ": no calibration: " +
                     (t.NumberOfCalibratedPoints() == 0
                          ? std::string("no point is used horizontally or vertically")
                          : failure_reason(error)));
        return kExitBadData;
    }
    if (std::string which; !calibration_is_finite(t, which)) {
        report_error("calibrate: " + options.points_file + ": no calibration: its " + which +
                     " cannot be computed (not a finite number); nothing was saved");
        return kExitBadData;
    }
    if (!options.save_file.empty()) {
        std::ofstream file(options.save_file, std::ios::binary | std::ios::trunc);
        file << calibration_json(saved, t);
        file.close();
        if (!file) {
            report_error("calibrate: cannot write '" + options.save_file + "'");
            return kExitBadData;
        }
    }
    if (options.proj) {
        std::cout << proj_pipeline(t) << '\n';
        return 0;
    }
    const DisplayUnits show(output_options());
    const OutputFormat format = output_options().format();
    if (format != OutputFormat::table) {
        print_json(options.points_file, saved, t, show, format);
    } else {
        print_text(options.points_file, saved, t, show);
        if (!options.save_file.empty()) {
            std::cout << "Saved to " << options.save_file << '\n';
        }
    }
    return 0;
}

} // namespace

CommandRunner add_calibrate_options(CLI::App& cmd) {
    auto options = std::make_shared<CalibrateOptions>();
    cmd.add_option("points", options->points_file,
                   "Control points, CSV: name,latitude,longitude,height,north,east,elevation,use")
        ->required();
    cmd.add_option("--save", options->save_file,
                   "Write the calibration to this JSON file, for 'qv5 convert'");
    cmd.add_flag("--proj", options->proj,
                 "Print the calibration as a PROJ pipeline (latitude, longitude in degrees and "
                 "height in; north, east, elevation out) for cct and other PROJ tools");
    return [options] { return run_calibrate(*options); };
}

} // namespace qv5::cli

QV5_COMMAND("calibrate",
            "Fit a site calibration to control points (WGS84 and site coordinates) and "
            "show its parameters and residuals",
            qv5::cli::add_calibrate_options);
