/// @file units.h
/// The user's display units (`CQuantityUnits`): the unit chosen for each kind of quantity, kept
/// in the settings store; conversions between display units and the library's internal metres,
/// square and cubic metres and radians; and the formatting and parsing of quantities as text.
///
/// Every conversion passes `GEO_NULL` through. The unit choices are plain ints whose values are
/// the enumerators below: row indexes of the unit tables, fixed for good. Setters store what they
/// are given without checking; a choice outside its table makes conversions give `GEO_NULL`,
/// name lookups 0 and formatting leave the caller's buffer as it was.
///
/// Formatted texts are UTF-16 in a caller-supplied buffer of `unsigned short`, zero-terminated;
/// a buffer of CQuantityUnits::kFormatBufferSize units holds every text any member writes.
#ifndef QV5_UNITS_H
#define QV5_UNITS_H

#include "qv5/export.h"
#include "qv5/geodef.h"
#include "qv5/hostfw.h"

/// Units of horizontal distance (and, under the name units_VerticalDistance, of vertical
/// distance: the two kinds have separate choices with the same rows).
enum units_HorizontalDistance {
    units_Metres = 0,           ///< "Meters": 1 m per unit, 3 decimals, suffix "m"
    units_USSurveyFeet = 1,     ///< "US Survey feet": 0.3048006096012192 m, 2 decimals, "'"
    units_InternationalFeet = 2 ///< "International feet": 0.3048 m, 2 decimals, "'"
};
/// Units of vertical distance: the rows of units_HorizontalDistance.
typedef units_HorizontalDistance units_VerticalDistance;

/// Units of length (dimensions of things rather than distances on the ground).
enum units_Length {
    units_LengthMetres = 0,     ///< "Meters": 1 m, 3 decimals, "m"
    units_LengthFeet = 1,       ///< "Feet" (US survey): 0.3048006096012192 m, 2 decimals, "'"
    units_LengthInches = 2,     ///< "Inches" (US survey): 0.0254000508001016 m, 1 decimal, dq
    units_LengthCentimetres = 3 ///< "Centimeters": 0.01 m, 1 decimal, "cm"
};

/// Units of angles.
enum units_Angles {
    units_AngleDMS = 0, ///< degrees, minutes, seconds: DD°MM'SS"
    units_AngleGons = 1 ///< gons (400 to the turn)
};

/// Styles of bearings.
enum units_Bearings {
    units_BearingDMS = 0,           ///< whole-circle bearing in degrees, minutes, seconds
    units_BearingQuadrant = 1,      ///< quadrant bearing: N45°00'00"E
    units_BearingGons = 2,          ///< gons
    units_BearingDecimalDegrees = 3 ///< decimal degrees: DD.DDDD°
};

/// Zero of the vertical circle (kept in the settings store; no conversion uses it).
enum units_VerticalCircle {
    units_ZeroAtZenith = 0, ///< zenith angles
    units_ZeroLevel = 1     ///< vertical angles from the horizontal
};

/// Styles of grades.
enum units_Grade {
    units_GradePercent = 0, ///< percent: tan(angle) × 100, limited to ±999.999
    units_GradeRunRise = 1, ///< run per unit rise: 1 / tan(angle), "10.0:1"
    units_GradeRiseRun = 2  ///< written "1:run" with the run per unit rise
};

/// Styles of stations (shown for a station of 100 display units).
enum units_Stationing {
    units_Station100 = 0,     ///< "100.000": the plain distance
    units_Station1Plus00 = 1, ///< "1+00.000": hundreds, a plus, the rest
    units_Station10Plus0 = 2  ///< "10+0.000": tens, a plus, the rest
};

/// Units of area.
enum units_Area {
    units_SquareMetres = 0, ///< "m²"
    units_SquareFeet = 1,   ///< US survey square feet, "ft²"
    units_Acres = 2,        ///< 4046.8561188869207 m², "ac"
    units_Hectares = 3      ///< 10000 m², "ha"
};

/// Units of volume.
enum units_Volume {
    units_CubicMetres = 0, ///< "m³"
    units_CubicYards = 1   ///< 27 US survey cubic feet, "yd³"
};

