#!/bin/sh
# The start and the end of a session: options, batch logs, start-up files, what comes first.
#   session.sh PROGRAM SOURCE-DIR
set -u
program=$1
work=$(mktemp -d) || exit 1
trap 'rm -rf "$work"' EXIT INT TERM
cd "$work" || exit 1
HOME=$work/home XDG_CONFIG_HOME=$work/config SYSDIR_OVATA=$2
export HOME XDG_CONFIG_HOME SYSDIR_OVATA
mkdir home
failed=0
# check NAME WANT GOT
check() {
    [ "$2" = "$3" ] && return
    failed=1
    printf 'FAILED %s\n--- wanted\n%s\n--- got\n%s\n' "$1" "$2" "$3"
}

# ---- usage: any unknown letter, on standard error, nothing on standard output, exit code 0
want='
ovata-sm:  usage:  ovata-sm [-h -q] ["ovata command"]
     where:
          -h      show this display
          -q      suppress logo, initialization messages

     Notes:
          xovata-sm is the command to launch the GUI version of Small Ovata
          ovata-sm  is the command to launch the console version of Small Ovata'
check usage "$want" "$("$program" -h 2>&1 >/dev/null)"
check "usage, second option" "$want" "$("$program" -q -Zap 2>&1 >/dev/null)"
check "option o without a number" "$want" "$("$program" -ox 2>&1 >/dev/null)"
"$program" -h >out 2>/dev/null
check "usage exit code" 0 $?
check "usage leaves standard output alone" "" "$(cat out)"
check "option letters" '. display 1 
1

. ' "$("$program" -QUIET -l -o12 -w display 1 </dev/null; echo)"

# ---- batch logs
echo 'display 40 + 2' >job.v1.do
cd home || exit 1
mkdir sub
"$program" -q -b do ../job.v1.do </dev/null
check "log lands here, named to the first dot" '
. display 40 + 2
42

. 
end of do-file' "$(cat job.log)"
"$program" -b run ../job.v1.do </dev/null
check "log with the command" '. run ../job.v1.do ' "$(grep '^\. ' job.log)"
"$program" -q -s ../job.v1.do </dev/null
check "mark-up log" '{omcl}' "$(sed 1q job.omcl)"
"$program" -q -b display 7 </dev/null
check "default log name" 7 "$(cat ovata.log)"
check "no command" "-b specified with no command" "$("$program" -b 2>&1)"
mkdir ovata.omcl
check "log that cannot be opened" "unable to open \`ovata.omcl'" "$("$program" -s display 1 2>&1)"
rmdir ovata.omcl
umask 027
rm -f job.log
"$program" -q -b do ../job.v1.do </dev/null
check "mode of the log" -rw-r----- "$(ls -l job.log | cut -c1-10)"
umask 022
check "batch says nothing on the screen" "" "$("$program" -b do ../job.v1 </dev/null 2>&1)"

# ---- start-up files come before the command and do not spoil it
echo 'global order $order profile' >profile.do
echo 'global order $order sysprofile' >sysprofile.do
"$program" -b display '"$order"' </dev/null
check "start-up order" 'running sysprofile.do ...
running profile.do ...
. display "$order" 
sysprofile profile' "$(grep -v '^$' ovata.log | sed -n '/^running/,$p')"
rm -f profile.do sysprofile.do

# ---- installation
check "no installation" "cannot find Ovata directory" \
    "$(SYSDIR_OVATA=/nonexistent "$program" -q </dev/null 2>&1)"

# ---- piped lines: prompts, no echo; a last line without its end is a command; code 0
check "piped lines" '
. 3

. . 
. 4

. ' "$(printf 'display 3\n\n* no\ndisplay 4' | "$program" -q; echo)"
printf 'error 9\n' | "$program" -q >/dev/null
check "exit code after an error" 0 $?
printf 'exit, clear\ndisplay 1\n' | "$program" -q >out
check "exit leaves" "" "$(grep 1 out)"
# ---- any bytes, any length: an answer, and the session goes on
{
    head -c 20000 /dev/zero | tr '\0' 'x'
    printf '\n\001\002\377\000display 5\n"\n`"\n{\n}\n((((\n'
    head -c 9000 /dev/zero | tr '\0' '"'
    printf '\n'
    i=0
    while [ $i -lt 1100 ]; do printf 'n '; i=$((i + 1)); done
    printf '\ndisplay 6\n'
} | "$program" -q >out
check "odd input, exit code" 0 $?
check "odd input, the session goes on" "5 6" "$(grep -o '^\.* *[56]$' out | tr -dc '56\n' | tr '\n' ' ' | sed 's/ $//')"
check "too long a line has a code" "input too long
r(1004);" "$(grep -A1 'input too long' out | sed 's/^\. //' | sed 2q)"
exit $failed
