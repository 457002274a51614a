// Reading the program's calibration files: control points (CSV), saved calibrations (JSON) and
// positions to convert (CSV). Every bad line is reported and a file with any error is rejected
// whole.
#include "calibration_json.h"
#include "control_points_csv.h"
#include "conversion_rows.h"
#include "dms.h"

#include <gtest/gtest.h>

#include <cmath>

namespace {

using namespace qv5::cli;

constexpr double kDeg = 0.017453292519943295;

double angle(const std::string& text, bool latitude) {
    double r = 0.0;
    std::string why;
    EXPECT_TRUE(parse_angle(text, latitude, r, why)) << text << ": " << why;
    return r;
}

std::string refusal(const std::string& text, bool latitude) {
    double r = 0.0;
    std::string why;
    EXPECT_FALSE(parse_angle(text, latitude, r, why)) << text;
    return why;
}

TEST(CalibrationAngle, DecimalDegrees) {
    EXPECT_EQ(angle("52.0986", true), 52.0986 * kDeg);
    EXPECT_EQ(angle(" -4.25 ", false), -4.25 * kDeg);
    EXPECT_EQ(angle("+10", false), 10.0 * kDeg);
    EXPECT_EQ(angle("52.5\xC2\xB0", true), 52.5 * kDeg);
}

TEST(CalibrationAngle, DegreesMinutesSecondsInEveryNotation) {
    // 52 deg 05' 55.2" = 52 * 0.017453292519943295 + 5 * 0.0002908882086657216
    //                  + 55.2 * 4.84813681109536e-6 (the library's DMS conversion).
    const double expected =
        52 * 0.017453292519943295 + 5 * 0.0002908882086657216 + 55.2 * 4.84813681109536e-6;
    EXPECT_NEAR(angle("52 05 55.2", true), expected, 1e-15);
    EXPECT_NEAR(angle("52:05:55.2", true), expected, 1e-15);
    EXPECT_NEAR(angle("52\xC2\xB0"
                      "05'55.2\"",
                      true),
                expected, 1e-15);
    EXPECT_NEAR(angle("52 05 55.2N", true), expected, 1e-15);
    EXPECT_NEAR(angle("52 05 55.2 s", true), -expected, 1e-15);
    EXPECT_NEAR(angle("-52:05:55.2", true), -expected, 1e-15);
}

TEST(CalibrationAngle, SignOfSmallAnglesIsKept) {
    // Less than a degree west: the sign must not be lost with the zero degrees.
    EXPECT_LT(angle("0 30 00W", false), 0.0);
    EXPECT_LT(angle("-0:30:00", false), 0.0);
    EXPECT_NEAR(angle("-0:30:00", false), -0.5 * kDeg, 1e-16);
}

TEST(CalibrationAngle, HemisphereLettersBelongToTheirKind) {
    EXPECT_LT(angle("5 12 36W", false), 0.0);
    refusal("5 12 36W", true);
    refusal("52 05 55N", false);
}

TEST(CalibrationAngle, RefusesWhatIsNotAnAngle) {
    EXPECT_NE(refusal("", true).find("empty"), std::string::npos);
    refusal("abc", true);
    refusal("52 05", true);
    refusal("52 60 00", true);
    refusal("52 05 60", true);
    refusal("52 -05 00", true);
    refusal("-52N", true);
    refusal("52.5 05 00", true);
    EXPECT_NE(refusal("90.0001", true).find("out of range"), std::string::npos);
    EXPECT_NE(refusal("90 00 00.1", true).find("out of range"), std::string::npos);
    refusal("180 00 01E", false);
    refusal("nan", true);
    refusal("inf", false);
    EXPECT_EQ(angle("90", true), 90.0 * kDeg);
    EXPECT_EQ(angle("180W", false), -180.0 * kDeg);
}

constexpr const char* kPoints = "# control\n"
                                "name,latitude,longitude,height,north,east,elevation,use\n"
                                "A,52.1,5.2,44.1,1000,2000,0.9,hv\n"
                                "\n"
                                "B,52 06 00N,5:13:00E,,1200,2100,,h\n"
                                "C,52.11,5.21,45,,,1.5,v\n"
                                "D,52.12,5.22,,,,,-\n";

TEST(ControlPoints, ReadsEveryKindOfPoint) {
    std::vector<ControlPoint> points;
    std::vector<JobError> errors;
    ASSERT_TRUE(parse_control_points(kPoints, points, errors));
    ASSERT_EQ(points.size(), 4u);
    EXPECT_EQ(points[0].name, "A");
    EXPECT_EQ(points[0].flags, 3u);
    EXPECT_EQ(points[0].line, 3);
    EXPECT_EQ(points[0].llh.lat, 52.1 * kDeg);
    EXPECT_EQ(points[0].nee.east, 2000.0);
    EXPECT_EQ(points[1].flags, static_cast<std::uint32_t>(geotrans_UseHorizontal));
    EXPECT_EQ(points[1].llh.height, GEO_NULL);
    EXPECT_EQ(points[1].nee.elev, GEO_NULL);
    EXPECT_EQ(points[1].line, 5);
    EXPECT_EQ(points[2].flags, static_cast<std::uint32_t>(geotrans_UseVertical));
    EXPECT_EQ(points[2].nee.north, GEO_NULL);
    EXPECT_EQ(points[3].flags, 0u);
}

TEST(ControlPoints, BundledSampleIsValid) {
    std::string text;
    ASSERT_TRUE(
        read_whole_file(std::string(QV5_SAMPLE_DATA_DIR) + "/sample-calibration.csv", text));
    std::vector<ControlPoint> points;
    std::vector<JobError> errors;
    ASSERT_TRUE(parse_control_points(text, points, errors));
    EXPECT_EQ(points.size(), 7u);
}

TEST(ControlPoints, EveryBadLineIsReportedAndTheFileRejected) {
    const char* text = "A,52.1,5.2,44.1,1000,2000,0.9,hv\n"
                       "B,52.1,5.2,44.1,1000,2000\n"
                       "C,95,5.2,44.1,1000,2000,0.9,hv\n"
                       "D,52.1,5.2,44.1,,2000,0.9,h\n"
                       "E,52.1,5.2,,1000,2000,0.9,v\n"
                       "F,52.1,5.2,44.1,1000,2000,0.9,x\n"
                       "A,52.1,5.2,44.1,1000,2000,0.9,hv\n"
                       ",52.1,5.2,44.1,1000,2000,0.9,hv\n"
                       "G,52.1,5.2,4a,1000,2000,0.9,hv\n";
    std::vector<ControlPoint> points;
    std::vector<JobError> errors;
    EXPECT_FALSE(parse_control_points(text, points, errors));
    EXPECT_TRUE(points.empty());
    std::vector<int> lines;
    for (const JobError& e : errors) {
        lines.push_back(e.line);
    }
    EXPECT_EQ(lines, (std::vector<int>{2, 3, 4, 5, 6, 7, 8, 9}));
    EXPECT_NE(errors[0].message.find("expected 8 fields"), std::string::npos);
    EXPECT_NE(errors[1].message.find("latitude"), std::string::npos);
    EXPECT_NE(errors[2].message.find("north"), std::string::npos);
    EXPECT_NE(errors[3].message.find("height"), std::string::npos);
    EXPECT_NE(errors[4].message.find("use"), std::string::npos);
    EXPECT_NE(errors[5].message.find("already used on line 1"), std::string::npos);
    EXPECT_NE(errors[6].message.find("name is empty"), std::string::npos);
    EXPECT_NE(errors[7].message.find("height: '4a' is not a number"), std::string::npos);
}

TEST(ControlPoints, EmptyFileIsRejected) {
    std::vector<ControlPoint> points;
    std::vector<JobError> errors;
    EXPECT_FALSE(parse_control_points("# nothing\n\nname,latitude\n", points, errors));
    ASSERT_EQ(errors.size(), 1u);
    EXPECT_EQ(errors[0].line, 0);
}

TEST(ControlPoints, LongNamesAreRefused) {
    const std::string name(100, 'x');
    std::vector<ControlPoint> points;
    std::vector<JobError> errors;
    EXPECT_FALSE(parse_control_points(name + ",52.1,5.2,44.1,1000,2000,0.9,hv\n", points, errors));
    EXPECT_TRUE(
        parse_control_points(name.substr(1) + ",52.1,5.2,44.1,1000,2000,0.9,hv\n", points, errors));
}

TEST(ControlPoints, TooManyPointsAreRefused) {
    std::string text;
    for (std::size_t i = 0; i <= kMaxCalibrationPoints; ++i) {
        text += 'P';
        text += std::to_string(i);
        text += ",52.1,5.2,44.1,1000,2000,0.9,hv\n";
    }
    std::vector<ControlPoint> points;
    std::vector<JobError> errors;
    EXPECT_FALSE(parse_control_points(text, points, errors));
    EXPECT_TRUE(points.empty());
}

TEST(CalibrationJson, WrittenCalibrationReadsBackExactly) {
    std::vector<ControlPoint> points;
    std::vector<JobError> errors;
    ASSERT_TRUE(parse_control_points(kPoints, points, errors));
    SavedCalibration saved;
    saved.points = points;
    saved.default_scale = 1.0001;
    saved.default_rotation = -0.25;
    CGeoTransformation t;
    geotrans_Error error = geotrans_NoError;
    ASSERT_TRUE(build_calibration(saved, t, error));
    const std::string text = calibration_json(saved, t);
    SavedCalibration again;
    ASSERT_TRUE(parse_calibration_json(text, again, errors)) << errors.front().message;
    EXPECT_EQ(again.default_scale, 1.0001);
    EXPECT_EQ(again.default_rotation, -0.25);
    ASSERT_EQ(again.points.size(), points.size());
    for (std::size_t i = 0; i < points.size(); ++i) {
        EXPECT_EQ(again.points[i].name, points[i].name);
        EXPECT_EQ(again.points[i].llh.lat, points[i].llh.lat);
        EXPECT_EQ(again.points[i].llh.lon, points[i].llh.lon);
        EXPECT_EQ(again.points[i].llh.height, points[i].llh.height);
        EXPECT_EQ(again.points[i].nee.north, points[i].nee.north);
        EXPECT_EQ(again.points[i].nee.elev, points[i].nee.elev);
        EXPECT_EQ(again.points[i].flags, points[i].flags);
    }
}

TEST(CalibrationJson, DefaultsAreAppliedBeforeThePoints) {
    SavedCalibration saved;
    saved.default_scale = 1.5;
    saved.default_rotation = 0.1;
    saved.points.push_back(
        ControlPoint{"A", geo_llh{0.9, 0.09, 44.0}, geo_nee{100.0, 200.0, 1.0}, 3u, 0});
    CGeoTransformation t;
    geotrans_Error error = geotrans_NoError;
    ASSERT_TRUE(build_calibration(saved, t, error));
    EXPECT_EQ(t.HorizontalScale(), 1.5);
    EXPECT_EQ(t.HorizontalRotation(), 0.1);
}

TEST(CalibrationJson, UnsolvableCalibrationIsReported) {
    SavedCalibration saved;
    saved.points.push_back(
        ControlPoint{"A", geo_llh{0.9, 0.09, 44.0}, geo_nee{100.0, 200.0, 1.0}, 1u, 0});
    saved.points.push_back(
        ControlPoint{"B", geo_llh{0.9, 0.09, 44.0}, geo_nee{150.0, 200.0, 1.0}, 1u, 0});
    CGeoTransformation t;
    geotrans_Error error = geotrans_NoError;
    EXPECT_FALSE(build_calibration(saved, t, error));
    EXPECT_EQ(error, geotrans_SolutionFailed);
}

TEST(CalibrationJson, RejectsBadFiles) {
    const char* bad[] = {
        "",
        "[]",
        "{\"format\":\"other\",\"version\":1}",
        "{\"format\":\"qv5-calibration\",\"version\":2}",
        "{\"format\":\"qv5-calibration\",\"version\":1,\"default_scale\":1,"
        "\"default_rotation_rad\":0,\"points\":[]}",
        "{\"format\":\"qv5-calibration\",\"version\":1,\"default_scale\":1,"
        "\"default_rotation_rad\":0,\"points\":[{\"name\":\"A\",\"latitude_rad\":0.9}]}",
        "{\"format\":\"qv5-calibration\",\"version\":1,\"default_scale\":\"1\","
        "\"default_rotation_rad\":0,\"points\":[{\"name\":\"A\",\"latitude_rad\":0.9,"
        "\"longitude_rad\":0.1,\"height\":null,\"north\":1,\"east\":2,\"elevation\":null,"
        "\"use\":\"h\"}]}",
        "{\"format\":\"qv5-calibration\",\"version\":1,\"default_scale\":1,"
        "\"default_rotation_rad\":0,\"points\":[{\"name\":\"A\",\"latitude_rad\":2.0,"
        "\"longitude_rad\":0.1,\"height\":null,\"north\":1,\"east\":2,\"elevation\":null,"
        "\"use\":\"h\"}]}",
        "{\"format\":\"qv5-calibration\",\"version\":1,\"default_scale\":1,"
        "\"default_rotation_rad\":0,\"points\":[{\"name\":\"A\",\"latitude_rad\":0.9,"
        "\"longitude_rad\":0.1,\"height\":null,\"north\":null,\"east\":2,\"elevation\":null,"
        "\"use\":\"h\"}]}",
        "{\"format\":\"qv5-calibration\",\"version\":1,\"default_scale\":1e999}",
        "{\"format\":\"qv5-calibration\",\"version\":1,",
    };
    for (const char* text : bad) {
        SavedCalibration saved;
        std::vector<JobError> errors;
        EXPECT_FALSE(parse_calibration_json(text, saved, errors)) << text;
        EXPECT_FALSE(errors.empty()) << text;
        EXPECT_TRUE(saved.points.empty()) << text;
    }
}

TEST(ConversionRows, ReadsNamedAndUnnamedPositions) {
    std::vector<ConversionInput> inputs;
    std::vector<JobError> errors;
    ASSERT_TRUE(parse_conversion_rows("name,latitude,longitude,height\n"
                                      "P,52.1,5.2,45\n"
                                      "52 06 00N,5 12 00E,\n",
                                      ConversionTarget::grid, inputs, errors));
    ASSERT_EQ(inputs.size(), 2u);
    EXPECT_EQ(inputs[0].name, "P");
    EXPECT_EQ(inputs[0].a, 52.1 * kDeg);
    EXPECT_EQ(inputs[0].c, 45.0);
    EXPECT_EQ(inputs[1].name, "");
    EXPECT_EQ(inputs[1].c, GEO_NULL);
    ASSERT_TRUE(parse_conversion_rows("north,east,elevation\n1000,2000,3\nQ,1,2,\n",
                                      ConversionTarget::wgs84, inputs, errors));
    ASSERT_EQ(inputs.size(), 2u);
    EXPECT_EQ(inputs[0].a, 1000.0);
    EXPECT_EQ(inputs[1].name, "Q");
}

TEST(ConversionRows, BadRowsRejectTheWholeInput) {
    std::vector<ConversionInput> inputs;
    std::vector<JobError> errors;
    EXPECT_FALSE(parse_conversion_rows("1000,2000,3\nx,y\n1,2,3,4,5\nP,north,2,3\n",
                                       ConversionTarget::wgs84, inputs, errors));
    EXPECT_TRUE(inputs.empty());
    ASSERT_EQ(errors.size(), 3u);
    EXPECT_EQ(errors[0].line, 2);
    EXPECT_EQ(errors[1].line, 3);
    EXPECT_EQ(errors[2].line, 4);
}

} // namespace
