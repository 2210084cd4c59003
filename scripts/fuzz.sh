#!/usr/bin/env bash
# Runs every libFuzzer target of a fuzz build for a given time, each from its seed corpus
# (tests/fuzz/corpus/NAME, read only) and a working corpus that grows in the build tree.
# A crash, a leak, a fault of a check, a time-out or memory out of bounds fails the run
# and leaves the input in BUILD/artifacts. Prints the executions per target.
#   scripts/fuzz.sh BUILD [SECONDS] [TARGET ...]
set -euo pipefail
cd "$(dirname "$0")/.."
build=${1:?usage: scripts/fuzz.sh BUILD [SECONDS] [TARGET ...]}
seconds=${2:-60}
shift $(( $# > 1 ? 2 : 1 ))
targets=("$@")
if [ ${#targets[@]} -eq 0 ]; then
  targets=(xyz_reader grid_reader property_bag state format_number data_set)
fi

# The sanitizer run's settings (see make sanitize), and llvmpipe drawing on the calling
# thread: at 64 x 48 its threads cost more than they save.
export ASAN_OPTIONS=detect_leaks=1:abort_on_error=1:intercept_tls_get_addr=0
export UBSAN_OPTIONS=print_stacktrace=1
export LSAN_OPTIONS=suppressions=$PWD/tests/support/lsan.supp:print_suppressions=0
export LP_NUM_THREADS=0

mkdir -p "$build/artifacts"
failed=()
summary=""
for name in "${targets[@]}"; do
  work="$build/corpus/$name"
  mkdir -p "$work"
  log="$build/fuzz-$name.log"
  echo "fuzz: $name for ${seconds}s"
  if "$build/bin/orvane_fuzz_$name" "$work" "tests/fuzz/corpus/$name" \
      -max_total_time="$seconds" -timeout=30 -rss_limit_mb=2560 -print_final_stats=1 \
      -artifact_prefix="$build/artifacts/$name-" > "$log" 2>&1; then
    status=ok
  else
    status=FAILED
    failed+=("$name")
    tail -n 60 "$log"
  fi
  runs=$(sed -n 's/^stat::number_of_executed_units: *//p' "$log" | tail -n 1)
  summary+=$(printf '%-14s %-6s %12s executions\n' "$name" "$status" "${runs:-?}")$'\n'
done
printf '%s' "$summary"
if [ ${#failed[@]} -gt 0 ]; then
  echo "fuzz: failed: ${failed[*]} (inputs in $build/artifacts)" >&2
  exit 1
fi
