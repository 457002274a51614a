/// @file geosurvey.h
/// Elementary survey computations: bearings, distances, gradients, observations, polygon and
/// line tests, arcs, clothoid spirals, midpoints, areas and angle conversions.
///
/// All functions are pure and reentrant. Angles are radians, distances metres, bearings are
/// clockwise from grid north; see docs/conventions.md. Functions that document a `GEO_NULL`
/// rule test for the marker; the others compute with it as a plain number.
#ifndef QV5_GEOSURVEY_H
#define QV5_GEOSURVEY_H

#include "qv5/export.h"
#include "qv5/geodef.h"

/// Brings a bearing into [0, 2 pi) by repeated whole turns; `GEO_NULL` comes back unchanged.
/// An infinite bearing has no direction and gives `GEO_NULL`.
QV5_API double geo_normalised_bearing(double bearing);

/// The same as geo_normalised_bearing, under its second exported name.
QV5_API double _normalisedbearing(double bearing);

/// Turns a face-2 observation (zenith angle above pi) into face 1 in place.
/// @return the same observation.
QV5_API geo_hvd& geo_normalise_obs(geo_hvd& obs);

/// Crossing-number test of a point against a closed polygon.
/// @param count number of vertices; below 1 (or a null pointer) gives 0
/// @return 1 inside or exactly on a vertex, 0 outside
QV5_API int geo_point_in_poly(int count, const geo_nee* polygon, const geo_nee* point);

/// As geo_point_in_poly, but a point within `tolerance` metres of any edge counts as inside.
QV5_API int geo_point_in_poly_2(int count, const geo_nee* polygon, const geo_nee* point,
                                double tolerance);

/// 1 when `point` lies within `tolerance` of the segment start-end (plan only), else 0.
QV5_API int geo_point_on_line(const geo_nee& start, const geo_nee& end, const geo_nee& point,
                              double tolerance);

/// Radial reduction of an observation from an instrument station.
/// @param heightCorrection added to the reduced elevation (the instrument height)
/// @param[out] result all three fields `GEO_NULL` unless hz, vz and dist are all set
QV5_API void geo_reduce_obs(const geo_hvd& obs, const geo_nee& station, double heightCorrection,
                            geo_nee& result);

/// Inverse computation of the observation from one point (instrument height fromHeight) to
/// another (target height toHeight).
/// @param[out] obs left untouched when a coordinate or fromHeight is `GEO_NULL`
QV5_API void geo_calc_obs(const geo_nee& from, double fromHeight, const geo_nee& to,
                          double toHeight, geo_hvd& obs);

/// 1 when the points agree within 0.0005 in north, east and elevation (strictly), else 0.
QV5_API int nee_equal(const geo_nee& a, const geo_nee& b);

/// Plan distance between two points.
QV5_API double geo_horz_dist(const geo_nee& a, const geo_nee& b);

/// Signed height difference to.elev - from.elev.
QV5_API double geo_vert_dist(const geo_nee& from, const geo_nee& to);

/// sqrt(a.elev * b.elev + plan distance): the library's long-standing "slope distance" figure.
/// It is not the Pythagorean slope distance; CGeoLine::GridSlopeDistance gives that.
QV5_API double geo_slope_dist(const geo_nee& a, const geo_nee& b);

/// Grid bearing from one point to another; coincident points give 0.
QV5_API double geo_grid_bearing(const geo_nee& from, const geo_nee& to);

/// Point at a bearing and plan distance from a start; the elevation changes by
/// tan(gradientAngle) * distance, and is copied unchanged when gradientAngle is exactly 0.
QV5_API void geo_grid_follow(const geo_nee& start, double bearing, double distance,
                             double gradientAngle, geo_nee& result);

/// Angle of elevation from one point to another, in (-pi/2, pi/2); points closer than 0.0001 in
/// plan give +pi/2 when `to` is higher and -pi/2 otherwise (also when level).
QV5_API double geo_gradient(const geo_nee& from, const geo_nee& to);

