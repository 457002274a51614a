// The horizontal similarity and the vertical inclined plane of a site calibration.
#include "qv5/geoadjust.h"

#include "core/null_records.h"

#include <cmath>

CGeoHorizontalAdjustment::CGeoHorizontalAdjustment(geo_nee const& origin, double scale,
                                                   double rotation, double shiftNorth,
                                                   double shiftEast)
    : m_scale(scale), m_rotation(rotation), m_shiftNorth(shiftNorth), m_shiftEast(shiftEast),
      m_reverseA(0.0), m_reverseB(0.0), m_forwardShiftNorth(shiftNorth),
      m_forwardShiftEast(shiftEast), m_scaledSin(scale * std::sin(rotation)),
      m_scaledCos(scale * std::cos(rotation)), m_reverseShiftNorth(0.0), m_reverseShiftEast(0.0),
      m_origin(origin), m_identity(0) {
    if (scale == 0.0) {
        return; // no inverse: the reverse coefficients and the identity flag stay as they are
    }
    const double sin_back = std::sin(-rotation);
    const double cos_back = std::cos(-rotation);
    m_reverseA = sin_back / scale;
    m_reverseB = cos_back / scale;
    const double minus_inverse_scale = -1.0 / scale;
    m_reverseShiftNorth = (cos_back * shiftNorth - sin_back * shiftEast) * minus_inverse_scale;
    m_reverseShiftEast = (sin_back * shiftNorth + cos_back * shiftEast) * minus_inverse_scale;
    m_identity = scale == 1.0 && rotation == 0.0 && shiftNorth == 0.0 && shiftEast == 0.0 ? 1 : 0;
}

CGeoHorizontalAdjustment::CGeoHorizontalAdjustment(const CGeoHorizontalAdjustment& other) = default;

CGeoHorizontalAdjustment&
CGeoHorizontalAdjustment::operator=(const CGeoHorizontalAdjustment& other) = default;

CGeoHorizontalAdjustment::~CGeoHorizontalAdjustment() = default;

double CGeoHorizontalAdjustment::Scale() const {
    return m_scale;
}

double CGeoHorizontalAdjustment::Rotation() const {
    return m_rotation;
}

double CGeoHorizontalAdjustment::ShiftNorth() const {
    return m_shiftNorth;
}

double CGeoHorizontalAdjustment::ShiftEast() const {
    return m_shiftEast;
}

void CGeoHorizontalAdjustment::Forward(geo_nee& p) {
    if (m_identity != 0 || !qv5::detail::has_plan(p)) {
        return;
    }
    const double dn = p.north - m_origin.north;
    const double de = p.east - m_origin.east;
    p.east = m_scaledSin * dn + m_scaledCos * de + m_origin.east + m_forwardShiftEast;
    p.north = m_scaledCos * dn - m_scaledSin * de + m_origin.north + m_forwardShiftNorth;
}

void CGeoHorizontalAdjustment::Reverse(geo_nee& p) {
    if (m_identity != 0 || !qv5::detail::has_plan(p)) {
        return;
    }
    if (m_scale == 0.0) {
        // Every point went to the same place: there is no way back.
        p.north = GEO_NULL;
        p.east = GEO_NULL;
        return;
    }
    const double dn = p.north - m_origin.north;
    const double de = p.east - m_origin.east;
    p.east = m_reverseA * dn + m_reverseB * de + m_origin.east + m_reverseShiftEast;
    p.north = m_reverseB * dn - m_reverseA * de + m_origin.north + m_reverseShiftNorth;
}

CGeoVerticalAdjustment::CGeoVerticalAdjustment(geo_nee const& origin, double verticalShift,
                                               double slopeNorth, double slopeEast)
    : m_origin(origin), m_slopeEast(slopeEast), m_slopeNorth(slopeNorth), m_shift(verticalShift),
      m_identity(slopeNorth == 0.0 && slopeEast == 0.0 && verticalShift == 0.0 ? 1 : 0) {}

CGeoVerticalAdjustment::CGeoVerticalAdjustment(const CGeoVerticalAdjustment& other) = default;

CGeoVerticalAdjustment&
CGeoVerticalAdjustment::operator=(const CGeoVerticalAdjustment& other) = default;

CGeoVerticalAdjustment::~CGeoVerticalAdjustment() = default;

double CGeoVerticalAdjustment::VerticalShift() const {
    return m_shift;
}

double CGeoVerticalAdjustment::SlopeNorth() const {
    return m_slopeNorth;
}

double CGeoVerticalAdjustment::SlopeEast() const {
    return m_slopeEast;
}

void CGeoVerticalAdjustment::Forward(geo_nee& p) {
    if (m_identity != 0 || !qv5::detail::has_3d(p)) {
        return;
    }
    p.elev = p.elev + m_shift + (p.north - m_origin.north) * m_slopeNorth +
             (p.east - m_origin.east) * m_slopeEast;
}

void CGeoVerticalAdjustment::Reverse(geo_nee& p) {
    if (m_identity != 0 || !qv5::detail::has_3d(p)) {
        return;
    }
    p.elev = p.elev - m_shift - (p.north - m_origin.north) * m_slopeNorth -
             (p.east - m_origin.east) * m_slopeEast;
}
