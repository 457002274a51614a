// Reading and rewriting ".reg" text. The rules are those of the Windows registry editor's
// export format: a signature line, "[HIVE\key\path]" section headers, and one value per line as
// "name"=data, where data is "text", dword:XXXXXXXX, hex:bb,bb,... or hex(T):bb,... (a long
// hex list continues on the next line after a trailing backslash), or - to delete the value.
#include "platform/registry_text.h"

#include "platform/text_codec.h"

#include <algorithm>

namespace qv5::detail {
namespace {

/// The signature this library writes, and the older one it also accepts.
constexpr std::string_view kSignature = "Windows Registry Editor Version 5.00";
constexpr std::string_view kOldSignature = "REGEDIT4";
/// The hive the library's keys live under.
constexpr std::u16string_view kServedHive = u"HKEY_LOCAL_MACHINE";
/// Byte-order marks.
constexpr std::string_view kUtf8Mark = "\xEF\xBB\xBF";
constexpr std::string_view kUtf16LittleEndianMark = "\xFF\xFE";
/// A dword is at most eight hexadecimal digits.
constexpr std::size_t kDwordDigits = 8;
/// First code unit that the file can hold on a line (the C0 controls are refused).
constexpr char16_t kFirstPrintable = 0x20;

/// Blanks around a line's content; a CR is one, for lines of a mixed-ends file.
bool is_blank(char c) {
    return c == ' ' || c == '\t' || c == '\r';
}

std::string_view trim_left(std::string_view s) {
    while (!s.empty() && is_blank(s.front())) {
        s.remove_prefix(1);
    }
    return s;
}

std::string_view trim_right(std::string_view s) {
    while (!s.empty() && is_blank(s.back())) {
        s.remove_suffix(1);
    }
    return s;
}

std::string_view trim(std::string_view s) {
    return trim_left(trim_right(s));
}

char ascii_lower(char c) {
    return c >= 'A' && c <= 'Z' ? static_cast<char>(c + ('a' - 'A')) : c;
}

bool starts_with_no_case(std::string_view s, std::string_view prefix) {
    if (s.size() < prefix.size()) {
        return false;
    }
    for (std::size_t i = 0; i < prefix.size(); ++i) {
        if (ascii_lower(s[i]) != prefix[i]) {
            return false;
        }
    }
    return true;
}

int hex_value(char c) {
    if (c >= '0' && c <= '9') {
        return c - '0';
    }
    c = ascii_lower(c);
    return c >= 'a' && c <= 'f' ? c - 'a' + 10 : -1;
}

/// A run of 1 to `max_digits` hexadecimal digits making up all of `s`.
bool parse_hex_number(std::string_view s, std::size_t max_digits, std::uint32_t& value) {
    if (s.empty() || s.size() > max_digits) {
        return false;
    }
    value = 0;
    for (const char c : s) {
        const int digit = hex_value(c);
        if (digit < 0) {
            return false;
        }
        value = value * 16 + static_cast<std::uint32_t>(digit);
    }
    return true;
}

/// Reads a quoted name or string starting at s[pos] == '"'; a backslash takes the next
/// character as it is. On success `pos` is just past the closing quote.
bool parse_quoted(std::string_view s, std::size_t& pos, std::string& out) {
    out.clear();
    for (std::size_t i = pos + 1; i < s.size(); ++i) {
        if (s[i] == '\\' && i + 1 < s.size()) {
            out.push_back(s[++i]);
        } else if (s[i] == '"') {
            pos = i + 1;
            return true;
        } else {
            out.push_back(s[i]);
        }
    }
    return false;
}

std::string quoted(std::u16string_view text) {
    std::string out = "\"";
    for (const char c : utf16_to_utf8(text)) {
        if (c == '\\' || c == '"') {
            out.push_back('\\');
        }
        out.push_back(c);
    }
    out.push_back('"');
    return out;
}

/// Where the data of a value line starts (after "name" or @ and '='), or npos when the line is
/// no value line. `name` receives the name.
std::size_t value_data_start(std::string_view line, std::string& name) {
    const std::string_view s = trim_left(line);
    const std::size_t offset = line.size() - s.size();
    std::size_t pos = 0;
    if (s.empty()) {
        return std::string_view::npos;
    }
    if (s.front() == '@') {
        name.clear();
        pos = 1;
    } else if (s.front() != '"' || !parse_quoted(s, pos, name)) {
        return std::string_view::npos;
    }
    while (pos < s.size() && (s[pos] == ' ' || s[pos] == '\t')) {
        ++pos;
    }
    if (pos >= s.size() || s[pos] != '=') {
        return std::string_view::npos;
    }
    return offset + pos + 1;
}

/// True when a line is a hex value line that continues on the next line.
bool starts_continued_value(std::string_view line) {
    std::string name;
    const std::size_t data = value_data_start(line, name);
    if (data == std::string_view::npos) {
        return false;
    }
    const std::string_view rest = trim_right(line);
    return starts_with_no_case(trim_left(line.substr(data)), "hex") && !rest.empty() &&
           rest.back() == '\\';
}

/// True when a line can carry on a hex list: it starts with a hex digit. Anything else - a blank
/// line, a section header, the next value - ends the list even after a trailing backslash.
bool continues_onto(std::string_view line) {
    const std::string_view s = trim_left(line);
    return !s.empty() && hex_value(s.front()) >= 0;
}

bool continues(std::string_view line) {
    const std::string_view rest = trim_right(line);
    return !rest.empty() && rest.back() == '\\';
}

/// Comma-separated two-digit hex bytes; a trailing comma is tolerated.
bool parse_hex_bytes(std::string_view list, std::vector<unsigned char>& bytes) {
    bytes.clear();
    list = trim(list);
    if (list.empty()) {
        return true;
    }
    if (list.back() == ',') {
        list.remove_suffix(1);
    }
    while (true) {
        const std::size_t comma = list.find(',');
        std::uint32_t byte = 0;
        if (!parse_hex_number(trim(list.substr(0, comma)), 2, byte)) {
            return false;
        }
        bytes.push_back(static_cast<unsigned char>(byte));
        if (comma == std::string_view::npos) {
            return true;
        }
        list.remove_prefix(comma + 1);
    }
}

/// Parses the data of a value: true with `value` filled, false when malformed.
bool parse_value_data(std::string_view data, RegistryValue& value) {
    if (!data.empty() && data.front() == '"') {
        std::size_t pos = 0;
        std::string text;
        if (!parse_quoted(data, pos, text) || !trim(data.substr(pos)).empty()) {
            return false;
        }
        value.type = kRegistryString;
        value.data.clear();
        for (const char16_t unit : utf8_to_utf16(text)) {
            value.data.push_back(static_cast<unsigned char>(unit & 0xFF));
            value.data.push_back(static_cast<unsigned char>(unit >> 8));
        }
        value.data.push_back(0);
        value.data.push_back(0);
        return true;
    }
    if (starts_with_no_case(data, "dword:")) {
        std::uint32_t number = 0;
        if (!parse_hex_number(trim(data.substr(6)), kDwordDigits, number)) {
            return false;
        }
        value.type = kRegistryDword;
        value.data = {static_cast<unsigned char>(number & 0xFF),
                      static_cast<unsigned char>((number >> 8) & 0xFF),
                      static_cast<unsigned char>((number >> 16) & 0xFF),
                      static_cast<unsigned char>(number >> 24)};
        return true;
    }
    if (starts_with_no_case(data, "hex:")) {
        value.type = kRegistryBinary;
        return parse_hex_bytes(data.substr(4), value.data);
    }
    if (starts_with_no_case(data, "hex(")) {
        const std::size_t close = data.find("):");
        return close != std::string_view::npos &&
               parse_hex_number(data.substr(4, close - 4), kDwordDigits, value.type) &&
               parse_hex_bytes(data.substr(close + 2), value.data);
    }
    return false;
}

std::string value_line(std::u16string_view name, const RegistryValue& value) {
    static constexpr char kDigits[] = "0123456789abcdef";
    std::string line = name.empty() ? std::string("@") : quoted(name);
    line.push_back('=');
    if (value.type == kRegistryDword && value.data.size() == 4) {
        line += "dword:";
        for (int i = 3; i >= 0; --i) {
            line.push_back(kDigits[value.data[static_cast<std::size_t>(i)] >> 4]);
            line.push_back(kDigits[value.data[static_cast<std::size_t>(i)] & 0xF]);
        }
        return line;
    }
    if (value.type == kRegistryBinary) {
        line += "hex:";
    } else {
        line += "hex(";
        std::string type;
        std::uint32_t t = value.type;
        do {
            type.insert(type.begin(), kDigits[t & 0xF]);
            t >>= 4;
        } while (t != 0);
        line += type + "):";
    }
    for (std::size_t i = 0; i < value.data.size(); ++i) {
        if (i > 0) {
            line.push_back(',');
        }
        line.push_back(kDigits[value.data[i] >> 4]);
        line.push_back(kDigits[value.data[i] & 0xF]);
    }
    return line;
}

/// True when a name or key component survives being written to the file and read back.
bool recordable(std::u16string_view text) {
    for (const char16_t unit : text) {
        if (unit < kFirstPrintable) {
            return false;
        }
    }
    return utf8_to_utf16(utf16_to_utf8(text)) == text;
}

bool same_path(const std::vector<std::u16string>& a, const std::vector<std::u16string>& b,
               std::size_t length) {
    if (a.size() < length || b.size() < length) {
        return false;
    }
    for (std::size_t i = 0; i < length; ++i) {
        if (compare_no_case(a[i], b[i]) != 0) {
            return false;
        }
    }
    return true;
}

bool same_name(std::u16string_view a, std::u16string_view b) {
    return compare_no_case(a, b) == 0;
}

/// The file's bytes as UTF-8 text without a byte-order mark.
std::string decoded(std::string_view bytes) {
    if (bytes.substr(0, 2) == kUtf16LittleEndianMark) {
        std::u16string units;
        for (std::size_t i = 2; i + 1 < bytes.size(); i += 2) {
            units.push_back(static_cast<char16_t>(static_cast<unsigned char>(bytes[i]) |
                                                  (static_cast<unsigned char>(bytes[i + 1]) << 8)));
        }
        return utf16_to_utf8(units);
    }
    if (bytes.substr(0, 3) == kUtf8Mark) {
        bytes.remove_prefix(3);
    }
    return std::string(bytes);
}

} // namespace

std::vector<std::u16string> split_key_path(std::u16string_view path) {
    std::vector<std::u16string> components;
    while (true) {
        const std::size_t slash = path.find(u'\\');
        const std::u16string_view part = path.substr(0, slash);
        if (!part.empty()) {
            if (!recordable(part)) {
                return {};
            }
            components.emplace_back(part);
        }
        if (slash == std::u16string_view::npos) {
            return components;
        }
        path.remove_prefix(slash + 1);
    }
}

RegistryText::Entry RegistryText::parse_entry(const std::vector<std::string>& lines) {
    Entry entry;
    entry.lines = lines;
    std::string text = lines.front();
    for (std::size_t i = 1; i < lines.size(); ++i) {
        text = std::string(trim_right(text));
        text.pop_back(); // the continuation backslash
        text += trim_left(lines[i]);
    }
    const std::string_view s = trim(text);
    if (s.empty() || s.front() == ';') {
        return entry; // blank line or comment
    }
    entry.kind = EntryKind::malformed;
    std::string name;
    const std::size_t data = value_data_start(text, name);
    if (data == std::string_view::npos) {
        return entry;
    }
    entry.named = true;
    entry.name = utf8_to_utf16(name);
    const std::string_view value = trim(std::string_view(text).substr(data));
    if (value == "-") {
        entry.kind = EntryKind::deleted;
    } else if (parse_value_data(value, entry.value)) {
        entry.kind = EntryKind::value;
    }
    return entry;
}

RegistryText::Section RegistryText::parse_header(const std::string& line) {
    Section section;
    section.header = line;
    const std::string_view s = trim(line);
    const std::size_t close = s.rfind(']');
    if (close == std::string_view::npos || close < 1) {
        return section;
    }
    const std::u16string inner = utf8_to_utf16(s.substr(1, close - 1));
    if (inner.empty() || inner.front() == u'-') {
        return section; // a deletion: kept, never served
    }
    const std::size_t slash = inner.find(u'\\');
    if (compare_no_case(std::u16string_view(inner).substr(0, slash), kServedHive) != 0) {
        return section; // another hive
    }
    section.served = true;
    if (slash != std::u16string::npos) {
        std::u16string_view rest = std::u16string_view(inner).substr(slash + 1);
        while (true) {
            const std::size_t next = rest.find(u'\\');
            if (next != 0 && !rest.empty()) {
                section.path.emplace_back(rest.substr(0, next));
            }
            if (next == std::u16string_view::npos) {
                break;
            }
            rest.remove_prefix(next + 1);
        }
    }
    return section;
}

RegistryText RegistryText::parse(std::string_view bytes) {
    RegistryText result;
    const std::string text = decoded(bytes);
    // The first line decides the file's line ends; in a CR LF file each line loses one CR.
    const std::size_t first_end = text.find('\n');
    const bool crlf =
        first_end != std::string::npos && first_end > 0 && text[first_end - 1] == '\r';
    if (crlf) {
        result.m_line_end = "\r\n";
    }
    std::vector<std::string> lines;
    std::size_t start = 0;
    while (start < text.size()) {
        std::size_t end = text.find('\n', start);
        if (end == std::string::npos) {
            end = text.size();
        }
        std::string line = text.substr(start, end - start);
        if (crlf && !line.empty() && line.back() == '\r') {
            line.pop_back();
        }
        lines.push_back(std::move(line));
        start = end + 1;
    }

    result.m_sections.emplace_back();
    std::size_t i = 0;
    while (i < lines.size() && trim(lines[i]).empty()) {
        ++i;
    }
    if (i == lines.size()) {
        return result; // empty: a fresh registry
    }
    const std::string_view signature = trim(lines[i]);
    if (signature != kSignature && signature != kOldSignature) {
        result.m_usable = false;
        return result;
    }
    result.m_signature.assign(lines.begin(), lines.begin() + static_cast<std::ptrdiff_t>(i + 1));
    for (++i; i < lines.size();) {
        const std::string_view s = trim(lines[i]);
        if (!s.empty() && s.front() == '[') {
            result.m_sections.push_back(parse_header(lines[i]));
            ++i;
            continue;
        }
        std::vector<std::string> group{lines[i]};
        bool more = starts_continued_value(lines[i]);
        for (++i; more && i < lines.size() && continues_onto(lines[i]); ++i) {
            group.push_back(lines[i]);
            more = continues(lines[i]);
        }
        result.m_sections.back().entries.push_back(parse_entry(group));
    }
    return result;
}

RegistryText RegistryText::unreadable() {
    RegistryText result;
    result.m_usable = false;
    result.m_sections.emplace_back();
    return result;
}

bool RegistryText::has_key(std::u16string_view path) const {
    const std::vector<std::u16string> wanted = split_key_path(path);
    if (!m_usable || wanted.empty()) {
        return false;
    }
    return std::any_of(m_sections.begin(), m_sections.end(), [&](const Section& section) {
        return section.served && same_path(section.path, wanted, wanted.size());
    });
}

bool RegistryText::find_value(std::u16string_view path, std::u16string_view name,
                              RegistryValue& out) const {
    const std::vector<std::u16string> wanted = split_key_path(path);
    if (!m_usable || wanted.empty()) {
        return false;
    }
    bool found = false;
    for (const Section& section : m_sections) {
        if (!section.served || section.path.size() != wanted.size() ||
            !same_path(section.path, wanted, wanted.size())) {
            continue;
        }
        for (const Entry& entry : section.entries) {
            if (!entry.named || !same_name(entry.name, name)) {
                continue;
            }
            if (entry.kind == EntryKind::value) {
                out = entry.value;
                found = true;
            } else if (entry.kind == EntryKind::deleted) {
                found = false;
            }
        }
    }
    return found;
}

RegistryText::Section* RegistryText::last_section_of(const std::vector<std::u16string>& path) {
    Section* last = nullptr;
    for (Section& section : m_sections) {
        if (section.served && section.path.size() == path.size() &&
            same_path(section.path, path, path.size())) {
            last = &section;
        }
    }
    return last;
}

RegistryText::Section& RegistryText::append_section(const std::vector<std::u16string>& path) {
    if (m_signature.empty()) {
        m_signature.emplace_back(kSignature);
    }
    // Sections are set apart by a blank line, as the registry editor writes them.
    Section& previous = m_sections.back();
    const std::string* last_line = &m_signature.back();
    if (!previous.entries.empty()) {
        last_line = &previous.entries.back().lines.back();
    } else if (!previous.header.empty()) {
        last_line = &previous.header;
    }
    if (!trim(*last_line).empty()) {
        previous.entries.push_back(Entry{{std::string()}, EntryKind::other, false, {}, {}});
    }
    Section section;
    std::u16string header = u"[";
    header += kServedHive;
    for (const std::u16string& component : path) {
        header += u'\\';
        header += component;
    }
    header += u']';
    section.header = utf16_to_utf8(header);
    section.served = true;
    section.path = path;
    section.entries.push_back(Entry{{std::string()}, EntryKind::other, false, {}, {}});
    m_sections.push_back(std::move(section));
    return m_sections.back();
}

bool RegistryText::add_key(std::u16string_view path) {
    const std::vector<std::u16string> wanted = split_key_path(path);
    if (!m_usable || wanted.empty()) {
        return false;
    }
    if (!has_key(path)) {
        append_section(wanted);
    }
    return true;
}

bool RegistryText::set_value(std::u16string_view path, std::u16string_view name,
                             const RegistryValue& value) {
    const std::vector<std::u16string> wanted = split_key_path(path);
    if (!m_usable || wanted.empty() || name.find_first_of(u"\r\n") != std::u16string_view::npos ||
        !(name.empty() || recordable(name))) {
        return false;
    }
    Section* target = last_section_of(wanted);
    if (target == nullptr) {
        target = &append_section(wanted);
    }
    // Earlier entries of the name, in any section of the key, would be read in its stead by a
    // reader that takes the first: remove them all, keep the place of the target's first one.
    for (Section& section : m_sections) {
        if (&section == target || !section.served || section.path.size() != wanted.size() ||
            !same_path(section.path, wanted, wanted.size())) {
            continue;
        }
        std::erase_if(section.entries,
                      [&](const Entry& e) { return e.named && same_name(e.name, name); });
    }
    Entry entry;
    entry.lines = {value_line(name, value)};
    entry.kind = EntryKind::value;
    entry.named = true;
    entry.name = std::u16string(name);
    entry.value = value;
    auto& entries = target->entries;
    const auto same = [&](const Entry& e) { return e.named && same_name(e.name, name); };
    const auto first = std::find_if(entries.begin(), entries.end(), same);
    if (first != entries.end()) {
        *first = std::move(entry);
        entries.erase(std::remove_if(first + 1, entries.end(), same), entries.end());
        return true;
    }
    // A new value goes after the last line with content, before the blank lines that end the
    // section.
    auto at = entries.end();
    while (at != entries.begin() && trim((at - 1)->lines.back()).empty()) {
        --at;
    }
    entries.insert(at, std::move(entry));
    return true;
}

std::string RegistryText::text() const {
    std::string out;
    const auto put = [&](const std::string& line) {
        out += line;
        out += m_line_end;
    };
    for (const std::string& line : m_signature) {
        put(line);
    }
    for (const Section& section : m_sections) {
        if (!section.header.empty()) {
            put(section.header);
        }
        for (const Entry& entry : section.entries) {
            for (const std::string& line : entry.lines) {
                put(line);
            }
        }
    }
    return out;
}

} // namespace qv5::detail
