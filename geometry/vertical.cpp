// The vertical profile elements: value holders for what the user entered at each PVI.
#include "qv5/geovert.h"

CGeoVertPoint::CGeoVertPoint() : m_station(GEO_NULL), m_elevation(GEO_NULL) {}

CGeoVertPoint::CGeoVertPoint(const CGeoVertPoint& other) = default;

CGeoVertPoint& CGeoVertPoint::operator=(const CGeoVertPoint& other) = default;

CGeoVertPoint::~CGeoVertPoint() = default;

void CGeoVertPoint::Set(double station, double elevation) {
    m_station = station;
    m_elevation = elevation;
}

double CGeoVertPoint::Station() {
    return m_station;
}

double CGeoVertPoint::Elevation() {
    return m_elevation;
}

CGeoVertSymParabola::CGeoVertSymParabola()
    : m_stationPVI(GEO_NULL), m_elevationPVI(GEO_NULL), m_curveLength(GEO_NULL) {}

CGeoVertSymParabola::CGeoVertSymParabola(const CGeoVertSymParabola& other) = default;

CGeoVertSymParabola& CGeoVertSymParabola::operator=(const CGeoVertSymParabola& other) = default;

CGeoVertSymParabola::~CGeoVertSymParabola() = default;

void CGeoVertSymParabola::Set(double stationPVI, double elevationPVI, double curveLength) {
    m_stationPVI = stationPVI;
    m_elevationPVI = elevationPVI;
    m_curveLength = curveLength;
}

double CGeoVertSymParabola::StationPVI() {
    return m_stationPVI;
}

double CGeoVertSymParabola::ElevationPVI() {
    return m_elevationPVI;
}

double CGeoVertSymParabola::CurveLength() {
    return m_curveLength;
}

CGeoVertCircular::CGeoVertCircular()
    : m_stationPVI(GEO_NULL), m_elevationPVI(GEO_NULL), m_curveLength(GEO_NULL) {}

CGeoVertCircular::CGeoVertCircular(const CGeoVertCircular& other) = default;

CGeoVertCircular& CGeoVertCircular::operator=(const CGeoVertCircular& other) = default;

CGeoVertCircular::~CGeoVertCircular() = default;

void CGeoVertCircular::Set(double stationPVI, double elevationPVI, double curveLength) {
    m_stationPVI = stationPVI;
    m_elevationPVI = elevationPVI;
    m_curveLength = curveLength;
}

double CGeoVertCircular::StationPVI() {
    return m_stationPVI;
}

double CGeoVertCircular::ElevationPVI() {
    return m_elevationPVI;
}

double CGeoVertCircular::CurveLength() {
    return m_curveLength;
}
