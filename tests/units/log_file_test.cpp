#include "qv5/geosurvey.h"
#include "qv5/logfile.h"
#include "support/scratch.h"
#include "units_support.h"

#include <gtest/gtest.h>

#include <regex>
#include <thread>

using qv5::test::read_file;
using qv5::test::ScopedEnvironment;
using qv5::test::ScratchFolder;
using qv5::test::units_with;
using qv5::test::Utf16;
using qv5::test::write_file;

namespace {

double dms(int d, int m, double s) {
    double r = 0.0;
    _dmstorad(d, m, s, &r);
    return r;
}

/// A log in a scratch folder, with the log folders pointed into it too.
class LogFileTest : public ::testing::Test {
protected:
    ScratchFolder scratch;
    ScopedEnvironment temp{"TMPDIR", scratch.file("tmp")};
    ScopedEnvironment state{"XDG_STATE_HOME", scratch.file("state")};
    std::string path = scratch.file("field.log");
    CQuantityUnits units = units_with(units_Metres);

    int open(CLogFile& log, int truncate = 0, int announce = 0) {
        return log.Open(Utf16(std::u16string(path.begin(), path.end())).get(), truncate, announce);
    }
};

TEST_F(LogFileTest, ConstructorMakesTheLogFolders) {
    const CLogFile log(&units);
    EXPECT_TRUE(std::filesystem::is_directory(scratch.file("tmp")));
    EXPECT_TRUE(std::filesystem::is_directory(scratch.file("state/halvik/zkmt")));
}

TEST_F(LogFileTest, NothingIsWrittenBeforeOpenOrAfterClose) {
    write_file(path, "existing");
    CLogFile log(&units);
    EXPECT_EQ(log.IsOpen(), 0);
    log.Text(Utf16(u"lost").get(), 1);
    log.SBText("lost", 1);
    log.Time(1);
    log.NewLine(2);
    log.Space(3);
    log.DWord(7, 1);
    log.Distance(1.0, 1);
    log.Angle(1.0, 1);
    log.WriteGPSPos(1000, 0.5, 0.5, 1.0, 1, 2, 3.0, 4.0, 1);
    log.Close();
    EXPECT_EQ(read_file(path), "existing");
    ASSERT_EQ(open(log), 1);
    log.Close();
    EXPECT_EQ(log.IsOpen(), 0);
    log.SBText("lost", 1);
    log.Close(); // closing twice is harmless
    EXPECT_EQ(read_file(path), "existing");
}

TEST_F(LogFileTest, OpenWithoutTruncateAppendsAfterTheLastByte) {
    write_file(path, "line one\r\n");
    CLogFile log(&units);
    ASSERT_EQ(open(log), 1);
    EXPECT_EQ(log.IsOpen(), 1);
    log.SBText("line two", 1);
    log.Close();
    EXPECT_EQ(read_file(path), "line one\r\nline two\r\n");
}

TEST_F(LogFileTest, OpenWithTruncateEmptiesTheFile) {
    write_file(path, "old");
    CLogFile log(&units);
    ASSERT_EQ(open(log, 1), 1);
    log.SBText("new", 0);
    log.Close();
    EXPECT_EQ(read_file(path), "new");
}

TEST_F(LogFileTest, OpenCreatesAMissingFile) {
    CLogFile log(&units);
    ASSERT_EQ(open(log), 1);
    log.Close();
    EXPECT_TRUE(std::filesystem::exists(path));
}

TEST_F(LogFileTest, OpenFailsWhereNoFileCanBe) {
    CLogFile log(&units);
    EXPECT_EQ(log.Open(Utf16(u"/nonexistent-folder/x/log.txt").get(), 0, 1), 0);
    EXPECT_EQ(log.IsOpen(), 0);
    EXPECT_EQ(log.Open(nullptr, 0, 0), 0);
    const std::string folder = scratch.path().string();
    EXPECT_EQ(log.Open(Utf16(std::u16string(folder.begin(), folder.end())).get(), 0, 0), 0);
}

TEST_F(LogFileTest, SpacesAndLineEnds) {
    CLogFile log(&units);
    ASSERT_EQ(open(log), 1);
    log.Space(3);
    log.NewLine(2);
    log.Space(0);
    log.NewLine(0);
    log.Close();
    EXPECT_EQ(read_file(path), "   \r\n\r\n");
}

TEST_F(LogFileTest, DWordWritesAllDigits) {
    CLogFile log(&units);
    ASSERT_EQ(open(log), 1);
    log.DWord(4294967295UL, 1);
    log.DWord(0, 0);
    log.Close();
    EXPECT_EQ(read_file(path), "4294967295\r\n0");
}

TEST_F(LogFileTest, TextIsWrittenInWindows1252) {
    CLogFile log(&units);
    ASSERT_EQ(open(log), 1);
    log.Text(Utf16(u"Gr\u00FC\u00DFe \u20AC5 \u2603 10\u00B0").get(), 1);
    log.Text(nullptr, 1);
    log.Close();
    EXPECT_EQ(read_file(path), "Gr\xFC\xDF"
                               "e \x80"
                               "5 ? 10\xB0\r\n\r\n");
}

TEST_F(LogFileTest, SingleByteTextIsCutAtAHundredBytes) {
    CLogFile log(&units);
    ASSERT_EQ(open(log), 1);
    const std::string long_text(150, 'x');
    log.SBText(long_text.c_str(), 1);
    log.SBText(nullptr, 1);
    log.SBText("\xB0 kept as is", 0);
    log.Close();
    EXPECT_EQ(read_file(path), std::string(100, 'x') + "\r\n\r\n\xB0 kept as is");
}

TEST_F(LogFileTest, TimeIsTheTickCountWithOneDecimal) {
    CLogFile log(&units);
    ASSERT_EQ(open(log), 1);
    log.Time(1);
    log.Close();
    EXPECT_TRUE(std::regex_match(read_file(path), std::regex("[0-9]+\\.0\r\n"))) << read_file(path);
}

TEST_F(LogFileTest, DistanceAndAngleInTheUsersUnits) {
    CQuantityUnits feet = units_with(units_USSurveyFeet, 0, units_AngleGons);
    CLogFile log(&feet);
    ASSERT_EQ(open(log), 1);
    log.Distance(12.3456, 1);
    log.Angle(3.141592653589793, 1);
    log.Distance(GEO_NULL, 1);
    log.Distance(5e10, 0);
    log.Close();
    EXPECT_EQ(read_file(path), "40.504'\r\n200.0000G\r\n\r\nToo large");
}

TEST_F(LogFileTest, WithoutUnitsDistancesAreMetresAndAnglesDms) {
    CLogFile log(nullptr);
    ASSERT_EQ(open(log), 1);
    log.Distance(12.3456, 1);
    log.Angle(dms(10, 20, 30.0), 0);
    log.Close();
    EXPECT_EQ(read_file(path), "12.346m\r\n10\xB0"
                               "20'30\"");
}

TEST_F(LogFileTest, GpsRecordFields) {
    CLogFile log(&units);
    ASSERT_EQ(open(log), 1);
    log.WriteGPSPos(12999, dms(35, 21, 12.34567), dms(-120, 3, 4.05), 10.0, 3, -7, 25.0, 1.25, 1);
    log.Close();
    // Whole seconds of 12999 ms; seconds of arc in hundred-thousandths; 1.25 to one decimal
    // rounds to even.
    EXPECT_EQ(read_file(path), "$GPS 12 3 -7 35.211234567 -120.030405000 10.000m 25.000m 1.2\r\n");
}

TEST_F(LogFileTest, GpsRecordInFeetWithNullsAndNewLines) {
    CQuantityUnits feet = units_with(units_USSurveyFeet);
    CLogFile log(&feet);
    ASSERT_EQ(open(log), 1);
    log.WriteGPSPos(999, dms(5, 3, 7.5), dms(7, 0, 0.0), GEO_NULL, 0, 0, 100.0, -2.0, 2);
    log.Close();
    EXPECT_EQ(read_file(path), "$GPS 0 0 0 05.030750000 07.000000000  328.083' -2.0\r\n\r\n");
}

TEST_F(LogFileTest, AnnouncedLogSaysWhenItStartsAndStops) {
    CLogFile log(&units);
    ASSERT_EQ(open(log, 1, 1), 1);
    log.SBText("work", 1);
    log.Close();
    const std::regex expected("\r\nLogging enabled (Sun|Mon|Tues|Wednes|Thurs|Fri|Satur)day, "
                              "(January|February|March|April|May|June|July|August|September|"
                              "October|November|December) [0-9]{1,2}(st|nd|rd|th), [0-9]{4}, "
                              "(1[0-2]|[1-9]):[0-5][0-9](AM|PM)\r\nwork\r\nLogging disabled \r\n");
    EXPECT_TRUE(std::regex_match(read_file(path), expected)) << read_file(path);
}

TEST_F(LogFileTest, ASecondWriterOfTheSameFileIsRefused) {
    CLogFile first(&units);
    CLogFile second(&units);
    ASSERT_EQ(open(first), 1);
    first.SBText("first", 0);
    EXPECT_EQ(open(second, 1), 0);
    EXPECT_EQ(second.IsOpen(), 0);
    first.Close();
    EXPECT_EQ(read_file(path), "first");
    EXPECT_EQ(open(second), 1);
    second.Close();
}

TEST_F(LogFileTest, OpeningAgainLetsGoOfThePreviousFile) {
    CLogFile log(&units);
    ASSERT_EQ(open(log, 0, 1), 1);
    const std::string other = scratch.file("other.log");
    ASSERT_EQ(log.Open(Utf16(std::u16string(other.begin(), other.end())).get(), 0, 0), 1);
    log.SBText("to other", 0);
    log.Close();
    EXPECT_EQ(read_file(other), "to other");
    EXPECT_EQ(read_file(path).find("Logging disabled"), std::string::npos);
}

TEST_F(LogFileTest, CopiesShareTheOpenFile) {
    CLogFile log(&units);
    ASSERT_EQ(open(log), 1);
    CLogFile copy(log);
    EXPECT_EQ(copy.IsOpen(), 1);
    copy.SBText("from copy ", 0);
    log.SBText("from original", 0);
    CLogFile assigned(nullptr);
    assigned = log;
    log.Close();
    copy.SBText(" after close", 0); // the shared file is closed for every copy
    assigned.SBText(" after close", 0);
    EXPECT_EQ(read_file(path), "from copy from original");
}

TEST_F(LogFileTest, DestroyingAnOpenLogWritesNothingMore) {
    {
        CLogFile log(&units);
        ASSERT_EQ(open(log, 0, 1), 1);
    }
    EXPECT_EQ(read_file(path).find("Logging disabled"), std::string::npos);
    CLogFile again(&units);
    EXPECT_EQ(open(again), 1); // and the file is free again
    again.Close();
}

TEST_F(LogFileTest, ThreadsNeverTearAFragment) {
    CLogFile log(&units);
    ASSERT_EQ(open(log), 1);
    constexpr int kThreads = 8;
    constexpr int kLines = 300;
    std::vector<std::thread> threads;
    for (int t = 0; t < kThreads; ++t) {
        threads.emplace_back([&log, t] {
            const std::string line = "thread " + std::to_string(t) + " " + std::string(60, 'a' + t);
            for (int i = 0; i < kLines; ++i) {
                log.SBText(line.c_str(), 1);
                log.Text(Utf16(u"wide fragment").get(), 1);
            }
        });
    }
    for (std::thread& t : threads) {
        t.join();
    }
    log.Close();
    const std::string content = read_file(path);
    std::size_t count = 0;
    std::size_t start = 0;
    while (start < content.size()) {
        const std::size_t end = content.find("\r\n", start);
        ASSERT_NE(end, std::string::npos);
        const std::string line = content.substr(start, end - start);
        const bool known =
            line == "wide fragment" || (line.size() == 69 && line.rfind("thread ", 0) == 0 &&
                                        line.find_first_not_of(line[9], 9) == std::string::npos);
        EXPECT_TRUE(known) << line;
        ++count;
        start = end + 2;
    }
    EXPECT_EQ(count, static_cast<std::size_t>(2 * kThreads * kLines));
}

TEST_F(LogFileTest, CloseFromAnotherThreadWhileWritingIsSafe) {
    CLogFile log(&units);
    ASSERT_EQ(open(log), 1);
    std::thread writer([&log] {
        for (int i = 0; i < 2000; ++i) {
            log.SBText("x", 1);
        }
    });
    log.Close();
    writer.join();
    const std::string content = read_file(path);
    EXPECT_EQ(content.size() % 3, 0u); // whole fragments only
}

} // namespace
