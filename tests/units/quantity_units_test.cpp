#include "qv5/units.h"
#include "units_support.h"

#include <gtest/gtest.h>

#include <cmath>

using qv5::test::units_with;

namespace {

constexpr double kHalfPi = 1.5707963267948966;

TEST(QuantityUnitsDefaults, AFreshObjectUsesSurveyFeetAndTheirFriends) {
    const CQuantityUnits units{CString()};
    EXPECT_EQ(units.HorizontalDistance(), units_USSurveyFeet);
    EXPECT_EQ(units.VerticalDistance(), units_USSurveyFeet);
    EXPECT_EQ(units.Angles(), units_AngleDMS);
    EXPECT_EQ(units.Bearings(), units_BearingDMS);
    EXPECT_EQ(units.Length(), units_LengthFeet);
    EXPECT_EQ(units.VerticalCircle(), units_ZeroAtZenith);
    EXPECT_EQ(units.Grade(), units_GradePercent);
    EXPECT_EQ(units.Stationing(), units_Station1Plus00);
    EXPECT_EQ(units.Area(), units_SquareFeet);
    EXPECT_EQ(units.Volume(), units_CubicYards);
    EXPECT_EQ(units.Coords(), units_NorthEastElev);
    EXPECT_EQ(units.PopUpsEnabled(), 1);
}

TEST(QuantityUnitsDefaults, EnumeratorValuesAreTheRowIndexes) {
    EXPECT_EQ(units_InternationalFeet, 2);
    EXPECT_EQ(units_LengthCentimetres, 3);
    EXPECT_EQ(units_AngleGons, 1);
    EXPECT_EQ(units_BearingDecimalDegrees, 3);
    EXPECT_EQ(units_ZeroLevel, 1);
    EXPECT_EQ(units_GradeRiseRun, 2);
    EXPECT_EQ(units_Station10Plus0, 2);
    EXPECT_EQ(units_Hectares, 3);
    EXPECT_EQ(units_CubicYards, 1);
    EXPECT_EQ(units_XYZ, 2);
    const units_VerticalDistance vertical = units_Metres;
    EXPECT_EQ(vertical, 0);
}

TEST(QuantityUnitsSetters, StoreWhatTheyAreGivenUnchecked) {
    CQuantityUnits units{CString()};
    units.SetHorizontalDistance(7);
    units.SetVerticalDistance(-1);
    units.SetAngles(1);
    units.SetBearings(99);
    units.SetLength(3);
    units.SetGrade(2);
    units.SetStationing(0);
    units.SetArea(3);
    units.SetVolume(0);
    units.SetCoords(2);
    units.EnablePopUps(0);
    EXPECT_EQ(units.HorizontalDistance(), 7);
    EXPECT_EQ(units.VerticalDistance(), -1);
    EXPECT_EQ(units.Angles(), 1);
    EXPECT_EQ(units.Bearings(), 99);
    EXPECT_EQ(units.Length(), 3);
    EXPECT_EQ(units.Grade(), 2);
    EXPECT_EQ(units.Stationing(), 0);
    EXPECT_EQ(units.Area(), 3);
    EXPECT_EQ(units.Volume(), 0);
    EXPECT_EQ(units.Coords(), 2);
    EXPECT_EQ(units.PopUpsEnabled(), 0);
}

TEST(QuantityUnitsNames, EachRowHasItsStringId) {
    const CQuantityUnits units{CString()};
    const unsigned distance[] = {10002, 10001, 10049};
    const unsigned length[] = {10002, 10003, 10047, 10048};
    const unsigned angles[] = {10004, 10006};
    const unsigned bearings[] = {10056, 10058, 10057, 10142};
    const unsigned circle[] = {10008, 10009};
    const unsigned grade[] = {10050, 10051, 10141};
    const unsigned stationing[] = {10053, 10054, 10055};
    const unsigned area[] = {10100, 10101, 10102, 10103};
    const unsigned volume[] = {10094, 10095};
    const unsigned coords[] = {10106, 10107, 10108};
    for (int row = 0; row < 3; ++row) {
        EXPECT_EQ(units.HorizontalDistanceString(row), distance[row]);
        EXPECT_EQ(units.VerticalDistanceString(row), distance[row]);
        EXPECT_EQ(units.GradeString(row), grade[row]);
        EXPECT_EQ(units.StationingString(row), stationing[row]);
        EXPECT_EQ(units.CoordString(row), coords[row]);
    }
    for (int row = 0; row < 4; ++row) {
        EXPECT_EQ(units.LengthString(row), length[row]);
        EXPECT_EQ(units.BearingsString(row), bearings[row]);
        EXPECT_EQ(units.AreaString(row), area[row]);
    }
    for (int row = 0; row < 2; ++row) {
        EXPECT_EQ(units.AnglesString(row), angles[row]);
        EXPECT_EQ(units.VerticalCircleString(row), circle[row]);
        EXPECT_EQ(units.VolumeString(row), volume[row]);
    }
}

TEST(QuantityUnitsNames, TheRowNotTheChoiceDecides) {
    CQuantityUnits units{CString()};
    units.SetHorizontalDistance(units_Metres);
    EXPECT_EQ(units.HorizontalDistanceString(units_USSurveyFeet), 10001u);
}

TEST(QuantityUnitsNames, RowsOutsideTheTableGiveZero) {
    const CQuantityUnits units{CString()};
    EXPECT_EQ(units.HorizontalDistanceString(3), 0u);
    EXPECT_EQ(units.LengthString(-1), 0u);
    EXPECT_EQ(units.GradeString(3), 0u);
    EXPECT_EQ(units.StationingString(100), 0u);
    EXPECT_EQ(units.BearingsString(4), 0u);
    EXPECT_EQ(units.AreaString(4), 0u);
    EXPECT_EQ(units.VolumeString(2), 0u);
    EXPECT_EQ(units.CoordString(3), 0u);
    EXPECT_EQ(units.AnglesString(2), 0u);
    EXPECT_EQ(units.VerticalCircleString(2), 0u);
}

TEST(QuantityUnitsPrecision, DefaultDecimalsOfTheCurrentChoice) {
    CQuantityUnits units{CString()};
    const int distance[] = {3, 2, 2};
    for (int row = 0; row < 3; ++row) {
        units.SetHorizontalDistance(row);
        units.SetVerticalDistance(row);
        EXPECT_EQ(units.HDistPrecision(), distance[row]);
        EXPECT_EQ(units.VDistPrecision(), distance[row]);
    }
    const int length[] = {3, 2, 1, 1};
    for (int row = 0; row < 4; ++row) {
        units.SetLength(row);
        EXPECT_EQ(units.LengthPrecision(), length[row]);
    }
    units.SetHorizontalDistance(3);
    units.SetVerticalDistance(-2);
    units.SetLength(4);
    EXPECT_EQ(units.HDistPrecision(), 0);
    EXPECT_EQ(units.VDistPrecision(), 0);
    EXPECT_EQ(units.LengthPrecision(), 0);
}

TEST(QuantityUnitsConversion, OneMetreInSurveyFeet) {
    const CQuantityUnits units{CString()};
    EXPECT_EQ(units.MetresToHDistance(1.0), 3.2808333333333337);
    EXPECT_EQ(units.MetresToVDistance(1.0), 3.2808333333333337);
    EXPECT_EQ(units.HDistanceToMetres(100.0), 100.0 * 0.3048006096012192);
}

TEST(QuantityUnitsConversion, DistanceFactorsOfEveryRow) {
    CQuantityUnits units = units_with(units_InternationalFeet, units_LengthInches);
    EXPECT_EQ(units.MetresToHDistance(100.0), 100.0 / 0.3048);
    EXPECT_EQ(units.VDistanceToMetres(100.0), 100.0 * 0.3048);
    EXPECT_EQ(units.LengthToMetres(2.5), 2.5 * 0.0254000508001016);
    EXPECT_EQ(units.MetresToLength(2.5), 2.5 / 0.0254000508001016);
    units.SetLength(units_LengthCentimetres);
    EXPECT_EQ(units.MetresToLength(1.5), 150.0);
    units.SetHorizontalDistance(units_Metres);
    EXPECT_EQ(units.MetresToHDistance(12.345), 12.345);
}

TEST(QuantityUnitsConversion, HorizontalAndVerticalChoicesAreSeparate) {
    CQuantityUnits units{CString()};
    units.SetHorizontalDistance(units_Metres);
    EXPECT_EQ(units.MetresToHDistance(1.0), 1.0);
    EXPECT_EQ(units.MetresToVDistance(1.0), 3.2808333333333337);
}

TEST(QuantityUnitsConversion, AreaAndVolumeFactors) {
    CQuantityUnits units{CString()};
    // Square feet: the survey foot squared with pow; cubic yards: 27 survey cubic feet.
    EXPECT_EQ(units.AreaToSquareMetres(1.0), 0.09290341161327482);
    EXPECT_EQ(units.VolumeToCubicMetres(1.0), 0.7645594453314972);
    EXPECT_EQ(units.CubicMetresToVolume(0.7645594453314972), 1.0);
    units.SetArea(units_Acres);
    EXPECT_EQ(units.SquareMetresToArea(4046.8561188869207), 1.0);
    units.SetArea(units_Hectares);
    EXPECT_EQ(units.AreaToSquareMetres(2.5), 25000.0);
    units.SetArea(units_SquareMetres);
    units.SetVolume(units_CubicMetres);
    EXPECT_EQ(units.SquareMetresToArea(7.5), 7.5);
    EXPECT_EQ(units.CubicMetresToVolume(7.5), 7.5);
}

TEST(QuantityUnitsConversion, AnglesAndBearingsUseTheirTables) {
    CQuantityUnits units{CString()};
    EXPECT_EQ(units.AngleToRadians(180.0), 180.0 * 0.017453292519943295);
    EXPECT_EQ(units.RadiansToAngle(1.0), 1.0 / 0.017453292519943295);
    units.SetAngles(units_AngleGons);
    EXPECT_EQ(units.AngleToRadians(100.0), 100.0 * 0.015707963267948967);
    units.SetBearings(units_BearingQuadrant); // degrees here; the letters are the texts' business
    EXPECT_EQ(units.BearingToRadians(45.0), 45.0 * 0.017453292519943295);
    units.SetBearings(units_BearingGons);
    EXPECT_EQ(units.RadiansToBearing(1.0), 1.0 / 0.015707963267948967);
    units.SetBearings(units_BearingDecimalDegrees);
    EXPECT_EQ(units.RadiansToBearing(1.0), 57.29577951308232);
}

TEST(QuantityUnitsConversion, NullPassesThroughEveryConversion) {
    for (int grade = 0; grade < 3; ++grade) {
        CQuantityUnits units{CString()};
        units.SetGrade(grade);
        EXPECT_EQ(units.HDistanceToMetres(GEO_NULL), GEO_NULL);
        EXPECT_EQ(units.MetresToHDistance(GEO_NULL), GEO_NULL);
        EXPECT_EQ(units.VDistanceToMetres(GEO_NULL), GEO_NULL);
        EXPECT_EQ(units.MetresToVDistance(GEO_NULL), GEO_NULL);
        EXPECT_EQ(units.LengthToMetres(GEO_NULL), GEO_NULL);
        EXPECT_EQ(units.MetresToLength(GEO_NULL), GEO_NULL);
        EXPECT_EQ(units.AngleToRadians(GEO_NULL), GEO_NULL);
        EXPECT_EQ(units.RadiansToAngle(GEO_NULL), GEO_NULL);
        EXPECT_EQ(units.BearingToRadians(GEO_NULL), GEO_NULL);
        EXPECT_EQ(units.RadiansToBearing(GEO_NULL), GEO_NULL);
        EXPECT_EQ(units.AreaToSquareMetres(GEO_NULL), GEO_NULL);
        EXPECT_EQ(units.SquareMetresToArea(GEO_NULL), GEO_NULL);
        EXPECT_EQ(units.VolumeToCubicMetres(GEO_NULL), GEO_NULL);
        EXPECT_EQ(units.CubicMetresToVolume(GEO_NULL), GEO_NULL);
        EXPECT_EQ(units.GradeToRadians(GEO_NULL), GEO_NULL);
        EXPECT_EQ(units.RadiansToGrade(GEO_NULL), GEO_NULL);
    }
}

TEST(QuantityUnitsConversion, ChoiceOutsideItsTableGivesNull) {
    CQuantityUnits units{CString()};
    units.SetHorizontalDistance(3);
    units.SetLength(-1);
    units.SetBearings(4);
    units.SetArea(9);
    EXPECT_EQ(units.MetresToHDistance(1.0), GEO_NULL);
    EXPECT_EQ(units.LengthToMetres(1.0), GEO_NULL);
    EXPECT_EQ(units.BearingToRadians(1.0), GEO_NULL);
    EXPECT_EQ(units.SquareMetresToArea(1.0), GEO_NULL);
    EXPECT_EQ(units.MetresToVDistance(1.0), 3.2808333333333337); // other kinds unaffected
}

TEST(QuantityUnitsGrade, PercentLimitsAtTheVertical) {
    const CQuantityUnits units{CString()};
    EXPECT_EQ(units.RadiansToGrade(kHalfPi), 999.999);
    EXPECT_EQ(units.RadiansToGrade(-kHalfPi), -999.999);
    EXPECT_EQ(units.RadiansToGrade(kHalfPi - 0.0996), 999.999); // within the margin
    EXPECT_EQ(units.RadiansToGrade(kHalfPi - 0.0997), std::tan(kHalfPi - 0.0997) * 100.0);
    EXPECT_NEAR(units.RadiansToGrade(kHalfPi - 0.0997), 999.6834893788282, 1e-9);
    EXPECT_EQ(units.RadiansToGrade(0.3), std::tan(0.3) * 100.0);
    EXPECT_EQ(units.RadiansToGrade(0.0), 0.0);
    EXPECT_EQ(units.RadiansToGrade(kHalfPi + 0.05), 999.999); // just past the vertical too
    EXPECT_EQ(units.RadiansToGrade(3.0), std::tan(3.0) * 100.0);
}

TEST(QuantityUnitsGrade, RunRiseLimitsAtLevelWithoutSign) {
    CQuantityUnits units{CString()};
    units.SetGrade(units_GradeRunRise);
    EXPECT_EQ(units.RadiansToGrade(0.0), 999.9);
    EXPECT_EQ(units.RadiansToGrade(-0.0009), 999.9);
    EXPECT_EQ(units.RadiansToGrade(0.3), 1.0 / std::tan(0.3));
    EXPECT_EQ(units.RadiansToGrade(-0.3), 1.0 / std::tan(-0.3));
    EXPECT_EQ(units.RadiansToGrade(0.001), 1.0 / std::tan(0.001)); // the margin is strict
}

TEST(QuantityUnitsGrade, RiseRunLimitsAtTheVerticalWithoutSign) {
    CQuantityUnits units{CString()};
    units.SetGrade(units_GradeRiseRun);
    EXPECT_EQ(units.RadiansToGrade(kHalfPi), 999.9);
    EXPECT_EQ(units.RadiansToGrade(-(kHalfPi - 0.0005)), 999.9);
    EXPECT_EQ(units.RadiansToGrade(0.3), std::tan(0.3));
    EXPECT_EQ(units.RadiansToGrade(0.0), 0.0);
}

TEST(QuantityUnitsGrade, GradeToRadiansInEachStyle) {
    CQuantityUnits units{CString()};
    EXPECT_EQ(units.GradeToRadians(5.0), std::atan(5.0 * 0.01));
    EXPECT_EQ(units.GradeToRadians(1e9), std::atan(1e9 * 0.01)); // percent has no limit
    units.SetGrade(units_GradeRunRise);
    EXPECT_EQ(units.GradeToRadians(0.0), kHalfPi);
    EXPECT_EQ(units.GradeToRadians(-0.0), kHalfPi);
    EXPECT_EQ(units.GradeToRadians(-5e-8), -kHalfPi);
    EXPECT_EQ(units.GradeToRadians(10.0), std::atan(1.0 / 10.0));
    units.SetGrade(units_GradeRiseRun);
    EXPECT_EQ(units.GradeToRadians(2e7), kHalfPi);
    EXPECT_EQ(units.GradeToRadians(-2e7), -kHalfPi);
    EXPECT_EQ(units.GradeToRadians(1e7), std::atan(1e7));
    EXPECT_EQ(units.GradeToRadians(0.1), std::atan(0.1));
}

TEST(QuantityUnitsGrade, StyleOutsideTheTableGivesNull) {
    CQuantityUnits units{CString()};
    units.SetGrade(3);
    EXPECT_EQ(units.RadiansToGrade(0.1), GEO_NULL);
    EXPECT_EQ(units.GradeToRadians(0.1), GEO_NULL);
    units.SetGrade(-1);
    EXPECT_EQ(units.RadiansToGrade(0.1), GEO_NULL);
}

TEST(QuantityUnitsCopy, CopiesEverything) {
    CQuantityUnits units = units_with(
        units_Metres, units_LengthInches, units_AngleGons, units_BearingQuadrant,
        units_GradeRiseRun, units_Station10Plus0, units_Acres, units_CubicMetres, units_XYZ);
    units.EnablePopUps(0);
    const CQuantityUnits copy(units);
    EXPECT_EQ(copy.HorizontalDistance(), units_Metres);
    EXPECT_EQ(copy.Length(), units_LengthInches);
    EXPECT_EQ(copy.Angles(), units_AngleGons);
    EXPECT_EQ(copy.Bearings(), units_BearingQuadrant);
    EXPECT_EQ(copy.Grade(), units_GradeRiseRun);
    EXPECT_EQ(copy.Stationing(), units_Station10Plus0);
    EXPECT_EQ(copy.Area(), units_Acres);
    EXPECT_EQ(copy.Volume(), units_CubicMetres);
    EXPECT_EQ(copy.Coords(), units_XYZ);
    EXPECT_EQ(copy.PopUpsEnabled(), 0);
    CQuantityUnits assigned{CString()};
    assigned = units;
    EXPECT_EQ(assigned.Bearings(), units_BearingQuadrant);
    EXPECT_EQ(assigned.MetresToLength(0.0254000508001016), 1.0);
}

} // namespace
