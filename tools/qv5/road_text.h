// A road as JSON text that says exactly what its road file holds - the point of beginning, each
// element's stored values, the profile, the templates' records and the applications - so a road
// file can be read, compared and edited as text and written back to the same bytes; and the
// loading of a road from either form, chosen by content.
#ifndef QV5_TOOLS_ROAD_TEXT_H
#define QV5_TOOLS_ROAD_TEXT_H

#include "csv_text.h"

#include "qv5/georoad.h"

#include <nlohmann/json.hpp>

#include <string>
#include <vector>

namespace qv5::cli {

/// The road's JSON: every value a road file stores, metres and radians, doubles exact
/// (shortest text that reads back to the same bits; "nan", "inf", "-inf" for non-finite values,
/// null for undefined).
nlohmann::ordered_json road_to_json(CGeoRoad& road);

/// Builds `road` from the JSON of road_to_json by the same edits a road file is read with.
/// @return false with `error` naming the field and what was wrong; the road is then reset
bool road_from_json(const nlohmann::ordered_json& text, CGeoRoad& road, std::string& error);

/// True when the bytes begin as a road file does ("Halvik QV5" and its zero).
bool looks_like_road_file(const std::string& bytes);

/// Why a road file could not be read, for a message: "truncated record at byte 1 234".
std::string describe_road_file_problem(const georoad_FileReport& report);

/// The forms a road comes in, told apart by content, never by the file's name.
enum class RoadForm {
    road_file,      ///< the binary road file ("Halvik QV5" at byte 0)
    road_file_text, ///< the road file's values as JSON (road_to_json, with its "format" field)
    description,    ///< the designer's JSON description (see docs/road-json.md)
    landxml         ///< a LandXML alignment (see docs/landxml.md)
};

/// The form of a file's content.
RoadForm road_form_of(const std::string& content);

/// Loads a road from a file in any of its forms (template files named by a description are
/// found beside it).
/// @param[out] form the form the file was found in
/// @param[out] errors what was wrong: for a road file or its text one problem of the file as a
///             whole; for a description every bad field with its line
/// @param alignment for a LandXML file, the alignment to read (needed only when the file holds
///        several; the errors then list them)
/// @return false when the road could not be loaded (it is then empty)
bool load_road(const std::string& path, CGeoRoad& road, RoadForm& form,
               std::vector<JobError>& errors, const std::string& alignment = {});

/// Reports load_road's errors on standard error: one line naming the file and what was wrong for
/// a road file or its text, each bad field and a verdict for a description.
void report_road_errors(const std::string& path, RoadForm form,
                        const std::vector<JobError>& errors);

/// load_road, reporting its errors on standard error when the road cannot be loaded.
/// @return false when the road could not be loaded (it is then empty)
bool load_road_or_report(const std::string& path, CGeoRoad& road,
                         const std::string& alignment = {});

/// Writes the road file (UTF-8 path). @return false when it could not be written
bool save_road_file(const std::string& path, CGeoRoad& road);

} // namespace qv5::cli

#endif
