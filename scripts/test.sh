#!/bin/bash
# Builds everything and runs every test: the host build, the same tests
# under AddressSanitizer and UndefinedBehaviorSanitizer and under
# ThreadSanitizer, the daemon's unit tests cross-built for 32-bit ARM and
# run under qemu-arm, the daemon built
# for ARMv5 soft-float and run whole on an emulated ARM926, the daemon
# built with clang and libc++, a short run of every fuzz target, and the
# benchmark report's short runs.
# Installs what it needs first (Debian packages; run as root or with sudo).
set -euo pipefail
cd "$(dirname "$0")/.."

bash scripts/install-deps.sh
jobs=$(nproc)

step() { printf '\n=== %s ===\n' "$*"; }

step "house style and include floors"
bash scripts/check-tree.sh

step "host build and tests"
cmake -S . -B build -DCMAKE_BUILD_TYPE=RelWithDebInfo > /dev/null
cmake --build build -j"$jobs"
(cd build && ctest --output-on-failure -j"$jobs")
# A C++ runtime the image may lack is refused (the host's oledd has one).
if scripts/image-needs.sh build/bin/oledd > /dev/null 2>&1; then
  echo "image-needs.sh passed a program that needs the shared C++ runtime" >&2
  exit 1
fi

step "AddressSanitizer + UndefinedBehaviorSanitizer build and tests"
cmake -S . -B build-asan -DCMAKE_BUILD_TYPE=Debug -DOLEDD_SANITIZE=ON > /dev/null
cmake --build build-asan -j"$jobs"
# The fault-injection test preloads libfiu, which the sanitizers' runtimes
# must precede: it runs on the host build alone.
(cd build-asan && ASAN_OPTIONS=detect_leaks=1 UBSAN_OPTIONS=print_stacktrace=1 ctest --output-on-failure -j"$jobs" \
   -E '^e2e_fault_calls$')

step "ThreadSanitizer build, unit tests and end-to-end tests"
# Any report fails. Left out: the fleet page's test times saves against a
# 1 s time-out, and oledctl serve's threads run in Debian's uninstrumented
# HTTP library, whose locks the sanitizer cannot see (the routed fleet, the
# serve limits), and the fault-injection test preloads libfiu.
cmake -S . -B build-tsan -DCMAKE_BUILD_TYPE=RelWithDebInfo -DOLEDD_SANITIZE=thread > /dev/null
cmake --build build-tsan -j"$jobs"
rm -rf build-tsan/tsan-reports && mkdir build-tsan/tsan-reports
(cd build-tsan && TSAN_OPTIONS="halt_on_error=1 exitcode=66 log_path=$PWD/tsan-reports/report" \
   ctest --output-on-failure -j"$jobs" -E '^(install_layout|init_script|e2e_fleet_page|e2e_routed_fleet|e2e_serve_limits|e2e_fault_calls)$')
! cat build-tsan/tsan-reports/* 2> /dev/null || { echo "ThreadSanitizer reports in build-tsan/tsan-reports" >&2; exit 1; }

step "32-bit ARM cross build (armhf: ARMv7, hard-float), unit tests under qemu-arm"
# The appliance test runs oledd on the cores of the SoCs.
cmake -S . -B build-arm -DCMAKE_TOOLCHAIN_FILE=cmake/arm-linux.cmake -DOLEDD_CROSS_PREFIX=arm-linux-gnueabihf- \
      -DOLEDD_E2E_CPUS="cortex-a7;cortex-a9" -DCMAKE_BUILD_TYPE=RelWithDebInfo -DOLEDD_HOST_TOOLS=OFF > /dev/null
cmake --build build-arm -j"$jobs"
scripts/image-needs.sh build-arm/bin/oledd
(cd build-arm && ctest --output-on-failure -j"$jobs")

step "ARMv5 soft-float cross build (armel), the appliance test on an ARM926"
# The unit tests ran on armhf: only the daemon and its whole-program test.
cmake -S . -B build-armel -DCMAKE_TOOLCHAIN_FILE=cmake/arm-linux.cmake -DOLEDD_CROSS_PREFIX=arm-linux-gnueabi- \
      -DOLEDD_E2E_CPUS=arm926 -DCMAKE_BUILD_TYPE=RelWithDebInfo -DOLEDD_HOST_TOOLS=OFF > /dev/null
cmake --build build-armel -j"$jobs" --target oledd
scripts/image-needs.sh build-armel/bin/oledd
(cd build-armel && ctest --output-on-failure -R '^e2e_appliance$')

step "daemon with clang and libc++ (C++14, warnings as errors)"
# Catches code that leans on one standard library's transitive includes or
# extensions; only the daemon's libraries and oledd.
cmake -S . -B build-clang -DCMAKE_BUILD_TYPE=Debug -DCMAKE_C_COMPILER=clang -DCMAKE_CXX_COMPILER=clang++ \
      -DCMAKE_CXX_FLAGS=-stdlib=libc++ -DCMAKE_EXE_LINKER_FLAGS=-stdlib=libc++ \
      -DOLEDD_HOST_TOOLS=OFF -DOLEDD_TESTS=OFF > /dev/null
cmake --build build-clang -j"$jobs" --target oledd

step "fuzz targets, a short run each"
bash scripts/fuzz.sh 15

step "benchmark report, short runs (every benchmark still runs to its end)"
bench/report.sh --quick

step "all tests passed"
