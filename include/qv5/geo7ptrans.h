/// @file geo7ptrans.h
/// The seven-parameter (Helmert) similarity transformation of three-dimensional coordinates.
#ifndef QV5_GEO7PTRANS_H
#define QV5_GEO7PTRANS_H

#include "qv5/export.h"
#include "qv5/geodef.h"
#include "qv5/geomatrix.h"

#include <mutex>

/// Three rotations, three shifts and a scale applied to a coordinate about an origin, and
/// undone.
///
/// The coordinate triple worked on is (X, Y, Z) = (east, north, elevation) of a `geo_nee`. The
/// rotation-and-scale matrix is M = s Rz(z) Ry(y) Rx(x) with coordinate-frame rotations, so for
/// small angles M ~ s [(1, z, -y), (-z, 1, x), (y, -x, 1)]; a point p becomes
/// M (p - origin) + shift + origin.
///
/// Thread safety: one object may be shared between threads. Set, Transform, Untransform and
/// operator= hold the object's own lock for their whole work (they share scratch vectors);
/// RotateVector and the accessors do not lock, so they must not run while another thread calls
/// Set or operator= on the same object.
class QV5_API CGeo7PTrans {
public:
    /// The identity: no rotation, no shift, scale 1, origin (0, 0, 0).
    CGeo7PTrans();
    /// The identity, then Set with these values except that `shiftY` is also used as the Z
    /// shift: the `shiftZ` argument of this constructor is ignored, as it always has been (hosts
    /// rely on it). Call Set to give a different Z shift.
    /// @param rotX,rotY,rotZ rotations about X (east), Y (north), Z (up), radians
    /// @param shiftX,shiftY shifts along east and north, metres
    /// @param scale plain factor: 1.0 leaves lengths unchanged
    CGeo7PTrans(geo_nee const& origin, double rotX, double rotY, double rotZ, double shiftX,
                double shiftY, double shiftZ, double scale);
    /// A copy with its own lock and its own matrices (deep copy). The source is locked while it
    /// is read.
    CGeo7PTrans(const CGeo7PTrans& other);
    virtual ~CGeo7PTrans();

    /// Stores the parameters and rebuilds the matrix and the shift vector, under the lock.
    /// @param shiftX,shiftY,shiftZ shifts along east, north and up, metres
    void Set(geo_nee const& origin, double rotX, double rotY, double rotZ, double shiftX,
             double shiftY, double shiftZ, double scale);

    /// Transforms a point in place, under the lock. A point with any `GEO_NULL` coordinate is
    /// left untouched.
    void Transform(geo_nee& p);
    /// Undoes Transform in place, under the lock (the matrix is inverted on each call; a matrix
    /// that cannot be inverted, as with scale 0, is applied as it stands). A point with any
    /// `GEO_NULL` coordinate is left untouched.
    void Untransform(geo_nee& p);
    /// Rotates and scales the offset of `v` (x east, y north, z up) from the origin, without
    /// the lock: v becomes M (v - origin). The origin is not added back and no shift is applied.
    void RotateVector(geo_vector& v);

    /// Rotation about X (east), radians.
    double RotX() const;
    /// Rotation about Y (north), radians.
    double RotY() const;
    /// Rotation about Z (up), radians.
    double RotZ() const;
    /// Shift along X (east), metres.
    double ShiftX() const;
    /// Shift along Y (north), metres.
    double ShiftY() const;
    /// Shift along Z (up), metres.
    double ShiftZ() const;
    /// The origin about which the transformation rotates and scales.
    geo_nee& Origin();

    /// Copies the origin, shifts, shift vector, matrix and rotations of `other`, holding this
    /// object's lock (not the other's).
    void operator=(CGeo7PTrans& other);

private:
    void Build(double scale);
    void CopyParameters(const CGeo7PTrans& other);

    CGeoMatrix m_rotation; // M, 3 x 3, scale folded in
    CGeoMatrix m_shift;    // T, 3 x 1
    CGeoMatrix m_result;   // scratch, 3 x 1
    CGeoMatrix m_work;     // scratch, 3 x 1
    double m_rotX;
    double m_rotY;
    double m_rotZ;
    double m_shiftX;
    double m_shiftY;
    double m_shiftZ;
    geo_nee m_origin;
    mutable std::mutex m_lock;
};

#endif // QV5_GEO7PTRANS_H
