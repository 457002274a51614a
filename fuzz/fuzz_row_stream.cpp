// The reader of row streams must take any bytes without fault: lines read in blocks from a file,
// split into fields with every delimiter (quotes included), and read as positions to convert.
// What it accepts is a finite position within range, and a rejected row says why.
#include "conversion_rows.h"
#include "text_stream.h"

#include <cmath>
#include <cstddef>
#include <cstdint>
#include <cstdio>
#include <cstdlib>

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
    using namespace qv5::cli;
    std::FILE* file = std::tmpfile();
    if (file == nullptr) {
        return 0;
    }
    std::fwrite(data, 1, size, file);
    std::rewind(file);
    LineSource lines(file);
    FieldSplitter splitter;
    std::vector<std::string_view> fields;
    std::vector<JobError> errors;
    std::string_view line;
    std::size_t seen = 0;
    while (lines.next(line)) {
        seen += line.size() + 1;
        if (seen > size + 3 + lines.line_number()) {
            std::abort(); // more text handed out than there was
        }
        for (const Delimiter d : {Delimiter{Delimiter::comma, ','}, Delimiter{Delimiter::tab, '\t'},
                                  Delimiter{Delimiter::blanks, ' '}, detect_delimiter(line)}) {
            if (!splitter.split(line, d, fields)) {
                continue;
            }
            if (fields.empty() || fields.size() > line.size() + 1) {
                std::abort();
            }
            for (const ConversionTarget target :
                 {ConversionTarget::grid, ConversionTarget::wgs84}) {
                ConversionInput in{{}, 0.0, 0.0, 0.0, 0};
                errors.clear();
                const bool ok = read_conversion_fields(fields, target, 1, in, errors);
                if (ok != errors.empty() || !std::isfinite(in.a) || !std::isfinite(in.b) ||
                    !std::isfinite(in.c)) {
                    std::abort();
                }
                if (ok && target == ConversionTarget::grid &&
                    (std::fabs(in.a) > 1.5707963267948967 ||
                     std::fabs(in.b) > 3.1415926535897936)) {
                    std::abort();
                }
            }
        }
    }
    std::fclose(file);
    return 0;
}
