// CQuantityUnits: formatting quantities as text and reading bearings back.
#include "qv5/units.h"

#include "platform/number_text.h"
#include "units/quantity_text.h"
#include "units/unit_tables.h"

#include <cmath>
#include <string>

namespace {

using namespace qv5::detail;

/// Unit suffixes by row.
constexpr std::u16string_view kDistanceSuffix[] = {u"m", u"'", u"'"};
constexpr std::u16string_view kLengthSuffix[] = {u"m", u"'", u"\"", u"cm"};
constexpr std::u16string_view kAreaSuffix[] = {u"m\u00B2", u"ft\u00B2", u"ac", u"ha"};
constexpr std::u16string_view kVolumeSuffix[] = {u"m\u00B3", u"yd\u00B3"};
/// Suffixes of angles in gons and in decimal degrees.
constexpr char16_t kGonSuffix = u'G';
constexpr char16_t kDegreeSuffix = u'\u00B0';
/// Decimals of angles in gons and decimal degrees.
constexpr int kAngleDecimals = 4;
/// Rows of the angle and bearing tables that the fixed texts divide by.
constexpr int kAngleGonRow = 1;
constexpr int kBearingGonRow = 2;
constexpr int kBearingDegreeRow = 3;
/// The byte-order mark, as a file's text may begin with it (U+FEFF).
constexpr char16_t kByteOrderMark = u'\uFEFF';
/// Coordinate orders (units_Coords).
constexpr int kNorthEastElev = 0;
constexpr int kEastNorthElev = 1;

static_assert(std::size(kDistanceSuffix) == kUnitRowCount[kHorizontalDistanceKind]);
static_assert(std::size(kLengthSuffix) == kUnitRowCount[kLengthKind]);
static_assert(std::size(kAreaSuffix) == kUnitRowCount[kAreaKind]);
static_assert(std::size(kVolumeSuffix) == kUnitRowCount[kVolumeKind]);

int clamped(int decimals) {
    if (decimals < 0) {
        return 0;
    }
    return decimals > CQuantityUnits::kMaxDecimals ? CQuantityUnits::kMaxDecimals : decimals;
}

const unsigned short* written(const TextBuilder& text, unsigned short* buffer) {
    text.copy_to(buffer);
    return buffer;
}

/// The rules every value formatter shares: null gives an empty text, a magnitude above 1e10
/// the "Too large" text. @return true when the rule settled the text
bool settled(double value, const CString& too_large, unsigned short* buffer) {
    if (value == GEO_NULL) {
        buffer[0] = 0;
        return true;
    }
    if (std::fabs(value) > kTooLargeMagnitude) {
        const unsigned short* text = too_large.GetString();
        int i = 0;
        for (; text[i] != 0; ++i) {
            buffer[i] = text[i];
        }
        buffer[i] = 0;
        return true;
    }
    return false;
}

/// "%.*f%s" of a converted value.
const unsigned short* fixed_with_suffix(double value, int decimals, std::u16string_view suffix,
                                        unsigned short* buffer) {
    TextBuilder text;
    text.put_fixed(value, clamped(decimals));
    text.put(suffix);
    return written(text, buffer);
}

/// "%.4f" and a suffix.
const unsigned short* four_decimals(double value, char16_t suffix, unsigned short* buffer) {
    TextBuilder text;
    text.put_fixed(value, kAngleDecimals);
    if (suffix != 0) {
        text.put(suffix);
    }
    return written(text, buffer);
}

/// The text a TextBuilder built for an ordinate, with its label when asked for.
const unsigned short* ordinate_result(char16_t label, const unsigned short* value, int with_label,
                                      CString& result) {
    TextBuilder text;
    if (with_label != 0) {
        text.put(label);
        text.put(u' ');
    }
    for (; *value != 0; ++value) {
        text.put(static_cast<char16_t>(*value));
    }
    unsigned short units[TextBuilder::kCapacity + 1];
    text.copy_to(units);
    try {
        result = CString(units);
    } catch (...) {
        // Out of memory: the result keeps its text.
    }
    return result.GetString();
}

} // namespace

// ---- distances -------------------------------------------------------------------------------

const unsigned short* CQuantityUnits::FormatHDistance(double metres, int decimals,
                                                      unsigned short* buffer) const {
    if (buffer == nullptr || settled(metres, m_tooLarge, buffer)) {
        return buffer;
    }
    const int row = HorizontalDistance();
    if (unit_row_index(kHorizontalDistanceKind, row) < 0) {
        return buffer;
    }
    return fixed_with_suffix(MetresToHDistance(metres), decimals, kDistanceSuffix[row], buffer);
}

const unsigned short* CQuantityUnits::FormatVDistance(double metres, int decimals,
                                                      unsigned short* buffer) const {
    if (buffer == nullptr || settled(metres, m_tooLarge, buffer)) {
        return buffer;
    }
    const int row = VerticalDistance();
    if (unit_row_index(kVerticalDistanceKind, row) < 0) {
        return buffer;
    }
    return fixed_with_suffix(MetresToVDistance(metres), decimals, kDistanceSuffix[row], buffer);
}

