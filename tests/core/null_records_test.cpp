// The "not set" marker on values and records.
#include "core/null_records.h"

#include "support/test_numbers.h"

#include <gtest/gtest.h>

namespace {

using namespace qv5::detail;
using qv5::test::is_geo_null;

TEST(CoreNullRecords, NullRecordsHoldNullInEveryField) {
    EXPECT_TRUE(is_geo_null(kNullGrid.north) && is_geo_null(kNullGrid.east) &&
                is_geo_null(kNullGrid.elev));
    EXPECT_TRUE(is_geo_null(kNullWgs84.lat) && is_geo_null(kNullWgs84.lon) &&
                is_geo_null(kNullWgs84.height));
    EXPECT_TRUE(is_geo_null(kNullObs.hz) && is_geo_null(kNullObs.vz) && is_geo_null(kNullObs.dist));
}

TEST(CoreNullRecords, IsNullTestsExactEquality) {
    EXPECT_TRUE(is_null(2e-308));
    EXPECT_FALSE(is_null(0.0));
    EXPECT_FALSE(is_null(3e-308));
}

TEST(CoreNullRecords, PlanNeedsNorthAndEast) {
    EXPECT_TRUE(has_plan(geo_nee{1.0, 2.0, GEO_NULL}));
    EXPECT_FALSE(has_plan(geo_nee{GEO_NULL, 2.0, 3.0}));
    EXPECT_FALSE(has_plan(geo_nee{1.0, GEO_NULL, 3.0}));
}

TEST(CoreNullRecords, ThreeDimensionsNeedTheElevationToo) {
    EXPECT_TRUE(has_3d(geo_nee{1.0, 2.0, 0.0}));
    EXPECT_FALSE(has_3d(geo_nee{1.0, 2.0, GEO_NULL}));
    EXPECT_FALSE(has_3d(geo_nee{GEO_NULL, 2.0, 3.0}));
}

} // namespace
