// The registry file and the log file when the disk fails them: a full disk (ENOSPC), an I/O
// error (EIO) on a write, a write that stops part way, a failing flush, rename or close. Each
// time the previous file survives whole and the failure is reported.
//
// This program supplies the library's file system calls itself (the four functions of
// platform/file_calls.h, so the library's own file_calls.cpp is not linked in) and makes the
// n-th call of one kind fail from now on. Every n is tried in turn, so every call site fails.
#include "platform/file_calls.h"
#include "platform/files.h"
#include "platform/settings_store.h"
#include "qv5/logfile.h"
#include "qv5/units.h"
#include "support/scratch.h"

#include <gtest/gtest.h>

#include <cerrno>
#include <cstdio>
#include <filesystem>
#include <string>
#include <vector>

#include <unistd.h>

namespace {

enum class Call { write, fsync, rename, close };

/// The failure planned: the call of `kind` numbered `at` (from 0) fails with `error`; with
/// `partial`, that write first puts half its bytes on disk and reports them, and the next
/// write fails.
struct Plan {
    bool armed = false;
    Call kind = Call::write;
    int at = 0;
    int error = 0;
    bool partial = false;
    int seen = 0;
    int failures = 0;
    bool fail_next_write = false;
};

Plan g_plan;

bool should_fail(Call kind) {
    if (!g_plan.armed || g_plan.kind != kind) {
        return false;
    }
    return g_plan.seen++ == g_plan.at;
}

} // namespace

namespace qv5::detail {

ssize_t file_write(int fd, const void* bytes, std::size_t count) noexcept {
    if (g_plan.fail_next_write) {
        g_plan.fail_next_write = false;
        ++g_plan.failures;
        errno = g_plan.error;
        return -1;
    }
    if (should_fail(Call::write)) {
        if (g_plan.partial && count > 1) {
            g_plan.fail_next_write = true;
            return ::write(fd, bytes, count / 2);
        }
        ++g_plan.failures;
        errno = g_plan.error;
        return -1;
    }
    return ::write(fd, bytes, count);
}

int file_fsync(int fd) noexcept {
    if (should_fail(Call::fsync)) {
        ++g_plan.failures;
        errno = g_plan.error;
        return -1;
    }
    return ::fsync(fd);
}

int file_rename(const char* from, const char* to) noexcept {
    if (should_fail(Call::rename)) {
        ++g_plan.failures;
        errno = g_plan.error;
        return -1;
    }
    return std::rename(from, to);
}

int file_close(int fd) noexcept {
    if (should_fail(Call::close)) {
        // As Linux does on EIO: the descriptor is released all the same.
        ::close(fd);
        ++g_plan.failures;
        errno = g_plan.error;
        return -1;
    }
    return ::close(fd);
}

} // namespace qv5::detail

