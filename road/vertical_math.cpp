#include "road/vertical_math.h"

#include "core/constants.h"

#include <cmath>

namespace qv5::detail {

namespace {

bool is_value(double value) {
    return value != GEO_NULL && std::isfinite(value);
}

bool is_curve(georoad_VertElementType type) {
    return type == georoad_VertParabola || type == georoad_VertCircular;
}

} // namespace

VertElementRecord empty_vertical_record(georoad_VertElementType type, void* element) {
    VertElementRecord record;
    record.type = type;
    record.element = element;
    record.station = GEO_NULL;
    record.elevation = GEO_NULL;
    record.curveStart = GEO_NULL;
    record.curveEnd = GEO_NULL;
    record.curveStartElev = GEO_NULL;
    record.curveEndElev = GEO_NULL;
    record.gradeIn = GEO_NULL;
    record.gradeOut = GEO_NULL;
    record.curveRate = GEO_NULL;
    record.meanGrade = GEO_NULL;
    record.curveElevAtPVI = GEO_NULL;
    return record;
}

void derive_profile(VertElementRecord* records, const PviEntry* entries, int count, int first,
                    ProfileLimits& limits) {
    const int last = count - 1;
    for (int i = first < 0 ? 0 : first; i < count; ++i) {
        VertElementRecord& r = records[i];
        r.station = entries[i].station;
        r.elevation = entries[i].elevation;
        switch (r.type) {
        case georoad_VertPoint:
            r.curveStart = r.station;
            r.curveEnd = r.station;
            r.curveStartElev = r.elevation;
            r.curveEndElev = r.elevation;
            r.gradeIn = GEO_NULL;
            r.gradeOut = GEO_NULL;
            if (i == 0) {
                limits.start = r.station;
            }
            if (i == last) {
                limits.end = r.station;
            }
            break;
        case georoad_VertParabola:
        case georoad_VertCircular:
            r.curveStart = r.station - entries[i].length * 0.5;
            r.curveEnd = GEO_NULL;
            r.gradeIn = GEO_NULL;
            r.gradeOut = GEO_NULL;
            // A circular curve as the last PVI leaves the profile's end where it was.
            if (i == last && r.type == georoad_VertParabola) {
                limits.end = r.station;
            }
            break;
        default:
            break;
        }
        if (i == 0) {
            continue;
        }
        VertElementRecord& p = records[i - 1];
        const double ds = r.station - p.station;
        const double dz = r.elevation - p.elevation;
        if (ds < kVerticalGradeRun) {
            r.gradeIn = dz > 0.0 ? kPi : -kPi;
        } else {
            r.gradeIn = std::atan(dz / ds);
        }
        p.gradeOut = r.gradeIn;
        r.curveStartElev = p.elevation + (r.curveStart - p.station) * std::tan(r.gradeIn);
        if (!is_curve(p.type)) {
            continue;
        }
        const double length = entries[i - 1].length;
        const double half = length * 0.5;
        p.curveEnd = p.station + length * 0.5;
        p.curveEndElev = p.elevation + (p.curveEnd - p.station) * std::tan(p.gradeOut);
        p.meanGrade = (p.gradeIn + p.gradeOut) * 0.5;
        if (p.type == georoad_VertParabola) {
            p.curveRate = (p.gradeOut - p.meanGrade) / length;
            p.curveElevAtPVI = p.curveEndElev - p.curveRate * half * half - p.meanGrade * half;
        } else if (std::fabs(p.gradeIn - p.gradeOut) < kStraightCurveGradeChange) {
            p.curveRate = kStraightCurveRadius;
            p.curveElevAtPVI = 0.0;
        } else {
            p.curveRate = (half / std::cos(p.meanGrade)) / std::tan(p.meanGrade);
            p.curveElevAtPVI = p.curveEndElev - p.curveRate * half * half - p.meanGrade * half;
        }
    }
}

double parabola_elevation(const VertElementRecord& record, double station) {
    const double x = station - record.station;
    return record.curveElevAtPVI + record.meanGrade * x + record.curveRate * x * x;
}

bool fits_between(const VertElementRecord* previous, const VertElementRecord* next,
                  georoad_VertElementType type, double station, double length) {
    const double half = is_curve(type) ? length / 2.0 : 0.0;
    if (next != nullptr && !(station + half < next->curveStart)) {
        return false;
    }
    if (previous != nullptr && !(station - half > previous->curveEnd)) {
        return false;
    }
    return true;
}

bool fits_after(const VertElementRecord* last, georoad_VertElementType type, double station,
                double length) {
    if (last == nullptr) {
        return type == georoad_VertPoint;
    }
    // A last curve's end is undefined (the no-value marker, a tiny positive number) until a
    // successor exists, so what follows a curve is in effect not tested against it.
    const double begin = is_curve(type) ? station - length / 2.0 : station;
    return !(begin <= last->curveEnd);
}

bool is_usable_entry(georoad_VertElementType type, double station, double elevation,
                     double length) {
    if (type != georoad_VertPoint && !is_curve(type)) {
        return false;
    }
    if (!is_value(station) || !is_value(elevation)) {
        return false;
    }
    return !is_curve(type) || (is_value(length) && length > 0.0);
}

} // namespace qv5::detail
