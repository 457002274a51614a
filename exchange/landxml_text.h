// Numbers, units and places in LandXML text: the pieces the reader and the writer share.
// Internal to the exchange component; never installed.
#ifndef QV5_EXCHANGE_LANDXML_TEXT_H
#define QV5_EXCHANGE_LANDXML_TEXT_H

#include "qv5/landxml.h"

#include <cstddef>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

namespace qv5::landxml::detail {

/// pi, to the last bit of a double.
inline constexpr double kPi = 3.141592653589793;
/// One whole turn.
inline constexpr double kTwoPi = 6.283185307179586;
/// The international foot in metres.
inline constexpr double kFootMetres = 0.3048;
/// The US survey foot in metres: 1200/3937 exactly by its definition.
inline constexpr double kUSSurveyFootMetres = 1200.0 / 3937.0;

/// Metres per unit of a length unit as LandXML names it ("meter", "USSurveyFoot", ...); no
/// value for a name LandXML does not define.
std::optional<double> metres_per_unit(std::string_view name);
/// The unit's name as written in `<Units>`.
const char* linear_unit_name(LinearUnit unit);
/// Whether the unit belongs in `<Imperial>` rather than `<Metric>`.
bool is_imperial(LinearUnit unit);
/// Metres per unit.
double metres_per_unit(LinearUnit unit);

/// How an angle unit turns a number into radians.
enum class AngleForm { Radians, Degrees, Grads, DegreesMinutesSeconds };
/// The angle unit LandXML names ("radians", "decimal degrees", "grads", "decimal dd.mm.ss").
std::optional<AngleForm> angle_form(std::string_view name);
/// The unit's name as written in `<Units>`.
const char* angular_unit_name(AngularUnit unit);
/// A value in the given form, in radians.
double to_radians(double value, AngleForm form);
/// Radians in the writer's unit.
double from_radians(double radians, AngularUnit unit);

/// A LandXML direction (counter-clockwise from north) as a grid azimuth (clockwise from north)
/// in [0, 2 pi), and back.
double azimuth_from_direction(double direction_radians);
double direction_from_azimuth(double azimuth);
/// A bearing brought into [0, 2 pi).
double normalised(double bearing);
/// Unsigned difference of two bearings, in [0, pi].
double bearing_difference(double a, double b);

/// A finite number of the whole text (surrounding white space allowed, '+' allowed); no value
/// for anything else. "INF" (any case, optionally signed) is infinite only when `allow_infinite`.
std::optional<double> parse_number(std::string_view text, bool allow_infinite = false);
/// The largest magnitude a station, coordinate or elevation of a road read from or written to
/// LandXML may have: a hundred thousand kilometres, beyond any survey on Earth. A road reaching
/// farther cannot hold its own geometry (a double's spacing there grows coarser than its curves)
/// and would not read back from what it writes.
inline constexpr double kLargestMeasure = 1e8;

/// Whether a value lies within kLargestMeasure (false for a non-finite one).
inline bool within_measure(double value) {
    return value >= -kLargestMeasure && value <= kLargestMeasure;
}

/// The numbers of a point's text: two or three.
struct PointNumbers {
    std::size_t count = 0;
    double values[3] = {0.0, 0.0, 0.0};

    std::size_t size() const { return count; }
    double operator[](std::size_t i) const { return values[i]; }
};

/// Two or three finite numbers separated by white space: a point "northing easting [elev]".
std::optional<PointNumbers> parse_numbers(std::string_view text);

/// Shortest text that reads back to the same double.
std::string format_number(double value);

/// Line numbers of byte offsets in a text, counted from 1 (CR LF, LF and lone CR each end a line).
class LineIndex {
public:
    explicit LineIndex(std::string_view text);
    int line_of(std::ptrdiff_t offset) const;

private:
    std::vector<std::ptrdiff_t> m_line_starts;
};

/// A message's text with control characters escaped, so that it is safe on a terminal.
std::string escaped(std::string_view text);

} // namespace qv5::landxml::detail

#endif // QV5_EXCHANGE_LANDXML_TEXT_H
