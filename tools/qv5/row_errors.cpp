#include "row_errors.h"

#include "args.h"
#include "dms.h"

#include "qv5/geodef.h"

#include <utility>

namespace qv5::cli {

void RowErrors::fail(std::string message) {
    m_failed = true;
    m_errors.push_back({m_line, std::move(message)});
}

double RowErrors::angle(std::string_view text, bool latitude, std::string_view field) {
    double radians = 0.0;
    std::string why;
    if (!parse_angle(text, latitude, radians, why)) {
        fail(std::string(field) + ": '" + std::string(trim(text)) + "' " + why);
    }
    return radians;
}

double RowErrors::number(std::string_view text, std::string_view field, bool optional) {
    double value = 0.0;
    if (optional && trim(text).empty()) {
        return GEO_NULL;
    }
    if (!parse_number(text, value)) {
        fail(std::string(field) + ": '" + std::string(trim(text)) + "' is not a number");
    }
    return value;
}

} // namespace qv5::cli
