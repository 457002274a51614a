// A road file's text (JSON) from anywhere must give a road or a message naming what was wrong,
// without fault; a road built from it gives text that builds a road again.
#include "road_text.h"

#include <cstddef>
#include <cstdint>
#include <cstdlib>
#include <string>

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
    const auto text = nlohmann::ordered_json::parse(data, data + size, nullptr, false);
    if (text.is_discarded()) {
        return 0;
    }
    CGeoRoad road;
    std::string error;
    if (!qv5::cli::road_from_json(text, road, error)) {
        if (error.empty() || road.NumberHorizontalElements() != 0 || road.NumberTemplates() != 0) {
            std::abort();
        }
        return 0;
    }
    CGeoRoad again;
    if (!qv5::cli::road_from_json(qv5::cli::road_to_json(road), again, error)) {
        std::abort();
    }
    return 0;
}
