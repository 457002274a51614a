// The program's calibration files: control points as comma-separated text, a saved calibration
// as JSON, and points to convert as comma-separated text. Every reader takes the whole text and
// either accepts it or reports every bad line: nothing half-read is ever used.
#ifndef QV5_TOOLS_CALIBRATION_FILE_H
#define QV5_TOOLS_CALIBRATION_FILE_H

#include "csv_text.h"

#include "qv5/geodef.h"
#include "qv5/geotrans.h"

#include <cstdint>
#include <string>
#include <string_view>
#include <vector>

namespace qv5::cli {

/// A calibration holds at most this many points: more is no site calibration but a mistake,
/// and every point added recomputes the whole solution.
inline constexpr std::size_t kMaxCalibrationPoints = 1000;
/// A point name is at most this many UTF-16 code units (the record's 100 with the terminator).
inline constexpr int kMaxNameUnits = 99;

/// One control point as read from a file.
struct ControlPoint {
    std::string name;    ///< UTF-8
    geo_llh llh;         ///< radians, metres; `GEO_NULL` height when not given
    geo_nee nee;         ///< metres; `GEO_NULL` where not given
    std::uint32_t flags; ///< geotrans_UseHorizontal | geotrans_UseVertical
    int line;            ///< where it was read, from 1 (0 for a point from JSON)
};

/// A calibration as saved: the defaults and the points, in order.
struct SavedCalibration {
    double default_scale = 1.0;
    double default_rotation = 0.0; ///< radians
    std::vector<ControlPoint> points;
};

/// The use of a point as the files write it: "hv", "h", "v" or "-".
std::string use_text(std::uint32_t flags);

/// Reads an angle: decimal degrees ("52.0986", "-4.25") or degrees, minutes and seconds
/// separated by blanks, colons or the marks ° ' " ("52 05 55.2", "52:05:55.2",
/// "52°05'55.2\""), with either a leading sign or a trailing hemisphere letter (N or S for a
/// latitude, E or W for a longitude).
/// @param latitude true for a latitude (|value| <= 90 degrees), false for a longitude (<= 180)
/// @param[out] why the reason when the text is refused
/// @return true with `radians` set, or false
bool parse_angle(std::string_view text, bool latitude, double& radians, std::string& why);

/// Reads control points: one per line, "name,latitude,longitude,height,north,east,elevation,use"
/// where use is h, v, hv or - (none). An optional first line starting with "name" is a header;
/// blank lines and lines starting with '#' are skipped. North and east may be empty for a point
/// that is not used horizontally, height and elevation for one not used vertically.
/// @return true when every line is good and there is at least one point; otherwise `points` is
/// empty and `errors` holds every problem with its line number
bool parse_control_points(std::string_view text, std::vector<ControlPoint>& points,
                          std::vector<JobError>& errors);

/// Reads a saved calibration (JSON, see docs/cli.md).
/// @return true when the whole file is good; otherwise `calibration` is left empty and
/// `errors` says what is wrong (line 0: JSON has no lines here)
bool parse_calibration_json(std::string_view text, SavedCalibration& calibration,
                            std::vector<JobError>& errors);

/// Builds the library's calibration from saved points: defaults first, then every point.
/// @param[out] error what the library reported when the calibration could not be solved
/// @return true when it is calibrated
bool build_calibration(const SavedCalibration& saved, CGeoTransformation& transformation,
                       geotrans_Error& error);

/// The JSON text of a calibration: the points and defaults, and the solution for the reader's
/// information (a file is always re-solved when loaded).
std::string calibration_json(const SavedCalibration& saved, CGeoTransformation& transformation);

/// Which way a conversion goes.
enum class ConversionTarget { grid, wgs84 };

/// One position to convert.
struct ConversionInput {
    std::string name; ///< may be empty
    double a;         ///< latitude (radians) or north
    double b;         ///< longitude (radians) or east
    double c;         ///< height or elevation; `GEO_NULL` when empty
    int line;
};

/// Reads positions to convert: "[name,]latitude,longitude,height" towards grid or
/// "[name,]north,east,elevation" towards WGS84, one per line; the height or elevation may be
/// empty. Blank and '#' lines are skipped, and an optional header line whose first field is
/// "name" or the first coordinate's name.
/// @return true when every line is good; otherwise `inputs` is empty and `errors` has them all
bool parse_conversion_rows(std::string_view text, ConversionTarget target,
                           std::vector<ConversionInput>& inputs, std::vector<JobError>& errors);

} // namespace qv5::cli

#endif
