// The transition spirals. An entry spiral leaves a straight and tightens to the radius of the
// arc it joins; an exit spiral leaves that radius and straightens out. Both are the same
// clothoid, measured from its straight end: forwards from the start for an entry spiral,
// backwards from the end for an exit spiral. Everything below is written once and told which
// of the two it serves; only the mirrored parts (which end touches the straight, which
// continuation lies before the start and which beyond the end) differ.
#include "qv5/geospiral.h"

#include "core/angles.h"
#include "core/constants.h"
#include "core/lazy_cache.h"
#include "geometry/clothoid.h"
#include "geometry/point_access.h"
#include "geometry/spiral_access.h"
#include "geometry/spiral_math.h"
#include "geometry/traverse.h"
#include "qv5/geoarc.h"
#include "qv5/geoline.h"

#include <cmath>
#include <cstdint>
#include <new>

using namespace qv5::detail;

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

/// Everything a spiral holds, in the order of its fields, with the caching and the handling
/// both spirals share, told which of the two it serves. The public classes keep it in an opaque
/// block of their own and forward to it.
template <SpiralKind Kind>
class Spiral {
public:
    static constexpr bool kEntry = Kind == SpiralKind::Entry;

    void set(CGeoPoint& start, double azimuth, geodef_Direction direction, double radius,
             double length) {
        m_radius = radius;
        m_length = length;
        m_entryAzimuth = azimuth;
        m_direction = direction;
        m_startPt = start;
        m_spiralConstant = radius * length * 2.0;
        forget(m_known, kKnownEverything);
        remember(m_known, kKnownEntryAzimuth | kKnownLength | kKnownRadius | kKnownDirection |
                              kKnownStartPoint);
    }

    double length() { return EnsureLength(); }
    double radius() { return EnsureRadius(); }
    double entry_azimuth() { return EnsureEntryAzimuth(); }
    geodef_Direction direction() { return EnsureDirection(); }
    double exit_azimuth() { return EnsureExitAzimuth(); }
    CGeoPoint& start_point() { return EnsureStartPoint(); }
    CGeoPoint& end_point() { return EnsureEndPoint(); }

    double radius_at_station(double station) {
        if (!is_known(m_known, kKnownLength | kKnownRadius) || m_length == GEO_NULL ||
            m_radius == GEO_NULL || std::isnan(station)) {
            return GEO_NULL;
        }
        // The curvature grows linearly from 0 at the straight end to 1/R at the curved end.
        if (station <= 0.0) {
            return kEntry ? kInfiniteRadius : m_radius;
        }
        if (station >= m_length) {
            return kEntry ? m_radius : kInfiniteRadius;
        }
        return m_radius * m_length / (kEntry ? station : m_length - station);
    }

    double grid_azimuth(double station) {
        SpiralShape shape{
            Kind,           kNullGrid,        kEntry ? EnsureEntryAzimuth() : EnsureExitAzimuth(),
            EnsureLength(), m_spiralConstant, EnsureDirection() != geodef_Left};
        return spiral_azimuth(shape, station);
    }

    void grid_horz_point(double station, double tolerance, CGeoPoint& result) {
        result.SetGrid(kNullGrid);
        if (m_known == 0) {
            return;
        }
        const double length = EnsureLength();
        if (length == GEO_NULL) {
            return;
        }
        if (station < 0.0) {
            if constexpr (kEntry) {
                straight_point(EnsureStartPoint(), EnsureEntryAzimuth(), station, result);
            } else {
                arc_continuation().GridHorzPoint(station, result);
            }
        } else if (station <= length) {
            geo_nee grid;
            if (spiral_point(shape(), station, tolerance, grid)) {
                result = m_startPt;
                result.SetGrid(grid);
            }
        } else if (station > length) {
            if constexpr (kEntry) {
                arc_continuation().GridHorzPoint(station - length, result);
            } else {
                const double azimuth = EnsureExitAzimuth();
                straight_point(EnsureEndPoint(), azimuth, station - length, result);
            }
        }
    }

    /// The clothoid as laid out on the ground, with its stepping trigonometry.
    SpiralLayout layout() { return SpiralLayout(shape()); }

    void grid_deltas(CGeoPoint& point, double start_station, double tolerance, double& station,
                     double& offset, double& azimuth) {
        SpiralLayout spiral = layout();
        grid_deltas(spiral, point, start_station, tolerance, station, offset, azimuth);
    }

