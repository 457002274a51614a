// How copy-constructed roads share their arrays. Internal header; never installed.
#ifndef QV5_ROAD_ROAD_STORAGE_H
#define QV5_ROAD_ROAD_STORAGE_H

#include "qv5/georoad.h"

#include <atomic>
#include <cstddef>

namespace qv5::detail {

/// The count of roads that hold the same four arrays and the objects they own. A road whose
/// arrays are its own alone holds no block.
struct RoadStorage {
    std::atomic<int> sharers{0};
};

/// The four arrays of a road with their counts, as one value.
struct RoadArrays {
    HorzElementRecord* horz = nullptr;
    int numHorz = 0;
    VertElementRecord* vert = nullptr;
    int numVert = 0;
    TemplateApplicationRecord* applications = nullptr;
    int numApplications = 0;
    CGeoTemplate* templates = nullptr;
    int numTemplates = 0;
};

/// Releases the arrays and every object they own.
void free_road_arrays(RoadArrays& arrays);

/// A deep copy of the arrays (records copied, element objects and templates cloned).
/// @return false, with `copy` empty, when an allocation fails
bool copy_road_arrays(const RoadArrays& source, RoadArrays& copy);

/// A deep copy of a horizontal record list; null (and nothing allocated) when an allocation
/// fails or the count is 0.
HorzElementRecord* copy_horizontal_records(const HorzElementRecord* records, int count, bool& ok);
/// A deep copy of a profile record list, as copy_horizontal_records.
VertElementRecord* copy_vertical_records(const VertElementRecord* records, int count, bool& ok);
/// A new template array holding copies of `count` templates; null when the allocation fails.
CGeoTemplate* copy_templates(const CGeoTemplate* templates, int count, bool& ok);

/// Makes room in a malloc'd record array for `count` + 1 records, moving it if it must grow.
/// The block grows geometrically behind the count, so that appending n records one at a time
/// moves the array O(log n) times, not n times.
/// @return the array (possibly moved), or null when it cannot grow (the old block is kept)
void* grow_records(void* records, std::size_t count, std::size_t record_size);

/// Releases the element objects of a horizontal record list and the list.
void free_horizontal_records(HorzElementRecord* records, int count);
/// Releases the element objects of a profile record list and the list.
void free_vertical_records(VertElementRecord* records, int count);
/// Releases a template array.
void free_templates(CGeoTemplate* templates);

/// Releases a profile element object of the class of `type`.
void delete_vertical_element(georoad_VertElementType type, void* element);
/// A copy of a profile element object; null when the allocation fails.
void* clone_vertical_element(georoad_VertElementType type, void* element);
/// A new profile element object set from the entered values (a point keeps no length).
void* new_vertical_element(georoad_VertElementType type, double station, double elevation,
                           double length);
/// The entered values of a profile element object.
void read_vertical_element(georoad_VertElementType type, void* element, double& station,
                           double& elevation, double& length);

} // namespace qv5::detail

#endif // QV5_ROAD_ROAD_STORAGE_H
