#!/usr/bin/env bash
# Veltrak's own share of a whole session. A scripted session (the operator's
# walk-through of the README: take ownership, give a range an address and a
# mode, enable a user, grant it the range, list who may access what) runs in
# the demo's emulated world: our drive tools, the preload library and the
# emulated drives. A plain shell script starts the very same command lines,
# each through `sh -c` as popen and system do (the tool command lines with
# " 2>&1", and `clear` before every menu), and so does a bare popen loop.
# All three are timed in alternation, each on a fresh copy of the world and
# with every process under the preload library, as run.sh arranges; the
# difference is what Veltrak itself adds. Then one more session is held
# before its last answer to read Veltrak's peak memory.
#
# usage: bench/session_bench.sh BUILD_DIR [RUNS]
set -euo pipefail

build=$(cd "${1:?usage: bench/session_bench.sh BUILD_DIR [RUNS]}" && pwd)
runs=${2:-20}
demo=$(cd "$(dirname "$0")/../tools/demo" && pwd)
veltrak=${VELTRAK:-$build/veltrak}  # another binary may be compared
measure="$build/bench/measure"
popen_replay="$build/bench/popen_replay"
tool="$build/tools/veltrak-opal/veltrak-opal"
for needed in "$veltrak" "$measure" "$popen_replay" "$tool" "$build/tools/opalsim/opalsim" \
    "$build/tools/opalsim/libopalsim.so"; do
  [ -x "$needed" ] || [ -f "$needed" ] || { echo "session_bench: $needed is not built" >&2; exit 1; }
done
real_clear=$(command -v clear)
export TERM=${TERM:-xterm}
[ "$TERM" = dumb ] && export TERM=xterm

work=$(mktemp -d /tmp/veltrak-bench-XXXXXX)
trap 'rm -rf "$work"' EXIT
cd "$work"

# The session's answers, one per line; the empty lines answer the pauses.
# Drive 1 is the world's factory-new /dev/sda.
actions=(
  '1' '1'
  '2' 'Secret1' 'Y' ''
  '5' '1' '2048' '409600' ''
  '4' '1' '2' '1' ''
  '6' '1' 'UserPw1' 'N' ''
  '8' '1' '1' 'Y' ''
  '7' ''
  '6' '0' ''
  '3' ''
)
menus=9  # action numbers typed above; the last answer meets menu number 10
printf '%s\n' "${actions[@]}" >answers
printf '0\n' >last_answer
cat answers last_answer >input

# The world is made once; every run gets a copy of it, which costs a few
# milliseconds instead of the tool commands that set up its owned drive.
"$demo/world.sh" template "$build" >/dev/null
"$demo/run.sh" template "$build" true  # lays out its bin/ once
fresh() { rm -rf "$work/$1" && cp -a "$work/template" "$work/$1"; }
in_world() { local dir=$1; shift; "$demo/run.sh" "$work/$dir" "$build" "$@"; }
show() { (cd "$work/$1" && ./opalsim show); }

# 1. Record the command lines of one session: stand-ins log each call and
# hand it on to the tool (or to the real clear). The drive's round trips of
# the session are counted on the way.
fresh record
mkdir record/real
for name in sedutil-cli Lantivo; do
  ln -s "$tool" "record/real/$name"
  rm "record/$name"
  printf '#!/bin/sh\nprintf "%%s\\n" "./%s $*" >>"%s/commands"\nexec "%s/record/real/%s" "$@"\n' \
    "$name" "$work" "$work" "$name" >"record/$name"
  chmod +x "record/$name"
done
printf '#!/bin/sh\necho clear >>"%s/commands"\nexec "%s" "$@"\n' "$work" "$real_clear" >record/bin/clear
chmod +x record/bin/clear
OPALSIM_TRACE="$work/trace" in_world record "$veltrak" <input >recorded_screen 2>&1
grep -q 'Set Priviledge OK!!' recorded_screen || { echo "the scripted session went astray:" >&2; tail -n 30 recorded_screen >&2; exit 1; }
sends=$(grep -c '^IF-SEND' trace)
receives=$(grep -c '^IF-RECV' trace)

# The same command lines as a shell script, started as popen and system do.
{
  while IFS= read -r line; do
    if [ "$line" = clear ]; then
      echo "sh -c 'clear' >/dev/null"
    else
      echo "sh -c '$line 2>&1' >/dev/null"
    fi
  done <commands
} >replay.sh
tool_runs=$(grep -vc '^clear$' commands)
clear_runs=$(grep -c '^clear$' commands)

# 2. Time the three, alternating, each on a fresh world: wall time, the CPU
# time of the driving process alone (Veltrak, the shell reading the replay
# script, popen_replay) and that of the whole tree, in ns. measure starts
# in the world, so only the driving process and its tree are timed.
: >times.veltrak
: >times.replay
: >times.popen
load_before=$(cut -d ' ' -f 1-3 /proc/loadavg)
for ((i = 0; i < runs; i++)); do
  fresh run
  in_world run "$measure" "$work/input" "$veltrak" >>times.veltrak
  show run >after.veltrak
  fresh run
  in_world run "$measure" /dev/null sh "$work/replay.sh" >>times.replay
  show run >after.replay
  cmp -s after.veltrak after.replay || { echo "the replay left the drives otherwise than Veltrak" >&2; exit 1; }
  fresh run
  in_world run "$measure" /dev/null "$popen_replay" "$work/commands" >>times.popen
  show run >after.popen
  cmp -s after.veltrak after.popen || { echo "popen_replay left the drives otherwise than Veltrak" >&2; exit 1; }
