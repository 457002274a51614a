// The module's string table: the texts the library shows, by id (10001 and up). Internal
// header; hosts load the strings through CString::LoadString.
#ifndef QV5_UNITS_STRING_TABLE_H
#define QV5_UNITS_STRING_TABLE_H

#include <string_view>

namespace qv5::detail {

// Unit display names.
inline constexpr unsigned kStringUSSurveyFeet = 10001;
inline constexpr unsigned kStringMeters = 10002;
inline constexpr unsigned kStringFeet = 10003;
inline constexpr unsigned kStringAngleDms = 10004;
inline constexpr unsigned kStringAngleGons = 10006;
inline constexpr unsigned kStringZeroAtZenith = 10008;
inline constexpr unsigned kStringZeroLevel = 10009;
inline constexpr unsigned kStringInches = 10047;
inline constexpr unsigned kStringCentimeters = 10048;
inline constexpr unsigned kStringInternationalFeet = 10049;
inline constexpr unsigned kStringGradePercent = 10050;
inline constexpr unsigned kStringGradeRunRise = 10051;
inline constexpr unsigned kStringStation100 = 10053;
inline constexpr unsigned kStringStation1Plus00 = 10054;
inline constexpr unsigned kStringStation10Plus0 = 10055;
inline constexpr unsigned kStringBearingDms = 10056;
inline constexpr unsigned kStringBearingGons = 10057;
inline constexpr unsigned kStringBearingQuadrant = 10058;
inline constexpr unsigned kStringCubicMeters = 10094;
inline constexpr unsigned kStringCubicYards = 10095;
inline constexpr unsigned kStringSquareMeters = 10100;
inline constexpr unsigned kStringSquareFeet = 10101;
inline constexpr unsigned kStringAcres = 10102;
inline constexpr unsigned kStringHectares = 10103;
inline constexpr unsigned kStringNorthEastElev = 10106;
inline constexpr unsigned kStringEastNorthElev = 10107;
inline constexpr unsigned kStringXYZ = 10108;
inline constexpr unsigned kStringGradeRiseRun = 10141;
inline constexpr unsigned kStringBearingDecimalDegrees = 10142;

// Calendar: Monday ... Saturday are 10010 ... 10015 and Sunday 10016; January ... December are
// 10017 ... 10028.
inline constexpr unsigned kStringMonday = 10010;
inline constexpr unsigned kStringSunday = 10016;
inline constexpr unsigned kStringJanuary = 10017;
inline constexpr unsigned kStringOrdinalSt = 10029;
inline constexpr unsigned kStringOrdinalTh = 10030;
inline constexpr unsigned kStringOrdinalNd = 10031;
inline constexpr unsigned kStringOrdinalRd = 10032;
inline constexpr unsigned kStringAm = 10033;
inline constexpr unsigned kStringPm = 10034;

// Formatting.
inline constexpr unsigned kStringTooLarge = 10046;

/// The text of string `id`.
/// @return false when the table has no such string (`text` is then left alone)
bool find_module_string(unsigned id, std::u16string_view& text);

/// The text of string `id`, or an empty text when the table has no such string.
std::u16string_view module_string(unsigned id);

} // namespace qv5::detail

#endif // QV5_UNITS_STRING_TABLE_H
