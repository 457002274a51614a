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
