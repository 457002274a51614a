/// @file hostfw.h
/// Host-framework types that cross the library's interface: the UTF-16 string class `CString`
/// and the calendar record `_SYSTEMTIME`.
///
/// Text at the interface is UTF-16 in `unsigned short` code units, zero-terminated. `CString`
/// is a boundary type: it holds such text, converts it to and from UTF-8, and compares it. It is
/// not a general string library.
#ifndef QV5_HOSTFW_H
#define QV5_HOSTFW_H

#include "qv5/export.h"

#include <string>
#include <string_view>
#include <vector>

/// A UTF-16 string, always zero-terminated.
///
/// Malformed input never fails: an unpaired surrogate read from UTF-16 and any malformed
/// sequence read from UTF-8 become U+FFFD REPLACEMENT CHARACTER on conversion.
class QV5_API CString {
public:
    /// An empty string.
    CString();
    /// Copies zero-terminated UTF-16 text; a null pointer gives an empty string.
    CString(const unsigned short* text);
    /// Copies zero-terminated UTF-16 text; a null pointer gives an empty string.
    CString(const char16_t* text);
    /// Converts zero-terminated UTF-8 text; a null pointer gives an empty string.
    CString(const char* utf8);
    /// Converts UTF-8 text of the given length (embedded zeros end the string).
    static CString FromUtf8(std::string_view utf8);
    /// Copies `length` UTF-16 code units (stopping early at a zero unit).
    static CString FromUtf16(const unsigned short* text, std::size_t length);

    CString(const CString& other);
    CString(CString&& other) noexcept;
    CString& operator=(const CString& other);
    CString& operator=(CString&& other) noexcept;
    ~CString();

    /// Number of UTF-16 code units, not counting the terminator.
    int GetLength() const;
    /// 1 when the string holds no text.
    int IsEmpty() const;
    /// Makes the string empty.
    void Empty();
    /// Compares ignoring the case of ASCII and Latin-1 letters.
    /// @return 0 when equal, negative when this sorts first, positive otherwise
    int CompareNoCase(const CString& other) const;
    /// Compares code unit by code unit. @return 0 when equal, negative or positive otherwise
    int Compare(const CString& other) const;
    bool operator==(const CString& other) const;
    bool operator!=(const CString& other) const;
    /// Appends text.
    CString& operator+=(const CString& other);

    /// Loads a string of the library's string table (ids 10001 and up: unit names, day and
    /// month names, ordinal suffixes, "Too large"), as the host framework loads a resource
    /// string.
    /// @return 1 when the table holds the id and the string now holds its text; 0 when it does
    ///         not, and the string keeps its text
    int LoadString(unsigned int id);

    /// The zero-terminated UTF-16 text; valid until the string changes.
    const unsigned short* GetString() const;
    /// The text as UTF-8.
    std::string ToUtf8() const;

private:
    std::vector<unsigned short> m_units; // always ends with one zero unit
};

/// Calendar date and time of day, as the host's clock reports it.
struct _SYSTEMTIME {
    unsigned short wYear;
    unsigned short wMonth;     ///< 1 = January ... 12 = December
    unsigned short wDayOfWeek; ///< 0 = Sunday ... 6 = Saturday
    unsigned short wDay;       ///< day of the month, 1 ... 31
    unsigned short wHour;      ///< 0 ... 23
    unsigned short wMinute;
    unsigned short wSecond;
    unsigned short wMilliseconds;
};
typedef _SYSTEMTIME SYSTEMTIME;

#endif // QV5_HOSTFW_H
