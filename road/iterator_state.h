// The road iterator's private state and the seam through which the road's searches use an
// iterator. Internal header; never installed.
//
// The iterator and the road call each other: CGeoRoadIterator::CenterlineDeltas asks for the
// closest-offset search when it has no current element, and the road's searches bind an
// iterator to invert points and to test the roadway. Both directions go through
// IteratorAccess, implemented in road_iterator.cpp and used by road_search.cpp.
#ifndef QV5_ROAD_ITERATOR_STATE_H
#define QV5_ROAD_ITERATOR_STATE_H

#include "geometry/spiral_math.h"
#include "qv5/georoaditer.h"
#include "qv5/geotemplate.h"
#include "road/iterator_math.h"
#include "road/road_access.h"

#include <memory>
#include <vector>

namespace qv5::detail {

/// One horizontal element as the iterator holds it: a private copy, loaded on first use.
struct IteratorElement {
    HorizontalCopy copy{-1, GEO_NULL, {}};
    double length = 0.0; ///< stationing length; 0 for a record without an element
    /// Plan position of the element's point half-way along it, loaded on first use: every point
    /// of the element lies within half the length of it, however the element curves.
    double middle_north = GEO_NULL;
    double middle_east = GEO_NULL;
    /// A spiral's layout, made on its first inversion and kept with the copy, which nobody sets
    /// again: every inversion of the spiral reuses it. Held apart from the slot, so that the
    /// slots of a long road stay small for the closest-offset search that reads them all.
    std::unique_ptr<SpiralLayout> layout;
    unsigned known = 0;
};

/// What a CGeoRoadIterator owns besides its plain fields.
struct IteratorState {
    enum : unsigned {
        kKnownProfile = 1,      ///< `profile` holds the road's profile records
        kKnownApplications = 2, ///< `applications` holds the road's template applications
    };

    CGeoTemplate work; ///< the template Intersection evaluates
    /// The template CheckPointOnRoadWay blends, apart from `work`: the closest-offset search
    /// asks for it from inside Intersection's own CenterlineDeltas.
    CGeoTemplate roadway;
    std::vector<IteratorElement> elements;     ///< sized to the road's element count
    std::vector<ProfileRecordView> profile;    ///< copied once per Set or Reset
    std::vector<ApplicationView> applications; ///< copied once per Set or Reset
    /// Scratch of the closest-offset search: how near the point each element comes at least.
    std::vector<double> reach;
    unsigned known = 0;
};

/// The iterator's internals as the road's searches use them.
struct IteratorAccess {
    /// Whether an inversion works out the element's signed radius (`ElementDeltas::radius`
    /// stays `GEO_NULL` for arcs and spirals otherwise).
    enum class Radius { wanted, not_wanted };
    /// Inverts an element (its slot, from `element`) for a point, the spirals started from
    /// `spiral_guess` (clamped to the spiral) with `spiral_tolerance`.
    static ElementDeltas invert(IteratorElement& e, CGeoPoint& point, double spiral_guess,
                                double spiral_tolerance, Radius radius);
    /// Element k's private copy (loaded on first use); k must be within the road's count.
    static IteratorElement& element(CGeoRoadIterator& it, int k);
    /// How far the point lies at least from every point of element k, in plan, metres: the
    /// distance to the element's middle less half its length, 0 when that says nothing (a
    /// point near the element, or coordinates or a length that are not finite).
    static double distance_at_least(CGeoRoadIterator& it, int k, CGeoPoint& point);
    /// Whether the iterator is bound to this road.
    static bool bound_to(const CGeoRoadIterator& it, const CGeoRoad* road);
    /// CGeoRoadIterator::CheckPointOnRoadWay.
    static int on_roadway(CGeoRoadIterator& it, double station, double offset);
    /// The closest-offset search over every element, with the iterator's element copies.
    static double closest_offset(CGeoRoadIterator& it, CGeoPoint& point, double& offset,
                                 double tolerance, int* element);
};

} // namespace qv5::detail

#endif // QV5_ROAD_ITERATOR_STATE_H
