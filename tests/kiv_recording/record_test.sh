#!/usr/bin/env bash
# Records applications as they are, and replays what was recorded.
#
#   record_test.sh KIV_RECORDING SAVER TRACER APPLICATION LINKED_APPLICATION RELAY
set -euo pipefail

recording=$1 saver=$2 tracer=$3 application=$4 linked=$5 relay=$6
# shellcheck source=tests/support/shell_test.sh
source "$(dirname "${BASH_SOURCE[0]}")/../support/shell_test.sh"

fail() {
  echo "FAILED: $1"
  cat output errors
  exit 1
}

record() { # STATUS DIRECTORY ARGUMENT...
  local status=0
  "$recording" record -o "$2" "${@:3}" >output 2>errors || status=$?
  [ "$status" -eq "$1" ] || fail "ends with $status, not $1"
}

# Each session of each process has its own recording, which replays.
record 5 'a %n' -- "$application" "$tracer"
[ "$(grep -c '^session$' output)" -eq 10 ] || fail "the application's output"
[ "$(wc -l <output)" -eq 10 ] || fail "more than the application's output"
[ "$(grep -c ': 2 calls, 0 bytes of data$' errors)" -eq 10 ] ||
  fail "ten recordings"
for directory in 'a %n'/*; do
  "$recording" replay "$directory" --backend "$tracer" >output 2>errors ||
    fail "$directory is not replayed"
done

# By a name, that need not exist; by another; a linked backend.
record 5 named --replace 'libNo*.so' --backend-id 4 -- \
  "$application" libNoBackend.so
grep -q GPU named/*-0/saver_output.c || fail "the backend's id"
record 5 other --replace 'libNo*.so' -- "$application" "$tracer"
grep -q 'Nothing was recorded: .* named libNo\*.so' errors ||
  fail "nothing, and no word of it"
record 0 linked -- "$linked"
[ "$(grep -c ': 1 call, ' errors)" -eq 1 ] || fail "a linked backend"

# Beside the backend that it opens, or another one, which gets the calls.
for real in "$tracer" "$work/named.so"; do
  cp "$tracer" named.so
  KIV_TRACER_OUTPUT=$work/calls KIV_RELAY_KEEP_OUTPUTS=1 record 5 "beside$real" \
    --beside "$real" --saver "$relay" -- "$application" "$tracer"
  [ "$(grep -c ': 2 calls, 0 bytes of data$' errors)" -eq 10 ] ||
    fail "ten recordings beside $real"
  [ "$(wc -l <calls)" -eq 2 ] || fail "no calls on $real"
done
record 0 linked_beside --beside "$tracer" -- "$linked"
grep -q KIV_TRACER linked_beside/*/answers.json || fail "no answers"
record 2 nothing --beside ./no.so -- "$application" "$tracer"
grep -q 'no.so: there is no such file' errors || fail "no such backend"

# How the application ends.
# shellcheck disable=SC2016  # the application's own shell
record 137 killed -- sh -c 'kill -9 $$'
record 127 missing -- ./no_application

# What the recorder says by itself, up to the level that is asked for.
export KIV_SAVER_DATA_FILE=no/name
for level in error warn; do
  KIV_SAVER_LOG=$level record 5 log -- "$application" "$tracer"
  [ "$(grep -c '^KivSaver\[[0-9]*\]: 2 calls recorded, ' errors)" -eq 10 ] ||
    fail "a line at each end"
  warnings=$(grep -c 'warning: .* no/name' errors || true)
  [ "$warnings" -eq "$([ $level = warn ] && echo 10 || echo 0)" ] ||
    fail "$warnings warnings at level $level"
done
mkdir full
ln -s /dev/full full/saver_output.c
KIV_SAVER_LOG=error KIV_SAVER_OUTPUT_DIRECTORY=full \
  "$application" "$saver" >output 2>errors && fail "a session on a full disk"
[ "$(grep -c "$work/full/saver_output.c: No space left on device" errors)" -eq 1 ] ||
  fail "the first failure, with path and reason"
