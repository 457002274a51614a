// The circular arc element.
//
// Everything an arc answers comes from its circle: the centre, the azimuth of the radius to the
// start, and the radius. A point a distance s along the arc lies on the radius turned by the
// central angle s / R (clockwise for a right-turning arc); its tangent azimuth is the entry
// azimuth turned by the same angle. The inverse measures the angle swept from the start radius
// to the radius through the point, in the direction of travel.
#include "qv5/geoarc.h"

#include "core/angles.h"
#include "core/constants.h"
#include "geometry/arc_math.h"
#include "geometry/point_access.h"
#include "geometry/traverse.h"
#include "qv5/geosurvey.h"

#include <cmath>

using namespace qv5::detail;

namespace qv5::detail {

double arc_radial_azimuth(const ArcCircle& circle, double angle, bool turns_right) {
    return normalised_bearing(turns_right ? circle.start_radial + angle
                                          : circle.start_radial - angle);
}

ArcDeltas arc_deltas(const ArcCircle& circle, double arc_angle, double entry_azimuth,
                     geodef_Direction direction, const geo_nee& point) {
    const double dn = point.north - circle.centre.north;
    const double de = point.east - circle.centre.east;
    const double to_point = bearing_of(dn, de);
    const double distance = std::sqrt(dn * dn + de * de);

    // Angle from the radius through the point back to the start radius, clockwise; for a
    // right-turning arc (which sweeps clockwise) the swept angle is its complement.
    double swept = normalised_bearing(circle.start_radial - to_point);
    if (direction != geodef_Left) {
        swept = kTwoPi - swept;
    }
    ArcDeltas deltas;
    // The part of the circle the arc does not cover is split half-way round: points nearer the
    // start than the end are given a negative station. (A `GEO_NULL` angle counts as 0.)
    if (swept > arc_angle * 0.5 + kPi) {
        deltas.station = -(circle.radius * (kTwoPi - swept));
    } else {
        deltas.station = swept * circle.radius;
    }
    deltas.offset = circle.radius - distance;
    if (direction == geodef_Left) {
        deltas.offset = -deltas.offset; // the centre of a left turn lies to the left
    }
    if (entry_azimuth == GEO_NULL) {
        deltas.azimuth = GEO_NULL;
    } else {
        deltas.azimuth = normalised_bearing(direction == geodef_Right ? entry_azimuth + swept
                                                                      : entry_azimuth - swept);
    }
    return deltas;
}

} // namespace qv5::detail

CGeoArc::CGeoArc()
    : m_radius(GEO_NULL), m_entryAzimuth(GEO_NULL), m_arcLength(GEO_NULL), m_angle(GEO_NULL),
      m_startStation(GEO_NULL), m_direction(geodef_Right), m_known(0) {}

CGeoArc::CGeoArc(const CGeoArc& other) = default;

CGeoArc& CGeoArc::operator=(const CGeoArc& other) = default;

CGeoArc::~CGeoArc() = default;

void CGeoArc::Set(CGeoPoint& start, CGeoPoint& end, double radius, double angle,
                  geodef_Direction direction) {
    m_startPt = start;
    m_endPt = end;
    m_radius = radius;
    m_angle = angle;
    m_direction = direction;
    m_known = KNOWN_END_POINT | KNOWN_RADIUS | KNOWN_ANGLE | KNOWN_DIRECTION;
}

void CGeoArc::Set(CGeoPoint& start, double entryAzimuth, double radius, double arcLength,
                  geodef_Direction direction, double startStation) {
    m_startPt = start;
    m_endPt = CGeoPoint(kNullGrid);
    m_entryAzimuth = entryAzimuth;
    m_radius = radius;
    m_arcLength = arcLength;
    m_direction = direction;
    m_startStation = startStation;
    m_known = KNOWN_ENTRY_AZIMUTH | KNOWN_ARC_LENGTH | KNOWN_RADIUS | KNOWN_START_STATION |
              KNOWN_DIRECTION;
}

