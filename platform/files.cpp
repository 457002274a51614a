// Files and folders on POSIX.
#include "platform/files.h"

#include "platform/file_calls.h"

#include <cerrno>
#include <cstdlib>
#include <thread>

#include <fcntl.h>
#include <sys/file.h>
#include <sys/stat.h>
#include <unistd.h>

namespace qv5::detail {
namespace {

/// Folders the library makes are private to the user, as the XDG base directories are.
constexpr mode_t kPrivateFolderMode = 0700;
/// Files the library creates: readable by all, writable by the user (less the umask).
constexpr mode_t kNewFileMode = 0644;
/// The longest pause between two attempts at a taken lock.
constexpr std::chrono::milliseconds kLockRetryCeiling{8};
/// A replacement is written beside its file under the file's name with this suffix.
constexpr std::string_view kTemporarySuffix = ".tmp";
/// Symbolic links followed before giving up on a path (the kernel's own limit, MAXSYMLINKS).
constexpr int kSymbolicLinkLimit = 40;
/// Any of the write permission bits.
constexpr mode_t kAnyWriteBit = S_IWUSR | S_IWGRP | S_IWOTH;

/// The value of an environment variable; empty when unset.
std::string environment(const char* name) {
    const char* value = std::getenv(name);
    return value != nullptr ? std::string(value) : std::string();
}

/// An XDG base directory: `$variable` when it is an absolute path (relative ones are to be
/// ignored), else `$HOME/fallback`; empty when neither is usable.
std::string xdg_directory(const char* variable, const char* fallback) {
    std::string path = environment(variable);
    if (!path.empty() && path.front() == '/') {
        return path;
    }
    const std::string home = environment("HOME");
    if (home.empty()) {
        return {};
    }
    return home + "/" + fallback;
}

std::string parent_folder(const std::string& path) {
    const std::size_t slash = path.find_last_of('/');
    if (slash == std::string::npos) {
        return ".";
    }
    return slash == 0 ? std::string("/") : path.substr(0, slash);
}

bool write_all(int fd, std::string_view bytes) {
    while (!bytes.empty()) {
        const ssize_t n = file_write(fd, bytes.data(), bytes.size());
        if (n < 0) {
            if (errno == EINTR) {
                continue;
            }
            return false;
        }
        bytes.remove_prefix(static_cast<std::size_t>(n));
    }
    return true;
}

bool fsync_folder(const std::string& folder) {
    const int fd = ::open(folder.c_str(), O_RDONLY | O_DIRECTORY | O_CLOEXEC);
    if (fd < 0) {
        return false;
    }
    const bool ok = file_fsync(fd) == 0;
    file_close(fd);
    return ok;
}

} // namespace

std::string resolve_symbolic_links(const std::string& path) {
    std::string current = path;
    for (int hop = 0; hop < kSymbolicLinkLimit; ++hop) {
        struct stat info {};
        if (::lstat(current.c_str(), &info) != 0 || !S_ISLNK(info.st_mode)) {
            return current;
        }
        std::string target(static_cast<std::size_t>(info.st_size > 0 ? info.st_size : 255) + 1,
                           '\0');
        const ssize_t n = ::readlink(current.c_str(), target.data(), target.size());
        if (n <= 0 || static_cast<std::size_t>(n) >= target.size()) {
            return current; // changed meanwhile or unreadable: the caller's attempt will fail
        }
        target.resize(static_cast<std::size_t>(n));
        // A relative target is relative to the folder that holds the link.
        current = target.front() == '/' ? target : parent_folder(current) + "/" + target;
    }
    return {}; // a loop, or a chain too long to be meant
}

bool write_protected(const std::string& path) {
    struct stat info {};
    if (::stat(path.c_str(), &info) != 0) {
        return false; // nothing there yet: a new file is made
    }
    // The permission bits count even for a user (root) whom the system would let write anyway:
    // a file marked read-only was marked so on purpose.
    return (info.st_mode & kAnyWriteBit) == 0 || ::access(path.c_str(), W_OK) != 0;
}

std::string registry_file_path() {
    std::string path = environment("QV5_REGISTRY");
    if (!path.empty()) {
        return path;
    }
    const std::string config = xdg_directory("XDG_CONFIG_HOME", ".config");
    return config.empty() ? std::string() : config + "/qv5/registry.reg";
}

std::vector<std::string> log_folders() {
    std::vector<std::string> folders;
    const std::string temp = environment("TMPDIR");
    folders.push_back(temp.empty() ? std::string("/tmp") : temp);
    const std::string state = xdg_directory("XDG_STATE_HOME", ".local/state");
    if (!state.empty()) {
        folders.push_back(state + "/halvik/zkmt");
    }
    return folders;
}

bool make_folders(const std::string& path) {
    if (path.empty()) {
        return false;
    }
    struct stat info {};
    if (::stat(path.c_str(), &info) == 0) {
        return S_ISDIR(info.st_mode);
    }
    const std::string parent = parent_folder(path);
    if (parent != path && parent != "." && parent != "/") {
        make_folders(parent);
    }
    if (::mkdir(path.c_str(), kPrivateFolderMode) == 0) {
        return true;
    }
    return errno == EEXIST && ::stat(path.c_str(), &info) == 0 && S_ISDIR(info.st_mode);
}

ReadStatus read_whole_file(const std::string& path, std::size_t max_bytes, std::string& content) {
    content.clear();
    // Non-blocking, so that a FIFO put where the file should be cannot stall the host.
    const int fd = ::open(path.c_str(), O_RDONLY | O_NONBLOCK | O_CLOEXEC | O_NOCTTY);
    if (fd < 0) {
        return errno == ENOENT ? ReadStatus::missing : ReadStatus::failed;
    }
    struct stat info {};
    if (::fstat(fd, &info) != 0 || !S_ISREG(info.st_mode) ||
        static_cast<std::size_t>(info.st_size) > max_bytes) {
        ::close(fd);
        return ReadStatus::failed;
    }
    content.reserve(static_cast<std::size_t>(info.st_size));
    // The file may change size meanwhile: read until its end, within the limit.
    char chunk[8192];
    while (true) {
        const ssize_t n = ::read(fd, chunk, sizeof chunk);
        if (n < 0 && errno == EINTR) {
            continue;
        }
        if (n < 0 || content.size() + static_cast<std::size_t>(n) > max_bytes) {
            ::close(fd);
            content.clear();
            return ReadStatus::failed;
        }
        if (n == 0) {
            break;
        }
        content.append(chunk, static_cast<std::size_t>(n));
    }
    ::close(fd);
    return ReadStatus::read;
}

ReadStatus read_file_start(const std::string& path, std::size_t max_bytes, std::string& content) {
    content.clear();
    const int fd = ::open(path.c_str(), O_RDONLY | O_NONBLOCK | O_CLOEXEC | O_NOCTTY);
    if (fd < 0) {
        return errno == ENOENT ? ReadStatus::missing : ReadStatus::failed;
    }
    struct stat info {};
    if (::fstat(fd, &info) != 0 || !S_ISREG(info.st_mode)) {
        ::close(fd);
        return ReadStatus::failed;
    }
    content.resize(max_bytes);
    std::size_t got = 0;
    while (got < max_bytes) {
        const ssize_t n = ::read(fd, content.data() + got, max_bytes - got);
        if (n < 0 && errno == EINTR) {
            continue;
        }
        if (n < 0) {
            ::close(fd);
            content.clear();
            return ReadStatus::failed;
        }
        if (n == 0) {
            break;
        }
        got += static_cast<std::size_t>(n);
    }
    ::close(fd);
    content.resize(got);
    return ReadStatus::read;
}

WriteStatus write_new_file(const std::string& path, std::string_view bytes) {
    const int fd =
        ::open(path.c_str(), O_WRONLY | O_CREAT | O_TRUNC | O_CLOEXEC | O_NOCTTY, kNewFileMode);
    if (fd < 0) {
        return WriteStatus::cannot_create;
    }
    const bool written = write_all(fd, bytes);
    const bool closed = ::close(fd) == 0;
    if (!written || !closed) {
        ::unlink(path.c_str());
        return WriteStatus::write_failed;
    }
    return WriteStatus::written;
}

bool delete_file(const std::string& path) {
    return ::unlink(path.c_str()) == 0 || errno == ENOENT;
}

bool replace_file_durably(const std::string& link_or_file, std::string_view content) {
    // Through a symbolic link the file it names is replaced, and the link stays.
    const std::string path = resolve_symbolic_links(link_or_file);
    if (path.empty()) {
        errno = ELOOP;
        return false;
    }
    if (write_protected(path)) {
        errno = EACCES;
        return false;
    }
    const std::string temporary = path + std::string(kTemporarySuffix);
    const int fd = ::open(temporary.c_str(), O_WRONLY | O_CREAT | O_TRUNC | O_CLOEXEC | O_NOFOLLOW,
                          kNewFileMode);
    if (fd < 0) {
        return false;
    }
    struct stat old {};
    if (::stat(path.c_str(), &old) == 0) {
        ::fchmod(fd, old.st_mode & 07777);
    }
    const bool written = write_all(fd, content) && file_fsync(fd) == 0;
    const bool closed = file_close(fd) == 0;
    if (!written || !closed || file_rename(temporary.c_str(), path.c_str()) != 0) {
        const int error = errno;
        ::unlink(temporary.c_str());
        errno = error;
        return false;
    }
    // The rename is durable only once the folder that records it is on disk. The file is
    // replaced whole whether or not that flush succeeds, so it does not change the answer.
    fsync_folder(parent_folder(path));
    return true;
}

std::unique_ptr<FileLock> FileLock::acquire(const std::string& lock_path,
                                            std::chrono::milliseconds patience) {
    const int fd = ::open(lock_path.c_str(), O_RDWR | O_CREAT | O_CLOEXEC | O_NONBLOCK | O_NOCTTY,
                          kNewFileMode);
    if (fd < 0) {
        return nullptr;
    }
    const auto deadline = std::chrono::steady_clock::now() + patience;
    std::chrono::milliseconds pause{1};
    while (::flock(fd, LOCK_EX | LOCK_NB) != 0) {
        if ((errno != EWOULDBLOCK && errno != EINTR) ||
            std::chrono::steady_clock::now() >= deadline) {
            ::close(fd);
            return nullptr;
        }
        std::this_thread::sleep_for(pause);
        pause = pause * 2 > kLockRetryCeiling ? kLockRetryCeiling : pause * 2;
    }
    return std::unique_ptr<FileLock>(new FileLock(fd));
}

FileLock::~FileLock() {
    ::close(m_fd); // closing the last descriptor releases the flock
}

std::unique_ptr<OutputFile> OutputFile::open(const std::string& path, bool truncate) {
    const int fd =
        ::open(path.c_str(), O_WRONLY | O_CREAT | O_APPEND | O_CLOEXEC | O_NOCTTY, kNewFileMode);
    if (fd < 0) {
        return nullptr;
    }
    // One writer at a time, as read-only sharing grants: a second writer is refused before it
    // could truncate what the first is writing.
    if (::flock(fd, LOCK_EX | LOCK_NB) != 0 || (truncate && ::ftruncate(fd, 0) != 0) ||
        ::lseek(fd, 0, SEEK_END) < 0) {
        ::close(fd);
        return nullptr;
    }
    return std::unique_ptr<OutputFile>(new OutputFile(fd));
}

OutputFile::~OutputFile() {
    close();
}

bool OutputFile::write(std::string_view bytes) {
    const std::lock_guard<std::mutex> guard(m_lock);
    if (m_fd < 0) {
        return false;
    }
    // A write that fails part way (a full disk) is taken back, so that the file never ends in
    // a torn fragment: what was in it before stays whole.
    const off_t before = ::lseek(m_fd, 0, SEEK_END);
    if (write_all(m_fd, bytes)) {
        return true;
    }
    if (before >= 0) {
        const int error = errno;
        if (::ftruncate(m_fd, before) != 0) {
            // Nothing more can be done: the write is reported as failed either way.
        }
        errno = error;
    }
    m_failed = true;
    return false;
}

bool OutputFile::failed() const {
    const std::lock_guard<std::mutex> guard(m_lock);
    return m_failed;
}

void OutputFile::add_holder() {
    m_holders.fetch_add(1, std::memory_order_relaxed);
}

void OutputFile::drop_holder(OutputFile* file) {
    if (file != nullptr && file->m_holders.fetch_sub(1, std::memory_order_acq_rel) == 1) {
        delete file;
    }
}

void OutputFile::close() {
    const std::lock_guard<std::mutex> guard(m_lock);
    if (m_fd >= 0) {
        if (file_close(m_fd) != 0) {
            m_failed = true; // the descriptor is gone all the same
        }
        m_fd = -1;
    }
}

} // namespace qv5::detail
