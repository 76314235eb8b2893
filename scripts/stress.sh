#!/bin/bash
# scripts/stress.sh [SECONDS [SEED]]: eight handles at once under ThreadSanitizer, each scanned,
# cleaned, asked, cancelled and destroyed from several threads, for so long (120 when not said).
set -euo pipefail
root=$(cd "$(dirname "${BASH_SOURCE[0]}")/.." && pwd)
source "$root/scripts/build_env.sh"

if [[ ! ${1:-120} =~ ^[1-9][0-9]*$ ]]; then
  note "usage: scripts/stress.sh [SECONDS [SEED]]"
  exit 2
fi

install_for_host
build_preset host-tsan handles_stress
# Without a seed the program takes one and says which.
exec "$root/build/host-tsan/bin/handles_stress" "${1:-120}" "${@:2}"
