// Helpers of the units tests: UTF-16 buffers as std::u16string, and a units object kept away
// from the settings store.
#ifndef QV5_TESTS_UNITS_SUPPORT_H
#define QV5_TESTS_UNITS_SUPPORT_H

#include "qv5/units.h"

#include <string>

namespace qv5::test {

/// The zero-terminated UTF-16 text at `text`.
inline std::u16string text_of(const unsigned short* text) {
    std::u16string out;
    for (; text != nullptr && *text != 0; ++text) {
        out.push_back(static_cast<char16_t>(*text));
    }
    return out;
}

/// A zero-terminated copy of `text` as the library's UTF-16 units.
struct Utf16 {
    explicit Utf16(std::u16string_view text) : units(text.begin(), text.end()) {
        units.push_back(0);
    }
    const unsigned short* get() const { return units.data(); }
    std::basic_string<unsigned short> units;
};

/// A buffer for formatting members, pre-filled with "untouched" so that a member that leaves
/// it alone can be seen to.
struct Buffer {
    Buffer() {
        const std::u16string marker = u"untouched";
        for (std::size_t i = 0; i < marker.size(); ++i) {
            units[i] = marker[i];
        }
        units[marker.size()] = 0;
    }
    unsigned short* get() { return units; }
    unsigned short units[CQuantityUnits::kFormatBufferSize];
};

/// Units with no settings store (empty key) and every choice at the given rows.
inline CQuantityUnits units_with(int distance, int length = 0, int angles = 0, int bearings = 0,
                                 int grade = 0, int stationing = 0, int area = 0, int volume = 0,
                                 int coords = 0) {
    CQuantityUnits units{CString()};
    units.SetHorizontalDistance(distance);
    units.SetVerticalDistance(distance);
    units.SetLength(length);
    units.SetAngles(angles);
    units.SetBearings(bearings);
    units.SetGrade(grade);
    units.SetStationing(stationing);
    units.SetArea(area);
    units.SetVolume(volume);
    units.SetCoords(coords);
    return units;
}

} // namespace qv5::test

#endif // QV5_TESTS_UNITS_SUPPORT_H
