// The system calls behind the library's file writes. This file holds these four functions and
// nothing else, so that a test program can supply its own (see file_calls.h).
#include "platform/file_calls.h"

#include <cstdio>

#include <unistd.h>

namespace qv5::detail {

ssize_t file_write(int fd, const void* bytes, std::size_t count) noexcept {
    return ::write(fd, bytes, count);
}

int file_fsync(int fd) noexcept {
    return ::fsync(fd);
}

int file_rename(const char* from, const char* to) noexcept {
    return std::rename(from, to);
}

int file_close(int fd) noexcept {
    return ::close(fd);
}

} // namespace qv5::detail
