/// @file geoadjust.h
/// The horizontal similarity and the vertical inclined plane that a site calibration applies
/// after the projection.
#ifndef QV5_GEOADJUST_H
#define QV5_GEOADJUST_H

#include "qv5/export.h"
#include "qv5/geodef.h"

/// A plane similarity about an origin: rotation, scale and shift of north and east.
///
/// Forward takes projected coordinates to site coordinates:
///   east'  = s sin(theta) dN + s cos(theta) dE + origin.east + shiftEast
///   north' = s cos(theta) dN - s sin(theta) dE + origin.north + shiftNorth
/// with dN, dE the offsets from the origin; a positive rotation turns north towards east.
/// Reverse undoes it exactly. The elevation is never touched.
///
/// A zero scale has no inverse: such an adjustment computes no reverse coefficients, and its
/// Reverse writes `GEO_NULL` into north and east.
class QV5_API CGeoHorizontalAdjustment {
public:
    /// @param origin the point about which the adjustment rotates and scales (copied)
    /// @param scale plain factor
    /// @param rotation radians, clockwise (north towards east)
    /// @param shiftNorth,shiftEast metres
    CGeoHorizontalAdjustment(geo_nee const& origin, double scale, double rotation,
                             double shiftNorth, double shiftEast);
    CGeoHorizontalAdjustment(const CGeoHorizontalAdjustment& other);
    CGeoHorizontalAdjustment& operator=(const CGeoHorizontalAdjustment& other);
    virtual ~CGeoHorizontalAdjustment();

    /// Scale factor.
    double Scale() const;
    /// Rotation, radians.
    double Rotation() const;
    /// Shift of north, metres.
    double ShiftNorth() const;
    /// Shift of east, metres.
    double ShiftEast() const;

    /// Projected to site, in place. Nothing happens for the identity (scale 1, no rotation, no
    /// shift) or when north or east is `GEO_NULL`.
    void Forward(geo_nee& p);
    /// Site to projected, in place, with the same guards as Forward.
    void Reverse(geo_nee& p);

private:
    double m_scale;
    double m_rotation;
    double m_shiftNorth;
    double m_shiftEast;
    double m_reverseA; // sin(-theta) / s
    double m_reverseB; // cos(-theta) / s
    double m_forwardShiftNorth;
    double m_forwardShiftEast;
    double m_scaledSin; // s sin(theta)
    double m_scaledCos; // s cos(theta)
    double m_reverseShiftNorth;
    double m_reverseShiftEast;
    geo_nee m_origin;
    int m_identity;
};

/// An inclined plane added to the elevation: a height shift and slopes north and east about an
/// origin.
///
/// Forward: elev' = elev + shift + (north - origin.north) kN + (east - origin.east) kE;
/// Reverse subtracts the same. North and east are never changed, so a chain that applies a
/// horizontal adjustment first must reverse this one first.
class QV5_API CGeoVerticalAdjustment {
public:
    /// @param origin the point about which the plane tilts (copied; its elevation is not used)
    /// @param verticalShift metres
    /// @param slopeNorth,slopeEast metres per metre
    CGeoVerticalAdjustment(geo_nee const& origin, double verticalShift, double slopeNorth,
                           double slopeEast);
    CGeoVerticalAdjustment(const CGeoVerticalAdjustment& other);
    CGeoVerticalAdjustment& operator=(const CGeoVerticalAdjustment& other);
    virtual ~CGeoVerticalAdjustment();

    /// Height shift, metres.
    double VerticalShift() const;
    /// Slope towards north, metres per metre.
    double SlopeNorth() const;
    /// Slope towards east, metres per metre.
    double SlopeEast() const;

    /// Adds the plane to the elevation, in place. Nothing happens for the identity (no shift,
    /// no slopes) or when north, east or elevation is `GEO_NULL`.
    void Forward(geo_nee& p);
    /// Subtracts the plane from the elevation, with the same guards as Forward.
    void Reverse(geo_nee& p);

private:
    geo_nee m_origin;
    double m_slopeEast;
    double m_slopeNorth;
    double m_shift;
    int m_identity;
};

#endif // QV5_GEOADJUST_H
