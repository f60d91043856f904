#!/bin/sh
# Builds the Debian package from a configured and built tree into a scratch
# directory and checks it: the exact file list with modes and owners, the
# control fields, the manual page as shipped, and that the packaged program
# starts.
#
# usage: check_package.sh <build dir> <cpack> <expected file list> <source dir> <version>
# Exits 77 (skipped) when dpkg-deb is not installed.
set -u
build_dir=$1 cpack=$2 expected=$3 source_dir=$4 version=$5
command -v dpkg-deb >/dev/null 2>&1 || { echo "dpkg-deb not installed; skipping"; exit 77; }

scratch=$(mktemp -d)
trap 'rm -rf "$scratch"' EXIT
"$cpack" -G DEB --config "$build_dir/CPackConfig.cmake" -B "$scratch/out" >"$scratch/cpack.log" 2>&1 ||
  { echo "FAIL: cpack did not build the package:"; cat "$scratch/cpack.log"; exit 1; }
deb="$scratch/out/veltrak_${version}_$(dpkg --print-architecture).deb"
[ -f "$deb" ] || { echo "FAIL: no $(basename "$deb") among: $(ls "$scratch/out")"; exit 1; }

status=0
fail() { echo "FAIL: $*"; status=1; }

# Mode, owner and path (with a link's target) of every entry, sizes and
# dates left out.
dpkg-deb -c "$deb" | awk '{ line = $1 " " $2; for (i = 6; i <= NF; i++) line = line " " $i; print line }' \
  >"$scratch/contents.txt"
diff -u "$expected" "$scratch/contents.txt" || fail "file list differs from $expected (- expected, + packaged)"

field() { dpkg-deb -f "$deb" "$1"; }
[ "$(field Package) $(field Version) $(field Section)" = "veltrak $version admin" ] ||
  fail "control: $(field Package) $(field Version) $(field Section)"
# Computed by dpkg-shlibdeps from the binary: the C and C++ runtimes, each
# with a version bound.
for library in libc6 libstdc++6; do
  field Depends | tr ',' '\n' | grep -q "^ *$library (>= [^)]*)$" ||
    fail "Depends does not hold $library with a version: $(field Depends)"
done

dpkg-deb -x "$deb" "$scratch/root"
for page in veltrak veltrak-opal; do
  gzip -dc "$scratch/root/usr/share/man/man8/$page.8.gz" | cmp -s - "$source_dir/docs/$page.8" ||
    fail "packaged man page is not docs/$page.8"
done

# The packaged program runs: in a directory without the tools it finds no
# drive, says so and ends with 255; its tools answer under both names.
mkdir "$scratch/empty"
output=$(cd "$scratch/empty" && "$scratch/root/usr/sbin/veltrak" </dev/null 2>&1)
code=$?
[ "$code" -eq 255 ] && [ "$output" = "No disks found" ] ||
  fail "packaged veltrak ended with $code after: $output"
tools="$scratch/root/usr/lib/veltrak"
"$tools/sedutil-cli" -n --scan 2>&1 | head -n 1 | grep -qx 'Scanning for Opal compliant disks' ||
  fail "packaged sedutil-cli does not scan"
"$tools/Lantivo" 2>&1 | grep -q '^usage: Lantivo' || fail "packaged Lantivo does not answer as Lantivo"
exit $status
