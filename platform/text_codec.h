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

/// UTF-16 to the single-byte Windows-1252 code page, the one the log file is written in: ASCII
/// and U+00A0 to U+00FF map to themselves, the 27 characters that code page places at 0x80 to
/// 0x9F map there, and everything else - a surrogate pair, a lone surrogate, the C1 controls -
/// becomes one '?'.
std::string utf16_to_windows1252(std::u16string_view utf16);

/// Simple case folding of one UTF-16 unit for ASCII and the Latin-1 letters, the alphabets of
/// the names this library compares (point and template names, settings keys).
unsigned short fold_case(unsigned short unit);

/// Compares two texts unit by unit after fold_case.
/// @return 0 when equal, negative when `a` sorts first, positive otherwise
int compare_no_case(std::u16string_view a, std::u16string_view b);

} // namespace qv5::detail

#endif // QV5_PLATFORM_TEXT_CODEC_H
