#!/usr/bin/env bash
# Installs the Debian packages that building, testing and running QV5lib need, when any is
# missing. Idempotent: with everything present it only checks. Sourced by the other scripts.
set -euo pipefail

QV5_PACKAGES=(
    cmake make g++ pkg-config            # build
    clang-14 libclang-rt-14-dev           # sanitizer run and libFuzzer
    clang-format                          # formatting check
    libfmt-dev libcairo2-dev              # library
    libpugixml-dev                        # LandXML exchange component
    fonts-dejavu-core                     # the drawing layer's font
    libcli11-dev nlohmann-json3-dev       # command-line program
    libgtest-dev libgmock-dev             # tests
    libproj-dev libgeographiclib-dev      # independent geodesy references for the tests
    proj-bin                              # cct, run on the calibration's PROJ pipeline by the tests
    libbenchmark-dev                      # benchmarks
)

qv5_missing_packages() {
    local missing=()
    local package
    for package in "${QV5_PACKAGES[@]}"; do
        if ! dpkg-query -W -f='${Status}' "$package" 2>/dev/null | grep -q "ok installed"; then
            missing+=("$package")
        fi
    done
    echo "${missing[@]:-}"
}

qv5_install_dependencies() {
    local missing
    missing=$(qv5_missing_packages)
    [ -z "$missing" ] && return 0
    echo "Installing missing Debian packages: $missing"
    local sudo=""
    if [ "$(id -u)" -ne 0 ]; then
        if command -v sudo >/dev/null 2>&1; then
            sudo="sudo"
        else
            echo "error: these packages are missing and this user cannot install them: $missing" >&2
            return 1
        fi
    fi
    # shellcheck disable=SC2086
    $sudo env DEBIAN_FRONTEND=noninteractive apt-get update -qq
    # shellcheck disable=SC2086
    $sudo env DEBIAN_FRONTEND=noninteractive apt-get install -y -qq --no-install-recommends $missing
}

if [ "${BASH_SOURCE[0]}" = "$0" ]; then
    qv5_install_dependencies
fi
