// UTF-8 <-> UTF-16 conversion that never fails: malformed input becomes U+FFFD.
#include "platform/text_codec.h"

namespace qv5::detail {
namespace {

constexpr char32_t kMaxCodePoint = 0x10FFFF;
constexpr char32_t kSurrogateFirst = 0xD800;
constexpr char32_t kSurrogateLast = 0xDFFF;
constexpr char32_t kHighSurrogateLast = 0xDBFF;
constexpr char32_t kLowSurrogateFirst = 0xDC00;

bool is_continuation(unsigned char byte) {
    return (byte & 0xC0) == 0x80;
}

/// Decodes one code point starting at `pos` and advances `pos` past what it consumed. A
/// malformed sequence consumes its maximal ill-formed prefix (at least one byte) and gives
/// U+FFFD, the substitution practice Unicode recommends.
char32_t decode_utf8(std::string_view text, std::size_t& pos) {
    const auto lead = static_cast<unsigned char>(text[pos++]);
    if (lead < 0x80) {
        return lead;
    }
    int length = 0;
    char32_t code = 0;
    char32_t minimum = 0;
    if (lead >= 0xC2 && lead <= 0xDF) {
        length = 2;
        code = lead & 0x1Fu;
        minimum = 0x80;
    } else if (lead >= 0xE0 && lead <= 0xEF) {
        length = 3;
        code = lead & 0x0Fu;
        minimum = 0x800;
    } else if (lead >= 0xF0 && lead <= 0xF4) {
        length = 4;
        code = lead & 0x07u;
        minimum = 0x10000;
    } else {
        return kReplacementCharacter; // continuation byte, C0/C1 or F5..FF lead
    }
    for (int i = 1; i < length; ++i) {
        if (pos >= text.size()) {
            return kReplacementCharacter; // truncated
        }
        const auto byte = static_cast<unsigned char>(text[pos]);
        if (!is_continuation(byte)) {
            return kReplacementCharacter; // the byte starts the next character
        }
        const char32_t next = (code << 6) | (byte & 0x3Fu);
        // Reject overlong forms, surrogates and values past U+10FFFF as soon as the second byte
        // shows them, so that the following bytes are read afresh.
        if (i == 1) {
            const char32_t shift = static_cast<char32_t>(6 * (length - 2));
            const char32_t low = next << shift;
            const char32_t high = low | ((char32_t{1} << shift) - 1);
            if (high < minimum || low > kMaxCodePoint ||
                (low >= kSurrogateFirst && low <= kSurrogateLast)) {
                return kReplacementCharacter;
            }
        }
        code = next;
        ++pos;
    }
    return code;
}

void append_utf16(std::u16string& out, char32_t code) {
    if (code < 0x10000) {
        out.push_back(static_cast<char16_t>(code));
        return;
    }
    code -= 0x10000;
    out.push_back(static_cast<char16_t>(kSurrogateFirst + (code >> 10)));
    out.push_back(static_cast<char16_t>(kLowSurrogateFirst + (code & 0x3FF)));
}

void append_utf8(std::string& out, char32_t code) {
    if (code < 0x80) {
        out.push_back(static_cast<char>(code));
    } else if (code < 0x800) {
        out.push_back(static_cast<char>(0xC0 | (code >> 6)));
        out.push_back(static_cast<char>(0x80 | (code & 0x3F)));
    } else if (code < 0x10000) {
        out.push_back(static_cast<char>(0xE0 | (code >> 12)));
        out.push_back(static_cast<char>(0x80 | ((code >> 6) & 0x3F)));
        out.push_back(static_cast<char>(0x80 | (code & 0x3F)));
    } else {
        out.push_back(static_cast<char>(0xF0 | (code >> 18)));
        out.push_back(static_cast<char>(0x80 | ((code >> 12) & 0x3F)));
        out.push_back(static_cast<char>(0x80 | ((code >> 6) & 0x3F)));
        out.push_back(static_cast<char>(0x80 | (code & 0x3F)));
    }
}

/// The characters Windows-1252 places at 0x80 ... 0x9F, in byte order; 0 where the byte is
/// unassigned.
constexpr char16_t kWindows1252High[32] = {
    0x20AC, 0,      0x201A, 0x0192, 0x201E, 0x2026, 0x2020, 0x2021, 0x02C6, 0x2030, 0x0160,
    0x2039, 0x0152, 0,      0x017D, 0,      0,      0x2018, 0x2019, 0x201C, 0x201D, 0x2022,
    0x2013, 0x2014, 0x02DC, 0x2122, 0x0161, 0x203A, 0x0153, 0,      0x017E, 0x0178};

/// First byte of the Windows-1252 range that differs from Latin-1.
constexpr unsigned char kWindows1252HighFirst = 0x80;
/// First code point from which Windows-1252 agrees with Latin-1 again (no-break space).
constexpr char16_t kLatin1UpperFirst = 0xA0;
/// Last code point that Latin-1 (and so Windows-1252) holds.
constexpr char16_t kLatin1Last = 0xFF;

char windows1252_byte(char16_t unit) {
    if (unit < kWindows1252HighFirst || (unit >= kLatin1UpperFirst && unit <= kLatin1Last)) {
        return static_cast<char>(unit);
    }
    for (unsigned char i = 0; i < 32; ++i) {
        if (kWindows1252High[i] != 0 && kWindows1252High[i] == unit) {
            return static_cast<char>(kWindows1252HighFirst + i);
        }
    }
    return '?';
}

} // namespace

std::u16string utf8_to_utf16(std::string_view utf8) {
    std::u16string out;
    out.reserve(utf8.size());
    std::size_t pos = 0;
    while (pos < utf8.size()) {
        append_utf16(out, decode_utf8(utf8, pos));
    }
    return out;
}

std::string utf16_to_utf8(std::u16string_view utf16) {
    std::string out;
    out.reserve(utf16.size());
    for (std::size_t i = 0; i < utf16.size(); ++i) {
        char32_t code = utf16[i];
        if (code >= kSurrogateFirst && code <= kHighSurrogateLast && i + 1 < utf16.size() &&
            utf16[i + 1] >= kLowSurrogateFirst && utf16[i + 1] <= kSurrogateLast) {
            code = 0x10000 + ((code - kSurrogateFirst) << 10) + (utf16[i + 1] - kLowSurrogateFirst);
            ++i;
        } else if (code >= kSurrogateFirst && code <= kSurrogateLast) {
            code = kReplacementCharacter; // unpaired surrogate
        }
        append_utf8(out, code);
    }
    return out;
}

std::string utf16_to_windows1252(std::u16string_view utf16) {
    std::string out;
    out.reserve(utf16.size());
    for (std::size_t i = 0; i < utf16.size(); ++i) {
        const char16_t unit = utf16[i];
        if (unit >= kSurrogateFirst && unit <= kHighSurrogateLast && i + 1 < utf16.size() &&
            utf16[i + 1] >= kLowSurrogateFirst && utf16[i + 1] <= kSurrogateLast) {
            ++i; // a character beyond the Basic Multilingual Plane is one character: one '?'
            out.push_back('?');
            continue;
        }
        out.push_back(windows1252_byte(unit));
    }
    return out;
}

unsigned short fold_case(unsigned short unit) {
    if (unit >= 'A' && unit <= 'Z') {
        return static_cast<unsigned short>(unit + ('a' - 'A'));
    }
    if (unit >= 0xC0 && unit <= 0xDE && unit != 0xD7) {
        return static_cast<unsigned short>(unit + 0x20);
    }
    return unit;
}

int compare_no_case(std::u16string_view a, std::u16string_view b) {
    const std::size_t n = a.size() < b.size() ? a.size() : b.size();
    for (std::size_t i = 0; i < n; ++i) {
        const unsigned short x = fold_case(a[i]);
        const unsigned short y = fold_case(b[i]);
        if (x != y) {
            return x < y ? -1 : 1;
        }
    }
    if (a.size() == b.size()) {
        return 0;
    }
    return a.size() < b.size() ? -1 : 1;
}

bool is_valid_utf8(std::string_view utf8) {
    std::size_t pos = 0;
    while (pos < utf8.size()) {
        const std::size_t start = pos;
        const char32_t code = decode_utf8(utf8, pos);
        if (code == kReplacementCharacter) {
            // A genuine U+FFFD is three bytes EF BF BD; a substitution consumed something else.
            if (utf8.substr(start, pos - start) != "\xEF\xBF\xBD") {
                return false;
            }
        }
    }
    return true;
}

} // namespace qv5::detail
