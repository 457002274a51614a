// CGeoRoadIterator: positioning on the road (station and offset to grid and back, the profile)
// and the evaluation of its cross sections.
//
// The iterator never evaluates the road's own element objects: their accessors fill lazy caches,
// and many iterators in many threads read one road. It copies each element it needs once (after
// Set or Reset) and evaluates its copy; the profile records and the template applications are
// copied as plain values the same way. The decisions themselves (which profile branch, which
// templates, which element is under a point) are the plain functions of iterator_math.cpp.
#include "core/angles.h"
#include "core/constants.h"
#include "core/lazy_cache.h"
#include "geometry/line_access.h"
#include "geometry/spiral_access.h"
#include "qv5/georoad.h"
#include "qv5/georoaditer.h"
#include "qv5/geosection.h"
#include "qv5/geosurvey.h"
#include "qv5/geotemplate.h"
#include "road/iterator_math.h"
#include "road/iterator_state.h"
#include "road/road_access.h"

#include <cmath>
#include <cstdint>
#include <memory>
#include <vector>

using qv5::detail::ApplicationView;
using qv5::detail::ElementDeltas;
using qv5::detail::FailurePolicy;
using qv5::detail::IteratorAccess;
using qv5::detail::IteratorElement;
using qv5::detail::IteratorState;
using qv5::detail::ProfileRecordView;
using qv5::detail::RoadAccess;

namespace {

/// Series tolerance of spiral points and inversions, as the iterator asks for them (metres).
inline constexpr double kSpiralTolerance = 0.001;
/// Tolerance handed to the spirals by the closest-offset search the iterator starts from.
inline constexpr double kStartSearchTolerance = 0.01;
/// A transition point is found when the line's point lies this close to the break's offset.
inline constexpr double kBreakOffsetTolerance = 0.01;
/// Most regula falsi steps of a transition-point search.
inline constexpr int kBreakMaxSteps = 11;
/// The bits of an element slot that say its copy, and its middle point, are loaded.
inline constexpr unsigned kKnownElement = 1;
inline constexpr unsigned kKnownMiddle = 2;
/// Name of a section's centreline break.
inline constexpr unsigned short kCentrelineName[] = {u'C', u'L', u'#', u'#', u'#', 0};

/// Radius output: signed by the sense of the curve; a straight (2e100) and an undefined radius
/// keep their value.
double signed_radius(double radius, geodef_Direction direction) {
    if (radius == GEO_NULL || radius == qv5::detail::kInfiniteRadius) {
        return radius;
    }
    return direction != geodef_Right ? -radius : radius;
}

double element_length(qv5::detail::ElementCopy& element) {
    if (auto* line = std::get_if<CGeoLine>(&element)) {
        return line->GridHDistance();
    }
    if (auto* arc = std::get_if<CGeoArc>(&element)) {
        return arc->GridArcLength();
    }
    if (auto* entry = std::get_if<CGeoEntrySpiral>(&element)) {
        return entry->Length();
    }
    if (auto* exit = std::get_if<CGeoExitSpiral>(&element)) {
        return exit->Length();
    }
    return 0.0;
}

/// Point, azimuth and signed radius of an element at a distance from its start.
template <typename Spiral>
void spiral_point(Spiral& spiral, double d, CGeoPoint& point, double& azimuth, double& radius) {
    spiral.GridHorzPoint(d, kSpiralTolerance, point);
    azimuth = spiral.GridAzimuth(d);
    radius = signed_radius(spiral.RadiusAtStation(d), spiral.Direction());
}

/// The spiral's layout, made on its first inversion and kept in the element's slot.
template <typename Spiral>
qv5::detail::SpiralLayout& layout_of(IteratorElement& e, Spiral& spiral) {
    if (e.layout == nullptr) {
        e.layout =
            std::make_unique<qv5::detail::SpiralLayout>(qv5::detail::SpiralAccess::layout(spiral));
    }
    return *e.layout;
}

template <typename Spiral>
ElementDeltas spiral_deltas(Spiral& spiral, qv5::detail::SpiralLayout& layout, CGeoPoint& point,
                            double guess, double tolerance, double length, bool with_radius) {
    ElementDeltas d{GEO_NULL, GEO_NULL, GEO_NULL, GEO_NULL, length, true};
    if (guess == GEO_NULL) {
        guess = length * 0.5;
    }
    if (guess < 0.0) {
        guess = 0.0;
    }
    if (guess > length) {
        guess = length;
    }
    qv5::detail::SpiralAccess::grid_deltas(spiral, layout, point, guess, tolerance, d.station,
                                           d.offset, d.azimuth);
    if (with_radius && d.station != GEO_NULL) {
        d.radius = signed_radius(spiral.RadiusAtStation(d.station), spiral.Direction());
    }
    return d;
}

/// The break's offset (signed by side) and height of element |code| - 1 of a template.
bool break_target(CGeoTemplate& templ, int code, double& offset, double& height) {
    const int k = (code < 0 ? -code : code) - 1;
    if (templ.NumberElements() <= k) {
        return false;
    }
    double start_h = GEO_NULL;
    double start_v = GEO_NULL;
    double delta_h = GEO_NULL;
    double delta_v = GEO_NULL;
    double angle = GEO_NULL;
    if (templ.GetNthElement(k, templ.NthElementType(k), start_h, start_v, delta_h, delta_v, angle,
                            nullptr) == 0) {
        return false;
    }
    offset = start_h + delta_h;
    if (code < 0) {
        offset = -offset;
    }
    height = start_v + delta_v;
    return true;
}

/// One of two values is 0 or more and the other negative.
bool opposite_signs(double a, double b) {
    return (a >= 0.0) != (b >= 0.0);
}

} // namespace

