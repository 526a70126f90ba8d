#!/usr/bin/env bash
# Records what a client does with its argument, compiles the recording with each
# compiler, replays it on Tracer and compares the calls with those of the client
# running on Tracer itself.
#
#   compare_calls.sh CLIENT SAVER TRACER ARGUMENT COMPILER...
#
# For compilers and the environment see replay_on_tracer.sh. Ends with 0 when every replay
# makes the client's calls, 77 when the client does not accept the network, 1
# otherwise.
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
echo "$argument: identical, $(wc -l <"$work/direct") calls"
