#!/usr/bin/env bash
# Quick start 2: builds and runs the whole test suite twice - the release build (g++) and the
# AddressSanitizer + UndefinedBehaviorSanitizer build (clang), which also runs a short session
# of every fuzzer - and then the geodesy tests under ThreadSanitizer (clang), where the class
# that threads share lives.
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
