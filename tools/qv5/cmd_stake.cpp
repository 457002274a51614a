// `qv5 stake`, the program's main job: measured positions (WGS84 through a site calibration, or
// grid) placed against a road design: station, offset and side, design elevation, cut or fill,
// centreline elevation, azimuth, grade and the nearest significant station. `--at` gives the
// position of a station and offset to stake, `--section` the road surface across a line.
//
// Rows stream from arguments, a file or standard input to standard output in input order, in
// blocks evaluated by several threads, each with its own road iterator; a bad row is reported
// on standard error with its line number and the run goes on.
#include "args.h"
#include "calibration.h"
#include "calibration_json.h"
#include "commands.h"
#include "control_points_csv.h"
#include "csv_text.h"
#include "output.h"
#include "output_options.h"
#include "road_json.h"
#include "road_text.h"
#include "stake_rows.h"
#include "text_stream.h"
#include "units_output.h"

#include "qv5/qv5lib.h"

#include <fmt/format.h>

#include <unistd.h>

#include <algorithm>
#include <atomic>
#include <cstdio>
#include <cstdlib>
#include <filesystem>
#include <fstream>
#include <iostream>
#include <memory>
#include <optional>
#include <sstream>
#include <thread>

namespace qv5::cli {
namespace {

namespace fs = std::filesystem;

/// Rows evaluated together before their results are written.
constexpr std::size_t kBlockRows = 2048;
/// Default distance within which a shot's station is named by a significant station, metres.
constexpr double kDefaultSnap = 1.0;

/// The run's output; JSON Lines (one object per shot) applies to streams of shots, and a single
/// answer (--at, --section) is one JSON document either way.
enum class Format { text, json, jsonl, csv };

struct StakeOptions {
    std::string road_file;
    std::string alignment; ///< of a LandXML road file that holds several
    std::string calibration_file;
    std::string control_file;
    std::string input_file;
    bool grid = false;
    std::vector<std::string> values;
    std::vector<std::string> at;
    std::vector<std::string> section;
    bool json = false;
    bool jsonl = false;
    bool csv = false;
    bool raw = false;
    int threads = 0;
    double snap = kDefaultSnap;
};

/// A bundled data file: beside an installed program, else in the source tree it was built from.
fs::path data_path(const char* file) {
    if (const char* dir = std::getenv("QV5_DATA_DIR"); dir != nullptr && *dir != '\0') {
        return fs::path(dir) / file;
    }
    std::error_code error;
    const fs::path exe = fs::read_symlink("/proc/self/exe", error);
    if (!error) {
        const fs::path installed = exe.parent_path().parent_path() / QV5_INSTALL_DATA_SUBDIR / file;
        if (fs::exists(installed, error)) {
            return installed;
        }
    }
    return fs::path(QV5_SOURCE_DATA_DIR) / file;
}

bool load_stake_road(const std::string& file, const std::string& alignment, CGeoRoad& road) {
    if (!std::ifstream(file)) {
        report_error("stake: cannot read road '" + file + "'");
        return false;
    }
    if (!load_road_or_report(file, road, alignment)) {
        return false;
    }
    if (road.NumberHorizontalElements() == 0) {
        report_error("stake: " + file + ": the road has no horizontal elements");
        return false;
    }
    return true;
}

bool load_calibration(const StakeOptions& o, CGeoTransformation& transformation) {
    const bool saved = !o.calibration_file.empty();
    const std::string& file = saved ? o.calibration_file : o.control_file;
    std::string text;
    if (!read_whole_file(file, text)) {
        report_error("stake: cannot read calibration '" + file + "'");
        return false;
    }
    SavedCalibration calibration;
    std::vector<JobError> errors;
    const bool read = saved ? parse_calibration_json(text, calibration, errors)
                            : parse_control_points(text, calibration.points, errors);
    if (!read) {
        report_file_errors(file, errors, "stake: calibration rejected");
        return false;
    }
    geotrans_Error error = geotrans_NoError;
    if (!build_calibration(calibration, transformation, error)) {
        report_error("stake: " + file + ": the calibration cannot be solved with these points");
        return false;
    }
    return true;
}

std::string side_text(double offset) {
    return offset > 0.0 ? "R" : (offset < 0.0 ? "L" : "CL");
}

std::string cut_fill_text(const DisplayUnits& show, double cut) {
    if (show.raw()) {
        return fixed(cut, 4);
    }
    return (cut >= 0.0 ? "C " : "F ") + show.height(std::fabs(cut), 3);
}

std::string note_of(const StakeResult& r) {
    std::string note = surface_name(r.surface);
    if (r.before_start) {
        note += ", before road start";
    }
    if (r.past_end) {
        note += ", past road end";
    }
    return note;
}

/// Writes the results of one kind of output, row by row.
class StakeWriter {
public:
    StakeWriter(Format format, const DisplayUnits& show, std::string road_name,
                nlohmann::ordered_json files)
        : m_format(format), m_show(show), m_road(std::move(road_name)), m_files(std::move(files)) {}

