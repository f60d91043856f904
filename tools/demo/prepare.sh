#!/bin/sh
# Lays out the demo directory: the simulator linked under the two tools'
# names, the pre-boot images, stand-ins for sudo and dmidecode (used only on
# the demo's PATH), and the simulated drives, made once and then kept as
# Veltrak leaves them.
# usage: prepare.sh DEMO_DIR BUILD_DIR
set -eu
demo=$1
simulator=$(cd "$2" && pwd)/tools/drivesim/drivesim
standins=$(cd "$(dirname "$0")" && pwd)

mkdir -p "$demo/bin"
for name in sedutil-cli Lantivo drivesim; do
  ln -sfn "$simulator" "$demo/$name"
done
for name in sudo dmidecode; do
  ln -sfn "$standins/$name" "$demo/bin/$name"
done
[ -f "$demo/PBA.img" ] || head -c 1048576 /dev/zero > "$demo/PBA.img"
[ -f "$demo/PBA_flash.img" ] || head -c 524288 /dev/zero > "$demo/PBA_flash.img"
[ -f "$demo/drivesim.state" ] || (cd "$demo" && ./drivesim init)