    /// The inversion with a layout of this spiral's (made by layout() since it was last set).
    void grid_deltas(SpiralLayout& spiral, CGeoPoint& point, double start_station, double tolerance,
                     double& station, double& offset, double& azimuth) {
        station = GEO_NULL;
        offset = GEO_NULL;
        azimuth = GEO_NULL;
        const geo_nee p = grid_of(point);
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
                const Continuation c = before_start(point, found);
                if (c == Continuation::Failed) {
                    return;
                }
                done = c == Continuation::Found;
                s_try = 0.0;
            }
            if (!done && s_try > length) {
                const Continuation c = beyond_end(point, found);
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

private:
    /// Bits of m_known: which value has been given, derived or attempted.
    enum : std::uint64_t {
        kKnownEndPoint = 1,
        kKnownEntryAzimuth = 2,
        kKnownLength = 4,
        kKnownRadius = 8,
        kKnownDirection = 16,
        kKnownExitAzimuth = 32,
        kKnownStartPoint = 64,
        kKnownEverything = 127,
    };

    // Given values read GEO_NULL (the direction: left) from then on when they were not given.
    double EnsureLength() { return ensure_default(m_known, kKnownLength, m_length, GEO_NULL); }
    double EnsureRadius() { return ensure_default(m_known, kKnownRadius, m_radius, GEO_NULL); }
    double EnsureEntryAzimuth() {
        return ensure_default(m_known, kKnownEntryAzimuth, m_entryAzimuth, GEO_NULL);
    }
    geodef_Direction EnsureDirection() {
        return ensure_default(m_known, kKnownDirection, m_direction, geodef_Left);
    }

    /// A start point that was never given reads all-null, every time: nothing is remembered.
    CGeoPoint& EnsureStartPoint() {
        ensure_group<FailurePolicy::kRetry>(m_known, kKnownStartPoint, [this] {
            m_startPt.SetGrid(kNullGrid);
            return false;
        });
        return m_startPt;
    }

    double EnsureExitAzimuth() {
        return ensure<FailurePolicy::kRememberNull>(
            m_known, kKnownExitAzimuth, m_exitAzimuth, [this](double& out) {
                if (!is_known(m_known, kKnownEntryAzimuth) || m_entryAzimuth == GEO_NULL) {
                    return false;
                }
                // The whole spiral turns by L^2 / C = L / (2 R), the same deflection its
                // azimuth formula gives at the full length.
                const double deflection = clothoid_deflection(m_length, m_spiralConstant);
                if (deflection == GEO_NULL) {
                    return false;
                }
                out = normalised_bearing(EnsureDirection() != geodef_Left
                                             ? m_entryAzimuth + deflection
                                             : m_entryAzimuth - deflection);
                return true;
            });
    }

    /// The end point: the series at the full length, laid from the start. The entry spiral
    /// lays it off its entry tangent; the exit spiral off its exit tangent, across which the
    /// start lies on the outside of the turn. A failure is remembered as an all-null point.
    CGeoPoint& EnsureEndPoint() {
        ensure_group<FailurePolicy::kRememberNull>(m_known, kKnownEndPoint, [this] {
            m_endPt = CGeoPoint(kNullGrid);
            if (!is_known(m_known, kKnownLength)) {
                return false;
            }
            clothoid_deltas(m_length, m_spiralConstant, kSpiralEndTolerance, m_endDeltaX,
                            m_endDeltaY);
            const double azimuth = kEntry ? m_entryAzimuth : EnsureExitAzimuth();
            const bool flip =
                kEntry ? EnsureDirection() == geodef_Left : EnsureDirection() == geodef_Right;
            if (flip && m_endDeltaY != GEO_NULL) {
                m_endDeltaY = -m_endDeltaY;
            }
            const geo_nee start = grid_of(EnsureStartPoint());
            if (m_endDeltaX == GEO_NULL || azimuth == GEO_NULL || !has_plan(start)) {
                return false;
            }
            const geo_nee foot = level_step(start, azimuth, m_endDeltaX);
            m_endPt = m_startPt;
            m_endPt.SetGrid(level_step(foot, normalised_bearing(azimuth + kHalfPi), m_endDeltaY));
            return true;
        });
        return m_endPt;
    }

    /// The clothoid as laid out on the ground; its straight end is the start of an entry
    /// spiral and the (derived) end of an exit spiral.
    SpiralShape shape() {
        SpiralShape shape{Kind,           kNullGrid,        GEO_NULL,
                          EnsureLength(), m_spiralConstant, EnsureDirection() != geodef_Left};
        if constexpr (kEntry) {
            shape.straight_end = grid_of(EnsureStartPoint());
            shape.tangent_azimuth = EnsureEntryAzimuth();
        } else {
            shape.straight_end = grid_of(EnsureEndPoint());
            shape.tangent_azimuth = EnsureExitAzimuth();
        }
        return shape;
    }

    /// The arc before an exit spiral's start or beyond an entry spiral's end.
    CGeoArc arc_continuation() {
        if constexpr (kEntry) {
            const double azimuth = EnsureExitAzimuth();
            return continuing_arc(EnsureEndPoint(), azimuth, EnsureRadius(), EnsureDirection());
        } else {
            return continuing_arc(EnsureStartPoint(), EnsureEntryAzimuth(), EnsureRadius(),
                                  EnsureDirection());
        }
    }

    /// Before the start: the entry straight, or the arc an exit spiral leaves.
    Continuation before_start(CGeoPoint& point, Deltas& out) {
        if constexpr (kEntry) {
            return straight_deltas(EnsureStartPoint(), EnsureEntryAzimuth(), point, true, 0.0, out);
        } else {
            return arc_continuation_deltas(arc_continuation(), point, true, 0.0, out);
        }
    }

    /// Beyond the end: the arc an entry spiral joins, or the exit straight.
    Continuation beyond_end(CGeoPoint& point, Deltas& out) {
        const double length = EnsureLength();
        if constexpr (kEntry) {
            return arc_continuation_deltas(arc_continuation(), point, false, length, out);
        } else {
            const double azimuth = EnsureExitAzimuth();
            return straight_deltas(EnsureEndPoint(), azimuth, point, false, length, out);
        }
    }

    double m_radius = GEO_NULL;         ///< radius of the adjoining arc, metres
    double m_length = GEO_NULL;         ///< length of the spiral, metres
    double m_entryAzimuth = GEO_NULL;   ///< tangent azimuth at the start, as given
    double m_exitAzimuth = GEO_NULL;    ///< tangent azimuth at the end (cached)
    double m_spiralConstant = GEO_NULL; ///< C = 2 R L, square metres
    double m_endDeltaX = GEO_NULL;      ///< series x at the full length (cached with the end)
    double m_endDeltaY = GEO_NULL;      ///< series y at the full length, signed for the turn
    geodef_Direction m_direction = geodef_Left;
    CGeoPoint m_startPt;
    CGeoPoint m_endPt;
    std::uint64_t m_known = 0;
};

using Entry = Spiral<SpiralKind::Entry>;
using Exit = Spiral<SpiralKind::Exit>;

template <class State>
State& state_in(unsigned char* block) {
    return *std::launder(reinterpret_cast<State*>(block));
}

template <class State>
const State& state_in(const unsigned char* block) {
    return *std::launder(reinterpret_cast<const State*>(block));
}

} // namespace

