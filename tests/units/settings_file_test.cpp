#include "qv5/settings.h"
#include "qv5/units.h"
#include "support/scratch.h"

#include <gtest/gtest.h>

#include <sys/stat.h>

using qv5::test::read_file;
using qv5::test::ScopedEnvironment;
using qv5::test::ScratchFolder;
using qv5::test::write_file;

namespace {

constexpr const char16_t* kKey = u"SOFTWARE\\Halvik\\QV5\\Units";

TEST(SettingsFileCheck, AFreshStoreIsFine) {
    const ScratchFolder scratch;
    const std::string path = scratch.file("registry.reg");
    const ScopedEnvironment registry("QV5_REGISTRY", path);
    CString file("stale");
    CString reason("stale");
    EXPECT_EQ(qv5::CheckSettingsFile(file, reason), 1);
    EXPECT_EQ(file.ToUtf8(), path);
    EXPECT_EQ(reason.IsEmpty(), 1);
}

TEST(SettingsFileCheck, OneChangedCharacterOfTheSignatureIsReported) {
    const ScratchFolder scratch;
    const std::string path = scratch.file("registry.reg");
    const ScopedEnvironment registry("QV5_REGISTRY", path);
    { const CQuantityUnits units{CString(kKey)}; }
    std::string text = read_file(path);
    text[0] = 'w';
    write_file(path, text);
    CString file;
    CString reason;
    EXPECT_EQ(qv5::CheckSettingsFile(file, reason), 0);
    EXPECT_EQ(file.ToUtf8(), path);
    EXPECT_NE(reason.ToUtf8().find("Windows Registry Editor Version 5.00"), std::string::npos);
    {
        CQuantityUnits units{CString(kKey)};
        units.SetHorizontalDistance(units_Metres);
    }
    EXPECT_EQ(read_file(path), text); // still never written over
}

TEST(SettingsFileCheck, AReadOnlyFileIsReportedAndKept) {
    const ScratchFolder scratch;
    const std::string path = scratch.file("registry.reg");
    const ScopedEnvironment registry("QV5_REGISTRY", path);
    { const CQuantityUnits units{CString(kKey)}; }
    const std::string text = read_file(path);
    ASSERT_EQ(chmod(path.c_str(), 0444), 0);
    CString file;
    CString reason;
    EXPECT_EQ(qv5::CheckSettingsFile(file, reason), 0);
    EXPECT_NE(reason.ToUtf8().find("read-only"), std::string::npos);
    {
        CQuantityUnits units{CString(kKey)};
        units.SetHorizontalDistance(units_Metres);
    }
    EXPECT_EQ(read_file(path), text);
}

} // namespace
