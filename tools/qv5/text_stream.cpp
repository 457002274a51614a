#include "text_stream.h"

#include <cmath>
#include <cstring>

#include <unistd.h>

namespace qv5::cli {
namespace {

/// The UTF-8 encoding of U+FEFF, which some editors put at the start of a text file.
constexpr std::string_view kByteOrderMark = "\xEF\xBB\xBF";

} // namespace

LineSource::LineSource(std::FILE* file) : m_file(file), m_buffer(kBlock) {}

bool LineSource::fill() {
    if (m_begin > 0) {
        std::memmove(m_buffer.data(), m_buffer.data() + m_begin, m_end - m_begin);
        m_end -= m_begin;
        m_begin = 0;
    }
    if (m_end == m_buffer.size()) {
        if (m_buffer.size() >= kMaxLine) {
            return false;
        }
        m_buffer.resize(m_buffer.size() * 2);
    }
    const std::size_t got = std::fread(m_buffer.data() + m_end, 1, m_buffer.size() - m_end, m_file);
    m_end += got;
    if (got == 0) {
        m_eof = true;
        m_failed = std::ferror(m_file) != 0;
    }
    return got > 0;
}

bool LineSource::next(std::string_view& line) {
    m_cut = false;
    std::size_t scanned = 0; // bytes after m_begin known to hold no line end
    while (true) {
        const char* base = m_buffer.data() + m_begin;
        const std::size_t held = m_end - m_begin;
        const void* newline = std::memchr(base + scanned, '\n', held - scanned);
        if (newline != nullptr) {
            const auto length = static_cast<std::size_t>(static_cast<const char*>(newline) - base);
            line = std::string_view(base, length);
            m_begin += length + 1;
            scanned = 0;
            if (m_skipping) {
                // The end of a line that was cut: not a line of its own.
                m_skipping = false;
                continue;
            }
            break;
        }
        scanned = held;
        if (!m_eof && fill()) {
            continue; // fill() moved the held bytes to the front: `scanned` still counts them
        }
        if (m_end == m_begin) {
            return false;
        }
        line = std::string_view(m_buffer.data() + m_begin, m_end - m_begin);
        m_begin = m_end;
        scanned = 0;
        if (m_eof) {
            if (m_skipping) {
                m_skipping = false;
                return false;
            }
            break;
        }
        // The line fills the largest buffer: hand out its start once and skip the rest.
        if (m_skipping) {
            continue;
        }
        m_cut = true;
        m_skipping = true;
        break;
    }
    ++m_line;
    if (m_line == 1 && line.substr(0, kByteOrderMark.size()) == kByteOrderMark) {
        line.remove_prefix(kByteOrderMark.size());
    }
    if (!line.empty() && line.back() == '\r') {
        line.remove_suffix(1);
    }
    return true;
}

Delimiter detect_delimiter(std::string_view line) {
    if (line.find('\t') != std::string_view::npos) {
        return {Delimiter::tab, '\t'};
    }
    if (line.find(',') != std::string_view::npos) {
        return {Delimiter::comma, ','};
    }
    return {Delimiter::blanks, ' '};
}

Delimiter named_delimiter(std::string_view name) {
    if (name == "tab") {
        return {Delimiter::tab, '\t'};
    }
    if (name == "space") {
        return {Delimiter::blanks, ' '};
    }
    if (name == "comma" || name.empty()) {
        return {Delimiter::comma, ','};
    }
    return {Delimiter::character, name.front()};
}

bool FieldSplitter::split(std::string_view line, const Delimiter& delimiter,
                          std::vector<std::string_view>& fields) {
    fields.clear();
    const bool blanks = delimiter.kind == Delimiter::blanks;
    const auto is_separator = [&](char c) {
        return blanks ? (c == ' ' || c == '\t') : c == delimiter.c;
    };
    if (line.find('"') == std::string_view::npos) {
        std::size_t i = 0;
        if (blanks) {
            while (i < line.size() && is_separator(line[i])) {
                ++i;
            }
            if (i == line.size()) {
                fields.emplace_back();
                return true;
            }
        }
        while (true) {
            std::size_t end = i;
            while (end < line.size() && !is_separator(line[end])) {
                ++end;
            }
            fields.push_back(line.substr(i, end - i));
            if (end == line.size()) {
                return true;
            }
            i = end + 1;
            if (blanks) {
                while (i < line.size() && is_separator(line[i])) {
                    ++i;
                }
                if (i == line.size()) {
                    return true;
                }
            }
        }
    }
    // Quoted fields: unquote into one string, then point the fields into it.
    m_unquoted.clear();
    m_unquoted.reserve(line.size());
    std::vector<std::pair<std::size_t, std::size_t>> spans;
    std::size_t i = 0;
    const auto skip_blanks = [&] {
        while (i < line.size() && (line[i] == ' ' || line[i] == '\t') && !is_separator(line[i])) {
            ++i;
        }
    };
    if (blanks) {
        while (i < line.size() && is_separator(line[i])) {
            ++i;
        }
    }
    while (true) {
        const std::size_t begin = m_unquoted.size();
        std::size_t look = i;
        while (look < line.size() && (line[look] == ' ' || line[look] == '\t') &&
               !is_separator(line[look])) {
            ++look;
        }
        if (look < line.size() && line[look] == '"') {
            i = look + 1;
            while (true) {
                if (i >= line.size()) {
                    return false;
                }
                if (line[i] == '"') {
                    if (i + 1 < line.size() && line[i + 1] == '"') {
                        m_unquoted += '"';
                        i += 2;
                        continue;
                    }
                    ++i;
                    break;
                }
                m_unquoted += line[i++];
            }
            skip_blanks();
            if (i < line.size() && !is_separator(line[i])) {
                return false; // text after the closing quote
            }
        } else {
            while (i < line.size() && !is_separator(line[i])) {
                m_unquoted += line[i++];
            }
        }
        spans.emplace_back(begin, m_unquoted.size() - begin);
        if (i >= line.size()) {
            break;
        }
        ++i;
        if (blanks) {
            while (i < line.size() && is_separator(line[i])) {
                ++i;
            }
            if (i >= line.size()) {
                break;
            }
        }
    }
    for (const auto& [begin, size] : spans) {
        fields.emplace_back(m_unquoted.data() + begin, size);
    }
    return true;
}

void BlockWriter::flush() {
    if (m_buffer.size() > 0 && !m_failed) {
        m_failed = std::fwrite(m_buffer.data(), 1, m_buffer.size(), m_file) != m_buffer.size();
    }
    m_buffer.clear();
    if (!m_failed && std::fflush(m_file) != 0) {
        m_failed = true;
    }
}

void append_number(fmt::memory_buffer& out, double value, int decimals) {
    if (value == 0.0) {
        value = 0.0; // no negative zero
    }
    if (decimals < 0) {
        fmt::format_to(std::back_inserter(out), "{}", value);
        return;
    }
    const std::size_t start = out.size();
    fmt::format_to(std::back_inserter(out), "{:.{}f}", value, decimals);
    if (out[start] == '-') {
        bool zero = true;
        for (std::size_t i = start + 1; i < out.size() && zero; ++i) {
            zero = out[i] == '0' || out[i] == '.';
        }
        if (zero) {
            std::memmove(out.data() + start, out.data() + start + 1, out.size() - start - 1);
            out.resize(out.size() - 1);
        }
    }
}

void append_json_string(fmt::memory_buffer& out, std::string_view text) {
    out.push_back('"');
    for (const char c : text) {
        const auto byte = static_cast<unsigned char>(c);
        if (c == '"' || c == '\\') {
            out.push_back('\\');
            out.push_back(c);
        } else if (byte < 0x20 || byte == 0x7f) {
            fmt::format_to(std::back_inserter(out), "\\u{:04x}", byte);
        } else {
            out.push_back(c);
        }
    }
    out.push_back('"');
}

void append_csv_field(fmt::memory_buffer& out, std::string_view text) {
    if (text.find_first_of(",\"\r\n") == std::string_view::npos) {
        out.append(text);
        return;
    }
    out.push_back('"');
    for (const char c : text) {
        if (c == '"') {
            out.push_back('"');
        }
        out.push_back(c);
    }
    out.push_back('"');
}

Progress::Progress(bool forced)
    : m_on(forced || isatty(fileno(stderr)) != 0), m_start(std::chrono::steady_clock::now()),
      m_last(m_start) {}

Progress::~Progress() {
    if (m_drawn) {
        draw(true);
    }
}

void Progress::draw(bool last) {
    using namespace std::chrono;
    const auto now = steady_clock::now();
    if (!last && now - m_last < milliseconds(250)) {
        return;
    }
    m_last = now;
    const double seconds = duration<double>(now - m_start).count();
    const double rate = seconds > 0.0 ? static_cast<double>(m_rows) / seconds : 0.0;
    const std::string text =
        fmt::format("\r{} rows, {:.0f} rows/s{}", m_rows, std::floor(rate), last ? "\n" : "");
    std::fwrite(text.data(), 1, text.size(), stderr);
    m_drawn = true;
}

} // namespace qv5::cli