    void begin() {
        if (m_format == Format::text) {
            std::cout << fmt::format("{:<10}{:>14}{:>12}{:>4}{:>11}{:>12}{:>11}{:>15}{:>10}  {}\n",
                                     "Point", "Station", "Offset", "", "Design", "Cut/Fill",
                                     "CL elev", "Azimuth", "Grade", "Near / surface");
        } else if (m_format == Format::csv) {
            std::cout << "name,station,offset,side,design_elevation,cut_fill,"
                         "centreline_elevation,azimuth,grade,surface,catch_offset,"
                         "significant_station,significant_kind,north,east,elevation\n";
        } else if (m_format == Format::json) {
            nlohmann::ordered_json head = {{"road", m_road}, {"files", m_files}};
            std::string text = head.dump(2);
            text.resize(text.size() - 2); // the closing line break and brace: the shots follow
            std::cout << text << ",\n  \"shots\": [";
        }
    }

    /// The output of one staked shot, into `line` (whose storage is reused).
    void row(const Shot& shot, const StakeResult& r, std::string& line) const {
        if (m_format == Format::text) {
            std::string near = "-";
            if (r.significant_station != GEO_NULL) {
                near = m_show.station(r.significant_station, 3) + " " +
                       transition_name(r.significant_type);
            }
            line = fmt::format("{:<10}{:>14}{:>12}{:>4}{:>11}{:>12}{:>11}{:>15}{:>10}  {} / {}\n",
                               shot.name, m_show.station(r.station, 3),
                               m_show.distance(m_show.raw() ? r.offset : std::fabs(r.offset), 3),
                               side_text(r.offset), m_show.height(r.design, 3),
                               cut_fill_text(m_show, r.cut), m_show.height(r.centreline, 3),
                               m_show.bearing(r.azimuth, 6), m_show.grade(r.grade, 6), near,
                               note_of(r));
            return;
        }
        if (m_format == Format::csv) {
            // Every column in metres and radians, whatever the user's units: a station in a
            // stationing style beside offsets in metres would read as one unit and be another.
            const bool sig = r.significant_station != GEO_NULL;
            fmt::memory_buffer out;
            append_csv_field(out, shot.name);
            const auto text = [&out](std::string_view value) {
                out.push_back(',');
                out.append(value);
            };
            const auto number = [&out](double value, int decimals) {
                out.push_back(',');
                append_fixed(out, value, decimals);
            };
            const auto optional = [&out](bool present, double value) {
                out.push_back(',');
                if (present) {
                    append_fixed(out, value, 4);
                }
            };
            number(r.station, 4);
            number(r.offset, 4);
            text(side_text(r.offset));
            number(r.design, 4);
            number(r.cut, 4);
            number(r.centreline, 4);
            number(r.azimuth, 8);
            number(r.grade, 8);
            text(surface_name(r.surface));
            optional(r.catch_offset != GEO_NULL, r.catch_offset);
            optional(sig, r.significant_station);
            text(sig ? transition_name(r.significant_type) : std::string());
            number(r.grid.north, 4);
            number(r.grid.east, 4);
            number(r.grid.elev, 4);
            out.push_back('\n');
            line.assign(out.data(), out.size());
            return;
        }

        nlohmann::ordered_json j = {
            {"name", shot.name},
            {"station", json_number(r.station)},
            {"offset", json_number(r.offset)},
            {"side", side_text(r.offset)},
            {"design_elevation", json_number(r.design)},
            {"cut_fill", json_number(r.cut)},
            {"centreline_elevation", json_number(r.centreline)},
            {"azimuth_rad", json_number(r.azimuth)},
            {"grade_rad", json_number(r.grade)},
            {"surface", surface_name(r.surface)},
            {"catch_offset", json_number(r.catch_offset)},
            {"significant_station", json_number(r.significant_station)},
            {"significant_kind", r.significant_station == GEO_NULL
                                     ? nlohmann::ordered_json()
                                     : nlohmann::ordered_json(transition_name(r.significant_type))},
            {"grid", {{"north", r.grid.north}, {"east", r.grid.east}, {"elevation", r.grid.elev}}},
            {"before_start", r.before_start},
            {"past_end", r.past_end}};
        if (!m_show.raw()) {
            j["formatted"] = {{"station", m_show.station(r.station, 3)},
                              {"offset", m_show.distance(std::fabs(r.offset), 3)},
                              {"design_elevation", m_show.height(r.design, 3)},
                              {"cut_fill", cut_fill_text(m_show, r.cut)},
                              {"azimuth", m_show.bearing(r.azimuth, 6)},
                              {"grade", m_show.grade(r.grade, 6)}};
        }
        line = j.dump(-1);
    }