// ---- the iterator's state and the seam the road's searches use --------------------------------

namespace qv5::detail {

IteratorElement& IteratorAccess::element(CGeoRoadIterator& it, int k) {
    IteratorState& state = *it.m_state;
    const int count = RoadAccess::horizontal_count(*it.m_road);
    if (static_cast<int>(state.elements.size()) != count) {
        // The road's element count changed without a Set: start again from fresh copies.
        state.elements.clear();
        state.elements.resize(static_cast<std::size_t>(count));
    }
    IteratorElement& slot = state.elements[static_cast<std::size_t>(k)];
    ensure_group<FailurePolicy::kRememberNull>(slot.known, kKnownElement, [&] {
        RoadAccess::copy_horizontal(*it.m_road, k, slot.copy);
        slot.length = element_length(slot.copy.element);
        return true;
    });
    return slot;
}

ElementDeltas IteratorAccess::invert(IteratorElement& e, CGeoPoint& point, double spiral_guess,
                                     double spiral_tolerance, Radius radius) {
    ElementDeltas d{GEO_NULL, GEO_NULL, GEO_NULL, GEO_NULL, e.length, true};
    const bool with_radius = radius == Radius::wanted;
    if (auto* line = std::get_if<CGeoLine>(&e.copy.element)) {
        LineAccess::deltas(*line, point, d.station, d.offset, d.azimuth);
        d.radius = kInfiniteRadius;
    } else if (auto* arc = std::get_if<CGeoArc>(&e.copy.element)) {
        arc->GridDeltas(point, d.station, d.offset, d.azimuth);
        if (with_radius) {
            d.radius = signed_radius(arc->Radius(), arc->Direction());
        }
    } else if (auto* entry = std::get_if<CGeoEntrySpiral>(&e.copy.element)) {
        d = spiral_deltas(*entry, layout_of(e, *entry), point, spiral_guess, spiral_tolerance,
                          e.length, with_radius);
    } else if (auto* exit = std::get_if<CGeoExitSpiral>(&e.copy.element)) {
        d = spiral_deltas(*exit, layout_of(e, *exit), point, spiral_guess, spiral_tolerance,
                          e.length, with_radius);
    } else {
        d.inverted = false;
    }
    return d;
}

double IteratorAccess::distance_at_least(CGeoRoadIterator& it, int k, CGeoPoint& point) {
    IteratorElement& e = element(it, k);
    ensure_group<FailurePolicy::kRememberNull>(e.known, kKnownMiddle, [&] {
        CGeoPoint middle;
        const double half = e.length * 0.5;
        if (auto* line = std::get_if<CGeoLine>(&e.copy.element)) {
            line->GridHorzPoint(half, middle);
        } else if (auto* arc = std::get_if<CGeoArc>(&e.copy.element)) {
            arc->GridHorzPoint(half, middle);
        } else if (auto* entry = std::get_if<CGeoEntrySpiral>(&e.copy.element)) {
            entry->GridHorzPoint(half, kSpiralTolerance, middle);
        } else if (auto* exit = std::get_if<CGeoExitSpiral>(&e.copy.element)) {
            exit->GridHorzPoint(half, kSpiralTolerance, middle);
        }
        if (middle.Ok2DGrid() == 0) {
            return false;
        }
        e.middle_north = middle.Northing();
        e.middle_east = middle.Easting();
        return true;
    });
    if (point.Ok2DGrid() == 0) {
        return 0.0;
    }
    // Plain square root: survey coordinates are far from overflowing, and a reach that is not
    // finite says nothing.
    const double dn = point.Northing() - e.middle_north;
    const double de = point.Easting() - e.middle_east;
    const double reach = std::sqrt(dn * dn + de * de) - e.length * 0.5;
    return e.middle_north != GEO_NULL && e.middle_east != GEO_NULL && std::isfinite(reach) &&
                   reach > 0.0
               ? reach
               : 0.0;
}

bool IteratorAccess::bound_to(const CGeoRoadIterator& it, const CGeoRoad* road) {
    return road != nullptr && it.m_road == road;
}

int IteratorAccess::on_roadway(CGeoRoadIterator& it, double station, double offset) {
    return it.CheckPointOnRoadWay(station, offset);
}

} // namespace qv5::detail

