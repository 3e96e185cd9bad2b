#!/bin/bash
# Runs the simulated appliance and shows its panel and LEDs live in this
# terminal: installs what is needed, builds, copies the sample box into a
# fresh folder and starts oledd-sim on it. Ctrl-C ends it.
set -euo pipefail
cd "$(dirname "$0")/.."

usage() {
  cat <<'USAGE'
usage: scripts/run-sim.sh [--panel big|0.96|1.29|old] [--keep DIR]

  --panel KIND  the panel to simulate (default 0.96):
                  big   256x64 greyscale, four-wire bus (OLed_a_kind_start=0)
                  0.96  0.96-inch 128x64, two-wire bus   (4)
                  1.29  1.29-inch 128x64, four-wire bus  (6)
                  old   the old 128x32 two-wire panel    (1)
  --keep DIR    use DIR as the box's root (made from the sample if missing)
                instead of a fresh temporary copy

The box is 192.168.1.20 on eth0 in a network namespace of its own; its
peer is 192.168.1.1 in a second one. Drive it from the peer, e.g.:
  sudo ip netns exec <peer namespace> build/bin/oledctl get --box 192.168.1.20
USAGE
}

keep=""
kind=4
while [ $# -gt 0 ]; do
  case "$1" in
    --keep) keep="${2:?--keep needs a folder}"; shift 2 ;;
    --panel)
      case "${2:-}" in
        big) kind=0 ;; 0.96) kind=4 ;; 1.29) kind=6 ;; old) kind=1 ;;
        *) echo "run-sim: --panel takes big, 0.96, 1.29 or old" >&2; exit 2 ;;
      esac
      shift 2 ;;
    -h|--help) usage; exit 0 ;;
    *) echo "run-sim: unknown option $1" >&2; usage >&2; exit 2 ;;
  esac
done

bash scripts/install-deps.sh
cmake -S . -B build -DCMAKE_BUILD_TYPE=RelWithDebInfo > /dev/null
cmake --build build -j"$(nproc)" --target oledd-sim pgmview > /dev/null

root="${keep:-$(mktemp -d /tmp/oled-box-XXXXXX)}"
mkdir -p "$root"
if [ ! -e "$root/data/oled.ini" ]; then
  cp -a sim/sample-root/. "$root/"
fi
sed -i "s/^OLed_a_kind_start=.*/OLed_a_kind_start=$kind/" "$root/data/oled.ini"
mkdir -p "$root/out"
rm -f "$root/out/panel.pgm"

SUDO=""
[ "$(id -u)" != 0 ] && SUDO=sudo
box="oledd-box-$$"
peer="oledd-peer-$$"
sim_pid=""
cleanup() {
  if [ -n "$sim_pid" ] && kill -0 "$sim_pid" 2>/dev/null; then
    $SUDO kill -TERM "$sim_pid" 2>/dev/null || true
    wait "$sim_pid" 2>/dev/null || true
  fi
  $SUDO ip netns del "$box" 2>/dev/null || true
  $SUDO ip netns del "$peer" 2>/dev/null || true
}
trap cleanup EXIT
trap 'exit 0' INT TERM

$SUDO ip netns add "$box"
$SUDO ip netns add "$peer"
$SUDO ip -n "$box" link set lo up
$SUDO ip -n "$peer" link set lo up
$SUDO ip -n "$box" link add eth0 type veth peer name peer0 netns "$peer"
$SUDO ip -n "$box" addr add 192.168.1.20/24 dev eth0
$SUDO ip -n "$peer" addr add 192.168.1.1/24 dev peer0
$SUDO ip -n "$box" link set eth0 up
$SUDO ip -n "$peer" link set peer0 up
$SUDO ip -n "$box" route add 224.0.0.0/4 dev eth0
$SUDO ip -n "$peer" route add 224.0.0.0/4 dev peer0

$SUDO ip netns exec "$box" setpriv --reuid="$(id -u)" --regid="$(id -g)" --init-groups \
  build/bin/oledd-sim --root "$root" --out "$root/out" > "$root/oledd.log" 2>&1 &
sim_pid=$!

for _ in $(seq 50); do [ -e "$root/out/panel.pgm" ] && break; sleep 0.2; done
echo "box root $root, daemon output in $root/oledd.log, peer namespace $peer"
sleep 1
build/bin/pgmview --follow --leds "$root/out/leds.json" "$root/out/panel.pgm"
