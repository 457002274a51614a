// Stepping from a point along an azimuth in plan. Internal header; never installed.
#ifndef QV5_GEOMETRY_TRAVERSE_H
#define QV5_GEOMETRY_TRAVERSE_H

#include "core/angles.h"
#include "core/constants.h"
#include "core/null_records.h"
#include "qv5/geodef.h"

#include <cmath>

namespace qv5::detail {

/// Azimuth, horizontal distance and grade of a line built from a start point.
struct Heading {
    double azimuth;
    double distance;
    double grade;
};

/// The heading CGeoLine::Set(start, azimuth, distance, grade) runs: a negative distance runs the
/// reversed azimuth with the negated grade; otherwise the azimuth is taken as given, without
/// normalising.
inline Heading forwards(double azimuth, double distance, double grade) {
    if (distance < 0.0) {
        return {normalised_bearing(azimuth + kPi), std::fabs(distance), -grade};
    }
    return {azimuth, distance, grade};
}

/// The far end of a step from `start` with the cosine and sine of its azimuth, a non-negative
/// distance and the tangent of its grade. The start's coordinates are used as numbers (the
/// caller tests them for `GEO_NULL`); a `GEO_NULL` elevation stays `GEO_NULL`.
inline geo_nee step_end(const geo_nee& start, double cos_azimuth, double sin_azimuth,
                        double distance, double tan_grade) {
    geo_nee end;
    end.north = start.north + cos_azimuth * distance;
    end.east = start.east + sin_azimuth * distance;
    end.elev = start.elev == GEO_NULL ? GEO_NULL : start.elev + tan_grade * distance;
    return end;
}

/// The end point of CGeoLine::Set(start, heading's azimuth, distance, grade).
inline geo_nee graded_step(const geo_nee& start, const Heading& heading) {
    return step_end(start, std::cos(heading.azimuth), std::sin(heading.azimuth), heading.distance,
                    std::tan(heading.grade));
}

/// Level steps in plan along one azimuth, as CGeoLine::Set(start, azimuth, distance, 0) makes
/// them: a negative distance runs the reversed azimuth (grade -0), as the line does, so that
/// elements built from such steps agree with lines to the last bit. The sine and cosine of the
/// sense the caller expects to step in are worked out once, so that an iteration stepping
/// along the same azimuth again and again pays for them once; a step the other way works its
/// own out.
class LevelStepper {
public:
    /// @param backwards whether the steps are expected to have negative distances
    LevelStepper(double azimuth, bool backwards) : m_azimuth(azimuth), m_backwards(backwards) {
        sense(backwards, m_cos, m_sin);
    }

    /// The end of a step of `distance` from `start`. The start's coordinates are used as
    /// numbers (the caller tests them for `GEO_NULL`); a `GEO_NULL` elevation stays `GEO_NULL`.
    geo_nee step(const geo_nee& start, double distance) const {
        const bool backwards = distance < 0.0;
        double c = m_cos;
        double s = m_sin;
        if (backwards != m_backwards) {
            sense(backwards, c, s);
        }
        // The line's grade is 0 forwards and -0 backwards; tan keeps the sign of a zero.
        return step_end(start, c, s, std::fabs(distance), backwards ? -0.0 : 0.0);
    }

private:
    void sense(bool backwards, double& c, double& s) const {
        const double azimuth = backwards ? normalised_bearing(m_azimuth + kPi) : m_azimuth;
        c = std::cos(azimuth);
        s = std::sin(azimuth);
    }

    double m_azimuth;
    bool m_backwards;
    double m_cos = 0.0;
    double m_sin = 0.0;
};

/// One level step: the end point that CGeoLine::Set(start, azimuth, distance, 0) gives.
inline geo_nee level_step(const geo_nee& start, double azimuth, double distance) {
    return LevelStepper(azimuth, distance < 0.0).step(start, distance);
}

/// Plan length and grid bearing of the vector from one point to another.
struct PlanVector {
    double length;
    double azimuth;
};

inline PlanVector plan_vector(const geo_nee& from, const geo_nee& to) {
    const double dn = to.north - from.north;
    const double de = to.east - from.east;
    return {std::sqrt(dn * dn + de * de), bearing_of(dn, de)};
}

/// Station along a line of bearing `line_azimuth` of the end of a vector from the line's start:
/// the vector's length times the cosine of its angle to the line; `GEO_NULL` when either
/// bearing is.
inline double station_along(double line_azimuth, const PlanVector& v) {
    const double angle = divergence(line_azimuth, v.azimuth);
    if (angle == GEO_NULL) {
        return GEO_NULL; // a line without a direction has no stations
    }
    return v.length * std::cos(angle);
}

/// Right-positive offset from a line of bearing `line_azimuth` of the end of a vector from the
/// line's start; `GEO_NULL` when the line has no bearing.
inline double offset_across(double line_azimuth, const PlanVector& v) {
    if (line_azimuth == GEO_NULL) {
        return GEO_NULL; // a line without a direction has no sides
    }
    double d = normalised_bearing(line_azimuth - v.azimuth);
    if (d > kPi) {
        d -= kTwoPi;
    }
    // A point clockwise from the line's direction (d in (-pi, 0)) lies to the right.
    return -std::sin(d) * v.length;
}

} // namespace qv5::detail

#endif // QV5_GEOMETRY_TRAVERSE_H
