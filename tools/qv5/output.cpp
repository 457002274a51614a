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

void report_error(const std::string& message) {
    std::cerr << "qv5: " << message << '\n';
}

} // namespace qv5::cli
