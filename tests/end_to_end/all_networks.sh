#!/usr/bin/env bash
# Runs compare_calls.sh over every network below a directory and prints how
# many the client accepted, how many of these gave identical calls, compiled by
# both compilers and replayed by kiv-recording, and the names of those that did
# not.
#
#   all_networks.sh [BUILD_DIRECTORY [NETWORKS]]
set -euo pipefail

here=$(cd "$(dirname "${BASH_SOURCE[0]}")" && pwd)
# shellcheck source=tests/support/all_networks.sh
source "$here/../support/all_networks.sh"
build=$(cd "${1:-$here/../../build/release}" && pwd)
networks=${2:-/usr/share/libonnx-testdata}
export here build
export KIV_RECORDING=$build/bin/kiv-recording
export KIV_RECORD_AGAIN=$build/tests/end_to_end/record_again

compare() { # NETWORK
  bash "$here/compare_calls.sh" \
    "$build/examples/onnx_client/onnx_client" "$build/src/libKivSaver.so" \
    "$build/backends/tracer/libKivTracer.so" "$1" gcc clang
}

all_networks compare identical "$networks"
