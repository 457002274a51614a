// Points with lazily derived grid coordinates.
#include "qv5/geopoint.h"

#include "core/lazy_cache.h"
#include "core/null_records.h"
#include "qv5/geo7ptrans.h"
#include "qv5/geosurvey.h"
#include "qv5/geotrans.h"

#include <cmath>

namespace {

using qv5::detail::ensure_group;
using qv5::detail::FailurePolicy;
using qv5::detail::forget;
using qv5::detail::is_known;
using qv5::detail::kNullGrid;
using qv5::detail::kNullObs;
using qv5::detail::kNullWgs84;
using qv5::detail::remember;

/// True when a calibration is attached and reports itself calibrated.
bool calibrated(CGeoTransformation* transformation) {
    return transformation != nullptr && transformation->IsCalibrated() != 0;
}

} // namespace

CGeoPoint::CGeoPoint()
    : m_grid(kNullGrid), m_wgs84(kNullWgs84), m_obs(kNullObs), m_flags(0), m_station(nullptr),
      m_hi(GEO_NULL), m_transformation(nullptr), m_given(0) {}

CGeoPoint::CGeoPoint(const geo_nee& grid) : CGeoPoint() {
    SetGrid(grid);
}

CGeoPoint::CGeoPoint(const CGeoPoint& other) = default;

CGeoPoint& CGeoPoint::operator=(const CGeoPoint& other) = default;

CGeoPoint::~CGeoPoint() = default;

void CGeoPoint::SetGrid(const geo_nee& grid) {
    m_grid = grid;
    forget(m_flags, kAllFlags);
    remember(m_flags, PT_GRID);
    m_given = PT_GRID;
}

void CGeoPoint::SetGrid(double north, double east, double elevation) {
    SetGrid(geo_nee{north, east, elevation});
}

void CGeoPoint::SetHVD(const geo_hvd& obs, CGeoPoint& station) {
    m_obs = obs;
    m_station = &station;
    forget(m_flags, kAllFlags);
    remember(m_flags, PT_OBS);
    m_given = PT_OBS;
}

void CGeoPoint::SetHVD(double hz, double vz, double dist, CGeoPoint& station) {
    SetHVD(geo_hvd{hz, vz, dist}, station);
}

void CGeoPoint::SetStation(const CGeoPoint& point, double hi) {
    *this = point;
    m_hi = hi;
    remember(m_flags, PT_STATION);
}

void CGeoPoint::SetWGS84(const geo_llh& wgs84) {
    m_wgs84 = wgs84;
    forget(m_flags, kAllFlags);
    remember(m_flags, PT_WGS84);
    m_given = PT_WGS84;
}

void CGeoPoint::SetTransformation(CGeoTransformation& transformation) {
    m_transformation = &transformation;
    // Derived values belong to the old calibration (or to none); the definition does not.
    forget(m_flags, kAllFlags & ~PT_STATION);
    remember(m_flags, m_given);
}

double CGeoPoint::HI() const {
    return m_hi;
}

std::uint64_t CGeoPoint::Flags() const {
    return m_flags;
}

double CGeoPoint::EnsureGrid(double geo_nee::*coordinate) {
    // The point counts as having a grid value from the moment the derivation starts, even if it
    // fails: a failed derivation is cached as GEO_NULL and is not retried until a Set clears the
    // flag (and a point observed from itself sees GEO_NULL instead of recursing).
    ensure_group<FailurePolicy::kRememberNull>(m_flags, PT_GRID, [this, coordinate] {
        m_grid = kNullGrid;
        if (is_known(m_flags, PT_WGS84) && calibrated(m_transformation)) {
            m_transformation->Forward(m_wgs84, m_grid);
            return true;
        }
        if (!is_known(m_flags, PT_OBS) || m_station == nullptr) {
            return false;
        }
        // Plan position needs a station with an instrument height; the elevation is reduced
        // even from a plain point, with whatever instrument height it holds. So the coordinate
        // asked first decides what is cached.
        if (coordinate != &geo_nee::elev && !is_known(m_station->m_flags, PT_STATION)) {
            return false;
        }
        geo_nee station_grid;
        m_station->GetGrid(station_grid);
        geo_reduce_obs(m_obs, station_grid, m_station->m_hi, m_grid);
        return true;
    });
    return m_grid.*coordinate;
}

double CGeoPoint::Northing() {
    return EnsureGrid(&geo_nee::north);
}

double CGeoPoint::Easting() {
    return EnsureGrid(&geo_nee::east);
}

double CGeoPoint::Elevation() {
    return EnsureGrid(&geo_nee::elev);
}

geo_nee& CGeoPoint::GetGrid(geo_nee& grid) {
    if (is_known(m_flags, PT_GRID)) {
        grid = m_grid;
        return grid;
    }
    const double north = Northing();
    const double east = Easting();
    const double elevation = Elevation();
    grid = geo_nee{north, east, elevation};
    return grid;
}

geo_nee& CGeoPoint::Grid() {
    geo_nee grid;
    GetGrid(grid);
    m_grid = grid;
    return m_grid;
}

double CGeoPoint::EnsureWgs84(double geo_llh::*coordinate) {
    ensure_group<FailurePolicy::kRememberNull>(m_flags, PT_WGS84, [this] {
        m_wgs84 = kNullWgs84;
        // Only a grid value the point already holds is converted: the grid of an observed point
        // is not derived on the way.
        if (!is_known(m_flags, PT_GRID) || !calibrated(m_transformation)) {
            return false;
        }
        m_transformation->Reverse(m_grid, m_wgs84);
        return true;
    });
    return m_wgs84.*coordinate;
}

double CGeoPoint::WGS84Lat() {
    return EnsureWgs84(&geo_llh::lat);
}

double CGeoPoint::WGS84Lon() {
    return EnsureWgs84(&geo_llh::lon);
}

double CGeoPoint::WGS84Hgt() {
    return EnsureWgs84(&geo_llh::height);
}

void CGeoPoint::GridTransform(CGeo7PTrans& transformation) {
    if (is_known(m_flags, PT_GRID)) {
        transformation.Transform(m_grid);
    }
}

int CGeoPoint::Ok2DGrid() {
    return Northing() != GEO_NULL && Easting() != GEO_NULL ? 1 : 0;
}

int CGeoPoint::Ok3DGrid() {
    return Ok2DGrid() == 1 && Elevation() != GEO_NULL ? 1 : 0;
}

int CGeoPoint::Is2DGridEqual(CGeoPoint& other, double tolerance) {
    if (Ok2DGrid() == 0 || other.Ok2DGrid() == 0) {
        return 0;
    }
    const double dn = Northing() - other.Northing();
    const double de = Easting() - other.Easting();
    return std::sqrt(dn * dn + de * de) < tolerance ? 1 : 0;
}

int CGeoPoint::Is3DGridEqual(CGeoPoint& other, double tolerance) {
    if (Ok3DGrid() == 0 || other.Ok3DGrid() == 0) {
        return 0;
    }
    const double dn = Northing() - other.Northing();
    const double de = Easting() - other.Easting();
    const double dz = Elevation() - other.Elevation();
    return std::sqrt(dn * dn + de * de + dz * dz) < tolerance ? 1 : 0;
}
