/// @file geopoint.h
/// Points with lazily derived coordinates, and point sets with extents.
#ifndef QV5_GEOPOINT_H
#define QV5_GEOPOINT_H

#include "qv5/export.h"
#include "qv5/geoarray.h"
#include "qv5/geodef.h"

#include <cstdint>

class CGeo7PTrans;
class CGeoTransformation;

namespace qv5::detail {
struct PointAccess; // the library's own fast path to a point's cached grid
} // namespace qv5::detail

/// A point known by its grid coordinates, by its WGS84 position, or by an observation from
/// another point that serves as instrument station; the missing representations are derived on
/// first request and cached.
///
/// Reading may therefore update the point. A derivation that fails is cached as `GEO_NULL` and
/// is not retried until a Set operation clears the cache. The station point and the attached
/// transformation are referred to, not owned, and must outlive every request made of this
/// point.
///
/// Grid and WGS84 are converted through an attached site calibration (SetTransformation) that
/// reports itself calibrated. A WGS84 position gives the grid on request; a grid gives the WGS84
/// position on request. An observed point gets a WGS84 position only once its grid has been
/// derived: asking for WGS84 first does not derive the grid on the way. The WGS84 value is then
/// cached as `GEO_NULL`, and since a WGS84 value takes precedence over an observation in the
/// grid derivation, with a calibrated transformation attached the grid then comes out
/// `GEO_NULL` as well. Ask an observed point for its grid first.
///
/// Grid derivation of an observed point fills north, east and elevation together, whichever is
/// asked first. North and east need a station that was given an instrument height (SetStation);
/// the elevation does not, so the first coordinate asked of a point observed from a plain point
/// decides what is cached: north or east first caches all three as `GEO_NULL`, the elevation
/// first caches the reduction (with the station's instrument height as it stands).
class QV5_API CGeoPoint {
public:
    /// Bits of the cache state.
    enum : std::uint64_t {
        PT_GRID = 1,    ///< the grid value is current (given or derived; may be GEO_NULL)
        PT_WGS84 = 8,   ///< the WGS84 value is current (given or derived)
        PT_OBS = 16,    ///< the point is defined by an observation from its station
        PT_STATION = 32 ///< the point is an instrument station: HI() is valid
    };

    /// A point that knows nothing yet.
    CGeoPoint();
    /// A point with the given grid coordinates.
    CGeoPoint(const geo_nee& grid);
    /// Copies every field; the station link is shared, not copied.
    CGeoPoint(const CGeoPoint& other);
    CGeoPoint& operator=(const CGeoPoint& other);
    virtual ~CGeoPoint();

    /// Sets the grid coordinates. Every other cached value is forgotten and the point stops
    /// being an instrument station.
    void SetGrid(const geo_nee& grid);
    void SetGrid(double north, double east, double elevation);
    /// Defines the point by an observation from a station point (referred to, not copied).
    void SetHVD(const geo_hvd& obs, CGeoPoint& station);
    void SetHVD(double hz, double vz, double dist, CGeoPoint& station);
    /// Makes this point a copy of `point` that is an instrument station with height `hi`.
    void SetStation(const CGeoPoint& point, double hi);
    /// Sets the WGS84 position (latitude and longitude in radians, ellipsoidal height in
    /// metres). Every other cached value is forgotten and the point stops being an instrument
    /// station.
    void SetWGS84(const geo_llh& wgs84);
    /// Attaches the site calibration used between grid and WGS84 (referred to, not copied).
    /// Every derived value is forgotten, so the next request derives afresh through the new
    /// calibration; what the point was given (its grid, its WGS84 position or its observation,
    /// and its role as instrument station) is kept. A point whose grid could not be derived
    /// before a calibration was attached therefore gets it on the next request.
    void SetTransformation(CGeoTransformation& transformation);

    /// Instrument height above the point when it serves as a station; `GEO_NULL` by default.
    double HI() const;

