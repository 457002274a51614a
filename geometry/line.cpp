// The straight line element.
#include "qv5/geoline.h"

#include "core/angles.h"
#include "core/constants.h"
#include "core/lazy_cache.h"
#include "geometry/line_access.h"
#include "geometry/point_access.h"
#include "geometry/traverse.h"

#include <algorithm>
#include <cmath>
#include <cstring>

using namespace qv5::detail;

namespace {

/// The grids of both ends when both have plan coordinates; the second end is not derived when
/// the first has none.
bool plan_of_ends(CGeoPoint& start, CGeoPoint& end, geo_nee& start_grid, geo_nee& end_grid) {
    start_grid = grid_of(start);
    if (!has_plan(start_grid)) {
        return false;
    }
    end_grid = grid_of(end);
    return has_plan(end_grid);
}

/// The far end of a line from `start` along `heading`: the plan position by the azimuth and
/// distance, the elevation by the grade (none when the start has none).
geo_nee far_end(CGeoPoint& start, const Heading& heading) {
    return graded_step(grid_of(start), heading);
}

/// The grids a station or offset request measures between, when both have plan coordinates;
/// neither point is changed.
bool plan_to_point(const CGeoPoint& start, const CGeoPoint& point, geo_nee& from, geo_nee& to) {
    from = grid_of_copy(start);
    to = grid_of_copy(point);
    return has_plan(from) && has_plan(to);
}

bool same_bits(const geo_nee& a, const geo_nee& b) {
    return std::memcmp(&a, &b, sizeof a) == 0;
}

bool same_bits(double a, double b) {
    return std::memcmp(&a, &b, sizeof a) == 0;
}

} // namespace

namespace qv5::detail {

/// Steps from a line's start with the cos, sin and tan graded_step would take, worked out again
/// only when the azimuth or grade differs in any bit from the line's last step.
struct LineSteps {
    static geo_nee from_start(CGeoLine& line, const Heading& heading) {
        const geo_nee start = grid_of(line.m_startPt);
        if (!line.m_stepKnown || !same_bits(line.m_stepAzimuth, heading.azimuth) ||
            !same_bits(line.m_stepGrade, heading.grade)) {
            line.m_stepAzimuth = heading.azimuth;
            line.m_stepGrade = heading.grade;
            line.m_stepCos = std::cos(heading.azimuth);
            line.m_stepSin = std::sin(heading.azimuth);
            line.m_stepTan = std::tan(heading.grade);
            line.m_stepKnown = true;
        }
        return step_end(start, line.m_stepCos, line.m_stepSin, heading.distance, line.m_stepTan);
    }
};

} // namespace qv5::detail

CGeoLine::CGeoLine()
    : m_azimuth(0.0), m_hDistance(0.0), m_grade(0.0), m_vDistance(0.0), m_deltaNorth(0.0),
      m_deltaEast(0.0),
      m_known(0), m_lastFrom{GEO_NULL, GEO_NULL, GEO_NULL}, m_lastTo{GEO_NULL, GEO_NULL, GEO_NULL},
      m_lastLength(GEO_NULL), m_lastAzimuth(GEO_NULL) {}

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
    forget(m_known, kKnownEverything);
}

void CGeoLine::Set(CGeoPoint& start, double azimuth, double distance, double grade) {
    const Heading heading = forwards(azimuth, distance, grade);
    const geo_nee end = far_end(start, heading);
    m_startPt = start;
    m_endPt = start; // the end keeps the start's station link
    m_endPt.SetGrid(end);
    m_azimuth = heading.azimuth;
    m_hDistance = heading.distance;
    m_grade = heading.grade;
    forget(m_known, kKnownEverything);
    remember(m_known, kKnownHDistance | kKnownGrade | kKnownAzimuth);
}

CGeoPoint& CGeoLine::StartPt() {
    return m_startPt;
}

CGeoPoint& CGeoLine::EndPt() {
    return m_endPt;
}

// Every cache of the line is kept stale after a failed derivation: the failing request answers
// GEO_NULL, later ones whatever the field held before. Hosts test the first answer.

double CGeoLine::EnsureDeltaNorth() {
    return ensure<FailurePolicy::kKeepStale>(
        m_known, kKnownDeltaNorth, m_deltaNorth, [this](double& out) {
            geo_nee start;
            geo_nee end;
            if (!plan_of_ends(m_startPt, m_endPt, start, end)) {
                return false;
            }
            out = end.north - start.north;
            return true;
        });
}

double CGeoLine::EnsureDeltaEast() {
    return ensure<FailurePolicy::kKeepStale>(
        m_known, kKnownDeltaEast, m_deltaEast, [this](double& out) {
            geo_nee start;
            geo_nee end;
            if (!plan_of_ends(m_startPt, m_endPt, start, end)) {
                return false;
            }
            out = end.east - start.east;
            return true;
        });
}

double CGeoLine::EnsureAzimuth() {
    return ensure<FailurePolicy::kKeepStale>(m_known, kKnownAzimuth, m_azimuth,
                                             [this](double& out) {
                                                 const double dn = EnsureDeltaNorth();
                                                 const double de = EnsureDeltaEast();
                                                 if (dn == GEO_NULL || de == GEO_NULL) {
                                                     return false;
                                                 }
                                                 out = bearing_of(dn, de);
                                                 return true;
                                             });
}

double CGeoLine::EnsureHDistance() {
    return ensure<FailurePolicy::kKeepStale>(m_known, kKnownHDistance, m_hDistance,
                                             [this](double& out) {
                                                 const double dn = EnsureDeltaNorth();
                                                 const double de = EnsureDeltaEast();
                                                 if (dn == GEO_NULL || de == GEO_NULL) {
                                                     return false;
                                                 }
                                                 out = std::sqrt(dn * dn + de * de);
                                                 return true;
                                             });
}

