#!/usr/bin/env bash
# Quick start 1: builds the qv5 program and runs its default job on the bundled sample data.
# Arguments are passed on to qv5 (for example --json).
set -euo pipefail
cd "$(dirname "$0")/.."
source scripts/deps.sh
qv5_install_dependencies

jobs=$(nproc 2>/dev/null || echo 2)
cmake --preset release >/dev/null
cmake --build --preset release --target qv5_cli -j "$jobs" >/dev/null
exec build/release/tools/qv5/qv5 "$@"
