#include "platform/registry_text.h"
#include "platform/settings_store.h"
#include "qv5/units.h"
#include "support/scratch.h"
#include "support/scratch_registry.h"
#include "units/unit_settings.h"

#include <gtest/gtest.h>

#include <map>
#include <sys/wait.h>
#include <thread>
#include <unistd.h>

using qv5::detail::kRegistryBinary;
using qv5::detail::kUnitKindCount;
using qv5::detail::load_unit_choices;
using qv5::detail::read_registry_file;
using qv5::detail::RegistryValue;
using qv5::detail::save_unit_choices;
using qv5::detail::SettingsKey;
using qv5::detail::SettingsStore;
using qv5::test::read_file;
using qv5::test::ScopedEnvironment;
using qv5::test::ScratchFolder;
using qv5::test::write_file;

namespace {

constexpr const char16_t* kKey = u"SOFTWARE\\Halvik\\QV5\\Units";

/// A settings store in memory that records every call made on it.
class RecordingStore final : public SettingsStore {
public:
    struct Write {
        std::u16string name;
        std::uint32_t type;
        std::vector<unsigned char> data;
    };
    std::map<std::u16string, std::uint32_t> values;
    std::map<std::u16string, std::uint32_t> types; ///< REG_BINARY unless given here
    std::vector<std::u16string> reads;
    std::vector<Write> writes;
    std::vector<std::string> calls;
    bool key_exists = true;

    std::unique_ptr<SettingsKey> create_key(std::u16string_view path) override {
        calls.push_back("create " + std::string(path.begin(), path.end()));
        key_exists = true;
        return std::make_unique<Key>(*this);
    }
    std::unique_ptr<SettingsKey> open_key(std::u16string_view path) override {
        calls.push_back("open " + std::string(path.begin(), path.end()));
        return key_exists ? std::make_unique<Key>(*this) : nullptr;
    }

private:
    class Key final : public SettingsKey {
    public:
        explicit Key(RecordingStore& store) : m_store(store) {}
        using SettingsKey::read_u32;
        bool read_u32(std::u16string_view name, std::uint32_t& value,
                      std::uint32_t& type) override {
            m_store.reads.emplace_back(name);
            const auto found = m_store.values.find(std::u16string(name));
            if (found == m_store.values.end()) {
                return false;
            }
            value = found->second;
            const auto typed = m_store.types.find(std::u16string(name));
            type = typed == m_store.types.end() ? kRegistryBinary : typed->second;
            return true;
        }
        bool write(std::u16string_view name, std::uint32_t type,
                   const std::vector<unsigned char>& data) override {
            m_store.writes.push_back(Write{std::u16string(name), type, data});
            return true;
        }
        bool close() override {
            m_store.calls.emplace_back("close");
            return true;
        }

