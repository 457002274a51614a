// The chain a template derives from its element records: start, end and slope of every
// element and the shoulder where the chain ends.
#include "qv5/geotemplate.h"
#include "section/template_builders.h"
#include "support/test_numbers.h"

#include <gtest/gtest.h>

#include <cmath>
#include <random>
#include <vector>

using namespace qv5::test;

namespace {

/// Lane at -2 %-ish, a 150 mm curb face, a verge, a feature, a curb fixed point, a side slope.
CGeoTemplate urban_half() {
    CGeoTemplate t;
    add_grade_width(t, -0.02, 3.5);
    add_step(t, 0.0, 0.15);
    add_delta_hv(t, 2.0, 0.04);
    add_feature(t, "Back of walk");
    add_fixed_point(t, 3.5, -0.07, 0.0);
    add_side_slope(t, 0.5, 0.3, 1.0);
    return t;
}

} // namespace

TEST(TemplateChain, EmptyTemplateHasShoulderAtCentreline) {
    CGeoTemplate t;
    EXPECT_EQ(t.NumberElements(), 0);
    EXPECT_EQ(t.HOffsetShoulder(), 0.0);
    EXPECT_EQ(t.VOffsetShoulder(), 0.0);
}

TEST(TemplateChain, GradeWidthRunsWidthOutAndWidthTimesTangentUp) {
    CGeoTemplate t = urban_half();
    ElementView e = view_of(t, 0);
    ASSERT_EQ(e.ok, 1);
    EXPECT_EQ(e.start_h, 0.0);
    EXPECT_EQ(e.start_v, 0.0);
    EXPECT_EQ(e.delta_h, 3.5);
    EXPECT_NEAR(e.delta_v, -0.07000933482690848, 1e-15);
    EXPECT_EQ(e.angle, -0.02);
}

TEST(TemplateChain, StepAdvancesWithoutAngle) {
    CGeoTemplate t = urban_half();
    ElementView e = view_of(t, 1);
    ASSERT_EQ(e.ok, 1);
    EXPECT_EQ(e.start_h, 3.5);
    EXPECT_NEAR(e.start_v, -0.07000933482690848, 1e-15);
    EXPECT_EQ(e.delta_h, 0.0);
    EXPECT_NEAR(e.delta_v, 0.15, 1e-15);
    EXPECT_TRUE(is_geo_null(e.angle));
}

TEST(TemplateChain, DeltaHVGetsAngleOfItsRiseOverRun) {
    CGeoTemplate t = urban_half();
    ElementView e = view_of(t, 2);
    ASSERT_EQ(e.ok, 1);
    EXPECT_EQ(e.start_h, 3.5);
    EXPECT_NEAR(e.start_v, 0.07999066517309152, 1e-15);
    EXPECT_NEAR(e.delta_h, 2.0, 1e-15);
    EXPECT_NEAR(e.delta_v, 0.04, 1e-15);
    EXPECT_NEAR(e.angle, 0.019997333973150535, 1e-15);
}

TEST(TemplateChain, FeatureSitsAtRunningPositionWithoutAdvancing) {
    CGeoTemplate t = urban_half();
    ElementView e = view_of(t, 3);
    ASSERT_EQ(e.ok, 1);
    EXPECT_EQ(e.start_h, 5.5);
    EXPECT_NEAR(e.start_v, 0.11999066517309151, 1e-15);
    EXPECT_EQ(e.delta_h, 0.0);
    EXPECT_EQ(e.delta_v, 0.0);
    EXPECT_TRUE(is_geo_null(e.angle));
}

TEST(TemplateChain, FixedPointStandsAtItsRecordedPosition) {
    CGeoTemplate t = urban_half();
    ElementView e = view_of(t, 4);
    ASSERT_EQ(e.ok, 1);
    EXPECT_EQ(e.start_h, 3.5);
    EXPECT_EQ(e.start_v, -0.07);
    EXPECT_EQ(e.delta_h, 0.0);
    EXPECT_EQ(e.delta_v, 0.0);
    EXPECT_EQ(e.angle, 0.0);
}

