// The transition spirals. An entry spiral leaves a straight and tightens to the radius of the
// arc it joins; an exit spiral leaves that radius and straightens out. Both are the same
// clothoid, measured from its straight end: forwards from the start for an entry spiral,
// backwards from the end for an exit spiral. Everything below is written once and told which
// of the two it serves; only the mirrored parts (which end touches the straight, which
// continuation lies before the start and which beyond the end) differ.
#include "qv5/geospiral.h"

#include "core/angles.h"
#include "core/constants.h"
#include "geometry/clothoid.h"
#include "geometry/point_access.h"
#include "geometry/spiral_math.h"
#include "geometry/traverse.h"
#include "qv5/geoarc.h"
#include "qv5/geoline.h"

#include <cmath>

using namespace qv5::detail;

namespace qv5::detail {

double spiral_azimuth(const SpiralShape& shape, double station) {
    const double deflection =
        clothoid_deflection(distance_from_straight(shape, station), shape.spiral_constant);
    if (deflection == GEO_NULL || shape.tangent_azimuth == GEO_NULL) {
        return GEO_NULL;
    }
    // Towards the curve from the entry straight; back from the exit straight.
    const bool clockwise = (shape.kind == SpiralKind::Entry) == shape.turns_right;
    return normalised_bearing(clockwise ? shape.tangent_azimuth + deflection
                                        : shape.tangent_azimuth - deflection);
}

namespace {

/// Azimuth of the step along the straight from its end towards the point's foot: forwards from
/// an entry spiral's start, backwards from an exit spiral's end.
double along_azimuth(const SpiralShape& shape) {
    return shape.kind == SpiralKind::Entry ? shape.tangent_azimuth
                                           : normalised_bearing(shape.tangent_azimuth + kPi);
}

} // namespace

SpiralLayout::SpiralLayout(const SpiralShape& shape)
    : m_shape(shape), m_along(along_azimuth(shape), false),
      m_across(shape.tangent_azimuth + kHalfPi, !shape.turns_right) {}

bool SpiralLayout::point(double station, double tolerance, geo_nee& out) {
    if (!has_plan(m_shape.straight_end) || m_shape.tangent_azimuth == GEO_NULL) {
        return false;
    }
    double x = 0.0;
    double y = 0.0;
    if (!clothoid_deltas(distance_from_straight(m_shape, station), m_shape.spiral_constant,
                         tolerance, x, y)) {
        return false;
    }
    const geo_nee foot = m_along.step(m_shape.straight_end, x);
    if (!m_shape.turns_right) {
        y = -y;
    }
    out = m_across.step(foot, y);
    return true;
}

bool spiral_point(const SpiralShape& shape, double station, double tolerance, geo_nee& out) {
    SpiralLayout layout(shape);
    return layout.point(station, tolerance, out);
}

namespace {

/// True when a chord that deviates from the normal by `deviation` is square to the tangent
/// within the angle atan(ratio) that the tolerance subtends over the chord.
///
/// atan(r) <= r for r >= 0, and a faithfully rounded atan cannot round above r, which is itself
/// a double; so a deviation of at least r is never within atan(r). Only a smaller deviation needs
/// the arctangent, and the answer is the same either way. Steps that move on (all but the last)
/// are spared an arctangent.
bool square_within(double deviation, double ratio) {
    return deviation < ratio && deviation < std::atan(ratio);
}

} // namespace

ProjectionStep spiral_projection_step(SpiralLayout& layout, const geo_nee& point, double tolerance,
                                      double& station, double& offset, double& azimuth) {
    azimuth = spiral_azimuth(layout.shape(), station);
    geo_nee on_spiral;
    if (azimuth == GEO_NULL || !layout.point(station, tolerance, on_spiral)) {
        return ProjectionStep::Failed;
    }
    const double dn = point.north - on_spiral.north;
    const double de = point.east - on_spiral.east;
    const double chord = std::sqrt(dn * dn + de * de);
    if (chord < tolerance) {
        offset = 0.0;
        return ProjectionStep::Converged;
    }
    // Square to the tangent within the angle the tolerance subtends over the chord.
    const double ratio = tolerance / chord;
    const double chord_azimuth = bearing_of(dn, de);
    if (normalised_bearing(chord_azimuth - azimuth) > kPi) {
        const double normal = normalised_bearing(azimuth - kHalfPi);
        if (square_within(std::fabs(divergence(normal, chord_azimuth)), ratio)) {
            offset = -chord;
            return ProjectionStep::Converged;
        }
        // Half a step, from the left.
        station = station + std::sin(normalised_bearing(normal - chord_azimuth)) * chord * (-0.5);
    } else {
        const double normal = normalised_bearing(azimuth + kHalfPi);
        if (square_within(std::fabs(divergence(normal, chord_azimuth)), ratio)) {
            offset = chord;
            return ProjectionStep::Converged;
        }
        station = station + std::sin(normalised_bearing(normal - chord_azimuth)) * chord;
    }
    return ProjectionStep::Moved;
}

SpiralState::SpiralState()
    : radius(GEO_NULL), length(GEO_NULL), entryAzimuth(GEO_NULL), exitAzimuth(GEO_NULL),
      spiralConstant(GEO_NULL), endDeltaX(GEO_NULL), endDeltaY(GEO_NULL), direction(geodef_Left),
      known(0) {}

} // namespace qv5::detail

