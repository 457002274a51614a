// The reader of saved calibrations (JSON) must accept or reject any text without fault; what it
// accepts is calibrated by the library without fault, and written back it reads the same.
#include "calibration_json.h"
#include "control_points_csv.h"
#include "conversion_rows.h"
#include "dms.h"

#include <cstddef>
#include <cstdint>
#include <cstdlib>

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
    const std::string_view text(reinterpret_cast<const char*>(data), size);
    using namespace qv5::cli;

    SavedCalibration saved;
    std::vector<JobError> errors;
    const bool ok = parse_calibration_json(text, saved, errors);
    if (ok != errors.empty() || (!ok && !saved.points.empty())) {
        std::abort();
    }
    if (!ok || saved.points.size() > 50) {
        return 0;
    }
    CGeoTransformation t;
    geotrans_Error error = geotrans_NoError;
    build_calibration(saved, t, error);
    geo_nee grid{};
    t.Forward(saved.points.front().llh, grid);
    geo_llh back{};
    t.Reverse(grid, back);

    SavedCalibration again;
    if (!parse_calibration_json(calibration_json(saved, t), again, errors) ||
        again.points.size() != saved.points.size() || again.default_scale != saved.default_scale) {
        std::abort();
    }
    for (std::size_t i = 0; i < saved.points.size(); ++i) {
        if (again.points[i].name != saved.points[i].name ||
            again.points[i].llh.lat != saved.points[i].llh.lat ||
            again.points[i].nee.east != saved.points[i].nee.east ||
            again.points[i].flags != saved.points[i].flags) {
            std::abort();
        }
    }
    return 0;
}
