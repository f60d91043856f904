#!/bin/sh
# Checks the manual page: groff renders it without a single warning, it has
# the sections an administrator looks for, its title carries the project's
# version, and every menu line of the program has its entry.
#
# usage: check_man_page.sh <man page> <version> <source with the menu lines>
# Exits 77 (skipped) when groff is not installed.
set -u
page=$1
version=$2
menu_source=$3

if ! command -v groff >/dev/null 2>&1; then
  echo "groff not installed; skipping"
  exit 77
fi

status=0
fail() {
  echo "FAIL: $*"
  status=1
}

warnings=$(groff -ww -man -z "$page" 2>&1)
if [ -n "$warnings" ]; then
  fail "groff -ww -man -z reports:"
  printf '%s\n' "$warnings"
fi

for section in NAME SYNOPSIS DESCRIPTION ACTIONS FILES "EXIT STATUS" SECURITY EXAMPLES "SEE ALSO"; do
  grep -qx "\.SH \"*$section\"*" "$page" || fail "no section $section"
done

grep -q "^\.TH VELTRAK 8 .*\"Veltrak $version\"" "$page" ||
  fail "title line does not name Veltrak $version in section 8"

# The menu lines as the program prints them ("   3.  Look up Locking Range"),
# leading blanks dropped; each must head an entry (.B "3.  Look up ...").
menu_lines=$(grep -o '"   [0-9][0-9]*\. [^"]*"' "$menu_source" | sed 's/^"   //; s/"$//' | sort -u)
if [ -z "$menu_lines" ]; then
  fail "no menu lines found in $menu_source"
fi
printf '%s\n' "$menu_lines" | {
  missing=0
  while IFS= read -r line; do
    grep -qxF ".B \"$line\"" "$page" || {
      echo "FAIL: no entry for the menu line \"$line\""
      missing=1
    }
  done
  exit $missing
} || status=1

for file in ./sedutil\\-cli ./Lantivo ./PBA.img ./PBA_flash.img; do
  grep -qxF ".B $file" "$page" || fail "FILES does not list $file"
done

exit $status
