#!/usr/bin/env bash
# Three processes write one program together, the first its header, the last its
# footer; its replay makes the calls of all three.
#
#   three_processes.sh CLIENT SAVER TRACER NETWORK COMPILER...
set -euo pipefail

client=$1 saver=$2 tracer=$3 network=$4
shift 4
replay=$(cd "$(dirname "${BASH_SOURCE[0]}")/../support" && pwd)/replay_on_tracer.sh
work=$(mktemp -d)
trap 'rm -rf "$work"' EXIT

record() { # SEED OPTION...
  "$client" --backend "$saver" --output-dir "$work/recording" \
      --model-file all.c --data-file all.bin --seed "$@" "$network"
  KIV_TRACER_OUTPUT="$work/direct.$1" "$client" --backend "$tracer" \
      --seed "$1" "$network"
}
record 1 --no-footer
record 2 --no-header --no-footer
record 3 --no-header

# Numbers of handles and tensors go on where each process begins anew.
calls() { sed -E 's/#[0-9]+/#/g; s/id=[0-9]+/id=/g' "$@"; }

for compiler in "$@"; do
  bash "$replay" "$tracer" "$compiler" "$work/recording/all.c" "$work/replayed"
  diff <(calls "$work"/direct.{1,2,3}) <(calls "$work/replayed")
done
