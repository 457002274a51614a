// Quantities as the qv5 program shows them: in the user's units, read from the settings store
// through CQuantityUnits, or - with --raw - as plain metres and radians.
//
// A subcommand that prints quantities adds the flag and builds one DisplayUnits:
//
//     bool raw = false;
//     add_raw_flag(*cmd, raw);
//     ...
//     const DisplayUnits show(raw);
//     std::cout << "Offset " << show.distance(offset, 3) << '\n';   // "12.35'" or "3.764 m"
//     if (!show.raw()) {
//         out["formatted"] = {{"offset", show.distance(offset, 3)}};
//         out["units"] = show.description();
//     }
//
// JSON output always carries the raw numbers (metres, radians); without --raw it adds the
// formatted texts under "formatted" and the unit choices under "units".
#ifndef QV5_TOOLS_UNITS_OUTPUT_H
#define QV5_TOOLS_UNITS_OUTPUT_H

#include "output_options.h"

#include "qv5/qv5lib.h"

#include <CLI/CLI.hpp>
#include <nlohmann/json.hpp>

#include <array>
#include <optional>
#include <string>
#include <string_view>
#include <utility>
#include <vector>

namespace qv5::cli {

/// The settings-store key under which the qv5 program keeps the user's unit choices (a path
/// under HKEY_LOCAL_MACHINE in the registry file named by $QV5_REGISTRY, else
/// ~/.config/qv5/registry.reg).
inline constexpr const char16_t* kUnitsKey = u"SOFTWARE\\Halvik\\QV5\\Units";

/// One kind of unit choice as the program names it ("horizontal-distance") with the names of
/// its values, one per row of the library's table ("metres", "us-survey-feet", ...).
struct UnitKind {
    std::string_view name;
    std::vector<std::string_view> values;
    int (CQuantityUnits::*get)() const;
    void (CQuantityUnits::*set)(int); ///< null where the library offers no setter
    unsigned int (CQuantityUnits::*display_name)(int) const;
};

/// Every kind, in the order the program lists them.
const std::vector<UnitKind>& unit_kinds();

/// The kind of that name; null when there is none.
const UnitKind* find_unit_kind(std::string_view name);

/// The row a value names: its program name, its display name (any case) or its row number.
/// @return std::nullopt when the text names no row of the kind
std::optional<int> find_unit_value(const UnitKind& kind, std::string_view text);

/// The display name of a row ("US Survey feet"), from the library's string table.
std::string display_name(const UnitKind& kind, int row);

/// Names joined by ", ".
std::string joined(const std::vector<std::string_view>& names);

/// How quantities are shown.
class DisplayUnits {
public:
    /// @param raw true: metres and radians, and the settings store is not touched; false: the
    ///        user's units, read from the settings store (which is created with the library's
    ///        defaults on first use)
    explicit DisplayUnits(bool raw);
    /// The run's choices: --raw, --units (applied to a copy: the saved choices are only read),
    /// --precision and --angle-format. The options must have passed check_output_options.
    explicit DisplayUnits(const OutputOptions& options);

    bool raw() const { return !m_units.has_value(); }
    /// The user's units; only when not raw.
    const CQuantityUnits& units() const { return *m_units; }

    /// Each gives "-" for GEO_NULL. `raw_decimals` is used in raw mode only; in the user's
    /// units the decimals are the unit's own (3 for metres, 2 for feet).
    std::string distance(double metres, int raw_decimals) const; ///< horizontal
    std::string height(double metres, int raw_decimals) const;   ///< vertical
    std::string station(double metres, int raw_decimals) const;  ///< "12+34.57'"
    std::string bearing(double radians, int raw_decimals) const; ///< "36°52'12\""
    std::string grade(double radians, int raw_decimals) const;   ///< "1.440%"
    std::string angle(double radians, int raw_decimals) const;   ///< "0°42'17\"", angle units
    /// WGS84 latitude and longitude: "N52°05'55.32000\"" and "E5°12'53.70000\"" (raw: radians).
    std::string latitude(double radians, int raw_decimals) const;
    std::string longitude(double radians, int raw_decimals) const;
    /// The labels and texts of a grid position in the user's coordinate order (raw: north,
    /// east, elevation), e.g. {"North", "16404.17'"}.
    std::array<std::pair<std::string, std::string>, 3> position(const geo_nee& point,
                                                                int raw_decimals) const;

    /// Plain numbers for CSV and JSON Lines: distances and heights in the chosen units (metres
    /// when raw), angles in decimal degrees (radians when raw or with --angle-format rad).
    double plain_distance(double metres) const;
    double plain_height(double metres) const;
    double plain_angle(double radians) const;
    /// Decimals of plain distances: --precision, else -1 (every digit that tells the number).
    int precision() const { return m_precision; }
    /// The column-name suffix of plain distances and angles: "m", "usft", "ft"; "deg", "rad".
    std::string distance_suffix() const;
    std::string height_suffix() const;
    std::string angle_suffix() const;

    /// Sentences naming the units in use, for the foot of a table (one line raw, two lines
    /// otherwise, without a final line end).
    std::string legend() const;
    /// The unit choices as JSON: {"horizontal-distance": "us-survey-feet", ...}; empty when raw.
    nlohmann::json description() const;

private:
    std::string angle_text(double radians, int raw_decimals, char positive, char negative) const;

    std::optional<CQuantityUnits> m_units;
    int m_precision = -1;
    AngleFormat m_angles = AngleFormat::units;
};

} // namespace qv5::cli

#endif
