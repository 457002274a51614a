// Number text without the locale: std::to_chars writes exactly what printf writes in the "C"
// locale (fixed notation, correctly rounded), and std::from_chars reads what strtod reads there.
#include "platform/number_text.h"

#include <algorithm>
#include <charconv>
#include <cmath>
#include <limits>
#include <system_error>

namespace qv5::detail {
namespace {

/// Room for the longest fixed text put_fixed can produce: a sign, the 309 integer digits of the
/// largest double, the point and kMaxDecimals decimals.
constexpr std::size_t kFixedScratch = 1 + 309 + 1 + TextBuilder::kMaxDecimals + 8;
/// Exponent digits beyond this value cannot change whether a number overflows.
constexpr long long kExponentCeiling = 1'000'000'000;

/// Room for the 20 digits of the largest unsigned long long and a sign.
constexpr std::size_t kIntegerScratch = 24;

/// Writes the decimal digits of `value` backwards, ending just before `end`.
/// @return where the digits start
char* write_digits(char* end, unsigned long long value) {
    do {
        *--end = static_cast<char>('0' + value % 10);
        value /= 10;
    } while (value != 0);
    return end;
}

bool is_space(char16_t c) {
    return c == u' ' || c == u'\t' || c == u'\n' || c == u'\v' || c == u'\f' || c == u'\r';
}

bool is_digit(char16_t c) {
    return c >= u'0' && c <= u'9';
}

bool is_hex_digit(char16_t c) {
    return is_digit(c) || (c >= u'a' && c <= u'f') || (c >= u'A' && c <= u'F');
}

char16_t lower(char16_t c) {
    return c >= u'A' && c <= u'Z' ? static_cast<char16_t>(c + (u'a' - u'A')) : c;
}

/// True when `text` starts with the ASCII `word`, ignoring case.
bool starts_with_word(std::u16string_view text, std::string_view word) {
    if (text.size() < word.size()) {
        return false;
    }
    for (std::size_t i = 0; i < word.size(); ++i) {
        if (lower(text[i]) != static_cast<char16_t>(word[i])) {
            return false;
        }
    }
    return true;
}

/// Length of the run of digits (decimal, or hexadecimal when `hex`) starting at `pos`.
std::size_t digit_run(std::u16string_view text, std::size_t pos, bool hex) {
    std::size_t n = 0;
    while (pos + n < text.size() && (hex ? is_hex_digit(text[pos + n]) : is_digit(text[pos + n]))) {
        ++n;
    }
    return n;
}

/// Where a mantissa starting at `start` ends - digits, an optional point, digits, then an
/// optional exponent ('e', or 'p' for hexadecimal, an optional sign and decimal digits, taken
/// only when digits follow) - or 0 when it has no digits at all.
std::size_t mantissa_and_exponent(std::u16string_view text, std::size_t start, bool hex) {
    const std::size_t whole = digit_run(text, start, hex);
    const bool point = start + whole < text.size() && text[start + whole] == u'.';
    const std::size_t fraction = point ? digit_run(text, start + whole + 1, hex) : 0;
    if (whole + fraction == 0) {
        return 0;
    }
    std::size_t end = start + whole + (point ? 1 + fraction : 0);
    if (end < text.size() && lower(text[end]) == (hex ? u'p' : u'e')) {
        std::size_t e = end + 1;
        if (e < text.size() && (text[e] == u'+' || text[e] == u'-')) {
            ++e;
        }
        const std::size_t exponent = digit_run(text, e, false);
        if (exponent > 0) {
            end = e + exponent;
        }
    }
    return end;
}

/// Length of the longest prefix of `text` (which follows the sign) that strtod would take as
/// the body of a number, and whether it is hexadecimal (the "0x" included in the length).
std::size_t number_body(std::u16string_view text, bool& hex) {
    hex = false;
    if (starts_with_word(text, "infinity")) {
        return 8;
    }
    if (starts_with_word(text, "inf")) {
        return 3;
    }
    if (starts_with_word(text, "nan")) {
        std::size_t n = 3;
        // "nan(chars)": the parenthesised part belongs to the number only when it is closed.
        if (n < text.size() && text[n] == u'(') {
            std::size_t k = n + 1;
            while (k < text.size() &&
                   (is_digit(text[k]) || (lower(text[k]) >= u'a' && lower(text[k]) <= u'z') ||
                    text[k] == u'_')) {
                ++k;
            }
            if (k < text.size() && text[k] == u')') {
                n = k + 1;
            }
        }
        return n;
    }
    if (text.size() >= 2 && text[0] == u'0' && lower(text[1]) == u'x') {
        const std::size_t end = mantissa_and_exponent(text, 2, true);
        if (end > 0) {
            hex = true;
            return end;
        }
        return 1; // "0x" without hexadecimal digits reads as the number 0
    }
    return mantissa_and_exponent(text, 0, false);
}

/// For a number from_chars found out of range: true when it is too large rather than too small.
/// The power of the base at the leading non-zero digit plus the exponent decides (the exponent
/// counts powers of ten for a decimal number and powers of two for a hexadecimal one).
bool out_of_range_is_overflow(std::string_view body, bool hex) {
    const std::size_t exponent_at = body.find_first_of(hex ? "pP" : "eE");
    const std::string_view mantissa = body.substr(0, exponent_at);
    const std::size_t point = std::min(mantissa.find('.'), mantissa.size());
    long long magnitude = 0;
    bool found = false;
    for (std::size_t k = 0; k < mantissa.size() && !found; ++k) {
        if (mantissa[k] != '.' && mantissa[k] != '0') {
            found = true;
            magnitude = k < point ? static_cast<long long>(point - k)
                                  : -static_cast<long long>(k - point - 1);
        }
    }
    if (!found) {
        return false;
    }
    long long exponent = 0;
    if (exponent_at != std::string_view::npos) {
        std::size_t e = exponent_at + 1;
        const bool negative = e < body.size() && body[e] == '-';
        if (e < body.size() && (body[e] == '-' || body[e] == '+')) {
            ++e;
        }
        for (; e < body.size(); ++e) {
            if (exponent < kExponentCeiling) {
                exponent = exponent * 10 + (body[e] - '0');
            }
        }
        exponent = negative ? -exponent : exponent;
    }
    return (hex ? 4 * magnitude : magnitude) + exponent > 0;
}

} // namespace

void TextBuilder::put(char16_t unit) {
    if (m_size < kCapacity) {
        m_text[m_size++] = unit;
    }
}

void TextBuilder::put(std::string_view ascii) {
    for (const char c : ascii) {
        put(static_cast<char16_t>(static_cast<unsigned char>(c)));
    }
}

void TextBuilder::put(std::u16string_view text) {
    for (const char16_t c : text) {
        put(c);
    }
}

void TextBuilder::put_padded(std::string_view digits, int width, char fill) {
    const bool negative = !digits.empty() && digits.front() == '-';
    std::size_t pad = 0;
    if (width > 0 && static_cast<std::size_t>(width) > digits.size()) {
        pad = static_cast<std::size_t>(width) - digits.size();
    }
    if (fill == ' ') {
        for (std::size_t i = 0; i < pad; ++i) {
            put(u' ');
        }
        put(digits);
        return;
    }
    if (negative) {
        put(u'-');
        digits.remove_prefix(1);
    }
    for (std::size_t i = 0; i < pad; ++i) {
        put(u'0');
    }
    put(digits);
}

void TextBuilder::put_int(long long value, int zero_width) {
    char scratch[kIntegerScratch];
    const bool negative = value < 0;
    // The magnitude as unsigned: -LLONG_MIN does not fit a long long.
    const unsigned long long magnitude = negative ? 0ULL - static_cast<unsigned long long>(value)
                                                  : static_cast<unsigned long long>(value);
    char* first = write_digits(scratch + sizeof scratch, magnitude);
    if (negative) {
        *--first = '-';
    }
    put_padded(std::string_view(first, static_cast<std::size_t>(scratch + sizeof scratch - first)),
               zero_width, '0');
}

void TextBuilder::put_unsigned(unsigned long long value) {
    char scratch[kIntegerScratch];
    const char* first = write_digits(scratch + sizeof scratch, value);
    put(std::string_view(first, static_cast<std::size_t>(scratch + sizeof scratch - first)));
}

void TextBuilder::put_fixed(double value, int decimals, int zero_width) {
    if (decimals < 0) {
        decimals = 0;
    } else if (decimals > kMaxDecimals) {
        decimals = kMaxDecimals;
    }
    char scratch[kFixedScratch];
    const auto result =
        std::to_chars(scratch, scratch + sizeof scratch, value, std::chars_format::fixed, decimals);
    if (result.ec != std::errc()) {
        return; // cannot happen: the scratch holds the longest fixed text of a double
    }
    put_padded(std::string_view(scratch, static_cast<std::size_t>(result.ptr - scratch)),
               zero_width, std::isfinite(value) ? '0' : ' ');
}

void TextBuilder::copy_to(unsigned short* out) const {
    for (std::size_t i = 0; i < m_size; ++i) {
        out[i] = m_text[i];
    }
    out[m_size] = 0;
}

bool read_leading_number(std::u16string_view text, double& value) {
    value = 0.0;
    std::size_t pos = 0;
    while (pos < text.size() && is_space(text[pos])) {
        ++pos;
    }
    bool negative = false;
    if (pos < text.size() && (text[pos] == u'+' || text[pos] == u'-')) {
        negative = text[pos] == u'-';
        ++pos;
    }
    bool hex = false;
    const std::size_t length = number_body(text.substr(pos), hex);
    if (length == 0) {
        return false;
    }
    // The body is ASCII by construction; from_chars takes neither the sign nor the "0x".
    std::string body;
    body.reserve(length);
    for (std::size_t i = pos + (hex ? 2 : 0); i < pos + length; ++i) {
        body.push_back(static_cast<char>(text[i]));
    }
    double parsed = 0.0;
    const auto result = std::from_chars(body.data(), body.data() + body.size(), parsed,
                                        hex ? std::chars_format::hex : std::chars_format::general);
    if (result.ec == std::errc::result_out_of_range) {
        parsed =
            out_of_range_is_overflow(body, hex) ? std::numeric_limits<double>::infinity() : 0.0;
    } else if (result.ec != std::errc()) {
        return false;
    }
    value = negative ? -parsed : parsed;
    return true;
}

} // namespace qv5::detail