// ---- CGeoEntrySpiral ----------------------------------------------------------------------------

CGeoEntrySpiral::CGeoEntrySpiral() {
    // The state lives in a block of the class's own, so that the public header shows nothing
    // of it.
    static_assert(sizeof(Entry) <= kStateSize, "the spiral state outgrew its block");
    static_assert(alignof(Entry) <= kStateAlign, "the spiral state is misaligned");
    new (m_state) Entry();
}

CGeoEntrySpiral::CGeoEntrySpiral(const CGeoEntrySpiral& other) {
    new (m_state) Entry(state_in<Entry>(other.m_state));
}

CGeoEntrySpiral& CGeoEntrySpiral::operator=(const CGeoEntrySpiral& other) {
    state_in<Entry>(m_state) = state_in<Entry>(other.m_state);
    return *this;
}

CGeoEntrySpiral::~CGeoEntrySpiral() {
    state_in<Entry>(m_state).~Entry();
}

void CGeoEntrySpiral::Set(CGeoPoint& start, double azimuth, geodef_Direction direction,
                          double radius, double length) {
    state_in<Entry>(m_state).set(start, azimuth, direction, radius, length);
}

double CGeoEntrySpiral::Length() {
    return state_in<Entry>(m_state).length();
}

double CGeoEntrySpiral::Radius() {
    return state_in<Entry>(m_state).radius();
}

double CGeoEntrySpiral::EntryAzimuth() {
    return state_in<Entry>(m_state).entry_azimuth();
}

geodef_Direction CGeoEntrySpiral::Direction() {
    return state_in<Entry>(m_state).direction();
}

double CGeoEntrySpiral::ExitAzimuth() {
    return state_in<Entry>(m_state).exit_azimuth();
}

CGeoPoint& CGeoEntrySpiral::StartPt() {
    return state_in<Entry>(m_state).start_point();
}

CGeoPoint& CGeoEntrySpiral::EndPt() {
    return state_in<Entry>(m_state).end_point();
}

