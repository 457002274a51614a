// The geodesy classes when the C heap runs out: every allocation failure is reported or
// absorbed, never a crash, an exception or a leak.
//
// This program supplies the library's C heap itself (the three functions of geodesy/heap.h, so
// the library's own heap.cpp is not linked in) and makes the n-th allocation from now fail.
// Every count is tried in turn, so every allocation site fails once.
#include "geodesy/heap.h"
#include "qv5/geo7ptrans.h"
#include "qv5/geomatrix.h"
#include "qv5/geotrans.h"

#include <gtest/gtest.h>

#include <atomic>
#include <cstdlib>

namespace {

/// Allocations that still succeed; negative: all do.
std::atomic<long> g_allocations_left{-1};

bool may_allocate() {
    long left = g_allocations_left.load();
    while (left > 0) {
        if (g_allocations_left.compare_exchange_weak(left, left - 1)) {
            return true;
        }
    }
    return left < 0;
}

/// Makes the allocation after `succeeding` more fail (and every one after it), until
/// destroyed.
class FailingHeap {
public:
    explicit FailingHeap(long succeeding) { g_allocations_left = succeeding; }
    FailingHeap(const FailingHeap&) = delete;
    FailingHeap& operator=(const FailingHeap&) = delete;
    ~FailingHeap() { g_allocations_left = -1; }
};

} // namespace

namespace qv5::detail {

void* heap_allocate(std::size_t bytes) noexcept {
    return may_allocate() ? std::malloc(bytes) : nullptr;
}

void* heap_reallocate(void* block, std::size_t bytes) noexcept {
    return may_allocate() ? std::realloc(block, bytes) : nullptr;
}

void heap_release(void* block) noexcept {
    std::free(block);
}

} // namespace qv5::detail

