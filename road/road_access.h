// What the road iterator and the road's searches read of a road, read-only. Internal header;
// never installed.
//
// Many iterators in many threads read one road at once, so nothing here may write to the road
// or to its element objects (whose accessors fill lazy caches): horizontal elements are handed
// out as copies, profile records and applications as plain values, templates by constant
// reference (their geometry holds no lazy state).
#ifndef QV5_ROAD_ROAD_ACCESS_H
#define QV5_ROAD_ROAD_ACCESS_H

#include "qv5/geoarc.h"
#include "qv5/geodef.h"
#include "qv5/geoline.h"
#include "qv5/geospiral.h"
#include "road/iterator_math.h"

#include <variant>

class CGeoRoad;
class CGeoTemplate;

namespace qv5::detail {

/// A private copy of one horizontal element: the iterator evaluates its own copies so that
/// the lazy caches it fills are its own.
using ElementCopy =
    std::variant<std::monostate, CGeoLine, CGeoArc, CGeoEntrySpiral, CGeoExitSpiral>;

/// One horizontal record as the iterator uses it.
struct HorizontalCopy {
    int type;             ///< georoad_HorzElementType value
    double start_station; ///< metres
    ElementCopy element;  ///< monostate for a record of a type outside 0 to 3
};

/// Read-only access to a road's records.
struct RoadAccess {
    static int horizontal_count(const CGeoRoad& road);
    static int horizontal_type(const CGeoRoad& road, int n);
    static double horizontal_start_station(const CGeoRoad& road, int n);
    /// Copies record n (0 <= n < count) with its element.
    static void copy_horizontal(const CGeoRoad& road, int n, HorizontalCopy& out);

    static double start_station(const CGeoRoad& road);
    static double end_station(const CGeoRoad& road);
    static double station_interval(const CGeoRoad& road);

    static int profile_count(const CGeoRoad& road);
    /// The fields of profile record n (0 <= n < count).
    static ProfileRecordView profile_record(const CGeoRoad& road, int n);

    static int application_count(const CGeoRoad& road);
    static ApplicationView application(const CGeoRoad& road, int n);

    static int template_count(const CGeoRoad& road);
    /// Template n (0 <= n < count).
    static const CGeoTemplate& template_at(const CGeoRoad& road, int n);
};

} // namespace qv5::detail

#endif // QV5_ROAD_ROAD_ACCESS_H
