#!/bin/sh
# Runs every fuzz target for a bounded number of inputs from a fixed seed,
# starting from the seed corpus in fuzz/corpus/<target>/ (left untouched:
# what a run finds goes to BUILD_DIR/fuzz-corpus/<target>/), so a busy machine
# takes longer but tries the same inputs. Fails on the first crash, sanitizer
# report, leak, hung unit or memory blow-up, printing the end of its log.
# usage: fuzz/run.sh BUILD_DIR [RUNS_PER_TARGET]
set -eu
build=${1:?usage: fuzz/run.sh BUILD_DIR [RUNS_PER_TARGET]}
runs=${2:-20000}
here=$(cd "$(dirname "$0")" && pwd)

for seeds in "$here"/corpus/*/; do
  target=$(basename "$seeds")
  binary="$build/fuzz/${target}_fuzz"
  corpus="$build/fuzz-corpus/$target"
  log="$build/fuzz-logs/$target.log"
  mkdir -p "$corpus" "$build/fuzz-logs" "$build/fuzz-artifacts"
  # -len_control=0 tries long outputs (up to 64 kB) from the start. The unit
  # timeout only catches a hang: on a loaded machine the slowest unit took
  # under a second.
  if "$binary" -runs="$runs" -seed=1 -timeout=60 -rss_limit_mb=2048 -max_len=65536 \
      -len_control=0 -artifact_prefix="$build/fuzz-artifacts/$target-" \
      "$corpus" "$seeds" >"$log" 2>&1; then
    printf '%-12s %s\n' "$target" "$(grep -E '^#[0-9]+.*DONE' "$log" | tail -n 1)"
  else
    printf '%-12s FAILED, end of %s:\n' "$target" "$log"
    tail -n 40 "$log"
    exit 1
  fi
done
