#!/bin/sh
# Checks the manual page: groff renders it without a single warning, it has
# the sections an administrator looks for, its title carries the project's
# version, and every menu line of the program and every file it reads has
# its entry.
#
# usage: check_man_page.sh <man page> <version> <source with the menu table>
# Exits 77 (skipped) when groff is not installed.
set -u
page=$1 version=$2 menu_source=$3
command -v groff >/dev/null 2>&1 || { echo "groff not installed; skipping"; exit 77; }

status=0
fail() { echo "FAIL: $*"; status=1; }

warnings=$(groff -ww -man -z "$page" 2>&1)
[ -z "$warnings" ] || fail "groff -ww -man -z reports: $warnings"
grep -q "^\.TH VELTRAK 8 .*\"Veltrak $version\"" "$page" || fail "title does not name Veltrak $version in section 8"
for section in NAME SYNOPSIS DESCRIPTION ACTIONS FILES "EXIT STATUS" SECURITY EXAMPLES "SEE ALSO"; do
  grep -qx "\.SH \"*$section\"*" "$page" || fail "no section $section"
done

# The menu lines as the program prints them ("   3.  Look up Locking Range"),
# leading blanks dropped, made from the rows of its menu table
# ({3, "Look up Locking Range", ...}), each heading an entry; and the files
# it reads.
entries=$(sed -n 's/^ *{\([0-9][0-9]*\), "\([^"]*\)".*/\1 \2/p' "$menu_source" |
  awk '{ label = $1 "."; sub(/^[0-9]+ /, ""); printf "\"%-4s%s\"\n", label, $0 }' | sort -u)
[ -n "$entries" ] || fail "no menu table rows found in $menu_source"
for file in ./sedutil\\-cli ./Lantivo ./PBA.img ./PBA_flash.img; do entries="$entries
$file"; done
printf '%s\n' "$entries" | while IFS= read -r entry; do
  grep -qxF ".B $entry" "$page" || echo "FAIL: no entry .B $entry"
done | grep . && status=1
exit $status
