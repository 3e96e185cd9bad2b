#!/bin/bash
# Runs the simulated appliance: installs what is needed, builds, copies the
# sample box into a fresh folder and starts oledd-sim on it. Ctrl-C ends it.
set -euo pipefail
cd "$(dirname "$0")/.."

usage() {
  cat <<'USAGE'
usage: scripts/run-sim.sh [--keep DIR]

  --keep DIR   use DIR as the box's root (made from the sample if missing)
               instead of a fresh temporary copy
USAGE
}

keep=""
while [ $# -gt 0 ]; do
  case "$1" in
    --keep) keep="$2"; shift 2 ;;
    -h|--help) usage; exit 0 ;;
    *) echo "run-sim: unknown option $1" >&2; usage >&2; exit 2 ;;
  esac
done

bash scripts/install-deps.sh
cmake -S . -B build -DCMAKE_BUILD_TYPE=RelWithDebInfo > /dev/null
cmake --build build -j"$(nproc)" --target oledd-sim > /dev/null

if [ -n "$keep" ]; then
  root="$keep"
else
  root="$(mktemp -d /tmp/oled-box-XXXXXX)"
fi
if [ -d sim/sample-root ] && [ ! -e "$root/data" ]; then
  cp -a sim/sample-root/. "$root/"
fi
mkdir -p "$root/out"
echo "box root: $root (panel and LEDs in $root/out)"
exec build/bin/oledd-sim --root "$root" --out "$root/out"
