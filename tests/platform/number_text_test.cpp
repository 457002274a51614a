#include "platform/number_text.h"

#include <gtest/gtest.h>

#include <clocale>
#include <cmath>
#include <limits>
#include <string>

using qv5::detail::read_leading_number;
using qv5::detail::TextBuilder;

namespace {

std::u16string fixed(double value, int decimals, int width = 0) {
    TextBuilder text;
    text.put_fixed(value, decimals, width);
    return std::u16string(text.view());
}

std::u16string integer(long long value, int width = 0) {
    TextBuilder text;
    text.put_int(value, width);
    return std::u16string(text.view());
}

double read(std::u16string_view text) {
    double value = -1.0;
    EXPECT_TRUE(read_leading_number(text, value)) << std::string(text.begin(), text.end());
    return value;
}

TEST(TextBuilderFixed, RoundsCorrectlyToTheDecimals) {
    EXPECT_EQ(fixed(1234.5678, 3), u"1234.568");
    EXPECT_EQ(fixed(0.0, 2), u"0.00");
    EXPECT_EQ(fixed(3.0, 0), u"3");
    // 0.125 is exact in binary: a true tie goes to even, as printf does. 2.675 lies below its
    // decimal spelling and rounds down.
    EXPECT_EQ(fixed(0.125, 2), u"0.12");
    EXPECT_EQ(fixed(2.675, 2), u"2.67");
    EXPECT_EQ(fixed(0.5, 0), u"0");
    EXPECT_EQ(fixed(1.5, 0), u"2");
}

TEST(TextBuilderFixed, NegativeValuesAndNegativeZeroKeepTheirSign) {
    EXPECT_EQ(fixed(-12.25, 1), u"-12.2");
    EXPECT_EQ(fixed(-0.0, 3), u"-0.000");
    EXPECT_EQ(fixed(-0.0004, 3), u"-0.000");
}

TEST(TextBuilderFixed, ZeroPaddingGoesAfterTheSign) {
    EXPECT_EQ(fixed(3.4, 3, 6), u"03.400");
    EXPECT_EQ(fixed(-3.4, 3, 7), u"-03.400");
    EXPECT_EQ(fixed(123.4, 3, 6), u"123.400"); // wider than the field: not cut
    EXPECT_EQ(fixed(7.5, 5, 8), u"07.50000");
}

TEST(TextBuilderFixed, NonFiniteValuesArePaddedWithSpaces) {
    EXPECT_EQ(fixed(std::numeric_limits<double>::infinity(), 2), u"inf");
    EXPECT_EQ(fixed(-std::numeric_limits<double>::infinity(), 2, 6), u"  -inf");
    EXPECT_EQ(fixed(std::numeric_limits<double>::quiet_NaN(), 3, 5), u"  nan");
}

TEST(TextBuilderFixed, DecimalsAreClampedToTheSupportedRange) {
    EXPECT_EQ(fixed(1.25, -4), u"1");
    EXPECT_EQ(fixed(1.0, 100).size(), 2u + TextBuilder::kMaxDecimals);
}

TEST(TextBuilderFixed, LargestDoubleFits) {
    const std::u16string text = fixed(std::numeric_limits<double>::max(), 1);
    EXPECT_EQ(text.size(), 311u);
    EXPECT_EQ(text.substr(0, 6), u"179769");
    EXPECT_EQ(text.substr(text.size() - 2), u".0");
}

TEST(TextBuilderFixed, IgnoresTheProcessLocale) {
    // A locale with a decimal comma, where one is installed; the text must not change.
    const char* previous = std::setlocale(LC_NUMERIC, nullptr);
    const std::string saved = previous != nullptr ? previous : "C";
    std::setlocale(LC_NUMERIC, "de_DE.UTF-8");
    EXPECT_EQ(fixed(1.5, 1), u"1.5");
    std::setlocale(LC_NUMERIC, saved.c_str());
}

TEST(TextBuilderInt, ZeroPaddedWidthCountsTheSign) {
    EXPECT_EQ(integer(5, 2), u"05");
    EXPECT_EQ(integer(60, 2), u"60");
    EXPECT_EQ(integer(-5, 2), u"-5");
    EXPECT_EQ(integer(-5, 3), u"-05");
    EXPECT_EQ(integer(123, 7), u"0000123");
    EXPECT_EQ(integer(-2147483648LL), u"-2147483648");
}

TEST(TextBuilderUnsigned, WritesAllDigits) {
    TextBuilder text;
    text.put_unsigned(4294967295ULL);
    EXPECT_EQ(text.view(), u"4294967295");
}

TEST(TextBuilder, TextPastTheCapacityIsDropped) {
    TextBuilder text;
    for (std::size_t i = 0; i < TextBuilder::kCapacity + 10; ++i) {
        text.put(u'x');
    }
    EXPECT_EQ(text.size(), TextBuilder::kCapacity);
    unsigned short out[TextBuilder::kCapacity + 1];
    text.copy_to(out);
    EXPECT_EQ(out[TextBuilder::kCapacity], 0);
}

TEST(TextBuilder, LatinOneBytesKeepTheirCodePoints) {
    TextBuilder text;
    text.put(std::string_view("\xB0"));
    ASSERT_EQ(text.size(), 1u);
    EXPECT_EQ(text.view()[0], u'\u00B0');
}

TEST(ReadLeadingNumber, ReadsDecimalNumbersWithExponent) {
    EXPECT_EQ(read(u"123.4530"), 123.4530);
    EXPECT_EQ(read(u"-0.3"), -0.3);
    EXPECT_EQ(read(u"+7"), 7.0);
    EXPECT_EQ(read(u".5"), 0.5);
    EXPECT_EQ(read(u"5."), 5.0);
    EXPECT_EQ(read(u"1e3"), 1000.0);
    EXPECT_EQ(read(u"1.5E-2"), 0.015);
}

TEST(ReadLeadingNumber, SkipsLeadingBlanksAndStopsAtTheFirstForeignCharacter) {
    EXPECT_EQ(read(u" \t\n 45.3000xyz"), 45.3);
    EXPECT_EQ(read(u"12,5"), 12.0); // a comma is no decimal point
    EXPECT_EQ(read(u"2e"), 2.0);    // an exponent without digits is not part of the number
    EXPECT_EQ(read(u"2e+"), 2.0);
    EXPECT_EQ(read(u"3.25.7"), 3.25);
    EXPECT_EQ(read(u"9\u00B0"), 9.0);
}

TEST(ReadLeadingNumber, NoNumberReadsAsZeroAndFails) {
    for (const char16_t* text : {u"", u"abc", u"  ", u"-", u"+.", u".", u"N45.3000E", u"e5"}) {
        double value = -1.0;
        EXPECT_FALSE(read_leading_number(text, value));
        EXPECT_EQ(value, 0.0);
    }
}

TEST(ReadLeadingNumber, ReadsInfinityNanAndHexadecimal) {
    EXPECT_EQ(read(u"inf"), std::numeric_limits<double>::infinity());
    EXPECT_EQ(read(u"-Infinity"), -std::numeric_limits<double>::infinity());
    EXPECT_TRUE(std::isnan(read(u"nan")));
    EXPECT_TRUE(std::isnan(read(u"NaN(123)")));
    EXPECT_EQ(read(u"0x1.8p1"), 3.0);
    EXPECT_EQ(read(u"0X10"), 16.0);
    EXPECT_EQ(read(u"0x"), 0.0); // "0" read, the 'x' left over
    EXPECT_EQ(read(u"0xg"), 0.0);
}

TEST(ReadLeadingNumber, OutOfRangeReadsAsInfinityOrZero) {
    EXPECT_EQ(read(u"1e400"), std::numeric_limits<double>::infinity());
    EXPECT_EQ(read(u"-1e400"), -std::numeric_limits<double>::infinity());
    EXPECT_EQ(read(u"123456789e99999999999"), std::numeric_limits<double>::infinity());
    EXPECT_EQ(read(u"1e-400"), 0.0);
    EXPECT_EQ(read(u"0.000001e-400"), 0.0);
    EXPECT_TRUE(std::signbit(read(u"-1e-400")));
    EXPECT_EQ(read(u"0x1p99999"), std::numeric_limits<double>::infinity());
    EXPECT_EQ(read(u"0x1p-99999"), 0.0);
}

} // namespace
