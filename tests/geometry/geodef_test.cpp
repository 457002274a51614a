#include "qv5/geodef.h"

#include <gtest/gtest.h>

#include <cstdint>
#include <cstring>

namespace {

TEST(GeoNull, HasItsFixedBitPattern) {
    std::uint64_t bits = 0;
    const double value = GEO_NULL;
    std::memcpy(&bits, &value, sizeof bits);
    EXPECT_EQ(bits, 0x000E61ACF033D1A4ULL);
    EXPECT_EQ(GEO_NULL, 2e-308);
}

TEST(GeoRecords, AreThreeDoublesInOrder) {
    const geo_nee nee{1.0, 2.0, 3.0};
    double raw[3];
    std::memcpy(raw, &nee, sizeof raw);
    EXPECT_EQ(raw[0], 1.0); // north
    EXPECT_EQ(raw[1], 2.0); // east
    EXPECT_EQ(raw[2], 3.0); // elevation
    const geo_hvd hvd{0.1, 0.2, 0.3};
    std::memcpy(raw, &hvd, sizeof raw);
    EXPECT_EQ(raw[2], 0.3);
}

TEST(GeoEnumerations, HaveTheirFixedValues) {
    EXPECT_EQ(geodef_Left, 0);
    EXPECT_EQ(geodef_Right, 1);
    EXPECT_EQ(geodef_LeftSide, 1);
    EXPECT_EQ(geodef_RightSide, 2);
    EXPECT_EQ(geodef_BothSides, 3);
}

} // namespace
