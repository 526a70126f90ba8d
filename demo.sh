#!/usr/bin/env bash
# ./demo.sh [network.onnx]
#
# Records a network's calls with the Saver and replays them on Tracer, a backend
# that prints its calls: by kiv-recording, and compiled. Then runs the client on
# Tracer directly: all must print the same calls. Without an argument the example
# network then computes: a line of text, upright and upside down, on the backend
# that runs ONNX Runtime, by each of these ways and without any of our code. All
# output is below build/demo.
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
recorder=$root/build/release/bin/kiv-recording
saver=$root/build/release/src/libKivSaver.so
tracer=$root/build/release/backends/tracer/libKivTracer.so
computing=$root/build/release/backends/onnxruntime/libKivOnnxRuntime.so
ort_package=$work/node/node_modules/onnxruntime-node
example=$([ $# -eq 0 ] && echo yes || echo no)

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

seconds() { printf '%d.%02d s' $(($1 / 1000)) $(($1 % 1000 / 10)); }

# Ends the demo unless a trace has the calls of the client itself.
compare() { # TRACE
  diff "$work/direct.txt" "$work/$1" >"$work/difference.txt" && return
  echo "compared: DIFFERENT, first here (< client, > $1):"
  head -n 4 "$work/difference.txt" | cut -c 1-300
  exit 1
}

# What the log says of an execution's outputs: two probabilities.
probabilities() { # LOG
  sed -nE 's/.*softmax_0\.tmp_0.*\]: +([^ ]+ [^ ]+).*/\1/p' "$1" | tail -n 1
}

# The same to four digits, which is what all ways must agree in.
rounded() { # PROBABILITIES
  # shellcheck disable=SC2086  # two words
  printf '%.4f %.4f' $1
}

# One picture by all ways.
compute_line() { # NAME
  local name=$1 lines=$work/$1 way values
  rm -rf "$lines"
  mkdir -p "$lines"
  local options=(--shape x=1x3x48x192 --mean 0.5 --std 0.5
    --input "x=examples/models/line_$name.png")
  "$client" --backend "$computing" "${options[@]}" "$network" \
    >"$lines/client.txt" 2>>"$log" || fail_computing "$name" client
  step "recording the line $name" "$client" --backend "$saver" \
    --output-dir "$lines/recording" "${options[@]}" "$network"
  "$recorder" replay "$lines/recording" --backend "$computing" -l verbose \
    >"$lines/replay.txt" 2>>"$log" || fail_computing "$name" replay
  step "configuring the line $name" cmake -G Ninja -S replay \
    -B "$lines/replay" -DRECORDING="$lines/recording" -DBACKEND="$computing" \
    -DKIV_RECORDING="$recorder"
  step "compiling the line $name" cmake --build "$lines/replay"
  "$lines/replay/replay" -l verbose >"$lines/compiled.txt" 2>>"$log" ||
    fail_computing "$name" compiled
  step "extracting the input of $name" \
    "$recorder" extract "$lines/recording" --execution 0 -o "$lines/input"
  local expected
  expected=$(rounded "$(probabilities "$lines/client.txt")")
  for way in client compiled replay; do
    values=$(rounded "$(probabilities "$lines/$way.txt")")
    printf 'computed: %-12s %-8s %s\n' "$name" "$way" "$values"
    [ "$values" = "$expected" ] || fail_computing "$name" "$way"
  done
  [ -d "$ort_package" ] || return 0
  values=$(node examples/run_directly.js "$ort_package" "$network" \
    "$(find "$lines/input" -name '*.npy')" 2>>"$log") ||
    fail_computing "$name" direct
  printf 'computed: %-12s %-8s %s\n' "$name" "direct" "$(rounded "$values")"
  [ "$(rounded "$values")" = "$expected" ] || fail_computing "$name" direct
}

fail_computing() { # NAME WAY
  echo "demo.sh: the line $1 fails or differs by the way $2;" \
    "all output is in $work/$1 and $log" >&2
  exit 1
}

compute() {
  local cache=${XDG_CACHE_HOME:-$HOME/.cache}/kiv-saver
  if [ -z "${KIV_ONNXRUNTIME:-}" ]; then
    KIV_ONNXRUNTIME=$(find "$cache" -name 'libonnxruntime.so*' 2>/dev/null |
      head -n 1)
  fi
  if [ -z "$KIV_ONNXRUNTIME" ]; then
    echo "computed: nothing, ONNX Runtime is not here; tools/setup.sh says why"
    return
  fi
  export KIV_ONNXRUNTIME
  step "building the computing backend" cmake --build --preset release \
    --parallel 2 --target KivOnnxRuntime
  [ -d "$ort_package" ] ||
    npm install --silent --no-audit --no-fund --prefix "$work/node" \
      onnxruntime-node@1.16.3 >>"$log" 2>&1 ||
    echo "computed: not by ONNX Runtime alone, npm cannot fetch its package"
  compute_line upright
  compute_line upside_down
}

# The rest of the file is read before it is run, so that it may change meanwhile.
main() {
  mkdir -p "$work"
  rm -rf "$recording" "$work/replay" "$work"/*.txt
  step setup tools/setup.sh
  step configuring cmake --preset release
  step building cmake --build --preset release --parallel 2 \
    --target KivSaver KivTracer onnx_client kiv-recording

  local start recorded replayed compiled
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

  start=$(milliseconds)
  step replaying env KIV_TRACER_OUTPUT="$work/replayed.txt" \
    "$recorder" replay "$recording" --backend "$tracer"
  replayed=$(($(milliseconds) - start))
  echo "replayed: $(wc -l <"$work/replayed.txt") calls by kiv-recording in" \
    "$(seconds $replayed)"

  start=$(milliseconds)
  step "configuring the replay" cmake -G Ninja -S replay -B "$work/replay" \
    -DRECORDING="$recording" -DBACKEND="$tracer" -DKIV_RECORDING="$recorder"
  step compiling cmake --build "$work/replay"
  step "running the compiled recording" \
    env KIV_TRACER_OUTPUT="$work/compiled.txt" "$work/replay/replay"
  compiled=$(($(milliseconds) - start))
  echo "compiled: $(wc -l <"$work/compiled.txt") calls, compiler and run in" \
    "$(seconds $compiled)"

  step "running the client directly" \
    env KIV_TRACER_OUTPUT="$work/direct.txt" \
    "$client" --backend "$tracer" "$network"
  compare replayed.txt
  compare compiled.txt
  echo "compared: identical to the calls of the client itself"
  [ "$example" = no ] || compute
  echo
  echo "go on:    build/release/bin/kiv-recording info build/demo/recording"
  echo "          build/release/bin/kiv-recording dump build/demo/recording"
  echo "          build/release/bin/kiv-recording --help"
}

main
