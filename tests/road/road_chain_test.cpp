// Long alignments: random elements chained end to end, edit sequences checked against an
// independent list of stations, and roads that share their arrays.
#include "qv5/georoad.h"

#include "road_test_support.h"
#include "support/test_numbers.h"

#include <gtest/gtest.h>

#include <cmath>
#include <memory>
#include <random>
#include <vector>

using qv5::test::arc_of;
using qv5::test::entry_of;
using qv5::test::exit_of;
using qv5::test::is_geo_null;
using qv5::test::kPi;
using qv5::test::kTwoPi;
using qv5::test::line_of;
using qv5::test::OpenRoad;

namespace {

struct Piece {
    georoad_HorzElementType type;
    double azimuth;
    double radius;
    double length;
    geodef_Direction direction;
};

Piece random_piece(std::mt19937_64& random) {
    std::uniform_real_distribution<double> azimuth(0.0, kTwoPi);
    std::uniform_real_distribution<double> length(5.0, 200.0);
    std::uniform_real_distribution<double> radius(150.0, 2000.0);
    std::uniform_int_distribution<int> kind(0, 3);
    std::uniform_int_distribution<int> side(0, 1);
    Piece piece;
    piece.type = static_cast<georoad_HorzElementType>(kind(random));
    piece.azimuth = azimuth(random);
    piece.radius = radius(random);
    piece.length = length(random);
    if (piece.type != georoad_Line && piece.type != georoad_Arc) {
        piece.length = std::fmin(piece.length, piece.radius / 2.0);
    }
    piece.direction = side(random) == 0 ? geodef_Left : geodef_Right;
    return piece;
}

// Calls `use` with an element object made from the piece.
template <typename Use>
int with_element(const Piece& piece, Use use) {
    switch (piece.type) {
    case georoad_Line: {
        CGeoLine e = line_of(piece.azimuth, piece.length);
        return use(&e);
    }
    case georoad_Arc: {
        CGeoArc e = arc_of(piece.azimuth, piece.radius, piece.length, piece.direction);
        return use(&e);
    }
    case georoad_EntrySpiral: {
        CGeoEntrySpiral e = entry_of(piece.azimuth, piece.radius, piece.length, piece.direction);
        return use(&e);
    }
    default: {
        CGeoExitSpiral e = exit_of(piece.azimuth, piece.radius, piece.length, piece.direction);
        return use(&e);
    }
    }
}

struct Ends {
    geo_nee start;
    geo_nee end;
    double entry;
    double exit;
};

Ends ends_of(CGeoRoad& road, int n) {
    double station = 0.0;
    double azimuth = 0.0;
    CGeoPoint start;
    Ends ends{};
    switch (road.NthHorizontalType(n)) {
    case georoad_Line: {
        CGeoLine e;
        road.GetNthHorizontal(n, georoad_Line, station, start, azimuth, &e);
        ends = {e.StartPt().Grid(), e.EndPt().Grid(), e.GridAzimuth(), e.GridAzimuth()};
        break;
    }
    case georoad_Arc: {
        CGeoArc e;
        road.GetNthHorizontal(n, georoad_Arc, station, start, azimuth, &e);
        ends = {e.CentreToStart().EndPt().Grid(), e.EndPt().Grid(), e.EntryAzimuth(),
                e.GridAzimuth(e.GridArcLength())};
        break;
    }
    case georoad_EntrySpiral: {
        CGeoEntrySpiral e;
        road.GetNthHorizontal(n, georoad_EntrySpiral, station, start, azimuth, &e);
        ends = {e.StartPt().Grid(), e.EndPt().Grid(), e.EntryAzimuth(), e.ExitAzimuth()};
        break;
    }
    default: {
        CGeoExitSpiral e;
        road.GetNthHorizontal(n, georoad_ExitSpiral, station, start, azimuth, &e);
        ends = {e.StartPt().Grid(), e.EndPt().Grid(), e.EntryAzimuth(), e.ExitAzimuth()};
        break;
    }
    }
    return ends;
}

double angle_gap(double a, double b) {
    double d = std::fmod(std::fabs(a - b), kTwoPi);
    return d > kPi ? kTwoPi - d : d;
}

void expect_chained(CGeoRoad& road, bool tangent) {
    for (int i = 1; i < road.NumberHorizontalElements(); ++i) {
        const Ends before = ends_of(road, i - 1);
        const Ends here = ends_of(road, i);
        ASSERT_LT(
            std::hypot(here.start.north - before.end.north, here.start.east - before.end.east),
            1e-9)
            << "element " << i;
        if (tangent) {
            ASSERT_LT(angle_gap(here.entry, before.exit), 1e-9) << "element " << i;
        }
    }
}

} // namespace