TEST(TemplateChain, ShoulderIsWhereTheChainEndsNotTheFixedPoint) {
    CGeoTemplate t = urban_half();
    EXPECT_EQ(t.HOffsetShoulder(), 5.5);
    EXPECT_NEAR(t.VOffsetShoulder(), 0.11999066517309151, 1e-15);
    ElementView slope = view_of(t, 5);
    EXPECT_EQ(slope.start_h, 5.5);
    EXPECT_TRUE(is_geo_null(slope.angle));
}

TEST(TemplateChain, NarrowDeltaHVIsVerticalWithUndefinedSlope) {
    CGeoTemplate t;
    add_delta_hv(t, 0.0004, -0.2);
    ElementView e = view_of(t, 0);
    EXPECT_EQ(e.angle, -kHalfPi);
    // The slope is unset: an offset at the face's end evaluates with the slope's tiny value.
    double dv = 0.0;
    double angle = 0.0;
    t.TemplateDeltas(0.0004, 1.0, dv, angle);
    EXPECT_EQ(dv, 1.0 - (0.0 + 0.0004 * GEO_NULL));
    EXPECT_EQ(angle, -kHalfPi);
}

TEST(TemplateChain, DeltaHVOfExactlyHalfMillimetreHasItsAtan) {
    CGeoTemplate t;
    add_delta_hv(t, 0.0005, -0.2);
    EXPECT_NEAR(view_of(t, 0).angle, -1.5682963320032104, 1e-15);
    EXPECT_EQ(view_of(t, 0).angle, std::atan(-400.0));
}

TEST(TemplateChain, NarrowRisingDeltaHVIsPlusHalfPiAndLevelOneMinusHalfPi) {
    CGeoTemplate t;
    add_delta_hv(t, -0.0004, 0.3);
    add_delta_hv(t, 0.0, 0.0);
    EXPECT_EQ(view_of(t, 0).angle, kHalfPi);
    EXPECT_EQ(view_of(t, 1).angle, -kHalfPi);
    EXPECT_NEAR(t.HOffsetShoulder(), -0.0004, 1e-18);
    EXPECT_EQ(t.VOffsetShoulder(), 0.3);
}

TEST(TemplateChain, FixedPointMidChainLeavesNextElementWhereThePreviousEnded) {
    CGeoTemplate t;
    add_grade_width(t, 0.0, 3.0);
    add_fixed_point(t, 9.0, 2.0, 0.1);
    add_grade_width(t, 0.0, 1.0);
    ElementView e = view_of(t, 2);
    EXPECT_EQ(e.start_h, 3.0);
    EXPECT_EQ(e.start_v, 0.0);
    EXPECT_EQ(t.HOffsetShoulder(), 4.0);
}

TEST(TemplateChain, SideSlopeInMidChainDoesNotMoveIt) {
    CGeoTemplate t;
    add_grade_width(t, 0.0, 3.0);
    add_side_slope(t, 0.5, 0.5, 1.0);
    add_delta_hv(t, 1.0, -1.0);
    EXPECT_EQ(view_of(t, 2).start_h, 3.0);
    EXPECT_EQ(t.HOffsetShoulder(), 4.0);
    EXPECT_EQ(t.VOffsetShoulder(), -1.0);
}

TEST(TemplateChain, UnknownTypeIsStoredAndSitsAtRunningPosition) {
    CGeoTemplate t;
    add_grade_width(t, 0.0, 2.0);
    const double junk[4] = {1.0, 2.0, 3.0, 4.0};
    EXPECT_EQ(t.AddElement(static_cast<geotemp_ElementType>(9), junk), 1);
    EXPECT_EQ(t.AddElement(geotemp_None, nullptr), 1);
    EXPECT_EQ(t.NumberElements(), 3);
    EXPECT_EQ(t.NthElementType(1), static_cast<geotemp_ElementType>(9));
    ElementView e = view_of(t, 1);
    EXPECT_EQ(e.ok, 1);
    EXPECT_EQ(e.start_h, 2.0);
    EXPECT_TRUE(is_geo_null(e.angle));
    EXPECT_EQ(t.HOffsetShoulder(), 2.0);
}

