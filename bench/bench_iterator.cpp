// The road iterator: a walking surveyor (the point moved 0.1 m since the last call, on a warm
// iterator) beside one point evaluation of the element under it; the surface under the point
// (Intersection, with blended templates) beside the positioning alone; and a cold start (no
// current element) on roads of 10 to 10 000 elements beside one bare element inversion.
#include "bench_support.h"

#include "qv5/qv5lib.h"

#include <cmath>
#include <memory>
#include <string>
#include <vector>

namespace {

using qv5::bench::kHalfPi;

/// A walk of 0.1 m steps over `length` metres from `start` at a fixed offset.
struct Walk {
    std::vector<geo_nee> points;
    std::vector<double> stations;
};

Walk walk_along(CGeoRoad& road, double start, double length, double offset) {
    CGeoRoadIterator it;
    it.Set(&road);
    Walk w;
    for (double s = start; s < start + length; s += 0.1) {
        CGeoPoint p;
        double azimuth = GEO_NULL;
        it.CenterlinePoint(s, offset, 0.0, p, azimuth, nullptr, nullptr);
        w.points.push_back(geo_nee{p.Northing(), p.Easting(), 10.0});
        w.stations.push_back(s);
    }
    return w;
}

/// Line 300 (0-300), entry spiral 100 (300-400), arc R 400 over 300 (400-700), exit spiral 100,
/// line 300; a profile; two similar templates blended between 200 and 800.
CGeoRoad& sample_road() {
    static CGeoRoad* road = [] {
        auto* r = new CGeoRoad;
        r->SetPOBInfo(0.0, 5000.0, 5000.0, 20.0);
        CGeoPoint o(geo_nee{0.0, 0.0, 0.0});
        double az = 0.4;
        CGeoLine line;
        line.Set(o, az, 300.0, 0.0);
        r->AddHorizontal(georoad_Line, &line);
        CGeoEntrySpiral entry;
        entry.Set(o, az, geodef_Right, 400.0, 100.0);
        r->AddHorizontal(georoad_EntrySpiral, &entry);
        az += 100.0 / 800.0;
        CGeoArc arc;
        arc.Set(o, az, 400.0, 300.0, geodef_Right, 0.0);
        r->AddHorizontal(georoad_Arc, &arc);
        az += 300.0 / 400.0;
        CGeoExitSpiral exit;
        exit.Set(o, az, geodef_Right, 400.0, 100.0);
        r->AddHorizontal(georoad_ExitSpiral, &exit);
        az += 100.0 / 800.0;
        line.Set(o, az, 300.0, 0.0);
        r->AddHorizontal(georoad_Line, &line);
        georoad_Error e = georoad_Error{};
        r->AddVertical(georoad_VertPoint, 0.0, 10.0, 0.0, &e);
        r->AddVertical(georoad_VertParabola, 500.0, 14.0, 200.0, &e);
        r->AddVertical(georoad_VertPoint, 1100.0, 9.0, 0.0, &e);
        for (const auto& [name, width] : {std::pair{"A", 5.0}, std::pair{"B", 7.0}}) {
            CGeoTemplate t;
            t.SetName(CString(name));
            const geotemp_GradeWidthData lane{-0.02, width};
            const geotemp_GradeWidthData verge{-0.05, 2.0};
            t.AddElement(geotemp_GradeWidth, &lane);
            t.AddElement(geotemp_GradeWidth, &verge);
            r->AddTemplate(&t);
        }
        r->AddTemplateApplication(CString("A"), 200.0, geodef_BothSides);
        r->AddTemplateApplication(CString("B"), 800.0, geodef_BothSides);
        return r;
    }();
    return *road;
}

/// A road of `n` lines of 10 m zig-zagging gently (a kink of 0.01 rad at every joint).
std::unique_ptr<CGeoRoad> long_road(int n) {
    auto road = std::make_unique<CGeoRoad>();
    road->SetPOBInfo(0.0, 0.0, 0.0, 20.0);
    CGeoPoint o(geo_nee{0.0, 0.0, 0.0});
    for (int i = 0; i < n; ++i) {
        CGeoLine line;
        line.Set(o, (i % 2 == 0) ? 0.005 : -0.005 + qv5::bench::kTwoPi, 10.0, 0.0);
        road->AddHorizontal(georoad_Line, &line);
    }
    return road;
}

/// A road of n elements winding both ways: a line of 40 m, an entry spiral of 20 m, an arc of
/// radius 100 m over 30 m and an exit spiral of 20 m, turning right then left in turn.
std::unique_ptr<CGeoRoad> winding_road(int n) {
    auto road = std::make_unique<CGeoRoad>();
    road->SetPOBInfo(0.0, 0.0, 0.0, 20.0);
    CGeoPoint o(geo_nee{0.0, 0.0, 0.0});
    for (int i = 0; i < n; ++i) {
        const geodef_Direction d = (i / 4) % 2 == 0 ? geodef_Right : geodef_Left;
        switch (i % 4) {
        case 0: {
            CGeoLine line;
            line.Set(o, 0.0, 40.0, 0.0);
            road->AddHorizontal(georoad_Line, &line);
            break;
        }
        case 1: {
            CGeoEntrySpiral spiral;
            spiral.Set(o, 0.0, d, 100.0, 20.0);
            road->AddHorizontal(georoad_EntrySpiral, &spiral);
            break;
        }
        case 2: {
            CGeoArc arc;
            arc.Set(o, 0.0, 100.0, 30.0, d, 0.0);
            road->AddHorizontal(georoad_Arc, &arc);
            break;
        }
        default: {
            CGeoExitSpiral spiral;
            spiral.Set(o, 0.0, d, 100.0, 20.0);
            road->AddHorizontal(georoad_ExitSpiral, &spiral);
            break;
        }
        }
    }
    return road;
}

/// The walking surveyor on one element: CenterlineDeltas of the next point of the walk, beside
/// GridHorzPoint of the element at that station.
template <class Element>
void walk_pair(const std::string& name, double start, double length, Element element,
               double element_start, bool spiral) {
    CGeoRoad& road = sample_road();
    auto walk = std::make_shared<Walk>(walk_along(road, start, length, 3.0));
    auto it = std::make_shared<CGeoRoadIterator>();
    it->Set(&road);
    auto el = std::make_shared<Element>(element);
    auto out = std::make_shared<CGeoPoint>();
    const std::size_t n = walk->points.size();
    auto k = std::make_shared<std::size_t>(0);
    auto j = std::make_shared<std::size_t>(0);
    benchmark::RegisterBenchmark(("BM_Iterator_Walk_" + name).c_str(),
                                 [walk, it, n, k](benchmark::State& state) {
                                     for (auto _ : state) {
                                         CGeoPoint p(walk->points[*k]);
                                         double s, o, dz, az, g;
                                         it->CenterlineDeltas(p, s, o, dz, az, g, nullptr);
                                         benchmark::DoNotOptimize(s);
                                         *k = (*k + 1) % n;
                                     }
                                 });
    benchmark::RegisterBenchmark(
        ("BM_Iterator_Walk_" + name + "_GridHorzPoint").c_str(),
        [walk, el, out, n, j, element_start, spiral](benchmark::State& state) {
            for (auto _ : state) {
                const double d = walk->stations[*j] - element_start;
                if constexpr (std::is_same_v<Element, CGeoLine> ||
                              std::is_same_v<Element, CGeoArc>) {
                    el->GridHorzPoint(d, *out);
                } else {
                    el->GridHorzPoint(d, 0.001, *out);
                }
                benchmark::DoNotOptimize(out->Grid());
                *j = (*j + 1) % n;
            }
            (void)spiral;
        });
}

/// The line's station and offset of a point as plain trigonometry: the vector from the line's
/// start, its bearing, the cosine and sine of its angle to the line. What any walk on a line
/// must at least work out, with nothing of the iterator around it.
QV5_BARE void bare_line_inversion(double start_north, double start_east, double azimuth,
                                  const geo_nee& p, double& station, double& offset) {
    const double dn = p.north - start_north;
    const double de = p.east - start_east;
    const double length = std::sqrt(dn * dn + de * de);
    const double to_point = qv5::bench::bare_normalise(std::atan2(de, dn));
    double d = qv5::bench::bare_normalise(azimuth - to_point);
    const double angle = d > qv5::bench::kPi ? qv5::bench::kTwoPi - d : d;
    station = length * std::cos(angle);
    if (d > qv5::bench::kPi) {
        d -= qv5::bench::kTwoPi;
    }
    offset = -std::sin(d) * length;
}

/// The walk on a line beside the bare inversion of the same points.
void walk_line_bare(CGeoLine line) {
    CGeoRoad& road = sample_road();
    auto walk = std::make_shared<Walk>(walk_along(road, 20.0, 260.0, 3.0));
    const double north = line.StartPt().Northing();
    const double east = line.StartPt().Easting();
    const double azimuth = line.GridAzimuth();
    auto k = std::make_shared<std::size_t>(0);
    benchmark::RegisterBenchmark("BM_Iterator_Walk_Line_BareInversion",
                                 [walk, k, north, east, azimuth](benchmark::State& state) {
                                     auto* invert = qv5::bench::opaque(&bare_line_inversion);
                                     for (auto _ : state) {
                                         double s;
                                         double o;
                                         invert(north, east, azimuth, walk->points[*k], s, o);
                                         benchmark::DoNotOptimize(s);
                                         benchmark::DoNotOptimize(o);
                                         *k = (*k + 1) % walk->points.size();
                                     }
                                 });
}

template <class Element>
Element element_of(int index, georoad_HorzElementType type) {
    CGeoRoad& road = sample_road();
    Element e;
    double station = 0.0;
    double azimuth = 0.0;
    CGeoPoint start;
    road.GetNthHorizontal(index, type, station, start, azimuth, &e);
    return e;
}

void register_all() {
    walk_pair("Line", 20.0, 260.0, element_of<CGeoLine>(0, georoad_Line), 0.0, false);
    walk_line_bare(element_of<CGeoLine>(0, georoad_Line));
    walk_pair("Spiral", 305.0, 90.0, element_of<CGeoEntrySpiral>(1, georoad_EntrySpiral), 300.0,
              true);
    walk_pair("Arc", 410.0, 280.0, element_of<CGeoArc>(2, georoad_Arc), 400.0, false);

    // The surface under the walking point (blended templates) beside its positioning alone.
    {
        CGeoRoad& road = sample_road();
        auto walk = std::make_shared<Walk>(walk_along(road, 210.0, 580.0, 3.0));
        const std::size_t n = walk->points.size();
        auto a = std::make_shared<CGeoRoadIterator>();
        auto b = std::make_shared<CGeoRoadIterator>();
        a->Set(&road);
        b->Set(&road);
        auto ka = std::make_shared<std::size_t>(0);
        auto kb = std::make_shared<std::size_t>(0);
        benchmark::RegisterBenchmark("BM_Iterator_Intersection",
                                     [walk, a, n, ka](benchmark::State& state) {
                                         CGeoPoint result;
                                         for (auto _ : state) {
                                             CGeoPoint p(walk->points[*ka]);
                                             double along, across;
                                             a->Intersection(p, 0.0, result, along, across);
                                             benchmark::DoNotOptimize(result.Grid());
                                             *ka = (*ka + 1) % n;
                                         }
                                     });
        benchmark::RegisterBenchmark("BM_Iterator_Intersection_CenterlineDeltas",
                                     [walk, b, n, kb](benchmark::State& state) {
                                         for (auto _ : state) {
                                             CGeoPoint p(walk->points[*kb]);
                                             double s, o, dz, az, g;
                                             b->CenterlineDeltas(p, s, o, dz, az, g, nullptr);
                                             benchmark::DoNotOptimize(s);
                                             *kb = (*kb + 1) % n;
                                         }
                                     });
    }

    // Cold starts: Set (no current element) then CenterlineDeltas of a point half way along.
    for (const int n : {10, 100, 1000, 10000}) {
        std::shared_ptr<CGeoRoad> road(long_road(n).release());
        auto it = std::make_shared<CGeoRoadIterator>();
        const geo_nee mid{10.0 * n / 2.0 + 0.3, 1.5, 0.0};
        benchmark::RegisterBenchmark(("BM_Iterator_ColdStart/" + std::to_string(n)).c_str(),
                                     [road, it, mid](benchmark::State& state) {
                                         for (auto _ : state) {
                                             it->Set(road.get());
                                             CGeoPoint p(mid);
                                             double s, o, dz, az, g;
                                             it->CenterlineDeltas(p, s, o, dz, az, g, nullptr);
                                             benchmark::DoNotOptimize(s);
                                         }
                                     });
    }
    // Cold starts on a winding road, 3 m off the centreline half way along: after Set (the
    // iterator copies the elements it needs), and after ForgetPosition (it keeps its copies, as
    // the stake keeps them from shot to shot).
    for (const int n : {10, 100, 1000, 10000}) {
        std::shared_ptr<CGeoRoad> road(winding_road(n).release());
        auto it = std::make_shared<CGeoRoadIterator>();
        it->Set(road.get());
        CGeoPoint on_road;
        double azimuth = GEO_NULL;
        const double middle = road->HorzElementStartStation(n / 2) + 5.0;
        it->CenterlinePoint(middle, 3.0, 0.0, on_road, azimuth, nullptr, nullptr);
        const geo_nee point{on_road.Northing(), on_road.Easting(), 0.0};
        for (const bool keep : {false, true}) {
            const std::string name =
                keep ? "BM_Iterator_ColdStart_Winding_Kept/" : "BM_Iterator_ColdStart_Winding/";
            benchmark::RegisterBenchmark((name + std::to_string(n)).c_str(),
                                         [road, it, point, keep](benchmark::State& state) {
                                             for (auto _ : state) {
                                                 if (keep) {
                                                     it->ForgetPosition();
                                                 } else {
                                                     it->Set(road.get());
                                                 }
                                                 CGeoPoint p(point);
                                                 double s, o, dz, az, g;
                                                 it->CenterlineDeltas(p, s, o, dz, az, g, nullptr);
                                                 benchmark::DoNotOptimize(s);
                                             }
                                         });
        }
    }
    // One bare inversion of a line element (a fresh copy, as the cold start makes them).
    {
        auto line = std::make_shared<CGeoLine>();
        CGeoPoint o(geo_nee{0.0, 0.0, 0.0});
        line->Set(o, 0.005, 10.0, 0.0);
        benchmark::RegisterBenchmark("BM_Iterator_ColdStart_LineInversion",
                                     [line](benchmark::State& state) {
                                         CGeoPoint p(geo_nee{5.3, 1.5, 0.0});
                                         for (auto _ : state) {
                                             CGeoLine copy(*line);
                                             const double s = copy.GridStation(p);
                                             const double off = copy.GridOffset(p);
                                             benchmark::DoNotOptimize(s);
                                             benchmark::DoNotOptimize(off);
                                         }
                                     });
    }
    (void)kHalfPi;
}

} // namespace

int main(int argc, char** argv) {
    return qv5::bench::run_benchmarks(argc, argv, register_all);
}
