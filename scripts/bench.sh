#!/bin/bash
# scripts/bench.sh [FILES]: builds the benchmarks and prints their tables.
#
# Some run on the simulated Windows, the others through the DLL under Wine: on a tree of FILES files
# (100,000 when not said) below the build folder, and on /usr/share.
set -euo pipefail
root=$(cd "$(dirname "${BASH_SOURCE[0]}")/.." && pwd)
source "$root/scripts/build_env.sh"
source "$root/scripts/wine_env.sh"
files=${1:-100000}

install_for_windows
install_for_host
build_preset host scan_scaling duplicate_scaling hash_rate
build_preset windows quastel_core walk_floor duplicate_floor hash_rate

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

# The rate of xxhsum's own benchmark of XXH32, in MB/s.
yardstick() { xxhsum -b1 2>&1 | tr '\r' '\n' | sed -n 's/.*(\([0-9.]*\) MB\/s).*/\1/p' | tail -n 1; }

# In turn, so that a machine that gets slower slows both.
hash_table() {
  for _ in 1 2 3 4 5; do
    echo "$("$root/build/host/bin/hash_rate" 1) $(yardstick)"
  done | python3 -c '
import statistics, sys
rows = [tuple(map(float, line.split())) for line in sys.stdin]
ours, theirs = (statistics.median(column) for column in zip(*rows))
ratio = statistics.median(a / b for a, b in rows)
print(f"{ours:.0f} MB/s against {theirs:.0f} MB/s of xxhsum, ratio {ratio:.2f} (medians of 5)")'
}

tree=$root/build/bench/tree-$files
make_tree "$tree"
trap wine_stop_server EXIT
wine_start_server
wine_link_drive y "$tree"
wine_link_drive x /usr/share

echo "Walk and large-file scan on the simulated Windows (medians of 5):"
"$root/build/host/bin/scan_scaling"
echo
echo "Duplicate scan on the simulated Windows:"
"$root/build/host/bin/duplicate_scaling"
echo
echo "XXH32 over memory, on the host:"
hash_table
echo
echo "Walk and large-file scan of a real tree under Wine (medians of 7):"
"$root/scripts/wine_run.sh" "$root/build/windows/bin/walk_floor.exe" 'Y:\' 7
echo
echo "Duplicate scan of /usr/share under Wine (medians of 5):"
"$root/scripts/wine_run.sh" "$root/build/windows/bin/duplicate_floor.exe" 'X:\' 5
