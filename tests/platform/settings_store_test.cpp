#include "platform/files.h"
#include "platform/settings_store.h"
#include "support/scratch.h"
#include "support/scratch_registry.h"

#include <gtest/gtest.h>

#include <filesystem>
#include <thread>

#include <sys/stat.h>
#include <sys/wait.h>
#include <unistd.h>

using qv5::detail::check_registry_file;
using qv5::detail::FileLock;
using qv5::detail::kRegistryBinary;
using qv5::detail::kRegistryDword;
using qv5::detail::open_settings_store;
using qv5::detail::read_registry_file;
using qv5::detail::RegistryFileProblem;
using qv5::detail::RegistryFileStore;
using qv5::detail::RegistryValue;
using qv5::test::read_file;
using qv5::test::ScopedEnvironment;
using qv5::test::ScratchFolder;
using qv5::test::write_file;

namespace {

constexpr const char16_t* kKey = u"Software\\Halvik\\QV5\\Units";

std::vector<unsigned char> le(std::uint32_t v) {
    return {static_cast<unsigned char>(v), static_cast<unsigned char>(v >> 8),
            static_cast<unsigned char>(v >> 16), static_cast<unsigned char>(v >> 24)};
}

std::uint32_t read_u32(RegistryFileStore& store, std::u16string_view name) {
    auto key = store.open_key(kKey);
    std::uint32_t value = 0xDEADBEEF;
    if (key != nullptr) {
        key->read_u32(name, value);
    }
    return value;
}

TEST(RegistryFileStore, CreateKeyMakesTheFileAndItsFolders) {
    const ScratchFolder scratch;
    const std::string path = scratch.file("config/qv5/registry.reg");
    RegistryFileStore store(path);
    EXPECT_EQ(store.open_key(kKey), nullptr);
    ASSERT_NE(store.create_key(kKey), nullptr);
    EXPECT_EQ(read_file(path), "Windows Registry Editor Version 5.00\n\n"
                               "[HKEY_LOCAL_MACHINE\\Software\\Halvik\\QV5\\Units]\n\n");
    EXPECT_NE(store.open_key(kKey), nullptr);
}

TEST(RegistryFileStore, ValuesReachTheFileWhenTheKeyCloses) {
    const ScratchFolder scratch;
    const std::string path = scratch.file("r.reg");
    RegistryFileStore store(path);
    auto key = store.create_key(kKey);
    ASSERT_NE(key, nullptr);
    ASSERT_TRUE(key->write(u"Bearings", kRegistryBinary, le(2)));
    ASSERT_TRUE(key->write(u"Count", kRegistryDword, le(258)));
    std::uint32_t seen = 0;
    EXPECT_TRUE(key->read_u32(u"bearings", seen)); // the key sees its own writes at once
    EXPECT_EQ(seen, 2u);
    EXPECT_EQ(read_u32(store, u"Bearings"), 0xDEADBEEFu); // others see them after close
    ASSERT_TRUE(key->close());
    EXPECT_EQ(read_u32(store, u"Bearings"), 2u);
    EXPECT_EQ(read_u32(store, u"Count"), 258u);
    EXPECT_NE(read_file(path).find("\"Bearings\"=hex:02,00,00,00\n"), std::string::npos);
    EXPECT_NE(read_file(path).find("\"Count\"=dword:00000102\n"), std::string::npos);
}

TEST(RegistryFileStore, OnlyFourByteValuesReadAsNumbers) {
    const ScratchFolder scratch;
    const std::string path = scratch.file("r.reg");
    write_file(path, "Windows Registry Editor Version 5.00\n"
                     "[HKEY_LOCAL_MACHINE\\Software\\Halvik\\QV5\\Units]\n"
                     "\"Short\"=hex:01,00\n"
                     "\"Long\"=hex:01,00,00,00,00\n"
                     "\"Text\"=\"a\"\n" // 'a' and the terminator: four bytes
                     "\"Typed\"=hex(7):05,00,00,00\n");
    RegistryFileStore store(path);
    EXPECT_EQ(read_u32(store, u"Short"), 0xDEADBEEFu);
    EXPECT_EQ(read_u32(store, u"Long"), 0xDEADBEEFu);
    EXPECT_EQ(read_u32(store, u"Text"), 97u);
    EXPECT_EQ(read_u32(store, u"Typed"), 5u);
}

TEST(RegistryFileStore, UnchangedValuesWriteNothing) {
    const ScratchFolder scratch;
    const std::string path = scratch.file("r.reg");
    RegistryFileStore store(path);
    {
        auto key = store.create_key(kKey);
        key->write(u"A", kRegistryBinary, le(1));
    }
    struct stat before {};
    ASSERT_EQ(stat(path.c_str(), &before), 0);
    {
        auto key = store.open_key(kKey);
        ASSERT_NE(key, nullptr);
        key->write(u"A", kRegistryBinary, le(1));
        EXPECT_TRUE(key->close());
    }
    struct stat after {};
    ASSERT_EQ(stat(path.c_str(), &after), 0);
    EXPECT_EQ(before.st_ino, after.st_ino); // not replaced
}

TEST(RegistryFileStore, WritersMergeRatherThanOverwrite) {
    const ScratchFolder scratch;
    const std::string path = scratch.file("r.reg");
    RegistryFileStore store(path);
    ASSERT_NE(store.create_key(kKey), nullptr);
    auto first = store.open_key(kKey);
    auto second = store.open_key(kKey);
    first->write(u"A", kRegistryBinary, le(1));
    second->write(u"B", kRegistryBinary, le(2));
    EXPECT_TRUE(first->close());
    EXPECT_TRUE(second->close()); // read before the first closed, merged after
    EXPECT_EQ(read_u32(store, u"A"), 1u);
    EXPECT_EQ(read_u32(store, u"B"), 2u);
}

TEST(RegistryFileStore, ForeignFileIsNeverOverwritten) {
    const ScratchFolder scratch;
    const std::string path = scratch.file("r.reg");
    write_file(path, "this is somebody's shopping list\n");
    RegistryFileStore store(path);
    EXPECT_EQ(store.create_key(kKey), nullptr);
    EXPECT_EQ(store.open_key(kKey), nullptr);
    EXPECT_EQ(read_file(path), "this is somebody's shopping list\n");
}

TEST(RegistryFileStore, UnreadableOrUnwritableStoreFailsQuietly) {
    const ScratchFolder scratch;
    // A folder where the file should be: not readable as a file.
    RegistryFileStore folder(scratch.path().string());
    EXPECT_EQ(folder.create_key(kKey), nullptr);
    // A path below a plain file: nothing can be made there, whoever runs the test.
    write_file(scratch.file("plain"), "x");
    RegistryFileStore below_file(scratch.file("plain/r.reg"));
    EXPECT_EQ(below_file.create_key(kKey), nullptr);
    EXPECT_EQ(below_file.open_key(kKey), nullptr);
    RegistryFileStore nowhere("");
    EXPECT_EQ(nowhere.create_key(kKey), nullptr);
}

TEST(RegistryFileStore, AFifoInPlaceOfTheFileDoesNotBlock) {
    const ScratchFolder scratch;
    const std::string fifo = scratch.file("r.reg");
    ASSERT_EQ(mkfifo(fifo.c_str(), 0600), 0);
    RegistryFileStore store(fifo);
    EXPECT_EQ(store.create_key(kKey), nullptr);
    EXPECT_EQ(store.open_key(kKey), nullptr);
}

TEST(RegistryFileStore, AWriterGivesUpWhileTheLockIsHeld) {
    const ScratchFolder scratch;
    const std::string path = scratch.file("r.reg");
    RegistryFileStore store(path);
    ASSERT_NE(store.create_key(kKey), nullptr);
    auto key = store.open_key(kKey);
    key->write(u"A", kRegistryBinary, le(1));
    {
        const auto held = FileLock::acquire(path + ".lock", std::chrono::milliseconds(10));
        ASSERT_NE(held, nullptr);
        EXPECT_FALSE(key->close()); // waits about a second, then gives up
    }
    EXPECT_EQ(read_u32(store, u"A"), 0xDEADBEEFu);
}

TEST(RegistryFileStore, WritesThroughASymbolicLinkAndKeepsIt) {
    const ScratchFolder scratch;
    const std::string target = scratch.file("dotfiles/registry.reg");
    const std::string link = scratch.file("registry.reg");
    std::filesystem::create_directory(scratch.file("dotfiles"));
    std::filesystem::create_symlink(target, link);
    RegistryFileStore store(link);
    auto key = store.create_key(kKey);
    ASSERT_NE(key, nullptr);
    key->write(u"A", kRegistryBinary, le(3));
    EXPECT_TRUE(key->close());
    EXPECT_TRUE(std::filesystem::is_symlink(link));
    EXPECT_EQ(read_u32(store, u"A"), 3u);
    RegistryValue stored;
    EXPECT_TRUE(read_registry_file(target).find_value(kKey, u"A", stored));
}

TEST(RegistryFileStore, AReadOnlyFileIsReadButNeverWritten) {
    const ScratchFolder scratch;
    const std::string path = scratch.file("r.reg");
    const std::string text = "Windows Registry Editor Version 5.00\n\n"
                             "[HKEY_LOCAL_MACHINE\\Software\\Halvik\\QV5\\Units]\n"
                             "\"A\"=hex:01,00,00,00\n";
    write_file(path, text);
    ASSERT_EQ(chmod(path.c_str(), 0444), 0);
    RegistryFileStore store(path);
    EXPECT_EQ(read_u32(store, u"A"), 1u);
    auto key = store.open_key(kKey);
    ASSERT_NE(key, nullptr);
    key->write(u"A", kRegistryBinary, le(2));
    EXPECT_FALSE(key->close()); // reported
    EXPECT_EQ(read_file(path), text);
    EXPECT_EQ(store.create_key(u"Software\\Other"), nullptr);
    EXPECT_EQ(read_file(path), text);
}

TEST(RegistryFileCheck, AMissingOrSoundFileHasNoProblem) {
    const ScratchFolder scratch;
    const std::string path = scratch.file("r.reg");
    EXPECT_EQ(check_registry_file(path).problem, RegistryFileProblem::none);
    write_file(path, "Windows Registry Editor Version 5.00\n");
    const auto check = check_registry_file(path);
    EXPECT_EQ(check.problem, RegistryFileProblem::none);
    EXPECT_EQ(check.path, path);
    EXPECT_TRUE(check.reason.empty());
    // A byte-order mark before the signature, as some editors save it, is no damage.
    write_file(path, "\xEF\xBB\xBFWindows Registry Editor Version 5.00\n\n"
                     "[HKEY_LOCAL_MACHINE\\Software\\Halvik\\QV5\\Units]\n"
                     "\"A\"=hex:02,00,00,00\n");
    EXPECT_EQ(check_registry_file(path).problem, RegistryFileProblem::none);
    RegistryFileStore store(path);
    EXPECT_EQ(read_u32(store, u"A"), 2u);
}

TEST(RegistryFileCheck, ADamagedSignatureIsNamed) {
    const ScratchFolder scratch;
    const std::string path = scratch.file("r.reg");
    write_file(path, "Windows Registry Editor Version 5.01\n\n[HKEY_LOCAL_MACHINE\\S]\n");
    const auto check = check_registry_file(path);
    EXPECT_EQ(check.problem, RegistryFileProblem::not_registry_file);
    EXPECT_NE(check.reason.find("not read as a registry file"), std::string::npos);
}

TEST(RegistryFileCheck, AFolderAHugeFileAndAReadOnlyFileAreNamed) {
    const ScratchFolder scratch;
    EXPECT_EQ(check_registry_file(scratch.path().string()).problem,
              RegistryFileProblem::unreadable);
    const std::string huge = scratch.file("huge.reg");
    write_file(huge, "Windows Registry Editor Version 5.00\n");
    std::filesystem::resize_file(huge, qv5::detail::kRegistryFileLimit + 1);
    EXPECT_EQ(check_registry_file(huge).problem, RegistryFileProblem::too_large);
    const std::string locked = scratch.file("locked.reg");
    write_file(locked, "Windows Registry Editor Version 5.00\n");
    ASSERT_EQ(chmod(locked.c_str(), 0444), 0);
    const auto check = check_registry_file(locked);
    EXPECT_EQ(check.problem, RegistryFileProblem::write_protected);
    EXPECT_NE(check.reason.find("read-only"), std::string::npos);
    EXPECT_EQ(check_registry_file("").problem, RegistryFileProblem::unreadable);
}

TEST(RegistryFileStore, TheEnvironmentNamesTheStore) {
    const qv5::test::ScratchRegistry registry("env.reg");
    auto store = open_settings_store();
    ASSERT_NE(store->create_key(kKey), nullptr);
    EXPECT_TRUE(read_registry_file(registry.path()).has_key(kKey));
}

TEST(RegistryFileStore, ProcessesAndThreadsWritingAtOnceLeaveOneWholeSet) {
    const ScratchFolder scratch;
    const std::string path = scratch.file("r.reg");
    RegistryFileStore store(path);
    ASSERT_NE(store.create_key(kKey), nullptr);
    constexpr int kWriters = 4;
    constexpr int kRounds = 10;
    constexpr int kValues = 11;
    // Writer w always writes the value w + 1 under every name: a torn or mixed result shows as
    // names holding different writers' values.
    const auto write_set = [&path](int writer) {
        RegistryFileStore own(path);
        for (int round = 0; round < kRounds; ++round) {
            auto key = own.open_key(kKey);
            if (key == nullptr) {
                continue;
            }
            for (int v = 0; v < kValues; ++v) {
                const std::u16string name = u"Value " + std::u16string(1, u'A' + v);
                key->write(name, kRegistryBinary, le(static_cast<std::uint32_t>(writer + 1)));
            }
            key->close();
        }
    };
    std::vector<pid_t> children;
    for (int w = 0; w < kWriters; ++w) {
        const pid_t pid = fork();
        if (pid == 0) {
            write_set(w);
            _exit(0);
        }
        children.push_back(pid);
    }
    std::vector<std::thread> threads;
    for (int w = kWriters; w < 2 * kWriters; ++w) {
        threads.emplace_back(write_set, w);
    }
    for (std::thread& t : threads) {
        t.join();
    }
    for (const pid_t pid : children) {
        int status = 0;
        waitpid(pid, &status, 0);
        EXPECT_TRUE(WIFEXITED(status) && WEXITSTATUS(status) == 0);
    }
    auto key = store.open_key(kKey);
    ASSERT_NE(key, nullptr);
    std::uint32_t first = 0;
    ASSERT_TRUE(key->read_u32(u"Value A", first));
    EXPECT_GE(first, 1u);
    EXPECT_LE(first, static_cast<std::uint32_t>(2 * kWriters));
    for (int v = 0; v < kValues; ++v) {
        std::uint32_t value = 0;
        ASSERT_TRUE(key->read_u32(u"Value " + std::u16string(1, u'A' + v), value));
        EXPECT_EQ(value, first);
    }
    EXPECT_FALSE(std::filesystem::exists(path + ".tmp"));
}

} // namespace
