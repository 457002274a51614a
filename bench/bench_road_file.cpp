// The road file: reading and writing a road of 10 000 horizontal elements, 100 PVIs, 50 templates
// and 500 applications. Reading is timed beside a raw read of the same bytes into memory plus the
// AddHorizontal calls it must make; writing beside write(2) of the same bytes.
#include "bench_support.h"

#include "qv5/qv5lib.h"

#include <fcntl.h>
#include <unistd.h>

#include <cstdio>
#include <string>
#include <vector>

namespace {

using namespace qv5::bench;

/// Horizontal elements, PVIs, templates and applications of the timed road.
constexpr int kElements = 10000;
constexpr int kPvis = 100;
constexpr int kTemplates = 50;
constexpr int kApplications = 500;

std::string bench_path(const char* stem) {
    const char* tmp = std::getenv("TMPDIR");
    return std::string(tmp != nullptr && *tmp != 0 ? tmp : "/tmp") + "/qv5_bench_" + stem + "_" +
           std::to_string(::getpid()) + ".qv5r";
}

std::vector<unsigned short> utf16(const std::string& text) {
    std::vector<unsigned short> units(text.begin(), text.end());
    units.push_back(0);
    return units;
}

/// The elements of the road, each set once from the origin as a designer enters them; the road
/// translates them to its end.
struct Elements {
    std::vector<CGeoLine> lines;
    std::vector<CGeoEntrySpiral> entries;
    std::vector<CGeoArc> arcs;
    std::vector<CGeoExitSpiral> exits;
    std::vector<std::pair<georoad_HorzElementType, void*>> order;
};

/// A tangent chain of line, entry spiral, arc, exit spiral, turning alternately right and left.
Elements make_elements() {
    Elements e;
    const int groups = kElements / 4;
    e.lines.resize(groups);
    e.entries.resize(groups);
    e.arcs.resize(groups);
    e.exits.resize(groups);
    CGeoPoint origin(geo_nee{0.0, 0.0, 0.0});
    double azimuth = 0.3;
    for (int k = 0; k < groups; ++k) {
        const geodef_Direction dir = k % 2 == 0 ? geodef_Right : geodef_Left;
        e.lines[k].Set(origin, azimuth, 100.0 + k % 7, 0.0);
        e.entries[k].Set(origin, azimuth, dir, 400.0, 60.0);
        azimuth = e.entries[k].ExitAzimuth();
        e.arcs[k].Set(origin, azimuth, 400.0, 80.0, dir, 0.0);
        azimuth = e.arcs[k].GridAzimuth(80.0);
        e.exits[k].Set(origin, azimuth, dir, 400.0, 60.0);
        azimuth = e.exits[k].ExitAzimuth();
    }
    for (int k = 0; k < groups; ++k) {
        e.order.emplace_back(georoad_Line, &e.lines[k]);
        e.order.emplace_back(georoad_EntrySpiral, &e.entries[k]);
        e.order.emplace_back(georoad_Arc, &e.arcs[k]);
        e.order.emplace_back(georoad_ExitSpiral, &e.exits[k]);
    }
    return e;
}

void build_road(CGeoRoad& road, Elements& e) {
    road.SetName(CString("Benchmark road"));
    road.SetPOBInfo(0.0, 10000.0, 20000.0, 20.0);
    for (auto& [type, element] : e.order) {
        road.AddHorizontal(type, element);
    }
    georoad_Error error = georoad_Error(0);
    road.AddVertical(georoad_VertPoint, 0.0, 50.0, 0.0, &error);
    for (int i = 1; i < kPvis; ++i) {
        road.AddVertical(georoad_VertParabola, 1000.0 * i, 50.0 + (i % 3), 100.0, &error);
    }
    for (int t = 0; t < kTemplates; ++t) {
        CGeoTemplate templ;
        templ.SetName(CString(("Template " + std::to_string(t)).c_str()));
        const geotemp_GradeWidthData lane{-0.02, 3.5};
        const geotemp_StepData kerb{0.0, 0.15};
        const geotemp_GradeWidthData verge{0.04, 2.0};
        geotemp_FeatureData edge{};
        edge.Name[0] = 'E';
        const geotemp_FixedPointData curb{3.6, 0.1, 0.0, {}};
        const geotemp_SideSlopeData slope{0.5, 0.4, 1.0};
        templ.AddElement(geotemp_GradeWidth, &lane);
        templ.AddElement(geotemp_Feature, &edge);
        templ.AddElement(geotemp_Step, &kerb);
        templ.AddElement(geotemp_FixedPoint, &curb);
        templ.AddElement(geotemp_GradeWidth, &verge);
        templ.AddElement(geotemp_SideSlope, &slope);
        road.AddTemplate(&templ);
    }
    for (int a = 0; a < kApplications; ++a) {
        road.AddTemplateApplication(CString(("Template " + std::to_string(a % kTemplates)).c_str()),
                                    200.0 * a, a % 2 == 0 ? geodef_LeftSide : geodef_RightSide);
    }
}

std::vector<char> file_contents(const std::string& path) {
    std::vector<char> bytes;
    const int fd = ::open(path.c_str(), O_RDONLY);
    char chunk[65536];
    ssize_t n = 0;
    while ((n = ::read(fd, chunk, sizeof chunk)) > 0) {
        bytes.insert(bytes.end(), chunk, chunk + n);
    }
    ::close(fd);
    return bytes;
}

/// The baseline of reading: the file's bytes into memory, then the road's AddHorizontal calls.
QV5_BARE std::size_t bare_read(const std::string& path, CGeoRoad& road, Elements& e) {
    const std::vector<char> bytes = file_contents(path);
    road.Reset();
    for (auto& [type, element] : e.order) {
        road.AddHorizontal(type, element);
    }
    return bytes.size();
}

/// The baseline of writing: the same bytes with one write(2).
QV5_BARE bool bare_write(const std::string& path, const std::vector<char>& bytes) {
    const int fd = ::open(path.c_str(), O_WRONLY | O_CREAT | O_TRUNC | O_CLOEXEC, 0644);
    const bool ok = ::write(fd, bytes.data(), bytes.size()) == static_cast<ssize_t>(bytes.size());
    ::close(fd);
    return ok;
}

struct Fixture {
    Elements elements = make_elements();
    CGeoRoad road;
    std::string path = bench_path("road");
    std::string scratch = bench_path("scratch");
    std::vector<char> bytes;

