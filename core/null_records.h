// The "not set" marker on single values and coordinate records, shared by every subsystem.
// Internal header; never installed.
#ifndef QV5_CORE_NULL_RECORDS_H
#define QV5_CORE_NULL_RECORDS_H

#include "qv5/geodef.h"

namespace qv5::detail {

/// True when `value` is the "not set" marker (tested by exact equality, as hosts test it).
inline bool is_null(double value) {
    return value == GEO_NULL;
}

/// A grid record with all three coordinates `GEO_NULL`.
inline constexpr geo_nee kNullGrid{GEO_NULL, GEO_NULL, GEO_NULL};
/// A geodetic record with all three values `GEO_NULL`.
inline constexpr geo_llh kNullWgs84{GEO_NULL, GEO_NULL, GEO_NULL};
/// An observation with all three values `GEO_NULL`.
inline constexpr geo_hvd kNullObs{GEO_NULL, GEO_NULL, GEO_NULL};

/// True when both plan coordinates are set.
inline bool has_plan(const geo_nee& grid) {
    return grid.north != GEO_NULL && grid.east != GEO_NULL;
}

/// True when all three coordinates are set.
inline bool has_3d(const geo_nee& grid) {
    return has_plan(grid) && grid.elev != GEO_NULL;
}

} // namespace qv5::detail

#endif // QV5_CORE_NULL_RECORDS_H
