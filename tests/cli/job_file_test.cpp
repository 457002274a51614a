// Reading the program's job file: every bad record is reported with its line, and a job with
// any error is rejected whole.
#include "job_file.h"

#include <gtest/gtest.h>

#include <cmath>
#include <fstream>
#include <sstream>

namespace {

using qv5::cli::Job;
using qv5::cli::JobError;
using qv5::cli::parse_job;

constexpr const char* kGoodJob = "# comment\n"
                                 "station,S1,100,200,10,1.5\n"
                                 "\n"
                                 "straight,CL,0,0,0,100,0,1\n"
                                 "shot,A,90,30,0,90,0,0,12.5\n";

TEST(JobFile, ReadsStationStraightAndShots) {
    Job job;
    std::vector<JobError> errors;
    ASSERT_TRUE(parse_job(kGoodJob, job, errors));
    EXPECT_TRUE(errors.empty());
    ASSERT_TRUE(job.station.has_value());
    EXPECT_EQ(job.station->name, "S1");
    EXPECT_EQ(job.station->grid.east, 200.0);
    EXPECT_EQ(job.station->instrument_height, 1.5);
    ASSERT_EQ(job.shots.size(), 1u);
    EXPECT_EQ(job.shots[0].line, 5);
    EXPECT_NEAR(job.shots[0].obs.hz, 90.5 * M_PI / 180.0, 1e-15);
    EXPECT_NEAR(job.shots[0].obs.vz, M_PI / 2.0, 1e-15);
    EXPECT_EQ(job.shots[0].obs.dist, 12.5);
}

TEST(JobFile, BundledSampleIsValid) {
    std::ifstream file(std::string(QV5_SAMPLE_DATA_DIR) + "/sample-observations.csv");
    std::ostringstream text;
    text << file.rdbuf();
    Job job;
    std::vector<JobError> errors;
    EXPECT_TRUE(parse_job(text.str(), job, errors));
    EXPECT_EQ(job.shots.size(), 5u);
}

TEST(JobFile, BadNumberIsReportedWithItsLineAndTheJobRejected) {
    Job job;
    std::vector<JobError> errors;
    const std::string text =
        std::string(kGoodJob) + "shot,B,10,0,0,90,0,0,12,5\nshot,C,1,2,3,90,0,0,x\n";
    EXPECT_FALSE(parse_job(text, job, errors));
    ASSERT_EQ(errors.size(), 2u);
    EXPECT_EQ(errors[0].line, 6);
    EXPECT_NE(errors[0].message.find("expected 9 fields"), std::string::npos);
    EXPECT_EQ(errors[1].line, 7);
    EXPECT_NE(errors[1].message.find("'x' is not a number"), std::string::npos);
    EXPECT_TRUE(job.shots.empty()) << "a rejected job keeps nothing half-read";
    EXPECT_FALSE(job.station.has_value());
}

TEST(JobFile, AnglesOutOfRangeAreRejected) {
    Job job;
    std::vector<JobError> errors;
    const std::string text = std::string(kGoodJob) +
                             "shot,B,360,0,0,90,0,0,5\nshot,C,1,60,0,90,0,0,5\n"
                             "shot,D,1,0,60,90,0,0,5\nshot,E,-1,0,0,90,0,0,5\n";
    EXPECT_FALSE(parse_job(text, job, errors));
    EXPECT_EQ(errors.size(), 4u);
}

TEST(JobFile, NegativeDistanceIsRejected) {
    Job job;
    std::vector<JobError> errors;
    EXPECT_FALSE(parse_job(std::string(kGoodJob) + "shot,B,1,0,0,90,0,0,-5\n", job, errors));
    ASSERT_EQ(errors.size(), 1u);
    EXPECT_EQ(errors[0].line, 6);
}

TEST(JobFile, MissingRecordsAreReportedForTheWholeFile) {
    Job job;
    std::vector<JobError> errors;
    EXPECT_FALSE(parse_job("# nothing\n", job, errors));
    ASSERT_EQ(errors.size(), 3u);
    for (const JobError& e : errors) {
        EXPECT_EQ(e.line, 0);
    }
}

TEST(JobFile, SecondStationAndDegenerateStraightAreRejected) {
    Job job;
    std::vector<JobError> errors;
    EXPECT_FALSE(parse_job(std::string(kGoodJob) + "station,S2,1,1,1,1\nstraight,X,5,5,0,5,5,3\n",
                           job, errors));
    EXPECT_EQ(errors.size(), 2u);
}

TEST(JobFile, UnknownRecordAndEmptyNameAreRejected) {
    Job job;
    std::vector<JobError> errors;
    EXPECT_FALSE(
        parse_job(std::string(kGoodJob) + "bogus,1\nshot, ,1,0,0,90,0,0,5\n", job, errors));
    EXPECT_EQ(errors.size(), 2u);
}

TEST(JobFile, CarriageReturnLineEndsAreAccepted) {
    Job job;
    std::vector<JobError> errors;
    EXPECT_TRUE(
        parse_job("station,S1,1,2,3,1.5\r\nstraight,L,0,0,0,1,1,0\r\nshot,A,1,0,0,90,0,0,2\r\n",
                  job, errors));
}

} // namespace
