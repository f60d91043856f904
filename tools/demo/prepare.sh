#!/bin/sh
# Lays out the demo directory: the emulated world of world.sh, made once and
# then kept as Veltrak leaves it, and the stand-ins for sudo and dmidecode on
# the demo's PATH.
# usage: prepare.sh DEMO_DIR BUILD_DIR
set -eu
here=$(cd "$(dirname "$0")" && pwd)
[ -f "$1/opalsim.state" ] || "$here/world.sh" "$1" "$2"
mkdir -p "$1/bin"
for name in sudo dmidecode; do
  ln -sfn "$here/$name" "$1/bin/$name"
done
