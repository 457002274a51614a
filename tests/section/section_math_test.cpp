// The segment lookup under a section profile, on plain values.
#include "section/section_math.h"
#include "support/test_numbers.h"

#include <gtest/gtest.h>

#include <vector>

using namespace qv5::detail;
using qv5::test::is_geo_null;

namespace {

std::vector<SectionBreak> breaks() {
    return {make_break(2.0, 12.0, 1, nullptr, geosect_Surface),
            make_break(6.0, 10.0, 2, nullptr, geosect_NoSurface),
            make_break(8.0, 14.0, 3, nullptr, geosect_Surface)};
}

} // namespace

TEST(SectionSpan, StationAtABreakBelongsToTheSegmentEndingThere) {
    const auto b = breaks();
    const SectionSpan s = find_span(b.data(), b.size(), 10.0, 11.0, 2.0);
    ASSERT_TRUE(s.found);
    EXPECT_EQ(s.prev_station, 0.0);
    EXPECT_EQ(s.prev_elevation, 11.0);
    EXPECT_EQ(s.seg_station, 2.0);
    EXPECT_EQ(s.seg_elevation, 12.0);
    EXPECT_EQ(span_elevation(s, 2.0), 12.0);
    EXPECT_EQ(span_elevation(s, 1.0), 11.5);
}

TEST(SectionSpan, StationPastABreakTakesItAsThePreviousPoint) {
    const auto b = breaks();
    const SectionSpan s = find_span(b.data(), b.size(), 10.0, 11.0, 7.0);
    ASSERT_TRUE(s.found);
    EXPECT_EQ(s.prev_station, 6.0);
    EXPECT_EQ(s.prev_elevation, 10.0);
    EXPECT_EQ(span_elevation(s, 7.0), 12.0);
    EXPECT_EQ(span_grade(s, 6.00001), qv5::test::kHalfPi);
}

TEST(SectionSpan, NotFoundOutsideOrBeyondTheLastBreak) {
    const auto b = breaks();
    EXPECT_FALSE(find_span(b.data(), b.size(), 10.0, 11.0, 9.0).found);
    EXPECT_FALSE(find_span(b.data(), b.size(), 10.0, 11.0, -1e-9).found);
    EXPECT_FALSE(find_span(b.data(), 0, 10.0, 11.0, 1.0).found);
    EXPECT_TRUE(is_geo_null(span_elevation(find_span(b.data(), b.size(), 10.0, 11.0, 9.0), 9.0)));
}

TEST(SectionSpan, NoSurfaceSegmentHasNoElevationOrGrade) {
    const auto b = breaks();
    const SectionSpan s = find_span(b.data(), b.size(), 10.0, 11.0, 4.0);
    ASSERT_TRUE(s.found);
    EXPECT_TRUE(is_geo_null(span_elevation(s, 4.0)));
    EXPECT_TRUE(is_geo_null(span_grade(s, 4.0)));
}

TEST(SectionSpan, BreakNameIsTruncatedAndTerminated) {
    unsigned short long_name[40];
    for (unsigned short& u : long_name) {
        u = 'x';
    }
    const SectionBreak b = make_break(0.0, 0.0, 0, long_name, geosect_Surface);
    EXPECT_EQ(b.name[31], 'x');
    EXPECT_EQ(b.name[32], 0);
}
