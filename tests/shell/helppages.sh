#!/bin/sh
# Runs the examples of the help pages, and shows each page: no example fails, and no mark-up
# is left over.
#   helppages.sh PROGRAM SOURCE_DIR
program=$1 source=$2
work=$(mktemp -d) || exit 1
trap 'rm -rf "$work"' EXIT INT TERM
HOME=$work XDG_CONFIG_HOME=$work/config OVATA_EDITION=full SYSDIR_OVATA=$source/
export HOME XDG_CONFIG_HOME OVATA_EDITION SYSDIR_OVATA
bad=0
for page in "$source"/help/*.ovhlp; do
    name=$(basename "$page" .ovhlp)
    mkdir "$work/$name" && cd "$work/$name" || exit 1
    {
        echo "capture noisily view $page"
        sed -n 's/^{p 8 8 2}{cmd:\. \(.*\)}{p_end}$/\1/p' "$page" |
            sed 's/{c -(}/{/g; s/{c )-}/}/g'
    } >example.do
    timeout 60 "$program" -q -b do example.do </dev/null >out 2>&1 || { echo "$name: code $?"; bad=1; }
    if grep -q '^r([0-9]*);' example.log; then
        echo "$name: its example fails"; tail -8 example.log; bad=1
    fi
    # Between the two commands stands the page.
    sed -n '2,/^\. [^ ]/p' example.log | grep -n '[{}]' | grep -v '^[0-9]*: *\. ' && {
        echo "$name: mark-up is left over"; bad=1
    }
done
exit $bad