namespace {

/// The profile records, copied once after Set or Reset.
const std::vector<ProfileRecordView>& profile_of(CGeoRoad& road, IteratorState& state) {
    qv5::detail::ensure_group<FailurePolicy::kRememberNull>(
        state.known, static_cast<unsigned>(IteratorState::kKnownProfile), [&] {
            const int n = RoadAccess::profile_count(road);
            state.profile.clear();
            for (int i = 0; i < n; ++i) {
                state.profile.push_back(RoadAccess::profile_record(road, i));
            }
            return true;
        });
    return state.profile;
}

/// The template applications, copied once after Set or Reset.
const std::vector<ApplicationView>& applications_of(CGeoRoad& road, IteratorState& state) {
    qv5::detail::ensure_group<FailurePolicy::kRememberNull>(
        state.known, static_cast<unsigned>(IteratorState::kKnownApplications), [&] {
            const int n = RoadAccess::application_count(road);
            state.applications.clear();
            for (int i = 0; i < n; ++i) {
                state.applications.push_back(RoadAccess::application(road, i));
            }
            return true;
        });
    return state.applications;
}

/// Forgets every copy: the road may have been edited.
void forget_copies(IteratorState& state) {
    state.elements.clear();
    qv5::detail::forget(state.known, static_cast<unsigned>(IteratorState::kKnownProfile |
                                                           IteratorState::kKnownApplications));
}

/// The template of application `a`, or null when its index no longer names a template (a
/// template deleted from the library after the application was made).
const CGeoTemplate* application_template(CGeoRoad& road, const ApplicationView& a) {
    if (a.template_index < 0 || a.template_index >= RoadAccess::template_count(road)) {
        return nullptr;
    }
    return &RoadAccess::template_at(road, a.template_index);
}

} // namespace

