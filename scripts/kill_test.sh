#!/bin/bash
# scripts/kill_test.sh [ROUNDS [SEED]]: under Wine, ends a process at a random moment of its
# duplicate scan, ROUNDS times (200 when not said), while the files change, and looks at what is left
# each time: the user's files, the cache file, and what the next scan makes of it.
set -euo pipefail
root=$(cd "$(dirname "${BASH_SOURCE[0]}")/.." && pwd)
source "$root/scripts/build_env.sh"
source "$root/scripts/wine_env.sh"

rounds=${1:-200}
seed=${2:-$RANDOM}
if [[ ! $rounds =~ ^[1-9][0-9]*$ || ! $seed =~ ^[0-9]+$ ]]; then
  note "usage: scripts/kill_test.sh [ROUNDS [SEED]]"
  exit 2
fi

install_for_windows
build_preset windows kill_test
trap wine_stop_server EXIT
wine_start_server
"$root/scripts/wine_run.sh" "$root/build/windows/bin/kill_test.exe" "$rounds" 400 "$seed"
