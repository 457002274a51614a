#include "platform/text_codec.h"

#include <gtest/gtest.h>

#include <string>

using qv5::detail::is_valid_utf8;
using qv5::detail::utf16_to_utf8;
using qv5::detail::utf8_to_utf16;

namespace {

const std::u16string kReplacement = u"\uFFFD";

TEST(Utf8ToUtf16, AsciiPassesThrough) {
    EXPECT_EQ(utf8_to_utf16("North 12"), u"North 12");
}

TEST(Utf8ToUtf16, TwoThreeAndFourByteFormsDecode) {
    // U+00B0 DEGREE SIGN, U+20AC EURO SIGN, U+1F4CD ROUND PUSHPIN (a surrogate pair in UTF-16).
    EXPECT_EQ(utf8_to_utf16("\xC2\xB0"), u"\u00B0");
    EXPECT_EQ(utf8_to_utf16("\xE2\x82\xAC"), u"\u20AC");
    EXPECT_EQ(utf8_to_utf16("\xF0\x9F\x93\x8D"),
              std::u16string({char16_t(0xD83D), char16_t(0xDCCD)}));
}

TEST(Utf8ToUtf16, StrayContinuationByteBecomesReplacement) {
    EXPECT_EQ(utf8_to_utf16("a\x80"
                            "b"),
              u"a" + kReplacement + u"b");
}

TEST(Utf8ToUtf16, TruncatedSequenceAtEndBecomesReplacement) {
    EXPECT_EQ(utf8_to_utf16("x\xE2\x82"), u"x" + kReplacement);
}

TEST(Utf8ToUtf16, TruncatedSequenceKeepsFollowingCharacter) {
    EXPECT_EQ(utf8_to_utf16("\xE2\x82Z"), kReplacement + u"Z");
}

TEST(Utf8ToUtf16, OverlongFormsAreRejected) {
    EXPECT_EQ(utf8_to_utf16("\xC0\xAF"), kReplacement + kReplacement);
    EXPECT_EQ(utf8_to_utf16("\xE0\x80\xAF"), kReplacement + kReplacement + kReplacement);
    EXPECT_EQ(utf8_to_utf16("\xF0\x80\x80\xAF"),
              kReplacement + kReplacement + kReplacement + kReplacement);
}

TEST(Utf8ToUtf16, EncodedSurrogatesAreRejected) {
    EXPECT_EQ(utf8_to_utf16("\xED\xA0\x80"), kReplacement + kReplacement + kReplacement);
}

TEST(Utf8ToUtf16, CodePointsBeyondUnicodeAreRejected) {
    EXPECT_EQ(utf8_to_utf16("\xF4\x90\x80\x80"),
              kReplacement + kReplacement + kReplacement + kReplacement);
    EXPECT_EQ(utf8_to_utf16("\xFF"), kReplacement);
}

TEST(Utf8ToUtf16, HighestCodePointDecodes) {
    EXPECT_EQ(utf8_to_utf16("\xF4\x8F\xBF\xBF"),
              std::u16string({char16_t(0xDBFF), char16_t(0xDFFF)}));
}

TEST(Utf16ToUtf8, PairsEncodeAsFourBytes) {
    EXPECT_EQ(utf16_to_utf8(std::u16string({char16_t(0xD83D), char16_t(0xDCCD)})),
              "\xF0\x9F\x93\x8D");
}

TEST(Utf16ToUtf8, LoneSurrogatesBecomeReplacement) {
    EXPECT_EQ(utf16_to_utf8(std::u16string({char16_t('a'), char16_t(0xD800)})), "a\xEF\xBF\xBD");
    EXPECT_EQ(utf16_to_utf8(std::u16string({char16_t(0xDC00), char16_t('b')})), "\xEF\xBF\xBD"
                                                                                "b");
    EXPECT_EQ(utf16_to_utf8(std::u16string({char16_t(0xD800), char16_t(0xD800), char16_t(0xDC00)})),
              "\xEF\xBF\xBD\xF0\x90\x80\x80");
}

TEST(Utf16ToUtf8, EveryBmpCharacterRoundTrips) {
    for (char32_t c = 1; c < 0x10000; ++c) {
        if (c >= 0xD800 && c <= 0xDFFF) {
            continue;
        }
        const std::u16string one(1, static_cast<char16_t>(c));
        ASSERT_EQ(utf8_to_utf16(utf16_to_utf8(one)), one) << static_cast<unsigned>(c);
    }
}

TEST(Utf8Validity, DistinguishesGenuineReplacementFromSubstitution) {
    EXPECT_TRUE(is_valid_utf8("\xEF\xBF\xBD"));
    EXPECT_TRUE(is_valid_utf8("plain \xC2\xB0"));
    EXPECT_FALSE(is_valid_utf8("\xC3"));
    EXPECT_FALSE(is_valid_utf8("\xED\xB0\x80"));
}

} // namespace
