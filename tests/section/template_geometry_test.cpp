// Template geometry: height above the surface, the side slope and its catch, and the blend of
// two templates.
#include "qv5/geotemplate.h"
#include "section/template_builders.h"
#include "support/test_numbers.h"

#include <gtest/gtest.h>

#include <cmath>
#include <cstring>
#include <random>

using namespace qv5::test;

namespace {

struct Deltas {
    double dv;
    double angle;
};

Deltas deltas_at(const CGeoTemplate& t, double offset, double height) {
    Deltas d{123.0, 456.0};
    t.TemplateDeltas(offset, height, d.dv, d.angle);
    return d;
}

/// A 4 m lane falling at -0.05 rad to a side slope of 1:2 cut, 1:3 fill and a 2 m ditch.
CGeoTemplate rural() {
    CGeoTemplate t;
    add_grade_width(t, -0.05, 4.0);
    add_side_slope(t, std::atan(0.5), std::atan(1.0 / 3.0), 2.0);
    return t;
}

constexpr double kRuralShoulderV = -0.20016683350215517; // 4 tan(-0.05)

struct Catch {
    int in_ditch = 77;
    double dv = 1.0;
    double slope_angle = 2.0;
    double point_angle = 3.0;
    double catch_offset = 4.0;
};

Catch catch_of(const CGeoTemplate& t, double offset, double height, int cut) {
    Catch c;
    t.SlopeDeltas(offset, height, cut, c.in_ditch, c.dv, c.slope_angle, c.point_angle,
                  c.catch_offset);
    return c;
}

} // namespace

TEST(TemplateDeltas, NoElementsGiveUndefined) {
    CGeoTemplate t;
    const Deltas d = deltas_at(t, 1.0, 0.0);
    EXPECT_TRUE(is_geo_null(d.dv));
    EXPECT_TRUE(is_geo_null(d.angle));
}

TEST(TemplateDeltas, OffsetAtGradeWidthEndUsesThatElement) {
    CGeoTemplate t;
    add_grade_width(t, 0.02, 3.0);
    add_grade_width(t, -0.04, 2.0);
    const Deltas d = deltas_at(t, 3.0, 1.0);
    EXPECT_NEAR(d.dv, 0.9399919987197928, 1e-15);
    EXPECT_EQ(d.angle, 0.02);
    const Deltas next = deltas_at(t, 3.5, 1.0);
    EXPECT_EQ(next.angle, -0.04);
    EXPECT_NEAR(next.dv, 1.0 - (3.0 * std::tan(0.02) + 0.5 * std::tan(-0.04)), 1e-15);
}

TEST(TemplateDeltas, OffsetInsideOrAtEndOfStepIsUndefined) {
    CGeoTemplate t;
    add_grade_width(t, 0.0, 3.0);
    add_step(t, 0.5, 0.2);
    add_grade_width(t, 0.0, 2.0);
    for (double offset : {3.2, 3.5}) {
        const Deltas d = deltas_at(t, offset, 0.0);
        EXPECT_TRUE(is_geo_null(d.dv)) << offset;
        EXPECT_TRUE(is_geo_null(d.angle)) << offset;
    }
    const Deltas beyond = deltas_at(t, 3.6, 1.0);
    EXPECT_NEAR(beyond.dv, 0.8, 1e-15);
    EXPECT_EQ(beyond.angle, 0.0);
}

TEST(TemplateDeltas, OffsetBeyondTheShoulderIsUndefined) {
    CGeoTemplate t;
    add_grade_width(t, 0.0, 3.0);
    const Deltas d = deltas_at(t, 3.0001, 0.0);
    EXPECT_TRUE(is_geo_null(d.dv));
    EXPECT_TRUE(is_geo_null(d.angle));
}

TEST(TemplateDeltas, SideSlopeStopsTheWalk) {
    CGeoTemplate t = rural();
    EXPECT_TRUE(is_geo_null(deltas_at(t, 5.0, 0.0).dv));
    // Even a surface element after a mid-chain side slope is not reached.
    CGeoTemplate odd;
    add_side_slope(odd, 0.5, 0.5, 0.0);
    add_grade_width(odd, 0.0, 3.0);
    EXPECT_TRUE(is_geo_null(deltas_at(odd, 1.0, 0.0).dv));
}

