/// @file geoarray.h
/// The growable array held by value that point sets build on.
#ifndef QV5_GEOARRAY_H
#define QV5_GEOARRAY_H

#include <algorithm>
#include <cstddef>
#include <new>
#include <utility>

namespace qv5 {

/// A growable array of elements held by value, with the ordinary indexed interface.
///
/// Growth: when a new size exceeds the capacity, the capacity becomes the larger of the new size
/// and the old capacity plus the grow step; the step is the one given to SetSize or, when that is
/// 0 (automatic), the element count / 8 clamped to [4, 1024]. The first allocation of an empty
/// array is exactly the size asked for. Shrinking keeps the block; a size of 0 frees it.
///
/// Bad requests never crash: a negative size, an out-of-range RemoveAt or an allocation that
/// fails leaves the array unchanged (Add then returns -1), and an out-of-range index reads and
/// writes a spare default element that is reset on every such access.
template <class T>
class GrowableArray {
public:
    GrowableArray() = default;
    GrowableArray(const GrowableArray& other) { CopyElements(other); }
    GrowableArray& operator=(const GrowableArray& other) {
        if (this != &other) {
            CopyElements(other);
        }
        return *this;
    }
    virtual ~GrowableArray() { SetSize(0); }

    /// Number of elements.
    int GetSize() const { return m_size; }
    int GetCount() const { return m_size; }
    int GetUpperBound() const { return m_size - 1; }
    bool IsEmpty() const { return m_size == 0; }
    /// Allocated capacity in elements.
    int GetCapacity() const { return m_capacity; }
    /// Grow step; 0 means automatic.
    int GetGrowBy() const { return m_growBy; }

    /// Resizes the array: new slots are default-constructed, surplus elements destroyed.
    /// @param growBy a non-negative value becomes the grow step (0 = automatic)
    void SetSize(int newSize, int growBy = -1) {
        if (growBy >= 0) {
            m_growBy = growBy;
        }
        if (newSize < 0) {
            return;
        }
        if (newSize == 0) {
            DestroyRange(0, m_size);
            ::operator delete(static_cast<void*>(m_data));
            m_data = nullptr;
            m_size = 0;
            m_capacity = 0;
            return;
        }
        if (m_data == nullptr) {
            T* block = Allocate(newSize);
            if (block == nullptr) {
                return;
            }
            m_data = block;
            m_capacity = newSize;
            ConstructRange(0, newSize);
            m_size = newSize;
            return;
        }
        if (newSize <= m_capacity) {
            if (newSize > m_size) {
                ConstructRange(m_size, newSize);
            } else {
                DestroyRange(newSize, m_size);
            }
            m_size = newSize;
            return;
        }
        Grow(newSize);
    }

    const T& GetAt(int index) const { return InRange(index) ? m_data[index] : Spare(); }
    T& ElementAt(int index) { return InRange(index) ? m_data[index] : Spare(); }
    void SetAt(int index, const T& value) {
        if (InRange(index)) {
            m_data[index] = value;
        }
    }
    T& operator[](int index) { return ElementAt(index); }
    const T& operator[](int index) const { return GetAt(index); }
    T* GetData() { return m_data; }
    const T* GetData() const { return m_data; }

    /// Appends a copy of an element. @return its index, or -1 if the array could not grow
    int Add(const T& value) {
        T copy(value); // the value may live in this array's own block
        const int index = m_size;
        if (index == kMaxSize) {
            return -1;
        }
        SetSize(index + 1);
        if (m_size != index + 1) {
            return -1;
        }
        m_data[index] = std::move(copy);
        return index;
    }

    /// Removes `count` elements from `index`, moving the tail down. Out-of-range requests are
    /// ignored.
    void RemoveAt(int index, int count = 1) {
        if (index < 0 || count < 0 || static_cast<long long>(index) + count > m_size) {
            return;
        }
        std::move(m_data + index + count, m_data + m_size, m_data + index);
        DestroyRange(m_size - count, m_size);
        m_size -= count;
    }

    /// Removes every element and frees the block.
    void RemoveAll() { SetSize(0); }

private:
    static constexpr int kMaxSize = 0x7FFFFFFF;
    static constexpr int kMinAutomaticStep = 4;
    static constexpr int kMaxAutomaticStep = 1024;

    bool InRange(int index) const { return index >= 0 && index < m_size; }
    T& Spare() const {
        m_spare = T();
        return m_spare;
    }
    static T* Allocate(long long count) {
        if (count <= 0 || static_cast<unsigned long long>(count) > (~std::size_t{0}) / sizeof(T)) {
            return nullptr;
        }
        return static_cast<T*>(
            ::operator new(static_cast<std::size_t>(count) * sizeof(T), std::nothrow));
    }
    void ConstructRange(int from, int to) {
        for (int i = from; i < to; ++i) {
            ::new (static_cast<void*>(m_data + i)) T();
        }
    }
    void DestroyRange(int from, int to) {
        for (int i = from; i < to; ++i) {
            m_data[i].~T();
        }
    }
    void Grow(int newSize) {
        int step = m_growBy;
        if (step == 0) {
            step = std::clamp(m_size / 8, kMinAutomaticStep, kMaxAutomaticStep);
        }
        const long long wanted =
            std::max<long long>(newSize, static_cast<long long>(m_capacity) + step);
        const int newCapacity = static_cast<int>(std::min<long long>(wanted, kMaxSize));
        T* block = Allocate(newCapacity);
        if (block == nullptr) {
            return;
        }
        for (int i = 0; i < m_size; ++i) {
            ::new (static_cast<void*>(block + i)) T(std::move(m_data[i]));
            m_data[i].~T();
        }
        ::operator delete(static_cast<void*>(m_data));
        m_data = block;
        m_capacity = newCapacity;
        ConstructRange(m_size, newSize);
        m_size = newSize;
    }
    void CopyElements(const GrowableArray& other) {
        SetSize(other.m_size);
        if (m_size != other.m_size) {
            return;
        }
        for (int i = 0; i < m_size; ++i) {
            m_data[i] = other.m_data[i];
        }
    }

    T* m_data = nullptr;
    int m_size = 0;
    int m_capacity = 0;
    int m_growBy = 0;
    mutable T m_spare{};
};

} // namespace qv5

#endif // QV5_GEOARRAY_H