    /// Appends a row's text to `out`, which the caller writes a block at a time.
    void write(const std::string& text, std::string& out) {
        if (m_format == Format::json) {
            out += m_rows == 0 ? "\n    " : ",\n    ";
            out += text;
        } else if (m_format == Format::jsonl) {
            out += text;
            out += '\n';
        } else {
            out += text;
        }
        ++m_rows;
    }

    void end() {
        if (m_format == Format::text) {
            std::cout << m_show.legend() << '\n';
        } else if (m_format == Format::json) {
            std::cout << (m_rows == 0 ? "]" : "\n  ]");
            if (!m_show.raw()) {
                std::cout << ",\n  \"units\": " << m_show.description().dump();
            }
            std::cout << "\n}\n";
        }
    }

private:
    Format m_format;
    const DisplayUnits& m_show;
    std::string m_road;
    nlohmann::ordered_json m_files;
    std::size_t m_rows = 0;
};

/// One row of input and, once evaluated, its output or its problem.
struct Row {
    int line = 0;
    std::string text;
    Shot shot;
    RowKind kind = RowKind::skipped;
    std::string output;
    std::string problem;
};

/// Evaluates the rows of a block on `workers` threads, each with its own iterator and its own
/// copy of the calibration (a calibration is used by one thread at a time).
class BlockEvaluator {
public:
    BlockEvaluator(CGeoRoad& road, const CGeoTransformation* calibration, ShotCoordinates coords,
                   double snap, int workers, const StakeWriter& writer)
        : m_road(road), m_coords(coords), m_snap(snap), m_writer(writer),
          m_workers(static_cast<std::size_t>(workers)) {
        for (Worker& w : m_workers) {
            w.iterator.Set(&road);
            if (calibration != nullptr) {
                w.calibration = std::make_unique<CGeoTransformation>(*calibration);
            }
        }
    }

    /// Starts evaluating the rows on the worker threads and returns at once, so that the caller
    /// can write the block before and read the block after meanwhile. Call `wait` before
    /// touching the rows again, and before the next `start`.
    void start(std::vector<Row>& rows) {
        m_next.store(0, std::memory_order_relaxed);
        const std::size_t workers =
            std::min(m_workers.size(), (rows.size() + kRowsPerTake - 1) / kRowsPerTake);
        for (std::size_t w = 0; w < workers; ++w) {
            m_threads.emplace_back([this, &rows, w] { run(rows, w); });
        }
    }

