// The road iterator's and the road searches' decisions, on plain values: the profile at a
// station, the choice of templates around a station, the walk from element to element under a
// measured point, the snapping of a station to a significant one, the choice of the element
// whose perpendicular passes closest to a point, the slopes of the surface plane and the order
// of a section's break points. Internal header; never installed.
//
// The classes (CGeoRoadIterator, CGeoRoad's searches) gather the values from the road and its
// elements and hand them here; nothing here knows about points, caches or the road's storage.
#ifndef QV5_ROAD_ITERATOR_MATH_H
#define QV5_ROAD_ITERATOR_MATH_H

#include "qv5/geodef.h"

#include <cmath>
#include <cstddef>
#include <functional>
#include <vector>

namespace qv5::detail {

/// Profile records with a PVI type outside these evaluate as grade breaks.
inline constexpr int kProfilePoint = 0;

/// What the profile evaluation reads of one PVI record (types 0 point, 1 parabola, 2 circular).
struct ProfileRecordView {
    int type;
    double pvi_station;
    double pvi_elevation;
    double curve_start_station;
    double curve_end_station; ///< GEO_NULL while undefined
    double curve_end_elevation;
    double grade_in;  ///< radians
    double grade_out; ///< radians
    double curve_rate;
    double mean_grade;
    double curve_elevation_at_pvi;
    double tan_grade_in;  ///< tan(grade_in), worked out once for the record (with_tangents)
    double tan_grade_out; ///< tan(grade_out), likewise
};

/// The record with its grade tangents filled in from its grades: the tangent branches of the
/// profile then multiply instead of calling tan at every station asked for.
inline ProfileRecordView with_tangents(ProfileRecordView r) {
    r.tan_grade_in = std::tan(r.grade_in);
    r.tan_grade_out = std::tan(r.grade_out);
    return r;
}

/// Elevation and grade of the profile at a station, before the iterator's additional offset.
struct ProfileAt {
    double elevation; ///< GEO_NULL when no branch matched
    double grade;     ///< GEO_NULL when no branch matched
    int index;        ///< the record the walk stopped at (the last one when it ran through)
};

/// Walks the records in order and evaluates the first that covers the station: extrapolation
/// of the first grade before the profile, the curve formula inside a curve, the tangent between
/// curves, extrapolation of the last grade beyond the profile. `count` must be at least 1.
ProfileAt profile_at(const ProfileRecordView* records, int count, double station);

/// One template application as the template choice reads it.
struct ApplicationView {
    int template_index;
    double station;
    int side; ///< geodef_RoadSide value
};

/// The applications that make the template of one side at a station.
struct TemplateChoice {
    int previous; ///< application index, -1 if none at or before the station
    int first;    ///< the side's application with the smallest station, -1 if the side has none
    int next;     ///< the smallest station strictly after the station, -1 if none
    double ratio; ///< blend of previous towards next (0 within 0.001 m of the previous one)
};

/// Chooses the previous, first and next application of a side at a station (ties go to the
/// earlier application in the list).
TemplateChoice choose_templates(const ApplicationView* applications, int count, int side,
                                double station);

/// The result of inverting one horizontal element for a point.
struct ElementDeltas {
    double station; ///< along the element, from its start
    double offset;
    double azimuth;
    double radius;
    double length; ///< the element's stationing length
    bool inverted; ///< false for a record without an element (the walk ends there)
};

/// Inverts element k for the point (the caller knows the point and the element objects).
using InvertElement = std::function<ElementDeltas(int k)>;

/// The element found under a point by the hysteresis walk.
struct WalkResult {
    int element;
    ElementDeltas deltas; ///< station possibly pinned to 0 or the length
};

/// The hysteresis walk from element `start`: `invert(k)` (an InvertElement, or any callable of
/// that form, which the walk then calls directly) inverts element k for the point.
/// Bounds the walk: it never needs more steps than the road has elements, and one direction
/// once chosen is kept, so a walk of more than count + 1 inversions cannot happen.
template <typename Invert>
WalkResult walk_to_element(int start, int count, const Invert& invert) {
    bool moved_forward = false;
    bool moved_back = false;
    int k = start;
    WalkResult result{k, invert(k)};
    // Once the walk has moved one way it never turns back, so it visits each element at most
    // once: count + 1 inversions bound it whatever the elements answer.
    for (int steps = 0; steps <= count; ++steps) {
        ElementDeltas& d = result.deltas;
        if (!d.inverted || d.station == GEO_NULL) {
            return result;
        }
        if (d.station < 0.0) {
            if (k == 0) {
                return result; // extrapolated before the road start
            }
            if (moved_forward) {
                d.station = 0.0; // in the wedge outside a kink: pinned to the joint
                return result;
            }
            moved_back = true;
            --k;
        } else if (d.station > d.length) {
            if (k == count - 1) {
                return result; // extrapolated past the road end
            }
            if (moved_back) {
                d.station = d.length;
                return result;
            }
            moved_forward = true;
            ++k;
        } else {
            return result;
        }
        result = WalkResult{k, invert(k)};
    }
    return result;
}

/// The kinds of elements at a transition, for the transition type table.
enum class ElementKind { Line, Arc, Spiral, Other };

/// What FindClosestHorzPt knows about the point and the road around it.
struct SnapInput {
    double station;
    double offset;
    double tolerance;
    double road_start;
    double road_end;
    double interval;      ///< station interval (GEO_NULL or 0: no even stations)
    double element_start; ///< start station of element k
    double next_start;    ///< start station of element k + 1, or the road end for the last
    bool last_element;
    ElementKind before_k; ///< element k - 1 (Other when k is 0)
    ElementKind kind_k;   ///< element k
    ElementKind after_k;  ///< element k + 1 (Other when k is the last)
};

/// The snapped station: `result` 1 or 0 as FindClosestHorzPt returns it; `station_written` and
/// `type_written` say which outputs it writes (a line-to-line transition writes the station and
/// leaves the type).
struct SnapResult {
    int result;
    bool station_written;
    double station;
    bool type_written;
    int type; ///< georoad_HorzTransitionType value
};

SnapResult snap_station(const SnapInput& in);

/// Transition type between two element kinds; -1 for line to line (not written) or a kind
/// outside the table.
int transition_type(ElementKind before, ElementKind after);

/// One element's candidate for the closest-offset search.
struct OffsetCandidate {
    bool valid;   ///< the element was inverted (lines, arcs, spirals)
    double along; ///< station along the element
    double offset;
    double length;
    double start_station;
    bool line_followed_by_line;
    double corner_distance; ///< plan distance from the point to the element's end (lines only)
};

/// The running best of the closest-offset search.
struct ClosestOffset {
    double station = GEO_NULL;
    double offset = 1e100;
    int element = -1;
};

/// Offers element k's candidate to the running best. `on_roadway(station, offset)` is asked
/// only for a candidate past the end of the last element.
void offer_candidate(ClosestOffset& best, int k, bool last, const OffsetCandidate& c,
                     const std::function<int(double, double)>& on_roadway);

/// Slope, as an angle rising positive, of the plane through s with normal n, in the direction
/// of a bearing: atan of the rise over a horizontal distance of 1.
double plane_slope(const double normal[3], double bearing);

/// A break point of a section before it is emitted.
struct BreakPoint {
    double distance;
    double elevation;
    int user;
    std::vector<unsigned short> name; ///< zero-terminated
};

/// Indexes of the break points in the order a section receives them: increasing distance,
/// equal distances once (the first in list order), none beyond `length`.
std::vector<std::size_t> emission_order(const std::vector<BreakPoint>& points, double length);

} // namespace qv5::detail

#endif // QV5_ROAD_ITERATOR_MATH_H
