#!/usr/bin/env bash
# Asks the automation functions of Wine, an implementation that has nothing in common with ours, for
# the answers to every case, and writes them to tests/automation/runtime/TOPIC.tsv. Run it after a change
# of make_cases.py or probe.cpp; the tests only read what it wrote.
#
# usage: regenerate.sh [TOPIC...]    (numbers, types, dates, formats, arithmetic; all without one)
#
# Needs the Debian packages wine64, xvfb, g++-mingw-w64-x86-64-posix and locales.
set -euo pipefail
cd "$(dirname "$(readlink -f "${BASH_SOURCE[0]}")")"

topics=(numbers types dates formats arithmetic)
[[ $# -eq 0 ]] || topics=("$@")

data=../../tests/automation/runtime
work=$(mktemp -d)
xvfb=''
cleanup() {
    [[ -z $xvfb ]] || kill "$xvfb" 2>/dev/null || true
    WINEPREFIX=$work/prefix /usr/lib/wine/wineserver64 -k 2>/dev/null || true
    rm -rf "$work"
}
trap cleanup EXIT

x86_64-w64-mingw32-g++-posix -std=c++20 -O1 -static probe.cpp -o "$work/probe.exe" -loleaut32 -lole32

# Wine takes the user's language from the host, which must know it.
mkdir "$work/locales"
for name in it_IT en_US en_GB; do
    localedef -i "$name" -f UTF-8 "$work/locales/$name.UTF-8"
done
export LOCPATH=$work/locales WINEPREFIX=$work/prefix WINEDEBUG=-all WINEDLLOVERRIDES=winedbg.exe=d
exec 3>"$work/display"
Xvfb -displayfd 3 -screen 0 640x480x8 >/dev/null 2>&1 &
xvfb=$!
for _ in {1..100}; do
    [[ ! -s $work/display ]] || break
    sleep 0.1
done
DISPLAY=:$(<"$work/display")
export DISPLAY

probe() {
    local language=$1
    LC_ALL=${language/-/_}.UTF-8 timeout 120 /usr/lib/wine/wine64 "$work/probe.exe" "$language" | tr -d '\r'
}

for language in it-IT en-US en-GB; do
    LC_ALL=${language/-/_}.UTF-8 /usr/lib/wine/wine64 wineboot -u >/dev/null 2>&1
    for topic in "${topics[@]}"; do
        python3 make_cases.py "$topic" | awk -F '\t' -v language="$language" '$2 == language && !seen[$0]++' |
            probe "$language" >"$work/$topic.$language"
    done
done
for topic in "${topics[@]}"; do
    {
        printf '# %s: made by regenerate.sh with %s; do not edit.\n' "$topic" \
            "$(/usr/lib/wine/wine64 --version 2>/dev/null || echo Wine)"
        cat "$work/$topic.it-IT" "$work/$topic.en-US" "$work/$topic.en-GB"
    } >"$data/$topic.tsv"
    printf '%s: %s cases\n' "$topic" "$(($(wc -l <"$data/$topic.tsv") - 1))"
done
