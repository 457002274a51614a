// Gauss-Jordan inversion of a small dense matrix. Internal header; never installed.
#ifndef QV5_GEODESY_GAUSS_JORDAN_H
#define QV5_GEODESY_GAUSS_JORDAN_H

namespace qv5::detail {

/// Inverts the n x n row-major matrix held in `work` by Gauss-Jordan elimination with partial
/// pivoting, writing the inverse into `inverse` (n x n, its contents on entry are ignored).
///
/// The elimination is the classic one, carried out in a fixed order so that every build gives the
/// same bits: for each column the pivot is the row with the largest magnitude at or below the
/// diagonal (a later row wins only when strictly larger, so ties keep the upper row); the pivot
/// row is swapped into place in both matrices (also when it is already there), scaled by one
/// reciprocal, and eliminated from the rows below; a backward sweep then clears the rows above.
/// Only an exactly zero pivot counts as singular: a nearly singular matrix is inverted.
///
/// @param work destroyed (it ends as the reduced matrix)
/// @return false when a pivot is exactly 0.0; `inverse` then holds partial work
bool gauss_jordan_invert(int n, double* work, double* inverse);

} // namespace qv5::detail

#endif // QV5_GEODESY_GAUSS_JORDAN_H
