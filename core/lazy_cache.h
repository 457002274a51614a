// Derive on first request, remember the result or the failure, forget on Set. Internal header;
// never installed.
//
// Points, elements, templates, the road and its iterator all derive values lazily. Each class
// keeps a plain unsigned word of known-value bits (so that its public header needs nothing from
// here) and one private `Ensure...` member per derived group, written with `ensure`:
//
//     const double& CGeoLine::EnsureAzimuth() {
//         return ensure<FailurePolicy::kKeepStale>(m_known, kKnownAzimuth, m_azimuth,
//                                                  [&](double& out) { ...; return ok; });
//     }
//
// Every `Set` calls `forget` with exactly the bits it invalidates. Where classes differ in what a
// failed derivation leaves behind, the difference is the policy argument, never a copy of this
// code.
#ifndef QV5_CORE_LAZY_CACHE_H
#define QV5_CORE_LAZY_CACHE_H

#include "qv5/geodef.h"

#include <type_traits>

namespace qv5::detail {

/// What a derived value holds, and whether it is remembered, after its derivation failed.
enum class FailurePolicy {
    /// The failure is remembered as `GEO_NULL` (every field of a record) until the next Set.
    kRememberNull,
    /// The failure is remembered, and the value keeps whatever it held before.
    kKeepStale,
    /// Nothing is remembered: the next request derives again.
    kRetry,
};

/// The "not set" value of a cached quantity: `GEO_NULL`, or a record of them.
template <typename Value>
inline Value null_of() {
    if constexpr (std::is_same_v<Value, double>) {
        return GEO_NULL;
    } else {
        static_assert(std::is_same_v<Value, geo_nee> || std::is_same_v<Value, geo_llh> ||
                          std::is_same_v<Value, geo_hvd> || std::is_same_v<Value, geo_vector>,
                      "null_of knows doubles and the three-double coordinate records");
        Value v;
        double* fields = reinterpret_cast<double*>(&v);
        fields[0] = fields[1] = fields[2] = GEO_NULL;
        return v;
    }
}

/// True when every bit of `bits` is known.
template <typename Word>
inline bool is_known(Word known, Word bits) {
    return (known & bits) == bits;
}

/// Marks `bits` known without deriving (a Set that gives the value directly).
template <typename Word>
inline void remember(Word& known, Word bits) {
    known = static_cast<Word>(known | bits);
}

/// Forgets `bits`: their values are derived again on the next request.
template <typename Word>
inline void forget(Word& known, Word bits) {
    known = static_cast<Word>(known & static_cast<Word>(~bits));
}

/// Returns `slot`, first deriving it when `bit` is not known. `derive(Value& out)` writes the
/// value into `out` and returns true, or returns false when it cannot be derived; what the slot
/// then holds, and whether the failure is remembered, is the policy's.
template <FailurePolicy Policy, typename Word, typename Value, typename Derive>
inline const Value& ensure(Word& known, Word bit, Value& slot, Derive&& derive) {
    if ((known & bit) != 0) {
        return slot;
    }
    Value derived = slot;
    if (derive(derived)) {
        slot = derived;
        remember(known, bit);
        return slot;
    }
    if constexpr (Policy == FailurePolicy::kRememberNull) {
        slot = null_of<Value>();
        remember(known, bit);
    } else if constexpr (Policy == FailurePolicy::kKeepStale) {
        remember(known, bit);
    }
    return slot;
}

/// Runs `derive()` once for a group of values it fills itself (several slots at once), unless
/// `bit` is known. `derive` returns true on success; on failure the policy decides whether the
/// failure is remembered (the group's slots are whatever `derive` left in them).
template <FailurePolicy Policy, typename Word, typename Derive>
inline bool ensure_group(Word& known, Word bit, Derive&& derive) {
    if ((known & bit) != 0) {
        return true;
    }
    const bool ok = derive();
    if (ok || Policy != FailurePolicy::kRetry) {
        remember(known, bit);
    }
    return ok;
}

} // namespace qv5::detail

#endif // QV5_CORE_LAZY_CACHE_H
