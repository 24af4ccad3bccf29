# Settings kept with ", permanently" are in force at the next start; others are not.
#   prefs.sh PROGRAM SOURCEDIR
set -eu
program=$1
work=$(mktemp -d)
trap 'rm -rf "$work"' EXIT
export HOME="$work" XDG_CONFIG_HOME="$work/config" SYSDIR_OVATA="$2" OVATA_EDITION=full
cd "$work"
cat >first.do <<'END'
set type double, permanently
set dp comma, perm
set niceness 3, permanently
set maxvar 6000, permanently
set level 90
END
printf 'display "=" c(type) " " c(dp) " " c(niceness) " " c(maxvar) " " c(level) " " 1.5\n' >second.do
"$program" -q -b do first.do
! grep -q 'r([0-9]*)' first.log
"$program" -q -b do second.do
grep -q '^=double comma 3 6000 95 1,5$' second.log
# Another edition takes what it can and says nothing of the rest.
OVATA_EDITION=small7 "$program" -q -b do second.do
grep -q '^=double comma 3 120 95 1,5$' second.log
! grep -q maxvar\ cannot second.log
# A damaged file is passed over.
head -c 3000 /dev/urandom >config/ovata/preferences
"$program" -q -b do second.do
grep -q '^=float period 5 5000 95 1.5$' second.log
