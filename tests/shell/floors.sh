#!/bin/sh
# An include points to a lower floor or along its own, and headers form no circle.
#   floors.sh PROGRAM SOURCE_DIR
cd "$2/src" || exit 1
find . -name '*.h' -o -name '*.cpp' | sed 's|^\./||' | sort | while read -r f; do
    sed -n 's|^#include "\([^"]*\)".*|'"$f"' \1|p' "$f"
done | awk '
function floor_of(f) {
    if (f ~ /^main/) return 7
    if (f ~ /^(terminal|graphics|interchange|estimation)\//) return 6
    if (f ~ /^(commands|class)\//) return 5
    if (f ~ /^mosa\/(ov_|mosacmd|mosadir|mlib)/) return 5
    if (f ~ /^interp\/(tokens|dm|messages)\./) return 1
    if (f ~ /^interp\//) return 4
    if (f ~ /^(expr|varlist)\//) return 3
    if (f ~ /^mosa\//) return 3
    if (f ~ /^stats\/(rows|crossprod|regfit|regress|regress_int|regiv|coeftab|coefrows|predict|hypothesis|correlate|rmcoll|perfect|statparse)\./) return 3
    if (f ~ /^(data|stats)\//) return 2
    if (f ~ /^output\//) return 1
    return 0
}
{
    if (floor_of($2) > floor_of($1)) {
        print $1 " (floor " floor_of($1) ") includes " $2 " (floor " floor_of($2) ")"
        bad = 1
    }
    if ($1 ~ /\.h$/ && $2 ~ /\.h$/) { n[$1]++; to[$1, n[$1]] = $2 }
}
function visit(f,    i) {
    if (state[f] == 2) return
    if (state[f] == 1) { print "circle through " f; bad = 1; return }
    state[f] = 1
    for (i = 1; i <= n[f]; i++) visit(to[f, i])
    state[f] = 2
}
END { for (f in n) visit(f); exit bad }'
