// The settings store: what the registry is to the library. Keys are backslash-separated paths
// under HKEY_LOCAL_MACHINE; values are typed byte strings. Internal header.
//
// The store behind it on Linux is the registry file (registry_text.h): `$QV5_REGISTRY`, else
// `${XDG_CONFIG_HOME:-$HOME/.config}/qv5/registry.reg`. Failures are never fatal: a store that
// cannot be read reads as empty, and one that cannot be written keeps what it had.
#ifndef QV5_PLATFORM_SETTINGS_STORE_H
#define QV5_PLATFORM_SETTINGS_STORE_H

#include "platform/registry_text.h"

#include <chrono>
#include <cstdint>
#include <functional>
#include <memory>
#include <string>
#include <string_view>
#include <vector>

namespace qv5::detail {

/// An open key. Values set through it reach the store, all together, when it is closed.
class SettingsKey {
public:
    virtual ~SettingsKey() = default;
    /// Reads a value of exactly four bytes (any type) as a little-endian number.
    /// @param[out] type the value's type (kRegistryBinary, kRegistryDword, ...)
    /// @return false when the value is missing or holds another number of bytes
    virtual bool read_u32(std::u16string_view name, std::uint32_t& value, std::uint32_t& type) = 0;
    /// Reads a value of exactly four bytes, whatever its type.
    bool read_u32(std::u16string_view name, std::uint32_t& value) {
        std::uint32_t type = 0;
        return read_u32(name, value, type);
    }
    /// Sets a value of the given type (kRegistryBinary, kRegistryDword, ...).
    /// @return false when the name cannot be recorded
    virtual bool write(std::u16string_view name, std::uint32_t type,
                       const std::vector<unsigned char>& data) = 0;
    /// Puts what was set into the store.
    /// @return false when the store could not be updated (it then keeps what it had)
    virtual bool close() = 0;
};

/// A settings store.
class SettingsStore {
public:
    virtual ~SettingsStore() = default;
    /// Opens a key for reading and writing, creating it when it does not exist.
    /// @return nullptr when the key can neither be opened nor created
    virtual std::unique_ptr<SettingsKey> create_key(std::u16string_view path) = 0;
    /// Opens an existing key. @return nullptr when it does not exist
    virtual std::unique_ptr<SettingsKey> open_key(std::u16string_view path) = 0;
};

/// How long a writer waits for another to finish with the registry file before it gives up.
inline constexpr std::chrono::milliseconds kRegistryLockPatience{1000};
/// A registry file larger than this is not read: it is not one this library wrote.
inline constexpr std::size_t kRegistryFileLimit = 16u << 20;

/// Reads the registry file as it is now: no lock is needed, because writers replace the file
/// whole. A missing file reads as a fresh, empty one; an unreadable one as unusable.
RegistryText read_registry_file(const std::string& path);

/// Changes the registry file: takes the writers' exclusive lock on `path`.lock (waiting at most
/// kRegistryLockPatience), re-reads the file, applies `change` and, when the text differs,
/// replaces the file durably. Missing folders on the way to the file are made.
/// @param change returns false to abandon the update
/// @param[out] result the file's text after the change (left alone on failure)
/// @return true when the file holds the change afterwards
bool update_registry_file(const std::string& path, const std::function<bool(RegistryText&)>& change,
                          RegistryText& result);

/// The settings store kept in a registry file. Values set through a key are merged into the
/// file when the key is closed, so two writers of different values lose nothing; a key whose
/// values are all set as they already were writes nothing.
class RegistryFileStore final : public SettingsStore {
public:
    /// @param path the registry file; empty gives a store where no key opens
    explicit RegistryFileStore(std::string path) : m_path(std::move(path)) {}
    std::unique_ptr<SettingsKey> create_key(std::u16string_view path) override;
    std::unique_ptr<SettingsKey> open_key(std::u16string_view path) override;

private:
    std::string m_path;
};

/// The store named by the environment (see registry_file_path in files.h).
std::unique_ptr<SettingsStore> open_settings_store();

/// What can be wrong with a registry file.
enum class RegistryFileProblem {
    none,              ///< missing (a fresh registry), or readable, a registry file and writable
    unreadable,        ///< there, but no regular file or not readable: reads as empty
    too_large,         ///< larger than kRegistryFileLimit: reads as empty
    not_registry_file, ///< no registry file signature: reads as empty, never written over
    write_protected    ///< read as it is, but changes cannot be saved (see write_protected)
};

/// The state of a registry file, for a host that tells its user once.
struct RegistryFileCheck {
    std::string path; ///< the file, as named (a symbolic link is not followed here)
    RegistryFileProblem problem = RegistryFileProblem::none;
    std::string reason; ///< what is wrong, in plain English; empty when nothing is
};

/// Looks at a registry file as a reader and a writer would, changing nothing.
RegistryFileCheck check_registry_file(const std::string& path);

} // namespace qv5::detail

#endif // QV5_PLATFORM_SETTINGS_STORE_H
