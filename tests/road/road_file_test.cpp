// The road file through CGeoRoad: byte layout, round trips, the kept behaviours of reading, and
// files that are wrong in every way a file can be.
#include "road_file_support.h"

#include <gtest/gtest.h>

#include <sys/resource.h>

#include <csignal>
#include <cstdio>

using namespace qv5::test;

namespace {

/// The sample road's file as the format's tables lay it out, assembled here by hand.
Bytes sample_road_fixture() {
    return assemble_road_file(
        "Main St",
        {{1,
          {{1, pob_data(1000, 2000, GEO_NULL, 0.5, 100, 20)},
           {2, line_data(0.5, 50)},
           {4, arc_data(true, 300, 40)},
           {3, spiral_data(false, false, 300, 30)}}},
         {2,
          {{10, Bytes(8, 0)},
           {11, pvi_data(100, 30)},
           {12, curve_data(200, 32, 60)},
           {13, curve_data(300, 31, 40)}}},
         {5,
          {{21, template_name_data("Lane")},
           {22, doubles_data({-0.02, 3.5})},
           {25, feature_data("EP", 1.5, 2.5)},
           {27, doubles_data({4.0, 0.1, 0.3, 0.0, 0.0})},
           {24, doubles_data({0.5, 0.6, 1.0})}}},
         {3, {{20, application_data("Lane", 100, 3)}, {20, application_data("Lane", 150, 1)}}}});
}

Bytes sample_road_bytes() {
    CGeoRoad road;
    build_sample_road(road);
    return written_bytes(road);
}

/// In a child process: a file size limit makes the write fail part way; exits 0 when Write
/// failed without an error code, deleted the file and kept the road modified.
void write_under_a_size_limit(const std::string& path) {
    std::signal(SIGXFSZ, SIG_IGN);
    rlimit limit{300, 300};
    setrlimit(RLIMIT_FSIZE, &limit);
    CGeoRoad road;
    build_sample_road(road);
    georoad_Error error = georoad_Error(0);
    const int ok = road.Write(utf16(path).data(), &error);
    const bool gone = !file_exists(path);
    std::exit(ok == 0 && error == georoad_Error(0) && gone && road.IsModified() == 1 ? 0 : 1);
}

int read_bytes(CGeoRoad& road, const Bytes& bytes, georoad_Error* error,
               georoad_FileReport* report = nullptr) {
    return road.ReadBytes(bytes.data(), bytes.size(), error, report);
}

} // namespace

TEST(RoadFileLayout, SampleRoadIsWrittenByteForByteAsTheTablesLayItOut) {
    const Bytes written = sample_road_bytes();
    const Bytes expected = sample_road_fixture();
    ASSERT_EQ(written.size(), expected.size());
    for (std::size_t i = 0; i < expected.size(); ++i) {
        ASSERT_EQ(written[i], expected[i]) << "first difference at byte " << i;
    }
}

TEST(RoadFileLayout, EmptyRoadWritesA218ByteFileWithAnAllZeroDirectory) {
    CGeoRoad road;
    const Bytes bytes = written_bytes(road);
    ASSERT_EQ(bytes.size(), 218u);
    for (std::size_t i = 98; i < 218; ++i) {
        EXPECT_EQ(bytes[i], 0) << i;
    }
    EXPECT_EQ(bytes, assemble_road_file("", {}));
}

TEST(RoadFileRead, EmptyRoadReadsBackEmptyAtStationZero) {
    CGeoRoad road;
    const std::string path = temp_path("empty");
    ASSERT_EQ(road.Write(utf16(path).data(), nullptr), 1);
    CGeoRoad back;
    CGeoLine line = line_from_origin(1.0, 10.0);
    back.AddHorizontal(georoad_Line, &line);
    ASSERT_EQ(back.Read(utf16(path).data(), nullptr), 1);
    EXPECT_TRUE(road_is_empty(back));
    EXPECT_EQ(back.StartStationHorizontal(), 0.0);
    EXPECT_EQ(back.IsModified(), 0);
}

