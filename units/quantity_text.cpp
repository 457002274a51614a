// Quantity texts. The layouts are those surveyors' field software has always shown, down to
// the byte: the seconds that round to 60 without carrying, the quadrant letters decided on the
// bearing as given, the stationing nudges.
#include "units/quantity_text.h"

#include "core/angles.h"
#include "core/constants.h"
#include "qv5/geodef.h"
#include "qv5/geosurvey.h"
#include "units/string_table.h"
#include "units/unit_tables.h"

#include <cmath>
#include <cstdlib>

namespace qv5::detail {
namespace {

/// The degree sign and the seconds mark.
constexpr char16_t kDegreeSign = u'\u00B0';
constexpr char16_t kSecondsMark = u'"';

/// Stationing: the hundreds (or tens) and the rest both carry this nudge, so that 200.0 prints
/// as 2+00.000 rather than 1+100.000 when 200.0 × 0.01 falls a hair below 2.
constexpr double kStationNudge = 1e-6;
/// Hundreds per display unit, and tens per display unit.
constexpr double kHundredsPerUnit = 0.01;
constexpr double kTensPerUnit = 0.1;

/// The percent grade shown for a vertical line, and the angle of elevation at which
/// tan(a) × 100 reaches it (atan(9.99999) below π/2).
constexpr double kPercentGradeLimit = 999.999;
constexpr double kPercentLimitMargin = 0.09966875150116;
/// The run : rise or rise : run ratio shown for a level or a vertical line, and the angular
/// margin from level (or vertical) within which it is shown.
constexpr double kRatioGradeLimit = 999.9;
constexpr double kRatioLimitMargin = 0.001;
/// Run : rise grades this close to zero are vertical, rise : run grades this large likewise.
constexpr double kRunRiseVerticalGrade = 1e-7;
constexpr double kRiseRunVerticalGrade = 1e7;
/// Percent per unit grade, and its inverse.
constexpr double kPercent = 100.0;
constexpr double kPerPercent = 0.01;
/// Rise : run grades below this have no meaningful run per unit rise: 999.999 is shown.
constexpr double kRiseRunLevelGrade = 0.0010000005;
constexpr double kRiseRunLevelRun = 999.999;

/// DDD.MMSS reading: the guard keeps 123.4530 from reading as 45 minutes 29.99999 seconds.
constexpr double kEditMinuteGuard = 1e-10;
/// DDD.MMSS: two decimal places per field.
constexpr double kEditFieldScale = 100.0;
/// GPS record: seconds are written in hundred-thousandths.
constexpr double kGpsSecondsScale = 100000.0;
/// Half, for rounding by truncation.
constexpr double kHalf = 0.5;

/// Decimals of the fixed-layout angle texts.
constexpr int kGeodeticSecondsDecimals = 5;
constexpr int kGeodeticSecondsWidth = 8;
constexpr int kGpsSecondsWidth = 7;
constexpr int kRatioDecimals = 1;
/// Two-digit fields ("%02i").
constexpr int kTwoDigits = 2;

/// Hours on a 12-hour clock face.
constexpr int kHoursPerHalfDay = 12;

struct Dms {
    int degrees;
    int minutes;
    double seconds;
};

Dms split(double radians) {
    Dms dms{};
    _radtodms(radians, &dms.degrees, &dms.minutes, &dms.seconds);
    return dms;
}

void put_dms_fields(TextBuilder& text, const Dms& dms) {
    text.put_int(dms.degrees);
    text.put(kDegreeSign);
    text.put_int(dms.minutes, kTwoDigits);
    text.put(u'\'');
    text.put_int(rounded_seconds(dms.seconds), kTwoDigits);
    text.put(kSecondsMark);
}

unsigned day_name(unsigned short day_of_week) {
    if (day_of_week == 0) {
        return kStringSunday;
    }
    return day_of_week <= 6 ? kStringMonday + day_of_week - 1u : 0u;
}

unsigned month_name(unsigned short month) {
    return month >= 1 && month <= 12 ? kStringJanuary + month - 1u : 0u;
}

unsigned ordinal_suffix(unsigned short day) {
    switch (day) {
    case 1:
    case 21:
    case 31:
        return kStringOrdinalSt;
    case 2:
    case 22:
        return kStringOrdinalNd;
    case 3:
    case 23:
        return kStringOrdinalRd;
    default:
        return kStringOrdinalTh;
    }
}

} // namespace

int rounded_seconds(double seconds) {
    return truncate_to_int(seconds + kHalf);
}

void put_dms(TextBuilder& text, double radians) {
    put_dms_fields(text, split(radians));
}

void put_quadrant_bearing(TextBuilder& text, double bearing) {
    // Both letters are decided on the bearing as given, before it is reduced to its quadrant:
    // a bearing of exactly pi is S...E, one of exactly 3 pi / 2 is N...W.
    const char16_t north_south = bearing > kHalfPi && bearing < kThreeHalfPi ? u'S' : u'N';
    const char16_t east_west = bearing >= 0.0 && bearing <= kPi ? u'E' : u'W';
    double angle = bearing;
    if (bearing > kHalfPi && bearing <= kPi) {
        angle = kPi - bearing;
    } else if (bearing > kPi && bearing < kThreeHalfPi) {
        angle = bearing - kPi;
    } else if (bearing >= kThreeHalfPi && bearing < kTwoPi) {
        angle = kTwoPi - bearing;
    }
    text.put(north_south);
    put_dms_fields(text, split(angle));
    text.put(east_west);
}

void put_edit_dms(TextBuilder& text, double radians) {
    const Dms dms = split(radians);
    text.put_int(dms.degrees);
    text.put(u'.');
    text.put_int(dms.minutes, kTwoDigits);
    text.put_int(rounded_seconds(dms.seconds), kTwoDigits);
}

void put_geodetic(TextBuilder& text, double radians, char16_t positive, char16_t negative) {
    const Dms dms = split(radians);
    text.put(radians >= 0.0 ? positive : negative);
    text.put_int(std::llabs(dms.degrees), kTwoDigits);
    text.put(kDegreeSign);
    text.put_int(dms.minutes, kTwoDigits);
    text.put(u'\'');
    text.put_fixed(dms.seconds, kGeodeticSecondsDecimals, kGeodeticSecondsWidth);
    text.put(kSecondsMark);
}

void put_gps_angle(TextBuilder& text, double radians) {
    const Dms dms = split(radians);
    text.put_int(dms.degrees, kTwoDigits);
    text.put(u'.');
    text.put_int(dms.minutes, kTwoDigits);
    text.put_int(truncate_to_int(dms.seconds * kGpsSecondsScale + kHalf), kGpsSecondsWidth);
}

void put_stationing(TextBuilder& text, double distance, bool negative, int decimals, int group) {
    const bool hundreds = group == 100;
    const int whole =
        truncate_to_int(distance * (hundreds ? kHundredsPerUnit : kTensPerUnit) + kStationNudge);
    // The product in double: a whole count of hundreds times 100 is exact there, and an int
    // product could overflow for the largest stations.
    const double rest = distance - (static_cast<double>(whole) * group - kStationNudge);
    if (negative) {
        text.put(u'-');
    }
    text.put_int(whole);
    text.put(u'+');
    text.put_fixed(rest, decimals, decimals + (hundreds ? 3 : 2));
}

double radians_to_grade(double a, int style) {
    switch (style) {
    case 0: // percent
        if (std::fabs(kHalfPi - std::fabs(a)) < kPercentLimitMargin) {
            return a < 0.0 ? -kPercentGradeLimit : kPercentGradeLimit;
        }
        return std::tan(a) * kPercent;
    case 1: // run : rise; level is shown as 999.9 whichever way it leans
        if (std::fabs(a) < kRatioLimitMargin) {
            return kRatioGradeLimit;
        }
        return 1.0 / std::tan(a);
    case 2: // rise : run
        if (std::fabs(kHalfPi - std::fabs(a)) < kRatioLimitMargin) {
            return kRatioGradeLimit;
        }
        return std::tan(a);
    default:
        return GEO_NULL;
    }
}

double grade_to_radians(double g, int style) {
    switch (style) {
    case 0:
        return std::atan(g * kPerPercent);
    case 1:
        if (std::fabs(g) < kRunRiseVerticalGrade) {
            return g < 0.0 ? -kHalfPi : kHalfPi;
        }
        return std::atan(1.0 / g);
    case 2:
        if (std::fabs(g) > kRiseRunVerticalGrade) {
            return g < 0.0 ? -kHalfPi : kHalfPi;
        }
        return std::atan(g);
    default:
        return GEO_NULL;
    }
}

void put_percent_grade(TextBuilder& text, double radians, int decimals) {
    if (radians >= kHalfPi) {
        text.put("999.999%");
    } else if (radians <= -kHalfPi) {
        text.put("-999.999%");
    } else {
        text.put_fixed(std::tan(radians) * kPercent, decimals);
        text.put(u'%');
    }
}

bool put_grade(TextBuilder& text, double radians, int decimals, int style) {
    if (style < 0 || style > 2) {
        return false;
    }
    // The texts at and beyond the vertical, by style.
    static constexpr std::string_view kUp[] = {"999.999%", "1:999", "999:1"};
    static constexpr std::string_view kDown[] = {"-999.999%", "-1:999", "-999:1"};
    if (radians >= kHalfPi) {
        text.put(kUp[style]);
        return true;
    }
    if (radians <= -kHalfPi) {
        text.put(kDown[style]);
        return true;
    }
    const double grade = radians_to_grade(radians, style);
    if (style == 0) {
        text.put_fixed(grade, decimals);
        text.put(u'%');
    } else if (style == 1) {
        text.put_fixed(grade, kRatioDecimals);
        text.put(":1");
    } else {
        // Rise : run is written "1:run", the run per unit rise.
        const double g = std::fabs(grade);
        const double run = g < kRiseRunLevelGrade ? kRiseRunLevelRun : std::fabs(1.0 / g);
        text.put(radians >= 0.0 ? "1:" : "-1:");
        text.put_fixed(run, kRatioDecimals);
    }
    return true;
}

void put_system_date(TextBuilder& text, const _SYSTEMTIME& time) {
    text.put(module_string(day_name(time.wDayOfWeek)));
    text.put(", ");
    text.put(module_string(month_name(time.wMonth)));
    text.put(u' ');
    text.put_int(time.wDay);
    text.put(module_string(ordinal_suffix(time.wDay)));
    text.put(", ");
    text.put_int(time.wYear);
}

void put_system_time(TextBuilder& text, const _SYSTEMTIME& time) {
    put_system_date(text, time);
    const int hour = time.wHour % kHoursPerHalfDay;
    text.put(", ");
    text.put_int(hour == 0 ? kHoursPerHalfDay : hour);
    text.put(u':');
    text.put_int(time.wMinute, kTwoDigits);
    text.put(module_string(time.wHour >= kHoursPerHalfDay ? kStringPm : kStringAm));
}

double edit_dms_to_bearing(double number) {
    if (!std::isfinite(number)) {
        return GEO_NULL;
    }
    const int degrees = truncate_to_int(number);
    const double a =
        (std::fabs(number) + kEditMinuteGuard - std::fabs(static_cast<double>(degrees))) *
        kEditFieldScale;
    const int minutes = truncate_to_int(a);
    const double seconds = (a - minutes) * kEditFieldScale;
    double radians = 0.0;
    _dmstorad(degrees, minutes, seconds, &radians);
    return normalised_bearing(radians);
}

} // namespace qv5::detail
