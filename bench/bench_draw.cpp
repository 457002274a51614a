// A template's picture beside a bare Cairo fill of the same surface.
//
// BM_DrawSection draws a 12-element template (surface, step, curb, features, side slope) into
// 640 x 480 through CGeoTemplate::DrawSection: a new bitmap each call (the previous one
// released), the white fill, the plan and every shape. BM_DrawSection_Bare makes a 640 x 480
// Cairo image surface and fills it white: the least any picture of that size costs, and the
// share of the call that is not the template's own drawing. See docs/performance.md.
#include "bench_support.h"

#include "qv5/qv5lib.h"

#include <benchmark/benchmark.h>

#include <cairo.h>

#include <cmath>
#include <cstring>

namespace {

constexpr int kWidth = 640;
constexpr int kHeight = 480;

void add_feature(CGeoTemplate& t, const char* name) {
    geotemp_FeatureData r;
    std::memset(&r, 0, sizeof r);
    for (int i = 0; name[i] != 0 && i < 32; ++i) {
        r.Name[i] = static_cast<unsigned char>(name[i]);
    }
    t.AddElement(geotemp_Feature, &r);
}

/// A rural road side of 12 elements.
CGeoTemplate twelve_elements() {
    CGeoTemplate t;
    const geotemp_GradeWidthData lane{std::atan(-0.025), 3.5};
    const geotemp_GradeWidthData shoulder{std::atan(-0.04), 1.5};
    const geotemp_StepData drop{0.0, -0.15};
    const geotemp_DeltaHVData verge{1.0, -0.05};
    const geotemp_DeltaHVData berm{0.8, 0.1};
    geotemp_FixedPointData curb;
    std::memset(&curb, 0, sizeof curb);
    curb.H = 5.0;
    curb.V = -0.1;
    const geotemp_SideSlopeData slope{std::atan(0.5), std::atan(1.0 / 3.0), 1.0};
    add_feature(t, "CL");
    t.AddElement(geotemp_GradeWidth, &lane);
    add_feature(t, "Edge of lane");
    t.AddElement(geotemp_GradeWidth, &shoulder);
    add_feature(t, "Shoulder");
    t.AddElement(geotemp_Step, &drop);
    t.AddElement(geotemp_FixedPoint, &curb);
    t.AddElement(geotemp_DeltaHV, &verge);
    add_feature(t, "Back of verge");
    t.AddElement(geotemp_DeltaHV, &berm);
    add_feature(t, "Berm");
    t.AddElement(geotemp_SideSlope, &slope);
    return t;
}

void BM_DrawSection(benchmark::State& state) {
    CGeoTemplate t = twelve_elements();
    CDC screen;
    CDC memory;
    memory.CreateCompatibleDC(&screen);
    CRect rect(0, 0, kWidth, kHeight);
    for (auto _ : state) {
        t.DrawSection(rect, &screen, &memory);
        benchmark::DoNotOptimize(memory.GetPixel(10, 10));
    }
    state.counters["elements"] = t.NumberElements();
}
BENCHMARK(BM_DrawSection)->Unit(benchmark::kMicrosecond);

QV5_BARE unsigned int bare_white_surface() {
    cairo_surface_t* surface = cairo_image_surface_create(CAIRO_FORMAT_RGB24, kWidth, kHeight);
    cairo_t* cairo = cairo_create(surface);
    cairo_set_antialias(cairo, CAIRO_ANTIALIAS_NONE);
    cairo_rectangle(cairo, 0, 0, kWidth, kHeight);
    cairo_set_source_rgb(cairo, 1.0, 1.0, 1.0);
    cairo_fill(cairo);
    cairo_surface_flush(surface);
    unsigned int pixel = 0;
    std::memcpy(&pixel, cairo_image_surface_get_data(surface), sizeof pixel);
    cairo_destroy(cairo);
    cairo_surface_destroy(surface);
    return pixel;
}

void BM_DrawSection_Bare(benchmark::State& state) {
    auto* bare = qv5::bench::opaque(&bare_white_surface);
    for (auto _ : state) {
        benchmark::DoNotOptimize(bare());
    }
}
BENCHMARK(BM_DrawSection_Bare)->Unit(benchmark::kMicrosecond);

} // namespace

BENCHMARK_MAIN();
