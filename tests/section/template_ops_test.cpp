// The element list of a template: add, set, get, delete, proposals, comparison, features,
// reset and copies.
#include "qv5/geotemplate.h"
#include "section/template_builders.h"
#include "support/test_numbers.h"

#include <gtest/gtest.h>

#include <cmath>
#include <cstddef>
#include <cstring>

using namespace qv5::test;

namespace {

CGeoTemplate two_lane() {
    CGeoTemplate t;
    t.SetName(CString("Two lane"));
    add_grade_width(t, -0.02, 3.5);
    add_feature(t, "Edge of lane", 1.5, -2.5);
    add_step(t, 0.0, 0.15);
    add_delta_hv(t, 1.8, 0.036);
    add_fixed_point(t, 3.5, 0.08, 0.25);
    add_side_slope(t, 0.4, 0.3, 1.2);
    return t;
}

} // namespace

TEST(TemplateElements, AddElementCopiesTheRecord) {
    CGeoTemplate t;
    geotemp_GradeWidthData r{0.01, 2.0};
    ASSERT_EQ(t.AddElement(geotemp_GradeWidth, &r), 1);
    r.Width = 99.0; // the template keeps its own copy
    geotemp_GradeWidthData back{0.0, 0.0};
    double sh, sv, dh, dv, a;
    ASSERT_EQ(t.GetNthElement(0, geotemp_GradeWidth, sh, sv, dh, dv, a, &back), 1);
    EXPECT_EQ(back.Width, 2.0);
    EXPECT_EQ(back.Angle, 0.01);
    EXPECT_EQ(t.HOffsetShoulder(), 2.0);
}

TEST(TemplateElements, AddElementOfKnownTypeWithoutRecordStoresZeros) {
    CGeoTemplate t;
    EXPECT_EQ(t.AddElement(geotemp_DeltaHV, nullptr), 1);
    geotemp_DeltaHVData back{5.0, 5.0};
    double sh, sv, dh, dv, a;
    ASSERT_EQ(t.GetNthElement(0, geotemp_DeltaHV, sh, sv, dh, dv, a, &back), 1);
    EXPECT_EQ(back.DeltaH, 0.0);
    EXPECT_EQ(back.DeltaV, 0.0);
}

TEST(TemplateElements, FeatureRecordKeepsItsUnalignedValues) {
    CGeoTemplate t;
    add_feature(t, "Lip", 1.25, -7.5);
    unsigned char raw[82];
    std::memset(raw, 0xAB, sizeof raw);
    double sh, sv, dh, dv, a;
    ASSERT_EQ(t.GetNthElement(0, geotemp_Feature, sh, sv, dh, dv, a, raw), 1);
    double value_a = 0.0;
    double value_b = 0.0;
    std::memcpy(&value_a, raw + 66, 8);
    std::memcpy(&value_b, raw + 74, 8);
    EXPECT_EQ(value_a, 1.25);
    EXPECT_EQ(value_b, -7.5);
    EXPECT_EQ(raw[0], 'L');
    EXPECT_EQ(raw[1], 0);
    EXPECT_EQ(raw[6], 0); // the terminator after three characters
}

TEST(TemplateElements, RecordSizesAreFixed) {
    EXPECT_EQ(sizeof(geotemp_StepData), 16u);
    EXPECT_EQ(sizeof(geotemp_GradeWidthData), 16u);
    EXPECT_EQ(sizeof(geotemp_DeltaHVData), 16u);
    EXPECT_EQ(sizeof(geotemp_FeatureData), 82u);
    EXPECT_EQ(offsetof(geotemp_FeatureData, ValueA), 66u);
    EXPECT_EQ(offsetof(geotemp_FeatureData, ValueB), 74u);
    EXPECT_EQ(sizeof(geotemp_FixedPointData), 40u);
    EXPECT_EQ(offsetof(geotemp_FixedPointData, Reserved), 24u);
    EXPECT_EQ(sizeof(geotemp_SideSlopeData), 24u);
    EXPECT_EQ(static_cast<int>(geotemp_None), 6);
}

TEST(TemplateElements, FixedPointReservedBytesAreCopied) {
    CGeoTemplate t;
    geotemp_FixedPointData r;
    std::memset(&r, 0, sizeof r);
    r.H = 1.0;
    for (int i = 0; i < 16; ++i) {
        r.Reserved[i] = static_cast<unsigned char>(i + 1);
    }
    t.AddElement(geotemp_FixedPoint, &r);
    geotemp_FixedPointData back;
    std::memset(&back, 0, sizeof back);
    double sh, sv, dh, dv, a;
    ASSERT_EQ(t.GetNthElement(0, geotemp_FixedPoint, sh, sv, dh, dv, a, &back), 1);
    EXPECT_EQ(std::memcmp(&back, &r, sizeof r), 0);
}

