/// @file georoad.h
/// The road: horizontal alignment, vertical profile, template library and template
/// applications.
#ifndef QV5_GEOROAD_H
#define QV5_GEOROAD_H

#include "qv5/export.h"
#include "qv5/geodef.h"
#include "qv5/geopoint.h"
#include "qv5/georoadfile.h"
#include "qv5/hostfw.h"

#include <cstddef>

class CGeoRoadIterator;
class CGeoTemplate;

namespace qv5::detail {
struct RoadStorage; // shared ownership of a road's arrays between copy-constructed roads
} // namespace qv5::detail

/// Kind of a horizontal element; the element object passed through `void *` is an object of
/// the named class.
enum georoad_HorzElementType : int {
    georoad_Line = 0,        ///< `CGeoLine`: length `GridHDistance`, azimuth `GridAzimuth`
    georoad_Arc = 1,         ///< `CGeoArc`: length `GridArcLength`, azimuth `EntryAzimuth`
    georoad_EntrySpiral = 2, ///< `CGeoEntrySpiral`: length `Length`, azimuth `EntryAzimuth`
    georoad_ExitSpiral = 3,  ///< `CGeoExitSpiral`: length `Length`, azimuth `EntryAzimuth`
    georoad_NoHorizontal = 6 ///< returned by NthHorizontalType past the last element
};

/// Why a road operation failed; written only on failure (callers initialise it).
enum georoad_Error : int {
    georoad_ReadError = 2,    ///< the road file cannot be opened or is not a road file
    georoad_WriteError = 3,   ///< the road file cannot be created
    georoad_MemoryError = 4,  ///< the profile array cannot be grown
    georoad_VerticalError = 5 ///< a profile element is invalid or overlaps its neighbours
};

/// The kind of point a nearest-point search snapped to ("spiral" means either spiral type).
enum georoad_HorzTransitionType : int {
    georoad_TransNone = 0,           ///< no snap, or snapped to the start station
    georoad_TransLineArc = 1,        ///< line followed by arc
    georoad_TransArcLine = 2,        ///< arc followed by line
    georoad_TransLineSpiral = 3,     ///< line followed by spiral
    georoad_TransSpiralLine = 4,     ///< spiral followed by line
    georoad_TransSpiralSpiral = 5,   ///< spiral followed by spiral
    georoad_TransArcArc = 6,         ///< arc followed by arc
    georoad_TransSpiralArc = 7,      ///< spiral followed by arc
    georoad_TransArcSpiral = 8,      ///< arc followed by spiral
    georoad_TransStationInterval = 9 ///< an even station (multiple of the station interval)
};

/// Kind of a profile element (point of vertical intersection, PVI).
enum georoad_VertElementType : int {
    georoad_VertPoint = 0,    ///< `CGeoVertPoint`: a grade break
    georoad_VertParabola = 1, ///< `CGeoVertSymParabola`: symmetric parabolic curve
    georoad_VertCircular = 2, ///< `CGeoVertCircular`: circular curve
    georoad_NoVertical = 3    ///< returned by NthVerticalType past the last PVI
};

/// One horizontal element of the alignment, in alignment order.
struct HorzElementRecord {
    georoad_HorzElementType type; ///< kind of `element`
    /// Owned, separately allocated element object of the class that `type` names; none for a
    /// type outside 0 to 3.
    void* element;
    double startStation; ///< station of the element's start, metres
    geo_nee startCoords; ///< grid coordinates of the element's start
    /// Azimuth the road arrives with at the element's start (for a line, its own azimuth).
    double startAzimuth;
};

/// One PVI of the profile, in station order, with the quantities derived from its neighbours.
/// Undefined values hold `GEO_NULL`; grades are angles (radians, arctangent of rise over run).
struct VertElementRecord {
    georoad_VertElementType type; ///< kind of `element`
    /// Owned element object: `CGeoVertPoint`, `CGeoVertSymParabola` or `CGeoVertCircular`.
    void* element;
    double station;        ///< PVI station
    double elevation;      ///< PVI elevation
    double curveStart;     ///< curve start station (a point: its station)
    double curveEnd;       ///< curve end station; undefined while a curve is the last PVI
    double curveStartElev; ///< grade-line elevation at the curve start
    double curveEndElev;   ///< grade-line elevation at the curve end (a point: elevation)
    double gradeIn;        ///< grade from the previous PVI; undefined for the first
    double gradeOut;       ///< grade to the next PVI; undefined for the last
    double curveRate;      ///< parabola: rate of grade change; circular: the radius
    double meanGrade;      ///< (grade in + grade out) / 2, curves only
    double curveElevAtPVI; ///< the curve's elevation at the PVI station, curves only
};

