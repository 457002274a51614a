#include "road/horizontal_math.h"

#include "qv5/geoarc.h"
#include "qv5/geoline.h"
#include "qv5/geospiral.h"

#include <cmath>
#include <new>

namespace qv5::detail {

namespace {

bool is_value(double value) {
    return value != GEO_NULL && std::isfinite(value);
}

} // namespace

bool is_element_type(int type) {
    return type >= georoad_Line && type <= georoad_ExitSpiral;
}

ElementShape element_shape(georoad_HorzElementType type, void* element) {
    ElementShape shape{GEO_NULL, GEO_NULL, GEO_NULL, geodef_Right};
    switch (type) {
    case georoad_Line: {
        auto* line = static_cast<CGeoLine*>(element);
        shape.entryAzimuth = line->GridAzimuth();
        shape.length = line->GridHDistance();
        break;
    }
    case georoad_Arc: {
        auto* arc = static_cast<CGeoArc*>(element);
        shape.entryAzimuth = arc->EntryAzimuth();
        shape.length = arc->GridArcLength();
        shape.radius = arc->Radius();
        shape.direction = arc->Direction();
        break;
    }
    case georoad_EntrySpiral: {
        auto* spiral = static_cast<CGeoEntrySpiral*>(element);
        shape.entryAzimuth = spiral->EntryAzimuth();
        shape.length = spiral->Length();
        shape.radius = spiral->Radius();
        shape.direction = spiral->Direction();
        break;
    }
    case georoad_ExitSpiral: {
        auto* spiral = static_cast<CGeoExitSpiral*>(element);
        shape.entryAzimuth = spiral->EntryAzimuth();
        shape.length = spiral->Length();
        shape.radius = spiral->Radius();
        shape.direction = spiral->Direction();
        break;
    }
    default:
        break;
    }
    return shape;
}

bool is_usable_shape(georoad_HorzElementType type, const ElementShape& shape) {
    if (!is_element_type(type) || !is_value(shape.entryAzimuth) || !is_value(shape.length) ||
        shape.length < 0.0) {
        return false;
    }
    if (type == georoad_Line) {
        return true;
    }
    const bool known_direction = shape.direction == geodef_Left || shape.direction == geodef_Right;
    return known_direction && is_value(shape.radius) && shape.radius > 0.0;
}

void* new_element(georoad_HorzElementType type) {
    switch (type) {
    case georoad_Line:
        return new (std::nothrow) CGeoLine();
    case georoad_Arc:
        return new (std::nothrow) CGeoArc();
    case georoad_EntrySpiral:
        return new (std::nothrow) CGeoEntrySpiral();
    case georoad_ExitSpiral:
        return new (std::nothrow) CGeoExitSpiral();
    default:
        return nullptr;
    }
}

void delete_element(georoad_HorzElementType type, void* element) {
    switch (type) {
    case georoad_Line:
        delete static_cast<CGeoLine*>(element);
        break;
    case georoad_Arc:
        delete static_cast<CGeoArc*>(element);
        break;
    case georoad_EntrySpiral:
        delete static_cast<CGeoEntrySpiral*>(element);
        break;
    case georoad_ExitSpiral:
        delete static_cast<CGeoExitSpiral*>(element);
        break;
    default:
        break;
    }
}

void* clone_element(georoad_HorzElementType type, void* element) {
    if (element == nullptr) {
        return nullptr;
    }
    switch (type) {
    case georoad_Line:
        return new (std::nothrow) CGeoLine(*static_cast<CGeoLine*>(element));
    case georoad_Arc:
        return new (std::nothrow) CGeoArc(*static_cast<CGeoArc*>(element));
    case georoad_EntrySpiral:
        return new (std::nothrow) CGeoEntrySpiral(*static_cast<CGeoEntrySpiral*>(element));
    case georoad_ExitSpiral:
        return new (std::nothrow) CGeoExitSpiral(*static_cast<CGeoExitSpiral*>(element));
    default:
        return nullptr;
    }
}

void assign_element(georoad_HorzElementType type, void* target, void* source) {
    switch (type) {
    case georoad_Line:
        *static_cast<CGeoLine*>(target) = *static_cast<CGeoLine*>(source);
        break;
    case georoad_Arc:
        *static_cast<CGeoArc*>(target) = *static_cast<CGeoArc*>(source);
        break;
    case georoad_EntrySpiral:
        *static_cast<CGeoEntrySpiral*>(target) = *static_cast<CGeoEntrySpiral*>(source);
        break;
    case georoad_ExitSpiral:
        *static_cast<CGeoExitSpiral*>(target) = *static_cast<CGeoExitSpiral*>(source);
        break;
    default:
        break;
    }
}

void set_element(georoad_HorzElementType type, void* element, CGeoPoint& start, double azimuth,
                 const ElementShape& shape, double station) {
    switch (type) {
    case georoad_Line:
        // The chain is horizontal: a line is laid level from the start's elevation.
        static_cast<CGeoLine*>(element)->Set(start, azimuth, shape.length, 0.0);
        break;
    case georoad_Arc:
        static_cast<CGeoArc*>(element)->Set(start, azimuth, shape.radius, shape.length,
                                            shape.direction, station);
        break;
    case georoad_EntrySpiral:
        static_cast<CGeoEntrySpiral*>(element)->Set(start, azimuth, shape.direction, shape.radius,
                                                    shape.length);
        break;
    case georoad_ExitSpiral:
        static_cast<CGeoExitSpiral*>(element)->Set(start, azimuth, shape.direction, shape.radius,
                                                   shape.length);
        break;
    default:
        break;
    }
}

double element_length(georoad_HorzElementType type, void* element) {
    switch (type) {
    case georoad_Line:
        return static_cast<CGeoLine*>(element)->GridHDistance();
    case georoad_Arc:
        return static_cast<CGeoArc*>(element)->GridArcLength();
    case georoad_EntrySpiral:
        return static_cast<CGeoEntrySpiral*>(element)->Length();
    case georoad_ExitSpiral:
        return static_cast<CGeoExitSpiral*>(element)->Length();
    default:
        return 0.0;
    }
}

double element_exit_azimuth(georoad_HorzElementType type, void* element) {
    switch (type) {
    case georoad_Line:
        return static_cast<CGeoLine*>(element)->GridAzimuth();
    case georoad_Arc: {
        auto* arc = static_cast<CGeoArc*>(element);
        return arc->GridAzimuth(arc->GridArcLength());
    }
    case georoad_EntrySpiral:
        return static_cast<CGeoEntrySpiral*>(element)->ExitAzimuth();
    case georoad_ExitSpiral:
        return static_cast<CGeoExitSpiral*>(element)->ExitAzimuth();
    default:
        return GEO_NULL;
    }
}

CGeoPoint& element_end_point(georoad_HorzElementType type, void* element) {
    switch (type) {
    case georoad_Arc:
        return static_cast<CGeoArc*>(element)->EndPt();
    case georoad_EntrySpiral:
        return static_cast<CGeoEntrySpiral*>(element)->EndPt();
    case georoad_ExitSpiral:
        return static_cast<CGeoExitSpiral*>(element)->EndPt();
    default:
        return static_cast<CGeoLine*>(element)->EndPt();
    }
}

ChainState chain_elements(HorzElementRecord* records, int count, int first, int tangent,
                          ChainState state) {
    for (int i = first < 0 ? 0 : first; i < count; ++i) {
        HorzElementRecord& record = records[i];
        record.startStation = state.station;
        record.startAzimuth = state.azimuth;
        record.startCoords = state.point.Grid();
        if (!is_element_type(record.type) || record.element == nullptr) {
            continue;
        }
        const ElementShape shape = element_shape(record.type, record.element);
        if (tangent == 0) {
            state.azimuth = shape.entryAzimuth;
            record.startAzimuth = shape.entryAzimuth;
        }
        set_element(record.type, record.element, state.point, state.azimuth, shape, state.station);
        state.point = element_end_point(record.type, record.element);
        state.azimuth = element_exit_azimuth(record.type, record.element);
        state.station += element_length(record.type, record.element);
    }
    return state;
}

double restation_elements(HorzElementRecord* records, int count, int first, double station) {
    for (int i = first < 0 ? 0 : first; i < count; ++i) {
        records[i].startStation = station;
        if (is_element_type(records[i].type) && records[i].element != nullptr) {
            station += element_length(records[i].type, records[i].element);
        }
    }
    return station;
}

} // namespace qv5::detail
