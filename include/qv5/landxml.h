/// @file landxml.h
/// LandXML exchange: a road's horizontal alignment and vertical profile read from, and written
/// to, the LandXML 1.0-1.2 files that office design software exports and imports.
///
/// This is a component of its own beside the library (link `QV5::landxml`); it works on a
/// `CGeoRoad` through the library's public interface only. It reads `<Alignments>/<Alignment>`
/// with its `<CoordGeom>` of `<Line>`, `<Curve>` (circular arcs) and clothoid `<Spiral>`
/// elements, and `<Profile>/<ProfAlign>` of `<PVI>`, `<ParaCurve>` and `<CircCurve>`, in any of
/// the `<Units>` LandXML knows, converted on reading to metres and radians.
///
/// Conventions of the file, kept straight here:
/// - points are written "northing easting [elevation]";
/// - directions (`dir`, `dirStart`, `dirEnd`) are measured counter-clockwise from north in the
///   file's `directionUnit`, while the library's azimuths run clockwise from north;
/// - `rot="cw"` is a curve turning right, `rot="ccw"` one turning left.
///
/// Where an element gives coordinates they decide its geometry; a dimension or direction that
/// disagrees with them by more than the tolerance is reported as a warning with the element's
/// line and station, never silently followed. Elements the road cannot hold (spirals other than
/// clothoids, compound spirals between two finite radii, chord-defined curves, irregular lines)
/// are errors naming the element and its line: nothing is dropped or approximated.
#ifndef QV5_LANDXML_H
#define QV5_LANDXML_H

#include "qv5/geodef.h"
#include "qv5/georoad.h"

#include <string>
#include <string_view>
#include <vector>

#if defined(_WIN32)
#if defined(QV5_BUILDING_LANDXML)
#define QV5_LANDXML_API __declspec(dllexport)
#else
#define QV5_LANDXML_API __declspec(dllimport)
#endif
#else
#define QV5_LANDXML_API __attribute__((visibility("default")))
#endif

namespace qv5::landxml {

/// Length units of a LandXML file.
enum class LinearUnit {
    Meter,        ///< "meter"
    Foot,         ///< "foot": the international foot, 0.3048 m
    USSurveyFoot, ///< "USSurveyFoot": 1200/3937 m
};

/// Angle and direction units of a LandXML file.
enum class AngularUnit {
    Radians,        ///< "radians"
    DecimalDegrees, ///< "decimal degrees"
    Grads,          ///< "grads": 400 to the circle
};

/// One finding about the file.
struct Message {
    /// Line of the element in the file, counted from 1; 0 when the finding has no place.
    int line = 0;
    /// The element it concerns, e.g. "Curve"; empty for the file as a whole.
    std::string element;
    /// Station of the element in metres, `GEO_NULL` when not known.
    double station = GEO_NULL;
    /// What is wrong, in one sentence.
    std::string text;
};

/// One alignment found in a file.
struct AlignmentSummary {
    std::string name;            ///< its `name` attribute ("" when it has none)
    int line = 0;                ///< line of its `<Alignment>` element
    double start_station = 0.0;  ///< metres
    int horizontal_elements = 0; ///< `<Line>`, `<Curve>` and `<Spiral>` children of its geometry
    int profile_points = 0;      ///< `<PVI>`, `<ParaCurve>` and `<CircCurve>` of its first profile
};

/// How to read a file.
struct ReadOptions {
    /// Name of the alignment to read. Empty: the file must hold exactly one.
    std::string alignment;
    /// Metres: geometry given twice (a radius and its points, a spiral's end) that disagrees by
    /// more than this is reported as a warning.
    double tolerance = 0.001;
};

/// The outcome of reading.
struct ReadResult {
    /// True when the road now holds the alignment; false when `errors` says why not (the road
    /// is then reset, keeping its name).
    bool ok = false;
    std::vector<Message> errors;
    std::vector<Message> warnings;
    /// Every alignment of the file, in file order (also when reading failed, so that a caller
    /// can list them).
    std::vector<AlignmentSummary> alignments;
};

/// Lists the alignments of a LandXML document without building a road.
QV5_LANDXML_API ReadResult list_alignments(std::string_view xml);

/// Reads one alignment of a LandXML document into `road` (which is reset first; its name
/// becomes the alignment's name).
QV5_LANDXML_API ReadResult read_road(std::string_view xml, CGeoRoad& road,
                                     const ReadOptions& options = {});

/// How to write a file.
struct WriteOptions {
    LinearUnit linear = LinearUnit::Meter;
    AngularUnit angular = AngularUnit::DecimalDegrees;
    /// Date and time written on the root element ("2026-11-25", "10:15:00"); empty: now.
    std::string date;
    std::string time;
};

/// Writes the road's horizontal alignment and profile as a LandXML 1.2 document: each element
/// with its station, length, directions and its computed `Start`, `End`, `Center` and `PI`
/// points, numbers with enough digits to read back to the same double.
QV5_LANDXML_API std::string write_road(CGeoRoad& road, const WriteOptions& options = {});

/// True when the text looks like a LandXML document (its root element is `LandXML`, with or
/// without a namespace prefix, after an optional byte-order mark and XML declaration).
QV5_LANDXML_API bool looks_like_landxml(std::string_view text);

} // namespace qv5::landxml

#endif // QV5_LANDXML_H
