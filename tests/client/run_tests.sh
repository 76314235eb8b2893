#!/bin/bash
# run_tests.sh CLIENT ARGS...: tests the command-line client under Wine, with one server for all of
# its runs. ARGS go to client_test.py, such as the name of a test.
set -euo pipefail
here=$(cd "$(dirname "${BASH_SOURCE[0]}")" && pwd)
source "$here/../../scripts/wine_env.sh"
wine_start_server
trap wine_stop_server EXIT
taskset -c "$quastel_cpu" python3 -B "$here/client_test.py" "$@"