namespace {

/// Where a point found on a continuation of the spiral lies.
enum class Continuation { Found, NotThere, Failed };

struct Deltas {
    double station;
    double offset;
    double azimuth;
};

bool on_wanted_side(double station, bool behind) {
    return behind ? station < 0.0 : station > 0.0;
}

/// The point against the straight through `origin` along `azimuth`: found when its station
/// lies behind `origin` (`behind`) or ahead of it (otherwise); stations are shifted by `shift`.
Continuation straight_deltas(CGeoPoint& origin, double azimuth, CGeoPoint& point, bool behind,
                             double shift, Deltas& out) {
    if (origin.Ok2DGrid() == 0 || azimuth == GEO_NULL) {
        return Continuation::Failed;
    }
    CGeoLine tangent;
    tangent.Set(origin, azimuth, 1.0, 0.0);
    const double station = tangent.GridStation(point);
    if (station == GEO_NULL) {
        return Continuation::Failed;
    }
    if (!on_wanted_side(station, behind)) {
        return Continuation::NotThere;
    }
    out = Deltas{station + shift, tangent.GridOffset(point), tangent.GridAzimuth()};
    return Continuation::Found;
}

/// The arc that continues a spiral at its curved end: it starts at `origin` on `azimuth`. The
/// length given to it is arbitrary; its positions are not limited to its length.
CGeoArc continuing_arc(CGeoPoint& origin, double azimuth, double radius,
                       geodef_Direction direction) {
    CGeoArc arc;
    arc.Set(origin, azimuth, radius, radius * 0.5, direction, 0.0);
    return arc;
}

/// The point against the arc continuing the spiral from `origin`; as straight_deltas.
Continuation arc_continuation_deltas(CGeoArc arc, CGeoPoint& point, bool behind, double shift,
                                     Deltas& out) {
    Deltas found;
    arc.GridDeltas(point, found.station, found.offset, found.azimuth);
    if (found.station == GEO_NULL) {
        return Continuation::Failed;
    }
    if (!on_wanted_side(found.station, behind)) {
        return Continuation::NotThere;
    }
    found.station = found.station + shift;
    out = found;
    return Continuation::Found;
}

/// The point a distance along the straight through `origin` on `azimuth`.
void straight_point(CGeoPoint& origin, double azimuth, double distance, CGeoPoint& result) {
    if (origin.Ok2DGrid() == 0 || azimuth == GEO_NULL) {
        return;
    }
    CGeoLine tangent;
    tangent.Set(origin, azimuth, 1.0, 0.0);
    tangent.GridHorzPoint(distance, result);
}

/// Unknown values read as `GEO_NULL` from then on, as the accessors promise.
double known_or_null(qv5::detail::SpiralState& s, std::uint64_t bit, double& field) {
    if ((s.known & bit) == 0) {
        s.known |= bit;
        field = GEO_NULL;
    }
    return field;
}

using State = qv5::detail::SpiralState;

double length_of(State& s) {
    return known_or_null(s, State::KNOWN_LENGTH, s.length);
}

double radius_of(State& s) {
    return known_or_null(s, State::KNOWN_RADIUS, s.radius);
}

double entry_azimuth_of(State& s) {
    return known_or_null(s, State::KNOWN_ENTRY_AZIMUTH, s.entryAzimuth);
}

geodef_Direction direction_of(State& s) {
    if ((s.known & State::KNOWN_DIRECTION) == 0) {
        s.known |= State::KNOWN_DIRECTION;
        s.direction = geodef_Left;
    }
    return s.direction;
}

void set_spiral(State& s, CGeoPoint& start, double azimuth, geodef_Direction direction,
                double radius, double length) {
    s.radius = radius;
    s.length = length;
    s.entryAzimuth = azimuth;
    s.direction = direction;
    s.startPt = start;
    s.spiralConstant = radius * length * 2.0;
    s.known = State::KNOWN_ENTRY_AZIMUTH | State::KNOWN_LENGTH | State::KNOWN_RADIUS |
              State::KNOWN_DIRECTION | State::KNOWN_START_POINT;
}

CGeoPoint& start_point_of(State& s) {
    if ((s.known & State::KNOWN_START_POINT) == 0) {
        s.startPt.SetGrid(kNullGrid);
    }
    return s.startPt;
}

double exit_azimuth_of(State& s) {
    if ((s.known & State::KNOWN_EXIT_AZIMUTH) != 0) {
        return s.exitAzimuth;
    }
    s.known |= State::KNOWN_EXIT_AZIMUTH;
    s.exitAzimuth = GEO_NULL;
    if ((s.known & State::KNOWN_ENTRY_AZIMUTH) == 0 || s.entryAzimuth == GEO_NULL) {
        return GEO_NULL;
    }
    // The whole spiral turns by L^2 / C = L / (2 R), the same deflection its azimuth formula
    // gives at the full length.
    const double deflection = clothoid_deflection(s.length, s.spiralConstant);
    if (deflection == GEO_NULL) {
        return GEO_NULL;
    }
    s.exitAzimuth = normalised_bearing(
        direction_of(s) != geodef_Left ? s.entryAzimuth + deflection : s.entryAzimuth - deflection);
    return s.exitAzimuth;
}

/// The handling both spirals share, told which of the two it serves.
template <SpiralKind Kind>
struct Spiral {
    static constexpr bool kEntry = Kind == SpiralKind::Entry;

