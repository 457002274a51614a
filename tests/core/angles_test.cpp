// Angle normalisation, bearings and divergences shared by every subsystem.
#include "core/angles.h"

#include "support/test_numbers.h"

#include <gtest/gtest.h>

#include <cmath>
#include <limits>

namespace {

using namespace qv5::detail;
using qv5::test::bits_of;
using qv5::test::is_geo_null;

TEST(CoreNormalisedBearing, BearingInsideTheTurnIsUnchanged) {
    EXPECT_EQ(bits_of(normalised_bearing(0.0)), bits_of(0.0));
    EXPECT_EQ(normalised_bearing(1.25), 1.25);
    EXPECT_EQ(normalised_bearing(std::nextafter(qv5::test::kTwoPi, 0.0)),
              std::nextafter(qv5::test::kTwoPi, 0.0));
}

TEST(CoreNormalisedBearing, WholeTurnsAreSubtractedOneAtATime) {
    EXPECT_EQ(normalised_bearing(qv5::test::kTwoPi), 0.0);
    // 7.0 - 2 pi, computed by one subtraction here.
    EXPECT_EQ(bits_of(normalised_bearing(7.0)), bits_of(7.0 - qv5::test::kTwoPi));
    EXPECT_EQ(bits_of(normalised_bearing(-1.0)), bits_of(-1.0 + qv5::test::kTwoPi));
    EXPECT_EQ(bits_of(normalised_bearing(15.0)),
              bits_of(15.0 - qv5::test::kTwoPi - qv5::test::kTwoPi));
}

TEST(CoreNormalisedBearing, NegativeZeroIsBroughtToPositiveTurn) {
    // -0.0 >= 0.0 holds, so it is already inside [0, 2 pi) and comes back as it is.
    EXPECT_EQ(bits_of(normalised_bearing(-0.0)), bits_of(-0.0));
}

TEST(CoreNormalisedBearing, NullPassesThrough) {
    EXPECT_TRUE(is_geo_null(normalised_bearing(GEO_NULL)));
}

TEST(CoreNormalisedBearing, InfinityHasNoDirection) {
    EXPECT_TRUE(is_geo_null(normalised_bearing(std::numeric_limits<double>::infinity())));
    EXPECT_TRUE(is_geo_null(normalised_bearing(-std::numeric_limits<double>::infinity())));
}

TEST(CoreNormalisedBearing, NanStaysNan) {
    EXPECT_TRUE(std::isnan(normalised_bearing(std::numeric_limits<double>::quiet_NaN())));
}

TEST(CoreNormalisedBearing, HugeBearingEndsInsideTheTurnQuickly) {
    const double b = normalised_bearing(1e300);
    EXPECT_GE(b, 0.0);
    EXPECT_LT(b, qv5::test::kTwoPi);
}

TEST(CoreBearingOf, QuadrantsAreClockwiseFromNorth) {
    EXPECT_EQ(bearing_of(1.0, 0.0), 0.0);
    EXPECT_NEAR(bearing_of(0.0, 1.0), qv5::test::kHalfPi, 1e-15);
    EXPECT_NEAR(bearing_of(-1.0, 0.0), qv5::test::kPi, 1e-15);
    EXPECT_NEAR(bearing_of(0.0, -1.0), 1.5 * qv5::test::kPi, 1e-15);
    EXPECT_NEAR(bearing_of(1.0, -1.0), 1.75 * qv5::test::kPi, 1e-15);
}

TEST(CoreDivergence, IsUnsignedAndAtMostHalfATurn) {
    EXPECT_NEAR(divergence(0.1, 6.2), 0.1 + (qv5::test::kTwoPi - 6.2), 1e-15);
    EXPECT_NEAR(divergence(6.2, 0.1), 0.1 + (qv5::test::kTwoPi - 6.2), 1e-15);
    EXPECT_NEAR(divergence(1.0, 1.0 + qv5::test::kPi), qv5::test::kPi, 1e-15);
    EXPECT_EQ(divergence(2.0, 2.0), 0.0);
}

TEST(CoreDivergence, NullOnEitherSideGivesNull) {
    EXPECT_TRUE(is_geo_null(divergence(GEO_NULL, 1.0)));
    EXPECT_TRUE(is_geo_null(divergence(1.0, GEO_NULL)));
}

TEST(CoreTruncateToInt, TruncatesTowardZero) {
    EXPECT_EQ(truncate_to_int(2.9), 2);
    EXPECT_EQ(truncate_to_int(-2.9), -2);
    EXPECT_EQ(truncate_to_int(-0.5), 0);
}

TEST(CoreTruncateToInt, SaturatesInsteadOfOverflowing) {
    EXPECT_EQ(truncate_to_int(1e300), 2147483647);
    EXPECT_EQ(truncate_to_int(-1e300), -2147483647 - 1);
    EXPECT_EQ(truncate_to_int(2147483647.5), 2147483647);
    EXPECT_EQ(truncate_to_int(-2147483648.5), -2147483647 - 1);
    EXPECT_EQ(truncate_to_int(std::numeric_limits<double>::infinity()), 2147483647);
}

TEST(CoreTruncateToInt, NanGivesZero) {
    EXPECT_EQ(truncate_to_int(std::numeric_limits<double>::quiet_NaN()), 0);
}

} // namespace
