// The readers of control points and of positions to convert must accept or reject any text
// without fault; accepted points obey the file's rules, and a rejection leaves nothing behind.
#include "calibration_json.h"
#include "control_points_csv.h"
#include "conversion_rows.h"
#include "dms.h"

#include <cstddef>
#include <cstdint>
#include <cstdlib>
#include <set>

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
    const std::string_view text(reinterpret_cast<const char*>(data), size);
    using namespace qv5::cli;

    std::vector<ControlPoint> points;
    std::vector<JobError> errors;
    const bool ok = parse_control_points(text, points, errors);
    if (ok != errors.empty() || (!ok && !points.empty()) || (ok && points.empty()) ||
        points.size() > kMaxCalibrationPoints) {
        std::abort();
    }
    std::set<std::string> names;
    for (const ControlPoint& p : points) {
        if (p.name.empty() || !names.insert(p.name).second || p.llh.lat < -1.5707963267948966 ||
            p.llh.lat > 1.5707963267948966 || p.llh.lon < -3.141592653589793 ||
            p.llh.lon > 3.141592653589793 || p.line <= 0) {
            std::abort();
        }
    }
    if (ok && points.size() <= 50) {
        // Whatever was accepted can be calibrated (or refused) by the library.
        SavedCalibration saved;
        saved.points = points;
        CGeoTransformation t;
        geotrans_Error error = geotrans_NoError;
        build_calibration(saved, t, error);
        geo_nee grid{};
        t.Forward(points.front().llh, grid);
    }

    for (ConversionTarget target : {ConversionTarget::grid, ConversionTarget::wgs84}) {
        std::vector<ConversionInput> inputs;
        errors.clear();
        const bool read = parse_conversion_rows(text, target, inputs, errors);
        if (read != errors.empty() || (!read && !inputs.empty())) {
            std::abort();
        }
    }
    return 0;
}
