// Section profiles: elevations and grades along a line across the road, break point access,
// and copies that share or copy their break points.
#include "qv5/geosection.h"
#include "support/test_numbers.h"

#include <gtest/gtest.h>

#include <cmath>
#include <memory>
#include <string>

using namespace qv5::test;

namespace {

std::u16string text(const unsigned short* units) {
    std::u16string s;
    for (; *units != 0; ++units) {
        s.push_back(static_cast<char16_t>(*units));
    }
    return s;
}

const unsigned short* name(const char16_t* s) {
    return reinterpret_cast<const unsigned short*>(s);
}

/// Due east from (1000, 2000, 50) for 100 m: a rise to 51 at 10, to 55 at 30, no surface to 50,
/// then down to 49 at 80.
CGeoSection sample() {
    geo_nee start{1000.0, 2000.0, 50.0};
    geo_nee end{1000.0, 2100.0, 60.0};
    CGeoSection s(start, end);
    s.AddSegment(10.0, 51.0, 7, name(u"Edge"), geosect_Surface);
    s.AddSegment(30.0, 55.0, 8, name(u"Curb"), geosect_Surface);
    s.AddSegment(50.0, 55.0, 9, name(u"Gap"), geosect_NoSurface);
    s.AddSegment(80.0, 49.0, 10, name(u"Toe"), geosect_Surface);
    return s;
}

} // namespace

TEST(SectionProfile, DefaultSectionHasNullEndsAndNoSegments) {
    CGeoSection s;
    EXPECT_TRUE(is_geo_null(s.Start().north));
    EXPECT_TRUE(is_geo_null(s.Start().elev));
    EXPECT_TRUE(is_geo_null(s.End().east));
    EXPECT_EQ(s.NumberOfSegments(), 0);
    EXPECT_TRUE(is_geo_null(s.Elevation(0.0)));
}

TEST(SectionProfile, SetComputesAzimuthAndLengthAndDropsSegments) {
    CGeoSection s = sample();
    EXPECT_NEAR(s.Azimuth(), kHalfPi, 1e-15);
    EXPECT_EQ(s.Length(), 100.0);
    EXPECT_EQ(s.NumberOfSegments(), 4);
    geo_nee a{0.0, 0.0, 0.0};
    geo_nee b{3.0, 4.0, 0.0};
    s.Set(a, b);
    EXPECT_EQ(s.NumberOfSegments(), 0);
    EXPECT_EQ(s.Length(), 5.0);
    EXPECT_NEAR(s.Azimuth(), std::atan2(4.0, 3.0), 1e-15);
}

TEST(SectionProfile, ElevationInterpolatesAlongTheSegmentEndingAtOrAfterTheStation) {
    CGeoSection s = sample();
    EXPECT_EQ(s.Elevation(0.0), 50.0);
    EXPECT_EQ(s.Elevation(5.0), 50.5);
    EXPECT_EQ(s.Elevation(10.0), 51.0); // a break point gives its own elevation
    EXPECT_EQ(s.Elevation(20.0), 53.0);
    EXPECT_EQ(s.Elevation(30.0), 55.0);
    EXPECT_EQ(s.Elevation(65.0), 52.0);
    EXPECT_EQ(s.Elevation(80.0), 49.0);
}

TEST(SectionProfile, ElevationJustOutsideTheSectionIsUndefined) {
    CGeoSection s = sample();
    EXPECT_TRUE(is_geo_null(s.Elevation(-0.001)));
    EXPECT_TRUE(is_geo_null(s.Elevation(100.001)));
    EXPECT_TRUE(is_geo_null(s.Grade(-0.001)));
    EXPECT_TRUE(is_geo_null(s.Grade(100.001)));
}

TEST(SectionProfile, ElevationBeyondTheLastBreakOrWithoutSurfaceIsUndefined) {
    CGeoSection s = sample();
    EXPECT_TRUE(is_geo_null(s.Elevation(90.0)));
    EXPECT_TRUE(is_geo_null(s.Elevation(40.0)));
    EXPECT_TRUE(is_geo_null(s.Elevation(50.0)));
    EXPECT_TRUE(is_geo_null(s.Grade(40.0)));
    EXPECT_TRUE(is_geo_null(s.Grade(90.0)));
    EXPECT_TRUE(is_geo_null(s.Elevation(std::nan(""))));
}