/// One template application: from `station` on, on `side`, use template `templateIndex`.
struct TemplateApplicationRecord {
    int templateIndex;    ///< position in the template array when added or last set
    double station;       ///< station from which the template applies
    geodef_RoadSide side; ///< side of the centreline covered
};

/// A road: a horizontal alignment of lines, arcs and transition spirals chained from a point of
/// beginning, a vertical profile of PVIs, a library of cross-section templates and the list of
/// their applications along the road, a name and a file path.
///
/// Stations and lengths are metres along the centreline, azimuths grid azimuths in radians.
/// Undefined doubles hold `GEO_NULL`. Every editing operation sets the modified flag.
///
/// Elements arrive through untyped pointers with their type; the road keeps its own heap copies
/// and releases them when they are replaced or deleted and on Reset.
///
/// Copying: the copy constructor shares the element, profile, application and template arrays
/// (and the element objects they own) with its source; assignment makes an independent road by
/// replaying the source's edits. The sharing is reference counted: whichever of the sharing
/// roads is destroyed or reset first only lets go of the arrays, and the last one releases them.
/// A road that edits its arrays while they are shared first takes its own copy of them, so an
/// edit made through one sharing road is never seen (nor freed) under the other.
class QV5_API CGeoRoad {
public:
    /// An empty road with an empty name and file path.
    CGeoRoad();
    /// Shares the source's arrays (see the class description); everything else is copied.
    CGeoRoad(const CGeoRoad& other);
    virtual ~CGeoRoad();
    /// Independent copy of the source: Reset, name and path, point of beginning, then every
    /// horizontal element, PVI, template and application added again in order; the modified
    /// flag ends 1.
    void operator=(CGeoRoad& source);

    /// Releases every element, PVI, template and application and returns the road to its
    /// constructed state; the name and the file path are kept.
    void Reset();

    /// The road's name.
    const CString& Name() const;
    /// The path of the file the road was last read from or written to.
    const CString& FilePath() const;
    /// Sets the name (the modified flag is not touched).
    void SetName(CString const& name);
    /// Empties the file path.
    void ResetFilePath();
    /// Stores the modified flag as given.
    void SetModifiedFlag(int modified);
    /// Nonzero when the road differs from what was last read or written.
    int IsModified() const;
    /// Spacing of even stations, metres; undefined after Reset.
    double StationInterval() const;
    /// Stores the station interval and sets the modified flag.
    void SetStationInterval(double interval);

    /// Sets the point of beginning. The interval is always stored. The station is taken (and
    /// the alignment restationed) only when the start station is undefined or differs by
    /// 0.0005 m or more; the point is taken (and the alignment moved to it) only when the start
    /// point has no plan coordinates or differs by 0.0005 m or more in north or east.
    void SetPOBInfo(double station, double north, double east, double interval);

    /// Station of the point of beginning.
    double StartStationHorizontal() const;
    /// Station at the end of the last element.
    double EndStationHorizontal() const;
    /// Entry azimuth of the first element; undefined on an empty road.
    double StartAzimuthHorizontal() const;
    /// Exit azimuth of the last element; undefined on an empty road.
    double EndAzimuthHorizontal() const;
    /// The point of beginning.
    CGeoPoint& StartPtHorizontal();
    /// The end of the last element.
    CGeoPoint& EndPtHorizontal();
    /// Number of horizontal elements.
    int NumberHorizontalElements() const;

    /// Start station of element n (the caller keeps 0 <= n < count; outside it `GEO_NULL`).
    double HorzElementStartStation(int n) const;
    /// Recorded start azimuth of element n (outside 0 <= n < count `GEO_NULL`).
    double HorzElementStartAzimuth(int n) const;
    /// Start coordinates of element n (outside 0 <= n < count all `GEO_NULL`).
    geo_nee const& HorzElementStartCoords(int n) const;
    /// End station of element n: undefined at or past the count (and for a negative n); the
    /// start station for a record of a type outside 0 to 3.
    double HorzElementEndStation(int n) const;
    /// Type of element n, or `georoad_NoHorizontal` at or past the count (and for a negative
    /// n).
    georoad_HorzElementType NthHorizontalType(int n) const;

