// Plain comma-separated text as the program's data files use it: lines, fields, blanks and
// comments.
#ifndef QV5_TOOLS_CSV_TEXT_H
#define QV5_TOOLS_CSV_TEXT_H

#include "args.h"

#include <functional>
#include <string>
#include <string_view>
#include <vector>

namespace qv5::cli {

/// A bad line of a data file, or (line 0) a fault of the file as a whole.
struct JobError {
    int line; ///< line number in the file, from 1; 0 for the file as a whole
    std::string message;
};

/// Calls `field(text)` for each comma-separated field of a line in order, untrimmed; an empty
/// line has one empty field. Reads in place, allocating nothing.
template <class Field>
void for_each_field(std::string_view line, Field&& field) {
    std::size_t start = 0;
    while (true) {
        const std::size_t comma = line.find(',', start);
        field(line.substr(start, comma == std::string_view::npos ? comma : comma - start));
        if (comma == std::string_view::npos) {
            return;
        }
        start = comma + 1;
    }
}

/// The comma-separated fields of a line, untrimmed; an empty line has one empty field.
std::vector<std::string_view> split_fields(std::string_view line);

/// Reads a whole file as bytes. @return false when it cannot be opened or read
bool read_whole_file(const std::string& path, std::string& text);

/// Calls `record(line_number, trimmed_line)` for every line that is neither blank nor a
/// comment (first non-blank character '#'). Line numbers count from 1.
void for_each_record(std::string_view text,
                     const std::function<void(int, std::string_view)>& record);

} // namespace qv5::cli

#endif
