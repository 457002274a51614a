// The road's vertical profile: PVIs, their validation against the neighbours, and the
// derivation of grades and curve quantities.
#include "qv5/georoad.h"

#include "road/road_storage.h"
#include "road/vertical_math.h"

#include <climits>
#include <cstdlib>
#include <cstring>
#include <vector>

using namespace qv5::detail;

namespace {

void report(georoad_Error* error, georoad_Error code) {
    if (error != nullptr) {
        *error = code;
    }
}

/// Puts a new PVI's record at `at` (0 to count; count appends), the records from `at` on moving
/// one place up. @return false, nothing changed, when the list cannot grow
bool insert_record(VertElementRecord*& records, int& count, int at, georoad_VertElementType type,
                   void* element) {
    if (count == INT_MAX) {
        return false;
    }
    void* grown = grow_records(records, std::size_t(count), sizeof(VertElementRecord));
    if (grown == nullptr) {
        return false;
    }
    records = static_cast<VertElementRecord*>(grown);
    std::memmove(records + at + 1, records + at,
                 sizeof(VertElementRecord) * std::size_t(count - at));
    records[at] = empty_vertical_record(type, element);
    ++count;
    return true;
}

/// Makes a new PVI's element and puts its record at `at`. @return false, nothing changed, when
/// memory runs out
bool insert_new_pvi(VertElementRecord*& records, int& count, int at, georoad_VertElementType type,
                    double station, double elevation, double length) {
    void* element = new_vertical_element(type, station, elevation, length);
    if (element == nullptr || !insert_record(records, count, at, type, element)) {
        delete_vertical_element(type, element);
        return false;
    }
    return true;
}

} // namespace

int CGeoRoad::ValidateVertical(int previous, int next, georoad_VertElementType type, double station,
                               double length) const {
    const VertElementRecord* before = previous >= 0 ? &m_vertElements[previous] : nullptr;
    const VertElementRecord* after =
        next >= 0 && next < m_numVertElements ? &m_vertElements[next] : nullptr;
    return fits_between(before, after, type, station, length) ? 1 : 0;
}

int CGeoRoad::AddVertical(georoad_VertElementType type, double station, double elevation,
                          double length, georoad_Error* error) {
    if (!is_usable_entry(type, station, elevation, length)) {
        report(error, georoad_VerticalError);
        return 0;
    }
    const VertElementRecord* last =
        m_numVertElements > 0 ? &m_vertElements[m_numVertElements - 1] : nullptr;
    if (!fits_after(last, type, station, length)) {
        report(error, georoad_VerticalError);
        return 0;
    }
    const int at = m_numVertElements;
    if (OwnArrays() == 0 ||
        !insert_new_pvi(m_vertElements, m_numVertElements, at, type, station, elevation, length)) {
        report(error, georoad_MemoryError);
        return 0;
    }
    UpdateVerticalElements(at);
    return 1;
}

int CGeoRoad::InsertVertical(int n, georoad_VertElementType type, double station, double elevation,
                             double length, georoad_Error* error) {
    if (n < 0 || n >= m_numVertElements) {
        return 0;
    }
    // The record now at n, before which the new PVI goes, is not tested: the next neighbour
    // is the one after it.
    if (!is_usable_entry(type, station, elevation, length) ||
        ValidateVertical(n - 1, n + 1, type, station, length) == 0) {
        report(error, georoad_VerticalError);
        return 0;
    }
    if (OwnArrays() == 0 ||
        !insert_new_pvi(m_vertElements, m_numVertElements, n, type, station, elevation, length)) {
        report(error, georoad_MemoryError);
        return 0;
    }
    UpdateVerticalElements(n);
    return 1;
}

int CGeoRoad::SetNthVertical(int n, georoad_VertElementType type, double station, double elevation,
                             double length, georoad_Error* error) {
    if (n < 0 || n >= m_numVertElements) {
        return 0;
    }
    if (!is_usable_entry(type, station, elevation, length) ||
        ValidateVertical(n - 1, n + 1, type, station, length) == 0) {
        report(error, georoad_VerticalError);
        return 0;
    }
    void* element = new_vertical_element(type, station, elevation, length);
    if (element == nullptr || OwnArrays() == 0) {
        delete_vertical_element(type, element);
        report(error, georoad_MemoryError);
        return 0;
    }
    VertElementRecord& record = m_vertElements[n];
    delete_vertical_element(record.type, record.element);
    record.type = type;
    record.element = element;
    UpdateVerticalElements(n);
    return 1;
}

int CGeoRoad::DeleteNthVertical(int n) {
    if (n < 0 || n >= m_numVertElements || OwnArrays() == 0) {
        return 0;
    }
    delete_vertical_element(m_vertElements[n].type, m_vertElements[n].element);
    std::memmove(m_vertElements + n, m_vertElements + n + 1,
                 sizeof(VertElementRecord) * std::size_t(m_numVertElements - n - 1));
    --m_numVertElements;
    if (m_numVertElements == 0) {
        std::free(m_vertElements);
        m_vertElements = nullptr;
    } else {
        void* shrunk = std::realloc(m_vertElements,
                                    sizeof(VertElementRecord) * std::size_t(m_numVertElements));
        if (shrunk != nullptr) {
            m_vertElements = static_cast<VertElementRecord*>(shrunk);
        }
    }
    // Deleting the last PVI recomputes nothing: the new last one keeps what the deleted one
    // gave it, and the profile's end station stays.
    UpdateVerticalElements(n);
    return 1;
}

