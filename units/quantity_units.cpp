// CQuantityUnits: the unit choices, their persistence and the conversions.
#include "qv5/units.h"

#include "platform/settings_store.h"
#include "units/quantity_text.h"
#include "units/string_table.h"
#include "units/unit_settings.h"
#include "units/unit_tables.h"

#include <algorithm>
#include <cmath>
#include <iterator>
#include <string>

namespace qv5::detail {

double square_foot_factor() {
    return std::pow(kUSSurveyFootMetres, 2.0);
}

double cubic_yard_factor() {
    return kCubicFeetPerCubicYard * std::pow(kUSSurveyFootMetres, 3.0);
}

} // namespace qv5::detail

namespace {

using namespace qv5::detail;

/// The defaults before the store is read, in UnitKind order: US survey feet, DMS, feet,
/// percent, "1+00.000", square feet, cubic yards, north-east-elevation.
constexpr int kDefaultChoices[kUnitKindCount] = {1, 1, 0, 0, 1, 0, 0, 1, 1, 1, 0};
static_assert(sizeof(kDefaultChoices) / sizeof(int) == 11, "one default per kind");

std::u16string key_text(const CString& key) {
    const unsigned short* units = key.GetString();
    return std::u16string(units, units + key.GetLength());
}

} // namespace

CQuantityUnits::CQuantityUnits(const CString& registryKey)
    : m_registryKey(registryKey), m_selection{}, m_popUps(1), m_rows{}, m_loaded{},
      m_storedExactly(0) {
    for (int i = 0; i < kUnitRowTotal; ++i) {
        m_rows[i] = UnitRow{kUnitRows[i].name_id, kUnitRows[i].factor, kUnitRows[i].precision};
    }
    m_rows[kSquareFeetRow].factor = square_foot_factor();
    m_rows[kCubicYardsRow].factor = cubic_yard_factor();
    for (int k = 0; k < kUnitKindCount; ++k) {
        m_selection[k] = kDefaultChoices[k];
    }
    m_tooLarge.LoadString(kStringTooLarge);
    if (m_registryKey.IsEmpty() == 0) {
        try {
            const std::unique_ptr<SettingsStore> store = open_settings_store();
            load_unit_choices(*store, key_text(m_registryKey), m_selection, m_storedExactly);
        } catch (...) {
            // Out of memory before the store could be opened: the defaults stay.
        }
    }
    std::copy(std::begin(m_selection), std::end(m_selection), std::begin(m_loaded));
}

CQuantityUnits::CQuantityUnits(const CQuantityUnits& other) = default;

CQuantityUnits& CQuantityUnits::operator=(const CQuantityUnits& other) = default;

CQuantityUnits::~CQuantityUnits() {
    if (m_registryKey.IsEmpty() != 0) {
        return;
    }
    try {
        const std::unique_ptr<SettingsStore> store = open_settings_store();
        // Only what changed, or what the store did not hold as written: another program's
        // change of a choice this object merely read survives.
        save_unit_choices(*store, key_text(m_registryKey), m_selection, m_loaded, m_storedExactly);
    } catch (...) {
        // Out of memory: the store keeps what it had.
    }
}

// ---- choices ---------------------------------------------------------------------------------

int CQuantityUnits::HorizontalDistance() const {
    return m_selection[kHorizontalDistanceKind];
}
void CQuantityUnits::SetHorizontalDistance(int units) {
    m_selection[kHorizontalDistanceKind] = units;
}
int CQuantityUnits::VerticalDistance() const {
    return m_selection[kVerticalDistanceKind];
}
void CQuantityUnits::SetVerticalDistance(int units) {
    m_selection[kVerticalDistanceKind] = units;
}
int CQuantityUnits::Angles() const {
    return m_selection[kAnglesKind];
}
void CQuantityUnits::SetAngles(int units) {
    m_selection[kAnglesKind] = units;
}
int CQuantityUnits::Bearings() const {
    return m_selection[kBearingsKind];
}
void CQuantityUnits::SetBearings(int style) {
    m_selection[kBearingsKind] = style;
}
int CQuantityUnits::Length() const {
    return m_selection[kLengthKind];
}
void CQuantityUnits::SetLength(int units) {
    m_selection[kLengthKind] = units;
}
int CQuantityUnits::VerticalCircle() const {
    return m_selection[kVerticalCircleKind];
}
int CQuantityUnits::Grade() const {
    return m_selection[kGradeKind];
}
void CQuantityUnits::SetGrade(int style) {
    m_selection[kGradeKind] = style;
}
int CQuantityUnits::Stationing() const {
    return m_selection[kStationingKind];
}
void CQuantityUnits::SetStationing(int style) {
    m_selection[kStationingKind] = style;
}
int CQuantityUnits::Area() const {
    return m_selection[kAreaKind];
}
void CQuantityUnits::SetArea(int units) {
    m_selection[kAreaKind] = units;
}
int CQuantityUnits::Volume() const {
    return m_selection[kVolumeKind];
}
void CQuantityUnits::SetVolume(int units) {
    m_selection[kVolumeKind] = units;
}
int CQuantityUnits::Coords() const {
    return m_selection[kCoordsKind];
}
void CQuantityUnits::SetCoords(int order) {
    m_selection[kCoordsKind] = order;
}

// ---- display names and precisions ------------------------------------------------------------

