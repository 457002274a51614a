// A solved site calibration written as a PROJ pipeline, so that PROJ's tools (cct, cs2cs) and
// programs linked with PROJ convert WGS84 positions to the site grid as `qv5 convert` does.
#ifndef QV5_TOOLS_PROJ_PIPELINE_H
#define QV5_TOOLS_PROJ_PIPELINE_H

#include "qv5/geotrans.h"

#include <string>

namespace qv5::cli {

/// The pipeline: latitude and longitude in degrees and ellipsoidal height in metres (in that
/// order) to north, east and elevation in metres. Its steps are the calibration's own: the
/// ellipsoidal oblique stereographic projection on WGS84 (PROJ's "stere", Snyder's formulas,
/// centred where the calibration centres it, scale 1), the horizontal similarity about the
/// centre (an "affine" step), and the inclined plane added to the height (a second "affine").
/// The calibration must be solved.
std::string proj_pipeline(CGeoTransformation& transformation);

} // namespace qv5::cli

#endif
