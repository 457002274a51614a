// The program's template file reader must accept or refuse any text without fault; an accepted
// template has a usable chain and no side slope but at its end, and a refused one is empty and
// says why.
#include "template_file.h"

#include <cmath>
#include <cstddef>
#include <cstdint>
#include <cstdlib>

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
    CGeoTemplate t;
    std::vector<qv5::cli::JobError> errors;
    const bool ok = qv5::cli::parse_template(
        std::string_view(reinterpret_cast<const char*>(data), size), t, errors);
    if (!ok) {
        if (errors.empty() || t.NumberElements() != 0) {
            std::abort();
        }
        return 0;
    }
    if (!errors.empty()) {
        std::abort();
    }
    for (int i = 0; i + 1 < t.NumberElements(); ++i) {
        if (t.NthElementType(i) == geotemp_SideSlope) {
            std::abort();
        }
    }
    // Every query of an accepted template is answered without fault.
    double dv = 0.0;
    double angle = 0.0;
    t.TemplateDeltas(t.HOffsetShoulder() * 0.5, 0.0, dv, angle);
    int in_ditch = 0;
    double slope = 0.0;
    double point_angle = 0.0;
    double catch_offset = 0.0;
    t.SlopeDeltas(t.HOffsetShoulder() + 3.0, 1.0, 1, in_ditch, dv, slope, point_angle,
                  catch_offset);
    CGeoTemplate blended;
    t.Interpolate(&t, 0.5, &blended);
    if (blended.NumberElements() != t.NumberElements()) {
        std::abort();
    }
    return 0;
}
