// Roads the iterator and search tests evaluate, built through the road's public interface.
#ifndef QV5_TESTS_ROAD_ITERATOR_ROADS_H
#define QV5_TESTS_ROAD_ITERATOR_ROADS_H

#include "qv5/geoarc.h"
#include "qv5/geoline.h"
#include "qv5/georoad.h"
#include "qv5/georoaditer.h"
#include "qv5/geospiral.h"
#include "qv5/geotemplate.h"

#include <cmath>

namespace qv5::test {

/// Adds elements to a road, each entering at the azimuth the road left off with (no kinks
/// unless asked for).
class RoadBuilder {
public:
    RoadBuilder(CGeoRoad& road, double north, double east, double azimuth, double interval = 20.0)
        : m_road(road), m_azimuth(azimuth) {
        m_road.SetPOBInfo(0.0, north, east, interval);
    }

    RoadBuilder& line(double length) {
        CGeoPoint o(geo_nee{0.0, 0.0, 0.0});
        CGeoLine l;
        l.Set(o, m_azimuth, length, 0.0);
        m_road.AddHorizontal(georoad_Line, &l);
        return *this;
    }
    RoadBuilder& turn(double radians) {
        m_azimuth = normalised(m_azimuth + radians);
        return *this;
    }
    RoadBuilder& arc(double radius, double length, geodef_Direction direction) {
        CGeoPoint o(geo_nee{0.0, 0.0, 0.0});
        CGeoArc a;
        a.Set(o, m_azimuth, radius, length, direction, 0.0);
        m_road.AddHorizontal(georoad_Arc, &a);
        m_azimuth = normalised(m_azimuth + sign(direction) * length / radius);
        return *this;
    }
    RoadBuilder& entry_spiral(double radius, double length, geodef_Direction direction) {
        CGeoPoint o(geo_nee{0.0, 0.0, 0.0});
        CGeoEntrySpiral s;
        s.Set(o, m_azimuth, direction, radius, length);
        m_road.AddHorizontal(georoad_EntrySpiral, &s);
        m_azimuth = normalised(m_azimuth + sign(direction) * length / (2.0 * radius));
        return *this;
    }
    RoadBuilder& exit_spiral(double radius, double length, geodef_Direction direction) {
        CGeoPoint o(geo_nee{0.0, 0.0, 0.0});
        CGeoExitSpiral s;
        s.Set(o, m_azimuth, direction, radius, length);
        m_road.AddHorizontal(georoad_ExitSpiral, &s);
        m_azimuth = normalised(m_azimuth + sign(direction) * length / (2.0 * radius));
        return *this;
    }

private:
    static double sign(geodef_Direction d) { return d == geodef_Right ? 1.0 : -1.0; }
    static double normalised(double a) {
        const double two_pi = 6.283185307179586;
        while (a < 0.0) {
            a += two_pi;
        }
        while (a >= two_pi) {
            a -= two_pi;
        }
        return a;
    }

    CGeoRoad& m_road;
    double m_azimuth;
};

/// Line 200, entry spiral 80, arc R 300 over 150, exit spiral 80, line 200; from (1000, 2000)
/// heading 30 degrees, turning right; 710 m long.
inline void build_curve_road(CGeoRoad& road) {
    RoadBuilder(road, 1000.0, 2000.0, 30.0 * 3.141592653589793 / 180.0)
        .line(200.0)
        .entry_spiral(300.0, 80.0, geodef_Right)
        .arc(300.0, 150.0, geodef_Right)
        .exit_spiral(300.0, 80.0, geodef_Right)
        .line(200.0);
}

/// Two PVIs on a rise of 6 in 300, a parabola of 100 at 300, falling to 101 at 700.
inline void add_profile(CGeoRoad& road) {
    georoad_Error error = georoad_Error{};
    road.AddVertical(georoad_VertPoint, 0.0, 100.0, 0.0, &error);
    road.AddVertical(georoad_VertParabola, 300.0, 106.0, 100.0, &error);
    road.AddVertical(georoad_VertPoint, 700.0, 101.0, 0.0, &error);
}

/// A template of one surface element: `width` metres at `angle`, raised `height` by a step at
/// the centreline, named `name`, optionally ending in a side slope.
inline CGeoTemplate flat_template(const char* name, double width, double angle, double height,
                                  bool side_slope = false) {
    CGeoTemplate t;
    t.SetName(CString(name));
    if (height != 0.0) {
        const geotemp_StepData step{0.0, height};
        t.AddElement(geotemp_Step, &step);
    }
    const geotemp_GradeWidthData gw{angle, width};
    t.AddElement(geotemp_GradeWidth, &gw);
    if (side_slope) {
        const geotemp_SideSlopeData slope{0.5, -0.5, 1.0};
        t.AddElement(geotemp_SideSlope, &slope);
    }
    return t;
}

/// An iterator whose protected road-way and transition tests a test may call.
class TestIterator : public CGeoRoadIterator {
public:
    using CGeoRoadIterator::CheckPointOnRoadWay;
    using CGeoRoadIterator::FindTemplateTransitionPoint;
};

/// A measured point at a grid position.
inline CGeoPoint grid_point(double north, double east, double elev) {
    return CGeoPoint(geo_nee{north, east, elev});
}

} // namespace qv5::test

#endif // QV5_TESTS_ROAD_ITERATOR_ROADS_H
