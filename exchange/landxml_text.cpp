// Numbers, units and places in LandXML text.
#include "exchange/landxml_text.h"

#include <algorithm>
#include <charconv>
#include <cmath>
#include <cstdio>
#include <cstring>
#include <iterator>

namespace qv5::landxml::detail {

namespace {

bool is_space(char c) {
    return c == ' ' || c == '\t' || c == '\n' || c == '\r';
}

std::string_view trimmed(std::string_view text) {
    while (!text.empty() && is_space(text.front())) {
        text.remove_prefix(1);
    }
    while (!text.empty() && is_space(text.back())) {
        text.remove_suffix(1);
    }
    return text;
}

bool equal_ignoring_case(std::string_view a, std::string_view b) {
    if (a.size() != b.size()) {
        return false;
    }
    for (std::size_t i = 0; i < a.size(); ++i) {
        const auto lower = [](char c) { return c >= 'A' && c <= 'Z' ? char(c - 'A' + 'a') : c; };
        if (lower(a[i]) != lower(b[i])) {
            return false;
        }
    }
    return true;
}

/// Grads in a circle and degrees in a circle.
constexpr double kGradsPerTurn = 400.0;
constexpr double kDegreesPerTurn = 360.0;

} // namespace

std::optional<double> metres_per_unit(std::string_view name) {
    name = trimmed(name);
    struct Unit {
        const char* name;
        double metres;
    };
    // The length units of the LandXML schema's metric and imperial unit lists.
    static constexpr Unit kUnits[] = {
        {"meter", 1.0},        {"metre", 1.0},
        {"kilometer", 1000.0}, {"centimeter", 0.01},
        {"millimeter", 0.001}, {"foot", kFootMetres},
        {"feet", kFootMetres}, {"USSurveyFoot", kUSSurveyFootMetres},
        {"inch", 0.0254},      {"mile", 1609.344},
    };
    for (const Unit& unit : kUnits) {
        if (equal_ignoring_case(name, unit.name)) {
            return unit.metres;
        }
    }
    return std::nullopt;
}

const char* linear_unit_name(LinearUnit unit) {
    switch (unit) {
    case LinearUnit::Foot:
        return "foot";
    case LinearUnit::USSurveyFoot:
        return "USSurveyFoot";
    case LinearUnit::Meter:
        break;
    }
    return "meter";
}

bool is_imperial(LinearUnit unit) {
    return unit == LinearUnit::Foot || unit == LinearUnit::USSurveyFoot;
}

double metres_per_unit(LinearUnit unit) {
    switch (unit) {
    case LinearUnit::Foot:
        return kFootMetres;
    case LinearUnit::USSurveyFoot:
        return kUSSurveyFootMetres;
    case LinearUnit::Meter:
        break;
    }
    return 1.0;
}

std::optional<AngleForm> angle_form(std::string_view name) {
    name = trimmed(name);
    if (equal_ignoring_case(name, "radians")) {
        return AngleForm::Radians;
    }
    if (equal_ignoring_case(name, "decimal degrees") || equal_ignoring_case(name, "degrees")) {
        return AngleForm::Degrees;
    }
    if (equal_ignoring_case(name, "grads") || equal_ignoring_case(name, "gons")) {
        return AngleForm::Grads;
    }
    if (equal_ignoring_case(name, "decimal dd.mm.ss")) {
        return AngleForm::DegreesMinutesSeconds;
    }
    return std::nullopt;
}

const char* angular_unit_name(AngularUnit unit) {
    switch (unit) {
    case AngularUnit::Radians:
        return "radians";
    case AngularUnit::Grads:
        return "grads";
    case AngularUnit::DecimalDegrees:
        break;
    }
    return "decimal degrees";
}

double to_radians(double value, AngleForm form) {
    switch (form) {
    case AngleForm::Radians:
        return value;
    case AngleForm::Degrees:
        return value / kDegreesPerTurn * kTwoPi;
    case AngleForm::Grads:
        return value / kGradsPerTurn * kTwoPi;
    case AngleForm::DegreesMinutesSeconds: {
        // "45.3025" is 45 degrees 30 minutes 25 seconds: two digits each for minutes and
        // seconds after the point, any further digits being decimals of the seconds.
        const double magnitude = std::fabs(value);
        const double degrees = std::floor(magnitude);
        const double minutes_seconds = (magnitude - degrees) * 100.0;
        const double minutes = std::floor(minutes_seconds + 1e-9);
        const double seconds = (minutes_seconds - minutes) * 100.0;
        const double total = degrees + minutes / 60.0 + seconds / 3600.0;
        return std::copysign(total / kDegreesPerTurn * kTwoPi, value);
    }
    }
    return value;
}

double from_radians(double radians, AngularUnit unit) {
    switch (unit) {
    case AngularUnit::Radians:
        return radians;
    case AngularUnit::Grads:
        return radians / kTwoPi * kGradsPerTurn;
    case AngularUnit::DecimalDegrees:
        break;
    }
    return radians / kTwoPi * kDegreesPerTurn;
}

double normalised(double bearing) {
    if (!std::isfinite(bearing)) {
        return bearing;
    }
    double b = std::fmod(bearing, kTwoPi);
    if (b < 0.0) {
        b += kTwoPi;
    }
    return b >= kTwoPi ? 0.0 : b;
}

double azimuth_from_direction(double direction_radians) {
    return normalised(-direction_radians);
}

double direction_from_azimuth(double azimuth) {
    return normalised(-azimuth);
}

double bearing_difference(double a, double b) {
    const double d = normalised(a - b);
    return d > kPi ? kTwoPi - d : d;
}

std::optional<double> parse_number(std::string_view text, bool allow_infinite) {
    text = trimmed(text);
    if (text.empty()) {
        return std::nullopt;
    }
    std::string_view body = text;
    bool negative = false;
    if (body.front() == '+' || body.front() == '-') {
        negative = body.front() == '-';
        body.remove_prefix(1);
    }
    if (allow_infinite &&
        (equal_ignoring_case(body, "INF") || equal_ignoring_case(body, "infinity"))) {
        return negative ? -HUGE_VAL : HUGE_VAL;
    }
    if (body.empty() || body.front() == '+' || body.front() == '-') {
        return std::nullopt;
    }
    double value = 0.0;
    const auto [end, error] =
        std::from_chars(body.data(), body.data() + body.size(), value, std::chars_format::general);
    if (error != std::errc() || end != body.data() + body.size() || !std::isfinite(value)) {
        return std::nullopt;
    }
    return negative ? -value : value;
}

std::optional<PointNumbers> parse_numbers(std::string_view text) {
    PointNumbers values;
    std::size_t i = 0;
    while (i < text.size()) {
        while (i < text.size() && is_space(text[i])) {
            ++i;
        }
        std::size_t j = i;
        while (j < text.size() && !is_space(text[j])) {
            ++j;
        }
        if (j > i) {
            const auto value = parse_number(text.substr(i, j - i));
            if (!value || values.count == 3) {
                return std::nullopt;
            }
            values.values[values.count++] = *value;
        }
        i = j;
    }
    if (values.count < 2) {
        return std::nullopt;
    }
    return values;
}

std::string format_number(double value) {
    if (value == 0.0) {
        return "0"; // never "-0"
    }
    char buffer[64];
    const auto result = std::to_chars(buffer, buffer + sizeof buffer, value);
    return std::string(buffer, result.ptr);
}

LineIndex::LineIndex(std::string_view text) {
    // memchr finds the line ends far faster than a byte loop; lone carriage returns (old Mac
    // line ends) are rare and found in a second pass, then merged in order.
    m_line_starts.push_back(0);
    const char* const begin = text.data();
    const char* const end = begin + text.size();
    for (const char* p = begin; p < end;) {
        const void* found = std::memchr(p, '\n', static_cast<std::size_t>(end - p));
        if (found == nullptr) {
            break;
        }
        p = static_cast<const char*>(found) + 1;
        m_line_starts.push_back(p - begin);
    }
    std::vector<std::ptrdiff_t> lone_returns;
    for (const char* p = begin; p < end;) {
        const void* found = std::memchr(p, '\r', static_cast<std::size_t>(end - p));
        if (found == nullptr) {
            break;
        }
        p = static_cast<const char*>(found) + 1;
        if (p == end || *p != '\n') {
            lone_returns.push_back(p - begin);
        }
    }
    if (!lone_returns.empty()) {
        std::vector<std::ptrdiff_t> merged;
        merged.reserve(m_line_starts.size() + lone_returns.size());
        std::merge(m_line_starts.begin(), m_line_starts.end(), lone_returns.begin(),
                   lone_returns.end(), std::back_inserter(merged));
        m_line_starts = std::move(merged);
    }
}

int LineIndex::line_of(std::ptrdiff_t offset) const {
    if (offset < 0) {
        return 0;
    }
    const auto it = std::upper_bound(m_line_starts.begin(), m_line_starts.end(), offset);
    return static_cast<int>(it - m_line_starts.begin());
}

std::string escaped(std::string_view text) {
    std::string out;
    out.reserve(text.size());
    for (const char c : text) {
        const auto byte = static_cast<unsigned char>(c);
        if (byte < 0x20 || byte == 0x7F) {
            char code[8];
            std::snprintf(code, sizeof code, "\\x%02X", byte);
            out += code;
        } else {
            out += c;
        }
    }
    return out;
}

} // namespace qv5::landxml::detail