namespace {

constexpr double kDeg = 0.017453292519943295;

geotrans_CalibrationPoint point(int i, std::uint32_t flags) {
    geotrans_CalibrationPoint p{};
    p.name[0] = static_cast<unsigned short>('A' + i);
    p.llh = geo_llh{(52.1 + 0.01 * i) * kDeg, (5.2 + 0.013 * (i % 3)) * kDeg, 40.0 + i};
    p.nee = geo_nee{1000.0 + 1111.0 * i, 2000.0 + 1445.0 * (i % 3), 2.0 + 0.5 * i};
    p.flags = flags;
    return p;
}

void add_points(CGeoTransformation& t, int count) {
    for (int i = 0; i < count; ++i) {
        geotrans_CalibrationPoint p = point(i, geotrans_UseHorizontal | geotrans_UseVertical);
        t.AddPoint(&p, nullptr);
    }
}

/// Enough allocations for any one change of a calibration of a few points.
constexpr long kEnough = 64;

TEST(OutOfMemory, AddPointReportsEveryFailedAllocation) {
    int failures = 0;
    for (long n = 0; n < kEnough; ++n) {
        CGeoTransformation t;
        add_points(t, 4);
        ASSERT_EQ(t.IsCalibrated(), 1);
        geotrans_CalibrationPoint extra = point(4, geotrans_UseHorizontal | geotrans_UseVertical);
        geotrans_Error error = geotrans_NoError;
        int result = 0;
        {
            FailingHeap heap(n);
            result = t.AddPoint(&extra, &error);
        }
        if (result == 0) {
            ++failures;
            EXPECT_EQ(error, geotrans_OutOfMemory) << n;
            if (t.NumberOfPoints() == 5) {
                // The point was stored but the recomputation failed: released, not calibrated.
                EXPECT_EQ(t.IsCalibrated(), 0) << n;
                EXPECT_EQ(t.ProjectionType(), CGeoStereographic::stereo_None);
                geo_nee out{1.0, 2.0, 3.0};
                t.Forward(extra.llh, out);
                EXPECT_EQ(out.north, 1.0) << "no projection is left";
            } else {
                // The block could not grow: the calibration is as it was.
                EXPECT_EQ(t.NumberOfPoints(), 4) << n;
                EXPECT_EQ(t.IsCalibrated(), 1) << n;
            }
            // With memory back, the next change recomputes in full.
            EXPECT_EQ(t.DeleteNthPoint(t.NumberOfPoints() - 1, &error), 1);
            EXPECT_EQ(t.IsCalibrated(), 1);
        } else {
            EXPECT_EQ(error, geotrans_NoError);
            EXPECT_EQ(t.IsCalibrated(), 1);
            break; // enough allocations: every site has failed once
        }
    }
    EXPECT_GT(failures, 8); // block, three lists, ellipsoid, projection, two arrays, solutions
}

TEST(OutOfMemory, RecomputationsOfEveryKindSurvive) {
    for (int points : {1, 2, 3}) {
        for (long n = 0; n < kEnough; ++n) {
            CGeoTransformation t;
            add_points(t, points - 1);
            geotrans_CalibrationPoint last = point(points - 1, geotrans_UseVertical);
            if (points == 1) {
                last.flags = geotrans_UseHorizontal;
            }
            geotrans_Error error = geotrans_NoError;
            int result = 0;
            {
                FailingHeap heap(n);
                result = t.AddPoint(&last, &error);
            }
            if (result == 1) {
                break;
            }
            EXPECT_EQ(error, geotrans_OutOfMemory);
            if (t.NumberOfPoints() == points) {
                EXPECT_EQ(t.IsCalibrated(), 0); // stored, but the recomputation failed
            }
        }
    }
}

TEST(OutOfMemory, CopyingACalibrationSurvives) {
    CGeoTransformation source;
    add_points(source, 4);
    for (long n = 0; n < kEnough; ++n) {
        FailingHeap heap(n);
        CGeoTransformation copy(source);
        CGeoTransformation assigned;
        assigned = source;
        EXPECT_LE(copy.NumberOfPoints(), 4);
    }
}

TEST(OutOfMemory, SeedPointOperationsSurvive) {
    CGeoTransformation t;
    add_points(t, 3);
    for (long n = 0; n < kEnough; ++n) {
        FailingHeap heap(n);
        t.SetSeedPoint(1, point(1, 0).llh);
        geotrans_CalibrationPoint out{};
        EXPECT_LE(t.GetSeedPoint(&out), 1);
    }
}

TEST(OutOfMemory, MatrixBecomesEmptyWhenItCannotBeSized) {
    FailingHeap heap(0);
    CGeoMatrix m(3, 3);
    EXPECT_EQ(m.RowOrder(), 0);
    EXPECT_EQ(m.ColOrder(), 0);
    m.Set(0, 0, 1.0);
    EXPECT_EQ(m.Get(0, 0), 0.0);
}

TEST(OutOfMemory, MatrixOperationsLeaveAnEmptyMatrix) {
    CGeoMatrix a(2, 2);
    a.Set(0, 0, 2.0);
    a.Set(1, 1, 4.0);
    CGeoMatrix b(a);
    {
        FailingHeap heap(0);
        a *= b;
    }
    EXPECT_EQ(a.RowOrder(), 0);
    CGeoMatrix c(b);
    {
        FailingHeap heap(0);
        c += b;
    }
    EXPECT_EQ(c.RowOrder(), 0);
    CGeoMatrix d(b);
    {
        FailingHeap heap(0);
        d *= 2.0;
    }
    EXPECT_EQ(d.RowOrder(), 0);
    CGeoMatrix e(b);
    {
        FailingHeap heap(0);
        e.Transpose();
    }
    EXPECT_EQ(e.RowOrder(), 0);
    CGeoMatrix f(3, 3);
    {
        FailingHeap heap(0);
        f = b;
    }
    EXPECT_EQ(f.RowOrder(), 0);
}

TEST(OutOfMemory, InversionFailsAndLeavesTheMatrix) {
    for (long n = 0; n < 2; ++n) {
        CGeoMatrix m(2, 2);
        m.Set(0, 0, 2.0);
        m.Set(1, 1, 4.0);
        {
            FailingHeap heap(n);
            EXPECT_EQ(m.Invert(), 0);
        }
        EXPECT_EQ(m.RowOrder(), 2);
        EXPECT_EQ(m.Get(0, 0), 2.0);
        EXPECT_EQ(m.Get(1, 1), 4.0);
    }
}

TEST(OutOfMemory, SevenParameterTransformationWithoutMatricesDoesNotCrash) {
    for (long n = 0; n < 4; ++n) {
        FailingHeap heap(n);
        CGeo7PTrans t;
        t.Set(geo_nee{0.0, 0.0, 0.0}, 0.01, 0.02, 0.03, 1.0, 2.0, 3.0, 1.0);
        geo_nee p{10.0, 20.0, 30.0};
        t.Transform(p);
        t.Untransform(p);
        geo_vector v{1.0, 2.0, 3.0};
        t.RotateVector(v);
        CGeo7PTrans copy(t);
        copy = t;
    }
}

} // namespace