TEST(TemplateElements, NthElementTypeBeyondTheCountIsNone) {
    CGeoTemplate t = two_lane();
    EXPECT_EQ(t.NthElementType(0), geotemp_GradeWidth);
    EXPECT_EQ(t.NthElementType(5), geotemp_SideSlope);
    EXPECT_EQ(t.NthElementType(6), geotemp_None);
    EXPECT_EQ(t.NthElementType(-1), geotemp_None);
    EXPECT_EQ(t.NthElementType(1 << 30), geotemp_None);
}

TEST(TemplateElements, GetNthElementWithWrongTypeWritesNothing) {
    CGeoTemplate t = two_lane();
    double sh = 11.0, sv = 12.0, dh = 13.0, dv = 14.0, a = 15.0;
    geotemp_StepData rec{21.0, 22.0};
    EXPECT_EQ(t.GetNthElement(0, geotemp_Step, sh, sv, dh, dv, a, &rec), 0);
    EXPECT_EQ(sh, 11.0);
    EXPECT_EQ(sv, 12.0);
    EXPECT_EQ(dh, 13.0);
    EXPECT_EQ(dv, 14.0);
    EXPECT_EQ(a, 15.0);
    EXPECT_EQ(rec.DeltaH, 21.0);
    EXPECT_EQ(rec.DeltaV, 22.0);
}

TEST(TemplateElements, GetNthElementOutOfRangeWritesNothing) {
    CGeoTemplate t = two_lane();
    double sh = 1.0, sv = 2.0, dh = 3.0, dv = 4.0, a = 5.0;
    EXPECT_EQ(t.GetNthElement(6, geotemp_SideSlope, sh, sv, dh, dv, a), 0);
    EXPECT_EQ(t.GetNthElement(-1, geotemp_GradeWidth, sh, sv, dh, dv, a), 0);
    EXPECT_EQ(sh + sv + dh + dv + a, 15.0);
}

TEST(TemplateElements, SetNthElementChangesTypeAndRederivesTheChain) {
    CGeoTemplate t;
    add_grade_width(t, 0.0, 3.0);
    add_grade_width(t, 0.0, 1.0);
    geotemp_StepData s{0.5, -0.25};
    ASSERT_EQ(t.SetNthElement(0, geotemp_Step, &s), 1);
    EXPECT_EQ(t.NthElementType(0), geotemp_Step);
    EXPECT_EQ(view_of(t, 1).start_h, 0.5);
    EXPECT_EQ(view_of(t, 1).start_v, -0.25);
    EXPECT_EQ(t.HOffsetShoulder(), 1.5);
    EXPECT_EQ(t.VOffsetShoulder(), -0.25);
}

TEST(TemplateElements, SetNthElementBeyondTheCountFails) {
    CGeoTemplate t;
    add_grade_width(t, 0.0, 3.0);
    geotemp_StepData s{0.5, -0.25};
    EXPECT_EQ(t.SetNthElement(1, geotemp_Step, &s), 0);
    EXPECT_EQ(t.SetNthElement(-3, geotemp_Step, &s), 0);
    EXPECT_EQ(t.NumberElements(), 1);
    EXPECT_EQ(t.HOffsetShoulder(), 3.0);
}

TEST(TemplateElements, DeleteDoesNotRederiveTheChain) {
    CGeoTemplate t;
    add_grade_width(t, 0.0, 3.0);
    add_grade_width(t, 0.0, 2.0);
    ASSERT_EQ(t.DeleteNthElement(0), 1);
    EXPECT_EQ(t.NumberElements(), 1);
    EXPECT_EQ(view_of(t, 0).start_h, 3.0); // the old position stays
    EXPECT_EQ(t.HOffsetShoulder(), 5.0);
    add_feature(t, "X"); // the next add derives it again
    EXPECT_EQ(view_of(t, 0).start_h, 0.0);
    EXPECT_EQ(t.HOffsetShoulder(), 2.0);
}

TEST(TemplateElements, DeleteBeyondTheCountFails) {
    CGeoTemplate t;
    add_grade_width(t, 0.0, 3.0);
    EXPECT_EQ(t.DeleteNthElement(1), 0);
    EXPECT_EQ(t.DeleteNthElement(-1), 0);
    EXPECT_EQ(t.NumberElements(), 1);
}

TEST(TemplateElements, ResetEmptiesButKeepsTheName) {
    CGeoTemplate t = two_lane();
    t.Reset();
    EXPECT_EQ(t.NumberElements(), 0);
    EXPECT_EQ(t.HOffsetShoulder(), 0.0);
    EXPECT_EQ(t.VOffsetShoulder(), 0.0);
    EXPECT_EQ(t.Name().ToUtf8(), "Two lane");
}

