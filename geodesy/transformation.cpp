// CGeoTransformation: the site calibration and its WGS84 <-> site chain.
#include "qv5/geotrans.h"

#include "core/null_records.h"
#include "geodesy/calibration_solve.h"
#include "geodesy/heap.h"
#include "geodesy/wgs84.h"
#include "qv5/geoadjust.h"
#include "qv5/geoellipsoid.h"
#include "qv5/geosurvey.h"

#include <cmath>
#include <cstring>
#include <limits>
#include <new>

using namespace qv5::detail;

namespace {

/// Extents before any point widens them: they mark "no coordinate seen".
constexpr double kEmptyMinimum = 1e108;
constexpr double kEmptyMaximum = -1e108;
/// Scale of the calibration's projection at its centre.
constexpr double kProjectionScale = 1.0;
/// Units of a calibration point's name.
constexpr int kNameUnits = 100;
/// Both solution flags of a calibration point.
constexpr std::uint32_t kUseEither = geotrans_UseHorizontal | geotrans_UseVertical;

void report(geotrans_Error* error, geotrans_Error value) {
    if (error != nullptr) {
        *error = value;
    }
}

bool uses(const geotrans_CalibrationPoint& point, std::uint32_t bits) {
    return (point.flags & bits) != 0;
}

void shift_plan(geo_nee& p, double north, double east) {
    p.north = p.north + north;
    p.east = p.east + east;
}

} // namespace

CGeoTransformation::CGeoTransformation()
    : m_calibrated(0), m_points(nullptr), m_pointCount(0), m_horizontalIndex(nullptr),
      m_horizontalCount(0), m_verticalIndex(nullptr), m_verticalCount(0),
      m_calibratedIndex(nullptr), m_calibratedCount(0), m_projection(nullptr), m_ellipsoid(nullptr),
      m_horizontal(nullptr), m_vertical(nullptr), m_grid(nullptr), m_site(nullptr),
      m_minEasting(0.0), m_maxEasting(0.0), m_minNorthing(0.0), m_maxNorthing(0.0),
      m_defaultScale(1.0), m_defaultRotation(0.0) {
    Reset();
}

CGeoTransformation::CGeoTransformation(const CGeoTransformation& other) : CGeoTransformation() {
    CopyFrom(other);
}

CGeoTransformation::~CGeoTransformation() {
    ReleaseMemory();
    heap_release(m_points);
    m_points = nullptr;
}

void CGeoTransformation::Reset() {
    ReleaseMemory();
    heap_release(m_points);
    m_points = nullptr;
    m_pointCount = 0;
    m_defaultScale = 1.0;
    m_defaultRotation = 0.0;
    m_seedName.Empty();
    m_horizontalCount = 0;
    m_verticalCount = 0;
    m_calibratedCount = 0;
    m_calibrated = 0;
    m_minEasting = 0.0;
    m_maxEasting = 0.0;
    m_minNorthing = 0.0;
    m_maxNorthing = 0.0;
}

void CGeoTransformation::ReleaseMemory() {
    heap_destroy(m_projection);
    heap_destroy(m_ellipsoid);
    heap_destroy(m_horizontal);
    heap_destroy(m_vertical);
    heap_release(m_grid);
    m_grid = nullptr;
    heap_release(m_site);
    m_site = nullptr;
    heap_release(m_horizontalIndex);
    m_horizontalIndex = nullptr;
    heap_release(m_verticalIndex);
    m_verticalIndex = nullptr;
    heap_release(m_calibratedIndex);
    m_calibratedIndex = nullptr;
    m_horizontalCount = 0;
    m_verticalCount = 0;
    m_calibratedCount = 0;
}

int CGeoTransformation::AddPoint(geotrans_CalibrationPoint const* point, geotrans_Error* error) {
    if (point == nullptr) {
        return 0;
    }
    // Copied first: the point may live in the block that is about to move.
    const geotrans_CalibrationPoint copy = *point;
    if (m_pointCount == std::numeric_limits<int>::max()) {
        report(error, geotrans_OutOfMemory);
        return 0;
    }
    const std::size_t count = static_cast<std::size_t>(m_pointCount) + 1;
    if (count > std::numeric_limits<std::size_t>::max() / sizeof(geotrans_CalibrationPoint)) {
        report(error, geotrans_OutOfMemory);
        return 0;
    }
    void* grown = heap_reallocate(m_points, count * sizeof(geotrans_CalibrationPoint));
    if (grown == nullptr) {
        report(error, geotrans_OutOfMemory);
        return 0;
    }
    m_points = static_cast<geotrans_CalibrationPoint*>(grown);
    m_points[m_pointCount] = copy;
    ++m_pointCount;
    return Recompute(error);
}