/// Order in which coordinates are shown.
enum units_Coords {
    units_NorthEastElev = 0, ///< north first, labels N, E, Z
    units_EastNorthElev = 1, ///< east first, labels E, N, Z
    units_XYZ = 2            ///< east first, labels X, Y, Z
};

/// A coordinate triple for display.
struct units_yxz {
    double y; ///< north, metres
    double x; ///< east, metres
    double z; ///< elevation, metres
};

/// The user's choice of display unit for each kind of quantity, with conversions, formatting
/// and bearing parsing in those units.
///
/// The choices are read from the settings store when the object is made and written back when
/// it is destroyed, under the key the host names (a backslash-separated path under
/// HKEY_LOCAL_MACHINE; on Linux the store is the registry file named by `$QV5_REGISTRY`, else
/// `${XDG_CONFIG_HOME:-$HOME/.config}/qv5/registry.reg`). An empty key keeps the object away from
/// the store. A store that cannot be read or written leaves the defaults (or what was read) in
/// force; nothing fails and the host is never held up for more than about a second.
class QV5_API CQuantityUnits {
public:
    /// Code units that hold any text a formatting member writes, with its terminator.
    static constexpr int kFormatBufferSize = 64;
    /// Most decimals a formatting member prints: more are printed as this many, and fewer than
    /// zero as none.
    static constexpr int kMaxDecimals = 15;

    /// Builds the unit tables and the defaults (US survey feet for distances, feet for length,
    /// DMS angles and bearings, percent grades, "1+00.000" stations, square feet, cubic yards,
    /// north-east-elevation order, pop-ups enabled), then reads the choices stored under the key,
    /// creating the key if it is missing. A stored choice outside its table reads as 0.
    /// @param registryKey key path, e.g. "SOFTWARE\\Halvik\\QV5\\Units"; empty: no store
    explicit CQuantityUnits(const CString& registryKey);
    /// Copies everything, the key included (so both objects write back on destruction).
    CQuantityUnits(const CQuantityUnits& other);
    /// Copies everything, the key included.
    CQuantityUnits& operator=(const CQuantityUnits& other);
    /// Writes the eleven choices back under the key if it exists (as 4-byte REG_BINARY values).
    /// The pop-ups flag is not stored.
    virtual ~CQuantityUnits();

    /// @name Unit choices (values are the enumerators above; setters do not check)
    /// @{
    int HorizontalDistance() const;
    void SetHorizontalDistance(int units);
    int VerticalDistance() const;
    void SetVerticalDistance(int units);
    int Angles() const;
    void SetAngles(int units);
    int Bearings() const;
    void SetBearings(int style);
    int Length() const;
    void SetLength(int units);
    /// The vertical circle choice; it is read and stored but has no setter.
    int VerticalCircle() const;
    int Grade() const;
    void SetGrade(int style);
    int Stationing() const;
    void SetStationing(int style);
    int Area() const;
    void SetArea(int units);
    int Volume() const;
    void SetVolume(int units);
    int Coords() const;
    void SetCoords(int order);
    /// @}

    /// @name Display names
    /// The string-table id of the display name of a row (not of the current choice); load it
    /// with CString::LoadString. A row outside the table gives 0.
    /// @{
    unsigned int HorizontalDistanceString(int row) const;
    unsigned int VerticalDistanceString(int row) const;
    unsigned int LengthString(int row) const;
    unsigned int GradeString(int row) const;
    unsigned int StationingString(int row) const;
    unsigned int BearingsString(int row) const;
    unsigned int AreaString(int row) const;
    unsigned int VolumeString(int row) const;
    unsigned int CoordString(int row) const;
    /// The angles table's name of a row (completes the set for hosts that list every kind).
    unsigned int AnglesString(int row) const;
    /// The vertical circle table's name of a row (completes the set).
    unsigned int VerticalCircleString(int row) const;
    /// @}

    /// @name Default decimals of the current choice (0 for a choice outside its table)
    /// @{
    int HDistPrecision() const;
    int VDistPrecision() const;
    int LengthPrecision() const;
    /// @}

    /// Stores the pop-ups flag (it is not persisted).
    void EnablePopUps(int enable);
    /// The pop-ups flag; 1 unless the host disabled it.
    int PopUpsEnabled() const;

