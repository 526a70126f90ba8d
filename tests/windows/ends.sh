#!/usr/bin/env bash
# Whichever way a client ends, its recording ends with the program's footer and
# nobody waits, also not for a call that hangs.
#
#   ends.sh RUNNER HOST LIBRARY
set -euo pipefail
runner=$1 host=$2 library=$3
work=$(mktemp -d)
trap 'rm -rf "$work"' EXIT
cd "$work"

fail() {
  echo "$end: $1"
  exit 1
}

is_finished() { # FILE
  [ "$(tail -n 1 "$1")" = '}' ] && ! grep -q $'\r' "$1"
}

for end in free exit exit-in-callback exit-in-thread exit-beside-call again; do
  start=$SECONDS
  "$runner" "$host" "Z:$library" "$end" "$end" || fail "status $?"
  # As long as the library waits for calls that have a chance to end.
  [ $end != exit-beside-call ] || [ $((SECONDS - start)) -lt 5 ] ||
    fail "it has waited"
  case $end in
    free | again) is_finished $end/saver_output.c.moved || fail "no footer" ;;
    *) is_finished $end/saver_output.c || fail "no footer" ;;
  esac
done