    Fixture() {
        build_road(road, elements);
        road.Write(utf16(path).data(), nullptr);
        bytes = file_contents(path);
    }
    ~Fixture() {
        std::remove(path.c_str());
        std::remove(scratch.c_str());
    }
};

Fixture& fixture() {
    static Fixture f;
    return f;
}

void read_road(benchmark::State& state) {
    Fixture& f = fixture();
    const auto path = utf16(f.path);
    CGeoRoad road;
    for (auto _ : state) {
        benchmark::DoNotOptimize(road.Read(path.data(), nullptr));
    }
    state.SetBytesProcessed(state.iterations() * static_cast<std::int64_t>(f.bytes.size()));
}

void read_road_bare(benchmark::State& state) {
    Fixture& f = fixture();
    CGeoRoad road;
    auto* read = opaque(&bare_read);
    for (auto _ : state) {
        benchmark::DoNotOptimize(read(f.path, road, f.elements));
    }
    state.SetBytesProcessed(state.iterations() * static_cast<std::int64_t>(f.bytes.size()));
}

void write_road(benchmark::State& state) {
    Fixture& f = fixture();
    const auto path = utf16(f.scratch);
    for (auto _ : state) {
        benchmark::DoNotOptimize(f.road.Write(path.data(), nullptr));
    }
    state.SetBytesProcessed(state.iterations() * static_cast<std::int64_t>(f.bytes.size()));
}

void write_road_bare(benchmark::State& state) {
    Fixture& f = fixture();
    auto* write = opaque(&bare_write);
    for (auto _ : state) {
        benchmark::DoNotOptimize(write(f.scratch, f.bytes));
    }
    state.SetBytesProcessed(state.iterations() * static_cast<std::int64_t>(f.bytes.size()));
}

void register_all() {
    benchmark::RegisterBenchmark("BM_CGeoRoad_Read_10000", read_road)
        ->Unit(benchmark::kMillisecond);
    benchmark::RegisterBenchmark("BM_CGeoRoad_Read_10000_Bare", read_road_bare)
        ->Unit(benchmark::kMillisecond);
    benchmark::RegisterBenchmark("BM_CGeoRoad_Write_10000", write_road)
        ->Unit(benchmark::kMillisecond);
    benchmark::RegisterBenchmark("BM_CGeoRoad_Write_10000_Bare", write_road_bare)
        ->Unit(benchmark::kMillisecond);
}

} // namespace

int main(int argc, char** argv) {
    return run_benchmarks(argc, argv, register_all);
}
