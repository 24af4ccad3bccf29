#!/bin/sh
# Installs the Debian packages that are missing. Says nothing when all is in place.
#   packages.sh run|test|bench
set -eu
want="g++ cmake ninja-build libre2-dev pkg-config libcairo2-dev libedit-dev libncurses-dev libopenblas0"
case ${1:-run} in
    test) want="$want libgtest-dev" ;;
    bench) want="$want libbenchmark-dev" ;;
esac
missing=
for p in $want; do
    dpkg-query -W -f='${Status}' "$p" 2>/dev/null | grep -q 'install ok installed' || missing="$missing $p"
done
[ -n "$missing" ] || exit 0
echo "Installing:$missing" >&2
sudo=
[ "$(id -u)" = 0 ] || sudo=sudo
export DEBIAN_FRONTEND=noninteractive
# shellcheck disable=SC2086
$sudo apt-get install -y -qq $missing >/dev/null 2>&1 || {
    $sudo apt-get update -qq >&2
    $sudo apt-get install -y -qq $missing >&2
}
