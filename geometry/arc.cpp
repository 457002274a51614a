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
#include "core/lazy_cache.h"
#include "geometry/arc_math.h"
#include "geometry/point_access.h"
#include "geometry/traverse.h"
#include "qv5/geosurvey.h"

#include <cmath>

using namespace qv5::detail;

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
    forget(m_known, kKnownEverything);
    remember(m_known, kKnownEndPoint | kKnownRadius | kKnownAngle | kKnownDirection);
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
    forget(m_known, kKnownEverything);
    remember(m_known, kKnownEntryAzimuth | kKnownArcLength | kKnownRadius | kKnownStartStation |
                          kKnownDirection);
}

// Every derivation of the arc remembers its failure as GEO_NULL until the next Set; values that
// are only ever given read GEO_NULL (the direction: right) from then on when they were not.

double CGeoArc::EnsureRadius() {
    return ensure_default(m_known, kKnownRadius, m_radius, GEO_NULL);
}

double CGeoArc::EnsureStartStation() {
    return ensure_default(m_known, kKnownStartStation, m_startStation, GEO_NULL);
}

geodef_Direction CGeoArc::EnsureDirection() {
    return ensure_default(m_known, kKnownDirection, m_direction, geodef_Right);
}

double CGeoArc::EnsureAngle() {
    return ensure<FailurePolicy::kRememberNull>(m_known, kKnownAngle, m_angle, [this](double& out) {
        if (!is_known(m_known, kKnownRadius | kKnownArcLength)) {
            return false;
        }
        out = geo_arc_length_to_angle(m_arcLength, m_radius);
        return true;
    });
}

double CGeoArc::EnsureArcLength() {
    return ensure<FailurePolicy::kRememberNull>(
        m_known, kKnownArcLength, m_arcLength, [this](double& out) {
            if (!is_known(m_known, kKnownAngle)) {
                // Derives the centre but not the angle: an arc that was given neither an angle
                // nor a length has no length.
                EnsureCentre();
            }
            if (!is_known(m_known, kKnownRadius | kKnownAngle)) {
                return false;
            }
            out = geo_arc_angle_to_length(m_angle, m_radius);
            return true;
        });
}

double CGeoArc::Radius() {
    return EnsureRadius();
}

double CGeoArc::StartStation() {
    return EnsureStartStation();
}

geodef_Direction CGeoArc::Direction() {
    return EnsureDirection();
}

double CGeoArc::Angle() {
    return EnsureAngle();
}

double CGeoArc::GridArcLength() {
    return EnsureArcLength();
}

namespace {

/// A direction or length that a centre can be built on: set and finite. (A bearing normalised
/// from an infinite value comes back as `GEO_NULL`.)
bool usable(double value) {
    return value != GEO_NULL && std::isfinite(value);
}

} // namespace

CGeoLine& CGeoArc::EnsureCentre() {
    ensure_group<FailurePolicy::kRememberNull>(m_known, kKnownCentre, [this] {
        const geo_nee start = grid_of(m_startPt);
        geo_nee centre = kNullGrid;
        if (is_known(m_known, kKnownEntryAzimuth | kKnownRadius)) {
            // From the start, square off the entry tangent towards the inside of the curve.
            const double entry = EnsureEntryAzimuth();
            if (has_plan(start) && entry != GEO_NULL && usable(m_radius)) {
                const double inward = normalised_bearing(
                    EnsureDirection() == geodef_Right ? entry + kHalfPi : entry - kHalfPi);
                if (usable(inward)) {
                    centre = level_step(start, inward, m_radius);
                }
            }
        } else if (is_known(m_known, kKnownEndPoint | kKnownRadius)) {
            // The chord from start to end leaves the start at half the central angle inside the
            // entry tangent, so the radius to the centre lies at 90 degrees less that half-angle
            // from the chord.
            const geo_nee end = grid_of(m_endPt);
            if (has_plan(start) && has_plan(end) && usable(m_radius) && m_angle != GEO_NULL) {
                const double chord = geo_grid_bearing(start, end);
                const double half = m_angle * 0.5;
                const double inward =
                    normalised_bearing(EnsureDirection() == geodef_Right ? chord + kHalfPi - half
                                                                         : chord - kHalfPi + half);
                if (usable(inward)) {
                    geo_grid_follow(start, inward, m_radius, 0.0, centre);
                }
            }
        }
        if (!has_plan(centre) || !std::isfinite(centre.north) || !std::isfinite(centre.east)) {
            // No centre (also from non-finite coordinates): forget any from an earlier
            // definition. The empty line is this cache's null.
            m_centreToStart = CGeoLine();
            return false;
        }
        // The centre is a copy of the start given new coordinates, so that it (and every point
        // derived from it) keeps the start's transformation link.
        CGeoPoint centre_pt(m_startPt);
        centre_pt.SetGrid(centre);
        m_centreToStart.Set(centre_pt, m_startPt);
        return true;
    });
    return m_centreToStart;
}

CGeoLine& CGeoArc::CentreToStart() {
    return EnsureCentre();
}

CGeoPoint& CGeoArc::CentrePt() {
    return EnsureCentre().StartPt();
}

bool CGeoArc::Circle(ArcCircle& circle) {
    // Test the points, not the line's azimuth: a line whose azimuth derivation failed reports
    // GEO_NULL once and its stale cache afterwards.
    CGeoLine& radial = EnsureCentre();
    const geo_nee centre = grid_of(radial.StartPt());
    if (!has_plan(centre) || !has_plan(grid_of(radial.EndPt()))) {
        return false;
    }
    circle = ArcCircle{centre, radial.GridAzimuth(), m_radius};
    return true;
}

double CGeoArc::EnsureEntryAzimuth() {
    if (is_known(m_known, kKnownEntryAzimuth)) {
        return m_entryAzimuth;
    }
    // The centre is derived before the azimuth counts as known: with its bit set, the centre
    // would be built from this (not yet known) azimuth.
    ArcCircle circle;
    const bool has_centre = Circle(circle);
    return ensure<FailurePolicy::kRememberNull>(
        m_known, kKnownEntryAzimuth, m_entryAzimuth, [&](double& out) {
            if (!has_centre) {
                return false;
            }
            const double radial = circle.start_radial;
            out = normalised_bearing(EnsureDirection() == geodef_Right ? radial + kHalfPi
                                                                       : radial - kHalfPi);
            return true;
        });
}

double CGeoArc::EntryAzimuth() {
    return EnsureEntryAzimuth();
}

CGeoPoint& CGeoArc::EnsureEndPoint() {
    // An end point that cannot be laid out keeps what it held (the all-null point the second
    // Set leaves, or a default point).
    ensure_group<FailurePolicy::kKeepStale>(m_known, kKnownEndPoint, [this] {
        if (!is_known(m_known, kKnownEntryAzimuth | kKnownRadius)) {
            return false;
        }
        GridHorzPoint(EnsureArcLength(), m_endPt);
        return true;
    });
    return m_endPt;
}

CGeoPoint& CGeoArc::EndPt() {
    return EnsureEndPoint();
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
