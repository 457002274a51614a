/// @file hostfw.h
/// Host-framework types that cross the library's interface: the UTF-16 string class `CString`,
/// the calendar record `_SYSTEMTIME`, and the small drawing layer (`COLORREF`, `CRect`, `CPoint`,
/// `CDC`, `CBitmap`, `CPen`, `CBrush`) through which a template draws its cross-section.
///
/// Text at the interface is UTF-16 in `unsigned short` code units, zero-terminated. `CString`
/// is a boundary type: it holds such text, converts it to and from UTF-8, and compares it. It is
/// not a general string library.
#ifndef QV5_HOSTFW_H
#define QV5_HOSTFW_H

#include "qv5/export.h"

#include <memory>
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

// ---- Drawing -----------------------------------------------------------------------------------
//
// The drawing types keep the names and the behaviour that developers know from the Windows
// framework, so that host code written against it ports unchanged. Pictures are drawn into
// bitmaps selected into memory contexts and can be read back pixel by pixel, saved as PNG, or
// replayed as vector drawing into an SVG file.
//
// Pixel rules (pixel (x, y) is the pixel whose centre sits at the integer point (x, y)):
// - A pen of width 0 or 1 draws a one-pixel line by the grid-intersection (diamond) rule: one
//   pixel per column for lines no steeper than 45 degrees, one per row for steeper ones, the
//   pixel nearest to the line; where the line passes exactly half-way between two pixels the
//   upper one (of two one above the other) or the left one (of two side by side) is drawn. The
//   first point is drawn, the last one is not.
// - A pen of width 2 or more draws every pixel whose centre lies within half the width of the
//   segment, that is a band with round ends (and round joins along a polyline); both end points
//   are drawn. A centre exactly on the band's outline is drawn on its top and left side and not
//   on its bottom and right side.
// - Polygon fills, by the alternate (even-odd) rule, every pixel whose centre lies inside the
//   outline; a centre exactly on an edge is filled on left and top edges and not on right and
//   bottom edges, so that (0,0)-(10,0)-(10,10)-(0,10) fills exactly the 10 x 10 pixels 0..9. The
//   outline is then drawn over the fill with the selected pen as a closed line.
// - FillSolidRect(x, y, cx, cy) fills columns x..x+cx-1 and rows y..y+cy-1.
// - Drawing never reaches outside the selected bitmap; coordinates are limited to +-2^27 as the
//   Windows graphics engine limits them.

class CDC;

namespace qv5::detail {
struct gdi_object;
struct gdi_access;
struct dc_state;
} // namespace qv5::detail

/// The framework's 32-bit boolean: nonzero is true.
typedef int BOOL;

/// A colour as 0x00BBGGRR: red in the low byte, green in the second, blue in the third.
typedef unsigned int COLORREF;

/// The colour value of red, green and blue intensities 0 to 255.
constexpr COLORREF RGB(unsigned char r, unsigned char g, unsigned char b) {
    return static_cast<COLORREF>(r) | (static_cast<COLORREF>(g) << 8) |
           (static_cast<COLORREF>(b) << 16);
}
/// The red intensity of a colour.
constexpr unsigned char GetRValue(COLORREF colour) {
    return static_cast<unsigned char>(colour & 0xFFu);
}
/// The green intensity of a colour.
constexpr unsigned char GetGValue(COLORREF colour) {
    return static_cast<unsigned char>((colour >> 8) & 0xFFu);
}
/// The blue intensity of a colour.
constexpr unsigned char GetBValue(COLORREF colour) {
    return static_cast<unsigned char>((colour >> 16) & 0xFFu);
}
/// What GetPixel answers for a point outside the bitmap or a context without one.
inline constexpr COLORREF CLR_INVALID = 0xFFFFFFFFu;

/// Pen style: a solid line.
inline constexpr int PS_SOLID = 0;
/// Pen style: no line at all (shapes are filled only).
inline constexpr int PS_NULL = 5;
/// Background mode: text is drawn over what is there.
inline constexpr int TRANSPARENT = 1;
/// Background mode: the text's cell is first filled with the background colour (the default).
inline constexpr int OPAQUE = 2;
/// DrawText format: text at the left and top of the rectangle (the only placement offered).
inline constexpr unsigned int DT_LEFT = 0x0000;
/// DrawText format: text at the top of the rectangle.
inline constexpr unsigned int DT_TOP = 0x0000;
/// DrawText format: one line only (line breaks are drawn as they are, never wrapped).
inline constexpr unsigned int DT_SINGLELINE = 0x0020;
/// DrawText format: the text is not clipped to the rectangle.
inline constexpr unsigned int DT_NOCLIP = 0x0100;