const unsigned short* CQuantityUnits::FormatLength(double metres, int decimals,
                                                   unsigned short* buffer) const {
    if (buffer == nullptr || settled(metres, m_tooLarge, buffer)) {
        return buffer;
    }
    const int row = Length();
    if (unit_row_index(kLengthKind, row) < 0) {
        return buffer;
    }
    return fixed_with_suffix(MetresToLength(metres), decimals, kLengthSuffix[row], buffer);
}

const unsigned short* CQuantityUnits::FormatStationing(double metres, int decimals,
                                                       unsigned short* buffer) const {
    if (buffer == nullptr || settled(metres, m_tooLarge, buffer)) {
        return buffer;
    }
    const int style = Stationing();
    const int row = HorizontalDistance();
    if (unit_row_index(kStationingKind, style) < 0 ||
        unit_row_index(kHorizontalDistanceKind, row) < 0) {
        return buffer;
    }
    if (style == units_Station100) {
        return FormatHDistance(metres, decimals, buffer);
    }
    TextBuilder text;
    put_stationing(text, MetresToHDistance(std::fabs(metres)), metres < 0.0, clamped(decimals),
                   style == units_Station1Plus00 ? 100 : 10);
    text.put(kDistanceSuffix[row]);
    return written(text, buffer);
}

// ---- grades, areas, volumes ------------------------------------------------------------------

const unsigned short* CQuantityUnits::FormatPercentGrade(double radians, int decimals,
                                                         unsigned short* buffer) const {
    if (buffer == nullptr) {
        return buffer;
    }
    TextBuilder text;
    if (radians != GEO_NULL) {
        put_percent_grade(text, radians, clamped(decimals));
    }
    return written(text, buffer);
}

const unsigned short* CQuantityUnits::FormatGrade(double radians, int decimals,
                                                  unsigned short* buffer) const {
    if (buffer == nullptr) {
        return buffer;
    }
    TextBuilder text;
    if (radians != GEO_NULL && !put_grade(text, radians, clamped(decimals), Grade())) {
        return buffer;
    }
    return written(text, buffer);
}

const unsigned short* CQuantityUnits::FormatArea(double squareMetres, int decimals,
                                                 unsigned short* buffer) const {
    if (buffer == nullptr || settled(squareMetres, m_tooLarge, buffer)) {
        return buffer;
    }
    const int row = Area();
    if (unit_row_index(kAreaKind, row) < 0) {
        return buffer;
    }
    return fixed_with_suffix(SquareMetresToArea(squareMetres), decimals, kAreaSuffix[row], buffer);
}

const unsigned short* CQuantityUnits::FormatVolume(double cubicMetres, int decimals,
                                                   unsigned short* buffer) const {
    if (buffer == nullptr || settled(cubicMetres, m_tooLarge, buffer)) {
        return buffer;
    }
    const int row = Volume();
    if (unit_row_index(kVolumeKind, row) < 0) {
        return buffer;
    }
    return fixed_with_suffix(CubicMetresToVolume(cubicMetres), decimals, kVolumeSuffix[row],
                             buffer);
}

// ---- angles ----------------------------------------------------------------------------------

const unsigned short* CQuantityUnits::FormatBearing(double radians, unsigned short* buffer) const {
    if (buffer == nullptr || settled(radians, m_tooLarge, buffer)) {
        return buffer;
    }
    TextBuilder text;
    switch (Bearings()) {
    case units_BearingDMS:
        put_dms(text, radians);
        return written(text, buffer);
    case units_BearingQuadrant:
        put_quadrant_bearing(text, radians);
        return written(text, buffer);
    case units_BearingGons:
        return four_decimals(radians / m_rows[unit_row_index(kBearingsKind, kBearingGonRow)].factor,
                             kGonSuffix, buffer);
    case units_BearingDecimalDegrees:
        return four_decimals(radians /
                                 m_rows[unit_row_index(kBearingsKind, kBearingDegreeRow)].factor,
                             kDegreeSuffix, buffer);
    default:
        return buffer;
    }
}

const unsigned short* CQuantityUnits::FormatHAngle(double radians, unsigned short* buffer) const {
    if (buffer == nullptr || settled(radians, m_tooLarge, buffer)) {
        return buffer;
    }
    switch (Angles()) {
    case units_AngleDMS: {
        TextBuilder text;
        put_dms(text, radians);
        return written(text, buffer);
    }
    case units_AngleGons:
        return four_decimals(radians / m_rows[unit_row_index(kAnglesKind, kAngleGonRow)].factor,
                             kGonSuffix, buffer);
    default:
        return buffer;
    }
}

