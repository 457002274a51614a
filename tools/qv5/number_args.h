// Locale-independent reading of numbers given on the command line or in job files.
#ifndef QV5_TOOLS_NUMBER_ARGS_H
#define QV5_TOOLS_NUMBER_ARGS_H

#include <string>
#include <string_view>

namespace qv5::cli {

/// Reads a finite decimal number ('.' as the decimal point whatever the locale; surrounding
/// blanks allowed). @return false for empty text, trailing characters, NaN or infinity
bool parse_number(std::string_view text, double& value);

/// Reads a whole number. @return false for anything else
bool parse_integer(std::string_view text, int& value);

/// The message for a value that is not a number: "argument 'NAME': 'TEXT' is not a number".
std::string not_a_number(std::string_view name, std::string_view text);

} // namespace qv5::cli

#endif
