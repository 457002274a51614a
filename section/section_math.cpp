// Elevation and grade along a section profile.
//
// A section is a polyline in (station, elevation) from its start point through its break
// points. A station belongs to the segment that ends at or after it, so a station exactly at a
// break point reads that break point's elevation, and the grade there is taken from the
// following rise: hosts treat a break point as a vertical change of grade.
#include "section/section_math.h"

#include "core/constants.h"

#include <cmath>

namespace qv5::detail {

SectionBreak make_break(double station, double elevation, std::uint32_t user,
                        const unsigned short* name, geosect_SegmentType type) {
    SectionBreak b{};
    b.station = station;
    b.elevation = elevation;
    b.user = user;
    b.type = type;
    std::size_t i = 0;
    if (name != nullptr) {
        for (; i < kSectionNameLength && name[i] != 0; ++i) {
            b.name[i] = name[i];
        }
    }
    b.name[i] = 0;
    return b;
}

SectionSpan find_span(const SectionBreak* breaks, std::size_t count, double length,
                      double start_elevation, double station) {
    SectionSpan span{false, 0.0, start_elevation, 0.0, 0.0, geosect_NoSurface};
    // Written as "not inside" so that a NaN station, which lies nowhere, is outside too.
    if (!(station >= 0.0 && station <= length) || count == 0) {
        return span;
    }
    for (std::size_t i = 0; i < count; ++i) {
        if (station > breaks[i].station) {
            span.prev_station = breaks[i].station;
            span.prev_elevation = breaks[i].elevation;
            continue;
        }
        span.found = true;
        span.seg_station = breaks[i].station;
        span.seg_elevation = breaks[i].elevation;
        span.type = breaks[i].type;
        return span;
    }
    return span; // the profile ends before the station
}

double span_elevation(const SectionSpan& span, double station) {
    if (!span.found || span.type == geosect_NoSurface) {
        return GEO_NULL;
    }
    return span.prev_elevation + (station - span.prev_station) /
                                     (span.seg_station - span.prev_station) *
                                     (span.seg_elevation - span.prev_elevation);
}

double span_grade(const SectionSpan& span, double station) {
    if (!span.found || span.type == geosect_NoSurface) {
        return GEO_NULL;
    }
    // Measured from the previous break, not on the segment's length: at a break point (and
    // within a tenth of a millimetre after it) the grade is reported as vertical.
    if (station - span.prev_station < kBreakGradeDistance) {
        return span.seg_elevation > span.prev_elevation ? kHalfPi : -kHalfPi;
    }
    return std::atan((span.seg_elevation - span.prev_elevation) /
                     (span.seg_station - span.prev_station));
}

} // namespace qv5::detail
