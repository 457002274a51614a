/// @file geosection.h
/// Section profiles: the surface along a straight line between two grid points.
#ifndef QV5_GEOSECTION_H
#define QV5_GEOSECTION_H

#include "qv5/export.h"
#include "qv5/geodef.h"

#include <memory>

/// The kind of the segment that ends at a break point (a 32-bit value).
enum geosect_SegmentType : int {
    geosect_Surface = 0,  ///< elevations are interpolated linearly along the segment
    geosect_NoSurface = 1 ///< no surface is known along the segment
};

static_assert(sizeof(geosect_SegmentType) == 4, "segment types are 32-bit");

/// A vertical profile along the straight line from a start to an end grid point: an ordered
/// list of break points, each at a station (horizontal distance from the start, 0 to the
/// length), with an elevation, the caller's 32-bit value, a name of at most 32 characters and
/// the type of the segment that ends there.
///
/// Break points are expected in increasing station order; nothing checks it.
///
/// Copies: the copy constructor shares the break points with its source (no copy of the list
/// is made), while assignment makes its own copy. The shared list is held jointly and lives as
/// long as any section holding it, so either copy may be destroyed first. A section that adds a
/// break point or is `Set` while it shares its list first takes a copy of its own, so the other
/// section never sees the change.
class QV5_API CGeoSection {
public:
    /// A section with start and end all `GEO_NULL`, azimuth and length `GEO_NULL` and no break
    /// points; `Set` it before use.
    CGeoSection();
    /// A section from `start` to `end` (see `Set`).
    CGeoSection(geo_nee& start, geo_nee& end);
    /// Shares the break points of `other` (see the class notes).
    CGeoSection(const CGeoSection& other);
    /// Copies everything, the break points into a list of its own.
    CGeoSection& operator=(const CGeoSection& other);
    virtual ~CGeoSection();

    /// Stores the points, computes the azimuth (grid bearing start to end) and the horizontal
    /// length, and removes every break point.
    void Set(geo_nee& start, geo_nee& end);

    /// The start point; its elevation is the elevation at station 0.
    geo_nee& Start();
    /// The end point.
    geo_nee& End();
    /// Grid bearing from start to end, radians.
    double Azimuth() const;
    /// Horizontal distance from start to end, metres.
    double Length() const;
    /// Number of break points.
    int NumberOfSegments() const;

    /// Station of break point n; `GEO_NULL` when there is none.
    double NthStation(int n) const;
    /// Elevation of break point n; `GEO_NULL` when there is none.
    double NthElevation(int n) const;
    /// The caller's value of break point n; 0 when there is none.
    unsigned long NthUserDWORD(int n) const;
    /// Name of break point n (UTF-16, zero-terminated, valid while the section holds its break
    /// points); an empty name when there is none.
    const unsigned short* NthName(int n) const;
    /// Type of the segment ending at break point n; `geosect_NoSurface` when there is none.
    geosect_SegmentType NthSegmentType(int n) const;

    /// Appends a break point.
    /// @param station metres from the start
    /// @param elevation metres
    /// @param user the caller's value; its low 32 bits are kept
    /// @param name UTF-16, zero-terminated; at most the first 32 characters are kept (a null
    ///        name is stored empty)
    /// @param type the segment ending at this break point
    /// @return 1
    int AddSegment(double station, double elevation, unsigned long user, const unsigned short* name,
                   geosect_SegmentType type);

    /// Grid position of break point n with its elevation.
    /// @return 1; 0, leaving `point` untouched, when there is no break point n
    int GetNthSegmentPoint(int n, geo_nee& point) const;
    /// Grid position at a station along the section, with the elevation there (`GEO_NULL` where
    /// `Elevation` gives it).
    void StationPt(double station, geo_nee& point) const;
    /// Elevation at a station, interpolated along the segment that ends at or after it.
    /// `GEO_NULL` outside [0, length], beyond the last break point, with no break points, and
    /// along a segment without surface. At a break point: that break point's elevation.
    double Elevation(double station) const;
    /// Grade angle at a station, radians. Within 0.0001 after a break point (or at it) the
    /// grade is vertical: +pi/2 when the segment rises, -pi/2 otherwise. `GEO_NULL` where
    /// `Elevation` is.
    double Grade(double station) const;

private:
    struct Segments; // the break points; defined inside the library

    geo_nee m_start;
    geo_nee m_end;
    double m_azimuth;
    double m_length;
    std::shared_ptr<Segments> m_segments;
};

#endif // QV5_GEOSECTION_H
