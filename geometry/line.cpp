// The straight line element.
#include "qv5/geoline.h"

#include "geometry/angles.h"
#include "geometry/constants.h"

#include <algorithm>
#include <cmath>

using namespace qv5::detail;

namespace {

/// The grid of a point as a temporary copy of it would derive it: the point itself is left as
/// it is, so a later change of its station still reaches it.
geo_nee grid_of_copy(CGeoPoint& point) {
    geo_nee grid;
    if ((point.Flags() & CGeoPoint::PT_GRID) != 0) {
        return point.GetGrid(grid);
    }
    CGeoPoint copy(point);
    return copy.GetGrid(grid);
}

bool has_plan(const geo_nee& grid) {
    return grid.north != GEO_NULL && grid.east != GEO_NULL;
}

/// Plan distance and bearing from one point to another: what a temporary line between them
/// reports as its length and azimuth.
struct PlanVector {
    double length;
    double azimuth;
};

bool plan_vector(CGeoPoint& from, CGeoPoint& to, PlanVector& vector) {
    const geo_nee a = grid_of_copy(from);
    const geo_nee b = grid_of_copy(to);
    if (!has_plan(a) || !has_plan(b)) {
        return false;
    }
    const double dn = b.north - a.north;
    const double de = b.east - a.east;
    vector.length = std::sqrt(dn * dn + de * de);
    vector.azimuth = bearing_of(dn, de);
    return true;
}

} // namespace

CGeoLine::CGeoLine()
    : m_azimuth(0.0), m_hDistance(0.0), m_grade(0.0), m_vDistance(0.0), m_deltaNorth(0.0),
      m_deltaEast(0.0), m_known(0) {}

CGeoLine::CGeoLine(geo_nee& start, geo_nee& end) : CGeoLine() {
    CGeoPoint a(start);
    CGeoPoint b(end);
    Set(a, b);
}

CGeoLine::CGeoLine(CGeoPoint& start, CGeoPoint& end) : CGeoLine() {
    Set(start, end);
}

CGeoLine::CGeoLine(const CGeoLine& other) = default;

CGeoLine& CGeoLine::operator=(const CGeoLine& other) = default;

CGeoLine::~CGeoLine() = default;

void CGeoLine::Set(CGeoPoint& start, CGeoPoint& end) {
    m_startPt = start;
    m_endPt = end;
    m_known = 0;
}

void CGeoLine::Set(CGeoPoint& start, double azimuth, double distance, double grade) {
    if (distance < 0.0) {
        distance = std::fabs(distance);
        azimuth = normalised_bearing(azimuth + kPi);
        grade = -grade;
    }
    geo_nee end;
    end.north = start.Northing() + std::cos(azimuth) * distance;
    end.east = start.Easting() + std::sin(azimuth) * distance;
    end.elev =
        start.Elevation() == GEO_NULL ? GEO_NULL : start.Elevation() + std::tan(grade) * distance;
    m_startPt = start;
    m_endPt = start; // the end keeps the start's station link
    m_endPt.SetGrid(end);
    m_azimuth = azimuth;
    m_hDistance = distance;
    m_grade = grade;
    m_known = KNOWN_HDISTANCE | KNOWN_GRADE | KNOWN_AZIMUTH;
}

CGeoPoint& CGeoLine::StartPt() {
    return m_startPt;
}

CGeoPoint& CGeoLine::EndPt() {
    return m_endPt;
}

double CGeoLine::GridDeltaNorth() {
    if ((m_known & KNOWN_DELTA_NORTH) != 0) {
        return m_deltaNorth;
    }
    m_known |= KNOWN_DELTA_NORTH;
    if (m_startPt.Ok2DGrid() == 0 || m_endPt.Ok2DGrid() == 0) {
        return GEO_NULL;
    }
    m_deltaNorth = m_endPt.Northing() - m_startPt.Northing();
    return m_deltaNorth;
}

double CGeoLine::GridDeltaEast() {
    if ((m_known & KNOWN_DELTA_EAST) != 0) {
        return m_deltaEast;
    }
    m_known |= KNOWN_DELTA_EAST;
    if (m_startPt.Ok2DGrid() == 0 || m_endPt.Ok2DGrid() == 0) {
        return GEO_NULL;
    }
    m_deltaEast = m_endPt.Easting() - m_startPt.Easting();
    return m_deltaEast;
}

