// The C heap behind the geodesy classes. This file holds these three functions and nothing else,
// so that a test program can supply its own (see heap.h).
#include "geodesy/heap.h"

#include <cstdlib>

namespace qv5::detail {

void* heap_allocate(std::size_t bytes) noexcept {
    return std::malloc(bytes);
}

void* heap_reallocate(void* block, std::size_t bytes) noexcept {
    return std::realloc(block, bytes);
}

void heap_release(void* block) noexcept {
    std::free(block);
}

} // namespace qv5::detail
