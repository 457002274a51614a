// `qv5 convert`: WGS84 to site grid and back through a saved calibration, for positions given as
// arguments or as a stream of rows from a file or standard input. Rows are read, converted and
// written one at a time in large blocks, so a stream of any length runs in the same memory and
// each result follows its row without waiting for the end.
#include "args.h"
#include "calibration.h"
#include "calibration_json.h"
#include "commands.h"
#include "conversion_rows.h"
#include "dms.h"
#include "output.h"
#include "output_options.h"
#include "text_stream.h"
#include "units_output.h"

#include "qv5/qv5lib.h"

#include <fmt/format.h>

#include <cmath>
#include <cstdio>
#include <memory>

namespace qv5::cli {
namespace {

struct ConvertOptions {
    std::string calibration_file;
    std::string to;
    std::vector<std::string> values;
};

/// The positions given on the command line, three values each. @return false with every bad
/// argument reported
bool read_arguments(const ConvertOptions& options, ConversionTarget target,
                    std::vector<ConversionInput>& inputs) {
    const bool to_grid = target == ConversionTarget::grid;
    const char* names[3] = {to_grid ? "latitude" : "north", to_grid ? "longitude" : "east",
                            to_grid ? "height" : "elevation"};
    if (options.values.size() % 3 != 0) {
        report_error(fmt::format("convert: give {}, {} and {} for each point ({} values given), "
                                 "or one file of rows ('-' for standard input)",
                                 names[0], names[1], names[2], options.values.size()));
        return false;
    }
    bool ok = true;
    const std::size_t count = options.values.size() / 3;
    for (std::size_t k = 0; k < count; ++k) {
        const std::string suffix = count > 1 ? " " + std::to_string(k + 1) : "";
        double v[3] = {0.0, 0.0, 0.0};
        for (std::size_t j = 0; j < 3; ++j) {
            const std::string& text = options.values[3 * k + j];
            const std::string name = names[j] + suffix;
            if (to_grid && j < 2) {
                std::string why;
                if (!parse_angle(text, j == 0, v[j], why)) {
                    report_error("convert: argument '" + name + "': '" + text + "' " + why);
                    ok = false;
                }
            } else if (!parse_number(text, v[j])) {
                report_error("convert: " + not_a_number(name, text));
                ok = false;
            }
        }
        inputs.push_back(ConversionInput{std::string(), v[0], v[1], v[2], 0});
    }
    return ok;
}

/// Writes converted positions in the run's format, one row at a time.
class ConvertedWriter {
public:
    ConvertedWriter(BlockWriter& out, OutputFormat format, ConversionTarget target,
                    const DisplayUnits& show, std::string calibration)
        : m_out(out), m_buf(out.buffer()), m_format(format),
          m_to_grid(target == ConversionTarget::grid), m_show(show),
          m_calibration(std::move(calibration)) {}

    void begin() {
        switch (m_format) {
        case OutputFormat::table: {
            const auto heads = m_show.position(geo_nee{0.0, 0.0, 0.0}, 4);
            const std::string grid =
                fmt::format("{:>16}{:>16}{:>12}", heads[0].first, heads[1].first, heads[2].first);
            const std::string wgs84 =
                fmt::format("{:>20}{:>20}{:>12}", "Latitude", "Longitude", "Height");
            fmt::format_to(std::back_inserter(m_buf), "{:<12}{}\n", "Point",
                           m_to_grid ? wgs84 + grid : grid + wgs84);
            break;
        }
        case OutputFormat::csv: {
            const std::string angle = m_show.angle_suffix();
            const std::string h = m_show.height_suffix();
            const std::string d = m_show.distance_suffix();
            const std::string wgs84 = fmt::format("latitude_{0},longitude_{0},height_m", angle);
            const std::string grid = fmt::format("north_{0},east_{0},elevation_{1}", d, h);
            fmt::format_to(std::back_inserter(m_buf), "name,{},{}\n", m_to_grid ? wgs84 : grid,
                           m_to_grid ? grid : wgs84);
            break;
        }
        case OutputFormat::json:
            m_buf.append(std::string_view("{\n  \"calibration\": "));
            append_json_string(m_buf, m_calibration);
            fmt::format_to(std::back_inserter(m_buf), ",\n  \"to\": \"{}\",\n  \"points\": [",
                           m_to_grid ? "grid" : "wgs84");
            break;
        case OutputFormat::jsonl:
            break;
        }
        m_out.row_done();
    }

    /// A comment line of the input, passed through where the format has room for it.
    void comment(std::string_view line) {
        if (m_format == OutputFormat::table || m_format == OutputFormat::csv) {
            m_buf.append(line);
            m_buf.push_back('\n');
            m_out.row_done();
        }
    }

