#!/usr/bin/env bash
# Runs compare_calls.sh over every network below a directory and prints how
# many the client accepted, how many of these gave identical calls, compiled by
# both compilers and replayed by kiv-recording, and the names of those that did
# not.
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
export KIV_RECORDING=$build/bin/kiv-recording
export KIV_RECORD_AGAIN=$build/tests/recording/record_again

compare() {
  local status=0 name
  name=$(tr / _ <<<"$1")
  bash "$here/compare_calls.sh" \
      "$build/examples/onnx_client/onnx_client" "$build/src/libKivSaver.so" \
      "$build/backends/tracer/libKivTracer.so" "$1" gcc clang \
      >"$results/$name" 2>&1 || status=$?
  echo "$status" >"$results/$name.status"
}
export -f compare

find "$networks" -name '*.onnx' -print0 | sort -z |
  xargs -0 -P "$(nproc)" -I{} bash -c 'compare "$1"' _ {}

count() { cat "$results"/*.status | grep -cx "$1" || true; }
identical=$(count 0) refused=$(count 77)
total=$(find "$results" -name '*.status' | wc -l)
echo "networks: $total, accepted: $((total - refused)), identical: $identical"
for status in "$results"/*.status; do
  case $(cat "$status") in
    0) ;;
    77) sed 's/^/  /' "${status%.status}" ;;
    *) sed 's/^/! /' "${status%.status}" ;;
  esac
done
[ "$((identical + refused))" -eq "$total" ]
