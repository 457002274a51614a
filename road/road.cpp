// CGeoRoad as a whole (construction, copying, reset, flags, point of beginning) and its
// horizontal alignment.
#include "qv5/georoad.h"

#include "road/horizontal_math.h"
#include "road/road_storage.h"
#include "road/vertical_math.h"

#include "core/constants.h"

#include "qv5/geoarc.h"
#include "qv5/geoline.h"
#include "qv5/geospiral.h"
#include "qv5/geotemplate.h"

#include <climits>
#include <cmath>
#include <cstdlib>
#include <cstring>
#include <new>

using namespace qv5::detail;

namespace {

/// The road's own copy of an element handed in to replace or go before another one, with the
/// shape it was read to have; null (nothing made) when the type is unknown, the element is
/// missing or its shape cannot be laid on a road, or the copy cannot be made.
void* usable_copy(georoad_HorzElementType type, void* element, ElementShape& shape) {
    if (!is_element_type(type) || element == nullptr) {
        return nullptr;
    }
    shape = element_shape(type, element);
    if (!is_usable_shape(type, shape)) {
        return nullptr;
    }
    return clone_element(type, element);
}

RoadArrays arrays_of(HorzElementRecord* horz, int numHorz, VertElementRecord* vert, int numVert,
                     TemplateApplicationRecord* applications, int numApplications,
                     CGeoTemplate* templates, int numTemplates) {
    RoadArrays arrays;
    arrays.horz = horz;
    arrays.numHorz = numHorz;
    arrays.vert = vert;
    arrays.numVert = numVert;
    arrays.applications = applications;
    arrays.numApplications = numApplications;
    arrays.templates = templates;
    arrays.numTemplates = numTemplates;
    return arrays;
}

} // namespace

CGeoRoad::CGeoRoad()
    : m_startStation(0.0), m_startAzimuth(GEO_NULL), m_stationInterval(GEO_NULL),
      m_horzElements(nullptr), m_numHorzElements(0), m_vertElements(nullptr), m_numVertElements(0),
      m_templateApplications(nullptr), m_numTemplateApplications(0), m_templates(nullptr),
      m_numTemplates(0), m_endStation(0.0), m_endAzimuth(GEO_NULL),
      m_startStationVertical(GEO_NULL), m_endStationVertical(GEO_NULL), m_modified(0),
      m_storage(nullptr) {
    m_name.Empty();
    m_filePath.Empty();
    Reset();
}

CGeoRoad::CGeoRoad(const CGeoRoad& other)
    : m_startStation(other.m_startStation), m_startAzimuth(other.m_startAzimuth),
      m_startPt(other.m_startPt), m_stationInterval(other.m_stationInterval),
      m_horzElements(other.m_horzElements), m_numHorzElements(other.m_numHorzElements),
      m_vertElements(other.m_vertElements), m_numVertElements(other.m_numVertElements),
      m_templateApplications(other.m_templateApplications),
      m_numTemplateApplications(other.m_numTemplateApplications), m_templates(other.m_templates),
      m_numTemplates(other.m_numTemplates), m_name(other.m_name), m_filePath(other.m_filePath),
      m_endStation(other.m_endStation), m_endPt(other.m_endPt), m_endAzimuth(other.m_endAzimuth),
      m_startStationVertical(other.m_startStationVertical),
      m_endStationVertical(other.m_endStationVertical), m_modified(other.m_modified),
      m_storage(nullptr) {
    if (other.m_storage == nullptr) {
        other.m_storage = new (std::nothrow) RoadStorage();
        if (other.m_storage != nullptr) {
            other.m_storage->sharers.store(1);
        }
    }
    if (other.m_storage != nullptr) {
        other.m_storage->sharers.fetch_add(1);
        m_storage = other.m_storage;
        return;
    }
    // No count could be allocated: the copy cannot share safely, so it takes its own arrays.
    RoadArrays copy;
    const RoadArrays source =
        arrays_of(other.m_horzElements, other.m_numHorzElements, other.m_vertElements,
                  other.m_numVertElements, other.m_templateApplications,
                  other.m_numTemplateApplications, other.m_templates, other.m_numTemplates);
    copy_road_arrays(source, copy);
    m_horzElements = copy.horz;
    m_numHorzElements = copy.numHorz;
    m_vertElements = copy.vert;
    m_numVertElements = copy.numVert;
    m_templateApplications = copy.applications;
    m_numTemplateApplications = copy.numApplications;
    m_templates = copy.templates;
    m_numTemplates = copy.numTemplates;
}

