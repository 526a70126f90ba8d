#!/usr/bin/env bash
# A client that is killed loses at most the call that it was in; recordings that
# are kept are completed and replayed, and make just the whole calls.
#
#   kills.sh PROGRAM SAVER TRACER COMPILER KILLS KEPT
#
# For the compiler and the environment see replay_on_tracer.sh.
set -euo pipefail

program=$1 saver=$2 tracer=$3 compiler=$4 kills=$5 kept=$6
replay=$(cd "$(dirname "${BASH_SOURCE[0]}")/../support" && pwd)/replay_on_tracer.sh
emulator=${KIV_EMULATOR:-}
drive=${emulator:+Z:}
work=$(mktemp -d)
trap 'rm -rf "$work"' EXIT

${emulator:+"$emulator"} "$program" "$drive$saver" "$kills" "$kept" \
  "$drive$work"
bash "$replay" "$tracer" "$compiler" "$work/whole/saver_output.c" \
  "$work/whole.trace"
replayed=0
for calls in "$work"/*/calls; do
  recording=$(dirname "$calls")
  [ "$(cat "$calls")" -gt 0 ] || continue
  bash "$replay" "$tracer" "$compiler" "$recording/saver_output.c" \
    "$work/trace"
  diff <(head -n "$(cat "$calls")" "$work/whole.trace") "$work/trace"
  replayed=$((replayed + 1))
done
echo "$replayed replayed"
[ "$replayed" -gt 0 ]
