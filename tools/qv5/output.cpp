#include "output.h"

#include "qv5/geodef.h"

#include <fmt/format.h>

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
