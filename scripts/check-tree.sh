#!/bin/bash
# Two checks of the tree that need no build: every C and C++ file is in the
# house style of .clang-format, and no include climbs a floor (the tools and
# the control protocol never reach into the daemon's start-up and loops).
set -euo pipefail
cd "$(dirname "$0")/.."

# The font table is written by fontgen, in its own layout.
mapfile -t sources < <(git ls-files '*.cpp' '*.h' | grep -v '^src/oled/font_tables_generated.cpp$')
if ! clang-format --dry-run --Werror "${sources[@]}"; then
  echo "not in the house style: run clang-format -i on the files above" >&2
  exit 1
fi

# folder:floors it must not include from
rules=("tools:src/main" "src/control:src/main")
status=0
for rule in "${rules[@]}"; do
  user=${rule%%:*} above=${rule#*:}
  [ -d "$user" ] || continue
  for header in $(git ls-files "$above/*.h" | xargs -r -n1 basename); do
    if hits=$(git grep -nE "#include [\"<]$header[\">]" -- "$user"); then
      echo "$user must not include $above/$header:" >&2
      echo "$hits" >&2
      status=1
    fi
  done
done
exit $status