namespace {

template <class Row>
unsigned int name_of(const Row* rows, int kind, int row) {
    const int index = unit_row_index(kind, row);
    return index < 0 ? 0u : rows[index].nameId;
}

template <class Row>
int precision_of(const Row* rows, int kind, int selection) {
    const int index = unit_row_index(kind, selection);
    return index < 0 ? 0 : rows[index].precision;
}

} // namespace

unsigned int CQuantityUnits::HorizontalDistanceString(int row) const {
    return name_of(m_rows, kHorizontalDistanceKind, row);
}
unsigned int CQuantityUnits::VerticalDistanceString(int row) const {
    return name_of(m_rows, kVerticalDistanceKind, row);
}
unsigned int CQuantityUnits::LengthString(int row) const {
    return name_of(m_rows, kLengthKind, row);
}
unsigned int CQuantityUnits::GradeString(int row) const {
    return name_of(m_rows, kGradeKind, row);
}
unsigned int CQuantityUnits::StationingString(int row) const {
    return name_of(m_rows, kStationingKind, row);
}
unsigned int CQuantityUnits::BearingsString(int row) const {
    return name_of(m_rows, kBearingsKind, row);
}
unsigned int CQuantityUnits::AreaString(int row) const {
    return name_of(m_rows, kAreaKind, row);
}
unsigned int CQuantityUnits::VolumeString(int row) const {
    return name_of(m_rows, kVolumeKind, row);
}
unsigned int CQuantityUnits::CoordString(int row) const {
    return name_of(m_rows, kCoordsKind, row);
}
unsigned int CQuantityUnits::AnglesString(int row) const {
    return name_of(m_rows, kAnglesKind, row);
}
unsigned int CQuantityUnits::VerticalCircleString(int row) const {
    return name_of(m_rows, kVerticalCircleKind, row);
}

int CQuantityUnits::HDistPrecision() const {
    return precision_of(m_rows, kHorizontalDistanceKind, HorizontalDistance());
}
int CQuantityUnits::VDistPrecision() const {
    return precision_of(m_rows, kVerticalDistanceKind, VerticalDistance());
}
int CQuantityUnits::LengthPrecision() const {
    return precision_of(m_rows, kLengthKind, Length());
}

void CQuantityUnits::EnablePopUps(int enable) {
    m_popUps = enable;
}
int CQuantityUnits::PopUpsEnabled() const {
    return m_popUps;
}

// ---- conversions -----------------------------------------------------------------------------

namespace {

/// Direction of a linear conversion.
enum class Toward { internal, display };

/// value × factor (toward internal units) or value / factor (toward display units) with the
/// chosen row's factor; null, and a choice outside the table, give null.
template <class Row>
double converted(const Row* rows, int kind, int selection, double value, Toward toward) {
    const int index = unit_row_index(kind, selection);
    if (value == GEO_NULL || index < 0) {
        return GEO_NULL;
    }
    return toward == Toward::internal ? value * rows[index].factor : value / rows[index].factor;
}

} // namespace

double CQuantityUnits::HDistanceToMetres(double value) const {
    return converted(m_rows, kHorizontalDistanceKind, HorizontalDistance(), value,
                     Toward::internal);
}
double CQuantityUnits::MetresToHDistance(double metres) const {
    return converted(m_rows, kHorizontalDistanceKind, HorizontalDistance(), metres,
                     Toward::display);
}
double CQuantityUnits::VDistanceToMetres(double value) const {
    return converted(m_rows, kVerticalDistanceKind, VerticalDistance(), value, Toward::internal);
}
double CQuantityUnits::MetresToVDistance(double metres) const {
    return converted(m_rows, kVerticalDistanceKind, VerticalDistance(), metres, Toward::display);
}
double CQuantityUnits::LengthToMetres(double value) const {
    return converted(m_rows, kLengthKind, Length(), value, Toward::internal);
}
double CQuantityUnits::MetresToLength(double metres) const {
    return converted(m_rows, kLengthKind, Length(), metres, Toward::display);
}
double CQuantityUnits::AngleToRadians(double value) const {
    return converted(m_rows, kAnglesKind, Angles(), value, Toward::internal);
}
double CQuantityUnits::RadiansToAngle(double radians) const {
    return converted(m_rows, kAnglesKind, Angles(), radians, Toward::display);
}
double CQuantityUnits::BearingToRadians(double value) const {
    return converted(m_rows, kBearingsKind, Bearings(), value, Toward::internal);
}
double CQuantityUnits::RadiansToBearing(double radians) const {
    return converted(m_rows, kBearingsKind, Bearings(), radians, Toward::display);
}
double CQuantityUnits::AreaToSquareMetres(double value) const {
    return converted(m_rows, kAreaKind, Area(), value, Toward::internal);
}
double CQuantityUnits::SquareMetresToArea(double squareMetres) const {
    return converted(m_rows, kAreaKind, Area(), squareMetres, Toward::display);
}
double CQuantityUnits::VolumeToCubicMetres(double value) const {
    return converted(m_rows, kVolumeKind, Volume(), value, Toward::internal);
}
double CQuantityUnits::CubicMetresToVolume(double cubicMetres) const {
    return converted(m_rows, kVolumeKind, Volume(), cubicMetres, Toward::display);
}

double CQuantityUnits::GradeToRadians(double grade) const {
    return grade == GEO_NULL ? GEO_NULL : grade_to_radians(grade, Grade());
}

double CQuantityUnits::RadiansToGrade(double radians) const {
    return radians == GEO_NULL ? GEO_NULL : radians_to_grade(radians, Grade());
}
