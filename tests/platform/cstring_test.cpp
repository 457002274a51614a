#include "qv5/hostfw.h"

#include <gtest/gtest.h>

#include <string>

namespace {

TEST(CString, DefaultIsEmptyAndTerminated) {
    CString s;
    EXPECT_EQ(s.GetLength(), 0);
    EXPECT_EQ(s.IsEmpty(), 1);
    ASSERT_NE(s.GetString(), nullptr);
    EXPECT_EQ(s.GetString()[0], 0);
}

TEST(CString, NullPointersGiveEmptyStrings) {
    EXPECT_EQ(CString(static_cast<const unsigned short*>(nullptr)).IsEmpty(), 1);
    EXPECT_EQ(CString(static_cast<const char16_t*>(nullptr)).IsEmpty(), 1);
    EXPECT_EQ(CString(static_cast<const char*>(nullptr)).IsEmpty(), 1);
    EXPECT_EQ(CString::FromUtf16(nullptr, 5).IsEmpty(), 1);
}

TEST(CString, Utf8InAndOutRoundTrips) {
    const CString s("Kerb \xC2\xB0 3");
    EXPECT_EQ(s.GetLength(), 8);
    EXPECT_EQ(s.GetString()[5], 0x00B0);
    EXPECT_EQ(s.ToUtf8(), "Kerb \xC2\xB0 3");
}

TEST(CString, Utf16UnitsAreCopied) {
    const unsigned short units[] = {'C', 'L', '1', 0};
    const CString s(units);
    EXPECT_EQ(s.GetLength(), 3);
    EXPECT_EQ(s, CString(u"CL1"));
    EXPECT_EQ(s.ToUtf8(), "CL1");
}

TEST(CString, FromUtf16StopsAtZeroOrLength) {
    const unsigned short units[] = {'A', 'B', 0, 'C'};
    EXPECT_EQ(CString::FromUtf16(units, 4), CString("AB"));
    EXPECT_EQ(CString::FromUtf16(units, 1), CString("A"));
}

TEST(CString, FromUtf8StopsAtEmbeddedZero) {
    EXPECT_EQ(CString::FromUtf8(std::string_view("ab\0cd", 5)), CString("ab"));
}

TEST(CString, MalformedUtf8IsReplacedNotRejected) {
    const CString s("a\xFF"
                    "b");
    EXPECT_EQ(s.GetLength(), 3);
    EXPECT_EQ(s.GetString()[1], 0xFFFD);
}

TEST(CString, LoneSurrogateComesOutAsReplacement) {
    const unsigned short units[] = {0xD800, 'x', 0};
    EXPECT_EQ(CString(units).ToUtf8(), "\xEF\xBF\xBDx");
}

TEST(CString, CompareNoCaseFoldsAsciiAndLatin1) {
    EXPECT_EQ(CString("Road A").CompareNoCase(CString("rOAD a")), 0);
    EXPECT_EQ(CString("\xC3\x89TAPE").CompareNoCase(CString("\xC3\xA9tape")), 0); // É / é
    EXPECT_LT(CString("abc").CompareNoCase(CString("ABD")), 0);
    EXPECT_GT(CString("abcd").CompareNoCase(CString("ABC")), 0);
    // U+00D7 MULTIPLICATION SIGN and U+00F7 DIVISION SIGN are not a letter pair.
    EXPECT_NE(CString("\xC3\x97").CompareNoCase(CString("\xC3\xB7")), 0);
}

TEST(CString, EqualityIsCaseSensitive) {
    EXPECT_TRUE(CString("abc") == CString("abc"));
    EXPECT_TRUE(CString("abc") != CString("ABC"));
    EXPECT_EQ(CString("abc").Compare(CString("abd")), -1);
}

TEST(CString, EmptyClearsText) {
    CString s("something");
    s.Empty();
    EXPECT_EQ(s.IsEmpty(), 1);
    EXPECT_EQ(s.GetString()[0], 0);
}

TEST(CString, AppendingToItselfDoublesText) {
    CString s("ab");
    s += s;
    EXPECT_EQ(s, CString("abab"));
}

TEST(CString, MovedFromStringIsEmptyAndUsable) {
    CString a("moved");
    CString b(std::move(a));
    EXPECT_EQ(b, CString("moved"));
    EXPECT_EQ(a.IsEmpty(), 1); // NOLINT(bugprone-use-after-move): documented state
    a = CString("again");
    EXPECT_EQ(a.ToUtf8(), "again");
}

TEST(SystemTime, HasEightUnsignedShortFields) {
    static_assert(sizeof(_SYSTEMTIME) == 8 * sizeof(unsigned short));
    const SYSTEMTIME t{2026, 11, 6, 21, 13, 5, 9, 250};
    EXPECT_EQ(t.wDayOfWeek, 6);
    EXPECT_EQ(t.wMilliseconds, 250);
}

} // namespace
