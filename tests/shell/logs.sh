# Logs against each other, and against a disk that is full.
#   logs.sh PROGRAM SOURCEDIR
set -eu
program=$1
work=$(mktemp -d)
trap 'rm -rf "$work"' EXIT
export HOME="$work" XDG_CONFIG_HOME="$work/config" OVATA_EDITION=small7
cd "$work"

# What a session prints is the same in a plain log and in its mark-up log rendered again.
cat >session.do <<'END'
display "{bf:text} " 1/3 " {c -(}" "a{b}" "}"
display "{p 2 6}Words of a paragraph that goes on for longer than the line it began on, so it wraps.{p_end}"
display as error "{hline}" _newline "{center:middle}" _col(30) "x"
display "a long value " _dup(12) "0123456789"
set obs 5
generate x = _n
generate str20 s = "{bf:" + string(_n) + "}"
list
summarize x
capture noisily use nosuch
error 677
END
cat >driver.do <<'END'
quietly log using plain.log, name(plain)
quietly log using marked.omcl, name(marked)
capture noisily do session.do
quietly log close _all
quietly log using again.log
type marked.omcl
quietly log close
END
"$program" -q -b do driver.do
# The first log has the opening of the second in it, the second rendering its own command.
sed -n '/do session.do/,/quietly log close/p' plain.log >a
sed -n '/do session.do/,/quietly log close/p' again.log | grep -v '^\. type' >b
test -s a
head -n "$(($(wc -l <a) - 1))" a >a1
head -n "$(($(wc -l <a1)))" b >b1
cmp a1 b1
# Batch and a pipe agree, but for the way they begin and end.
printf 'quietly log using piped.log\ndo session.do\nquietly log close\n' | "$program" -q >/dev/null
sed -n '/display "{bf/,/connection failed/p' piped.log >c
sed -n '/display "{bf/,/connection failed/p' plain.log | cmp - c

# The whole of a do-file, three ways: the log of a batch run; a text log of a piped session; a
# mark-up log of it, translated. The lines of opening and closing, with their times and file
# names, stand outside what is compared: from the command that runs the file to its end.
sed '$d' session.do >middle.do
cat >whole.do <<'END'
do middle.do
display "{hline}" _newline "{p 2 4 2}A paragraph of {bf:more words than one line takes}, {it:which wraps} where the line is full.{p_end}"
sysuse penguins, clear
list species bill_length_mm in 1/3
regress body_mass_g bill_length_mm
tabulate species, plot
help merge
describe
capture noisily use nosuch
display _dup(3) "{&alpha}{c -(}" "raw {nosuch}"
display "{hline}"
END
"$program" -q -b do whole.do
printf 'log using piped2.log\nlog using marked2.omcl, name(m)\ndo whole.do\nlog close _all\n' |
    "$program" -q >/dev/null
printf 'translate marked2.omcl translated.log\n' | "$program" -q >/dev/null
part() { sed '1,/^\. do whole\.do$/d' "$1" | sed '/^\. log close _all$/,$d' | sed '$d'; }
cp whole.log w1
part piped2.log >w2
part translated.log >w3
test "$(wc -l <w1)" -gt 120
tail -1 w1 | grep -q '^end of do-file$'
cmp w1 w2
cmp w1 w3

# What is open at the end is closed with its last lines, and only in that log.
printf 'log using left.log\nlog using left.omcl, name(m)\nlog off m\ndisplay 1\n' | "$program" -q >screen
tail -2 left.log | grep -q '^ closed on: '
tail -2 left.omcl | grep -q 'closed on'
test "$(grep -c 'closed on' left.log)" = 1
! grep -q 'closed on' screen

# A log that cannot be written says so once, and the session goes on.
ln -s /dev/full full.log
cat >again.do <<'END'
quietly log using full.log, append
forvalues i = 1/2000 {
display "line `i' of a log that has nowhere to go"
}
display "still here"
log close
END
"$program" -q -b do again.do
test "$(grep -c 'full.log I/O error on write' again.log)" = 1
grep -q '^still here' again.log
grep -q 'no log file open' again.log

# What cannot be finished is taken away again, but never a device or the link to one.
ln -s /dev/full full.txt
ln -s /dev/full full.csv
ln -s /dev/full full.dta
cat >devices.do <<'END'
sysuse penguins, clear
capture noisily translate marked2.omcl full.txt, replace
capture noisily outsheet using full.csv, replace
capture noisily save full.dta, replace
capture noisily copy marked2.omcl full.txt, replace
END
"$program" -q -b do devices.do
test "$(grep -c 'I/O error on write\|insufficient disk space' devices.log)" = 4
test -L full.txt && test -L full.csv && test -L full.dta
