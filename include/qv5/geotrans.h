/// @file geotrans.h
/// The site calibration: WGS84 positions to site grid coordinates and back, fitted to control
/// points whose WGS84 position and site coordinates are both known.
#ifndef QV5_GEOTRANS_H
#define QV5_GEOTRANS_H

#include "qv5/export.h"
#include "qv5/geodef.h"
#include "qv5/geostereo.h"
#include "qv5/hostfw.h"

#include <cstdint>

/// Which solutions a calibration point takes part in (bits of geotrans_CalibrationPoint::flags).
enum geotrans_PointUse : std::uint32_t {
    geotrans_UseHorizontal = 1, ///< the horizontal similarity
    geotrans_UseVertical = 2    ///< the vertical inclined plane
};

/// Why a calibration change failed. Callers initialise their variable with geotrans_NoError;
/// the class writes only the other values, and only on failure.
enum geotrans_Error {
    geotrans_NoError = 0,       ///< never written by CGeoTransformation
    geotrans_OutOfMemory = 1,   ///< an allocation failed; the calibration was released
    geotrans_SolutionFailed = 2 ///< no horizontal convergence in 20 rounds, or no vertical plane
};

/// One control point of a calibration. Passed in and out by copy.
struct geotrans_CalibrationPoint {
    /// Point name, UTF-16, zero-terminated (a name that fills all 100 units is read as 100
    /// units long). Names identify the seed point.
    unsigned short name[100];
    geo_llh llh;         ///< WGS84 latitude, longitude (radians), ellipsoidal height (metres)
    geo_nee nee;         ///< known site north, east, elevation (metres)
    double hResidual;    ///< plan distance computed to known; `GEO_NULL` when not computed
    double vResidual;    ///< known elevation - computed (signed); `GEO_NULL` when not computed
    std::uint32_t flags; ///< geotrans_UseHorizontal | geotrans_UseVertical; other bits ignored
};

class CGeoEllipsoid;
class CGeoHorizontalAdjustment;
class CGeoVerticalAdjustment;

/// A site calibration and the conversions it provides.
///
/// The chain is: WGS84 -> stereographic projection on the WGS84 ellipsoid, centred on the mean
/// latitude and longitude of the horizontal points with scale 1 and those points' mean site
/// north and east as false origin -> horizontal similarity about that mean (shift north and
/// east, rotation, scale) -> vertical inclined plane (height shift, slopes north and east) ->
/// site north, east, elevation. Reverse runs vertical, horizontal, projection.
///
/// Every change of the point set recomputes the whole calibration:
/// - horizontal: with 0 or 1 horizontal points the default scale and rotation (1 and 0 unless
///   set) and no shift; with 2, the rotation and scale between the two; with 3 or more a
///   least-squares similarity (Gauss-Newton, at most 20 rounds, converged when the shifts
///   change by less than 1 mm, the rotation by less than 1 minute of arc and the scale by less
///   than 1e-5);
/// - vertical: with 0 vertical points nothing, with 1 a height shift, with 2 a plane tilted only
///   along the line between them, with 3 or more a least-squares plane.
///
/// Two horizontal points whose projected positions coincide have no defined scale: that
/// solution fails (geotrans_SolutionFailed) rather than produce an infinite scale.
///
/// Not calibrated after construction, Reset, or any change whose recomputation fails. A failed
/// horizontal solution leaves the projection in place without adjustments, so Forward then gives
/// plain projected coordinates. Memory failures are reported as geotrans_OutOfMemory, never
/// thrown.
///
/// One object is used by one thread at a time.
class QV5_API CGeoTransformation {
public:
    /// No points, not calibrated.
    CGeoTransformation();
    /// A calibration with the same points (recomputed) and the same default scale and rotation;
    /// as operator=, the seed point is not carried over.
    CGeoTransformation(const CGeoTransformation& other);
    virtual ~CGeoTransformation();

    /// Forgets every point and the solution; default scale 1, rotation 0, no seed point.
    void Reset();

