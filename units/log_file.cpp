// CLogFile: the diagnostic log.
#include "qv5/logfile.h"

#include "platform/clock.h"
#include "platform/files.h"
#include "platform/number_text.h"
#include "platform/text_codec.h"
#include "units/quantity_text.h"

#include <cstring>
#include <optional>
#include <string>

namespace {

using namespace qv5::detail;

/// A line end in the log: CR LF.
constexpr std::string_view kLineEnd = "\r\n";
/// SBText copies at most this many bytes of its text.
constexpr std::size_t kFragmentBytes = 100;
/// Distances in the log carry three decimals.
constexpr int kLogDistanceDecimals = 3;
/// Times and GPS values carry one decimal.
constexpr int kLogTenths = 1;
/// Milliseconds per second.
constexpr unsigned long kMillisecondsPerSecond = 1000;

std::string single_byte(std::u16string_view text) {
    return utf16_to_windows1252(text);
}

std::string single_byte(const unsigned short* text) {
    std::u16string units;
    for (; text != nullptr && *text != 0; ++text) {
        units.push_back(static_cast<char16_t>(*text));
    }
    return utf16_to_windows1252(units);
}

/// The host's units, or metres and degrees-minutes-seconds when it gave none.
class UnitsInUse {
public:
    explicit UnitsInUse(CQuantityUnits* units) : m_units(units) {
        if (m_units == nullptr) {
            m_metric.emplace(CString());
            m_metric->SetHorizontalDistance(units_Metres);
            m_metric->SetVerticalDistance(units_Metres);
            m_metric->SetAngles(units_AngleDMS);
        }
    }
    const CQuantityUnits& operator*() const { return m_units != nullptr ? *m_units : *m_metric; }
    const CQuantityUnits* operator->() const { return &**this; }

private:
    CQuantityUnits* m_units;
    std::optional<CQuantityUnits> m_metric;
};

/// Runs one writer: nothing while closed (tested before the lock is taken), else the text that
/// `compose` returns and `newLines` line ends, in one write under the lock.
template <class Compose>
void logged(std::atomic<int>& open, std::mutex& lock, OutputFile* const& file,
            unsigned short newLines, Compose compose) {
    if (open.load() == 0) {
        return;
    }
    const std::lock_guard<std::mutex> guard(lock);
    if (file == nullptr) {
        return; // closed by another thread meanwhile
    }
    try {
        std::string bytes = compose();
        bytes.reserve(bytes.size() + kLineEnd.size() * newLines);
        for (unsigned short i = 0; i < newLines; ++i) {
            bytes += kLineEnd;
        }
        file->write(bytes);
    } catch (...) {
        // Out of memory: the fragment is lost, the host is not.
    }
}

} // namespace

CLogFile::CLogFile(CQuantityUnits* units)
    : m_file(nullptr), m_open(0), m_buffer{}, m_announce(0), m_units(units) {
    try {
        for (const std::string& folder : log_folders()) {
            make_folders(folder);
        }
    } catch (...) {
        // The folders are a convenience for the host; failing to make them is not an error.
    }
}

CLogFile::CLogFile(const CLogFile& other)
    : m_file(nullptr), m_open(0), m_buffer{}, m_announce(0), m_units(nullptr) {
    const std::lock_guard<std::mutex> guard(other.m_lock);
    m_file = other.m_file;
    if (m_file != nullptr) {
        m_file->add_holder();
    }
    m_open.store(other.m_open.load());
    std::memcpy(m_buffer, other.m_buffer, sizeof m_buffer);
    m_announce = other.m_announce;
    m_units = other.m_units;
}

CLogFile& CLogFile::operator=(const CLogFile& other) {
    if (this == &other) {
        return *this;
    }
    // Both locks, always taken in the same (address) order so two opposite assignments cannot
    // deadlock.
    std::mutex& first = this < &other ? m_lock : other.m_lock;
    std::mutex& second = this < &other ? other.m_lock : m_lock;
    const std::lock_guard<std::mutex> guard_first(first);
    const std::lock_guard<std::mutex> guard_second(second);
    if (other.m_file != nullptr) {
        other.m_file->add_holder();
    }
    OutputFile::drop_holder(m_file);
    m_file = other.m_file;
    m_open.store(other.m_open.load());
    std::memcpy(m_buffer, other.m_buffer, sizeof m_buffer);
    m_announce = other.m_announce;
    m_units = other.m_units;
    return *this;
}

CLogFile::~CLogFile() {
    // The file is not closed for the log's sake (no "Logging disabled"); the last holder of it
    // lets the descriptor go.
    OutputFile::drop_holder(m_file);
}