    /// @name Conversions
    /// To internal units: value × the current row's factor; from internal units: value ÷ it.
    /// `GEO_NULL` in gives `GEO_NULL` out, as does a choice outside its table. Bearings in
    /// quadrant style convert as degrees.
    /// @{
    double HDistanceToMetres(double value) const;
    double MetresToHDistance(double metres) const;
    double VDistanceToMetres(double value) const;
    double MetresToVDistance(double metres) const;
    double LengthToMetres(double value) const;
    double MetresToLength(double metres) const;
    double AngleToRadians(double value) const;
    double RadiansToAngle(double radians) const;
    double BearingToRadians(double value) const;
    double RadiansToBearing(double radians) const;
    double AreaToSquareMetres(double value) const;
    double SquareMetresToArea(double squareMetres) const;
    double VolumeToCubicMetres(double value) const;
    double CubicMetresToVolume(double cubicMetres) const;
    /// A grade in the current style to its angle of elevation (radians). Percent: atan(g/100);
    /// run : rise: atan(1/g), ±π/2 for |g| < 1e-7; rise : run: atan(g), ±π/2 for |g| > 1e7.
    double GradeToRadians(double grade) const;
    /// An angle of elevation (radians) to a grade in the current style. Percent: tan(a)·100,
    /// ±999.999 within 0.0997 rad of vertical; run : rise: 1/tan(a), 999.9 within 0.001 rad of
    /// level; rise : run: tan(a), 999.9 within 0.001 rad of vertical.
    double RadiansToGrade(double radians) const;
    /// @}

    /// @name Formatting
    /// Each writes into `buffer` and returns it (a null buffer gives a null result and writes
    /// nothing). `GEO_NULL` gives an empty text; a magnitude above 1e10 gives "Too large"
    /// (string 10046); a unit choice outside its table leaves the buffer as it was. Numbers are
    /// written with '.' whatever the locale; seconds are rounded by adding 0.5 and truncating,
    /// without carrying into the minutes (59.6 seconds print as 60).
    /// @{

    /// Horizontal distance: "%.*f" and "m" or "'" (feet). @param metres the distance
    const unsigned short* FormatHDistance(double metres, int decimals,
                                          unsigned short* buffer) const;
    /// Vertical distance, as FormatHDistance with the vertical distance choice.
    const unsigned short* FormatVDistance(double metres, int decimals,
                                          unsigned short* buffer) const;
    /// Length: "m", "'", "\"" (inches) or "cm".
    const unsigned short* FormatLength(double metres, int decimals, unsigned short* buffer) const;
    /// A station in the stationing style: "1234.500m", "12+34.500m" or "123+4.500m". The
    /// hundreds (or tens) carry a nudge of 1e-6 so that 200 prints as 2+00, not 1+100; a negative
    /// station has its minus before the hundreds only. The suffix is the horizontal distance's.
    const unsigned short* FormatStationing(double metres, int decimals,
                                           unsigned short* buffer) const;
    /// A grade angle (radians) as a percentage: "%.*f%", "999.999%" at or beyond +π/2 and
    /// "-999.999%" at or beyond -π/2, whatever the grade style.
    const unsigned short* FormatPercentGrade(double radians, int decimals,
                                             unsigned short* buffer) const;
    /// A grade angle (radians) in the grade style: "5.000%", "10.0:1" (run : rise) or "1:10.0"
    /// (rise : run, the run per unit rise after "1:"; a level grade gives "1:1000.0").
    /// `decimals` applies to percent only. The "Too large" rule does not apply: grades are
    /// limited instead.
    const unsigned short* FormatGrade(double radians, int decimals, unsigned short* buffer) const;
    /// Area: "m²", "ft²", "ac" or "ha".
    const unsigned short* FormatArea(double squareMetres, int decimals,
                                     unsigned short* buffer) const;
    /// Volume: "m³" or "yd³".
    const unsigned short* FormatVolume(double cubicMetres, int decimals,
                                       unsigned short* buffer) const;
    /// A bearing in the bearing style: "123°45'30\"", "S45°00'00\"E", "137.1875G" or
    /// "123.7583°". Quadrant: south strictly between π/2 and 3π/2, east from 0 to π inclusive.
    /// The bearing is not normalised first.
    const unsigned short* FormatBearing(double radians, unsigned short* buffer) const;
    /// A horizontal angle in the angle units: "123°45'30\"" or "137.1875G".
    const unsigned short* FormatHAngle(double radians, unsigned short* buffer) const;
    /// A bearing as the text of an edit field, read back by ParseBearing: "123.4530" (degrees,
    /// minutes and seconds as DDD.MMSS) for DMS and quadrant styles, "%.4f" of the bearing in
    /// gons or degrees otherwise.
    const unsigned short* FormatForEdit(double radians, unsigned short* buffer) const;
    /// A latitude: "N35°21'12.34567\"" (degrees unsigned, "S" when negative).
    const unsigned short* FormatLatitude(double radians, unsigned short* buffer) const;
    /// A longitude: "E...", or "W..." when negative.
    const unsigned short* FormatLongitude(double radians, unsigned short* buffer) const;

