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
#include <vector>

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
    blend_into(type, a, b, ratio, r);
    return r;
}

void blend_into(geotemp_ElementType type, const TemplateRecord& a, const TemplateRecord& b,
                double ratio, TemplateRecord& out) {
    // Fields are read into locals first: the records are packed, and `out` may alias an input.
    switch (type) {
    case geotemp_Step: {
        const geotemp_StepData x = a.step;
        const geotemp_StepData y = b.step;
        out.step =
            geotemp_StepData{blend(x.DeltaH, y.DeltaH, ratio), blend(x.DeltaV, y.DeltaV, ratio)};
        break;
    }
    case geotemp_GradeWidth: {
        // The angle itself is blended, not its tangent.
        const geotemp_GradeWidthData x = a.grade_width;
        const geotemp_GradeWidthData y = b.grade_width;
        out.grade_width =
            geotemp_GradeWidthData{blend(x.Angle, y.Angle, ratio), blend(x.Width, y.Width, ratio)};
        break;
    }
    case geotemp_DeltaHV: {
        const geotemp_DeltaHVData x = a.delta_hv;
        const geotemp_DeltaHVData y = b.delta_hv;
        out.delta_hv =
            geotemp_DeltaHVData{blend(x.DeltaH, y.DeltaH, ratio), blend(x.DeltaV, y.DeltaV, ratio)};
        break;
    }
    case geotemp_Feature: {
        const double value_a = blend(a.feature.ValueA, b.feature.ValueA, ratio);
        const double value_b = blend(a.feature.ValueB, b.feature.ValueB, ratio);
        if (&out != &a) {
            std::memcpy(out.feature.Name, a.feature.Name, sizeof out.feature.Name);
        }
        out.feature.ValueA = value_a;
        out.feature.ValueB = value_b;
        break;
    }
    case geotemp_FixedPoint: {
        const geotemp_FixedPointData x = a.fixed_point;
        const geotemp_FixedPointData y = b.fixed_point;
        out.fixed_point.H = blend(x.H, y.H, ratio);
        out.fixed_point.V = blend(x.V, y.V, ratio);
        out.fixed_point.Angle = blend(x.Angle, y.Angle, ratio);
        // The reserved bytes belong to neither input's application: the blend has none.
        std::memset(out.fixed_point.Reserved, 0, sizeof out.fixed_point.Reserved);
        break;
    }
    case geotemp_SideSlope: {
        const geotemp_SideSlopeData x = a.side_slope;
        const geotemp_SideSlopeData y = b.side_slope;
        out.side_slope = geotemp_SideSlopeData{blend(x.CutAngle, y.CutAngle, ratio),
                                               blend(x.FillAngle, y.FillAngle, ratio),
                                               blend(x.DitchWidth, y.DitchWidth, ratio)};
        break;
    }
    default:
        break;
    }
}

void blend_chain(const ChainEntry* mine, std::size_t count, const ChainEntry* theirs,
                 std::size_t their_count, double ratio, std::vector<ChainEntry>& out) {
    out.reserve(out.size() + count);
    for (std::size_t i = 0; i < count; ++i) {
        const geotemp_ElementType t = mine[i].type;
        if (t < geotemp_Step || t > geotemp_SideSlope) {
            continue;
        }
        const ChainEntry& partner =
            theirs != nullptr && i < their_count && theirs[i].type == t ? theirs[i] : mine[i];
        // The entry starts as a copy of this template's and its record is blended in place (a
        // record assembled aside and then copied would be read back before its packed stores
        // land); the derived fields are rewritten by the chain derivation that follows.
        out.push_back(mine[i]);
        blend_into(t, mine[i].record, partner.record, ratio, out.back().record);
    }
}

CString feature_name(const geotemp_FeatureData& feature) {
    unsigned short units[33];
    std::memcpy(units, feature.Name, sizeof units);
    return CString::FromUtf16(units, 32);
}

} // namespace qv5::detail
