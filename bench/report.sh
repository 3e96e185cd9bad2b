#!/bin/bash
# Every benchmark of the project in one run, each against its baseline,
# printed as one table.
#   bench/report.sh           full run (a minute each of oledd-sim and oledd; 3-6 min)
#   bench/report.sh --quick   shorter runs (10 s of oledd-sim and oledd; ~2 min)
# Builds what it needs: build/ (host), build-literal/ (probes through the
# shell, every datagram answered, every change written at once, every
# drawn byte sent at once in a transaction of its own: the baseline of
# oledd-sim and oledd),
# build-arm/ and build-arm-shared/ (the ARM oledd with the C++ runtime
# linked in and shared, for size).
# Needs root for the oledd-sim and oledd rows (namespaces); skipped without.
set -euo pipefail
cd "$(dirname "$0")/.."

quick=0
case "${1:-}" in
  --quick) quick=1 ;;
  --help|-h) sed -n '2,8p' "$0" | sed 's/^# \{0,1\}//'; exit 0 ;;
  "") ;;
  *) echo "report.sh: unknown option '$1' (try --help)" >&2; exit 2 ;;
esac
if [ $quick = 1 ]; then
  writes=200000; passes=50; changes=100; queries=1000; sim_seconds=10; boxes="200"; flood_seconds=2
else
  writes=1000000; passes=200; changes=300; queries=3000; sim_seconds=60; boxes="200 1000"; flood_seconds=5
fi
# The interpreter the tests run on: Debian's, with its python3-psutil.
python=/usr/bin/python3
[ -x "$python" ] || python=python3
jobs=2
log="$(mktemp /tmp/oled-report-XXXXXX)"
trap 'rm -f "$log"' EXIT

build() {  # dir, cmake options..., -- targets...
  local dir="$1"; shift
  local options=() targets=()
  while [ "$1" != "--" ]; do options+=("$1"); shift; done
  shift
  targets=("$@")
  cmake -S . -B "$dir" -DCMAKE_BUILD_TYPE=RelWithDebInfo "${options[@]}" > "$log" 2>&1 || { cat "$log"; exit 1; }
  for target in "${targets[@]}"; do
    cmake --build "$dir" -j"$jobs" --target "$target" > "$log" 2>&1 || { cat "$log"; exit 1; }
  done
}

echo "building ..." >&2
build build -- bench_pacing bench_panels bench_probes bench_control bench_control_literal oledd-sim oledctl oledd
build build-literal -DOLEDD_LITERAL_SHELL=ON -DOLEDD_LITERAL_REPLIES=ON -DOLEDD_LITERAL_SAVES=ON \
  -DOLEDD_LITERAL_PANEL=ON -- oledd-sim oledd
arm=1
if command -v arm-linux-gnueabihf-g++ > /dev/null; then
  build build-arm -DCMAKE_TOOLCHAIN_FILE=cmake/arm-linux.cmake -DOLEDD_HOST_TOOLS=OFF -- oledd
  build build-arm-shared -DCMAKE_TOOLCHAIN_FILE=cmake/arm-linux.cmake -DOLEDD_HOST_TOOLS=OFF \
    -DOLEDD_TESTS=OFF -DOLEDD_SHARED_CXX_RUNTIME=ON -- oledd
else
  arm=0
fi

row() {  # measure, ours, baseline, unit/notes
  printf '| %-52s | %10s | %10s | %s |\n' "$1" "$2" "$3" "$4"
}
ratio() { awk -v a="$1" -v b="$2" 'BEGIN { if (a > 0) printf "%.1fx", b / a; else print "-" }'; }

echo "measuring register pacing ..." >&2
pacing="$(build/bin/bench_pacing --writes "$writes")"
ns_of() { grep "^$1 " <<< "$pacing" | sed -E 's/.* ([0-9.]+) ns per write.*/\1/'; }
spin="$(ns_of 'bare spin, no register')"
paced="$(ns_of 'set_reg on the simulated SoC')"

echo "measuring panel drawing ..." >&2
panels="$(build/bin/bench_panels)"

