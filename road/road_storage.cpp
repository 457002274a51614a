#include "road/road_storage.h"

#include "road/horizontal_math.h"

#include "qv5/geovert.h"

#include <cstdlib>
#include <cstring>
#include <malloc.h>
#include <new>

namespace qv5::detail {

void delete_vertical_element(georoad_VertElementType type, void* element) {
    switch (type) {
    case georoad_VertPoint:
        delete static_cast<CGeoVertPoint*>(element);
        break;
    case georoad_VertParabola:
        delete static_cast<CGeoVertSymParabola*>(element);
        break;
    case georoad_VertCircular:
        delete static_cast<CGeoVertCircular*>(element);
        break;
    default:
        break;
    }
}

void* clone_vertical_element(georoad_VertElementType type, void* element) {
    if (element == nullptr) {
        return nullptr;
    }
    switch (type) {
    case georoad_VertPoint:
        return new (std::nothrow) CGeoVertPoint(*static_cast<CGeoVertPoint*>(element));
    case georoad_VertParabola:
        return new (std::nothrow) CGeoVertSymParabola(*static_cast<CGeoVertSymParabola*>(element));
    case georoad_VertCircular:
        return new (std::nothrow) CGeoVertCircular(*static_cast<CGeoVertCircular*>(element));
    default:
        return nullptr;
    }
}

void* new_vertical_element(georoad_VertElementType type, double station, double elevation,
                           double length) {
    switch (type) {
    case georoad_VertPoint: {
        auto* point = new (std::nothrow) CGeoVertPoint();
        if (point != nullptr) {
            point->Set(station, elevation);
        }
        return point;
    }
    case georoad_VertParabola: {
        auto* curve = new (std::nothrow) CGeoVertSymParabola();
        if (curve != nullptr) {
            curve->Set(station, elevation, length);
        }
        return curve;
    }
    case georoad_VertCircular: {
        auto* curve = new (std::nothrow) CGeoVertCircular();
        if (curve != nullptr) {
            curve->Set(station, elevation, length);
        }
        return curve;
    }
    default:
        return nullptr;
    }
}

void read_vertical_element(georoad_VertElementType type, void* element, double& station,
                           double& elevation, double& length) {
    station = GEO_NULL;
    elevation = GEO_NULL;
    length = GEO_NULL;
    if (element == nullptr) {
        return;
    }
    switch (type) {
    case georoad_VertPoint: {
        auto* point = static_cast<CGeoVertPoint*>(element);
        station = point->Station();
        elevation = point->Elevation();
        length = 0.0;
        break;
    }
    case georoad_VertParabola: {
        auto* curve = static_cast<CGeoVertSymParabola*>(element);
        station = curve->StationPVI();
        elevation = curve->ElevationPVI();
        length = curve->CurveLength();
        break;
    }
    case georoad_VertCircular: {
        auto* curve = static_cast<CGeoVertCircular*>(element);
        station = curve->StationPVI();
        elevation = curve->ElevationPVI();
        length = curve->CurveLength();
        break;
    }
    default:
        break;
    }
}

void* grow_records(void* records, std::size_t count, std::size_t record_size) {
    const std::size_t needed = (count + 1) * record_size;
    if (records != nullptr && malloc_usable_size(records) >= needed) {
        return records;
    }
    std::size_t size = needed;
    if (count >= 8) {
        size = needed + (count / 2) * record_size; // half as much again
    }
    return std::realloc(records, size);
}

void free_horizontal_records(HorzElementRecord* records, int count) {
    for (int i = 0; i < count; ++i) {
        delete_element(records[i].type, records[i].element);
    }
    std::free(records);
}

void free_vertical_records(VertElementRecord* records, int count) {
    for (int i = 0; i < count; ++i) {
        delete_vertical_element(records[i].type, records[i].element);
    }
    std::free(records);
}

HorzElementRecord* copy_horizontal_records(const HorzElementRecord* records, int count, bool& ok) {
    ok = true;
    if (count <= 0 || records == nullptr) {
        return nullptr;
    }
    auto* copy = static_cast<HorzElementRecord*>(std::malloc(sizeof(HorzElementRecord) * count));
    if (copy == nullptr) {
        ok = false;
        return nullptr;
    }
    std::memcpy(copy, records, sizeof(HorzElementRecord) * count);
    for (int i = 0; i < count; ++i) {
        if (!is_element_type(records[i].type) || records[i].element == nullptr) {
            copy[i].element = nullptr;
            continue;
        }
        copy[i].element = clone_element(records[i].type, records[i].element);
        if (copy[i].element == nullptr) {
            free_horizontal_records(copy, i);
            ok = false;
            return nullptr;
        }
    }
    return copy;
}

VertElementRecord* copy_vertical_records(const VertElementRecord* records, int count, bool& ok) {
    ok = true;
    if (count <= 0 || records == nullptr) {
        return nullptr;
    }
    auto* copy = static_cast<VertElementRecord*>(std::malloc(sizeof(VertElementRecord) * count));
    if (copy == nullptr) {
        ok = false;
        return nullptr;
    }
    std::memcpy(copy, records, sizeof(VertElementRecord) * count);
    for (int i = 0; i < count; ++i) {
        copy[i].element = clone_vertical_element(records[i].type, records[i].element);
        if (copy[i].element == nullptr && records[i].element != nullptr) {
            free_vertical_records(copy, i);
            ok = false;
            return nullptr;
        }
    }
    return copy;
}

void free_road_arrays(RoadArrays& arrays) {
    free_horizontal_records(arrays.horz, arrays.numHorz);
    free_vertical_records(arrays.vert, arrays.numVert);
    std::free(arrays.applications);
    free_templates(arrays.templates);
    arrays = RoadArrays{};
}

bool copy_road_arrays(const RoadArrays& source, RoadArrays& copy) {
    copy = RoadArrays{};
    bool ok = true;
    copy.horz = copy_horizontal_records(source.horz, source.numHorz, ok);
    copy.numHorz = copy.horz != nullptr ? source.numHorz : 0;
    if (ok) {
        copy.vert = copy_vertical_records(source.vert, source.numVert, ok);
        copy.numVert = copy.vert != nullptr ? source.numVert : 0;
    }
    if (ok && source.numApplications > 0 && source.applications != nullptr) {
        const std::size_t bytes = sizeof(TemplateApplicationRecord) * source.numApplications;
        copy.applications = static_cast<TemplateApplicationRecord*>(std::malloc(bytes));
        ok = copy.applications != nullptr;
        if (ok) {
            std::memcpy(copy.applications, source.applications, bytes);
            copy.numApplications = source.numApplications;
        }
    }
    if (ok) {
        copy.templates = copy_templates(source.templates, source.numTemplates, ok);
        copy.numTemplates = copy.templates != nullptr ? source.numTemplates : 0;
    }
    if (!ok) {
        free_road_arrays(copy);
        return false;
    }
    return true;
}

} // namespace qv5::detail
