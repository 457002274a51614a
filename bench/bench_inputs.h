// Inputs for the benchmarks: fixed pseudo-random tables, cycled so that no call can be folded
// into a constant, the same for the library call and its bare-maths baseline.
#ifndef QV5_BENCH_INPUTS_H
#define QV5_BENCH_INPUTS_H

#include "qv5/geodef.h"

#include <array>
#include <cstddef>
#include <random>

namespace qv5::bench {

inline constexpr std::size_t kTableSize = 1024; // a power of two: cycling is a mask

struct Inputs {
    std::array<geo_nee, kTableSize> points{};
    std::array<double, kTableSize> angles{};    // in [-1, 7) rad: some need normalising
    std::array<double, kTableSize> distances{}; // in [1, 500) m

    Inputs() {
        std::mt19937_64 rng(20261121);
        std::uniform_real_distribution<double> coordinate(-5000.0, 5000.0);
        std::uniform_real_distribution<double> height(50.0, 150.0);
        std::uniform_real_distribution<double> angle(-1.0, 7.0);
        std::uniform_real_distribution<double> distance(1.0, 500.0);
        for (std::size_t i = 0; i < kTableSize; ++i) {
            points[i] = geo_nee{coordinate(rng), coordinate(rng), height(rng)};
            angles[i] = angle(rng);
            distances[i] = distance(rng);
        }
    }
};

inline const Inputs& inputs() {
    static const Inputs table;
    return table;
}

inline std::size_t next(std::size_t i) {
    return (i + 1) & (kTableSize - 1);
}

} // namespace qv5::bench

#endif