double CGeoLine::EnsureVDistance() {
    return ensure<FailurePolicy::kKeepStale>(m_known, kKnownVDistance, m_vDistance,
                                             [this](double& out) {
                                                 const double start = m_startPt.Elevation();
                                                 const double end = m_endPt.Elevation();
                                                 if (start == GEO_NULL || end == GEO_NULL) {
                                                     return false;
                                                 }
                                                 out = end - start;
                                                 return true;
                                             });
}

double CGeoLine::EnsureGrade() {
    return ensure<FailurePolicy::kKeepStale>(m_known, kKnownGrade, m_grade, [this](double& out) {
        if (m_startPt.Ok3DGrid() == 0 || m_endPt.Ok3DGrid() == 0) {
            return false;
        }
        const double h = EnsureHDistance();
        const double v = EnsureVDistance();
        if (h < kVerticalTolerance && std::fabs(v) < kVerticalTolerance) {
            out = 0.0;
        } else if (h < kVerticalTolerance) {
            // A vertical line is given a grade of +-pi (not +-pi/2 as a gradient would
            // be): hosts compare against +-pi to recognise it.
            out = v > 0.0 ? kPi : -kPi;
        } else {
            out = std::atan(v / h);
        }
        return true;
    });
}

double CGeoLine::GridDeltaNorth() {
    return EnsureDeltaNorth();
}

double CGeoLine::GridDeltaEast() {
    return EnsureDeltaEast();
}

double CGeoLine::GridAzimuth() {
    return EnsureAzimuth();
}

double CGeoLine::GridHDistance() {
    return EnsureHDistance();
}

double CGeoLine::GeoidVDistance() {
    return EnsureVDistance();
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
    return EnsureGrade();
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

bool CGeoLine::VectorToPoint(CGeoPoint& point, double& length, double& azimuth) {
    geo_nee from;
    geo_nee to;
    if (!plan_to_point(m_startPt, point, from, to)) {
        return false;
    }
    if (!same_bits(from, m_lastFrom) || !same_bits(to, m_lastTo)) {
        const PlanVector v = plan_vector(from, to);
        m_lastLength = v.length;
        m_lastAzimuth = v.azimuth;
        m_lastFrom = from;
        m_lastTo = to;
    }
    length = m_lastLength;
    azimuth = m_lastAzimuth;
    return true;
}

double CGeoLine::GridStation(CGeoPoint& point) {
    // The foot of the perpendicular, from the start -> point vector and its angle to the line.
    PlanVector v;
    if (!VectorToPoint(point, v.length, v.azimuth)) {
        return GEO_NULL;
    }
    return station_along(GridAzimuth(), v);
}

double CGeoLine::GridOffset(CGeoPoint& point) {
    PlanVector v;
    if (!VectorToPoint(point, v.length, v.azimuth)) {
        return GEO_NULL;
    }
    return offset_across(GridAzimuth(), v);
}

void qv5::detail::LineAccess::deltas(CGeoLine& line, CGeoPoint& point, double& station,
                                     double& offset, double& azimuth) {
    // The vector is the one both requests would work out; the bearing is asked for as often as
    // they ask, since a failed derivation answers GEO_NULL only the first time.
    geo_nee from;
    geo_nee to;
    if (plan_to_point(line.m_startPt, point, from, to)) {
        const PlanVector v = plan_vector(from, to);
        station = station_along(line.EnsureAzimuth(), v);
        offset = offset_across(line.EnsureAzimuth(), v);
    } else {
        station = GEO_NULL;
        offset = GEO_NULL;
    }
    azimuth = line.EnsureAzimuth();
}

void CGeoLine::GridHorzPoint(double station, CGeoPoint& result) {
    // A warm line (its azimuth, length and grade known) steps from its start with the trigonometry
    // of its last step and writes the result once. The cold path derives first and copies the
    // start before and after, so that a result that is one of the line's own ends, or an end whose
    // grid is derived on the way, comes out as it always has.
    const bool own_end = &result == &m_startPt || &result == &m_endPt;
    if (!own_end && is_known(m_known, kKnownAzimuth | kKnownHDistance | kKnownGrade)) {
        if (m_azimuth == GEO_NULL || m_hDistance == GEO_NULL) {
            result = m_startPt;
            return;
        }
        const Heading heading =
            station > 0.0 ? forwards(m_azimuth, station, m_grade)
                          : forwards(normalised_bearing(m_azimuth - kPi), -station, -m_grade);
        const geo_nee end = LineSteps::from_start(*this, heading);
        result = m_startPt; // keeps the start's station link
        result.SetGrid(end);
        return;
    }
    result = m_startPt;
    const double azimuth = GridAzimuth();
    if (azimuth == GEO_NULL || GridHDistance() == GEO_NULL) {
        return;
    }
    // Forwards along the line for a positive station, backwards along the reversed line
    // otherwise; either way the elevation follows the grade.
    const Heading heading =
        station > 0.0 ? forwards(azimuth, station, GeoidGrade())
                      : forwards(normalised_bearing(azimuth - kPi), -station, -GeoidGrade());
    const geo_nee end = LineSteps::from_start(*this, heading);
    result = m_startPt; // keeps the start's station link
    result.SetGrid(end);
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
    // Square off to the right (a negative offset runs to the left), level.
    result.SetGrid(far_end(result, forwards(normalised_bearing(azimuth + kHalfPi), offset, 0.0)));
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
