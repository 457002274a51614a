/// @file georoaditer.h
/// The road iterator: a cursor over one road that turns station and offset into design points
/// and measured points into station, offset, height above the design, and evaluates the road's
/// cross sections.
///
/// Threads: an iterator caches state (its current elements, its last station, its own copies of
/// the elements it has used), so each thread of queries uses its own iterator. Any number of
/// iterators, in any number of threads, may read one road as long as nobody edits the road
/// meanwhile; after an edit call `Set` (or `Reset`) again before the next query.
///
/// The iterator and the road call each other: the iterator asks the road for a starting station
/// (CGeoRoad::FindStationWithClosestOffset) when it has no current element, and the road's
/// searches bind an iterator. Both directions live in road/road_iterator.cpp and
/// road/road_search.cpp only.
#ifndef QV5_GEOROADITER_H
#define QV5_GEOROADITER_H

#include "qv5/export.h"
#include "qv5/geodef.h"
#include "qv5/geoline.h"
#include "qv5/geopoint.h"

class CGeoRoad;
class CGeoTemplate;
class CGeoSection;

namespace qv5::detail {
struct IteratorState;  // the work template and the iterator's copies of the road's elements
struct IteratorAccess; // the road's searches reach the iterator's protected tests through it
} // namespace qv5::detail

/// A cursor over one road: positions (station, offset) to grid and back, profile elevations,
/// template choice and cross-section evaluation.
///
/// Between calls it remembers the horizontal and vertical element it last used and the last
/// station found, so that nearby queries find their element by a short local walk.
class QV5_API CGeoRoadIterator {
public:
    /// An iterator bound to no road; `Set` must be called before any query.
    CGeoRoadIterator();
    /// A copy with the same road, additional offset, cached elements, work template and
    /// station.
    CGeoRoadIterator(const CGeoRoadIterator& other);
    /// Copies the road pointer, the additional offset, both element indexes, the work template
    /// and the station.
    CGeoRoadIterator& operator=(const CGeoRoadIterator& other);
    virtual ~CGeoRoadIterator();

    /// Binds the iterator to a road (not owned) and forgets the current horizontal element and
    /// the station. The current vertical element and the additional offset are kept.
    /// @param road the road to evaluate; may be null (every query then yields `GEO_NULL`)
    void Set(CGeoRoad* road);

    /// Forgets the current horizontal element and the station, as `Set` with the same road does,
    /// but keeps what the iterator has taken from the road since (its own copies of the elements
    /// and of the profile): the next query starts afresh, exactly as after `Set`, without taking
    /// them again. For a host that evaluates many unrelated points against a road that nobody
    /// edits and wants each answer independent of the points before it. After an edit of the
    /// road, call `Set`.
    void ForgetPosition();

    /// Makes the element containing `station` current: the first whose end station is strictly
    /// greater, so a station exactly at a joint selects the later element; before the start
    /// element 0, at or beyond the end the last one. `GEO_NULL` only forgets the element.
    /// @param station metres; also stored as the iterator's station
    void Reset(double station);

    /// Index of the current horizontal element, -1 when unknown.
    int CurrentHorizontalElement();
    /// Index of the profile element last used.
    int CurrentVerticalElement();

    /// Vertical offset added to every design elevation the iterator computes, metres.
    double AdditionalOffset();
    /// Sets the vertical offset added to every design elevation, metres.
    void SetAdditionalOffset(double offset);

    /// The design point at a station and offset.
    ///
    /// A station exactly at a joint belongs to the earlier element; stations before the start
    /// or beyond the end extrapolate the first or last element.
    /// @param station metres
    /// @param offset metres, positive to the right
    /// @param normalHeight metres, measured at right angles to the grade line in the vertical
    ///        plane of the alignment
    /// @param[out] point grid position; all `GEO_NULL` on a road without elements; elevation
    ///        `GEO_NULL` without a profile
    /// @param[out] azimuth centreline azimuth at the station, or `GEO_NULL`
    /// @param[out] radius optional: signed radius (positive turning right, 2e100 straight)
    /// @param[out] grade optional: profile grade (radians), written only when the profile gives
    ///        an elevation
    void CenterlinePoint(double station, double offset, double normalHeight, CGeoPoint& point,
                         double& azimuth, double* radius, double* grade);

