// The job file of the command-line program: an instrument station, a straight and the shots
// taken from the station, one record per line of comma-separated fields.
#ifndef QV5_TOOLS_JOB_FILE_H
#define QV5_TOOLS_JOB_FILE_H

#include "csv_text.h"
#include "qv5/geodef.h"

#include <optional>
#include <string>
#include <string_view>
#include <vector>

namespace qv5::cli {

struct JobStation {
    std::string name;
    geo_nee grid;
    double instrument_height;
};

struct JobStraight {
    std::string name;
    geo_nee start;
    geo_nee end;
};

struct JobShot {
    std::string name;
    geo_hvd obs; ///< radians and metres
    int line;    ///< line number in the file, from 1
};

struct Job {
    std::optional<JobStation> station;
    std::optional<JobStraight> straight;
    std::vector<JobShot> shots;
};

/// Reads a job from its text. Blank lines and lines starting with '#' are skipped. Every bad
/// record is reported with its line number; a job with any error is rejected as a whole, so a
/// half-read job is never used. The file must hold exactly one station, exactly one straight
/// and at least one shot.
/// @return true when the job is complete and free of errors
bool parse_job(std::string_view text, Job& job, std::vector<JobError>& errors);

} // namespace qv5::cli

#endif
