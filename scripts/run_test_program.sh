#!/usr/bin/env bash
# Runs one test program to its end and prints what it said, how long it took and nothing in between, so that several may
# run at once.
set -uo pipefail

begun=$SECONDS
said=$("$1" --gtest_brief=1 2>&1)
status=$?
printf '%s%s: %d s\n%s\n' "${1##*/}" "${TZ:+, $TZ}" $((SECONDS - begun)) "$said"
exit "$status"
