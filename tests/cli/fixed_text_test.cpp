// The program's fixed-point numbers: every digit as the standard library's correctly rounded
// fixed-point conversion writes it, ties to even, never a negative zero.
#include "output.h"

#include "qv5/geodef.h"

#include <gtest/gtest.h>

#include <charconv>
#include <cmath>
#include <limits>
#include <random>
#include <string>

namespace {

using qv5::cli::fixed;

/// What the standard library writes for the same value and decimals, negative zero removed.
std::string reference_fixed(double value, int decimals) {
    char text[512];
    const auto written =
        std::to_chars(text, text + sizeof text, value, std::chars_format::fixed, decimals);
    std::string s(text, written.ptr);
    if (!s.empty() && s.front() == '-' && s.find_first_of("123456789") == std::string::npos) {
        s.erase(0, 1);
    }
    return s;
}

TEST(FixedText, WritesPlainValues) {
    EXPECT_EQ(fixed(1234.5678, 3), "1234.568");
    EXPECT_EQ(fixed(-0.5, 2), "-0.50");
    EXPECT_EQ(fixed(0.0, 4), "0.0000");
    EXPECT_EQ(fixed(7.0, 0), "7");
    EXPECT_EQ(fixed(0.0004, 3), "0.000");
    EXPECT_EQ(fixed(0.0005001, 3), "0.001");
    EXPECT_EQ(fixed(450123.45678, 4), "450123.4568");
    EXPECT_EQ(fixed(-12.000049, 4), "-12.0000");
}

TEST(FixedText, ExactTiesGoToTheEvenDigit) {
    // 0.125, 0.375, 2.5 and 3.5 are exact in binary: the tie is real.
    EXPECT_EQ(fixed(0.125, 2), "0.12");
    EXPECT_EQ(fixed(0.375, 2), "0.38");
    EXPECT_EQ(fixed(2.5, 0), "2");
    EXPECT_EQ(fixed(3.5, 0), "4");
    EXPECT_EQ(fixed(-0.625, 2), "-0.62");
    // 0.15 is stored a little below 0.15: no tie, it rounds down.
    EXPECT_EQ(fixed(0.15, 1), "0.1");
    // 1.005 is stored a little below too.
    EXPECT_EQ(fixed(1.005, 2), "1.00");
}

TEST(FixedText, NeverWritesANegativeZero) {
    EXPECT_EQ(fixed(-0.0, 3), "0.000");
    EXPECT_EQ(fixed(-0.00049, 3), "0.000");
    EXPECT_EQ(fixed(-0.4, 0), "0");
    EXPECT_EQ(fixed(-1e-300, 4), "0.0000");
    EXPECT_EQ(fixed(-std::numeric_limits<double>::denorm_min(), 2), "0.00");
}

TEST(FixedText, NoValueIsADash) {
    EXPECT_EQ(fixed(GEO_NULL, 3), "-");
}

TEST(FixedText, ExtremeValuesMatchTheStandardLibrary) {
    const double values[] = {std::numeric_limits<double>::max(),
                             -std::numeric_limits<double>::max(),
                             std::numeric_limits<double>::min(),
                             std::numeric_limits<double>::denorm_min(),
                             9007199254740992.0,
                             9007199254740993.0,
                             18446744073709551615.0,
                             1e19,
                             1e20,
                             123456789012345.678,
                             0.1,
                             1e-17,
                             5e-18,
                             std::ldexp(1.0, -126),
                             std::ldexp(1.0, -127),
                             std::ldexp(3.0, -128)};
    for (const double v : values) {
        for (int decimals = 0; decimals <= 24; ++decimals) {
            EXPECT_EQ(fixed(v, decimals), reference_fixed(v, decimals)) << v << " " << decimals;
            EXPECT_EQ(fixed(-v, decimals), reference_fixed(-v, decimals)) << -v << " " << decimals;
        }
    }
}

TEST(FixedText, RandomValuesOfEveryMagnitudeMatchTheStandardLibrary) {
    std::mt19937_64 random(20261125);
    std::uniform_int_distribution<int> power(-40, 40);
    std::uniform_real_distribution<double> unit(1.0, 10.0);
    std::uniform_int_distribution<int> decimals(0, 20);
    for (int i = 0; i < 200000; ++i) {
        const double v = std::ldexp(unit(random), power(random)) * (i % 2 == 0 ? 1.0 : -1.0);
        const int d = decimals(random);
        ASSERT_EQ(fixed(v, d), reference_fixed(v, d)) << v << " " << d;
    }
}

TEST(FixedText, RandomSurveyQuantitiesMatchTheStandardLibrary) {
    // Coordinates, stations and heights on the grid the program prints, half of them exactly on a
    // tie of the last decimal or one unit in the last place beside it.
    std::mt19937_64 random(7);
    std::uniform_real_distribution<double> metres(-2e6, 2e6);
    std::uniform_int_distribution<int> decimals(0, 8);
    for (int i = 0; i < 200000; ++i) {
        const int d = decimals(random);
        double v = metres(random);
        if (i % 2 == 1) {
            const double scale = std::pow(10.0, d);
            v = (std::floor(v * scale) + 0.5) / scale;
            v = std::nextafter(v, (i % 4 == 1) ? 0.0 : v * 2.0);
        }
        ASSERT_EQ(fixed(v, d), reference_fixed(v, d)) << v << " " << d;
    }
}

} // namespace
