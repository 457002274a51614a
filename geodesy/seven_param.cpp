// CGeo7PTrans: the seven-parameter similarity about an origin.
#include "qv5/geo7ptrans.h"

#include "core/null_records.h"
#include "geodesy/gauss_jordan.h"
#include "geodesy/seven_param.h"

#include <cmath>

namespace qv5::detail {

void seven_param_matrix(double x, double y, double z, double s, double m[9]) {
    const double sx = std::sin(x);
    const double cx = std::cos(x);
    const double sy = std::sin(y);
    const double cy = std::cos(y);
    const double sz = std::sin(z);
    const double cz = std::cos(z);
    m[0] = cz * cy * s;
    m[1] = (cz * sy * sx + cx * sz) * s;
    m[2] = (sz * sx - cz * cx * sy) * s;
    m[3] = -cy * sz * s;
    m[4] = (cz * cx - sz * sy * sx) * s;
    m[5] = (cx * sz * sy + cz * sx) * s;
    m[6] = sy * s;
    m[7] = -cy * sx * s;
    m[8] = cy * cx * s;
}

void multiply_3x3(const double m[9], const double v[3], double w[3]) {
    for (int i = 0; i < 3; ++i) {
        double sum = 0.0;
        for (int k = 0; k < 3; ++k) {
            sum += m[k + 3 * i] * v[k];
        }
        w[i] = sum;
    }
}

} // namespace qv5::detail

using namespace qv5::detail;

namespace {

constexpr int kDimension = 3;

/// Copies the elements of a matrix of the same orders without reallocating, so that a copy
/// never leaves a matrix without its buffer.
void copy_elements(CGeoMatrix& to, const CGeoMatrix& from) {
    for (int r = 0; r < from.RowOrder(); ++r) {
        for (int c = 0; c < from.ColOrder(); ++c) {
            to.Set(r, c, from.Get(r, c));
        }
    }
}

bool has_null(const geo_nee& p) {
    return !qv5::detail::has_3d(p);
}

} // namespace

CGeo7PTrans::CGeo7PTrans()
    : m_rotation(kDimension, kDimension), m_shift(kDimension, 1), m_result(kDimension, 1),
      m_work(kDimension, 1), m_rotX(0.0), m_rotY(0.0), m_rotZ(0.0), m_shiftX(0.0), m_shiftY(0.0),
      m_shiftZ(0.0), m_origin{0.0, 0.0, 0.0} {
    for (int i = 0; i < kDimension; ++i) {
        m_rotation.Set(i, i, 1.0);
    }
}

CGeo7PTrans::CGeo7PTrans(geo_nee const& origin, double rotX, double rotY, double rotZ,
                         double shiftX, double shiftY, double /*shiftZ*/, double scale)
    : CGeo7PTrans() {
    // The Z shift has always been taken from the Y argument here; Set gives a separate one.
    Set(origin, rotX, rotY, rotZ, shiftX, shiftY, shiftY, scale);
}

CGeo7PTrans::CGeo7PTrans(const CGeo7PTrans& other) : CGeo7PTrans() {
    const std::lock_guard<std::mutex> hold(other.m_lock);
    CopyParameters(other);
}

void CGeo7PTrans::CopyParameters(const CGeo7PTrans& other) {
    m_origin = other.m_origin;
    m_shiftX = other.m_shiftX;
    m_shiftY = other.m_shiftY;
    m_shiftZ = other.m_shiftZ;
    copy_elements(m_shift, other.m_shift);
    copy_elements(m_rotation, other.m_rotation);
    m_rotX = other.m_rotX;
    m_rotY = other.m_rotY;
    m_rotZ = other.m_rotZ;
}

CGeo7PTrans::~CGeo7PTrans() = default;

void CGeo7PTrans::Set(geo_nee const& origin, double rotX, double rotY, double rotZ, double shiftX,
                      double shiftY, double shiftZ, double scale) {
    const std::lock_guard<std::mutex> hold(m_lock);
    m_origin = origin;
    m_rotX = rotX;
    m_rotY = rotY;
    m_rotZ = rotZ;
    m_shiftX = shiftX;
    m_shiftY = shiftY;
    m_shiftZ = shiftZ;
    Build(scale);
}

