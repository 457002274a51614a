// Latitudes and longitudes as surveyors type them: decimal degrees or degrees, minutes and
// seconds, signed or with a hemisphere letter.
#ifndef QV5_TOOLS_DMS_H
#define QV5_TOOLS_DMS_H

#include <string>
#include <string_view>

namespace qv5::cli {

/// Reads an angle: decimal degrees ("52.0986", "-4.25") or degrees, minutes and seconds
/// separated by blanks, colons or the marks ° d ' " ′ ″ ("52 05 55.2", "52:05:55.2",
/// "52°05'55.2\"", "52d05'55.2\""), or degrees and decimal minutes with a colon or marks
/// ("52:05.92", "52d05.92'"), with either a leading sign or a hemisphere letter before or after
/// it (N or S for a latitude, E or W for a longitude).
/// @param latitude true for a latitude (|value| <= 90 degrees), false for a longitude (<= 180)
/// @param[out] why the reason when the text is refused
/// @return true with `radians` set, or false
bool parse_angle(std::string_view text, bool latitude, double& radians, std::string& why);

} // namespace qv5::cli

#endif