TEST(TemplateDeltas, NegativeOffsetIsDecidedByTheFirstElement) {
    CGeoTemplate t;
    add_feature(t, "CL"); // skipped
    add_grade_width(t, 0.1, 3.0);
    const Deltas d = deltas_at(t, -1.0, 0.0);
    EXPECT_EQ(d.dv, 0.0 - (0.0 + (-1.0 - 0.0) * std::tan(0.1)));
    EXPECT_EQ(d.angle, 0.1);
    CGeoTemplate stepped;
    add_step(stepped, 0.0, 0.1);
    add_grade_width(stepped, 0.0, 3.0);
    EXPECT_TRUE(is_geo_null(deltas_at(stepped, 0.0, 0.0).dv));
    EXPECT_TRUE(is_geo_null(deltas_at(stepped, -2.0, 0.0).dv));
}

TEST(TemplateDeltas, FixedPointIsSkipped) {
    CGeoTemplate t;
    add_fixed_point(t, 0.5, 9.0, 1.0);
    add_delta_hv(t, 2.0, -0.1);
    const Deltas d = deltas_at(t, 1.0, 0.0);
    EXPECT_NEAR(d.dv, 0.05, 1e-15);
    EXPECT_EQ(d.angle, std::atan(-0.05));
}

TEST(TemplateOnSideSlope, FalseAtShoulderTrueJustBeyondAndOnEitherSide) {
    CGeoTemplate t = rural();
    EXPECT_EQ(t.OnSideSlope(4.0), 0);
    EXPECT_EQ(t.OnSideSlope(std::nextafter(4.0, 5.0)), 1);
    EXPECT_EQ(t.OnSideSlope(-5.0), 1);
    EXPECT_EQ(t.OnSideSlope(-4.0), 0);
    EXPECT_EQ(t.OnSideSlope(2.0), 0);
}

TEST(TemplateOnSideSlope, FalseWithoutElementsOrWhenTheSlopeIsNotLast) {
    CGeoTemplate empty;
    EXPECT_EQ(empty.OnSideSlope(10.0), 0);
    CGeoTemplate t = rural();
    add_feature(t, "After");
    EXPECT_EQ(t.OnSideSlope(10.0), 0);
}

TEST(TemplateSlopeDeltas, OffTheSlopeGivesUndefinedAndLeavesSlopeAngle) {
    CGeoTemplate t = rural();
    const Catch c = catch_of(t, 3.0, 0.0, 1);
    EXPECT_EQ(c.in_ditch, 0);
    EXPECT_TRUE(is_geo_null(c.dv));
    EXPECT_TRUE(is_geo_null(c.point_angle));
    EXPECT_TRUE(is_geo_null(c.catch_offset));
    EXPECT_EQ(c.slope_angle, 2.0);
}

TEST(TemplateSlopeDeltas, CutPointInTheDitch) {
    CGeoTemplate t = rural();
    const Catch c = catch_of(t, 5.5, 0.0, 1);
    EXPECT_EQ(c.in_ditch, 1);
    EXPECT_TRUE(is_geo_null(c.dv));
    EXPECT_EQ(c.slope_angle, std::atan(0.5));
    EXPECT_TRUE(is_geo_null(c.point_angle));
    EXPECT_TRUE(is_geo_null(c.catch_offset));
}

TEST(TemplateSlopeDeltas, CutPointAboveTheSlopeBeyondTheDitch) {
    CGeoTemplate t = rural();
    const Catch c = catch_of(t, 9.0, 1.0, 1);
    EXPECT_EQ(c.in_ditch, 0);
    EXPECT_NEAR(c.dv, -0.29983316649784486, 1e-12);
    EXPECT_NEAR(c.catch_offset, 8.400333667004311, 1e-12);
    EXPECT_NEAR(c.point_angle, 0.3805543168545618, 1e-15);
    EXPECT_EQ(c.slope_angle, std::atan(0.5));
}

TEST(TemplateSlopeDeltas, FillPointBelowTheSlope) {
    CGeoTemplate t = rural();
    const Catch c = catch_of(t, 7.0, -2.0, 0);
    EXPECT_EQ(c.in_ditch, 0);
    EXPECT_NEAR(c.dv, -0.7998331664978449, 1e-12);
    EXPECT_NEAR(c.catch_offset, 9.399499499493535, 1e-12);
    EXPECT_NEAR(c.point_angle, -0.5403786087031056, 1e-15);
    EXPECT_EQ(c.slope_angle, std::atan(1.0 / 3.0));
}

TEST(TemplateSlopeDeltas, FillIgnoresTheDitch) {
    CGeoTemplate t = rural();
    const Catch c = catch_of(t, 5.0, 0.0, 0);
    EXPECT_EQ(c.in_ditch, 0);
    EXPECT_NEAR(c.dv, std::tan(std::atan(1.0 / 3.0)) * 1.0 + (0.0 - kRuralShoulderV), 1e-15);
}

