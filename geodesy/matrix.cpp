// CGeoMatrix: a row-major dense matrix on the C heap.
#include "qv5/geomatrix.h"

#include "geodesy/gauss_jordan.h"
#include "geodesy/heap.h"

#include <cstddef>
#include <cstdint>
#include <cstring>

using namespace qv5::detail;

namespace {

/// Element count of a rows x cols matrix, or -1 when the orders are negative or the buffer
/// could not be addressed.
long long element_count(int rows, int cols) {
    if (rows < 0 || cols < 0) {
        return -1;
    }
    const long long count = static_cast<long long>(rows) * cols;
    if (static_cast<unsigned long long>(count) > SIZE_MAX / sizeof(double)) {
        return -1;
    }
    return count;
}

/// A zeroed buffer of `count` doubles; null for 0 elements and when memory runs out (`ok` tells
/// the two apart).
double* zeroed_buffer(long long count, bool& ok) {
    ok = true;
    if (count <= 0) {
        return nullptr;
    }
    double* data = heap_allocate_array<double>(static_cast<std::size_t>(count));
    if (data == nullptr) {
        ok = false;
        return nullptr;
    }
    for (long long i = 0; i < count; ++i) {
        data[i] = 0.0;
    }
    return data;
}

} // namespace

CGeoMatrix::CGeoMatrix() : m_data(nullptr), m_rows(0), m_cols(0) {}

CGeoMatrix::CGeoMatrix(int rows, int cols) : CGeoMatrix() {
    SetOrder(rows, cols);
}

CGeoMatrix::CGeoMatrix(CGeoMatrix const& other) : CGeoMatrix() {
    *this = other;
}

CGeoMatrix::~CGeoMatrix() {
    heap_release(m_data);
    m_data = nullptr;
}

int CGeoMatrix::RowOrder() const {
    return m_rows;
}

int CGeoMatrix::ColOrder() const {
    return m_cols;
}

void CGeoMatrix::Adopt(double* data, int rows, int cols) {
    heap_release(m_data);
    m_data = data;
    m_rows = rows;
    m_cols = cols;
}

template <class Fill>
void CGeoMatrix::Replace(int rows, int cols, Fill fill) {
    bool ok = false;
    double* result = zeroed_buffer(element_count(rows, cols), ok);
    if (!ok) {
        Adopt(nullptr, 0, 0); // out of memory: an empty matrix says so
        return;
    }
    fill(result);
    Adopt(result, rows, cols);
}

void CGeoMatrix::SetOrder(int rows, int cols) {
    heap_release(m_data);
    m_data = nullptr;
    m_rows = 0;
    m_cols = 0;
    bool ok = false;
    double* data = zeroed_buffer(element_count(rows, cols), ok);
    if (ok && element_count(rows, cols) >= 0) {
        Adopt(data, rows, cols);
    }
}

void CGeoMatrix::SetZero() {
    for (long long i = 0; i < static_cast<long long>(m_rows) * m_cols; ++i) {
        m_data[i] = 0.0;
    }
}

CGeoMatrix& CGeoMatrix::operator=(CGeoMatrix const& m) {
    if (this == &m) {
        return *this;
    }
    SetOrder(m.m_rows, m.m_cols);
    if (m_rows == m.m_rows && m_cols == m.m_cols && m_data != nullptr) {
        std::memcpy(m_data, m.m_data,
                    static_cast<std::size_t>(m_rows) * static_cast<std::size_t>(m_cols) *
                        sizeof(double));
    }
    return *this;
}

void CGeoMatrix::Transpose() {
    const int rows = m_rows;
    const int cols = m_cols;
    Replace(cols, rows, [&](double* result) {
        for (int r = 0; r < rows; ++r) {
            for (int c = 0; c < cols; ++c) {
                result[r + rows * c] = Get(r, c);
            }
        }
    });
}

CGeoMatrix& CGeoMatrix::operator*=(CGeoMatrix const& m) {
    const int rows = m_rows;
    const int cols = m.m_cols;
    Replace(rows, cols, [&](double* result) {
        for (int i = 0; i < rows; ++i) {
            for (int j = 0; j < cols; ++j) {
                double sum = 0.0;
                for (int k = 0; k < m_cols; ++k) {
                    sum += Get(i, k) * m.Get(k, j);
                }
                result[j + cols * i] = sum;
            }
        }
    });
    return *this;
}

CGeoMatrix& CGeoMatrix::operator+=(CGeoMatrix const& m) {
    const int rows = m_rows;
    const int cols = m.m_cols;
    Replace(rows, cols, [&](double* result) {
        for (int i = 0; i < rows; ++i) {
            for (int j = 0; j < cols && j < m_cols; ++j) {
                result[j + cols * i] = m.Get(i, j) + Get(i, j);
            }
        }
    });
    return *this;
}

CGeoMatrix& CGeoMatrix::operator*=(double s) {
    const long long count = static_cast<long long>(m_rows) * m_cols;
    Replace(m_rows, m_cols, [&](double* result) {
        for (long long i = 0; i < count; ++i) {
            result[i] = m_data[i] * s;
        }
    });
    return *this;
}

int CGeoMatrix::Invert() {
    if (m_rows != m_cols) {
        return 0;
    }
    const int n = m_rows;
    if (n == 0) {
        Adopt(nullptr, 0, 0);
        return 1;
    }
    const std::size_t count = static_cast<std::size_t>(n) * static_cast<std::size_t>(n);
    double* work = heap_allocate_array<double>(count);
    double* inverse = heap_allocate_array<double>(count);
    if (work == nullptr || inverse == nullptr) {
        heap_release(work);
        heap_release(inverse);
        return 0;
    }
    std::memcpy(work, m_data, count * sizeof(double));
    const bool ok = gauss_jordan_invert(n, work, inverse);
    heap_release(work);
    if (!ok) {
        heap_release(inverse);
        return 0;
    }
    Adopt(inverse, n, n);
    return 1;
}
