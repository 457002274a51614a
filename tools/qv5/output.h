// Shared output helpers of the command-line program.
#ifndef QV5_TOOLS_OUTPUT_H
#define QV5_TOOLS_OUTPUT_H

#include "csv_text.h"

#include <fmt/format.h>
#include <nlohmann/json.hpp>

#include <initializer_list>
#include <string>
#include <string_view>
#include <utility>
#include <vector>

namespace qv5::cli {

/// Exit codes: arguments the program cannot use, and input data it cannot use.
inline constexpr int kExitBadArguments = 2;
inline constexpr int kExitBadData = 1;

/// A quantity for text output with a fixed number of decimals; "-" for `GEO_NULL`.
std::string fixed(double value, int decimals);

/// Appends what `fixed` gives to `out`, without a string of its own: the row writers of the
/// streaming commands format every field of a row into one buffer.
void append_fixed(fmt::memory_buffer& out, double value, int decimals);

/// Text with a minus sign before nothing but zeros ("-0.00'", "-0.000") without it: a value
/// that rounds to zero is shown as zero, never as negative zero.
std::string without_negative_zero(std::string text);

/// The text with every control character (below 0x20, and 0x7f) written as "\\xNN", so that
/// echoed input cannot move the cursor or change a terminal's state.
std::string escape_control(std::string_view text);

/// A quantity for JSON output: a number, or null for `GEO_NULL`.
nlohmann::json json_number(double value);

/// An angle in radians as decimal degrees for JSON output, or null for `GEO_NULL`.
nlohmann::json json_degrees(double radians);

/// Checks a command's answers: each must be a finite number and not `GEO_NULL`.
/// @return true when all are; otherwise reports "COMMAND: the NAME cannot be computed" (with
/// the reason when one is given) for each that is not
bool check_results(std::string_view command,
                   std::initializer_list<std::pair<const char*, double>> results,
                   std::string_view reason = {});

/// Writes a single answer built as JSON in a machine format: "json" pretty-printed, "jsonl" on
/// one line, "csv" as a header line and rows - one row per element of the answer's first list
/// of objects when it has one (the points of a job, the residuals of a calibration), else one
/// row of its members - with nested members named "outer.inner" and numbers as they are in
/// the JSON (metres and radians).
void write_structured(const nlohmann::ordered_json& answer, std::string_view format);

/// Writes "qv5: MESSAGE" on standard error, control characters escaped.
void report_error(const std::string& message);

/// Writes every problem of a data file, "qv5: SOURCE:LINE: MESSAGE" ("SOURCE: MESSAGE" for a
/// problem of the file as a whole), then "qv5: VERDICT: N error(s)".
void report_file_errors(const std::string& source, const std::vector<JobError>& errors,
                        const std::string& verdict);

} // namespace qv5::cli

#endif
