/// @file logfile.h
/// `CLogFile`: a small thread-safe diagnostic log of single-byte (Windows-1252) text lines,
/// with time stamps, numbers, distances and angles in the user's units, and GPS records.
#ifndef QV5_LOGFILE_H
#define QV5_LOGFILE_H

#include "qv5/export.h"
#include "qv5/units.h"

#include <atomic>
#include <mutex>

namespace qv5::detail {
class OutputFile;
}

/// A text log that appends to its file at once, fragment by fragment.
///
/// Every writer does nothing at all while no file is open, and otherwise holds the object's lock
/// for its whole call, so the fragments of two threads never interleave within one call (a
/// caller that builds one line from several calls serialises them itself). A line end is CR LF.
/// Wide text is converted to Windows-1252; a character that code page lacks becomes '?'.
///
/// One writer at a time: while a log holds its file open, another `Open` of the same file is
/// refused. Copies share the open file; `Close` on any of them closes it for all.
class QV5_API CLogFile {
public:
    /// Keeps `units` (not owned; it must outlive the log) for formatting distances, angles and
    /// GPS records, and makes the log folders `${TMPDIR:-/tmp}` and
    /// `${XDG_STATE_HOME:-$HOME/.local/state}/halvik/zkmt` (failures ignored). Starts closed.
    /// @param units a null pointer formats in metres and degrees-minutes-seconds
    explicit CLogFile(CQuantityUnits* units);
    /// Copies the members as they are: the copy shares the open file.
    CLogFile(const CLogFile& other);
    /// Copies the members as they are: this log then shares the other's open file.
    CLogFile& operator=(const CLogFile& other);
    /// Does not close the file or write "Logging disabled": owners call Close first.
    virtual ~CLogFile();

    /// Opens (or creates) the log file for appending.
    /// @param path zero-terminated UTF-16 path
    /// @param truncate non-zero: empty the file first; zero: append after its last byte
    /// @param announce non-zero: write a line end, "Logging enabled " and the local time
    ///        ("Monday, March 3rd, 2025, 2:05PM") and a line end now, and "Logging disabled "
    ///        and a line end on Close
    /// @return 1 on success; 0 when the file cannot be opened (the log is then closed)
    int Open(const unsigned short* path, int truncate, int announce);
    /// Writes "Logging disabled " and a line end if announced, and closes the file.
    void Close();
    /// 1 while a file is open, else 0.
    int IsOpen();

    /// Wide text (a null pointer writes no text), then `newLines` line ends.
    void Text(const unsigned short* text, unsigned short newLines);
    /// Single-byte text, at most 100 bytes of it (a null pointer writes no text), then
    /// `newLines` line ends.
    void SBText(const char* text, unsigned short newLines);
    /// The system tick count in milliseconds, as "%.1f" ("123456.0"), then `newLines` line ends.
    void Time(unsigned short newLines);
    /// `count` line ends.
    void NewLine(unsigned short count);
    /// `count` spaces.
    void Space(unsigned short count);
    /// A number as "%lu", then `newLines` line ends.
    void DWord(unsigned long value, unsigned short newLines);
    /// A horizontal distance (metres) in the user's units with 3 decimals, then `newLines`
    /// line ends.
    void Distance(double metres, unsigned short newLines);
    /// A horizontal angle (radians) in the user's units, then `newLines` line ends.
    void Angle(double radians, unsigned short newLines);
    /// One GPS record: "$GPS " then "%lu %i %i %S %S %S %S %.1f" of the whole seconds of
    /// `timeMs`, `valueA`, `valueB`, latitude and longitude as DD.MMSSsssss ("%02i.%02i%07i",
    /// seconds in hundred-thousandths), the height as a vertical distance and `distance` as a
    /// horizontal distance with 3 decimals, and `value`; then `newLines` line ends.
    /// @param lat,lon radians; @param height,distance metres; @param valueA,valueB the
    ///        receiver's state, written as they are
    void WriteGPSPos(unsigned long timeMs, double lat, double lon, double height, int valueA,
                     int valueB, double distance, double value, unsigned short newLines);

private:
    mutable std::mutex m_lock;
    qv5::detail::OutputFile* m_file; ///< shared with copies; null when closed
    std::atomic<int> m_open;         ///< m_file is set: read before the lock
    char m_buffer[101];              ///< the fragment SBText writes
    int m_announce;
    CQuantityUnits* m_units;
};

#endif // QV5_LOGFILE_H