int CGeoTransformation::SetNthPoint(int n, geotrans_CalibrationPoint const* point,
                                    geotrans_Error* error) {
    if (n < 0 || n >= m_pointCount || point == nullptr) {
        return 0;
    }
    m_points[n] = *point;
    return Recompute(error);
}

int CGeoTransformation::DeleteNthPoint(int n, geotrans_Error* error) {
    if (n < 0 || n >= m_pointCount) {
        return 0;
    }
    if (m_seedName.IsEmpty() == 0 && SeedNameIs(m_points[n])) {
        m_seedName.Empty();
    }
    const int later = m_pointCount - n - 1;
    if (later > 0) {
        std::memmove(&m_points[n], &m_points[n + 1],
                     static_cast<std::size_t>(later) * sizeof(geotrans_CalibrationPoint));
    }
    --m_pointCount;
    if (m_pointCount == 0) {
        heap_release(m_points);
        m_points = nullptr;
        m_seedName.Empty();
    } else {
        // Shrinking cannot lose data: when the block cannot be shrunk it is kept as it is.
        void* shrunk = heap_reallocate(m_points, static_cast<std::size_t>(m_pointCount) *
                                                     sizeof(geotrans_CalibrationPoint));
        if (shrunk != nullptr) {
            m_points = static_cast<geotrans_CalibrationPoint*>(shrunk);
        }
    }
    return Recompute(error);
}

void CGeoTransformation::GetNthPoint(int n, geotrans_CalibrationPoint* point) {
    if (n < 0 || n >= m_pointCount || point == nullptr) {
        return;
    }
    *point = m_points[n];
}

geotrans_CalibrationPoint const* CGeoTransformation::NthPoint(int n) {
    if (n < 0 || n >= m_pointCount) {
        return nullptr;
    }
    return &m_points[n];
}

int CGeoTransformation::NumberOfPoints() {
    return m_pointCount;
}

int CGeoTransformation::NumberOfCalibratedPoints() {
    int count = 0;
    for (int i = 0; i < m_pointCount; ++i) {
        count += uses(m_points[i], kUseEither) ? 1 : 0;
    }
    return count;
}

int CGeoTransformation::IsCalibrated() {
    return m_calibrated;
}

bool CGeoTransformation::SeedNameIs(const geotrans_CalibrationPoint& point) const {
    const unsigned short* seed = m_seedName.GetString();
    for (int i = 0; i < kNameUnits; ++i) {
        if (point.name[i] != seed[i]) {
            return false;
        }
        if (seed[i] == 0) {
            return true;
        }
    }
    return seed[kNameUnits] == 0; // a name that fills every unit
}

void CGeoTransformation::SetSeedPoint(int n, geo_llh const& llh) {
    if (n < 0 || n >= m_pointCount) {
        return;
    }
    geotrans_CalibrationPoint point = m_points[n];
    point.llh = llh;
    SetNthPoint(n, &point, nullptr);
    try {
        m_seedName = CString::FromUtf16(point.name, kNameUnits);
    } catch (const std::bad_alloc&) {
        m_seedName.Empty(); // no memory for the name: there is no seed point
    }
}

int CGeoTransformation::GetSeedPoint(geotrans_CalibrationPoint* point) {
    if (m_seedName.IsEmpty() != 0) {
        return -1;
    }
    for (int i = 0; i < m_pointCount; ++i) {
        if (point != nullptr) {
            *point = m_points[i];
        }
        if (SeedNameIs(m_points[i])) {
            return i;
        }
    }
    m_seedName.Empty();
    return -1;
}

void CGeoTransformation::SetDefaultScaleAndRotation(double scale, double rotation) {
    m_defaultScale = scale;
    m_defaultRotation = rotation;
    if (NumberOfCalibratedPoints() == 1 && m_horizontal != nullptr && m_pointCount > 0) {
        *m_horizontal =
            CGeoHorizontalAdjustment(m_points[0].nee, scale, rotation, m_horizontal->ShiftNorth(),
                                     m_horizontal->ShiftEast());
    }
}

void CGeoTransformation::GetMaxHResidual(int* index, double* value) {
    LargestResidual(geotrans_UseHorizontal, index, value);
}

void CGeoTransformation::GetMaxVResidual(int* index, double* value) {
    LargestResidual(geotrans_UseVertical, index, value);
}