struct NextLikelyCase {
    const char* label;
    int last; // -1: none
    geotemp_ElementType expected_type;
    double expected_a; // GEO_NULL for none
};

class TemplateNextLikely : public ::testing::TestWithParam<NextLikelyCase> {};

TEST_P(TemplateNextLikely, ProposesByTheLastElement) {
    const NextLikelyCase& c = GetParam();
    CGeoTemplate t;
    add_grade_width(t, 0.0, 2.0); // chain at h = 2 before the element under test
    switch (c.last) {
    case geotemp_Step:
        add_step(t, 0.25, 0.15);
        break;
    case geotemp_GradeWidth:
        add_grade_width(t, 0.03, 1.5);
        break;
    case geotemp_DeltaHV:
        add_delta_hv(t, 0.75, -0.1);
        break;
    case geotemp_Feature:
        add_feature(t, "F");
        break;
    case geotemp_FixedPoint:
        add_fixed_point(t, 7.0, 0.5, 0.0);
        break;
    case geotemp_SideSlope:
        add_side_slope(t, 0.5, 0.5, 0.0);
        break;
    default:
        t.Reset();
        break;
    }
    geotemp_ElementType type = geotemp_Step;
    double a = 1.0, b = 1.0, cc = 1.0, d = 1.0;
    t.NextLikelyElement(type, a, b, cc, d);
    EXPECT_EQ(type, c.expected_type);
    EXPECT_EQ(bits_of(a), bits_of(c.expected_a));
    EXPECT_TRUE(is_geo_null(b));
    EXPECT_TRUE(is_geo_null(cc));
    EXPECT_TRUE(is_geo_null(d));
}

INSTANTIATE_TEST_SUITE_P(
    Cases, TemplateNextLikely,
    ::testing::Values(NextLikelyCase{"Empty", -1, geotemp_GradeWidth, 0.0},
                      NextLikelyCase{"Step", geotemp_Step, geotemp_GradeWidth, 2.25},
                      NextLikelyCase{"GradeWidth", geotemp_GradeWidth, geotemp_GradeWidth, 3.5},
                      NextLikelyCase{"DeltaHV", geotemp_DeltaHV, geotemp_DeltaHV, 2.75},
                      NextLikelyCase{"Feature", geotemp_Feature, geotemp_GradeWidth, 2.0},
                      NextLikelyCase{"FixedPoint", geotemp_FixedPoint, geotemp_GradeWidth, 7.0},
                      NextLikelyCase{"SideSlope", geotemp_SideSlope, geotemp_None, GEO_NULL}),
    [](const ::testing::TestParamInfo<NextLikelyCase>& p) { return p.param.label; });

TEST(TemplateSimilar, FeatureNamesDifferingInCaseAreSimilar) {
    CGeoTemplate a;
    CGeoTemplate b;
    add_grade_width(a, 0.01, 3.0);
    add_feature(a, "Edge Of Lane");
    add_grade_width(b, -0.5, 9.0); // numbers are not compared
    add_feature(b, "edge of LANE");
    EXPECT_EQ(a.Similar(&b), 1);
    EXPECT_EQ(b.Similar(&a), 1);
}

TEST(TemplateSimilar, DifferentFeatureNamesAreNotSimilar) {
    CGeoTemplate a;
    CGeoTemplate b;
    add_feature(a, "Lip");
    add_feature(b, "Lid");
    EXPECT_EQ(a.Similar(&b), 0);
}

TEST(TemplateSimilar, ATypeDifferingAtAnyIndexIsNotSimilar) {
    for (int at = 0; at < 3; ++at) {
        CGeoTemplate a;
        CGeoTemplate b;
        for (int i = 0; i < 3; ++i) {
            add_grade_width(a, 0.0, 1.0);
            if (i == at) {
                add_delta_hv(b, 1.0, 0.0);
            } else {
                add_grade_width(b, 0.0, 1.0);
            }
        }
        EXPECT_EQ(a.Similar(&b), 0) << "index " << at;
    }
}

TEST(TemplateSimilar, DifferentCountsAreNotSimilarAndEmptyOnesAre) {
    CGeoTemplate a;
    CGeoTemplate b;
    EXPECT_EQ(a.Similar(&b), 1);
    add_grade_width(a, 0.0, 1.0);
    EXPECT_EQ(a.Similar(&b), 0);
    EXPECT_EQ(a.Similar(nullptr), 0);
}

