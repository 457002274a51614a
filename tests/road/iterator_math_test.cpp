// The iterator's decisions on plain values: template choice, the element walk, the snapping of
// stations, the closest-offset candidates, surface slopes and the order of section breaks.
#include "road/iterator_math.h"

#include "qv5/georoad.h"

#include "support/test_numbers.h"

#include <gtest/gtest.h>

#include <cmath>
#include <vector>

using namespace qv5::detail;
using qv5::test::is_geo_null;

namespace {

ElementDeltas deltas(double station, double length) {
    return ElementDeltas{station, 1.0, 0.0, 2e100, length, true};
}

SnapInput straight_input(double station, double offset) {
    SnapInput in{};
    in.station = station;
    in.offset = offset;
    in.tolerance = 0.05;
    in.road_start = 0.0;
    in.road_end = 300.0;
    in.interval = 20.0;
    in.element_start = 100.0;
    in.next_start = 200.0;
    in.last_element = false;
    in.before_k = ElementKind::Line;
    in.kind_k = ElementKind::Arc;
    in.after_k = ElementKind::Spiral;
    return in;
}

} // namespace

TEST(TemplateChoiceMath, PreviousNextAndRatio) {
    const ApplicationView apps[] = {{0, 100.0, geodef_BothSides}, {1, 200.0, geodef_BothSides}};
    TemplateChoice c = choose_templates(apps, 2, geodef_RightSide, 150.0);
    EXPECT_EQ(c.previous, 0);
    EXPECT_EQ(c.next, 1);
    EXPECT_EQ(c.ratio, 0.5);
    c = choose_templates(apps, 2, geodef_RightSide, 50.0);
    EXPECT_EQ(c.previous, -1);
    EXPECT_EQ(c.first, 0);
    c = choose_templates(apps, 2, geodef_LeftSide, 250.0);
    EXPECT_EQ(c.previous, 1);
    EXPECT_EQ(c.next, -1);
    c = choose_templates(apps, 2, geodef_LeftSide, 100.0005);
    EXPECT_EQ(c.ratio, 0.0);
    c = choose_templates(apps, 2, geodef_LeftSide, 100.001);
    EXPECT_GT(c.ratio, 0.0);
}

TEST(TemplateChoiceMath, TiesGoToTheEarlierApplicationAndSidesFilter) {
    const ApplicationView apps[] = {{0, 300.0, geodef_LeftSide},
                                    {1, 100.0, geodef_RightSide},
                                    {2, 100.0, geodef_BothSides},
                                    {3, 200.0, geodef_BothSides},
                                    {4, 200.0, geodef_RightSide}};
    TemplateChoice c = choose_templates(apps, 5, geodef_RightSide, 150.0);
    EXPECT_EQ(c.previous, 1);
    EXPECT_EQ(c.next, 3);
    EXPECT_EQ(c.first, 1);
    c = choose_templates(apps, 5, geodef_LeftSide, 350.0);
    EXPECT_EQ(c.previous, 0);
    EXPECT_EQ(c.first, 2);
    EXPECT_EQ(c.next, -1);
    c = choose_templates(apps, 0, geodef_LeftSide, 350.0);
    EXPECT_EQ(c.previous, -1);
    EXPECT_EQ(c.first, -1);
}

TEST(ElementWalkMath, MovesForwardUntilTheStationFits) {
    const InvertElement invert = [](int k) { return deltas(250.0 - 100.0 * k, 100.0); };
    const WalkResult r = walk_to_element(0, 5, invert);
    EXPECT_EQ(r.element, 2);
    EXPECT_EQ(r.deltas.station, 50.0);
}

