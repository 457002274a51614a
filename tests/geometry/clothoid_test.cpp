// The clothoid series behind the transition spirals: geo_spiral_deltas and
// geo_spiral_deflection.
#include "geometry/clothoid.h"
#include "qv5/geosurvey.h"

#include "support/clothoid_reference.h"

#include <gtest/gtest.h>

#include <cmath>
#include <limits>

namespace {

struct SeriesCase {
    double l;
    double c;
    double tolerance;
};

// ---------------------------------------------------------------------------------------------
// Deflection

TEST(SpiralDeflection, BehindTheStraightEndIsZero) {
    EXPECT_EQ(geo_spiral_deflection(-1.0, 10000.0), 0.0);
    EXPECT_EQ(geo_spiral_deflection(0.0, 10000.0), 0.0);
}

TEST(SpiralDeflection, AtTheFullLengthIsLengthOverTwiceTheRadius) {
    const double r = 100.0;
    const double l = 50.0;
    EXPECT_NEAR(geo_spiral_deflection(l, 2.0 * r * l), l / (2.0 * r), 1e-15);
}

TEST(SpiralDeflection, IsFormedAsLengthOverConstantTimesLength) {
    // (l / C) * l and l * l / C round differently for these values.
    const double l = 37.3;
    const double c = 2000.0;
    EXPECT_EQ(geo_spiral_deflection(l, c), 0.695645);
    EXPECT_NE(geo_spiral_deflection(l, c), l * l / c);
}

TEST(SpiralDeflection, ZeroLengthSpiralOfZeroConstantIsZeroNotNaN) {
    EXPECT_EQ(geo_spiral_deflection(0.0, 0.0), 0.0);
}

TEST(SpiralDeflection, NullOrUndefinedInputsGiveNull) {
    EXPECT_EQ(geo_spiral_deflection(GEO_NULL, 100.0), GEO_NULL);
    EXPECT_EQ(geo_spiral_deflection(10.0, GEO_NULL), GEO_NULL);
    EXPECT_EQ(geo_spiral_deflection(10.0, 0.0), GEO_NULL); // infinite
    EXPECT_EQ(geo_spiral_deflection(std::numeric_limits<double>::quiet_NaN(), 100.0), GEO_NULL);
}

// ---------------------------------------------------------------------------------------------
// Deltas

TEST(SpiralDeltas, AtTheStraightEndAreZero) {
    double x = 1.0;
    double y = 1.0;
    geo_spiral_deltas(0.0, 10000.0, 1e-5, x, y);
    EXPECT_EQ(x, 0.0);
    EXPECT_EQ(y, 0.0);
    // Also for a zero-length spiral, whose constant is 0.
    geo_spiral_deltas(0.0, 0.0, 1e-5, x, y);
    EXPECT_EQ(x, 0.0);
    EXPECT_EQ(y, 0.0);
}

TEST(SpiralDeltas, RadiusHundredLengthFiftyEndsAtTheTabulatedPoint) {
    double x = 0.0;
    double y = 0.0;
    geo_spiral_deltas(50.0, 10000.0, 1e-5, x, y);
    EXPECT_NEAR(x, 49.688403, 5e-7);
    EXPECT_NEAR(y, 4.148102, 5e-7);
}

TEST(SpiralDeltas, RunningProductGivesTheSameBitsAsTheReferenceEvaluation) {
    // Expected values from an independent evaluation of the same sums in the same order
    // (Python floats): l^4 as ((l l) l) l, t q / ((n - 1) n), each term over its own divisor.
    struct Pinned {
        SeriesCase in;
        double x;
        double y;
    };
    const Pinned cases[] = {
        {{50.0, 10000.0, 1e-5}, 49.68840292036703, 4.148102426827097},
        {{37.5, 60000.0, 1e-6}, 37.49794011586346, 0.29295725501942327},
        {{120.0, 60000.0, 1e-9}, 119.31064075188795, 9.560575171878613},
        {{80.0, 9600.0, 1e-5}, 76.51685822309024, 17.221323292875997},
        {{100.0, 6000.0, 1e-5}, 75.57395006538668, 45.4610342419688},
        {{100.0, 6000.0, 1e-3}, 75.57394622912678, 45.46103378657232},
    };
    for (const Pinned& c : cases) {
        double x = 0.0;
        double y = 0.0;
        geo_spiral_deltas(c.in.l, c.in.c, c.in.tolerance, x, y);
        EXPECT_EQ(x, c.x) << c.in.l << " " << c.in.c;
        EXPECT_EQ(y, c.y) << c.in.l << " " << c.in.c;
    }
}

TEST(SpiralDeltas, AgreeWithNumericalIntegrationWithinTheStoppingTolerance) {
    // The series alternate with terms that shrink once they have started to: what is left
    // after the first term below the tolerance is smaller than that term.
    const SeriesCase cases[] = {
        {50.0, 10000.0, 1e-5}, {37.5, 60000.0, 1e-6}, {120.0, 60000.0, 1e-9}, {80.0, 9600.0, 1e-5},
        {100.0, 6000.0, 1e-5}, {100.0, 6000.0, 1e-3}, {87.1, 2000.0, 1e-5},   {10.0, 2000.0, 1e-12},
    };
    for (const SeriesCase& c : cases) {
        double x = 0.0;
        double y = 0.0;
        geo_spiral_deltas(c.l, c.c, c.tolerance, x, y);
        double xi = 0.0;
        double yi = 0.0;
        qv5::test::integrated_clothoid(c.l, c.c, xi, yi);
        EXPECT_NEAR(x, xi, c.tolerance) << c.l << " " << c.c;
        EXPECT_NEAR(y, yi, c.tolerance) << c.l << " " << c.c;
    }
}

TEST(SpiralDeltas, YIsPositiveAndXShorterThanTheArc) {
    for (double l = 5.0; l <= 80.0; l += 5.0) {
        double x = 0.0;
        double y = 0.0;
        geo_spiral_deltas(l, 2.0 * 60.0 * 80.0, 1e-8, x, y);
        EXPECT_GT(y, 0.0);
        EXPECT_LT(x, l);
    }
}

TEST(SpiralDeltas, NineCorrectionTermsAreTheMost) {
    // With C = 2000 and a tolerance of 1e-5 the x series needs exactly nine correction terms
    // at l = 87.1 and ten at l = 87.2.
    double x = 0.0;
    double y = 0.0;
    geo_spiral_deltas(87.1, 2000.0, 1e-5, x, y);
    EXPECT_EQ(x, 22.340998368758587);
    EXPECT_EQ(y, 37.59251551660226);
    geo_spiral_deltas(87.2, 2000.0, 1e-5, x, y);
    EXPECT_EQ(x, GEO_NULL);
    EXPECT_EQ(y, GEO_NULL);
}

TEST(SpiralDeltas, UnconvergingSeriesGivesBothNull) {
    double x = 1.0;
    double y = 1.0;
    // 1000 m of spiral onto a 1 m radius.
    geo_spiral_deltas(1000.0, 2.0 * 1.0 * 1000.0, 1e-5, x, y);
    EXPECT_EQ(x, GEO_NULL);
    EXPECT_EQ(y, GEO_NULL);
}

TEST(SpiralDeltas, ToleranceThatCannotBeMetGivesNull) {
    double x = 1.0;
    double y = 1.0;
    geo_spiral_deltas(50.0, 10000.0, 0.0, x, y);
    EXPECT_EQ(x, GEO_NULL);
    geo_spiral_deltas(50.0, 10000.0, -1.0, x, y);
    EXPECT_EQ(y, GEO_NULL);
    geo_spiral_deltas(50.0, 10000.0, std::numeric_limits<double>::quiet_NaN(), x, y);
    EXPECT_EQ(x, GEO_NULL);
}

TEST(SpiralDeltas, NullOrDegenerateInputsGiveNull) {
    double x = 1.0;
    double y = 1.0;
    geo_spiral_deltas(GEO_NULL, 10000.0, 1e-5, x, y);
    EXPECT_EQ(x, GEO_NULL);
    EXPECT_EQ(y, GEO_NULL);
    x = y = 1.0;
    geo_spiral_deltas(50.0, GEO_NULL, 1e-5, x, y);
    EXPECT_EQ(x, GEO_NULL);
    x = y = 1.0;
    geo_spiral_deltas(50.0, 0.0, 1e-5, x, y); // a zero radius: no finite series
    EXPECT_EQ(x, GEO_NULL);
    EXPECT_EQ(y, GEO_NULL);
    x = y = 1.0;
    geo_spiral_deltas(std::numeric_limits<double>::infinity(), 10000.0, 1e-5, x, y);
    EXPECT_EQ(x, GEO_NULL);
}

TEST(ClothoidDeltas, ReportsWhetherTheSeriesConverged) {
    double x = 0.0;
    double y = 0.0;
    EXPECT_TRUE(qv5::detail::clothoid_deltas(50.0, 10000.0, 1e-5, x, y));
    EXPECT_FALSE(qv5::detail::clothoid_deltas(87.2, 2000.0, 1e-5, x, y));
    EXPECT_EQ(x, GEO_NULL);
}

} // namespace
