// CSiteWnd: site coordinates to window pixels.
#include "qv5/sitewnd.h"

#include "core/angles.h"

#include <cmath>
#include <cstdint>
#include <limits>

namespace {

/// Rounding offset of the pixel computation: adding a half and truncating rounds positive
/// values to nearest but moves negative ones toward zero. Hosts' drawings line up with it.
constexpr double kPixelRounding = 0.5;

/// a + b, saturating at the limits of int.
int saturated_sum(int a, int b) {
    const std::int64_t sum = static_cast<std::int64_t>(a) + b;
    if (sum > std::numeric_limits<int>::max()) {
        return std::numeric_limits<int>::max();
    }
    if (sum < std::numeric_limits<int>::min()) {
        return std::numeric_limits<int>::min();
    }
    return static_cast<int>(sum);
}

std::uint32_t key_of(const void* entry) {
    return *static_cast<const std::uint32_t*>(entry);
}

} // namespace

CSiteWnd::CSiteWnd()
    : m_centreX(0.0), m_centreY(0.0), m_rotation(0.0), m_cos(1.0), m_sin(0.0), m_localeX(0.0),
      m_localeY(0.0), m_localeZ(0.0), m_scale(1.0), m_width(0), m_height(0) {}

CSiteWnd::CSiteWnd(const CSiteWnd& other) = default;

CSiteWnd& CSiteWnd::operator=(const CSiteWnd& other) = default;

CSiteWnd::~CSiteWnd() = default;

void CSiteWnd::SetWorldLocale(double x0, double y0, double z0) {
    m_localeX = x0;
    m_localeY = y0;
    m_localeZ = z0;
}

void CSiteWnd::GetWorldLocale(double& x0, double& y0, double& z0) {
    x0 = m_localeX;
    y0 = m_localeY;
    z0 = m_localeZ;
}

double CSiteWnd::WorldLimitedX(double x) {
    return x - m_localeX;
}

double CSiteWnd::WorldLimitedY(double y) {
    return y - m_localeY;
}

double CSiteWnd::WorldLimitedZ(double z) {
    return z - m_localeZ;
}

int CSiteWnd::WorldToWindow(double x, double y, int& px, int& py) {
    const double dx = x - m_centreX;
    const double dy = m_centreY - y; // world y grows upward, pixel rows downward
    double u = dx;
    double w = dy;
    if (m_rotation != 0.0) {
        u = m_cos * dx + m_sin * dy;
        w = m_cos * dy - m_sin * dx;
    }
    px = saturated_sum(qv5::detail::truncate_to_int(m_scale * u + kPixelRounding), m_width / 2);
    py = saturated_sum(qv5::detail::truncate_to_int(m_scale * w + kPixelRounding), m_height / 2);
    return px >= 0 && px <= m_width && py >= 0 && py <= m_height ? 1 : 0;
}

void CSiteWnd::SetViewCentre(double cx, double cy) {
    m_centreX = cx;
    m_centreY = cy;
}

void CSiteWnd::GetViewCentre(double& cx, double& cy) const {
    cx = m_centreX;
    cy = m_centreY;
}

void CSiteWnd::SetRotation(double radians) {
    m_rotation = radians;
    m_cos = std::cos(radians);
    m_sin = std::sin(radians);
}

double CSiteWnd::Rotation() const {
    return m_rotation;
}

void CSiteWnd::SetScale(double pixelsPerUnit) {
    m_scale = pixelsPerUnit;
}

double CSiteWnd::Scale() const {
    return m_scale;
}

void CSiteWnd::SetWindowSize(int width, int height) {
    m_width = width;
    m_height = height;
}

void CSiteWnd::GetWindowSize(int& width, int& height) const {
    width = m_width;
    height = m_height;
}

int CSiteWnd::compare(const void* a, const void* b) {
    const void* record_a = a != nullptr ? *static_cast<const void* const*>(a) : nullptr;
    const void* record_b = b != nullptr ? *static_cast<const void* const*>(b) : nullptr;
    if (record_a == nullptr || record_b == nullptr) {
        return record_a == record_b ? 0 : (record_a == nullptr ? -1 : 1);
    }
    const std::uint32_t key_a = key_of(record_a);
    const std::uint32_t key_b = key_of(record_b);
    if (key_a > key_b) {
        return 1;
    }
    return key_a < key_b ? -1 : 0;
}
