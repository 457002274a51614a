// The road's nearest-point and station searches: the significant station near a measured point,
// the station whose perpendicular passes closest to a point, and the first station with a full
// road surface.
//
// The searches bind a road iterator and evaluate its private copies of the elements, never the
// road's own element objects (whose accessors fill lazy caches), so that any number of threads
// may search one road at once, each with its own iterator.
#include "core/constants.h"
#include "qv5/georoad.h"
#include "qv5/georoaditer.h"
#include "qv5/geosurvey.h"
#include "road/iterator_math.h"
#include "road/iterator_state.h"
#include "road/road_access.h"

#include <algorithm>
#include <cmath>
#include <limits>
#include <vector>

using qv5::detail::ElementKind;
using qv5::detail::IteratorAccess;
using qv5::detail::RoadAccess;

namespace {

ElementKind kind_of(int type) {
    switch (type) {
    case georoad_Line:
        return ElementKind::Line;
    case georoad_Arc:
        return ElementKind::Arc;
    case georoad_EntrySpiral:
    case georoad_ExitSpiral:
        return ElementKind::Spiral;
    default:
        return ElementKind::Other;
    }
}

/// How much farther than the best offset so far an element in the middle of the road must lie
/// before the closest-offset search skips it, metres: far beyond rounding and the spirals'
/// series tolerance, so that a skipped element could never have been taken.
inline constexpr double kSkipMargin = 1.0;
/// The closest-offset search's mark for an element that is not skipped by its distance (a
/// distance is never negative).
inline constexpr double kNotInsideOnly = -1.0;

/// Smallest application station starts here, above any real station.
inline constexpr double kFirstApplicationStart = qv5::detail::kSearchStart;

} // namespace

namespace qv5::detail {

double IteratorAccess::closest_offset(CGeoRoadIterator& it, CGeoPoint& point, double& offset,
                                      double tolerance, int* element) {
    ClosestOffset best;
    offset = best.offset;
    const int count = it.m_road == nullptr ? 0 : RoadAccess::horizontal_count(*it.m_road);
    const auto on_roadway = [&](double station, double off) {
        return IteratorAccess::on_roadway(it, station, off);
    };
    const auto searched = [&](int k) {
        const int type = RoadAccess::horizontal_type(*it.m_road, k);
        return type >= georoad_Line && type <= georoad_ExitSpiral;
    };
    const auto corner = [&](int k) {
        return RoadAccess::horizontal_type(*it.m_road, k) == georoad_Line && k + 1 < count &&
               RoadAccess::horizontal_type(*it.m_road, k + 1) == georoad_Line;
    };
    // An element between the first and the last, other than a line before a corner, can offer
    // only a point inside it, whose offset is its distance from the point (lines and arcs
    // measure it square to the element, spirals as the chord to their point): at least the
    // distance from the point to the element as a whole.
    const auto inside_only = [&](int k) {
        return k > 0 && k < count - 1 && searched(k) && !corner(k);
    };
    // Every spiral is searched from its middle, whatever the iterator last found.
    const auto invert = [&](int k) {
        IteratorElement& e = IteratorAccess::element(it, k);
        return IteratorAccess::invert(e, point, e.length * 0.5, tolerance,
                                      IteratorAccess::Radius::not_wanted);
    };

    // The anchor: the inside-only element nearest the point, inverted first. When the point lies
    // inside it, at offset u, an inside-only element before it that lies farther than u cannot
    // change the answer: had it been taken, the best offset would have stayed above u until the
    // anchor, which replaces it then either way (an element taken meanwhile leaves an offset at
    // least its own, a corner at least the line's). After the anchor, an inside-only element
    // farther than the best offset so far could not be taken. Both skips keep the answer the
    // same, bit for bit, and spare most of the inversions on a long road.
    // reach[k]: how near the point inside-only element k comes at least; kNotInsideOnly for the
    // others, which are always inverted.
    IteratorState& state = *it.m_state;
    std::vector<double>& reach = state.reach;
    reach.assign(static_cast<std::size_t>(std::max(count, 0)), kNotInsideOnly);
    int anchor = -1;
    for (int k = 1; k < count - 1; ++k) {
        if (inside_only(k)) {
            reach[static_cast<std::size_t>(k)] = IteratorAccess::distance_at_least(it, k, point);
            if (anchor < 0 ||
                reach[static_cast<std::size_t>(k)] < reach[static_cast<std::size_t>(anchor)]) {
                anchor = k;
            }
        }
    }
    ElementDeltas anchor_deltas{};
    double anchor_offset = 0.0;
    if (anchor >= 0) {
        anchor_deltas = invert(anchor);
        const bool inside = anchor_deltas.inverted && anchor_deltas.station != GEO_NULL &&
                            anchor_deltas.offset != GEO_NULL && anchor_deltas.station >= 0.0 &&
                            anchor_deltas.station <= anchor_deltas.length &&
                            std::isfinite(anchor_deltas.offset);
        anchor_offset =
            inside ? std::fabs(anchor_deltas.offset) : std::numeric_limits<double>::infinity();
    }

    for (int k = 0; k < count; ++k) {
        if (!searched(k)) {
            continue;
        }
        const double near = reach[static_cast<std::size_t>(k)];
        if (near != kNotInsideOnly && k != anchor) {
            const double bound = k < anchor ? anchor_offset : std::fabs(best.offset);
            if (near > bound + kSkipMargin) {
                continue;
            }
        }
        IteratorElement& e = IteratorAccess::element(it, k);
        const ElementDeltas d = k == anchor ? anchor_deltas : invert(k);
        OffsetCandidate c{d.inverted,           d.station, d.offset, e.length,
                          e.copy.start_station, false,     GEO_NULL};
        if (corner(k)) {
            c.line_followed_by_line = true;
            auto& line = std::get<CGeoLine>(e.copy.element);
            c.corner_distance = geo_horz_dist(point.Grid(), line.EndPt().Grid());
        }
        offer_candidate(best, k, k == count - 1, c, on_roadway);
    }
    offset = best.offset;
    if (element != nullptr) {
        *element = best.element;
    }
    return best.element >= 0 ? best.station : GEO_NULL;
}

} // namespace qv5::detail

