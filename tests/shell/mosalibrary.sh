#!/bin/sh
# The library of the matrix language is what its sources make, the same at any time and place,
# and sources that do not compile make none.
#   mosalibrary.sh PROGRAM SOURCE_DIR
program=$1 source=$2
work=$(mktemp -d) || exit 1
trap 'rm -rf "$work"' EXIT INT TERM
MOSA_LIBRARY=$work/again.mlib
export MOSA_LIBRARY
cd "$work" || exit 1
sh "$source/tools/mosa-library.sh" "$program" "$source"/ado/mosa/*.mosa || exit 1
cmp "$work/again.mlib" "$source/ado/base/l/lmosabase.mlib" || {
    echo "the library is not what its sources make: build again"; exit 1
}
printf 'mosa:\nreal scalar f() return(1 +)\nend\n' >bad.mosa
MOSA_LIBRARY=$work/bad.mlib
if sh "$source/tools/mosa-library.sh" "$program" "$work/bad.mosa" >out 2>&1; then
    echo "a library was made of what does not compile"; exit 1
fi
grep -q 'r(3000)' out || { cat out; exit 1; }
[ ! -e "$work/bad.mlib" ] || { echo "something was left behind"; exit 1; }
printf 'mosa:\nvoid f() x = 1\nend\n' >loose.mosa
if sh "$source/tools/mosa-library.sh" "$program" "$work/loose.mosa" >out 2>&1; then
    echo "an undeclared variable was let through"; exit 1
fi
exit 0