    /// The clothoid as laid out on the ground; its straight end is the start of an entry
    /// spiral and the (derived) end of an exit spiral.
    static SpiralShape shape(State& s) {
        SpiralShape shape{Kind,         kNullGrid,        GEO_NULL,
                          length_of(s), s.spiralConstant, direction_of(s) != geodef_Left};
        if constexpr (kEntry) {
            shape.straight_end = grid_of(start_point_of(s));
            shape.tangent_azimuth = entry_azimuth_of(s);
        } else {
            shape.straight_end = grid_of(end_point(s));
            shape.tangent_azimuth = exit_azimuth_of(s);
        }
        return shape;
    }

    /// The end point: the series at the full length, laid from the start. The entry spiral
    /// lays it off its entry tangent; the exit spiral off its exit tangent, across which the
    /// start lies on the outside of the turn.
    static CGeoPoint& end_point(State& s) {
        if ((s.known & State::KNOWN_END_POINT) != 0) {
            return s.endPt;
        }
        s.known |= State::KNOWN_END_POINT;
        s.endPt = CGeoPoint(kNullGrid);
        if ((s.known & State::KNOWN_LENGTH) == 0) {
            return s.endPt;
        }
        clothoid_deltas(s.length, s.spiralConstant, kSpiralEndTolerance, s.endDeltaX, s.endDeltaY);
        const double azimuth = kEntry ? s.entryAzimuth : exit_azimuth_of(s);
        const bool flip = kEntry ? direction_of(s) == geodef_Left : direction_of(s) == geodef_Right;
        if (flip && s.endDeltaY != GEO_NULL) {
            s.endDeltaY = -s.endDeltaY;
        }
        const geo_nee start = grid_of(start_point_of(s));
        if (s.endDeltaX == GEO_NULL || azimuth == GEO_NULL || !has_plan(start)) {
            return s.endPt;
        }
        const geo_nee foot = level_step(start, azimuth, s.endDeltaX);
        s.endPt = s.startPt;
        s.endPt.SetGrid(level_step(foot, normalised_bearing(azimuth + kHalfPi), s.endDeltaY));
        return s.endPt;
    }

