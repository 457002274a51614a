// Small helpers that add typed elements to a template, for the section tests.
#ifndef QV5_TESTS_SECTION_TEMPLATE_BUILDERS_H
#define QV5_TESTS_SECTION_TEMPLATE_BUILDERS_H

#include "qv5/geotemplate.h"

#include <cstring>

namespace qv5::test {

inline int add_step(CGeoTemplate& t, double dh, double dv) {
    geotemp_StepData r{dh, dv};
    return t.AddElement(geotemp_Step, &r);
}

inline int add_grade_width(CGeoTemplate& t, double angle, double width) {
    geotemp_GradeWidthData r{angle, width};
    return t.AddElement(geotemp_GradeWidth, &r);
}

inline int add_delta_hv(CGeoTemplate& t, double dh, double dv) {
    geotemp_DeltaHVData r{dh, dv};
    return t.AddElement(geotemp_DeltaHV, &r);
}

/// A feature record with an ASCII name (copied unit by unit, at most 32 characters).
inline geotemp_FeatureData feature_record(const char* name, double a = 0.0, double b = 0.0) {
    geotemp_FeatureData r;
    std::memset(&r, 0, sizeof r);
    for (int i = 0; i < 32 && name[i] != 0; ++i) {
        r.Name[i] = static_cast<unsigned char>(name[i]);
    }
    r.ValueA = a;
    r.ValueB = b;
    return r;
}

inline int add_feature(CGeoTemplate& t, const char* name, double a = 0.0, double b = 0.0) {
    geotemp_FeatureData r = feature_record(name, a, b);
    return t.AddElement(geotemp_Feature, &r);
}

inline int add_fixed_point(CGeoTemplate& t, double h, double v, double angle) {
    geotemp_FixedPointData r;
    std::memset(&r, 0, sizeof r);
    r.H = h;
    r.V = v;
    r.Angle = angle;
    return t.AddElement(geotemp_FixedPoint, &r);
}

inline int add_side_slope(CGeoTemplate& t, double cut, double fill, double ditch) {
    geotemp_SideSlopeData r{cut, fill, ditch};
    return t.AddElement(geotemp_SideSlope, &r);
}

/// Start, deltas and angle of element n as GetNthElement gives them.
struct ElementView {
    int ok;
    double start_h, start_v, delta_h, delta_v, angle;
};

inline ElementView view_of(const CGeoTemplate& t, int n) {
    ElementView v{0, -1.0, -1.0, -1.0, -1.0, -1.0};
    v.ok = t.GetNthElement(n, t.NthElementType(n), v.start_h, v.start_v, v.delta_h, v.delta_v,
                           v.angle);
    return v;
}

} // namespace qv5::test

#endif // QV5_TESTS_SECTION_TEMPLATE_BUILDERS_H
