#!/bin/sh
# Makes the emulated world in which the demo and the session tests run
# Veltrak: our drive tools linked under the names Veltrak runs, a wrapper
# that runs opalsim on this world's state, the pre-boot images, and four
# emulated drives. The owned drive is set up by the tools themselves, as an
# operator would, so that it is what a drive makes of those commands.
# Veltrak then runs in DIR with LD_PRELOAD=BUILD_DIR/tools/opalsim/libopalsim.so
# and OPALSIM_STATE=DIR/opalsim.state (see run.sh).
#
# usage: world.sh DIR BUILD_DIR      (an existing world in DIR is replaced)
set -eu
dir=$(mkdir -p "$1" && cd "$1" && pwd)
build=$(cd "$2" && pwd)

ln -sfn "$build/tools/veltrak-opal/veltrak-opal" "$dir/sedutil-cli"
ln -sfn "$build/tools/veltrak-opal/veltrak-opal" "$dir/Lantivo"
cat >"$dir/opalsim" <<WRAPPER
#!/bin/sh
# opalsim on the drives of the directory this script is in.
OPALSIM_STATE="\$(cd "\$(dirname "\$0")" && pwd)/opalsim.state" exec "$build/tools/opalsim/opalsim" "\$@"
WRAPPER
chmod +x "$dir/opalsim"
[ -f "$dir/PBA.img" ] || head -c 1048576 /dev/zero >"$dir/PBA.img"
[ -f "$dir/PBA_flash.img" ] || head -c 524288 /dev/zero >"$dir/PBA_flash.img"

cd "$dir"
./opalsim init
# Programs of this world see only its drives, never the machine's own disks.
./opalsim host real-disks hide
./opalsim add /dev/nvme0 "ZEP NV2000 1TB" 2B2QEXM7 7Q4Z9KMF1C2B8X3N6D5V0A1S2W3E4R5T
./opalsim add /dev/sda "KVX 480GB" SBFK71F3 80213657490812736459018273645091
./opalsim add /dev/sdb "Quellon QS500 500GB" EMT01B6Q QL5005H0K2M7N9P4R6T8V1X3Z5B7D9F
./opalsim add /dev/sdc "KVX 960GB" SBFK72A1 KV960C4E8G2J6L0N4Q8S2U6W0Y4A8C2E --ranges 16

# /dev/nvme0: owned (password Zep2024), range 1 at block 2048 locked, User1
# (password User1pw) may lock it, PBA.img in the shadow MBR.
export OPALSIM_STATE="$dir/opalsim.state" LD_PRELOAD="$build/tools/opalsim/libopalsim.so"
# A sanitized build of the tools accepts the preload library ahead of its runtime.
export ASAN_OPTIONS="${ASAN_OPTIONS:+$ASAN_OPTIONS:}verify_asan_link_order=0"
{
  ./sedutil-cli -n --initialSetup Zep2024 /dev/nvme0
  ./sedutil-cli -n --setupLockingRange 1 2048 409600 Zep2024 /dev/nvme0
  ./sedutil-cli -n --enableUser Zep2024 User0001 /dev/nvme0
  ./sedutil-cli -n --setPassword Zep2024 User0001 User1pw /dev/nvme0
  ./Lantivo --Add_ACE_Locking_range /dev/nvme0 Zep2024 1 User1
  ./Lantivo --enableLockingRange 1 Zep2024 RW /dev/nvme0
  ./Lantivo --setLockingRange 1 Y Y Zep2024 /dev/nvme0
  ./sedutil-cli -n --loadPBAimage Zep2024 PBA.img /dev/nvme0
} >world.log 2>&1 || { echo "world.sh: setting up /dev/nvme0 failed:" >&2; cat world.log >&2; exit 1; }
