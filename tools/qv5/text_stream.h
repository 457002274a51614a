// Rows of text read and written in large blocks, for commands that take a stream of rows: the
// input is read a block at a time and handed out line by line, each line split into fields
// (comma, tab or blank separated, quoted fields allowed); the output is formatted into one
// reused buffer and written a block at a time. Memory stays the same however long the stream.
#ifndef QV5_TOOLS_TEXT_STREAM_H
#define QV5_TOOLS_TEXT_STREAM_H

#include <fmt/format.h>

#include <chrono>
#include <cstdint>
#include <cstdio>
#include <string>
#include <string_view>
#include <vector>

namespace qv5::cli {

/// Lines of a file read in large blocks. A UTF-8 byte-order mark at the start is skipped, and a
/// line's final carriage return is dropped.
class LineSource {
public:
    /// @param file read from, not closed here
    explicit LineSource(std::FILE* file);

    /// The next line without its end; valid until the next call.
    /// @return false at the end of the input (or when it cannot be read: see failed())
    bool next(std::string_view& line);
    /// The number of the line last returned, from 1.
    long long line_number() const { return m_line; }
    /// Whether the last line returned was longer than kMaxLine and was cut there.
    bool cut() const { return m_cut; }
    /// Whether reading failed (as opposed to reaching the end).
    bool failed() const { return m_failed; }

    /// Bytes read at a time.
    static constexpr std::size_t kBlock = std::size_t{1} << 20;
    /// The longest line kept whole; a longer one is cut (and reported by the reader).
    static constexpr std::size_t kMaxLine = std::size_t{16} << 20;

private:
    bool fill();

    std::FILE* m_file;
    std::vector<char> m_buffer;
    std::size_t m_begin = 0;
    std::size_t m_end = 0;
    long long m_line = 0;
    bool m_eof = false;
    bool m_failed = false;
    bool m_cut = false;
    bool m_skipping = false; ///< the rest of a cut line is being skipped
};

/// How the fields of a row are separated.
struct Delimiter {
    enum Kind { comma, tab, blanks, character } kind = comma;
    char c = ',';
};

/// The delimiter a row's text suggests: a tab if it has one, else a comma if it has one, else
/// runs of blanks.
Delimiter detect_delimiter(std::string_view line);

/// The delimiter named by --delimiter ("comma", "tab", "space" or one character).
Delimiter named_delimiter(std::string_view name);

/// Splits rows into fields. A field in double quotes may hold the delimiter, and a doubled
/// quote inside stands for one; the quotes are not part of the field. Fields are untrimmed
/// (blanks around a quoted field are dropped).
class FieldSplitter {
public:
    /// @return false for a quote that is not closed (the fields are then unusable)
    bool split(std::string_view line, const Delimiter& delimiter,
               std::vector<std::string_view>& fields);

private:
    std::string m_unquoted;
};

/// Output formatted into one reused buffer and written to a file a block at a time.
class BlockWriter {
public:
    explicit BlockWriter(std::FILE* file) : m_file(file) {}
    ~BlockWriter() { flush(); }
    BlockWriter(const BlockWriter&) = delete;
    BlockWriter& operator=(const BlockWriter&) = delete;

    fmt::memory_buffer& buffer() { return m_buffer; }
    /// Writes the buffer once it holds a block.
    void row_done() {
        if (m_buffer.size() >= kBlock) {
            flush();
        }
    }
    void flush();
    /// Whether a write failed (a full disk, a closed pipe).
    bool failed() const { return m_failed; }

    static constexpr std::size_t kBlock = std::size_t{1} << 18;

private:
    std::FILE* m_file;
    fmt::memory_buffer m_buffer;
    bool m_failed = false;
};

/// Appends a number as the shortest text that reads back as the same double (never "-0"), or
/// with `decimals` fixed decimals when `decimals` >= 0.
void append_number(fmt::memory_buffer& out, double value, int decimals = -1);

/// Appends text as a JSON string, quotes included.
void append_json_string(fmt::memory_buffer& out, std::string_view text);

/// Appends text as a CSV field, quoted when it holds a comma, a quote or a line end.
void append_csv_field(fmt::memory_buffer& out, std::string_view text);

/// Rows done and rows a second on standard error, redrawn at most four times a second, for a
/// long stream when standard error is a terminal (or when forced); silent otherwise.
class Progress {
public:
    explicit Progress(bool forced);
    ~Progress();
    Progress(const Progress&) = delete;
    Progress& operator=(const Progress&) = delete;

    void row() {
        if (m_on && (++m_rows & kCheckMask) == 0) {
            draw(false);
        }
    }

private:
    void draw(bool last);

    /// The clock is read once every 4096 rows.
    static constexpr std::uint64_t kCheckMask = 4095;

    bool m_on;
    bool m_drawn = false;
    std::uint64_t m_rows = 0;
    std::chrono::steady_clock::time_point m_start;
    std::chrono::steady_clock::time_point m_last;
};

} // namespace qv5::cli

#endif
