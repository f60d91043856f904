#!/usr/bin/env bash
# Veltrak's own share of a whole session. A scripted session (the operator's
# walk-through of the README: take ownership, give a range an address and a
# mode, enable a user, grant it the range, list who may access what) runs on
# the drive simulator, and so does a plain shell script that starts the very
# same command lines, each through `sh -c` as popen and system do: the tool
# command lines with " 2>&1", and `clear` before every menu. Both are timed
# in alternation on fresh simulated drives; the difference is what Veltrak
# itself adds. Then one more session is held before its last answer to read
# Veltrak's peak memory.
#
# usage: bench/session_bench.sh BUILD_DIR [RUNS]
set -euo pipefail

build=$(cd "${1:?usage: bench/session_bench.sh BUILD_DIR [RUNS]}" && pwd)
runs=${2:-20}
veltrak=${VELTRAK:-$build/veltrak}  # another binary may be compared
measure="$build/bench/measure"
popen_replay="$build/bench/popen_replay"
drivesim="$build/tools/drivesim/drivesim"
real_clear=$(command -v clear)
export TERM=${TERM:-xterm}
[ "$TERM" = dumb ] && export TERM=xterm

work=$(mktemp -d /tmp/veltrak-bench-XXXXXX)
trap 'rm -rf "$work"' EXIT
cd "$work"

# The session's answers, one per line; the empty lines answer the pauses.
# Drive 1 is the factory-new /dev/sda of the simulator's demo drives.
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

ln -s "$drivesim" drivesim
mkdir sim bin
ln -s "$drivesim" sim/sedutil-cli
ln -s "$drivesim" sim/Lantivo
./drivesim init >/dev/null

# 1. Record the command lines of one session: stand-ins log each call and
# hand it on to the simulator (or to the real clear).
for tool in sedutil-cli Lantivo; do
  printf '#!/bin/sh\nprintf "%%s\\n" "./%s $*" >>"%s/commands"\nexec "%s/sim/%s" "$@"\n' \
    "$tool" "$work" "$work" "$tool" >"$tool"
  chmod +x "$tool"
done
printf '#!/bin/sh\necho clear >>"%s/commands"\nexec "%s" "$@"\n' "$work" "$real_clear" >bin/clear
chmod +x bin/clear
PATH="$work/bin:$PATH" "$veltrak" <input >recorded_screen 2>&1
grep -q 'Set Priviledge OK!!' recorded_screen || { echo "the scripted session went astray:" >&2; tail -n 30 recorded_screen >&2; exit 1; }
rm -f bin/clear sedutil-cli Lantivo
ln -s "$drivesim" sedutil-cli
ln -s "$drivesim" Lantivo

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

# 2. Time both, alternating, each on freshly reset drives: wall time, the
# CPU time of the driving process alone (Veltrak, or the shell reading the
# replay script) and that of the whole tree, in ns.
: >times.veltrak
: >times.replay
: >times.popen
for ((i = 0; i < runs; i++)); do
  ./drivesim reset >/dev/null
  "$measure" input "$veltrak" >>times.veltrak
  ./drivesim show >after.veltrak
  ./drivesim reset >/dev/null
  "$measure" /dev/null sh replay.sh >>times.replay
  ./drivesim show >after.replay
  cmp -s after.veltrak after.replay || { echo "the replay left the drives otherwise than Veltrak" >&2; exit 1; }
  ./drivesim reset >/dev/null
  "$measure" /dev/null "$popen_replay" commands >>times.popen
done

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
# mark read from /proc, then the last answer; and the largest process of the
# whole tree (Veltrak, shells, tools) as /usr/bin/time sees it.
./drivesim reset >/dev/null
mkfifo answers.fifo
"$veltrak" <answers.fifo >held_screen 2>&1 &
pid=$!
exec 3>answers.fifo
cat answers >&3
for ((tries = 0; tries < 600; tries++)); do
  [ "$(grep -o 'Enter action number: ' held_screen | wc -l)" -gt "$menus" ] && break
  sleep 0.05
done
sleep 0.2
own_kib=$(awk '/^VmHWM:/ { print $2 }' "/proc/$pid/status")
cat last_answer >&3
exec 3>&-
wait "$pid"
./drivesim reset >/dev/null
tree_kib=$(/usr/bin/time -f '%M' "$veltrak" <input 2>&1 >/dev/null | tail -n 1)

awk -v runs="$runs" -v tools="$tool_runs" -v clears="$clear_runs" \
    -v wv="$wall_v" -v wr="$wall_r" -v ov="$own_v" -v or="$own_r" -v tv="$tree_v" -v tr="$tree_r" \
    -v q1="$q1" -v q2="$q2" -v q3="$q3" -v wp="$wall_p" -v op="$own_p" -v tp="$tree_p" \
    -v own="$own_kib" -v tree="$tree_kib" 'BEGIN {
  ms = 1e6
  printf "session: %d tool command lines and %d clears; medians of %d runs of each side\n", tools, clears, runs
  printf "  wall time          Veltrak %7.1f ms   bare command lines %7.1f ms   difference %+.2f%%\n", wv / ms, wr / ms, (wv - wr) / wr * 100
  printf "    paired runs: median difference %+.2f%%, middle half from %+.2f%% to %+.2f%%\n", q2, q1, q3
  printf "  CPU, whole tree    Veltrak %7.1f ms   bare command lines %7.1f ms   difference %+.2f%%\n", tv / ms, tr / ms, (tv - tr) / tr * 100
  printf "  CPU, driver alone  Veltrak %7.2f ms   shell running them %7.2f ms\n", ov / ms, or / ms
  printf "  a bare popen loop reading the same command lines: wall %.1f ms, whole tree %.1f ms, itself %.2f ms\n", wp / ms, tp / ms, op / ms
  printf "    Veltrak beside it: wall %+.2f%%, whole tree %+.2f%%\n", (wv - wp) / wp * 100, (tv - tp) / tp * 100
  printf "  Veltrak adds %.2f ms of its own CPU: %.2f%% of the bare wall time\n", (ov - or) / ms, (ov - or) / wr * 100
  printf "  peak resident memory: Veltrak %.2f MiB; largest process of the session tree %.2f MiB\n", own / 1024, tree / 1024
}'
