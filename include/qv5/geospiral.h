/// @file geospiral.h
/// Transition spirals (clothoids) between a straight and a circular arc.
///
/// A spiral is defined by its start point, the tangent azimuth at its start, its direction, the
/// radius R of the arc it joins and its length L; its spiral constant is C = 2 R L and its
/// tangent has turned by l^2 / C at a distance l from its straight end. Positions come from the
/// clothoid series (geo_spiral_deltas) to a tolerance the caller gives, and keep the start
/// point's elevation and transformation link. Beyond its ends a spiral continues as the
/// straight and the arc it joins. Derived values are cached; a derivation that fails caches
/// `GEO_NULL` until the spiral is set again.
#ifndef QV5_GEOSPIRAL_H
#define QV5_GEOSPIRAL_H

#include "qv5/export.h"
#include "qv5/geodef.h"
#include "qv5/geopoint.h"

#include <cstddef>
#include <cstdint>

namespace qv5::detail {
struct SpiralAccess; // the library's own inversions with a layout kept between calls
} // namespace qv5::detail

/// A spiral from a straight (infinite radius) at its start to the arc radius at its end.
/// Before its start it continues as the straight, beyond its end as the arc.
class QV5_API CGeoEntrySpiral {
public:
    /// A spiral that knows nothing yet: `Direction()` reports `geodef_Left`, `Length()` null.
    CGeoEntrySpiral();
    CGeoEntrySpiral(const CGeoEntrySpiral& other);
    CGeoEntrySpiral& operator=(const CGeoEntrySpiral& other);
    virtual ~CGeoEntrySpiral();

    /// Defines the spiral.
    /// @param start the start point (copied)
    /// @param azimuth tangent azimuth at the start
    /// @param direction which way the spiral turns
    /// @param radius metres, radius of the arc it joins
    /// @param length metres along the spiral
    void Set(CGeoPoint& start, double azimuth, geodef_Direction direction, double radius,
             double length);

    /// The length; `GEO_NULL` (from then on) when never given.
    double Length();
    /// The radius of the adjoining arc; `GEO_NULL` (from then on) when never given.
    double Radius();
    /// Tangent azimuth at the start; `GEO_NULL` (from then on) when never given.
    double EntryAzimuth();
    /// The direction; `geodef_Left` when never given (an arc's default is `geodef_Right`).
    geodef_Direction Direction();
    /// Tangent azimuth at the end: the entry azimuth turned by L / (2 R) in the direction of
    /// the turn; `GEO_NULL` without an entry azimuth, length and radius.
    double ExitAzimuth();
    /// The start point; all coordinates `GEO_NULL` when never given.
    CGeoPoint& StartPt();
    /// The end point from the series to 1e-5 m; all coordinates `GEO_NULL` when the spiral
    /// has no length, start or azimuth, or its series does not converge.
    CGeoPoint& EndPt();

    /// Radius of curvature at a distance from the start: 2e100 (a straight) at and before the
    /// start, R L / s on the spiral, R at and beyond the end. `GEO_NULL` without a length and
    /// radius.
    double RadiusAtStation(double station);
    /// Tangent azimuth at a distance from the start: the entry azimuth turned by s^2 / C (not
    /// turned before the start). `GEO_NULL` without an entry azimuth, length and radius.
    double GridAzimuth(double station);
    /// Point at a distance from the start: on the entry straight before the start, from the
    /// series (to `tolerance` metres) on the spiral, on the arc of radius R beyond the end.
    /// `result` is first made an all-`GEO_NULL` grid point and stays so when the spiral cannot
    /// give the point (not set, or the series does not converge).
    void GridHorzPoint(double station, double tolerance, CGeoPoint& result);
    /// Station, offset and tangent azimuth of a point, by iterative projection from a starting
    /// station (at most 20 steps).
    /// @param point the point (its grid is derived if needed)
    /// @param startStation metres from the start: where the search begins (the point's last
    ///        known station makes it quick); `GEO_NULL` starts it at the spiral's start
    /// @param tolerance metres: the series tolerance, and how close along the tangent the
    ///        projection must come
    /// @param[out] station metres from the start; negative on the entry straight, beyond the
    ///        length on the arc
    /// @param[out] offset metres, positive right of the direction of travel
    /// @param[out] azimuth tangent azimuth at the station
    /// All three are `GEO_NULL` when the point has no plan coordinates, the spiral cannot give
    /// its points, or the projection has not converged in 20 steps.
    void GridDeltas(CGeoPoint& point, double startStation, double tolerance, double& station,
                    double& offset, double& azimuth);

private:
    friend struct qv5::detail::SpiralAccess;

