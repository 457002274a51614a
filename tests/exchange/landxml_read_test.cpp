// Reading LandXML alignments into a road. The fixtures in tests/data/landxml were written by
// hand; their expected geometry is worked out beside each test (the clothoid points of the
// spiral fixture by numerical integration of the curvature, see the fixture's comment).
#include "qv5/geoarc.h"
#include "qv5/geoline.h"
#include "qv5/geopoint.h"
#include "qv5/geospiral.h"
#include "qv5/landxml.h"

#include <gtest/gtest.h>

#include <cmath>
#include <fstream>
#include <sstream>
#include <string>

namespace {

constexpr double kPi = 3.141592653589793;
/// The fixtures' coordinates are written to 1e-9 m.
constexpr double kFixtureTolerance = 1e-6;
/// Clothoid fixture points were rounded to 1e-9 m after a numerical integration good to 1e-9 m.
constexpr double kClothoidTolerance = 1e-6;

std::string fixture(const std::string& name) {
    std::ifstream in(std::string(QV5_TEST_DATA_DIR) + "/landxml/" + name, std::ios::binary);
    std::ostringstream text;
    text << in.rdbuf();
    return text.str();
}

std::string messages(const qv5::landxml::ReadResult& result) {
    std::string text;
    for (const auto& m : result.errors) {
        text += "error line " + std::to_string(m.line) + " <" + m.element + ">: " + m.text + "\n";
    }
    for (const auto& m : result.warnings) {
        text += "warning line " + std::to_string(m.line) + " <" + m.element + ">: " + m.text + "\n";
    }
    return text;
}

geo_nee start_of(CGeoRoad& road, int n) {
    return road.HorzElementStartCoords(n);
}

void expect_metric_line_arc(CGeoRoad& road, double tolerance) {
    ASSERT_EQ(road.NumberHorizontalElements(), 3);
    EXPECT_EQ(road.NthHorizontalType(0), georoad_Line);
    EXPECT_EQ(road.NthHorizontalType(1), georoad_Arc);
    EXPECT_EQ(road.NthHorizontalType(2), georoad_Line);
    // Stations: 1000, +100 of line, +200 x pi/4 of arc, +50 of line.
    EXPECT_NEAR(road.HorzElementStartStation(0), 1000.0, tolerance);
    EXPECT_NEAR(road.HorzElementStartStation(1), 1100.0, tolerance);
    EXPECT_NEAR(road.HorzElementStartStation(2), 1100.0 + 50.0 * kPi, tolerance);
    EXPECT_NEAR(road.EndStationHorizontal(), 1150.0 + 50.0 * kPi, tolerance);
    EXPECT_NEAR(start_of(road, 0).north, 5000.0, tolerance);
    EXPECT_NEAR(start_of(road, 0).east, 2000.0, tolerance);
    EXPECT_NEAR(start_of(road, 1).east, 2100.0, tolerance);
    // The arc turns right from east through 45 degrees about (4800, 2100).
    EXPECT_NEAR(start_of(road, 2).north, 4800.0 + 200.0 * std::sqrt(0.5), tolerance);
    EXPECT_NEAR(start_of(road, 2).east, 2100.0 + 200.0 * std::sqrt(0.5), tolerance);
    EXPECT_NEAR(road.EndAzimuthHorizontal(), 0.75 * kPi, 1e-9);
    CGeoArc arc;
    double station = 0.0, azimuth = 0.0;
    CGeoPoint start;
    ASSERT_EQ(road.GetNthHorizontal(1, georoad_Arc, station, start, azimuth, &arc), 1);
    EXPECT_NEAR(arc.Radius(), 200.0, tolerance);
    EXPECT_EQ(arc.Direction(), geodef_Right);
    EXPECT_NEAR(arc.EntryAzimuth(), kPi / 2.0, 1e-9);
    // End of the last line: 50 m on from the arc's end at azimuth 135 degrees.
    EXPECT_NEAR(road.EndPtHorizontal().Grid().north,
                4800.0 + 200.0 * std::sqrt(0.5) - 50.0 * std::sqrt(0.5), tolerance);
    EXPECT_NEAR(road.EndPtHorizontal().Grid().east,
                2100.0 + 200.0 * std::sqrt(0.5) + 50.0 * std::sqrt(0.5), tolerance);
}

void expect_metric_profile(CGeoRoad& road, double tolerance) {
    ASSERT_EQ(road.NumberVerticalElements(), 4);
    EXPECT_EQ(road.NthVerticalType(0), georoad_VertPoint);
    EXPECT_EQ(road.NthVerticalType(1), georoad_VertParabola);
    EXPECT_EQ(road.NthVerticalType(2), georoad_VertCircular);
    EXPECT_EQ(road.NthVerticalType(3), georoad_VertPoint);
    EXPECT_NEAR(road.NthPVIStation(1), 1100.0, tolerance);
    EXPECT_NEAR(road.NthPVIElevation(1), 52.0, tolerance);
    EXPECT_NEAR(road.NthPVIStation(2), 1200.0, tolerance);
    EXPECT_NEAR(road.NthPVIElevation(3), 51.0, tolerance);
    double station, elevation, at_pvi, grade_in, grade_out, curve_start, curve_end, length;
    ASSERT_EQ(road.GetNthVertical(1, georoad_VertParabola, station, elevation, at_pvi, grade_in,
                                  grade_out, curve_start, curve_end, length),
              1);
    EXPECT_NEAR(length, 60.0, tolerance);
    EXPECT_NEAR(curve_start, 1070.0, tolerance);
    // Grade in: rise 2 over 100 m, as an angle.
    EXPECT_NEAR(grade_in, std::atan(0.02), 1e-9);
}

TEST(LandXmlRead, MetricLineArcLineBuildsTheStationedAlignment) {
    CGeoRoad road;
    const auto result = qv5::landxml::read_road(fixture("metric-line-arc.xml"), road);
    ASSERT_TRUE(result.ok) << messages(result);
    EXPECT_TRUE(result.warnings.empty()) << messages(result);
    expect_metric_line_arc(road, kFixtureTolerance);
    EXPECT_EQ(road.Name().ToUtf8(), "Main Street");
}

TEST(LandXmlRead, ProfileOfPointParabolaAndCircularCurve) {
    CGeoRoad road;
    const auto result = qv5::landxml::read_road(fixture("metric-line-arc.xml"), road);
    ASSERT_TRUE(result.ok) << messages(result);
    expect_metric_profile(road, kFixtureTolerance);
}

TEST(LandXmlRead, USSurveyFeetAndGradsGiveTheSameRoadAsMetres) {
    CGeoRoad road;
    const auto result = qv5::landxml::read_road(fixture("imperial-line-arc.xml"), road);
    ASSERT_TRUE(result.ok) << messages(result);
    EXPECT_TRUE(result.warnings.empty()) << messages(result);
    // The fixture's numbers are the metric ones times 3937/1200, written to 1e-9 ft.
    expect_metric_line_arc(road, kFixtureTolerance);
    expect_metric_profile(road, kFixtureTolerance);
}

TEST(LandXmlRead, InternationalFeetScaleBy0_3048) {
    std::string xml = fixture("metric-line-arc.xml");
    const std::string from = "linearUnit=\"meter\"";
    xml.replace(xml.find(from), from.size(), "linearUnit=\"foot\"");
    CGeoRoad road;
    const auto result = qv5::landxml::read_road(xml, road);
    ASSERT_TRUE(result.ok) << messages(result);
    EXPECT_NEAR(road.HorzElementStartStation(1), 1100.0 * 0.3048, 1e-9);
    EXPECT_NEAR(start_of(road, 0).north, 5000.0 * 0.3048, 1e-9);
}

TEST(LandXmlRead, PointsAreNorthingThenEasting) {
    CGeoRoad road;
    ASSERT_TRUE(qv5::landxml::read_road(fixture("metric-line-arc.xml"), road).ok);
    // <Start>5000 2000</Start> and <End>5000 2100</End>: a line running due east.
    EXPECT_EQ(start_of(road, 0).north, 5000.0);
    EXPECT_EQ(start_of(road, 0).east, 2000.0);
    EXPECT_NEAR(road.StartAzimuthHorizontal(), kPi / 2.0, 1e-12);
}

TEST(LandXmlRead, PrefixedLandXml11WithSpiralsAndNegativeStart) {
    CGeoRoad road;
    const auto result = qv5::landxml::read_road(fixture("spirals-1.1-prefixed.xml"), road);
    ASSERT_TRUE(result.ok) << messages(result);
    EXPECT_TRUE(result.warnings.empty()) << messages(result);
    ASSERT_EQ(road.NumberHorizontalElements(), 5);
    EXPECT_EQ(road.NthHorizontalType(1), georoad_EntrySpiral);
    EXPECT_EQ(road.NthHorizontalType(2), georoad_Arc);
    EXPECT_EQ(road.NthHorizontalType(3), georoad_ExitSpiral);
    EXPECT_NEAR(road.StartStationHorizontal(), -50.0, 1e-12);
    EXPECT_NEAR(road.HorzElementStartStation(3), -50.0 + 260.0, 1e-9);
    EXPECT_NEAR(road.EndStationHorizontal(), 350.0, 1e-9);
    // Entry spiral end from the integration: (1159.9400277713685, 501.9985718830375).
    EXPECT_NEAR(start_of(road, 2).north, 1159.9400277713685, kClothoidTolerance);
    EXPECT_NEAR(start_of(road, 2).east, 501.9985718830375, kClothoidTolerance);
    // Exit azimuth after turning L/2R + L/R + L/2R = 0.1 + 1/3 + 0.1 rad.
    EXPECT_NEAR(road.EndAzimuthHorizontal(), 0.2 + 1.0 / 3.0, 1e-9);
    EXPECT_NEAR(road.EndPtHorizontal().Grid().north, 1377.4803603887324, kClothoidTolerance);
    EXPECT_NEAR(road.EndPtHorizontal().Grid().east, 597.6539038301879, kClothoidTolerance);
    CGeoExitSpiral exit;
    double station, azimuth;
    CGeoPoint start;
    ASSERT_EQ(road.GetNthHorizontal(3, georoad_ExitSpiral, station, start, azimuth, &exit), 1);
    EXPECT_NEAR(exit.Radius(), 300.0, 1e-12);
    EXPECT_EQ(exit.Direction(), geodef_Right);
}

TEST(LandXmlRead, ByteOrderMarkAndCrLfLineEnds) {
    std::string xml = fixture("metric-line-arc.xml");
    std::string crlf = "\xEF\xBB\xBF";
    for (const char c : xml) {
        if (c == '\n') {
            crlf += '\r';
        }
        crlf += c;
    }
    CGeoRoad road;
    const auto result = qv5::landxml::read_road(crlf, road);
    ASSERT_TRUE(result.ok) << messages(result);
    expect_metric_line_arc(road, kFixtureTolerance);
}

TEST(LandXmlRead, SeveralAlignmentsNeedANameAndAreListed) {
    CGeoRoad road;
    const std::string xml = fixture("two-alignments.xml");
    const auto unnamed = qv5::landxml::read_road(xml, road);
    EXPECT_FALSE(unnamed.ok);
    ASSERT_EQ(unnamed.alignments.size(), 2u);
    EXPECT_EQ(unnamed.alignments[0].name, "North Road");
    EXPECT_EQ(unnamed.alignments[1].name, "East Road");
    EXPECT_EQ(unnamed.alignments[1].start_station, 10.0);
    EXPECT_EQ(unnamed.alignments[0].horizontal_elements, 2);
    EXPECT_EQ(road.NumberHorizontalElements(), 0);

    qv5::landxml::ReadOptions options;
    options.alignment = "North Road";
    const auto north = qv5::landxml::read_road(xml, road, options);
    ASSERT_TRUE(north.ok) << messages(north);
    // A left-turning quarter circle of radius 100 about (50, -100) from (50, 0).
    ASSERT_EQ(road.NumberHorizontalElements(), 2);
    CGeoArc arc;
    double station, azimuth;
    CGeoPoint start;
    ASSERT_EQ(road.GetNthHorizontal(1, georoad_Arc, station, start, azimuth, &arc), 1);
    EXPECT_EQ(arc.Direction(), geodef_Left);
    EXPECT_NEAR(road.EndPtHorizontal().Grid().north, 150.0, 1e-9);
    EXPECT_NEAR(road.EndPtHorizontal().Grid().east, -100.0, 1e-9);
    EXPECT_NEAR(road.EndAzimuthHorizontal(), 1.5 * kPi, 1e-9);

    options.alignment = "East Road";
    const auto east = qv5::landxml::read_road(xml, road, options);
    ASSERT_TRUE(east.ok) << messages(east);
    // dir 270 counter-clockwise from north is due east; 25 m from (0, 0).
    EXPECT_NEAR(road.EndPtHorizontal().Grid().east, 25.0, 1e-9);
    EXPECT_NEAR(road.EndPtHorizontal().Grid().north, 0.0, 1e-9);
    EXPECT_NEAR(road.EndStationHorizontal(), 35.0, 1e-12);

    options.alignment = "South Road";
    EXPECT_FALSE(qv5::landxml::read_road(xml, road, options).ok);
}

TEST(LandXmlRead, DirectionDisagreeingWithCoordinatesIsReportedNotFollowed) {
    std::string xml = fixture("metric-line-arc.xml");
    const std::string from = "dir=\"270.000000000\"";
    xml.replace(xml.find(from), from.size(), "dir=\"271\"");
    CGeoRoad road;
    const auto result = qv5::landxml::read_road(xml, road);
    ASSERT_TRUE(result.ok) << messages(result);
    ASSERT_EQ(result.warnings.size(), 1u) << messages(result);
    EXPECT_EQ(result.warnings[0].element, "Line");
    EXPECT_EQ(result.warnings[0].line, 9);
    EXPECT_NEAR(result.warnings[0].station, 1000.0, 1e-9);
    expect_metric_line_arc(road, kFixtureTolerance);
}

TEST(LandXmlRead, RadiusDisagreeingWithCentreIsAWarningWithStation) {
    std::string xml = fixture("metric-line-arc.xml");
    const std::string from = "radius=\"200.000000000\"";
    xml.replace(xml.find(from), from.size(), "radius=\"200.01\"");
    CGeoRoad road;
    const auto result = qv5::landxml::read_road(xml, road);
    ASSERT_TRUE(result.ok) << messages(result);
    ASSERT_EQ(result.warnings.size(), 1u) << messages(result);
    EXPECT_EQ(result.warnings[0].element, "Curve");
    EXPECT_NE(result.warnings[0].text.find("radius"), std::string::npos);
    expect_metric_line_arc(road, kFixtureTolerance);
}

TEST(LandXmlRead, AlignmentLengthThatIsNotANumberIsAWarningAndTheRoadStands) {
    std::string xml = fixture("metric-line-arc.xml");
    const std::string from = "<Alignment name=\"Main Street\" length=\"307.079632679\"";
    ASSERT_NE(xml.find(from), std::string::npos);
    xml.replace(xml.find(from), from.size(),
                "<Alignment name=\"Main Street\" length=\"307.radius=79\"");
    CGeoRoad road;
    const auto result = qv5::landxml::read_road(xml, road);
    ASSERT_TRUE(result.ok) << messages(result);
    EXPECT_TRUE(result.errors.empty()) << messages(result);
    ASSERT_EQ(result.warnings.size(), 1u) << messages(result);
    EXPECT_EQ(result.warnings[0].element, "Alignment");
    EXPECT_NE(result.warnings[0].text.find("307.radius=79"), std::string::npos);
    expect_metric_line_arc(road, kFixtureTolerance);
}

// A line whose end lies 2.1e19 m away reads as numbers, but a road reaching so far cannot hold its
// curves (a double's spacing there is kilometres) nor read back what it writes: it is refused,
// naming the line, and the road is left empty.
TEST(LandXmlRead, LineReachingBeyondTheEarthIsRefused) {
    std::string xml = fixture("metric-line-arc.xml");
    const std::string from = "<End>5000.000000000 2100.000000000</End>";
    ASSERT_NE(xml.find(from), std::string::npos);
    xml.replace(xml.find(from), from.size(), "<End>5000.000000000 21009999999999999999</End>");
    CGeoRoad road;
    const auto result = qv5::landxml::read_road(xml, road);
    EXPECT_FALSE(result.ok);
    ASSERT_EQ(result.errors.size(), 1u) << messages(result);
    EXPECT_EQ(result.errors[0].element, "Line");
    EXPECT_EQ(road.NumberHorizontalElements(), 0);
}

// Stations beyond 100 000 km are refused with the alignment's geometry named.
TEST(LandXmlRead, StationsBeyondTheEarthAreRefused) {
    std::string xml = fixture("metric-line-arc.xml");
    const std::string from = "staStart=\"1000.000000000\"";
    ASSERT_NE(xml.find(from), std::string::npos);
    xml.replace(xml.find(from), from.size(), "staStart=\"2e19\"");
    CGeoRoad road;
    const auto result = qv5::landxml::read_road(xml, road);
    EXPECT_FALSE(result.ok);
    ASSERT_GE(result.errors.size(), 1u) << messages(result);
    EXPECT_EQ(result.errors[0].element, "CoordGeom") << messages(result);
    EXPECT_NE(result.errors[0].text.find("not a survey on Earth"), std::string::npos);
    EXPECT_EQ(road.NumberHorizontalElements(), 0);
}

// A curve whose End lies in the direction of its Start from the Center has no length: once
// written its points would coincide. It is refused rather than read as a curve of 1e-88 m.
TEST(LandXmlRead, CurveOfNoLengthIsRefused) {
    std::string xml = fixture("metric-line-arc.xml");
    const std::string from = "<End>4941.421356237 2241.421356237</End>";
    ASSERT_NE(xml.find(from), std::string::npos);
    xml.replace(xml.find(from), from.size(), "<End>4.9e93 2241.421356237</End>");
    CGeoRoad road;
    const auto result = qv5::landxml::read_road(xml, road);
    EXPECT_FALSE(result.ok) << messages(result);
    ASSERT_GE(result.errors.size(), 1u) << messages(result);
    EXPECT_EQ(result.errors[0].element, "Curve");
}

TEST(LandXmlRead, ProfilePointBeyondTheEarthIsRefused) {
    std::string xml = fixture("metric-line-arc.xml");
    const std::string from = "<PVI>1300.000000000 51.000000000</PVI>";
    ASSERT_NE(xml.find(from), std::string::npos);
    xml.replace(xml.find(from), from.size(), "<PVI>1300.000000000 5.1e9</PVI>");
    CGeoRoad road;
    const auto result = qv5::landxml::read_road(xml, road);
    EXPECT_FALSE(result.ok);
    ASSERT_EQ(result.errors.size(), 1u) << messages(result);
    EXPECT_EQ(result.errors[0].element, "PVI");
}

TEST(LandXmlRead, SpiralEndFarFromTheClothoidIsAWarning) {
    std::string xml = fixture("spirals-1.1-prefixed.xml");
    const std::string from = "<lx:End>1308.590986858 556.981379756</lx:End>";
    xml.replace(xml.find(from), from.size(), "<lx:End>1308.600986858 556.981379756</lx:End>");
    CGeoRoad road;
    const auto result = qv5::landxml::read_road(xml, road);
    ASSERT_TRUE(result.ok) << messages(result);
    ASSERT_GE(result.warnings.size(), 1u);
    EXPECT_EQ(result.warnings[0].element, "Spiral");
}

struct Unsupported {
    const char* name;
    const char* element;
    const char* expected_element;
};

class LandXmlUnsupported : public ::testing::TestWithParam<Unsupported> {};

TEST_P(LandXmlUnsupported, IsAnErrorNamingTheElementAndItsLine) {
    const std::string xml = std::string("<?xml version=\"1.0\"?>\n<LandXML>\n<Alignments>\n"
                                        "<Alignment name=\"A\">\n<CoordGeom>\n"
                                        "<Line><Start>0 0</Start><End>100 0</End></Line>\n") +
                            GetParam().element +
                            "\n</CoordGeom>\n</Alignment>\n</Alignments>\n"
                            "</LandXML>\n";
    CGeoRoad road;
    const auto result = qv5::landxml::read_road(xml, road);
    EXPECT_FALSE(result.ok);
    ASSERT_FALSE(result.errors.empty());
    EXPECT_EQ(result.errors[0].element, GetParam().expected_element);
    EXPECT_EQ(result.errors[0].line, 7);
    EXPECT_EQ(road.NumberHorizontalElements(), 0);
}

INSTANTIATE_TEST_SUITE_P(
    Elements, LandXmlUnsupported,
    ::testing::Values(
        Unsupported{"CubicSpiral",
                    "<Spiral spiType=\"cubic\" rot=\"cw\" length=\"50\" radiusStart=\"INF\" "
                    "radiusEnd=\"300\"/>",
                    "Spiral"},
        Unsupported{"CompoundSpiral",
                    "<Spiral spiType=\"clothoid\" rot=\"cw\" length=\"50\" radiusStart=\"600\" "
                    "radiusEnd=\"300\"/>",
                    "Spiral"},
        Unsupported{"ChordCurve",
                    "<Curve crvType=\"chord\" rot=\"cw\" radius=\"300\" length=\"50\"/>", "Curve"},
        Unsupported{"IrregularLine", "<IrregularLine/>", "IrregularLine"},
        Unsupported{"NonNumericRadius",
                    "<Curve rot=\"cw\" radius=\"three hundred\" length=\"50\"/>", "Curve"},
        Unsupported{"MissingRotation", "<Curve radius=\"300\" length=\"50\"/>", "Curve"},
        Unsupported{"InfiniteLength",
                    "<Spiral spiType=\"clothoid\" rot=\"cw\" length=\"1e999\" "
                    "radiusStart=\"INF\" radiusEnd=\"300\"/>",
                    "Spiral"},
        Unsupported{"BadPoint", "<Line><Start>0 zero</Start><End>1 1</End></Line>", "Start"}),
    [](const ::testing::TestParamInfo<Unsupported>& param) { return param.param.name; });

TEST(LandXmlRead, MalformedXmlGivesTheLineOfTheFault) {
    CGeoRoad road;
    const auto result = qv5::landxml::read_road(
        "<?xml version=\"1.0\"?>\n<LandXML>\n<Alignments>\n</LandXML>\n", road);
    EXPECT_FALSE(result.ok);
    ASSERT_EQ(result.errors.size(), 1u);
    EXPECT_EQ(result.errors[0].line, 4);
    EXPECT_NE(result.errors[0].text.find("not well-formed"), std::string::npos);
}

TEST(LandXmlRead, OtherRootElementIsNotARoad) {
    CGeoRoad road;
    const auto result = qv5::landxml::read_road("<kml><Document/></kml>", road);
    EXPECT_FALSE(result.ok);
    ASSERT_EQ(result.errors.size(), 1u);
    EXPECT_EQ(result.errors[0].element, "kml");
}

TEST(LandXmlRead, ProfileStartingWithACurveIsRejected) {
    std::string xml = fixture("metric-line-arc.xml");
    const std::string from = "<PVI>1000.000000000 50.000000000</PVI>";
    xml.replace(xml.find(from), from.size(), "<ParaCurve length=\"10\">1000 50</ParaCurve>");
    CGeoRoad road;
    const auto result = qv5::landxml::read_road(xml, road);
    EXPECT_FALSE(result.ok);
    ASSERT_FALSE(result.errors.empty());
    EXPECT_EQ(result.errors[0].element, "ParaCurve");
    EXPECT_EQ(road.NumberHorizontalElements(), 0);
}

TEST(LandXmlRead, EntityDeclarationsAreNotExpanded) {
    // A document type with entities must not expand into gigabytes: the parser does not read
    // entity declarations, so the document is refused or read without them, promptly.
    std::string xml = "<?xml version=\"1.0\"?>\n<!DOCTYPE LandXML [\n<!ENTITY a \"aaaaaaaaaa\">\n";
    for (char name = 'b'; name <= 'j'; ++name) {
        xml += "<!ENTITY ";
        xml.push_back(name);
        xml += " \"";
        for (int j = 0; j < 10; ++j) {
            xml.push_back('&');
            xml.push_back(char(name - 1));
            xml.push_back(';');
        }
        xml += "\">\n";
    }
    xml += "]>\n<LandXML><Alignments><Alignment name=\"&j;\"><CoordGeom/></Alignment>"
           "</Alignments></LandXML>\n";
    CGeoRoad road;
    const auto result = qv5::landxml::read_road(xml, road);
    EXPECT_FALSE(result.ok);
    EXPECT_LT(road.Name().GetLength(), 100);
}

TEST(LandXmlRead, DeepNestingAndHugeAttributesDoNotCrash) {
    std::string xml = "<LandXML><Alignments><Alignment name=\"";
    xml += std::string(5'000'000, 'x');
    xml += "\" staStart=\"";
    xml += std::string(1'000'000, '9');
    xml += "\">";
    for (int i = 0; i < 200'000; ++i) {
        xml += "<a>";
    }
    for (int i = 0; i < 200'000; ++i) {
        xml += "</a>";
    }
    xml += "</Alignment></Alignments></LandXML>";
    CGeoRoad road;
    const auto result = qv5::landxml::read_road(xml, road);
    EXPECT_FALSE(result.ok);
    ASSERT_FALSE(result.errors.empty());
}

TEST(LandXmlRead, HundredMegabyteFileIsReadInOnePass) {
    // A real road padded with 100 MB of comments: read, not refused, and no quadratic work.
    std::string xml = fixture("metric-line-arc.xml");
    const std::string padding = "<!-- " + std::string(1 << 20, 'p') + " -->\n";
    std::string big = xml.substr(0, xml.find("<Alignments"));
    big.reserve(110u << 20);
    for (int i = 0; i < 100; ++i) {
        big += padding;
    }
    big += xml.substr(xml.find("<Alignments"));
    CGeoRoad road;
    const auto result = qv5::landxml::read_road(big, road);
    ASSERT_TRUE(result.ok) << messages(result);
    EXPECT_EQ(road.NumberHorizontalElements(), 3);
}

TEST(LandXmlRead, LooksLikeLandXmlByContent) {
    EXPECT_TRUE(qv5::landxml::looks_like_landxml(fixture("metric-line-arc.xml")));
    EXPECT_TRUE(qv5::landxml::looks_like_landxml(fixture("spirals-1.1-prefixed.xml")));
    EXPECT_TRUE(qv5::landxml::looks_like_landxml("\xEF\xBB\xBF<LandXML/>"));
    EXPECT_FALSE(qv5::landxml::looks_like_landxml("{\"name\": \"road\"}"));
    EXPECT_FALSE(qv5::landxml::looks_like_landxml("Halvik QV5"));
    EXPECT_FALSE(qv5::landxml::looks_like_landxml("<kml/>"));
    EXPECT_FALSE(qv5::landxml::looks_like_landxml(""));
}

} // namespace
