// The texts of quantities, built from values already in display units (or radians): the
// pieces behind CQuantityUnits' formatting members and the log file. Internal header.
#ifndef QV5_UNITS_QUANTITY_TEXT_H
#define QV5_UNITS_QUANTITY_TEXT_H

#include "platform/number_text.h"
#include "qv5/hostfw.h"

namespace qv5::detail {

/// Magnitude above which a quantity prints as "Too large".
inline constexpr double kTooLargeMagnitude = 1e10;

/// Seconds of arc as displayed: plus 0.5, truncated, never carried into the minutes, so that
/// 59.6 seconds show as 60.
int rounded_seconds(double seconds);

/// "%i°%02i'%02i\"" of an angle split by _radtodms (the sign is on the degrees only).
void put_dms(TextBuilder& text, double radians);

/// A quadrant bearing "N45°00'00\"E" of a bearing as given (not normalised).
void put_quadrant_bearing(TextBuilder& text, double bearing);

/// "%i.%02i%02i": degrees, minutes and rounded seconds as DDD.MMSS, for an edit field.
void put_edit_dms(TextBuilder& text, double radians);

/// A latitude or longitude "N35°21'12.34567\"": the hemisphere letter by the sign, then the
/// degrees without sign, the minutes and the unrounded seconds with five decimals.
void put_geodetic(TextBuilder& text, double radians, char16_t positive, char16_t negative);

/// A latitude or longitude in the log file's GPS record: "%02i.%02i%07i" of degrees, minutes and
/// seconds × 100000 rounded, so 35°21'12.34567" reads 35.211234567.
void put_gps_angle(TextBuilder& text, double radians);

/// Station text without its unit suffix.
/// @param distance the station's magnitude in display units
/// @param negative the station is below zero: a '-' goes before the hundreds (or tens)
/// @param group 100 for "1+00.000", 10 for "10+0.000"
void put_stationing(TextBuilder& text, double distance, bool negative, int decimals, int group);

/// An angle of elevation as a grade in `style` (units_Grade); `GEO_NULL` for another style.
double radians_to_grade(double radians, int style);
/// A grade in `style` as an angle of elevation; `GEO_NULL` for another style.
double grade_to_radians(double grade, int style);

/// The percent text of a grade angle: "%.*f%" of tan(a) × 100, or ±999.999% at ±π/2.
void put_percent_grade(TextBuilder& text, double radians, int decimals);

/// The grade text of a grade angle in `style`. @return false for a style outside the table
bool put_grade(TextBuilder& text, double radians, int decimals, int style);

/// "Monday, March 3rd, 2025"; a day of the week or month out of range gives an empty name.
void put_system_date(TextBuilder& text, const _SYSTEMTIME& time);

/// "Monday, March 3rd, 2025, 2:05PM".
void put_system_time(TextBuilder& text, const _SYSTEMTIME& time);

/// A DDD.MMSS number read from an edit field as a bearing in [0, 2π).
/// @return `GEO_NULL` when the number is not finite
double edit_dms_to_bearing(double number);

} // namespace qv5::detail

#endif // QV5_UNITS_QUANTITY_TEXT_H
