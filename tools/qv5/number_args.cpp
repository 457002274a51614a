#include "number_args.h"

#include <charconv>
#include <cmath>
#include <system_error>

namespace qv5::cli {
namespace {

std::string_view trimmed(std::string_view text) {
    const auto first = text.find_first_not_of(" \t\r\n");
    if (first == std::string_view::npos) {
        return {};
    }
    const auto last = text.find_last_not_of(" \t\r\n");
    return text.substr(first, last - first + 1);
}

} // namespace

bool parse_number(std::string_view text, double& value) {
    text = trimmed(text);
    if (!text.empty() && text.front() == '+') {
        text.remove_prefix(1);
        if (!text.empty() && (text.front() == '-' || text.front() == '+')) {
            return false;
        }
    }
    if (text.empty()) {
        return false;
    }
    double parsed = 0.0;
    const auto [end, error] =
        std::from_chars(text.data(), text.data() + text.size(), parsed, std::chars_format::general);
    if (error != std::errc() || end != text.data() + text.size() || !std::isfinite(parsed)) {
        return false;
    }
    value = parsed;
    return true;
}

bool parse_integer(std::string_view text, int& value) {
    text = trimmed(text);
    if (!text.empty() && text.front() == '+') {
        text.remove_prefix(1);
        if (!text.empty() && (text.front() == '-' || text.front() == '+')) {
            return false;
        }
    }
    if (text.empty()) {
        return false;
    }
    int parsed = 0;
    const auto [end, error] = std::from_chars(text.data(), text.data() + text.size(), parsed);
    if (error != std::errc() || end != text.data() + text.size()) {
        return false;
    }
    value = parsed;
    return true;
}

std::string not_a_number(std::string_view name, std::string_view text) {
    std::string message = "argument '";
    message += name;
    message += "': '";
    message += text;
    message += "' is not a number";
    return message;
}

} // namespace qv5::cli