    /// Waits until the rows handed to `start` are evaluated.
    void wait() {
        for (std::thread& t : m_threads) {
            t.join();
        }
        m_threads.clear();
    }

    ~BlockEvaluator() { wait(); }

private:
    /// Rows a worker takes at a time: workers that take small runs in turn finish a block
    /// together, whatever the rows cost (a shot near a significant station costs more).
    static constexpr std::size_t kRowsPerTake = 32;

    void run(std::vector<Row>& rows, std::size_t worker) {
        CGeoRoadIterator& it = m_workers[worker].iterator;
        CGeoTransformation* calibration = m_workers[worker].calibration.get();
        while (true) {
            const std::size_t begin = m_next.fetch_add(kRowsPerTake, std::memory_order_relaxed);
            if (begin >= rows.size()) {
                return;
            }
            const std::size_t end = std::min(rows.size(), begin + kRowsPerTake);
            evaluate(rows, it, calibration, begin, end);
        }
    }

    void evaluate(std::vector<Row>& rows, CGeoRoadIterator& it, CGeoTransformation* calibration,
                  std::size_t begin, std::size_t end) {
        for (std::size_t i = begin; i < end; ++i) {
            Row& row = rows[i];
            if (row.kind == RowKind::bad) {
                continue; // found bad while it was read
            }
            std::string why;
            row.kind = parse_shot_row(row.text, m_coords, row.shot, why);
            if (row.kind == RowKind::bad) {
                row.problem = why;
                continue;
            }
            if (row.kind != RowKind::shot) {
                continue;
            }
            const StakeResult r = stake_shot(m_road, it, calibration, m_coords, row.shot, m_snap);
            if (!r.ok) {
                row.kind = RowKind::bad;
                row.problem = (row.shot.name.empty() ? "" : row.shot.name + ": ") + r.why;
                continue;
            }
            m_writer.row(row.shot, r, row.output);
        }
    }

    CGeoRoad& m_road;
    ShotCoordinates m_coords;
    double m_snap;
    const StakeWriter& m_writer;
    /// What one worker thread uses, alone: its own iterator and its own copy of the calibration.
    /// Each on cache lines of its own, since an iterator writes its cached station and elements
    /// on every shot and two workers sharing a line would stall each other.
    struct alignas(64) Worker {
        CGeoRoadIterator iterator;
        std::unique_ptr<CGeoTransformation> calibration;
    };

