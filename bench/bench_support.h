// What every benchmark program shares: running a body over the input tables, registering a
// library call beside its baseline, and the bare whole-turn normalisation the baselines use.
#ifndef QV5_BENCH_SUPPORT_H
#define QV5_BENCH_SUPPORT_H

#include "bench_inputs.h"

#include <benchmark/benchmark.h>

#include <cstddef>
#include <string>

/// Baselines are plain functions that the compiler may not inline (and that the benchmarks call
/// through opaque()), so that both sides of a pair pay for one call.
#define QV5_BARE [[gnu::noinline]]

namespace qv5::bench {

inline constexpr double kTwoPi = 6.283185307179586;
inline constexpr double kPi = 3.141592653589793;
inline constexpr double kHalfPi = 1.5707963267948966;

/// Runs `body(i)` once per iteration with i cycling through the input tables.
template <class Body>
void cycle(benchmark::State& state, Body body) {
    std::size_t i = 0;
    for (auto _ : state) {
        body(i);
        i = next(i);
    }
}

/// A bearing brought into [0, 2 pi) by whole turns.
inline double bare_normalise(double b) {
    while (b >= kTwoPi) {
        b -= kTwoPi;
    }
    while (b < 0.0) {
        b += kTwoPi;
    }
    return b;
}

/// The baselines are called through a pointer the compiler cannot see through, as a call into a
/// shared library goes through the GOT: both sides pay for the same kind of call.
template <class Function>
Function* opaque(Function* function) {
    benchmark::DoNotOptimize(function);
    return function;
}

/// Registers BM_<name> and its baseline BM_<name>_Bare (or BM_<name><suffix>, for a baseline
/// that is not bare maths but another library, paired in ratios.py); each body takes the input
/// index.
template <class Library, class Bare>
void pair(const std::string& name, Library library, Bare bare,
          const std::string& suffix = "_Bare") {
    benchmark::RegisterBenchmark(("BM_" + name).c_str(),
                                 [library](benchmark::State& state) { cycle(state, library); });
    benchmark::RegisterBenchmark(("BM_" + name + suffix).c_str(),
                                 [bare](benchmark::State& state) { cycle(state, bare); });
}

/// Registers BM_<name> alone: its baseline is another library call (BASELINES in ratios.py).
template <class Library>
void single(const std::string& name, Library library) {
    benchmark::RegisterBenchmark(("BM_" + name).c_str(),
                                 [library](benchmark::State& state) { cycle(state, library); });
}

/// The main of a benchmark program: registers its benchmarks, then runs those the command line
/// asks for.
inline int run_benchmarks(int argc, char** argv, void (*register_all)()) {
    register_all();
    benchmark::Initialize(&argc, argv);
    benchmark::RunSpecifiedBenchmarks();
    benchmark::Shutdown();
    return 0;
}

} // namespace qv5::bench

#endif
