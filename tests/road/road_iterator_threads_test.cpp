// Many threads, each with its own iterator, evaluating one shared road: every thread gets the
// answers one thread gets alone. Built for the ThreadSanitizer run as well (suite
// RoadIteratorThreads).
#include "road/iterator_roads.h"

#include "qv5/georoad.h"
#include "qv5/georoaditer.h"

#include "support/test_numbers.h"

#include <gtest/gtest.h>

#include <thread>
#include <vector>

using qv5::test::bits_of;

namespace {

struct Answer {
    double station, offset, dz, azimuth, grade, surface;
    int snapped;
    double snap_station;
};

std::vector<geo_nee> shots(CGeoRoad& road) {
    CGeoRoadIterator it;
    it.Set(&road);
    std::vector<geo_nee> out;
    for (int i = 0; i < 300; ++i) {
        const double station = -3.0 + 2.39 * i;
        const double offset = -6.0 + (i % 13);
        CGeoPoint p;
        double azimuth = GEO_NULL;
        it.CenterlinePoint(station, offset, 0.0, p, azimuth, nullptr, nullptr);
        out.push_back(geo_nee{p.Northing(), p.Easting(), 100.0 + 0.01 * i});
    }
    return out;
}

std::vector<Answer> evaluate(CGeoRoad& road, const std::vector<geo_nee>& points) {
    CGeoRoadIterator it;
    it.Set(&road);
    std::vector<Answer> out;
    for (const geo_nee& g : points) {
        Answer a{};
        CGeoPoint p(g);
        it.CenterlineDeltas(p, a.station, a.offset, a.dz, a.azimuth, a.grade, nullptr);
        CGeoPoint surface;
        double along = GEO_NULL;
        double across = GEO_NULL;
        it.Intersection(p, 0.0, surface, along, across);
        a.surface = surface.Elevation();
        georoad_HorzTransitionType type = georoad_TransNone;
        a.snap_station = GEO_NULL;
        a.snapped = road.FindClosestHorzPt(p, 0.5, a.snap_station, type);
        out.push_back(a);
    }
    return out;
}

bool same(const Answer& a, const Answer& b) {
    return bits_of(a.station) == bits_of(b.station) && bits_of(a.offset) == bits_of(b.offset) &&
           bits_of(a.dz) == bits_of(b.dz) && bits_of(a.azimuth) == bits_of(b.azimuth) &&
           bits_of(a.grade) == bits_of(b.grade) && bits_of(a.surface) == bits_of(b.surface) &&
           a.snapped == b.snapped && bits_of(a.snap_station) == bits_of(b.snap_station);
}

} // namespace

TEST(RoadIteratorThreads, EachThreadWithItsOwnIteratorMatchesOneThreadAlone) {
    CGeoRoad road;
    qv5::test::build_curve_road(road);
    qv5::test::add_profile(road);
    CGeoTemplate a = qv5::test::flat_template("A", 5.0, -0.02, 0.0, true);
    CGeoTemplate b = qv5::test::flat_template("B", 7.0, -0.03, 0.0, true);
    road.AddTemplate(&a);
    road.AddTemplate(&b);
    road.AddTemplateApplication(CString("A"), 0.0, geodef_BothSides);
    road.AddTemplateApplication(CString("B"), 400.0, geodef_BothSides);

    const std::vector<geo_nee> points = shots(road);
    const std::vector<Answer> expected = evaluate(road, points);
    int defined = 0;
    for (const Answer& e : expected) {
        defined += e.surface != GEO_NULL ? 1 : 0;
    }
    EXPECT_GT(defined, 100);

    constexpr int kThreads = 8;
    std::vector<std::vector<Answer>> results(kThreads);
    std::vector<std::thread> threads;
    for (int t = 0; t < kThreads; ++t) {
        threads.emplace_back([&, t] { results[t] = evaluate(road, points); });
    }
    for (std::thread& th : threads) {
        th.join();
    }
    for (int t = 0; t < kThreads; ++t) {
        ASSERT_EQ(results[t].size(), expected.size());
        for (std::size_t i = 0; i < expected.size(); ++i) {
            EXPECT_TRUE(same(results[t][i], expected[i])) << "thread " << t << " shot " << i;
        }
    }
}
