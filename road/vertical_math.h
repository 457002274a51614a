// The vertical profile as values: the quantities each PVI derives from its neighbours, and the
// overlap test of a new PVI. Internal header; never installed.
#ifndef QV5_ROAD_VERTICAL_MATH_H
#define QV5_ROAD_VERTICAL_MATH_H

#include "qv5/georoad.h"

namespace qv5::detail {

/// Two PVIs closer than this (metres, signed) have a vertical grade between them.
inline constexpr double kVerticalGradeRun = 0.0001;
/// Grades in and out of a circular curve closer than this (radians) make it a straight.
inline constexpr double kStraightCurveGradeChange = 0.0002;
/// The radius of a circular vertical curve between equal grades.
inline constexpr double kStraightCurveRadius = 1e100;

/// What the user entered for one PVI.
struct PviEntry {
    georoad_VertElementType type;
    double station;
    double elevation;
    double length; ///< curve length; not used for a point
};

/// The profile's first and last station as the derivation leaves them.
struct ProfileLimits {
    double start;
    double end;
};

/// A record whose every derived value is undefined.
VertElementRecord empty_vertical_record(georoad_VertElementType type, void* element);

/// Recomputes records first .. count-1 (and the curve quantities of record first-1) from the
/// entered values, in place. `limits` holds the road's vertical start and end station and is
/// updated where a point or a parabola says so; a circular curve as last PVI leaves the end.
void derive_profile(VertElementRecord* records, const PviEntry* entries, int count, int first,
                    ProfileLimits& limits);

/// The curve's elevation at a station (metres): elevation at PVI + mean grade x + rate x^2, x
/// being the distance from the PVI, as the profile evaluates its curves.
double parabola_elevation(const VertElementRecord& record, double station);

/// Whether a PVI may stand between two records: station + half its length (a point: its
/// station) strictly before the next record's curve start, station - half its length strictly
/// after the previous record's curve end. A null neighbour is not tested.
bool fits_between(const VertElementRecord* previous, const VertElementRecord* next,
                  georoad_VertElementType type, double station, double length);

/// Whether a PVI may be appended after `last` (null on an empty profile): a curve may not be
/// first; a point must lie after the last curve end, a curve's start likewise.
bool fits_after(const VertElementRecord* last, georoad_VertElementType type, double station,
                double length);

/// Whether the entered values are usable: a known type, a finite station and elevation and,
/// for a curve, a finite positive length.
bool is_usable_entry(georoad_VertElementType type, double station, double elevation, double length);

} // namespace qv5::detail

#endif // QV5_ROAD_VERTICAL_MATH_H