TEST(SectionProfile, NullStartWithNoSurfaceFirstInterpolatesFromTheFirstBreak) {
    geo_nee start{0.0, 0.0, GEO_NULL};
    geo_nee end{0.0, 20.0, GEO_NULL};
    CGeoSection s(start, end);
    s.AddSegment(5.0, 10.0, 0, name(u"A"), geosect_NoSurface);
    s.AddSegment(15.0, 12.0, 0, name(u"B"), geosect_Surface);
    EXPECT_TRUE(is_geo_null(s.Elevation(2.0)));
    EXPECT_EQ(s.Elevation(10.0), 11.0);
    EXPECT_TRUE(is_geo_null(s.Elevation(5.0))); // the first break ends a segment without surface
}

TEST(SectionProfile, GradeIsTheSegmentsAngle) {
    CGeoSection s = sample();
    EXPECT_EQ(s.Grade(5.0), 0.09966865249116204);
    EXPECT_EQ(s.Grade(10.0), 0.09966865249116204); // the segment ending at the break
    EXPECT_EQ(s.Grade(20.0), 0.19739555984988078);
    EXPECT_EQ(s.Grade(65.0), -0.19739555984988078);
}

TEST(SectionProfile, GradeAtTheStartPointIsVerticalBySignOfTheRise) {
    CGeoSection s = sample();
    EXPECT_EQ(s.Grade(0.0), kHalfPi);
    geo_nee start{0.0, 0.0, 5.0};
    geo_nee end{0.0, 20.0, 5.0};
    CGeoSection level(start, end);
    level.AddSegment(10.0, 5.0, 0, nullptr, geosect_Surface); // no rise counts as falling
    EXPECT_EQ(level.Grade(0.0), -kHalfPi);
    EXPECT_EQ(level.Grade(0.00009), -kHalfPi);
    EXPECT_EQ(level.Grade(0.0001), 0.0);
}

TEST(SectionProfile, GradeJustAfterABreakIsVerticalBySignOfTheFollowingRise) {
    CGeoSection s = sample();
    EXPECT_EQ(s.Grade(10.00005), kHalfPi);  // 51 -> 55 rises
    EXPECT_EQ(s.Grade(50.00005), -kHalfPi); // 55 -> 49 falls
    EXPECT_EQ(s.Grade(30.00005), GEO_NULL); // no surface after the curb
    EXPECT_NEAR(s.Grade(10.0002), 0.19739555984988078, 1e-15);
}

TEST(SectionProfile, NameOfFortyCharactersIsStoredAsItsFirst32) {
    geo_nee start{0.0, 0.0, 0.0};
    geo_nee end{0.0, 10.0, 0.0};
    CGeoSection s(start, end);
    const std::u16string forty = u"0123456789abcdefghijABCDEFGHIJklmnopqrst";
    ASSERT_EQ(forty.size(), 40u);
    EXPECT_EQ(s.AddSegment(1.0, 0.0, 0, name(forty.c_str()), geosect_Surface), 1);
    EXPECT_EQ(text(s.NthName(0)), forty.substr(0, 32));
    s.AddSegment(2.0, 0.0, 0, nullptr, geosect_Surface);
    EXPECT_EQ(text(s.NthName(1)), u"");
}

TEST(SectionProfile, BreakPointFieldsReadBack) {
    CGeoSection s = sample();
    EXPECT_EQ(s.NthStation(1), 30.0);
    EXPECT_EQ(s.NthElevation(1), 55.0);
    EXPECT_EQ(s.NthUserDWORD(1), 8ul);
    EXPECT_EQ(text(s.NthName(1)), u"Curb");
    EXPECT_EQ(s.NthSegmentType(2), geosect_NoSurface);
    EXPECT_EQ(s.NthSegmentType(3), geosect_Surface);
}

TEST(SectionProfile, UserValueKeepsItsLow32Bits) {
    geo_nee start{0.0, 0.0, 0.0};
    geo_nee end{0.0, 10.0, 0.0};
    CGeoSection s(start, end);
    s.AddSegment(1.0, 0.0, 0xFFFFFFFFul, nullptr, geosect_Surface);
    s.AddSegment(2.0, 0.0, static_cast<unsigned long>((1ull << 40) + 7ull), nullptr,
                 geosect_Surface);
    EXPECT_EQ(s.NthUserDWORD(0), 0xFFFFFFFFul);
    EXPECT_EQ(s.NthUserDWORD(1), 7ul);
}

