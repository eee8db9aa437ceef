#!/usr/bin/env bash
# Runs a program of the build for 64-bit Windows on the building host: run_in_wine.sh PREFIX PROGRAM [ARGUMENTS]. The
# Windows that it runs in is kept in the folder PREFIX.
set -euo pipefail

wine=/usr/lib/wine/wine64
[[ -x $wine ]] || {
    printf 'run_in_wine: the package wine64 is not installed\n' >&2
    exit 1
}
export WINEPREFIX=$1 WINEARCH=win64 WINEDEBUG=-all
# Components that would be downloaded and are not needed.
export WINEDLLOVERRIDES='mscoree,mshtml='
shift
unset DISPLAY
exec "$wine" "$@"