CGeoRoad::~CGeoRoad() {
    Reset();
}

void CGeoRoad::ReleaseArrays() {
    RoadArrays arrays =
        arrays_of(m_horzElements, m_numHorzElements, m_vertElements, m_numVertElements,
                  m_templateApplications, m_numTemplateApplications, m_templates, m_numTemplates);
    m_horzElements = nullptr;
    m_numHorzElements = 0;
    m_vertElements = nullptr;
    m_numVertElements = 0;
    m_templateApplications = nullptr;
    m_numTemplateApplications = 0;
    m_templates = nullptr;
    m_numTemplates = 0;
    if (m_storage != nullptr) {
        RoadStorage* storage = m_storage;
        m_storage = nullptr;
        if (storage->sharers.fetch_sub(1) > 1) {
            return; // another road still holds them
        }
        delete storage;
    }
    free_road_arrays(arrays);
}

int CGeoRoad::OwnArrays() {
    if (m_storage == nullptr) {
        return 1;
    }
    if (m_storage->sharers.load() == 1) {
        delete m_storage;
        m_storage = nullptr;
        return 1;
    }
    RoadArrays own;
    RoadArrays shared =
        arrays_of(m_horzElements, m_numHorzElements, m_vertElements, m_numVertElements,
                  m_templateApplications, m_numTemplateApplications, m_templates, m_numTemplates);
    if (!copy_road_arrays(shared, own)) {
        return 0;
    }
    RoadStorage* storage = m_storage;
    m_storage = nullptr;
    if (storage->sharers.fetch_sub(1) == 1) {
        // The other holders let go meanwhile: the shared arrays are nobody's now.
        delete storage;
        free_road_arrays(shared);
    }
    m_horzElements = own.horz;
    m_vertElements = own.vert;
    m_templateApplications = own.applications;
    m_templates = own.templates;
    return 1;
}

void CGeoRoad::operator=(CGeoRoad& source) {
    if (&source == this) {
        return;
    }
    Reset();
    m_name = source.m_name;
    m_filePath = source.m_filePath;
    SetPOBInfo(source.m_startStation, source.m_startPt.Northing(), source.m_startPt.Easting(),
               source.m_stationInterval);
    for (int i = 0; i < source.m_numHorzElements; ++i) {
        AddHorizontal(source.m_horzElements[i].type, source.m_horzElements[i].element);
    }
    for (int i = 0; i < source.m_numVertElements; ++i) {
        const VertElementRecord& record = source.m_vertElements[i];
        georoad_Error error = georoad_VerticalError;
        AddVertical(record.type, record.station, record.elevation,
                    2.0 * (record.station - record.curveStart), &error);
    }
    for (int i = 0; i < source.m_numTemplates; ++i) {
        AddTemplate(&source.m_templates[i]);
    }
    for (int i = 0; i < source.m_numTemplateApplications; ++i) {
        const TemplateApplicationRecord& application = source.m_templateApplications[i];
        if (application.templateIndex < 0 || application.templateIndex >= m_numTemplates) {
            continue; // an application left pointing past the library has no name to re-add
        }
        AddTemplateApplication(m_templates[application.templateIndex].Name(), application.station,
                               application.side);
    }
    m_modified = 1;
}

void CGeoRoad::Reset() {
    ReleaseArrays();
    m_startStation = 0.0;
    m_endStation = 0.0;
    m_startAzimuth = GEO_NULL;
    m_stationInterval = GEO_NULL;
    m_endAzimuth = GEO_NULL;
    m_startStationVertical = GEO_NULL;
    m_endStationVertical = GEO_NULL;
    m_startPt.SetGrid(0.0, 0.0, 0.0);
    m_endPt.SetGrid(0.0, 0.0, 0.0);
    m_modified = 0;
}

const CString& CGeoRoad::Name() const {
    return m_name;
}

const CString& CGeoRoad::FilePath() const {
    return m_filePath;
}

void CGeoRoad::SetName(CString const& name) {
    m_name = name;
}

void CGeoRoad::ResetFilePath() {
    m_filePath.Empty();
}

void CGeoRoad::SetModifiedFlag(int modified) {
    m_modified = modified;
}

int CGeoRoad::IsModified() const {
    return m_modified;
}

