#!/bin/sh
# The scripts of the matrix language print the same with the optimiser turned off.
#   mosaoptimize.sh PROGRAM SOURCEDIR
set -u
program=$1 source=$2
work=$(mktemp -d) || exit 1
trap 'rm -rf "$work"' EXIT INT TERM
export HOME="$work" XDG_CONFIG_HOME="$work/config" OVATA_EDITION=small7
export TESTDATA="$source/tests/scripts/data"
cd "$work" || exit 1
failed=0 ran=0
for script in "$source"/tests/scripts/mosa_*.do; do
    name=$(basename "$script" .do)
    sed '1s/^\* optimiser as it is$/set mosaoptimize off/' "$script" >"$name.do"
    grep -q '^set mosaoptimize off$' "$name.do" || continue
    ran=$((ran + 1))
    timeout 120 "$program" -q -b do "$name.do" </dev/null >"$name.out" 2>&1
    sed '/^\. set mosaoptimize off$/{s/.*/. * optimiser as it is/;n;d}' "$name.log" >"$name.got"
    diff -u "$source/tests/scripts/$name.want" "$name.got" || failed=1
done
[ $ran -gt 0 ] || { echo "no scripts"; exit 1; }
exit $failed
