#include "job_file.h"

#include "args.h"

#include "qv5/geosurvey.h"

#include <cmath>

namespace qv5::cli {
namespace {

constexpr int kMinutesPerDegree = 60;
constexpr double kSecondsPerMinute = 60.0;
/// A horizontal circle and a zenith circle both read below a full turn.
constexpr int kDegreesPerTurn = 360;

class RecordReader {
public:
    RecordReader(const std::vector<std::string_view>& fields, int line,
                 std::vector<JobError>& errors)
        : m_fields(fields), m_line(line), m_errors(errors) {}

    bool expect_count(std::size_t count, std::string_view layout) {
        if (m_fields.size() == count) {
            return true;
        }
        fail("expected " + std::to_string(count) + " fields (" + std::string(layout) + "), found " +
             std::to_string(m_fields.size()));
        return false;
    }

    std::string name(std::size_t index) {
        const std::string_view text = trim(m_fields[index]);
        if (text.empty()) {
            fail("field " + std::to_string(index + 1) + ": the name is empty");
        }
        return std::string(text);
    }

    double number(std::size_t index, std::string_view what) {
        double value = 0.0;
        if (!parse_number(m_fields[index], value)) {
            fail(std::string(what) + ": '" + std::string(trim(m_fields[index])) +
                 "' is not a number");
        }
        return value;
    }

    /// Degrees, minutes and seconds in three fields, as radians.
    double dms(std::size_t index, std::string_view what) {
        int degrees = 0;
        int minutes = 0;
        double seconds = 0.0;
        const bool ok = parse_integer(m_fields[index], degrees) &&
                        parse_integer(m_fields[index + 1], minutes) &&
                        parse_number(m_fields[index + 2], seconds);
        if (!ok || degrees < 0 || degrees >= kDegreesPerTurn || minutes < 0 ||
            minutes >= kMinutesPerDegree || seconds < 0.0 || seconds >= kSecondsPerMinute) {
            fail(std::string(what) + ": '" + std::string(trim(m_fields[index])) + " " +
                 std::string(trim(m_fields[index + 1])) + " " +
                 std::string(trim(m_fields[index + 2])) +
                 "' is not an angle in whole degrees (0-359), minutes (0-59) and seconds");
            return 0.0;
        }
        double radians = 0.0;
        _dmstorad(degrees, minutes, seconds, &radians);
        return radians;
    }

    bool failed() const { return m_failed; }

    void fail(std::string message) {
        m_failed = true;
        m_errors.push_back({m_line, std::move(message)});
    }

private:
    const std::vector<std::string_view>& m_fields;
    int m_line;
    std::vector<JobError>& m_errors;
    bool m_failed = false;
};

void read_station(RecordReader& reader, Job& job) {
    if (!reader.expect_count(6, "station,name,north,east,elevation,instrument_height")) {
        return;
    }
    JobStation station{
        reader.name(1),
        {reader.number(2, "north"), reader.number(3, "east"), reader.number(4, "elevation")},
        reader.number(5, "instrument_height")};
    if (job.station) {
        reader.fail("a second station; a job has one station");
    }
    if (!reader.failed()) {
        job.station = station;
    }
}

void read_straight(RecordReader& reader, Job& job) {
    if (!reader.expect_count(8, "straight,name,start_north,start_east,start_elevation,"
                                "end_north,end_east,end_elevation")) {
        return;
    }
    JobStraight straight{reader.name(1),
                         {reader.number(2, "start_north"), reader.number(3, "start_east"),
                          reader.number(4, "start_elevation")},
                         {reader.number(5, "end_north"), reader.number(6, "end_east"),
                          reader.number(7, "end_elevation")}};
    if (job.straight) {
        reader.fail("a second straight; a job has one straight");
    }
    if (!reader.failed() && geo_horz_dist(straight.start, straight.end) == 0.0) {
        reader.fail("the straight's start and end coincide in plan");
    }
    if (!reader.failed()) {
        job.straight = straight;
    }
}

void read_shot(RecordReader& reader, Job& job, int line) {
    if (!reader.expect_count(9, "shot,name,hz_deg,hz_min,hz_sec,zenith_deg,zenith_min,"
                                "zenith_sec,slope_distance")) {
        return;
    }
    JobShot shot{reader.name(1),
                 {reader.dms(2, "horizontal angle"), reader.dms(5, "zenith angle"),
                  reader.number(8, "slope_distance")},
                 line};
    if (!reader.failed() && shot.obs.dist < 0.0) {
        reader.fail("slope_distance: a distance cannot be negative");
    }
    if (!reader.failed()) {
        job.shots.push_back(shot);
    }
}

} // namespace

bool parse_job(std::string_view text, Job& job, std::vector<JobError>& errors) {
    job = Job{};
    const std::size_t errors_before = errors.size();
    for_each_record(text, [&](int line_number, std::string_view line) {
        const std::vector<std::string_view> fields = split_fields(line);
        RecordReader reader(fields, line_number, errors);
        const std::string_view kind = trim(fields.front());
        if (kind == "station") {
            read_station(reader, job);
        } else if (kind == "straight") {
            read_straight(reader, job);
        } else if (kind == "shot") {
            read_shot(reader, job, line_number);
        } else {
            reader.fail("unknown record '" + std::string(kind) +
                        "' (expected station, straight or shot)");
        }
    });
    if (!job.station) {
        errors.push_back({0, "the job has no station record"});
    }
    if (!job.straight) {
        errors.push_back({0, "the job has no straight record"});
    }
    if (job.shots.empty()) {
        errors.push_back({0, "the job has no shot records"});
    }
    if (errors.size() != errors_before) {
        job = Job{};
        return false;
    }
    return true;
}

} // namespace qv5::cli
