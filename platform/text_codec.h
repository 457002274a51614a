// Conversion between UTF-8 and UTF-16, independent of the process locale. Internal header.
#ifndef QV5_PLATFORM_TEXT_CODEC_H
#define QV5_PLATFORM_TEXT_CODEC_H

#include <string>
#include <string_view>

namespace qv5::detail {

/// U+FFFD, written in place of anything that is not well-formed text.
inline constexpr char32_t kReplacementCharacter = 0xFFFD;

/// UTF-8 to UTF-16. Overlong forms, encoded surrogates, code points above U+10FFFF, stray
/// continuation bytes and truncated sequences each become one U+FFFD.
std::u16string utf8_to_utf16(std::string_view utf8);

/// UTF-16 to UTF-8. An unpaired surrogate becomes U+FFFD.
std::string utf16_to_utf8(std::u16string_view utf16);

/// True when the text is well-formed UTF-8.
bool is_valid_utf8(std::string_view utf8);

} // namespace qv5::detail

#endif // QV5_PLATFORM_TEXT_CODEC_H
