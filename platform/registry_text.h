// The registry file's text: the Windows ".reg" export format, read and rewritten in place.
// Pure text processing, no file access; the settings store (settings_store.h) does the I/O.
// Internal header.
//
//     Windows Registry Editor Version 5.00
//
//     [HKEY_LOCAL_MACHINE\Software\Halvik\QV5\Units]
//     "Horizontal distance"=hex:01,00,00,00
//     "Popups"=dword:00000001
//
// Only keys under HKEY_LOCAL_MACHINE are served. Everything else in the file - other hives,
// comments, deletion entries, lines this reader does not understand - is kept as it was when
// the text is written back, so that a file shared with other software loses nothing.
#ifndef QV5_PLATFORM_REGISTRY_TEXT_H
#define QV5_PLATFORM_REGISTRY_TEXT_H

#include <cstdint>
#include <string>
#include <string_view>
#include <vector>

namespace qv5::detail {

/// Value types, numbered as the registry numbers them.
inline constexpr std::uint32_t kRegistryString = 1; ///< REG_SZ: UTF-16LE text with terminator
inline constexpr std::uint32_t kRegistryBinary = 3; ///< REG_BINARY: bytes
inline constexpr std::uint32_t kRegistryDword = 4;  ///< REG_DWORD: four bytes, little-endian

/// One registry value: its type and its bytes.
struct RegistryValue {
    std::uint32_t type = kRegistryBinary;
    std::vector<unsigned char> data;
    bool operator==(const RegistryValue& other) const = default;
};

/// A key path ("Software\Halvik\QV5") split at its backslashes, empty components dropped.
/// @return empty when the path names no key or holds a component the file cannot record
///         (a control character, an unpaired surrogate)
std::vector<std::u16string> split_key_path(std::u16string_view path);

/// The parsed text of a registry file.
class RegistryText {
public:
    /// Parses a registry file's bytes: UTF-8 with or without byte-order mark, or UTF-16LE with
    /// its byte-order mark (as Windows' registry editor exports). Never fails: what cannot be
    /// understood is kept as it is.
    static RegistryText parse(std::string_view bytes);

    /// The text of a file that is there but cannot be read: it reads as empty and is never
    /// written over.
    static RegistryText unreadable();

    /// True when the text is empty or starts with the registry file signature
    /// ("Windows Registry Editor Version 5.00" or "REGEDIT4"). Any other file is not a registry
    /// file: it reads as empty and must not be overwritten.
    bool usable() const { return m_usable; }

    /// True when the key exists: it has a section, or one of its subkeys has.
    bool has_key(std::u16string_view path) const;

    /// Looks a value up by name (ignoring case, as the registry does; an empty name is the
    /// key's default value "@"). Where a file holds a name twice, the later entry wins.
    /// @return false when the key or the value does not exist or the file is not usable
    bool find_value(std::u16string_view path, std::u16string_view name, RegistryValue& out) const;

    /// Gives the key a section of its own unless it exists already.
    /// @return false when the path cannot be recorded or the file is not usable
    bool add_key(std::u16string_view path);

    /// Sets a value, giving its key a section if it has none. Any other entry of the same name
    /// in that key is removed.
    /// @return false when the path or name cannot be recorded or the file is not usable
    bool set_value(std::u16string_view path, std::u16string_view name, const RegistryValue& value);

    /// The file's text: UTF-8, in the line ends the file used. A fresh file gets the signature.
    std::string text() const;

private:
    enum class EntryKind { other, value, deleted, malformed };

    struct Entry {
        std::vector<std::string> lines; ///< raw lines; several when a value continues with '\'
        EntryKind kind = EntryKind::other;
        bool named = false;
        std::u16string name;
        RegistryValue value;
    };

    struct Section {
        std::string header;  ///< the raw "[...]" line; empty for the lines before any section
        bool served = false; ///< a key under HKEY_LOCAL_MACHINE
        std::vector<std::u16string> path;
        std::vector<Entry> entries;
    };

    static Entry parse_entry(const std::vector<std::string>& lines);
    static Section parse_header(const std::string& line);
    Section* last_section_of(const std::vector<std::u16string>& path);
    Section& append_section(const std::vector<std::u16string>& path);

    bool m_usable = true;
    std::string m_line_end = "\n";
    std::vector<std::string> m_signature; ///< the lines up to and including the signature
    std::vector<Section> m_sections;      ///< the first holds the lines before any "[...]"
};

} // namespace qv5::detail

#endif // QV5_PLATFORM_REGISTRY_TEXT_H