    /// Station, offset and height above the design centreline of a measured 3-D point.
    ///
    /// Starts from the cached element (or, with none, from the road's closest-offset search)
    /// and walks to the element under the point; a point in the outside wedge of a kink gets
    /// the joint's station and keeps its own offset.
    /// @param point the measured point; it needs a 3-D grid
    /// @param[out] station metres, or `GEO_NULL`
    /// @param[out] offset metres, positive right, or `GEO_NULL`
    /// @param[out] deltaElevation the point's elevation minus the design centreline elevation,
    ///        `GEO_NULL` without a profile
    /// @param[out] azimuth centreline azimuth, or `GEO_NULL`
    /// @param[out] grade profile grade (radians), `GEO_NULL` without a profile
    /// @param[out] radius optional: signed radius as for CenterlinePoint
    void CenterlineDeltas(CGeoPoint& point, double& station, double& offset, double& deltaElevation,
                          double& azimuth, double& grade, double* radius);

    /// Elevation and grade of the profile at a station, plus the additional offset.
    /// @param station metres
    /// @param[out] elevation metres; `GEO_NULL` without a profile
    /// @param[out] grade radians (an angle on the tangents, the curve's derivative inside a
    ///        curve); `GEO_NULL` without a profile
    void VerticalCurveDeltas(double station, double& elevation, double& grade);

    /// Elevation of the finished road surface under the point's horizontal position.
    /// @return metres, or `GEO_NULL` off the roadway or when the point cannot be evaluated
    double Elevation(CGeoPoint& point);

    /// The template of one side at a station: the previous application's template blended
    /// towards the next one's, the first application's before it, the last one's beyond.
    /// @param side `geodef_LeftSide` or `geodef_RightSide`
    /// @param station metres
    /// @param[out] result receives the template; left empty when no application covers the side
    void CalcTemplate(geodef_RoadSide side, double station, CGeoTemplate* result);

    /// The finished road surface under a measured point, and its slopes.
    ///
    /// An offset of exactly 0 is evaluated with the left template; side slopes are not
    /// evaluated (a point beyond the shoulder gives no surface).
    /// @param point the measured point (3-D grid)
    /// @param direction bearing (radians) in which slopeAlong is measured
    /// @param[out] result a copy of the point whose grid is the surface point under it, or
    ///        all `GEO_NULL`
    /// @param[out] slopeAlong rise of the surface plane in `direction`, radians, or `GEO_NULL`
    /// @param[out] slopeAcross rise in `direction` + pi/2, radians, or `GEO_NULL`
    void Intersection(CGeoPoint& point, double direction, CGeoPoint& result, double& slopeAlong,
                      double& slopeAcross);

    /// The road surface along the straight line from the section's start to its end: the
    /// centreline ("CL###"), the template breaks (named by the features that follow them) and
    /// the elevations at both ends. Templates are taken at the station of the start point.
    /// @param section set with its start and end; receives the break points
    void Section(CGeoSection& section);

protected:
    /// 1 when an offset lies on the roadway at a station (within the shoulder of the template of
    /// its side; an offset of 0 counts as right), else 0.
    int CheckPointOnRoadWay(double station, double offset);

    /// Where a line crosses a template break (0 the centreline, +n the outer end of element
    /// n - 1 on the right, -n on the left), by regula falsi to 0.01 m in at most 11 steps.
    /// @param[out] result the break point on the design surface
    /// @return 1 if found, else 0
    int FindTemplateTransitionPoint(CGeoLine& line, int breakCode, CGeoPoint& result);

private:
    friend struct qv5::detail::IteratorAccess;

    CGeoRoad* m_road;
    double m_additionalOffset;
    int m_currentHorizontal;
    int m_currentVertical;
    double m_station;
    qv5::detail::IteratorState* m_state;
};

#endif // QV5_GEOROADITER_H