double CGeoEntrySpiral::RadiusAtStation(double station) {
    return state_in<Entry>(m_state).radius_at_station(station);
}

double CGeoEntrySpiral::GridAzimuth(double station) {
    return state_in<Entry>(m_state).grid_azimuth(station);
}

void CGeoEntrySpiral::GridHorzPoint(double station, double tolerance, CGeoPoint& result) {
    state_in<Entry>(m_state).grid_horz_point(station, tolerance, result);
}

void CGeoEntrySpiral::GridDeltas(CGeoPoint& point, double startStation, double tolerance,
                                 double& station, double& offset, double& azimuth) {
    state_in<Entry>(m_state).grid_deltas(point, startStation, tolerance, station, offset, azimuth);
}

// ---- CGeoExitSpiral -----------------------------------------------------------------------------

CGeoExitSpiral::CGeoExitSpiral() {
    // The state lives in a block of the class's own, so that the public header shows nothing
    // of it.
    static_assert(sizeof(Exit) <= kStateSize, "the spiral state outgrew its block");
    static_assert(alignof(Exit) <= kStateAlign, "the spiral state is misaligned");
    new (m_state) Exit();
}

CGeoExitSpiral::CGeoExitSpiral(const CGeoExitSpiral& other) {
    new (m_state) Exit(state_in<Exit>(other.m_state));
}

CGeoExitSpiral& CGeoExitSpiral::operator=(const CGeoExitSpiral& other) {
    state_in<Exit>(m_state) = state_in<Exit>(other.m_state);
    return *this;
}

CGeoExitSpiral::~CGeoExitSpiral() {
    state_in<Exit>(m_state).~Exit();
}

void CGeoExitSpiral::Set(CGeoPoint& start, double azimuth, geodef_Direction direction,
                         double radius, double length) {
    state_in<Exit>(m_state).set(start, azimuth, direction, radius, length);
}

double CGeoExitSpiral::Length() {
    return state_in<Exit>(m_state).length();
}

double CGeoExitSpiral::Radius() {
    return state_in<Exit>(m_state).radius();
}

double CGeoExitSpiral::EntryAzimuth() {
    return state_in<Exit>(m_state).entry_azimuth();
}

geodef_Direction CGeoExitSpiral::Direction() {
    return state_in<Exit>(m_state).direction();
}

double CGeoExitSpiral::ExitAzimuth() {
    return state_in<Exit>(m_state).exit_azimuth();
}

CGeoPoint& CGeoExitSpiral::StartPt() {
    return state_in<Exit>(m_state).start_point();
}

CGeoPoint& CGeoExitSpiral::EndPt() {
    return state_in<Exit>(m_state).end_point();
}

double CGeoExitSpiral::RadiusAtStation(double station) {
    return state_in<Exit>(m_state).radius_at_station(station);
}

double CGeoExitSpiral::GridAzimuth(double station) {
    return state_in<Exit>(m_state).grid_azimuth(station);
}

void CGeoExitSpiral::GridHorzPoint(double station, double tolerance, CGeoPoint& result) {
    state_in<Exit>(m_state).grid_horz_point(station, tolerance, result);
}

void CGeoExitSpiral::GridDeltas(CGeoPoint& point, double startStation, double tolerance,
                                double& station, double& offset, double& azimuth) {
    state_in<Exit>(m_state).grid_deltas(point, startStation, tolerance, station, offset, azimuth);
}

// ---- the library's own access -------------------------------------------------------------------

namespace qv5::detail {

SpiralLayout SpiralAccess::layout(CGeoEntrySpiral& spiral) {
    return state_in<Entry>(spiral.m_state).layout();
}

SpiralLayout SpiralAccess::layout(CGeoExitSpiral& spiral) {
    return state_in<Exit>(spiral.m_state).layout();
}

void SpiralAccess::grid_deltas(CGeoEntrySpiral& spiral, SpiralLayout& layout, CGeoPoint& point,
                               double startStation, double tolerance, double& station,
                               double& offset, double& azimuth) {
    state_in<Entry>(spiral.m_state)
        .grid_deltas(layout, point, startStation, tolerance, station, offset, azimuth);
}

void SpiralAccess::grid_deltas(CGeoExitSpiral& spiral, SpiralLayout& layout, CGeoPoint& point,
                               double startStation, double tolerance, double& station,
                               double& offset, double& azimuth) {
    state_in<Exit>(spiral.m_state)
        .grid_deltas(layout, point, startStation, tolerance, station, offset, azimuth);
}

} // namespace qv5::detail
