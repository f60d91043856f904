#!/usr/bin/env bash
# The emulated drive's costs: one method round trip in the same process and
# through the preload library (opal_bench), and a whole client process that
# does discovery and one authenticated Get (opal_probe) beside the bare start
# of a process, with and without the preload library.
#
# usage: bench/drive_bench.sh BUILD_DIR [RUNS]
set -euo pipefail

build=$(cd "${1:?usage: bench/drive_bench.sh BUILD_DIR [RUNS]}" && pwd)
runs=${2:-50}
preload="$build/tools/opalsim/libopalsim.so"
opalsim="$build/tools/opalsim/opalsim"
probe="$build/bench/opal_probe"
measure="$build/bench/measure"

work=$(mktemp -d /tmp/veltrak-drive-bench-XXXXXX)
trap 'rm -rf "$work"' EXIT
export OPALSIM_STATE="$work/state"
"$opalsim" init
"$opalsim" add /dev/nvme0 "ZEP NV2000 1TB" 2B2QEXM7 80213657490812736459018273645091
LD_PRELOAD="$preload" "$probe" /dev/nvme0 bench take >/dev/null

LD_PRELOAD="$preload" "$build/bench/opal_bench" --benchmark_min_time=1

median() { sort -n | awk '{ v[NR] = $1 } END { print (NR % 2) ? v[(NR + 1) / 2] : (v[NR / 2] + v[NR / 2 + 1]) / 2 }'; }
time_of() {
  for ((i = 0; i < runs; i++)); do "$measure" /dev/null "$@"; done | awk '{ print $1 }' | median
}
bare=$(time_of /bin/true)
shimmed=$(LD_PRELOAD="$preload" time_of /bin/true)
probe_ns=$(LD_PRELOAD="$preload" time_of "$probe" /dev/nvme0 bench)
trips=$(LD_PRELOAD="$preload" "$probe" /dev/nvme0 bench)
awk -v runs="$runs" -v b="$bare" -v s="$shimmed" -v p="$probe_ns" -v trips="$trips" 'BEGIN {
  printf "medians of %d runs, wall time\n", runs
  printf "  /bin/true                                %8.2f ms\n", b / 1e6
  printf "  /bin/true with the preload library       %8.2f ms\n", s / 1e6
  printf "  discovery and one authenticated Get      %8.2f ms   (%s)\n", p / 1e6, trips
}'
