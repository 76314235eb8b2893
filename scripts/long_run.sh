#!/bin/bash
# scripts/long_run.sh [ROUNDS [FILES]]: one process under Wine scans and cleans a changing tree of
# FILES real files (10,000 when not said) ROUNDS times (200), each kind of scan in turn. Its handles,
# threads and memory have to be flat from the 20th round on.
set -euo pipefail
root=$(cd "$(dirname "${BASH_SOURCE[0]}")/.." && pwd)
source "$root/scripts/build_env.sh"
source "$root/scripts/wine_env.sh"

rounds=${1:-200}
files=${2:-10000}
if [[ ! $rounds =~ ^[1-9][0-9]*$ || ! $files =~ ^[1-9][0-9]*$ ]] || ((rounds < 40)); then
  note "usage: scripts/long_run.sh [ROUNDS [FILES]], with 40 rounds or more"
  exit 2
fi

install_for_windows
build_preset windows long_run
trap wine_stop_server EXIT
wine_start_server
"$root/scripts/wine_run.sh" "$root/build/windows/bin/long_run.exe" "$rounds" "$files" 20
