// The road's horizontal alignment: appending 10 000 elements with AddHorizontal (at three sizes,
// to show the growth is linear) beside copying the same element objects alone, and rechaining
// them with UpdateHorizontalElements beside setting each element again by hand.
//
// BM_CGeoRoad_AddHorizontal_<n> builds a road of n elements (lines, arcs, entry and exit spirals
// in turn) and destroys it; BM_CGeoRoad_AddHorizontal_<n>_Bare copies the n element objects
// with their copy constructors onto the heap and deletes them: the least any owner of copies
// pays. BM_CGeoRoad_UpdateHorizontalElements_10000 rechains a road of 10 000 elements
// tangentially; its _Bare sets the same elements one after another from the previous end by
// hand.
#include "bench_support.h"

#include "qv5/qv5lib.h"

#include <benchmark/benchmark.h>

#include <memory>
#include <string>
#include <vector>

namespace {

using namespace qv5::bench;

/// The elements of a winding road, made once: type and object.
struct Elements {
    std::vector<CGeoLine> lines;
    std::vector<CGeoArc> arcs;
    std::vector<CGeoEntrySpiral> entries;
    std::vector<CGeoExitSpiral> exits;
    std::vector<std::pair<georoad_HorzElementType, void*>> order;
};

Elements& elements_of(int count) {
    static std::vector<std::unique_ptr<Elements>> made(3);
    const int slot = count == 2500 ? 0 : count == 10000 ? 1 : 2;
    if (made[static_cast<std::size_t>(slot)]) {
        return *made[static_cast<std::size_t>(slot)];
    }
    auto e = std::make_unique<Elements>();
    const int quarter = count / 4;
    e->lines.resize(static_cast<std::size_t>(quarter));
    e->arcs.resize(static_cast<std::size_t>(quarter));
    e->entries.resize(static_cast<std::size_t>(quarter));
    e->exits.resize(static_cast<std::size_t>(quarter));
    CGeoPoint origin(geo_nee{5000.0, 3000.0, 10.0});
    for (int i = 0; i < quarter; ++i) {
        const auto k = static_cast<std::size_t>(i);
        const double azimuth = 0.001 * i;
        const geodef_Direction turn = i % 2 == 0 ? geodef_Right : geodef_Left;
        e->lines[k].Set(origin, azimuth, 100.0 + i % 7, 0.0);
        e->entries[k].Set(origin, azimuth, turn, 400.0, 60.0);
        e->arcs[k].Set(origin, azimuth, 400.0, 80.0 + i % 5, turn, 0.0);
        e->exits[k].Set(origin, azimuth, turn, 400.0, 60.0);
        // Every element's derived values are known, as in a host that has drawn them.
        e->lines[k].GridHDistance();
        e->arcs[k].EndPt();
        e->entries[k].EndPt();
        e->entries[k].ExitAzimuth();
        e->exits[k].EndPt();
        e->exits[k].ExitAzimuth();
    }
    for (int i = 0; i < quarter; ++i) {
        const auto k = static_cast<std::size_t>(i);
        e->order.emplace_back(georoad_Line, &e->lines[k]);
        e->order.emplace_back(georoad_EntrySpiral, &e->entries[k]);
        e->order.emplace_back(georoad_Arc, &e->arcs[k]);
        e->order.emplace_back(georoad_ExitSpiral, &e->exits[k]);
    }
    made[static_cast<std::size_t>(slot)] = std::move(e);
    return *made[static_cast<std::size_t>(slot)];
}

void add_all(benchmark::State& state, int count) {
    const Elements& e = elements_of(count);
    for (auto _ : state) {
        CGeoRoad road;
        for (const auto& [type, element] : e.order) {
            road.AddHorizontal(type, element);
        }
        benchmark::DoNotOptimize(road.EndStationHorizontal());
    }
    state.SetItemsProcessed(state.iterations() * count);
}

QV5_BARE void* bare_copy(georoad_HorzElementType type, void* element) {
    switch (type) {
    case georoad_Line:
        return new CGeoLine(*static_cast<CGeoLine*>(element));
    case georoad_Arc:
        return new CGeoArc(*static_cast<CGeoArc*>(element));
    case georoad_EntrySpiral:
        return new CGeoEntrySpiral(*static_cast<CGeoEntrySpiral*>(element));
    default:
        return new CGeoExitSpiral(*static_cast<CGeoExitSpiral*>(element));
    }
}

QV5_BARE void bare_delete(georoad_HorzElementType type, void* element) {
    switch (type) {
    case georoad_Line:
        delete static_cast<CGeoLine*>(element);
        break;
    case georoad_Arc:
        delete static_cast<CGeoArc*>(element);
        break;
    case georoad_EntrySpiral:
        delete static_cast<CGeoEntrySpiral*>(element);
        break;
    default:
        delete static_cast<CGeoExitSpiral*>(element);
        break;
    }
}

void copy_all(benchmark::State& state, int count) {
    const Elements& e = elements_of(count);
    auto* copy = opaque(&bare_copy);
    auto* release = opaque(&bare_delete);
    std::vector<void*> copies(static_cast<std::size_t>(count));
    for (auto _ : state) {
        for (std::size_t i = 0; i < e.order.size(); ++i) {
            copies[i] = copy(e.order[i].first, e.order[i].second);
        }
        benchmark::DoNotOptimize(copies.data());
        for (std::size_t i = 0; i < e.order.size(); ++i) {
            release(e.order[i].first, copies[i]);
        }
    }
    state.SetItemsProcessed(state.iterations() * count);
}

/// A road that lets the benchmark rechain it.
class BenchRoad : public CGeoRoad {
public:
    using CGeoRoad::UpdateHorizontalElements;
};

void update_all(benchmark::State& state) {
    const Elements& e = elements_of(10000);
    BenchRoad road;
    for (const auto& [type, element] : e.order) {
        road.AddHorizontal(type, element);
    }
    for (auto _ : state) {
        road.UpdateHorizontalElements(0, 1);
        benchmark::DoNotOptimize(road.EndStationHorizontal());
    }
    state.SetItemsProcessed(state.iterations() * 10000);
}

/// Sets each element from the previous one's end, turned onto its exit azimuth.
QV5_BARE void bare_chain(std::vector<std::pair<georoad_HorzElementType, void*>>& order) {
    CGeoPoint at(geo_nee{5000.0, 3000.0, 10.0});
    double azimuth = 0.0;
    for (auto& [type, element] : order) {
        switch (type) {
        case georoad_Line: {
            auto* line = static_cast<CGeoLine*>(element);
            line->Set(at, azimuth, line->GridHDistance(), 0.0);
            at = line->EndPt();
            break;
        }
        case georoad_Arc: {
            auto* arc = static_cast<CGeoArc*>(element);
            arc->Set(at, azimuth, arc->Radius(), arc->GridArcLength(), arc->Direction(), 0.0);
            at = arc->EndPt();
            azimuth = arc->GridAzimuth(arc->GridArcLength());
            break;
        }
        case georoad_EntrySpiral: {
            auto* s = static_cast<CGeoEntrySpiral*>(element);
            s->Set(at, azimuth, s->Direction(), s->Radius(), s->Length());
            at = s->EndPt();
            azimuth = s->ExitAzimuth();
            break;
        }
        default: {
            auto* s = static_cast<CGeoExitSpiral*>(element);
            s->Set(at, azimuth, s->Direction(), s->Radius(), s->Length());
            at = s->EndPt();
            azimuth = s->ExitAzimuth();
            break;
        }
        }
    }
}

void chain_all(benchmark::State& state) {
    Elements& source = elements_of(10000);
    // Own copies, so that the road's benchmark above sees the elements as made.
    Elements e;
    e.lines = source.lines;
    e.arcs = source.arcs;
    e.entries = source.entries;
    e.exits = source.exits;
    for (std::size_t k = 0; k < e.lines.size(); ++k) {
        e.order.emplace_back(georoad_Line, &e.lines[k]);
        e.order.emplace_back(georoad_EntrySpiral, &e.entries[k]);
        e.order.emplace_back(georoad_Arc, &e.arcs[k]);
        e.order.emplace_back(georoad_ExitSpiral, &e.exits[k]);
    }
    auto* chain = opaque(&bare_chain);
    for (auto _ : state) {
        chain(e.order);
        benchmark::ClobberMemory();
    }
    state.SetItemsProcessed(state.iterations() * 10000);
}

void register_all() {
    for (int count : {2500, 10000, 40000}) {
        const std::string name = "BM_CGeoRoad_AddHorizontal_" + std::to_string(count);
        benchmark::RegisterBenchmark(name.c_str(), [count](benchmark::State& state) {
            add_all(state, count);
        })->Unit(benchmark::kMicrosecond);
        benchmark::RegisterBenchmark((name + "_Bare").c_str(), [count](benchmark::State& state) {
            copy_all(state, count);
        })->Unit(benchmark::kMicrosecond);
    }
    benchmark::RegisterBenchmark("BM_CGeoRoad_UpdateHorizontalElements_10000", update_all)
        ->Unit(benchmark::kMicrosecond);
    benchmark::RegisterBenchmark("BM_CGeoRoad_UpdateHorizontalElements_10000_Bare", chain_all)
        ->Unit(benchmark::kMicrosecond);
}

} // namespace

int main(int argc, char** argv) {
    return run_benchmarks(argc, argv, register_all);
}