/// A point in device pixels.
struct tagPOINT {
    int x; ///< column, growing to the right
    int y; ///< row, growing downward
};
typedef tagPOINT POINT;

/// A rectangle in device pixels; right and bottom lie just outside it.
struct tagRECT {
    int left;
    int top;
    int right;
    int bottom;
};
typedef tagRECT RECT;

/// A point with the framework's constructors.
class CPoint : public tagPOINT {
public:
    /// The point (0, 0).
    CPoint() : tagPOINT{0, 0} {}
    /// The point (x, y).
    CPoint(int initX, int initY) : tagPOINT{initX, initY} {}
    /// A copy of a plain point.
    CPoint(const POINT& point) : tagPOINT(point) {}
    /// 1 when both coordinates are equal.
    bool operator==(const CPoint& other) const { return x == other.x && y == other.y; }
    bool operator!=(const CPoint& other) const { return !(*this == other); }
};

/// A rectangle with the framework's constructors and sizes.
class CRect : public tagRECT {
public:
    /// The empty rectangle (0, 0, 0, 0).
    CRect() : tagRECT{0, 0, 0, 0} {}
    /// The rectangle from (l, t) to (r, b).
    CRect(int l, int t, int r, int b) : tagRECT{l, t, r, b} {}
    /// A copy of a plain rectangle.
    CRect(const RECT& rect) : tagRECT(rect) {}
    /// right - left (negative when the rectangle is inside out).
    int Width() const { return right - left; }
    /// bottom - top (negative when the rectangle is inside out).
    int Height() const { return bottom - top; }
};

/// The size and layout of a bitmap, as GetBitmap reports it.
struct tagBITMAP {
    int bmType;                 ///< always 0
    int bmWidth;                ///< pixels
    int bmHeight;               ///< pixels
    int bmWidthBytes;           ///< bytes per row
    unsigned short bmPlanes;    ///< always 1
    unsigned short bmBitsPixel; ///< 32 for a colour bitmap, 1 for a context's default bitmap
    void* bmBits;               ///< always null: pixels are read through CDC::GetPixel
};
typedef tagBITMAP BITMAP;

/// A drawing object (bitmap, pen or brush) that a context can select.
///
/// Objects are not copyable. Deleting an object that is still selected into a context is safe:
/// the context keeps drawing with it (or into it) until another object is selected.
class QV5_API CGdiObject {
public:
    CGdiObject();
    CGdiObject(const CGdiObject&) = delete;
    CGdiObject& operator=(const CGdiObject&) = delete;
    virtual ~CGdiObject();
    /// Releases the object, which may then be created anew.
    /// @return 1 when there was an object to release; 0 when there was none or it is one of a
    ///         context's default objects, which are never released
    BOOL DeleteObject();
    /// 1 when the object has been created and not deleted.
    BOOL IsCreated() const;

protected:
    friend class CDC;
    friend struct qv5::detail::gdi_access;
    std::shared_ptr<qv5::detail::gdi_object> m_object; ///< null until created
};

/// A bitmap to draw into through a memory context.
class QV5_API CBitmap : public CGdiObject {
public:
    /// Makes a colour bitmap of width x height pixels for drawing through contexts compatible
    /// with `dc`. Its pixels start black.
    /// @return 1 on success; 0 when dc is null, a size is not positive or above 32767, the
    ///         bitmap would hold more than 2^26 pixels, or the bitmap already exists
    BOOL CreateCompatibleBitmap(CDC* dc, int width, int height);
    /// Reports the bitmap's size.
    /// @return nonzero when `bitmap` was filled in; 0 when it is null or there is no bitmap
    int GetBitmap(BITMAP* bitmap) const;
};

/// A pen: the style, width and colour of lines.
class QV5_API CPen : public CGdiObject {
public:
    /// Makes a pen.
    /// @param style PS_SOLID or PS_NULL
    /// @param width pixels; 0 and 1 draw one-pixel lines
    /// @param colour the line colour
    /// @return 1 on success; 0 for another style, a negative width, or an existing pen
    BOOL CreatePen(int style, int width, COLORREF colour);
};

/// A brush: the colour that fills shapes.
class QV5_API CBrush : public CGdiObject {
public:
    /// Makes a solid brush. @return 1 on success; 0 when the brush already exists
    BOOL CreateSolidBrush(COLORREF colour);
};