    /// @param outside whether the point lies far outside the calibration's control points
    void row(std::string_view name, const geo_nee& grid, const geo_llh& wgs84, bool outside) {
        switch (m_format) {
        case OutputFormat::table:
            table_row(name, grid, wgs84);
            break;
        case OutputFormat::csv:
            csv_row(name, grid, wgs84);
            break;
        case OutputFormat::json:
            m_buf.append(std::string_view(m_rows == 0 ? "\n    " : ",\n    "));
            json_row(name, grid, wgs84, outside);
            break;
        case OutputFormat::jsonl:
            json_row(name, grid, wgs84, outside);
            m_buf.push_back('\n');
            break;
        }
        ++m_rows;
        m_out.row_done();
    }

    void end() {
        if (m_format == OutputFormat::table) {
            m_buf.append(m_show.legend());
            m_buf.push_back('\n');
        } else if (m_format == OutputFormat::json) {
            m_buf.append(std::string_view(m_rows == 0 ? "]" : "\n  ]"));
            if (!m_show.raw()) {
                m_buf.append(std::string_view(",\n  \"units\": "));
                m_buf.append(m_show.description().dump());
            }
            m_buf.append(std::string_view("\n}\n"));
        }
        m_out.flush();
    }

private:
    void table_row(std::string_view name, const geo_nee& grid, const geo_llh& wgs84) {
        const auto g = m_show.position(grid, 4);
        const std::string grid_text =
            fmt::format("{:>16}{:>16}{:>12}", g[0].second, g[1].second, g[2].second);
        const std::string wgs84_text =
            fmt::format("{:>20}{:>20}{:>12}", m_show.latitude(wgs84.lat, 11),
                        m_show.longitude(wgs84.lon, 11), m_show.height(wgs84.height, 4));
        fmt::format_to(std::back_inserter(m_buf), "{:<12}{}\n", escape_control(name),
                       m_to_grid ? wgs84_text + grid_text : grid_text + wgs84_text);
    }

    void plain(double value, int decimals) {
        if (value != GEO_NULL) {
            append_number(m_buf, value, decimals);
        }
    }

    void plain_angle(double radians, bool latitude) {
        if (radians == GEO_NULL) {
            return;
        }
        if (output_options().angles() == AngleFormat::dms) {
            append_csv_field(m_buf, latitude ? m_show.latitude(radians, 11)
                                             : m_show.longitude(radians, 11));
            return;
        }
        append_number(m_buf, m_show.plain_angle(radians));
    }

    void csv_row(std::string_view name, const geo_nee& grid, const geo_llh& wgs84) {
        const int p = m_show.precision();
        append_csv_field(m_buf, name);
        const auto wgs84_fields = [&] {
            m_buf.push_back(',');
            plain_angle(wgs84.lat, true);
            m_buf.push_back(',');
            plain_angle(wgs84.lon, false);
            m_buf.push_back(',');
            plain(wgs84.height, p);
        };
        const auto grid_fields = [&] {
            m_buf.push_back(',');
            plain(m_show.plain_distance(grid.north), p);
            m_buf.push_back(',');
            plain(m_show.plain_distance(grid.east), p);
            m_buf.push_back(',');
            plain(m_show.plain_height(grid.elev), p);
        };
        if (m_to_grid) {
            wgs84_fields();
            grid_fields();
        } else {
            grid_fields();
            wgs84_fields();
        }
        m_buf.push_back('\n');
    }

    void member(std::string_view key, double value, double scale = 1.0) {
        fmt::format_to(std::back_inserter(m_buf), ", \"{}\": ", key);
        if (value == GEO_NULL) {
            m_buf.append(std::string_view("null"));
        } else {
            append_number(m_buf, value * scale);
        }
    }

    void text_member(std::string_view key, const std::string& text, bool first = false) {
        fmt::format_to(std::back_inserter(m_buf), "{}\"{}\": ", first ? "" : ", ", key);
        append_json_string(m_buf, text);
    }

