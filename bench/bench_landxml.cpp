// Reading a 10 000-element LandXML alignment, beside pugixml's parse of the same document alone:
// the difference is what building the road costs (number parsing, element geometry, the road's
// own AddHorizontal calls).
#include "qv5/geoarc.h"
#include "qv5/geoline.h"
#include "qv5/geopoint.h"
#include "qv5/georoad.h"
#include "qv5/landxml.h"

#include <benchmark/benchmark.h>
#include <pugixml.hpp>

#include <string>

namespace {

/// Lines and arcs alternating, turning left and right so that the alignment wanders.
constexpr int kElements = 10'000;

const std::string& document() {
    static const std::string xml = [] {
        CGeoRoad road;
        road.SetPOBInfo(0.0, 10'000.0, 20'000.0, 20.0);
        CGeoPoint origin;
        origin.SetGrid(0.0, 0.0, 0.0);
        for (int n = 0; n < kElements; ++n) {
            const double azimuth =
                road.NumberHorizontalElements() == 0 ? 0.3 : road.EndAzimuthHorizontal();
            if (n % 2 == 0) {
                CGeoLine line;
                line.Set(origin, azimuth, 40.0 + n % 7, 0.0);
                road.AddHorizontal(georoad_Line, &line);
            } else {
                CGeoArc arc;
                arc.Set(origin, azimuth, 300.0 + n % 11, 25.0,
                        (n / 2) % 2 == 0 ? geodef_Right : geodef_Left, 0.0);
                road.AddHorizontal(georoad_Arc, &arc);
            }
        }
        qv5::landxml::WriteOptions options;
        options.date = "2026-11-25";
        options.time = "10:00:00";
        return qv5::landxml::write_road(road, options);
    }();
    return xml;
}

void BM_LandXmlReadRoad(benchmark::State& state) {
    const std::string& xml = document();
    for (auto _ : state) {
        CGeoRoad road;
        const auto result = qv5::landxml::read_road(xml, road);
        benchmark::DoNotOptimize(result.ok);
    }
    state.SetItemsProcessed(state.iterations() * kElements);
}
BENCHMARK(BM_LandXmlReadRoad)->Unit(benchmark::kMillisecond);

void BM_LandXmlReadRoad_PugixmlParseAlone(benchmark::State& state) {
    const std::string& xml = document();
    for (auto _ : state) {
        pugi::xml_document doc;
        const auto parsed = doc.load_buffer(xml.data(), xml.size());
        benchmark::DoNotOptimize(parsed.status);
    }
    state.SetItemsProcessed(state.iterations() * kElements);
}
BENCHMARK(BM_LandXmlReadRoad_PugixmlParseAlone)->Unit(benchmark::kMillisecond);

} // namespace

BENCHMARK_MAIN();
