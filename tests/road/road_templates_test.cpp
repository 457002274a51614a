// The road's template library and the applications of its templates along the road.
#include "qv5/georoad.h"
#include "qv5/geotemplate.h"

#include "road_test_support.h"

#include <gtest/gtest.h>

using qv5::test::OpenRoad;

namespace {

CGeoTemplate template_named(const char* name, int fixed_points) {
    CGeoTemplate t;
    t.SetName(CString(name));
    geotemp_GradeWidthData lane{-0.02, 3.5};
    t.AddElement(geotemp_GradeWidth, &lane);
    for (int i = 0; i < fixed_points; ++i) {
        geotemp_FixedPointData curb{};
        curb.H = 3.5 + i;
        curb.V = 0.15;
        t.AddElement(geotemp_FixedPoint, &curb);
    }
    return t;
}

std::string name_of_application(CGeoRoad& road, int n) {
    CString name;
    double station = 0.0;
    geodef_RoadSide side = geodef_BothSides;
    if (road.GetNthTemplateApplication(n, name, station, side) == 0) {
        return "<none>";
    }
    return name.ToUtf8();
}

} // namespace

TEST(RoadTemplates, AddedTemplatesAreCopiesInOrderOfAddition) {
    CGeoRoad road;
    CGeoTemplate urban = template_named("Urban", 2);
    CGeoTemplate rural = template_named("Rural", 0);
    ASSERT_EQ(road.AddTemplate(&urban), 1);
    ASSERT_EQ(road.AddTemplate(&rural), 1);
    EXPECT_EQ(road.IsModified(), 1);
    urban.SetName(CString("Changed"));
    EXPECT_EQ(road.NumberTemplates(), 2);
    EXPECT_EQ(road.TemplateIndex(CString("Urban")), 0);
    EXPECT_EQ(road.TemplateIndex(CString("rural")), 1);
    EXPECT_EQ(road.TemplateIndex(CString("Changed")), -1);
    CGeoTemplate out;
    road.SetModifiedFlag(0);
    ASSERT_EQ(road.GetNthTemplate(0, &out), 1);
    EXPECT_EQ(out.Name().ToUtf8(), "Urban");
    EXPECT_EQ(out.NumberElements(), 3);
    EXPECT_EQ(road.IsModified(), 0);
    EXPECT_EQ(road.GetNthTemplate(2, &out), 0);
    EXPECT_EQ(road.GetNthTemplate(-1, &out), 0);
    EXPECT_EQ(road.AddTemplate(nullptr), 0);
}

TEST(RoadTemplates, ApplicationNameIsMatchedIgnoringCase) {
    CGeoRoad road;
    CGeoTemplate urban = template_named("Urban Two Lane", 0);
    road.AddTemplate(&urban);
    ASSERT_EQ(road.AddTemplateApplication(CString("URBAN two lane"), 0.0, geodef_BothSides), 1);
    EXPECT_EQ(name_of_application(road, 0), "Urban Two Lane");
    EXPECT_EQ(road.AddTemplateApplication(CString("Rural"), 0.0, geodef_BothSides), 0);
    EXPECT_EQ(road.NumberTemplateApplications(), 1);
}

TEST(RoadTemplates, DuplicateNamesResolveToTheFirst) {
    CGeoRoad road;
    CGeoTemplate first = template_named("Lane", 1);
    CGeoTemplate second = template_named("lane", 3);
    road.AddTemplate(&first);
    road.AddTemplate(&second);
    EXPECT_EQ(road.TemplateIndex(CString("LANE")), 0);
    road.AddTemplateApplication(CString("lane"), 10.0, geodef_LeftSide);
    EXPECT_EQ(road.NumberCurbFeatures(), 1);
}

TEST(RoadTemplates, DeletingTemplateZeroShiftsWhatApplicationsReferTo) {
    CGeoRoad road;
    CGeoTemplate a = template_named("A", 0);
    CGeoTemplate b = template_named("B", 0);
    CGeoTemplate c = template_named("C", 0);
    road.AddTemplate(&a);
    road.AddTemplate(&b);
    road.AddTemplate(&c);
    road.AddTemplateApplication(CString("A"), 0.0, geodef_BothSides);
    road.AddTemplateApplication(CString("B"), 100.0, geodef_BothSides);
    road.AddTemplateApplication(CString("C"), 200.0, geodef_BothSides);
    ASSERT_EQ(road.DeleteNthTemplate(0), 1);
    EXPECT_EQ(road.NumberTemplates(), 2);
    EXPECT_EQ(road.NumberTemplateApplications(), 3);
    EXPECT_EQ(name_of_application(road, 0), "B");
    EXPECT_EQ(name_of_application(road, 1), "C");
    EXPECT_EQ(name_of_application(road, 2), "<none>");
    EXPECT_EQ(road.DeleteNthTemplate(2), 0);
    ASSERT_EQ(road.DeleteNthTemplate(1), 1);
    ASSERT_EQ(road.DeleteNthTemplate(0), 1);
    EXPECT_EQ(road.NumberTemplates(), 0);
    EXPECT_EQ(name_of_application(road, 0), "<none>");
}

