#!/bin/bash
# Builds the libFuzzer targets with clang and runs each one for a while
# from the seed corpus in fuzz/corpus/<target-without-fuzz_>.
#   scripts/fuzz.sh              15 seconds per target (what the tests run)
#   scripts/fuzz.sh 3600         a long run: an hour per target
#   scripts/fuzz.sh 600 probes   only the targets whose name holds "probes"
# fuzz/<target>.options, if present, holds extra libFuzzer options.
set -euo pipefail
cd "$(dirname "$0")/.."
seconds="${1:-15}"
only="${2:-}"

CC=clang CXX=clang++ cmake -S . -B build-fuzz -DOLEDD_FUZZ=ON -DCMAKE_BUILD_TYPE=RelWithDebInfo > /dev/null
cmake --build build-fuzz -j"$(nproc)" > /dev/null

work="$(mktemp -d /tmp/oled-fuzz-XXXXXX)"
trap 'rm -rf "$work"' EXIT
status=0
for target in build-fuzz/bin/fuzz_*; do
  name="$(basename "$target")"
  [ -n "$only" ] && [[ "$name" != *"$only"* ]] && continue
  seeds="fuzz/corpus/${name#fuzz_}"
  mkdir -p "$work/$name"
  [ -d "$seeds" ] && cp -r "$seeds/." "$work/$name/"
  extra=()
  [ -f "fuzz/$name.options" ] && read -r -a extra < "fuzz/$name.options" || true
  printf '%-28s ' "$name"
  if (cd "$work" && "$OLDPWD/$target" -max_total_time="$seconds" -print_final_stats=1 "${extra[@]}" \
        -artifact_prefix="$work/$name-" "$work/$name" > "$work/$name.log" 2>&1); then
    runs=$(grep -o 'stat::number_of_executed_units: *[0-9]*' "$work/$name.log" | grep -o '[0-9]*$')
    echo "ok, ${runs:-?} executions in ${seconds}s"
  else
    echo "FAILED"
    tail -40 "$work/$name.log"
    mkdir -p fuzz/crashes && cp "$work/$name"-* fuzz/crashes/ 2>/dev/null || true
    status=1
  fi
done
exit $status