// ---- construction ----------------------------------------------------------------------------

CGeoRoadIterator::CGeoRoadIterator()
    : m_road(nullptr), m_additionalOffset(0.0), m_currentHorizontal(-1), m_currentVertical(0),
      m_station(GEO_NULL), m_state(new IteratorState) {}

CGeoRoadIterator::CGeoRoadIterator(const CGeoRoadIterator& other)
    : m_road(other.m_road), m_additionalOffset(other.m_additionalOffset),
      m_currentHorizontal(other.m_currentHorizontal), m_currentVertical(other.m_currentVertical),
      m_station(other.m_station), m_state(new IteratorState) {
    m_state->work = other.m_state->work;
}

CGeoRoadIterator& CGeoRoadIterator::operator=(const CGeoRoadIterator& other) {
    if (this == &other) {
        return *this;
    }
    // The element copies belong to the road the other iterator reads; this one makes its own.
    if (m_road != other.m_road) {
        forget_copies(*m_state);
    }
    m_road = other.m_road;
    m_additionalOffset = other.m_additionalOffset;
    m_currentHorizontal = other.m_currentHorizontal;
    m_currentVertical = other.m_currentVertical;
    m_state->work = other.m_state->work;
    m_station = other.m_station;
    return *this;
}

CGeoRoadIterator::~CGeoRoadIterator() {
    delete m_state;
}

void CGeoRoadIterator::Set(CGeoRoad* road) {
    m_road = road;
    m_currentHorizontal = -1;
    m_station = GEO_NULL;
    forget_copies(*m_state);
}

void CGeoRoadIterator::ForgetPosition() {
    m_currentHorizontal = -1;
    m_station = GEO_NULL;
}

void CGeoRoadIterator::Reset(double station) {
    m_currentHorizontal = -1;
    m_station = station;
    forget_copies(*m_state);
    if (station == GEO_NULL || m_road == nullptr) {
        return;
    }
    const int count = RoadAccess::horizontal_count(*m_road);
    for (int k = 0; k < count; ++k) {
        const int type = RoadAccess::horizontal_type(*m_road, k);
        if (type < georoad_Line || type > georoad_ExitSpiral) {
            continue;
        }
        IteratorElement& e = IteratorAccess::element(*this, k);
        // Strictly greater: a station exactly at a joint selects the later element.
        if (e.copy.start_station + e.length > station) {
            m_currentHorizontal = k;
            return;
        }
    }
    m_currentHorizontal = count - 1;
}

int CGeoRoadIterator::CurrentHorizontalElement() {
    return m_currentHorizontal;
}

int CGeoRoadIterator::CurrentVerticalElement() {
    return m_currentVertical;
}

double CGeoRoadIterator::AdditionalOffset() {
    return m_additionalOffset;
}

void CGeoRoadIterator::SetAdditionalOffset(double offset) {
    m_additionalOffset = offset;
}

// ---- positioning -----------------------------------------------------------------------------