TEST(RoadTemplates, ApplicationsKeepTheOrderGiven) {
    CGeoRoad road;
    CGeoTemplate a = template_named("A", 0);
    road.AddTemplate(&a);
    road.AddTemplateApplication(CString("A"), 200.0, geodef_RightSide);
    road.AddTemplateApplication(CString("A"), 100.0, geodef_LeftSide);
    CString name;
    double station = 0.0;
    geodef_RoadSide side = geodef_BothSides;
    ASSERT_EQ(road.GetNthTemplateApplication(0, name, station, side), 1);
    EXPECT_EQ(station, 200.0);
    EXPECT_EQ(side, geodef_RightSide);
    ASSERT_EQ(road.GetNthTemplateApplication(1, name, station, side), 1);
    EXPECT_EQ(station, 100.0);
    EXPECT_EQ(side, geodef_LeftSide);
    EXPECT_EQ(road.GetNthTemplateApplication(2, name, station, side), 0);
}

TEST(RoadTemplates, CurbFeaturesOnARoadWithoutApplicationsAreNone) {
    CGeoRoad road;
    CGeoTemplate a = template_named("A", 2);
    road.AddTemplate(&a);
    EXPECT_EQ(road.NumberCurbFeatures(), 0);
    EXPECT_EQ(road.IsAUsefulSurface(), 0);
    road.AddTemplateApplication(CString("A"), 0.0, geodef_BothSides);
    EXPECT_EQ(road.NumberCurbFeatures(), 2);
    EXPECT_EQ(road.IsAUsefulSurface(), 1);
}

TEST(RoadTemplates, OnlyTheFirstApplicationCountsCurbFeatures) {
    CGeoRoad road;
    CGeoTemplate none = template_named("None", 0);
    CGeoTemplate three = template_named("Three", 3);
    road.AddTemplate(&none);
    road.AddTemplate(&three);
    road.AddTemplateApplication(CString("None"), 0.0, geodef_BothSides);
    road.AddTemplateApplication(CString("Three"), 100.0, geodef_BothSides);
    EXPECT_EQ(road.NumberCurbFeatures(), 0);
}

TEST(RoadTemplates, SetNthTemplateChangesWhatItsApplicationsUse) {
    CGeoRoad road;
    CGeoTemplate a = template_named("A", 0);
    CGeoTemplate z = template_named("Z", 2);
    road.AddTemplate(&a);
    road.AddTemplateApplication(CString("A"), 0.0, geodef_BothSides);
    ASSERT_EQ(road.SetNthTemplate(0, &z), 1);
    EXPECT_EQ(name_of_application(road, 0), "Z");
    EXPECT_EQ(road.NumberCurbFeatures(), 2);
    EXPECT_EQ(road.SetNthTemplate(1, &z), 0);
}

TEST(RoadTemplates, SetAndDeleteApplications) {
    CGeoRoad road;
    CGeoTemplate a = template_named("A", 0);
    CGeoTemplate b = template_named("B", 0);
    road.AddTemplate(&a);
    road.AddTemplate(&b);
    road.AddTemplateApplication(CString("A"), 0.0, geodef_BothSides);
    road.AddTemplateApplication(CString("A"), 50.0, geodef_BothSides);
    road.SetModifiedFlag(0);
    EXPECT_EQ(road.SetNthTemplateApplication(0, CString("nope"), 5.0, geodef_LeftSide), 0);
    EXPECT_EQ(road.SetNthTemplateApplication(2, CString("B"), 5.0, geodef_LeftSide), 0);
    EXPECT_EQ(road.IsModified(), 0);
    ASSERT_EQ(road.SetNthTemplateApplication(0, CString("b"), 5.0, geodef_LeftSide), 1);
    EXPECT_EQ(road.IsModified(), 1);
    EXPECT_EQ(name_of_application(road, 0), "B");
    ASSERT_EQ(road.DeleteNthTemplateApplication(0), 1);
    EXPECT_EQ(road.NumberTemplateApplications(), 1);
    CString name;
    double station = 0.0;
    geodef_RoadSide side = geodef_BothSides;
    road.GetNthTemplateApplication(0, name, station, side);
    EXPECT_EQ(station, 50.0);
    EXPECT_EQ(road.DeleteNthTemplateApplication(1), 0);
    ASSERT_EQ(road.DeleteNthTemplateApplication(0), 1);
    EXPECT_EQ(road.IsAUsefulSurface(), 0);
}

TEST(RoadTemplates, AssignmentResolvesApplicationsAfresh) {
    OpenRoad road;
    CGeoTemplate a = template_named("A", 0);
    CGeoTemplate b = template_named("B", 1);
    road.AddTemplate(&a);
    road.AddTemplate(&b);
    road.AddTemplateApplication(CString("B"), 0.0, geodef_LeftSide);
    road.AddTemplateApplication(CString("A"), 10.0, geodef_RightSide);
    OpenRoad copy;
    copy = road;
    EXPECT_NE(copy.TemplateArray(), road.TemplateArray());
    EXPECT_EQ(copy.NumberTemplates(), 2);
    EXPECT_EQ(name_of_application(copy, 0), "B");
    EXPECT_EQ(name_of_application(copy, 1), "A");
    EXPECT_EQ(copy.NumberCurbFeatures(), 1);
    OpenRoad shared(road);
    EXPECT_EQ(shared.TemplateArray(), road.TemplateArray());
    EXPECT_EQ(shared.ApplicationRecords(), road.ApplicationRecords());
}

TEST(RoadTemplates, ResetReleasesTheLibraryAndApplications) {
    CGeoRoad road;
    CGeoTemplate a = template_named("A", 0);
    road.AddTemplate(&a);
    road.AddTemplateApplication(CString("A"), 0.0, geodef_BothSides);
    road.Reset();
    EXPECT_EQ(road.NumberTemplates(), 0);
    EXPECT_EQ(road.NumberTemplateApplications(), 0);
    EXPECT_EQ(road.TemplateIndex(CString("A")), -1);
}