    std::vector<Worker> m_workers;
    std::vector<std::thread> m_threads;
    /// The first row of the block that no worker has taken yet.
    std::atomic<std::size_t> m_next{0};
};

/// Shows how far through its input file the run is, on a terminal.
class Progress {
public:
    Progress(bool enabled, std::uintmax_t total)
        : m_enabled(enabled && total > 0), m_total(total) {}
    void show(std::uintmax_t done) {
        if (!m_enabled) {
            return;
        }
        const int percent = static_cast<int>(std::min<std::uintmax_t>(100, done * 100 / m_total));
        if (percent == m_last) {
            return;
        }
        m_last = percent;
        const int filled = percent / 4;
        std::cerr << '\r' << "[" << std::string(static_cast<std::size_t>(filled), '#')
                  << std::string(static_cast<std::size_t>(25 - filled), ' ') << "] " << percent
                  << "%" << std::flush;
    }
    void finish() {
        if (m_enabled && m_last >= 0) {
            std::cerr << '\r' << std::string(34, ' ') << '\r' << std::flush;
        }
    }

private:
    bool m_enabled;
    std::uintmax_t m_total;
    int m_last = -1;
};

int stake_rows(const StakeOptions& o, CGeoRoad& road, CGeoTransformation* calibration,
               const DisplayUnits& show, Format format) {
    const ShotCoordinates coords = o.grid ? ShotCoordinates::grid : ShotCoordinates::wgs84;
    std::FILE* file = stdin;
    std::unique_ptr<std::FILE, int (*)(std::FILE*)> opened(nullptr, &std::fclose);
    std::string source = "standard input";
    std::uintmax_t size = 0;
    std::string given;
    if (!o.values.empty()) {
        if (o.values.size() % 3 != 0) {
            report_error(fmt::format("stake: give three values for each position ({} given)",
                                     o.values.size()));
            return kExitBadArguments;
        }
        for (std::size_t i = 0; i < o.values.size(); i += 3) {
            given += o.values[i] + "," + o.values[i + 1] + "," + o.values[i + 2] + "\n";
        }
        // The positions given as arguments are read as rows of a file held in memory.
        opened.reset(fmemopen(given.data(), given.size(), "r"));
        if (!opened) {
            report_error("stake: cannot read the positions given");
            return kExitBadArguments;
        }
        file = opened.get();
        source = "argument";
    } else if (!o.input_file.empty() && o.input_file != "-") {
        opened.reset(std::fopen(o.input_file.c_str(), "rb"));
        if (!opened) {
            report_error("stake: cannot read input '" + o.input_file + "'");
            return kExitBadData;
        }
        std::error_code error;
        size = fs::file_size(o.input_file, error);
        file = opened.get();
        source = o.input_file;
    }
    LineSource lines(file);
    int workers = o.threads;
    if (workers <= 0) {
        workers = static_cast<int>(std::max(1u, std::thread::hardware_concurrency()));
    }
    workers = std::min(workers, 256);

    const nlohmann::ordered_json files = {
        {"road", o.road_file},
        {"calibration", o.calibration_file.empty() ? o.control_file : o.calibration_file},
        {"input", o.values.empty() ? (o.input_file.empty() ? "-" : o.input_file) : "arguments"}};
    StakeWriter writer(format, show, road.Name().ToUtf8(), files);
    BlockEvaluator evaluator(road, calibration, coords, o.snap, workers, writer);
    Progress progress(size > 0 && isatty(STDERR_FILENO) != 0, size);
    writer.begin();
    int bad = 0;
    std::uintmax_t consumed = 0;
    // Two blocks in turn: while the workers evaluate one, this thread writes the one before it
    // and reads the one after it, so that reading and writing cost no evaluation time.
    std::vector<Row> blocks[2];
    bool more = true;
    const auto read_block = [&](std::vector<Row>& rows) {
        // The rows of the block before are reused: their strings keep their storage.
        std::size_t count = 0;
        std::string_view line;
        while (count < kBlockRows && (more = lines.next(line))) {
            consumed += line.size() + 1;
            if (rows.size() <= count) {
                rows.emplace_back();
            }
            Row& row = rows[count++];
            row.line = static_cast<int>(lines.line_number());
            row.text.assign(line);
            row.kind = RowKind::skipped;
            row.output.clear();
            row.problem.clear();
            if (lines.cut()) {
                row.kind = RowKind::bad;
                row.problem = fmt::format("the line is longer than {} bytes", LineSource::kMaxLine);
            }
        }
        rows.resize(count);
    };
    std::string out;
    const auto write_block = [&](const std::vector<Row>& rows) {
        out.clear();
        for (const Row& row : rows) {
            if (row.kind == RowKind::bad) {
                ++bad;
                progress.finish();
                report_error(fmt::format("stake: {}:{}: {}", source, row.line, row.problem));
            } else if (row.kind == RowKind::shot) {
                writer.write(row.output, out);
            }
        }
        std::cout.write(out.data(), static_cast<std::streamsize>(out.size()));
    };
    int current = 0;
    read_block(blocks[current]);
    evaluator.start(blocks[current]);
    while (!blocks[current].empty()) {
        std::vector<Row>& next = blocks[1 - current];
        if (more) {
            read_block(next);
        } else {
            next.clear();
        }
        evaluator.wait();
        evaluator.start(next);
        write_block(blocks[current]);
        progress.show(consumed);
        current = 1 - current;
    }
    evaluator.wait();
    progress.finish();
    writer.end();
    std::cout << std::flush;
    if (lines.failed()) {
        report_error("stake: " + source + ": cannot be read to the end");
        return kExitBadData;
    }
    if (bad > 0) {
        report_error(fmt::format("stake: {} bad row(s) skipped", bad));
        return kExitBadData;
    }
    return 0;
}

int stake_at(const StakeOptions& o, CGeoRoad& road, CGeoTransformation* calibration,
             const DisplayUnits& show, Format format) {
    double station = 0.0;
    double offset = 0.0;
    if (!parse_number(o.at[0], station)) {
        report_error("stake: " + not_a_number("station", o.at[0]));
        return kExitBadArguments;
    }
    if (!parse_number(o.at[1], offset)) {
        report_error("stake: " + not_a_number("offset", o.at[1]));
        return kExitBadArguments;
    }
    CGeoRoadIterator it;
    it.Set(&road);
    CGeoPoint point;
    double azimuth = GEO_NULL;
    double grade = GEO_NULL;
    it.CenterlinePoint(station, offset, 0.0, point, azimuth, nullptr, &grade);
    if (point.Ok2DGrid() == 0) {
        report_error("stake: the road gives no position at this station and offset");
        return kExitBadData;
    }
    double centreline = GEO_NULL;
    double cl_grade = GEO_NULL;
    it.VerticalCurveDeltas(station, centreline, cl_grade);
    const double design = it.Elevation(point);
    if (design == GEO_NULL || centreline == GEO_NULL) {
        report_error("stake: no design surface at this station and offset (off the roadway or "
                     "no profile)");
        return kExitBadData;
    }
    const geo_nee grid{point.Northing(), point.Easting(), design};
    geo_llh wgs84{GEO_NULL, GEO_NULL, GEO_NULL};
    if (calibration != nullptr) {
        CGeoPoint p;
        p.SetTransformation(*calibration);
        p.SetGrid(grid);
        wgs84 = geo_llh{p.WGS84Lat(), p.WGS84Lon(), p.WGS84Hgt()};
        if (wgs84.lat == GEO_NULL || !std::isfinite(wgs84.lat)) {
            report_error("stake: the calibration gives no WGS84 position for this point");
            return kExitBadData;
        }
    }
    if (format == Format::json) {
        nlohmann::ordered_json j = {{"station", station},
                                    {"offset", offset},
                                    {"north", grid.north},
                                    {"east", grid.east},
                                    {"design_elevation", design},
                                    {"centreline_elevation", centreline},
                                    {"azimuth_rad", azimuth},
                                    {"latitude_rad", json_number(wgs84.lat)},
                                    {"longitude_rad", json_number(wgs84.lon)},
                                    {"height", json_number(wgs84.height)}};
        std::cout << j.dump(2) << '\n';
    } else if (format == Format::csv) {
        std::cout << "station,offset,north,east,design_elevation,centreline_elevation,"
                     "azimuth,latitude,longitude,height\n"
                  << fmt::format("{},{},{},{},{},{},{},{},{},{}\n", fixed(station, 4),
                                 fixed(offset, 4), fixed(grid.north, 4), fixed(grid.east, 4),
                                 fixed(design, 4), fixed(centreline, 4), fixed(azimuth, 8),
                                 fixed(wgs84.lat, 11), fixed(wgs84.lon, 11),
                                 fixed(wgs84.height, 4));
    } else {
        const auto g = show.position(grid, 4);
        std::cout << "Station     " << show.station(station, 3) << "   offset "
                  << show.distance(std::fabs(offset), 3) << " " << side_text(offset) << '\n';
        for (const auto& [label, text] : g) {
            std::cout << fmt::format("{:<12}{}\n", label, text);
        }
        std::cout << fmt::format("{:<12}{}\n", "CL elev", show.height(centreline, 3));
        std::cout << fmt::format("{:<12}{}\n", "Azimuth", show.bearing(azimuth, 6));
        if (calibration != nullptr) {
            std::cout << fmt::format(
                "{:<12}{}\n{:<12}{}\n{:<12}{}\n", "Latitude", show.latitude(wgs84.lat, 11),
                "Longitude", show.longitude(wgs84.lon, 11), "Height", show.height(wgs84.height, 3));
        }
        std::cout << show.legend() << '\n';
    }
    return 0;
}

int stake_section(const StakeOptions& o, CGeoRoad& road, const DisplayUnits& show, Format format) {
    double v[4] = {0.0, 0.0, 0.0, 0.0};
    const char* names[4] = {"north 1", "east 1", "north 2", "east 2"};
    for (int i = 0; i < 4; ++i) {
        if (!parse_number(o.section[static_cast<std::size_t>(i)], v[i])) {
            report_error("stake: " +
                         not_a_number(names[i], o.section[static_cast<std::size_t>(i)]));
            return kExitBadArguments;
        }
    }
    geo_nee start{v[0], v[1], 0.0};
    geo_nee end{v[2], v[3], 0.0};
    CGeoSection section(start, end);
    CGeoRoadIterator it;
    it.Set(&road);
    it.Section(section);
    const int n = section.NumberOfSegments();
    if (n == 0) {
        report_error("stake: the section line crosses no part of the road surface");
        return kExitBadData;
    }
    const auto name_of = [&](int i) { return CString(section.NthName(i)).ToUtf8(); };
    if (format == Format::json) {
        nlohmann::ordered_json breaks = nlohmann::ordered_json::array();
        for (int i = 0; i < n; ++i) {
            geo_nee p{};
            section.GetNthSegmentPoint(i, p);
            breaks.push_back({{"distance", section.NthStation(i)},
                              {"elevation", json_number(section.NthElevation(i))},
                              {"name", name_of(i)},
                              {"code", static_cast<std::int32_t>(
                                           static_cast<std::uint32_t>(section.NthUserDWORD(i)))},
                              {"surface", section.NthSegmentType(i) == geosect_Surface},
                              {"north", p.north},
                              {"east", p.east}});
        }
        nlohmann::ordered_json j = {{"length", section.Length()},
                                    {"start_elevation", json_number(section.Start().elev)},
                                    {"breaks", breaks}};
        std::cout << j.dump(2) << '\n';
        return 0;
    }
    if (format == Format::csv) {
        std::cout << "distance,elevation,name,code,surface,north,east\n";
    } else {
        std::cout << fmt::format("{:>12}{:>12}  {:<10}{:>6}  {}\n", "Distance", "Elevation", "Name",
                                 "Code", "From previous");
    }
    for (int i = 0; i < n; ++i) {
        geo_nee p{};
        section.GetNthSegmentPoint(i, p);
        const int code =
            static_cast<std::int32_t>(static_cast<std::uint32_t>(section.NthUserDWORD(i)));
        const bool surface = section.NthSegmentType(i) == geosect_Surface;
        if (format == Format::csv) {
            std::cout << fmt::format("{},{},{},{},{},{},{}\n", fixed(section.NthStation(i), 4),
                                     fixed(section.NthElevation(i), 4), name_of(i), code,
                                     surface ? "surface" : "none", fixed(p.north, 4),
                                     fixed(p.east, 4));
        } else {
            std::cout << fmt::format("{:>12}{:>12}  {:<10}{:>6}  {}\n",
                                     show.distance(section.NthStation(i), 3),
                                     show.height(section.NthElevation(i), 3), name_of(i), code,
                                     surface ? "surface" : "no surface");
        }
    }
    if (format == Format::text) {
        std::cout << show.legend() << '\n';
    }
    return 0;
}

int run_stake(const StakeOptions& o) {
    if (o.json && o.csv) {
        report_error("stake: choose one of --json and --csv");
        return kExitBadArguments;
    }
    if (!o.calibration_file.empty() && !o.control_file.empty()) {
        report_error("stake: choose one of --calibration and --control");
        return kExitBadArguments;
    }
    const bool needs_calibration = !o.grid && o.at.empty() && o.section.empty();
    if (needs_calibration && o.calibration_file.empty() && o.control_file.empty()) {
        report_error("stake: WGS84 positions need --calibration or --control (or give --grid)");
        return kExitBadArguments;
    }
    if (!(o.snap > 0.0)) {
        report_error("stake: --snap must be a positive distance");
        return kExitBadArguments;
    }
    CGeoRoad road;
    if (!load_stake_road(o.road_file, o.alignment, road)) {
        return kExitBadData;
    }
    std::unique_ptr<CGeoTransformation> calibration;
    if (!o.calibration_file.empty() || !o.control_file.empty()) {
        calibration = std::make_unique<CGeoTransformation>();
        if (!load_calibration(o, *calibration)) {
            return kExitBadData;
        }
    }
    const Format format = o.json ? Format::json : (o.csv ? Format::csv : Format::text);
    const DisplayUnits show(o.raw);
    if (!o.at.empty()) {
        return stake_at(o, road, calibration.get(), show, format);
    }
    if (!o.section.empty()) {
        return stake_section(o, road, show, format);
    }
    return stake_rows(o, road, calibration.get(), show, o.jsonl ? Format::jsonl : format);
}

void add_thread_option(CLI::App& cmd, StakeOptions& o) {
    cmd.add_option("--threads", o.threads, "Threads evaluating rows (default: every core)")
        ->check(CLI::Range(1, 256));
}

} // namespace

/// The run's output choices, which main() adds to every command.
void take_output_options(StakeOptions& o) {
    const OutputOptions& output = output_options();
    o.json = output.json || output.jsonl;
    o.jsonl = output.jsonl;
    o.csv = output.csv;
    o.raw = output.raw;
}

CommandRunner add_stake_options(CLI::App& command) {
    auto o = std::make_shared<StakeOptions>();
    CLI::App* cmd = &command;
    cmd->add_option("--road", o->road_file,
                    "Road: JSON description (docs/road-json.md), road file or its text, or LandXML")
        ->required();
    cmd->add_option("--alignment", o->alignment,
                    "The alignment to read from a LandXML road file that holds several");
    cmd->add_option("--calibration", o->calibration_file,
                    "Calibration JSON written by 'qv5 calibrate --save'");
    cmd->add_option("--control", o->control_file,
                    "Control points (CSV) to fit the site calibration from");
    cmd->add_option("--input", o->input_file,
                    "CSV of positions, one per line: [name,]latitude,longitude,height (or "
                    "[name,]north,east,elevation with --grid); '-' or none: standard input");
    cmd->add_flag("--grid", o->grid, "Positions are grid north, east, elevation");
    cmd->add_option("--at", o->at, "STATION OFFSET: the position to stake (metres)")->expected(2);
    cmd->add_option("--section", o->section, "N1 E1 N2 E2: the road surface along a line")
        ->expected(4);
    cmd->add_option("--snap", o->snap,
                    "Name the significant station within this distance of a shot's station "
                    "(metres, default 1)");
    cmd->add_option("values", o->values,
                    "LATITUDE LONGITUDE HEIGHT (or NORTH EAST ELEVATION with --grid), repeated");
    add_thread_option(*cmd, *o);
    return [o] {
        take_output_options(*o);
        return run_stake(*o);
    };
}

CommandRunner add_default_options(CLI::App& app) {
    auto o = std::make_shared<StakeOptions>();
    add_thread_option(app, *o);
    return [o] {
        StakeOptions job = *o;
        take_output_options(job);
        job.road_file = data_path("sample-road.json").string();
        job.control_file = data_path("sample-calibration.csv").string();
        job.input_file = data_path("sample-shots.csv").string();
        return run_stake(job);
    };
}

} // namespace qv5::cli

QV5_COMMAND("stake",
            "Stake measured positions against a road: station, offset, design elevation, cut or "
            "fill; or the position of a station and offset (--at), or the road surface across a "
            "line (--section)",
            qv5::cli::add_stake_options);
