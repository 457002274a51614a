// The C heap as the geodesy classes use it. Internal header; never installed.
//
// Every block and every object that the matrix and the calibration allocate for themselves goes
// through these three functions, so that an allocation failure is always an ordinary null result
// (never an exception) and so that tests can make the heap fail at a chosen allocation: heap.cpp
// holds nothing else, and a test program that defines these functions itself replaces it.
#ifndef QV5_GEODESY_HEAP_H
#define QV5_GEODESY_HEAP_H

#include <cstddef>
#include <new>
#include <utility>

namespace qv5::detail {

/// malloc: a block of `bytes` bytes, or null when there is no memory.
void* heap_allocate(std::size_t bytes) noexcept;
/// realloc: the block resized (moved if need be), or null with `block` left as it was.
void* heap_reallocate(void* block, std::size_t bytes) noexcept;
/// free; a null block is ignored.
void heap_release(void* block) noexcept;

/// A new T on the heap, or null when there is no memory. T's constructor must not throw.
template <class T, class... Args>
T* heap_create(Args&&... args) noexcept {
    void* block = heap_allocate(sizeof(T));
    if (block == nullptr) {
        return nullptr;
    }
    return new (block) T(std::forward<Args>(args)...);
}

/// Destroys an object made by heap_create through its (virtual) destructor and frees it.
template <class T>
void heap_destroy(T*& object) noexcept {
    if (object != nullptr) {
        object->~T();
        heap_release(object);
        object = nullptr;
    }
}

/// An array of `count` elements of a trivially copyable T, or null (also for a count that does
/// not fit in memory at all).
template <class T>
T* heap_allocate_array(std::size_t count) noexcept {
    if (count > static_cast<std::size_t>(-1) / sizeof(T)) {
        return nullptr;
    }
    return static_cast<T*>(heap_allocate(count * sizeof(T)));
}

} // namespace qv5::detail

#endif // QV5_GEODESY_HEAP_H