double CGeoRoad::StationInterval() const {
    return m_stationInterval;
}

void CGeoRoad::SetStationInterval(double interval) {
    m_stationInterval = interval;
    m_modified = 1;
}

void CGeoRoad::SetPOBInfo(double station, double north, double east, double interval) {
    m_stationInterval = interval;
    if (m_startStation == GEO_NULL || !(std::fabs(m_startStation - station) < kPositionTolerance)) {
        m_startStation = station;
        UpdateStationing(0);
    }
    if (m_startPt.Ok2DGrid() != 0 && std::fabs(north - m_startPt.Northing()) < kPositionTolerance &&
        std::fabs(east - m_startPt.Easting()) < kPositionTolerance) {
        return;
    }
    m_startPt.SetGrid(north, east, GEO_NULL);
    UpdateHorizontalElements(0, 0);
}

double CGeoRoad::StartStationHorizontal() const {
    return m_startStation;
}

double CGeoRoad::EndStationHorizontal() const {
    return m_endStation;
}

double CGeoRoad::StartAzimuthHorizontal() const {
    return m_startAzimuth;
}

double CGeoRoad::EndAzimuthHorizontal() const {
    return m_endAzimuth;
}

CGeoPoint& CGeoRoad::StartPtHorizontal() {
    return m_startPt;
}

CGeoPoint& CGeoRoad::EndPtHorizontal() {
    return m_endPt;
}

int CGeoRoad::NumberHorizontalElements() const {
    return m_numHorzElements;
}

// The per-element accessors leave the range to the caller; an index outside it reads the
// no-value marker rather than memory that is not the road's.
double CGeoRoad::HorzElementStartStation(int n) const {
    return n >= 0 && n < m_numHorzElements ? m_horzElements[n].startStation : GEO_NULL;
}

double CGeoRoad::HorzElementStartAzimuth(int n) const {
    return n >= 0 && n < m_numHorzElements ? m_horzElements[n].startAzimuth : GEO_NULL;
}

geo_nee const& CGeoRoad::HorzElementStartCoords(int n) const {
    static const geo_nee none{GEO_NULL, GEO_NULL, GEO_NULL};
    return n >= 0 && n < m_numHorzElements ? m_horzElements[n].startCoords : none;
}

double CGeoRoad::HorzElementEndStation(int n) const {
    if (n >= m_numHorzElements || n < 0) {
        return GEO_NULL;
    }
    const HorzElementRecord& record = m_horzElements[n];
    if (!is_element_type(record.type) || record.element == nullptr) {
        return record.startStation;
    }
    return record.startStation + element_length(record.type, record.element);
}

georoad_HorzElementType CGeoRoad::NthHorizontalType(int n) const {
    if (n >= m_numHorzElements || n < 0) {
        return georoad_NoHorizontal;
    }
    return m_horzElements[n].type;
}

int CGeoRoad::GrowHorizontal() {
    if (m_numHorzElements == INT_MAX) {
        return 0;
    }
    void* grown =
        grow_records(m_horzElements, std::size_t(m_numHorzElements), sizeof(HorzElementRecord));
    if (grown == nullptr) {
        return 0;
    }
    m_horzElements = static_cast<HorzElementRecord*>(grown);
    return 1;
}

int CGeoRoad::AddHorizontal(georoad_HorzElementType type, void* element) {
    if (!is_element_type(type) || element == nullptr) {
        return 0;
    }
    const ElementShape shape = element_shape(type, element);
    if (!is_usable_shape(type, shape)) {
        return 0;
    }
    void* copy = new_element(type);
    if (copy == nullptr) {
        return 0;
    }
    if (OwnArrays() == 0 || GrowHorizontal() == 0) {
        delete_element(type, copy);
        return 0;
    }
    HorzElementRecord& record = m_horzElements[m_numHorzElements];
    record.type = type;
    record.element = copy;
    record.startStation = m_endStation;
    record.startCoords = m_endPt.Grid();
    record.startAzimuth = m_endAzimuth;
    // The copy is laid at the road's end with its own azimuth: translated, never rotated.
    set_element(type, copy, m_endPt, shape.entryAzimuth, shape, m_endStation);
    if (type == georoad_Line) {
        record.startAzimuth = shape.entryAzimuth;
    }
    if (m_numHorzElements == 0) {
        m_startAzimuth = shape.entryAzimuth;
        record.startAzimuth = m_startAzimuth;
    }
    m_endStation += element_length(type, copy);
    m_endPt = element_end_point(type, copy);
    m_endAzimuth = element_exit_azimuth(type, copy);
    ++m_numHorzElements;
    m_modified = 1;
    return 1;
}