echo "measuring probes ..." >&2
probes="$(build/bin/bench_probes --passes "$passes")"
probe_field() {  # mode, set, column (4 calls/s, 5 shells/pass, 6 processes/pass, 7 cpu us/call)
  awk -v m="$1" -v s="$2" -v c="$3" '$1 == m && $2 == s { print $c }' <<< "$probes"
}

echo "measuring control datagrams ..." >&2
control="$(build/bin/bench_control --changes "$changes" --queries "$queries" 2>&1 > /dev/null)"
literal="$(build/bin/bench_control_literal --changes "$changes" --queries "$queries" 2>&1 > /dev/null || true)"
per_second() { grep "^$1:" <<< "$2" | sed -E 's/.* = ([0-9.]+) datagrams\/s.*/\1/'; }

sim=""
if [ "$(id -u)" = 0 ]; then
  echo "running oledd-sim for ${sim_seconds}s, both probe modes side by side ..." >&2
  sim="$("$python" bench/sim_minute.py --seconds "$sim_seconds" --sim build/bin/oledd-sim --sim build-literal/bin/oledd-sim)"
fi
panel=""
if [ "$(id -u)" = 0 ]; then
  echo "running oledd-sim on the sample box for ${sim_seconds}s with each panel, both builds ..." >&2
  panel="$("$python" bench/panel_minute.py --seconds "$sim_seconds" --sim build/bin/oledd-sim \
           --sim build-literal/bin/oledd-sim)"
fi
appliance=""
if [ "$(id -u)" = 0 ]; then
  arm_oledd=()
  [ $arm = 0 ] || arm_oledd=(--arm build-arm/bin/oledd)
  echo "running the host oledd, both builds (and the ARM one under qemu-arm-static) for ${sim_seconds}s ..." >&2
  appliance="$("$python" bench/appliance_minute.py --seconds "$sim_seconds" "${arm_oledd[@]}" \
               --host build/bin/oledd --host build-literal/bin/oledd)"
fi
discover=""
if [ "$(id -u)" = 0 ]; then
  echo "measuring oledctl discover with $boxes boxes answering at once ..." >&2
  # shellcheck disable=SC2086
  discover="$("$python" bench/discover_burst.py $boxes)"
fi
reflection=""
saves=""
if [ "$(id -u)" = 0 ]; then
  echo "flooding a box with replyoled=THIRD:PORT for ${flood_seconds}s, texts primed, both builds ..." >&2
  reflection="$("$python" bench/reflection_flood.py --prime --seconds "$flood_seconds" \
                --sim build/bin/oledd-sim --sim build-literal/bin/oledd-sim)"
  echo "flooding a box with changes for ${flood_seconds}s, both builds ..." >&2
  saves="$("$python" bench/save_flood.py --seconds "$flood_seconds" \
           --sim build/bin/oledd-sim --sim build-literal/bin/oledd-sim)"
fi
sim_field() { awk -v p="$1" -v c="$2" '$1 == p { print $c }' <<< "${3:-$sim}"; }  # path, column[, lines]
appliance_of() { awk -v p="$1" -v c="$2" '$1 == p { print $c }' <<< "$appliance"; }  # path, column
writes_of() { awk -v p="$1" -v k="$2" '$1 == p && $2 == k { print $3 }' <<< "$panel"; }  # path, kind

echo
echo "Benchmarks, $(date -u '+%Y-%m-%d %H:%M UTC'), $(nproc) cores, $(uname -m); bench/report.sh $*"
echo
row "measure" "ours" "baseline" "baseline is"
row "----" "----" "--------" "-----------"
row "paced register write, ns" "$paced" "$spin" "the bare 1 us pacing spin; ours $(ratio "$spin" "$paced") of it"
while IFS='|' read -r what floor bus; do
  row "$what, bus time s" "$bus" "$floor" "1 us per register write; ours $(ratio "$floor" "$bus") of it"
done < <(sed -nE 's/^(.*[^ ]) +[0-9]+ writes +floor +([0-9.]+) s .*\(bus +([0-9.]+) s .*/\1|\2|\3/p' <<< "$panels")
for set in led screen; do
  ours="$(probe_field in-process "$set" 7)"; base="$(probe_field literal "$set" 7)"
  row "probe CPU per call, $set set, us" "$ours" "$base" "every probe through the shell, $(ratio "$ours" "$base") ours"
  row "processes per pass, $set set" "$(probe_field in-process "$set" 6)" "$(probe_field literal "$set" 6)" \
      "every probe through the shell"
