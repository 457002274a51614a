/// @file geomatrix.h
/// The small dense matrix with which the site calibration solves its least-squares problems.
#ifndef QV5_GEOMATRIX_H
#define QV5_GEOMATRIX_H

#include "qv5/export.h"

/// A dense matrix of doubles stored row by row: element (r, c) lives at index c + columns * r,
/// zero-based.
///
/// Every operation that produces a new matrix (transpose, products, sum, scaling, inversion)
/// builds its result in a new buffer and then takes it over, so the element buffer is replaced
/// on each of them.
///
/// Safety rules of this implementation:
/// - Copy construction copies the elements: each matrix owns its own buffer.
/// - Element access is by the row-major index; an index whose position falls outside the
///   buffer reads 0.0 and writes nothing. Products and sums whose orders do not match read
///   their operands by the same rule, so a missing row of the right-hand operand counts as
///   zeros.
/// - Orders that are negative or too large to allocate, and any allocation that fails, leave an
///   empty matrix (0 x 0); check RowOrder() after sizing when memory may be short. Invert
///   instead returns 0 and leaves the matrix as it was.
class QV5_API CGeoMatrix {
public:
    /// An empty matrix: no elements, 0 rows, 0 columns.
    CGeoMatrix();
    /// A rows x cols matrix of zeros.
    CGeoMatrix(int rows, int cols);
    /// A copy with its own element buffer.
    CGeoMatrix(CGeoMatrix const& other);
    virtual ~CGeoMatrix();

    /// Number of rows.
    int RowOrder() const;
    /// Number of columns.
    int ColOrder() const;

    /// Resizes to rows x cols and sets every element to 0.0; the contents are never preserved.
    void SetOrder(int rows, int cols);
    /// Sets every element to 0.0.
    void SetZero();

    /// Element (row, col); 0.0 when its position falls outside the buffer.
    double Get(int row, int col) const {
        const long long index = Index(row, col);
        return index >= 0 ? m_data[index] : 0.0;
    }
    /// Writes element (row, col); nothing happens when its position falls outside the buffer.
    void Set(int row, int col, double value) {
        const long long index = Index(row, col);
        if (index >= 0) {
            m_data[index] = value;
        }
    }

    /// Replaces the matrix by its transpose (the orders swap).
    void Transpose();
    /// Replaces a square matrix by its inverse (Gauss-Jordan elimination with partial pivoting;
    /// only an exactly zero pivot counts as singular, so a nearly singular matrix is inverted).
    /// An empty matrix inverts to itself.
    /// @return 1 on success; 0 for a matrix that is not square, singular, or when memory runs
    /// out, the matrix then being left as it was
    int Invert();

    /// this := this x m. The result has this matrix's rows and m's columns; element (i, j) is
    /// accumulated from 0.0 over ascending k of this(i, k) * m(k, j).
    CGeoMatrix& operator*=(CGeoMatrix const& m);
    /// this := this + m. The result has this matrix's rows and m's columns; element (i, j) is
    /// m(i, j) + this(i, j) for columns j below this matrix's column count, 0.0 beyond.
    CGeoMatrix& operator+=(CGeoMatrix const& m);
    /// Multiplies every element by s.
    CGeoMatrix& operator*=(double s);
    /// Takes m's orders and copies its elements.
    CGeoMatrix& operator=(CGeoMatrix const& m);

private:
    long long Index(int row, int col) const {
        const long long index = static_cast<long long>(col) + static_cast<long long>(m_cols) * row;
        return index >= 0 && index < static_cast<long long>(m_rows) * m_cols ? index : -1;
    }
    void Adopt(double* data, int rows, int cols);
    /// Builds a rows x cols result (zeroed, then filled by `fill`) and takes it over.
    template <class Fill>
    void Replace(int rows, int cols, Fill fill);

    double* m_data;
    int m_rows;
    int m_cols;
};

#endif // QV5_GEOMATRIX_H
