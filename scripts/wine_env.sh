# Sourced by the scripts that run Windows programs: a Wine prefix of the project's own below the
# build folder, its server, and drive letters for folders of this machine.
#
# Everything is pinned to one processor: Wine's server is single-threaded, and its clients lose more
# by moving between processors than they win.

quastel_root=$(cd "$(dirname "${BASH_SOURCE[0]}")/.." && pwd)

export WINEPREFIX="${QUASTEL_WINEPREFIX:-$quastel_root/build/wine}"
export WINEARCH=win64
export WINEDEBUG=-all
# In the C locale Wine cannot make names outside ASCII.
export LC_ALL=C.UTF-8
# No offer to download Mono or Gecko.
export WINEDLLOVERRIDES="mscoree,mshtml="

# The first processor that this process may use.
quastel_cpu=$(sed -n 's/^Cpus_allowed_list:[[:space:]]*\([0-9]*\).*/\1/p' /proc/self/status)

wine_pinned() { taskset -c "$quastel_cpu" "$@"; }

wine_server_runs() { wineserver -k0 2>/dev/null; }

# Makes the prefix once. Two callers may come at the same time.
wine_prepare() {
  local done_mark="$WINEPREFIX/.quastel-prepared"
  [[ -e $done_mark ]] && return 0
  mkdir -p "$WINEPREFIX"
  (
    flock 9
    [[ -e $done_mark ]] && exit 0
    if ! wine_pinned wine wineboot -i </dev/null >"$WINEPREFIX/wineboot.log" 2>&1 9>&-; then
      echo "Wine could not make its folder $WINEPREFIX:" >&2
      cat "$WINEPREFIX/wineboot.log" >&2
      exit 1
    fi
    # Its server would end by itself in the middle of what follows.
    wineserver -k 2>/dev/null || true
    touch "$done_mark"
  ) 9>"$WINEPREFIX/.quastel-lock"
}

# One server for everything that follows, until wine_stop_server. One that runs already will do.
wine_start_server() {
  wine_prepare
  if wine_server_runs; then
    return 0
  fi
  wine_pinned wineserver -f -p </dev/null >/dev/null 2>&1 &
  quastel_server_pid=$!
  local _
  for _ in {1..100}; do
    wine_server_runs && break
    sleep 0.05
  done
  wine_start_services
}

# The system services start with the first program and would keep its output open for ever.
wine_start_services() { wine_pinned wine cmd /c exit </dev/null >/dev/null 2>&1; }

# Ends the server of this prefix, if this process started it.
wine_stop_server() {
  [[ -n ${quastel_server_pid:-} ]] || return 0
  wineserver -k 2>/dev/null || true
  wait "$quastel_server_pid" 2>/dev/null || true
  quastel_server_pid=
}

# wine_link_drive LETTER FOLDER: "LETTER:\" is the folder itself from now on. A folder below Z:\ will
# not do: Wine shows mount points as reparse points, and no walk of the library enters those.
wine_link_drive() { ln -sfn "$2" "$WINEPREFIX/dosdevices/${1,,}:"; }