done
if [ -n "$sim" ]; then
  ours="$(sim_field build/bin/oledd-sim 2)"; base="$(sim_field build-literal/bin/oledd-sim 2)"
  row "oledd-sim processes started per minute" "$ours" "$base" \
      "oledd-sim with every literal switch, $(ratio "$ours" "$base") ours"
  row "oledd-sim CPU seconds per minute" "$(sim_field build/bin/oledd-sim 3)" \
      "$(sim_field build-literal/bin/oledd-sim 3)" "the same, daemon and the processes it waited for"
  row "oledd-sim resident memory after ${sim_seconds} s, kB" "$(sim_field build/bin/oledd-sim 4)" \
      "$(sim_field build-literal/bin/oledd-sim 4)" "the same"
else
  row "oledd-sim rows" "skipped" "" "need root for the namespaces"
fi
if [ -n "$reflection" ]; then
  row "reply bytes per byte sent, replyoled flood, primed" "$(sim_field build/bin/oledd-sim 2 "$reflection")" \
      "$(sim_field build-literal/bin/oledd-sim 2 "$reflection")" \
      "every datagram answered; 1000-byte texts sent to the 14 text keys first"
  row "flash writes per changing datagram, flood 200/s" "$(sim_field build/bin/oledd-sim 2 "$saves")" \
      "$(sim_field build-literal/bin/oledd-sim 2 "$saves")" "every change written at once (OLEDD_LITERAL_SAVES)"
fi
if [ -n "$panel" ]; then
  for kind in "4:two-wire small panel" "3:four-wire small panel" "0:big panel"; do
    ours="$(writes_of build/bin/oledd-sim "${kind%%:*}")"; base="$(writes_of build-literal/bin/oledd-sim "${kind%%:*}")"
    row "register writes per minute, sample box, ${kind#*:}" "$ours" "$base" \
        "every drawn byte sent at once (OLEDD_LITERAL_PANEL); ours $(ratio "$ours" "$base") fewer"
  done
fi
if [ -n "$appliance" ]; then
  ours="$(appliance_of build/bin/oledd 3)"; base="$(appliance_of build-literal/bin/oledd 3)"
  row "host oledd CPU seconds per minute, sample box" "$ours" "$base" \
      "every literal switch, in the appliance test's root; ours $(ratio "$ours" "$base") less"
  if [ $arm = 1 ]; then
    row "ARM oledd resident memory after $((sim_seconds + 10)) s, kB" "$(appliance_of build-arm/bin/oledd 2)" \
        "$(appliance_of build/bin/oledd 2)" "host oledd in the same root; ours includes qemu-arm-static"
  fi
fi
while read -r count _ _ _ _ listed _; do
  [ -n "$count" ] || continue
  row "oledctl discover, boxes listed of $count answering" "$listed" "$count" "every box that answered"
done <<< "$discover"
ours="$(per_second changes "$control")"; base="$(per_second changes "$literal")"
row "control datagrams/s, each changing a setting" "$ours" "$base" \
    "truncate in place + system(\"sync\"); ours $(ratio "$base" "$ours") as many"
ours="$(per_second queries "$control")"; base="$(per_second queries "$literal")"
row "control datagrams/s, queries (replyoled)" "$ours" "$base" "the same; ours does not rewrite the file"
if [ $arm = 1 ]; then
  stripped="$(mktemp /tmp/oledd-arm-XXXXXX)"
  for runtime in "linked in:build-arm:400" "shared:build-arm-shared:100"; do
    IFS=: read -r how dir kib <<< "$runtime"
    arm-linux-gnueabihf-strip -o "$stripped" "$dir/bin/oledd"
    size="$(stat -c %s "$stripped")"
    row "ARM oledd, stripped, C++ runtime $how, bytes" "$size" "$((kib * 1024))" \
        "the $kib KiB flash budget; ours $(awk -v a="$size" -v b="$((kib * 1024))" 'BEGIN { printf "%.2f", a / b }') of it"
  done
  rm -f "$stripped"
else
  row "ARM oledd size" "skipped" "" "no arm-linux-gnueabihf toolchain"
fi
