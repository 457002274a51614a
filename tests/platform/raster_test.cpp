#include "platform/raster.h"

#include <gtest/gtest.h>

#include <climits>
#include <set>
#include <utility>
#include <vector>

namespace {

using qv5::detail::pixel_point;
using qv5::detail::pixel_span;
using Pixels = std::set<std::pair<int, int>>;

Pixels pixels_of(const std::vector<pixel_span>& spans) {
    Pixels pixels;
    for (const pixel_span& span : spans) {
        for (int i = 0; i < span.length; ++i) {
            pixels.insert({span.x + i, span.y});
        }
    }
    return pixels;
}

Pixels thin(int x1, int y1, int x2, int y2, int width = 100, int height = 100) {
    std::vector<pixel_span> spans;
    qv5::detail::thin_line_spans(x1, y1, x2, y2, width, height, spans);
    return pixels_of(spans);
}

Pixels wide(int x1, int y1, int x2, int y2, int pen, int width = 100, int height = 100) {
    std::vector<pixel_span> spans;
    qv5::detail::wide_line_spans(x1, y1, x2, y2, pen, width, height, spans);
    return pixels_of(spans);
}

Pixels polygon(const std::vector<pixel_point>& points, int width = 100, int height = 100) {
    std::vector<pixel_span> spans;
    qv5::detail::polygon_spans(points, width, height, spans);
    return pixels_of(spans);
}

TEST(ThinLine, ShallowLineDrawsNearestPixelPerColumnAndNotItsLastPoint) {
    // y = 0.4 x: 0, 0.4, 0.8, 1.2, 1.6 round to 0, 0, 1, 1, 2; (5, 2) is the end, not drawn.
    EXPECT_EQ(thin(0, 0, 5, 2), (Pixels{{0, 0}, {1, 0}, {2, 1}, {3, 1}, {4, 2}}));
}

TEST(ThinLine, HalfwayBetweenStackedPixelsDrawsTheUpperOne) {
    // At x = 1 the line is at y = 0.5, half-way between rows 0 and 1, in both directions.
    EXPECT_EQ(thin(0, 0, 2, 1), (Pixels{{0, 0}, {1, 0}}));
    EXPECT_EQ(thin(2, 1, 0, 0), (Pixels{{2, 1}, {1, 0}}));
}

TEST(ThinLine, HalfwayBetweenSideBySidePixelsDrawsTheLeftOne) {
    // At y = 1 the line is at x = 0.5.
    EXPECT_EQ(thin(0, 0, 1, 2), (Pixels{{0, 0}, {0, 1}}));
    EXPECT_EQ(thin(1, 2, 0, 0), (Pixels{{1, 2}, {0, 1}}));
}

TEST(ThinLine, DiagonalDrawsOnePixelPerStep) {
    EXPECT_EQ(thin(3, 3, 0, 6), (Pixels{{3, 3}, {2, 4}, {1, 5}}));
}

TEST(ThinLine, ZeroLengthDrawsNothing) {
    EXPECT_TRUE(thin(4, 4, 4, 4).empty());
}

TEST(ThinLine, ClippingKeepsExactlyThePixelsInsideTheBitmap) {
    Pixels expected;
    // The same line drawn in a bitmap shifted by 100 pixels, then shifted back and cut to 10x10.
    for (const auto& [x, y] : thin(63, 89, 183, 129, 300, 300)) {
        if (x - 100 >= 0 && x - 100 < 10 && y - 100 >= 0 && y - 100 < 10) {
            expected.insert({x - 100, y - 100});
        }
    }
    EXPECT_EQ(thin(-37, -11, 83, 29, 10, 10), expected);
    EXPECT_FALSE(expected.empty());
}

TEST(ThinLine, HugeCoordinatesVisitOnlyTheBitmap) {
    const Pixels row = thin(INT_MIN, 5, INT_MAX, 5, 10, 10);
    Pixels expected;
    for (int x = 0; x < 10; ++x) {
        expected.insert({x, 5});
    }
    EXPECT_EQ(row, expected);
}

TEST(WideLine, TwoPixelHorizontalLineCoversTheRowAboveAndItsOwn) {
    // Band of half width 1 around y = 5 from x = 2 to 6 with round ends: row 4 is on the top of
    // the outline (kept), row 6 on the bottom (dropped); (1, 5) is on the left end (kept),
    // (7, 5) on the right end (dropped).
    Pixels expected;
    for (int x = 2; x <= 6; ++x) {
        expected.insert({x, 4});
    }
    for (int x = 1; x <= 6; ++x) {
        expected.insert({x, 5});
    }
    EXPECT_EQ(wide(2, 5, 6, 5, 2), expected);
    EXPECT_EQ(wide(6, 5, 2, 5, 2), expected);
}

TEST(WideLine, TwoPixelVerticalLineCoversTheColumnLeftAndItsOwn) {
    Pixels expected;
    for (int y = 2; y <= 6; ++y) {
        expected.insert({4, y});
    }
    for (int y = 1; y <= 6; ++y) {
        expected.insert({5, y});
    }
    EXPECT_EQ(wide(5, 2, 5, 6, 2), expected);
}

TEST(WideLine, TwoPixelDiagonalCoversTheDiagonalAndBothNeighbours) {
    // Pixels at distance |x - y| / sqrt 2 = 0.71 are inside; the end points' left and top
    // neighbours lie on the round start (kept), the right and bottom ones on the round end.
    Pixels expected{{1, 2}, {2, 1}};
    for (int x = 2; x <= 6; ++x) {
        expected.insert({x, x});
    }
    for (int x = 2; x <= 5; ++x) {
        expected.insert({x + 1, x});
        expected.insert({x, x + 1});
    }
    EXPECT_EQ(wide(2, 2, 6, 6, 2), expected);
}

TEST(WideLine, ZeroLengthTwoPixelLineIsADot) {
    EXPECT_EQ(wide(5, 5, 5, 5, 2), (Pixels{{5, 5}, {4, 5}, {5, 4}}));
}

TEST(WideLine, CoverageTestAgreesWithTheSpans) {
    const Pixels spans = wide(3, 40, 57, 11, 4);
    for (int y = 0; y < 60; ++y) {
        for (int x = 0; x < 70; ++x) {
            EXPECT_EQ(spans.count({x, y}) == 1,
                      qv5::detail::wide_line_covers(3, 40, 57, 11, 4, x, y))
                << x << "," << y;
        }
    }
}

TEST(WideLine, HugeCoordinatesStayInsideTheBitmap) {
    const Pixels band = wide(INT_MIN, INT_MIN, INT_MAX, INT_MAX, 2, 8, 8);
    for (const auto& [x, y] : band) {
        EXPECT_TRUE(x >= 0 && x < 8 && y >= 0 && y < 8);
    }
    EXPECT_TRUE(band.count({3, 3}));
}

TEST(PolygonFill, SquareFillsLeftAndTopEdgesOnly) {
    Pixels expected;
    for (int y = 0; y < 10; ++y) {
        for (int x = 0; x < 10; ++x) {
            expected.insert({x, y});
        }
    }
    EXPECT_EQ(polygon({{0, 0}, {10, 0}, {10, 10}, {0, 10}}), expected);
}

TEST(PolygonFill, TriangleDropsCentresOnItsRightEdge) {
    // Row y runs from x = 0 (left edge, kept) to the hypotenuse x = 8 - y (right edge, dropped).
    Pixels expected;
    for (int y = 0; y < 8; ++y) {
        for (int x = 0; x < 8 - y; ++x) {
            expected.insert({x, y});
        }
    }
    EXPECT_EQ(polygon({{0, 0}, {8, 0}, {0, 8}}), expected);
    EXPECT_EQ(expected.size(), 36u);
}

TEST(PolygonFill, TriangleKeepsCentresOnItsLeftEdge) {
    // Row y runs from the hypotenuse x = 8 - y (left edge, kept) to x = 8 (dropped).
    Pixels expected;
    for (int y = 0; y < 8; ++y) {
        for (int x = 8 - y; x < 8; ++x) {
            expected.insert({x, y});
        }
    }
    EXPECT_EQ(polygon({{8, 0}, {8, 8}, {0, 8}}), expected);
    EXPECT_EQ(expected.size(), 28u);
}

TEST(PolygonFill, SelfCrossingOutlineFillsByEvenOdd) {
    // Two overlapping squares traced as one outline: the overlap is crossed twice, so empty.
    const Pixels bow = polygon({{0, 0}, {6, 0}, {6, 6}, {2, 6}, {2, 2}, {8, 2}, {8, 8}, {0, 8}});
    EXPECT_TRUE(bow.count({1, 1}));
    EXPECT_FALSE(bow.count({3, 3}));
    EXPECT_TRUE(bow.count({7, 3}));
}

TEST(PolygonFill, ClippedToTheBitmapAndSafeWithHugeVertices) {
    const Pixels all = polygon({{INT_MIN, INT_MIN}, {INT_MAX, INT_MIN}, {INT_MAX, INT_MAX}}, 5, 5);
    for (const auto& [x, y] : all) {
        EXPECT_TRUE(x >= 0 && x < 5 && y >= 0 && y < 5);
    }
    EXPECT_TRUE(polygon({{1, 1}, {4, 1}}, 5, 5).empty());
}

} // namespace