void CGeoTransformation::LargestResidual(std::uint32_t use, int* index, double* value) const {
    int best_index = -1;
    double best = GEO_NULL;
    if (m_calibrated != 0 && m_pointCount > 0) {
        best = 0.0;
        for (int i = 0; i < m_pointCount; ++i) {
            if (!uses(m_points[i], use)) {
                continue;
            }
            // Horizontal residuals are distances; vertical ones are signed and compared by size.
            const double r = use == geotrans_UseHorizontal ? m_points[i].hResidual
                                                           : std::fabs(m_points[i].vResidual);
            if (r > best) { // strictly: the first of equal residuals wins
                best = r;
                best_index = i;
            }
        }
    }
    if (index != nullptr) {
        *index = best_index;
    }
    if (value != nullptr) {
        *value = best;
    }
}

void CGeoTransformation::Forward(geo_llh const& llh, geo_nee& nee) {
    if (m_projection == nullptr) {
        return;
    }
    m_projection->Forward(llh, nee);
    if (m_horizontal != nullptr) {
        m_horizontal->Forward(nee);
    }
    if (m_vertical != nullptr) {
        m_vertical->Forward(nee);
    }
}

void CGeoTransformation::Reverse(geo_nee const& nee, geo_llh& llh) {
    geo_nee p = nee;
    if (m_vertical != nullptr) {
        m_vertical->Reverse(p);
    }
    if (m_horizontal != nullptr) {
        m_horizontal->Reverse(p);
    }
    if (m_projection != nullptr) {
        m_projection->Reverse(p, llh);
        // The projection gives its origin's longitude plus an offset, which passes the
        // antimeridian for a centre near it or a point far out: the same meridian, in range.
        if (llh.lon != GEO_NULL) {
            llh.lon = longitude_in_range(llh.lon);
        }
    }
}

CGeoStereographic::stereo_Region CGeoTransformation::ProjectionType() {
    if (m_calibrated == 0 || m_projection == nullptr) {
        return CGeoStereographic::stereo_None;
    }
    return m_projection->Region();
}

double CGeoTransformation::OriginNorth() {
    return m_calibrated != 0 ? m_projection->OriginNorth() : GEO_NULL;
}

double CGeoTransformation::OriginEast() {
    return m_calibrated != 0 ? m_projection->OriginEast() : GEO_NULL;
}

double CGeoTransformation::OriginLat() {
    return m_calibrated != 0 ? m_projection->OriginLat() : GEO_NULL;
}

double CGeoTransformation::OriginLon() {
    return m_calibrated != 0 ? m_projection->OriginLon() : GEO_NULL;
}

double CGeoTransformation::HorizontalScale() {
    return m_calibrated != 0 ? m_horizontal->Scale() : GEO_NULL;
}

double CGeoTransformation::HorizontalRotation() {
    return m_calibrated != 0 ? m_horizontal->Rotation() : GEO_NULL;
}

double CGeoTransformation::VerticalHeightAdjustment() {
    return m_calibrated != 0 ? m_vertical->VerticalShift() : GEO_NULL;
}

double CGeoTransformation::VerticalSlopeNorth() {
    return m_calibrated != 0 ? m_vertical->SlopeNorth() : GEO_NULL;
}

double CGeoTransformation::VerticalSlopeEast() {
    return m_calibrated != 0 ? m_vertical->SlopeEast() : GEO_NULL;
}

double CGeoTransformation::DefaultScale() {
    return m_defaultScale;
}

double CGeoTransformation::DefaultRotation() {
    return m_defaultRotation;
}

double CGeoTransformation::MinEasting() {
    return m_minEasting;
}

double CGeoTransformation::MaxEasting() {
    return m_maxEasting;
}

double CGeoTransformation::MinNorthing() {
    return m_minNorthing;
}

double CGeoTransformation::MaxNorthing() {
    return m_maxNorthing;
}

void CGeoTransformation::operator=(CGeoTransformation& other) {
    CopyFrom(other);
}

void CGeoTransformation::CopyFrom(const CGeoTransformation& other) {
    if (&other == this) {
        return;
    }
    Reset();
    for (int i = 0; i < other.m_pointCount; ++i) {
        AddPoint(&other.m_points[i], nullptr);
    }
    // Only now: the solutions above were computed with the defaults 1 and 0, and a solution
    // that relies on the defaults keeps them until the next change. Hosts have always seen this
    // order.
    m_defaultScale = other.m_defaultScale;
    m_defaultRotation = other.m_defaultRotation;
}

