// Text the program is given - command-line arguments and fields of data files - read the same
// way everywhere: blanks trimmed, '.' as the decimal point whatever the locale, one sign.
#ifndef QV5_TOOLS_ARGS_H
#define QV5_TOOLS_ARGS_H

#include <cstddef>
#include <numbers>
#include <string>
#include <string_view>

namespace qv5::cli {

/// Degrees in a radian, and radians in a degree: the program's one copy of each.
inline constexpr double kDegreesPerRadian = 180.0 / std::numbers::pi;
inline constexpr double kRadiansPerDegree = std::numbers::pi / 180.0;

/// The minus sign U+2212 in UTF-8. The program reads it as '-': typeset documents use it, and
/// main() gives it to values such as "-inf" that the option parser would take for options.
inline constexpr std::string_view kMinusSign = "\xE2\x88\x92";

/// The text without leading and trailing blanks (spaces, tabs, carriage returns, line feeds).
std::string_view trim(std::string_view text);

/// The text in lower case (ASCII letters only).
std::string lower(std::string_view text);

/// Whether two texts are the same but for the case of ASCII letters; allocates nothing.
bool same_ignoring_case(std::string_view a, std::string_view b);

/// Reads a finite decimal number (surrounding blanks allowed, one optional sign).
/// @return false for empty text, trailing characters, NaN or infinity
bool parse_number(std::string_view text, double& value);

/// Reads a whole number. @return false for anything else
bool parse_integer(std::string_view text, int& value);

/// The message for a value that is not a number: "argument 'NAME': 'TEXT' is not a number".
std::string not_a_number(std::string_view name, std::string_view text);

/// Reads `count` positional numbers, reporting "COMMAND: argument 'NAME': ..." on standard error
/// for every one that is not a number.
/// @return true when all were read
bool read_number_arguments(std::string_view command, const char* const* names,
                           const std::string* texts, double* values, std::size_t count);

} // namespace qv5::cli

#endif
