// Shared output helpers of the command-line program.
#ifndef QV5_TOOLS_OUTPUT_H
#define QV5_TOOLS_OUTPUT_H

#include "csv_text.h"

#include <nlohmann/json.hpp>

#include <string>

namespace qv5::cli {

/// Exit codes: arguments the program cannot use, and input data it cannot use.
inline constexpr int kExitBadArguments = 2;
inline constexpr int kExitBadData = 1;

/// A quantity for text output with a fixed number of decimals; "-" for `GEO_NULL`.
std::string fixed(double value, int decimals);

/// A quantity for JSON output: a number, or null for `GEO_NULL`.
nlohmann::json json_number(double value);

/// An angle in radians as decimal degrees for JSON output, or null for `GEO_NULL`.
nlohmann::json json_degrees(double radians);

/// Writes "qv5: MESSAGE" on standard error.
void report_error(const std::string& message);

/// Writes every problem of a data file, "qv5: SOURCE:LINE: MESSAGE" ("SOURCE: MESSAGE" for a
/// problem of the file as a whole), then "qv5: VERDICT: N error(s)".
void report_file_errors(const std::string& source, const std::vector<JobError>& errors,
                        const std::string& verdict);

} // namespace qv5::cli

#endif