double CGeoLine::GridAzimuth() {
    if ((m_known & KNOWN_AZIMUTH) != 0) {
        return m_azimuth;
    }
    m_known |= KNOWN_AZIMUTH;
    const double dn = GridDeltaNorth();
    const double de = GridDeltaEast();
    if (dn == GEO_NULL || de == GEO_NULL) {
        return GEO_NULL;
    }
    m_azimuth = bearing_of(dn, de);
    return m_azimuth;
}

double CGeoLine::GridHDistance() {
    if ((m_known & KNOWN_HDISTANCE) != 0) {
        return m_hDistance;
    }
    m_known |= KNOWN_HDISTANCE;
    const double dn = GridDeltaNorth();
    const double de = GridDeltaEast();
    if (dn == GEO_NULL || de == GEO_NULL) {
        return GEO_NULL;
    }
    m_hDistance = std::sqrt(dn * dn + de * de);
    return m_hDistance;
}

double CGeoLine::GeoidVDistance() {
    if ((m_known & KNOWN_VDISTANCE) != 0) {
        return m_vDistance;
    }
    m_known |= KNOWN_VDISTANCE;
    const double start = m_startPt.Elevation();
    const double end = m_endPt.Elevation();
    if (start == GEO_NULL || end == GEO_NULL) {
        return GEO_NULL;
    }
    m_vDistance = end - start;
    return m_vDistance;
}

double CGeoLine::GridSlopeDistance() {
    const double h = GridHDistance();
    const double v = GeoidVDistance();
    if (h == GEO_NULL || v == GEO_NULL) {
        return GEO_NULL;
    }
    return std::sqrt(h * h + v * v);
}

double CGeoLine::GeoidGrade() {
    if ((m_known & KNOWN_GRADE) != 0) {
        return m_grade;
    }
    m_known |= KNOWN_GRADE;
    if (m_startPt.Ok3DGrid() == 0 || m_endPt.Ok3DGrid() == 0) {
        return GEO_NULL;
    }
    const double h = GridHDistance();
    const double v = GeoidVDistance();
    if (h < kVerticalTolerance && std::fabs(v) < kVerticalTolerance) {
        m_grade = 0.0;
    } else if (h < kVerticalTolerance) {
        // A vertical line is given a grade of +-pi (not +-pi/2 as a gradient would be): hosts
        // compare against +-pi to recognise it.
        m_grade = v > 0.0 ? kPi : -kPi;
    } else {
        m_grade = std::atan(v / h);
    }
    return m_grade;
}

double CGeoLine::GridDivergence(double azimuth) {
    return divergence(GridAzimuth(), azimuth);
}

double CGeoLine::GridDivergence(CGeoLine& other) {
    return GridDivergence(other.GridAzimuth());
}

double CGeoLine::GridDivergenceClockwise(CGeoLine& other) {
    const double mine = GridAzimuth();
    const double theirs = other.GridAzimuth();
    if (mine == GEO_NULL || theirs == GEO_NULL) {
        return GEO_NULL;
    }
    return normalised_bearing(mine - theirs);
}

double CGeoLine::GridStation(CGeoPoint& point) {
    // The foot of the perpendicular, from the start -> point vector and its angle to the line.
    PlanVector to_point;
    if (!plan_vector(m_startPt, point, to_point)) {
        return GEO_NULL;
    }
    const double angle = divergence(GridAzimuth(), to_point.azimuth);
    if (angle == GEO_NULL) {
        return GEO_NULL; // a line without a direction has no stations
    }
    return to_point.length * std::cos(angle);
}

double CGeoLine::GridOffset(CGeoPoint& point) {
    PlanVector to_point;
    if (!plan_vector(m_startPt, point, to_point)) {
        return GEO_NULL;
    }
    const double azimuth = GridAzimuth();
    if (azimuth == GEO_NULL) {
        return GEO_NULL; // a line without a direction has no sides
    }
    double d = normalised_bearing(azimuth - to_point.azimuth);
    if (d > kPi) {
        d -= kTwoPi;
    }
    // A point clockwise from the line's direction (d in (-pi, 0)) lies to the right.
    return -std::sin(d) * to_point.length;
}

void CGeoLine::GridHorzPoint(double station, CGeoPoint& result) {
    result = m_startPt;
    const double azimuth = GridAzimuth();
    if (azimuth == GEO_NULL || GridHDistance() == GEO_NULL) {
        return;
    }
    CGeoLine to_station;
    if (station > 0.0) {
        to_station.Set(m_startPt, azimuth, station, GeoidGrade());
    } else {
        to_station.Set(m_startPt, normalised_bearing(azimuth - kPi), -station, -GeoidGrade());
    }
    result = to_station.m_endPt;
}

