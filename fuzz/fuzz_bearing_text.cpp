// Typed bearings as outside data: any UTF-16 text, in every bearing style, must read without
// fault as GEO_NULL or a finite bearing (DMS styles: within one turn). Number reading alone must
// agree in whether it found a number.
#include "platform/number_text.h"
#include "qv5/units.h"

#include <cmath>
#include <cstddef>
#include <cstdint>
#include <cstdlib>
#include <vector>

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