int CGeoRoad::InsertHorizontal(int n, georoad_HorzElementType type, void* element, int tangent) {
    if (n < 0 || n >= m_numHorzElements) {
        return 0;
    }
    ElementShape shape{};
    void* copy = usable_copy(type, element, shape);
    if (copy == nullptr) {
        return 0;
    }
    if (OwnArrays() == 0 || GrowHorizontal() == 0) {
        delete_element(type, copy);
        return 0;
    }
    std::memmove(m_horzElements + n + 1, m_horzElements + n,
                 sizeof(HorzElementRecord) * std::size_t(m_numHorzElements - n));
    // Record n keeps the start of the element that was there: the new one starts where it did.
    m_horzElements[n].type = type;
    m_horzElements[n].element = copy;
    if (n == 0) {
        m_startAzimuth = shape.entryAzimuth;
    }
    ++m_numHorzElements;
    m_modified = 1;
    UpdateHorizontalElements(n, tangent);
    return 1;
}

int CGeoRoad::SetNthHorizontal(int n, georoad_HorzElementType type, void* element, int tangent) {
    if (n >= m_numHorzElements || n < 0) {
        return 0;
    }
    ElementShape shape{};
    void* copy = usable_copy(type, element, shape);
    if (copy == nullptr) {
        return 0;
    }
    if (OwnArrays() == 0) {
        delete_element(type, copy);
        return 0;
    }
    HorzElementRecord& record = m_horzElements[n];
    delete_element(record.type, record.element);
    record.type = type;
    if (n == 0) {
        m_startAzimuth = shape.entryAzimuth;
    }
    record.startAzimuth = shape.entryAzimuth;
    record.element = copy;
    UpdateStationing(n);
    UpdateHorizontalElements(n, tangent);
    return 1;
}

int CGeoRoad::DeleteNthHorizontal(int n, int tangent) {
    if (n >= m_numHorzElements || n < 0 || OwnArrays() == 0) {
        return 0;
    }
    delete_element(m_horzElements[n].type, m_horzElements[n].element);
    std::memmove(m_horzElements + n, m_horzElements + n + 1,
                 sizeof(HorzElementRecord) * std::size_t(m_numHorzElements - n - 1));
    --m_numHorzElements;
    if (m_numHorzElements == 0) {
        std::free(m_horzElements);
        m_horzElements = nullptr;
    } else {
        void* shrunk = std::realloc(m_horzElements,
                                    sizeof(HorzElementRecord) * std::size_t(m_numHorzElements));
        if (shrunk != nullptr) { // a failed shrink keeps the larger block
            m_horzElements = static_cast<HorzElementRecord*>(shrunk);
        }
    }
    m_modified = 1;
    if (n == 0 && m_numHorzElements > 0) {
        m_startAzimuth = m_horzElements[0].startAzimuth;
    }
    if (n >= m_numHorzElements) {
        // The road's end stays at the end of the deleted element; the next add appends there.
        return 1;
    }
    UpdateHorizontalElements(n > 0 ? n - 1 : 0, tangent);
    return 1;
}

int CGeoRoad::GetNthHorizontal(int n, georoad_HorzElementType type, double& station,
                               CGeoPoint& start, double& azimuth, void* element) {
    if (n >= m_numHorzElements || n < 0 || type != m_horzElements[n].type ||
        !is_element_type(type) || element == nullptr) {
        return 0;
    }
    const HorzElementRecord& record = m_horzElements[n];
    station = record.startStation;
    azimuth = record.startAzimuth;
    start.SetGrid(record.startCoords);
    assign_element(type, element, record.element);
    return 1;
}

