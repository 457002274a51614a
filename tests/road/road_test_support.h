// Element makers and a road that opens its protected members to the road tests.
#ifndef QV5_TESTS_ROAD_ROAD_TEST_SUPPORT_H
#define QV5_TESTS_ROAD_ROAD_TEST_SUPPORT_H

#include "qv5/geoarc.h"
#include "qv5/geoline.h"
#include "qv5/georoad.h"
#include "qv5/geospiral.h"

namespace qv5::test {

/// A road whose protected operations and arrays the tests may reach.
class OpenRoad : public CGeoRoad {
public:
    using CGeoRoad::operator=;
    using CGeoRoad::UpdateHorizontalElements;
    using CGeoRoad::UpdateStationing;
    using CGeoRoad::UpdateVerticalElements;
    const HorzElementRecord* HorzRecords() const { return m_horzElements; }
    const VertElementRecord* VertRecords() const { return m_vertElements; }
    const void* ApplicationRecords() const { return m_templateApplications; }
    const void* TemplateArray() const { return m_templates; }
};

inline CGeoLine line_of(double azimuth, double length) {
    CGeoPoint origin(geo_nee{0.0, 0.0, 0.0});
    CGeoLine line;
    line.Set(origin, azimuth, length, 0.0);
    return line;
}

inline CGeoArc arc_of(double azimuth, double radius, double length, geodef_Direction direction) {
    CGeoPoint origin(geo_nee{0.0, 0.0, 0.0});
    CGeoArc arc;
    arc.Set(origin, azimuth, radius, length, direction, 0.0);
    return arc;
}

inline CGeoEntrySpiral entry_of(double azimuth, double radius, double length,
                                geodef_Direction direction) {
    CGeoPoint origin(geo_nee{0.0, 0.0, 0.0});
    CGeoEntrySpiral spiral;
    spiral.Set(origin, azimuth, direction, radius, length);
    return spiral;
}

inline CGeoExitSpiral exit_of(double azimuth, double radius, double length,
                              geodef_Direction direction) {
    CGeoPoint origin(geo_nee{0.0, 0.0, 0.0});
    CGeoExitSpiral spiral;
    spiral.Set(origin, azimuth, direction, radius, length);
    return spiral;
}

} // namespace qv5::test

#endif
