#include "stake_rows.h"

#include "args.h"
#include "csv_text.h"
#include "dms.h"

#include "qv5/geopoint.h"
#include "qv5/geotemplate.h"

#include <array>
#include <cmath>
#include <string>

namespace qv5::cli {
namespace {

bool is_header(std::string_view field) {
    const std::string_view word = trim(field);
    for (const std::string_view name : {"name", "latitude", "lat", "north", "northing"}) {
        if (same_ignoring_case(word, name)) {
            return true;
        }
    }
    return false;
}

/// Most fields a shot row has: a name and three values.
constexpr std::size_t kMostShotFields = 4;

/// The comma-separated fields of a row, the first `kMostShotFields` of them kept; `count` is how
/// many the row has. Read in place: a million rows make no allocation here.
struct ShotFields {
    std::array<std::string_view, kMostShotFields> field;
    std::size_t count = 0;
};

ShotFields shot_fields(std::string_view line) {
    ShotFields fields;
    for_each_field(line, [&fields](std::string_view field) {
        if (fields.count < kMostShotFields) {
            fields.field[fields.count] = field;
        }
        ++fields.count;
    });
    return fields;
}

bool finite_result(const StakeResult& r) {
    for (const double v : {r.station, r.offset, r.design, r.cut, r.centreline, r.azimuth, r.grade,
                           r.grid.north, r.grid.east, r.grid.elev}) {
        if (v == GEO_NULL || !std::isfinite(v)) {
            return false;
        }
    }
    return true;
}

StakeResult failed(StakeResult r, std::string why) {
    r.ok = false;
    r.why = std::move(why);
    return r;
}

/// How far the station the road's own search finds for a foot on the centreline can lie from the
/// station the foot was placed at, metres: the spirals place and invert points to a millimetre;
/// fifty times that leaves room to spare.
constexpr double kFootStationMargin = 0.05;

/// Whether a foot on the centreline at `station` can lie within `tolerance` of a significant
/// station (an element's start, the road's start, an even station), so that FindClosestHorzPt
/// may name one. When this says no, the search would answer 0 and is not run: a row far from
/// every significant station (most rows) is spared the search's second pass over the road.
bool may_be_significant(const CGeoRoad& road, double station, double tolerance) {
    const double reach = tolerance + kFootStationMargin;
    const double interval = road.StationInterval();
    // Negative stations, and stations that cannot be measured against the even stations, are
    // left to the search itself.
    if (!std::isfinite(station) || station - kFootStationMargin <= 0.0 || interval == GEO_NULL ||
        !(interval > 0.0) || !std::isfinite(interval) || !std::isfinite(reach)) {
        return true;
    }
    const double past_even = station - std::trunc(station / interval) * interval;
    if (past_even < reach || interval - past_even < reach) {
        return true;
    }
    // Every element start, in a plain scan: the cold start that placed the shot has just walked
    // every element at far greater cost.
    const int count = road.NumberHorizontalElements();
    for (int k = 0; k < count; ++k) {
        const double start = road.HorzElementStartStation(k);
        if (!std::isfinite(start) || std::fabs(station - start) < reach) {
            return true;
        }
    }
    return std::fabs(station - road.StartStationHorizontal()) < reach;
}

} // namespace

RowKind parse_shot_row(std::string_view line, ShotCoordinates coordinates, Shot& shot,
                       std::string& why) {
    const std::string_view text = trim(line);
    if (text.empty() || text.front() == '#') {
        return RowKind::skipped;
    }
    const ShotFields row = shot_fields(text);
    const auto& fields = row.field;
    if (is_header(fields.front())) {
        return RowKind::skipped;
    }
    if (row.count != 3 && row.count != 4) {
        why = "expected 3 values (or a name and 3 values), found " + std::to_string(row.count) +
              " field(s)";
        return RowKind::bad;
    }
    shot.name.clear();
    shot.a = GEO_NULL;
    shot.b = GEO_NULL;
    shot.c = GEO_NULL;
    std::size_t first = 0;
    if (row.count == 4) {
        shot.name.assign(trim(fields[0]));
        first = 1;
    }
    const bool wgs84 = coordinates == ShotCoordinates::wgs84;
    const char* names[3] = {wgs84 ? "latitude" : "north", wgs84 ? "longitude" : "east",
                            wgs84 ? "height" : "elevation"};
    double values[3] = {0.0, 0.0, 0.0};
    for (std::size_t j = 0; j < 3; ++j) {
        const std::string_view field = trim(fields[first + j]);
        if (field.empty()) {
            why = std::string(names[j]) + " is missing";
            return RowKind::bad;
        }
        if (wgs84 && j < 2) {
            std::string reason;
            if (!parse_angle(field, j == 0, values[j], reason)) {
                why = std::string(names[j]) + " '" + std::string(field) + "' " + reason;
                return RowKind::bad;
            }
        } else if (!parse_number(field, values[j])) {
            why = std::string(names[j]) + " '" + std::string(field) + "' is not a number";
            return RowKind::bad;
        }
    }
    shot.a = values[0];
    shot.b = values[1];
    shot.c = values[2];
    return RowKind::shot;
}

StakeResult stake_shot(CGeoRoad& road, CGeoRoadIterator& iterator,
                       CGeoTransformation* transformation, ShotCoordinates coordinates,
                       const Shot& shot, double snap_tolerance) {
    StakeResult r;
    CGeoPoint point;
    if (coordinates == ShotCoordinates::wgs84) {
        if (transformation == nullptr) {
            return failed(r, "a WGS84 position needs a calibration");
        }
        point.SetTransformation(*transformation);
        point.SetWGS84(geo_llh{shot.a, shot.b, shot.c});
    } else {
        point.SetGrid(shot.a, shot.b, shot.c);
    }
    if (point.Ok3DGrid() == 0) {
        return failed(r, "the calibration gives no grid position for it");
    }
    r.grid = point.Grid();
    if (!std::isfinite(r.grid.north) || !std::isfinite(r.grid.east) ||
        !std::isfinite(r.grid.elev)) {
        return failed(r, "the calibration gives no finite grid position for it");
    }

    // A fresh start for every shot: the answer must not depend on the shots before it. The
    // iterator keeps the copies it has taken of the road, which nobody edits meanwhile.
    iterator.ForgetPosition();
    double height = GEO_NULL;
    iterator.CenterlineDeltas(point, r.station, r.offset, height, r.azimuth, r.grade, nullptr);
    if (r.station == GEO_NULL || r.offset == GEO_NULL || r.azimuth == GEO_NULL) {
        return failed(r, "cannot be placed on the road's alignment");
    }
    if (height == GEO_NULL || r.grade == GEO_NULL) {
        return failed(r, "the road has no profile at station " + std::to_string(r.station));
    }
    r.centreline = r.grid.elev - height;
    r.before_start = r.station < road.StartStationHorizontal();
    r.past_end = r.station > road.EndStationHorizontal();

    CGeoPoint surface;
    double along = GEO_NULL;
    double across = GEO_NULL;
    iterator.Intersection(point, r.azimuth, surface, along, across);
    if (surface.Elevation() != GEO_NULL) {
        r.design = surface.Elevation();
    } else {
        // Beyond the shoulder: the side slope the shot stands on, cut when the shot is above
        // the shoulder, fill otherwise.
        CGeoTemplate templ;
        iterator.CalcTemplate(r.offset > 0.0 ? geodef_RightSide : geodef_LeftSide, r.station,
                              &templ);
        if (templ.NumberElements() == 0) {
            return failed(r, "no template applies at this station and side");
        }
        const double outward = std::fabs(r.offset);
        if (templ.OnSideSlope(outward) == 0) {
            return failed(r, outward > templ.HOffsetShoulder()
                                 ? "beyond the template's shoulder, which has no side slope"
                                 : "faces a step in the template");
        }
        const int cut = height > templ.VOffsetShoulder() ? 1 : 0;
        int in_ditch = 0;
        double above = GEO_NULL;
        double slope_angle = GEO_NULL;
        double point_angle = GEO_NULL;
        templ.SlopeDeltas(outward, height, cut, in_ditch, above, slope_angle, point_angle,
                          r.catch_offset);
        if (in_ditch != 0) {
            r.surface = SurfaceKind::ditch;
            r.design = r.centreline + templ.VOffsetShoulder();
        } else if (above != GEO_NULL) {
            r.surface = cut != 0 ? SurfaceKind::cut_slope : SurfaceKind::fill_slope;
            r.design = r.grid.elev - above;
        } else {
            return failed(r, "the side slope cannot be evaluated here");
        }
    }
    r.cut = r.grid.elev - r.design;

    // The significant station near the shot's foot on the centreline.
    CGeoPoint foot;
    double azimuth = GEO_NULL;
    iterator.CenterlinePoint(r.station, 0.0, 0.0, foot, azimuth, nullptr, nullptr);
    if (foot.Ok2DGrid() != 0 && may_be_significant(road, r.station, snap_tolerance)) {
        foot.SetGrid(foot.Northing(), foot.Easting(), r.centreline);
        double station = GEO_NULL;
        georoad_HorzTransitionType type = georoad_TransNone;
        if (road.FindClosestHorzPt(foot, snap_tolerance, station, type, iterator) != 0 &&
            station != GEO_NULL && std::isfinite(station)) {
            r.significant_station = station;
            r.significant_type = type;
        }
    }
    if (!finite_result(r)) {
        return failed(r, "the road gives no finite answer here");
    }
    r.ok = true;
    return r;
}

std::string transition_name(georoad_HorzTransitionType type) {
    switch (type) {
    case georoad_TransNone:
        return "start";
    case georoad_TransLineArc:
        return "line to arc";
    case georoad_TransArcLine:
        return "arc to line";
    case georoad_TransLineSpiral:
        return "line to spiral";
    case georoad_TransSpiralLine:
        return "spiral to line";
    case georoad_TransSpiralSpiral:
        return "spiral to spiral";
    case georoad_TransArcArc:
        return "arc to arc";
    case georoad_TransSpiralArc:
        return "spiral to arc";
    case georoad_TransArcSpiral:
        return "arc to spiral";
    case georoad_TransStationInterval:
        return "even station";
    }
    return "?";
}

std::string surface_name(SurfaceKind kind) {
    switch (kind) {
    case SurfaceKind::roadway:
        return "road";
    case SurfaceKind::cut_slope:
        return "cut slope";
    case SurfaceKind::fill_slope:
        return "fill slope";
    case SurfaceKind::ditch:
        return "ditch";
    }
    return "?";
}

} // namespace qv5::cli
