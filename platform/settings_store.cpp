// The settings store on the registry file.
#include "platform/settings_store.h"

#include "platform/files.h"

#include <cerrno>
#include <cstdint>
#include <cstring>

#include <sys/stat.h>

namespace qv5::detail {
namespace {

/// The lock that writers of a registry file take lives beside it under this suffix.
constexpr std::string_view kLockSuffix = ".lock";

std::string parent_of(const std::string& path) {
    const std::size_t slash = path.find_last_of('/');
    return slash == std::string::npos || slash == 0 ? std::string() : path.substr(0, slash);
}

class RegistryFileKey final : public SettingsKey {
public:
    RegistryFileKey(std::string file, std::u16string_view path, RegistryText text)
        : m_file(std::move(file)), m_path(path), m_text(std::move(text)) {}

    ~RegistryFileKey() override {
        try {
            close();
        } catch (...) {
            // An out-of-memory while merging loses the change, never the host.
        }
    }

    using SettingsKey::read_u32;
    bool read_u32(std::u16string_view name, std::uint32_t& value, std::uint32_t& type) override {
        RegistryValue stored;
        if (!m_text.find_value(m_path, name, stored) || stored.data.size() != 4) {
            return false;
        }
        value = static_cast<std::uint32_t>(stored.data[0]) |
                static_cast<std::uint32_t>(stored.data[1]) << 8 |
                static_cast<std::uint32_t>(stored.data[2]) << 16 |
                static_cast<std::uint32_t>(stored.data[3]) << 24;
        type = stored.type;
        return true;
    }

    bool write(std::u16string_view name, std::uint32_t type,
               const std::vector<unsigned char>& data) override {
        const RegistryValue value{type, data};
        RegistryValue old;
        const bool same = m_text.find_value(m_path, name, old) && old == value;
        if (!m_text.set_value(m_path, name, value)) {
            return false;
        }
        m_changed = m_changed || !same;
        m_pending.push_back(Pending{std::u16string(name), value});
        return true;
    }

    bool close() override {
        if (m_closed) {
            return m_result;
        }
        m_closed = true;
        if (!m_changed) {
            m_result = true;
            return true;
        }
        RegistryText merged;
        m_result = update_registry_file(
            m_file,
            [this](RegistryText& text) {
                for (const Pending& p : m_pending) {
                    if (!text.set_value(m_path, p.name, p.value)) {
                        return false;
                    }
                }
                return true;
            },
            merged);
        return m_result;
    }

private:
    struct Pending {
        std::u16string name;
        RegistryValue value;
    };
    std::string m_file;
    std::u16string m_path;
    RegistryText m_text; ///< the file as read, with this key's changes applied
    std::vector<Pending> m_pending;
    bool m_changed = false;
    bool m_closed = false;
    bool m_result = false;
};

} // namespace

RegistryText read_registry_file(const std::string& path) {
    std::string content;
    switch (read_whole_file(path, kRegistryFileLimit, content)) {
    case ReadStatus::read:
        return RegistryText::parse(content);
    case ReadStatus::missing:
        return RegistryText::parse({});
    case ReadStatus::failed:
        break;
    }
    return RegistryText::unreadable();
}

bool update_registry_file(const std::string& link_or_file,
                          const std::function<bool(RegistryText&)>& change, RegistryText& result) {
    if (link_or_file.empty()) {
        return false;
    }
    // Through a symbolic link: the file it names is locked, read and replaced, the link stays.
    const std::string path = resolve_symbolic_links(link_or_file);
    if (path.empty() || write_protected(path)) {
        return false;
    }
    const std::string folder = parent_of(path);
    if (!folder.empty()) {
        make_folders(folder);
    }
    const std::unique_ptr<FileLock> lock =
        FileLock::acquire(path + std::string(kLockSuffix), kRegistryLockPatience);
    if (lock == nullptr) {
        return false;
    }
    std::string content;
    const ReadStatus status = read_whole_file(path, kRegistryFileLimit, content);
    if (status == ReadStatus::failed) {
        return false;
    }
    RegistryText text = RegistryText::parse(content);
    if (!text.usable() || !change(text)) {
        return false;
    }
    const std::string updated = text.text();
    if (status == ReadStatus::missing || updated != content) {
        if (!replace_file_durably(path, updated)) {
            return false;
        }
    }
    result = std::move(text);
    return true;
}

std::unique_ptr<SettingsKey> RegistryFileStore::create_key(std::u16string_view path) {
    RegistryText text = read_registry_file(m_path);
    if (m_path.empty() || !text.usable() || split_key_path(path).empty()) {
        return nullptr;
    }
    if (!text.has_key(path) &&
        !update_registry_file(
            m_path, [path](RegistryText& t) { return t.add_key(path); }, text)) {
        return nullptr;
    }
    return std::make_unique<RegistryFileKey>(m_path, path, std::move(text));
}

std::unique_ptr<SettingsKey> RegistryFileStore::open_key(std::u16string_view path) {
    RegistryText text = read_registry_file(m_path);
    if (m_path.empty() || !text.has_key(path)) {
        return nullptr;
    }
    return std::make_unique<RegistryFileKey>(m_path, path, std::move(text));
}

std::unique_ptr<SettingsStore> open_settings_store() {
    return std::make_unique<RegistryFileStore>(registry_file_path());
}

RegistryFileCheck check_registry_file(const std::string& path) {
    RegistryFileCheck check;
    check.path = path;
    const auto problem = [&check](RegistryFileProblem kind, std::string reason) {
        check.problem = kind;
        check.reason = std::move(reason);
        return check;
    };
    if (path.empty()) {
        return problem(RegistryFileProblem::unreadable,
                       "no location: set QV5_REGISTRY, XDG_CONFIG_HOME or HOME");
    }
    struct stat info {};
    if (::stat(path.c_str(), &info) != 0) {
        if (errno == ENOENT) {
            return check; // a fresh registry
        }
        return problem(RegistryFileProblem::unreadable,
                       std::string("cannot be examined: ") + std::strerror(errno));
    }
    if (!S_ISREG(info.st_mode)) {
        return problem(RegistryFileProblem::unreadable,
                       "is not a regular file; the unit choices fall back to the defaults");
    }
    if (static_cast<std::uintmax_t>(info.st_size) > kRegistryFileLimit) {
        return problem(RegistryFileProblem::too_large,
                       "is larger than 16 MiB, so it is not read; the unit choices fall back "
                       "to the defaults");
    }
    std::string content;
    if (read_whole_file(path, kRegistryFileLimit, content) != ReadStatus::read) {
        return problem(RegistryFileProblem::unreadable,
                       "cannot be read; the unit choices fall back to the defaults");
    }
    if (!RegistryText::parse(content).usable()) {
        return problem(RegistryFileProblem::not_registry_file,
                       "does not start with \"Windows Registry Editor Version 5.00\", so it is "
                       "not read as a registry file and never written over; the unit choices "
                       "fall back to the defaults");
    }
    const std::string target = resolve_symbolic_links(path);
    if (target.empty() || write_protected(target)) {
        return problem(RegistryFileProblem::write_protected,
                       "is read-only; changes of the unit choices cannot be saved");
    }
    return check;
}

} // namespace qv5::detail
