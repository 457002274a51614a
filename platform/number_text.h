// Locale-independent number formatting and reading: the library's stand-in for swprintf's "%i",
// "%0*i", "%lu", "%.*f" and "%0*.*f" conversions and for wcstod. The decimal point is always '.'
// whatever the process locale. Internal header.
#ifndef QV5_PLATFORM_NUMBER_TEXT_H
#define QV5_PLATFORM_NUMBER_TEXT_H

#include <cstddef>
#include <string>
#include <string_view>

namespace qv5::detail {

/// A short text assembled from pieces and numbers in a fixed buffer, without allocating.
///
/// Numbers are written as the C printf family writes them in the "C" locale: fixed notation
/// rounded correctly to the requested decimals, a '-' for negative values including -0.0,
/// "nan", "-nan", "inf" and "-inf" for the non-finite values. Text that would pass the capacity
/// is dropped, never written past the end.
class TextBuilder {
public:
    /// Code units the builder holds: any one number put_fixed writes fits.
    static constexpr std::size_t kCapacity = 384;

    /// One UTF-16 code unit.
    void put(char16_t unit);
    /// ASCII text (each byte is taken as the code point of the same value).
    void put(std::string_view ascii);
    /// UTF-16 text.
    void put(std::u16string_view text);
    /// A whole number; `zero_width` is the least width of the field including the sign, filled
    /// with zeros after the sign ("%0*i"); 0 pads nothing ("%i").
    void put_int(long long value, int zero_width = 0);
    /// An unsigned whole number ("%lu").
    void put_unsigned(unsigned long long value);
    /// Fixed notation with `decimals` digits after the point ("%.*f"); `zero_width` as for
    /// put_int ("%0*.*f"). Non-finite values are padded with spaces, as printf pads them.
    /// Negative decimals count as 0; more than kMaxDecimals count as kMaxDecimals.
    void put_fixed(double value, int decimals, int zero_width = 0);

    /// Most decimals put_fixed writes: past the seventeen significant digits of a double only the
    /// exact binary expansion follows, and the fixed buffer stays bounded.
    static constexpr int kMaxDecimals = 40;

    /// The text so far.
    std::u16string_view view() const { return {m_text, m_size}; }
    std::size_t size() const { return m_size; }
    /// Copies the text and a terminating zero to `out`, which holds at least size() + 1 units.
    void copy_to(unsigned short* out) const;

private:
    /// Pads `digits` (a number as ASCII, sign first) with `fill` to `width` after the sign
    /// (zeros) or before it (spaces).
    void put_padded(std::string_view digits, int width, char fill);

    char16_t m_text[kCapacity];
    std::size_t m_size = 0;
};

/// The number at the start of `text`, read as wcstod reads it in the "C" locale: leading white
/// space, an optional sign, then the longest prefix that is a decimal number with optional
/// exponent, a hexadecimal number ("0x1.8p3"), "inf", "infinity" or "nan". A value too large
/// for a double reads as an infinity of its sign, one too small as a zero of its sign.
/// @return false (and value 0) when the text does not start with a number
bool read_leading_number(std::u16string_view text, double& value);

} // namespace qv5::detail

#endif // QV5_PLATFORM_NUMBER_TEXT_H
