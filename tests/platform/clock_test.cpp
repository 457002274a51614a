#include "platform/clock.h"

#include <gtest/gtest.h>

#include <ctime>

namespace {

/// Day of the week of a Gregorian date (0 = Sunday), by Sakamoto's method.
int day_of_week(int year, int month, int day) {
    static const int offsets[] = {0, 3, 2, 5, 0, 3, 5, 1, 4, 6, 2, 4};
    year -= month < 3 ? 1 : 0;
    return (year + year / 4 - year / 100 + year / 400 + offsets[month - 1] + day) % 7;
}

TEST(TickCount, CountsMillisecondsForward) {
    const std::uint32_t first = qv5::detail::tick_count_ms();
    timespec pause{0, 20'000'000};
    nanosleep(&pause, nullptr);
    const std::uint32_t second = qv5::detail::tick_count_ms();
    // Unsigned difference: correct across the 32-bit wrap as well.
    const std::uint32_t elapsed = second - first;
    EXPECT_GE(elapsed, 20u);
    EXPECT_LT(elapsed, 60'000u);
}

TEST(LocalTime, FieldsAreAConsistentCalendarDate) {
    const std::time_t before = std::time(nullptr);
    const _SYSTEMTIME now = qv5::detail::local_time();
    std::tm expected{};
    localtime_r(&before, &expected);
    // The year may have turned between the two readings.
    EXPECT_TRUE(now.wYear == expected.tm_year + 1900 || now.wYear == expected.tm_year + 1901);
    EXPECT_GE(now.wMonth, 1);
    EXPECT_LE(now.wMonth, 12);
    EXPECT_GE(now.wDay, 1);
    EXPECT_LE(now.wDay, 31);
    EXPECT_LE(now.wHour, 23);
    EXPECT_LE(now.wMinute, 59);
    EXPECT_LE(now.wSecond, 59);
    EXPECT_LE(now.wMilliseconds, 999);
    EXPECT_EQ(now.wDayOfWeek, day_of_week(now.wYear, now.wMonth, now.wDay));
}

} // namespace