void CGeoRoadIterator::CenterlinePoint(double station, double offset, double normalHeight,
                                       CGeoPoint& point, double& azimuth, double* radius,
                                       double* grade) {
    point.SetGrid(GEO_NULL, GEO_NULL, GEO_NULL);
    azimuth = GEO_NULL;
    if (m_road == nullptr) {
        return;
    }
    const int count = RoadAccess::horizontal_count(*m_road);
    if (count <= 0) {
        return;
    }
    // Strictly greater than the next start: a station exactly at a joint stays in the earlier
    // element (Reset picks the later one; both are kept as hosts rely on them).
    int k = 0;
    while (k < count - 1 && station > RoadAccess::horizontal_start_station(*m_road, k + 1)) {
        ++k;
    }
    m_currentHorizontal = k;
    IteratorElement& e = IteratorAccess::element(*this, k);
    const double d = station - e.copy.start_station;
    double r = GEO_NULL;
    if (auto* line = std::get_if<CGeoLine>(&e.copy.element)) {
        line->GridHorzPoint(d, point);
        azimuth = line->GridAzimuth();
        r = qv5::detail::kInfiniteRadius;
    } else if (auto* arc = std::get_if<CGeoArc>(&e.copy.element)) {
        arc->GridHorzPoint(d, point);
        azimuth = arc->GridAzimuth(d);
        r = signed_radius(arc->Radius(), arc->Direction());
    } else if (auto* entry = std::get_if<CGeoEntrySpiral>(&e.copy.element)) {
        spiral_point(*entry, d, point, azimuth, r);
    } else if (auto* exit = std::get_if<CGeoExitSpiral>(&e.copy.element)) {
        spiral_point(*exit, d, point, azimuth, r);
    } else {
        return;
    }
    if (radius != nullptr) {
        *radius = r;
    }
    if (point.Ok2DGrid() == 0 || azimuth == GEO_NULL) {
        return;
    }
    double e_design = GEO_NULL;
    double g = GEO_NULL;
    VerticalCurveDeltas(station, e_design, g);
    geo_nee p = point.Grid();
    p.elev = e_design;
    const double b = geo_normalised_bearing(azimuth + qv5::detail::kHalfPi);
    p.north += std::cos(b) * offset;
    p.east += std::sin(b) * offset;
    if (e_design != GEO_NULL) {
        // The normal height is measured square to the grade line: part of it moves the point
        // back along the road, the rest raises it.
        geo_nee moved{};
        geo_grid_follow(p, azimuth, -std::sin(g) * normalHeight, 0.0, moved);
        moved.elev = moved.elev + std::cos(g) * normalHeight;
        p = moved;
        if (grade != nullptr) {
            *grade = g;
        }
    }
    point.SetGrid(p);
}

void CGeoRoadIterator::CenterlineDeltas(CGeoPoint& point, double& station, double& offset,
                                        double& deltaElevation, double& azimuth, double& grade,
                                        double* radius) {
    station = offset = deltaElevation = azimuth = grade = GEO_NULL;
    if (radius != nullptr) {
        *radius = GEO_NULL;
    }
    if (m_road == nullptr || point.Ok3DGrid() == 0) {
        return;
    }
    const int count = RoadAccess::horizontal_count(*m_road);
    if (count <= 0) {
        return;
    }
    if (m_currentHorizontal < 0 || m_currentHorizontal >= count) {
        double start_offset = GEO_NULL;
        m_currentHorizontal = -1;
        m_station = IteratorAccess::closest_offset(*this, point, start_offset,
                                                   kStartSearchTolerance, &m_currentHorizontal);
        if (m_station == GEO_NULL || m_currentHorizontal < 0) {
            m_currentHorizontal = -1;
            return;
        }
    }
    // Each element's spiral inversion starts from the last station found.
    // The radius is worked out only for a caller who asks for it.
    const IteratorAccess::Radius wanted =
        radius != nullptr ? IteratorAccess::Radius::wanted : IteratorAccess::Radius::not_wanted;
    // The walk ends on the element it inverted last.
    const IteratorElement* last = nullptr;
    const auto invert = [&](int k) {
        IteratorElement& e = IteratorAccess::element(*this, k);
        last = &e;
        const double guess = m_station == GEO_NULL ? GEO_NULL : m_station - e.copy.start_station;
        return IteratorAccess::invert(e, point, guess, kSpiralTolerance, wanted);
    };
    qv5::detail::WalkResult walk = qv5::detail::walk_to_element(m_currentHorizontal, count, invert);
    m_currentHorizontal = walk.element;
    const ElementDeltas& d = walk.deltas;
    if (!d.inverted || d.station == GEO_NULL) {
        return;
    }
    station = last->copy.start_station + d.station;
    m_station = station;
    offset = d.offset;
    azimuth = d.azimuth;
    if (radius != nullptr) {
        *radius = d.radius;
    }
    if (RoadAccess::profile_count(*m_road) > 0) {
        double design = GEO_NULL;
        VerticalCurveDeltas(station, design, grade);
        if (design != GEO_NULL) {
            deltaElevation = point.Elevation() - design;
        }
    }
}