TEST(SectionProfile, OutOfRangeBreakPointsReadAsNothing) {
    CGeoSection s = sample();
    for (int n : {-1, 4, 1000}) {
        EXPECT_TRUE(is_geo_null(s.NthStation(n)));
        EXPECT_TRUE(is_geo_null(s.NthElevation(n)));
        EXPECT_EQ(s.NthUserDWORD(n), 0ul);
        ASSERT_NE(s.NthName(n), nullptr);
        EXPECT_EQ(s.NthName(n)[0], 0);
        EXPECT_EQ(s.NthSegmentType(n), geosect_NoSurface);
    }
}

TEST(SectionProfile, SegmentPointFollowsTheLineWithTheBreakElevation) {
    CGeoSection s = sample();
    geo_nee p{0.0, 0.0, 0.0};
    ASSERT_EQ(s.GetNthSegmentPoint(1, p), 1);
    EXPECT_NEAR(p.north, 1000.0, 1e-12);
    EXPECT_NEAR(p.east, 2030.0, 1e-12);
    EXPECT_EQ(p.elev, 55.0);
}

TEST(SectionProfile, SegmentPointAtTheCountFailsAndLeavesThePoint) {
    CGeoSection s = sample();
    geo_nee p{1.0, 2.0, 3.0};
    EXPECT_EQ(s.GetNthSegmentPoint(4, p), 0);
    EXPECT_EQ(s.GetNthSegmentPoint(-1, p), 0);
    EXPECT_EQ(p.north, 1.0);
    EXPECT_EQ(p.east, 2.0);
    EXPECT_EQ(p.elev, 3.0);
}

TEST(SectionProfile, StationPointHasTheElevationThere) {
    CGeoSection s = sample();
    geo_nee p{0.0, 0.0, 0.0};
    s.StationPt(20.0, p);
    EXPECT_NEAR(p.north, 1000.0, 1e-12);
    EXPECT_NEAR(p.east, 2020.0, 1e-12);
    EXPECT_EQ(p.elev, 53.0);
    s.StationPt(40.0, p);
    EXPECT_NEAR(p.east, 2040.0, 1e-12);
    EXPECT_TRUE(is_geo_null(p.elev));
}

TEST(SectionCopies, CopyConstructedSectionSharesAndSurvivesItsSource) {
    auto source = std::make_unique<CGeoSection>(sample());
    const unsigned short* shared_name = source->NthName(0);
    CGeoSection copy(*source);
    EXPECT_EQ(copy.NthName(0), shared_name); // the very same break points
    source.reset();                          // the source goes first
    EXPECT_EQ(copy.NumberOfSegments(), 4);
    EXPECT_EQ(text(copy.NthName(0)), u"Edge");
    EXPECT_EQ(copy.Elevation(20.0), 53.0);
}

TEST(SectionCopies, SourceSurvivesItsSharingCopy) {
    CGeoSection source = sample();
    {
        auto copy = std::make_unique<CGeoSection>(source);
        EXPECT_EQ(copy->Elevation(65.0), 52.0);
    } // the copy goes first
    EXPECT_EQ(source.NumberOfSegments(), 4);
    EXPECT_EQ(text(source.NthName(3)), u"Toe");
    EXPECT_EQ(source.Elevation(65.0), 52.0);
}

TEST(SectionCopies, AddingToOneOfTwoSharingSectionsLeavesTheOther) {
    CGeoSection source = sample();
    CGeoSection copy(source);
    copy.AddSegment(90.0, 48.0, 0, nullptr, geosect_Surface);
    source.AddSegment(95.0, 47.0, 0, nullptr, geosect_Surface);
    EXPECT_EQ(copy.NumberOfSegments(), 5);
    EXPECT_EQ(source.NumberOfSegments(), 5);
    EXPECT_EQ(copy.NthStation(4), 90.0);
    EXPECT_EQ(source.NthStation(4), 95.0);
    geo_nee a{0.0, 0.0, 0.0};
    geo_nee b{0.0, 1.0, 0.0};
    CGeoSection again(source);
    again.Set(a, b);
    EXPECT_EQ(again.NumberOfSegments(), 0);
    EXPECT_EQ(source.NumberOfSegments(), 5);
}

TEST(SectionCopies, AssignmentMakesItsOwnCopy) {
    CGeoSection source = sample();
    CGeoSection copy;
    copy = source;
    EXPECT_NE(copy.NthName(0), source.NthName(0));
    EXPECT_EQ(copy.Length(), 100.0);
    EXPECT_EQ(copy.Elevation(20.0), 53.0);
    source.AddSegment(90.0, 48.0, 0, nullptr, geosect_Surface);
    EXPECT_EQ(copy.NumberOfSegments(), 4);
    CGeoSection& same = copy;
    copy = same;
    EXPECT_EQ(copy.NumberOfSegments(), 4);
}
