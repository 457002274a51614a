// The maths under CGeoSection, on plain values: finding the segment under a station and the
// elevation and grade along it. Internal header; never installed.
#ifndef QV5_SECTION_SECTION_MATH_H
#define QV5_SECTION_SECTION_MATH_H

#include "qv5/geosection.h"

#include <cstddef>
#include <cstdint>

namespace qv5::detail {

/// Within this distance (metres) after a break point the grade of a section is vertical.
inline constexpr double kBreakGradeDistance = 0.0001;
/// Longest break point name, in UTF-16 code units.
inline constexpr std::size_t kSectionNameLength = 32;

/// One break point of a section.
struct SectionBreak {
    double station;                              ///< metres from the section's start
    double elevation;                            ///< metres
    std::uint32_t user;                          ///< the caller's value
    unsigned short name[kSectionNameLength + 1]; ///< UTF-16, always zero-terminated
    geosect_SegmentType type;                    ///< the segment that ends here
};

/// The segment of a section under a station: from the previous break point (or the start) to
/// the break point that ends at or after the station.
struct SectionSpan {
    bool found;            ///< false outside [0, length], with no break points, or beyond the last
    double prev_station;   ///< metres
    double prev_elevation; ///< metres (may be `GEO_NULL`)
    double seg_station;    ///< metres
    double seg_elevation;  ///< metres
    geosect_SegmentType type; ///< the segment's type
};

/// A break point holding a copy of at most 32 units of `name` (a null name is empty).
SectionBreak make_break(double station, double elevation, std::uint32_t user,
                        const unsigned short* name, geosect_SegmentType type);

/// The segment under `station` of a section of `length` whose start lies at `start_elevation`.
SectionSpan find_span(const SectionBreak* breaks, std::size_t count, double length,
                      double start_elevation, double station);

/// Elevation at `station` along a span; `GEO_NULL` when not found or without surface.
double span_elevation(const SectionSpan& span, double station);

/// Grade angle at `station` along a span; ±pi/2 just after (or at) the previous break point;
/// `GEO_NULL` when not found or without surface.
double span_grade(const SectionSpan& span, double station);

} // namespace qv5::detail

#endif // QV5_SECTION_SECTION_MATH_H
