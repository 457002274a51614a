// The circle maths under CGeoArc, on plain values. Internal header; never installed.
#ifndef QV5_GEOMETRY_ARC_MATH_H
#define QV5_GEOMETRY_ARC_MATH_H

#include "qv5/geodef.h"

namespace qv5::detail {

/// The circle an arc lies on, as its operations use it.
struct ArcCircle {
    geo_nee centre;      ///< plan position of the centre, with the start's elevation
    double start_radial; ///< azimuth from the centre to the start point
    double radius;       ///< metres
};

/// Station, offset and tangent azimuth of a point against an arc.
struct ArcDeltas {
    double station; ///< metres along the arc from its start
    double offset;  ///< metres, positive right of the direction of travel
    double azimuth; ///< tangent azimuth at the station; `GEO_NULL` without an entry azimuth
};

/// Azimuth of the radius through the point a central angle along the arc: the start radius
/// turned clockwise by `angle` for a right-turning arc, anticlockwise otherwise.
double arc_radial_azimuth(const ArcCircle& circle, double angle, bool turns_right);

/// Inverts an arc for a point with plan coordinates (the caller tests them).
/// @param arc_angle the arc's central angle: the cut-over between stations behind the start
///        and beyond the end lies half-way round the rest of the circle, at arc_angle / 2 + pi
/// @param entry_azimuth tangent azimuth at the start (may be `GEO_NULL`)
/// @param direction the arc's direction: a non-zero direction sweeps clockwise
ArcDeltas arc_deltas(const ArcCircle& circle, double arc_angle, double entry_azimuth,
                     geodef_Direction direction, const geo_nee& point);

} // namespace qv5::detail

#endif // QV5_GEOMETRY_ARC_MATH_H
