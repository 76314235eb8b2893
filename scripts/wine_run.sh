#!/bin/bash
# wine_run.sh PROGRAM ARGS...: runs a Windows program under Wine in the project's prefix.
set -euo pipefail
source "$(dirname "${BASH_SOURCE[0]}")/wine_env.sh"
wine_prepare
if ! wine_server_runs; then
  # Nobody keeps a server for this run: one that goes away by itself after a while.
  wine_pinned wineserver -p20 </dev/null >/dev/null 2>&1
  wine_start_services
fi
exec taskset -c "$quastel_cpu" wine "$@"
