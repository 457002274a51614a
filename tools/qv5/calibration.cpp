#include "calibration.h"

#include "args.h"

#include "qv5/hostfw.h"

#include <cmath>
#include <utility>

namespace qv5::cli {

std::string use_text(std::uint32_t flags) {
    const bool h = (flags & geotrans_UseHorizontal) != 0;
    const bool v = (flags & geotrans_UseVertical) != 0;
    return h && v ? "hv" : h ? "h" : v ? "v" : "-";
}

bool parse_use(std::string_view text, std::uint32_t& flags) {
    const std::string use = lower(trim(text));
    if (use == "h") {
        flags = geotrans_UseHorizontal;
    } else if (use == "v") {
        flags = geotrans_UseVertical;
    } else if (use == "hv" || use == "vh") {
        flags = geotrans_UseHorizontal | geotrans_UseVertical;
    } else if (use == "-") {
        flags = 0;
    } else {
        return false;
    }
    return true;
}

std::string check_name(std::string_view name) {
    if (name.empty()) {
        return "the name is empty";
    }
    if (CString::FromUtf8(name).GetLength() > kMaxNameUnits) {
        return "the name is longer than " + std::to_string(kMaxNameUnits) + " characters";
    }
    return {};
}

std::vector<std::string> missing_for_use(const ControlPoint& p) {
    std::vector<std::string> missing;
    if ((p.flags & geotrans_UseHorizontal) != 0) {
        if (p.nee.north == GEO_NULL) {
            missing.push_back("north: a horizontal point needs its north");
        }
        if (p.nee.east == GEO_NULL) {
            missing.push_back("east: a horizontal point needs its east");
        }
    }
    if ((p.flags & geotrans_UseVertical) != 0) {
        if (p.llh.height == GEO_NULL) {
            missing.push_back("height: a vertical point needs its ellipsoidal height");
        }
        if (p.nee.elev == GEO_NULL) {
            missing.push_back("elevation: a vertical point needs its elevation");
        }
    }
    return missing;
}

std::string NameRegister::add(const std::string& name, const std::string& where) {
    const auto [it, fresh] = m_seen.emplace(name, where);
    return fresh ? std::string() : "the name '" + name + "' is already used " + it->second;
}

bool build_calibration(const SavedCalibration& saved, CGeoTransformation& transformation,
                       geotrans_Error& error) {
    transformation.Reset();
    transformation.SetDefaultScaleAndRotation(saved.default_scale, saved.default_rotation);
    error = geotrans_NoError;
    for (const ControlPoint& p : saved.points) {
        geotrans_CalibrationPoint record{};
        const CString name = CString::FromUtf8(p.name);
        const unsigned short* units = name.GetString();
        for (int i = 0; i < kMaxNameUnits && units[i] != 0; ++i) {
            record.name[i] = units[i];
        }
        record.llh = p.llh;
        record.nee = p.nee;
        record.flags = p.flags;
        error = geotrans_NoError;
        transformation.AddPoint(&record, &error);
    }
    return transformation.IsCalibrated() == 1;
}

bool calibration_is_finite(CGeoTransformation& t, std::string& which) {
    const std::pair<const char*, double> parameters[] = {
        {"origin latitude", t.OriginLat()},
        {"origin longitude", t.OriginLon()},
        {"origin north", t.OriginNorth()},
        {"origin east", t.OriginEast()},
        {"scale", t.HorizontalScale()},
        {"rotation", t.HorizontalRotation()},
        {"height shift", t.VerticalHeightAdjustment()},
        {"slope north", t.VerticalSlopeNorth()},
        {"slope east", t.VerticalSlopeEast()}};
    for (const auto& [name, value] : parameters) {
        if (!std::isfinite(value)) {
            which = name;
            return false;
        }
    }
    return true;
}

} // namespace qv5::cli
