// Typed bearings as outside data: any UTF-16 text, in every bearing style, must read without
// fault as GEO_NULL or a finite bearing (DMS styles: within one turn). A bearing read comes back
// through the edit text (FormatForEdit, then ParseBearing) to within its last digit. Number
// reading alone must agree in whether it found a number.
#include "platform/number_text.h"
#include "qv5/units.h"

#include <cmath>
#include <cstddef>
#include <cstdint>
#include <cstdlib>
#include <vector>

namespace {

/// The edit text holds whole seconds (DMS) or four decimals of gons or degrees: read back, a
/// bearing moves by less than a second of arc, up to a whole turn in the DMS styles.
constexpr double kEditResolution = 4.84813681109536e-06;
constexpr double kTurn = 6.283185307179586;
/// Beyond this many radians the four decimals no longer fit the significant digits.
constexpr double kRoundTripRange = 1e6;

void round_trip(const CQuantityUnits& quantities, double r) {
    if (std::fabs(r) > kRoundTripRange) {
        return;
    }
    unsigned short text[CQuantityUnits::kFormatBufferSize] = {};
    quantities.FormatForEdit(r, text);
    const double back = quantities.ParseBearing(text);
    if (back == GEO_NULL || !std::isfinite(back)) {
        std::abort();
    }
    const double difference = std::remainder(back - r, kTurn);
    if (std::fabs(difference) > kEditResolution) {
        std::abort();
    }
}

} // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
    std::vector<unsigned short> units;
    for (std::size_t i = 0; i + 1 < size; i += 2) {
        units.push_back(static_cast<unsigned short>(data[i] | (data[i + 1] << 8)));
    }
    units.push_back(0);
    CQuantityUnits quantities{CString()};
    for (int style = -1; style <= 4; ++style) {
        quantities.SetBearings(style);
        const double r = quantities.ParseBearing(units.data());
        if (r == GEO_NULL) {
            continue;
        }
        if (!std::isfinite(r) || style < 0 || style > 3) {
            std::abort();
        }
        if (style <= 1 && (r < 0.0 || r >= 6.283185307179586)) {
            std::abort();
        }
        round_trip(quantities, r);
    }
    std::u16string text;
    for (const unsigned short u : units) {
        if (u == 0) {
            break;
        }
        text.push_back(static_cast<char16_t>(u));
    }
    double value = 1.0;
    if (!qv5::detail::read_leading_number(text, value) && value != 0.0) {
        std::abort();
    }
    return 0;
}
