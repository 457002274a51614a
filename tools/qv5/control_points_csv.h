// Control points for a calibration as comma-separated text, one point a line.
#ifndef QV5_TOOLS_CONTROL_POINTS_CSV_H
#define QV5_TOOLS_CONTROL_POINTS_CSV_H

#include "calibration.h"
#include "csv_text.h"

#include <string_view>
#include <vector>

namespace qv5::cli {

/// Reads control points: one per line, "name,latitude,longitude,height,north,east,elevation,use"
/// where use is h, v, hv or - (none). An optional first line starting with "name" is a header;
/// blank lines and lines starting with '#' are skipped. North and east may be empty for a point
/// that is not used horizontally, height and elevation for one not used vertically.
/// @return true when every line is good and there is at least one point; otherwise `points` is
/// empty and `errors` holds every problem with its line number
bool parse_control_points(std::string_view text, std::vector<ControlPoint>& points,
                          std::vector<JobError>& errors);

} // namespace qv5::cli

#endif
