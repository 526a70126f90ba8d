#!/usr/bin/env bash
# Runs a client that makes calls which nobody should make on the relay before a
# recorder, since other backends do not stand them. Both go on to the end, and
# what is listed are calls of the recording.
#
#   hostile_session.sh KIV_RECORDING CLIENT SAVER RELAY SEED
set -euo pipefail

tool=$1 client=$2 saver=$3 relay=$4 seed=$5
work=$(mktemp -d)
trap 'rm -rf "$work"' EXIT

KIV_RELAY_BACKEND=$saver KIV_RELAY_KEEP_OUTPUTS=1 \
  KIV_SAVER_OUTPUT_DIRECTORY=$work/behind \
  "$client" --backend "$relay" --output-dir "$work/relayed" "$seed"
"$tool" info "$work/behind" >"$work/info"
"$tool" info "$work/relayed" >"$work/info" 2>&1
grep -q '^recorded beside a backend' "$work/info" || {
  cat "$work/info"
  exit 1
}
