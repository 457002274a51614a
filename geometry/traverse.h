// Stepping from a point along an azimuth in plan. Internal header; never installed.
#ifndef QV5_GEOMETRY_TRAVERSE_H
#define QV5_GEOMETRY_TRAVERSE_H

#include "geometry/angles.h"
#include "geometry/constants.h"
#include "qv5/geodef.h"

#include <cmath>

namespace qv5::detail {

/// The end point that CGeoLine::Set(start, azimuth, distance, 0) gives: a level step in plan.
/// A negative distance runs the reversed azimuth (grade -0), as the line does, so that elements
/// built from such steps agree with lines to the last bit. The start's coordinates are used as
/// numbers: the caller tests them for `GEO_NULL` first. A `GEO_NULL` elevation stays `GEO_NULL`.
inline geo_nee level_step(const geo_nee& start, double azimuth, double distance) {
    double grade = 0.0;
    if (distance < 0.0) {
        distance = std::fabs(distance);
        azimuth = normalised_bearing(azimuth + kPi);
        grade = -grade;
    }
    geo_nee end;
    end.north = start.north + std::cos(azimuth) * distance;
    end.east = start.east + std::sin(azimuth) * distance;
    end.elev = start.elev == GEO_NULL ? GEO_NULL : start.elev + std::tan(grade) * distance;
    return end;
}

/// True when both plan coordinates are set.
inline bool has_plan(const geo_nee& grid) {
    return grid.north != GEO_NULL && grid.east != GEO_NULL;
}

/// A grid record with all three coordinates `GEO_NULL`.
inline constexpr geo_nee kNullGrid{GEO_NULL, GEO_NULL, GEO_NULL};

} // namespace qv5::detail

#endif // QV5_GEOMETRY_TRAVERSE_H