void CGeoRoadIterator::VerticalCurveDeltas(double station, double& elevation, double& grade) {
    elevation = GEO_NULL;
    grade = GEO_NULL;
    if (m_road == nullptr) {
        return;
    }
    const std::vector<ProfileRecordView>& profile = profile_of(*m_road, *m_state);
    if (profile.empty()) {
        return;
    }
    const qv5::detail::ProfileAt at =
        qv5::detail::profile_at(profile.data(), static_cast<int>(profile.size()), station);
    // Added even when no branch matched (the sum is then no longer GEO_NULL): hosts have always
    // seen it so.
    elevation = at.elevation + m_additionalOffset;
    grade = at.grade;
    m_currentVertical = at.index;
}

double CGeoRoadIterator::Elevation(CGeoPoint& point) {
    CGeoPoint copy(point);
    copy.SetGrid(point.Northing(), point.Easting(), 0.0);
    CGeoPoint surface;
    double along = GEO_NULL;
    double across = GEO_NULL;
    Intersection(copy, 0.0, surface, along, across);
    return surface.Elevation();
}

// ---- cross sections --------------------------------------------------------------------------

void CGeoRoadIterator::CalcTemplate(geodef_RoadSide side, double station, CGeoTemplate* result) {
    if (result == nullptr) {
        return;
    }
    result->Reset();
    if (m_road == nullptr) {
        return;
    }
    const std::vector<ApplicationView>& apps = applications_of(*m_road, *m_state);
    if (apps.empty()) {
        return;
    }
    const qv5::detail::TemplateChoice choice = qv5::detail::choose_templates(
        apps.data(), static_cast<int>(apps.size()), static_cast<int>(side), station);
    if (choice.previous < 0) {
        if (choice.first < 0) {
            return;
        }
        // Before the side's first application its template applies unchanged.
        if (const CGeoTemplate* t = application_template(*m_road, apps[choice.first])) {
            *result = *t;
        }
        return;
    }
    const CGeoTemplate* previous = application_template(*m_road, apps[choice.previous]);
    if (previous == nullptr) {
        return;
    }
    if (choice.next < 0) {
        *result = *previous;
        return;
    }
    const CGeoTemplate* next = application_template(*m_road, apps[choice.next]);
    if (next == nullptr) {
        return;
    }
    previous->Interpolate(next, choice.ratio, result);
}

void CGeoRoadIterator::Intersection(CGeoPoint& point, double direction, CGeoPoint& result,
                                    double& slopeAlong, double& slopeAcross) {
    result = point;
    result.SetGrid(GEO_NULL, GEO_NULL, GEO_NULL);
    slopeAlong = GEO_NULL;
    slopeAcross = GEO_NULL;
    const double north = point.Northing();
    const double east = point.Easting();
    const double elevation = point.Elevation();
    if (north == GEO_NULL || east == GEO_NULL || elevation == GEO_NULL) {
        return;
    }
    double station = GEO_NULL;
    double offset = GEO_NULL;
    double height = GEO_NULL;
    double azimuth = GEO_NULL;
    double grade = GEO_NULL;
    CenterlineDeltas(point, station, offset, height, azimuth, grade, nullptr);
    if (station == GEO_NULL || offset == GEO_NULL || height == GEO_NULL || azimuth == GEO_NULL ||
        grade == GEO_NULL) {
        return;
    }
    // An offset of exactly 0 is evaluated on the left (CheckPointOnRoadWay counts it right).
    const bool right = offset > 0.0;
    CalcTemplate(right ? geodef_RightSide : geodef_LeftSide, station, &m_state->work);
    double dv = GEO_NULL;
    double cross = GEO_NULL;
    m_state->work.TemplateDeltas(std::fabs(offset), height, dv, cross);
    if (dv == GEO_NULL || cross == GEO_NULL) {
        return;
    }
    const geo_nee s{north, east, elevation - dv};
    result.SetGrid(s);
    // The surface plane through S, a point 1 m ahead at the road grade and a point 1 m outward
    // at the cross slope.
    geo_nee a{};
    geo_nee b{};
    geo_grid_follow(s, azimuth, 1.0, grade, a);
    const double outward = geo_normalised_bearing(right ? azimuth + qv5::detail::kHalfPi
                                                        : azimuth - qv5::detail::kHalfPi);
    geo_grid_follow(s, outward, 1.0, cross, b);
    const double u[3] = {s.north - a.north, s.east - a.east, s.elev - a.elev};
    const double v[3] = {s.north - b.north, s.east - b.east, s.elev - b.elev};
    const double normal[3] = {u[1] * v[2] - u[2] * v[1], u[2] * v[0] - u[0] * v[2],
                              u[0] * v[1] - u[1] * v[0]};
    slopeAlong = qv5::detail::plane_slope(normal, direction);
    slopeAcross = qv5::detail::plane_slope(normal, direction + qv5::detail::kHalfPi);
}

