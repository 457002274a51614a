/// @file geodef.h
/// Coordinate records, the shared enumerations and the no-value marker.
///
/// The conventions that hold across the whole library (units, angles, azimuths, offsets and
/// `GEO_NULL`) are described once in docs/conventions.md.
#ifndef QV5_GEODEF_H
#define QV5_GEODEF_H

#include <cstdint>
#if __cplusplus >= 202002L
#include <bit>
#endif

/// The no-value marker: a double that holds exactly 2e-308 means "not set".
/// Outputs that cannot be computed receive it, inputs holding it are passed through, and it is
/// tested with exact equality (`value == GEO_NULL`).
inline constexpr double GEO_NULL = 2e-308;
#if defined(__cpp_lib_bit_cast)
static_assert(std::bit_cast<std::uint64_t>(GEO_NULL) == 0x000E61ACF033D1A4ULL,
              "GEO_NULL must have its fixed bit pattern");
#endif

/// A grid position: grid northing, grid easting, elevation (metres).
struct geo_nee {
    double north;
    double east;
    double elev;
};

/// A geodetic position: latitude and longitude in radians, ellipsoidal height in metres.
struct geo_llh {
    double lat;
    double lon;
    double height;
};

/// One instrument observation: horizontal angle (a bearing), zenith angle, slope distance.
struct geo_hvd {
    double hz;   ///< horizontal angle, radians clockwise from grid north
    double vz;   ///< zenith angle, radians; face 1 in (0, pi], face 2 in (pi, 2 pi)
    double dist; ///< slope distance, metres
};

/// A cartesian vector; where a direction is taken from it, x plays east and y north.
struct geo_vector {
    double x;
    double y;
    double z;
};

static_assert(sizeof(geo_nee) == 3 * sizeof(double));
static_assert(sizeof(geo_llh) == 3 * sizeof(double));
static_assert(sizeof(geo_hvd) == 3 * sizeof(double));
static_assert(sizeof(geo_vector) == 3 * sizeof(double));

/// Sense of a curved element as seen in the direction of travel.
enum geodef_Direction : int {
    geodef_Left = 0, ///< turns anticlockwise; the centre lies to the left
    geodef_Right = 1 ///< turns clockwise; the centre lies to the right
};

/// Which side of a road centreline a template application serves.
enum geodef_RoadSide : int {
    geodef_LeftSide = 1,  ///< left of the centreline
    geodef_RightSide = 2, ///< right of the centreline
    geodef_BothSides = 3  ///< both sides; matches a request for either side
};

#endif // QV5_GEODEF_H
