#!/bin/sh
# Runs a command in the emulated world of DIR (made by world.sh): the preload
# library shows its drives, the stand-ins for sudo and dmidecode (and DIR/bin)
# come first on the PATH, and a sanitized program accepts the preload library.
# usage: run.sh DIR BUILD_DIR COMMAND [ARGUMENT...]
set -eu
dir=$(cd "$1" && pwd)
build=$(cd "$2" && pwd)
standins=$(cd "$(dirname "$0")" && pwd)
shift 2
mkdir -p "$dir/bin"
for name in sudo dmidecode; do
  [ -e "$dir/bin/$name" ] || ln -s "$standins/$name" "$dir/bin/$name"
done
cd "$dir"
PATH="$dir/bin:$PATH" OPALSIM_STATE="$dir/opalsim.state" LD_PRELOAD="$build/tools/opalsim/libopalsim.so" \
  ASAN_OPTIONS="${ASAN_OPTIONS:+$ASAN_OPTIONS:}verify_asan_link_order=0" exec "$@"
