#!/usr/bin/env bash
# A client whose outputs decide what it executes next, on a backend that
# computes: beside it the recording has all that the client did, and its replay
# gives the outputs kept; the recorder alone gives another session.
#
#   reading_session.sh KIV_RECORDING CLIENT SAVER RELAY BACKEND
#
# The exit status is 77 where nothing computes.
set -euo pipefail
recorder=$1 client=$2 saver=$3 relay=$4 backend=$5

if [ ! -f "${KIV_ONNXRUNTIME:-}" ]; then
  echo "skipped: nothing computes here"
  exit 77
fi
# shellcheck source=tests/support/shell_test.sh
source "$(dirname "${BASH_SOURCE[0]}")/../support/shell_test.sh"
# ONNX Runtime leaves some bytes of its own behind.
echo 'leak:libonnxruntime.so' >leaks
export LSAN_OPTIONS=suppressions=$work/leaks:print_suppressions=0

"$client" "$backend" >direct
KIV_SAVER_OUTPUT_DIRECTORY=relayed KIV_RELAY_KEEP_OUTPUTS=1 \
  KIV_RELAY_BACKEND=$backend "$client" "$relay" >beside
cmp direct beside || fail "the client reads something else beside the relay"
"$recorder" replay relayed --backend "$backend" --compare \
  --rtol 0 --atol 0 >compared || fail "the replay: $(cat compared)"
kept=$(wc -l <relayed/outputs/outputs.txt)
grep -qx "$kept outputs are within" compared || fail "$(tail -n 3 compared)"

KIV_SAVER_OUTPUT_DIRECTORY=alone "$client" "$saver" >nothing
if "$recorder" diff alone relayed >differences; then
  fail "the recorder alone records the same"
fi