    /// Appends a copy of the element, translated (never rotated) to the end of the road.
    /// @param type the class of `element`
    /// @param element an object of that class with an azimuth and a length
    /// @return 1, or 0 (nothing changed) for an unknown type, a null element, an element without
    ///         a finite azimuth and non-negative finite length (or positive radius), or when the
    ///         array cannot be grown
    int AddHorizontal(georoad_HorzElementType type, void* element);
    /// Inserts a copy of the element before element n (0 <= n < count: it cannot append) and
    /// rechains from n; `tangent` nonzero turns the elements to follow each other.
    int InsertHorizontal(int n, georoad_HorzElementType type, void* element, int tangent);
    /// Replaces element n (n < count) by a copy of the element, which keeps its own entry
    /// azimuth, then restations and rechains from n.
    int SetNthHorizontal(int n, georoad_HorzElementType type, void* element, int tangent);
    /// Removes element n (n < count). Deleting the last element leaves the road's end station,
    /// point and azimuth at the end of the deleted element.
    int DeleteNthHorizontal(int n, int tangent);
    /// Reads element n: 0 and nothing written when n >= count or `type` is not the stored type;
    /// otherwise its start station, start point (grid), start azimuth and a copy of the element
    /// into *element (an object of the class of `type`).
    int GetNthHorizontal(int n, georoad_HorzElementType type, double& station, CGeoPoint& start,
                         double& azimuth, void* element);
    /// Replaces this road's horizontal alignment by a deep copy of the source's. Returns 1.
    int CopyHorizontal(CGeoRoad const* source);
    /// Proposes the element a user would add next: station, start and azimuth are the road's
    /// end; type, radius and direction follow the last element (line -> entry spiral -> arc ->
    /// exit spiral -> line).
    /// @return 1 when a type was proposed, 0 when the last element is of no known type
    int NextLikelyHorizontal(georoad_HorzElementType& type, double& station, CGeoPoint& start,
                             double& azimuth, double& radius, geodef_Direction& direction);
    /// Proposes a line inserted before element n at that element's start.
    /// @return 1, or 0 (nothing written) unless 0 <= n < count
    int PreviousLikelyHorizontal(int n, georoad_HorzElementType& type, double& station,
                                 CGeoPoint& start, double& azimuth, double& radius,
                                 geodef_Direction& direction);

    /// Appends a PVI (a curve may not be first).
    /// @param length curve length, metres (ignored for a point)
    /// @param error receives `georoad_VerticalError` or `georoad_MemoryError` on failure only
    int AddVertical(georoad_VertElementType type, double station, double elevation, double length,
                    georoad_Error* error);
    /// Inserts a PVI before PVI n (0 <= n < count; 0 without an error code otherwise).
    int InsertVertical(int n, georoad_VertElementType type, double station, double elevation,
                       double length, georoad_Error* error);
    /// Replaces PVI n (n < count; 0 without an error code otherwise).
    int SetNthVertical(int n, georoad_VertElementType type, double station, double elevation,
                       double length, georoad_Error* error);
    /// Removes PVI n (n < count). Deleting the last PVI recomputes nothing.
    int DeleteNthVertical(int n);
    /// Reads PVI n: 0 and nothing written when n >= count or `type` is not the stored type;
    /// otherwise the six values after `elevation` are set undefined and filled by type.
    int GetNthVertical(int n, georoad_VertElementType type, double& station, double& elevation,
                       double& curveElevationAtPVI, double& gradeIn, double& gradeOut,
                       double& curveStart, double& curveEnd, double& length);
    /// Station of PVI n (the caller keeps 0 <= n < count; outside it `GEO_NULL`).
    double NthPVIStation(int n) const;
    /// Elevation of PVI n (outside 0 <= n < count `GEO_NULL`).
    double NthPVIElevation(int n) const;
    /// Type of PVI n, or `georoad_NoVertical` at or past the count (and for a negative n).
    georoad_VertElementType NthVerticalType(int n) const;
    /// Number of PVIs.
    int NumberVerticalElements() const;
    /// First station of the profile.
    double StartStationVertical() const;
    /// Last station of the profile (a circular curve as last PVI does not move it).
    double EndStationVertical() const;
    /// Proposes the next PVI's type; `value` is written (undefined) only on an empty profile.
    /// Returns 1.
    int NextLikelyVertical(georoad_VertElementType& type, double& value);
    /// Replaces this road's profile by a copy of the source's. Returns 1.
    int CopyVertical(CGeoRoad const* source);

