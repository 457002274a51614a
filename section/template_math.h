// The maths under CGeoTemplate, on plain values: the chain derived from the element records,
// the height above the surface, the side-slope catch and the blend of two records. Internal
// header; never installed.
#ifndef QV5_SECTION_TEMPLATE_MATH_H
#define QV5_SECTION_TEMPLATE_MATH_H

#include "qv5/geotemplate.h"

#include <cstddef>

namespace qv5::detail {

/// A delta H/V narrower than this (metres) is a vertical face.
inline constexpr double kVerticalFaceWidth = 0.0005;
/// A point closer than this (metres, horizontally) to the start of a side slope lies on the
/// slope's vertical.
inline constexpr double kSlopeVerticalRun = 0.001;
/// Largest record of any element type (the feature).
inline constexpr std::size_t kLargestRecord = sizeof(geotemp_FeatureData);

/// Storage for one element's record, whatever its type.
union TemplateRecord {
    geotemp_StepData step;
    geotemp_GradeWidthData grade_width;
    geotemp_DeltaHVData delta_hv;
    geotemp_FeatureData feature;
    geotemp_FixedPointData fixed_point;
    geotemp_SideSlopeData side_slope;
    unsigned char bytes[kLargestRecord];
};

/// One element of a template with its derived place in the section.
struct ChainEntry {
    geotemp_ElementType type; ///< as given; unknown values are kept
    double angle;             ///< slope angle, radians, or `GEO_NULL`
    double slope;             ///< tan(angle), or `GEO_NULL`
    double start_h;           ///< start point, metres outward
    double start_v;           ///< start height, metres
    double end_h;             ///< end point, metres outward
    double end_v;             ///< end height, metres
    TemplateRecord record;    ///< zero beyond the type's record size; all zero for unknown types
};

/// Where the chain ends: the shoulder.
struct ChainEnd {
    double h;
    double v;
};

/// Size of a type's record in bytes; 0 for `geotemp_None` and unknown types.
std::size_t record_size(geotemp_ElementType type);

/// An entry of `type` holding a copy of `record` (a null record reads as zeros), its derived
/// fields not yet set.
ChainEntry make_entry(geotemp_ElementType type, const void* record);

/// Derives every entry's angle, slope, start and end from the records, walking outward from
/// (0, 0), and returns the end of the chain.
ChainEnd derive_chain(ChainEntry* entries, std::size_t count);

/// The height of a point above the surface and the surface's angle at an offset.
struct SurfaceDeltas {
    double delta_v; ///< `GEO_NULL` when no surface element covers the offset
    double angle;   ///< `GEO_NULL` likewise
};

/// Height of (offset, height) above the first surface element whose end is not before
/// `offset`; undefined in front of a step, at a side slope or beyond the chain.
SurfaceDeltas surface_deltas(const ChainEntry* entries, std::size_t count, double offset,
                             double height);

/// True when the chain ends in a side slope and |offset| lies strictly beyond the shoulder.
bool on_side_slope(const ChainEntry* entries, std::size_t count, double shoulder_h, double offset);

/// How a point beyond the shoulder stands against a side slope.
struct SlopeCatch {
    int in_ditch;        ///< 1 when in cut the point lies within the ditch
    double delta_v;      ///< height above the slope line, or `GEO_NULL`
    double slope_angle;  ///< CutAngle or FillAngle
    double point_angle;  ///< angle from the slope's start to the point, or `GEO_NULL`
    double catch_offset; ///< where the slope reaches the point's height, or `GEO_NULL`
};

/// The catch of a point at (offset, height) against the cut (`cut`) or fill slope that starts
/// at the shoulder. The caller has checked that the point lies beyond the shoulder.
SlopeCatch slope_catch(const geotemp_SideSlopeData& slope, ChainEnd shoulder, double offset,
                       double height, bool cut);

/// a + (b - a) * ratio, the blend of one field. At the ends of the blend the inputs come back
/// exactly: a + (b - a) rounds away from b for about one pair in twelve, and a template blended
/// at a ratio of exactly 0 or 1 must be the template it names, to the last bit (and a -0.0 or an
/// infinite field must survive a ratio of 0).
inline double blend(double a, double b, double ratio) {
    if (ratio == 0.0) {
        return a;
    }
    if (ratio == 1.0) {
        return b;
    }
    return a + (b - a) * ratio;
}

/// The record of `type` whose every double is blended from `a` toward `b`; a feature's name
/// comes from `a` and a fixed point's reserved bytes are zero. Unknown types give zeros.
TemplateRecord blend_record(geotemp_ElementType type, const TemplateRecord& a,
                            const TemplateRecord& b, double ratio);

/// The name of a feature record (at most 32 characters, whatever the record holds).
CString feature_name(const geotemp_FeatureData& feature);

} // namespace qv5::detail

#endif // QV5_SECTION_TEMPLATE_MATH_H
