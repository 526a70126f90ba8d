#!/usr/bin/env bash
# ./demo.sh [network.onnx]
#
# Records a network's calls with the Saver, compiles the recording and replays
# it on Tracer, a backend that prints its calls. Then runs the client on Tracer
# directly: both must print the same calls. All output is below build/demo.
set -euo pipefail
export LC_ALL=C

root=$(cd "$(dirname "${BASH_SOURCE[0]}")" && pwd)
if [ $# -gt 1 ]; then
  echo "Usage: $0 [network.onnx]" >&2
  exit 2
fi
network=$(realpath -- "${1:-$root/examples/models/text_angle.onnx}")
if [ ! -f "$network" ]; then
  echo "demo.sh: there is no file $network" >&2
  exit 1
fi
cd "$root"

work=$root/build/demo
log=$work/log.txt
recording=$work/recording
client=build/release/examples/onnx_client/onnx_client
saver=$root/build/release/src/libKivSaver.so
tracer=$root/build/release/backends/tracer/libKivTracer.so

# Runs one step of the way; its output is shown only if it fails.
step() { # WHAT COMMAND...
  local what=$1 status=0
  shift
  printf '\n== %s: %s\n' "$what" "$*" >>"$log"
  "$@" >>"$log" 2>&1 || status=$?
  if [ "$status" -ne 0 ]; then
    tail -n 40 "$log" >&2
    echo "demo.sh: $what failed with status $status; all output is in $log" >&2
    exit 1
  fi
}

milliseconds() { echo $(($(date +%s%N) / 1000000)); }

summary_value() { # KEY
  sed -n "s/.*\\b$1=\\([^ ]*\\).*/\\1/p" "$work/summary.txt" | tail -n 1
}

# The rest of the file is read before it is run, so that it may change meanwhile.
main() {
  mkdir -p "$work"
  rm -rf "$recording" "$work/replay" "$work"/*.txt
  step setup tools/setup.sh
  step configuring cmake --preset release
  step building cmake --build --preset release --parallel 2 \
    --target KivSaver KivTracer onnx_client

  local start recorded compiled
  start=$(milliseconds)
  step recording "$client" --backend "$saver" --output-dir "$recording" \
    "$network"
  recorded=$(($(milliseconds) - start))
  grep 'network=' "$log" | tail -n 1 >"$work/summary.txt"
  echo "network:  $(summary_value network)," \
    "$(summary_value nodes) nodes, $(summary_value tensors) tensors," \
    "$(summary_value bytes) bytes"
  echo "recorded: $(wc -l <"$recording/saver_output.c") lines of C and" \
    "$(wc -c <"$recording/params.bin") bytes of data in $recorded ms"

  step "configuring the replay" cmake -G Ninja -S replay -B "$work/replay" \
    -DRECORDING="$recording" -DBACKEND="$tracer"
  start=$(milliseconds)
  step compiling cmake --build "$work/replay"
  compiled=$(($(milliseconds) - start))
  printf 'compiled: in %d.%d s\n' $((compiled / 1000)) $((compiled % 1000 / 100))

  step replaying env KIV_TRACER_OUTPUT="$work/replayed.txt" \
    "$work/replay/replay"
  echo "replayed: $(wc -l <"$work/replayed.txt") calls"

  step "running the client directly" \
    env KIV_TRACER_OUTPUT="$work/direct.txt" \
    "$client" --backend "$tracer" "$network"
  if diff "$work/direct.txt" "$work/replayed.txt" >"$work/difference.txt"; then
    echo "compared: identical to the calls of the client itself"
  else
    echo "compared: DIFFERENT, first here (< client, > recording):"
    head -n 4 "$work/difference.txt" | cut -c 1-300
    exit 1
  fi
}

main
