#!/usr/bin/env bash
# What each command of our drive tools costs on the emulated drives: the
# median wall time and CPU time of RUNS runs, and the round trips it makes
# to the drive (IF-SEND/IF-RECV exchanges), counted by the emulator's trace
# (OPALSIM_TRACE). Every run is on a fresh copy of the demo's world, made
# once by world.sh: /dev/nvme0 owned (password Zep2024, range 1 locked and
# granted to User1, the pre-boot image loaded), /dev/sda factory-new. The
# tools and everything they start run under the preload library, as run.sh
# arranges.
#
# usage: bench/tools_bench.sh BUILD_DIR [RUNS]
set -euo pipefail

build=$(cd "${1:?usage: bench/tools_bench.sh BUILD_DIR [RUNS]}" && pwd)
runs=${2:-20}
demo=$(cd "$(dirname "$0")/../tools/demo" && pwd)
measure="$build/bench/measure"
for needed in "$measure" "$build/tools/veltrak-opal/veltrak-opal" "$build/tools/opalsim/opalsim" \
    "$build/tools/opalsim/libopalsim.so"; do
  [ -f "$needed" ] || { echo "tools_bench: $needed is not built" >&2; exit 1; }
done

work=$(mktemp -d /tmp/veltrak-tools-bench-XXXXXX)
trap 'rm -rf "$work"' EXIT
cd "$work"

"$demo/world.sh" template "$build" >/dev/null
"$demo/run.sh" template "$build" true  # lays out its bin/ once
head -c 65536 /dev/urandom >template/small.img
fresh() { rm -rf "$work/run" && cp -a "$work/template" "$work/run"; }
in_world() { "$demo/run.sh" "$work/run" "$build" "$@"; }

psid=7Q4Z9KMF1C2B8X3N6D5V0A1S2W3E4R5T  # /dev/nvme0's, as world.sh adds it
owned=/dev/nvme0
new=/dev/sda
# One command a line: the drive state it starts from, then the command line.
cases="\
any     ./sedutil-cli -n --scan
owned   ./sedutil-cli -n --query $owned
owned   ./sedutil-cli -n --listLockingRanges Zep2024 $owned
owned   ./sedutil-cli -n --setupLockingRange 2 819200 409600 Zep2024 $owned
owned   ./sedutil-cli -n --setLockingRange 1 RW Zep2024 $owned
owned   ./sedutil-cli -n --enableLockingRange 2 Zep2024 $owned
owned   ./sedutil-cli -n --disableLockingRange 1 Zep2024 $owned
owned   ./sedutil-cli -n --enableUser Zep2024 User0002 $owned
owned   ./sedutil-cli -n --setPassword Zep2024 User0002 User2pw $owned
owned   ./sedutil-cli -n --setMBREnable off Zep2024 $owned
owned   ./sedutil-cli -n --setMBRDone off Zep2024 $owned
owned   ./sedutil-cli -n --loadPBAimage Zep2024 small.img $owned
owned   ./sedutil-cli -n --loadPBAimage Zep2024 PBA.img $owned
owned   ./sedutil-cli -n --revertNoErase Zep2024 $owned
owned   ./sedutil-cli -n --revertTPer Zep2024 $owned
owned   ./sedutil-cli -n --yesIreallywanttoERASEALLmydatausingthePSID $psid $owned
new     ./sedutil-cli -n --initialSetup Secret1 $new
any     ./Lantivo --scan
owned   ./Lantivo --enableLockingRange 2 Zep2024 RW $owned
owned   ./Lantivo --disableLockingRange 1 Zep2024 RW $owned
owned   ./Lantivo --setLockingRange 1 N N Zep2024 $owned
owned   ./Lantivo --setLockingRange 1 N N User1pw $owned User1
owned   ./Lantivo --Add_ACE_Locking_range $owned Zep2024 1 User2
owned   ./Lantivo --Delete_AllUser_ACE_Locking_range $owned Zep2024 1
owned   ./Lantivo --list_User_ACE_Locking_range $owned Zep2024 1
owned   ./Lantivo --ListUserStatus Zep2024 $owned
any     /bin/true"

median() { sort -n | awk '{ v[NR] = $1 } END { print (NR % 2) ? v[(NR + 1) / 2] : (v[NR / 2] + v[NR / 2 + 1]) / 2 }'; }

load_before=$(cut -d ' ' -f 1-3 /proc/loadavg)
printf '%-78s %6s %6s %9s %9s\n' "command (medians of $runs runs)" IF-SEND IF-RECV "wall ms" "CPU ms"
while read -r state command; do
  read -r -a argv <<<"$command"
  # The traced run: its round trips, and whether the command did its work.
  fresh
  : >trace
  status=0
  OPALSIM_TRACE="$work/trace" in_world "${argv[@]}" >out 2>&1 || status=$?
  sends=$(grep -c '^IF-SEND' trace || true)
  receives=$(grep -c '^IF-RECV' trace || true)
  note=""
  [ "$status" -eq 0 ] || note="  (exit status $status: $(tail -n 1 out))"
  : >times
  for ((i = 0; i < runs; i++)); do
    fresh
    in_world "$measure" /dev/null "${argv[@]}" >>times 2>/dev/null || true
  done
  wall=$(awk '{ print $1 }' times | median)
  cpu=$(awk '{ print $3 }' times | median)
  shown=${command//$psid/PSID}
  [ "$state" = any ] || shown="$shown  [$state]"
  awk -v c="$shown" -v s="$sends" -v r="$receives" -v w="$wall" -v u="$cpu" -v n="$note" \
    'BEGIN { printf "%-78s %6d %6d %9.2f %9.2f%s\n", c, s, r, w / 1e6, u / 1e6, n }'
  case $command in
    /bin/true | *--loadPBAimage*) ;;  # not a tool; round trips that each carry 60 kB
    *) echo "$sends $wall $cpu" >>fit ;;
  esac
done <<<"$cases"
# How the cost grows with the round trips: a least-squares line through
# the medians of the tool commands that carry small messages.
awk '{ n++; x += $1; xx += $1 * $1; w += $2; xw += $1 * $2; c += $3; xc += $1 * $3 }
  END {
    d = n * xx - x * x
    bw = (n * xw - x * w) / d; bc = (n * xc - x * c) / d
    printf "fit over the commands but the image loads: wall %.2f ms + %.3f ms per round trip; CPU %.2f ms + %.3f ms per round trip\n",
      (w - bw * x) / n / 1e6, bw / 1e6, (c - bc * x) / n / 1e6, bc / 1e6
  }' fit
load_after=$(cut -d ' ' -f 1-3 /proc/loadavg)
echo "on $(nproc) cores; load average $load_before before, $load_after after"
echo "[owned]: $owned, owned, range 1 locked and granted to User1; [new]: $new, factory-new"
