#!/bin/sh
# Runs every fuzz target for a bounded time, starting from the seed corpus in
# fuzz/corpus/<target>/ (left untouched: what a run finds goes to
# BUILD_DIR/fuzz-corpus/<target>/). Fails on the first crash, sanitizer
# report, leak, slow unit or memory blow-up, printing the end of its log.
# usage: fuzz/run.sh BUILD_DIR [SECONDS_PER_TARGET]
set -eu
build=${1:?usage: fuzz/run.sh BUILD_DIR [SECONDS_PER_TARGET]}
seconds=${2:-8}
here=$(cd "$(dirname "$0")" && pwd)

for seeds in "$here"/corpus/*/; do
  target=$(basename "$seeds")
  binary="$build/fuzz/${target}_fuzz"
  corpus="$build/fuzz-corpus/$target"
  log="$build/fuzz-logs/$target.log"
  mkdir -p "$corpus" "$build/fuzz-logs" "$build/fuzz-artifacts"
  # -len_control=0 tries long outputs (up to 64 kB) from the start, so a cost
  # that grows faster than the output shows up as a slow unit.
  if "$binary" -max_total_time="$seconds" -timeout=5 -rss_limit_mb=2048 -max_len=65536 \
      -len_control=0 -artifact_prefix="$build/fuzz-artifacts/$target-" \
      "$corpus" "$seeds" >"$log" 2>&1; then
    printf '%-12s %s\n' "$target" "$(grep -E '^#[0-9]+.*DONE' "$log" | tail -n 1)"
  else
    printf '%-12s FAILED, end of %s:\n' "$target" "$log"
    tail -n 40 "$log"
    exit 1
  fi
done
