// The unit tables: for each kind of quantity the rows a user can choose, with the display name's
// string id, the factor to internal units and the default decimals; and where the choices live
// in the settings store. Internal header.
#ifndef QV5_UNITS_UNIT_TABLES_H
#define QV5_UNITS_UNIT_TABLES_H

#include "units/string_table.h"

#include <string_view>

namespace qv5::detail {

/// The kinds of quantity, in the order CQuantityUnits holds its choices.
enum UnitKind : int {
    kHorizontalDistanceKind = 0,
    kVerticalDistanceKind,
    kAnglesKind,
    kBearingsKind,
    kLengthKind,
    kVerticalCircleKind,
    kGradeKind,
    kStationingKind,
    kAreaKind,
    kVolumeKind,
    kCoordsKind,
    kUnitKindCount
};

/// Metres per US survey foot: 1200/3937, the foot of the US State Plane grids.
inline constexpr double kUSSurveyFootMetres = 0.3048006096012192;
/// Metres per international foot.
inline constexpr double kInternationalFootMetres = 0.3048;
/// Metres per US survey inch (a twelfth of the survey foot).
inline constexpr double kUSSurveyInchMetres = 0.0254000508001016;
/// Square metres per acre (US survey).
inline constexpr double kAcreSquareMetres = 4046.8561188869207;
/// Square metres per hectare.
inline constexpr double kHectareSquareMetres = 10000.0;
/// Cubic feet per cubic yard.
inline constexpr double kCubicFeetPerCubicYard = 27.0;
/// Radians per degree and per gon, as the angle and bearing tables hold them.
inline constexpr double kRadiansPerDegreeFactor = 0.017453292519943295;
inline constexpr double kRadiansPerGon = 0.015707963267948967;

/// One row as the tables define it.
struct UnitRowData {
    unsigned name_id;
    double factor;
    int precision;
};

/// Rows per kind, in UnitKind order.
inline constexpr int kUnitRowCount[kUnitKindCount] = {3, 3, 2, 4, 4, 2, 3, 3, 4, 2, 3};
/// All rows of all kinds.
inline constexpr int kUnitRowTotal = 33;

/// The rows of all tables, one kind after the other in UnitKind order. The square foot and
/// cubic yard factors are not constants: CQuantityUnits raises the survey foot to the power with
/// pow when it is made (see square_foot_factor and cubic_yard_factor).
inline constexpr UnitRowData kUnitRows[kUnitRowTotal] = {
    // horizontal distance
    {kStringMeters, 1.0, 3},
    {kStringUSSurveyFeet, kUSSurveyFootMetres, 2},
    {kStringInternationalFeet, kInternationalFootMetres, 2},
    // vertical distance
    {kStringMeters, 1.0, 3},
    {kStringUSSurveyFeet, kUSSurveyFootMetres, 2},
    {kStringInternationalFeet, kInternationalFootMetres, 2},
    // angles
    {kStringAngleDms, kRadiansPerDegreeFactor, 0},
    {kStringAngleGons, kRadiansPerGon, 0},
    // bearings
    {kStringBearingDms, kRadiansPerDegreeFactor, 0},
    {kStringBearingQuadrant, kRadiansPerDegreeFactor, 0},
    {kStringBearingGons, kRadiansPerGon, 0},
    {kStringBearingDecimalDegrees, kRadiansPerDegreeFactor, 0},
    // length
    {kStringMeters, 1.0, 3},
    {kStringFeet, kUSSurveyFootMetres, 2},
    {kStringInches, kUSSurveyInchMetres, 1},
    {kStringCentimeters, 0.01, 1},
    // vertical circle
    {kStringZeroAtZenith, 1.0, 0},
    {kStringZeroLevel, 1.0, 0},
    // grade (factors unused: grades convert through their own formulas)
    {kStringGradePercent, 1.0, 0},
    {kStringGradeRunRise, 1.0, 0},
    {kStringGradeRiseRun, 1.0, 0},
    // stationing
    {kStringStation100, 1.0, 0},
    {kStringStation1Plus00, 1.0, 0},
    {kStringStation10Plus0, 1.0, 0},
    // area (square feet: square_foot_factor())
    {kStringSquareMeters, 1.0, 0},
    {kStringSquareFeet, 0.0, 0},
    {kStringAcres, kAcreSquareMetres, 0},
    {kStringHectares, kHectareSquareMetres, 0},
    // volume (cubic yards: cubic_yard_factor())
    {kStringCubicMeters, 1.0, 0},
    {kStringCubicYards, 0.0, 0},
    // coordinate order
    {kStringNorthEastElev, 1.0, 0},
    {kStringEastNorthElev, 1.0, 0},
    {kStringXYZ, 1.0, 0},
};

/// Index in kUnitRows of a kind's first row.
constexpr int unit_row_offset(int kind) {
    int offset = 0;
    for (int k = 0; k < kind; ++k) {
        offset += kUnitRowCount[k];
    }
    return offset;
}

/// Index in kUnitRows of row `selection` of `kind`; -1 when the selection is outside the table.
constexpr int unit_row_index(int kind, int selection) {
    if (kind < 0 || kind >= kUnitKindCount || selection < 0 || selection >= kUnitRowCount[kind]) {
        return -1;
    }
    return unit_row_offset(kind) + selection;
}

static_assert(unit_row_offset(kUnitKindCount) == kUnitRowTotal);

/// Where the square foot and cubic yard rows sit.
inline constexpr int kSquareFeetRow = unit_row_offset(kAreaKind) + 1;
inline constexpr int kCubicYardsRow = unit_row_offset(kVolumeKind) + 1;

/// Square metres per US survey square foot, as the table computes it: pow(foot, 2.0).
double square_foot_factor();
/// Cubic metres per cubic yard: 27 × pow(foot, 3.0).
double cubic_yard_factor();

/// The choices as the settings store holds them: value name and kind.
struct StoredChoice {
    std::u16string_view name;
    int kind;
};

/// The order the choices are read in when a CQuantityUnits is made.
inline constexpr StoredChoice kChoiceReadOrder[kUnitKindCount] = {
    {u"Horizontal distance", kHorizontalDistanceKind},
    {u"Vertical distance", kVerticalDistanceKind},
    {u"Length", kLengthKind},
    {u"Angles", kAnglesKind},
    {u"Bearings", kBearingsKind},
    {u"Vertical circle", kVerticalCircleKind},
    {u"Grade", kGradeKind},
    {u"Stationing", kStationingKind},
    {u"Area", kAreaKind},
    {u"Volume", kVolumeKind},
    {u"Coords", kCoordsKind},
};

/// The order they are written in when it is destroyed.
inline constexpr StoredChoice kChoiceWriteOrder[kUnitKindCount] = {
    {u"Horizontal distance", kHorizontalDistanceKind},
    {u"Vertical distance", kVerticalDistanceKind},
    {u"Bearings", kBearingsKind},
    {u"Angles", kAnglesKind},
    {u"Length", kLengthKind},
    {u"Vertical circle", kVerticalCircleKind},
    {u"Grade", kGradeKind},
    {u"Stationing", kStationingKind},
    {u"Area", kAreaKind},
    {u"Volume", kVolumeKind},
    {u"Coords", kCoordsKind},
};

} // namespace qv5::detail

#endif // QV5_UNITS_UNIT_TABLES_H
