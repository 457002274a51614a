// The road iterator's decisions on plain values. See iterator_math.h.
#include "road/iterator_math.h"

#include "core/constants.h"
#include "qv5/georoad.h"

#include <cmath>

namespace qv5::detail {

namespace {

/// Below this distance after the previous application a template is used unblended: a station
/// typed at an application's own station must give that template exactly, not a blend a hair
/// away from it.
inline constexpr double kBlendStartTolerance = 0.001;
/// Starting values of the searches for the previous and first application.
inline constexpr double kLowestStation = -1e308;
inline constexpr double kHighestStation = 1e308;

/// The curve formula shared by parabolas and circular curves: the polynomial in the distance
/// from the PVI, with the stored angle values used as they are.
void curve_formula(const ProfileRecordView& r, double station, ProfileAt& out) {
    const double d = station - r.pvi_station;
    out.elevation = r.curve_rate * d * d + r.mean_grade * d + r.curve_elevation_at_pvi;
    out.grade = 2.0 * r.curve_rate * d + r.mean_grade;
}

bool side_matches(int application_side, int side) {
    return application_side == geodef_BothSides || application_side == side;
}

} // namespace

ProfileAt profile_at(const ProfileRecordView* records, int count, double station) {
    ProfileAt out{GEO_NULL, GEO_NULL, count - 1};
    for (int i = 0; i < count; ++i) {
        const ProfileRecordView& r = records[i];
        out.index = i;
        if (station < r.curve_start_station) {
            if (i == 0) {
                // Before the profile the first grade is extended backwards.
                out.elevation = r.pvi_elevation + (station - r.pvi_station) * r.tan_grade_out;
                out.grade = r.grade_out;
            }
            return out;
        }
        if (station < r.pvi_station) {
            if (r.type == kProfilePoint) {
                // A grade break's curve starts at its PVI, so this branch is not reached by one;
                // the formula is kept as the profile has always had it.
                out.elevation = r.pvi_elevation + (r.pvi_station - station) * r.tan_grade_in;
                out.grade = r.grade_in;
            } else {
                curve_formula(r, station, out);
            }
            return out;
        }
        if (r.curve_end_station != GEO_NULL && station < r.curve_end_station) {
            curve_formula(r, station, out);
            return out;
        }
        if (i == count - 1) {
            if (station == r.pvi_station) {
                out.elevation = r.pvi_elevation;
                out.grade = r.grade_in;
            } else if (station > r.pvi_station) {
                out.elevation = r.pvi_elevation + (station - r.pvi_station) * r.tan_grade_in;
                out.grade = r.grade_in;
            }
            return out;
        }
        if (!(station > records[i + 1].curve_start_station)) {
            out.elevation =
                r.curve_end_elevation + (station - r.curve_end_station) * r.tan_grade_out;
            out.grade = r.grade_out;
            return out;
        }
    }
    return out;
}

TemplateChoice choose_templates(const ApplicationView* applications, int count, int side,
                                double station) {
    TemplateChoice choice{-1, -1, -1, 0.0};
    double previous_station = kLowestStation;
    double first_station = kHighestStation;
    for (int i = 0; i < count; ++i) {
        const ApplicationView& a = applications[i];
        if (!side_matches(a.side, side)) {
            continue;
        }
        // Strict comparisons: of two applications at one station the earlier in the list wins.
        if (!(a.station > station) && a.station > previous_station) {
            previous_station = a.station;
            choice.previous = i;
        }
        if (a.station < first_station) {
            first_station = a.station;
            choice.first = i;
        }
    }
    if (choice.previous < 0) {
        return choice;
    }
    double next_station = kHighestStation;
    for (int i = 0; i < count; ++i) {
        const ApplicationView& a = applications[i];
        if (side_matches(a.side, side) && a.station > station && a.station < next_station) {
            next_station = a.station;
            choice.next = i;
        }
    }
    if (choice.next < 0) {
        return choice;
    }
    const double d = station - previous_station;
    choice.ratio = d < kBlendStartTolerance ? 0.0 : d / (next_station - previous_station);
    return choice;
}

int transition_type(ElementKind before, ElementKind after) {
    // Rows: the element before the transition; columns: the element after it.
    static constexpr int kTable[3][3] = {
        {-1, georoad_TransLineArc, georoad_TransLineSpiral},
        {georoad_TransArcLine, georoad_TransArcArc, georoad_TransArcSpiral},
        {georoad_TransSpiralLine, georoad_TransSpiralArc, georoad_TransSpiralSpiral},
    };
    if (before == ElementKind::Other || after == ElementKind::Other) {
        return -1;
    }
    return kTable[static_cast<int>(before)][static_cast<int>(after)];
}

SnapResult snap_station(const SnapInput& in) {
    SnapResult out{0, false, GEO_NULL, false, georoad_TransNone};
    const double s = in.station;
    const double tol = in.tolerance;
    if (std::fabs(in.offset) > tol || s < in.road_start - tol || s > in.road_end + tol) {
        return out;
    }
    if (std::fabs(s - in.road_start) < tol) {
        return SnapResult{1, true, in.road_start, true, georoad_TransNone};
    }
    bool snapped = false;
    const double interval = in.interval;
    // An interval that is not a positive number has no multiples to snap to.
    if (interval != GEO_NULL && interval > 0.0 && std::isfinite(interval)) {
        const double q = s / interval;
        const double n = std::trunc(q);
        const double r = s - n * interval;
        if (r < tol) {
            out.station = n * interval;
            snapped = true;
        }
        if (interval - r < tol) {
            out.station = std::trunc(q + 1.0) * interval;
            snapped = true;
        }
        if (snapped) {
            out.station_written = true;
            out.type_written = true;
            out.type = georoad_TransStationInterval;
        }
    }
    bool transition = false;
    int type = -1;
    if (!in.last_element && s > in.next_start - tol) {
        out.station = in.next_start;
        type = transition_type(in.kind_k, in.after_k);
        transition = true;
    }
    if (s < in.element_start + tol) {
        // Also after the end test: on an element shorter than twice the tolerance the start wins.
        out.station = in.element_start;
        type = transition_type(in.before_k, in.kind_k);
        transition = true;
    }
    if (!transition) {
        out.result = snapped ? 1 : 0;
        return out;
    }
    out.station_written = true;
    if (type < 0) {
        // Between two lines there is no transition type: the station stays written, the type
        // keeps what the even-station test gave, and only an even station makes it a success.
        out.result = snapped ? 1 : 0;
        return out;
    }
    out.type_written = true;
    out.type = type;
    out.result = 1;
    return out;
}

void offer_candidate(ClosestOffset& best, int k, bool last, const OffsetCandidate& c,
                     const std::function<int(double, double)>& on_roadway) {
    if (!c.valid || c.offset == GEO_NULL || c.along == GEO_NULL) {
        return;
    }
    const double a = c.along;
    const double o = c.offset;
    if (a < 0.0) {
        // Before the road start the farther of the two distances is reported: the point is as
        // far from the road as its distance back along the tangent.
        if (k == 0) {
            best.station = c.start_station + a;
            best.offset = std::fabs(a) > std::fabs(o) ? std::fabs(a) : o;
            best.element = k;
        }
        return;
    }
    if (!(a > c.length)) {
        if (std::fabs(o) < std::fabs(best.offset)) {
            best.station = c.start_station + a;
            best.offset = o;
            best.element = k;
        }
        return;
    }
    const double beyond = a - c.length;
    if (last) {
        // Past the road end the nearer of the two distances is reported, the opposite of the
        // rule before the start; a point already on the roadway of an earlier element keeps it.
        if (std::fabs(o) < std::fabs(best.offset) && beyond < std::fabs(best.offset) &&
            on_roadway(best.station, best.offset) == 0) {
            best.station = c.start_station + a;
            best.offset = beyond > std::fabs(o) ? o : beyond;
            best.element = k;
        }
        return;
    }
    if (c.line_followed_by_line && std::fabs(o) < std::fabs(best.offset)) {
        // Outside a corner between two lines the corner itself is the closest centreline point.
        best.station = c.start_station + c.length;
        best.offset = c.corner_distance;
        best.element = k;
    }
}

double plane_slope(const double normal[3], double bearing) {
    if (normal[2] == 0.0) {
        return GEO_NULL;
    }
    const double rise =
        -(normal[0] * std::cos(bearing) + normal[1] * std::sin(bearing)) / normal[2];
    return std::atan(rise);
}

std::vector<std::size_t> emission_order(const std::vector<BreakPoint>& points, double length) {
    std::vector<std::size_t> order;
    double last = kLowestStation;
    for (;;) {
        bool found = false;
        std::size_t pick = 0;
        for (std::size_t i = 0; i < points.size(); ++i) {
            const double d = points[i].distance;
            if (d > last && (!found || d < points[pick].distance)) {
                pick = i;
                found = true;
            }
        }
        if (!found || points[pick].distance > length) {
            return order;
        }
        order.push_back(pick);
        last = points[pick].distance;
    }
}

} // namespace qv5::detail