double CGeoArc::Radius() {
    if ((m_known & KNOWN_RADIUS) == 0) {
        m_known |= KNOWN_RADIUS;
        m_radius = GEO_NULL;
    }
    return m_radius;
}

double CGeoArc::StartStation() {
    if ((m_known & KNOWN_START_STATION) == 0) {
        m_known |= KNOWN_START_STATION;
        m_startStation = GEO_NULL;
    }
    return m_startStation;
}

geodef_Direction CGeoArc::Direction() {
    if ((m_known & KNOWN_DIRECTION) == 0) {
        m_known |= KNOWN_DIRECTION;
        m_direction = geodef_Right;
    }
    return m_direction;
}

double CGeoArc::Angle() {
    if ((m_known & KNOWN_ANGLE) != 0) {
        return m_angle;
    }
    m_known |= KNOWN_ANGLE;
    m_angle = GEO_NULL;
    if ((m_known & KNOWN_RADIUS) == 0 || (m_known & KNOWN_ARC_LENGTH) == 0) {
        return GEO_NULL;
    }
    m_angle = geo_arc_length_to_angle(m_arcLength, m_radius);
    return m_angle;
}

double CGeoArc::GridArcLength() {
    if ((m_known & KNOWN_ARC_LENGTH) != 0) {
        return m_arcLength;
    }
    m_arcLength = GEO_NULL;
    m_known |= KNOWN_ARC_LENGTH;
    if ((m_known & KNOWN_ANGLE) == 0) {
        // Derives the centre but not the angle: an arc that was given neither an angle nor a
        // length has no length.
        CentreToStart();
    }
    if ((m_known & KNOWN_RADIUS) == 0 || (m_known & KNOWN_ANGLE) == 0) {
        return GEO_NULL;
    }
    m_arcLength = geo_arc_angle_to_length(m_angle, m_radius);
    return m_arcLength;
}

namespace {

/// A direction or length that a centre can be built on: set and finite. (A bearing normalised
/// from an infinite value comes back as `GEO_NULL`.)
bool usable(double value) {
    return value != GEO_NULL && std::isfinite(value);
}

} // namespace

void CGeoArc::DeriveCentre() {
    m_known |= KNOWN_CENTRE;
    const geo_nee start = grid_of(m_startPt);
    geo_nee centre = kNullGrid;
    if ((m_known & KNOWN_ENTRY_AZIMUTH) != 0 && (m_known & KNOWN_RADIUS) != 0) {
        // From the start, square off the entry tangent towards the inside of the curve.
        const double entry = EntryAzimuth();
        if (has_plan(start) && entry != GEO_NULL && usable(m_radius)) {
            const double inward =
                normalised_bearing(Direction() == geodef_Right ? entry + kHalfPi : entry - kHalfPi);
            if (usable(inward)) {
                centre = level_step(start, inward, m_radius);
            }
        }
    } else if ((m_known & KNOWN_END_POINT) != 0 && (m_known & KNOWN_RADIUS) != 0) {
        // The chord from start to end leaves the start at half the central angle inside the
        // entry tangent, so the radius to the centre lies at 90 degrees less that half-angle
        // from the chord.
        const geo_nee end = grid_of(m_endPt);
        if (has_plan(start) && has_plan(end) && usable(m_radius) && m_angle != GEO_NULL) {
            const double chord = geo_grid_bearing(start, end);
            const double half = m_angle * 0.5;
            const double inward = normalised_bearing(
                Direction() == geodef_Right ? chord + kHalfPi - half : chord - kHalfPi + half);
            if (usable(inward)) {
                geo_grid_follow(start, inward, m_radius, 0.0, centre);
            }
        }
    }
    if (!has_plan(centre) || !std::isfinite(centre.north) || !std::isfinite(centre.east)) {
        // No centre (also from non-finite coordinates): forget any from an earlier definition.
        m_centreToStart = CGeoLine();
        return;
    }
    // The centre is a copy of the start given new coordinates, so that it (and every point
    // derived from it) keeps the start's transformation link.
    CGeoPoint centre_pt(m_startPt);
    centre_pt.SetGrid(centre);
    m_centreToStart.Set(centre_pt, m_startPt);
}

