// A road described as readable JSON: the point of beginning, the horizontal elements in the
// order a designer enters them, the PVIs, the templates (inline or by file) and their
// applications (see docs/road-json.md). The reader takes the whole text and either builds the
// road or reports every bad field with its place.
#ifndef QV5_TOOLS_ROAD_JSON_H
#define QV5_TOOLS_ROAD_JSON_H

#include "csv_text.h"

#include "qv5/georoad.h"

#include <functional>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

namespace qv5::cli {

/// At most this many horizontal elements, PVIs, templates or applications in one description.
inline constexpr std::size_t kMaxRoadItems = 100000;

/// Reads the text of a template file named in a road description (the name as written there);
/// std::nullopt when it cannot be read.
using TemplateFileReader = std::function<std::optional<std::string>(const std::string& name)>;

/// Reads a road description.
/// @param text the JSON text
/// @param read_template reads template files named by "file"; may be empty (every file is then
///        reported as unreadable)
/// @param[out] road the road, built from a Reset; Reset again when the text is not good (the
///             name is set only on success)
/// @param[out] errors every problem, each naming its place ("horizontal[2].radius: ..."), with
///             the line of a JSON syntax error
/// @return true when the text is a good road description
bool parse_road_json(std::string_view text, const TemplateFileReader& read_template, CGeoRoad& road,
                     std::vector<JobError>& errors);

} // namespace qv5::cli

#endif
