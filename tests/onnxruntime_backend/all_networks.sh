#!/usr/bin/env bash
# Runs compute_network.sh over every network below a directory and prints how
# many the client accepted, how many of these gave the stored outputs, directly
# and replayed, and why the others did not.
#
#   all_networks.sh [BUILD_DIRECTORY [NETWORKS]]
set -euo pipefail

here=$(cd "$(dirname "${BASH_SOURCE[0]}")" && pwd)
build=${1:-$here/../../build/release}
networks=${2:-/usr/share/libonnx-testdata}
build=$(cd "$build" && pwd)
results=$(mktemp -d)
trap 'rm -rf "$results"' EXIT
export here build results
cache=${XDG_CACHE_HOME:-$HOME/.cache}/kiv-saver
export KIV_ONNXRUNTIME=${KIV_ONNXRUNTIME:-$(ls "$cache"/onnxruntime-*/*.so.*)}

compute() {
  local status=0 name
  name=$(tr / _ <<<"$1")
  bash "$here/compute_network.sh" \
    "$build/examples/onnx_client/onnx_client" "$build/src/libKivSaver.so" \
    "$build/bin/kiv-recording" \
    "$build/tests/onnxruntime_backend/libchecking_backend.so" \
    "$build/backends/onnxruntime/libKivOnnxRuntime.so" "$1" \
    >"$results/$name" 2>&1 || status=$?
  echo "$status" >"$results/$name.status"
}
export -f compute

find "$networks" -name '*.onnx' -print0 | sort -z |
  xargs -0 -P "$(nproc)" -I{} bash -c 'compute "$1"' _ {}

count() { cat "$results"/*.status | grep -cx "$1" || true; }
equal=$(count 0) refused=$(count 77)
total=$(find "$results" -name '*.status' | wc -l)
echo "networks: $total, accepted: $((total - refused)), equal: $equal"
for status in "$results"/*.status; do
  [ "$(cat "$status")" = 0 ] && continue
  mark='!'
  [ "$(cat "$status")" = 77 ] && mark='-'
  name=$(basename "${status%.status}")
  echo "$mark ${name#_usr_share_libonnx-testdata_data_}:" \
    "$(tr '\n' ' ' <"${status%.status}" | cut -c 1-400)"
done
[ "$((equal + refused))" -eq "$total" ]
