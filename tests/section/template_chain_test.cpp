// The chain a template derives from its element records.
#include "qv5/geotemplate.h"

#include <gtest/gtest.h>

TEST(TemplateChain, EmptyTemplateHasShoulderAtCentreline) {
    CGeoTemplate t;
    EXPECT_EQ(t.NumberElements(), 0);
    EXPECT_EQ(t.HOffsetShoulder(), 0.0);
    EXPECT_EQ(t.VOffsetShoulder(), 0.0);
}
