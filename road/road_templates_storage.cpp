#include "road/road_storage.h"

#include "qv5/geotemplate.h"

#include <new>

namespace qv5::detail {

CGeoTemplate* copy_templates(const CGeoTemplate* templates, int count, bool& ok) {
    ok = true;
    if (count <= 0 || templates == nullptr) {
        return nullptr;
    }
    auto* copy = new (std::nothrow) CGeoTemplate[count];
    if (copy == nullptr) {
        ok = false;
        return nullptr;
    }
    for (int i = 0; i < count; ++i) {
        copy[i] = templates[i];
    }
    return copy;
}

void free_templates(CGeoTemplate* templates) {
    delete[] templates;
}

} // namespace qv5::detail
