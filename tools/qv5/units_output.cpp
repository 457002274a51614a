#include "units_output.h"
#include "args.h"

#include "output.h"

#include <fmt/format.h>

#include <cmath>

namespace qv5::cli {
namespace {

/// Decimals of grades shown as percentages.
constexpr int kGradeDecimals = 3;

std::string utf8(const unsigned short* text) {
    return CString(text).ToUtf8();
}

/// A library text, or "-" for a value the library formats as empty (GEO_NULL).
template <class Format>
std::string formatted(double value, Format format) {
    if (value == GEO_NULL) {
        return "-";
    }
    unsigned short buffer[CQuantityUnits::kFormatBufferSize] = {};
    return without_negative_zero(utf8(format(buffer)));
}

} // namespace

const std::vector<UnitKind>& unit_kinds() {
    using U = CQuantityUnits;
    static const std::vector<UnitKind> kinds = {
        {"horizontal-distance",
         {"metres", "us-survey-feet", "international-feet"},
         &U::HorizontalDistance,
         &U::SetHorizontalDistance,
         &U::HorizontalDistanceString},
        {"vertical-distance",
         {"metres", "us-survey-feet", "international-feet"},
         &U::VerticalDistance,
         &U::SetVerticalDistance,
         &U::VerticalDistanceString},
        {"length",
         {"metres", "feet", "inches", "centimetres"},
         &U::Length,
         &U::SetLength,
         &U::LengthString},
        {"angles", {"dms", "gons"}, &U::Angles, &U::SetAngles, &U::AnglesString},
        {"bearings",
         {"dms", "quadrant", "gons", "decimal-degrees"},
         &U::Bearings,
         &U::SetBearings,
         &U::BearingsString},
        {"vertical-circle",
         {"zero-at-zenith", "zero-level"},
         &U::VerticalCircle,
         nullptr,
         &U::VerticalCircleString},
        {"grade", {"percent", "run-rise", "rise-run"}, &U::Grade, &U::SetGrade, &U::GradeString},
        {"stationing",
         {"plain", "plus-hundreds", "plus-tens"},
         &U::Stationing,
         &U::SetStationing,
         &U::StationingString},
        {"area",
         {"square-metres", "square-feet", "acres", "hectares"},
         &U::Area,
         &U::SetArea,
         &U::AreaString},
        {"volume", {"cubic-metres", "cubic-yards"}, &U::Volume, &U::SetVolume, &U::VolumeString},
        {"coords",
         {"north-east-elev", "east-north-elev", "xyz"},
         &U::Coords,
         &U::SetCoords,
         &U::CoordString},
    };
    return kinds;
}

const UnitKind* find_unit_kind(std::string_view name) {
    for (const UnitKind& kind : unit_kinds()) {
        if (same_ignoring_case(kind.name, name)) {
            return &kind;
        }
    }
    return nullptr;
}

std::optional<int> find_unit_value(const UnitKind& kind, std::string_view text) {
    for (std::size_t row = 0; row < kind.values.size(); ++row) {
        const int r = static_cast<int>(row);
        if (same_ignoring_case(kind.values[row], text) ||
            same_ignoring_case(display_name(kind, r), text) || std::to_string(row) == text) {
            return r;
        }
    }
    return std::nullopt;
}

std::string display_name(const UnitKind& kind, int row) {
    const CQuantityUnits tables{CString()};
    CString name;
    name.LoadString((tables.*kind.display_name)(row));
    return name.ToUtf8();
}

std::string joined(const std::vector<std::string_view>& names) {
    std::string out;
    for (const std::string_view name : names) {
        if (!out.empty()) {
            out += ", ";
        }
        out += name;
    }
    return out;
}

DisplayUnits::DisplayUnits(bool raw) {
    if (!raw) {
        m_units.emplace(CString(kUnitsKey));
    }
}

DisplayUnits::DisplayUnits(const OutputOptions& options)
    : m_precision(options.precision), m_angles(options.angles()) {
    if (options.raw) {
        return;
    }
    // The saved choices are read, then copied into units kept away from the store, so that
    // this run's --units never reach the saved settings.
    m_units.emplace(CString());
    {
        const CQuantityUnits saved{CString(kUnitsKey)};
        for (const UnitKind& kind : unit_kinds()) {
            if (kind.set != nullptr) {
                (*m_units.*kind.set)((saved.*kind.get)());
            }
        }
    }
    for (const auto& [name, row] : options.unit_overrides()) {
        const UnitKind* kind = find_unit_kind(name);
        if (kind != nullptr && kind->set != nullptr && row >= 0) {
            (*m_units.*kind->set)(row);
        }
    }
}

namespace {

/// Decimals of an angle in decimal degrees unless --precision says otherwise: 1e-9 degrees is
/// about 0.1 mm on the ground.
constexpr int kDegreeDecimals = 9;
constexpr int kSecondsDecimals = 5;

/// Degrees, minutes and seconds of a magnitude in degrees, rounded to `decimals` of a second.
std::string dms_text(double degrees, int decimals) {
    const double scale = std::pow(10.0, decimals);
    const double total = std::round(std::fabs(degrees) * 3600.0 * scale);
    const double whole_seconds = std::floor(total / scale);
    const double fraction = total - whole_seconds * scale;
    const long long s = static_cast<long long>(whole_seconds);
    const std::string seconds =
        decimals > 0
            ? fmt::format("{:02d}.{:0{}d}", s % 60, static_cast<long long>(fraction), decimals)
            : fmt::format("{:02d}", s % 60);
    return fmt::format("{}\u00b0{:02d}'{}\"", s / 3600, (s / 60) % 60, seconds);
}

} // namespace

std::string DisplayUnits::angle_text(double radians, int raw_decimals, char positive,
                                     char negative) const {
    if (radians == GEO_NULL) {
        return "-";
    }
    switch (m_angles) {
    case AngleFormat::degrees:
        return fixed(radians * kDegreesPerRadian,
                     m_precision >= 0 ? m_precision : kDegreeDecimals) +
               "\u00b0";
    case AngleFormat::radians:
        return fixed(radians, m_precision >= 0 ? m_precision : raw_decimals) + " rad";
    case AngleFormat::dms: {
        const std::string body = dms_text(radians * kDegreesPerRadian,
                                          m_precision >= 0 ? m_precision : kSecondsDecimals);
        if (positive != 0) {
            return (radians < 0.0 ? negative : positive) + body;
        }
        return radians < 0.0 ? "-" + body : body;
    }
    case AngleFormat::units:
        break;
    }
    return fixed(radians, raw_decimals) + " rad";
}

double DisplayUnits::plain_distance(double metres) const {
    return raw() || metres == GEO_NULL ? metres : m_units->MetresToHDistance(metres);
}

double DisplayUnits::plain_height(double metres) const {
    return raw() || metres == GEO_NULL ? metres : m_units->MetresToVDistance(metres);
}

double DisplayUnits::plain_angle(double radians) const {
    if (radians == GEO_NULL) {
        return radians;
    }
    const bool in_radians =
        m_angles == AngleFormat::radians || (raw() && m_angles == AngleFormat::units);
    return in_radians ? radians : radians * kDegreesPerRadian;
}

namespace {

const char* distance_unit_suffix(int row) {
    static const char* const kSuffixes[] = {"m", "usft", "ft"};
    return row >= 0 && row < 3 ? kSuffixes[row] : "m";
}

} // namespace

std::string DisplayUnits::distance_suffix() const {
    return raw() ? "m" : distance_unit_suffix(m_units->HorizontalDistance());
}

std::string DisplayUnits::height_suffix() const {
    return raw() ? "m" : distance_unit_suffix(m_units->VerticalDistance());
}

std::string DisplayUnits::angle_suffix() const {
    const bool in_radians =
        m_angles == AngleFormat::radians || (raw() && m_angles == AngleFormat::units);
    return in_radians ? "rad" : "deg";
}

std::string DisplayUnits::distance(double metres, int raw_decimals) const {
    if (raw()) {
        return metres == GEO_NULL
                   ? "-"
                   : fixed(metres, m_precision >= 0 ? m_precision : raw_decimals) + " m";
    }
    return formatted(metres, [&](unsigned short* b) {
        return m_units->FormatHDistance(
            metres, m_precision >= 0 ? m_precision : m_units->HDistPrecision(), b);
    });
}

std::string DisplayUnits::height(double metres, int raw_decimals) const {
    if (raw()) {
        return metres == GEO_NULL
                   ? "-"
                   : fixed(metres, m_precision >= 0 ? m_precision : raw_decimals) + " m";
    }
    return formatted(metres, [&](unsigned short* b) {
        return m_units->FormatVDistance(
            metres, m_precision >= 0 ? m_precision : m_units->VDistPrecision(), b);
    });
}

std::string DisplayUnits::station(double metres, int raw_decimals) const {
    if (raw()) {
        return metres == GEO_NULL
                   ? "-"
                   : fixed(metres, m_precision >= 0 ? m_precision : raw_decimals) + " m";
    }
    return formatted(metres, [&](unsigned short* b) {
        return m_units->FormatStationing(
            metres, m_precision >= 0 ? m_precision : m_units->HDistPrecision(), b);
    });
}

std::string DisplayUnits::bearing(double radians, int raw_decimals) const {
    if (m_angles != AngleFormat::units) {
        return angle_text(radians, raw_decimals, 0, 0);
    }
    if (raw()) {
        return radians == GEO_NULL ? "-" : fixed(radians, raw_decimals) + " rad";
    }
    return formatted(radians,
                     [&](unsigned short* b) { return m_units->FormatBearing(radians, b); });
}

std::string DisplayUnits::grade(double radians, int raw_decimals) const {
    if (raw()) {
        return radians == GEO_NULL ? "-" : fixed(radians, raw_decimals) + " rad";
    }
    return formatted(radians, [&](unsigned short* b) {
        return m_units->FormatGrade(radians, kGradeDecimals, b);
    });
}

std::string DisplayUnits::angle(double radians, int raw_decimals) const {
    if (m_angles != AngleFormat::units) {
        return angle_text(radians, raw_decimals, 0, 0);
    }
    if (raw()) {
        return radians == GEO_NULL ? "-" : fixed(radians, raw_decimals) + " rad";
    }
    return formatted(radians, [&](unsigned short* b) { return m_units->FormatHAngle(radians, b); });
}

std::string DisplayUnits::latitude(double radians, int raw_decimals) const {
    if (m_angles != AngleFormat::units) {
        return angle_text(radians, raw_decimals, 'N', 'S');
    }
    if (raw()) {
        return radians == GEO_NULL ? "-" : fixed(radians, raw_decimals) + " rad";
    }
    return formatted(radians,
                     [&](unsigned short* b) { return m_units->FormatLatitude(radians, b); });
}

std::string DisplayUnits::longitude(double radians, int raw_decimals) const {
    if (m_angles != AngleFormat::units) {
        return angle_text(radians, raw_decimals, 'E', 'W');
    }
    if (raw()) {
        return radians == GEO_NULL ? "-" : fixed(radians, raw_decimals) + " rad";
    }
    return formatted(radians,
                     [&](unsigned short* b) { return m_units->FormatLongitude(radians, b); });
}

std::array<std::pair<std::string, std::string>, 3> DisplayUnits::position(const geo_nee& point,
                                                                          int raw_decimals) const {
    if (raw() || m_precision >= 0) {
        const int order = raw() ? 0 : m_units->Coords();
        if (order == units_EastNorthElev || order == units_XYZ) {
            const bool xyz = order == units_XYZ;
            return {{{xyz ? "X" : "East", distance(point.east, raw_decimals)},
                     {xyz ? "Y" : "North", distance(point.north, raw_decimals)},
                     {xyz ? "Z" : "Elevation", height(point.elev, raw_decimals)}}};
        }
        return {{{"North", distance(point.north, raw_decimals)},
                 {"East", distance(point.east, raw_decimals)},
                 {"Elevation", height(point.elev, raw_decimals)}}};
    }
    const units_yxz yxz{point.north, point.east, point.elev};
    const auto text = [](const unsigned short* t) {
        const std::string s = utf8(t);
        return s.empty() ? std::string("-") : s;
    };
    // FormatXOrdinate and FormatYOrdinate both leave the result alone when the first ordinate
    // is GEO_NULL; start each from empty so that that shows as "-".
    CString first;
    CString second;
    CString third;
    static const char* const kLabels[][2] = {{"North", "East"}, {"East", "North"}, {"X", "Y"}};
    const int order = m_units->Coords() >= 0 && m_units->Coords() <= 2 ? m_units->Coords() : 0;
    return {
        {{kLabels[order][0], text(m_units->FormatXOrdinate(yxz, first, 0))},
         {kLabels[order][1], text(m_units->FormatYOrdinate(yxz, second, 0))},
         {order == units_XYZ ? "Z" : "Elevation", text(m_units->FormatZOrdinate(yxz, third, 0))}}};
}

std::string DisplayUnits::legend() const {
    if (raw()) {
        return "Metres and radians.";
    }
    const auto name_of = [this](std::string_view kind_name) {
        const UnitKind& kind = *find_unit_kind(kind_name);
        return display_name(kind, (*m_units.*kind.get)());
    };
    return fmt::format("Distances in {}, heights in {}; stations {}; bearings {}; grades {}.\n"
                       "Change them with 'qv5 units set', or use --raw for metres and radians.",
                       name_of("horizontal-distance"), name_of("vertical-distance"),
                       name_of("stationing"), name_of("bearings"), name_of("grade"));
}

nlohmann::json DisplayUnits::description() const {
    nlohmann::json out = nlohmann::json::object();
    if (raw()) {
        return out;
    }
    for (const UnitKind& kind : unit_kinds()) {
        const int row = (*m_units.*kind.get)();
        if (row >= 0 && static_cast<std::size_t>(row) < kind.values.size()) {
            out[std::string(kind.name)] = std::string(kind.values[static_cast<std::size_t>(row)]);
        } else {
            out[std::string(kind.name)] = row;
        }
    }
    return out;
}

} // namespace qv5::cli
