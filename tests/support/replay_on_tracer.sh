#!/usr/bin/env bash
# Compiles a recording and replays it on Tracer, which writes its calls to a
# file.
#
#   replay_on_tracer.sh TRACER COMPILER MODEL_FILE TRACE
#
# A compiler may carry flags ("gcc -fsanitize=thread"). Of the environment:
# KIV_COMPLETE_RECORDING, a program that first completes the recording if it has
# no end; KIV_EMULATOR, which runs programs of another system than this one.
set -euo pipefail

tracer=$1 compiler=$2 model=$3 trace=$4
include=$(cd "$(dirname "${BASH_SOURCE[0]}")/../../include" && pwd)
emulator=${KIV_EMULATOR:-}
drive=${emulator:+Z:}
work=$(mktemp -d)
trap 'rm -rf "$work"' EXIT

# All records of a recording are variables of its main.
if [ -n "$emulator" ]; then
  link=(-Wl,--stack,268435456)
  cp "$tracer" "$work"
else
  link=(-Wl,-rpath,"$(dirname "$tracer")")
  ulimit -s unlimited 2>/dev/null || ulimit -s "$(ulimit -H -s)"
fi

program=$model
if [ -n "${KIV_COMPLETE_RECORDING:-}" ]; then
  program=$work/program.c
  ${emulator:+"$emulator"} "$KIV_COMPLETE_RECORDING" \
    "$drive$model" "$drive$program" "$drive$work/size.h"
fi
# shellcheck disable=SC2086  # the flags are words of their own
$compiler -std=gnu11 -w -I"$include" "$program" -o "$work/replay.exe" "$tracer" \
  "${link[@]}" || {
  echo "$compiler does not compile $model"
  exit 1
}
cd "$(dirname "$model")"
KIV_TRACER_OUTPUT="$drive$trace" ${emulator:+"$emulator"} "$work/replay.exe" || {
  echo "The replay of $model ends with $?"
  exit 1
}
