// The template file reader on its own: what it accepts, and that it refuses without a partial
// template.
#include "template_file.h"

#include <gtest/gtest.h>

#include <vector>

using qv5::cli::JobError;
using qv5::cli::parse_template;

TEST(TemplateFile, ReadsEveryElementType) {
    CGeoTemplate t;
    std::vector<JobError> errors;
    ASSERT_TRUE(parse_template(R"({"name": "All", "elements": [
        {"type": "step", "dh": 0, "dv": 0.15},
        {"type": "grade-width", "angle": -2, "width": 3},
        {"type": "delta-hv", "dh": 1, "dv": 0.1},
        {"type": "feature", "name": "Lip", "value_a": 1.5},
        {"type": "fixed-point", "h": 3, "v": 0.1},
        {"type": "side-slope", "cut_angle": 45, "fill_angle": 30}]})",
                               t, errors));
    EXPECT_TRUE(errors.empty());
    ASSERT_EQ(t.NumberElements(), 6);
    EXPECT_EQ(t.NthElementType(4), geotemp_FixedPoint);
    EXPECT_EQ(t.Name().ToUtf8(), "All");
    EXPECT_DOUBLE_EQ(t.HOffsetShoulder(), 4.0);
}

TEST(TemplateFile, EmptyElementListIsAnEmptyTemplate) {
    CGeoTemplate t;
    std::vector<JobError> errors;
    EXPECT_TRUE(parse_template(R"({"name": "None", "elements": []})", t, errors));
    EXPECT_EQ(t.NumberElements(), 0);
}

TEST(TemplateFile, RefusedFileLeavesNoElements) {
    CGeoTemplate t;
    std::vector<JobError> errors;
    EXPECT_FALSE(parse_template(R"({"name": "X", "elements": [
        {"type": "grade-width", "angle": 1, "width": 3},
        {"type": "grade-width", "angle": 95, "width": 3}]})",
                                t, errors));
    ASSERT_EQ(errors.size(), 1u);
    EXPECT_EQ(errors[0].message, "elements[1].angle: must lie strictly between -90 and 90 degrees");
    EXPECT_EQ(t.NumberElements(), 0);
}

TEST(TemplateFile, MissingAndMistypedTopLevelFields) {
    CGeoTemplate t;
    std::vector<JobError> errors;
    EXPECT_FALSE(parse_template(R"({"elements": 3, "extra": 1})", t, errors));
    EXPECT_EQ(errors.size(), 3u);
    EXPECT_FALSE(parse_template("[]", t, errors));
    EXPECT_FALSE(parse_template("", t, errors));
    EXPECT_FALSE(parse_template(R"({"name": "x", "elements": [
        {"type": "side-slope", "cut_angle": 0, "fill_angle": 30, "ditch_width": -1}]})",
                                t, errors));
    EXPECT_EQ(errors.size(), 2u);
}
