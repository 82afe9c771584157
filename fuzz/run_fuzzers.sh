#!/bin/sh
# Runs every fuzzer of a fuzz build for a bounded time on a scratch copy of its
# seed corpus; any crash, leak or timeout fails. Prints executions per fuzzer.
# Usage: fuzz/run_fuzzers.sh <fuzz build dir> [seconds per fuzzer]
set -eu
build=$1
seconds=${2:-25}
here=$(cd "$(dirname "$0")" && pwd)
scratch=$(mktemp -d)
trap 'rm -rf "$scratch"' EXIT
for name in segment_encoding report_descriptor input_report open_report; do
  cp -r "$here/corpus/$name" "$scratch/$name"
  log="$scratch/$name.log"
  if ! "$build/fuzz/${name}_fuzzer" -max_total_time="$seconds" -timeout=10 -rss_limit_mb=2048 \
       -print_final_stats=1 -artifact_prefix="$scratch/" "$scratch/$name" >"$log" 2>&1; then
    tail -n 60 "$log"
    echo "FUZZER FAILED: $name (reproducer kept in build/fuzz-artifacts)" >&2
    mkdir -p "$build/../fuzz-artifacts" && cp "$scratch"/crash-* "$scratch"/leak-* "$scratch"/timeout-* "$build/../fuzz-artifacts/" 2>/dev/null || true
    exit 1
  fi
  runs=$(sed -n 's/^stat::number_of_executed_units: *//p' "$log")
  rate=$(sed -n 's/^stat::average_exec_per_sec: *//p' "$log")
  echo "$name: $runs executions in ${seconds}s ($rate/s)"
done