    /// Appends a copy of the template (names are not checked). Returns 1, or 0 when the new
    /// library cannot be allocated (the library is then unchanged).
    int AddTemplate(CGeoTemplate* templ);
    /// Assigns template n to *out; 0 when n >= count.
    int GetNthTemplate(int n, CGeoTemplate* out);
    /// Assigns the template to slot n; applications of slot n now use it. 0 when n >= count.
    int SetNthTemplate(int n, CGeoTemplate* templ);
    /// Removes slot n; applications keep their stored indices. 0 when n >= count.
    int DeleteNthTemplate(int n);
    /// Index of the first template whose name equals `name` ignoring case, or -1.
    int TemplateIndex(CString name);
    /// Number of templates.
    int NumberTemplates() const;
    /// Appends an application of the first template named `name` (ignoring case) from
    /// `station` on `side`; 0 when no template has the name.
    int AddTemplateApplication(CString name, double station, geodef_RoadSide side);
    /// Reads application n; 0 when n >= count or its template index is past the library.
    int GetNthTemplateApplication(int n, CString& name, double& station, geodef_RoadSide& side);
    /// Overwrites application n; 0 when n >= count or no template has the name.
    int SetNthTemplateApplication(int n, CString name, double station, geodef_RoadSide side);
    /// Removes application n; 0 when n >= count.
    int DeleteNthTemplateApplication(int n);
    /// Number of applications.
    int NumberTemplateApplications() const;
    /// Number of fixed-point (curb) elements of the template of application 0; 0 without an
    /// application or when its template cannot be found.
    int NumberCurbFeatures();
    /// 1 when the road has at least one template application.
    int IsAUsefulSurface() const;

    /// Writes the road file, replacing any file at `path`; on success the road's file path is
    /// `path` and its modified flag is cleared.
    /// @param path UTF-16, zero-terminated
    /// @param[out] error `georoad_WriteError` when the file cannot be created; untouched
    ///             otherwise (a write that fails later deletes the file and sets no code)
    /// @return 1 on success, 0 on failure
    int Write(unsigned short const* path, georoad_Error* error);
    /// Rebuilds the road from a road file by Reset and replaying AddHorizontal, AddVertical,
    /// AddTemplate and AddTemplateApplication, so every rule of those operations applies.
    /// @param[out] error `georoad_ReadError` when the file cannot be opened or its header is not
    ///             a road file header; untouched otherwise. Any later failure resets the road.
    /// @return 1 on success (modified flag cleared), 0 on failure
    int Read(unsigned short const* path, georoad_Error* error);
    /// Read, also saying what was wrong with a file and at which byte.
    /// @param[out] report when not null, always written; `problem` is georoad_FileOk on success
    int Read(unsigned short const* path, georoad_Error* error, georoad_FileReport* report);
    /// Read from a road file's bytes held in memory (the file path is not changed).
    int ReadBytes(const unsigned char* bytes, std::size_t size, georoad_Error* error,
                  georoad_FileReport* report);
    // Nearest-point and station searches. They bind a CGeoRoadIterator (georoaditer.h), which in
    // turn starts from FindStationWithClosestOffset: the road and its iterator call each other,
    // in road/road_search.cpp and road/road_iterator.cpp only. Any number of threads may search
    // one road at once while nobody edits it.