    /// Grid northing, derived if needed; `GEO_NULL` when it cannot be derived.
    double Northing();
    /// Grid easting, derived if needed; `GEO_NULL` when it cannot be derived.
    double Easting();
    /// Elevation, derived if needed; `GEO_NULL` when it cannot be derived.
    double Elevation();
    /// Fills `grid` with the grid value (deriving it if needed). @return `grid`
    geo_nee& GetGrid(geo_nee& grid);
    /// Brings the point's own grid value up to date and returns it.
    geo_nee& Grid();

    /// WGS84 latitude, radians, derived if needed; `GEO_NULL` when it cannot be derived.
    double WGS84Lat();
    /// WGS84 longitude, radians, derived if needed; `GEO_NULL` when it cannot be derived.
    double WGS84Lon();
    /// WGS84 ellipsoidal height, metres, derived if needed; `GEO_NULL` when it cannot be
    /// derived.
    double WGS84Hgt();

    /// Applies a seven-parameter transformation to the grid value in place, when the point
    /// holds one (nothing happens otherwise; nothing is derived). The cache flags are unchanged,
    /// so a cached WGS84 value still describes the untransformed grid.
    void GridTransform(CGeo7PTrans& transformation);

    /// 1 when north and east are both set (deriving first), else 0.
    int Ok2DGrid();
    /// 1 when north, east and elevation are all set (deriving first), else 0.
    int Ok3DGrid();
    /// 1 when both points have plan coordinates and lie strictly closer than `tolerance` in plan.
    int Is2DGridEqual(CGeoPoint& other, double tolerance);
    /// 1 when both points have 3D coordinates and lie strictly closer than `tolerance` in space.
    int Is3DGridEqual(CGeoPoint& other, double tolerance);

    /// Cache and definition state: a combination of the PT_ bits.
    std::uint64_t Flags() const;

private:
    friend struct qv5::detail::PointAccess;

    /// Every bit of m_flags: what a Set forgets before it remembers what it gives.
    static constexpr std::uint64_t kAllFlags = PT_GRID | PT_WGS84 | PT_OBS | PT_STATION;

    double EnsureGrid(double geo_nee::*coordinate);
    double EnsureWgs84(double geo_llh::*coordinate);

    geo_nee m_grid;
    geo_llh m_wgs84;
    geo_hvd m_obs;
    std::uint64_t m_flags;
    CGeoPoint* m_station;
    double m_hi;
    CGeoTransformation* m_transformation;
    std::uint64_t m_given; // the PT_ bit of what the last Set gave: PT_GRID, PT_WGS84 or PT_OBS
};

/// A growable array of points held by value that keeps the bounding extents of what it holds.
///
/// The extents start at +1e108 (minimums) and -1e108 (maximums), which mark an empty set.
/// `MaxElevation` is tracked from the eastings of the points, not their elevations: hosts read
/// it that way, so it is kept.
class QV5_API CGeoPointArray : public qv5::GrowableArray<CGeoPoint> {
public:
    CGeoPointArray();
    CGeoPointArray(const CGeoPointArray& other);
    CGeoPointArray& operator=(const CGeoPointArray& other);
    ~CGeoPointArray() override;

    /// Widens the extents by the point (deriving its grid) and appends a copy.
    /// @return the new element's index, or -1 if the array could not grow
    int Add(CGeoPoint& point);
    /// Removes `count` points from `index` and rebuilds the extents.
    void RemoveAt(int index, int count = 1);
    /// Removes every point and resets the extents.
    void RemoveAll();

    double MinEasting() const;
    double MinNorthing() const;
    double MinElevation() const;
    double MaxEasting() const;
    double MaxNorthing() const;
    double MaxElevation() const;

    /// Sets `result` to the centre of the bounding box of the points that have 3D coordinates
    /// in elevation and of those with plan coordinates in plan; all `GEO_NULL` when there is no
    /// point with an elevation. The stored extents are not used. @return `result`
    CGeoPoint& Centroid(CGeoPoint& result);

protected:
    /// Rebuilds the six extents from every element in index order.
    void RecomputeExtents();

private:
    void ResetExtents();
    void WidenExtents(CGeoPoint& point);

    double m_minEasting;
    double m_minNorthing;
    double m_minElevation;
    double m_maxEasting;
    double m_maxNorthing;
    double m_maxElevation;
};

#endif // QV5_GEOPOINT_H
