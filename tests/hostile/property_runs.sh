#!/usr/bin/env bash
# Records a random session for each seed, compiles it with gcc and clang and
# compares the replays with the sessions; prints how many were identical and
# what is wrong with the others.
#
#   property_runs.sh BUILD_DIRECTORY [FIRST [LAST]]
set -euo pipefail

here=$(cd "$(dirname "${BASH_SOURCE[0]}")" && pwd)
build=$(cd "$1" && pwd)
first=${2:-1} last=${3:-300} identical=0
export KIV_TRACER_CUSTOM=gpu
for ((seed = first; seed <= last; ++seed)); do
  if report=$(bash "$here/../end_to_end/compare_client.sh" \
      "$build/tests/hostile/property_client" "$build/src/libKivSaver.so" \
      "$build/backends/tracer/libKivTracer.so" "$seed" gcc clang 2>&1); then
    identical=$((identical + 1))
  else
    echo "! $report"
  fi
done
echo "sessions: $((last - first + 1)), identical: $identical"
[ "$identical" -eq $((last - first + 1)) ]
