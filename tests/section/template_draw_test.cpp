#include "qv5/geotemplate.h"

#include "section/template_builders.h"
#include "section/template_draw.h"

#include <gtest/gtest.h>

#include <cmath>
#include <limits>
#include <vector>

namespace {

using namespace qv5::test;

constexpr COLORREF kWhite = RGB(0xFF, 0xFF, 0xFF);
constexpr COLORREF kGreen = RGB(0x00, 0xAF, 0x00);
constexpr COLORREF kRed = RGB(0xC0, 0x00, 0x00);
constexpr COLORREF kGrey = RGB(0xA0, 0xA0, 0xA0);
constexpr COLORREF kBlack = RGB(0x00, 0x00, 0x00);

/// A screen, a memory context holding a small bitmap of the host's, and a template to draw.
struct Host {
    CDC screen;
    CDC memory;
    CBitmap own;
    CBitmap* original = nullptr;

    Host() {
        memory.CreateCompatibleDC(&screen);
        own.CreateCompatibleBitmap(&screen, 3, 3);
        original = memory.SelectObject(&own);
        memory.FillSolidRect(0, 0, 3, 3, kBlack);
    }
    ~Host() { memory.SelectObject(original); }

    COLORREF at(int x, int y) const { return memory.GetPixel(x, y); }
};

/// Road, curb and verge: the worked example whose pixels the tests below compute by hand.
///
/// Extents: H = shoulder 6 (the curb at 3 needs only 3.5); running heights -0.1, -0.25, -0.3
/// and the curb's 0.1 - 0.35 give vmin -0.3, vmax 0.1, range 0.4. In 640 x 480, 480/640 =
/// 0.75 > 0.4/6, so the picture is width-bound: scale = 630 / (6 x 1.2) = 87.5 px/m and
/// y0 = int(-0.1 x 87.5 = -8.75) + 240 = 232.
/// Surface: (10, 232); grade end (5, -0.1) -> (int 437.5 + 10, 232 - int -8.75) = (447, 240),
/// which the step moves to (5, -0.25) -> (447, 232 + 21) = (447, 253); delta H/V end (6, -0.3) ->
/// (535, 232 + 26) = (535, 258). Features "EP" at (447, 240) and "Toe" at (535, 258).
/// Curb anchored at (3, 0.1) -> (int 262.5 + 10, 232 - 8) = (272, 224) with corners
/// int(0.15 x 87.5) = 13, int(0.2 x 87.5) = 17, int(0.4 x 87.5) = 35 pixels away.
CGeoTemplate worked_example() {
    CGeoTemplate t;
    add_grade_width(t, std::atan(-0.02), 5.0);
    add_feature(t, "EP");
    add_step(t, 0.0, -0.15);
    add_delta_hv(t, 1.0, -0.05);
    add_fixed_point(t, 3.0, 0.1, 0.0);
    add_feature(t, "Toe");
    return t;
}

TEST(DrawSection, EmptyTemplateGivesAWhitePictureOfTheRectanglesSize) {
    Host host;
    CGeoTemplate t;
    CRect rect(0, 0, 64, 48);
    t.DrawSection(rect, &host.screen, &host.memory);
    for (int y = 0; y < 48; ++y) {
        for (int x = 0; x < 64; ++x) {
            ASSERT_EQ(host.at(x, y), kWhite) << x << "," << y;
        }
    }
    EXPECT_EQ(host.at(64, 0), CLR_INVALID);
    EXPECT_EQ(host.at(0, 48), CLR_INVALID);
}

TEST(DrawSection, RectangleOffTheOriginGivesAPictureOfItsSize) {
    Host host;
    CGeoTemplate t;
    CRect rect(100, 200, 120, 210);
    t.DrawSection(rect, &host.screen, &host.memory);
    EXPECT_EQ(host.at(19, 9), kWhite);
    EXPECT_EQ(host.at(20, 9), CLR_INVALID);
    EXPECT_EQ(host.at(19, 10), CLR_INVALID);
}

TEST(DrawSection, WorkedExampleSurfaceVerticesAndSegments) {
    // The step moves the grade's end point to its own end, so the surface is
    // (10, 232) - (447, 253) - (535, 258).
    Host host;
    CGeoTemplate t = worked_example();
    CRect rect(0, 0, 640, 480);
    t.DrawSection(rect, &host.screen, &host.memory);
    EXPECT_EQ(host.at(10, 232), kGreen);  // the centreline start
    EXPECT_EQ(host.at(447, 253), kGreen); // the step's end
    EXPECT_EQ(host.at(228, 242), kGreen); // midway (10,232)-(447,253): 0.48 px off the line
    EXPECT_EQ(host.at(491, 255), kGreen); // midway (447,253)-(535,258): 0.50 px off the line
    // Two pixels wide: at x = 100 the line is at y = 236.32, so rows 236 and 237 are drawn.
    EXPECT_EQ(host.at(100, 235), kWhite);
    EXPECT_EQ(host.at(100, 236), kGreen);
    EXPECT_EQ(host.at(100, 237), kGreen);
    EXPECT_EQ(host.at(100, 238), kWhite);
    EXPECT_EQ(host.at(9, 232), kGreen); // round start, its left edge kept
    EXPECT_EQ(host.at(8, 232), kWhite);
    EXPECT_EQ(host.at(447, 245), kWhite); // the grade's own end point is not drawn
    EXPECT_EQ(host.at(537, 258), kWhite); // beyond the end of the surface and the cross
}

TEST(DrawSection, WorkedExampleFeatureCrossesAndNames) {
    Host host;
    CGeoTemplate t = worked_example();
    CRect rect(0, 0, 640, 480);
    t.DrawSection(rect, &host.screen, &host.memory);
    EXPECT_EQ(host.at(447, 240), kRed); // "EP", drawn over the surface vertex
    EXPECT_EQ(host.at(535, 258), kRed); // "Toe", over the last vertex
    // The arms of the cross reach (x +- 5, y +- 5).
    EXPECT_EQ(host.at(442, 235), kRed);
    EXPECT_EQ(host.at(452, 245), kRed);
    EXPECT_EQ(host.at(442, 245), kRed);
    EXPECT_EQ(host.at(452, 235), kRed);
    EXPECT_EQ(host.at(449, 240), kWhite); // between the arms
    // The names are written in the default (black) text colour right of and below the cross.
    int black = 0;
    for (int y = 246; y < 262; ++y) {
        for (int x = 453; x < 480; ++x) {
            black += host.at(x, y) == kBlack ? 1 : 0;
        }
    }
    EXPECT_GT(black, 10);
}

TEST(DrawSection, WorkedExampleCurbIsAGreyKerbProfile) {
    Host host;
    CGeoTemplate t = worked_example();
    CRect rect(0, 0, 640, 480);
    t.DrawSection(rect, &host.screen, &host.memory);
    // Corners (272,224) (285,224) (289,237) (289,254) (254,254) (254,237) (272,237), outlined
    // with the context's pen (black, one pixel).
    EXPECT_EQ(host.at(278, 229), kGrey); // head of the kerb
    EXPECT_EQ(host.at(285, 251), kGrey); // its base (the surface crosses it at y = 245)
    EXPECT_EQ(host.at(258, 250), kGrey);
    EXPECT_EQ(host.at(272, 224), kBlack); // the anchor, on the outline
    EXPECT_EQ(host.at(254, 254), kBlack);
    EXPECT_EQ(host.at(270, 230), kWhite); // left of the head: outside the profile
    EXPECT_EQ(host.at(291, 238), kWhite);
    EXPECT_EQ(host.at(270, 256), kWhite);
}

TEST(DrawSection, WorkedExampleIsWhiteAwayFromTheShapes) {
    Host host;
    CGeoTemplate t = worked_example();
    CRect rect(0, 0, 640, 480);
    t.DrawSection(rect, &host.screen, &host.memory);
    // The shapes lie in rows 222 to 275 (text included); everything else is background.
    for (int y = 3; y < 480; y += 16) {
        for (int x = 3; x < 640; x += 16) {
            if (y >= 215 && y <= 285) {
                continue;
            }
            EXPECT_EQ(host.at(x, y), kWhite) << x << "," << y;
        }
    }
    for (int y = 215; y <= 285; y += 4) {
        EXPECT_EQ(host.at(620, y), kWhite) << y; // right of everything
        EXPECT_EQ(host.at(2, y), kWhite) << y;   // inside the left margin
    }
}

TEST(DrawSection, WithoutSideSlopeTheShoulderTimesOnePointTwoFillsTheWidthLessTen) {
    // H = 4, range 0.4 (delta V 0.4 over 4): 200/300 = 0.67 > 0.1, width-bound:
    // scale = 290 / 4.8 = 60.4167, end x = int(4 x 60.4167 = 241.67) + 10 = 251;
    // y0 = int(0.2 x 60.4167 = 12.08) + 100 = 112, end y = 112 - int(24.17) = 88.
    Host host;
    CGeoTemplate t;
    add_delta_hv(t, 4.0, 0.4);
    CRect rect(0, 0, 300, 200);
    t.DrawSection(rect, &host.screen, &host.memory);
    EXPECT_EQ(host.at(10, 112), kGreen);
    EXPECT_EQ(host.at(251, 88), kGreen);
    EXPECT_EQ(host.at(130, 100), kGreen); // midway (130.5, 100): the line is at 100.05
    EXPECT_EQ(host.at(253, 88), kWhite);
    EXPECT_EQ(host.at(280, 100), kWhite); // the 1.2 room beyond the shoulder
    const qv5::detail::picture_scale s = qv5::detail::section_scale({4.0, 0.0, 0.4, 0.0}, 300, 200);
    EXPECT_FALSE(s.height_bound);
    EXPECT_DOUBLE_EQ(s.scale, 290.0 / 4.8);
    EXPECT_EQ(s.y0, 112);
}

TEST(DrawSection, TallTemplateIsHeightBound) {
    // H = 1, range 2: 100/200 = 0.5 <= 2, height-bound: scale = 90 / 2.4 = 37.5;
    // y0 = int(1 x 37.5) + 50 = 87; end (int 37.5 + 10, 87 - 75) = (47, 12).
    Host host;
    CGeoTemplate t;
    add_delta_hv(t, 1.0, 2.0);
    CRect rect(0, 0, 200, 100);
    t.DrawSection(rect, &host.screen, &host.memory);
    EXPECT_EQ(host.at(10, 87), kGreen);
    EXPECT_EQ(host.at(47, 12), kGreen);
    EXPECT_EQ(host.at(28, 50), kGreen); // 0.23 px off the line
    EXPECT_EQ(host.at(49, 12), kWhite);
    EXPECT_EQ(host.at(60, 12), kWhite);
    const qv5::detail::picture_scale s = qv5::detail::section_scale({1.0, 0.0, 2.0, 0.0}, 200, 100);
    EXPECT_TRUE(s.height_bound);
    EXPECT_DOUBLE_EQ(s.scale, 37.5);
    EXPECT_EQ(s.y0, 87);
}

TEST(DrawSection, FlatTemplateIsAlwaysWidthBound) {
    // Range 0.0004 is flat even in a very wide rectangle: scale = 120 / 12 = 10, y0 = 50.
    Host host;
    CGeoTemplate t;
    add_delta_hv(t, 10.0, 0.0004);
    CRect rect(0, 0, 130, 100);
    t.DrawSection(rect, &host.screen, &host.memory);
    EXPECT_EQ(host.at(10, 50), kGreen);
    EXPECT_EQ(host.at(110, 50), kGreen);
    EXPECT_EQ(host.at(60, 49), kGreen);
    EXPECT_EQ(host.at(60, 51), kWhite);
    EXPECT_EQ(host.at(112, 50), kWhite);
    const qv5::detail::picture_scale s =
        qv5::detail::section_scale({10.0, 0.0, 0.0004, 0.0}, 100000, 100);
    EXPECT_FALSE(s.height_bound);
    EXPECT_DOUBLE_EQ(s.scale, 99990.0 / 12.0);
}

TEST(DrawSection, SideSlopeWidensTheExtentAndDrawsDitchCutAndFill) {
    // Shoulder (4, 0), ditch 1: H = 5 x 1.2 = 6, slope lines 0.2 x 5 = 1 m long at
    // atan(0.5): rise and fall 0.4472, run 0.8944. Range 0.8944 in 300 x 200 is width-bound:
    // scale = 290 / 7.2 = 40.278, y0 = 100. Shoulder (171, 100), ditch end (211, 100), cut
    // end (int 237.41 + 10, 100 - int 18.01) = (247, 82), fill end (207, 118).
    Host host;
    CGeoTemplate t;
    add_grade_width(t, 0.0, 4.0);
    add_side_slope(t, std::atan(0.5), std::atan(0.5), 1.0);
    CRect rect(0, 0, 300, 200);
    t.DrawSection(rect, &host.screen, &host.memory);
    EXPECT_EQ(host.at(171, 100), kGreen);
    EXPECT_EQ(host.at(191, 100), kGreen); // the ditch
    EXPECT_EQ(host.at(211, 100), kGreen);
    EXPECT_EQ(host.at(229, 91), kGreen); // midway up the cut line
    EXPECT_EQ(host.at(247, 82), kGreen);
    EXPECT_EQ(host.at(189, 109), kGreen); // midway down the fill line
    EXPECT_EQ(host.at(207, 118), kGreen);
    EXPECT_EQ(host.at(250, 100), kWhite);
    EXPECT_EQ(host.at(180, 80), kWhite);
    const qv5::detail::picture_extents e =
        qv5::detail::section_extents(nullptr, 0, 4.0, 0.0); // no elements: the shoulder only
    EXPECT_EQ(e.h, 4.0);
}

TEST(DrawSection, CallingTwiceReplacesTheBitmapAndRestoresTheHostsBitmapFirst) {
    Host host;
    CGeoTemplate t;
    add_delta_hv(t, 10.0, 0.0);
    CRect small(0, 0, 40, 30);
    t.DrawSection(small, &host.screen, &host.memory);
    EXPECT_EQ(host.at(39, 29), kWhite);
    EXPECT_EQ(host.at(40, 29), CLR_INVALID);
    CRect large(0, 0, 80, 60);
    t.DrawSection(large, &host.screen, &host.memory);
    EXPECT_EQ(host.at(79, 59), kWhite); // the new, larger bitmap
    // The context's bitmap before the first call is what the template remembers: selecting
    // the host's bitmap now hands back the template's, and the host's pixels are untouched.
    CBitmap* template_bitmap = host.memory.SelectObject(&host.own);
    ASSERT_NE(template_bitmap, nullptr);
    EXPECT_NE(template_bitmap, &host.own);
    EXPECT_EQ(host.at(1, 1), kBlack);
    EXPECT_EQ(host.at(3, 0), CLR_INVALID);
}

TEST(DrawSection, ResetReleasesTheBitmapAndDrawingAgainWorks) {
    Host host;
    CGeoTemplate t;
    add_delta_hv(t, 10.0, 0.0);
    CRect rect(0, 0, 40, 30);
    t.DrawSection(rect, &host.screen, &host.memory);
    t.Reset();
    EXPECT_EQ(host.at(10, 15), kGreen); // the context keeps what it shows until replaced
    add_delta_hv(t, 5.0, 0.0);
    t.DrawSection(rect, &host.screen, &host.memory);
    t.DrawSection(rect, &host.screen, &host.memory);
    EXPECT_EQ(host.at(10, 15), kGreen);
}

TEST(DrawSection, TemplateDestroyedBeforeTheContextLeavesNothingBehind) {
    Host host;
    {
        CGeoTemplate t;
        add_delta_hv(t, 10.0, 0.0);
        CRect rect(0, 0, 40, 30);
        t.DrawSection(rect, &host.screen, &host.memory);
        CGeoTemplate copy(t); // the picture is not copied
        copy = t;
    }
    EXPECT_EQ(host.at(10, 15), kGreen);
}

TEST(DrawSection, EmptyOrInsideOutRectangleDrawsNothing) {
    Host host;
    CGeoTemplate t = worked_example();
    CRect empty(0, 0, 0, 0);
    t.DrawSection(empty, &host.screen, &host.memory);
    EXPECT_EQ(host.at(1, 1), kBlack); // the host's bitmap is still selected and untouched
    CRect inside_out(50, 50, 10, 10);
    t.DrawSection(inside_out, &host.screen, &host.memory);
    EXPECT_EQ(host.at(1, 1), kBlack);
    CRect flat(0, 0, 100, 0);
    t.DrawSection(flat, &host.screen, &host.memory);
    EXPECT_EQ(host.at(1, 1), kBlack);
    // A good rectangle afterwards draws normally.
    CRect rect(0, 0, 640, 480);
    t.DrawSection(rect, &host.screen, &host.memory);
    EXPECT_EQ(host.at(10, 232), kGreen);
}

TEST(DrawSection, NullContextsAreIgnored) {
    Host host;
    CGeoTemplate t = worked_example();
    CRect rect(0, 0, 64, 48);
    t.DrawSection(rect, nullptr, &host.memory);
    t.DrawSection(rect, &host.screen, nullptr);
    t.DrawSection(rect, nullptr, nullptr);
    EXPECT_EQ(host.at(1, 1), kBlack);
    // A screen context cannot take a bitmap: nothing is drawn and nothing kept.
    CDC screen;
    t.DrawSection(rect, &host.screen, &screen);
    EXPECT_EQ(screen.GetPixel(1, 1), CLR_INVALID);
}

/// Every pixel of the picture is one of the colours the picture uses.
void expect_only_picture_colours(const Host& host, int width, int height) {
    for (int y = 0; y < height; ++y) {
        for (int x = 0; x < width; ++x) {
            const COLORREF c = host.at(x, y);
            ASSERT_TRUE(c == kWhite || c == kGreen || c == kRed || c == kGrey || c == kBlack)
                << x << "," << y;
        }
    }
}

TEST(DrawSection, NonFiniteValuesNeitherCrashNorDrawOutside) {
    const double nan = std::numeric_limits<double>::quiet_NaN();
    const double inf = std::numeric_limits<double>::infinity();
    const std::vector<std::vector<double>> cases = {{nan, 5.0},   {0.1, inf},    {0.1, -inf},
                                                    {0.1, 1e300}, {0.1, -1e300}, {0.1, 1e-300}};
    for (const auto& c : cases) {
        Host host;
        CGeoTemplate t;
        add_grade_width(t, c[0], c[1]);
        add_feature(t, "X");
        add_delta_hv(t, c[1], c[1]);
        add_fixed_point(t, c[1], c[0], 0.0);
        add_side_slope(t, c[0], c[1], c[1]);
        CRect rect(0, 0, 64, 48);
        t.DrawSection(rect, &host.screen, &host.memory);
        expect_only_picture_colours(host, 64, 48);
        EXPECT_EQ(host.at(64, 0), CLR_INVALID);
    }
}

TEST(DrawSection, HugeRectangleIsRefused) {
    Host host;
    CGeoTemplate t = worked_example();
    CRect rect(0, 0, 40000, 40000);
    t.DrawSection(rect, &host.screen, &host.memory);
    EXPECT_EQ(host.at(1, 1), kBlack);
}

TEST(SectionPixel, TruncatesTowardZeroAndKeepsFarPointsFar) {
    const qv5::detail::picture_scale s{10.0, 50, false, true};
    EXPECT_EQ(qv5::detail::section_pixel(s, 1.29, 0.31).x, 22);  // int(12.9) + 10
    EXPECT_EQ(qv5::detail::section_pixel(s, 1.29, 0.31).y, 47);  // 50 - int(3.1)
    EXPECT_EQ(qv5::detail::section_pixel(s, -0.19, -0.19).x, 9); // int(-1.9) = -1
    EXPECT_EQ(qv5::detail::section_pixel(s, -0.19, -0.19).y, 51);
    EXPECT_EQ(qv5::detail::section_pixel(s, 1e300, -1e300).x, (1 << 30));
    EXPECT_EQ(qv5::detail::section_pixel(s, std::nan(""), 0.0).x, -(1 << 30) + 10);
}

} // namespace
