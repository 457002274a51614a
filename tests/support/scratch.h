// Test scaffolding shared by the suites: a scratch folder removed afterwards, environment
// variables set for the length of a test, and whole-file reads and writes.
#ifndef QV5_TESTS_SUPPORT_SCRATCH_H
#define QV5_TESTS_SUPPORT_SCRATCH_H

#include <cstdlib>
#include <filesystem>
#include <fstream>
#include <iterator>
#include <optional>
#include <sstream>
#include <string>

namespace qv5::test {

/// A fresh folder under the system's temporary folder, removed with everything in it.
class ScratchFolder {
public:
    ScratchFolder() : ScratchFolder(std::filesystem::temp_directory_path()) {}
    /// A fresh folder under `base`.
    explicit ScratchFolder(const std::filesystem::path& base) {
        std::string pattern = (base / "qv5-test-XXXXXX").string();
        if (mkdtemp(pattern.data()) != nullptr) {
            m_path = pattern;
        }
    }
    ~ScratchFolder() {
        std::error_code ignored;
        std::filesystem::remove_all(m_path, ignored);
    }
    ScratchFolder(const ScratchFolder&) = delete;
    ScratchFolder& operator=(const ScratchFolder&) = delete;

    const std::filesystem::path& path() const { return m_path; }
    std::string file(const std::string& name) const { return (m_path / name).string(); }

private:
    std::filesystem::path m_path;
};

/// Where tests that write many small files durably keep them: a memory file system when there
/// is one (a flush to it costs nothing), else the system's temporary folder.
inline std::filesystem::path fast_scratch_base() {
    std::error_code ignored;
    return std::filesystem::is_directory("/dev/shm", ignored)
               ? std::filesystem::path("/dev/shm")
               : std::filesystem::temp_directory_path();
}

/// Sets an environment variable for the life of the object, then restores it.
class ScopedEnvironment {
public:
    ScopedEnvironment(const char* name, const std::string& value) : m_name(name) {
        if (const char* old = std::getenv(name); old != nullptr) {
            m_old = old;
        }
        setenv(name, value.c_str(), 1);
    }
    ~ScopedEnvironment() {
        if (m_old) {
            setenv(m_name.c_str(), m_old->c_str(), 1);
        } else {
            unsetenv(m_name.c_str());
        }
    }
    ScopedEnvironment(const ScopedEnvironment&) = delete;
    ScopedEnvironment& operator=(const ScopedEnvironment&) = delete;

private:
    std::string m_name;
    std::optional<std::string> m_old;
};

/// The bytes of a file; empty when it cannot be read.
inline std::string read_file(const std::string& path) {
    std::ifstream in(path, std::ios::binary);
    return std::string(std::istreambuf_iterator<char>(in), std::istreambuf_iterator<char>());
}

inline void write_file(const std::string& path, const std::string& bytes) {
    std::ofstream out(path, std::ios::binary | std::ios::trunc);
    out << bytes;
}

} // namespace qv5::test

#endif // QV5_TESTS_SUPPORT_SCRATCH_H
