#!/bin/bash
# scripts/fuzz.sh [SECONDS] [TARGET...]: builds the fuzz targets and runs each for so long (600 when
# not said; all targets when none is named). The two may also come the other way round.
#
# What a run learns is kept in build/host-fuzz/corpus, and an input that breaks something is put into
# build/host-fuzz/findings; the seeds in the tree stay as they are.
set -euo pipefail
root=$(cd "$(dirname "${BASH_SOURCE[0]}")/.." && pwd)
source "$root/scripts/build_env.sh"

seconds=600
targets=()
for argument in "$@"; do
  if [[ $argument =~ ^[1-9][0-9]*$ ]]; then
    seconds=$argument
  elif [[ -d $root/tests/fuzz/corpus/$argument && $argument =~ ^[a-z_]+$ ]]; then
    targets+=("$argument")
  else
    note "usage: scripts/fuzz.sh [SECONDS] [TARGET...], with targets of tests/fuzz/corpus"
    exit 2
  fi
done
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
  # No single block of memory comes near the limit: lengths that a file claims are not believed.
  options=(-max_total_time="$seconds" -timeout=25 -rss_limit_mb=2048 -malloc_limit_mb=64
           -print_final_stats=1 -artifact_prefix="$tree/findings/$target-")
  if [[ $target == call_sequences ]]; then
    # The bookkeeping about rare features takes longer than the runs.
    options+=(-entropic=0)
  fi
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
