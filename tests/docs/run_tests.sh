#!/bin/bash
# run_tests.sh TESTS ARGS...: tests documents with programs under Wine, one server for all of them.
# TESTS is a file of this folder; ARGS go to it.
set -euo pipefail
here=$(cd "$(dirname "${BASH_SOURCE[0]}")" && pwd)
source "$here/../../scripts/wine_env.sh"
wine_start_server
trap wine_stop_server EXIT
tests=$1
shift
taskset -c "$quastel_cpu" python3 -B "$here/$tests" "$@"
