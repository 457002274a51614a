// The maths of the circular arc on plain values: the radius turned by a central angle, and the
// station, offset and tangent azimuth of a point measured round the circle. The class in arc.cpp
// holds the caches; everything here takes values and returns values.
#include "geometry/arc_math.h"

#include "core/angles.h"
#include "core/constants.h"

#include <cmath>

namespace qv5::detail {

double arc_radial_azimuth(const ArcCircle& circle, double angle, bool turns_right) {
    return normalised_bearing(turns_right ? circle.start_radial + angle
                                          : circle.start_radial - angle);
}

ArcDeltas arc_deltas(const ArcCircle& circle, double arc_angle, double entry_azimuth,
                     geodef_Direction direction, const geo_nee& point) {
    const double dn = point.north - circle.centre.north;
    const double de = point.east - circle.centre.east;
    const double to_point = bearing_of(dn, de);
    const double distance = std::sqrt(dn * dn + de * de);

    // Angle from the radius through the point back to the start radius, clockwise; for a
    // right-turning arc (which sweeps clockwise) the swept angle is its complement.
    double swept = normalised_bearing(circle.start_radial - to_point);
    if (direction != geodef_Left) {
        swept = kTwoPi - swept;
    }
    ArcDeltas deltas;
    // The part of the circle the arc does not cover is split half-way round: points nearer the
    // start than the end are given a negative station. (A `GEO_NULL` angle counts as 0.)
    if (swept > arc_angle * 0.5 + kPi) {
        deltas.station = -(circle.radius * (kTwoPi - swept));
    } else {
        deltas.station = swept * circle.radius;
    }
    deltas.offset = circle.radius - distance;
    if (direction == geodef_Left) {
        deltas.offset = -deltas.offset; // the centre of a left turn lies to the left
    }
    if (entry_azimuth == GEO_NULL) {
        deltas.azimuth = GEO_NULL;
    } else {
        deltas.azimuth = normalised_bearing(direction == geodef_Right ? entry_azimuth + swept
                                                                      : entry_azimuth - swept);
    }
    return deltas;
}

} // namespace qv5::detail