int CGeoRoad::CopyHorizontal(CGeoRoad const* source) {
    if (source == this) {
        m_modified = 1;
        return 1;
    }
    bool ok = true;
    HorzElementRecord* copy = nullptr;
    if (source != nullptr) {
        copy = copy_horizontal_records(source->m_horzElements, source->m_numHorzElements, ok);
    }
    if (!ok || OwnArrays() == 0) {
        free_horizontal_records(copy, copy != nullptr ? source->m_numHorzElements : 0);
        return 0;
    }
    free_horizontal_records(m_horzElements, m_numHorzElements);
    m_horzElements = nullptr;
    m_numHorzElements = 0;
    m_endAzimuth = GEO_NULL;
    m_startAzimuth = GEO_NULL;
    m_endStation = 0.0;
    m_startStation = 0.0;
    m_startPt.SetGrid(0.0, 0.0, 0.0);
    m_endPt.SetGrid(0.0, 0.0, 0.0);
    if (copy != nullptr) {
        m_horzElements = copy;
        m_numHorzElements = source->m_numHorzElements;
        m_startStation = source->m_startStation;
        m_endStation = source->m_endStation;
        m_startAzimuth = source->m_startAzimuth;
        m_endAzimuth = source->m_endAzimuth;
        m_startPt = source->m_startPt;
        m_endPt = source->m_endPt;
    }
    m_modified = 1;
    return 1;
}

int CGeoRoad::NextLikelyHorizontal(georoad_HorzElementType& type, double& station, CGeoPoint& start,
                                   double& azimuth, double& radius, geodef_Direction& direction) {
    station = m_endStation;
    azimuth = m_endAzimuth;
    start = m_endPt;
    if (m_numHorzElements == 0) {
        type = georoad_Line;
        radius = GEO_NULL;
        direction = geodef_Right;
        return 1;
    }
    const HorzElementRecord& last = m_horzElements[m_numHorzElements - 1];
    switch (last.type) {
    case georoad_Line:
        type = georoad_EntrySpiral;
        radius = GEO_NULL;
        direction = geodef_Right;
        return 1;
    case georoad_Arc: {
        auto* arc = static_cast<CGeoArc*>(last.element);
        type = georoad_ExitSpiral;
        radius = arc->Radius();
        direction = arc->Direction();
        return 1;
    }
    case georoad_EntrySpiral: {
        auto* spiral = static_cast<CGeoEntrySpiral*>(last.element);
        type = georoad_Arc;
        radius = spiral->Radius();
        direction = spiral->Direction();
        return 1;
    }
    case georoad_ExitSpiral:
        type = georoad_Line;
        radius = GEO_NULL;
        direction = geodef_Right;
        return 1;
    default:
        return 0;
    }
}

int CGeoRoad::PreviousLikelyHorizontal(int n, georoad_HorzElementType& type, double& station,
                                       CGeoPoint& start, double& azimuth, double& radius,
                                       geodef_Direction& direction) {
    if (n < 0 || n >= m_numHorzElements) {
        return 0;
    }
    const HorzElementRecord& record = m_horzElements[n];
    station = record.startStation;
    azimuth = record.startAzimuth;
    start.SetGrid(record.startCoords);
    type = georoad_Line;
    radius = GEO_NULL;
    direction = geodef_Right;
    return 1;
}

void CGeoRoad::UpdateStationing(int first) {
    double station = m_startStation;
    if (first >= m_numHorzElements && first > 0) {
        station = m_endStation; // no record to start from: the end stays where it is
    } else if (first > 0) {
        station = m_horzElements[first].startStation;
    }
    if (first < m_numHorzElements && OwnArrays() == 0) {
        return;
    }
    m_endStation = restation_elements(m_horzElements, m_numHorzElements, first, station);
    m_modified = 1;
}

void CGeoRoad::UpdateHorizontalElements(int first, int tangent) {
    if (first < 0) {
        first = 0;
    }
    if (first < m_numHorzElements && OwnArrays() == 0) {
        return;
    }
    ChainState state;
    if (first > 0 && first < m_numHorzElements) {
        state.station = m_horzElements[first].startStation;
        state.azimuth = m_horzElements[first].startAzimuth;
        state.point.SetGrid(m_horzElements[first].startCoords);
    } else {
        state.station = m_startStation;
        state.azimuth = m_startAzimuth;
        state.point = m_startPt;
    }
    if (first > 0 && first >= m_numHorzElements) {
        // No record to start from: the running values are the road's end as it stands.
        state.station = m_endStation;
        state.azimuth = m_endAzimuth;
        state.point = m_endPt;
    }
    state = chain_elements(m_horzElements, m_numHorzElements, first, tangent, state);
    m_endStation = state.station;
    m_endAzimuth = state.azimuth;
    m_endPt = state.point;
    m_modified = 1;
}
