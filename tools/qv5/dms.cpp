#include "dms.h"

#include "args.h"

#include "qv5/geosurvey.h"

#include <cctype>
#include <vector>

namespace qv5::cli {
namespace {

constexpr int kMinutesPerDegree = 60;
constexpr double kSecondsPerMinute = 60.0;
constexpr int kLatitudeLimit = 90;
constexpr int kLongitudeLimit = 180;
/// The UTF-8 encoding of the degree sign U+00B0.
constexpr std::string_view kDegreeSign = "\xC2\xB0";

bool starts_with_sign(std::string_view text) {
    return !text.empty() && (text.front() == '+' || text.front() == '-');
}

/// Splits degrees-minutes-seconds text at blanks, colons and the marks ° ' ".
std::vector<std::string_view> angle_tokens(std::string_view text) {
    std::vector<std::string_view> tokens;
    std::size_t start = 0;
    std::size_t i = 0;
    const auto flush = [&](std::size_t end) {
        if (end > start) {
            tokens.push_back(text.substr(start, end - start));
        }
    };
    while (i < text.size()) {
        const char c = text[i];
        std::size_t width = 0;
        if (c == ' ' || c == '\t' || c == ':' || c == '\'' || c == '"') {
            width = 1;
        } else if (text.substr(i, kDegreeSign.size()) == kDegreeSign) {
            width = kDegreeSign.size();
        }
        if (width > 0) {
            flush(i);
            i += width;
            start = i;
        } else {
            ++i;
        }
    }
    flush(text.size());
    return tokens;
}

} // namespace

bool parse_angle(std::string_view text, bool latitude, double& radians, std::string& why) {
    std::string_view body = trim(text);
    if (body.empty()) {
        why = "is empty";
        return false;
    }
    bool negative = false;
    const bool signed_text = starts_with_sign(body);
    if (signed_text) {
        negative = body.front() == '-';
        body.remove_prefix(1);
    }
    char hemisphere = 0;
    if (!body.empty()) {
        const char last = static_cast<char>(std::toupper(static_cast<unsigned char>(body.back())));
        if (latitude ? (last == 'N' || last == 'S') : (last == 'E' || last == 'W')) {
            hemisphere = last;
            body.remove_suffix(1);
        }
    }
    if (hemisphere != 0 && signed_text) {
        why = "has both a sign and a hemisphere letter";
        return false;
    }
    negative = negative || hemisphere == 'S' || hemisphere == 'W';
    const int limit = latitude ? kLatitudeLimit : kLongitudeLimit;
    const std::string range = latitude ? "a latitude is at most 90 degrees either way"
                                       : "a longitude is at most 180 degrees either way";
    const std::vector<std::string_view> tokens = angle_tokens(body);
    for (std::string_view token : tokens) {
        if (starts_with_sign(token)) {
            why = "has a sign inside it";
            return false;
        }
    }
    if (tokens.size() == 1) {
        double degrees = 0.0;
        if (!parse_number(tokens[0], degrees)) {
            why = "is not an angle in decimal degrees or degrees, minutes and seconds";
            return false;
        }
        if (degrees > limit) {
            why = "is out of range: " + range;
            return false;
        }
        radians = _degtorad(degrees);
    } else if (tokens.size() == 3) {
        int degrees = 0;
        int minutes = 0;
        double seconds = 0.0;
        if (!parse_integer(tokens[0], degrees) || !parse_integer(tokens[1], minutes) ||
            !parse_number(tokens[2], seconds) || minutes < 0 || minutes >= kMinutesPerDegree ||
            seconds < 0.0 || seconds >= kSecondsPerMinute) {
            why = "is not in whole degrees, whole minutes (0-59) and seconds (below 60)";
            return false;
        }
        if (degrees > limit || (degrees == limit && (minutes != 0 || seconds != 0.0))) {
            why = "is out of range: " + range;
            return false;
        }
        _dmstorad(degrees, minutes, seconds, &radians);
    } else {
        why = "is not an angle in decimal degrees or degrees, minutes and seconds";
        return false;
    }
    if (negative) {
        radians = -radians;
    }
    return true;
}

} // namespace qv5::cli
