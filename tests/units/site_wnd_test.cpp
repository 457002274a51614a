#include "qv5/sitewnd.h"

#include <gtest/gtest.h>

#include <climits>
#include <cmath>
#include <cstdint>
#include <cstdlib>

namespace {

/// Reaches the protected members as a host's derived window does.
class HostWindow : public CSiteWnd {
public:
    using CSiteWnd::compare;
    using CSiteWnd::WorldLimitedX;
    using CSiteWnd::WorldLimitedY;
    using CSiteWnd::WorldLimitedZ;
};

HostWindow window(double cx, double cy, double scale, int width, int height) {
    HostWindow w;
    w.SetViewCentre(cx, cy);
    w.SetScale(scale);
    w.SetWindowSize(width, height);
    return w;
}

TEST(SiteWnd, NewViewIsUnrotatedAtUnitScale) {
    HostWindow w;
    double cx = -1;
    double cy = -1;
    int width = -1;
    int height = -1;
    w.GetViewCentre(cx, cy);
    w.GetWindowSize(width, height);
    EXPECT_EQ(cx, 0.0);
    EXPECT_EQ(cy, 0.0);
    EXPECT_EQ(w.Rotation(), 0.0);
    EXPECT_EQ(w.Scale(), 1.0);
    EXPECT_EQ(width, 0);
    EXPECT_EQ(height, 0);
    double x0 = -1;
    double y0 = -1;
    double z0 = -1;
    w.GetWorldLocale(x0, y0, z0);
    EXPECT_EQ(x0 + y0 + z0, 0.0);
}

TEST(SiteWnd, ViewCentreMapsToTheWindowCentre) {
    HostWindow w = window(5000.0, 2000.0, 2.5, 640, 481);
    int px = -1;
    int py = -1;
    EXPECT_EQ(w.WorldToWindow(5000.0, 2000.0, px, py), 1);
    EXPECT_EQ(px, 320);
    EXPECT_EQ(py, 240); // 481 / 2 in whole pixels
}

TEST(SiteWnd, NorthIsUpAndEastIsRight) {
    HostWindow w = window(0.0, 0.0, 10.0, 200, 100);
    int px = 0;
    int py = 0;
    w.WorldToWindow(3.0, 2.0, px, py);
    EXPECT_EQ(px, 100 + 30);
    EXPECT_EQ(py, 50 - 20 + 1); // -20 + 0.5 truncates toward zero: -19
}

TEST(SiteWnd, EdgesCountAsInside) {
    HostWindow w = window(0.0, 0.0, 1.0, 100, 60);
    int px = 0;
    int py = 0;
    EXPECT_EQ(w.WorldToWindow(50.0, 0.0, px, py), 1);
    EXPECT_EQ(px, 100);
    EXPECT_EQ(w.WorldToWindow(0.0, -30.0, px, py), 1);
    EXPECT_EQ(py, 60);
    EXPECT_EQ(w.WorldToWindow(51.0, 0.0, px, py), 0);
    EXPECT_EQ(px, 101); // written even outside
    EXPECT_EQ(w.WorldToWindow(-50.0, 30.0, px, py), 1);
    EXPECT_EQ(px, 1); // -50 + 0.5 truncates to -49
    EXPECT_EQ(py, 1); // -30 + 0.5 truncates to -29
    EXPECT_EQ(w.WorldToWindow(0.0, 31.0, px, py), 1);
    EXPECT_EQ(py, 0); // -31 + 0.5 truncates to -30: still on the edge
    EXPECT_EQ(w.WorldToWindow(0.0, 32.0, px, py), 0);
    EXPECT_EQ(py, -1);
}

TEST(SiteWnd, NegativeOffsetsRoundTowardZero) {
    HostWindow w = window(0.0, 0.0, 1.0, 100, 100);
    int px = 0;
    int py = 0;
    w.WorldToWindow(-0.7, 0.0, px, py);
    EXPECT_EQ(px, 50); // truncation of -0.2, not 49
    w.WorldToWindow(0.7, 0.0, px, py);
    EXPECT_EQ(px, 51); // 1.2 truncates to 1
    w.WorldToWindow(-1.7, 0.0, px, py);
    EXPECT_EQ(px, 49);
}

TEST(SiteWnd, RotationTurnsTheView) {
    HostWindow w = window(0.0, 0.0, 1.0, 100, 100);
    w.SetRotation(1.5707963267948966);
    EXPECT_EQ(w.Rotation(), 1.5707963267948966);
    int px = 0;
    int py = 0;
    // A quarter turn: u = cos dx + sin dy, w = cos dy - sin dx with dy = -y.
    w.WorldToWindow(10.0, 0.0, px, py);
    EXPECT_EQ(px, 50 + 0); // cos(pi/2) x 10 = 6e-16, + 0.5 truncates to 0
    EXPECT_EQ(py, 50 - 9); // -10 + 0.5 truncates to -9
    w.WorldToWindow(0.0, 10.0, px, py);
    EXPECT_EQ(px, 50 - 9);
    EXPECT_EQ(py, 50 + 0);
    w.SetRotation(0.0);
    w.WorldToWindow(10.0, 0.0, px, py);
    EXPECT_EQ(px, 60);
    EXPECT_EQ(py, 50);
}

TEST(SiteWnd, RotationUsesItsCosineAndSine) {
    HostWindow w = window(100.0, 200.0, 4.0, 800, 600);
    const double angle = 0.3;
    w.SetRotation(angle);
    int px = 0;
    int py = 0;
    const double dx = 130.0 - 100.0;
    const double dy = 200.0 - 180.0;
    w.WorldToWindow(130.0, 180.0, px, py);
    EXPECT_EQ(px,
              static_cast<int>(4.0 * (std::cos(angle) * dx + std::sin(angle) * dy) + 0.5) + 400);
    EXPECT_EQ(py,
              static_cast<int>(4.0 * (std::cos(angle) * dy - std::sin(angle) * dx) + 0.5) + 300);
}

TEST(SiteWnd, FarPointsSaturateInsteadOfOverflowing) {
    HostWindow w = window(0.0, 0.0, 1e6, 1000, 1000);
    int px = 0;
    int py = 0;
    EXPECT_EQ(w.WorldToWindow(1e300, -1e300, px, py), 0);
    EXPECT_EQ(px, INT_MAX);
    EXPECT_EQ(py, INT_MAX);
    EXPECT_EQ(w.WorldToWindow(-1e300, 1e300, px, py), 0);
    EXPECT_EQ(px, INT_MIN + 500);
    EXPECT_EQ(w.WorldToWindow(std::nan(""), 0.0, px, py), 1);
    EXPECT_EQ(px, 500); // not a number has no pixel; it lands at the centre column
}

TEST(SiteWnd, WorldLocaleIsSubtracted) {
    HostWindow w;
    w.SetWorldLocale(5000.0, 2000.0, 100.0);
    double x0 = 0;
    double y0 = 0;
    double z0 = 0;
    w.GetWorldLocale(x0, y0, z0);
    EXPECT_EQ(x0, 5000.0);
    EXPECT_EQ(y0, 2000.0);
    EXPECT_EQ(z0, 100.0);
    EXPECT_EQ(w.WorldLimitedX(5012.25), 12.25);
    EXPECT_EQ(w.WorldLimitedY(1990.5), -9.5);
    EXPECT_EQ(w.WorldLimitedZ(100.0), 0.0);
}

TEST(SiteWnd, CopiesCarryTheView) {
    HostWindow w = window(1.0, 2.0, 3.0, 40, 50);
    w.SetRotation(0.25);
    w.SetWorldLocale(7.0, 8.0, 9.0);
    const CSiteWnd copy(w);
    CSiteWnd assigned;
    assigned = w;
    const CSiteWnd* views[] = {&copy, &assigned};
    for (const CSiteWnd* c : views) {
        double cx = 0;
        double cy = 0;
        c->GetViewCentre(cx, cy);
        EXPECT_EQ(cx, 1.0);
        EXPECT_EQ(cy, 2.0);
        EXPECT_EQ(c->Rotation(), 0.25);
        EXPECT_EQ(c->Scale(), 3.0);
    }
}

struct Record {
    std::uint32_t key;
    double payload;
};

TEST(SiteWnd, CompareOrdersRecordsByTheirFirstField) {
    Record a{5, 0.0};
    Record b{7, 0.0};
    Record c{5, 1.0};
    const Record* pa = &a;
    const Record* pb = &b;
    const Record* pc = &c;
    EXPECT_EQ(HostWindow::compare(&pa, &pb), -1);
    EXPECT_EQ(HostWindow::compare(&pb, &pa), 1);
    EXPECT_EQ(HostWindow::compare(&pa, &pc), 0);
    Record big{0xFFFFFFFFu, 0.0};
    const Record* pbig = &big;
    EXPECT_EQ(HostWindow::compare(&pbig, &pa), 1); // unsigned keys
}

TEST(SiteWnd, CompareSortsWithQsort) {
    Record records[] = {{30, 0}, {10, 0}, {20, 0}, {0xFFFFFFF0u, 0}, {0, 0}};
    const Record* pointers[5];
    for (int i = 0; i < 5; ++i) {
        pointers[i] = &records[i];
    }
    std::qsort(pointers, 5, sizeof pointers[0], &HostWindow::compare);
    const std::uint32_t expected[] = {0, 10, 20, 30, 0xFFFFFFF0u};
    for (int i = 0; i < 5; ++i) {
        EXPECT_EQ(pointers[i]->key, expected[i]);
    }
}

TEST(SiteWnd, CompareOrdersNullRecordsFirst) {
    Record a{5, 0.0};
    const Record* pa = &a;
    const Record* none = nullptr;
    EXPECT_EQ(HostWindow::compare(&none, &pa), -1);
    EXPECT_EQ(HostWindow::compare(&pa, &none), 1);
    EXPECT_EQ(HostWindow::compare(&none, &none), 0);
    EXPECT_EQ(HostWindow::compare(nullptr, &pa), -1);
}

} // namespace
