#!/bin/sh
# Builds the Debian package from a configured and built tree into a scratch
# directory and checks it: the exact file list with modes and owners, the
# control fields, the manual page as shipped, and that the packaged program
# starts.
#
# usage: check_package.sh <build dir> <cpack> <expected file list> <source dir> <version>
# Exits 77 (skipped) when dpkg-deb is not installed.
set -u
build_dir=$1
cpack=$2
expected=$3
source_dir=$4
version=$5

if ! command -v dpkg-deb >/dev/null 2>&1; then
  echo "dpkg-deb not installed; skipping"
  exit 77
fi

scratch=$(mktemp -d)
trap 'rm -rf "$scratch"' EXIT

if ! "$cpack" -G DEB --config "$build_dir/CPackConfig.cmake" -B "$scratch/out" >"$scratch/cpack.log" 2>&1; then
  echo "FAIL: cpack did not build the package:"
  cat "$scratch/cpack.log"
  exit 1
fi
set -- "$scratch"/out/*.deb
if [ $# -ne 1 ] || [ ! -f "$1" ]; then
  echo "FAIL: expected one .deb, found: $*"
  exit 1
fi
deb=$1

status=0
fail() {
  echo "FAIL: $*"
  status=1
}

[ "$(basename "$deb")" = "veltrak_${version}_$(dpkg --print-architecture).deb" ] ||
  fail "package file is named $(basename "$deb")"

# Mode, owner and path of every entry, sizes and dates left out.
dpkg-deb -c "$deb" | awk '{ print $1, $2, $NF }' >"$scratch/contents.txt"
if ! diff -u "$expected" "$scratch/contents.txt"; then
  fail "file list differs from $expected (- expected, + packaged)"
fi

field() { dpkg-deb -f "$deb" "$1"; }
[ "$(field Package)" = veltrak ] || fail "Package: $(field Package)"
[ "$(field Version)" = "$version" ] || fail "Version: $(field Version)"
[ "$(field Section)" = admin ] || fail "Section: $(field Section)"
[ -n "$(field Maintainer)" ] || fail "no Maintainer"
[ -n "$(field Description)" ] || fail "no Description"
# Computed by dpkg-shlibdeps from the binary, so the C and C++ runtimes
# must be there, each with a version bound.
depends=$(field Depends)
for library in libc6 libstdc++6; do
  printf '%s\n' "$depends" | tr ',' '\n' | sed 's/^ *//' | grep -q "^$library (>= [^)]*)$" ||
    fail "Depends does not hold $library with a version: $depends"
done

dpkg-deb -x "$deb" "$scratch/root"

# The man page as shipped is the source, gzipped.
if ! gzip -dc "$scratch/root/usr/share/man/man8/veltrak.8.gz" | cmp -s - "$source_dir/docs/veltrak.8"; then
  fail "packaged man page is not docs/veltrak.8"
fi

# The packaged program runs: in a directory without the tools it finds no
# drive, says so and ends with 255.
mkdir "$scratch/empty"
output=$(cd "$scratch/empty" && "$scratch/root/usr/sbin/veltrak" </dev/null 2>&1)
code=$?
[ "$code" -eq 255 ] || fail "packaged veltrak ended with $code, expected 255"
printf '%s\n' "$output" | grep -qx "No disks found" ||
  fail "packaged veltrak did not print \"No disks found\": $output"

exit $status
