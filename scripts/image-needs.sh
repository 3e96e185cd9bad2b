#!/bin/bash
# What a cross-built oledd needs from the firmware image it goes into.
set -euo pipefail

usage() {
  cat <<'EOF'
usage: scripts/image-needs.sh BINARY

Prints what the program BINARY (a cross-built oledd) needs from the
firmware image: its architecture and float ABI, its loader and shared
libraries, the highest C library and C++ runtime symbol versions it
uses, and the oldest kernel its C library accepts.

Fails when it needs a shared library other than the C library (its
loader, libc, libm, libpthread, librt, libdl) and cJSON, or the shared
C++ runtime (libstdc++, libgcc_s) while OLEDD_SHARED_CXX_RUNTIME is off.
That setting is taken from the environment, else from the CMakeCache.txt
of the build BINARY is in (BUILD/bin/oledd), else off.
EOF
}

case "${1:-}" in
  -h|--help) usage; exit 0 ;;
  "") echo "image-needs.sh: which program? (see --help)" >&2; exit 2 ;;
esac
[ $# -eq 1 ] || { echo "image-needs.sh: one program only (see --help)" >&2; exit 2; }
binary=$1
[ -f "$binary" ] || { echo "image-needs.sh: no such file: $binary" >&2; exit 2; }
header=$(readelf -h -W "$binary" 2>/dev/null) || { echo "image-needs.sh: not an ELF program: $binary" >&2; exit 2; }

field() { sed -n "s/^ *$1: *//p" <<<"$2" | head -1; }
attributes=$(readelf -A -W "$binary")
flags=$(field Flags "$header")
cpu=$(field Tag_CPU_name "$attributes" | tr -d '"')
fpu=$(field Tag_FP_arch "$attributes")
# Older toolchains leave the header's float flag out; the build attributes
# then tell, a program without Tag_ABI_VFP_args using the base convention.
vfp_args=$(field Tag_ABI_VFP_args "$attributes")
if [[ $flags == *hard-float* || $vfp_args == *VFP* ]]; then
  float="hard-float (floating-point arguments in VFP registers)"
elif [[ $flags == *soft-float* || -n $cpu ]]; then
  float="soft-float (floating-point arguments in integer registers)"
else
  float="not stated ($flags)"
fi
arch="$(field Machine "$header"), $(field Class "$header")"
[ -z "$cpu" ] || arch="$arch, ARMv$cpu, ${fpu:-no FPU instructions}"
echo "architecture: $arch"
echo "float ABI:    $float"

loader=$(readelf -l -W "$binary" | sed -n 's/.*Requesting program interpreter: \(.*\)\]/\1/p')
echo "loader:       ${loader:-none (static)}"
needed=$(readelf -d -W "$binary" | sed -n 's/.*(NEEDED).*\[\(.*\)\]/\1/p')
echo "libraries:    $(echo $needed)"

# The version needs, "File: libc.so.6" then its "Name: GLIBC_2.4" lines:
# the highest of each family.
highest=$(readelf -V -W "$binary" | awk '
  / File: / { for (i = 1; i <= NF; i++) if ($i == "File:") file = $(i + 1) }
  / Name: (GLIBC|GLIBCXX|CXXABI|GCC)_/ {
    for (i = 1; i <= NF; i++) if ($i == "Name:") name = $(i + 1)
    print name, file
  }' | sort -t_ -k1,1 -k2V | awk '{ family = $1; sub(/_[^_]*$/, "", family); last[family] = $0 }
  END { for (f in last) print last[f] }' | sort | sed 's/ \(.*\)/ (\1)/' | paste -sd, | sed 's/,/, /g')
echo "versions:     ${highest:-none}"

kernel=$(readelf -n -W "$binary" | sed -n 's/.*OS: Linux, ABI: \([0-9.]*\).*/\1/p' | head -1)
if [ -n "$kernel" ]; then
  echo "kernel:       Linux $kernel or newer (the ABI tag of the C library's start files)"
else
  echo "kernel:       not stated (no ABI tag: uClibc and musl programs carry none)"
fi

shared_runtime=${OLEDD_SHARED_CXX_RUNTIME:-}
cache="$(dirname "$binary")/../CMakeCache.txt"
if [ -z "$shared_runtime" ] && [ -f "$cache" ]; then
  shared_runtime=$(sed -n 's/^OLEDD_SHARED_CXX_RUNTIME:BOOL=//p' "$cache")
fi
case "${shared_runtime^^}" in ON|1|YES|TRUE) shared_runtime=ON ;; *) shared_runtime=OFF ;; esac

status=0
for lib in $needed; do
  case "$lib" in
    ld-*.so*|libc.so*|libm.so*|libpthread.so*|librt.so*|libdl.so*|libcjson.so*) ;;
    libstdc++.so*|libgcc_s.so*)
      if [ "$shared_runtime" != ON ]; then
        echo "image-needs.sh: $binary needs the shared C++ runtime $lib while OLEDD_SHARED_CXX_RUNTIME is off" >&2
        status=1
      fi ;;
    *) echo "image-needs.sh: $binary needs $lib, which is neither the C library nor cJSON" >&2; status=1 ;;
  esac
done
exit $status
