#!/bin/bash
# scripts/bench.sh [FILES]: builds the benchmarks and prints their tables.
#
# The first runs on the simulated Windows; the second walks a real tree of FILES files (100,000 when
# not said) below the build folder, through the DLL under Wine.
set -euo pipefail
root=$(cd "$(dirname "${BASH_SOURCE[0]}")/.." && pwd)
source "$root/scripts/build_env.sh"
source "$root/scripts/wine_env.sh"
files=${1:-100000}

install_for_windows
install_for_host
build_preset host scan_scaling
build_preset windows walk_floor

make_tree() {
  local tree=$1
  [[ -e $tree/.complete ]] && return 0
  note "making $files files below $tree ..."
  python3 - "$tree" "$files" <<'PYTHON'
import os
import sys

tree, files = sys.argv[1], int(sys.argv[2])
for first in range(0, files, 100):
    folder = os.path.join(tree, f"d{first // 10000}", f"f{first // 100}")
    os.makedirs(folder, exist_ok=True)
    for number in range(first, min(first + 100, files)):
        with open(os.path.join(folder, f"file{number}.bin"), "wb") as out:
            # One in a hundred is large, and takes no room.
            out.truncate(10485761 if number % 100 == 0 else 1000)
open(os.path.join(tree, ".complete"), "w").close()
PYTHON
}

echo "The simulated Windows (median of 5):"
"$root/build/host/bin/scan_scaling"

tree=$root/build/bench/tree-$files
make_tree "$tree"
trap wine_stop_server EXIT
wine_start_server
wine_link_drive y "$tree"
echo
echo "A real tree under Wine (median of 7):"
"$root/scripts/wine_run.sh" "$root/build/windows/bin/walk_floor.exe" 'Y:\' 7
