// The horizontal alignment as values: the element objects behind untyped pointers, and the
// chaining and restationing of a list of records. Internal header; never installed.
#ifndef QV5_ROAD_HORIZONTAL_MATH_H
#define QV5_ROAD_HORIZONTAL_MATH_H

#include "qv5/georoad.h"

namespace qv5::detail {

/// True for the types that carry an element object (line, arc and the two spirals).
bool is_element_type(int type);

/// The defining values of an element, read through its class.
struct ElementShape {
    double entryAzimuth;        ///< line: GridAzimuth; others: EntryAzimuth
    double length;              ///< line: GridHDistance; arc: GridArcLength; spirals: Length
    double radius;              ///< arcs and spirals; `GEO_NULL` for a line
    geodef_Direction direction; ///< arcs and spirals; geodef_Right for a line
};

/// Reads the shape of an element of a known type.
ElementShape element_shape(georoad_HorzElementType type, void* element);

/// True when a shape can be laid on the road: finite azimuth and length (not `GEO_NULL`), a
/// length that is not negative and, for arcs and spirals, a finite positive radius.
bool is_usable_shape(georoad_HorzElementType type, const ElementShape& shape);

/// A new, default-constructed element of the class of `type`; null for other types or when the
/// allocation fails.
void* new_element(georoad_HorzElementType type);

/// Releases an element object made by new_element (nothing for other types or a null pointer).
void delete_element(georoad_HorzElementType type, void* element);

/// A copy of an element object made with its class's copy constructor; null as new_element.
void* clone_element(georoad_HorzElementType type, void* element);

/// Copies an element object into another of the same class.
void assign_element(georoad_HorzElementType type, void* target, void* source);

/// Sets an element from a start point, an entry azimuth and the dimensions of `shape`: a line
/// by azimuth and horizontal length (level), an arc by azimuth, radius, length and direction
/// (remembering `station` as its start station), a spiral by azimuth, direction, radius and
/// length.
void set_element(georoad_HorzElementType type, void* element, CGeoPoint& start, double azimuth,
                 const ElementShape& shape, double station);

/// Length of an element along the alignment; 0 for a type without an element.
double element_length(georoad_HorzElementType type, void* element);

/// Tangent azimuth at the element's end: a line's azimuth, an arc's grid azimuth at its full
/// length, a spiral's exit azimuth.
double element_exit_azimuth(georoad_HorzElementType type, void* element);

/// The element's end point.
CGeoPoint& element_end_point(georoad_HorzElementType type, void* element);

/// Where a chain of elements stands: the values handed from one element to the next.
struct ChainState {
    double station;
    double azimuth;
    CGeoPoint point;
};

/// Rechains records first .. count-1 from `state` (the state at the start of record `first`):
/// each record is given the running station, azimuth and point, and its element is set again
/// from there, keeping its own entry azimuth (tangent 0) or turned onto the running azimuth
/// (tangent nonzero). Records without an element are given the running values and skipped.
/// @return the state at the end of the chain
ChainState chain_elements(HorzElementRecord* records, int count, int first, int tangent,
                          ChainState state);

/// Restations records first .. count-1 from `station`, the start station of record `first`.
/// @return the station at the end of the last record
double restation_elements(HorzElementRecord* records, int count, int first, double station);

} // namespace qv5::detail

#endif // QV5_ROAD_HORIZONTAL_MATH_H
