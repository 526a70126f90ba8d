#!/usr/bin/env bash
# Runs compute_network.sh over every network below a directory, or with
# --exported run_exported.sh, and prints how many the client accepted, how many
# of these gave the stored outputs, and why the others did not.
#
#   all_networks.sh [--exported] [BUILD_DIRECTORY [NETWORKS]]
set -euo pipefail

here=$(cd "$(dirname "${BASH_SOURCE[0]}")" && pwd)
# shellcheck source=tests/support/all_networks.sh
source "$here/../support/all_networks.sh"
function=compute
if [ "${1:-}" = --exported ]; then
  function=run_exported
  shift
fi
build=$(cd "${1:-$here/../../build/release}" && pwd)
networks=${2:-/usr/share/libonnx-testdata}
cache=${XDG_CACHE_HOME:-$HOME/.cache}/kiv-saver
export KIV_ONNXRUNTIME=${KIV_ONNXRUNTIME:-$(ls "$cache"/onnxruntime-*/*.so.*)}
export here build

compute() { # NETWORK
  bash "$here/compute_network.sh" \
    "$build/examples/onnx_client/onnx_client" "$build/src/libKivSaver.so" \
    "$build/bin/kiv-recording" \
    "$build/tests/onnxruntime_backend/libchecking_backend.so" \
    "$build/backends/onnxruntime/libKivOnnxRuntime.so" "$1"
}

run_exported() { # NETWORK
  bash "$here/run_exported.sh" \
    "$build/examples/onnx_client/onnx_client" "$build/src/libKivSaver.so" \
    "$build/bin/kiv-recording" "$build/tests/onnxruntime_backend/run_model" "$1"
}

all_networks "$function" equal "$networks"