namespace {

using qv5::detail::kRegistryBinary;
using qv5::detail::RegistryFileStore;
using qv5::test::read_file;
using qv5::test::ScopedEnvironment;
using qv5::test::ScratchFolder;
using qv5::test::write_file;

constexpr const char16_t* kKey = u"SOFTWARE\\Halvik\\QV5\\Units";

struct Failure {
    const char* name;
    Call kind;
    int error;
    bool partial;
};

const Failure kFailures[] = {
    {"full disk on write", Call::write, ENOSPC, false},
    {"I/O error on write", Call::write, EIO, false},
    {"write stopping part way, then a full disk", Call::write, ENOSPC, true},
    {"failing flush", Call::fsync, EIO, false},
    {"failing rename", Call::rename, EIO, false},
    {"rename on a full disk", Call::rename, ENOSPC, false},
    {"failing close", Call::close, EIO, false},
};

/// Arms the plan for the life of the object.
class Injected {
public:
    Injected(const Failure& failure, int at) {
        g_plan = Plan{};
        g_plan.armed = true;
        g_plan.kind = failure.kind;
        g_plan.at = at;
        g_plan.error = failure.error;
        g_plan.partial = failure.partial;
    }
    ~Injected() { g_plan = Plan{}; }
    Injected(const Injected&) = delete;
    Injected& operator=(const Injected&) = delete;
    bool failed() const { return g_plan.failures > 0; }
};

/// Calls of a kind made by the longest run tried; beyond it no call fails.
constexpr int kCallsTried = 6;

std::vector<unsigned char> le(std::uint32_t v) {
    return {static_cast<unsigned char>(v), static_cast<unsigned char>(v >> 8),
            static_cast<unsigned char>(v >> 16), static_cast<unsigned char>(v >> 24)};
}

const std::string kOldRegistry = "Windows Registry Editor Version 5.00\n\n"
                                 "[HKEY_LOCAL_MACHINE\\SOFTWARE\\Halvik\\QV5\\Units]\n"
                                 "\"Grade\"=hex:00,00,00,00\n"
                                 "; a comment that must survive\n";

TEST(RegistryFileUnderFailure, EveryFailedStepLeavesTheOldFileWholeAndIsReported) {
    for (const Failure& failure : kFailures) {
        int reported = 0;
        for (int at = 0; at < kCallsTried; ++at) {
            const ScratchFolder scratch;
            const std::string path = scratch.file("registry.reg");
            write_file(path, kOldRegistry);
            RegistryFileStore store(path);
            auto key = store.open_key(kKey);
            ASSERT_NE(key, nullptr);
            key->write(u"Grade", kRegistryBinary, le(2));
            bool closed = false;
            bool injected = false;
            {
                const Injected plan(failure, at);
                closed = key->close();
                injected = plan.failed();
            }
            const std::string now = read_file(path);
            if (closed) {
                // Succeeded: the new file whole. (A failed flush of the folder after the rename
                // does not undo the replacement, so it is no failure of the write.)
                EXPECT_NE(now.find("\"Grade\"=hex:02,00,00,00"), std::string::npos)
                    << failure.name << " at " << at;
                EXPECT_NE(now.find("; a comment that must survive"), std::string::npos);
            } else {
                ++reported;
                EXPECT_TRUE(injected) << failure.name << " at " << at;
                EXPECT_EQ(now, kOldRegistry) << failure.name << " at " << at;
            }
            EXPECT_FALSE(std::filesystem::exists(path + ".tmp")) << failure.name << " at " << at;
        }
        EXPECT_GT(reported, 0) << failure.name << " never reached the file";
    }
}

TEST(RegistryFileUnderFailure, UnitChoicesKeepTheOldFileWhenTheWriteFails) {
    for (const Failure& failure : kFailures) {
        const ScratchFolder scratch;
        const std::string path = scratch.file("registry.reg");
        const ScopedEnvironment registry("QV5_REGISTRY", path);
        {
            CQuantityUnits units{CString(kKey)};
            units.SetGrade(units_GradeRiseRun);
        }
        const std::string before = read_file(path);
        auto* units = new CQuantityUnits(CString(kKey));
        units->SetArea(units_Hectares);
        {
            const Injected plan(failure, 0);
            delete units; // writes back while the disk fails
            EXPECT_TRUE(plan.failed()) << failure.name;
        }
        EXPECT_EQ(read_file(path), before) << failure.name;
        EXPECT_FALSE(std::filesystem::exists(path + ".tmp"));
        const CQuantityUnits read_back{CString(kKey)};
        EXPECT_EQ(read_back.Grade(), units_GradeRiseRun) << failure.name;
        EXPECT_EQ(read_back.Area(), units_SquareFeet) << failure.name; // the change that failed
    }
}

TEST(OutputFileUnderFailure, AFailedAppendIsReportedAndTakenBack) {
    for (const Failure& failure : kFailures) {
        if (failure.kind != Call::write) {
            continue;
        }
        const ScratchFolder scratch;
        const std::string path = scratch.file("field.log");
        write_file(path, "earlier session\r\n");
        auto file = qv5::detail::OutputFile::open(path, false);
        ASSERT_NE(file, nullptr);
        EXPECT_TRUE(file->write("first record\r\n"));
        {
            const Injected plan(failure, 0);
            EXPECT_FALSE(file->write("second record, lost to the disk\r\n")) << failure.name;
        }
        EXPECT_TRUE(file->failed());
        EXPECT_EQ(read_file(path), "earlier session\r\nfirst record\r\n") << failure.name;
        EXPECT_TRUE(file->write("third record\r\n"));
        file->close();
        EXPECT_EQ(read_file(path), "earlier session\r\nfirst record\r\nthird record\r\n");
    }
}

TEST(OutputFileUnderFailure, AFailedCloseIsReported) {
    const ScratchFolder scratch;
    const std::string path = scratch.file("field.log");
    auto file = qv5::detail::OutputFile::open(path, false);
    ASSERT_NE(file, nullptr);
    EXPECT_TRUE(file->write("record\r\n"));
    const Injected plan(Failure{"failing close", Call::close, EIO, false}, 0);
    file->close();
    EXPECT_TRUE(file->failed());
    EXPECT_FALSE(file->write("after close\r\n"));
    EXPECT_EQ(read_file(path), "record\r\n");
}

TEST(LogFileUnderFailure, EveryRecordInTheFileIsWhole) {
    for (const Failure& failure : kFailures) {
        if (failure.kind != Call::write) {
            continue;
        }
        for (int at = 0; at < kCallsTried; ++at) {
            const ScratchFolder scratch;
            const ScopedEnvironment temp("TMPDIR", scratch.file("tmp"));
            const ScopedEnvironment state("XDG_STATE_HOME", scratch.file("state"));
            const std::string path = scratch.file("field.log");
            write_file(path, "earlier session\r\n");
            const std::u16string wide(path.begin(), path.end());
            std::vector<unsigned short> name(wide.begin(), wide.end());
            name.push_back(0);
            {
                CLogFile log(nullptr);
                ASSERT_EQ(log.Open(name.data(), 0, 0), 1);
                const Injected plan(failure, at);
                for (int i = 0; i < kCallsTried; ++i) {
                    log.SBText("record 0123456789", 1);
                }
                log.Close();
            }
            // The earlier session, then whole records only: a torn one would leave a line
            // that is not the record.
            const std::string text = read_file(path);
            ASSERT_EQ(text.rfind("earlier session\r\n", 0), 0u) << failure.name << " at " << at;
            std::string rest = text.substr(17);
            int records = 0;
            while (!rest.empty()) {
                ASSERT_EQ(rest.rfind("record 0123456789\r\n", 0), 0u)
                    << failure.name << " at " << at << ": " << rest;
                rest = rest.substr(19);
                ++records;
            }
            EXPECT_LT(records, kCallsTried) << failure.name << " at " << at;
        }
    }
}

} // namespace