    static double radius_at_station(State& s, double station) {
        if ((s.known & State::KNOWN_LENGTH) == 0 || (s.known & State::KNOWN_RADIUS) == 0 ||
            s.length == GEO_NULL || s.radius == GEO_NULL || std::isnan(station)) {
            return GEO_NULL;
        }
        // The curvature grows linearly from 0 at the straight end to 1/R at the curved end.
        if (station <= 0.0) {
            return kEntry ? kInfiniteRadius : s.radius;
        }
        if (station >= s.length) {
            return kEntry ? s.radius : kInfiniteRadius;
        }
        return s.radius * s.length / (kEntry ? station : s.length - station);
    }

    static double grid_azimuth(State& s, double station) {
        SpiralShape shape{
            Kind,         kNullGrid,        kEntry ? entry_azimuth_of(s) : exit_azimuth_of(s),
            length_of(s), s.spiralConstant, direction_of(s) != geodef_Left};
        return spiral_azimuth(shape, station);
    }

    /// The arc before an exit spiral's start or beyond an entry spiral's end.
    static CGeoArc arc_continuation(State& s) {
        if constexpr (kEntry) {
            const double azimuth = exit_azimuth_of(s);
            return continuing_arc(end_point(s), azimuth, radius_of(s), direction_of(s));
        } else {
            return continuing_arc(start_point_of(s), entry_azimuth_of(s), radius_of(s),
                                  direction_of(s));
        }
    }

    static void grid_horz_point(State& s, double station, double tolerance, CGeoPoint& result) {
        result.SetGrid(kNullGrid);
        if (s.known == 0) {
            return;
        }
        const double length = length_of(s);
        if (length == GEO_NULL) {
            return;
        }
        if (station < 0.0) {
            if constexpr (kEntry) {
                straight_point(start_point_of(s), entry_azimuth_of(s), station, result);
            } else {
                arc_continuation(s).GridHorzPoint(station, result);
            }
        } else if (station <= length) {
            geo_nee grid;
            if (spiral_point(shape(s), station, tolerance, grid)) {
                result = s.startPt;
                result.SetGrid(grid);
            }
        } else if (station > length) {
            if constexpr (kEntry) {
                arc_continuation(s).GridHorzPoint(station - length, result);
            } else {
                const double azimuth = exit_azimuth_of(s);
                straight_point(end_point(s), azimuth, station - length, result);
            }
        }
    }

    /// Before the start: the entry straight, or the arc an exit spiral leaves.
    static Continuation before_start(State& s, CGeoPoint& point, Deltas& out) {
        if constexpr (kEntry) {
            return straight_deltas(start_point_of(s), entry_azimuth_of(s), point, true, 0.0, out);
        } else {
            return arc_continuation_deltas(arc_continuation(s), point, true, 0.0, out);
        }
    }

    /// Beyond the end: the arc an entry spiral joins, or the exit straight.
    static Continuation beyond_end(State& s, CGeoPoint& point, Deltas& out) {
        const double length = length_of(s);
        if constexpr (kEntry) {
            return arc_continuation_deltas(arc_continuation(s), point, false, length, out);
        } else {
            const double azimuth = exit_azimuth_of(s);
            return straight_deltas(end_point(s), azimuth, point, false, length, out);
        }
    }

    static void grid_deltas(State& s, CGeoPoint& point, double start_station, double tolerance,
                            double& station, double& offset, double& azimuth) {
        station = GEO_NULL;
        offset = GEO_NULL;
        azimuth = GEO_NULL;
        const geo_nee p = grid_of(point);
        SpiralLayout spiral(shape(s));
        const double length = spiral.shape().length;
        if (!has_plan(p) || length == GEO_NULL) {
            return;
        }
        Deltas found{GEO_NULL, GEO_NULL, GEO_NULL};
        bool done = false;
        // Without a starting station the search starts at the spiral's start.
        double s_try = start_station == GEO_NULL ? 0.0 : start_station;
        for (int step = 0; step < kSpiralMaxSteps && !done; ++step) {
            if (s_try < 0.0) {
                const Continuation c = before_start(s, point, found);
                if (c == Continuation::Failed) {
                    return;
                }
                done = c == Continuation::Found;
                s_try = 0.0;
            }
            if (!done && s_try > length) {
                const Continuation c = beyond_end(s, point, found);
                if (c == Continuation::Failed) {
                    return;
                }
                done = c == Continuation::Found;
                s_try = length;
            }
            if (done) {
                break;
            }
            const ProjectionStep result =
                spiral_projection_step(spiral, p, tolerance, s_try, found.offset, found.azimuth);
            if (result == ProjectionStep::Failed) {
                return;
            }
            if (result == ProjectionStep::Converged) {
                found.station = s_try;
                done = true;
            }
        }
        if (!done) {
            return; // not converged in the steps allowed
        }
        station = found.station;
        offset = found.offset;
        azimuth = found.azimuth;
    }
};

using Entry = Spiral<SpiralKind::Entry>;
using Exit = Spiral<SpiralKind::Exit>;

} // namespace

