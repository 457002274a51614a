// The problems of one row of a data file, collected field by field so that every bad field of
// the row is reported, each as "field: 'text' reason".
#ifndef QV5_TOOLS_ROW_ERRORS_H
#define QV5_TOOLS_ROW_ERRORS_H

#include "csv_text.h"

#include <string>
#include <string_view>
#include <vector>

namespace qv5::cli {

class RowErrors {
public:
    RowErrors(int line, std::vector<JobError>& errors) : m_line(line), m_errors(errors) {}

    void fail(std::string message);
    bool failed() const { return m_failed; }

    /// A latitude or longitude (see parse_angle); 0 when it fails.
    double angle(std::string_view text, bool latitude, std::string_view field);

    /// A number; with `optional`, empty text is `GEO_NULL`. 0 when it fails.
    double number(std::string_view text, std::string_view field, bool optional);

private:
    int m_line;
    std::vector<JobError>& m_errors;
    bool m_failed = false;
};

} // namespace qv5::cli

#endif
