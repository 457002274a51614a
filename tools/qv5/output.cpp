#include "output.h"

#include "qv5/geodef.h"
#include "qv5/geosurvey.h"

#include <fmt/format.h>

#include <algorithm>
#include <cmath>
#include <iostream>

namespace qv5::cli {

std::string fixed(double value, int decimals) {
    if (value == GEO_NULL) {
        return "-";
    }
    return fmt::format("{:.{}f}", value, decimals);
}

nlohmann::json json_number(double value) {
    if (value == GEO_NULL) {
        return nullptr;
    }
    return value;
}

namespace {
constexpr double kDegreesPerRadian = 57.29577951308232;
} // namespace

nlohmann::json json_degrees(double radians) {
    return radians == GEO_NULL ? nlohmann::json(nullptr)
                               : nlohmann::json(radians * kDegreesPerRadian);
}

std::string degrees(double radians, int decimals) {
    if (radians == GEO_NULL) {
        return "-";
    }
    return fmt::format("{:.{}f}", radians * kDegreesPerRadian, decimals);
}

std::string dms(double radians, bool latitude) {
    if (radians == GEO_NULL) {
        return "-";
    }
    int whole_degrees = 0;
    int minutes = 0;
    double seconds = 0.0;
    // The library's conversion carries the sign on the degrees only; the hemisphere letter
    // carries it here, so convert the magnitude.
    _radtodms(std::fabs(radians), &whole_degrees, &minutes, &seconds);
    const char hemisphere = latitude ? (radians < 0.0 ? 'S' : 'N') : (radians < 0.0 ? 'W' : 'E');
    return fmt::format("{}\u00b0{:02d}'{:08.5f}\"{}", whole_degrees, minutes,
                       std::max(0.0, seconds), hemisphere);
}

void report_error(const std::string& message) {
    std::cerr << "qv5: " << message << '\n';
}

void report_file_errors(const std::string& source, const std::vector<JobError>& errors,
                        const std::string& verdict) {
    for (const JobError& e : errors) {
        std::string where = source;
        if (e.line > 0) {
            where += ':';
            where += std::to_string(e.line);
        }
        report_error(where + ": " + e.message);
    }
    report_error(verdict + ": " + std::to_string(errors.size()) + " error(s)");
}

} // namespace qv5::cli
