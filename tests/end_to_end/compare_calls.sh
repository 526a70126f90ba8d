#!/usr/bin/env bash
# Records what a client does with its argument, replays it on Tracer, compiled by
# each compiler and by kiv-recording, and compares the calls with those of the
# client running on Tracer itself.
#
#   compare_calls.sh CLIENT SAVER TRACER ARGUMENT COMPILER...
#
# The calls made on the Saver (by KIV_RECORD_AGAIN) give the same recording. For
# compilers and the environment see replay_on_tracer.sh. Ends with 0 when every
# replay makes the client's calls, 77 when the client does not accept the
# network, 1 otherwise.
set -euo pipefail

client=$1 saver=$2 tracer=$3 argument=$4
shift 4
replay=$(cd "$(dirname "${BASH_SOURCE[0]}")/../support" && pwd)/replay_on_tracer.sh
emulator=${KIV_EMULATOR:-}
drive=${emulator:+Z:}
work=$(mktemp -d)
trap 'rm -rf "$work"' EXIT

fail() {
  echo "$argument: $1"
  exit 1
}

run_client() { # OPTION...
  ${emulator:+"$emulator"} "$client" "$@" "$argument" >"$work/log" 2>&1
}

if ! KIV_TRACER_OUTPUT="$drive$work/direct" \
    run_client --backend "$drive$tracer"; then
  if grep -q 'not accepted' "$work/log"; then
    grep 'not accepted' "$work/log"
    exit 77
  fi
  cat "$work/log"
  fail 'the client fails on Tracer'
fi
if ! run_client --backend "$drive$saver" \
    --output-dir "$drive$work/recording"; then
  cat "$work/log"
  fail 'the client fails on the Saver'
fi

for compiler in "$@"; do
  bash "$replay" "$tracer" "$compiler" "$work/recording/saver_output.c" \
    "$work/replayed" || fail 'the recording is not replayed'
  diff "$work/direct" "$work/replayed" >"$work/difference" || {
    head -n 6 "$work/difference" | cut -c -300
    fail "the replay built by $compiler makes other calls"
  }
done

${emulator:+"$emulator"} "$KIV_RECORD_AGAIN" "$drive$work/recording" \
  "$drive$saver" "$drive$work/again" >"$work/log" 2>&1 || {
  head -n 20 "$work/log"
  fail 'the reader does not make the calls on the Saver'
}
for file in saver_output.c params.bin; do
  cmp "$work/recording/$file" "$work/again/$file" ||
    fail 'the reader does not make the same recording again'
done

echo "$argument: identical, $(wc -l <"$work/direct") calls"
