// The LandXML reader must accept or refuse any document without fault. What it accepts is a
// road whose stations and points are finite, and which writes out and reads back to a road of
// as many elements.
#include "qv5/georoad.h"
#include "qv5/landxml.h"

#include <cmath>
#include <cstddef>
#include <cstdint>
#include <cstdlib>
#include <string_view>

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
    const std::string_view text(reinterpret_cast<const char*>(data), size);
    CGeoRoad road;
    const qv5::landxml::ReadResult result = qv5::landxml::read_road(text, road);
    if (result.ok != result.errors.empty()) {
        std::abort();
    }
    if (!result.ok) {
        if (road.NumberHorizontalElements() != 0) {
            std::abort();
        }
        return 0;
    }
    for (int n = 0; n < road.NumberHorizontalElements(); ++n) {
        const double station = road.HorzElementStartStation(n);
        if (!std::isfinite(station) || station == GEO_NULL) {
            std::abort();
        }
    }
    qv5::landxml::WriteOptions options;
    options.date = "2026-01-01";
    options.time = "00:00:00";
    CGeoRoad back;
    const qv5::landxml::ReadResult again =
        qv5::landxml::read_road(qv5::landxml::write_road(road, options), back);
    if (!again.ok || back.NumberHorizontalElements() != road.NumberHorizontalElements() ||
        back.NumberVerticalElements() != road.NumberVerticalElements()) {
        std::abort();
    }
    return 0;
}
