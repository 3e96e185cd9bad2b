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

# The daemon serves UDP port 16124 and joins a multicast group, so it runs in
# a network namespace of its own: eth0 (192.168.1.20) is one end of a veth
# pair whose other end, peer0 (192.168.1.1), stays in the namespace too.
# Nothing reaches the host's network; tools talk to the box from inside:
#   ip netns exec NAME <tool>
SUDO=""
[ "$(id -u)" != 0 ] && SUDO=sudo
ns="oledd-sim-$$"
$SUDO ip netns add "$ns"
trap '$SUDO ip netns del "$ns"' EXIT
$SUDO ip -n "$ns" link set lo up
$SUDO ip -n "$ns" link add eth0 type veth peer name peer0
$SUDO ip -n "$ns" addr add 192.168.1.20/24 dev eth0
$SUDO ip -n "$ns" addr add 192.168.1.1/24 dev peer0
$SUDO ip -n "$ns" link set eth0 up
$SUDO ip -n "$ns" link set peer0 up
$SUDO ip -n "$ns" route add 224.0.0.0/4 dev eth0
echo "network namespace: $ns (box eth0 192.168.1.20, peer0 192.168.1.1)"
$SUDO ip netns exec "$ns" setpriv --reuid="$(id -u)" --regid="$(id -g)" --init-groups \
  build/bin/oledd-sim --root "$root" --out "$root/out"
