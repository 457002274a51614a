// The chain of a cross-section template and the questions asked of it.
//
// A template is walked outward from the centreline: surface elements (grade/width, delta H/V)
// and steps advance a running position, features mark it, fixed points stand at an absolute
// position without moving it, and a side slope hangs off wherever the chain ends. Everything
// here is evaluated in the form the hosts have always seen (slope as tan(angle), heights as
// start + run * slope), because hosts compare the numbers and the last bits matter.
#include "section/template_math.h"

#include "core/constants.h"

#include <cmath>
#include <cstring>

namespace qv5::detail {

std::size_t record_size(geotemp_ElementType type) {
    switch (type) {
    case geotemp_Step:
        return sizeof(geotemp_StepData);
    case geotemp_GradeWidth:
        return sizeof(geotemp_GradeWidthData);
    case geotemp_DeltaHV:
        return sizeof(geotemp_DeltaHVData);
    case geotemp_Feature:
        return sizeof(geotemp_FeatureData);
    case geotemp_FixedPoint:
        return sizeof(geotemp_FixedPointData);
    case geotemp_SideSlope:
        return sizeof(geotemp_SideSlopeData);
    default:
        return 0;
    }
}

ChainEntry make_entry(geotemp_ElementType type, const void* record) {
    ChainEntry entry;
    entry.type = type;
    entry.angle = GEO_NULL;
    entry.slope = GEO_NULL;
    entry.start_h = entry.start_v = entry.end_h = entry.end_v = 0.0;
    std::memset(entry.record.bytes, 0, sizeof entry.record.bytes);
    const std::size_t size = record_size(type);
    if (size != 0 && record != nullptr) {
        std::memcpy(entry.record.bytes, record, size);
    }
    return entry;
}

namespace {

/// An element that advances the running position by (dh, dv).
void advance(ChainEntry& e, double& h, double& v, double dh, double dv) {
    e.start_h = h;
    e.start_v = v;
    h += dh;
    v += dv;
    e.end_h = h;
    e.end_v = v;
}

/// An element that sits at the running position without moving it.
void mark(ChainEntry& e, double h, double v) {
    e.angle = GEO_NULL;
    e.slope = GEO_NULL;
    e.start_h = e.end_h = h;
    e.start_v = e.end_v = v;
}

} // namespace

ChainEnd derive_chain(ChainEntry* entries, std::size_t count) {
    double h = 0.0;
    double v = 0.0;
    for (std::size_t i = 0; i < count; ++i) {
        ChainEntry& e = entries[i];
        switch (e.type) {
        case geotemp_Step: {
            const geotemp_StepData r = e.record.step;
            e.angle = GEO_NULL;
            e.slope = GEO_NULL;
            advance(e, h, v, r.DeltaH, r.DeltaV);
            break;
        }
        case geotemp_GradeWidth: {
            const geotemp_GradeWidthData r = e.record.grade_width;
            e.angle = r.Angle;
            e.slope = std::tan(e.angle);
            advance(e, h, v, r.Width, r.Width * e.slope);
            break;
        }
        case geotemp_DeltaHV: {
            const geotemp_DeltaHVData r = e.record.delta_hv;
            if (std::fabs(r.DeltaH) < kVerticalFaceWidth) {
                // A face too narrow to carry a gradient is reported as vertical; its slope
                // stays unset (and is used as that tiny number by the surface test).
                e.angle = r.DeltaV > 0.0 ? kHalfPi : -kHalfPi;
                e.slope = GEO_NULL;
            } else {
                e.angle = std::atan(r.DeltaV / r.DeltaH);
                e.slope = std::tan(e.angle);
            }
            advance(e, h, v, r.DeltaH, r.DeltaV);
            break;
        }
        case geotemp_FixedPoint: {
            // A curb stands where its record puts it; the surface runs on past it unmoved.
            const geotemp_FixedPointData r = e.record.fixed_point;
            e.start_h = e.end_h = r.H;
            e.start_v = e.end_v = r.V;
            e.angle = r.Angle;
            e.slope = std::tan(e.angle);
            break;
        }
        default:
            mark(e, h, v);
            break;
        }
    }
    return ChainEnd{h, v};
}

SurfaceDeltas surface_deltas(const ChainEntry* entries, std::size_t count, double offset,
                             double height) {
    SurfaceDeltas out{GEO_NULL, GEO_NULL};
    for (std::size_t i = 0; i < count; ++i) {
        const ChainEntry& e = entries[i];
        switch (e.type) {
        case geotemp_Step:
            if (offset <= e.end_h) {
                return out; // the point faces a step: no surface under it
            }
            break;
        case geotemp_GradeWidth:
        case geotemp_DeltaHV:
            // Up to and including the end: a point exactly at an element's end belongs to it.
            // (A NaN offset belongs to no element and finds no surface.)
            if (offset <= e.end_h) {
                out.delta_v = height - (e.start_v + (offset - e.start_h) * e.slope);
                out.angle = e.angle;
                return out;
            }
            break;
        case geotemp_SideSlope:
            return out;
        default:
            break; // features, fixed points and unknown types carry no surface
        }
    }
    return out;
}

bool on_side_slope(const ChainEntry* entries, std::size_t count, double shoulder_h, double offset) {
    if (count == 0 || entries[count - 1].type != geotemp_SideSlope) {
        return false;
    }
    return std::fabs(offset) > shoulder_h;
}

SlopeCatch slope_catch(const geotemp_SideSlopeData& slope, ChainEnd shoulder, double offset,
                       double height, bool cut) {
    SlopeCatch out{0, GEO_NULL, cut ? slope.CutAngle : slope.FillAngle, GEO_NULL, GEO_NULL};
    const double dh = offset - shoulder.h;
    const double dv0 = height - shoulder.v;
    double run;
    if (cut) {
        if (dh < slope.DitchWidth) {
            out.in_ditch = 1;
            return out;
        }
        // The cut slope rises outward from the far edge of the ditch, at shoulder height.
        run = dh - slope.DitchWidth;
        out.delta_v = dv0 - std::tan(slope.CutAngle) * run;
        out.catch_offset = out.delta_v / std::tan(slope.CutAngle) + offset;
    } else {
        // The fill slope falls outward from the shoulder.
        run = dh;
        out.delta_v = std::tan(slope.FillAngle) * run + dv0;
        out.catch_offset = offset - out.delta_v / std::tan(slope.FillAngle);
    }
    if (run < kSlopeVerticalRun) {
        out.point_angle = dv0 > 0.0 ? kHalfPi : -kHalfPi;
    } else {
        out.point_angle = std::atan(dv0 / run);
    }
    return out;
}

TemplateRecord blend_record(geotemp_ElementType type, const TemplateRecord& a,
                            const TemplateRecord& b, double ratio) {
    TemplateRecord r;
    std::memset(r.bytes, 0, sizeof r.bytes);
    switch (type) {
    case geotemp_Step:
        r.step.DeltaH = blend(a.step.DeltaH, b.step.DeltaH, ratio);
        r.step.DeltaV = blend(a.step.DeltaV, b.step.DeltaV, ratio);
        break;
    case geotemp_GradeWidth:
        // The angle itself is blended, not its tangent.
        r.grade_width.Angle = blend(a.grade_width.Angle, b.grade_width.Angle, ratio);
        r.grade_width.Width = blend(a.grade_width.Width, b.grade_width.Width, ratio);
        break;
    case geotemp_DeltaHV:
        r.delta_hv.DeltaH = blend(a.delta_hv.DeltaH, b.delta_hv.DeltaH, ratio);
        r.delta_hv.DeltaV = blend(a.delta_hv.DeltaV, b.delta_hv.DeltaV, ratio);
        break;
    case geotemp_Feature:
        std::memcpy(r.feature.Name, a.feature.Name, sizeof r.feature.Name);
        r.feature.ValueA = blend(a.feature.ValueA, b.feature.ValueA, ratio);
        r.feature.ValueB = blend(a.feature.ValueB, b.feature.ValueB, ratio);
        break;
    case geotemp_FixedPoint:
        r.fixed_point.H = blend(a.fixed_point.H, b.fixed_point.H, ratio);
        r.fixed_point.V = blend(a.fixed_point.V, b.fixed_point.V, ratio);
        r.fixed_point.Angle = blend(a.fixed_point.Angle, b.fixed_point.Angle, ratio);
        break;
    case geotemp_SideSlope:
        r.side_slope.CutAngle = blend(a.side_slope.CutAngle, b.side_slope.CutAngle, ratio);
        r.side_slope.FillAngle = blend(a.side_slope.FillAngle, b.side_slope.FillAngle, ratio);
        r.side_slope.DitchWidth = blend(a.side_slope.DitchWidth, b.side_slope.DitchWidth, ratio);
        break;
    default:
        break;
    }
    return r;
}

CString feature_name(const geotemp_FeatureData& feature) {
    unsigned short units[33];
    std::memcpy(units, feature.Name, sizeof units);
    return CString::FromUtf16(units, 32);
}

} // namespace qv5::detail
