// The template maths on plain entries: record sizes, chain derivation, surface heights, the
// slope catch and record blends.
#include "section/template_math.h"
#include "support/test_numbers.h"

#include <gtest/gtest.h>

#include <cmath>
#include <cstring>
#include <vector>

using namespace qv5::detail;
using qv5::test::is_geo_null;

TEST(TemplateMath, RecordSizesByType) {
    EXPECT_EQ(record_size(geotemp_Step), 16u);
    EXPECT_EQ(record_size(geotemp_GradeWidth), 16u);
    EXPECT_EQ(record_size(geotemp_DeltaHV), 16u);
    EXPECT_EQ(record_size(geotemp_Feature), 82u);
    EXPECT_EQ(record_size(geotemp_FixedPoint), 40u);
    EXPECT_EQ(record_size(geotemp_SideSlope), 24u);
    EXPECT_EQ(record_size(geotemp_None), 0u);
    EXPECT_EQ(record_size(static_cast<geotemp_ElementType>(-3)), 0u);
}

TEST(TemplateMath, UnknownTypeEntryHoldsNoRecordBytes) {
    const double junk[11] = {1, 2, 3, 4, 5, 6, 7, 8, 9, 10, 11};
    const ChainEntry e = make_entry(static_cast<geotemp_ElementType>(12), junk);
    for (unsigned char byte : e.record.bytes) {
        EXPECT_EQ(byte, 0);
    }
}

TEST(TemplateMath, DeriveChainWalksFromTheCentreline) {
    const geotemp_StepData step{0.5, -0.25};
    const geotemp_GradeWidthData gw{0.0, 2.0};
    std::vector<ChainEntry> entries{make_entry(geotemp_Step, &step),
                                    make_entry(geotemp_GradeWidth, &gw)};
    const ChainEnd end = derive_chain(entries.data(), entries.size());
    EXPECT_EQ(end.h, 2.5);
    EXPECT_EQ(end.v, -0.25);
    EXPECT_EQ(entries[1].start_h, 0.5);
    EXPECT_EQ(entries[1].slope, 0.0);
    EXPECT_TRUE(is_geo_null(entries[0].slope));
    const ChainEnd none = derive_chain(entries.data(), 0);
    EXPECT_EQ(none.h, 0.0);
    EXPECT_EQ(none.v, 0.0);
}

TEST(TemplateMath, SurfaceDeltasFromStartPlusRunTimesSlope) {
    const geotemp_DeltaHVData d{4.0, 1.0};
    std::vector<ChainEntry> entries{make_entry(geotemp_DeltaHV, &d)};
    derive_chain(entries.data(), entries.size());
    const SurfaceDeltas s = surface_deltas(entries.data(), entries.size(), 2.0, 1.0);
    EXPECT_EQ(s.delta_v, 1.0 - (0.0 + 2.0 * std::tan(std::atan(0.25))));
    EXPECT_EQ(s.angle, std::atan(0.25));
}

TEST(TemplateMath, SlopeCatchInFillFromTheShoulder) {
    const geotemp_SideSlopeData slope{0.5, std::atan(0.5), 3.0};
    const SlopeCatch c = slope_catch(slope, ChainEnd{10.0, 1.0}, 14.0, 0.0, false);
    EXPECT_EQ(c.in_ditch, 0);
    EXPECT_NEAR(c.delta_v, 1.0, 1e-15); // the fill line is at -1 four metres out
    EXPECT_NEAR(c.catch_offset, 12.0, 1e-14);
    EXPECT_EQ(c.point_angle, std::atan(-1.0 / 4.0));
    EXPECT_EQ(c.slope_angle, std::atan(0.5));
}

TEST(TemplateMath, BlendEndsAreExact) {
    EXPECT_EQ(blend(0.1, 0.7, 1.0), 0.7);
    EXPECT_EQ(qv5::test::bits_of(blend(-0.0, 5.0, 0.0)), qv5::test::bits_of(-0.0));
    EXPECT_EQ(blend(INFINITY, 1.0, 0.0), INFINITY);
    EXPECT_EQ(blend(1.0, 3.0, 0.25), 1.5);
}

TEST(TemplateMath, BlendedStepRecord) {
    TemplateRecord a;
    TemplateRecord b;
    std::memset(&a, 0, sizeof a);
    std::memset(&b, 0, sizeof b);
    a.step = geotemp_StepData{1.0, 2.0};
    b.step = geotemp_StepData{3.0, -2.0};
    const TemplateRecord r = blend_record(geotemp_Step, a, b, 0.75);
    EXPECT_EQ(r.step.DeltaH, 2.5);
    EXPECT_EQ(r.step.DeltaV, -1.0);
}
