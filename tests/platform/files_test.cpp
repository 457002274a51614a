#include "platform/files.h"
#include "support/scratch.h"

#include <gtest/gtest.h>

#include <cerrno>
#include <chrono>
#include <sys/stat.h>

using qv5::detail::FileLock;
using qv5::detail::log_folders;
using qv5::detail::make_folders;
using qv5::detail::OutputFile;
using qv5::detail::read_whole_file;
using qv5::detail::ReadStatus;
using qv5::detail::registry_file_path;
using qv5::detail::replace_file_durably;
using qv5::detail::resolve_symbolic_links;
using qv5::detail::write_protected;
using qv5::test::read_file;
using qv5::test::ScopedEnvironment;
using qv5::test::ScratchFolder;
using qv5::test::write_file;

namespace {

TEST(RegistryFilePath, EnvironmentVariableWins) {
    const ScopedEnvironment registry("QV5_REGISTRY", "/somewhere/my.reg");
    EXPECT_EQ(registry_file_path(), "/somewhere/my.reg");
}

TEST(RegistryFilePath, FallsBackToTheXdgConfigFolderThenHome) {
    const ScopedEnvironment registry("QV5_REGISTRY", "");
    {
        const ScopedEnvironment config("XDG_CONFIG_HOME", "/cfg");
        EXPECT_EQ(registry_file_path(), "/cfg/qv5/registry.reg");
    }
    const ScopedEnvironment relative("XDG_CONFIG_HOME", "relative/cfg"); // must be ignored
    const ScopedEnvironment home("HOME", "/home/surveyor");
    EXPECT_EQ(registry_file_path(), "/home/surveyor/.config/qv5/registry.reg");
}

TEST(LogFolders, TempAndStateFolders) {
    const ScopedEnvironment temp("TMPDIR", "/scratch");
    const ScopedEnvironment state("XDG_STATE_HOME", "/state");
    EXPECT_EQ(log_folders(), (std::vector<std::string>{"/scratch", "/state/halvik/zkmt"}));
    const ScopedEnvironment no_temp("TMPDIR", "");
    const ScopedEnvironment no_state("XDG_STATE_HOME", "");
    const ScopedEnvironment home("HOME", "/home/op");
    EXPECT_EQ(log_folders(),
              (std::vector<std::string>{"/tmp", "/home/op/.local/state/halvik/zkmt"}));
}

TEST(MakeFolders, MakesMissingParentsPrivately) {
    const ScratchFolder scratch;
    const std::string deep = scratch.file("a/b/c");
    ASSERT_TRUE(make_folders(deep));
    struct stat info {};
    ASSERT_EQ(stat(deep.c_str(), &info), 0);
    EXPECT_TRUE(S_ISDIR(info.st_mode));
    EXPECT_EQ(info.st_mode & 0777, 0700u);
    EXPECT_TRUE(make_folders(deep)); // already there
}

TEST(MakeFolders, FailsWhereAFileIsInTheWay) {
    const ScratchFolder scratch;
    write_file(scratch.file("plain"), "x");
    EXPECT_FALSE(make_folders(scratch.file("plain")));
    EXPECT_FALSE(make_folders(scratch.file("plain/sub")));
    EXPECT_FALSE(make_folders(""));
}

TEST(ReadWholeFile, ReadsMissingAndRefuses) {
    const ScratchFolder scratch;
    std::string content = "stale";
    EXPECT_EQ(read_whole_file(scratch.file("none"), 100, content), ReadStatus::missing);
    EXPECT_TRUE(content.empty());
    write_file(scratch.file("f"), "0123456789");
    EXPECT_EQ(read_whole_file(scratch.file("f"), 100, content), ReadStatus::read);
    EXPECT_EQ(content, "0123456789");
    EXPECT_EQ(read_whole_file(scratch.file("f"), 9, content), ReadStatus::failed);
    EXPECT_EQ(read_whole_file(scratch.path().string(), 100, content), ReadStatus::failed);
}

TEST(ReadWholeFile, AFifoIsRefusedWithoutBlocking) {
    const ScratchFolder scratch;
    const std::string fifo = scratch.file("pipe");
    ASSERT_EQ(mkfifo(fifo.c_str(), 0600), 0);
    std::string content;
    EXPECT_EQ(read_whole_file(fifo, 100, content), ReadStatus::failed);
}

TEST(ReplaceFileDurably, ReplacesWholeAndKeepsPermissions) {
    const ScratchFolder scratch;
    const std::string path = scratch.file("r.reg");
    write_file(path, "old contents that are longer");
    ASSERT_EQ(chmod(path.c_str(), 0640), 0);
    ASSERT_TRUE(replace_file_durably(path, "new"));
    EXPECT_EQ(read_file(path), "new");
    struct stat info {};
    ASSERT_EQ(stat(path.c_str(), &info), 0);
    EXPECT_EQ(info.st_mode & 0777, 0640u);
    EXPECT_FALSE(std::filesystem::exists(path + ".tmp"));
}

TEST(ReplaceFileDurably, FailsWhereTheFolderCannotBeWritten) {
    const ScratchFolder scratch;
    write_file(scratch.file("plain"), "x");
    EXPECT_FALSE(replace_file_durably(scratch.file("plain/r.reg"), "new"));
}

TEST(ReplaceFileDurably, WritesThroughASymbolicLinkToItsTarget) {
    const ScratchFolder scratch;
    std::filesystem::create_directory(scratch.file("real"));
    const std::string target = scratch.file("real/r.reg");
    const std::string link = scratch.file("link.reg");
    write_file(target, "old");
    std::filesystem::create_symlink("real/r.reg", link); // relative to the link's folder
    ASSERT_TRUE(replace_file_durably(link, "new"));
    EXPECT_TRUE(std::filesystem::is_symlink(link));
    EXPECT_EQ(read_file(target), "new");
    EXPECT_FALSE(std::filesystem::exists(link + ".tmp"));
    EXPECT_FALSE(std::filesystem::exists(target + ".tmp"));
}

TEST(ReplaceFileDurably, FollowsAChainOfLinksAndADanglingOne) {
    const ScratchFolder scratch;
    const std::string target = scratch.file("r.reg");
    std::filesystem::create_symlink(target, scratch.file("one")); // dangling for now
    std::filesystem::create_symlink(scratch.file("one"), scratch.file("two"));
    EXPECT_EQ(resolve_symbolic_links(scratch.file("two")), target);
    ASSERT_TRUE(replace_file_durably(scratch.file("two"), "made"));
    EXPECT_TRUE(std::filesystem::is_symlink(scratch.file("two")));
    EXPECT_EQ(read_file(target), "made");
}

TEST(ReplaceFileDurably, ALinkLoopFailsWithoutHanging) {
    const ScratchFolder scratch;
    std::filesystem::create_symlink(scratch.file("b"), scratch.file("a"));
    std::filesystem::create_symlink(scratch.file("a"), scratch.file("b"));
    EXPECT_FALSE(replace_file_durably(scratch.file("a"), "x"));
    EXPECT_TRUE(std::filesystem::is_symlink(scratch.file("a")));
}

TEST(ReplaceFileDurably, AReadOnlyFileIsRefusedEvenForTheSuperUser) {
    const ScratchFolder scratch;
    const std::string path = scratch.file("r.reg");
    write_file(path, "old");
    ASSERT_EQ(chmod(path.c_str(), 0444), 0);
    EXPECT_TRUE(write_protected(path));
    errno = 0;
    EXPECT_FALSE(replace_file_durably(path, "new"));
    EXPECT_EQ(errno, EACCES);
    EXPECT_EQ(read_file(path), "old");
    EXPECT_FALSE(std::filesystem::exists(path + ".tmp"));
    ASSERT_EQ(chmod(path.c_str(), 0644), 0);
    EXPECT_FALSE(write_protected(path));
    EXPECT_FALSE(write_protected(scratch.file("missing")));
}

TEST(FileLock, SecondHolderWaitsAndGivesUp) {
    const ScratchFolder scratch;
    const std::string lock_path = scratch.file("r.reg.lock");
    auto first = FileLock::acquire(lock_path, std::chrono::milliseconds(100));
    ASSERT_NE(first, nullptr);
    EXPECT_EQ(FileLock::acquire(lock_path, std::chrono::milliseconds(30)), nullptr);
    first.reset();
    EXPECT_NE(FileLock::acquire(lock_path, std::chrono::milliseconds(30)), nullptr);
}

TEST(FileLock, UnopenableLockFileGivesNoLock) {
    const ScratchFolder scratch;
    write_file(scratch.file("plain"), "x");
    EXPECT_EQ(FileLock::acquire(scratch.file("plain/x.lock"), std::chrono::milliseconds(10)),
              nullptr);
}

TEST(OutputFile, AppendsAtTheEndOrTruncates) {
    const ScratchFolder scratch;
    const std::string path = scratch.file("log.txt");
    write_file(path, "abc");
    {
        auto file = OutputFile::open(path, false);
        ASSERT_NE(file, nullptr);
        EXPECT_TRUE(file->write("def"));
    }
    EXPECT_EQ(read_file(path), "abcdef");
    {
        auto file = OutputFile::open(path, true);
        ASSERT_NE(file, nullptr);
        EXPECT_TRUE(file->write("x"));
        file->close();
        EXPECT_FALSE(file->write("y"));
    }
    EXPECT_EQ(read_file(path), "x");
}

TEST(OutputFile, SecondWriterIsRefusedAndTruncatesNothing) {
    const ScratchFolder scratch;
    const std::string path = scratch.file("log.txt");
    auto first = OutputFile::open(path, false);
    ASSERT_NE(first, nullptr);
    ASSERT_TRUE(first->write("kept"));
    EXPECT_EQ(OutputFile::open(path, true), nullptr);
    EXPECT_EQ(read_file(path), "kept");
    first.reset();
    EXPECT_NE(OutputFile::open(path, false), nullptr);
}

TEST(OutputFile, MissingFolderCannotBeOpened) {
    const ScratchFolder scratch;
    EXPECT_EQ(OutputFile::open(scratch.file("no/such/log.txt"), false), nullptr);
}

} // namespace
