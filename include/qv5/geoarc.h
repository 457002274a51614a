/// @file geoarc.h
/// The circular arc element of a horizontal alignment.
#ifndef QV5_GEOARC_H
#define QV5_GEOARC_H

#include "qv5/export.h"
#include "qv5/geodef.h"
#include "qv5/geoline.h"
#include "qv5/geopoint.h"

#include <cstdint>

namespace qv5::detail {
struct ArcCircle;
} // namespace qv5::detail

/// A circular arc, defined either by its two end points, radius, central angle and direction,
/// or by its start point, entry azimuth, radius, arc length and direction.
///
/// Centre, entry azimuth, end point, length and angle are derived on first request from
/// whichever set was given, and cached. A derivation counts as made as soon as it is tried:
/// when its inputs are missing (or `GEO_NULL`) it caches `GEO_NULL` and is not retried until
/// the arc is set again. Positions along the arc keep the start point's elevation (an arc
/// carries no grade) and its transformation link. Stations are measured along the arc from its
/// start; a negative station lies back before the start on the same circle.
class QV5_API CGeoArc {
public:
    /// An arc that knows nothing yet: `Direction()` reports `geodef_Right`, `Radius()` null.
    CGeoArc();
    CGeoArc(const CGeoArc& other);
    CGeoArc& operator=(const CGeoArc& other);
    virtual ~CGeoArc();

    /// Defines the arc by its end points.
    /// @param start, end the arc's ends (copied)
    /// @param radius metres, positive
    /// @param angle central angle, radians, positive
    /// @param direction which way the arc turns
    void Set(CGeoPoint& start, CGeoPoint& end, double radius, double angle,
             geodef_Direction direction);
    /// Defines the arc by its start, entry azimuth and length; the end point is derived.
    /// @param start the arc's start (copied)
    /// @param entryAzimuth tangent azimuth at the start
    /// @param radius metres, positive
    /// @param arcLength metres along the arc
    /// @param direction which way the arc turns
    /// @param startStation the station (chainage) of the arc's start on the alignment it
    ///        belongs to, in metres. The arc stores and copies it for its owner but measures
    ///        its own stations from its start; read it back with StartStation(). Auxiliary
    ///        arcs that continue a spiral pass 0.
    void Set(CGeoPoint& start, double entryAzimuth, double radius, double arcLength,
             geodef_Direction direction, double startStation);

    /// The radius; `GEO_NULL` (from then on) when it was never given.
    double Radius();
    /// The central angle, derived from length and radius if needed; `GEO_NULL` when they are
    /// missing or the radius is below 0.0005 m.
    double Angle();
    /// The length along the arc, derived from angle and radius if needed.
    double GridArcLength();
    /// The direction; `geodef_Right` when it was never given.
    geodef_Direction Direction();
    /// Tangent azimuth at the start, derived from the centre if needed.
    double EntryAzimuth();
    /// The line from the centre to the start point, derived if needed. When the centre cannot
    /// be derived (no radius, no start, or neither an entry azimuth nor an end point and
    /// angle), its points have no grid coordinates.
    CGeoLine& CentreToStart();
    /// The centre: CentreToStart().StartPt(). It has the start point's elevation.
    CGeoPoint& CentrePt();
    /// The end point, derived from the start, entry azimuth and length if needed; all
    /// coordinates `GEO_NULL` when it cannot be.
    CGeoPoint& EndPt();
    /// The start station given to the second Set form; `GEO_NULL` (from then on) when the arc
    /// was set by its end points or never set.
    double StartStation();

    /// Tangent azimuth at a distance along the arc from its start; `GEO_NULL` without a radius
    /// of at least 0.0005 m or an entry azimuth.
    double GridAzimuth(double distance);
    /// Point on the arc's circle at a distance along it from the start (negative: before the
    /// start). `result` is left unchanged when the distance has no angle (no radius, or a
    /// radius below 0.0005 m) or the centre cannot be derived.
    void GridHorzPoint(double distance, CGeoPoint& result);
    /// Point on the arc's circle at a central angle from the start radius, turned the way the
    /// arc turns. `result` is given grid coordinates only (SetGrid), all `GEO_NULL` when the
    /// centre cannot be derived. The angle is not tested for `GEO_NULL`.
    void GridHorzPointByAngle(double angle, CGeoPoint& result);
    /// Station, offset and tangent azimuth of a point against the arc.
    /// @param point the point (its grid is derived if needed)
    /// @param[out] station metres along the arc from its start. Points behind the start get a
    ///        negative station: the cut-over lies half-way round the part of the circle that
    ///        the arc does not cover.
    /// @param[out] offset metres, positive to the right of the direction of travel (so the
    ///        centre of a right-turning arc is at +radius)
    /// @param[out] azimuth tangent azimuth at the point's station
    /// All three are `GEO_NULL` when the point or the centre has no plan coordinates.
    void GridDeltas(CGeoPoint& point, double& station, double& offset, double& azimuth);

private:
    /// Bits of m_known: which value has been given, derived or attempted.
    enum : std::uint64_t {
        kKnownEndPoint = 1,
        kKnownEntryAzimuth = 2,
        kKnownArcLength = 4,
        kKnownRadius = 8,
        kKnownStartStation = 16,
        kKnownAngle = 32,
        kKnownDirection = 64,
        kKnownCentre = 128,
        kKnownEverything = 255,
    };

    double EnsureRadius();
    double EnsureStartStation();
    geodef_Direction EnsureDirection();
    double EnsureAngle();
    double EnsureArcLength();
    double EnsureEntryAzimuth();
    CGeoLine& EnsureCentre();
    CGeoPoint& EnsureEndPoint();
    bool Circle(qv5::detail::ArcCircle& circle);

    CGeoPoint m_startPt;
    CGeoPoint m_endPt;
    CGeoLine m_centreToStart;
    double m_radius;
    double m_entryAzimuth;
    double m_arcLength;
    double m_angle;
    double m_startStation;
    geodef_Direction m_direction;
    std::uint64_t m_known;
};

#endif // QV5_GEOARC_H
