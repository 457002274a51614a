// The lazy-cache helper: derive on first request, remember the result or the failure, forget on
// Set, under each failure policy.
#include "core/lazy_cache.h"

#include "support/test_numbers.h"

#include <gtest/gtest.h>

#include <cstdint>

namespace {

using namespace qv5::detail;
using qv5::test::is_geo_null;

/// A small class written the way the library's classes are: a known word, a private enum of
/// bits, one Ensure member per value, a Set that forgets.
class Doubler {
public:
    enum : std::uint64_t { kKnownTwice = 1, kKnownHalf = 2 };

    void Set(double value) {
        m_value = value;
        forget(m_known, kKnownTwice | kKnownHalf);
    }

    template <FailurePolicy Policy>
    double Twice() {
        return ensure<Policy>(m_known, kKnownTwice, m_twice, [&](double& out) {
            ++m_derivations;
            if (is_geo_null(m_value)) {
                return false;
            }
            out = m_value * 2.0;
            return true;
        });
    }

    double m_value = GEO_NULL;
    double m_twice = 7.0; // what a fresh object happens to hold
    std::uint64_t m_known = 0;
    int m_derivations = 0;
};

TEST(LazyCacheEnsure, DerivesOnceThenAnswersFromTheCache) {
    Doubler d;
    d.Set(3.0);
    EXPECT_EQ(d.Twice<FailurePolicy::kRememberNull>(), 6.0);
    EXPECT_EQ(d.Twice<FailurePolicy::kRememberNull>(), 6.0);
    EXPECT_EQ(d.m_derivations, 1);
}

TEST(LazyCacheEnsure, SetForgetsAndTheNextRequestDerivesAgain) {
    Doubler d;
    d.Set(3.0);
    EXPECT_EQ(d.Twice<FailurePolicy::kKeepStale>(), 6.0);
    d.Set(5.0);
    EXPECT_EQ(d.Twice<FailurePolicy::kKeepStale>(), 10.0);
    EXPECT_EQ(d.m_derivations, 2);
}

TEST(LazyCacheEnsure, RememberNullCachesTheFailureAsNull) {
    Doubler d;
    d.Set(GEO_NULL);
    EXPECT_TRUE(is_geo_null(d.Twice<FailurePolicy::kRememberNull>()));
    EXPECT_TRUE(is_geo_null(d.m_twice));
    d.m_value = 4.0; // changed behind the cache's back: the failure is still remembered
    EXPECT_TRUE(is_geo_null(d.Twice<FailurePolicy::kRememberNull>()));
    EXPECT_EQ(d.m_derivations, 1);
}

TEST(LazyCacheEnsure, KeepStaleAnswersNullOnceThenTheStaleValue) {
    Doubler d;
    d.Set(GEO_NULL);
    EXPECT_TRUE(is_geo_null(d.Twice<FailurePolicy::kKeepStale>()));
    EXPECT_EQ(d.m_twice, 7.0);
    EXPECT_EQ(d.Twice<FailurePolicy::kKeepStale>(), 7.0);
    EXPECT_EQ(d.m_derivations, 1);
}

TEST(LazyCacheEnsure, RetryDerivesAgainAfterAFailure) {
    Doubler d;
    d.Set(GEO_NULL);
    EXPECT_TRUE(is_geo_null(d.Twice<FailurePolicy::kRetry>()));
    EXPECT_EQ(d.m_twice, 7.0);
    d.m_value = 4.0;
    EXPECT_EQ(d.Twice<FailurePolicy::kRetry>(), 8.0);
    EXPECT_EQ(d.Twice<FailurePolicy::kRetry>(), 8.0);
    EXPECT_EQ(d.m_derivations, 2);
}

TEST(LazyCacheEnsure, RememberingPoliciesMarkTheBitBeforeDeriving) {
    // A derivation that asks for its own value again sees the remembered failure instead of
    // recursing without end.
    std::uint64_t known = 0;
    double slot = 1.0;
    int depth = 0;
    const double result = [&] {
        return ensure<FailurePolicy::kRememberNull>(known, 1, slot, [&](double& out) {
            ++depth;
            const double inner = ensure<FailurePolicy::kRememberNull>(known, 1, slot, [&](double&) {
                ++depth;
                return false;
            });
            EXPECT_TRUE(is_geo_null(inner));
            out = 9.0;
            return true;
        });
    }();
    EXPECT_EQ(result, 9.0);
    EXPECT_EQ(depth, 1);
}

TEST(LazyCacheEnsure, RecordsAreNulledInEveryField) {
    std::uint64_t known = 0;
    geo_nee slot{1.0, 2.0, 3.0};
    const geo_nee& got =
        ensure<FailurePolicy::kRememberNull>(known, 4, slot, [](geo_nee&) { return false; });
    EXPECT_TRUE(is_geo_null(got.north) && is_geo_null(got.east) && is_geo_null(got.elev));
    EXPECT_TRUE(is_known(known, std::uint64_t{4}));
}

TEST(LazyCacheEnsureGroup, RunsOnceForTheGroupWhenRemembered) {
    std::uint64_t known = 0;
    int runs = 0;
    const auto derive = [&] {
        ++runs;
        return false;
    };
    EXPECT_FALSE(ensure_group<FailurePolicy::kRememberNull>(known, 2, derive));
    EXPECT_TRUE(ensure_group<FailurePolicy::kRememberNull>(known, 2, derive));
    EXPECT_EQ(runs, 1);
}

TEST(LazyCacheEnsureGroup, RetryRunsAgainUntilItSucceeds) {
    std::uint64_t known = 0;
    int runs = 0;
    const auto derive = [&] { return ++runs == 2; };
    EXPECT_FALSE(ensure_group<FailurePolicy::kRetry>(known, 2, derive));
    EXPECT_TRUE(ensure_group<FailurePolicy::kRetry>(known, 2, derive));
    EXPECT_TRUE(ensure_group<FailurePolicy::kRetry>(known, 2, derive));
    EXPECT_EQ(runs, 2);
}

TEST(LazyCacheEnsureDefault, NeverGivenValueTakesTheFallbackFromThenOn) {
    std::uint64_t known = 0;
    double radius = 42.0;
    EXPECT_TRUE(is_geo_null(ensure_default(known, 8, radius, GEO_NULL)));
    radius = 5.0; // only a Set changes it; the fallback is remembered
    EXPECT_EQ(ensure_default(known, 8, radius, GEO_NULL), 5.0);
}

TEST(LazyCacheEnsureDefault, GivenValueIsKept) {
    std::uint64_t known = 0;
    geodef_Direction direction = geodef_Left;
    remember(known, 16);
    EXPECT_EQ(ensure_default(known, 16, direction, geodef_Right), geodef_Left);
}

TEST(LazyCacheBits, ForgetClearsOnlyTheBitsGiven) {
    std::uint64_t known = 0;
    remember(known, 1 | 4 | 8);
    forget(known, 4);
    EXPECT_EQ(known, 9u);
    EXPECT_TRUE(is_known(known, std::uint64_t{9}));
    EXPECT_FALSE(is_known(known, std::uint64_t{12}));
}

TEST(LazyCacheNullOf, GivesNullInEveryField) {
    EXPECT_TRUE(is_geo_null(null_of<double>()));
    const geo_vector v = null_of<geo_vector>();
    EXPECT_TRUE(is_geo_null(v.x) && is_geo_null(v.y) && is_geo_null(v.z));
}

} // namespace