int CLogFile::Open(const unsigned short* path, int truncate, int announce) {
    const std::lock_guard<std::mutex> guard(m_lock);
    // A log opened again lets go of its previous file without a word, as a handle overwritten
    // would.
    OutputFile::drop_holder(m_file);
    m_file = nullptr;
    m_open.store(0);
    if (path == nullptr) {
        return 0;
    }
    try {
        std::unique_ptr<OutputFile> file = OutputFile::open(CString(path).ToUtf8(), truncate != 0);
        if (file == nullptr) {
            return 0;
        }
        m_file = file.release();
        m_open.store(1);
        m_announce = announce;
        if (announce != 0) {
            const UnitsInUse units(m_units);
            unsigned short time[CQuantityUnits::kFormatBufferSize];
            std::string bytes(kLineEnd);
            bytes += "Logging enabled ";
            bytes += single_byte(units->FormatSystemTime(local_time(), time));
            bytes += kLineEnd;
            m_file->write(bytes);
        }
        return 1;
    } catch (...) {
        return m_open.load(); // out of memory after opening: open, without the announcement
    }
}

void CLogFile::Close() {
    const std::lock_guard<std::mutex> guard(m_lock);
    if (m_file != nullptr) {
        if (m_announce != 0) {
            m_file->write("Logging disabled \r\n");
        }
        m_file->close();
    }
    OutputFile::drop_holder(m_file);
    m_file = nullptr;
    m_open.store(0);
}

int CLogFile::IsOpen() {
    return m_open.load();
}

void CLogFile::Text(const unsigned short* text, unsigned short newLines) {
    logged(m_open, m_lock, m_file, newLines, [&] { return single_byte(text); });
}

void CLogFile::SBText(const char* text, unsigned short newLines) {
    logged(m_open, m_lock, m_file, newLines, [&] {
        if (text == nullptr) {
            m_buffer[0] = '\0';
        } else {
            std::strncpy(m_buffer, text, kFragmentBytes);
            m_buffer[kFragmentBytes] = '\0';
        }
        return std::string(m_buffer);
    });
}

void CLogFile::Time(unsigned short newLines) {
    logged(m_open, m_lock, m_file, newLines, [] {
        TextBuilder text;
        text.put_fixed(static_cast<double>(tick_count_ms()), kLogTenths);
        return single_byte(text.view());
    });
}

void CLogFile::NewLine(unsigned short count) {
    logged(m_open, m_lock, m_file, count, [] { return std::string(); });
}

void CLogFile::Space(unsigned short count) {
    logged(m_open, m_lock, m_file, 0, [count] { return std::string(count, ' '); });
}

void CLogFile::DWord(unsigned long value, unsigned short newLines) {
    logged(m_open, m_lock, m_file, newLines, [value] {
        TextBuilder text;
        text.put_unsigned(value);
        return single_byte(text.view());
    });
}

void CLogFile::Distance(double metres, unsigned short newLines) {
    logged(m_open, m_lock, m_file, newLines, [&] {
        const UnitsInUse units(m_units);
        unsigned short text[CQuantityUnits::kFormatBufferSize] = {};
        return single_byte(units->FormatHDistance(metres, kLogDistanceDecimals, text));
    });
}

void CLogFile::Angle(double radians, unsigned short newLines) {
    logged(m_open, m_lock, m_file, newLines, [&] {
        const UnitsInUse units(m_units);
        unsigned short text[CQuantityUnits::kFormatBufferSize] = {};
        return single_byte(units->FormatHAngle(radians, text));
    });
}

void CLogFile::WriteGPSPos(unsigned long timeMs, double lat, double lon, double height, int valueA,
                           int valueB, double distance, double value, unsigned short newLines) {
    logged(m_open, m_lock, m_file, newLines, [&] {
        const UnitsInUse units(m_units);
        // Each field is built on its own: a field may be long (the last is any double in
        // "%.1f"), and the record as a whole is bounded by nothing.
        std::string record = "$GPS ";
        TextBuilder head;
        head.put_unsigned(timeMs / kMillisecondsPerSecond);
        head.put(u' ');
        head.put_int(valueA);
        head.put(u' ');
        head.put_int(valueB);
        head.put(u' ');
        put_gps_angle(head, lat);
        head.put(u' ');
        put_gps_angle(head, lon);
        head.put(u' ');
        record += single_byte(head.view());
        unsigned short text[CQuantityUnits::kFormatBufferSize] = {};
        record += single_byte(units->FormatVDistance(height, kLogDistanceDecimals, text));
        record += ' ';
        text[0] = 0;
        record += single_byte(units->FormatHDistance(distance, kLogDistanceDecimals, text));
        record += ' ';
        TextBuilder tail;
        tail.put_fixed(value, kLogTenths);
        record += single_byte(tail.view());
        return record;
    });
}
