// Files and folders: the library's well-known folders, whole-file reads and durable
// replacement, an inter-process lock with a bounded wait, and the append-only output file of
// the log. Paths are UTF-8. Internal header.
#ifndef QV5_PLATFORM_FILES_H
#define QV5_PLATFORM_FILES_H

#include <atomic>
#include <chrono>
#include <cstddef>
#include <memory>
#include <mutex>
#include <string>
#include <string_view>
#include <vector>

namespace qv5::detail {

/// The registry file: `$QV5_REGISTRY` when set and not empty, else
/// `${XDG_CONFIG_HOME:-$HOME/.config}/qv5/registry.reg`; empty when no location can be found.
std::string registry_file_path();

/// The folders the log file makes: `${TMPDIR:-/tmp}` and
/// `${XDG_STATE_HOME:-$HOME/.local/state}/halvik/zkmt` (the second left out when neither
/// variable gives a location).
std::vector<std::string> log_folders();

/// Makes a folder and any missing parents; folders made are private to the user (0700).
/// @return true when the folder exists afterwards
bool make_folders(const std::string& path);

/// What read_whole_file found.
enum class ReadStatus {
    read,    ///< the whole file was read
    missing, ///< there is no file at the path
    failed   ///< a file is there but could not be read (not a regular file, too large, I/O)
};

/// Reads a regular file whole without ever blocking on it (a FIFO or device is refused).
/// @param max_bytes larger files are refused as `failed`
ReadStatus read_whole_file(const std::string& path, std::size_t max_bytes, std::string& content);

/// The file a path names once symbolic links in its last component are followed (a relative
/// link target taken from the link's folder); the path itself when it is no link. A dangling
/// link gives the path of the file it would name; a loop (or a chain of more than 40 links)
/// gives an empty path.
std::string resolve_symbolic_links(const std::string& path);

/// True when a file is there and must not be written: it has no write permission bit at all
/// (even for a user the system would let write it), or this process may not write it.
bool write_protected(const std::string& path);
/// Reads at most `max_bytes` from the start of a regular file (never blocking, as
/// read_whole_file); a longer file is not an error, only its first bytes are read.
ReadStatus read_file_start(const std::string& path, std::size_t max_bytes, std::string& content);

/// What write_new_file did.
enum class WriteStatus {
    written,       ///< the file holds exactly the bytes
    cannot_create, ///< the file could not be created (nothing was changed)
    write_failed   ///< writing failed after the file was created; the file was deleted again
};

/// Creates a file, replacing any file of that name (write access, no sharing with other
/// writers), writes all of `bytes`, and closes it; when a write or the close fails the file is
/// deleted, so a failed write never leaves a partial file behind.
WriteStatus write_new_file(const std::string& path, std::string_view bytes);

/// Deletes a file. @return true when it is gone
bool delete_file(const std::string& path);

/// Replaces a file so that a crash or a concurrent reader never sees it torn: the content goes
/// to `path`.tmp in the same folder, is flushed to disk, renamed over `path`, and the folder is
/// flushed. The new file keeps the permission bits of the one it replaces. Where `path` is a
/// symbolic link, the file it names is replaced and the link stays. A write-protected file
/// (write_protected) is refused.
/// @return false, with errno telling why, when any step failed (the old file is then untouched)
bool replace_file_durably(const std::string& path, std::string_view content);

/// An exclusive advisory lock (flock) on a lock file, held while the object lives. Locks taken
/// through separate objects exclude each other within one process as well as across processes.
class FileLock {
public:
    /// Takes the lock on `lock_path` (created if missing), retrying until `patience` has passed.
    /// @return nullptr when the lock file cannot be opened or the lock stays taken
    static std::unique_ptr<FileLock> acquire(const std::string& lock_path,
                                             std::chrono::milliseconds patience);
    ~FileLock();
    FileLock(const FileLock&) = delete;
    FileLock& operator=(const FileLock&) = delete;

private:
    explicit FileLock(int fd) : m_fd(fd) {}
    int m_fd;
};

/// A file opened for writing at its end, as the log file uses it. Its own mutex keeps a write
/// and a close from overlapping, so objects that share it stay safe.
class OutputFile {
public:
    /// Opens or creates the file for writing and moves to its end. Like a file opened for
    /// writing with read-only sharing, it is refused while another OutputFile holds it open.
    /// @param truncate empty an existing file first
    /// @return nullptr when the file cannot be opened or is held by another writer
    static std::unique_ptr<OutputFile> open(const std::string& path, bool truncate);
    ~OutputFile();
    OutputFile(const OutputFile&) = delete;
    OutputFile& operator=(const OutputFile&) = delete;

    /// Appends all of `bytes`; a write that fails part way is taken back (the file is cut to
    /// its length before it), so that no torn fragment is left.
    /// @return false once the file is closed or on an I/O error
    bool write(std::string_view bytes);
    /// True once a write or the close has failed.
    bool failed() const;
    /// Closes the file; later writes do nothing.
    void close();

    /// Shared ownership for holders that copy it (a log file and its copies), counted inside the
    /// file so that no standard-library control block crosses the library's interface. A file
    /// released from its unique_ptr has one holder.
    void add_holder();
    /// Drops one holder; the last one deletes the file, closing it.
    static void drop_holder(OutputFile* file);

private:
    explicit OutputFile(int fd) : m_fd(fd) {}
    mutable std::mutex m_lock;
    int m_fd;
    bool m_failed = false;
    std::atomic<int> m_holders{1};
};

} // namespace qv5::detail

#endif // QV5_PLATFORM_FILES_H
