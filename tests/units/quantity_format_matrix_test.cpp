// Every unit row of the linear kinds, formatted at negative, zero, small and large values.
// Expected texts computed independently with printf-style formatting of value / factor.
#include "qv5/geosurvey.h"
#include "qv5/units.h"
#include "units_support.h"

#include <gtest/gtest.h>

#include <array>
#include <string>
#include <utility>
#include <vector>

using qv5::test::Buffer;
using qv5::test::text_of;
using qv5::test::units_with;

namespace {

constexpr std::array<double, 4> kValues = {-1234.5678, 0.0, 0.5, 98765.4321};
using Row = std::pair<int, std::array<std::u16string, 4>>;

double dms(int d, int m, double s) {
    double r = 0.0;
    _dmstorad(d, m, s, &r);
    return r;
}

TEST(FormatMatrix, HorizontalAndVerticalDistanceEveryRow) {
    const std::vector<Row> rows = {
        {0, {u"-1234.568m", u"0.000m", u"0.500m", u"98765.432m"}},
        {1, {u"-4050.41'", u"0.00'", u"1.64'", u"324032.92'"}},
        {2, {u"-4050.42'", u"0.00'", u"1.64'", u"324033.57'"}},
    };
    for (const auto& [row, texts] : rows) {
        const CQuantityUnits units = units_with(row);
        for (std::size_t i = 0; i < kValues.size(); ++i) {
            Buffer h;
            Buffer v;
            EXPECT_EQ(text_of(units.FormatHDistance(kValues[i], units.HDistPrecision(), h.get())),
                      texts[i]);
            EXPECT_EQ(text_of(units.FormatVDistance(kValues[i], units.VDistPrecision(), v.get())),
                      texts[i]);
        }
    }
}

TEST(FormatMatrix, LengthEveryRow) {
    const std::vector<Row> rows = {
        {0, {u"-1234.568m", u"0.000m", u"0.500m", u"98765.432m"}},
        {1, {u"-4050.41'", u"0.00'", u"1.64'", u"324032.92'"}},
        {2, {u"-48604.9\"", u"0.0\"", u"19.7\"", u"3888395.1\""}},
        {3, {u"-123456.8cm", u"0.0cm", u"50.0cm", u"9876543.2cm"}},
    };
    for (const auto& [row, texts] : rows) {
        const CQuantityUnits units = units_with(0, row);
        for (std::size_t i = 0; i < kValues.size(); ++i) {
            Buffer b;
            EXPECT_EQ(text_of(units.FormatLength(kValues[i], units.LengthPrecision(), b.get())),
                      texts[i]);
        }
    }
}

TEST(FormatMatrix, AreaEveryRow) {
    const std::vector<Row> rows = {
        {0, {u"-1234.57m\u00B2", u"0.00m\u00B2", u"0.50m\u00B2", u"98765.43m\u00B2"}},
        {1, {u"-13288.72ft\u00B2", u"0.00ft\u00B2", u"5.38ft\u00B2", u"1063098.01ft\u00B2"}},
        {2, {u"-0.31ac", u"0.00ac", u"0.00ac", u"24.41ac"}},
        {3, {u"-0.12ha", u"0.00ha", u"0.00ha", u"9.88ha"}},
    };
    for (const auto& [row, texts] : rows) {
        const CQuantityUnits units = units_with(0, 0, 0, 0, 0, 0, row);
        for (std::size_t i = 0; i < kValues.size(); ++i) {
            Buffer b;
            EXPECT_EQ(text_of(units.FormatArea(kValues[i], 2, b.get())), texts[i]);
        }
    }
}

TEST(FormatMatrix, VolumeEveryRow) {
    const std::vector<Row> rows = {
        {0, {u"-1234.6m\u00B3", u"0.0m\u00B3", u"0.5m\u00B3", u"98765.4m\u00B3"}},
        {1, {u"-1614.7yd\u00B3", u"0.0yd\u00B3", u"0.7yd\u00B3", u"129179.5yd\u00B3"}},
    };
    for (const auto& [row, texts] : rows) {
        const CQuantityUnits units = units_with(0, 0, 0, 0, 0, 0, 0, row);
        for (std::size_t i = 0; i < kValues.size(); ++i) {
            Buffer b;
            EXPECT_EQ(text_of(units.FormatVolume(kValues[i], 1, b.get())), texts[i]);
        }
    }
}

TEST(FormatMatrix, StationingInInternationalFeet) {
    CQuantityUnits units = units_with(units_InternationalFeet);
    units.SetStationing(units_Station1Plus00);
    Buffer b;
    EXPECT_EQ(text_of(units.FormatStationing(-1234.5678, 2, b.get())), u"-40+50.42'");
    units.SetStationing(units_Station10Plus0);
    EXPECT_EQ(text_of(units.FormatStationing(98765.4321, 2, b.get())), u"32403+3.57'");
}

TEST(FormatMatrix, GradesIgnoreTheTooLargeRule) {
    for (int style = 0; style < 3; ++style) {
        CQuantityUnits units = units_with(0);
        units.SetGrade(style);
        Buffer b;
        const std::u16string up[] = {u"999.999%", u"1:999", u"999:1"};
        const std::u16string down[] = {u"-999.999%", u"-1:999", u"-999:1"};
        EXPECT_EQ(text_of(units.FormatGrade(2e10, 3, b.get())), up[style]);
        EXPECT_EQ(text_of(units.FormatGrade(-2e10, 3, b.get())), down[style]);
        EXPECT_EQ(text_of(units.FormatPercentGrade(2e10, 3, b.get())), u"999.999%");
    }
}

TEST(FormatMatrix, QuadrantAndAngleSecondsRoundToSixty) {
    Buffer b;
    EXPECT_EQ(
        text_of(
            units_with(0, 0, 0, units_BearingQuadrant).FormatBearing(dms(190, 20, 59.6), b.get())),
        u"S10\u00B020'60\"W");
    EXPECT_EQ(text_of(units_with(0).FormatHAngle(dms(0, 0, 59.7), b.get())), u"0\u00B000'60\"");
    EXPECT_EQ(
        text_of(
            units_with(0, 0, units_AngleDMS).FormatHAngle(-10.5 * 0.017453292519943295, b.get())),
        u"-10\u00B030'00\"");
}

TEST(FormatMatrix, NegativeAnglesInGonsAndDegrees) {
    Buffer b;
    EXPECT_EQ(text_of(units_with(0, 0, 0, units_BearingGons).FormatBearing(-1.0, b.get())),
              u"-63.6620G");
    EXPECT_EQ(
        text_of(units_with(0, 0, 0, units_BearingDecimalDegrees).FormatBearing(-1.0, b.get())),
        u"-57.2958\u00B0");
    EXPECT_EQ(text_of(units_with(0, 0, units_AngleGons).FormatHAngle(-1.0, b.get())), u"-63.6620G");
    EXPECT_EQ(text_of(units_with(0, 0, 0, units_BearingGons).FormatForEdit(-1.0, b.get())),
              u"-63.6620");
    EXPECT_EQ(text_of(units_with(0).FormatForEdit(-10.5 * 0.017453292519943295, b.get())),
              u"-10.3000");
}

TEST(FormatMatrix, LatitudeAHairBelowAMinuteShowsTheNextMinute) {
    // _radtodms's rounding guard carries 59.999996" into the minutes and leaves -0.000004":
    // printf's "%08.5f" writes it as -0.00000, and hosts compare the text as it always was.
    Buffer b;
    EXPECT_EQ(text_of(units_with(0).FormatLatitude(dms(10, 20, 59.999996), b.get())),
              u"N10\u00B021'-0.00000\"");
}

} // namespace
