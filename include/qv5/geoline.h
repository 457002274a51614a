/// @file geoline.h
/// The straight element of an alignment, and the library's general two-point line.
#ifndef QV5_GEOLINE_H
#define QV5_GEOLINE_H

#include "qv5/export.h"
#include "qv5/geodef.h"
#include "qv5/geopoint.h"

#include <cstdint>

namespace qv5::detail {
struct LineSteps;  // the library's own reuse of a line's step trigonometry
struct LineAccess; // the library's own station, offset and azimuth of a point in one request
} // namespace qv5::detail

/// A straight line from a start point to an end point.
///
/// Azimuth, horizontal length, grade, height difference and coordinate differences are derived
/// on first request and cached. A cache counts as filled as soon as its derivation is tried:
/// when the points lack the coordinates it needs, the call returns `GEO_NULL` but leaves the
/// cached field as it was, so a repeated call returns the field's earlier contents (0 on a fresh
/// line). Test the first result.
///
/// Stations are measured from the start point (no starting chainage); offsets are positive to
/// the right of the direction start -> end.
class QV5_API CGeoLine {
public:
    /// Result bits of Intersection; the possible results are 0, 1, 5, 6 and 7.
    enum : unsigned short {
        INTERSECT_NONE = 0,      ///< no intersection within the tolerance
        INTERSECT_CROSS = 1,     ///< the lines cross at one point
        INTERSECT_OVERLAP = 2,   ///< the lines are collinear within tolerance and overlap
        INTERSECT_END_TOUCH = 4, ///< an end point of one line lies within tolerance of the other
    };

    /// A line between two points that know nothing yet.
    CGeoLine();
    /// A line between two grid positions.
    CGeoLine(geo_nee& start, geo_nee& end);
    /// A line between two points (copied).
    CGeoLine(CGeoPoint& start, CGeoPoint& end);
    CGeoLine(const CGeoLine& other);
    CGeoLine& operator=(const CGeoLine& other);
    virtual ~CGeoLine();

    /// Copies both points and forgets every cached value.
    void Set(CGeoPoint& start, CGeoPoint& end);
    /// Builds the line from a start, an azimuth, a horizontal length and a grade angle. A
    /// negative length runs the reversed azimuth with the negated grade. The end point is a copy
    /// of the start (keeping its station link) given the computed grid; the azimuth, length and
    /// grade are cached as given.
    void Set(CGeoPoint& start, double azimuth, double distance, double grade);

    CGeoPoint& StartPt();
    CGeoPoint& EndPt();

    /// end.north - start.north; `GEO_NULL` unless both points have plan coordinates.
    double GridDeltaNorth();
    /// end.east - start.east; `GEO_NULL` unless both points have plan coordinates.
    double GridDeltaEast();
    /// Grid azimuth start -> end in [0, 2 pi); `GEO_NULL` when a difference is.
    double GridAzimuth();
    /// Horizontal length; `GEO_NULL` when a difference is.
    double GridHDistance();
    /// end.elev - start.elev; `GEO_NULL` when either elevation is.
    double GeoidVDistance();
    /// sqrt(length^2 + height difference^2); `GEO_NULL` when either is. Not cached.
    double GridSlopeDistance();
    /// Grade as an angle of elevation. A line shorter than 0.0001 in plan has grade 0 when its
    /// ends are level within 0.0001 and +pi or -pi (not +-pi/2) otherwise; hosts compare against
    /// +-pi to detect vertical lines. `GEO_NULL` unless both points have 3D coordinates.
    double GeoidGrade();

    /// Unsigned angle in [0, pi] between this line's azimuth and `azimuth`; `GEO_NULL` if either
    /// is.
    double GridDivergence(double azimuth);
    /// Unsigned angle in [0, pi] between this line and another.
    double GridDivergence(CGeoLine& other);
    /// normalised(this azimuth - other azimuth) in [0, 2 pi); `GEO_NULL` if either is.
    double GridDivergenceClockwise(CGeoLine& other);

    /// Distance along the line from the start to the foot of the perpendicular from `point`:
    /// negative behind the start, beyond the length past the end. `GEO_NULL` when the point or
    /// the start lacks plan coordinates.
    double GridStation(CGeoPoint& point);
    /// Signed perpendicular distance of `point`: positive right of start -> end, negative left.
    double GridOffset(CGeoPoint& point);

    /// Point on the line (or its extension) at a horizontal distance from the start. The
    /// elevation follows the grade. `result` is a copy of the start point, moved only when the
    /// line has an azimuth and a length; it keeps the start point's station link.
    void GridHorzPoint(double station, CGeoPoint& result);
    /// Point at a station and a right-positive offset; the elevation is the station point's.
    /// A `GEO_NULL` offset gives the point on the line.
    void GridHorzOffsetPoint(double station, double offset, CGeoPoint& result);
    /// Point at a distance measured along the slope.
    void GridSlopePoint(double slopeDistance, CGeoPoint& result);

    /// Intersects this line with another within `tolerance`.
    /// @param[out] station distance along this line of the intersection
    /// @param[out] point the intersection, with this line's elevation there
    /// @return a combination of the INTERSECT_ bits: 0, 1, 5, 6 or 7. With 0, station and point
    ///         are untouched, except that a crossing beyond this line's ends has already written
    ///         the station.
    unsigned short Intersection(CGeoLine& other, double& station, CGeoPoint& point,
                                double tolerance);

private:
    /// Bits of m_known: which cached value has been derived (or attempted).
    enum : std::uint64_t {
        kKnownHDistance = 1,
        kKnownGrade = 2,
        kKnownAzimuth = 4,
        kKnownVDistance = 8,
        kKnownDeltaNorth = 16,
        kKnownDeltaEast = 32,
        kKnownEverything = 63,
    };

    double EnsureDeltaNorth();
    double EnsureDeltaEast();
    double EnsureAzimuth();
    double EnsureHDistance();
    double EnsureVDistance();
    double EnsureGrade();
    friend struct qv5::detail::LineSteps;
    friend struct qv5::detail::LineAccess;

    void SnapToLine(double& station, CGeoPoint& point, double tolerance);
    bool VectorToPoint(CGeoPoint& point, double& length, double& azimuth);

    CGeoPoint m_startPt;
    CGeoPoint m_endPt;
    double m_azimuth;
    double m_hDistance;
    double m_grade;
    double m_vDistance;
    double m_deltaNorth;
    double m_deltaEast;
    std::uint64_t m_known;

    // The start -> point vector of the last station or offset request, keyed by the exact
    // coordinates it was computed from: a host asks for the station and then the offset of the
    // same point, and the second request reuses the bearing and distance instead of computing
    // them again.
    geo_nee m_lastFrom;
    geo_nee m_lastTo;
    double m_lastLength;
    double m_lastAzimuth;

    // The cosine and sine of the azimuth and the tangent of the grade of the last step taken from
    // the start to a station, keyed by the exact bits of that azimuth and grade: a host walking
    // along the line asks for point after point in one sense, and each reuses them.
    bool m_stepKnown = false;
    double m_stepAzimuth = 0.0;
    double m_stepGrade = 0.0;
    double m_stepCos = 0.0;
    double m_stepSin = 0.0;
    double m_stepTan = 0.0;
};

#endif // QV5_GEOLINE_H
