// Gauss-Jordan inversion shared by CGeoMatrix, the datum transformation and the calibration.
#include "geodesy/gauss_jordan.h"

#include <cmath>
#include <utility>

namespace qv5::detail {

bool gauss_jordan_invert(int n, double* work, double* inverse) {
    const auto at = [n](double* m, int row, int col) -> double& { return m[col + n * row]; };
    for (int r = 0; r < n; ++r) {
        for (int c = 0; c < n; ++c) {
            at(inverse, r, c) = r == c ? 1.0 : 0.0;
        }
    }
    // Forward phase: reduce to upper triangular with a unit diagonal.
    for (int i = 0; i < n; ++i) {
        int pivot = i;
        for (int j = i + 1; j < n; ++j) {
            if (std::fabs(at(work, j, i)) > std::fabs(at(work, pivot, i))) {
                pivot = j;
            }
        }
        for (int k = 0; k < n; ++k) {
            std::swap(at(work, i, k), at(work, pivot, k));
            std::swap(at(inverse, i, k), at(inverse, pivot, k));
        }
        if (at(work, i, i) == 0.0) {
            return false; // singular: no tolerance, only an exact zero
        }
        const double r = 1.0 / at(work, i, i);
        for (int k = i; k < n; ++k) {
            at(work, i, k) *= r;
        }
        for (int k = 0; k < n; ++k) {
            at(inverse, i, k) *= r;
        }
        for (int j = i + 1; j < n; ++j) {
            const double f = -at(work, j, i);
            for (int k = i; k < n; ++k) {
                at(work, j, k) = at(work, i, k) * f + at(work, j, k);
            }
            for (int k = 0; k < n; ++k) {
                at(inverse, j, k) = at(inverse, i, k) * f + at(inverse, j, k);
            }
        }
    }
    // Backward phase: clear the entries above the diagonal, last column first.
    for (int i = n - 1; i >= 1; --i) {
        for (int j = i - 1; j >= 0; --j) {
            const double f = -at(work, j, i);
            for (int k = n - 1; k >= i; --k) {
                at(work, j, k) = at(work, i, k) * f + at(work, j, k);
            }
            for (int k = n - 1; k >= 0; --k) {
                at(inverse, j, k) = at(inverse, i, k) * f + at(inverse, j, k);
            }
        }
    }
    return true;
}

} // namespace qv5::detail
