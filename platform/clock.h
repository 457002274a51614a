// The clock: a millisecond tick count and the local calendar time. Internal header.
#ifndef QV5_PLATFORM_CLOCK_H
#define QV5_PLATFORM_CLOCK_H

#include "qv5/hostfw.h"

#include <cstdint>

namespace qv5::detail {

/// Milliseconds of a monotonic clock that counts from an arbitrary start (on Linux, the time
/// since boot), wrapping at 2^32 as a 32-bit tick count does: about every 49.7 days.
std::uint32_t tick_count_ms();

/// The local date and time, with the day of the week (0 = Sunday) and milliseconds. A clock
/// that cannot be read gives a zeroed record.
_SYSTEMTIME local_time();

} // namespace qv5::detail

#endif // QV5_PLATFORM_CLOCK_H