TEST(RoadFileRead, RoadWithoutElementsStoresNoPointOfBeginning) {
    CGeoRoad road;
    road.SetPOBInfo(500.0, 10.0, 20.0, 25.0);
    const Bytes bytes = written_bytes(road);
    EXPECT_EQ(bytes.size(), 218u);
    CGeoRoad back;
    ASSERT_EQ(read_bytes(back, bytes, nullptr), 1);
    EXPECT_EQ(back.StartStationHorizontal(), 0.0);
    EXPECT_TRUE(is_geo_null(back.StationInterval()));
}

TEST(RoadFileRead, SampleRoadReadsBackEqualElementByElement) {
    CGeoRoad road;
    build_sample_road(road);
    const std::string path = temp_path("sample");
    ASSERT_EQ(road.Write(utf16(path).data(), nullptr), 1);
    EXPECT_EQ(road.IsModified(), 0);
    EXPECT_EQ(road.FilePath(), CString(path.c_str()));
    CGeoRoad back;
    georoad_Error error = georoad_Error(0);
    ASSERT_EQ(back.Read(utf16(path).data(), &error), 1);
    EXPECT_EQ(error, georoad_Error(0)); // untouched on success
    EXPECT_EQ(back.FilePath(), CString(path.c_str()));
    EXPECT_EQ(back.IsModified(), 0);
    expect_same_road(road, back);
}

TEST(RoadFileRead, TwoHundredRandomRoadsRoundTripToTheByteAndTheBit) {
    std::mt19937_64 rng(20261125);
    for (int i = 0; i < 200; ++i) {
        SCOPED_TRACE("road " + std::to_string(i));
        CGeoRoad road;
        build_random_road(road, rng);
        const Bytes first = written_bytes(road);
        CGeoRoad back;
        georoad_FileReport report{};
        ASSERT_EQ(read_bytes(back, first, nullptr, &report), 1) << report.problem;
        expect_same_road(road, back);
        EXPECT_EQ(written_bytes(back), first);
    }
}

TEST(RoadFileRead, TemplatesAndApplicationsRoundTripWithoutAnAlignment) {
    CGeoRoad road;
    CGeoTemplate a = lane_template("Urban");
    CGeoTemplate b = lane_template("Rural");
    road.AddTemplate(&a);
    road.AddTemplate(&b);
    road.AddTemplateApplication(CString("rural"), 0.0, geodef_RightSide);
    road.AddTemplateApplication(CString("Urban"), 40.0, geodef_LeftSide);
    const Bytes bytes = written_bytes(road);
    CGeoRoad back;
    ASSERT_EQ(read_bytes(back, bytes, nullptr), 1);
    EXPECT_EQ(back.NumberHorizontalElements(), 0);
    expect_same_road(road, back);
}

TEST(RoadFileRead, ArcsThatWereNotTangentReadBackTangent) {
    CGeoRoad road;
    CGeoLine line = line_from_origin(0.0, 100.0); // due north
    road.AddHorizontal(georoad_Line, &line);
    CGeoPoint origin(geo_nee{0.0, 0.0, 0.0});
    CGeoArc arc;
    arc.Set(origin, kHalfPi, 200.0, 50.0, geodef_Right, 0.0); // leaves eastward: a kink
    road.AddHorizontal(georoad_Arc, &arc);
    const Bytes bytes = written_bytes(road);
    CGeoRoad back;
    ASSERT_EQ(read_bytes(back, bytes, nullptr), 1);
    CGeoArc read_arc;
    double station = 0;
    double azimuth = 0;
    CGeoPoint start;
    ASSERT_EQ(back.GetNthHorizontal(1, georoad_Arc, station, start, azimuth, &read_arc), 1);
    EXPECT_EQ(read_arc.EntryAzimuth(), 0.0);
    EXPECT_EQ(read_arc.Radius(), 200.0);
    // A right-hand arc of 50 m on radius 200 leaving north turns through 0.25 rad.
    EXPECT_NEAR(back.EndAzimuthHorizontal(), 0.25, 1e-12);
}

