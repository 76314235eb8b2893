#!/bin/bash
# scripts/bench.sh [OPTIONS OF bench.py]: builds the benchmarks, measures everything and prints the
# table; --write docs/performance.md puts it into that document as well.
#
# Some run on the simulated Windows, the others through the DLL under Wine on trees below the build
# folder: --files 20000 --big 8 makes them smaller. It needs a few gigabytes, and a quiet machine for
# one row only, which says so when it was not.
set -euo pipefail
root=$(cd "$(dirname "${BASH_SOURCE[0]}")/.." && pwd)
source "$root/scripts/build_env.sh"
source "$root/scripts/wine_env.sh"

install_for_windows
install_for_host
build_preset host scan_growth count_opens hash_rate
build_preset windows quastel_core windows_bench

corpora=$root/build/bench
mkdir -p "$corpora"
trap wine_stop_server EXIT
wine_start_server
if [[ -z ${quastel_server_pid:-} ]]; then
  note "another server of $WINEPREFIX runs already; what it costs cannot be told apart"
  exit 1
fi
# What was started in the background is a shell that waits for the server.
server=$(pgrep -P "$quastel_server_pid" -x 'wineserver.*')
wine_link_drive y "$corpora"
python3 "$root/scripts/bench.py" --corpora "$corpora" --host "$root/build/host/bin" \
  --server "$server" "$@" \
  --command "$root/scripts/wine_run.sh" "$root/build/windows/bin/windows_bench.exe"