CGeoLine& CGeoArc::CentreToStart() {
    if ((m_known & KNOWN_CENTRE) == 0) {
        DeriveCentre();
    }
    return m_centreToStart;
}

CGeoPoint& CGeoArc::CentrePt() {
    return CentreToStart().StartPt();
}

bool CGeoArc::Circle(ArcCircle& circle) {
    // Test the points, not the line's azimuth: a line whose azimuth derivation failed reports
    // GEO_NULL once and its stale cache afterwards.
    CGeoLine& radial = CentreToStart();
    const geo_nee centre = grid_of(radial.StartPt());
    if (!has_plan(centre) || !has_plan(grid_of(radial.EndPt()))) {
        return false;
    }
    circle = ArcCircle{centre, radial.GridAzimuth(), m_radius};
    return true;
}

double CGeoArc::EntryAzimuth() {
    if ((m_known & KNOWN_ENTRY_AZIMUTH) != 0) {
        return m_entryAzimuth;
    }
    // The centre is derived before the bit is set: with the bit set it would be derived from
    // this (not yet known) azimuth.
    ArcCircle circle;
    const bool has_centre = Circle(circle);
    m_known |= KNOWN_ENTRY_AZIMUTH;
    m_entryAzimuth = GEO_NULL;
    if (has_centre) {
        const double radial = circle.start_radial;
        m_entryAzimuth =
            normalised_bearing(Direction() == geodef_Right ? radial + kHalfPi : radial - kHalfPi);
    }
    return m_entryAzimuth;
}

CGeoPoint& CGeoArc::EndPt() {
    if ((m_known & KNOWN_END_POINT) == 0) {
        m_known |= KNOWN_END_POINT;
        if ((m_known & KNOWN_ENTRY_AZIMUTH) != 0 && (m_known & KNOWN_RADIUS) != 0) {
            GridHorzPoint(GridArcLength(), m_endPt);
        }
    }
    return m_endPt;
}

double CGeoArc::GridAzimuth(double distance) {
    const double angle = geo_arc_length_to_angle(distance, Radius());
    if (angle == GEO_NULL) {
        return GEO_NULL;
    }
    const double entry = EntryAzimuth();
    if (entry == GEO_NULL) {
        return GEO_NULL;
    }
    return normalised_bearing(Direction() == geodef_Right ? entry + angle : entry - angle);
}

void CGeoArc::GridHorzPoint(double distance, CGeoPoint& result) {
    const double angle = geo_arc_length_to_angle(distance, Radius());
    ArcCircle circle;
    if (angle == GEO_NULL || !Circle(circle)) {
        return;
    }
    // The stored direction is read as it stands here, not through Direction().
    const double radial = arc_radial_azimuth(circle, angle, m_direction == geodef_Right);
    const geo_nee grid = level_step(circle.centre, radial, circle.radius);
    result = m_centreToStart.StartPt();
    result.SetGrid(grid);
}

void CGeoArc::GridHorzPointByAngle(double angle, CGeoPoint& result) {
    ArcCircle circle;
    if (!Circle(circle)) {
        result.SetGrid(kNullGrid);
        return;
    }
    const double radial = arc_radial_azimuth(circle, angle, Direction() == geodef_Right);
    geo_nee grid;
    geo_grid_follow(circle.centre, radial, circle.radius, 0.0, grid);
    result.SetGrid(grid);
}

void CGeoArc::GridDeltas(CGeoPoint& point, double& station, double& offset, double& azimuth) {
    station = GEO_NULL;
    offset = GEO_NULL;
    azimuth = GEO_NULL;
    const geo_nee p = grid_of(point);
    ArcCircle circle;
    if (!has_plan(p) || !Circle(circle)) {
        return;
    }
    const ArcDeltas deltas = arc_deltas(circle, Angle(), EntryAzimuth(), Direction(), p);
    station = deltas.station;
    offset = deltas.offset;
    azimuth = deltas.azimuth;
}
