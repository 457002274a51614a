// CGeoMatrix: sizing, element access, products, sums, scaling, transpose and Gauss-Jordan
// inversion. Expected values are worked by hand (small integer matrices whose inverses are
// exact fractions).
#include "qv5/geomatrix.h"

#include <gtest/gtest.h>

#include <cmath>
#include <initializer_list>
#include <vector>

namespace {

CGeoMatrix make(int rows, int cols, std::initializer_list<double> values) {
    CGeoMatrix m(rows, cols);
    int i = 0;
    for (double v : values) {
        m.Set(i / cols, i % cols, v);
        ++i;
    }
    return m;
}

void expect_elements(const CGeoMatrix& m, int rows, int cols, std::initializer_list<double> values,
                     double tolerance = 0.0) {
    ASSERT_EQ(m.RowOrder(), rows);
    ASSERT_EQ(m.ColOrder(), cols);
    int i = 0;
    for (double v : values) {
        EXPECT_NEAR(m.Get(i / cols, i % cols), v, tolerance) << "element " << i;
        ++i;
    }
}

TEST(Matrix, DefaultIsEmpty) {
    CGeoMatrix m;
    EXPECT_EQ(m.RowOrder(), 0);
    EXPECT_EQ(m.ColOrder(), 0);
}

TEST(Matrix, SizedMatrixStartsAtZero) {
    CGeoMatrix m(2, 3);
    expect_elements(m, 2, 3, {0, 0, 0, 0, 0, 0});
}

TEST(Matrix, ElementsAreStoredRowByRow) {
    CGeoMatrix m(2, 3);
    m.Set(1, 0, 7.0);
    // Row-major: (1, 0) is index 0 + 3 * 1 = 3, which (0, 3) also names.
    EXPECT_EQ(m.Get(0, 3), 7.0);
    m.Set(0, 4, 9.0);
    EXPECT_EQ(m.Get(1, 1), 9.0);
}

TEST(Matrix, PositionsOutsideTheBufferReadZeroAndIgnoreWrites) {
    CGeoMatrix m = make(2, 2, {1, 2, 3, 4});
    EXPECT_EQ(m.Get(2, 0), 0.0);
    EXPECT_EQ(m.Get(-1, 0), 0.0);
    EXPECT_EQ(m.Get(0, -1), 0.0);
    m.Set(5, 5, 99.0);
    m.Set(-1, -1, 99.0);
    expect_elements(m, 2, 2, {1, 2, 3, 4});
    CGeoMatrix empty;
    EXPECT_EQ(empty.Get(0, 0), 0.0);
    empty.Set(0, 0, 1.0);
    EXPECT_EQ(empty.RowOrder(), 0);
}

TEST(Matrix, SetOrderZeroesWhateverWasThere) {
    CGeoMatrix m = make(2, 2, {1, 2, 3, 4});
    m.SetOrder(3, 1);
    expect_elements(m, 3, 1, {0, 0, 0});
    m.SetOrder(2, 2);
    expect_elements(m, 2, 2, {0, 0, 0, 0});
}

TEST(Matrix, NegativeOrHugeOrdersGiveAnEmptyMatrix) {
    CGeoMatrix negative(-1, 3);
    EXPECT_EQ(negative.RowOrder(), 0);
    EXPECT_EQ(negative.ColOrder(), 0);
    CGeoMatrix huge(2000000000, 2000000000);
    EXPECT_EQ(huge.RowOrder(), 0);
    EXPECT_EQ(huge.ColOrder(), 0);
}

TEST(Matrix, SetZeroClearsEveryElement) {
    CGeoMatrix m = make(2, 2, {1, 2, 3, 4});
    m.SetZero();
    expect_elements(m, 2, 2, {0, 0, 0, 0});
    CGeoMatrix empty;
    empty.SetZero();
    EXPECT_EQ(empty.RowOrder(), 0);
}

TEST(Matrix, CopyConstructionCopiesTheElements) {
    CGeoMatrix a = make(2, 2, {1, 2, 3, 4});
    {
        CGeoMatrix b(a);
        b.Set(0, 0, 10.0);
        expect_elements(b, 2, 2, {10, 2, 3, 4});
    } // b's buffer is its own: freeing it leaves a intact
    expect_elements(a, 2, 2, {1, 2, 3, 4});
}

TEST(Matrix, AssignmentTakesOrdersAndElements) {
    CGeoMatrix a = make(1, 3, {1, 2, 3});
    CGeoMatrix b(4, 4);
    b = a;
    expect_elements(b, 1, 3, {1, 2, 3});
    CGeoMatrix& same = b;
    b = same; // self-assignment keeps the matrix
    expect_elements(b, 1, 3, {1, 2, 3});
}

TEST(Matrix, TransposeSwapsOrders) {
    CGeoMatrix m = make(2, 3, {1, 2, 3, 4, 5, 6});
    m.Transpose();
    expect_elements(m, 3, 2, {1, 4, 2, 5, 3, 6});
}

TEST(Matrix, ProductOfThreeByTwoAndTwoByFourIsThreeByFour) {
    CGeoMatrix a = make(3, 2, {1, 2, 3, 4, 5, 6});
    CGeoMatrix b = make(2, 4, {1, 0, 2, -1, 0, 1, 3, 1});
    a *= b;
    // Row i of the product: a(i,0) * b row 0 + a(i,1) * b row 1.
    expect_elements(a, 3, 4, {1, 2, 8, 1, 3, 4, 18, 1, 5, 6, 28, 1});
}

TEST(Matrix, ProductWithItselfUsesTheOldElements) {
    CGeoMatrix a = make(2, 2, {1, 2, 3, 4});
    a *= a;
    expect_elements(a, 2, 2, {7, 10, 15, 22});
}

TEST(Matrix, ProductWithMissingRowsCountsThemAsZero) {
    CGeoMatrix a = make(1, 3, {1, 2, 3});
    CGeoMatrix b = make(2, 1, {10, 20}); // a third row would be needed
    a *= b;
    expect_elements(a, 1, 1, {50});
}

TEST(Matrix, SumAddsElementByElement) {
    CGeoMatrix a = make(2, 2, {1, 2, 3, 4});
    CGeoMatrix b = make(2, 2, {10, 20, 30, 40});
    a += b;
    expect_elements(a, 2, 2, {11, 22, 33, 44});
}

TEST(Matrix, SumTakesTheRightOperandsColumnsAndLeavesExtraColumnsZero) {
    CGeoMatrix a = make(2, 1, {1, 2});
    CGeoMatrix b = make(2, 2, {10, 20, 30, 40});
    a += b;
    expect_elements(a, 2, 2, {11, 0, 32, 0});
}

TEST(Matrix, SumWithMissingRowsCountsThemAsZero) {
    CGeoMatrix a = make(2, 1, {1, 2});
    CGeoMatrix b = make(1, 1, {10});
    a += b;
    expect_elements(a, 2, 1, {11, 2});
}

TEST(Matrix, ScalingMultipliesEveryElement) {
    CGeoMatrix a = make(2, 2, {1, -2, 3, 0.5});
    a *= -2.0;
    expect_elements(a, 2, 2, {-2, 4, -6, -1});
}

TEST(MatrixInvert, EmptyMatrixInvertsToItself) {
    CGeoMatrix m;
    EXPECT_EQ(m.Invert(), 1);
    EXPECT_EQ(m.RowOrder(), 0);
    EXPECT_EQ(m.ColOrder(), 0);
}

TEST(MatrixInvert, NonSquareFailsAndLeavesTheMatrix) {
    CGeoMatrix m = make(2, 3, {1, 2, 3, 4, 5, 6});
    EXPECT_EQ(m.Invert(), 0);
    expect_elements(m, 2, 3, {1, 2, 3, 4, 5, 6});
}

TEST(MatrixInvert, SwapMatrixInvertsToItself) {
    CGeoMatrix m = make(2, 2, {0, 1, 1, 0});
    EXPECT_EQ(m.Invert(), 1);
    expect_elements(m, 2, 2, {0, 1, 1, 0});
}

TEST(MatrixInvert, TwoByTwo) {
    // inverse of [[4, 7], [2, 6]] is [[0.6, -0.7], [-0.2, 0.4]] (determinant 10).
    CGeoMatrix m = make(2, 2, {4, 7, 2, 6});
    EXPECT_EQ(m.Invert(), 1);
    expect_elements(m, 2, 2, {0.6, -0.7, -0.2, 0.4}, 1e-15);
}

TEST(MatrixInvert, ThreeByThreeNeedingPivoting) {
    // [[0, 2, 1], [1, 1, 0], [3, 0, 1]]: determinant 0(1) - 2(1) + 1(-3) = -5; adjugate / det
    // gives [[-0.2, 0.4, 0.2], [0.2, 0.6, -0.2], [0.6, -1.2, 0.4]].
    CGeoMatrix m = make(3, 3, {0, 2, 1, 1, 1, 0, 3, 0, 1});
    EXPECT_EQ(m.Invert(), 1);
    expect_elements(m, 3, 3, {-0.2, 0.4, 0.2, 0.2, 0.6, -0.2, 0.6, -1.2, 0.4}, 1e-15);
}

TEST(MatrixInvert, ExactlySingularFailsAndLeavesTheMatrix) {
    // Second row twice the first: the second pivot becomes exactly 0.
    CGeoMatrix m = make(2, 2, {1, 2, 2, 4});
    EXPECT_EQ(m.Invert(), 0);
    expect_elements(m, 2, 2, {1, 2, 2, 4});
    CGeoMatrix zero(3, 3);
    EXPECT_EQ(zero.Invert(), 0);
    expect_elements(zero, 3, 3, {0, 0, 0, 0, 0, 0, 0, 0, 0});
}

TEST(MatrixInvert, NearlySingularIsInvertedWithoutComplaint) {
    // Determinant 1e-12: no tolerance stops it. Inverse = [[1 + 1e12... ]] is huge but exact
    // enough that the product with the matrix is the identity.
    const double d = 1e-12;
    CGeoMatrix m = make(2, 2, {1, 1, 1, 1 + d});
    CGeoMatrix original(m);
    EXPECT_EQ(m.Invert(), 1);
    EXPECT_GT(std::fabs(m.Get(0, 0)), 1e11);
    original *= m;
    expect_elements(original, 2, 2, {1, 0, 0, 1}, 1e-3);
}

TEST(MatrixInvert, TiesKeepTheUpperRowAsPivot) {
    // Column 0 holds 3 and -3: equal magnitudes, so row 0 stays the pivot. The expected bits
    // come from a plain Python transcription of the elimination; choosing row 1 on the tie
    // would change the last bits of elements (0, 0), (1, 1) and (2, 1).
    CGeoMatrix m = make(3, 3, {3, 3, 2, -3, 7, 2, 1, 2, 0.7});
    ASSERT_EQ(m.Invert(), 1);
    EXPECT_EQ(m.Get(0, 0), -0x1.4f2094f2094ecp-4);
    EXPECT_EQ(m.Get(0, 1), -0x1.61bed61bed61cp-3);
    EXPECT_EQ(m.Get(0, 2), 0x1.745d1745d1744p-1);
    EXPECT_EQ(m.Get(1, 0), -0x1.7dac37dac37dcp-2);
    EXPECT_EQ(m.Get(1, 1), -0x1.29e4129e41298p-7);
    EXPECT_EQ(m.Get(1, 2), 0x1.1745d1745d174p+0);
    EXPECT_EQ(m.Get(2, 0), 0x1.2e8ba2e8ba2e9p+0);
    EXPECT_EQ(m.Get(2, 1), 0x1.1745d1745d174p-2);
    EXPECT_EQ(m.Get(2, 2), -0x1.5d1745d1745d1p+1);
}

TEST(MatrixInvert, LargestMagnitudeBecomesThePivot) {
    // With partial pivoting the 1e-20 entry is never used as a pivot, so the result is exact;
    // without it the elimination would lose the 1 entirely.
    CGeoMatrix m = make(2, 2, {1e-20, 1, 1, 1});
    EXPECT_EQ(m.Invert(), 1);
    // Exact inverse: 1 / (1e-20 - 1) * [[1, -1], [-1, 1e-20]].
    const double k = 1.0 / (1e-20 - 1.0);
    expect_elements(m, 2, 2, {k, -k, -k, k * 1e-20}, 1e-15);
}

TEST(MatrixInvert, InverseTimesMatrixIsIdentity) {
    CGeoMatrix m = make(4, 4, {4, 1, 0, 2, 1, 5, 1, 0, 0, 1, 6, 1, 2, 0, 1, 7});
    CGeoMatrix inverse(m);
    ASSERT_EQ(inverse.Invert(), 1);
    inverse *= m;
    for (int r = 0; r < 4; ++r) {
        for (int c = 0; c < 4; ++c) {
            EXPECT_NEAR(inverse.Get(r, c), r == c ? 1.0 : 0.0, 1e-15);
        }
    }
}

} // namespace