double CGeoRoad::FindStationWithClosestOffset(CGeoPoint& pt, double& offset, double d,
                                              int* element) {
    CGeoRoadIterator it;
    it.Set(this);
    return IteratorAccess::closest_offset(it, pt, offset, d, element);
}

namespace {

/// FindClosestHorzPt with an iterator bound to the road whose position is forgotten.
int closest_horizontal_point(CGeoRoad& road, CGeoRoadIterator& it, CGeoPoint& pt, double tolerance,
                             double& station, georoad_HorzTransitionType& type) {
    const int count = RoadAccess::horizontal_count(road);
    if (count <= 0) {
        return 0;
    }
    double s = GEO_NULL, o = GEO_NULL, dz = GEO_NULL, azimuth = GEO_NULL, grade = GEO_NULL;
    it.CenterlineDeltas(pt, s, o, dz, azimuth, grade, nullptr);
    const int k = it.CurrentHorizontalElement();
    if (s == GEO_NULL || o == GEO_NULL || k < 0 || k >= count) {
        return 0;
    }
    qv5::detail::SnapInput in{};
    in.station = s;
    in.offset = o;
    in.tolerance = tolerance;
    in.road_start = RoadAccess::start_station(road);
    in.road_end = RoadAccess::end_station(road);
    in.interval = RoadAccess::station_interval(road);
    in.element_start = RoadAccess::horizontal_start_station(road, k);
    in.last_element = k == count - 1;
    in.next_start =
        in.last_element ? in.road_end : RoadAccess::horizontal_start_station(road, k + 1);
    in.before_k = k > 0 ? kind_of(RoadAccess::horizontal_type(road, k - 1)) : ElementKind::Other;
    in.kind_k = kind_of(RoadAccess::horizontal_type(road, k));
    in.after_k =
        in.last_element ? ElementKind::Other : kind_of(RoadAccess::horizontal_type(road, k + 1));
    const qv5::detail::SnapResult snap = qv5::detail::snap_station(in);
    if (snap.station_written) {
        station = snap.station;
    }
    if (snap.type_written) {
        type = static_cast<georoad_HorzTransitionType>(snap.type);
    }
    return snap.result;
}

} // namespace

int CGeoRoad::FindClosestHorzPt(CGeoPoint& pt, double tolerance, double& station,
                                georoad_HorzTransitionType& type) {
    CGeoRoadIterator it;
    it.Set(this);
    return closest_horizontal_point(*this, it, pt, tolerance, station, type);
}

int CGeoRoad::FindClosestHorzPt(CGeoPoint& pt, double tolerance, double& station,
                                georoad_HorzTransitionType& type, CGeoRoadIterator& iterator) {
    if (!IteratorAccess::bound_to(iterator, this)) {
        return FindClosestHorzPt(pt, tolerance, station, type);
    }
    iterator.ForgetPosition();
    return closest_horizontal_point(*this, iterator, pt, tolerance, station, type);
}

double CGeoRoad::Min3DStationing() {
    const int count = RoadAccess::application_count(*this);
    if (count <= 0) {
        return GEO_NULL;
    }
    double h = RoadAccess::start_station(*this);
    const double vertical_start = StartStationVertical();
    // A road without a profile has no vertical start; its horizontal start decides alone.
    if (vertical_start != GEO_NULL && vertical_start > h) {
        h = vertical_start;
    }
    double m = kFirstApplicationStart;
    for (int i = 0; i < count; ++i) {
        const double station = RoadAccess::application(*this, i).station;
        if (station < m) {
            m = station;
        }
    }
    return m > h ? m : h;
}