/// A device context.
///
/// A default-constructed context stands for the screen: bitmaps are made compatible with it,
/// and what is drawn on it is not kept. CreateCompatibleDC turns a context into a memory
/// context, which draws into the bitmap selected into it. A new memory context has its default
/// objects selected: a 1 x 1 monochrome bitmap that takes no drawing, a black one-pixel pen and a
/// white brush; text is black on an opaque white background in DejaVu Sans of 11 pixels.
class QV5_API CDC {
public:
    /// A context standing for the screen.
    CDC();
    CDC(const CDC&) = delete;
    CDC& operator=(const CDC&) = delete;
    virtual ~CDC();

    /// Makes this a memory context compatible with `dc` (null: with the screen).
    /// @return 1 on success; 0 when this context is already a memory context
    BOOL CreateCompatibleDC(CDC* dc);
    /// Releases a memory context, which becomes a screen context again.
    /// @return 1 when it was a memory context; 0 otherwise
    BOOL DeleteDC();

    /// Selects a bitmap into a memory context: drawing now goes into it.
    /// @return the bitmap selected before (the context's default bitmap at first); null, with
    ///         nothing changed, when `bitmap` is null or not created or this is not a memory
    ///         context
    CBitmap* SelectObject(CBitmap* bitmap);
    /// Selects a pen. @return the pen selected before; null, with nothing changed, when `pen`
    ///        is null or not created
    CPen* SelectObject(CPen* pen);
    /// Selects a brush. @return the brush selected before; null, with nothing changed, when
    ///        `brush` is null or not created
    CBrush* SelectObject(CBrush* brush);

    /// Fills columns x..x+cx-1 and rows y..y+cy-1 with a colour, which also becomes the
    /// background colour (as the framework does). Nothing is filled when cx or cy is not
    /// positive.
    void FillSolidRect(int x, int y, int cx, int cy, COLORREF colour);
    /// Fills a rectangle (right and bottom excluded); see the other overload.
    void FillSolidRect(const RECT* rect, COLORREF colour);

    /// Fills a closed polygon with the brush and outlines it with the pen.
    /// @return 1 when drawn; 0 when `points` is null or `count` is below 2
    BOOL Polygon(const POINT* points, int count);
    /// As above, for an array of CPoint.
    BOOL Polygon(const CPoint* points, int count);
    /// Draws connected lines through the points with the pen. The current position is neither
    /// used nor changed. @return 1 when drawn; 0 when `points` is null or `count` is below 2
    BOOL Polyline(const POINT* points, int count);
    /// As above, for an array of CPoint.
    BOOL Polyline(const CPoint* points, int count);
    /// Moves the current position. @return the previous current position
    CPoint MoveTo(int x, int y);
    /// Draws a line with the pen from the current position to (x, y), which becomes the current
    /// position. @return 1
    BOOL LineTo(int x, int y);

    /// Sets the background mode for text (TRANSPARENT or OPAQUE).
    /// @return the previous mode; 0, with nothing changed, for another value
    int SetBkMode(int mode);
    /// The background mode for text.
    int GetBkMode() const;
    /// Sets the background colour of opaque text. @return the previous colour
    COLORREF SetBkColor(COLORREF colour);
    /// Sets the text colour. @return the previous colour
    COLORREF SetTextColor(COLORREF colour);
    /// Writes one line of text at the left and top of `rect`; with DT_NOCLIP it may run past
    /// the rectangle, otherwise it is clipped to it.
    /// @return the height of the text in pixels; 0 when `rect` is null
    int DrawText(const CString& text, RECT* rect, unsigned int format);
    /// Writes text with its top-left corner at (x, y). @return 1
    BOOL TextOut(int x, int y, const CString& text);
    /// The colour of pixel (x, y) of the selected bitmap.
    /// @return CLR_INVALID outside the bitmap, or when no bitmap of the host's is selected
    COLORREF GetPixel(int x, int y) const;

    /// Writes the bitmap selected into this memory context to a PNG file.
    /// @return 1 when written; 0 when no bitmap of the host's is selected or the file cannot
    ///         be written
    BOOL SavePng(const CString& path) const;
    /// Starts (1) or stops (0) keeping every drawing call made into the selected bitmap, so that
    /// SaveSvg can replay them; selecting another bitmap starts a new record.
    void SetSvgRecording(BOOL record);
    /// Writes the drawing calls made into the selected bitmap since it was selected (while
    /// recording) as an SVG picture of the bitmap's size.
    /// @return 1 when written; 0 when no bitmap of the host's is selected, recording is off, or
    ///         the file cannot be written
    BOOL SaveSvg(const CString& path) const;

private:
    std::unique_ptr<qv5::detail::dc_state> m_state;
};

#endif // QV5_HOSTFW_H
