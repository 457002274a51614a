#include "dms.h"

#include "args.h"

#include "qv5/geosurvey.h"

#include <cctype>
#include <cmath>
#include <vector>

namespace qv5::cli {
namespace {

constexpr int kMinutesPerDegree = 60;
constexpr double kSecondsPerMinute = 60.0;
constexpr int kLatitudeLimit = 90;
constexpr int kLongitudeLimit = 180;
/// The UTF-8 encodings of the degree sign U+00B0, the prime U+2032 and the double prime U+2033.
constexpr std::string_view kDegreeSign = "\xC2\xB0";
constexpr std::string_view kPrime = "\xE2\x80\xB2";
constexpr std::string_view kDoublePrime = "\xE2\x80\xB3";

/// A plus or minus sign, the typographic minus U+2212 included: a sign the number reader would
/// take inside an angle's fields, where no sign belongs.
bool starts_with_sign(std::string_view text) {
    return !text.empty() && (text.front() == '+' || text.front() == '-' ||
                             text.substr(0, kMinusSign.size()) == kMinusSign);
}

/// Splits degrees-minutes-seconds text at blanks, colons and the marks ° d ' " ′ ″.
/// @param[out] marked whether any separator was other than a blank
std::vector<std::string_view> angle_tokens(std::string_view text, bool& marked) {
    marked = false;
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
        if (c == ' ' || c == '\t') {
            width = 1;
        } else if (c == ':' || c == '\'' || c == '"' || c == 'd' || c == 'D') {
            width = 1;
            marked = true;
        } else {
            for (const std::string_view mark : {kDegreeSign, kPrime, kDoublePrime}) {
                if (text.substr(i, mark.size()) == mark) {
                    width = mark.size();
                    marked = true;
                }
            }
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
    std::string minus_sign;
    if (body.substr(0, kMinusSign.size()) == kMinusSign) {
        minus_sign.assign(1, '-');
        minus_sign.append(body.substr(kMinusSign.size()));
        body = minus_sign;
    }
    if (body.empty()) {
        why = "is empty";
        return false;
    }
    const int limit = latitude ? kLatitudeLimit : kLongitudeLimit;
    // Built into a message only when the angle is refused: a stream reads millions of angles.
    const char* const range = latitude ? "a latitude is at most 90 degrees either way"
                                       : "a longitude is at most 180 degrees either way";
    // Plain decimal degrees, the common case of a long stream, read without splitting.
    if (double degrees = 0.0; parse_number(body, degrees)) {
        const bool below = degrees < 0.0 || (degrees == 0.0 && body.front() == '-');
        if (std::fabs(degrees) > limit) {
            why = std::string("is out of range: ") + range;
            return false;
        }
        radians = _degtorad(std::fabs(degrees));
        if (below) {
            radians = -radians;
        }
        return true;
    }
    bool negative = false;
    const bool signed_text = starts_with_sign(body);
    if (signed_text) {
        negative = body.front() == '-';
        body.remove_prefix(1);
    }
    const auto hemisphere_letter = [latitude](char c) {
        const char up = static_cast<char>(std::toupper(static_cast<unsigned char>(c)));
        return (latitude ? (up == 'N' || up == 'S') : (up == 'E' || up == 'W')) ? up : char{0};
    };
    // The letter may follow the angle ("52 06 30N") or lead it ("N52d06'30\"").
    char hemisphere = 0;
    if (!body.empty() && (hemisphere = hemisphere_letter(body.back())) != 0) {
        body.remove_suffix(1);
    } else if (!body.empty() && !signed_text &&
               (hemisphere = hemisphere_letter(body.front())) != 0) {
        body.remove_prefix(1);
    }
    body = trim(body);
    if (hemisphere != 0 && signed_text) {
        why = "has both a sign and a hemisphere letter";
        return false;
    }
    negative = negative || hemisphere == 'S' || hemisphere == 'W';
    bool marked = false;
    const std::vector<std::string_view> tokens = angle_tokens(body, marked);
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
            why = std::string("is out of range: ") + range;
            return false;
        }
        radians = _degtorad(degrees);
    } else if (tokens.size() == 2 && marked) {
        // Degrees and decimal minutes ("52:06.508", "52d06.508'"); two numbers with only a
        // blank between them are refused, as they may be an angle with a field missing.
        int degrees = 0;
        double minutes = 0.0;
        if (!parse_integer(tokens[0], degrees) || !parse_number(tokens[1], minutes) ||
            minutes < 0.0 || minutes >= kMinutesPerDegree) {
            why = "is not in whole degrees and minutes (below 60)";
            return false;
        }
        if (degrees > limit || (degrees == limit && minutes != 0.0)) {
            why = std::string("is out of range: ") + range;
            return false;
        }
        const double whole = std::floor(minutes);
        _dmstorad(degrees, static_cast<int>(whole), (minutes - whole) * kSecondsPerMinute,
                  &radians);
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
            why = std::string("is out of range: ") + range;
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
