#!/bin/sh
# Runs an example of the matrix language in batch and compares its log with the one kept in
# tests/examples.
#   run-example.sh PROGRAM EXAMPLE.do [--accept | --unoptimised | --example]
set -u
program=$(realpath "$1") example=$2 way=${3:-}
name=$(basename "$example" .do)
want=$(cd "$(dirname "$0")" && pwd)/examples/$name.want
work=$(mktemp -d) || exit 1
trap 'rm -rf "$work"' EXIT INT TERM
HOME=$work XDG_CONFIG_HOME=$work/config OVATA_EDITION=small7
export HOME XDG_CONFIG_HOME OVATA_EDITION
cp "$example" "$work/example.do"
cd "$work" || exit 1
if [ "$way" = --unoptimised ]; then echo "quietly set mosaoptimize off"; else echo; fi >"$name.do"
echo "do example" >>"$name.do"
timeout 60 "$program" -q -b do "$name.do" </dev/null >stdout 2>stderr
code=$?
if [ $code -ne 0 ]; then echo "exit code $code"; cat stderr; tail -20 "$name.log"; exit 1; fi
if [ -s stderr ]; then echo "standard error:"; cat stderr; exit 1; fi
sed -n '/^\. do example/,$p' "$name.log" >log
if [ "$way" = --accept ]; then cp log "$want"; exit 0; fi
diff -u "$want" log
