#!/bin/bash
# run_archive_test.sh BUILD VERSION: packs the archive, unpacks it into a Wine prefix in which nothing
# else is, and lets its client work there.
set -euo pipefail
here=$(cd "$(dirname "${BASH_SOURCE[0]}")" && pwd)
build=$1
version=$2
# A prefix of its own, made anew: what the archive lacks must not come from somewhere else.
export QUASTEL_WINEPREFIX=$build/package_archive/wine
rm -rf "$build/package_archive"
source "$here/../../scripts/wine_env.sh"
wine_start_server
trap wine_stop_server EXIT
taskset -c "$quastel_cpu" python3 -B "$here/archive_test.py" "$build" "$version"