int CGeoRoadIterator::CheckPointOnRoadWay(double station, double offset) {
    // A template of the iterator's own, blended into again and again without allocating.
    CGeoTemplate& templ = m_state->roadway;
    CalcTemplate(offset >= 0.0 ? geodef_RightSide : geodef_LeftSide, station, &templ);
    if (templ.NumberElements() == 0) {
        return 0;
    }
    // The shoulder itself is on the roadway.
    return templ.HOffsetShoulder() >= std::fabs(offset) ? 1 : 0;
}

int CGeoRoadIterator::FindTemplateTransitionPoint(CGeoLine& line, int breakCode,
                                                  CGeoPoint& result) {
    const geodef_RoadSide side = breakCode < 0 ? geodef_LeftSide : geodef_RightSide;
    CGeoLine segment(line);
    CGeoPoint p1 = segment.StartPt();
    CGeoPoint p2 = segment.EndPt();
    CGeoTemplate templ;
    for (int step = 0; step < kBreakMaxSteps; ++step) {
        double s1 = GEO_NULL, o1 = GEO_NULL, h1 = GEO_NULL, az = GEO_NULL, g = GEO_NULL;
        double s2 = GEO_NULL, o2 = GEO_NULL, h2 = GEO_NULL;
        CenterlineDeltas(p1, s1, o1, h1, az, g, nullptr);
        CenterlineDeltas(p2, s2, o2, h2, az, g, nullptr);
        double t = 0.0;
        double v = 0.0;
        if (breakCode != 0) {
            CalcTemplate(side, s1, &templ);
            if (!break_target(templ, breakCode, t, v)) {
                return 0;
            }
        }
        if (o1 == GEO_NULL || o2 == GEO_NULL) {
            return 0;
        }
        const double e1 = o1 - t;
        const double e2 = o2 - t;
        if (std::fabs(e1) < kBreakOffsetTolerance) {
            result.SetGrid(p1.Northing(), p1.Easting(), p1.Elevation() - h1 + v);
            return 1;
        }
        if (std::fabs(e2) < kBreakOffsetTolerance) {
            result.SetGrid(p2.Northing(), p2.Easting(), p2.Elevation() - h2 + v);
            return 1;
        }
        if ((e1 < 0.0 && e2 < 0.0) || (e1 >= 0.0 && e2 >= 0.0)) {
            return 0; // the line does not cross the break
        }
        const double q = segment.GridHDistance() * std::fabs(e1) / (std::fabs(e2) + std::fabs(e1));
        CGeoPoint trial;
        segment.GridHorzPoint(q, trial);
        double sq = GEO_NULL, oq = GEO_NULL, hq = GEO_NULL;
        CenterlineDeltas(trial, sq, oq, hq, az, g, nullptr);
        double eq = oq;
        if (breakCode != 0) {
            double tq = 0.0;
            double vq = 0.0;
            CalcTemplate(side, sq, &templ);
            if (!break_target(templ, breakCode, tq, vq)) {
                return 0;
            }
            eq = oq - tq;
        }
        CGeoPoint far_end = opposite_signs(eq, e1) ? p1 : p2;
        p1 = trial;
        p2 = far_end;
        segment.Set(p1, p2);
    }
    return 0;
}

