// Latitudes and longitudes typed as surveyors write them, read as GeographicLib's DMS::Decode
// reads the same text; and the pieces of a row stream: lines from blocks, fields, numbers.
#include "dms.h"
#include "text_stream.h"

#include <GeographicLib/DMS.hpp>
#include <gtest/gtest.h>

#include <cmath>
#include <cstdio>
#include <string>

namespace {

using namespace qv5::cli;

constexpr double kRadiansPerDegree = 0.017453292519943295;

struct AngleCase {
    const char* text;
    bool latitude;
};

class AngleAgainstGeographicLib : public ::testing::TestWithParam<AngleCase> {};

TEST_P(AngleAgainstGeographicLib, ReadsTheSameAngle) {
    const AngleCase c = GetParam();
    double radians = 0.0;
    std::string why;
    ASSERT_TRUE(parse_angle(c.text, c.latitude, radians, why)) << c.text << ": " << why;
    GeographicLib::DMS::flag hemisphere = GeographicLib::DMS::NONE;
    const double degrees = GeographicLib::DMS::Decode(c.text, hemisphere);
    if (hemisphere != GeographicLib::DMS::NONE) {
        EXPECT_EQ(hemisphere == GeographicLib::DMS::LATITUDE, c.latitude) << c.text;
    }
    // Both sum degrees, minutes and seconds in a different order: a few units in the last place.
    EXPECT_NEAR(radians, degrees * kRadiansPerDegree, 4e-16 * std::fabs(degrees) + 1e-17) << c.text;
}

INSTANTIATE_TEST_SUITE_P(
    SurveyorsNotations, AngleAgainstGeographicLib,
    ::testing::Values(AngleCase{"52d06'30.5\"N", true}, AngleCase{"52d06'30.5\"S", true},
                      AngleCase{"N52d06'30.5\"", true}, AngleCase{"52:06:30.5", true},
                      AngleCase{"-52:06:30.5", true}, AngleCase{"52:06.508", true},
                      AngleCase{"52d06.508'N", true}, AngleCase{"5d12'36\"E", false},
                      AngleCase{"W5d12'36\"", false}, AngleCase{"179:59:59.999W", false},
                      AngleCase{"0d30'W", false}, AngleCase{"52.1083", true},
                      AngleCase{"-4.25", false}, AngleCase{"52\u00b006'30.5\"N", true},
                      AngleCase{"52\u00b006\u203230.5\u2033N", true},
                      AngleCase{"90:00:00S", true}));

TEST(AngleText, TwoNumbersWithOnlyABlankBetweenThemAreRefused) {
    double radians = 0.0;
    std::string why;
    EXPECT_FALSE(parse_angle("52 06.5", true, radians, why));
    EXPECT_FALSE(parse_angle("52:60.0", true, radians, why));
    EXPECT_FALSE(parse_angle("90:00.1", true, radians, why));
    EXPECT_FALSE(parse_angle("N52:06:30S", true, radians, why));
}

TEST(AngleText, TypesetMinusSignIsAMinus) {
    double radians = 0.0;
    std::string why;
    ASSERT_TRUE(parse_angle("\u22124.25", false, radians, why)) << why;
    EXPECT_EQ(radians, -4.25 * kRadiansPerDegree);
}

TEST(AngleText, ATypesetMinusAfterASignIsASignInsideTheAngle) {
    // Two signs cancel nowhere: "-−7000" is not 7000 degrees, nor any angle.
    double radians = 0.0;
    std::string why;
    for (const char* text :
         {"-\u22127000", "+\u221252.5", "-\u221252 06 30", "\u2212-52.5", "-\u221289.9"}) {
        radians = 0.0;
        EXPECT_FALSE(parse_angle(text, true, radians, why)) << text << " read as " << radians;
        EXPECT_FALSE(parse_angle(text, false, radians, why)) << text << " read as " << radians;
    }
}

/// Lines of a text written to a temporary file and read back through LineSource.
std::vector<std::string> lines_through_source(const std::string& text, bool& cut) {
    std::FILE* file = std::tmpfile();
    std::fwrite(text.data(), 1, text.size(), file);
    std::rewind(file);
    LineSource source(file);
    std::vector<std::string> lines;
    std::string_view line;
    cut = false;
    while (source.next(line)) {
        lines.emplace_back(line);
        cut = cut || source.cut();
    }
    std::fclose(file);
    return lines;
}

TEST(LineSource, SkipsAByteOrderMarkAndCarriageReturnsAndKeepsALastLineWithoutEnd) {
    bool cut = false;
    const auto lines = lines_through_source("\xEF\xBB\xBF"
                                            "a,b\r\n\r\nc",
                                            cut);
    ASSERT_EQ(lines.size(), 3u);
    EXPECT_EQ(lines[0], "a,b");
    EXPECT_EQ(lines[1], "");
    EXPECT_EQ(lines[2], "c");
    EXPECT_FALSE(cut);
}

TEST(LineSource, LinesAcrossBlockBoundariesStayWhole) {
    std::string text;
    for (int i = 0; i < 200000; ++i) {
        text += "row" + std::to_string(i) + ",52.1,5.2\n";
    }
    bool cut = false;
    const auto lines = lines_through_source(text, cut);
    ASSERT_EQ(lines.size(), 200000u);
    EXPECT_EQ(lines[123456], "row123456,52.1,5.2");
    EXPECT_EQ(lines.back(), "row199999,52.1,5.2");
}

TEST(LineSource, ALineLongerThanTheLargestBufferIsCutOnceAndTheNextLineFollows) {
    const std::string text = std::string(LineSource::kMaxLine + 10, 'x') + "\nnext\n";
    bool cut = false;
    const auto lines = lines_through_source(text, cut);
    ASSERT_EQ(lines.size(), 2u);
    EXPECT_TRUE(cut);
    EXPECT_EQ(lines[1], "next");
}

TEST(FieldSplitter, QuotedFieldsHoldDelimitersAndDoubledQuotes) {
    FieldSplitter splitter;
    std::vector<std::string_view> fields;
    ASSERT_TRUE(splitter.split("\"P \"\"1\"\", west\" ,52.1,5.2", {Delimiter::comma, ','}, fields));
    ASSERT_EQ(fields.size(), 3u);
    EXPECT_EQ(fields[0], "P \"1\", west");
    EXPECT_EQ(fields[2], "5.2");
    EXPECT_FALSE(splitter.split("\"open,52.1", {Delimiter::comma, ','}, fields));
    EXPECT_FALSE(splitter.split("\"P\"x,52.1", {Delimiter::comma, ','}, fields));
    ASSERT_TRUE(splitter.split("  P1 \t 52.1   5.2 ", {Delimiter::blanks, ' '}, fields));
    EXPECT_EQ(fields.size(), 3u);
    ASSERT_TRUE(splitter.split("a,,c", {Delimiter::comma, ','}, fields));
    EXPECT_EQ(fields.size(), 3u);
    EXPECT_EQ(fields[1], "");
}

TEST(FieldSplitter, TheFirstRowSuggestsTheDelimiter) {
    EXPECT_EQ(detect_delimiter("a\t52,1\t5").kind, Delimiter::tab);
    EXPECT_EQ(detect_delimiter("a,52.1,5").kind, Delimiter::comma);
    EXPECT_EQ(detect_delimiter("a 52.1 5").kind, Delimiter::blanks);
}

TEST(AppendNumber, ShortestTextAndNoNegativeZero) {
    fmt::memory_buffer out;
    append_number(out, -0.0);
    out.push_back(' ');
    append_number(out, -0.0004, 3);
    out.push_back(' ');
    append_number(out, -0.0006, 3);
    out.push_back(' ');
    append_number(out, 0.1);
    EXPECT_EQ(fmt::to_string(out), "0 0.000 -0.001 0.1");
}

} // namespace
