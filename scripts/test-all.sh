#!/usr/bin/env bash
# Quick start 2: builds and runs the whole test suite three times - the release build (g++); the
# AddressSanitizer + UndefinedBehaviorSanitizer build (clang) of the library, the qv5 program and
# every suite including the program's own (tests/cli), which also runs every fuzzer over the
# corpus kept in the repository and then for a short session of new inputs; and the suites that
# use threads or processes (platform, units, geodesy) under ThreadSanitizer (clang).
set -euo pipefail
cd "$(dirname "$0")/.."
source scripts/deps.sh
qv5_install_dependencies

jobs=$(nproc 2>/dev/null || echo 2)
for preset in release asan tsan; do
    echo "==> $preset: configure"
    cmake --preset "$preset" >/dev/null
    echo "==> $preset: build"
    cmake --build --preset "$preset" -j "$jobs"
    echo "==> $preset: test"
    ctest --preset "$preset" -j "$jobs"
done
echo "==> all tests passed"
