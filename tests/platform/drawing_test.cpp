#include "qv5/hostfw.h"

#include <gtest/gtest.h>

#include <cairo.h>

#include <climits>
#include <cstdio>
#include <filesystem>
#include <fstream>
#include <iterator>
#include <string>

#include <unistd.h>

namespace {

constexpr COLORREF kWhite = RGB(255, 255, 255);
constexpr COLORREF kBlack = RGB(0, 0, 0);
constexpr COLORREF kGreen = RGB(0, 0xAF, 0);

/// A memory context with a fresh bitmap of the given size selected and filled white.
struct Canvas {
    CDC screen;
    CDC memory;
    CBitmap bitmap;
    CBitmap* previous = nullptr;

    Canvas(int width, int height) {
        memory.CreateCompatibleDC(&screen);
        bitmap.CreateCompatibleBitmap(&screen, width, height);
        previous = memory.SelectObject(&bitmap);
        memory.FillSolidRect(0, 0, width, height, kWhite);
    }
    ~Canvas() { memory.SelectObject(previous); }
};

std::string temp_path(const char* name) {
    return (std::filesystem::temp_directory_path() /
            (std::string("qv5_drawing_") + std::to_string(::getpid()) + "_" + name))
        .string();
}

TEST(Colour, RgbPacksRedLowAndBlueHigh) {
    EXPECT_EQ(RGB(0x12, 0x34, 0x56), 0x00563412u);
    EXPECT_EQ(GetRValue(0x00563412u), 0x12);
    EXPECT_EQ(GetGValue(0x00563412u), 0x34);
    EXPECT_EQ(GetBValue(0x00563412u), 0x56);
}

TEST(Rectangle, WidthAndHeightAreRightMinusLeftAndBottomMinusTop) {
    const CRect rect(10, 20, 110, 70);
    EXPECT_EQ(rect.Width(), 100);
    EXPECT_EQ(rect.Height(), 50);
    EXPECT_EQ(CRect(5, 5, 0, 0).Width(), -5);
}

TEST(Bitmap, CreateCompatibleBitmapReportsItsSize) {
    CDC screen;
    CBitmap bitmap;
    ASSERT_EQ(bitmap.CreateCompatibleBitmap(&screen, 640, 480), 1);
    BITMAP info{};
    EXPECT_NE(bitmap.GetBitmap(&info), 0);
    EXPECT_EQ(info.bmWidth, 640);
    EXPECT_EQ(info.bmHeight, 480);
    EXPECT_EQ(info.bmBitsPixel, 32);
    EXPECT_GE(info.bmWidthBytes, 640 * 4);
    EXPECT_EQ(bitmap.CreateCompatibleBitmap(&screen, 10, 10), 0); // already made
    EXPECT_EQ(bitmap.DeleteObject(), 1);
    EXPECT_EQ(bitmap.DeleteObject(), 0);
    EXPECT_EQ(bitmap.GetBitmap(&info), 0);
}

TEST(Bitmap, RefusesEmptyOversizedAndContextlessBitmaps) {
    CDC screen;
    CBitmap bitmap;
    EXPECT_EQ(bitmap.CreateCompatibleBitmap(nullptr, 10, 10), 0);
    EXPECT_EQ(bitmap.CreateCompatibleBitmap(&screen, 0, 10), 0);
    EXPECT_EQ(bitmap.CreateCompatibleBitmap(&screen, 10, -1), 0);
    EXPECT_EQ(bitmap.CreateCompatibleBitmap(&screen, 40000, 1), 0);
    EXPECT_EQ(bitmap.CreateCompatibleBitmap(&screen, 30000, 30000), 0);
    EXPECT_EQ(bitmap.IsCreated(), 0);
    EXPECT_EQ(bitmap.GetBitmap(nullptr), 0);
}

TEST(Pen, AcceptsSolidAndNullStylesOnly) {
    CPen solid, none, dashed, negative;
    EXPECT_EQ(solid.CreatePen(PS_SOLID, 2, kGreen), 1);
    EXPECT_EQ(none.CreatePen(PS_NULL, 1, kGreen), 1);
    EXPECT_EQ(dashed.CreatePen(1, 1, kGreen), 0);
    EXPECT_EQ(negative.CreatePen(PS_SOLID, -1, kGreen), 0);
}

TEST(SelectObject, ReturnsThePreviouslySelectedObject) {
    CDC screen;
    CDC memory;
    ASSERT_EQ(memory.CreateCompatibleDC(&screen), 1);
    EXPECT_EQ(memory.CreateCompatibleDC(&screen), 0);

    CBitmap first, second;
    first.CreateCompatibleBitmap(&screen, 4, 4);
    second.CreateCompatibleBitmap(&screen, 8, 8);
    CBitmap* original = memory.SelectObject(&first);
    ASSERT_NE(original, nullptr);
    BITMAP info{};
    ASSERT_NE(original->GetBitmap(&info), 0);
    EXPECT_EQ(info.bmWidth, 1); // the context's default 1 x 1 bitmap
    EXPECT_EQ(info.bmBitsPixel, 1);
    EXPECT_EQ(original->DeleteObject(), 0); // never released
    EXPECT_EQ(memory.SelectObject(&second), &first);
    EXPECT_EQ(memory.SelectObject(original), &second);

    CPen green, red;
    green.CreatePen(PS_SOLID, 2, kGreen);
    red.CreatePen(PS_SOLID, 2, RGB(0xC0, 0, 0));
    CPen* default_pen = memory.SelectObject(&green);
    ASSERT_NE(default_pen, nullptr);
    EXPECT_EQ(memory.SelectObject(&red), &green);
    EXPECT_EQ(memory.SelectObject(default_pen), &red);

    CBrush grey;
    grey.CreateSolidBrush(RGB(0xA0, 0xA0, 0xA0));
    CBrush* default_brush = memory.SelectObject(&grey);
    ASSERT_NE(default_brush, nullptr);
    EXPECT_EQ(memory.SelectObject(default_brush), &grey);
}

TEST(SelectObject, RefusesNullUncreatedAndScreenBitmaps) {
    CDC screen;
    CBitmap bitmap;
    CPen pen;
    CBrush brush;
    EXPECT_EQ(screen.SelectObject(static_cast<CBitmap*>(nullptr)), nullptr);
    EXPECT_EQ(screen.SelectObject(&pen), nullptr);
    EXPECT_EQ(screen.SelectObject(&brush), nullptr);
    bitmap.CreateCompatibleBitmap(&screen, 2, 2);
    EXPECT_EQ(screen.SelectObject(&bitmap), nullptr); // bitmaps go into memory contexts only
    CDC memory;
    memory.CreateCompatibleDC(nullptr);
    CBitmap uncreated;
    EXPECT_EQ(memory.SelectObject(&uncreated), nullptr);
}

TEST(GetPixel, ReadsBackEveryIntensityExactly) {
    Canvas canvas(256, 3);
    for (int i = 0; i < 256; ++i) {
        const auto v = static_cast<unsigned char>(i);
        canvas.memory.FillSolidRect(i, 0, 1, 1, RGB(v, 0, 0));
        canvas.memory.FillSolidRect(i, 1, 1, 1, RGB(0, v, 0));
        canvas.memory.FillSolidRect(i, 2, 1, 1, RGB(0, 0, v));
    }
    for (int i = 0; i < 256; ++i) {
        const auto v = static_cast<unsigned char>(i);
        EXPECT_EQ(canvas.memory.GetPixel(i, 0), RGB(v, 0, 0));
        EXPECT_EQ(canvas.memory.GetPixel(i, 1), RGB(0, v, 0));
        EXPECT_EQ(canvas.memory.GetPixel(i, 2), RGB(0, 0, v));
    }
}

TEST(GetPixel, OutsideTheBitmapOrWithoutOneIsInvalid) {
    Canvas canvas(4, 4);
    EXPECT_EQ(canvas.memory.GetPixel(-1, 0), CLR_INVALID);
    EXPECT_EQ(canvas.memory.GetPixel(4, 0), CLR_INVALID);
    EXPECT_EQ(canvas.memory.GetPixel(0, 4), CLR_INVALID);
    CDC screen;
    EXPECT_EQ(screen.GetPixel(0, 0), CLR_INVALID);
    CDC memory;
    memory.CreateCompatibleDC(&screen);
    EXPECT_EQ(memory.GetPixel(0, 0), CLR_INVALID);
}

TEST(GetPixel, NewBitmapStartsBlack) {
    CDC screen, memory;
    memory.CreateCompatibleDC(&screen);
    CBitmap bitmap;
    bitmap.CreateCompatibleBitmap(&screen, 3, 3);
    CBitmap* previous = memory.SelectObject(&bitmap);
    EXPECT_EQ(memory.GetPixel(1, 1), kBlack);
    memory.SelectObject(previous);
}

TEST(FillSolidRect, FillsRightAndBottomExclusiveAndClips) {
    Canvas canvas(10, 10);
    canvas.memory.FillSolidRect(2, 3, 4, 2, kGreen);
    for (int y = 0; y < 10; ++y) {
        for (int x = 0; x < 10; ++x) {
            const bool inside = x >= 2 && x < 6 && y >= 3 && y < 5;
            EXPECT_EQ(canvas.memory.GetPixel(x, y), inside ? kGreen : kWhite) << x << "," << y;
        }
    }
    canvas.memory.FillSolidRect(-5, -5, INT_MAX, 7, kBlack);
    EXPECT_EQ(canvas.memory.GetPixel(9, 1), kBlack);
    EXPECT_EQ(canvas.memory.GetPixel(9, 2), kWhite);
    canvas.memory.FillSolidRect(5, 5, 0, 3, kBlack);
    canvas.memory.FillSolidRect(5, 5, 3, -3, kBlack);
    EXPECT_EQ(canvas.memory.GetPixel(5, 5), kWhite);
    const CRect rect(7, 7, 9, 8);
    canvas.memory.FillSolidRect(&rect, kGreen);
    EXPECT_EQ(canvas.memory.GetPixel(8, 7), kGreen);
    EXPECT_EQ(canvas.memory.GetPixel(9, 7), kWhite);
    EXPECT_EQ(canvas.memory.GetPixel(8, 8), kWhite);
    canvas.memory.FillSolidRect(nullptr, kGreen);
}

TEST(LineTo, TwoPixelPenDrawsTheExactBand) {
    Canvas canvas(12, 10);
    CPen pen;
    pen.CreatePen(PS_SOLID, 2, kGreen);
    CPen* old = canvas.memory.SelectObject(&pen);
    canvas.memory.MoveTo(2, 5);
    EXPECT_EQ(canvas.memory.LineTo(6, 5), 1);
    canvas.memory.SelectObject(old);
    // Row 4 from 2 to 6 and row 5 from 1 to 6 (see the pixel rules in hostfw.h).
    for (int y = 0; y < 10; ++y) {
        for (int x = 0; x < 12; ++x) {
            const bool on = (y == 4 && x >= 2 && x <= 6) || (y == 5 && x >= 1 && x <= 6);
            EXPECT_EQ(canvas.memory.GetPixel(x, y), on ? kGreen : kWhite) << x << "," << y;
        }
    }
}

TEST(LineTo, OnePixelPenLeavesTheEndPointAndMovesThePosition) {
    Canvas canvas(10, 10);
    canvas.memory.MoveTo(1, 1);
    canvas.memory.LineTo(5, 1); // default pen: black, one pixel
    for (int x = 1; x < 5; ++x) {
        EXPECT_EQ(canvas.memory.GetPixel(x, 1), kBlack);
    }
    EXPECT_EQ(canvas.memory.GetPixel(5, 1), kWhite);
    EXPECT_EQ(canvas.memory.GetPixel(0, 1), kWhite);
    const CPoint position = canvas.memory.MoveTo(0, 0);
    EXPECT_EQ(position, CPoint(5, 1));
}

TEST(Polygon, FillsWithTheBrushAndOutlinesWithThePen) {
    Canvas canvas(16, 16);
    CBrush grey;
    grey.CreateSolidBrush(RGB(0xA0, 0xA0, 0xA0));
    CBrush* old_brush = canvas.memory.SelectObject(&grey);
    const CPoint square[] = {{2, 2}, {12, 2}, {12, 12}, {2, 12}};
    EXPECT_EQ(canvas.memory.Polygon(square, 4), 1);
    canvas.memory.SelectObject(old_brush);
    // The one-pixel black outline covers the whole border 2..12; the fill is inside it.
    for (int y = 0; y < 16; ++y) {
        for (int x = 0; x < 16; ++x) {
            COLORREF expected = kWhite;
            if (x >= 2 && x <= 12 && y >= 2 && y <= 12) {
                const bool border = x == 2 || x == 12 || y == 2 || y == 12;
                expected = border ? kBlack : RGB(0xA0, 0xA0, 0xA0);
            }
            EXPECT_EQ(canvas.memory.GetPixel(x, y), expected) << x << "," << y;
        }
    }
}

TEST(Polygon, NullPenLeavesTheFillEdgesVisible) {
    Canvas canvas(12, 12);
    CPen none;
    none.CreatePen(PS_NULL, 0, kBlack);
    CPen* old_pen = canvas.memory.SelectObject(&none);
    CBrush green;
    green.CreateSolidBrush(kGreen);
    CBrush* old_brush = canvas.memory.SelectObject(&green);
    const POINT triangle[] = {{0, 0}, {8, 0}, {0, 8}};
    EXPECT_EQ(canvas.memory.Polygon(triangle, 3), 1);
    canvas.memory.SelectObject(old_pen);
    canvas.memory.SelectObject(old_brush);
    EXPECT_EQ(canvas.memory.GetPixel(0, 0), kGreen);
    EXPECT_EQ(canvas.memory.GetPixel(7, 0), kGreen);
    EXPECT_EQ(canvas.memory.GetPixel(8, 0), kWhite);
    EXPECT_EQ(canvas.memory.GetPixel(3, 4), kGreen);
    EXPECT_EQ(canvas.memory.GetPixel(4, 4), kWhite); // on the slanting right edge
    EXPECT_EQ(canvas.memory.GetPixel(0, 7), kGreen);
    EXPECT_EQ(canvas.memory.GetPixel(0, 8), kWhite);
    EXPECT_EQ(canvas.memory.Polygon(triangle, 1), 0);
    EXPECT_EQ(canvas.memory.Polygon(static_cast<const POINT*>(nullptr), 3), 0);
}

TEST(Polyline, DrawsThroughEveryPointButTheLast) {
    Canvas canvas(10, 10);
    const POINT points[] = {{1, 1}, {4, 1}, {4, 4}};
    EXPECT_EQ(canvas.memory.Polyline(points, 3), 1);
    EXPECT_EQ(canvas.memory.GetPixel(1, 1), kBlack);
    EXPECT_EQ(canvas.memory.GetPixel(4, 1), kBlack);
    EXPECT_EQ(canvas.memory.GetPixel(4, 3), kBlack);
    EXPECT_EQ(canvas.memory.GetPixel(4, 4), kWhite);
    EXPECT_EQ(canvas.memory.MoveTo(0, 0), CPoint(0, 0)); // the position is not used or moved
    EXPECT_EQ(canvas.memory.Polyline(points, 1), 0);
}

TEST(Drawing, HugeCoordinatesNeverReachOutsideTheBitmap) {
    Canvas canvas(8, 8);
    CPen pen;
    pen.CreatePen(PS_SOLID, 2, kGreen);
    CPen* old = canvas.memory.SelectObject(&pen);
    canvas.memory.MoveTo(INT_MIN, INT_MIN);
    canvas.memory.LineTo(INT_MAX, INT_MAX);
    EXPECT_EQ(canvas.memory.GetPixel(4, 4), kGreen); // the diagonal through the bitmap
    const POINT far[] = {{INT_MIN, INT_MIN}, {INT_MAX, 3}, {INT_MIN, INT_MAX}};
    canvas.memory.Polygon(far, 3);
    canvas.memory.Polyline(far, 3);
    RECT rect{INT_MAX - 5, INT_MIN, INT_MAX, INT_MIN + 5};
    canvas.memory.DrawText(CString("far away"), &rect, DT_NOCLIP);
    canvas.memory.TextOut(INT_MIN, INT_MIN, CString("far away"));
    canvas.memory.SelectObject(old);
    EXPECT_EQ(canvas.memory.GetPixel(8, 8), CLR_INVALID);
}

TEST(Drawing, ScreenAndDefaultBitmapTakeNoDrawing) {
    CDC screen;
    screen.FillSolidRect(0, 0, 10, 10, kGreen);
    screen.MoveTo(0, 0);
    EXPECT_EQ(screen.LineTo(5, 5), 1);
    EXPECT_EQ(screen.GetPixel(0, 0), CLR_INVALID);
    EXPECT_EQ(screen.SavePng(CString(temp_path("screen.png").c_str())), 0);
    CDC memory;
    memory.CreateCompatibleDC(&screen);
    memory.FillSolidRect(0, 0, 1, 1, kGreen);
    EXPECT_EQ(memory.GetPixel(0, 0), CLR_INVALID);
    EXPECT_EQ(memory.DeleteDC(), 1);
    EXPECT_EQ(memory.DeleteDC(), 0);
}

TEST(Drawing, ABitmapDeletedWhileSelectedStaysUsableUntilReplaced) {
    CDC screen, memory;
    memory.CreateCompatibleDC(&screen);
    CBitmap* previous = nullptr;
    {
        CBitmap bitmap;
        bitmap.CreateCompatibleBitmap(&screen, 4, 4);
        previous = memory.SelectObject(&bitmap);
        bitmap.DeleteObject();
    }
    memory.FillSolidRect(0, 0, 4, 4, kGreen);
    EXPECT_EQ(memory.GetPixel(3, 3), kGreen);
    memory.SelectObject(previous);
    EXPECT_EQ(memory.GetPixel(3, 3), CLR_INVALID);
}

TEST(Text, TransparentTextDrawsOnlyTextColourInsideItsCell) {
    Canvas canvas(120, 30);
    EXPECT_EQ(canvas.memory.SetBkMode(TRANSPARENT), OPAQUE);
    EXPECT_EQ(canvas.memory.GetBkMode(), TRANSPARENT);
    EXPECT_EQ(canvas.memory.SetBkMode(7), 0);
    canvas.memory.FillSolidRect(0, 0, 120, 30, kGreen);
    RECT rect{10, 5, 110, 16};
    const int height = canvas.memory.DrawText(CString("Edge of way"), &rect, DT_NOCLIP);
    EXPECT_GT(height, 8);
    EXPECT_LT(height, 20);
    int black = 0;
    for (int y = 0; y < 30; ++y) {
        for (int x = 0; x < 120; ++x) {
            const COLORREF colour = canvas.memory.GetPixel(x, y);
            EXPECT_TRUE(colour == kBlack || colour == kGreen) << x << "," << y; // no smoothing
            if (colour == kBlack) {
                ++black;
                EXPECT_GE(x, 10);
                EXPECT_GE(y, 5);
                EXPECT_LT(y, 5 + height + 2);
            }
        }
    }
    EXPECT_GT(black, 20);
}

TEST(Text, OpaqueTextFillsItsCellWithTheBackgroundColour) {
    Canvas canvas(60, 20);
    canvas.memory.FillSolidRect(0, 0, 60, 20, kGreen);
    canvas.memory.SetBkColor(kWhite);
    EXPECT_EQ(canvas.memory.SetTextColor(RGB(0, 0, 0xC0)), kBlack);
    EXPECT_EQ(canvas.memory.TextOut(2, 2, CString("ii")), 1);
    EXPECT_EQ(canvas.memory.GetPixel(2, 2), kWhite); // top-left of the cell: background
    EXPECT_EQ(canvas.memory.GetPixel(50, 2), kGreen);
}

TEST(Text, ClippedTextStaysInsideTheRectangle) {
    Canvas canvas(100, 20);
    canvas.memory.SetBkMode(TRANSPARENT);
    RECT rect{5, 2, 9, 18};
    canvas.memory.DrawText(CString("WWWWWW"), &rect, DT_LEFT | DT_TOP | DT_SINGLELINE);
    bool inside = false;
    for (int y = 0; y < 20; ++y) {
        for (int x = 0; x < 100; ++x) {
            if (canvas.memory.GetPixel(x, y) != kWhite) {
                EXPECT_TRUE(x >= 5 && x < 9 && y >= 2 && y < 18) << x << "," << y;
                inside = true;
            }
        }
    }
    EXPECT_TRUE(inside);
    EXPECT_EQ(canvas.memory.DrawText(CString("x"), nullptr, 0), 0);
}

TEST(SavePng, WritesTheSelectedBitmap) {
    Canvas canvas(7, 5);
    canvas.memory.FillSolidRect(3, 2, 1, 1, kGreen);
    const std::string path = temp_path("bitmap.png");
    ASSERT_EQ(canvas.memory.SavePng(CString(path.c_str())), 1);
    cairo_surface_t* image = cairo_image_surface_create_from_png(path.c_str());
    ASSERT_EQ(cairo_surface_status(image), CAIRO_STATUS_SUCCESS);
    EXPECT_EQ(cairo_image_surface_get_width(image), 7);
    EXPECT_EQ(cairo_image_surface_get_height(image), 5);
    const unsigned char* data = cairo_image_surface_get_data(image);
    const int stride = cairo_image_surface_get_stride(image);
    const auto* pixel = reinterpret_cast<const std::uint32_t*>(data + 2 * stride + 3 * 4);
    EXPECT_EQ(*pixel & 0xFFFFFFu, 0x00AF00u); // 0x00RRGGBB
    cairo_surface_destroy(image);
    std::remove(path.c_str());
    EXPECT_EQ(canvas.memory.SavePng(CString("/nonexistent-folder/x.png")), 0);
}

TEST(SaveSvg, ReplaysTheRecordedCallsAsVectorDrawing) {
    Canvas canvas(40, 30);
    const std::string path = temp_path("picture.svg");
    EXPECT_EQ(canvas.memory.SaveSvg(CString(path.c_str())), 0); // not recording
    canvas.memory.SetSvgRecording(1);
    canvas.memory.FillSolidRect(0, 0, 40, 30, kWhite);
    CPen pen;
    pen.CreatePen(PS_SOLID, 2, kGreen);
    CPen* old = canvas.memory.SelectObject(&pen);
    const POINT points[] = {{10, 20}, {20, 20}, {30, 10}};
    canvas.memory.Polyline(points, 3);
    canvas.memory.SelectObject(old);
    canvas.memory.TextOut(2, 2, CString("A"));
    ASSERT_EQ(canvas.memory.SaveSvg(CString(path.c_str())), 1);
    std::ifstream in(path);
    const std::string svg((std::istreambuf_iterator<char>(in)), std::istreambuf_iterator<char>());
    EXPECT_NE(svg.find("<svg"), std::string::npos);
    EXPECT_NE(svg.find("width=\"40"), std::string::npos);
    EXPECT_NE(svg.find("68.627451%"), std::string::npos) << svg; // green 0xAF / 0xFF
    std::remove(path.c_str());
    EXPECT_EQ(canvas.memory.SaveSvg(CString("/nonexistent-folder/x.svg")), 0);
}

} // namespace