TEST(RoadChain, ThousandRandomElementsRechainTangentially) {
    std::mt19937_64 random(20261125);
    OpenRoad road;
    road.SetPOBInfo(1000.0, 6200000.0, 480000.0, 20.0);
    double total = 0.0;
    for (int i = 0; i < 1000; ++i) {
        const Piece piece = random_piece(random);
        total += piece.length;
        ASSERT_EQ(with_element(piece, [&](void* e) { return road.AddHorizontal(piece.type, e); }),
                  1);
    }
    ASSERT_EQ(road.NumberHorizontalElements(), 1000);
    EXPECT_NEAR(road.EndStationHorizontal(), 1000.0 + total, 1e-9 * total);
    expect_chained(road, false);

    road.UpdateHorizontalElements(0, 1);
    expect_chained(road, true);
    EXPECT_NEAR(road.EndStationHorizontal(), 1000.0 + total, 1e-9 * total);
    EXPECT_LT(angle_gap(ends_of(road, 999).exit, road.EndAzimuthHorizontal()), 1e-12);
    EXPECT_EQ(road.EndPtHorizontal().Northing(), ends_of(road, 999).end.north);
    double sum = 1000.0;
    for (int i = 0; i < 1000; ++i) {
        ASSERT_NEAR(road.HorzElementStartStation(i), sum, 1e-9 * total) << i;
        sum += road.HorzElementEndStation(i) - road.HorzElementStartStation(i);
    }
}

TEST(RoadChain, EditSequencesKeepStationsOfAnIndependentModel) {
    std::mt19937_64 random(7);
    CGeoRoad road;
    road.SetPOBInfo(250.0, 0.0, 0.0, 20.0);
    std::vector<double> model; // element lengths, in order
    double model_end = 250.0;  // the road end as the rules say it stands
    std::uniform_int_distribution<int> action(0, 3);
    std::uniform_int_distribution<int> tangent(0, 1);
    for (int step = 0; step < 400; ++step) {
        const Piece piece = random_piece(random);
        const int count = static_cast<int>(model.size());
        const int what = count == 0 ? 0 : action(random);
        const int n = count == 0 ? 0 : std::uniform_int_distribution<int>(0, count - 1)(random);
        const int t = tangent(random);
        auto sum = [&]() {
            double s = 250.0;
            for (double l : model) {
                s += l;
            }
            return s;
        };
        if (what == 0) {
            ASSERT_EQ(
                with_element(piece, [&](void* e) { return road.AddHorizontal(piece.type, e); }), 1);
            model.push_back(piece.length);
            model_end += piece.length;
        } else if (what == 1) {
            ASSERT_EQ(
                with_element(piece,
                             [&](void* e) { return road.InsertHorizontal(n, piece.type, e, t); }),
                1);
            model.insert(model.begin() + n, piece.length);
            model_end = sum();
        } else if (what == 2) {
            ASSERT_EQ(
                with_element(piece,
                             [&](void* e) { return road.SetNthHorizontal(n, piece.type, e, t); }),
                1);
            model[static_cast<std::size_t>(n)] = piece.length;
            model_end = sum();
        } else {
            ASSERT_EQ(road.DeleteNthHorizontal(n, t), 1);
            model.erase(model.begin() + n);
            if (n < count - 1) {
                model_end = sum(); // deleting the last element leaves the old end
            }
        }
        ASSERT_EQ(road.NumberHorizontalElements(), static_cast<int>(model.size()));
        double station = 250.0;
        for (std::size_t i = 0; i < model.size(); ++i) {
            ASSERT_NEAR(road.HorzElementStartStation(static_cast<int>(i)), station, 1e-7)
                << "step " << step << " element " << i;
            station += model[i];
        }
        ASSERT_NEAR(road.EndStationHorizontal(), model_end, 1e-7) << "step " << step;
    }
}

TEST(RoadSharing, CopyConstructedRoadSharesTheArrays) {
    OpenRoad road;
    CGeoLine line = line_of(0.0, 10.0);
    road.AddHorizontal(georoad_Line, &line);
    road.AddVertical(georoad_VertPoint, 0.0, 5.0, 0.0, nullptr);
    OpenRoad copy(road);
    EXPECT_EQ(copy.HorzRecords(), road.HorzRecords());
    EXPECT_EQ(copy.HorzRecords()[0].element, road.HorzRecords()[0].element);
    EXPECT_EQ(copy.VertRecords(), road.VertRecords());
    EXPECT_EQ(copy.NumberHorizontalElements(), 1);
    EXPECT_EQ(copy.EndStationHorizontal(), 10.0);
}