TEST(TemplateSlopeDeltas, PointWithinAMillimetreOfSlopeStartIsVertical) {
    CGeoTemplate t = rural();
    const double h = t.HOffsetShoulder();
    const double v = t.VOffsetShoulder();
    EXPECT_EQ(catch_of(t, h + 0.0009, v + 0.3, 0).point_angle, kHalfPi);
    EXPECT_EQ(catch_of(t, h + 0.0009, v - 0.3, 0).point_angle, -kHalfPi);
    EXPECT_EQ(catch_of(t, h + 0.0009, v, 0).point_angle, -kHalfPi); // level counts as below
    // In cut the slope starts at the far edge of the ditch.
    EXPECT_EQ(catch_of(t, h + 2.0009, v + 0.3, 1).point_angle, kHalfPi);
    EXPECT_EQ(catch_of(t, h + 2.0009, v, 1).point_angle, -kHalfPi);
    EXPECT_EQ(catch_of(t, h + 2.0, v + 0.3, 1).in_ditch, 0); // the ditch's edge is on the slope
}

// Catch points lie on the slope line and on the level line through the point.
TEST(TemplateSlopeDeltas, CatchPointsLieOnSlopeAndGroundLines) {
    std::mt19937_64 rng(7);
    std::uniform_real_distribution<double> beyond(0.0, 40.0);
    std::uniform_real_distribution<double> height(-15.0, 15.0);
    std::uniform_real_distribution<double> angle(0.1, 1.2);
    std::uniform_real_distribution<double> ditch(0.0, 3.0);
    for (int i = 0; i < 2000; ++i) {
        CGeoTemplate t;
        add_grade_width(t, -0.03, 3.65);
        add_delta_hv(t, 1.2, -0.05);
        const double cut = angle(rng);
        const double fill = angle(rng);
        const double w = ditch(rng);
        add_side_slope(t, cut, fill, w);
        const double sh = t.HOffsetShoulder();
        const double sv = t.VOffsetShoulder();
        const double offset = sh + w + 0.01 + beyond(rng);
        const double z = height(rng);
        const Catch c = catch_of(t, offset, z, 1);
        ASSERT_EQ(c.in_ditch, 0);
        // On the cut line from (sh + w, sv) rising at `cut`, at the point's height.
        EXPECT_NEAR(sv + (c.catch_offset - (sh + w)) * std::sin(cut) / std::cos(cut), z, 1e-9);
        // The point's height above the cut line at its own offset.
        EXPECT_NEAR(c.dv, z - (sv + (offset - (sh + w)) * std::sin(cut) / std::cos(cut)), 1e-9);
        const Catch f = catch_of(t, offset, z, 0);
        EXPECT_NEAR(sv - (f.catch_offset - sh) * std::sin(fill) / std::cos(fill), z, 1e-9);
        EXPECT_NEAR(f.dv, z - (sv - (offset - sh) * std::sin(fill) / std::cos(fill)), 1e-9);
        EXPECT_NEAR(f.point_angle, std::atan2(z - sv, offset - sh), 1e-12);
    }
}

TEST(TemplateInterpolate, HalfwayBlendsTheAngleNotItsTangent) {
    CGeoTemplate a;
    CGeoTemplate b;
    add_grade_width(a, 0.02, 3.0);
    add_grade_width(b, 0.04, 5.0);
    CGeoTemplate r;
    a.Interpolate(&b, 0.5, &r);
    geotemp_GradeWidthData rec{0.0, 0.0};
    double sh, sv, dh, dv, angle;
    ASSERT_EQ(r.GetNthElement(0, geotemp_GradeWidth, sh, sv, dh, dv, angle, &rec), 1);
    EXPECT_EQ(rec.Angle, 0.03);
    EXPECT_EQ(angle, 0.03);
    EXPECT_EQ(rec.Width, 4.0);
    EXPECT_EQ(r.HOffsetShoulder(), 4.0);
    EXPECT_EQ(r.VOffsetShoulder(), 4.0 * std::tan(0.03));
}

TEST(TemplateInterpolate, RatioIsNotClamped) {
    CGeoTemplate a;
    CGeoTemplate b;
    add_delta_hv(a, 2.0, 0.5);
    add_delta_hv(b, 3.0, -0.5);
    CGeoTemplate r;
    a.Interpolate(&b, 2.0, &r);
    EXPECT_EQ(r.HOffsetShoulder(), 4.0);
    EXPECT_EQ(r.VOffsetShoulder(), -1.5);
    a.Interpolate(&b, -1.0, &r);
    EXPECT_EQ(r.HOffsetShoulder(), 1.0);
    EXPECT_EQ(r.VOffsetShoulder(), 1.5);
}

