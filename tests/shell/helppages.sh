#!/bin/sh
# Runs the examples of the help pages, each in a directory of its own, and shows each page: no
# example fails. The index that search reads is fresh.
#   helppages.sh PROGRAM SOURCE_DIR [PAGE ...]
program=$1 source=$2
shift 2
work=$(mktemp -d) || exit 1
trap 'rm -rf "$work"' EXIT INT TERM
HOME=$work XDG_CONFIG_HOME=$work/config OVATA_EDITION=full SYSDIR_OVATA=$source/
export HOME XDG_CONFIG_HOME OVATA_EDITION SYSDIR_OVATA
bad=0
[ $# -gt 0 ] || set -- $(cd "$source/help" && ls | sed -n 's/\.ovhlp$//p')
for name; do
    page=$source/help/$name.ovhlp
    mkdir "$work/$name" && cd "$work/$name" || exit 1
    {
        echo "help $name"
        sed -n 's/^{p 8 8 2}{cmd:\. \(.*\)}{p_end}$/\1/p' "$page" |
            sed 's/{c -(}/{/g; s/{c )-}/}/g'
    } >example.do
    timeout 60 "$program" -q -b do example.do </dev/null >out 2>&1 || { echo "$name: code $?"; bad=1; }
    if grep -q '^r([0-9]*);' example.log; then
        echo "$name: its example fails"; tail -8 example.log; bad=1
    fi
    grep -q '^{p 8 8 2}{cmd:\. ' "$page" || { echo "$name: no example"; bad=1; }
done
sh "$source/tools/help-index.sh" --print | cmp -s - "$source/help/index" || {
    echo "help/index is not fresh: build again, or run tools/help-index.sh"; bad=1
}
exit $bad
