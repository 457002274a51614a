// `qv5 draw`: a template file's picture in PNG and SVG.
#include "qv5_program.h"

#include <gtest/gtest.h>

#include <cstdint>
#include <filesystem>
#include <fstream>
#include <iterator>
#include <string>

namespace {

using qv5::test::run_qv5;

const std::string kUrban = std::string(QV5_SAMPLE_DATA_DIR) + "/template-urban.json";

std::string read_file(const std::filesystem::path& path) {
    std::ifstream in(path, std::ios::binary);
    return {std::istreambuf_iterator<char>(in), std::istreambuf_iterator<char>()};
}

/// Width and height from a PNG's header chunk (big-endian at bytes 16 and 20).
std::pair<std::uint32_t, std::uint32_t> png_size(const std::string& png) {
    auto be32 = [&](std::size_t at) {
        return (static_cast<std::uint32_t>(static_cast<unsigned char>(png[at])) << 24) |
               (static_cast<std::uint32_t>(static_cast<unsigned char>(png[at + 1])) << 16) |
               (static_cast<std::uint32_t>(static_cast<unsigned char>(png[at + 2])) << 8) |
               static_cast<std::uint32_t>(static_cast<unsigned char>(png[at + 3]));
    };
    return {be32(16), be32(20)};
}

TEST(DrawCommand, WritesAPngOfTheRequestedSize) {
    const qv5::test::ScratchFolder scratch;
    const std::string png = scratch.file("urban.png");
    const auto r = run_qv5({"draw", kUrban, "--png", png, "--size", "320x200"});
    ASSERT_EQ(r.exit_code, 0) << r.err;
    EXPECT_NE(r.out.find("Urban two-lane"), std::string::npos);
    const std::string bytes = read_file(png);
    ASSERT_GT(bytes.size(), 24u);
    EXPECT_EQ(bytes.substr(1, 3), "PNG");
    EXPECT_EQ(png_size(bytes), (std::pair<std::uint32_t, std::uint32_t>{320, 200}));
}

TEST(DrawCommand, DefaultSizeIs640By480AndSvgIsWritten) {
    const qv5::test::ScratchFolder scratch;
    const std::string png = scratch.file("a.png");
    const std::string svg = scratch.file("a.svg");
    const auto r = run_qv5({"draw", kUrban, "--png", png, "--svg", svg, "--json"});
    ASSERT_EQ(r.exit_code, 0) << r.err;
    EXPECT_NE(r.out.find("\"width\": 640"), std::string::npos) << r.out;
    EXPECT_EQ(png_size(read_file(png)), (std::pair<std::uint32_t, std::uint32_t>{640, 480}));
    const std::string text = read_file(svg);
    EXPECT_NE(text.find("<svg"), std::string::npos);
    EXPECT_NE(text.find("width=\"640"), std::string::npos);
}

TEST(DrawCommand, RefusesABadSizeOrNoOutput) {
    const qv5::test::ScratchFolder scratch;
    const std::string png = scratch.file("x.png");
    for (const char* size : {"0x10", "10x", "x10", "-5x5", "40000x10", "10x10x", "ax b"}) {
        const auto r = run_qv5({"draw", kUrban, "--png", png, "--size", size});
        EXPECT_EQ(r.exit_code, 2) << size;
        EXPECT_NE(r.err.find("--size"), std::string::npos) << size;
    }
    const auto none = run_qv5({"draw", kUrban});
    EXPECT_EQ(none.exit_code, 2);
    EXPECT_FALSE(std::filesystem::exists(png));
}

TEST(DrawCommand, RefusesAMissingOrBadTemplateFile) {
    const qv5::test::ScratchFolder scratch;
    const std::string png = scratch.file("x.png");
    const auto missing = run_qv5({"draw", scratch.file("none.json"), "--png", png});
    EXPECT_EQ(missing.exit_code, 1);
    EXPECT_NE(missing.err.find("cannot read"), std::string::npos);
    const std::string bad = scratch.file("bad.json");
    std::ofstream(bad) << "{ \"name\": \"x\", \"elements\": [ { \"type\": \"grade-width\" } ] }";
    const auto refused = run_qv5({"draw", bad, "--png", png});
    EXPECT_EQ(refused.exit_code, 1);
    EXPECT_FALSE(std::filesystem::exists(png));
    const auto unwritable = run_qv5({"draw", kUrban, "--png", "/nonexistent-folder/x.png"});
    EXPECT_EQ(unwritable.exit_code, 1);
    EXPECT_NE(unwritable.err.find("cannot write"), std::string::npos);
}

} // namespace

namespace {

const std::string kData = QV5_SAMPLE_DATA_DIR;

} // namespace

// A template drawn from a road's library is the picture of the same template drawn from its own
// file: the sample road holds the sample templates (by file), the road file holds them as
// records (names cut to 32 characters, as the road file keeps them), and the name is matched
// without regard to letter case.
TEST(DrawCommand, ATemplateOfARoadsLibraryIsThePictureOfItsFile) {
    const qv5::test::ScratchFolder scratch;
    const std::string rural = scratch.file("rural.png");
    const std::string urban = scratch.file("urban.png");
    const std::string from_description = scratch.file("description.png");
    const std::string from_road_file = scratch.file("road-file.png");
    ASSERT_EQ(run_qv5({"draw", kData + "/template-rural.json", "--png", rural}).exit_code, 0);
    ASSERT_EQ(run_qv5({"draw", kUrban, "--png", urban}).exit_code, 0);
    const auto a = run_qv5({"draw", kData + "/sample-road.json", "--template",
                            "RURAL TWO-LANE WITH DITCH", "--png", from_description});
    ASSERT_EQ(a.exit_code, 0) << a.err;
    const auto b = run_qv5({"draw", kData + "/sample-road.qv5r", "--template",
                            "urban two-lane, half section", "--png", from_road_file});
    ASSERT_EQ(b.exit_code, 0) << b.err;
    EXPECT_EQ(read_file(from_description), read_file(rural));
    EXPECT_EQ(read_file(from_road_file), read_file(urban));
    EXPECT_NE(read_file(rural), read_file(urban));
}

TEST(DrawCommand, AnUnknownTemplateOfARoadListsTheOnesItHas) {
    const qv5::test::ScratchFolder scratch;
    const std::string png = scratch.file("none.png");
    const auto r =
        run_qv5({"draw", kData + "/sample-road.json", "--template", "Motorway", "--png", png});
    EXPECT_EQ(r.exit_code, 2);
    EXPECT_NE(r.err.find("no template named \"Motorway\""), std::string::npos) << r.err;
    EXPECT_NE(r.err.find("\"Urban two-lane, half section\""), std::string::npos) << r.err;
    EXPECT_FALSE(std::filesystem::exists(png));
}