TEST(TemplateInterpolate, ResultKeepsItsNameAndLosesItsElements) {
    CGeoTemplate a;
    add_step(a, 0.0, 0.1);
    CGeoTemplate r;
    r.SetName(CString("Blend"));
    add_grade_width(r, 0.0, 10.0);
    add_grade_width(r, 0.0, 10.0);
    a.SetName(CString("First"));
    a.Interpolate(&a, 0.3, &r);
    EXPECT_EQ(r.Name().ToUtf8(), "Blend");
    EXPECT_EQ(r.NumberElements(), 1);
    EXPECT_EQ(r.NthElementType(0), geotemp_Step);
}

TEST(TemplateInterpolate, FeatureNameFromFirstValuesBlendedFixedPointReservedZero) {
    CGeoTemplate a;
    CGeoTemplate b;
    add_feature(a, "Lip", 1.0, 10.0);
    add_feature(b, "LIP", 3.0, 20.0);
    geotemp_FixedPointData fa;
    std::memset(&fa, 0xEE, sizeof fa);
    fa.H = 5.0;
    fa.V = 0.1;
    fa.Angle = 0.2;
    geotemp_FixedPointData fb = fa;
    fb.H = 7.0;
    fb.V = 0.3;
    fb.Angle = 0.4;
    a.AddElement(geotemp_FixedPoint, &fa);
    b.AddElement(geotemp_FixedPoint, &fb);
    ASSERT_EQ(a.Similar(&b), 1);
    CGeoTemplate r;
    a.Interpolate(&b, 1.0, &r);
    geotemp_FeatureData feature;
    double sh, sv, dh, dv, angle;
    ASSERT_EQ(r.GetNthElement(0, geotemp_Feature, sh, sv, dh, dv, angle, &feature), 1);
    EXPECT_EQ(feature.Name[0], 'L');
    EXPECT_EQ(feature.Name[1], 'i'); // from the first template even at ratio 1
    EXPECT_EQ(feature.ValueA, 3.0);
    EXPECT_EQ(feature.ValueB, 20.0);
    a.Interpolate(&b, 0.5, &r);
    ASSERT_EQ(r.GetNthElement(0, geotemp_Feature, sh, sv, dh, dv, angle, &feature), 1);
    EXPECT_EQ(feature.ValueA, 2.0);
    EXPECT_EQ(feature.ValueB, 15.0);
    geotemp_FixedPointData fp;
    ASSERT_EQ(r.GetNthElement(1, geotemp_FixedPoint, sh, sv, dh, dv, angle, &fp), 1);
    EXPECT_EQ(fp.H, 6.0);
    EXPECT_EQ(sh, 6.0);
    EXPECT_NEAR(fp.V, 0.2, 1e-16);
    EXPECT_NEAR(fp.Angle, 0.3, 1e-16);
    for (unsigned char byte : fp.Reserved) {
        EXPECT_EQ(byte, 0);
    }
}

TEST(TemplateInterpolate, SideSlopeFieldsBlended) {
    CGeoTemplate a;
    CGeoTemplate b;
    add_side_slope(a, 0.5, 0.25, 1.0);
    add_side_slope(b, 1.0, 0.75, 3.0);
    CGeoTemplate r;
    a.Interpolate(&b, 0.5, &r);
    geotemp_SideSlopeData s{0, 0, 0};
    double sh, sv, dh, dv, angle;
    ASSERT_EQ(r.GetNthElement(0, geotemp_SideSlope, sh, sv, dh, dv, angle, &s), 1);
    EXPECT_EQ(s.CutAngle, 0.75);
    EXPECT_EQ(s.FillAngle, 0.5);
    EXPECT_EQ(s.DitchWidth, 2.0);
}

TEST(TemplateInterpolate, UnknownTypesAreSkipped) {
    CGeoTemplate a;
    add_grade_width(a, 0.0, 1.0);
    a.AddElement(static_cast<geotemp_ElementType>(42), nullptr);
    add_grade_width(a, 0.0, 2.0);
    CGeoTemplate r;
    a.Interpolate(&a, 0.5, &r);
    ASSERT_EQ(r.NumberElements(), 2);
    EXPECT_EQ(r.NthElementType(1), geotemp_GradeWidth);
    EXPECT_EQ(r.HOffsetShoulder(), 3.0);
}