int CGeoRoad::GetNthVertical(int n, georoad_VertElementType type, double& station,
                             double& elevation, double& curveElevationAtPVI, double& gradeIn,
                             double& gradeOut, double& curveStart, double& curveEnd,
                             double& length) {
    if (n < 0 || n >= m_numVertElements || m_vertElements[n].type != type) {
        return 0;
    }
    const VertElementRecord& record = m_vertElements[n];
    station = record.station;
    elevation = record.elevation;
    curveElevationAtPVI = GEO_NULL;
    gradeIn = GEO_NULL;
    gradeOut = GEO_NULL;
    curveStart = GEO_NULL;
    curveEnd = GEO_NULL;
    length = GEO_NULL;
    double entered_station = GEO_NULL;
    double entered_elevation = GEO_NULL;
    double entered_length = GEO_NULL;
    read_vertical_element(type, record.element, entered_station, entered_elevation, entered_length);
    switch (type) {
    case georoad_VertPoint:
        if (n > 0) {
            gradeIn = record.gradeIn;
        }
        if (n < m_numVertElements - 1) {
            gradeOut = record.gradeOut;
        }
        break;
    case georoad_VertParabola:
        curveElevationAtPVI = record.curveElevAtPVI;
        [[fallthrough]];
    case georoad_VertCircular:
        gradeIn = record.gradeIn;
        gradeOut = record.gradeOut;
        curveStart = record.curveStart;
        curveEnd = record.curveEnd;
        length = entered_length;
        break;
    default:
        break;
    }
    return 1;
}

// As the horizontal accessors: an index outside the profile reads the no-value marker.
double CGeoRoad::NthPVIStation(int n) const {
    return n >= 0 && n < m_numVertElements ? m_vertElements[n].station : GEO_NULL;
}

double CGeoRoad::NthPVIElevation(int n) const {
    return n >= 0 && n < m_numVertElements ? m_vertElements[n].elevation : GEO_NULL;
}

georoad_VertElementType CGeoRoad::NthVerticalType(int n) const {
    if (n >= m_numVertElements || n < 0) {
        return georoad_NoVertical;
    }
    return m_vertElements[n].type;
}

int CGeoRoad::NumberVerticalElements() const {
    return m_numVertElements;
}

double CGeoRoad::StartStationVertical() const {
    return m_startStationVertical;
}

double CGeoRoad::EndStationVertical() const {
    return m_endStationVertical;
}

int CGeoRoad::NextLikelyVertical(georoad_VertElementType& type, double& value) {
    if (m_numVertElements == 0) {
        type = georoad_VertPoint;
        value = GEO_NULL;
        return 1;
    }
    type = m_vertElements[m_numVertElements - 1].type == georoad_VertCircular
               ? georoad_VertCircular
               : georoad_VertParabola;
    return 1;
}

int CGeoRoad::CopyVertical(CGeoRoad const* source) {
    if (source == this) {
        m_modified = 1;
        return 1;
    }
    bool ok = true;
    VertElementRecord* copy = nullptr;
    if (source != nullptr) {
        copy = copy_vertical_records(source->m_vertElements, source->m_numVertElements, ok);
    }
    if (!ok || OwnArrays() == 0) {
        free_vertical_records(copy, copy != nullptr ? source->m_numVertElements : 0);
        return 0;
    }
    free_vertical_records(m_vertElements, m_numVertElements);
    m_vertElements = nullptr;
    m_numVertElements = 0;
    if (copy != nullptr) {
        m_vertElements = copy;
        m_numVertElements = source->m_numVertElements;
        m_startStationVertical = source->m_startStationVertical;
        m_endStationVertical = source->m_endStationVertical;
    }
    m_modified = 1;
    return 1;
}

void CGeoRoad::UpdateVerticalElements(int first) {
    if (first < 0) {
        first = 0;
    }
    if (first >= m_numVertElements || OwnArrays() == 0) {
        m_modified = 1;
        return;
    }
    std::vector<PviEntry> entries(static_cast<std::size_t>(m_numVertElements));
    const int from = first > 0 ? first - 1 : 0;
    for (int i = from; i < m_numVertElements; ++i) {
        PviEntry& entry = entries[static_cast<std::size_t>(i)];
        entry.type = m_vertElements[i].type;
        read_vertical_element(entry.type, m_vertElements[i].element, entry.station, entry.elevation,
                              entry.length);
    }
    ProfileLimits limits{m_startStationVertical, m_endStationVertical};
    derive_profile(m_vertElements, entries.data(), m_numVertElements, first, limits);
    m_startStationVertical = limits.start;
    m_endStationVertical = limits.end;
    m_modified = 1;
}
