#include "qv5/hostfw.h"
#include "units/string_table.h"

#include <gtest/gtest.h>

#include <string>
#include <utility>
#include <vector>

namespace {

std::u16string loaded(unsigned id) {
    CString text("before");
    EXPECT_EQ(text.LoadString(id), 1) << id;
    const unsigned short* units = text.GetString();
    return std::u16string(units, units + text.GetLength());
}

TEST(StringTable, EveryUnitNameIsThere) {
    const std::vector<std::pair<unsigned, std::u16string>> names = {
        {10001, u"US Survey feet"},
        {10002, u"Meters"},
        {10003, u"Feet"},
        {10004, u"DD\u00B0MM'SS\""},
        {10006, u"Gons"},
        {10008, u"Zero at zenith"},
        {10009, u"Zero level"},
        {10047, u"Inches"},
        {10048, u"Centimeters"},
        {10049, u"International feet"},
        {10050, u"Percent (%)"},
        {10051, u"Run : Rise"},
        {10053, u"100.000"},
        {10054, u"1+00.000"},
        {10055, u"10+0.000"},
        {10056, u"DD\u00B0MM'SS\""},
        {10057, u"Gons"},
        {10058, u"NDD\u00B0MM'SS\"E"},
        {10094, u"Cubic meters"},
        {10095, u"Cubic yards"},
        {10100, u"Square meters"},
        {10101, u"Square feet"},
        {10102, u"Acres"},
        {10103, u"Hectares"},
        {10106, u"North-East-Elev"},
        {10107, u"East-North-Elev"},
        {10108, u"X-Y-Z"},
        {10141, u"Rise : Run"},
        {10142, u"DD.DDDD\u00B0"},
        {10046, u"Too large"},
    };
    for (const auto& [id, text] : names) {
        EXPECT_EQ(loaded(id), text) << id;
    }
}

TEST(StringTable, DaysMonthsSuffixesAndClock) {
    const char16_t* days[] = {u"Monday", u"Tuesday",  u"Wednesday", u"Thursday",
                              u"Friday", u"Saturday", u"Sunday"};
    for (unsigned i = 0; i < 7; ++i) {
        EXPECT_EQ(loaded(10010 + i), days[i]);
    }
    const char16_t* months[] = {u"January",   u"February", u"March",    u"April",
                                u"May",       u"June",     u"July",     u"August",
                                u"September", u"October",  u"November", u"December"};
    for (unsigned i = 0; i < 12; ++i) {
        EXPECT_EQ(loaded(10017 + i), months[i]);
    }
    EXPECT_EQ(loaded(10029), u"st");
    EXPECT_EQ(loaded(10030), u"th");
    EXPECT_EQ(loaded(10031), u"nd");
    EXPECT_EQ(loaded(10032), u"rd");
    EXPECT_EQ(loaded(10033), u"AM");
    EXPECT_EQ(loaded(10034), u"PM");
}

TEST(StringTable, UnknownIdLeavesTheStringAlone) {
    for (unsigned id : {0u, 10000u, 10005u, 10007u, 10035u, 10052u, 10143u, 4000000000u}) {
        CString text("kept");
        EXPECT_EQ(text.LoadString(id), 0) << id;
        EXPECT_EQ(text, CString("kept"));
    }
}

TEST(StringTable, InternalLookupAgreesWithTheLoader) {
    EXPECT_EQ(qv5::detail::module_string(10046), u"Too large");
    EXPECT_TRUE(qv5::detail::module_string(10005).empty());
}

} // namespace