const unsigned short* CQuantityUnits::FormatForEdit(double radians, unsigned short* buffer) const {
    if (buffer == nullptr || settled(radians, m_tooLarge, buffer)) {
        return buffer;
    }
    switch (Bearings()) {
    case units_BearingDMS:
    case units_BearingQuadrant: {
        TextBuilder text;
        put_edit_dms(text, radians);
        return written(text, buffer);
    }
    case units_BearingGons:
    case units_BearingDecimalDegrees:
        return four_decimals(RadiansToBearing(radians), 0, buffer);
    default:
        return buffer;
    }
}

const unsigned short* CQuantityUnits::FormatLatitude(double radians, unsigned short* buffer) const {
    if (buffer == nullptr || settled(radians, m_tooLarge, buffer)) {
        return buffer;
    }
    TextBuilder text;
    put_geodetic(text, radians, u'N', u'S');
    return written(text, buffer);
}

const unsigned short* CQuantityUnits::FormatLongitude(double radians,
                                                      unsigned short* buffer) const {
    if (buffer == nullptr || settled(radians, m_tooLarge, buffer)) {
        return buffer;
    }
    TextBuilder text;
    put_geodetic(text, radians, u'E', u'W');
    return written(text, buffer);
}

// ---- coordinates -----------------------------------------------------------------------------

const unsigned short* CQuantityUnits::FormatXOrdinate(const units_yxz& yxz, CString& result,
                                                      int withLabel) const {
    const int order = Coords();
    if (unit_row_index(kCoordsKind, order) < 0) {
        return result.GetString();
    }
    const double value = order == kNorthEastElev ? yxz.y : yxz.x;
    const char16_t label = order == kNorthEastElev ? u'N' : (order == kEastNorthElev ? u'E' : u'X');
    if (value == GEO_NULL || unit_row_index(kHorizontalDistanceKind, HorizontalDistance()) < 0) {
        return result.GetString();
    }
    unsigned short text[kFormatBufferSize];
    return ordinate_result(label, FormatHDistance(value, HDistPrecision(), text), withLabel,
                           result);
}

const unsigned short* CQuantityUnits::FormatYOrdinate(const units_yxz& yxz, CString& result,
                                                      int withLabel) const {
    const int order = Coords();
    if (unit_row_index(kCoordsKind, order) < 0) {
        return result.GetString();
    }
    // The null test is on the ordinate FormatXOrdinate shows, not on the one printed here.
    const double tested = order == kNorthEastElev ? yxz.y : yxz.x;
    const double value = order == kNorthEastElev ? yxz.x : yxz.y;
    const char16_t label = order == kNorthEastElev ? u'E' : (order == kEastNorthElev ? u'N' : u'Y');
    if (tested == GEO_NULL || unit_row_index(kHorizontalDistanceKind, HorizontalDistance()) < 0) {
        return result.GetString();
    }
    unsigned short text[kFormatBufferSize];
    return ordinate_result(label, FormatHDistance(value, HDistPrecision(), text), withLabel,
                           result);
}

const unsigned short* CQuantityUnits::FormatZOrdinate(const units_yxz& yxz, CString& result,
                                                      int withLabel) const {
    if (yxz.z == GEO_NULL || unit_row_index(kVerticalDistanceKind, VerticalDistance()) < 0) {
        return result.GetString();
    }
    unsigned short text[kFormatBufferSize];
    return ordinate_result(u'Z', FormatVDistance(yxz.z, VDistPrecision(), text), withLabel, result);
}

// ---- dates and times -------------------------------------------------------------------------

const unsigned short* CQuantityUnits::FormatSystemDate(_SYSTEMTIME time,
                                                       unsigned short* buffer) const {
    if (buffer == nullptr) {
        return buffer;
    }
    TextBuilder text;
    put_system_date(text, time);
    return written(text, buffer);
}

const unsigned short* CQuantityUnits::FormatSystemTime(_SYSTEMTIME time,
                                                       unsigned short* buffer) const {
    if (buffer == nullptr) {
        return buffer;
    }
    TextBuilder text;
    put_system_time(text, time);
    return written(text, buffer);
}

// ---- parsing ---------------------------------------------------------------------------------

double CQuantityUnits::ParseBearing(const unsigned short* text) const {
    if (text == nullptr || text[0] == 0) {
        return GEO_NULL;
    }
    const int style = Bearings();
    if (unit_row_index(kBearingsKind, style) < 0) {
        return GEO_NULL;
    }
    double number = 0.0;
    try {
        std::u16string units;
        for (; *text != 0; ++text) {
            units.push_back(static_cast<char16_t>(*text));
        }
        // Text taken from the start of a file may begin with its byte-order mark, invisible to
        // the user; read as wcstod would, it would make any bearing 0.
        if (units.front() == kByteOrderMark) {
            units.erase(0, 1);
            if (units.empty()) {
                return GEO_NULL;
            }
        }
        read_leading_number(units, number); // no number reads as 0, as wcstod gives
    } catch (...) {
        return GEO_NULL; // out of memory
    }
    if (!std::isfinite(number)) {
        return GEO_NULL;
    }
    if (style == units_BearingDMS || style == units_BearingQuadrant) {
        return edit_dms_to_bearing(number);
    }
    return BearingToRadians(number);
}