TEST(TemplateInterpolate, DissimilarPartnerLeavesUnmatchedElementsUnblended) {
    CGeoTemplate a;
    add_grade_width(a, 0.0, 2.0);
    add_delta_hv(a, 1.0, 1.0);
    CGeoTemplate b;
    add_grade_width(b, 0.0, 4.0);
    CGeoTemplate r;
    a.Interpolate(&b, 0.5, &r);
    ASSERT_EQ(r.NumberElements(), 2);
    EXPECT_EQ(r.HOffsetShoulder(), 4.0);
    EXPECT_EQ(r.VOffsetShoulder(), 1.0);
    a.Interpolate(nullptr, 0.5, &r);
    EXPECT_EQ(r.HOffsetShoulder(), 3.0);
    a.Interpolate(&b, 0.5, nullptr); // nothing to write: no effect
}

TEST(TemplateInterpolate, ResultMayBeEitherInput) {
    CGeoTemplate a;
    CGeoTemplate b;
    add_grade_width(a, 0.0, 2.0);
    add_grade_width(b, 0.0, 4.0);
    a.Interpolate(&b, 0.5, &a);
    EXPECT_EQ(a.HOffsetShoulder(), 3.0);
    a.Interpolate(&b, 0.5, &b);
    EXPECT_EQ(b.HOffsetShoulder(), 3.5);
}

namespace {

CGeoTemplate random_template(std::mt19937_64& rng, const int* kinds, int n) {
    std::uniform_real_distribution<double> u(-5.0, 5.0);
    CGeoTemplate t;
    for (int i = 0; i < n; ++i) {
        switch (kinds[i]) {
        case geotemp_Step:
            add_step(t, u(rng), u(rng));
            break;
        case geotemp_GradeWidth:
            add_grade_width(t, u(rng) * 0.1, u(rng));
            break;
        case geotemp_DeltaHV:
            add_delta_hv(t, u(rng), u(rng));
            break;
        case geotemp_Feature:
            add_feature(t, "Feature", u(rng), u(rng));
            break;
        case geotemp_FixedPoint:
            add_fixed_point(t, u(rng), u(rng), u(rng));
            break;
        default:
            add_side_slope(t, u(rng), u(rng), u(rng));
            break;
        }
    }
    return t;
}

/// True when every record and the derived chain of two templates agree bit for bit.
bool same_bits(const CGeoTemplate& x, const CGeoTemplate& y) {
    if (x.NumberElements() != y.NumberElements()) {
        return false;
    }
    for (int i = 0; i < x.NumberElements(); ++i) {
        unsigned char rx[82] = {};
        unsigned char ry[82] = {};
        double xs[5];
        double ys[5];
        const geotemp_ElementType type = x.NthElementType(i);
        if (x.GetNthElement(i, type, xs[0], xs[1], xs[2], xs[3], xs[4], rx) != 1 ||
            y.GetNthElement(i, type, ys[0], ys[1], ys[2], ys[3], ys[4], ry) != 1) {
            return false;
        }
        const std::size_t size = type == geotemp_Feature      ? 82
                                 : type == geotemp_FixedPoint ? 24 // the reserved bytes are zeroed
                                 : type == geotemp_SideSlope  ? 24
                                                              : 16;
        if (std::memcmp(rx, ry, size) != 0 || std::memcmp(xs, ys, sizeof xs) != 0) {
            return false;
        }
    }
    return bits_of(x.HOffsetShoulder()) == bits_of(y.HOffsetShoulder()) &&
           bits_of(x.VOffsetShoulder()) == bits_of(y.VOffsetShoulder());
}

} // namespace

TEST(TemplateInterpolate, RatiosZeroAndOneReproduceTheInputsBitForBit) {
    std::mt19937_64 rng(99);
    std::uniform_int_distribution<int> kind(0, 4);
    for (int trial = 0; trial < 300; ++trial) {
        int kinds[13];
        const int n = 1 + trial % 12;
        for (int i = 0; i < n; ++i) {
            kinds[i] = kind(rng);
        }
        kinds[n] = geotemp_SideSlope;
        const CGeoTemplate a = random_template(rng, kinds, n + 1);
        const CGeoTemplate b = random_template(rng, kinds, n + 1);
        ASSERT_EQ(a.Similar(&b), 1);
        CGeoTemplate r;
        a.Interpolate(&b, 0.0, &r);
        EXPECT_TRUE(same_bits(r, a)) << "trial " << trial;
        a.Interpolate(&b, 1.0, &r);
        EXPECT_TRUE(same_bits(r, b)) << "trial " << trial;
    }
}
