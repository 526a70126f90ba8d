#!/usr/bin/env bash
# Records what a client does with its argument, compiles the recording with each
# compiler, replays it on Tracer and compares the calls with those of the client
# running on Tracer itself.
#
#   compare_client.sh CLIENT SAVER TRACER ARGUMENT COMPILER...
#
# A compiler may carry flags ("gcc -fsanitize=thread"). Ends with 0 when every
# replay makes the client's calls, 77 when the client does not accept the
# network, 1 otherwise.
set -euo pipefail

client=$1 saver=$2 tracer=$3 argument=$4
shift 4
include=$(cd "$(dirname "${BASH_SOURCE[0]}")/../../include" && pwd)
work=$(mktemp -d)
trap 'rm -rf "$work"' EXIT
# All records of a recording are variables of its main.
ulimit -s unlimited 2>/dev/null || ulimit -s "$(ulimit -H -s)"

fail() {
  echo "$argument: $1"
  exit 1
}

if ! KIV_TRACER_OUTPUT="$work/direct" "$client" --backend "$tracer" \
    "$argument" >"$work/log" 2>&1; then
  if grep -q 'not accepted' "$work/log"; then
    grep 'not accepted' "$work/log"
    exit 77
  fi
  cat "$work/log"
  fail 'the client fails on Tracer'
fi
if ! "$client" --backend "$saver" --output-dir "$work/recording" \
    "$argument" >"$work/log" 2>&1; then
  cat "$work/log"
  fail 'the client fails on the Saver'
fi

for compiler in "$@"; do
  # shellcheck disable=SC2086  # the flags are words of their own
  $compiler -std=gnu11 -w -I"$include" "$work/recording/saver_output.c" \
      -o "$work/replay" "$tracer" -Wl,-rpath,"$(dirname "$tracer")" ||
    fail "$compiler does not compile the recording"
  (cd "$work/recording" && KIV_TRACER_OUTPUT="$work/replayed" ../replay) ||
    fail "the replay built by $compiler fails with $?"
  diff "$work/direct" "$work/replayed" >"$work/difference" || {
    head -n 6 "$work/difference" | cut -c -300
    fail "the replay built by $compiler makes other calls"
  }
done
echo "$argument: identical, $(wc -l <"$work/direct") calls"
