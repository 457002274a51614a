// The named constants every subsystem shares, checked against values worked out here.
#include "core/constants.h"

#include "support/test_numbers.h"

#include <gtest/gtest.h>

#include <cmath>

namespace {

using namespace qv5::detail;
using qv5::test::bits_of;

TEST(CoreConstants, TurnsAreMultiplesOfPiToTheLastBit) {
    EXPECT_EQ(bits_of(kPi), bits_of(qv5::test::kPi));
    EXPECT_EQ(bits_of(kTwoPi), bits_of(2.0 * qv5::test::kPi));
    EXPECT_EQ(bits_of(kHalfPi), bits_of(0.5 * qv5::test::kPi));
    EXPECT_EQ(bits_of(kThreeHalfPi), bits_of(3.0 * kHalfPi));
}

TEST(CoreConstants, AngleUnitsAreInverseOfEachOther) {
    EXPECT_NEAR(kRadiansPerDegree, qv5::test::kPi / 180.0, 1e-18);
    EXPECT_NEAR(kDegreesPerRadian, 180.0 / qv5::test::kPi, 1e-13);
    EXPECT_NEAR(kRadiansPerMinute * 60.0, kRadiansPerDegree, 1e-18);
    EXPECT_NEAR(kRadiansPerSecond * 3600.0, kRadiansPerDegree, 1e-18);
    EXPECT_NEAR(kDegreesPerSecondOfArc * 3600.0, 1.0, 1e-15);
    EXPECT_NEAR(kMinutesPerSecond * 60.0, 1.0, 1e-15);
}

TEST(CoreConstants, SentinelsAndTolerancesHaveTheirFixedValues) {
    EXPECT_EQ(kInfiniteRadius, 2e100);
    EXPECT_EQ(kSearchStart, 1e100);
    EXPECT_EQ(kPositionTolerance, 0.0005);
    EXPECT_EQ(kVerticalTolerance, 0.0001);
    EXPECT_EQ(kMinimumRadius, 0.0005);
    EXPECT_EQ(kDmsRoundingGuard, 5e-6);
}

} // namespace