    /// The first coordinate in the coordinate order, as a horizontal distance at the default
    /// decimals: north ("N") for north-east-elevation, east ("E" or "X") otherwise.
    /// @param withLabel non-zero: "N 1234.567m"; zero: "1234.567m"
    /// @return result's text; `result` is left as it was for a `GEO_NULL` coordinate
    const unsigned short* FormatXOrdinate(const units_yxz& yxz, CString& result,
                                          int withLabel) const;
    /// The second coordinate: east ("E") for north-east-elevation, north ("N" or "Y") otherwise.
    /// Its null test is made on the coordinate FormatXOrdinate shows (hosts rely on that), so a
    /// `GEO_NULL` here with a set first coordinate prints as an empty value.
    const unsigned short* FormatYOrdinate(const units_yxz& yxz, CString& result,
                                          int withLabel) const;
    /// The elevation ("Z") as a vertical distance at the default decimals.
    const unsigned short* FormatZOrdinate(const units_yxz& yxz, CString& result,
                                          int withLabel) const;

    /// "Monday, March 3rd, 2025": day name, month name, day with its ordinal suffix, year.
    /// A day of the week or month outside its range gives an empty name.
    const unsigned short* FormatSystemDate(_SYSTEMTIME time, unsigned short* buffer) const;
    /// "Monday, March 3rd, 2025, 2:05PM": the date, then the 12-hour clock (midnight 12AM, noon
    /// 12PM).
    const unsigned short* FormatSystemTime(_SYSTEMTIME time, unsigned short* buffer) const;
    /// @}

    /// Reads a bearing typed in the bearing style, the inverse of FormatForEdit. DMS and
    /// quadrant: the number DDD.MMSS (no quadrant letters are read; the sign travels on the
    /// degrees only, so "-0.3000" loses it), brought into [0, 2π). Gons and decimal degrees: the
    /// number converted, not normalised. The number is read as wcstod reads it: leading blanks,
    /// the longest numeric prefix, 0 when there is none. A leading byte-order mark (U+FEFF) is
    /// skipped.
    /// @param text zero-terminated UTF-16
    /// @return radians; `GEO_NULL` for a null or empty text (or one that is only the mark), a
    /// number that is not finite, or a
    ///         bearing style outside its table
    double ParseBearing(const unsigned short* text) const;

private:
    /// One row of a unit table.
    struct UnitRow {
        unsigned int nameId; ///< string-table id of the display name
        double factor;       ///< internal units (m, m², m³, rad) per display unit
        int precision;       ///< default decimals (distances and length)
    };

    CString m_registryKey;
    /// The choices in the order: horizontal distance, vertical distance, angles, bearings,
    /// length, vertical circle, grade, stationing, area, volume, coords.
    int m_selection[11];
    int m_popUps;
    CString m_tooLarge;
    /// The unit tables of all kinds, one after the other in the order of m_selection.
    UnitRow m_rows[33];
    /// The choices as read from the store when the object was made, in the order of m_selection.
    int m_loaded[11];
    /// A bit per choice (bit k for m_selection[k]): the store held it exactly as it is written
    /// back. The destructor writes only choices changed since m_loaded or without this bit.
    unsigned m_storedExactly;
};

#endif // QV5_UNITS_H
