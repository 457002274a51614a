// The library's own fast path to a point's grid. Internal header; never installed.
#ifndef QV5_GEOMETRY_POINT_ACCESS_H
#define QV5_GEOMETRY_POINT_ACCESS_H

#include "qv5/geopoint.h"

namespace qv5::detail {

/// Reads a point's cached grid without a call into the point, for the element code that asks
/// for grids on every station and offset.
struct PointAccess {
    /// The cached grid when the point holds one, else null.
    static const geo_nee* cached_grid(const CGeoPoint& point) {
        return (point.m_flags & CGeoPoint::PT_GRID) != 0 ? &point.m_grid : nullptr;
    }
};

/// The point's grid, derived (and cached in the point) if needed: what GetGrid gives.
inline geo_nee grid_of(CGeoPoint& point) {
    if (const geo_nee* cached = PointAccess::cached_grid(point)) {
        return *cached;
    }
    geo_nee grid;
    return point.GetGrid(grid);
}

/// The grid a temporary copy of the point would derive; the point itself is left as it is, so
/// a later change of its station still reaches it.
inline geo_nee grid_of_copy(const CGeoPoint& point) {
    if (const geo_nee* cached = PointAccess::cached_grid(point)) {
        return *cached;
    }
    CGeoPoint copy(point);
    geo_nee grid;
    return copy.GetGrid(grid);
}

} // namespace qv5::detail

#endif // QV5_GEOMETRY_POINT_ACCESS_H
