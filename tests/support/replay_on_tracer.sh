#!/usr/bin/env bash
# Replays a recording on Tracer, which writes its calls to a file: compiled, and
# by kiv-recording, which must make the same calls and print the same.
#
#   replay_on_tracer.sh TRACER COMPILER MODEL_FILE TRACE
#
# A compiler may carry flags ("gcc -fsanitize=thread"). Of the environment:
# KIV_RECORDING, the program kiv-recording; KIV_EMULATOR, which runs programs of
# another system than this one.
set -euo pipefail

tracer=$1 compiler=$2 model=$3 trace=$4
include=$(cd "$(dirname "${BASH_SOURCE[0]}")/../../include" && pwd)
emulator=${KIV_EMULATOR:-}
drive=${emulator:+Z:}
work=$(mktemp -d)
trap 'rm -rf "$work"' EXIT

fail() {
  echo "$1"
  exit 1
}

run() { ${emulator:+"$emulator"} "$@"; }

# All records of a recording are variables of its main.
if [ -n "$emulator" ]; then
  link=(-Wl,--stack,268435456)
  cp "$tracer" "$work"
else
  link=(-Wl,-rpath,"$(dirname "$tracer")")
  ulimit -s unlimited 2>/dev/null || ulimit -s "$(ulimit -H -s)"
fi

run "$KIV_RECORDING" prepare "$drive$model" -o "$drive$work/program.c" \
  >"$work/prepared" || fail "$model is not prepared"
# shellcheck disable=SC2086  # the flags are words of their own
$compiler -std=gnu11 -w -I"$include" "$work/program.c" -o "$work/replay.exe" \
  "$tracer" "${link[@]}" || fail "$compiler does not compile $model"
(
  cd "$(dirname "$model")"
  KIV_TRACER_OUTPUT="$drive$trace" run "$work/replay.exe" >"$work/printed"
) || fail "The replay of $model ends with $?: $(cat "$work/printed")"

KIV_TRACER_OUTPUT="$drive$work/trace" run "$KIV_RECORDING" replay \
  "$drive$model" --backend "$drive$tracer" >"$work/printed_by_reader" ||
  fail "kiv-recording replay ends with $?"
cmp "$trace" "$work/trace" || fail "kiv-recording makes other calls of $model"
cmp "$work/printed" "$work/printed_by_reader" ||
  fail "kiv-recording prints something else for $model"