    /// Size of the opaque block that holds the spiral's state.
    static constexpr std::size_t kStateSize =
        8 * sizeof(double) + 2 * sizeof(CGeoPoint) + sizeof(std::uint64_t);
    /// Alignment of that block.
    static constexpr std::size_t kStateAlign = alignof(CGeoPoint);

    /// The spiral's fields and caches, laid out by the library alone.
    alignas(kStateAlign) unsigned char m_state[kStateSize];
};

/// A spiral from the arc radius at its start to a straight at its end: the mirror image of
/// CGeoEntrySpiral. Before its start it continues as the arc, beyond its end as the straight.
/// It is set, like the entry spiral, by its start point and the tangent azimuth there.
class QV5_API CGeoExitSpiral {
public:
    /// A spiral that knows nothing yet: `Direction()` reports `geodef_Left`, `Length()` null.
    CGeoExitSpiral();
    CGeoExitSpiral(const CGeoExitSpiral& other);
    CGeoExitSpiral& operator=(const CGeoExitSpiral& other);
    virtual ~CGeoExitSpiral();

    /// Defines the spiral; as CGeoEntrySpiral::Set.
    void Set(CGeoPoint& start, double azimuth, geodef_Direction direction, double radius,
             double length);

    /// As CGeoEntrySpiral::Length.
    double Length();
    /// As CGeoEntrySpiral::Radius.
    double Radius();
    /// As CGeoEntrySpiral::EntryAzimuth.
    double EntryAzimuth();
    /// As CGeoEntrySpiral::Direction (`geodef_Left` when never given).
    geodef_Direction Direction();
    /// Tangent azimuth at the end (on the straight): the entry azimuth turned by L / (2 R).
    double ExitAzimuth();
    /// As CGeoEntrySpiral::StartPt.
    CGeoPoint& StartPt();
    /// As CGeoEntrySpiral::EndPt.
    CGeoPoint& EndPt();

    /// Radius of curvature at a distance from the start: R at and before the start,
    /// R L / (L - s) on the spiral, 2e100 (a straight) at and beyond the end.
    double RadiusAtStation(double station);
    /// Tangent azimuth at a distance from the start: the exit azimuth turned back by
    /// (L - s)^2 / C (not turned beyond the end).
    double GridAzimuth(double station);
    /// Point at a distance from the start: on the arc of radius R before the start, from the
    /// series on the spiral, on the exit straight beyond the end; as
    /// CGeoEntrySpiral::GridHorzPoint otherwise.
    void GridHorzPoint(double station, double tolerance, CGeoPoint& result);
    /// As CGeoEntrySpiral::GridDeltas, with negative stations on the arc before the start and
    /// stations beyond the length on the exit straight.
    void GridDeltas(CGeoPoint& point, double startStation, double tolerance, double& station,
                    double& offset, double& azimuth);

private:
    friend struct qv5::detail::SpiralAccess;

    /// Size of the opaque block that holds the spiral's state.
    static constexpr std::size_t kStateSize =
        8 * sizeof(double) + 2 * sizeof(CGeoPoint) + sizeof(std::uint64_t);
    /// Alignment of that block.
    static constexpr std::size_t kStateAlign = alignof(CGeoPoint);

    /// The spiral's fields and caches, laid out by the library alone.
    alignas(kStateAlign) unsigned char m_state[kStateSize];
};

#endif // QV5_GEOSPIRAL_H
