// A road as JSON text that says exactly what its road file holds - the point of beginning, each
// element's stored values, the profile, the templates' records and the applications - so a road
// file can be read, compared and edited as text and written back to the same bytes; and the
// loading of a road from either form, chosen by content.
#ifndef QV5_TOOLS_ROAD_TEXT_H
#define QV5_TOOLS_ROAD_TEXT_H

#include "qv5/georoad.h"

#include <nlohmann/json.hpp>

#include <string>

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

/// Loads a road from a file holding either a road file or its JSON, chosen by content.
/// @return false with `error` saying what was wrong (without the file's name)
bool load_road(const std::string& path, CGeoRoad& road, std::string& error);

/// Writes the road file (UTF-8 path). @return false when it could not be written
bool save_road_file(const std::string& path, CGeoRoad& road);

} // namespace qv5::cli

#endif