TEST(RoadFileRead, LinesKeepTheirOwnAzimuth) {
    CGeoRoad road;
    CGeoLine first = line_from_origin(0.0, 100.0);
    CGeoLine second = line_from_origin(1.0, 100.0);
    road.AddHorizontal(georoad_Line, &first);
    road.AddHorizontal(georoad_Line, &second);
    CGeoRoad back;
    ASSERT_EQ(read_bytes(back, written_bytes(road), nullptr), 1);
    EXPECT_EQ(back.HorzElementStartAzimuth(1), 1.0);
    EXPECT_EQ(back.EndAzimuthHorizontal(), 1.0);
}

TEST(RoadFileRead, NameOfFortyCharactersIsStoredCutToThirtyTwo) {
    CGeoRoad road;
    const std::string forty = "0123456789abcdefghijABCDEFGHIJ0123456789";
    road.SetName(CString(forty.c_str()));
    const Bytes bytes = written_bytes(road);
    EXPECT_EQ(bytes, assemble_road_file(forty.substr(0, 32), {}));
    CGeoRoad back;
    ASSERT_EQ(read_bytes(back, bytes, nullptr), 1);
    EXPECT_EQ(back.Name(), CString(forty.substr(0, 32).c_str()));
}

TEST(RoadFileRead, ReservedAndUnknownRecordsInEverySectionAreReadWithoutError) {
    const Bytes file = assemble_road_file(
        "odd",
        {{1,
          {{10, Bytes(8, 0)},
           {1, pob_data(0, 0, 0, 0, 0, 20)},
           {77, Bytes(5, 9)},
           {2, line_data(0, 10)}}},
         {2, {{10, Bytes(8, 0)}, {11, pvi_data(0, 5)}, {500, {}}}},
         {5, {{21, template_name_data("T")}, {10, Bytes(8, 0)}, {21, template_name_data("U")}}},
         {3, {{9, Bytes(2, 0)}, {20, application_data("u", 3, 2)}, {10, Bytes(8, 0)}}}});
    CGeoRoad road;
    georoad_Error error = georoad_Error(0);
    ASSERT_EQ(read_bytes(road, file, &error), 1);
    EXPECT_EQ(error, georoad_Error(0));
    EXPECT_EQ(road.NumberHorizontalElements(), 1);
    EXPECT_EQ(road.NumberVerticalElements(), 1);
    EXPECT_EQ(road.NumberTemplates(), 2);
    EXPECT_EQ(road.NumberTemplateApplications(), 1);
}

TEST(RoadFileRead, ChangedFirstByteFailsWithReadErrorAndHasNoName) {
    Bytes bytes = sample_road_bytes();
    bytes[0] ^= 0x20;
    const std::string path = temp_path("magic");
    put_file(path, bytes);
    CGeoRoad road;
    build_sample_road(road);
    georoad_Error error = georoad_Error(0);
    EXPECT_EQ(road.Read(utf16(path).data(), &error), 0);
    EXPECT_EQ(error, georoad_ReadError);
    EXPECT_TRUE(road_is_empty(road));
    unsigned short name[33] = {7};
    EXPECT_EQ(georoad_GetInternalName(utf16(path).data(), name), 0);
}

TEST(RoadFileRead, MissingFileFailsWithReadError) {
    CGeoRoad road;
    georoad_FileReport report{};
    georoad_Error error = georoad_Error(0);
    EXPECT_EQ(road.Read(utf16(temp_path("missing")).data(), &error, &report), 0);
    EXPECT_EQ(error, georoad_ReadError);
    EXPECT_EQ(report.problem, georoad_FileCannotOpen);
    EXPECT_EQ(road.Read(nullptr, &error), 0);
}

TEST(RoadFileRead, ApplicationOfATemplateNotBeforeItResetsTheRoadAndLeavesTheErrorAlone) {
    const Bytes file =
        assemble_road_file("later", {{1, {{1, pob_data(0, 0, 0, 0, 0, 20)}, {2, line_data(0, 10)}}},
                                     {3, {{20, application_data("T", 0, 1)}}},
                                     {5, {{21, template_name_data("T")}}}});
    CGeoRoad road;
    georoad_Error error = georoad_Error(0);
    georoad_FileReport report{};
    EXPECT_EQ(read_bytes(road, file, &error, &report), 0);
    EXPECT_EQ(error, georoad_Error(0));
    EXPECT_EQ(report.problem, georoad_FileUnknownTemplate);
    EXPECT_TRUE(road_is_empty(road));
    EXPECT_EQ(road.Name(), CString("later")); // Reset keeps the name
}

