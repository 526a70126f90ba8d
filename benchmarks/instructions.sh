#!/usr/bin/env bash
# Counts the instructions of one call with callgrind and compares with limits,
# which hold for a release build on any machine: nothing is measured in time.
#
#   instructions.sh PROGRAM LIBRARY KIND=LIMIT...
#
# For the program and the kinds see count_calls.cpp.
set -euo pipefail

program=$1 library=$2
shift 2
calls=1000
failed=0
work=$(mktemp -d)
trap 'rm -rf "$work"' EXIT

# Sets bytes and instructions, those of one call.
count() { # KIND
  valgrind --tool=callgrind --toggle-collect=measuredCalls \
    --callgrind-out-file="$work/profile" --log-file="$work/log" \
    "$program" "$library" "$1" "$calls" "$work/recording" >"$work/output"
  read -r _ bytes <"$work/output"
  local collected
  collected=$(sed -nE 's/^.*Collected : ([0-9]+).*$/\1/p' "$work/log")
  instructions=$(((collected + calls / 2) / calls))
  if [ "$instructions" -eq 0 ]; then
    echo "callgrind has counted nothing:" >&2
    cat "$work/log" >&2
    exit 1
  fi
}

for limited in "$@"; do
  kind=${limited%=*} limit=${limited#*=}
  count "$kind"
  verdict=
  if [ "$instructions" -gt "$limit" ]; then
    verdict="  TOO MANY"
    failed=1
  fi
  printf '%-10s %6d instructions, at most %6d, for %5d bytes of text%s\n' \
    "$kind" "$instructions" "$limit" "$bytes" "$verdict"
done
exit "$failed"
