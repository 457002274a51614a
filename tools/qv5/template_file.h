// Cross-section templates as readable JSON files: a name and the ordered element list, with
// lengths in metres and angles in decimal degrees (see docs/template-json.md). The reader takes
// the whole text and either builds the template or reports every bad field with its place.
#ifndef QV5_TOOLS_TEMPLATE_FILE_H
#define QV5_TOOLS_TEMPLATE_FILE_H

#include "csv_text.h"

#include "qv5/geotemplate.h"

#include <string>
#include <string_view>
#include <vector>

namespace qv5::cli {

/// A template holds at most this many elements: a cross section with more is a mistake.
inline constexpr std::size_t kMaxTemplateElements = 1000;
/// A feature name is at most this many UTF-16 code units (the record's 33 with the terminator).
inline constexpr int kMaxFeatureNameUnits = 32;

/// The file's name for an element type ("grade-width"); "" for types the files do not use.
std::string_view template_type_name(geotemp_ElementType type);

/// Reads a template file.
/// @param[out] result the template (its name and elements) when the text is good; reset
///             otherwise
/// @param[out] errors every problem, each naming its place ("elements[2].width: ..."), with the
///             line of a JSON syntax error
/// @return true when the text is a good template file
bool parse_template(std::string_view text, CGeoTemplate& result, std::vector<JobError>& errors);

/// Reads a template file, reporting on standard error what is wrong with it (each bad field with
/// its place), the messages led by `command`. @return true when the file is a good template file
bool load_template_file(const std::string& command, const std::string& path, CGeoTemplate& result);

} // namespace qv5::cli

#endif
