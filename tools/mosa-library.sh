#!/bin/sh
# Compiles the functions of ado/mosa into the library that every session searches first.
#   tools/mosa-library.sh PROGRAM ado/mosa/*.mosa    writes ado/base/l/lmosabase.mlib
# MOSA_LIBRARY names another file to write. The same sources give the same bytes. The library is put in its place in one step, so that
# sessions under way never see half of it.
set -eu
here=$(cd "$(dirname "$0")/.." && pwd)
program=$1
shift
work=$(mktemp -d)
trap 'rm -rf "$work"' EXIT INT TERM
{
    echo 'global S_ADO "."'
    echo 'set mosastrict on'
    echo 'mosa mlib OFFICIAL'
    for source; do
        echo "do \"$source\""
    done
    echo 'mosa mlib create lmosabase, size(2048)'
    echo 'mosa mlib add lmosabase *(), complete'
} >"$work/make.do"
fail() {
    echo "mosa-library: $1" >&2
    cat "$work/make.log" "$work/stderr" >&2 2>/dev/null || true
    exit 1
}
(
    cd "$work"
    HOME=$work XDG_CONFIG_HOME=$work OVATATMP=$work OVATA_EDITION=full SYSDIR_OVATA=$here
    export HOME XDG_CONFIG_HOME OVATATMP OVATA_EDITION SYSDIR_OVATA
    "$program" -q -b do make.do </dev/null >/dev/null 2>stderr
) || fail "the sources do not compile"
grep '^note: ' "$work/make.log" >&2 || true
[ -f "$work/lmosabase.mlib" ] || fail "no library was made"
library=${MOSA_LIBRARY:-$here/ado/base/l/lmosabase.mlib}
mkdir -p "$(dirname "$library")"
cp "$work/lmosabase.mlib" "$library.$$"
mv "$library.$$" "$library"
