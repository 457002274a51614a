// A saved calibration as JSON: the control points and defaults it was fitted to, and its
// solution for the reader's information.
#ifndef QV5_TOOLS_CALIBRATION_JSON_H
#define QV5_TOOLS_CALIBRATION_JSON_H

#include "calibration.h"
#include "csv_text.h"

#include <string>
#include <string_view>
#include <vector>

namespace qv5::cli {

/// Reads a saved calibration (JSON, see docs/cli.md).
/// @return true when the whole file is good; otherwise `calibration` is left empty and
/// `errors` says what is wrong (line 0: JSON has no lines here)
bool parse_calibration_json(std::string_view text, SavedCalibration& calibration,
                            std::vector<JobError>& errors);

/// The JSON text of a calibration: the points and defaults, and the solution for the reader's
/// information (a file is always re-solved when loaded).
std::string calibration_json(const SavedCalibration& saved, CGeoTransformation& transformation);

} // namespace qv5::cli

#endif
