// The road file's bytes and the walker over them, without a road: headers, chaining, and every
// way a hostile file can be wrong.
#include "road/road_file_format.h"
#include "road_file_fixture.h"

#include <gtest/gtest.h>

#include <string>
#include <vector>

namespace {

using namespace qv5::test;
using qv5::detail::RecordType;
using qv5::detail::RoadFileOutput;
using qv5::detail::SectionType;

std::span<const unsigned char> span_of(const Bytes& b) {
    return {b.data(), b.size()};
}

std::string utf8_of(const unsigned short* units) {
    std::string s;
    for (; *units != 0; ++units) {
        s.push_back(static_cast<char>(*units));
    }
    return s;
}

/// Logs every record the walker hands over; can refuse one call by its index.
class Recorder : public qv5::detail::RoadRecordVisitor {
public:
    std::vector<std::string> calls;
    int refuse_at = -1;

    georoad_FileProblem log(std::string s) {
        calls.push_back(std::move(s));
        return static_cast<int>(calls.size()) - 1 == refuse_at ? georoad_FileElementRefused
                                                               : georoad_FileOk;
    }
    georoad_FileProblem point_of_beginning(const double v[6]) override {
        return log("pob " + std::to_string(v[0]) + " " + std::to_string(v[5]));
    }
    georoad_FileProblem line(double az, double len) override {
        return log("line " + std::to_string(az) + " " + std::to_string(len));
    }
    georoad_FileProblem spiral(bool entry, bool right, double r, double len) override {
        return log(std::string("spiral ") + (entry ? "entry " : "exit ") + (right ? "R " : "L ") +
                   std::to_string(r) + " " + std::to_string(len));
    }
    georoad_FileProblem arc(bool right, double r, double len) override {
        return log(std::string("arc ") + (right ? "R " : "L ") + std::to_string(r) + " " +
                   std::to_string(len));
    }
    georoad_FileProblem pvi(int type, double s, double z, double len) override {
        return log("pvi " + std::to_string(type) + " " + std::to_string(s) + " " +
                   std::to_string(z) + " " + std::to_string(len));
    }
    georoad_FileProblem application(const unsigned short* name, double s, int side) override {
        return log("app " + utf8_of(name) + " " + std::to_string(s) + " " + std::to_string(side));
    }
    georoad_FileProblem template_start(const unsigned short* name) override {
        return log("template " + utf8_of(name));
    }
    georoad_FileProblem template_element(int type, const void* record) override {
        double first = 0;
        std::memcpy(&first, static_cast<const unsigned char*>(record) + (type == 3 ? 66 : 0), 8);
        return log("element " + std::to_string(type) + " " + std::to_string(first));
    }
    georoad_FileProblem template_finish() override { return log("finish"); }
};

struct Walked {
    bool ok;
    georoad_FileReport report;
    std::vector<std::string> calls;
};

Walked walk(const Bytes& file, int refuse_at = -1) {
    qv5def_FileHeader header;
    georoad_FileReport report{};
    Walked w{false, {}, {}};
    if (!qv5::detail::decode_file_header(span_of(file), header, report)) {
        w.report = report;
        return w;
    }
    Recorder recorder;
    recorder.refuse_at = refuse_at;
    w.ok = qv5::detail::walk_road_file(span_of(file), header, recorder, w.report);
    w.calls = recorder.calls;
    return w;
}

Bytes small_file() {
    return assemble_road_file(
        "Main St",
        {{1,
          {{1, pob_data(1000, 2000, 30, 0.5, 100, 20)},
           {2, line_data(0.5, 50)},
           {4, arc_data(true, 300, 40)},
           {3, spiral_data(false, false, 300, 30)}}},
         {2, {{10, Bytes(8, 0)}, {11, pvi_data(100, 30)}, {12, curve_data(200, 32, 60)}}}});
}

TEST(RoadFileHeader, NewHeaderEncodesToTheTableLayout) {
    const std::u16string name = u"Main St";
    std::vector<unsigned short> units(name.begin(), name.end());
    units.push_back(0);
    const auto encoded =
        qv5::detail::encode_file_header(qv5::detail::new_file_header(units.data()));
    const Bytes expected = assemble_road_file("Main St", {});
    ASSERT_EQ(expected.size(), 218u);
    EXPECT_EQ(Bytes(encoded.begin(), encoded.end()), expected);
}

TEST(RoadFileHeader, NameOfFortyUnitsIsCutToThirtyTwo) {
    std::vector<unsigned short> units(40, 'x');
    units.push_back(0);
    const qv5def_FileHeader header = qv5::detail::new_file_header(units.data());
    for (int i = 0; i < 32; ++i) {
        EXPECT_EQ(header.name[i], 'x');
    }
    EXPECT_EQ(header.name[32], 0);
}

TEST(RoadFileOutput, ChainsRecordsAndFillsTheDirectoryInWritingOrder) {
    RoadFileOutput out;
    std::vector<unsigned short> name = {'M', 'a', 'i', 'n', ' ', 'S', 't', 0};
    qv5def_FileHeader header = qv5::detail::new_file_header(name.data());
    unsigned short entry = 0;
    auto add = [&](RecordType t, const Bytes& d) {
        ASSERT_TRUE(out.add_record(t, d.data(), d.size()));
    };
    ASSERT_TRUE(out.begin_section(header, entry, SectionType::horizontal));
    add(RecordType::point_of_beginning, pob_data(1000, 2000, 30, 0.5, 100, 20));
    add(RecordType::line, line_data(0.5, 50));
    add(RecordType::arc, arc_data(true, 300, 40));
    add(RecordType::spiral, spiral_data(false, false, 300, 30));
    ASSERT_TRUE(out.begin_section(header, entry, SectionType::vertical));
    add(RecordType::vertical_reserved, Bytes(8, 0));
    add(RecordType::pvi_point, pvi_data(100, 30));
    add(RecordType::pvi_parabola, curve_data(200, 32, 60));
    out.put_header(header);
    EXPECT_EQ(entry, 2);
    EXPECT_EQ(out.bytes(), small_file());
}

TEST(RoadFileOutput, DirectoryHoldsTwentySections) {
    RoadFileOutput out;
    qv5def_FileHeader header = qv5::detail::new_file_header(nullptr);
    unsigned short entry = 19;
    EXPECT_TRUE(out.begin_section(header, entry, SectionType::templates));
    EXPECT_FALSE(out.begin_section(header, entry, SectionType::templates));
}

TEST(RoadFileWalk, HandsOverEveryRecordInChainOrderAndSkipsTheReservedOne) {
    const Walked w = walk(small_file());
    ASSERT_TRUE(w.ok);
    const std::vector<std::string> expected = {
        "pob 1000.000000 20.000000",           "line 0.500000 50.000000",
        "arc R 300.000000 40.000000",          "spiral exit L 300.000000 30.000000",
        "pvi 0 100.000000 30.000000 0.000000", "pvi 1 200.000000 32.000000 60.000000"};
    EXPECT_EQ(w.calls, expected);
}

TEST(RoadFileHeader, EveryTruncationOfTheHeaderIsATruncatedHeader) {
    const Bytes file = small_file();
    for (std::size_t n = 0; n < 218; ++n) {
        const Bytes cut(file.begin(), file.begin() + static_cast<long>(n));
        const Walked w = walk(cut);
        EXPECT_FALSE(w.ok) << n;
        EXPECT_EQ(w.report.problem, georoad_FileTruncatedHeader) << n;
    }
}

TEST(RoadFileHeader, ChangedFirstByteIsNotARoadFile) {
    Bytes file = small_file();
    file[0] = 'h';
    EXPECT_EQ(walk(file).report.problem, georoad_FileNotARoadFile);
}

TEST(RoadFileHeader, MagicWithoutItsZeroIsNotARoadFile) {
    Bytes file = small_file();
    file[10] = '!';
    EXPECT_EQ(walk(file).report.problem, georoad_FileNotARoadFile);
}

TEST(RoadFileHeader, NameLengthLargerThanTheFieldIsRefused) {
    Bytes file = small_file();
    poke_u16(file, 28, 34);
    const Walked w = walk(file);
    EXPECT_EQ(w.report.problem, georoad_FileBadNameLength);
    EXPECT_EQ(w.report.offset, 28u);
    poke_u16(file, 28, 0xFFFF);
    EXPECT_EQ(walk(file).report.problem, georoad_FileBadNameLength);
}

TEST(RoadFileHeader, ShortNameLengthEndsTheNameBeforeItsLastUnit) {
    Bytes file = small_file();
    poke_u16(file, 28, 5);
    qv5def_FileHeader header;
    georoad_FileReport report{};
    ASSERT_TRUE(qv5::detail::decode_file_header(span_of(file), header, report));
    EXPECT_EQ(utf8_of(header.name), "Main");
}

TEST(RoadFileHeader, ThirtyThirdNameUnitIsForcedToZero) {
    Bytes file = assemble_road_file(std::string(33, 'q'), {});
    qv5def_FileHeader header;
    georoad_FileReport report{};
    ASSERT_TRUE(qv5::detail::decode_file_header(span_of(file), header, report));
    EXPECT_EQ(utf8_of(header.name), std::string(32, 'q'));
}

TEST(RoadFileHeader, VersionAndReservedFieldsAreNotChecked) {
    Bytes file = small_file();
    poke_u32(file, 16, 77);
    poke_u32(file, 20, 0xDEADBEEF);
    file[12] = 0x55;
    file[25] = 0x66;
    EXPECT_TRUE(walk(file).ok);
}

TEST(RoadFileHeader, DirectoryLargerThanItsFieldIsRefused) {
    Bytes file = small_file();
    poke_u16(file, 96, 21);
    EXPECT_EQ(walk(file).report.problem, georoad_FileBadDirectorySize);
}

TEST(RoadFileHeader, SmallerDirectoryReadsOnlyItsEntries) {
    Bytes file = small_file();
    poke_u16(file, 96, 1);
    const Walked w = walk(file);
    ASSERT_TRUE(w.ok);
    EXPECT_EQ(w.calls.size(), 4u); // the vertical section's entry is not read
}

TEST(RoadFileWalk, UnknownSectionTypesAndEmptySectionsAreSkipped) {
    Bytes file = small_file();
    poke_u16(file, 98, 6);                // horizontal entry now of an unknown type
    poke_u32(file, 104 + 2, 0xFFFFFFFEu); // vertical section empty
    const Walked w = walk(file);
    ASSERT_TRUE(w.ok);
    EXPECT_TRUE(w.calls.empty());
}

TEST(RoadFileWalk, DirectoryOffsetOutsideTheFileIsARecordOutside) {
    Bytes file = small_file();
    poke_u32(file, 100, static_cast<std::uint32_t>(file.size()) - 17);
    const Walked w = walk(file);
    EXPECT_FALSE(w.ok);
    EXPECT_EQ(w.report.problem, georoad_FileRecordOutside);
    poke_u32(file, 100, 0xFFFFFFF0u);
    EXPECT_EQ(walk(file).report.problem, georoad_FileRecordOutside);
}

TEST(RoadFileWalk, NextPointerOutsideTheFileIsARecordOutside) {
    Bytes file = small_file();
    poke_u32(file, 218 + 10, 0x7FFFFFFF);
    const Walked w = walk(file);
    EXPECT_FALSE(w.ok);
    EXPECT_EQ(w.report.problem, georoad_FileRecordOutside);
    EXPECT_EQ(w.report.offset, 0x7FFFFFFFu);
}

TEST(RoadFileWalk, DataLengthPastTheEndIsATruncatedRecord) {
    Bytes file = small_file();
    poke_u32(file, 218 + 6, 0xFFFFFFFFu);
    const Walked w = walk(file);
    EXPECT_EQ(w.report.problem, georoad_FileTruncatedRecord);
    EXPECT_EQ(w.report.offset, 218u);
    EXPECT_EQ(w.report.recordType, 1u);
}

TEST(RoadFileWalk, RecordTooShortForItsTypeIsRefused) {
    Bytes file = small_file();
    poke_u32(file, 218 + 6, 47);
    EXPECT_EQ(walk(file).report.problem, georoad_FileRecordTooShort);
}

TEST(RoadFileWalk, LongerDataThanTheTypeNeedsIsReadFromItsStart) {
    // Record 1 claims 48 + 16 bytes: the walker reads its 48 and the chain goes on.
    Bytes file =
        assemble_road_file("", {{1, {{1, pob_data(5, 6, 7, 0, 0, 20)}, {2, line_data(1, 2)}}}});
    Bytes data = pob_data(5, 6, 7, 0, 0, 20);
    data.resize(64, 0xAB);
    file = assemble_road_file("", {{1, {{1, data}, {2, line_data(1, 2)}}}});
    const Walked w = walk(file);
    ASSERT_TRUE(w.ok);
    EXPECT_EQ(w.calls.size(), 2u);
}

TEST(RoadFileWalk, ChainThatPointsAtItselfLoops) {
    Bytes file = small_file();
    poke_u32(file, 218 + 10, 218);
    EXPECT_EQ(walk(file).report.problem, georoad_FileChainLoops);
}

TEST(RoadFileWalk, ChainThatComesBackAfterALeadInLoops) {
    // pob -> line -> arc -> spiral -> back to the line.
    Bytes file = small_file();
    const std::uint32_t line = 218 + 18 + 48;
    const std::uint32_t spiral = line + 18 + 16 + 18 + 20;
    poke_u32(file, spiral + 10, line);
    const Walked w = walk(file);
    EXPECT_EQ(w.report.problem, georoad_FileChainLoops);
    EXPECT_LT(w.calls.size(), 20u);
}

TEST(RoadFileWalk, LoopingVerticalChainEndsWithinAFewLaps) {
    // Every record of a long chain points to the next and the last back at the first.
    std::vector<FixtureRecord> records;
    for (int i = 0; i < 1000; ++i) {
        records.push_back({10, Bytes(8, 0)});
    }
    Bytes file = assemble_road_file("", {{2, records}});
    poke_u32(file, 218 + 999 * 26 + 10, 218);
    EXPECT_EQ(walk(file).report.problem, georoad_FileChainLoops);
}

TEST(RoadFileWalk, ReservedAndUnknownRecordsAreSkippedWhateverTheirLength) {
    Bytes file = assemble_road_file(
        "", {{1,
              {{1, pob_data(0, 0, 0, 0, 0, 20)},
               {10, Bytes(8, 0)},
               {99, Bytes(3, 1)},
               {2, line_data(1, 2)}}},
             {5, {{21, template_name_data("T")}, {10, {}}, {2000, Bytes(1, 0)}}}});
    // The unknown record claims far more data than the file holds: it is not read.
    poke_u32(file, 218 + 18 + 48 + 18 + 8 + 6, 0xFFFFFFF0u);
    const Walked w = walk(file);
    ASSERT_TRUE(w.ok) << w.report.problem;
    const std::vector<std::string> expected = {"pob 0.000000 20.000000", "line 1.000000 2.000000",
                                               "template T", "finish"};
    EXPECT_EQ(w.calls, expected);
}

TEST(RoadFileWalk, TemplateIsAddedAtTheFirstRecordThatIsNotOneOfItsElements) {
    const Bytes file = assemble_road_file(
        "", {{5,
              {{21, template_name_data("A")},
               {22, doubles_data({0.1, 3})},
               {25, feature_data("EP", 7, 8)},
               {21, template_name_data("B")},
               {26, doubles_data({0.5, -0.2})},
               {23, doubles_data({1, 2})},
               {24, doubles_data({0.5, 0.6, 1})},
               {27, doubles_data({9, 1, 0.2, 0, 0})}}},
             {3, {{20, application_data("A", 10, 1)}, {20, application_data("b", 20, 3)}}}});
    const Walked w = walk(file);
    ASSERT_TRUE(w.ok);
    const std::vector<std::string> expected = {"template A",         "element 1 0.100000",
                                               "element 3 7.000000", "finish",
                                               "template B",         "element 0 0.500000",
                                               "element 2 1.000000", "element 5 0.500000",
                                               "element 4 9.000000", "finish",
                                               "app A 10.000000 1",  "app b 20.000000 3"};
    EXPECT_EQ(w.calls, expected);
}

TEST(RoadFileWalk, ApplicationNameEndsInsideItsField) {
    Bytes data = application_data(std::string(33, 'n'), 5, 2);
    const Walked w = walk(assemble_road_file("", {{3, {{20, data}}}}));
    ASSERT_TRUE(w.ok);
    EXPECT_EQ(w.calls.at(0), "app " + std::string(32, 'n') + " 5.000000 2");
}

TEST(RoadFileWalk, ApplicationSideOutsideOneToThreeIsABadValue) {
    for (int side : {0, 4, -1}) {
        const Walked w =
            walk(assemble_road_file("", {{3, {{20, application_data("A", 1, side)}}}}));
        EXPECT_EQ(w.report.problem, georoad_FileBadValue) << side;
    }
}

TEST(RoadFileWalk, RefusalEndsTheWalkAtThatRecord) {
    const Walked w = walk(small_file(), 1);
    EXPECT_FALSE(w.ok);
    EXPECT_EQ(w.report.problem, georoad_FileElementRefused);
    EXPECT_EQ(w.report.offset, 218u + 18 + 48);
    EXPECT_EQ(w.calls.size(), 2u);
}

TEST(RoadFileWalk, TemplateWithTooManyElementsIsRefused) {
    std::vector<FixtureRecord> records = {{21, template_name_data("big")}};
    for (int i = 0; i < 1025; ++i) {
        records.push_back({26, doubles_data({1, 0})});
    }
    const Walked w = walk(assemble_road_file("", {{5, records}}));
    EXPECT_EQ(w.report.problem, georoad_FileTooMany);
}

TEST(RoadFileWalk, MoreThanTheTemplateLimitIsRefused) {
    std::vector<FixtureRecord> records;
    for (int i = 0; i < 1025; ++i) {
        records.push_back({21, template_name_data("t")});
    }
    const Walked w = walk(assemble_road_file("", {{5, records}}));
    EXPECT_EQ(w.report.problem, georoad_FileTooMany);
    // 1024 starts and finishes and the 1025th start; its finish is the one refused.
    EXPECT_EQ(w.calls.size(), 2049u);
}

TEST(RoadFileTemplateRecord, FileFormIsLittleEndianDoublesWithTheNameFirst) {
    // A feature: 33 units of name, then ValueA and ValueB.
    const Bytes file_form = feature_data("EP", 1.25, -3.5);
    unsigned char host[82];
    qv5::detail::template_record_from_file(3, file_form.data(), host);
    unsigned short first_unit = 0;
    double a = 0;
    double b = 0;
    std::memcpy(&first_unit, host, 2);
    std::memcpy(&a, host + 66, 8);
    std::memcpy(&b, host + 74, 8);
    EXPECT_EQ(first_unit, 'E');
    EXPECT_EQ(a, 1.25);
    EXPECT_EQ(b, -3.5);
    unsigned char back[82];
    qv5::detail::template_record_to_file(3, host, back);
    EXPECT_EQ(Bytes(back, back + 82), file_form);
}

} // namespace
