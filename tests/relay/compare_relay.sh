#!/usr/bin/env bash
# Runs a client on Tracer, on the recorder, and on the relay before Tracer. The
# relay changes none of the client's calls on Tracer, records what the recorder
# does, and its recording's replay makes these calls again.
#
#   compare_relay.sh KIV_RECORDING CLIENT SAVER RELAY TRACER ARGUMENT
#
# KIV_EMULATOR runs programs of another system than this one. Ends with 77 when
# the client does not accept its argument.
set -euo pipefail

tool=$1 client=$2 saver=$3 relay=$4 tracer=$5 argument=$6
emulator=${KIV_EMULATOR:-}
drive=${emulator:+Z:}
work=$(mktemp -d)
trap 'rm -rf "$work"' EXIT

fail() {
  echo "$argument: $1"
  exit 1
}

run() { # NAME LIBRARY
  KIV_TRACER_OUTPUT="$drive$work/$1" KIV_RELAY_BACKEND="$drive$tracer" \
    ${emulator:+"$emulator"} "$client" --backend "$drive$2" \
    --output-dir "$drive$work/$1.recording" "$argument" >"$work/log" 2>&1
}

run direct "$tracer" || {
  grep 'not accepted' "$work/log" && exit 77
  fail "the client fails on Tracer: $(cat "$work/log")"
}
run relayed "$relay" || fail "the client fails on the relay: $(cat "$work/log")"
cmp "$work/direct" "$work/relayed" || fail 'the relay changes the calls'

run recorded "$saver" || fail "the client fails on the recorder"
for file in saver_output.c params.bin; do
  cmp "$work/recorded.recording/$file" "$work/relayed.recording/$file" ||
    fail 'the relay records something else'
done
[ "$(wc -l <"$work/relayed.recording/answers.json")" -eq 1 ] ||
  fail "$(cat "$work/relayed.recording/answers.json")"
KIV_TRACER_OUTPUT="$drive$work/replayed" ${emulator:+"$emulator"} "$tool" \
  replay "$drive$work/relayed.recording" --backend "$drive$tracer" \
  >"$work/log" 2>&1 || fail "the replay fails: $(cat "$work/log")"
cmp "$work/direct" "$work/replayed" || fail 'the replay makes other calls'
