// The program's job file reader must reject or accept any text without fault, and an accepted
// job is complete.
#include "job_file.h"

#include <cstddef>
#include <cstdint>
#include <cstdlib>

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
    qv5::cli::Job job;
    std::vector<qv5::cli::JobError> errors;
    const bool ok = qv5::cli::parse_job(std::string_view(reinterpret_cast<const char*>(data), size),
                                        job, errors);
    if (ok && (!job.station || !job.straight || job.shots.empty() || !errors.empty())) {
        std::abort();
    }
    if (!ok && (errors.empty() || job.station || !job.shots.empty())) {
        std::abort();
    }
    return 0;
}