/// Unsigned angle in [0, pi] between two bearings; `GEO_NULL` if either is.
QV5_API double geo_grid_divergence(double bearing1, double bearing2);

/// Unsigned angle in [0, pi] between the directions a1->a2 and b1->b2.
QV5_API double geo_grid_divergence(const geo_nee& a1, const geo_nee& a2, const geo_nee& b1,
                                   const geo_nee& b2);

/// Arc length of a central angle on a radius; `GEO_NULL` if either is.
QV5_API double geo_arc_angle_to_length(double angle, double radius);

/// Central angle of an arc length on a radius; `GEO_NULL` if either is, or if |radius| < 0.0005.
QV5_API double geo_arc_length_to_angle(double length, double radius);

/// Deflection of a clothoid's tangent at a distance from its straight end: l^2 / C radians,
/// computed as (l / C) * l. For C = 2 R L this is L / (2 R) at the full length L.
/// @param distance metres from the straight end; 0 and below give 0
/// @param spiralConstant C = 2 x radius x length of the spiral, square metres
/// @return the deflection; `GEO_NULL` when an argument is `GEO_NULL` or the result is not
///         finite (C = 0 with a positive distance)
QV5_API double geo_spiral_deflection(double distance, double spiralConstant);

/// Position of the point at a distance along a clothoid from its straight end, from the
/// clothoid series, in the frame of the straight.
/// @param distance metres from the straight end
/// @param spiralConstant C = 2 x radius x length, square metres
/// @param tolerance metres: each series stops after the first term smaller than this, and
///        has converged within it; at most nine correction terms are added
/// @param[out] x metres along the straight
/// @param[out] y metres across it, positive whichever way the spiral turns
/// Both outputs are `GEO_NULL` when a series does not converge (a spiral too long for its
/// radius), or an argument is `GEO_NULL`.
QV5_API void geo_spiral_deltas(double distance, double spiralConstant, double tolerance, double& x,
                               double& y);

/// Bearing that bisects the smaller angle between two bearings, measured from bearing1.
QV5_API double geo_bisected_bearing(double bearing1, double bearing2);

/// 1 when segment a1-a2 properly crosses segment b1-b2 in plan, else 0. A point exactly on
/// the other line counts as lying on its not-less side.
QV5_API int geo_lines_cross(const geo_nee& a1, const geo_nee& a2, const geo_nee& b1,
                            const geo_nee& b2);

/// Distance between two position vectors.
QV5_API double geo_vector_length(geo_vector& a, geo_vector& b);

/// Bearing of a vector, x as east and y as north.
QV5_API double geo_vector_direction(geo_vector& v);

/// Negates a vector in place. @return the same vector.
QV5_API geo_vector& geo_vector_reverse(geo_vector& v);

/// Component-wise sum of two vectors.
QV5_API void geo_vector_add(geo_vector& a, geo_vector& b, geo_vector& sum);

/// Midpoint of two points.
/// @param[out] mid `GEO_NULL` unless both plan positions are set; its elevation only when both
/// elevations are set
QV5_API void geo_grid_centroid(const geo_nee& a, const geo_nee& b, geo_nee& mid);

/// Plan area of a triangle, never negative.
QV5_API double geo_triangle_area(const geo_nee& a, const geo_nee& b, const geo_nee& c);

/// Degrees to radians.
QV5_API double _degtorad(double degrees);

/// Radians to degrees, minutes and seconds. The sign travels on the degrees only, so an angle
/// between -1 and 0 degrees comes back unsigned. Null pointers are skipped.
QV5_API void _radtodms(double radians, int* degrees, int* minutes, double* seconds);

/// Degrees, minutes and seconds to radians; only the sign of `degrees` decides the sign.
/// A null `radians` pointer is ignored.
QV5_API void _dmstorad(int degrees, int minutes, double seconds, double* radians);

#endif // QV5_GEOSURVEY_H