TEST(TemplateChain, NonFiniteRecordsGiveNonFiniteChainWithoutFailing) {
    CGeoTemplate t;
    add_grade_width(t, std::nan(""), 2.0);
    add_delta_hv(t, INFINITY, 1.0);
    EXPECT_EQ(t.NumberElements(), 2);
    EXPECT_TRUE(std::isnan(t.VOffsetShoulder()));
    EXPECT_TRUE(std::isinf(t.HOffsetShoulder()));
    double dv = 0.0;
    double angle = 0.0;
    t.TemplateDeltas(std::nan(""), 0.0, dv, angle);
    EXPECT_TRUE(is_geo_null(dv));
}

// The chain against a walk of the records written here independently (tangent as sine over
// cosine), for many random templates.
TEST(TemplateChain, RandomTemplatesMatchAnIndependentWalkOfTheirRecords) {
    std::mt19937_64 rng(20240611);
    std::uniform_real_distribution<double> angle(-0.6, 0.6);
    std::uniform_real_distribution<double> width(0.0, 12.0);
    std::uniform_real_distribution<double> delta(-3.0, 3.0);
    std::uniform_int_distribution<int> kind(0, 4);
    std::uniform_int_distribution<int> length(0, 14);
    for (int trial = 0; trial < 1000; ++trial) {
        CGeoTemplate t;
        struct Expected {
            double sh, sv, eh, ev;
        };
        std::vector<Expected> expected;
        double h = 0.0;
        double v = 0.0;
        const int n = length(rng);
        for (int i = 0; i < n; ++i) {
            const int k = kind(rng);
            if (k == 0) {
                const double dh = width(rng) * 0.1;
                const double dv = delta(rng);
                add_step(t, dh, dv);
                expected.push_back({h, v, h + dh, v + dv});
            } else if (k == 1) {
                const double a = angle(rng);
                const double w = width(rng);
                add_grade_width(t, a, w);
                expected.push_back({h, v, h + w, v + w * (std::sin(a) / std::cos(a))});
            } else if (k == 2) {
                const double dh = width(rng);
                const double dv = delta(rng);
                add_delta_hv(t, dh, dv);
                expected.push_back({h, v, h + dh, v + dv});
            } else if (k == 3) {
                add_feature(t, "F");
                expected.push_back({h, v, h, v});
            } else {
                const double fh = width(rng);
                const double fv = delta(rng);
                add_fixed_point(t, fh, fv, 0.0);
                expected.push_back({fh, fv, fh, fv});
                continue; // the running position stays
            }
            h = expected.back().eh;
            v = expected.back().ev;
        }
        if (trial % 2 == 1) {
            add_side_slope(t, 0.5, 0.4, 1.0);
            expected.push_back({h, v, h, v});
        }
        ASSERT_EQ(t.NumberElements(), static_cast<int>(expected.size()));
        for (int i = 0; i < t.NumberElements(); ++i) {
            const ElementView e = view_of(t, i);
            const Expected& x = expected[static_cast<std::size_t>(i)];
            ASSERT_NEAR(e.start_h, x.sh, 1e-12) << "trial " << trial << " element " << i;
            ASSERT_NEAR(e.start_v, x.sv, 1e-12) << "trial " << trial << " element " << i;
            ASSERT_NEAR(e.start_h + e.delta_h, x.eh, 1e-12) << "trial " << trial;
            ASSERT_NEAR(e.start_v + e.delta_v, x.ev, 1e-12) << "trial " << trial;
        }
        ASSERT_NEAR(t.HOffsetShoulder(), h, 1e-12) << "trial " << trial;
        ASSERT_NEAR(t.VOffsetShoulder(), v, 1e-12) << "trial " << trial;
    }
}