void CGeoRoadIterator::Section(CGeoSection& section) {
    CGeoPoint start(section.Start());
    CGeoPoint end(section.End());
    CGeoLine line;
    line.Set(start, end);
    std::vector<qv5::detail::BreakPoint> breaks;
    const auto add_break = [&](CGeoPoint& p, int user, const unsigned short* name) {
        qv5::detail::BreakPoint b{line.GridStation(p), p.Elevation(), user, {}};
        for (const unsigned short* c = name; *c != 0; ++c) {
            b.name.push_back(*c);
        }
        b.name.push_back(0);
        breaks.push_back(std::move(b));
    };
    const unsigned short empty_name[] = {0};

    CGeoPoint found;
    if (FindTemplateTransitionPoint(line, 0, found) != 0) {
        add_break(found, 0, kCentrelineName);
    }
    // The whole section uses the templates of its start point's station.
    double s = GEO_NULL, o = GEO_NULL, h = GEO_NULL, az = GEO_NULL, g = GEO_NULL;
    CenterlineDeltas(start, s, o, h, az, g, nullptr);

    for (const int sign : {-1, 1}) {
        CGeoTemplate templ;
        CalcTemplate(sign < 0 ? geodef_LeftSide : geodef_RightSide, s, &templ);
        const int n = templ.NumberElements();
        for (int j = 0; j < n; ++j) {
            const geotemp_ElementType type = templ.NthElementType(j);
            if (type == geotemp_SideSlope) {
                continue;
            }
            if (type == geotemp_Feature) {
                // A feature names the break of the element before it, when that break is on
                // the line.
                if (!breaks.empty() && breaks.back().user == -1) {
                    CString name;
                    if (templ.GetFeatureAtIndex(j, name) != 0) {
                        const unsigned short* text = name.GetString();
                        breaks.back().name.clear();
                        for (const unsigned short* c = text; c != nullptr && *c != 0; ++c) {
                            breaks.back().name.push_back(*c);
                        }
                        breaks.back().name.push_back(0);
                    }
                    breaks.back().user = sign * (j + 1);
                }
                continue;
            }
            CGeoPoint at;
            if (FindTemplateTransitionPoint(line, sign * (j + 1), at) != 0) {
                add_break(at, -1, empty_name);
            }
        }
    }

    CGeoPoint start_point(section.Start());
    const double start_elevation = Elevation(start_point);
    section.Start().elev = start_elevation;
    const geosect_SegmentType first_type =
        start_elevation == GEO_NULL ? geosect_NoSurface : geosect_Surface;
    const double length = line.GridHDistance();
    bool first = true;
    for (const std::size_t i : qv5::detail::emission_order(breaks, length)) {
        const qv5::detail::BreakPoint& b = breaks[i];
        section.AddSegment(b.distance, b.elevation,
                           static_cast<unsigned long>(static_cast<std::uint32_t>(b.user)),
                           b.name.data(), first ? first_type : geosect_Surface);
        first = false;
    }
    CGeoPoint end_point(section.End());
    const double end_elevation = Elevation(end_point);
    if (end_elevation != GEO_NULL) {
        section.End().elev = end_elevation;
        section.AddSegment(length, end_elevation,
                           static_cast<unsigned long>(static_cast<std::uint32_t>(-1)), empty_name,
                           geosect_Surface);
    }
}
