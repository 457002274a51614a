// Derive on first request, remember the result or the failure, forget on Set. Internal header;
// never installed.
//
// Points, elements, templates, the road and its iterator all derive values lazily. Each class
// keeps a plain unsigned word of known-value bits (`m_known`, so that its public header needs
// nothing from here), a private enum naming those bits (`kKnown...`), and one private
// `Ensure...` member per derived value or group, written with `ensure`:
//
//     double CGeoLine::EnsureAzimuth() {
//         return ensure<FailurePolicy::kKeepStale>(m_known, kKnownAzimuth, m_azimuth,
//                                                  [&](double& out) { ...; return ok; });
//     }
//
// Every `Set` calls `forget` with exactly the bits it invalidates (and `remember` with the bits
// of what it gives directly). Where classes differ in what a failed derivation leaves behind, the
// difference is the policy argument, never a copy of this code.
//
// The rules, the same for every class:
// - A value whose bit is known is returned as it stands; nothing is derived.
// - Under the two policies that remember a failure, the bit is set *before* the derivation runs
//   (as soon as it is attempted), so a derivation that reaches back to its own value (a point
//   observed from itself) sees the remembered failure instead of recursing. Under
//   kRememberNull the slot already holds `GEO_NULL` while the derivation runs.
// - The request whose derivation fails always answers the null value, whatever the policy; the
//   policy decides what later requests answer (see FailurePolicy).
// - A value that is given and never derived, with a default when it was not given (an
//   element's radius, its turn direction), is read with `ensure_default`.
//
// The helpers are inline and do no more than the hand-written test-and-set they replace: the
// known test is one AND and one branch on the hot path.
#ifndef QV5_CORE_LAZY_CACHE_H
#define QV5_CORE_LAZY_CACHE_H

#include "qv5/geodef.h"

#include <type_traits>

namespace qv5::detail {

/// What a derived value holds, and whether it is remembered, after its derivation failed.
enum class FailurePolicy {
    /// The failure is remembered as `GEO_NULL` (every field of a record) until the next Set:
    /// later requests answer `GEO_NULL` too.
    kRememberNull,
    /// The failure is remembered, and the value keeps whatever it held before: the failing
    /// request answers `GEO_NULL`, later requests the stale value (a line's caches).
    kKeepStale,
    /// Nothing is remembered: the failing request answers `GEO_NULL` and the next one derives
    /// again.
    kRetry,
};

/// The "not set" value of a cached quantity: `GEO_NULL`, or a record of them.
template <typename Value>
constexpr Value null_of() {
    if constexpr (std::is_same_v<Value, double>) {
        return GEO_NULL;
    } else {
        static_assert(std::is_same_v<Value, geo_nee> || std::is_same_v<Value, geo_llh> ||
                          std::is_same_v<Value, geo_hvd> || std::is_same_v<Value, geo_vector>,
                      "null_of knows doubles and the three-double coordinate records");
        return Value{GEO_NULL, GEO_NULL, GEO_NULL};
    }
}

/// What a failing request answers under the policies that leave the slot as it was.
template <typename Value>
inline constexpr Value kFailed = null_of<Value>();

/// True when every bit of `bits` is known. (The bits may be given as a class's enumerator: only
/// the word's type is deduced.)
template <typename Word>
inline bool is_known(Word known, std::type_identity_t<Word> bits) {
    return (known & bits) == bits;
}

/// Marks `bits` known without deriving (a Set that gives the value directly).
template <typename Word>
inline void remember(Word& known, std::type_identity_t<Word> bits) {
    known = static_cast<Word>(known | bits);
}

/// Forgets `bits`: their values are derived again on the next request.
template <typename Word>
inline void forget(Word& known, std::type_identity_t<Word> bits) {
    known = static_cast<Word>(known & static_cast<Word>(~bits));
}

/// Returns `slot`, first deriving it when `bit` is not known. `derive(Value& out)` writes the
/// value into `out` and returns true, or returns false when it cannot be derived (then `out` is
/// discarded). The failing request answers the null value; what the slot holds afterwards, and
/// whether the failure is remembered, is the policy's.
template <FailurePolicy Policy, typename Word, typename Value, typename Derive>
inline const Value& ensure(Word& known, std::type_identity_t<Word> bit, Value& slot,
                           Derive&& derive) {
    if ((known & bit) != 0) {
        return slot;
    }
    if constexpr (Policy == FailurePolicy::kRememberNull) {
        remember(known, bit);
        slot = null_of<Value>();
        Value derived = slot;
        if (derive(derived)) {
            slot = derived;
        }
        return slot;
    } else {
        if constexpr (Policy == FailurePolicy::kKeepStale) {
            remember(known, bit);
        }
        Value derived = slot;
        if (derive(derived)) {
            slot = derived;
            if constexpr (Policy == FailurePolicy::kRetry) {
                remember(known, bit);
            }
            return slot;
        }
        return kFailed<Value>;
    }
}

/// Runs `derive()` once for a group of values it fills itself (several slots at once, or a
/// derivation whose result depends on which member is asked for), unless `bit` is known.
/// `derive` returns true on success. Under kRememberNull `derive` must itself null the group's
/// slots before it can fail (the helper does not know them); under kKeepStale it leaves them;
/// under kRetry the failure is not remembered. @return true when the group is known and was
/// derived successfully now, or was already known
template <FailurePolicy Policy, typename Word, typename Derive>
inline bool ensure_group(Word& known, std::type_identity_t<Word> bit, Derive&& derive) {
    if ((known & bit) != 0) {
        return true;
    }
    if constexpr (Policy != FailurePolicy::kRetry) {
        remember(known, bit);
        return derive();
    } else {
        const bool ok = derive();
        if (ok) {
            remember(known, bit);
        }
        return ok;
    }
}

/// A value that is given, never derived: returns `slot` when `bit` is known; otherwise the value
/// is taken as `fallback` from then on (remembered, so that it reads the same until the next
/// Set). An element's radius that was never given reads `GEO_NULL`; its direction a default.
template <typename Word, typename Value>
inline const Value& ensure_default(Word& known, std::type_identity_t<Word> bit, Value& slot,
                                   std::type_identity_t<Value> fallback) {
    if ((known & bit) == 0) {
        remember(known, bit);
        slot = fallback;
    }
    return slot;
}

} // namespace qv5::detail

#endif // QV5_CORE_LAZY_CACHE_H