void CGeoTransformation::CalculateCentroid(geo_llh& position, geo_nee& site) {
    if (m_horizontalCount > 0) {
        double lat = 0.0;
        double lon = 0.0;
        double north = 0.0;
        double east = 0.0;
        const double first_lon = m_points[m_horizontalIndex[0]].llh.lon;
        for (int n = 0; n < m_horizontalCount; ++n) {
            const geotrans_CalibrationPoint& p = m_points[m_horizontalIndex[n]];
            lat += p.llh.lat;
            // Each relative to the first point, so that points on both sides of the
            // antimeridian average to a longitude between them.
            lon += unwrapped_longitude(p.llh.lon, first_lon);
            north += p.nee.north;
            east += p.nee.east;
        }
        const double count = m_horizontalCount;
        position = geo_llh{lat / count, longitude_in_range(lon / count), GEO_NULL};
        site = geo_nee{north / count, east / count, GEO_NULL};
        return;
    }
    site = geo_nee{0.0, 0.0, GEO_NULL};
    if (m_verticalCount > 0) {
        const geotrans_CalibrationPoint& p = m_points[m_verticalIndex[0]];
        position = geo_llh{p.llh.lat, p.llh.lon, GEO_NULL};
    } else {
        position = qv5::detail::kNullWgs84;
    }
}

int CGeoTransformation::ComputeHorizontal(geo_nee const& origin, geotrans_Error* error) {
    Similarity solution{0.0, 0.0, m_defaultRotation, m_defaultScale};
    if (m_horizontalCount == 2) {
        const int a = m_horizontalIndex[0];
        const int b = m_horizontalIndex[1];
        if (!two_point_similarity(m_grid[a], m_grid[b], m_site[a], m_site[b], solution)) {
            report(error, geotrans_SolutionFailed);
            return 0;
        }
    } else if (m_horizontalCount >= 3) {
        if (!fit_similarity(m_grid, m_site, m_horizontalIndex, m_horizontalCount, solution)) {
            report(error, geotrans_SolutionFailed);
            return 0;
        }
    }
    // With 0 or 1 point both systems are centred on the same point: no shift is needed.
    m_horizontal = heap_create<CGeoHorizontalAdjustment>(origin, solution.scale, solution.rotation,
                                                         solution.shift_north, solution.shift_east);
    if (m_horizontal == nullptr) {
        report(error, geotrans_OutOfMemory);
        return 0;
    }
    return 1;
}

int CGeoTransformation::ComputeVertical(geo_nee const& origin, geotrans_Error* error) {
    Plane plane{0.0, 0.0, 0.0};
    const auto dh = [this](int i) { return m_site[i].elev - m_grid[i].elev; };
    if (m_verticalCount == 1) {
        plane.shift = dh(m_verticalIndex[0]);
    } else if (m_verticalCount == 2) {
        const int a = m_verticalIndex[0];
        const int b = m_verticalIndex[1];
        const PlaneRow rows[3] = {PlaneRow{m_grid[a].north, m_grid[a].east, dh(a)},
                                  PlaneRow{m_grid[b].north, m_grid[b].east, dh(b)},
                                  made_up_plane_row(m_grid[a], m_grid[b], dh(a))};
        if (!fit_plane(
                3, [&rows](int i) { return rows[i]; }, plane)) {
            report(error, geotrans_SolutionFailed);
            return 0;
        }
    } else if (m_verticalCount >= 3) {
        const auto row_at = [this, &dh](int n) {
            const int i = m_verticalIndex[n];
            return PlaneRow{m_grid[i].north, m_grid[i].east, dh(i)};
        };
        if (!fit_plane(m_verticalCount, row_at, plane)) {
            report(error, geotrans_SolutionFailed);
            return 0;
        }
    }
    m_vertical = heap_create<CGeoVerticalAdjustment>(origin, plane.shift, plane.slope_north,
                                                     plane.slope_east);
    if (m_vertical == nullptr) {
        report(error, geotrans_OutOfMemory);
        return 0;
    }
    return 1;
}

