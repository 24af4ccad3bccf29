#!/bin/sh
# Breaks, typed on a terminal of our own.
#   breaks.sh PROGRAM SOURCE-DIR
set -u
# 77 is "passed over": no script(1), or no pseudo-terminal to be had.
script -qec true /dev/null >/dev/null 2>&1 || exit 77
program=$1
work=$(mktemp -d) || exit 1
trap 'rm -rf "$work"' EXIT INT TERM
cd "$work" || exit 1
HOME=$work XDG_CONFIG_HOME=$work/config SYSDIR_OVATA=$2 TERM=dumb
export HOME XDG_CONFIG_HOME SYSDIR_OVATA TERM
failed=0

# session: runs lines from standard input, one every so often; ^C is a line "BREAK"
session() {
    # Slow on purpose: a busy machine with the sanitizers on needs a second to start.
    { sleep 2; while IFS= read -r line; do
        case $line in
            BREAK) sleep 1.2; printf '\003'; sleep 0.6 ;;
            *) printf '%s\n' "$line"; sleep 0.1 ;;
        esac
    done; } | timeout 90 script -qec "$program -q" /dev/null | tr -d '\r' >out
}
expect() {
    grep -q -- "$2" out && return
    failed=1
    printf 'FAILED %s: no %s in\n' "$1" "$2"
    cat out
}

cat >loop.do <<'DO'
program loop
    while 1 {
        local x 1
    }
end
capture loop
display "captured " _rc
loop
display "never"
DO
session <<'IN'
do loop
BREAK
BREAK
display "level " 1
nobreak sleep 1700
BREAK
sleep 600
capture sleep 100000
BREAK
display "rc is " _rc
sleep 100000
BREAK
display "alive"
exit
IN
expect "capture takes a break" '^captured 1$'
expect "a loop is left" 'Break'
expect "the level is left" '^end of do-file$'
expect "a line after a break runs" '^level 1$'
expect "capture around a wait" '^rc is 1$'
expect "the session goes on" '^alive$'
if grep -q '^never$' out; then failed=1; echo "FAILED: the do-file went on"; fi
[ "$(grep -c 'r(1);' out)" = 4 ] || { failed=1; echo "FAILED: codes"; cat out; }
exit $failed