    /// Snaps the station of a point near the centreline to a significant station: the road
    /// start, an element transition or an even station (transitions win over even stations).
    /// @param pt measured point (3-D grid)
    /// @param tolerance metres: largest offset, and largest distance to the significant station
    /// @param[out] station the significant station, written as described for the result
    /// @param[out] type what the station is
    /// @return 1 when station and type were set to a snapped station, else 0 (between two lines
    ///         the transition station is written although the result is 0 unless an even
    ///         station was also found)
    int FindClosestHorzPt(CGeoPoint& pt, double tolerance, double& station,
                          georoad_HorzTransitionType& type);
    /// FindClosestHorzPt with an iterator of the caller's instead of a fresh one: the same
    /// answer, without taking the road's elements again for every point. The iterator must be
    /// bound to this road (`Set`) and the road not edited since (as for
    /// CGeoRoadIterator::ForgetPosition, which the search calls first); its position is left
    /// where the search leaves it. An iterator bound to another road, or to none, is not used: a
    /// fresh one is.
    int FindClosestHorzPt(CGeoPoint& pt, double tolerance, double& station,
                          georoad_HorzTransitionType& type, CGeoRoadIterator& iterator);
    /// The centreline station whose perpendicular passes closest to a point, over every
    /// horizontal element.
    /// @param pt measured point (grid)
    /// @param[out] offset offset of the point at that station (1e100 when none was found)
    /// @param d tolerance handed to the spirals' station search, metres
    /// @param[out] element optional: index of the element found, -1 if none
    /// @return the station, or `GEO_NULL`
    double FindStationWithClosestOffset(CGeoPoint& pt, double& offset, double d, int* element);
    /// First station with a full three-dimensional road surface: the greater of the road's
    /// (horizontal or vertical) start and the first template application.
    /// @return metres, or `GEO_NULL` without template applications
    double Min3DStationing();

protected:
    /// Appends the sections (horizontal, vertical, templates, applications, each only when it
    /// has content) to the file being written, filling the next directory entries of `header`.
    /// @param file the file being written (the library's internal writer)
    /// @return 1, or 0 when a write failed
    int WriteElements(void* file, qv5def_FileHeader& header, unsigned short& nextDirectoryEntry);
    /// Follows every section of the directory and replays its records onto this road.
    /// @param file the file being read (the library's internal reader over its bytes)
    /// @return 1, or 0 at the first record that is truncated or that an add operation refuses
    int ReadElements(void* file, qv5def_FileHeader header);

    /// Stores start stations from element `first` on (from the record's own start station, or
    /// from the road start station when first is 0) and the road end station; sets the
    /// modified flag.
    void UpdateStationing(int first);
    /// Rechains elements `first` .. count-1 so that each starts at its predecessor's end.
    /// `tangent` 0 translates each element keeping its own entry azimuth; nonzero turns each
    /// onto its predecessor's exit azimuth. Sets the road's end values and the modified flag.
    void UpdateHorizontalElements(int first, int tangent);
    /// Recomputes the derived quantities of PVIs `first` .. count-1 and their predecessors.
    void UpdateVerticalElements(int first);
    /// Gives this road its own copy of arrays it shares with a copy-constructed road; every
    /// operation that changes the arrays in place calls it first. Returns 1, or 0 when the
    /// copy cannot be allocated (the road still shares).
    int OwnArrays();

    double m_startStation;             ///< station of the point of beginning
    double m_startAzimuth;             ///< entry azimuth of the first element
    CGeoPoint m_startPt;               ///< point of beginning
    double m_stationInterval;          ///< spacing of even stations
    HorzElementRecord* m_horzElements; ///< horizontal records (malloc'd, grown one at a time)
    int m_numHorzElements;             ///< number of horizontal records
    VertElementRecord* m_vertElements; ///< profile records (malloc'd, grown one at a time)
    int m_numVertElements;             ///< number of profile records
    TemplateApplicationRecord* m_templateApplications; ///< application records (malloc'd)
    int m_numTemplateApplications;                     ///< number of applications
    CGeoTemplate* m_templates;     ///< template library (new[], replaced on add and delete)
    int m_numTemplates;            ///< number of templates
    CString m_name;                ///< road name
    CString m_filePath;            ///< file last read or written
    double m_endStation;           ///< station at the end of the last element
    CGeoPoint m_endPt;             ///< end of the last element
    double m_endAzimuth;           ///< exit azimuth of the last element
    double m_startStationVertical; ///< first station of the profile
    double m_endStationVertical;   ///< last station of the profile
    int m_modified;                ///< nonzero when changed since last read or written

private:
    void ReleaseArrays();
    int GrowHorizontal();
    int ValidateVertical(int previous, int next, georoad_VertElementType type, double station,
                         double length) const;

    // Reference count shared with copy-constructed roads; null while the arrays are this
    // road's alone.
    mutable qv5::detail::RoadStorage* m_storage;
};

/// Reads only the road name from a road file's header.
/// @param path UTF-16, zero-terminated
/// @param[out] name receives the name with its terminating zero (at most 33 units)
/// @return 1 on success; 0 when the file cannot be opened or is not a road file
QV5_API int georoad_GetInternalName(unsigned short const* path, unsigned short* name);

#endif // QV5_GEOROAD_H