done
load_after=$(cut -d ' ' -f 1-3 /proc/loadavg)

median() { sort -n | awk '{ v[NR] = $1 } END { print (NR % 2) ? v[(NR + 1) / 2] : (v[NR / 2] + v[NR / 2 + 1]) / 2 }'; }
column() { awk -v c="$1" '{ print $c }' "$2" | median; }
wall_v=$(column 1 times.veltrak)
wall_r=$(column 1 times.replay)
own_v=$(column 2 times.veltrak)
own_r=$(column 2 times.replay)
tree_v=$(column 3 times.veltrak)
tree_r=$(column 3 times.replay)
wall_p=$(column 1 times.popen)
own_p=$(column 2 times.popen)
tree_p=$(column 3 times.popen)
# The wall-time difference of each pair of runs, in percent: its quartiles
# show how far the machine's noise reaches.
read -r q1 q2 q3 < <(paste -d ' ' times.veltrak times.replay | awk '{ print ($1 - $4) / $4 * 100 }' | sort -n |
  awk '{ v[NR] = $1 } END { print v[int(NR / 4) + 1], v[int(NR / 2) + 1], v[int(3 * NR / 4) + 1] }')

# 3. Peak memory: a session held at its last menu, Veltrak's own high-water
# mark and the part of its resident memory that is the preload library's
# mapping, read from /proc, then the last answer; and the largest process of
# the whole tree (Veltrak, shells, tools) as /usr/bin/time sees it.
fresh run
mkfifo answers.fifo
"$demo/run.sh" "$work/run" "$build" "$veltrak" <answers.fifo >held_screen 2>&1 &
pid=$!  # run.sh execs Veltrak, which keeps this process
exec 3>answers.fifo
cat answers >&3
for ((tries = 0; tries < 600; tries++)); do
  [ "$(grep -o 'Enter action number: ' held_screen | wc -l)" -gt "$menus" ] && break
  sleep 0.05
done
sleep 0.2
[ "$(readlink "/proc/$pid/exe")" = "$(readlink -f "$veltrak")" ] || { echo "the held session is not Veltrak" >&2; exit 1; }
own_kib=$(awk '/^VmHWM:/ { print $2 }' "/proc/$pid/status")
shim_kib=$(awk '/^[0-9a-f]+-[0-9a-f]+ / { in_shim = /libopalsim\.so/ } in_shim && /^Rss:/ { kib += $2 } END { print kib + 0 }' \
  "/proc/$pid/smaps")
cat last_answer >&3
exec 3>&-
wait "$pid"
fresh run
in_world run /usr/bin/time -o "$work/tree_kib" -f '%M' "$veltrak" <input >/dev/null 2>&1
tree_kib=$(tail -n 1 tree_kib)

awk -v runs="$runs" -v tools="$tool_runs" -v clears="$clear_runs" -v sends="$sends" -v receives="$receives" \
    -v wv="$wall_v" -v wr="$wall_r" -v ov="$own_v" -v or="$own_r" -v tv="$tree_v" -v tr="$tree_r" \
    -v q1="$q1" -v q2="$q2" -v q3="$q3" -v wp="$wall_p" -v op="$own_p" -v tp="$tree_p" \
    -v own="$own_kib" -v shim="$shim_kib" -v tree="$tree_kib" \
    -v lb="$load_before" -v la="$load_after" -v cores="$(nproc)" 'BEGIN {
  ms = 1e6
  printf "session: %d tool command lines and %d clears, %d round trips to the drives (%d IF-RECV)\n", tools, clears, sends, receives
  printf "medians of %d runs of each side, on %d cores; load average %s before, %s after\n", runs, cores, lb, la
  printf "  wall time          Veltrak %7.1f ms   bare command lines %7.1f ms   difference %+.2f%%\n", wv / ms, wr / ms, (wv - wr) / wr * 100
  printf "    paired runs: median difference %+.2f%%, middle half from %+.2f%% to %+.2f%%\n", q2, q1, q3
  printf "  CPU, whole tree    Veltrak %7.1f ms   bare command lines %7.1f ms   difference %+.2f%%\n", tv / ms, tr / ms, (tv - tr) / tr * 100
  printf "  CPU, driver alone  Veltrak %7.2f ms   shell running them %7.2f ms\n", ov / ms, or / ms
  printf "  a bare popen loop reading the same command lines: wall %.1f ms, whole tree %.1f ms, itself %.2f ms\n", wp / ms, tp / ms, op / ms
  printf "    Veltrak beside it: wall %+.2f%%, whole tree %+.2f%%, its own CPU %+.2f ms\n", (wv - wp) / wp * 100, (tv - tp) / tp * 100, (ov - op) / ms
  printf "  Veltrak adds %.2f ms of its own CPU: %.2f%% of the bare wall time, %.2f%% of their whole CPU\n", (ov - or) / ms, (ov - or) / wr * 100, (ov - or) / tr * 100
  printf "  peak resident memory: Veltrak %.2f MiB (of which the preload library mapped %.2f MiB); largest process of the session tree %.2f MiB\n", own / 1024, shim / 1024, tree / 1024
}'