TEST(RoadFileRead, RefusedProfileElementResetsTheRoad) {
    // A parabola cannot open a profile.
    const Bytes file =
        assemble_road_file("", {{1, {{1, pob_data(0, 0, 0, 0, 0, 20)}, {2, line_data(0, 10)}}},
                                {2, {{10, Bytes(8, 0)}, {12, curve_data(100, 5, 20)}}}});
    CGeoRoad road;
    georoad_FileReport report{};
    EXPECT_EQ(read_bytes(road, file, nullptr, &report), 0);
    EXPECT_EQ(report.problem, georoad_FileElementRefused);
    EXPECT_EQ(report.recordType, 12u);
    EXPECT_TRUE(road_is_empty(road));
}

TEST(RoadFileRead, EveryTruncationOfTheSampleFileFailsAndLeavesTheRoadEmpty) {
    const Bytes full = sample_road_bytes();
    for (std::size_t n = 0; n < full.size(); ++n) {
        const Bytes cut(full.begin(), full.begin() + static_cast<long>(n));
        CGeoRoad road;
        build_sample_road(road);
        georoad_Error error = georoad_Error(0);
        georoad_FileReport report{};
        ASSERT_EQ(read_bytes(road, cut, &error, &report), 0) << n;
        EXPECT_TRUE(road_is_empty(road)) << n;
        EXPECT_EQ(error == georoad_ReadError, n < 218) << n;
        EXPECT_NE(report.problem, georoad_FileOk) << n;
        EXPECT_EQ(report.fileSize, n);
        if (report.problem == georoad_FileRecordOutside) {
            EXPECT_GT(report.offset + 18, n) << n; // the record header does not fit
        } else {
            EXPECT_LE(report.offset, n) << n;
        }
    }
}

TEST(RoadFileRead, EverySingleByteCorruptionOfTheHeaderAndFirstRecordsHasADefinedResult) {
    const Bytes full = sample_road_bytes();
    std::vector<std::size_t> offsets;
    for (std::size_t i = 0; i < 218; ++i) {
        offsets.push_back(i);
    }
    // The first record header of each section.
    for (std::size_t e = 0; e < 4; ++e) {
        std::uint32_t first = 0;
        std::memcpy(&first, full.data() + 98 + 6 * e + 2, 4);
        for (std::size_t i = 0; i < 18; ++i) {
            offsets.push_back(first + i);
        }
    }
    for (std::size_t at : offsets) {
        for (unsigned value : {0x00u, 0xFFu, full[at] ^ 0x01u, full[at] ^ 0x80u, 0x7Fu}) {
            Bytes bad = full;
            bad[at] = static_cast<unsigned char>(value);
            CGeoRoad road;
            georoad_FileReport report{};
            const int ok = read_bytes(road, bad, nullptr, &report);
            ASSERT_TRUE(ok == 0 || ok == 1);
            if (ok == 0) {
                EXPECT_TRUE(road_is_empty(road)) << at;
                EXPECT_NE(report.problem, georoad_FileOk) << at;
            } else {
                EXPECT_EQ(report.problem, georoad_FileOk) << at;
                // Whatever was read writes again and reads back the same.
                const Bytes again = written_bytes(road);
                CGeoRoad back;
                ASSERT_EQ(read_bytes(back, again, nullptr), 1) << at;
                EXPECT_EQ(written_bytes(back), again) << at;
            }
        }
    }
}