    void json_row(std::string_view name, const geo_nee& grid, const geo_llh& wgs84, bool outside) {
        m_buf.append(std::string_view("{\"name\": "));
        append_json_string(m_buf, name);
        member("latitude_rad", wgs84.lat);
        member("longitude_rad", wgs84.lon);
        member("latitude_deg", wgs84.lat, kDegreesPerRadian);
        member("longitude_deg", wgs84.lon, kDegreesPerRadian);
        member("height", wgs84.height);
        member("north", grid.north);
        member("east", grid.east);
        member("elevation", grid.elev);
        m_buf.append(outside ? std::string_view(", \"outside_calibration\": true")
                             : std::string_view(", \"outside_calibration\": false"));
        if (!m_show.raw()) {
            m_buf.append(std::string_view(", \"formatted\": {"));
            text_member("latitude", m_show.latitude(wgs84.lat, 11), true);
            text_member("longitude", m_show.longitude(wgs84.lon, 11));
            text_member("height", m_show.height(wgs84.height, 4));
            text_member("north", m_show.distance(grid.north, 4));
            text_member("east", m_show.distance(grid.east, 4));
            text_member("elevation", m_show.height(grid.elev, 4));
            m_buf.push_back('}');
        }
        m_buf.push_back('}');
    }

    BlockWriter& m_out;
    fmt::memory_buffer& m_buf;
    OutputFormat m_format;
    bool m_to_grid;
    const DisplayUnits& m_show;
    std::string m_calibration;
    std::uint64_t m_rows = 0;
};

bool usable(double value) {
    return value != GEO_NULL && std::isfinite(value);
}

/// Converts one position. @return false, with the reason, when the answer cannot be computed
bool convert_one(CGeoTransformation& t, ConversionTarget target, const ConversionInput& in,
                 geo_nee& grid, geo_llh& wgs84, std::string& why) {
    if (target == ConversionTarget::grid) {
        wgs84 = geo_llh{in.a, in.b, in.c};
        t.Forward(wgs84, grid);
        if (!usable(grid.north) || !usable(grid.east) || (in.c != GEO_NULL && !usable(grid.elev))) {
            why = "cannot be computed: the calibration gives no finite grid position here";
            return false;
        }
        return true;
    }
    grid = geo_nee{in.a, in.b, in.c};
    t.Reverse(grid, wgs84);
    if (!usable(wgs84.lat) || !usable(wgs84.lon) || (in.c != GEO_NULL && !usable(wgs84.height))) {
        why = "cannot be computed: the calibration gives no finite WGS84 position here";
        return false;
    }
    return true;
}

/// Whether a converted point lies far outside the calibration's control points, so far that the
/// conversion carries the fitted similarity and plane a long way; says so on standard error.
/// @param source where the row came from ("FILE", "standard input"), or the command's name for
///        a position given as arguments
/// @param line the row's line number, or 0 for an argument
bool warn_if_outside(CGeoTransformation& t, const geo_nee& grid, const std::string& source,
                     long long line) {
    double distance = GEO_NULL;
    double limit = GEO_NULL;
    if (qv5::CalibrationReach(t, grid, distance, limit) != 1) {
        return false;
    }
    const std::string where = line > 0 ? fmt::format("{}:{}", source, line) : source;
    const std::string how_far = distance == GEO_NULL ? std::string("farther than can be measured")
                                                     : fmt::format("{:.0f} m", distance);
    report_error(fmt::format("{}: warning: the point lies {} outside the calibration's control "
                             "points (more than {:.0f} m): the calibration is extrapolated",
                             where, how_far, limit));
    return true;
}

/// Converts the rows of a stream. @return the exit status
int convert_stream(std::FILE* file, const std::string& source, CGeoTransformation& t,
                   ConversionTarget target, ConvertedWriter& writer, BlockWriter& out) {
    const OutputOptions& options = output_options();
    LineSource lines(file);
    FieldSplitter splitter;
    Delimiter delimiter = named_delimiter(options.delimiter);
    bool delimiter_known = !options.delimiter.empty();
    bool first = true;
    std::vector<std::string_view> fields;
    std::vector<JobError> errors;
    ConversionInput in{{}, 0.0, 0.0, GEO_NULL, 0};
    long long bad = 0;
    Progress progress(options.progress);
    const auto report = [&](long long line, const std::string& message) {
        report_error(fmt::format("{}:{}: {}", source, line, message));
        ++bad;
    };
    std::string_view line;
    while (lines.next(line)) {
        const std::string_view text = trim(line);
        if (text.empty()) {
            continue;
        }
        if (text.front() == '#') {
            writer.comment(line);
            continue;
        }
        const int line_number = static_cast<int>(lines.line_number());
        if (lines.cut()) {
            report(line_number,
                   fmt::format("the line is longer than {} bytes", LineSource::kMaxLine));
        } else {
            if (!delimiter_known) {
                delimiter = detect_delimiter(text);
                delimiter_known = true;
            }
            if (!splitter.split(text, delimiter, fields)) {
                report(line_number, "a quoted field is not closed, or text follows its quote");
            } else if (first && is_conversion_header(fields, target)) {
                first = false;
                continue;
            } else {
                errors.clear();
                std::string why;
                geo_nee grid{};
                geo_llh wgs84{};
                if (!read_conversion_fields(fields, target, line_number, in, errors)) {
                    for (const JobError& e : errors) {
                        report(line_number, e.message);
                    }
                } else if (!convert_one(t, target, in, grid, wgs84, why)) {
                    report(line_number, why);
                } else {
                    const bool outside = warn_if_outside(t, grid, source, line_number);
                    writer.row(in.name, grid, wgs84, outside);
                }
            }
        }
        first = false;
        progress.row();
        if (bad > 0 && options.strict) {
            writer.end();
            report_error("convert: stopped at the first bad row (--strict)");
            return kExitBadData;
        }
        if (out.failed()) {
            break;
        }
    }
    writer.end();
    if (lines.failed()) {
        report_error("convert: " + source + ": cannot be read to the end");
        return kExitBadData;
    }
    if (out.failed()) {
        report_error("convert: the output cannot be written");
        return kExitBadData;
    }
    if (bad > 0) {
        report_error(fmt::format("convert: {} bad row(s) skipped", bad));
        return kExitBadData;
    }
    return 0;
}

int run_convert(const ConvertOptions& options) {
    const ConversionTarget target =
        options.to == "grid" ? ConversionTarget::grid : ConversionTarget::wgs84;
    const bool from_stream = options.values.size() <= 1;
    std::vector<ConversionInput> inputs;
    if (!from_stream && !read_arguments(options, target, inputs)) {
        return kExitBadArguments;
    }

    std::string text;
    if (!read_whole_file(options.calibration_file, text)) {
        report_error("convert: cannot read calibration '" + options.calibration_file + "'");
        return kExitBadData;
    }
    SavedCalibration saved;
    std::vector<JobError> errors;
    if (!parse_calibration_json(text, saved, errors)) {
        report_file_errors(options.calibration_file, errors, "convert: calibration rejected");
        return kExitBadData;
    }
    CGeoTransformation transformation;
    geotrans_Error error = geotrans_NoError;
    if (!build_calibration(saved, transformation, error)) {
        report_error("convert: " + options.calibration_file +
                     ": the calibration cannot be solved with these points");
        return kExitBadData;
    }
    if (std::string which; !calibration_is_finite(transformation, which)) {
        report_error("convert: " + options.calibration_file + ": the calibration cannot be used: " +
                     "its " + which + " is not a finite number");
        return kExitBadData;
    }

    std::FILE* file = stdin;
    std::string source = "standard input";
    std::unique_ptr<std::FILE, int (*)(std::FILE*)> opened(nullptr, &std::fclose);
    if (from_stream && options.values.size() == 1 && options.values[0] != "-") {
        source = options.values[0];
        opened.reset(std::fopen(source.c_str(), "rb"));
        if (!opened) {
            report_error("convert: cannot read '" + source + "'");
            return kExitBadData;
        }
        file = opened.get();
    }

    const DisplayUnits show(output_options());
    BlockWriter out(stdout);
    ConvertedWriter writer(out, output_options().format(), target, show, options.calibration_file);
    writer.begin();
    if (from_stream) {
        return convert_stream(file, source, transformation, target, writer, out);
    }
    int status = 0;
    for (const ConversionInput& in : inputs) {
        geo_nee grid{};
        geo_llh wgs84{};
        std::string why;
        if (convert_one(transformation, target, in, grid, wgs84, why)) {
            const bool outside = warn_if_outside(transformation, grid, "convert", 0);
            writer.row(in.name, grid, wgs84, outside);
        } else {
            report_error("convert: " + why);
            status = kExitBadData;
        }
    }
    writer.end();
    return status;
}

} // namespace

CommandRunner add_convert_options(CLI::App& cmd) {
    auto options = std::make_shared<ConvertOptions>();
    cmd.add_option("--calibration", options->calibration_file,
                   "Calibration JSON written by 'qv5 calibrate --save'")
        ->required();
    cmd.add_option("--to", options->to, "grid (from WGS84) or wgs84 (from grid)")
        ->required()
        ->check(CLI::IsMember({"grid", "wgs84"}));
    cmd.add_option("values", options->values,
                   "LATITUDE LONGITUDE HEIGHT (to grid) or NORTH EAST ELEVATION (to wgs84), "
                   "repeated; or one FILE of rows, '-' or nothing for standard input. Angles in "
                   "decimal degrees or D:M:S with N/S/E/W");
    return [options] { return run_convert(*options); };
}

} // namespace qv5::cli

QV5_COMMAND("convert",
            "Convert WGS84 positions to site grid coordinates, or back, through a saved "
            "calibration (positions as arguments, or rows from a file or standard input)",
            qv5::cli::add_convert_options);