TEST(TemplateFeatures, GetFeatureAtIndexGivesOnlyFeatureNames) {
    CGeoTemplate t = two_lane();
    CString name("untouched");
    EXPECT_EQ(t.GetFeatureAtIndex(1, name), 1);
    EXPECT_EQ(name.ToUtf8(), "Edge of lane");
    name = CString("untouched");
    EXPECT_EQ(t.GetFeatureAtIndex(0, name), 0);
    EXPECT_EQ(t.GetFeatureAtIndex(4, name), 0); // a fixed point has no name
    EXPECT_EQ(t.GetFeatureAtIndex(6, name), 0);
    EXPECT_EQ(t.GetFeatureAtIndex(-2, name), 0);
    EXPECT_EQ(name.ToUtf8(), "untouched");
}

TEST(TemplateFeatures, NameFillingAllUnitsReadsAsItsFirst32) {
    CGeoTemplate t;
    geotemp_FeatureData r;
    for (unsigned short& u : r.Name) {
        u = 'A';
    }
    r.ValueA = r.ValueB = 0.0;
    t.AddElement(geotemp_Feature, &r);
    CString name;
    ASSERT_EQ(t.GetFeatureAtIndex(0, name), 1);
    EXPECT_EQ(name.GetLength(), 32);
}

TEST(TemplateFeatures, OffsetsOfMinusOneAreTheCentreline) {
    CGeoTemplate t = two_lane();
    double h = 5.0, v = 5.0;
    t.FeatureOffsets(-1, h, v);
    EXPECT_EQ(h, 0.0);
    EXPECT_EQ(v, 0.0);
}

TEST(TemplateFeatures, OffsetsOfASurfaceElementAreUndefined) {
    CGeoTemplate t = two_lane();
    double h = 5.0, v = 5.0;
    t.FeatureOffsets(0, h, v);
    EXPECT_TRUE(is_geo_null(h));
    EXPECT_TRUE(is_geo_null(v));
    h = v = 5.0;
    t.FeatureOffsets(17, h, v);
    EXPECT_TRUE(is_geo_null(h));
    EXPECT_TRUE(is_geo_null(v));
    h = v = 5.0;
    t.FeatureOffsets(-2, h, v);
    EXPECT_TRUE(is_geo_null(h));
}

TEST(TemplateFeatures, OffsetsOfFeatureAndFixedPointByIndex) {
    CGeoTemplate t = two_lane();
    double h = 0.0, v = 0.0;
    t.FeatureOffsets(1, h, v);
    EXPECT_EQ(h, 3.5);
    EXPECT_EQ(v, 3.5 * std::tan(-0.02));
    t.FeatureOffsets(4, h, v);
    EXPECT_EQ(h, 3.5);
    EXPECT_EQ(v, 0.08);
}

TEST(TemplateFeatures, OffsetsByNameIgnoreCaseAndSkipFixedPoints) {
    CGeoTemplate t = two_lane();
    add_feature(t, "EDGE OF LANE"); // a later namesake is not reached
    double h = 0.0, v = 0.0;
    t.FeatureOffsets(CString("edge of lane"), h, v);
    EXPECT_EQ(h, 3.5);
    h = v = 0.0;
    t.FeatureOffsets(CString("Nowhere"), h, v);
    EXPECT_TRUE(is_geo_null(h));
    EXPECT_TRUE(is_geo_null(v));
}

TEST(TemplateCopies, AssignmentRederivesTheChainAndCopiesTheName) {
    CGeoTemplate source;
    source.SetName(CString("Source"));
    add_grade_width(source, 0.0, 3.0);
    add_grade_width(source, 0.0, 2.0);
    source.DeleteNthElement(0); // the source's chain is stale
    CGeoTemplate copy;
    copy.SetName(CString("Old"));
    add_step(copy, 1.0, 1.0);
    copy = source;
    EXPECT_EQ(copy.Name().ToUtf8(), "Source");
    ASSERT_EQ(copy.NumberElements(), 1);
    EXPECT_EQ(view_of(copy, 0).start_h, 0.0);
    EXPECT_EQ(copy.HOffsetShoulder(), 2.0);
    EXPECT_EQ(view_of(source, 0).start_h, 3.0);
}

TEST(TemplateCopies, CopyConstructionEqualsAssignmentAndIsIndependent) {
    CGeoTemplate source = two_lane();
    CGeoTemplate copy(source);
    EXPECT_EQ(copy.Similar(&source), 1);
    EXPECT_EQ(copy.HOffsetShoulder(), source.HOffsetShoulder());
    EXPECT_EQ(copy.VOffsetShoulder(), source.VOffsetShoulder());
    source.Reset();
    EXPECT_EQ(copy.NumberElements(), 6);
}

TEST(TemplateCopies, SelfAssignmentKeepsEverything) {
    CGeoTemplate t = two_lane();
    CGeoTemplate& same = t;
    t = same;
    EXPECT_EQ(t.NumberElements(), 6);
    EXPECT_EQ(t.Name().ToUtf8(), "Two lane");
}
