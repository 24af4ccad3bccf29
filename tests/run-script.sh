#!/bin/sh
# Runs one test script in batch and compares its log with the wanted one.
#   run-script.sh PROGRAM SCRIPT.do [--accept | --unoptimised]
# A first line "*! edition WORD" chooses the edition (small7 by default). --accept writes the
# log over the wanted one, to be read before it is committed. --unoptimised turns the line
# "set mosaoptimize on" into off, in the script as in the log afterwards.
set -u
program=$1 script=$2 accept=${3:-}
name=$(basename "$script" .do)
dir=$(cd "$(dirname "$script")" && pwd)
script=$dir/$name.do
edition=$(sed -n '1s/^\*! edition \([a-z0-9]*\).*/\1/p' "$script")
work=$(mktemp -d) || exit 1
trap 'rm -rf "$work"' EXIT INT TERM
HOME=$work
XDG_CONFIG_HOME=$work/config
OVATA_EDITION=${edition:-small7}
TESTDATA=$dir/data
export HOME XDG_CONFIG_HOME OVATA_EDITION TESTDATA
cd "$work" || exit 1
cp "$script" "$work/$name.do"
if [ "$accept" = --unoptimised ]; then
    grep -q '^set mosaoptimize on$' "$script" || { echo "no line to turn off"; exit 1; }
    sed 's/^set mosaoptimize on$/set mosaoptimize off/' "$script" >"$work/$name.do"
fi
cp -r "$dir/data" "$work/data"
timeout 120 "$program" -q -b do "$name.do" </dev/null >"$work/stdout" 2>"$work/stderr"
code=$?
if [ $code -ne 0 ]; then
    echo "exit code $code"; cat "$work/stderr"; tail -20 "$work/$name.log"; exit 1
fi
if [ -s "$work/stderr" ]; then echo "standard error:"; cat "$work/stderr"; exit 1; fi
if [ "$accept" = --accept ]; then cp "$work/$name.log" "$dir/$name.want"; exit 0; fi
[ "$accept" = --unoptimised ] &&
    sed -i 's/^\(.*\)set mosaoptimize off$/\1set mosaoptimize on/' "$work/$name.log"
diff -u "$dir/$name.want" "$work/$name.log"
