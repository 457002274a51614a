// The module's string table, compiled in, and the host framework's loader for it.
//
// CString::LoadString is defined here rather than with the rest of CString in platform/: the
// table is the module's own resource and the loader belongs with it, so the platform layer keeps
// knowing nothing of the texts the library shows.
#include "units/string_table.h"

#include "qv5/hostfw.h"

#include <algorithm>
#include <iterator>

namespace qv5::detail {
namespace {

struct TableEntry {
    unsigned id;
    std::u16string_view text;
};

/// Sorted by id, for a binary search.
constexpr TableEntry kTable[] = {
    {kStringUSSurveyFeet, u"US Survey feet"},
    {kStringMeters, u"Meters"},
    {kStringFeet, u"Feet"},
    {kStringAngleDms, u"DD\u00B0MM'SS\""},
    {kStringAngleGons, u"Gons"},
    {kStringZeroAtZenith, u"Zero at zenith"},
    {kStringZeroLevel, u"Zero level"},
    {10010, u"Monday"},
    {10011, u"Tuesday"},
    {10012, u"Wednesday"},
    {10013, u"Thursday"},
    {10014, u"Friday"},
    {10015, u"Saturday"},
    {10016, u"Sunday"},
    {10017, u"January"},
    {10018, u"February"},
    {10019, u"March"},
    {10020, u"April"},
    {10021, u"May"},
    {10022, u"June"},
    {10023, u"July"},
    {10024, u"August"},
    {10025, u"September"},
    {10026, u"October"},
    {10027, u"November"},
    {10028, u"December"},
    {kStringOrdinalSt, u"st"},
    {kStringOrdinalTh, u"th"},
    {kStringOrdinalNd, u"nd"},
    {kStringOrdinalRd, u"rd"},
    {kStringAm, u"AM"},
    {kStringPm, u"PM"},
    {kStringTooLarge, u"Too large"},
    {kStringInches, u"Inches"},
    {kStringCentimeters, u"Centimeters"},
    {kStringInternationalFeet, u"International feet"},
    {kStringGradePercent, u"Percent (%)"},
    {kStringGradeRunRise, u"Run : Rise"},
    {kStringStation100, u"100.000"},
    {kStringStation1Plus00, u"1+00.000"},
    {kStringStation10Plus0, u"10+0.000"},
    {kStringBearingDms, u"DD\u00B0MM'SS\""},
    {kStringBearingGons, u"Gons"},
    {kStringBearingQuadrant, u"NDD\u00B0MM'SS\"E"},
    {kStringCubicMeters, u"Cubic meters"},
    {kStringCubicYards, u"Cubic yards"},
    {kStringSquareMeters, u"Square meters"},
    {kStringSquareFeet, u"Square feet"},
    {kStringAcres, u"Acres"},
    {kStringHectares, u"Hectares"},
    {kStringNorthEastElev, u"North-East-Elev"},
    {kStringEastNorthElev, u"East-North-Elev"},
    {kStringXYZ, u"X-Y-Z"},
    {kStringGradeRiseRun, u"Rise : Run"},
    {kStringBearingDecimalDegrees, u"DD.DDDD\u00B0"},
};

constexpr bool sorted_by_id() {
    for (std::size_t i = 1; i < std::size(kTable); ++i) {
        if (kTable[i - 1].id >= kTable[i].id) {
            return false;
        }
    }
    return true;
}
static_assert(sorted_by_id(), "the string table is searched by id and must stay sorted");

} // namespace

bool find_module_string(unsigned id, std::u16string_view& text) {
    const auto* end = std::end(kTable);
    const auto* at = std::lower_bound(std::begin(kTable), end, id,
                                      [](const TableEntry& e, unsigned key) { return e.id < key; });
    if (at == end || at->id != id) {
        return false;
    }
    text = at->text;
    return true;
}

std::u16string_view module_string(unsigned id) {
    std::u16string_view text;
    find_module_string(id, text);
    return text;
}

} // namespace qv5::detail

int CString::LoadString(unsigned int id) {
    std::u16string_view text;
    if (!qv5::detail::find_module_string(id, text)) {
        return 0;
    }
    try {
        std::vector<unsigned short> units(text.begin(), text.end());
        units.push_back(0);
        *this = CString(units.data());
    } catch (...) {
        return 0; // out of memory: the string keeps its text
    }
    return 1;
}
