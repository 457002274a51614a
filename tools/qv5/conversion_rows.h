// Positions to convert through a calibration as comma-separated text, one position a line.
#ifndef QV5_TOOLS_CONVERSION_ROWS_H
#define QV5_TOOLS_CONVERSION_ROWS_H

#include "csv_text.h"

#include "qv5/geodef.h"

#include <string>
#include <string_view>
#include <vector>

namespace qv5::cli {

/// Which way a conversion goes.
enum class ConversionTarget { grid, wgs84 };

/// One position to convert.
struct ConversionInput {
    std::string name; ///< may be empty
    double a;         ///< latitude (radians) or north
    double b;         ///< longitude (radians) or east
    double c;         ///< height or elevation; `GEO_NULL` when empty
    int line;
};

/// Whether a row is the optional header: its first field is "name" or the first coordinate's
/// name (any case).
bool is_conversion_header(const std::vector<std::string_view>& fields, ConversionTarget target);

/// Reads one row of 3 or 4 fields into `in`.
/// @return false with every problem of the row appended to `errors`
bool read_conversion_fields(const std::vector<std::string_view>& fields, ConversionTarget target,
                            int line, ConversionInput& in, std::vector<JobError>& errors);

/// Reads positions to convert: "[name,]latitude,longitude,height" towards grid or
/// "[name,]north,east,elevation" towards WGS84, one per line; the height or elevation may be
/// empty. Blank and '#' lines are skipped, and an optional header line whose first field is
/// "name" or the first coordinate's name.
/// @return true when every line is good; otherwise `inputs` is empty and `errors` has them all
bool parse_conversion_rows(std::string_view text, ConversionTarget target,
                           std::vector<ConversionInput>& inputs, std::vector<JobError>& errors);

} // namespace qv5::cli

#endif