TEST(ElementWalkMath, PointInKinkWedgeIsPinnedWithoutOscillating) {
    // Past the end of element 0 and before the start of element 1: the walk goes forward once
    // and pins to the joint instead of going back.
    int calls = 0;
    const InvertElement invert = [&](int k) {
        ++calls;
        return k == 0 ? deltas(105.0, 100.0) : deltas(-5.0, 100.0);
    };
    WalkResult r = walk_to_element(0, 2, invert);
    EXPECT_EQ(r.element, 1);
    EXPECT_EQ(r.deltas.station, 0.0);
    EXPECT_EQ(r.deltas.offset, 1.0);
    EXPECT_EQ(calls, 2);
    // Started from the later element it goes back once and pins to the earlier one's end.
    r = walk_to_element(1, 2, invert);
    EXPECT_EQ(r.element, 0);
    EXPECT_EQ(r.deltas.station, 100.0);
}

TEST(ElementWalkMath, EndsExtrapolateAndNonElementsStopTheWalk) {
    InvertElement invert = [](int) { return deltas(-20.0, 100.0); };
    EXPECT_EQ(walk_to_element(2, 3, invert).element, 0);
    EXPECT_EQ(walk_to_element(2, 3, invert).deltas.station, -20.0);
    invert = [](int) { return deltas(150.0, 100.0); };
    EXPECT_EQ(walk_to_element(0, 3, invert).element, 2);
    EXPECT_EQ(walk_to_element(0, 3, invert).deltas.station, 150.0);
    invert = [](int k) {
        ElementDeltas d = deltas(150.0, 100.0);
        d.inverted = k != 1;
        return d;
    };
    EXPECT_EQ(walk_to_element(0, 3, invert).element, 1);
}

TEST(SnapMath, StartEvenStationsAndTransitions) {
    SnapResult r = snap_station(straight_input(0.01, 0.0));
    EXPECT_EQ(r.result, 1);
    EXPECT_EQ(r.station, 0.0);
    EXPECT_EQ(r.type, georoad_TransNone);
    r = snap_station(straight_input(139.97, 0.0));
    EXPECT_EQ(r.result, 1);
    EXPECT_EQ(r.station, 140.0);
    EXPECT_EQ(r.type, georoad_TransStationInterval);
    r = snap_station(straight_input(199.98, 0.0)); // even station 200 and transition 200
    EXPECT_EQ(r.type, georoad_TransArcSpiral);
    r = snap_station(straight_input(100.03, 0.0));
    EXPECT_EQ(r.station, 100.0);
    EXPECT_EQ(r.type, georoad_TransLineArc);
    r = snap_station(straight_input(150.0, 0.0));
    EXPECT_EQ(r.result, 0);
    EXPECT_FALSE(r.station_written);
    r = snap_station(straight_input(150.0, 0.06));
    EXPECT_EQ(r.result, 0);
}

TEST(SnapMath, ShortElementSnapsToItsStart) {
    SnapInput in = straight_input(100.03, 0.0);
    in.next_start = 100.06; // an element shorter than twice the tolerance
    const SnapResult r = snap_station(in);
    EXPECT_EQ(r.station, 100.0);
    EXPECT_EQ(r.type, georoad_TransLineArc);
}

TEST(SnapMath, TransitionTable) {
    EXPECT_EQ(transition_type(ElementKind::Line, ElementKind::Line), -1);
    EXPECT_EQ(transition_type(ElementKind::Line, ElementKind::Arc), georoad_TransLineArc);
    EXPECT_EQ(transition_type(ElementKind::Line, ElementKind::Spiral), georoad_TransLineSpiral);
    EXPECT_EQ(transition_type(ElementKind::Arc, ElementKind::Line), georoad_TransArcLine);
    EXPECT_EQ(transition_type(ElementKind::Arc, ElementKind::Arc), georoad_TransArcArc);
    EXPECT_EQ(transition_type(ElementKind::Arc, ElementKind::Spiral), georoad_TransArcSpiral);
    EXPECT_EQ(transition_type(ElementKind::Spiral, ElementKind::Line), georoad_TransSpiralLine);
    EXPECT_EQ(transition_type(ElementKind::Spiral, ElementKind::Arc), georoad_TransSpiralArc);
    EXPECT_EQ(transition_type(ElementKind::Spiral, ElementKind::Spiral), georoad_TransSpiralSpiral);
    EXPECT_EQ(transition_type(ElementKind::Other, ElementKind::Arc), -1);
}