// ---- CGeoEntrySpiral --------------------------------------------------------------------------

CGeoEntrySpiral::CGeoEntrySpiral() = default;

CGeoEntrySpiral::CGeoEntrySpiral(const CGeoEntrySpiral& other) = default;

CGeoEntrySpiral& CGeoEntrySpiral::operator=(const CGeoEntrySpiral& other) = default;

CGeoEntrySpiral::~CGeoEntrySpiral() = default;

void CGeoEntrySpiral::Set(CGeoPoint& start, double azimuth, geodef_Direction direction,
                          double radius, double length) {
    set_spiral(m_state, start, azimuth, direction, radius, length);
}

double CGeoEntrySpiral::Length() {
    return length_of(m_state);
}

double CGeoEntrySpiral::Radius() {
    return radius_of(m_state);
}

double CGeoEntrySpiral::EntryAzimuth() {
    return entry_azimuth_of(m_state);
}

geodef_Direction CGeoEntrySpiral::Direction() {
    return direction_of(m_state);
}

double CGeoEntrySpiral::ExitAzimuth() {
    return exit_azimuth_of(m_state);
}

CGeoPoint& CGeoEntrySpiral::StartPt() {
    return start_point_of(m_state);
}

CGeoPoint& CGeoEntrySpiral::EndPt() {
    return Entry::end_point(m_state);
}

double CGeoEntrySpiral::RadiusAtStation(double station) {
    return Entry::radius_at_station(m_state, station);
}

double CGeoEntrySpiral::GridAzimuth(double station) {
    return Entry::grid_azimuth(m_state, station);
}

void CGeoEntrySpiral::GridHorzPoint(double station, double tolerance, CGeoPoint& result) {
    Entry::grid_horz_point(m_state, station, tolerance, result);
}

void CGeoEntrySpiral::GridDeltas(CGeoPoint& point, double startStation, double tolerance,
                                 double& station, double& offset, double& azimuth) {
    Entry::grid_deltas(m_state, point, startStation, tolerance, station, offset, azimuth);
}

// ---- CGeoExitSpiral ---------------------------------------------------------------------------

CGeoExitSpiral::CGeoExitSpiral() = default;

CGeoExitSpiral::CGeoExitSpiral(const CGeoExitSpiral& other) = default;

CGeoExitSpiral& CGeoExitSpiral::operator=(const CGeoExitSpiral& other) = default;

CGeoExitSpiral::~CGeoExitSpiral() = default;

void CGeoExitSpiral::Set(CGeoPoint& start, double azimuth, geodef_Direction direction,
                         double radius, double length) {
    set_spiral(m_state, start, azimuth, direction, radius, length);
}

double CGeoExitSpiral::Length() {
    return length_of(m_state);
}

double CGeoExitSpiral::Radius() {
    return radius_of(m_state);
}

double CGeoExitSpiral::EntryAzimuth() {
    return entry_azimuth_of(m_state);
}

geodef_Direction CGeoExitSpiral::Direction() {
    return direction_of(m_state);
}

double CGeoExitSpiral::ExitAzimuth() {
    return exit_azimuth_of(m_state);
}

CGeoPoint& CGeoExitSpiral::StartPt() {
    return start_point_of(m_state);
}

CGeoPoint& CGeoExitSpiral::EndPt() {
    return Exit::end_point(m_state);
}

double CGeoExitSpiral::RadiusAtStation(double station) {
    return Exit::radius_at_station(m_state, station);
}

double CGeoExitSpiral::GridAzimuth(double station) {
    return Exit::grid_azimuth(m_state, station);
}

void CGeoExitSpiral::GridHorzPoint(double station, double tolerance, CGeoPoint& result) {
    Exit::grid_horz_point(m_state, station, tolerance, result);
}

void CGeoExitSpiral::GridDeltas(CGeoPoint& point, double startStation, double tolerance,
                                double& station, double& offset, double& azimuth) {
    Exit::grid_deltas(m_state, point, startStation, tolerance, station, offset, azimuth);
}
