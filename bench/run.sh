#!/bin/sh
# Times every workload as a whole process: one warm-up, five runs, the median in seconds.
#   bench/run.sh PROGRAM [WORKLOAD ...]
set -eu
program=$1
shift
here=$(cd "$(dirname "$0")" && pwd)
work=$(mktemp -d)
trap 'rm -rf "$work"' EXIT INT TERM
cd "$work"
export OVATA_EDITION=full HOME="$work"
"$program" -q -b do "$here/work/csvwrite.do"
"$program" -q -b do "$here/work/data20.do"
[ $# -gt 0 ] || set -- startup generate1m generate10m promote1m loop1m while200k calls200k csvread sort1m by100k use1m save1m sort20 merge1m draws10m regress1m regress100 library1m mosaloop mosaorder mosaarrays mosacalls mosacolon mosadata mosastore mosaview mosaproduct mosasolve mosasvd mosaeigen mosaschur mosaqr mosafft
for name in "$@"; do
    "$program" -q -b do "$here/work/$name.do"
    if grep -q '^r([0-9]*);' "$name.log"; then echo "$name failed:"; tail -3 "$name.log"; exit 1; fi
    for i in 1 2 3 4 5; do
        a=$(date +%s%N)
        "$program" -q -b do "$here/work/$name.do"
        b=$(date +%s%N)
        echo $(((b - a) / 1000))
    done | sort -n | awk -v n="$name" 'NR==3 { printf "%-14s %9.3f s\n", n, $1 / 1e6 }'
done
