/// @file geovert.h
/// The elements of a road's vertical profile as a user enters them: a grade break, a symmetric
/// parabolic curve and a circular curve, each given by its point of vertical intersection (PVI).
///
/// They hold the defining numbers only, stored as given without any check; grades, curve ends
/// and elevations along a curve are the profile's business. A default-constructed element holds
/// `GEO_NULL` in every field until it is set or assigned.
#ifndef QV5_GEOVERT_H
#define QV5_GEOVERT_H

#include "qv5/export.h"
#include "qv5/geodef.h"

/// A grade break without a curve (profile element type 0).
class QV5_API CGeoVertPoint {
public:
    CGeoVertPoint();
    CGeoVertPoint(const CGeoVertPoint& other);
    CGeoVertPoint& operator=(const CGeoVertPoint& other);
    virtual ~CGeoVertPoint();

    /// @param station station of the PVI, metres
    /// @param elevation elevation of the PVI, metres
    void Set(double station, double elevation);
    /// Station of the PVI, metres.
    double Station();
    /// Elevation of the PVI, metres.
    double Elevation();

private:
    double m_station;
    double m_elevation;
};

/// A symmetric parabolic vertical curve (profile element type 1), centred on its PVI.
class QV5_API CGeoVertSymParabola {
public:
    CGeoVertSymParabola();
    CGeoVertSymParabola(const CGeoVertSymParabola& other);
    CGeoVertSymParabola& operator=(const CGeoVertSymParabola& other);
    virtual ~CGeoVertSymParabola();

    /// @param stationPVI station of the PVI, metres
    /// @param elevationPVI elevation of the PVI, metres
    /// @param curveLength horizontal length of the curve, half before and half after the PVI,
    ///        metres; zero or negative values are stored as given
    void Set(double stationPVI, double elevationPVI, double curveLength);
    /// Station of the PVI, metres.
    double StationPVI();
    /// Elevation of the PVI, metres.
    double ElevationPVI();
    /// Horizontal length of the curve, metres.
    double CurveLength();

private:
    double m_stationPVI;
    double m_elevationPVI;
    double m_curveLength;
};

/// A circular vertical curve (profile element type 2), centred on its PVI.
class QV5_API CGeoVertCircular {
public:
    CGeoVertCircular();
    CGeoVertCircular(const CGeoVertCircular& other);
    CGeoVertCircular& operator=(const CGeoVertCircular& other);
    virtual ~CGeoVertCircular();

    /// @param stationPVI station of the PVI, metres
    /// @param elevationPVI elevation of the PVI, metres
    /// @param curveLength horizontal length of the curve, half before and half after the PVI,
    ///        metres; zero or negative values are stored as given
    void Set(double stationPVI, double elevationPVI, double curveLength);
    /// Station of the PVI, metres.
    double StationPVI();
    /// Elevation of the PVI, metres.
    double ElevationPVI();
    /// Horizontal length of the curve, metres.
    double CurveLength();

private:
    double m_stationPVI;
    double m_elevationPVI;
    double m_curveLength;
};

#endif // QV5_GEOVERT_H