int CGeoTransformation::Recompute(geotrans_Error* error) {
    ReleaseMemory();
    m_calibrated = 0;
    if (m_pointCount == 0) {
        return 1;
    }
    const auto out_of_memory = [this, error]() {
        ReleaseMemory();
        report(error, geotrans_OutOfMemory);
        return 0;
    };
    const std::size_t count = static_cast<std::size_t>(m_pointCount);
    m_horizontalIndex = heap_allocate_array<int>(count);
    m_verticalIndex = heap_allocate_array<int>(count);
    m_calibratedIndex = heap_allocate_array<int>(count);
    if (m_horizontalIndex == nullptr || m_verticalIndex == nullptr ||
        m_calibratedIndex == nullptr) {
        return out_of_memory();
    }

    m_minEasting = kEmptyMinimum;
    m_minNorthing = kEmptyMinimum;
    m_maxEasting = kEmptyMaximum;
    m_maxNorthing = kEmptyMaximum;
    for (int i = 0; i < m_pointCount; ++i) {
        geotrans_CalibrationPoint& p = m_points[i];
        p.hResidual = GEO_NULL;
        p.vResidual = GEO_NULL;
        if (uses(p, geotrans_UseVertical)) {
            m_verticalIndex[m_verticalCount++] = i;
        }
        if (uses(p, geotrans_UseHorizontal)) {
            m_horizontalIndex[m_horizontalCount++] = i;
        }
        if (p.nee.north != GEO_NULL) {
            m_minNorthing = p.nee.north < m_minNorthing ? p.nee.north : m_minNorthing;
            m_maxNorthing = p.nee.north > m_maxNorthing ? p.nee.north : m_maxNorthing;
        }
        if (p.nee.east != GEO_NULL) {
            m_minEasting = p.nee.east < m_minEasting ? p.nee.east : m_minEasting;
            m_maxEasting = p.nee.east > m_maxEasting ? p.nee.east : m_maxEasting;
        }
        if (uses(p, kUseEither)) {
            m_calibratedIndex[m_calibratedCount++] = i;
        }
    }
    if (m_minEasting == kEmptyMinimum) {
        m_minEasting = 0.0;
        m_maxEasting = 0.0;
        m_minNorthing = 0.0;
        m_maxNorthing = 0.0;
    }
    if (m_calibratedCount == 0) {
        ReleaseMemory();
        return 1;
    }

    geo_llh centroid;
    geo_nee centre;
    CalculateCentroid(centroid, centre);
    m_ellipsoid = heap_create<CGeoEllipsoid>(kWgs84A, kWgs84F);
    if (m_ellipsoid == nullptr) {
        return out_of_memory();
    }
    m_projection = heap_create<CGeoStereographic>(centroid, centre, kProjectionScale, *m_ellipsoid);
    m_grid = heap_allocate_array<geo_nee>(count);
    m_site = heap_allocate_array<geo_nee>(count);
    if (m_projection == nullptr || m_grid == nullptr || m_site == nullptr) {
        return out_of_memory();
    }
    for (int i = 0; i < m_pointCount; ++i) {
        m_grid[i] = qv5::detail::kNullGrid;
        m_site[i] = qv5::detail::kNullGrid;
    }
    // Both sets of coordinates are worked relative to the centroid's site coordinates, which
    // are also the projection's false origin.
    for (int n = 0; n < m_calibratedCount; ++n) {
        const int i = m_calibratedIndex[n];
        m_projection->Forward(m_points[i].llh, m_grid[i]);
        shift_plan(m_grid[i], -centre.north, -centre.east);
    }
    for (int n = 0; n < m_horizontalCount; ++n) {
        const int i = m_horizontalIndex[n];
        m_site[i].north = m_points[i].nee.north - centre.north;
        m_site[i].east = m_points[i].nee.east - centre.east;
    }

    geotrans_Error why = geotrans_NoError;
    m_calibrated = ComputeHorizontal(centre, &why);
    if (why == geotrans_OutOfMemory) {
        return out_of_memory();
    }
    if (m_calibrated != 0) {
        for (int n = 0; n < m_calibratedCount; ++n) {
            geo_nee& g = m_grid[m_calibratedIndex[n]];
            shift_plan(g, centre.north, centre.east);
            m_horizontal->Forward(g);
            shift_plan(g, -centre.north, -centre.east);
        }
    }
    for (int n = 0; n < m_verticalCount; ++n) {
        const int i = m_verticalIndex[n];
        m_site[i].elev = m_points[i].nee.elev;
    }
    if (m_calibrated != 0) {
        m_calibrated = ComputeVertical(centre, &why) != 0 ? 1 : 0;
        if (why == geotrans_OutOfMemory) {
            return out_of_memory();
        }
        if (m_calibrated != 0) {
            for (int n = 0; n < m_calibratedCount; ++n) {
                geo_nee& g = m_grid[m_calibratedIndex[n]];
                shift_plan(g, centre.north, centre.east);
                m_vertical->Forward(g);
                shift_plan(g, -centre.north, -centre.east);
            }
        }
    }
    if (m_calibrated == 0) {
        report(error, why);
        return 0;
    }
    for (int i = 0; i < m_pointCount; ++i) {
        geotrans_CalibrationPoint& p = m_points[i];
        if (uses(p, geotrans_UseHorizontal)) {
            p.hResidual = geo_horz_dist(m_grid[i], m_site[i]);
        }
        if (uses(p, geotrans_UseVertical)) {
            p.vResidual = geo_vert_dist(m_grid[i], m_site[i]);
        }
    }
    return m_calibrated;
}