TEST(RoadFileRead, LoopingChainFailsInsteadOfHanging) {
    Bytes bytes = sample_road_bytes();
    // The horizontal section's last record points back at its first.
    std::uint32_t first = 0;
    std::memcpy(&first, bytes.data() + 100, 4);
    std::uint32_t offset = first;
    std::uint32_t last = first;
    while (offset != kChainEnd) {
        last = offset;
        std::memcpy(&offset, bytes.data() + offset + 10, 4);
    }
    poke_u32(bytes, last + 10, first);
    CGeoRoad road;
    georoad_FileReport report{};
    EXPECT_EQ(read_bytes(road, bytes, nullptr, &report), 0);
    EXPECT_EQ(report.problem, georoad_FileChainLoops);
    EXPECT_TRUE(road_is_empty(road));
}

TEST(RoadFileRead, NameLengthLargerThanTheFieldFailsWithReadError) {
    Bytes bytes = sample_road_bytes();
    poke_u16(bytes, 28, 200);
    CGeoRoad road;
    georoad_Error error = georoad_Error(0);
    EXPECT_EQ(read_bytes(road, bytes, &error), 0);
    EXPECT_EQ(error, georoad_ReadError);
}

TEST(RoadFileName, InternalNameIsReadFromTheHeaderAlone) {
    Bytes bytes = sample_road_bytes();
    bytes.resize(218); // no records at all: the name does not need them
    const std::string path = temp_path("name");
    put_file(path, bytes);
    unsigned short name[33];
    ASSERT_EQ(georoad_GetInternalName(utf16(path).data(), name), 1);
    EXPECT_EQ(CString(name), CString("Main St"));
}

TEST(RoadFileName, InternalNameOfThirtyThreeUnitsEndsAfterThirtyTwo) {
    const std::string path = temp_path("long");
    put_file(path, assemble_road_file(std::string(33, 'z'), {}));
    unsigned short name[33];
    ASSERT_EQ(georoad_GetInternalName(utf16(path).data(), name), 1);
    EXPECT_EQ(CString(name), CString(std::string(32, 'z').c_str()));
    EXPECT_EQ(georoad_GetInternalName(utf16(path).data(), nullptr), 0);
    EXPECT_EQ(georoad_GetInternalName(utf16(temp_path("absent")).data(), name), 0);
}

TEST(RoadFileWrite, UncreatableFileFailsWithWriteError) {
    CGeoRoad road;
    build_sample_road(road);
    georoad_Error error = georoad_Error(0);
    const std::string path = ::testing::TempDir() + "no_such_folder_qv5/road.qv5r";
    EXPECT_EQ(road.Write(utf16(path).data(), &error), 0);
    EXPECT_EQ(error, georoad_WriteError);
    EXPECT_EQ(road.IsModified(), 1);
}

TEST(RoadFileWrite, WriteThatFailsAfterCreationDeletesTheFileAndSetsNoError) {
    const std::string path = temp_path("short");
    EXPECT_EXIT(write_under_a_size_limit(path), ::testing::ExitedWithCode(0), "");
}

TEST(RoadFileWrite, WritingReplacesAnExistingFile) {
    const std::string path = temp_path("replace");
    put_file(path, Bytes(5000, 0x41));
    CGeoRoad road;
    build_sample_road(road);
    ASSERT_EQ(road.Write(utf16(path).data(), nullptr), 1);
    EXPECT_EQ(file_bytes(path), sample_road_fixture());
}

TEST(RoadFileRead, SecondPointOfBeginningMovesTheRoadsEndAsItIsRead) {
    const Bytes file = assemble_road_file("", {{1,
                                                {{1, pob_data(0, 0, 0, 0, 0, 20)},
                                                 {2, line_data(0, 10)},
                                                 {1, pob_data(500, 600, 0, 0, 1000, 20)},
                                                 {2, line_data(0, 5)}}}});
    CGeoRoad road;
    ASSERT_EQ(read_bytes(road, file, nullptr), 1);
    ASSERT_EQ(road.NumberHorizontalElements(), 2);
    EXPECT_EQ(road.HorzElementStartStation(1), 1000.0);
    EXPECT_EQ(road.HorzElementStartCoords(1).north, 500.0);
    EXPECT_EQ(road.EndStationHorizontal(), 1005.0);
    EXPECT_EQ(road.StartStationHorizontal(), 1000.0);
}
