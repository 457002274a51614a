// A site calibration as the program keeps it: control points with their use, defaults, the
// checks every point passes whatever file it came from, and the library's calibration built
// from them.
#ifndef QV5_TOOLS_CALIBRATION_H
#define QV5_TOOLS_CALIBRATION_H

#include "qv5/geodef.h"
#include "qv5/geotrans.h"

#include <cstddef>
#include <cstdint>
#include <map>
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

/// Reads a use: "h", "v", "hv" (or "vh") or "-", any case. @return false for anything else
bool parse_use(std::string_view text, std::uint32_t& flags);

/// What is wrong with a point name (empty, too long); empty when it is good.
std::string check_name(std::string_view name);

/// The coordinates a point's use makes necessary but that it lacks, as "field: reason".
std::vector<std::string> missing_for_use(const ControlPoint& p);

/// Checks names for uniqueness across points, reporting the later of two.
class NameRegister {
public:
    /// @return empty, or the message for a name already used
    std::string add(const std::string& name, const std::string& where);

private:
    std::map<std::string, std::string> m_seen;
};

/// Builds the library's calibration from saved points: defaults first, then every point.
/// @param[out] error what the library reported when the calibration could not be solved
/// @return true when it is calibrated
bool build_calibration(const SavedCalibration& saved, CGeoTransformation& transformation,
                       geotrans_Error& error);

/// Whether every parameter of a solved calibration is a finite number: a calibration with a
/// non-finite parameter converts nothing correctly and is never saved.
/// @param[out] which the name of the first parameter that is not
bool calibration_is_finite(CGeoTransformation& transformation, std::string& which);

} // namespace qv5::cli

#endif
