// The system calls through which the library writes files. Internal header; never installed.
//
// The registry file's durable replacement and the log file's appends make every write, flush,
// rename and close through these four functions, and file_calls.cpp holds nothing else: a test
// program that defines them itself replaces it and can make any call fail as a full disk or a
// failing device would. Each behaves exactly as the POSIX call of the same name (a negative
// result with errno set on failure).
#ifndef QV5_PLATFORM_FILE_CALLS_H
#define QV5_PLATFORM_FILE_CALLS_H

#include <cstddef>

#include <sys/types.h>

namespace qv5::detail {

/// write(2).
ssize_t file_write(int fd, const void* bytes, std::size_t count) noexcept;
/// fsync(2).
int file_fsync(int fd) noexcept;
/// rename(2).
int file_rename(const char* from, const char* to) noexcept;
/// close(2).
int file_close(int fd) noexcept;

} // namespace qv5::detail

#endif // QV5_PLATFORM_FILE_CALLS_H