    /// Appends a copy of a point and recomputes.
    /// @param[out] error written only on failure; may be null
    /// @return the calibrated flag (1 also when there is nothing to solve); 0 when the point
    /// could not be stored (geotrans_OutOfMemory), when the recomputation failed, or for a null
    /// point (error untouched)
    int AddPoint(geotrans_CalibrationPoint const* point, geotrans_Error* error);
    /// Overwrites point n and recomputes.
    /// @return 0 for an index out of range or a null point (error untouched); else as AddPoint
    int SetNthPoint(int n, geotrans_CalibrationPoint const* point, geotrans_Error* error);
    /// Removes point n (the later points move down one place) and recomputes. Removing the seed
    /// point, or the last point, forgets the seed point.
    /// @return 0 for an index out of range (error untouched); else as AddPoint
    int DeleteNthPoint(int n, geotrans_Error* error);
    /// Copies point n out; nothing happens for an index out of range or a null output.
    void GetNthPoint(int n, geotrans_CalibrationPoint* point);
    /// Point n in place, valid until the next change; null for an index out of range.
    geotrans_CalibrationPoint const* NthPoint(int n);
    /// Number of points.
    int NumberOfPoints();
    /// Number of points that take part in either solution.
    int NumberOfCalibratedPoints();
    /// 1 when both solutions succeeded for the current points.
    int IsCalibrated();

    /// Writes a WGS84 position into point n, recomputes, and makes point n the seed point.
    /// Nothing happens for an index out of range.
    void SetSeedPoint(int n, geo_llh const& llh);
    /// Finds the seed point by name.
    /// @param[out] point the seed point; when no point has the seed name, the last point
    /// examined (the seed point is then forgotten); may be null
    /// @return its index, or -1 when there is no seed point
    int GetSeedPoint(geotrans_CalibrationPoint* point);

    /// Stores the scale and rotation used when fewer than two horizontal points exist. With
    /// exactly one point taking part, the horizontal adjustment is replaced at once by one with
    /// the new scale and rotation, the old shifts, and the site coordinates of the first stored
    /// point as origin.
    /// @param rotation radians
    void SetDefaultScaleAndRotation(double scale, double rotation);

    /// Largest horizontal residual over the horizontal points (the first wins a tie).
    /// @param[out] index its point index; -1 when none exceeds 0.0 or not calibrated
    /// @param[out] value the residual; 0.0 when none exceeds it, `GEO_NULL` when not calibrated
    /// or without points
    void GetMaxHResidual(int* index, double* value);
    /// Largest absolute vertical residual over the vertical points, as GetMaxHResidual.
    void GetMaxVResidual(int* index, double* value);

    /// WGS84 to site: projection, then the horizontal and vertical adjustments that exist.
    /// Without a projection the output is left as it was.
    void Forward(geo_llh const& llh, geo_nee& nee);
    /// Site to WGS84: the vertical and horizontal adjustments backwards, then the inverse
    /// projection. Without a projection `llh` is left as it was.
    void Reverse(geo_nee const& nee, geo_llh& llh);

    /// The case of the projection; stereo_None when not calibrated.
    CGeoStereographic::stereo_Region ProjectionType();
    /// Projection origin: false north; `GEO_NULL` when not calibrated.
    double OriginNorth();
    /// Projection origin: false east; `GEO_NULL` when not calibrated.
    double OriginEast();
    /// Projection origin latitude, radians; `GEO_NULL` when not calibrated.
    double OriginLat();
    /// Projection origin longitude, radians; `GEO_NULL` when not calibrated.
    double OriginLon();
    /// Solved horizontal scale; `GEO_NULL` when not calibrated.
    double HorizontalScale();
    /// Solved horizontal rotation, radians; `GEO_NULL` when not calibrated.
    double HorizontalRotation();
    /// Solved height shift at the centroid, metres; `GEO_NULL` when not calibrated.
    double VerticalHeightAdjustment();
    /// Solved slope towards north, metres per metre; `GEO_NULL` when not calibrated.
    double VerticalSlopeNorth();
    /// Solved slope towards east, metres per metre; `GEO_NULL` when not calibrated.
    double VerticalSlopeEast();
    /// The stored default scale.
    double DefaultScale();
    /// The stored default rotation, radians.
    double DefaultRotation();
    /// Smallest known site easting of all points, as of the last recomputation (all four
    /// extents are 0.0 when no point has an easting).
    double MinEasting();
    /// Largest known site easting of all points.
    double MaxEasting();
    /// Smallest known site northing of all points.
    double MinNorthing();
    /// Largest known site northing of all points.
    double MaxNorthing();

