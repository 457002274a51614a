#include "platform/text_codec.h"

#include <gtest/gtest.h>

#include <string>

using qv5::detail::compare_no_case;
using qv5::detail::utf16_to_windows1252;

namespace {

TEST(Windows1252, AsciiAndLatin1MapToThemselves) {
    EXPECT_EQ(utf16_to_windows1252(u"N 12.5m"), "N 12.5m");
    EXPECT_EQ(utf16_to_windows1252(u"10\u00B030'\u00B2\u00B3\u00FF\u00A0"), "10\xB0"
                                                                            "30'\xB2\xB3\xFF\xA0");
}

TEST(Windows1252, TheTwentySevenHighCharactersTakeTheirBytes) {
    const std::u16string text = u"\u20AC\u201A\u0192\u201E\u2026\u2020\u2021\u02C6\u2030\u0160"
                                u"\u2039\u0152\u017D\u2018\u2019\u201C\u201D\u2022\u2013\u2014"
                                u"\u02DC\u2122\u0161\u203A\u0153\u017E\u0178";
    const std::string bytes = "\x80\x82\x83\x84\x85\x86\x87\x88\x89\x8A\x8B\x8C\x8E\x91\x92\x93"
                              "\x94\x95\x96\x97\x98\x99\x9A\x9B\x9C\x9E\x9F";
    ASSERT_EQ(text.size(), 27u);
    EXPECT_EQ(utf16_to_windows1252(text), bytes);
}

TEST(Windows1252, AnythingElseBecomesOneQuestionMark) {
    // C1 controls (the unassigned 0x81 among them), other scripts, a surrogate pair (one
    // character), and lone surrogates.
    EXPECT_EQ(utf16_to_windows1252(u"\u0081\u009D\u0100\u2603"), "????");
    EXPECT_EQ(utf16_to_windows1252(u"a\U0001F4CDb"), "a?b");
    const std::u16string lone = {u'x', char16_t(0xD800), u'y', char16_t(0xDC00)};
    EXPECT_EQ(utf16_to_windows1252(lone), "x?y?");
}

TEST(CompareNoCase, FoldsAsciiAndLatin1Letters) {
    EXPECT_EQ(compare_no_case(u"Horizontal Distance", u"horizontal distance"), 0);
    EXPECT_EQ(compare_no_case(u"\u00C9TAGE", u"\u00E9tage"), 0);
    EXPECT_LT(compare_no_case(u"abc", u"ABD"), 0);
    EXPECT_GT(compare_no_case(u"abcd", u"ABC"), 0);
    EXPECT_LT(compare_no_case(u"ab", u"abc"), 0);
    EXPECT_NE(compare_no_case(u"\u00D7", u"\u00F7"), 0); // the multiplication sign is no letter
}

} // namespace
