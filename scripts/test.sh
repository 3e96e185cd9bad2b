#!/bin/bash
# Builds everything and runs every test: the host build, the same tests
# under AddressSanitizer and UndefinedBehaviorSanitizer, and the daemon's
# unit tests cross-built for 32-bit ARM and run under qemu-arm, and a short
# run of every fuzz target.
# Installs what it needs first (Debian packages; run as root or with sudo).
set -euo pipefail
cd "$(dirname "$0")/.."

bash scripts/install-deps.sh
jobs=$(nproc)

step() { printf '\n=== %s ===\n' "$*"; }

step "host build and tests"
cmake -S . -B build -DCMAKE_BUILD_TYPE=RelWithDebInfo > /dev/null
cmake --build build -j"$jobs"
(cd build && ctest --output-on-failure -j"$jobs")

step "AddressSanitizer + UndefinedBehaviorSanitizer build and tests"
cmake -S . -B build-asan -DCMAKE_BUILD_TYPE=Debug -DOLEDD_SANITIZE=ON > /dev/null
cmake --build build-asan -j"$jobs"
(cd build-asan && ASAN_OPTIONS=detect_leaks=1 UBSAN_OPTIONS=print_stacktrace=1 ctest --output-on-failure -j"$jobs")

step "32-bit ARM cross build, unit tests under qemu-arm"
cmake -S . -B build-arm -DCMAKE_TOOLCHAIN_FILE=cmake/arm-linux-gnueabihf.cmake \
      -DCMAKE_BUILD_TYPE=RelWithDebInfo -DOLEDD_HOST_TOOLS=OFF > /dev/null
cmake --build build-arm -j"$jobs"
(cd build-arm && ctest --output-on-failure -j"$jobs")

step "fuzz targets, a short run each"
bash scripts/fuzz.sh 15

step "all tests passed"
