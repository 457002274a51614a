// Stake input rows: any text is a skipped, bad or good row, and a good grid row staked against a
// road (line, spiral, arc, spiral, line, with a profile and a template with side slopes) gives
// either a reason or finite answers, whatever its coordinates.
#include "stake_rows.h"

#include "qv5/qv5lib.h"

#include <cmath>
#include <cstddef>
#include <cstdint>
#include <cstdlib>
#include <string>
#include <string_view>

namespace {

CGeoRoad& road() {
    static CGeoRoad* r = [] {
        auto* built = new CGeoRoad;
        built->SetPOBInfo(0.0, 1000.0, 2000.0, 20.0);
        CGeoPoint o(geo_nee{0.0, 0.0, 0.0});
        double az = 0.5;
        CGeoLine line;
        line.Set(o, az, 100.0, 0.0);
        built->AddHorizontal(georoad_Line, &line);
        CGeoEntrySpiral entry;
        entry.Set(o, az, geodef_Left, 200.0, 40.0);
        built->AddHorizontal(georoad_EntrySpiral, &entry);
        az -= 0.1;
        CGeoArc arc;
        arc.Set(o, az, 200.0, 60.0, geodef_Left, 0.0);
        built->AddHorizontal(georoad_Arc, &arc);
        az -= 0.3;
        CGeoExitSpiral exit;
        exit.Set(o, az, geodef_Left, 200.0, 40.0);
        built->AddHorizontal(georoad_ExitSpiral, &exit);
        az -= 0.1;
        line.Set(o, az, 100.0, 0.0);
        built->AddHorizontal(georoad_Line, &line);
        georoad_Error e = georoad_Error{};
        built->AddVertical(georoad_VertPoint, 0.0, 10.0, 0.0, &e);
        built->AddVertical(georoad_VertParabola, 150.0, 12.0, 60.0, &e);
        built->AddVertical(georoad_VertPoint, 340.0, 9.0, 0.0, &e);
        CGeoTemplate t;
        t.SetName(CString("T"));
        const geotemp_GradeWidthData lane{-0.02, 3.5};
        const geotemp_SideSlopeData slope{0.46, 0.32, 1.0};
        t.AddElement(geotemp_GradeWidth, &lane);
        t.AddElement(geotemp_SideSlope, &slope);
        built->AddTemplate(&t);
        built->AddTemplateApplication(CString("T"), 0.0, geodef_BothSides);
        return built;
    }();
    return *r;
}

bool answered(double v) {
    return v != GEO_NULL && std::isfinite(v);
}

} // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
    const std::string_view text(reinterpret_cast<const char*>(data), size);
    for (const auto coords : {qv5::cli::ShotCoordinates::wgs84, qv5::cli::ShotCoordinates::grid}) {
        qv5::cli::Shot shot{};
        std::string why;
        const qv5::cli::RowKind kind = qv5::cli::parse_shot_row(text, coords, shot, why);
        if (kind == qv5::cli::RowKind::bad && why.empty()) {
            std::abort();
        }
        if (kind != qv5::cli::RowKind::shot || coords != qv5::cli::ShotCoordinates::grid) {
            continue;
        }
        CGeoRoadIterator it;
        it.Set(&road());
        const qv5::cli::StakeResult r =
            qv5::cli::stake_shot(road(), it, nullptr, coords, shot, 1.0);
        if (r.ok && !(answered(r.station) && answered(r.offset) && answered(r.design) &&
                      answered(r.cut) && answered(r.centreline) && answered(r.azimuth))) {
            std::abort();
        }
        if (!r.ok && r.why.empty()) {
            std::abort();
        }
    }
    return 0;
}
