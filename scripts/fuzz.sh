#!/bin/bash
# scripts/fuzz.sh [SECONDS [TARGET...]]: builds the fuzz targets and runs each for so long (600 when
# not said; all targets when none is named).
#
# What a run learns is kept in build/host-fuzz/corpus, and an input that breaks something is put into
# build/host-fuzz/findings; the seeds in the tree stay as they are.
set -euo pipefail
root=$(cd "$(dirname "${BASH_SOURCE[0]}")/.." && pwd)
source "$root/scripts/build_env.sh"

seconds=${1:-600}
if [[ ! $seconds =~ ^[1-9][0-9]*$ ]]; then
  note "usage: scripts/fuzz.sh [SECONDS [TARGET...]]"
  exit 2
fi
targets=("${@:2}")
if ((${#targets[@]} == 0)); then
  for folder in "$root"/tests/fuzz/corpus/*/; do
    targets+=("$(basename "$folder")")
  done
fi

install_for_host
build_preset host-fuzz "${targets[@]/%/_fuzz}"

tree=$root/build/host-fuzz
mkdir -p "$tree/findings"
for target in "${targets[@]}"; do
  learned=$tree/corpus/$target
  mkdir -p "$learned"
  options=(-max_total_time="$seconds" -timeout=25 -rss_limit_mb=2048 -print_final_stats=1
           -artifact_prefix="$tree/findings/$target-")
  if [[ -e $root/tests/fuzz/$target.dict ]]; then
    options+=(-dict="$root/tests/fuzz/$target.dict")
  fi
  log=$quastel_logs/fuzz-$target.log
  note "fuzzing $target for $seconds seconds ..."
  if ! "$tree/bin/${target}_fuzz" "${options[@]}" "$learned" \
      "$root/tests/fuzz/corpus/$target" </dev/null >"$log" 2>&1; then
    tail -n 60 "$log" >&2
    note "$target: something broke (all of it: $log)"
    exit 1
  fi
  executions=$(sed -n 's/^stat::number_of_executed_units: *//p' "$log")
  echo "$target: ${executions:?} executions in $seconds seconds, nothing found"
done