    /// Resets, adds each of `other`'s points in order (recomputing each time), and only then
    /// copies the default scale and rotation; so a solution that relies on the defaults is
    /// computed with 1 and 0 until the next change. The seed point is not carried over.
    void operator=(CGeoTransformation& other);

protected:
    /// Recomputes the whole calibration from the points.
    /// @return the calibrated flag, 1 when there is nothing to solve, 0 with `error` written on
    /// failure
    int Recompute(geotrans_Error* error);
    /// Solves the horizontal similarity about `origin` (site coordinates of the centroid).
    int ComputeHorizontal(geo_nee const& origin, geotrans_Error* error);
    /// Solves the vertical plane about `origin`.
    int ComputeVertical(geo_nee const& origin, geotrans_Error* error);
    /// Mean latitude, longitude, site north and east of the horizontal points (heights
    /// `GEO_NULL`); without horizontal points the first vertical point's latitude and longitude
    /// and site (0, 0).
    void CalculateCentroid(geo_llh& position, geo_nee& site);
    /// Deletes the projection, ellipsoid, adjustments, work arrays and index lists.
    void ReleaseMemory();

private:
    void CopyFrom(const CGeoTransformation& other);
    void LargestResidual(std::uint32_t use, int* index, double* value) const;
    bool SeedNameIs(const geotrans_CalibrationPoint& point) const;

    CString m_seedName;
    int m_calibrated;
    geotrans_CalibrationPoint* m_points;
    int m_pointCount;
    int* m_horizontalIndex;
    int m_horizontalCount;
    int* m_verticalIndex;
    int m_verticalCount;
    int* m_calibratedIndex;
    int m_calibratedCount;
    CGeoStereographic* m_projection;
    CGeoEllipsoid* m_ellipsoid;
    CGeoHorizontalAdjustment* m_horizontal;
    CGeoVerticalAdjustment* m_vertical;
    geo_nee* m_grid; // projected (and adjusted) coordinates, relative to the centroid
    geo_nee* m_site; // known site coordinates, relative to the centroid
    double m_minEasting;
    double m_maxEasting;
    double m_minNorthing;
    double m_maxNorthing;
    double m_defaultScale;
    double m_defaultRotation;
};

namespace qv5 {

/// A converted point counts as far outside a calibration when it lies farther from the box
/// around the control points' site coordinates than this multiple of the box's diagonal...
inline constexpr double kCalibrationReachMultiple = 1.0;
/// ...or than this many metres, whichever is more: the reach of a calibration on one point (or
/// on points very close together), whose box has no size.
inline constexpr double kCalibrationReachMinimum = 1000.0;

/// How far site coordinates lie from a calibration's control points, for a host that warns when
/// a conversion extrapolates far beyond them (the similarity and the plane fitted to the points
/// are then carried a long way, and small errors in them grow with the distance).
///
/// The control points are those used by the calibration (either flag set) whose site north
/// and east are set; their box is the smallest north-east rectangle holding them.
/// @param calibration a calibrated transformation
/// @param site site coordinates: the result of Forward, or the input of Reverse
/// @param[out] distance metres from the box (0.0 inside it); `GEO_NULL` when the answer is -1,
///             or 1 for a distance too large for a double
/// @param[out] limit the distance beyond which the point counts as far outside:
///             max(kCalibrationReachMultiple x diagonal, kCalibrationReachMinimum); `GEO_NULL`
///             when the answer is -1
/// @return 1 when the point lies farther than `limit` from the box, 0 when it lies within it,
///         -1 when it cannot be told (not calibrated, no control point with site coordinates,
///         north or east `GEO_NULL` or not finite)
QV5_API int CalibrationReach(CGeoTransformation& calibration, const geo_nee& site, double& distance,
                             double& limit);

} // namespace qv5

#endif // QV5_GEOTRANS_H
