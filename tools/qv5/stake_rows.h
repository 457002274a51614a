// One measured position staked against a road: reading a row of the stake input and evaluating
// it with a road iterator. The program's stake command streams rows through these.
#ifndef QV5_TOOLS_STAKE_ROWS_H
#define QV5_TOOLS_STAKE_ROWS_H

#include "qv5/geodef.h"
#include "qv5/georoad.h"
#include "qv5/georoaditer.h"
#include "qv5/geotrans.h"

#include <string>
#include <string_view>

namespace qv5::cli {

/// How the input rows give their positions.
enum class ShotCoordinates { wgs84, grid };

/// One measured position as read.
struct Shot {
    std::string name; ///< may be empty
    double a;         ///< latitude (radians) or north (metres)
    double b;         ///< longitude (radians) or east
    double c;         ///< ellipsoidal height or elevation
};

/// What a row of input is.
enum class RowKind { shot, skipped, bad };

/// Reads one line: "[name,]latitude,longitude,height" (angles as `parse_angle` reads them) or
/// "[name,]north,east,elevation". Blank lines, '#' comments and a header line whose first field
/// is "name" (or "latitude"/"north") are skipped.
/// @param[out] why the reason for a bad row
RowKind parse_shot_row(std::string_view line, ShotCoordinates coordinates, Shot& shot,
                       std::string& why);

/// Which part of the design surface lies under a shot.
enum class SurfaceKind { roadway, cut_slope, fill_slope, ditch };

/// A shot staked against the road. Every double is defined when `ok` is true, except
/// `significant_station` (`GEO_NULL` when no significant station is near).
struct StakeResult {
    bool ok = false;
    std::string why; ///< the reason when not ok
    geo_nee grid{GEO_NULL, GEO_NULL, GEO_NULL};
    double station = GEO_NULL;
    double offset = GEO_NULL; ///< positive right
    double design = GEO_NULL; ///< design elevation of the finished surface (or slope) there
    double cut = GEO_NULL;    ///< shot elevation minus design: positive cut, negative fill
    double centreline = GEO_NULL;
    double azimuth = GEO_NULL;
    double grade = GEO_NULL;
    double catch_offset = GEO_NULL; ///< on a side slope: where it meets the shot's height
    SurfaceKind surface = SurfaceKind::roadway;
    double significant_station = GEO_NULL;
    georoad_HorzTransitionType significant_type = georoad_TransNone;
    bool before_start = false;
    bool past_end = false;
};

/// Stakes one shot. The iterator must be bound to the road (`Set`); its position is forgotten for
/// every shot, so that the result depends on the shot alone (not on the shots before it, nor on
/// which thread evaluates it).
/// @param transformation the site calibration (used for WGS84 shots), or null for grid shots
/// @param snap_tolerance how near (metres) the shot's centreline point must be to a significant
///        station for it to be named
StakeResult stake_shot(CGeoRoad& road, CGeoRoadIterator& iterator,
                       CGeoTransformation* transformation, ShotCoordinates coordinates,
                       const Shot& shot, double snap_tolerance);

/// The name of a significant station's kind ("start", "even station", "spiral to arc", ...).
std::string transition_name(georoad_HorzTransitionType type);

/// The name of a surface kind ("road", "cut slope", "fill slope", "ditch").
std::string surface_name(SurfaceKind kind);

} // namespace qv5::cli

#endif
