#!/bin/bash
# run_tests.sh TESTS CLIENT ARGS...: tests the command-line client under Wine, with one server for all
# of its runs. TESTS is a file of this folder; ARGS go to it, such as the name of a test.
set -euo pipefail
here=$(cd "$(dirname "${BASH_SOURCE[0]}")" && pwd)
source "$here/../../scripts/wine_env.sh"
wine_start_server
trap wine_stop_server EXIT
tests=$1
shift
taskset -c "$quastel_cpu" python3 -B "$here/$tests" "$@"