TEST(ClosestOffsetMath, EqualOffsetsKeepTheEarlierElement) {
    ClosestOffset best;
    const auto never = [](double, double) { return 0; };
    offer_candidate(best, 0, false, {true, 10.0, 3.0, 50.0, 0.0, false, GEO_NULL}, never);
    offer_candidate(best, 1, true, {true, 5.0, -3.0, 50.0, 50.0, false, GEO_NULL}, never);
    EXPECT_EQ(best.element, 0);
    EXPECT_EQ(best.station, 10.0);
    offer_candidate(best, 1, true, {true, 5.0, -2.0, 50.0, 50.0, false, GEO_NULL}, never);
    EXPECT_EQ(best.element, 1);
    EXPECT_EQ(best.offset, -2.0);
}

TEST(ClosestOffsetMath, BeforeStartOnlyForFirstElementAndAlwaysTaken) {
    ClosestOffset best;
    best.offset = 0.5;
    const auto never = [](double, double) { return 0; };
    offer_candidate(best, 1, false, {true, -4.0, 0.1, 50.0, 50.0, false, GEO_NULL}, never);
    EXPECT_EQ(best.element, -1);
    offer_candidate(best, 0, false, {true, -4.0, -9.0, 50.0, 0.0, false, GEO_NULL}, never);
    EXPECT_EQ(best.element, 0);
    EXPECT_EQ(best.offset, -9.0);
    EXPECT_EQ(best.station, -4.0);
}

TEST(ClosestOffsetMath, FailedInversionIsNoCandidate) {
    ClosestOffset best;
    const auto never = [](double, double) { return 0; };
    offer_candidate(best, 0, true, {true, GEO_NULL, GEO_NULL, 50.0, 0.0, false, GEO_NULL}, never);
    EXPECT_EQ(best.element, -1);
    EXPECT_TRUE(is_geo_null(best.station));
}

TEST(SurfaceMath, PlaneSlopeInAnyDirection) {
    // The plane z = 0.1 north + 0.2 east: normal (-0.1, -0.2, 1).
    const double n[3] = {-0.1, -0.2, 1.0};
    EXPECT_NEAR(plane_slope(n, 0.0), std::atan(0.1), 1e-15);
    EXPECT_NEAR(plane_slope(n, qv5::test::kHalfPi), std::atan(0.2), 1e-15);
    const double vertical[3] = {1.0, 0.0, 0.0};
    EXPECT_TRUE(is_geo_null(plane_slope(vertical, 0.0)));
}

TEST(SectionMath, BreaksInDistanceOrderOnceEachWithinTheLine) {
    std::vector<BreakPoint> points = {{7.0, 0.0, 1, {0}},  {2.0, 0.0, 2, {0}},  {7.0, 0.0, 3, {0}},
                                      {12.5, 0.0, 4, {0}}, {-1.0, 0.0, 5, {0}}, {4.0, 0.0, 6, {0}}};
    const std::vector<std::size_t> order = emission_order(points, 10.0);
    EXPECT_EQ(order, (std::vector<std::size_t>{4, 1, 5, 0}));
}

TEST(ProfileMath, GradeBreakBranchBeforeItsPviUsesGradeIn) {
    // A record whose curve starts before its PVI although it is a grade break: the grade-in
    // formula, measured back from the PVI, is used as it stands.
    const ProfileRecordView r[] = {with_tangents({0, 0.0, 10.0, -5.0, 0.0, 10.0, 0.1, 0.2, GEO_NULL,
                                                  GEO_NULL, GEO_NULL, GEO_NULL, GEO_NULL})};
    const ProfileAt at = profile_at(r, 1, -2.0);
    EXPECT_NEAR(at.elevation, 10.0 + 2.0 * std::tan(0.1), 1e-12);
    EXPECT_EQ(at.grade, 0.1);
}