TEST(RoadSharing, AssignmentMakesAnIndependentRoad) {
    OpenRoad road;
    road.SetName(CString("R"));
    road.SetPOBInfo(100.0, 10.0, 20.0, 25.0);
    CGeoLine line = line_of(0.0, 10.0);
    CGeoArc arc = arc_of(0.0, 100.0, 20.0, geodef_Left);
    road.AddHorizontal(georoad_Line, &line);
    road.AddHorizontal(georoad_Arc, &arc);
    road.AddVertical(georoad_VertPoint, 100.0, 5.0, 0.0, nullptr);
    road.AddVertical(georoad_VertParabola, 110.0, 6.0, 4.0, nullptr);
    road.AddVertical(georoad_VertPoint, 130.0, 5.0, 0.0, nullptr);
    road.SetModifiedFlag(0);
    OpenRoad copy;
    copy = road;
    EXPECT_NE(copy.HorzRecords(), road.HorzRecords());
    EXPECT_NE(copy.HorzRecords()[0].element, road.HorzRecords()[0].element);
    EXPECT_EQ(copy.IsModified(), 1);
    EXPECT_EQ(copy.Name().ToUtf8(), "R");
    EXPECT_EQ(copy.StartStationHorizontal(), 100.0);
    EXPECT_EQ(copy.StationInterval(), 25.0);
    EXPECT_EQ(copy.NumberHorizontalElements(), 2);
    EXPECT_DOUBLE_EQ(copy.EndStationHorizontal(), 130.0);
    EXPECT_EQ(copy.EndPtHorizontal().Easting(), road.EndPtHorizontal().Easting());
    ASSERT_EQ(copy.NumberVerticalElements(), 3);
    double s, e, cp, gi, go, cs, ce, len;
    ASSERT_EQ(copy.GetNthVertical(1, georoad_VertParabola, s, e, cp, gi, go, cs, ce, len), 1);
    EXPECT_EQ(len, 4.0); // recomputed as twice PVI station minus curve start
    road.DeleteNthHorizontal(0, 0);
    EXPECT_EQ(copy.NumberHorizontalElements(), 2);
}

TEST(RoadSharing, SharingCopyDestroyedFirstLeavesTheSourceWhole) {
    auto road = std::make_unique<CGeoRoad>();
    CGeoLine line = line_of(0.0, 10.0);
    road->AddHorizontal(georoad_Line, &line);
    road->AddVertical(georoad_VertPoint, 0.0, 5.0, 0.0, nullptr);
    {
        CGeoRoad copy(*road);
        EXPECT_EQ(copy.NumberHorizontalElements(), 1);
    }
    EXPECT_EQ(road->HorzElementEndStation(0), 10.0);
    EXPECT_EQ(road->NthPVIElevation(0), 5.0);
    road->AddHorizontal(georoad_Line, &line);
    EXPECT_EQ(road->EndStationHorizontal(), 20.0);
    road.reset();
}

TEST(RoadSharing, SourceDestroyedFirstLeavesTheCopyWhole) {
    auto road = std::make_unique<CGeoRoad>();
    CGeoLine line = line_of(0.0, 10.0);
    road->AddHorizontal(georoad_Line, &line);
    auto copy = std::make_unique<CGeoRoad>(*road);
    auto third = std::make_unique<CGeoRoad>(*copy);
    road.reset();
    EXPECT_EQ(copy->HorzElementEndStation(0), 10.0);
    copy.reset();
    EXPECT_EQ(third->HorzElementEndStation(0), 10.0);
    third->DeleteNthHorizontal(0, 0);
    EXPECT_EQ(third->NumberHorizontalElements(), 0);
}

TEST(RoadSharing, AnEditThroughOneSharerIsNotSeenByTheOther) {
    OpenRoad road;
    CGeoLine line = line_of(0.0, 10.0);
    road.AddHorizontal(georoad_Line, &line);
    OpenRoad copy(road);
    CGeoLine longer = line_of(0.0, 30.0);
    ASSERT_EQ(copy.SetNthHorizontal(0, georoad_Line, &longer, 0), 1);
    EXPECT_NE(copy.HorzRecords(), road.HorzRecords());
    EXPECT_EQ(road.HorzElementEndStation(0), 10.0);
    EXPECT_EQ(copy.HorzElementEndStation(0), 30.0);
    road.Reset();
    EXPECT_EQ(copy.HorzElementEndStation(0), 30.0);
}
