#!/bin/bash
# Installs every Debian package the build, the tests and the tools need.
# Idempotent: does nothing when all packages are present.
set -euo pipefail

HOST_PKGS=(
  build-essential cmake pkg-config
  libcjson-dev libboost-dev libgtest-dev googletest libbenchmark-dev
  libpng-dev libfreetype-dev fonts-dejavu-core
  sysstat iproute2 procps python3
  clang libclang-rt-14-dev libc++-14-dev libc++abi-14-dev
  g++-arm-linux-gnueabihf g++-arm-linux-gnueabi qemu-user busybox-static
  libcpp-httplib-dev nlohmann-json3-dev libsodium-dev
  chromium chromium-driver python3-selenium
  prometheus python3-yaml python3-psutil
  qemu-user-static
  sigrok-cli python3-matplotlib
  libfiu-dev fiu-utils strace clang-format
)
# The two Debian ARM ports the cross builds use: armhf (ARMv7, hard-float)
# and armel (ARMv5, soft-float).
ARM_ARCHES=(armhf armel)
ARM_PKGS=(libcjson-dev:armhf libcjson-dev:armel libsodium-dev:armhf libsodium-dev:armel)

SUDO=""
if [ "$(id -u)" != 0 ]; then SUDO=sudo; fi

missing=()
for p in "${HOST_PKGS[@]}" "${ARM_PKGS[@]}"; do
  if ! dpkg-query -W -f='${Status}' "$p" 2>/dev/null | grep -q "install ok installed"; then
    missing+=("$p")
  fi
done
[ ${#missing[@]} -eq 0 ] && exit 0

for arch in "${ARM_ARCHES[@]}"; do
  if ! dpkg --print-foreign-architectures | grep -qx "$arch"; then
    $SUDO dpkg --add-architecture "$arch"
  fi
done
echo "installing: ${missing[*]}"
export DEBIAN_FRONTEND=noninteractive
# A mirror caught mid-sync fails one index now and then; the install below
# tells whether what we need was found, so retry the update and go on.
for attempt in 1 2 3; do
  $SUDO apt-get update -qq && break
  sleep 5
done
$SUDO apt-get install -y -qq --no-install-recommends "${missing[@]}"
