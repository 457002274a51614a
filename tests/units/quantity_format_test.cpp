#include "qv5/geosurvey.h"
#include "qv5/units.h"
#include "units_support.h"

#include <gtest/gtest.h>

#include <cmath>
#include <limits>

using qv5::test::Buffer;
using qv5::test::text_of;
using qv5::test::units_with;
using qv5::test::Utf16;

namespace {

constexpr double kPi = 3.141592653589793;
constexpr double kHalfPi = 1.5707963267948966;
constexpr double kDegree = 0.017453292519943295;
const std::u16string kUntouched = u"untouched";

double dms(int d, int m, double s) {
    double r = 0.0;
    _dmstorad(d, m, s, &r);
    return r;
}

// Every format member writes through the buffer it returns.
TEST(FormatBuffer, MembersReturnTheirBufferAndRefuseNull) {
    const CQuantityUnits units = units_with(units_Metres);
    Buffer buffer;
    EXPECT_EQ(units.FormatHDistance(1.0, 3, buffer.get()), buffer.get());
    EXPECT_EQ(units.FormatHDistance(1.0, 3, nullptr), nullptr);
    EXPECT_EQ(units.FormatBearing(1.0, nullptr), nullptr);
    EXPECT_EQ(units.FormatSystemDate(_SYSTEMTIME{}, nullptr), nullptr);
    EXPECT_EQ(units.FormatGrade(0.1, 2, nullptr), nullptr);
}

// ---- distances -------------------------------------------------------------------------------

TEST(FormatHDistance, EveryUnitWithItsSuffix) {
    Buffer b;
    EXPECT_EQ(text_of(units_with(units_Metres).FormatHDistance(1234.5678, 3, b.get())),
              u"1234.568m");
    EXPECT_EQ(text_of(units_with(units_USSurveyFeet).FormatHDistance(1234.5678, 2, b.get())),
              u"4050.41'");
    EXPECT_EQ(text_of(units_with(units_InternationalFeet).FormatHDistance(1234.5678, 3, b.get())),
              u"4050.419'");
    EXPECT_EQ(text_of(units_with(units_USSurveyFeet).FormatHDistance(100.0, 2, b.get())),
              u"328.08'");
}

TEST(FormatHDistance, NegativeZeroAndRounding) {
    const CQuantityUnits units = units_with(units_Metres);
    Buffer b;
    EXPECT_EQ(text_of(units.FormatHDistance(-12.25, 1, b.get())), u"-12.2m");
    EXPECT_EQ(text_of(units.FormatHDistance(0.0, 2, b.get())), u"0.00m");
    EXPECT_EQ(text_of(units.FormatHDistance(-0.0004, 3, b.get())), u"-0.000m");
    EXPECT_EQ(text_of(units.FormatHDistance(0.125, 2, b.get())), u"0.12m");
    EXPECT_EQ(text_of(units.FormatHDistance(2.675, 2, b.get())), u"2.67m");
    EXPECT_EQ(text_of(units.FormatHDistance(1234.5678, 0, b.get())), u"1235m");
}

TEST(FormatHDistance, NullIsEmptyAndTooLargeIsSaid) {
    const CQuantityUnits units = units_with(units_Metres);
    Buffer b;
    EXPECT_EQ(text_of(units.FormatHDistance(GEO_NULL, 3, b.get())), u"");
    EXPECT_EQ(text_of(units.FormatHDistance(2e10, 3, b.get())), u"Too large");
    EXPECT_EQ(text_of(units.FormatHDistance(-2e10, 3, b.get())), u"Too large");
    EXPECT_EQ(text_of(units.FormatHDistance(std::numeric_limits<double>::infinity(), 3, b.get())),
              u"Too large");
    EXPECT_EQ(text_of(units.FormatHDistance(1e10, 1, b.get())), u"10000000000.0m"); // not above
}

TEST(FormatHDistance, DecimalsAreKeptWithinRange) {
    const CQuantityUnits units = units_with(units_Metres);
    Buffer b;
    EXPECT_EQ(text_of(units.FormatHDistance(1.5, -3, b.get())), u"2m");
    EXPECT_EQ(text_of(units.FormatHDistance(0.5, 40, b.get())), u"0.500000000000000m");
    // The widest text of all fits the documented buffer.
    EXPECT_LT(text_of(units.FormatHDistance(-9.999e9, 99, b.get())).size(),
              static_cast<std::size_t>(CQuantityUnits::kFormatBufferSize));
}

TEST(FormatHDistance, NotANumberIsPrintedAsPrintfDoes) {
    Buffer b;
    EXPECT_EQ(text_of(units_with(units_Metres)
                          .FormatHDistance(std::numeric_limits<double>::quiet_NaN(), 3, b.get())),
              u"nanm");
}

TEST(FormatHDistance, ChoiceOutsideTheTableLeavesTheBuffer) {
    Buffer b;
    EXPECT_EQ(text_of(units_with(3).FormatHDistance(1.0, 3, b.get())), kUntouched);
    EXPECT_EQ(text_of(units_with(-1).FormatVDistance(1.0, 3, b.get())), kUntouched);
    // The null and "Too large" rules come first.
    EXPECT_EQ(text_of(units_with(3).FormatHDistance(2e10, 3, b.get())), u"Too large");
}

TEST(FormatVDistance, UsesTheVerticalChoice) {
    CQuantityUnits units = units_with(units_Metres);
    units.SetVerticalDistance(units_USSurveyFeet);
    Buffer b;
    EXPECT_EQ(text_of(units.FormatVDistance(30.25, 2, b.get())), u"99.25'");
    EXPECT_EQ(text_of(units.FormatHDistance(30.25, 2, b.get())), u"30.25m");
    EXPECT_EQ(text_of(units.FormatVDistance(GEO_NULL, 2, b.get())), u"");
    EXPECT_EQ(text_of(units.FormatVDistance(1e11, 2, b.get())), u"Too large");
}

TEST(FormatLength, EveryUnitWithItsSuffix) {
    Buffer b;
    const std::u16string expected[] = {u"0.500m", u"1.64'", u"19.7\"", u"50.0cm"};
    for (int row = 0; row < 4; ++row) {
        const CQuantityUnits units = units_with(units_Metres, row);
        EXPECT_EQ(text_of(units.FormatLength(0.5, units.LengthPrecision(), b.get())),
                  expected[row]);
    }
    Buffer untouched;
    EXPECT_EQ(text_of(units_with(0, 4).FormatLength(0.5, 1, untouched.get())), kUntouched);
    EXPECT_EQ(text_of(units_with(0, 1).FormatLength(GEO_NULL, 1, b.get())), u"");
    EXPECT_EQ(text_of(units_with(0, 1).FormatLength(-3e10, 1, b.get())), u"Too large");
}

// ---- stationing ------------------------------------------------------------------------------

std::u16string station(int distance, int style, double metres, int decimals) {
    Buffer b;
    CQuantityUnits units = units_with(distance);
    units.SetStationing(style);
    return text_of(units.FormatStationing(metres, decimals, b.get()));
}

TEST(FormatStationing, HundredsStyleInMetres) {
    EXPECT_EQ(station(units_Metres, units_Station1Plus00, 1234.5, 3), u"12+34.500m");
    EXPECT_EQ(station(units_Metres, units_Station1Plus00, 1203.4, 3), u"12+03.400m");
    EXPECT_EQ(station(units_Metres, units_Station1Plus00, 0.0, 3), u"0+00.000m");
}

TEST(FormatStationing, WholeHundredsDoNotSlipBelow) {
    EXPECT_EQ(station(units_Metres, units_Station1Plus00, 200.0, 3), u"2+00.000m");
    EXPECT_EQ(station(units_Metres, units_Station1Plus00, 700.0, 2), u"7+00.00m");
    EXPECT_EQ(station(units_Metres, units_Station10Plus0, 30.0, 3), u"3+0.000m");
}

TEST(FormatStationing, NegativeStationHasItsMinusBeforeTheHundredsOnly) {
    EXPECT_EQ(station(units_Metres, units_Station1Plus00, -1234.5, 3), u"-12+34.500m");
    EXPECT_EQ(station(units_Metres, units_Station10Plus0, -1234.5, 3), u"-123+4.500m");
    EXPECT_EQ(station(units_Metres, units_Station1Plus00, -0.0, 3), u"0+00.000m");
}

TEST(FormatStationing, TensStyle) {
    EXPECT_EQ(station(units_Metres, units_Station10Plus0, 1234.5, 3), u"123+4.500m");
}

TEST(FormatStationing, PlainStyleIsTheHorizontalDistance) {
    EXPECT_EQ(station(units_Metres, units_Station100, 1234.5, 3), u"1234.500m");
    EXPECT_EQ(station(units_USSurveyFeet, units_Station100, 100.0, 2), u"328.08'");
}

TEST(FormatStationing, FeetStationsCarryTheFootMark) {
    EXPECT_EQ(station(units_USSurveyFeet, units_Station1Plus00, 1000.0, 2), u"32+80.83'");
    EXPECT_EQ(station(units_USSurveyFeet, units_Station1Plus00, 1234.5, 3), u"40+50.189'");
}

TEST(FormatStationing, FieldWidthFollowsTheDecimals) {
    // The field is decimals + 3 wide, which assumes a decimal point: with none, the rest is
    // zero-padded to three digits.
    EXPECT_EQ(station(units_Metres, units_Station1Plus00, 1234.5, 0), u"12+035m");
    // The rest rounds on its own and may show 100: the nudges only guard whole hundreds.
    EXPECT_EQ(station(units_Metres, units_Station1Plus00, 99.9996, 3), u"0+100.000m");
}

TEST(FormatStationing, NullTooLargeAndUnknownStyles) {
    EXPECT_EQ(station(units_Metres, units_Station1Plus00, GEO_NULL, 3), u"");
    EXPECT_EQ(station(units_Metres, units_Station1Plus00, 2e10, 3), u"Too large");
    EXPECT_EQ(station(units_Metres, 3, 100.0, 3), kUntouched);
    EXPECT_EQ(station(5, units_Station1Plus00, 100.0, 3), kUntouched);
}

TEST(FormatStationing, LargestStationsStayWithinTheBuffer) {
    const std::u16string text = station(units_USSurveyFeet, units_Station10Plus0, -1e10, 99);
    EXPECT_LT(text.size(), static_cast<std::size_t>(CQuantityUnits::kFormatBufferSize));
    EXPECT_EQ(text.substr(0, 12), u"-2147483647+"); // the tens saturate rather than overflow
}

// ---- grades ----------------------------------------------------------------------------------

std::u16string grade(int style, double radians, int decimals) {
    Buffer b;
    CQuantityUnits units = units_with(units_Metres);
    units.SetGrade(style);
    return text_of(units.FormatGrade(radians, decimals, b.get()));
}

TEST(FormatPercentGrade, TangentTimesAHundred) {
    Buffer b;
    const CQuantityUnits units = units_with(units_Metres, 0, 0, 0, units_GradeRunRise);
    EXPECT_EQ(text_of(units.FormatPercentGrade(std::atan(0.05), 3, b.get())), u"5.000%");
    EXPECT_EQ(text_of(units.FormatPercentGrade(-std::atan(0.05), 1, b.get())), u"-5.0%");
    EXPECT_EQ(text_of(units.FormatPercentGrade(0.0, 2, b.get())), u"0.00%");
    // No 999.999 limit short of the vertical itself, unlike FormatGrade.
    EXPECT_EQ(text_of(units.FormatPercentGrade(kHalfPi - 0.05, 3, b.get())), u"1998.333%");
}

TEST(FormatPercentGrade, VerticalAndNull) {
    Buffer b;
    const CQuantityUnits units = units_with(units_Metres);
    EXPECT_EQ(text_of(units.FormatPercentGrade(kHalfPi, 3, b.get())), u"999.999%");
    EXPECT_EQ(text_of(units.FormatPercentGrade(2.0, 3, b.get())), u"999.999%");
    EXPECT_EQ(text_of(units.FormatPercentGrade(-kHalfPi, 3, b.get())), u"-999.999%");
    EXPECT_EQ(text_of(units.FormatPercentGrade(GEO_NULL, 3, b.get())), u"");
}

TEST(FormatGrade, PercentStyle) {
    EXPECT_EQ(grade(units_GradePercent, std::atan(0.05), 2), u"5.00%");
    EXPECT_EQ(grade(units_GradePercent, kHalfPi - 0.05, 3), u"999.999%");
    EXPECT_EQ(grade(units_GradePercent, kHalfPi, 3), u"999.999%");
    EXPECT_EQ(grade(units_GradePercent, -kHalfPi, 3), u"-999.999%");
}

TEST(FormatGrade, RunRiseStyle) {
    EXPECT_EQ(grade(units_GradeRunRise, std::atan(0.1), 3), u"10.0:1");
    EXPECT_EQ(grade(units_GradeRunRise, std::atan(-0.1), 3), u"-10.0:1");
    EXPECT_EQ(grade(units_GradeRunRise, 0.0, 3), u"999.9:1");
    EXPECT_EQ(grade(units_GradeRunRise, kHalfPi, 3), u"1:999");
    EXPECT_EQ(grade(units_GradeRunRise, -kHalfPi, 3), u"-1:999");
}

TEST(FormatGrade, RiseRunStylePrintsTheRunPerUnitRise) {
    EXPECT_EQ(grade(units_GradeRiseRun, std::atan(0.1), 3), u"1:10.0");
    EXPECT_EQ(grade(units_GradeRiseRun, std::atan(-0.1), 3), u"-1:10.0");
    EXPECT_EQ(grade(units_GradeRiseRun, 0.0, 3), u"1:1000.0"); // 999.999 with one decimal
    EXPECT_EQ(grade(units_GradeRiseRun, -0.0, 3), u"1:1000.0");
    EXPECT_EQ(grade(units_GradeRiseRun, kHalfPi - 0.0005, 3), u"1:0.0"); // 1 / 999.9
    EXPECT_EQ(grade(units_GradeRiseRun, kHalfPi, 3), u"999:1");
    EXPECT_EQ(grade(units_GradeRiseRun, -kHalfPi, 3), u"-999:1");
}

TEST(FormatGrade, NullAndUnknownStyle) {
    EXPECT_EQ(grade(units_GradeRunRise, GEO_NULL, 3), u"");
    EXPECT_EQ(grade(3, 0.1, 3), kUntouched);
    EXPECT_EQ(grade(3, kHalfPi, 3), kUntouched);
    EXPECT_EQ(grade(3, GEO_NULL, 3), u"");
}

// ---- areas and volumes -----------------------------------------------------------------------

TEST(FormatArea, EveryUnitWithItsSuffix) {
    Buffer b;
    const std::u16string expected[] = {u"1234.57m\u00B2", u"13288.72ft\u00B2", u"0.31ac",
                                       u"0.12ha"};
    for (int row = 0; row < 4; ++row) {
        const CQuantityUnits units = units_with(0, 0, 0, 0, 0, 0, row);
        EXPECT_EQ(text_of(units.FormatArea(1234.5678, 2, b.get())), expected[row]);
    }
}

TEST(FormatArea, NullTooLargeAndUnknownUnits) {
    Buffer b;
    const CQuantityUnits units = units_with(0, 0, 0, 0, 0, 0, units_Acres);
    EXPECT_EQ(text_of(units.FormatArea(GEO_NULL, 2, b.get())), u"");
    EXPECT_EQ(text_of(units.FormatArea(1.5e10, 2, b.get())), u"Too large");
    Buffer untouched;
    EXPECT_EQ(text_of(units_with(0, 0, 0, 0, 0, 0, 4).FormatArea(1.0, 2, untouched.get())),
              kUntouched);
}

TEST(FormatVolume, EveryUnitWithItsSuffix) {
    Buffer b;
    EXPECT_EQ(
        text_of(
            units_with(0, 0, 0, 0, 0, 0, 0, units_CubicMetres).FormatVolume(1234.5678, 2, b.get())),
        u"1234.57m\u00B3");
    EXPECT_EQ(
        text_of(
            units_with(0, 0, 0, 0, 0, 0, 0, units_CubicYards).FormatVolume(1234.5678, 2, b.get())),
        u"1614.74yd\u00B3");
    EXPECT_EQ(text_of(units_with(0).FormatVolume(GEO_NULL, 2, b.get())), u"");
    EXPECT_EQ(text_of(units_with(0).FormatVolume(-2e10, 2, b.get())), u"Too large");
    Buffer untouched;
    EXPECT_EQ(text_of(units_with(0, 0, 0, 0, 0, 0, 0, 2).FormatVolume(1.0, 2, untouched.get())),
              kUntouched);
}

// ---- bearings and angles ---------------------------------------------------------------------

std::u16string bearing(int style, double radians) {
    Buffer b;
    return text_of(units_with(0, 0, 0, style).FormatBearing(radians, b.get()));
}

TEST(FormatBearing, DegreesMinutesSeconds) {
    EXPECT_EQ(bearing(units_BearingDMS, dms(123, 45, 30.0)), u"123\u00B045'30\"");
    EXPECT_EQ(bearing(units_BearingDMS, 0.0), u"0\u00B000'00\"");
    EXPECT_EQ(bearing(units_BearingDMS, dms(5, 4, 3.4)), u"5\u00B004'03\"");
}

TEST(FormatBearing, SecondsRoundUpToSixtyWithoutCarrying) {
    EXPECT_EQ(bearing(units_BearingDMS, dms(10, 20, 59.6)), u"10\u00B020'60\"");
    EXPECT_EQ(bearing(units_BearingDMS, dms(10, 59, 59.7)), u"10\u00B059'60\"");
}

TEST(FormatBearing, SignTravelsOnTheDegreesOnly) {
    EXPECT_EQ(bearing(units_BearingDMS, -0.5 * kDegree), u"0\u00B030'00\"");
    EXPECT_EQ(bearing(units_BearingDMS, -10.5 * kDegree), u"-10\u00B030'00\"");
}

TEST(FormatBearing, QuadrantInEachQuarter) {
    EXPECT_EQ(bearing(units_BearingQuadrant, 45 * kDegree), u"N45\u00B000'00\"E");
    EXPECT_EQ(bearing(units_BearingQuadrant, 135 * kDegree), u"S45\u00B000'00\"E");
    EXPECT_EQ(bearing(units_BearingQuadrant, 225 * kDegree), u"S45\u00B000'00\"W");
    EXPECT_EQ(bearing(units_BearingQuadrant, 315 * kDegree), u"N45\u00B000'00\"W");
    EXPECT_EQ(bearing(units_BearingQuadrant, dms(200, 10, 20.0)), u"S20\u00B010'20\"W");
}

TEST(FormatBearing, QuadrantAtTheCardinalPoints) {
    EXPECT_EQ(bearing(units_BearingQuadrant, 0.0), u"N0\u00B000'00\"E");
    EXPECT_EQ(bearing(units_BearingQuadrant, kHalfPi), u"N90\u00B000'00\"E");
    EXPECT_EQ(bearing(units_BearingQuadrant, kPi), u"S0\u00B000'00\"E");
    EXPECT_EQ(bearing(units_BearingQuadrant, 4.71238898038469), u"N90\u00B000'00\"W");
}

TEST(FormatBearing, QuadrantOfAnUnnormalisedBearing) {
    // Letters from the bearing as given; no reduction outside [0, 2 pi).
    EXPECT_EQ(bearing(units_BearingQuadrant, -0.1), u"N-5\u00B043'46\"W");
    EXPECT_EQ(bearing(units_BearingQuadrant, 6.283185307179586 + 0.1), u"N365\u00B043'46\"W");
}

TEST(FormatBearing, GonsAndDecimalDegrees) {
    EXPECT_EQ(bearing(units_BearingGons, kPi), u"200.0000G");
    EXPECT_EQ(bearing(units_BearingGons, 1.0), u"63.6620G");
    EXPECT_EQ(bearing(units_BearingDecimalDegrees, kPi / 4), u"45.0000\u00B0");
    EXPECT_EQ(bearing(units_BearingDecimalDegrees, 1.0), u"57.2958\u00B0");
}

TEST(FormatBearing, NullTooLargeAndUnknownStyle) {
    EXPECT_EQ(bearing(units_BearingQuadrant, GEO_NULL), u"");
    EXPECT_EQ(bearing(units_BearingGons, 2e10), u"Too large");
    EXPECT_EQ(bearing(4, 1.0), kUntouched);
    EXPECT_EQ(bearing(-1, 1.0), kUntouched);
}

TEST(FormatHAngle, DmsAndGons) {
    Buffer b;
    EXPECT_EQ(text_of(units_with(0).FormatHAngle(dms(123, 45, 30.0), b.get())),
              u"123\u00B045'30\"");
    EXPECT_EQ(text_of(units_with(0, 0, units_AngleGons).FormatHAngle(kPi, b.get())), u"200.0000G");
    EXPECT_EQ(text_of(units_with(0).FormatHAngle(GEO_NULL, b.get())), u"");
    EXPECT_EQ(text_of(units_with(0).FormatHAngle(-2e10, b.get())), u"Too large");
    Buffer untouched;
    EXPECT_EQ(text_of(units_with(0, 0, 2).FormatHAngle(1.0, untouched.get())), kUntouched);
}

TEST(FormatHAngle, UsesTheAngleChoiceNotTheBearingStyle) {
    Buffer b;
    EXPECT_EQ(text_of(units_with(0, 0, units_AngleDMS, units_BearingGons)
                          .FormatHAngle(dms(10, 0, 0.0), b.get())),
              u"10\u00B000'00\"");
}

TEST(FormatForEdit, DddMmSsForDmsAndQuadrant) {
    Buffer b;
    EXPECT_EQ(text_of(units_with(0).FormatForEdit(dms(123, 45, 30.0), b.get())), u"123.4530");
    EXPECT_EQ(
        text_of(
            units_with(0, 0, 0, units_BearingQuadrant).FormatForEdit(dms(200, 5, 7.0), b.get())),
        u"200.0507");
    EXPECT_EQ(text_of(units_with(0).FormatForEdit(dms(10, 20, 59.6), b.get())), u"10.2060");
}

TEST(FormatForEdit, FourDecimalsForGonsAndDegrees) {
    Buffer b;
    EXPECT_EQ(text_of(units_with(0, 0, 0, units_BearingGons).FormatForEdit(kPi, b.get())),
              u"200.0000");
    EXPECT_EQ(text_of(units_with(0, 0, 0, units_BearingDecimalDegrees).FormatForEdit(kPi, b.get())),
              u"180.0000");
}

TEST(FormatForEdit, NullTooLargeAndUnknownStyle) {
    Buffer b;
    EXPECT_EQ(text_of(units_with(0).FormatForEdit(GEO_NULL, b.get())), u"");
    EXPECT_EQ(text_of(units_with(0).FormatForEdit(3e10, b.get())), u"Too large");
    Buffer untouched;
    EXPECT_EQ(text_of(units_with(0, 0, 0, 4).FormatForEdit(1.0, untouched.get())), kUntouched);
}

TEST(FormatLatitude, HemisphereLetterAndUnroundedSeconds) {
    Buffer b;
    const CQuantityUnits units = units_with(0);
    EXPECT_EQ(text_of(units.FormatLatitude(dms(35, 21, 12.34567), b.get())),
              u"N35\u00B021'12.34567\"");
    EXPECT_EQ(text_of(units.FormatLatitude(-dms(35, 21, 12.34567), b.get())),
              u"S35\u00B021'12.34567\"");
    EXPECT_EQ(text_of(units.FormatLatitude(dms(5, 3, 7.5), b.get())), u"N05\u00B003'07.50000\"");
    EXPECT_EQ(text_of(units.FormatLatitude(-0.5 * kDegree, b.get())), u"S00\u00B030'00.00000\"");
    EXPECT_EQ(text_of(units.FormatLatitude(GEO_NULL, b.get())), u"");
}

TEST(FormatLongitude, EastAndWest) {
    Buffer b;
    const CQuantityUnits units = units_with(0);
    EXPECT_EQ(text_of(units.FormatLongitude(dms(-120, 3, 4.05), b.get())),
              u"W120\u00B003'04.05000\"");
    EXPECT_EQ(text_of(units.FormatLongitude(dms(7, 0, 0.0), b.get())), u"E07\u00B000'00.00000\"");
    EXPECT_EQ(text_of(units.FormatLongitude(2e10, b.get())), u"Too large");
}

// ---- ordinates -------------------------------------------------------------------------------

struct Ordinates {
    std::u16string x, y, z;
};

Ordinates ordinates(const CQuantityUnits& units, const units_yxz& p, int label) {
    CString x("old x");
    CString y("old y");
    CString z("old z");
    Ordinates out;
    out.x = text_of(units.FormatXOrdinate(p, x, label));
    out.y = text_of(units.FormatYOrdinate(p, y, label));
    out.z = text_of(units.FormatZOrdinate(p, z, label));
    EXPECT_EQ(out.x, text_of(x.GetString()));
    return out;
}

TEST(FormatOrdinates, NorthEastElevation) {
    const Ordinates o = ordinates(units_with(units_Metres), {1000.1234, 2000.5678, 30.25}, 1);
    EXPECT_EQ(o.x, u"N 1000.123m");
    EXPECT_EQ(o.y, u"E 2000.568m");
    EXPECT_EQ(o.z, u"Z 30.250m");
}

TEST(FormatOrdinates, EastNorthElevationAndXyz) {
    CQuantityUnits units = units_with(units_Metres);
    units.SetCoords(units_EastNorthElev);
    Ordinates o = ordinates(units, {1000.1234, 2000.5678, 30.25}, 1);
    EXPECT_EQ(o.x, u"E 2000.568m");
    EXPECT_EQ(o.y, u"N 1000.123m");
    units.SetCoords(units_XYZ);
    o = ordinates(units, {1000.1234, 2000.5678, 30.25}, 1);
    EXPECT_EQ(o.x, u"X 2000.568m");
    EXPECT_EQ(o.y, u"Y 1000.123m");
    EXPECT_EQ(o.z, u"Z 30.250m");
}

TEST(FormatOrdinates, WithoutLabelAndInFeetAtTheDefaultDecimals) {
    const Ordinates o = ordinates(units_with(units_USSurveyFeet), {1000.1234, 0.0, 30.25}, 0);
    EXPECT_EQ(o.x, u"3281.24'");
    EXPECT_EQ(o.y, u"0.00'");
    EXPECT_EQ(o.z, u"99.25'");
}

TEST(FormatOrdinates, NullOrdinateLeavesTheResult) {
    const Ordinates o = ordinates(units_with(units_Metres), {GEO_NULL, 5.0, GEO_NULL}, 1);
    EXPECT_EQ(o.x, u"old x");
    EXPECT_EQ(o.y, u"old y"); // tested on north, which X shows, though east is set
    EXPECT_EQ(o.z, u"old z");
}

TEST(FormatOrdinates, SecondOrdinateIsTestedOnTheFirst) {
    const Ordinates o = ordinates(units_with(units_Metres), {5.0, GEO_NULL, 1.0}, 1);
    EXPECT_EQ(o.x, u"N 5.000m");
    EXPECT_EQ(o.y, u"E "); // the null east prints as an empty value
}

TEST(FormatOrdinates, UnknownOrderLeavesXAndYButNotZ) {
    CQuantityUnits units = units_with(units_Metres);
    units.SetCoords(3);
    const Ordinates o = ordinates(units, {1.0, 2.0, 3.0}, 1);
    EXPECT_EQ(o.x, u"old x");
    EXPECT_EQ(o.y, u"old y");
    EXPECT_EQ(o.z, u"Z 3.000m");
}

TEST(FormatOrdinates, TooLargeIsLabelled) {
    const Ordinates o = ordinates(units_with(units_Metres), {2e10, 1.0, 1.0}, 1);
    EXPECT_EQ(o.x, u"N Too large");
}

// ---- dates and times -------------------------------------------------------------------------

_SYSTEMTIME at(int year, int month, int dow, int day, int hour, int minute) {
    _SYSTEMTIME t{};
    t.wYear = static_cast<unsigned short>(year);
    t.wMonth = static_cast<unsigned short>(month);
    t.wDayOfWeek = static_cast<unsigned short>(dow);
    t.wDay = static_cast<unsigned short>(day);
    t.wHour = static_cast<unsigned short>(hour);
    t.wMinute = static_cast<unsigned short>(minute);
    t.wSecond = 59;
    t.wMilliseconds = 999;
    return t;
}

std::u16string date(const _SYSTEMTIME& t) {
    Buffer b;
    return text_of(units_with(0).FormatSystemDate(t, b.get()));
}

std::u16string time_of(const _SYSTEMTIME& t) {
    Buffer b;
    return text_of(units_with(0).FormatSystemTime(t, b.get()));
}

TEST(FormatSystemDate, DayMonthOrdinalYear) {
    EXPECT_EQ(date(at(2025, 3, 1, 3, 14, 5)), u"Monday, March 3rd, 2025");
    EXPECT_EQ(date(at(2024, 12, 0, 1, 0, 0)), u"Sunday, December 1st, 2024");
    EXPECT_EQ(date(at(2024, 1, 6, 22, 0, 0)), u"Saturday, January 22nd, 2024");
}

TEST(FormatSystemDate, OrdinalSuffixes) {
    const std::pair<int, const char16_t*> days[] = {
        {1, u"1st"},   {2, u"2nd"},   {3, u"3rd"},   {4, u"4th"},   {11, u"11th"},
        {12, u"12th"}, {13, u"13th"}, {21, u"21st"}, {22, u"22nd"}, {23, u"23rd"},
        {24, u"24th"}, {30, u"30th"}, {31, u"31st"}, {0, u"0th"}};
    for (const auto& [day, text] : days) {
        EXPECT_EQ(date(at(2025, 5, 4, day, 0, 0)),
                  u"Thursday, May " + std::u16string(text) + u", 2025");
    }
}

TEST(FormatSystemDate, EveryDayAndMonthName) {
    const char16_t* days[] = {u"Sunday",   u"Monday", u"Tuesday", u"Wednesday",
                              u"Thursday", u"Friday", u"Saturday"};
    for (int dow = 0; dow < 7; ++dow) {
        EXPECT_EQ(date(at(2025, 6, dow, 9, 0, 0)), std::u16string(days[dow]) + u", June 9th, 2025");
    }
    const char16_t* months[] = {u"January",   u"February", u"March",    u"April",
                                u"May",       u"June",     u"July",     u"August",
                                u"September", u"October",  u"November", u"December"};
    for (int month = 1; month <= 12; ++month) {
        EXPECT_EQ(date(at(2025, month, 2, 9, 0, 0)),
                  u"Tuesday, " + std::u16string(months[month - 1]) + u" 9th, 2025");
    }
}

TEST(FormatSystemDate, FieldsOutOfRangeGiveEmptyNames) {
    EXPECT_EQ(date(at(2025, 13, 7, 3, 0, 0)), u",  3rd, 2025");
    EXPECT_EQ(date(at(2025, 0, 1, 3, 0, 0)), u"Monday,  3rd, 2025");
}

TEST(FormatSystemTime, TwelveHourClock) {
    EXPECT_EQ(time_of(at(2025, 3, 1, 3, 14, 5)), u"Monday, March 3rd, 2025, 2:05PM");
    EXPECT_EQ(time_of(at(2025, 3, 1, 3, 0, 0)), u"Monday, March 3rd, 2025, 12:00AM");
    EXPECT_EQ(time_of(at(2025, 3, 1, 3, 12, 0)), u"Monday, March 3rd, 2025, 12:00PM");
    EXPECT_EQ(time_of(at(2025, 3, 1, 3, 11, 59)), u"Monday, March 3rd, 2025, 11:59AM");
    EXPECT_EQ(time_of(at(2025, 3, 1, 3, 23, 7)), u"Monday, March 3rd, 2025, 11:07PM");
    EXPECT_EQ(time_of(at(2025, 3, 1, 3, 1, 30)), u"Monday, March 3rd, 2025, 1:30AM");
}

// ---- parsing ---------------------------------------------------------------------------------

double parse(int style, std::u16string_view text) {
    return units_with(0, 0, 0, style).ParseBearing(Utf16(text).get());
}

TEST(ParseBearing, DddMmSsReadsDegreesMinutesSeconds) {
    // (|v| + 1e-10 - |D|) x 100 carries a few millionths of a second, exactly as computed here
    // with the same operations in the same order.
    EXPECT_EQ(parse(units_BearingDMS, u"123.4530"), 2.1599903934521643);
    EXPECT_NEAR(parse(units_BearingDMS, u"123.4530"), dms(123, 45, 30.0), 1e-11);
    EXPECT_EQ(parse(units_BearingQuadrant, u"45.3000"), 0.7941248096622681);
    EXPECT_EQ(parse(units_BearingDMS, u"359.5959"), 6.283180459047622);
}

TEST(ParseBearing, ResultIsBroughtIntoOneTurn) {
    EXPECT_EQ(parse(units_BearingDMS, u"370.0000"), 0.17453292520428043);
    EXPECT_EQ(parse(units_BearingDMS, u"-10.3000"), 6.099925735715334);
}

TEST(ParseBearing, SignOfASmallNegativeAngleIsLost) {
    EXPECT_EQ(parse(units_BearingDMS, u"-0.3000"), 0.008726646264819785);
}

TEST(ParseBearing, ALeadingByteOrderMarkIsSkipped) {
    EXPECT_EQ(parse(units_BearingDMS, u"\uFEFF45.3000"), parse(units_BearingDMS, u"45.3000"));
    EXPECT_EQ(parse(units_BearingGons, u"\uFEFF 100"), parse(units_BearingGons, u"100"));
    EXPECT_EQ(parse(units_BearingGons, u"\uFEFF"), GEO_NULL);
    // Only at the start: a mark after the number ends it, as any other character would.
    EXPECT_EQ(parse(units_BearingGons, u"100\uFEFF"), parse(units_BearingGons, u"100"));
}

TEST(ParseBearing, TextIsReadAsWcstodReadsIt) {
    EXPECT_EQ(parse(units_BearingDMS, u"  45.3000 junk"), 0.7941248096622681);
    EXPECT_EQ(parse(units_BearingDMS, u"abc"), 4.84813681109536e-12); // 0 read; the guard's 1e-6"
    EXPECT_EQ(parse(units_BearingQuadrant, u"N45.3000E"), 4.84813681109536e-12);
}

TEST(ParseBearing, GonsAndDegreesAreNotNormalised) {
    EXPECT_EQ(parse(units_BearingGons, u"200"), 3.1415926535897936);
    EXPECT_EQ(parse(units_BearingGons, u"-50"), -0.7853981633974484);
    EXPECT_EQ(parse(units_BearingDecimalDegrees, u"45.5"), 0.7941248096574199);
    EXPECT_EQ(parse(units_BearingDecimalDegrees, u"720"), 720 * kDegree);
}

TEST(ParseBearing, EmptyNullNonFiniteAndUnknownStyleGiveNull) {
    EXPECT_EQ(parse(units_BearingDMS, u""), GEO_NULL);
    EXPECT_EQ(units_with(0).ParseBearing(nullptr), GEO_NULL);
    EXPECT_EQ(parse(units_BearingDMS, u"inf"), GEO_NULL);
    EXPECT_EQ(parse(units_BearingGons, u"nan"), GEO_NULL);
    EXPECT_EQ(parse(units_BearingDMS, u"1e400"), GEO_NULL);
    EXPECT_EQ(parse(4, u"12.0000"), GEO_NULL);
}

TEST(ParseBearing, HugeNumbersStayBounded) {
    const double r = parse(units_BearingDMS, u"1e300");
    EXPECT_GE(r, 0.0);
    EXPECT_LT(r, 6.283185307179586);
}

TEST(ParseBearing, ReadsBackWhatFormatForEditWrote) {
    for (int style = 0; style < 4; ++style) {
        const CQuantityUnits units = units_with(0, 0, 0, style);
        for (double b : {0.0, 0.25, 1.0, dms(123, 45, 30.0), 3.0, 4.5, 6.2}) {
            Buffer text;
            const double back = units.ParseBearing(units.FormatForEdit(b, text.get()));
            // DDD.MMSS keeps whole seconds (half a second at most); four decimals of gons or
            // degrees keep 0.00005 of a unit.
            const double tolerance = style < 2 ? 0.5 * 4.84813681109536e-6 : 0.00005 * kDegree;
            EXPECT_NEAR(back, b, tolerance) << style << " " << b;
        }
    }
}

} // namespace
