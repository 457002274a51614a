// CGeoPointArray (extents, centroid) and the growable array it is built on.
#include "qv5/geoarray.h"
#include "qv5/geopoint.h"

#include <gtest/gtest.h>

#include <string>
#include <vector>

namespace {

/// Closed-form coordinates: metres.
constexpr double kTol = 1e-9;

constexpr double kEmptyMin = 1e108;
constexpr double kEmptyMax = -1e108;

void add(CGeoPointArray& array, double north, double east, double elevation) {
    CGeoPoint point(geo_nee{north, east, elevation});
    array.Add(point);
}

void expect_empty_extents(const CGeoPointArray& array) {
    EXPECT_EQ(array.MinEasting(), kEmptyMin);
    EXPECT_EQ(array.MinNorthing(), kEmptyMin);
    EXPECT_EQ(array.MinElevation(), kEmptyMin);
    EXPECT_EQ(array.MaxEasting(), kEmptyMax);
    EXPECT_EQ(array.MaxNorthing(), kEmptyMax);
    EXPECT_EQ(array.MaxElevation(), kEmptyMax);
}

struct Extents {
    double min_east, min_north, min_elevation, max_east, max_north, max_elevation;
};

void expect_extents(const CGeoPointArray& array, const Extents& e) {
    EXPECT_EQ(array.MinEasting(), e.min_east);
    EXPECT_EQ(array.MinNorthing(), e.min_north);
    EXPECT_EQ(array.MinElevation(), e.min_elevation);
    EXPECT_EQ(array.MaxEasting(), e.max_east);
    EXPECT_EQ(array.MaxNorthing(), e.max_north);
    EXPECT_EQ(array.MaxElevation(), e.max_elevation);
}

// ---------------------------------------------------------------------------------------------
// Extents

TEST(PointArrayExtents, EmptySetHasTheEmptyMarkers) {
    CGeoPointArray array;
    EXPECT_EQ(array.GetSize(), 0);
    expect_empty_extents(array);
}

TEST(PointArrayExtents, MaximumElevationFollowsTheEastings) {
    CGeoPointArray array;
    add(array, 0.0, 100.0, 5.0);
    add(array, 10.0, 50.0, 7.0);
    // Eastings 100 and 50, elevations 5 and 7: the upper elevation extent is the largest easting.
    expect_extents(array, {50.0, 0.0, 5.0, 100.0, 10.0, 100.0});
}

TEST(PointArrayExtents, MaximumElevationOfNegativeEastingsIsNegative) {
    CGeoPointArray array;
    add(array, -5.0, -20.0, -3.0);
    expect_extents(array, {-20.0, -5.0, -3.0, -20.0, -5.0, -20.0});
    add(array, -8.0, -30.0, 400.0);
    // A high elevation widens nothing on the upper side.
    expect_extents(array, {-30.0, -8.0, -3.0, -20.0, -5.0, -20.0});
}

TEST(PointArrayExtents, AddReturnsTheIndexAndStoresACopy) {
    CGeoPointArray array;
    CGeoPoint point(geo_nee{1.0, 2.0, 3.0});
    EXPECT_EQ(array.Add(point), 0);
    point.SetGrid(4.0, 5.0, 6.0);
    EXPECT_EQ(array.Add(point), 1);
    point.SetGrid(7.0, 8.0, 9.0);
    ASSERT_EQ(array.GetSize(), 2);
    EXPECT_EQ(array[0].Northing(), 1.0);
    EXPECT_EQ(array[1].Northing(), 4.0);
    EXPECT_EQ(array.GetAt(1).Flags(), CGeoPoint::PT_GRID);
}

TEST(PointArrayExtents, NullCoordinatesTakePartAsTinyNumbers) {
    CGeoPointArray array;
    add(array, 10.0, 20.0, 30.0);
    add(array, GEO_NULL, GEO_NULL, GEO_NULL);
    // The marker is a tiny positive number: below 10, 20 and 30, above nothing here.
    expect_extents(array, {GEO_NULL, GEO_NULL, GEO_NULL, 20.0, 10.0, 20.0});

    CGeoPointArray negative;
    add(negative, GEO_NULL, GEO_NULL, GEO_NULL);
    expect_extents(negative, {GEO_NULL, GEO_NULL, GEO_NULL, GEO_NULL, GEO_NULL, GEO_NULL});
    add(negative, -1.0, -2.0, -3.0);
    expect_extents(negative, {-2.0, -1.0, -3.0, GEO_NULL, GEO_NULL, GEO_NULL});
}

TEST(PointArrayExtents, AddDerivesAnObservedPoint) {
    // Station (100, 200, 10) hi 1.5; shot due east (hz 90 deg), level (vz 90 deg), 30 m:
    // (100, 230, 11.5) within rounding of cos(pi/2).
    CGeoPoint station;
    station.SetStation(CGeoPoint(geo_nee{100.0, 200.0, 10.0}), 1.5);
    CGeoPoint shot;
    shot.SetHVD(1.5707963267948966, 1.5707963267948966, 30.0, station);
    CGeoPointArray array;
    array.Add(shot);
    EXPECT_EQ(shot.Flags(), CGeoPoint::PT_OBS | CGeoPoint::PT_GRID);
    EXPECT_NEAR(array.MaxEasting(), 230.0, kTol);
    EXPECT_NEAR(array.MinEasting(), 230.0, kTol);
    EXPECT_NEAR(array.MaxNorthing(), 100.0, kTol);
    EXPECT_NEAR(array.MinElevation(), 11.5, kTol);
    EXPECT_NEAR(array.MaxElevation(), 230.0, kTol);
}

TEST(PointArrayExtents, RemoveAtRebuildsTheExtentsWithTheSameRules) {
    CGeoPointArray array;
    add(array, 0.0, 100.0, 5.0);
    add(array, 10.0, 50.0, 7.0);
    add(array, 20.0, 30.0, -2.0);
    expect_extents(array, {30.0, 0.0, -2.0, 100.0, 20.0, 100.0});

    array.RemoveAt(0);
    ASSERT_EQ(array.GetSize(), 2);
    EXPECT_EQ(array[0].Northing(), 10.0);
    EXPECT_EQ(array[1].Northing(), 20.0);
    // Rebuilt from (10, 50, 7) and (20, 30, -2): the upper elevation extent is again an easting.
    expect_extents(array, {30.0, 10.0, -2.0, 50.0, 20.0, 50.0});
}

TEST(PointArrayExtents, RemoveAtWithCountRemovesARun) {
    CGeoPointArray array;
    add(array, 1.0, 10.0, 100.0);
    add(array, 2.0, 20.0, 200.0);
    add(array, 3.0, 30.0, 300.0);
    add(array, 4.0, 40.0, 400.0);
    array.RemoveAt(1, 2);
    ASSERT_EQ(array.GetSize(), 2);
    EXPECT_EQ(array[0].Northing(), 1.0);
    EXPECT_EQ(array[1].Northing(), 4.0);
    expect_extents(array, {10.0, 1.0, 100.0, 40.0, 4.0, 40.0});
}

TEST(PointArrayExtents, RemovingEveryPointByIndexEmptiesTheExtents) {
    CGeoPointArray array;
    add(array, 1.0, 10.0, 100.0);
    add(array, 2.0, 20.0, 200.0);
    array.RemoveAt(0, 2);
    EXPECT_EQ(array.GetSize(), 0);
    expect_empty_extents(array);
}

TEST(PointArrayExtents, OutOfRangeRemoveAtIsIgnored) {
    CGeoPointArray array;
    add(array, 0.0, 100.0, 5.0);
    add(array, 10.0, 50.0, 7.0);
    const Extents before{50.0, 0.0, 5.0, 100.0, 10.0, 100.0};
    array.RemoveAt(2);
    array.RemoveAt(-1);
    array.RemoveAt(1, 2);
    array.RemoveAt(0, -1);
    ASSERT_EQ(array.GetSize(), 2);
    EXPECT_EQ(array[0].Northing(), 0.0);
    EXPECT_EQ(array[1].Northing(), 10.0);
    expect_extents(array, before);
}

TEST(PointArrayExtents, RemoveAllResetsTheExtentsAndFreesTheStorage) {
    CGeoPointArray array;
    add(array, 0.0, 100.0, 5.0);
    add(array, 10.0, 50.0, 7.0);
    array.RemoveAll();
    EXPECT_EQ(array.GetSize(), 0);
    EXPECT_EQ(array.GetCapacity(), 0);
    expect_empty_extents(array);
    add(array, 3.0, 4.0, 5.0);
    expect_extents(array, {4.0, 3.0, 5.0, 4.0, 3.0, 4.0});
}

TEST(PointArrayCopy, AssignmentCopiesElementsAndTheStoredExtents) {
    CGeoPointArray source;
    add(source, 0.0, 100.0, 5.0);
    add(source, 10.0, 50.0, 7.0);
    // Move an element without telling the array: the stored extents no longer match the
    // elements, so a copy that rebuilt them would be caught.
    source.ElementAt(0).SetGrid(1.0, 60.0, 6.0);

    CGeoPointArray target;
    add(target, -1.0, -1.0, -1.0);
    add(target, -2.0, -2.0, -2.0);
    add(target, -3.0, -3.0, -3.0);
    target = source;
    ASSERT_EQ(target.GetSize(), 2);
    EXPECT_EQ(target[0].Easting(), 60.0);
    EXPECT_EQ(target[1].Easting(), 50.0);
    expect_extents(target, {50.0, 0.0, 5.0, 100.0, 10.0, 100.0});

    // The copy is deep.
    target.ElementAt(1).SetGrid(0.0, 0.0, 0.0);
    EXPECT_EQ(source[1].Easting(), 50.0);
}

TEST(PointArrayCopy, CopyConstructorCopiesElementsAndTheStoredExtents) {
    CGeoPointArray source;
    add(source, 0.0, 100.0, 5.0);
    add(source, 10.0, 50.0, 7.0);
    source.ElementAt(0).SetGrid(1.0, 60.0, 6.0);
    CGeoPointArray copy(source);
    ASSERT_EQ(copy.GetSize(), 2);
    EXPECT_EQ(copy[0].Easting(), 60.0);
    expect_extents(copy, {50.0, 0.0, 5.0, 100.0, 10.0, 100.0});
}

TEST(PointArrayCopy, AssigningAnEmptySetEmptiesTheTarget) {
    CGeoPointArray target;
    add(target, 1.0, 2.0, 3.0);
    const CGeoPointArray empty;
    target = empty;
    EXPECT_EQ(target.GetSize(), 0);
    expect_empty_extents(target);
}

TEST(PointArrayCopy, SelfAssignmentKeepsEverything) {
    CGeoPointArray array;
    add(array, 1.0, 2.0, 3.0);
    CGeoPointArray& alias = array;
    array = alias;
    ASSERT_EQ(array.GetSize(), 1);
    EXPECT_EQ(array[0].Northing(), 1.0);
    expect_extents(array, {2.0, 1.0, 3.0, 2.0, 1.0, 2.0});
}

// ---------------------------------------------------------------------------------------------
// Centroid

TEST(PointArrayCentroid, IsTheCentreOfTheBoundingBox) {
    CGeoPointArray array;
    add(array, 0.0, 0.0, 10.0);
    add(array, 10.0, 20.0, 30.0);
    add(array, 4.0, 5.0, 12.0); // inside the box: changes nothing
    CGeoPoint centre;
    EXPECT_EQ(&array.Centroid(centre), &centre);
    EXPECT_NEAR(centre.Northing(), 5.0, kTol);
    EXPECT_NEAR(centre.Easting(), 10.0, kTol);
    EXPECT_NEAR(centre.Elevation(), 20.0, kTol);
    EXPECT_EQ(centre.Flags(), CGeoPoint::PT_GRID);
}

TEST(PointArrayCentroid, UsesTrueElevationsAndLeavesTheStoredExtentsAlone) {
    CGeoPointArray array;
    add(array, 0.0, 0.0, GEO_NULL);     // plan only
    add(array, 100.0, 200.0, GEO_NULL); // plan only
    add(array, 10.0, 20.0, 5.0);
    add(array, 30.0, 40.0, 15.0);
    const Extents stored{0.0, 0.0, GEO_NULL, 200.0, 100.0, 200.0};
    expect_extents(array, stored);
    CGeoPoint centre;
    array.Centroid(centre);
    // Plan from all four points, elevation from the two with elevations (5 .. 15), not from the
    // stored upper elevation extent (200, an easting).
    EXPECT_NEAR(centre.Northing(), 50.0, kTol);
    EXPECT_NEAR(centre.Easting(), 100.0, kTol);
    EXPECT_NEAR(centre.Elevation(), 10.0, kTol);
    expect_extents(array, stored);
}

TEST(PointArrayCentroid, PlanOnlyPointsHaveNoCentroid) {
    CGeoPointArray array;
    add(array, 0.0, 0.0, GEO_NULL);
    add(array, 10.0, 20.0, GEO_NULL);
    CGeoPoint centre(geo_nee{1.0, 2.0, 3.0});
    array.Centroid(centre);
    EXPECT_EQ(centre.Flags(), CGeoPoint::PT_GRID);
    EXPECT_EQ(centre.Northing(), GEO_NULL);
    EXPECT_EQ(centre.Easting(), GEO_NULL);
    EXPECT_EQ(centre.Elevation(), GEO_NULL);
}

TEST(PointArrayCentroid, EmptySetHasNoCentroid) {
    CGeoPointArray array;
    CGeoPoint centre;
    centre.SetStation(CGeoPoint(geo_nee{1.0, 2.0, 3.0}), 1.5);
    array.Centroid(centre);
    EXPECT_EQ(centre.Flags(), CGeoPoint::PT_GRID);
    EXPECT_EQ(centre.Northing(), GEO_NULL);
    EXPECT_EQ(centre.Easting(), GEO_NULL);
    EXPECT_EQ(centre.Elevation(), GEO_NULL);
}

TEST(PointArrayCentroid, PointsWithoutPlanPositionAreLeftOut) {
    CGeoPointArray array;
    add(array, GEO_NULL, 500.0, 500.0); // no north: neither 2D nor 3D
    add(array, 2.0, 4.0, 6.0);
    add(array, 4.0, 8.0, 10.0);
    CGeoPoint centre;
    array.Centroid(centre);
    EXPECT_NEAR(centre.Northing(), 3.0, kTol);
    EXPECT_NEAR(centre.Easting(), 6.0, kTol);
    EXPECT_NEAR(centre.Elevation(), 8.0, kTol);
}

TEST(PointArrayCentroid, SinglePointIsItsOwnCentroid) {
    CGeoPointArray array;
    add(array, -7.25, 3.5, 0.0);
    CGeoPoint centre;
    array.Centroid(centre);
    EXPECT_EQ(centre.Northing(), -7.25);
    EXPECT_EQ(centre.Easting(), 3.5);
    EXPECT_EQ(centre.Elevation(), 0.0);
}

// ---------------------------------------------------------------------------------------------
// Growable array: growth policy

TEST(GrowableArrayGrowth, FirstAddAllocatesExactlyOneSlot) {
    qv5::GrowableArray<int> array;
    EXPECT_EQ(array.GetCapacity(), 0);
    EXPECT_EQ(array.GetGrowBy(), 0);
    EXPECT_TRUE(array.IsEmpty());
    EXPECT_EQ(array.Add(7), 0);
    EXPECT_EQ(array.GetCapacity(), 1);
    EXPECT_EQ(array.GetSize(), 1);
    EXPECT_EQ(array.GetUpperBound(), 0);
}

TEST(GrowableArrayGrowth, AutomaticStepIsAnEighthOfTheCountButAtLeastFour) {
    // Capacity after each Add, by hand from: new capacity = max(size, capacity + step),
    // step = clamp(count / 8, 4, 1024) with the count before growing.
    // 1 -> 5 (step 4), 9, 13, 17, 21, 25, 29, 33, 37 (count 33: 4), 41 (count 37: 4),
    // 46 (count 41: 5), 51 (46: 5), 57 (51: 6), 64 (57: 7), 72 (64: 8).
    const std::vector<int> expected{1, 5, 9, 13, 17, 21, 25, 29, 33, 37, 41, 46, 51, 57, 64, 72};
    qv5::GrowableArray<int> array;
    std::vector<int> seen;
    for (int i = 0; i < 72; ++i) {
        ASSERT_EQ(array.Add(i), i);
        if (seen.empty() || seen.back() != array.GetCapacity()) {
            seen.push_back(array.GetCapacity());
        }
    }
    EXPECT_EQ(seen, expected);
    for (int i = 0; i < 72; ++i) {
        EXPECT_EQ(array[i], i);
    }
}

TEST(GrowableArrayGrowth, FirstSetSizeAllocatesExactlyWhatIsAsked) {
    qv5::GrowableArray<int> array;
    array.SetSize(100);
    EXPECT_EQ(array.GetSize(), 100);
    EXPECT_EQ(array.GetCapacity(), 100);
    EXPECT_EQ(array[99], 0); // new slots are default-constructed (value-initialised)
    array.Add(1);
    EXPECT_EQ(array.GetCapacity(), 112); // step 100 / 8 = 12
}

TEST(GrowableArrayGrowth, AutomaticStepIsCappedAt1024) {
    qv5::GrowableArray<int> array;
    array.SetSize(10000);
    ASSERT_EQ(array.GetCapacity(), 10000);
    array.Add(1);
    EXPECT_EQ(array.GetCapacity(), 11024); // 10000 / 8 = 1250, capped
    EXPECT_EQ(array.GetSize(), 10001);
    EXPECT_EQ(array[10000], 1);
}

TEST(GrowableArrayGrowth, RequestBeyondCapacityPlusStepIsAllocatedExactly) {
    qv5::GrowableArray<int> array;
    array.Add(1);
    array.SetSize(50);
    EXPECT_EQ(array.GetCapacity(), 50); // max(50, 1 + 4)
    EXPECT_EQ(array[0], 1);
    EXPECT_EQ(array[49], 0);
}

TEST(GrowableArrayGrowth, ExplicitGrowStepReplacesTheAutomaticOne) {
    qv5::GrowableArray<int> array;
    array.SetSize(1, 10);
    EXPECT_EQ(array.GetGrowBy(), 10);
    EXPECT_EQ(array.GetCapacity(), 1); // the first allocation is still exact
    array.Add(2);
    EXPECT_EQ(array.GetCapacity(), 11);
    array.SetSize(12);
    EXPECT_EQ(array.GetCapacity(), 21);
    array.SetSize(100);
    EXPECT_EQ(array.GetCapacity(), 100);
    array.SetSize(101, 0); // back to automatic: the count before growing is 100, 100 / 8 = 12
    EXPECT_EQ(array.GetGrowBy(), 0);
    EXPECT_EQ(array.GetCapacity(), 112);
}

TEST(GrowableArrayGrowth, ShrinkingKeepsTheBlock) {
    qv5::GrowableArray<std::string> array;
    for (const char* s : {"a", "b", "c", "d", "e"}) {
        array.Add(s);
    }
    ASSERT_EQ(array.GetCapacity(), 5);
    array.SetSize(2);
    EXPECT_EQ(array.GetSize(), 2);
    EXPECT_EQ(array.GetCapacity(), 5);
    EXPECT_EQ(array[1], "b");
    // Growing back within the block gives fresh default elements, not the old ones.
    array.SetSize(4);
    EXPECT_EQ(array.GetCapacity(), 5);
    EXPECT_EQ(array[2], "");
    EXPECT_EQ(array[3], "");
}

TEST(GrowableArrayGrowth, SizeZeroFreesTheBlock) {
    qv5::GrowableArray<int> array;
    array.SetSize(20);
    array.SetSize(0);
    EXPECT_EQ(array.GetSize(), 0);
    EXPECT_EQ(array.GetCapacity(), 0);
    EXPECT_EQ(array.GetData(), nullptr);
    array.Add(3); // allocates afresh, exactly
    EXPECT_EQ(array.GetCapacity(), 1);
}

TEST(GrowableArrayGrowth, NegativeSizeIsIgnored) {
    qv5::GrowableArray<int> array;
    array.Add(4);
    array.Add(5);
    array.SetSize(-3);
    EXPECT_EQ(array.GetSize(), 2);
    EXPECT_EQ(array.GetCapacity(), 5);
    EXPECT_EQ(array[0], 4);
    EXPECT_EQ(array[1], 5);
}

TEST(GrowableArrayGrowth, AddingOneOfItsOwnElementsWhileGrowingCopiesIt) {
    // Long strings live on the heap: a copy from the freed block would be caught by the
    // sanitizers and by the comparison.
    const std::string first(100, 'x');
    qv5::GrowableArray<std::string> array;
    array.Add(first);
    ASSERT_EQ(array.GetCapacity(), 1);
    array.Add(array[0]); // reallocates while its argument lives in the old block
    ASSERT_EQ(array.GetSize(), 2);
    EXPECT_EQ(array[0], first);
    EXPECT_EQ(array[1], first);
    for (int i = 0; i < 3; ++i) {
        array.Add(std::string(50, static_cast<char>('a' + i)));
    }
    ASSERT_EQ(array.GetSize(), array.GetCapacity()); // 5 of 5
    array.Add(array[4]);
    EXPECT_EQ(array[5], std::string(50, 'c'));
}

TEST(GrowableArrayGrowth, PointSetAddOfItsOwnElementWhileGrowing) {
    CGeoPointArray array;
    add(array, 1.0, 2.0, 3.0);
    ASSERT_EQ(array.GetCapacity(), 1);
    EXPECT_EQ(array.Add(array.ElementAt(0)), 1);
    ASSERT_EQ(array.GetSize(), 2);
    EXPECT_EQ(array[1].Northing(), 1.0);
    EXPECT_EQ(array[1].Easting(), 2.0);
    EXPECT_EQ(array[1].Elevation(), 3.0);
}

// ---------------------------------------------------------------------------------------------
// Growable array: element access

TEST(GrowableArrayAccess, OutOfRangeReadsGiveADefaultElement) {
    qv5::GrowableArray<int> array;
    EXPECT_EQ(array.GetAt(0), 0);
    array.Add(9);
    EXPECT_EQ(array.GetAt(-1), 0);
    EXPECT_EQ(array.GetAt(1), 0);
    EXPECT_EQ(array.ElementAt(5), 0);
    EXPECT_EQ(array[1000], 0);
    const qv5::GrowableArray<int>& view = array;
    EXPECT_EQ(view[-7], 0);
    EXPECT_EQ(array.GetSize(), 1);
}

TEST(GrowableArrayAccess, WritesOutOfRangeDoNotStick) {
    qv5::GrowableArray<int> array;
    array.Add(9);
    array.ElementAt(3) = 42;
    array[-1] = 43;
    array.SetAt(2, 44);
    EXPECT_EQ(array.GetAt(3), 0);
    EXPECT_EQ(array[-1], 0);
    EXPECT_EQ(array.GetSize(), 1);
    EXPECT_EQ(array[0], 9);
}

TEST(GrowableArrayAccess, OutOfRangePointIsADefaultPoint) {
    CGeoPointArray array;
    add(array, 1.0, 2.0, 3.0);
    array.ElementAt(4).SetGrid(5.0, 6.0, 7.0);
    CGeoPoint& spare = array[4];
    EXPECT_EQ(spare.Flags(), 0u);
    EXPECT_EQ(spare.HI(), GEO_NULL);
    EXPECT_EQ(array.GetAt(-1).Flags(), 0u);
    EXPECT_EQ(array.GetSize(), 1);
}

TEST(GrowableArrayAccess, SetAtReplacesAnElement) {
    qv5::GrowableArray<std::string> array;
    array.Add("one");
    array.Add("two");
    array.SetAt(1, "zwei");
    EXPECT_EQ(array.GetAt(1), "zwei");
    EXPECT_EQ(array.GetData()[0], "one");
}

TEST(GrowableArrayAccess, RemoveAtMovesTheTailDown) {
    qv5::GrowableArray<std::string> array;
    for (const char* s : {"a", "b", "c", "d", "e"}) {
        array.Add(s);
    }
    array.RemoveAt(1, 2);
    ASSERT_EQ(array.GetSize(), 3);
    EXPECT_EQ(array[0], "a");
    EXPECT_EQ(array[1], "d");
    EXPECT_EQ(array[2], "e");
    EXPECT_EQ(array.GetCapacity(), 5);
    array.RemoveAt(3); // one past the end
    array.RemoveAt(2, 2);
    EXPECT_EQ(array.GetSize(), 3);
}

TEST(GrowableArrayAccess, CopiesAreDeep) {
    qv5::GrowableArray<std::string> array;
    array.Add("a");
    array.Add("b");
    qv5::GrowableArray<std::string> copy(array);
    qv5::GrowableArray<std::string> assigned;
    assigned.Add("z");
    assigned.Add("y");
    assigned.Add("x");
    assigned = array;
    copy[0] = "changed";
    assigned[1] = "changed";
    EXPECT_EQ(array[0], "a");
    EXPECT_EQ(array[1], "b");
    EXPECT_EQ(copy[1], "b");
    EXPECT_EQ(assigned.GetSize(), 2);
    EXPECT_EQ(assigned[0], "a");
}

TEST(GrowableArrayAccess, RemoveAllEmptiesAndFrees) {
    qv5::GrowableArray<int> array;
    array.Add(1);
    array.Add(2);
    array.RemoveAll();
    EXPECT_TRUE(array.IsEmpty());
    EXPECT_EQ(array.GetCapacity(), 0);
    EXPECT_EQ(array.GetUpperBound(), -1);
}

} // namespace
