// CGeo7PTrans: the written-out rotation matrix, shifts about an origin, the inverse, the
// eight-argument constructor's Z shift, copies, and many threads through one object.
//
// The general case is checked against a plain Python product Rz(z) Ry(y) Rx(x) of the three
// coordinate-frame rotations applied to p - origin, and against PROJ's exact Helmert
// transformation in the coordinate-frame convention (origin at 0).
#include "proj_reference.h"
#include "qv5/geo7ptrans.h"

#include <gtest/gtest.h>

#include <cmath>
#include <cstdio>
#include <memory>
#include <thread>
#include <vector>

namespace {

constexpr double kHalfPi = 1.5707963267948966;
/// Closed forms on coordinates of a few thousand metres, metres.
constexpr double kMetres = 1e-9;
/// Arc-seconds per radian, for PROJ's rotation parameters.
constexpr double kArcSecondsPerRadian = 206264.80624709636;

const geo_nee kOrigin{1000.0, 2000.0, 50.0}; // north, east, elevation

TEST(SevenParam, DefaultIsTheIdentity) {
    CGeo7PTrans t;
    geo_nee p{1234.5, -678.25, 9.75};
    t.Transform(p);
    EXPECT_EQ(p.north, 1234.5);
    EXPECT_EQ(p.east, -678.25);
    EXPECT_EQ(p.elev, 9.75);
    EXPECT_EQ(t.RotX(), 0.0);
    EXPECT_EQ(t.ShiftZ(), 0.0);
    EXPECT_EQ(t.Origin().north, 0.0);
}

TEST(SevenParam, WithoutRotationAndUnitScaleTheShiftsAreAdded) {
    CGeo7PTrans t;
    t.Set(kOrigin, 0.0, 0.0, 0.0, 1.5, -2.5, 0.75, 1.0);
    geo_nee p{1234.5, 2345.25, 60.0};
    t.Transform(p);
    EXPECT_NEAR(p.east, 2345.25 + 1.5, kMetres);
    EXPECT_NEAR(p.north, 1234.5 - 2.5, kMetres);
    EXPECT_NEAR(p.elev, 60.0 + 0.75, kMetres);
}

TEST(SevenParam, QuarterTurnAboutZMovesEastToSouth) {
    CGeo7PTrans t;
    t.Set(kOrigin, 0.0, 0.0, kHalfPi, 0.0, 0.0, 0.0, 1.0);
    geo_nee p{kOrigin.north, kOrigin.east + 1.0, kOrigin.elev};
    t.Transform(p);
    EXPECT_NEAR(p.north, kOrigin.north - 1.0, 1e-12);
    EXPECT_NEAR(p.east, kOrigin.east, 1e-12);
    EXPECT_NEAR(p.elev, kOrigin.elev, 1e-12);
}

TEST(SevenParam, AccessorsReturnWhatWasSet) {
    CGeo7PTrans t;
    t.Set(kOrigin, 0.01, -0.02, 0.03, 1.5, -2.5, 0.75, 1.00001);
    EXPECT_EQ(t.RotX(), 0.01);
    EXPECT_EQ(t.RotY(), -0.02);
    EXPECT_EQ(t.RotZ(), 0.03);
    EXPECT_EQ(t.ShiftX(), 1.5);
    EXPECT_EQ(t.ShiftY(), -2.5);
    EXPECT_EQ(t.ShiftZ(), 0.75);
    EXPECT_EQ(t.Origin().north, 1000.0);
    EXPECT_EQ(t.Origin().east, 2000.0);
    EXPECT_EQ(t.Origin().elev, 50.0);
}

TEST(SevenParam, GeneralTransformMatchesTheRotationProduct) {
    CGeo7PTrans t;
    t.Set(kOrigin, 0.01, -0.02, 0.03, 1.5, -2.5, 0.75, 1.00001);
    geo_nee p{1234.567, 2345.678, 61.25};
    t.Transform(p);
    // Python: M (p - origin) + T + origin with M = 1.00001 Rz(0.03) Ry(-0.02) Rx(0.01).
    EXPECT_NEAR(p.east, 2354.1738423578827, kMetres);
    EXPECT_NEAR(p.north, 1221.6923672395756, kMetres);
    EXPECT_NEAR(p.elev, 52.73894668108006, kMetres);
}

TEST(SevenParam, AgreesWithProjExactHelmertInTheCoordinateFrameConvention) {
    const double rx = 0.001;
    const double ry = -0.0015;
    const double rz = 0.002;
    const double scale = 1.0000025;
    char definition[300];
    std::snprintf(definition, sizeof definition,
                  "+proj=helmert +x=1.5 +y=-2.5 +z=0.75 +rx=%.17g +ry=%.17g +rz=%.17g +s=%.17g "
                  "+convention=coordinate_frame +exact",
                  rx * kArcSecondsPerRadian, ry * kArcSecondsPerRadian, rz * kArcSecondsPerRadian,
                  (scale - 1.0) * 1e6);
    qv5::test::ProjOperation helmert(definition);
    ASSERT_TRUE(helmert.ok());
    CGeo7PTrans t;
    t.Set(geo_nee{0.0, 0.0, 0.0}, rx, ry, rz, 1.5, -2.5, 0.75, scale);
    for (const geo_nee& start : {geo_nee{1200.0, 3400.0, 15.0}, geo_nee{-800.0, 50.0, -30.0}}) {
        geo_nee p = start;
        t.Transform(p);
        const PJ_COORD expected = helmert.forward(start.east, start.north, start.elev);
        // PROJ carries the scale as parts per million: 1e-12 relative on kilometres.
        EXPECT_NEAR(p.east, expected.xyz.x, 1e-8);
        EXPECT_NEAR(p.north, expected.xyz.y, 1e-8);
        EXPECT_NEAR(p.elev, expected.xyz.z, 1e-8);
    }
}

TEST(SevenParam, UntransformUndoesTransform) {
    CGeo7PTrans t;
    t.Set(kOrigin, 0.01, -0.02, 0.03, 1.5, -2.5, 0.75, 1.00001);
    const geo_nee start{1234.567, 2345.678, 61.25};
    geo_nee p = start;
    t.Transform(p);
    t.Untransform(p);
    EXPECT_NEAR(p.north, start.north, kMetres);
    EXPECT_NEAR(p.east, start.east, kMetres);
    EXPECT_NEAR(p.elev, start.elev, kMetres);
}

TEST(SevenParam, UntransformWithAZeroScaleAppliesTheMatrixAsItStands) {
    // A zero matrix has no inverse; applied as it stands it sends every point to the origin.
    CGeo7PTrans t;
    t.Set(kOrigin, 0.0, 0.0, 0.0, 1.0, 2.0, 3.0, 0.0);
    geo_nee p{5000.0, 6000.0, 70.0};
    t.Untransform(p);
    EXPECT_EQ(p.north, kOrigin.north);
    EXPECT_EQ(p.east, kOrigin.east);
    EXPECT_EQ(p.elev, kOrigin.elev);
}

TEST(SevenParam, PointsWithANullCoordinateAreLeftUntouched) {
    CGeo7PTrans t;
    t.Set(kOrigin, 0.01, -0.02, 0.03, 1.5, -2.5, 0.75, 1.00001);
    for (const geo_nee& start :
         {geo_nee{1.0, 2.0, GEO_NULL}, geo_nee{GEO_NULL, 2.0, 3.0}, geo_nee{1.0, GEO_NULL, 3.0}}) {
        geo_nee p = start;
        t.Transform(p);
        EXPECT_EQ(p.north, start.north);
        EXPECT_EQ(p.east, start.east);
        EXPECT_EQ(p.elev, start.elev);
        t.Untransform(p);
        EXPECT_EQ(p.north, start.north);
        EXPECT_EQ(p.east, start.east);
        EXPECT_EQ(p.elev, start.elev);
    }
}

TEST(SevenParam, EightArgumentConstructorTakesTheZShiftFromY) {
    CGeo7PTrans t(kOrigin, 0.0, 0.0, 0.0, 1.0, 2.0, 5.0, 1.0);
    EXPECT_EQ(t.ShiftY(), 2.0);
    EXPECT_EQ(t.ShiftZ(), 2.0);
    geo_nee p{1000.0, 2000.0, 50.0};
    t.Transform(p);
    EXPECT_EQ(p.elev, 52.0);
    EXPECT_EQ(p.east, 2001.0);
    EXPECT_EQ(p.north, 1002.0);
}

TEST(SevenParam, RotateVectorRotatesTheOffsetFromTheOriginWithoutShift) {
    CGeo7PTrans t;
    t.Set(kOrigin, 0.01, -0.02, 0.03, 1.5, -2.5, 0.75, 1.00001);
    geo_vector v{2345.678, 1234.567, 61.25}; // x east, y north, z up
    t.RotateVector(v);
    // Python: M (v - origin), no shift, origin not added back.
    EXPECT_NEAR(v.x, 352.6738423578826, kMetres);
    EXPECT_NEAR(v.y, 224.19236723957567, kMetres);
    EXPECT_NEAR(v.z, 1.9889466810800602, kMetres);
}

TEST(SevenParam, CopyHasItsOwnStateAndLock) {
    auto original = std::make_unique<CGeo7PTrans>();
    original->Set(kOrigin, 0.01, -0.02, 0.03, 1.5, -2.5, 0.75, 1.00001);
    CGeo7PTrans copy(*original);
    geo_nee a{1234.567, 2345.678, 61.25};
    geo_nee b = a;
    original->Transform(a);
    copy.Transform(b);
    EXPECT_EQ(a.north, b.north);
    EXPECT_EQ(a.east, b.east);
    EXPECT_EQ(a.elev, b.elev);
    original.reset(); // the copy's matrices are its own
    geo_nee c{1234.567, 2345.678, 61.25};
    copy.Transform(c);
    EXPECT_EQ(c.north, b.north);
    copy.Set(kOrigin, 0.0, 0.0, 0.0, 0.0, 0.0, 0.0, 1.0);
    EXPECT_EQ(copy.RotX(), 0.0);
}

TEST(SevenParam, AssignmentCopiesEverything) {
    CGeo7PTrans source;
    source.Set(kOrigin, 0.01, -0.02, 0.03, 1.5, -2.5, 0.75, 1.00001);
    CGeo7PTrans target;
    target = source;
    EXPECT_EQ(target.RotY(), -0.02);
    EXPECT_EQ(target.ShiftX(), 1.5);
    EXPECT_EQ(target.Origin().east, 2000.0);
    geo_nee a{1234.567, 2345.678, 61.25};
    geo_nee b = a;
    source.Transform(a);
    target.Transform(b);
    EXPECT_EQ(a.north, b.north);
    EXPECT_EQ(a.elev, b.elev);
    CGeo7PTrans& same = target;
    target = same; // self-assignment keeps everything
    EXPECT_EQ(target.RotZ(), 0.03);
}

TEST(SevenParamConcurrency, ManyThreadsThroughOneObjectGiveTheSingleThreadResults) {
    CGeo7PTrans shared;
    shared.Set(kOrigin, 0.01, -0.02, 0.03, 1.5, -2.5, 0.75, 1.00001);
    constexpr int kPoints = 2000;
    std::vector<geo_nee> inputs;
    for (int i = 0; i < kPoints; ++i) {
        inputs.push_back(geo_nee{1000.0 + 3.7 * i, 2000.0 - 1.3 * i, 50.0 + 0.01 * i});
    }
    std::vector<geo_nee> forward = inputs;
    std::vector<geo_nee> backward = inputs;
    for (int i = 0; i < kPoints; ++i) {
        shared.Transform(forward[i]);
        shared.Untransform(backward[i]);
    }

    constexpr int kThreads = 8;
    std::vector<std::vector<geo_nee>> out_forward(kThreads, inputs);
    std::vector<std::vector<geo_nee>> out_backward(kThreads, inputs);
    std::vector<std::thread> threads;
    for (int t = 0; t < kThreads; ++t) {
        threads.emplace_back([&, t] {
            for (int i = 0; i < kPoints; ++i) {
                shared.Transform(out_forward[t][i]);
                shared.Untransform(out_backward[t][i]);
                if (t == 0 && i % 100 == 0) {
                    // Setting the same parameters meanwhile must not disturb anyone.
                    shared.Set(kOrigin, 0.01, -0.02, 0.03, 1.5, -2.5, 0.75, 1.00001);
                }
            }
        });
    }
    for (std::thread& thread : threads) {
        thread.join();
    }
    for (int t = 0; t < kThreads; ++t) {
        for (int i = 0; i < kPoints; ++i) {
            ASSERT_EQ(out_forward[t][i].north, forward[i].north) << t << " " << i;
            ASSERT_EQ(out_forward[t][i].east, forward[i].east) << t << " " << i;
            ASSERT_EQ(out_forward[t][i].elev, forward[i].elev) << t << " " << i;
            ASSERT_EQ(out_backward[t][i].north, backward[i].north) << t << " " << i;
            ASSERT_EQ(out_backward[t][i].east, backward[i].east) << t << " " << i;
            ASSERT_EQ(out_backward[t][i].elev, backward[i].elev) << t << " " << i;
        }
    }
}

} // namespace
