#include "conversion_rows.h"

#include "row_errors.h"

#include <utility>

namespace qv5::cli {

bool is_conversion_header(const std::vector<std::string_view>& fields, ConversionTarget target) {
    const std::string head = lower(trim(fields.front()));
    return head == "name" || head == (target == ConversionTarget::grid ? "latitude" : "north");
}

bool read_conversion_fields(const std::vector<std::string_view>& fields, ConversionTarget target,
                            int line, ConversionInput& in, std::vector<JobError>& errors) {
    const bool to_grid = target == ConversionTarget::grid;
    RowErrors row(line, errors);
    if (fields.size() != 3 && fields.size() != 4) {
        row.fail(std::string("expected 3 or 4 fields ([name,]") +
                 (to_grid ? "latitude,longitude,height" : "north,east,elevation") + "), found " +
                 std::to_string(fields.size()));
        return false;
    }
    const std::size_t at = fields.size() - 3;
    in.name.assign(at == 1 ? trim(fields[0]) : std::string_view());
    in.line = line;
    if (to_grid) {
        in.a = row.angle(fields[at], true, "latitude");
        in.b = row.angle(fields[at + 1], false, "longitude");
        in.c = row.number(fields[at + 2], "height", true);
    } else {
        in.a = row.number(fields[at], "north", false);
        in.b = row.number(fields[at + 1], "east", false);
        in.c = row.number(fields[at + 2], "elevation", true);
    }
    return !row.failed();
}

bool parse_conversion_rows(std::string_view text, ConversionTarget target,
                           std::vector<ConversionInput>& inputs, std::vector<JobError>& errors) {
    inputs.clear();
    const std::size_t errors_before = errors.size();
    bool first = true;
    for_each_record(text, [&](int line, std::string_view record) {
        const std::vector<std::string_view> fields = split_fields(record);
        const bool header = first && is_conversion_header(fields, target);
        first = false;
        if (header) {
            return;
        }
        ConversionInput in{{}, 0.0, 0.0, GEO_NULL, line};
        if (read_conversion_fields(fields, target, line, in, errors)) {
            inputs.push_back(std::move(in));
        }
    });
    if (errors.size() != errors_before) {
        inputs.clear();
        return false;
    }
    return true;
}

} // namespace qv5::cli
