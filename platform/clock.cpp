// The clock on POSIX: CLOCK_MONOTONIC for the tick count, localtime_r for the calendar.
#include "platform/clock.h"

#include <ctime>

namespace qv5::detail {
namespace {

/// Milliseconds per second, and nanoseconds per millisecond.
constexpr std::uint64_t kMillisecondsPerSecond = 1000;
constexpr long kNanosecondsPerMillisecond = 1'000'000;
/// struct tm counts years from 1900 and months from 0.
constexpr int kTmYearBase = 1900;

} // namespace

std::uint32_t tick_count_ms() {
    timespec now{};
    if (clock_gettime(CLOCK_MONOTONIC, &now) != 0) {
        return 0;
    }
    const std::uint64_t ms = static_cast<std::uint64_t>(now.tv_sec) * kMillisecondsPerSecond +
                             static_cast<std::uint64_t>(now.tv_nsec / kNanosecondsPerMillisecond);
    return static_cast<std::uint32_t>(ms); // the low 32 bits, as a 32-bit tick count wraps
}

_SYSTEMTIME local_time() {
    _SYSTEMTIME result{};
    timespec now{};
    if (clock_gettime(CLOCK_REALTIME, &now) != 0) {
        return result;
    }
    const std::time_t seconds = now.tv_sec;
    std::tm calendar{};
    if (localtime_r(&seconds, &calendar) == nullptr) {
        return result;
    }
    result.wYear = static_cast<unsigned short>(calendar.tm_year + kTmYearBase);
    result.wMonth = static_cast<unsigned short>(calendar.tm_mon + 1);
    result.wDayOfWeek = static_cast<unsigned short>(calendar.tm_wday);
    result.wDay = static_cast<unsigned short>(calendar.tm_mday);
    result.wHour = static_cast<unsigned short>(calendar.tm_hour);
    result.wMinute = static_cast<unsigned short>(calendar.tm_min);
    // A leap second (tm_sec 60) is shown as the last second of its minute, as Windows does.
    result.wSecond = static_cast<unsigned short>(calendar.tm_sec > 59 ? 59 : calendar.tm_sec);
    result.wMilliseconds = static_cast<unsigned short>(now.tv_nsec / kNanosecondsPerMillisecond);
    return result;
}

} // namespace qv5::detail
