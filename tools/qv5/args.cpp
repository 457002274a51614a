#include "args.h"

#include "output.h"

#include <charconv>
#include <cmath>
#include <system_error>

namespace qv5::cli {
namespace {

constexpr std::string_view kBlanks = " \t\r\n";

/// The number's text without its blanks and without a leading '+' (which from_chars refuses);
/// empty when nothing is left or a second sign follows.
std::string_view unsigned_body(std::string_view text) {
    text = trim(text);
    if (!text.empty() && text.front() == '+') {
        text.remove_prefix(1);
        if (!text.empty() && (text.front() == '-' || text.front() == '+')) {
            return {};
        }
    }
    return text;
}

} // namespace

std::string_view trim(std::string_view text) {
    const auto first = text.find_first_not_of(kBlanks);
    if (first == std::string_view::npos) {
        return {};
    }
    return text.substr(first, text.find_last_not_of(kBlanks) - first + 1);
}

namespace {

char lower_letter(char c) {
    return c >= 'A' && c <= 'Z' ? static_cast<char>(c - 'A' + 'a') : c;
}

} // namespace

std::string lower(std::string_view text) {
    std::string out(text);
    for (char& c : out) {
        c = lower_letter(c);
    }
    return out;
}

bool same_ignoring_case(std::string_view a, std::string_view b) {
    if (a.size() != b.size()) {
        return false;
    }
    for (std::size_t i = 0; i < a.size(); ++i) {
        if (lower_letter(a[i]) != lower_letter(b[i])) {
            return false;
        }
    }
    return true;
}

bool parse_number(std::string_view text, double& value) {
    text = trim(text);
    if (text.substr(0, kMinusSign.size()) == kMinusSign) {
        text.remove_prefix(kMinusSign.size());
        double magnitude = 0.0;
        if (text.empty() || text.front() == '-' || text.front() == '+' ||
            !parse_number(text, magnitude)) {
            return false;
        }
        value = -magnitude;
        return true;
    }
    text = unsigned_body(text);
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
    text = unsigned_body(text);
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
    if (text.substr(0, kMinusSign.size()) == kMinusSign) {
        message += '-';
        text.remove_prefix(kMinusSign.size());
    }
    message += text;
    std::string_view body = trim(text);
    if (!body.empty() && (body.front() == '-' || body.front() == '+')) {
        body.remove_prefix(1);
    }
    const std::string word = lower(body);
    const bool non_finite = word == "inf" || word == "infinity" || word == "nan";
    message += non_finite ? "' is not a finite number" : "' is not a number";
    return message;
}

bool read_number_arguments(std::string_view command, const char* const* names,
                           const std::string* texts, double* values, std::size_t count) {
    bool ok = true;
    for (std::size_t i = 0; i < count; ++i) {
        if (!parse_number(texts[i], values[i])) {
            report_error(std::string(command) + ": " + not_a_number(names[i], texts[i]));
            ok = false;
        }
    }
    return ok;
}

} // namespace qv5::cli