    private:
        RecordingStore& m_store;
    };
};

void defaults(int (&choices)[kUnitKindCount]) {
    const int values[kUnitKindCount] = {1, 1, 0, 0, 1, 0, 0, 1, 1, 1, 0};
    std::copy(std::begin(values), std::end(values), std::begin(choices));
}

TEST(UnitChoicesLoad, ReadsElevenValuesInTheirOrder) {
    RecordingStore store;
    int choices[kUnitKindCount];
    defaults(choices);
    load_unit_choices(store, kKey, choices);
    EXPECT_EQ(store.calls,
              (std::vector<std::string>{"create SOFTWARE\\Halvik\\QV5\\Units", "close"}));
    EXPECT_EQ(store.reads,
              (std::vector<std::u16string>{u"Horizontal distance", u"Vertical distance", u"Length",
                                           u"Angles", u"Bearings", u"Vertical circle", u"Grade",
                                           u"Stationing", u"Area", u"Volume", u"Coords"}));
    int expected[kUnitKindCount];
    defaults(expected);
    EXPECT_TRUE(std::equal(std::begin(choices), std::end(choices), std::begin(expected)));
}

TEST(UnitChoicesLoad, StoredValuesReplaceDefaultsAndOutOfRangeReadsAsZero) {
    RecordingStore store;
    store.values = {{u"Horizontal distance", 2},
                    {u"Vertical distance", 3},
                    {u"Length", 3},
                    {u"Angles", 2},
                    {u"Bearings", 7},
                    {u"Vertical circle", 1},
                    {u"Grade", 0xFFFFFFFFu},
                    {u"Stationing", 2},
                    {u"Area", 4},
                    {u"Volume", 1},
                    {u"Coords", 2}};
    int choices[kUnitKindCount];
    defaults(choices);
    load_unit_choices(store, kKey, choices);
    // In holding order: hd, vd, angles, bearings, length, circle, grade, station, area,
    // volume, coords. Each limit is its table's row count, compared unsigned.
    const int expected[kUnitKindCount] = {2, 0, 0, 0, 3, 1, 0, 2, 0, 1, 2};
    for (int k = 0; k < kUnitKindCount; ++k) {
        EXPECT_EQ(choices[k], expected[k]) << k;
    }
}

TEST(UnitChoicesSave, WritesElevenBinaryValuesInTheirOrder) {
    RecordingStore store;
    const int choices[kUnitKindCount] = {0, 2, 1, 3, 2, 1, 2, 0, 3, 0, -1};
    save_unit_choices(store, kKey, choices);
    EXPECT_EQ(store.calls,
              (std::vector<std::string>{"open SOFTWARE\\Halvik\\QV5\\Units", "close"}));
    ASSERT_EQ(store.writes.size(), 11u);
    const std::vector<std::u16string> order = {u"Horizontal distance",
                                               u"Vertical distance",
                                               u"Bearings",
                                               u"Angles",
                                               u"Length",
                                               u"Vertical circle",
                                               u"Grade",
                                               u"Stationing",
                                               u"Area",
                                               u"Volume",
                                               u"Coords"};
    const unsigned char values[] = {0, 2, 3, 1, 2, 1, 2, 0, 3, 0};
    for (std::size_t i = 0; i < order.size(); ++i) {
        EXPECT_EQ(store.writes[i].name, order[i]);
        EXPECT_EQ(store.writes[i].type, kRegistryBinary); // REG_BINARY, never REG_DWORD
        ASSERT_EQ(store.writes[i].data.size(), 4u);
        if (i < 10) {
            EXPECT_EQ(store.writes[i].data, (std::vector<unsigned char>{values[i], 0, 0, 0}));
        }
    }
    EXPECT_EQ(store.writes[10].data, (std::vector<unsigned char>{0xFF, 0xFF, 0xFF, 0xFF}));
}

TEST(UnitChoicesSave, AMissingKeyIsNotCreated) {
    RecordingStore store;
    store.key_exists = false;
    const int choices[kUnitKindCount] = {};
    save_unit_choices(store, kKey, choices);
    EXPECT_EQ(store.calls, (std::vector<std::string>{"open SOFTWARE\\Halvik\\QV5\\Units"}));
    EXPECT_TRUE(store.writes.empty());
}

TEST(UnitChoicesLoad, TellsWhichChoicesWereStoredExactlyAsWritten) {
    RecordingStore store;
    store.values = {{u"Horizontal distance", 2}, // binary, in range: exact
                    {u"Angles", 1},              // a DWORD: another type
                    {u"Bearings", 7},            // out of range
                    {u"Grade", 2}};              // binary, in range: exact
    store.types = {{u"Angles", qv5::detail::kRegistryDword}};
    int choices[kUnitKindCount];
    defaults(choices);
    qv5::detail::StoredExactly exactly = 0xFFFFFFFFu;
    load_unit_choices(store, kKey, choices, exactly);
    EXPECT_EQ(exactly,
              (1u << qv5::detail::kHorizontalDistanceKind) | (1u << qv5::detail::kGradeKind));
    EXPECT_EQ(choices[qv5::detail::kAnglesKind], 1); // read all the same
}

TEST(UnitChoicesSave, AChoiceReadExactlyAndUnchangedIsNotWritten) {
    RecordingStore store;
    int loaded[kUnitKindCount];
    defaults(loaded);
    int choices[kUnitKindCount];
    defaults(choices);
    choices[qv5::detail::kGradeKind] = 2;      // changed
    choices[qv5::detail::kVolumeKind] = 0;     // changed
    const qv5::detail::StoredExactly exactly = // all but "Coords" were stored exactly
        ((1u << kUnitKindCount) - 1) & ~(1u << qv5::detail::kCoordsKind);
    save_unit_choices(store, kKey, choices, loaded, exactly);
    ASSERT_EQ(store.writes.size(), 3u);
    // In the write order: grade, volume, coords.
    EXPECT_EQ(store.writes[0].name, u"Grade");
    EXPECT_EQ(store.writes[0].data, (std::vector<unsigned char>{2, 0, 0, 0}));
    EXPECT_EQ(store.writes[1].name, u"Volume");
    EXPECT_EQ(store.writes[1].data, (std::vector<unsigned char>{0, 0, 0, 0}));
    EXPECT_EQ(store.writes[2].name, u"Coords");
    EXPECT_EQ(store.writes[2].type, kRegistryBinary);
}

TEST(UnitChoicesSave, AChoiceChangedAndChangedBackIsNotWritten) {
    RecordingStore store;
    int loaded[kUnitKindCount];
    defaults(loaded);
    int choices[kUnitKindCount];
    defaults(choices);
    save_unit_choices(store, kKey, choices, loaded, (1u << kUnitKindCount) - 1);
    EXPECT_TRUE(store.writes.empty());
    EXPECT_EQ(store.calls.back(), "close");
}

// ---- through the registry file -------------------------------------------------------------

class UnitsInRegistryFile : public ::testing::Test {
protected:
    qv5::test::ScratchRegistry registry;
    std::string path = registry.path();
};

TEST_F(UnitsInRegistryFile, AFreshKeyYieldsTheDefaultsAndIsCreated) {
    {
        const CQuantityUnits units{CString(kKey)};
        EXPECT_EQ(units.HorizontalDistance(), units_USSurveyFeet);
        EXPECT_EQ(units.Length(), units_LengthFeet);
        EXPECT_EQ(units.Area(), units_SquareFeet);
        EXPECT_EQ(units.Volume(), units_CubicYards);
        EXPECT_EQ(units.Stationing(), units_Station1Plus00);
        EXPECT_TRUE(read_registry_file(path).has_key(kKey));
    }
    RegistryValue stored;
    ASSERT_TRUE(read_registry_file(path).find_value(kKey, u"Area", stored));
    EXPECT_EQ(stored, (RegistryValue{kRegistryBinary, {1, 0, 0, 0}}));
}

TEST_F(UnitsInRegistryFile, ChoicesRoundTripBetweenTwoObjects) {
    {
        CQuantityUnits units{CString(kKey)};
        units.SetHorizontalDistance(units_Metres);
        units.SetVerticalDistance(units_InternationalFeet);
        units.SetAngles(units_AngleGons);
        units.SetBearings(units_BearingDecimalDegrees);
        units.SetLength(units_LengthCentimetres);
        units.SetGrade(units_GradeRunRise);
        units.SetStationing(units_Station10Plus0);
        units.SetArea(units_Hectares);
        units.SetVolume(units_CubicMetres);
        units.SetCoords(units_EastNorthElev);
        units.EnablePopUps(0);
    }
    const CQuantityUnits again{CString(kKey)};
    EXPECT_EQ(again.HorizontalDistance(), units_Metres);
    EXPECT_EQ(again.VerticalDistance(), units_InternationalFeet);
    EXPECT_EQ(again.Angles(), units_AngleGons);
    EXPECT_EQ(again.Bearings(), units_BearingDecimalDegrees);
    EXPECT_EQ(again.Length(), units_LengthCentimetres);
    EXPECT_EQ(again.Grade(), units_GradeRunRise);
    EXPECT_EQ(again.Stationing(), units_Station10Plus0);
    EXPECT_EQ(again.Area(), units_Hectares);
    EXPECT_EQ(again.Volume(), units_CubicMetres);
    EXPECT_EQ(again.Coords(), units_EastNorthElev);
    EXPECT_EQ(again.PopUpsEnabled(), 1); // never stored
    EXPECT_EQ(read_file(path).find("opUp"), std::string::npos);
}

TEST_F(UnitsInRegistryFile, TheFileReadsAsTheRegistryEditorWritesIt) {
    { const CQuantityUnits units{CString(kKey)}; }
    EXPECT_EQ(read_file(path), "Windows Registry Editor Version 5.00\n"
                               "\n"
                               "[HKEY_LOCAL_MACHINE\\SOFTWARE\\Halvik\\QV5\\Units]\n"
                               "\"Horizontal distance\"=hex:01,00,00,00\n"
                               "\"Vertical distance\"=hex:01,00,00,00\n"
                               "\"Bearings\"=hex:00,00,00,00\n"
                               "\"Angles\"=hex:00,00,00,00\n"
                               "\"Length\"=hex:01,00,00,00\n"
                               "\"Vertical circle\"=hex:00,00,00,00\n"
                               "\"Grade\"=hex:00,00,00,00\n"
                               "\"Stationing\"=hex:01,00,00,00\n"
                               "\"Area\"=hex:01,00,00,00\n"
                               "\"Volume\"=hex:01,00,00,00\n"
                               "\"Coords\"=hex:00,00,00,00\n"
                               "\n");
}

TEST_F(UnitsInRegistryFile, AStoredBearingsOfSevenComesBackAsZero) {
    write_file(path, "Windows Registry Editor Version 5.00\n\n"
                     "[HKEY_LOCAL_MACHINE\\SOFTWARE\\Halvik\\QV5\\Units]\n"
                     "\"Bearings\"=hex:07,00,00,00\n"
                     "\"Angles\"=dword:00000001\n");
    const CQuantityUnits units{CString(kKey)};
    EXPECT_EQ(units.Bearings(), units_BearingDMS);
    EXPECT_EQ(units.Angles(), units_AngleGons); // a REG_DWORD of four bytes reads too
}

TEST_F(UnitsInRegistryFile, AnEmptyKeyPathTouchesNothing) {
    {
        CQuantityUnits units{CString()};
        units.SetHorizontalDistance(units_Metres);
    }
    EXPECT_FALSE(std::filesystem::exists(path));
    EXPECT_FALSE(std::filesystem::exists(path + ".lock"));
}

TEST_F(UnitsInRegistryFile, ACorruptFileLeavesTheDefaultsAndIsKept) {
    const std::string garbage("\x00\xFF\x13garbage\n[HKEY_LOCAL_MACHINE\\SOFTWARE]\n", 35);
    write_file(path, garbage);
    {
        CQuantityUnits units{CString(kKey)};
        EXPECT_EQ(units.HorizontalDistance(), units_USSurveyFeet);
        units.SetHorizontalDistance(units_Metres);
    }
    EXPECT_EQ(read_file(path), garbage);
}

TEST_F(UnitsInRegistryFile, CorruptLinesInARegistryFileLeaveTheirDefaults) {
    write_file(path, "Windows Registry Editor Version 5.00\n"
                     "[HKEY_LOCAL_MACHINE\\SOFTWARE\\Halvik\\QV5\\Units]\n"
                     "\"Horizontal distance\"=hex:00,00\n"
                     "\"Length\"=hex:zz,00,00,00\n"
                     "\"Grade\"=hex:02,00,00,00\n"
                     "\x01\x02 noise\n");
    const CQuantityUnits units{CString(kKey)};
    EXPECT_EQ(units.HorizontalDistance(), units_USSurveyFeet);
    EXPECT_EQ(units.Length(), units_LengthFeet);
    EXPECT_EQ(units.Grade(), units_GradeRiseRun);
}

TEST(UnitsInUnwritableStore, DefaultsStayAndNothingFails) {
    // The registry file's folder is a plain file: nothing can be stored.
    const qv5::test::ScratchRegistry registry("plain/registry.reg");
    write_file(registry.folder().file("plain"), "x");
    CQuantityUnits units{CString(kKey)};
    EXPECT_EQ(units.HorizontalDistance(), units_USSurveyFeet);
    units.SetHorizontalDistance(units_Metres);
    EXPECT_EQ(units.MetresToHDistance(2.0), 2.0);
}

TEST(UnitsInUnwritableStore, NoLocationAtAllKeepsTheDefaults) {
    const ScopedEnvironment registry("QV5_REGISTRY", "");
    const ScopedEnvironment config("XDG_CONFIG_HOME", "");
    const ScopedEnvironment home("HOME", "");
    const CQuantityUnits units{CString(kKey)};
    EXPECT_EQ(units.Volume(), units_CubicYards);
}

TEST_F(UnitsInRegistryFile, ProcessesAndThreadsLeaveEveryChoiceAsOneWriterWroteIt) {
    { const CQuantityUnits create{CString(kKey)}; }
    // Writer w sets every kind to a row derived from w, distinct per writer where the table
    // allows. A writer writes back only the choices it changed from what it read, so that a
    // concurrent change of another choice survives: the kinds may end up from different writers,
    // but the file stays whole and every kind holds a row one of the writers set.
    struct Set {
        int hd, vd, angles, bearings, length, grade, station, area, volume, coords;
    };
    const auto set_of = [](int w) {
        return Set{w % 3, w % 3, w % 2, w % 4, w % 4, w % 3, w % 3, w % 4, w % 2, w % 3};
    };
    const auto writer = [&set_of](int w) {
        for (int round = 0; round < 8; ++round) {
            CQuantityUnits units{CString(kKey)};
            const Set s = set_of(w);
            units.SetHorizontalDistance(s.hd);
            units.SetVerticalDistance(s.vd);
            units.SetAngles(s.angles);
            units.SetBearings(s.bearings);
            units.SetLength(s.length);
            units.SetGrade(s.grade);
            units.SetStationing(s.station);
            units.SetArea(s.area);
            units.SetVolume(s.volume);
            units.SetCoords(s.coords);
        }
    };
    std::vector<pid_t> children;
    for (int w = 0; w < 3; ++w) {
        const pid_t pid = fork();
        if (pid == 0) {
            writer(w);
            _exit(0);
        }
        children.push_back(pid);
    }
    std::vector<std::thread> threads;
    for (int w = 3; w < 6; ++w) {
        threads.emplace_back(writer, w);
    }
    for (std::thread& t : threads) {
        t.join();
    }
    for (const pid_t pid : children) {
        int status = 0;
        waitpid(pid, &status, 0);
        EXPECT_TRUE(WIFEXITED(status) && WEXITSTATUS(status) == 0);
    }
    const auto text = read_registry_file(path);
    ASSERT_TRUE(text.usable());
    const CQuantityUnits read_back{CString(kKey)};
    const Set got{read_back.HorizontalDistance(),
                  read_back.VerticalDistance(),
                  read_back.Angles(),
                  read_back.Bearings(),
                  read_back.Length(),
                  read_back.Grade(),
                  read_back.Stationing(),
                  read_back.Area(),
                  read_back.Volume(),
                  read_back.Coords()};
    const auto written_by_a_writer = [&set_of](int Set::*kind, int value) {
        for (int w = 0; w < 6; ++w) {
            if (set_of(w).*kind == value) {
                return true;
            }
        }
        return false;
    };
    for (int Set::*kind : {&Set::hd, &Set::vd, &Set::angles, &Set::bearings, &Set::length,
                           &Set::grade, &Set::station, &Set::area, &Set::volume, &Set::coords}) {
        EXPECT_TRUE(written_by_a_writer(kind, got.*kind)) << got.*kind;
    }
}

TEST_F(UnitsInRegistryFile, AChoiceOnlyReadLeavesAnotherProgramsChangeAlone) {
    { const CQuantityUnits create{CString(kKey)}; }
    {
        CQuantityUnits mine{CString(kKey)};
        mine.SetGrade(units_GradeRiseRun);
        {
            CQuantityUnits theirs{CString(kKey)};
            theirs.SetBearings(units_BearingGons);
        } // theirs writes its change first
    }
    const CQuantityUnits after{CString(kKey)};
    EXPECT_EQ(after.Grade(), units_GradeRiseRun);
    EXPECT_EQ(after.Bearings(), units_BearingGons);
}

TEST_F(UnitsInRegistryFile, ADamagedChoiceIsWrittenBackAsBinary) {
    write_file(path, "Windows Registry Editor Version 5.00\n\n"
                     "[HKEY_LOCAL_MACHINE\\SOFTWARE\\Halvik\\QV5\\Units]\n"
                     "\"Horizontal distance\"=hex:00,00,00,00\n"
                     "\"Vertical distance\"=hex:00,00,00,00\n"
                     "\"Bearings\"=hex:07,00,00,00\n"
                     "\"Angles\"=dword:00000001\n"
                     "\"Length\"=hex:00,00\n"
                     "\"Vertical circle\"=hex:00,00,00,00\n"
                     "\"Grade\"=hex:00,00,00,00\n"
                     "\"Stationing\"=hex:00,00,00,00\n"
                     "\"Area\"=hex:00,00,00,00\n"
                     "\"Volume\"=hex:00,00,00,00\n");
    { const CQuantityUnits units{CString(kKey)}; }
    const auto text = read_registry_file(path);
    const std::pair<const char16_t*, unsigned char> expected[] = {{u"Horizontal distance", 0},
                                                                  {u"Vertical distance", 0},
                                                                  {u"Bearings", 0},
                                                                  {u"Angles", 1},
                                                                  {u"Length", 1},
                                                                  {u"Vertical circle", 0},
                                                                  {u"Grade", 0},
                                                                  {u"Stationing", 0},
                                                                  {u"Area", 0},
                                                                  {u"Volume", 0},
                                                                  {u"Coords", 0}};
    for (const auto& [name, row] : expected) {
        RegistryValue stored;
        ASSERT_TRUE(text.find_value(kKey, name, stored)) << std::string(name, name + 3);
        EXPECT_EQ(stored, (RegistryValue{kRegistryBinary, {row, 0, 0, 0}}))
            << std::string(name, name + 3);
    }
}

TEST(UnitsInSharedRegistryFile, ProcessesChangingDifferentChoicesKeepEveryChange) {
    const ScratchFolder scratch{qv5::test::fast_scratch_base()};
    const std::string path = scratch.file("registry.reg");
    const ScopedEnvironment registry{"QV5_REGISTRY", path};
    { const CQuantityUnits create{CString(kKey)}; }
    // Each round starts from one known set; process p changes only its own kind. Any write back
    // of a choice merely read would, now and then, undo another process's change.
    constexpr int kRounds = 200;
    constexpr int kProcesses = 4;
    int lost = 0;
    for (int round = 0; round < kRounds && lost == 0; ++round) {
        {
            CQuantityUnits reset{CString(kKey)};
            reset.SetGrade(units_GradePercent);
            reset.SetBearings(units_BearingDMS);
            reset.SetArea(units_SquareFeet);
            reset.SetCoords(units_NorthEastElev);
        }
        std::vector<pid_t> children;
        for (int p = 0; p < kProcesses; ++p) {
            const pid_t pid = fork();
            if (pid == 0) {
                {
                    CQuantityUnits units{CString(kKey)};
                    switch (p) {
                    case 0:
                        units.SetGrade(units_GradeRiseRun);
                        break;
                    case 1:
                        units.SetBearings(units_BearingGons);
                        break;
                    case 2:
                        units.SetArea(units_Hectares);
                        break;
                    default:
                        units.SetCoords(units_XYZ);
                        break;
                    }
                }
                _exit(0);
            }
            children.push_back(pid);
        }
        for (const pid_t pid : children) {
            int status = 0;
            waitpid(pid, &status, 0);
            EXPECT_TRUE(WIFEXITED(status) && WEXITSTATUS(status) == 0);
        }
        const CQuantityUnits after{CString(kKey)};
        const bool all = after.Grade() == units_GradeRiseRun &&
                         after.Bearings() == units_BearingGons && after.Area() == units_Hectares &&
                         after.Coords() == units_XYZ;
        if (!all) {
            ++lost;
            ADD_FAILURE() << "round " << round << " lost a change";
        }
    }
    EXPECT_EQ(lost, 0);
}

} // namespace