void CGeoLine::GridHorzOffsetPoint(double station, double offset, CGeoPoint& result) {
    // Ask for the azimuth once, before GridHorzPoint does: a failed derivation reports GEO_NULL
    // only on its first call and the cache field afterwards, so asking again after GridHorzPoint
    // would offset the start point along a stale direction. A line without a direction gives
    // its start point, neither moved along nor offset.
    const double azimuth = GridAzimuth();
    if (azimuth == GEO_NULL) {
        result = m_startPt;
        return;
    }
    GridHorzPoint(station, result);
    if (offset == GEO_NULL) {
        return;
    }
    CGeoLine square;
    square.Set(result, normalised_bearing(azimuth + kHalfPi), offset, 0.0);
    result = square.m_endPt;
}

void CGeoLine::GridSlopePoint(double slopeDistance, CGeoPoint& result) {
    const double grade = GeoidGrade();
    if (grade != GEO_NULL) {
        GridHorzPoint(std::cos(grade) * slopeDistance, result);
    } else {
        GridHorzPoint(slopeDistance, result);
    }
}

void CGeoLine::SnapToLine(double& station, CGeoPoint& point, double tolerance) {
    const double length = GridHDistance();
    if (station > length - tolerance) {
        point = m_endPt;
        station = length;
    } else if (station >= tolerance) {
        GridHorzPoint(station, point);
    } else {
        point = m_startPt;
        station = 0.0;
    }
}

unsigned short CGeoLine::Intersection(CGeoLine& other, double& station, CGeoPoint& point,
                                      double tolerance) {
    const auto same_side = [tolerance](double a, double b) {
        return (a < -tolerance && b < -tolerance) || (a > tolerance && b > tolerance);
    };
    const double o1 = GridOffset(other.m_startPt);
    const double o2 = GridOffset(other.m_endPt);
    if (o1 == GEO_NULL || o2 == GEO_NULL || same_side(o1, o2)) {
        return INTERSECT_NONE;
    }
    const double p1 = other.GridOffset(m_startPt);
    const double p2 = other.GridOffset(m_endPt);
    if (p1 == GEO_NULL || p2 == GEO_NULL || same_side(p1, p2)) {
        return INTERSECT_NONE;
    }
    const double s1 = GridStation(other.m_startPt);
    const double s2 = GridStation(other.m_endPt);
    const auto near = [tolerance](double v) { return std::fabs(v) < tolerance; };
    const unsigned short touch =
        near(o1) || near(o2) || near(p1) || near(p2) ? INTERSECT_END_TOUCH : INTERSECT_NONE;
    const bool collinear = (near(o1) && near(o2)) || (near(p1) && near(p2));

    if (!collinear) {
        // Where the other line crosses: interpolate its stations by its offsets.
        station = s1 + (s2 - s1) * std::fabs(o1) / (std::fabs(o2) + std::fabs(o1));
        if (station < -tolerance || station > GridHDistance() + tolerance) {
            return INTERSECT_NONE;
        }
        SnapToLine(station, point, tolerance);
        return static_cast<unsigned short>(touch + INTERSECT_CROSS);
    }

    const double length = GridHDistance();
    const double beyond = length + tolerance;
    if ((s1 > beyond && s2 > beyond) || (s1 < -tolerance && s2 < -tolerance)) {
        return INTERSECT_NONE;
    }
    const auto within = [tolerance, beyond](double s) { return s > -tolerance && s < beyond; };
    if (within(s1) && within(s2)) {
        station = std::max(s1, s2);
        SnapToLine(station, point, tolerance);
        return static_cast<unsigned short>(touch + INTERSECT_OVERLAP);
    }
    if (s1 <= beyond && s2 <= beyond) {
        if (s1 >= -tolerance && s2 >= -tolerance) {
            return INTERSECT_NONE;
        }
        station = 0.0;
        point = m_startPt;
        return static_cast<unsigned short>(touch + INTERSECT_CROSS + INTERSECT_OVERLAP);
    }
    station = length;
    point = m_endPt;
    return static_cast<unsigned short>(touch + INTERSECT_CROSS + INTERSECT_OVERLAP);
}