void CGeo7PTrans::Build(double scale) {
    double m[9];
    seven_param_matrix(m_rotX, m_rotY, m_rotZ, scale, m);
    for (int r = 0; r < kDimension; ++r) {
        for (int c = 0; c < kDimension; ++c) {
            m_rotation.Set(r, c, m[c + kDimension * r]);
        }
    }
    m_shift.Set(0, 0, m_shiftX);
    m_shift.Set(1, 0, m_shiftY);
    m_shift.Set(2, 0, m_shiftZ);
}

void CGeo7PTrans::Transform(geo_nee& p) {
    if (has_null(p)) {
        return;
    }
    const std::lock_guard<std::mutex> hold(m_lock);
    m_work.Set(0, 0, p.east - m_origin.east);
    m_work.Set(1, 0, p.north - m_origin.north);
    m_work.Set(2, 0, p.elev - m_origin.elev);
    for (int i = 0; i < kDimension; ++i) {
        double sum = 0.0;
        for (int k = 0; k < kDimension; ++k) {
            sum += m_rotation.Get(i, k) * m_work.Get(k, 0);
        }
        m_result.Set(i, 0, m_shift.Get(i, 0) + sum);
    }
    p.east = m_result.Get(0, 0) + m_origin.east;
    p.north = m_result.Get(1, 0) + m_origin.north;
    p.elev = m_result.Get(2, 0) + m_origin.elev;
}

void CGeo7PTrans::Untransform(geo_nee& p) {
    if (has_null(p)) {
        return;
    }
    const std::lock_guard<std::mutex> hold(m_lock);
    m_work.Set(0, 0, p.east - m_origin.east - m_shift.Get(0, 0));
    m_work.Set(1, 0, p.north - m_origin.north - m_shift.Get(1, 0));
    m_work.Set(2, 0, p.elev - m_origin.elev - m_shift.Get(2, 0));
    // The matrix is inverted afresh on every call, on the stack; when it has no inverse (a zero
    // scale) it is applied as it stands, as an unchecked inversion leaves it.
    double work[9];
    double inverse[9];
    for (int r = 0; r < kDimension; ++r) {
        for (int c = 0; c < kDimension; ++c) {
            work[c + kDimension * r] = m_rotation.Get(r, c);
        }
    }
    if (!gauss_jordan_invert(kDimension, work, inverse)) {
        for (int r = 0; r < kDimension; ++r) {
            for (int c = 0; c < kDimension; ++c) {
                inverse[c + kDimension * r] = m_rotation.Get(r, c);
            }
        }
    }
    const double v[3] = {m_work.Get(0, 0), m_work.Get(1, 0), m_work.Get(2, 0)};
    double w[3];
    multiply_3x3(inverse, v, w);
    for (int i = 0; i < kDimension; ++i) {
        m_result.Set(i, 0, w[i]);
    }
    p.east = m_result.Get(0, 0) + m_origin.east;
    p.north = m_result.Get(1, 0) + m_origin.north;
    p.elev = m_result.Get(2, 0) + m_origin.elev;
}

void CGeo7PTrans::RotateVector(geo_vector& v) {
    double m[9];
    for (int r = 0; r < kDimension; ++r) {
        for (int c = 0; c < kDimension; ++c) {
            m[c + kDimension * r] = m_rotation.Get(r, c);
        }
    }
    const double d[3] = {v.x - m_origin.east, v.y - m_origin.north, v.z - m_origin.elev};
    double w[3];
    multiply_3x3(m, d, w);
    v = geo_vector{w[0], w[1], w[2]};
}

double CGeo7PTrans::RotX() const {
    return m_rotX;
}

double CGeo7PTrans::RotY() const {
    return m_rotY;
}

double CGeo7PTrans::RotZ() const {
    return m_rotZ;
}

double CGeo7PTrans::ShiftX() const {
    return m_shiftX;
}

double CGeo7PTrans::ShiftY() const {
    return m_shiftY;
}

double CGeo7PTrans::ShiftZ() const {
    return m_shiftZ;
}

geo_nee& CGeo7PTrans::Origin() {
    return m_origin;
}

void CGeo7PTrans::operator=(CGeo7PTrans& other) {
    const std::lock_guard<std::mutex> hold(m_lock);
    CopyParameters(other);
}
