#include "csv_text.h"

#include <fstream>
#include <sstream>

namespace qv5::cli {

std::vector<std::string_view> split_fields(std::string_view line) {
    std::vector<std::string_view> fields;
    for_each_field(line, [&fields](std::string_view field) { fields.push_back(field); });
    return fields;
}

bool read_whole_file(const std::string& path, std::string& text) {
    std::ifstream file(path, std::ios::binary);
    if (!file) {
        return false;
    }
    std::ostringstream content;
    content << file.rdbuf();
    if (file.bad()) {
        return false;
    }
    text = content.str();
    return true;
}

void for_each_record(std::string_view text,
                     const std::function<void(int, std::string_view)>& record) {
    int line_number = 0;
    std::size_t start = 0;
    while (start < text.size()) {
        std::size_t end = text.find('\n', start);
        if (end == std::string_view::npos) {
            end = text.size();
        }
        const std::string_view line = trim(text.substr(start, end - start));
        start = end + 1;
        ++line_number;
        if (line.empty() || line.front() == '#') {
            continue;
        }
        record(line_number, line);
    }
}

} // namespace qv5::cli
