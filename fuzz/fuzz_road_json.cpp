// The road description reader must reject or accept any text without fault: an accepted road
// reports no problem, a rejected one at least one and is left empty.
#include "road_json.h"

#include "qv5/georoad.h"

#include <cstddef>
#include <cstdint>
#include <cstdlib>
#include <string_view>

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
    CGeoRoad road;
    std::vector<qv5::cli::JobError> errors;
    // Template files named in the text are never read: every one is reported as unreadable.
    const bool ok = qv5::cli::parse_road_json(
        std::string_view(reinterpret_cast<const char*>(data), size), {}, road, errors);
    if (ok && !errors.empty()) {
        std::abort();
    }
    if (!ok && (errors.empty() || road.NumberHorizontalElements() != 0 ||
                road.NumberVerticalElements() != 0 || road.NumberTemplates() != 0)) {
        std::abort();
    }
    if (ok && road.NumberHorizontalElements() > 0 &&
        !(road.EndStationHorizontal() >= road.StartStationHorizontal())) {
        std::abort();
    }
    return 0;
}
