#include "output.h"
#include "args.h"

#include "qv5/geodef.h"

#include <fmt/format.h>

#include "text_stream.h"

#include <algorithm>
#include <array>
#include <bit>
#include <charconv>
#include <cmath>
#include <cstdint>
#include <cstdio>
#include <limits>

namespace qv5::cli {

std::string without_negative_zero(std::string text) {
    if (text.empty() || text.front() != '-') {
        return text;
    }
    for (const char c : text) {
        if (c >= '1' && c <= '9') {
            return text;
        }
    }
    text.erase(0, 1);
    return text;
}

std::string fixed(double value, int decimals) {
    fmt::memory_buffer text;
    append_fixed(text, value, decimals);
    return fmt::to_string(text);
}

/// Room for the fixed-point text of any double the program prints with a handful of decimals:
/// 309 digits before the point, the point, the decimals and a sign. A rarer, longer text (more
/// than 32 decimals) is formatted the slow way.
constexpr std::size_t kFixedTextRoom = 352;

namespace {

/// Most decimals the integer path takes: 10^17 times a 53-bit significand stays below 2^110.
constexpr int kExactFixedMostDecimals = 17;
/// Bits of a double's stored significand, and the bias that turns its exponent field into the
/// power of two of the whole significand (value = significand × 2^(field − bias)).
constexpr int kSignificandBits = 52;
constexpr int kExponentBias = 1075;
constexpr unsigned kExponentMask = 0x7ff;
constexpr int kSignBit = 63;
/// Largest power of two a whole number's scaled significand (below 2^110) is shifted by: the
/// result stays below 2^122, inside 128 bits (and far past the 2^64 units the text can hold).
constexpr int kMostWholeShift = 12;

// A 128-bit unsigned integer (a GCC and Clang extension on every target the program builds for).
__extension__ typedef unsigned __int128 Wide;

/// 10^0 to 10^17.
constexpr std::array<std::uint64_t, kExactFixedMostDecimals + 1> kPowersOfTen = [] {
    std::array<std::uint64_t, kExactFixedMostDecimals + 1> powers{};
    std::uint64_t p = 1;
    for (auto& power : powers) {
        power = p;
        p *= 10U;
    }
    return powers;
}();

/// Room for the integer path's text: a sign, 20 digits, a point and 17 leading zeros at most.
/// The text is written at the end of the room.
constexpr std::size_t kExactTextRoom = 48;

/// The fixed-point text of `value` with `decimals` decimals, correctly rounded from the double's
/// exact binary value, ties to even, a value that rounds to zero without its minus sign: what
/// std::to_chars writes (less the sign of a zero), without its general machinery.
/// The double is m × 2^e exactly, so m × 10^decimals × 2^e is the scaled value; for the values a
/// survey prints (a few hundred kilometres at most, a handful of decimals) it fits in 128 bits and
/// the rounding is one shift and one comparison. Returns the length of the text written at the
/// end of `text`, or 0 for anything the integer path cannot hold; the caller then takes the general
/// route.
std::size_t exact_fixed(double value, int decimals, char (&text)[kExactTextRoom]) {
    if (decimals < 0 || decimals > kExactFixedMostDecimals || !std::isfinite(value)) {
        return 0;
    }
    const auto bits = std::bit_cast<std::uint64_t>(value);
    const auto field = static_cast<int>((bits >> kSignificandBits) & kExponentMask);
    if (field == 0) {
        return 0; // zero and subnormals: rare, left to the general route
    }
    const std::uint64_t significand = (bits & ((std::uint64_t{1} << kSignificandBits) - 1)) |
                                      (std::uint64_t{1} << kSignificandBits);
    const int exponent = field - kExponentBias;
    const Wide scaled = Wide{significand} * kPowersOfTen[static_cast<std::size_t>(decimals)];
    Wide units;
    if (exponent >= 0) {
        if (exponent > kMostWholeShift) {
            return 0;
        }
        units = scaled << exponent;
    } else {
        const int shift = -exponent;
        if (shift >= 127) {
            return 0; // far below the last decimal: left to the general route
        }
        units = scaled >> shift;
        const Wide rest = scaled & ((Wide{1} << shift) - 1);
        const Wide half = Wide{1} << (shift - 1);
        if (rest > half || (rest == half && (units & 1U) != 0)) {
            ++units;
        }
    }
    if (units > std::numeric_limits<std::uint64_t>::max()) {
        return 0;
    }
    // Written backwards from the end of the room: the decimals, the point, the whole part, the
    // sign of a value that does not round to zero.
    auto rest = static_cast<std::uint64_t>(units);
    char* first = std::end(text);
    for (int i = 0; i < decimals; ++i) {
        *--first = static_cast<char>('0' + rest % 10U);
        rest /= 10U;
    }
    if (decimals > 0) {
        *--first = '.';
    }
    do {
        *--first = static_cast<char>('0' + rest % 10U);
        rest /= 10U;
    } while (rest != 0);
    if ((bits >> kSignBit) != 0 && units != 0) {
        *--first = '-';
    }
    return static_cast<std::size_t>(std::end(text) - first);
}

} // namespace

void append_fixed(fmt::memory_buffer& out, double value, int decimals) {
    if (value == GEO_NULL) {
        out.push_back('-');
        return;
    }
    char exact[kExactTextRoom];
    if (const std::size_t length = exact_fixed(value, decimals, exact); length != 0) {
        out.append(std::end(exact) - length, std::end(exact));
        return;
    }
    const std::size_t first = out.size();
    // The correctly rounded fixed-point text, as "{:.Nf}" gives it, without parsing a format.
    char text_buffer[kFixedTextRoom];
    const auto written = std::to_chars(text_buffer, text_buffer + sizeof text_buffer, value,
                                       std::chars_format::fixed, decimals);
    if (written.ec == std::errc()) {
        out.append(text_buffer, written.ptr);
    } else {
        fmt::format_to(std::back_inserter(out), "{:.{}f}", value, decimals);
    }
    // A value that rounds to zero is shown as zero, never as negative zero.
    const std::string_view text(out.data() + first, out.size() - first);
    if (text.front() == '-' && text.find_first_of("123456789") == std::string_view::npos) {
        std::copy(out.data() + first + 1, out.data() + out.size(), out.data() + first);
        out.resize(out.size() - 1);
    }
}

std::string escape_control(std::string_view text) {
    std::string out;
    out.reserve(text.size());
    for (const char c : text) {
        const auto byte = static_cast<unsigned char>(c);
        if (byte < 0x20 || byte == 0x7f) {
            out += fmt::format("\\x{:02x}", byte);
        } else {
            out += c;
        }
    }
    return out;
}

nlohmann::json json_number(double value) {
    if (value == GEO_NULL) {
        return nullptr;
    }
    return value == 0.0 ? 0.0 : value; // never negative zero
}

bool check_results(std::string_view command,
                   std::initializer_list<std::pair<const char*, double>> results,
                   std::string_view reason) {
    bool ok = true;
    for (const auto& [name, value] : results) {
        if (value == GEO_NULL || !std::isfinite(value)) {
            std::string message = std::string(command) + ": the " + name + " cannot be computed";
            if (!reason.empty()) {
                message += " (" + std::string(reason) + ")";
            }
            report_error(message);
            ok = false;
        }
    }
    return ok;
}

namespace {

using Flat = std::vector<std::pair<std::string, const nlohmann::ordered_json*>>;

void flatten(const nlohmann::ordered_json& value, const std::string& prefix, Flat& out) {
    for (auto it = value.begin(); it != value.end(); ++it) {
        const std::string key = prefix.empty() ? it.key() : prefix + "." + it.key();
        if (it->is_object()) {
            flatten(*it, key, out);
        } else if (!it->is_array()) {
            out.emplace_back(key, &*it);
        }
    }
}

void csv_value(fmt::memory_buffer& out, const nlohmann::ordered_json& value) {
    if (value.is_number()) {
        append_number(out, value.get<double>());
    } else if (value.is_string()) {
        append_csv_field(out, value.get<std::string>());
    } else if (value.is_boolean()) {
        out.append(std::string_view(value.get<bool>() ? "true" : "false"));
    }
}

void csv_rows(const std::vector<Flat>& rows) {
    fmt::memory_buffer out;
    for (std::size_t i = 0; i < rows.front().size(); ++i) {
        if (i > 0) {
            out.push_back(',');
        }
        append_csv_field(out, rows.front()[i].first);
    }
    out.push_back('\n');
    for (const Flat& row : rows) {
        for (std::size_t i = 0; i < row.size(); ++i) {
            if (i > 0) {
                out.push_back(',');
            }
            csv_value(out, *row[i].second);
        }
        out.push_back('\n');
    }
    std::fwrite(out.data(), 1, out.size(), stdout);
}

} // namespace

void write_structured(const nlohmann::ordered_json& answer, std::string_view format) {
    if (format == "json") {
        const std::string text = answer.dump(2) + "\n";
        std::fwrite(text.data(), 1, text.size(), stdout);
        return;
    }
    if (format == "jsonl") {
        const std::string text = answer.dump() + "\n";
        std::fwrite(text.data(), 1, text.size(), stdout);
        return;
    }
    std::vector<Flat> rows;
    for (auto it = answer.begin(); it != answer.end() && rows.empty(); ++it) {
        if (it->is_array() && !it->empty() && it->front().is_object()) {
            for (const auto& element : *it) {
                rows.emplace_back();
                flatten(element, "", rows.back());
            }
        }
    }
    if (rows.empty()) {
        rows.emplace_back();
        flatten(answer, "", rows.back());
    }
    csv_rows(rows);
}

nlohmann::json json_degrees(double radians) {
    return radians == GEO_NULL ? nlohmann::json(nullptr)
                               : nlohmann::json(radians * kDegreesPerRadian);
}

void report_error(const std::string& message) {
    const std::string line = "qv5: " + escape_control(message) + "\n";
    std::fwrite(line.data(), 1, line.size(), stderr);
}

void report_file_errors(const std::string& source, const std::vector<JobError>& errors,
                        const std::string& verdict) {
    for (const JobError& e : errors) {
        std::string where = source;
        if (e.line > 0) {
            where += ':';
            where += std::to_string(e.line);
        }
        report_error(where + ": " + e.message);
    }
    report_error(verdict + ": " + std::to_string(errors.size()) + " error(s)");
}

} // namespace qv5::cli
