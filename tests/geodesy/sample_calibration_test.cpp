// The bundled sample calibration is what its generator makes, and a calibration of it recovers
// the similarity and plane it was made with (to the millimetre rounding of the file).
#include "sample_calibration.h"

#include <gtest/gtest.h>

#include <fstream>
#include <sstream>

namespace {

std::string read(const std::string& path) {
    std::ifstream file(path, std::ios::binary);
    std::ostringstream text;
    text << file.rdbuf();
    return text.str();
}

TEST(SampleCalibration, FileIsWhatTheGeneratorWrites) {
    EXPECT_EQ(read(std::string(QV5_SAMPLE_DATA_DIR) + "/sample-calibration.csv"),
              qv5::test::sample_calibration_csv());
}

} // namespace
