#!/usr/bin/env bash
# The client that reads a page: it finds nothing with a library that computes
# nothing, and all numbers with the backend that computes.
#
#   reading_client_test.sh CLIENT SAVER KIV_RECORDING [BACKEND]
#
# The exit status is 77 where nothing computes.
set -euo pipefail
client=$1 saver=$2 recorder=$3 backend=${4:-}

# shellcheck source=tests/support/shell_test.sh
source "$(dirname "${BASH_SOURCE[0]}")/../support/shell_test.sh"

"$client" "$saver" >printed || fail "the client on the Saver"
grep -qx 'found 0 numbers' printed || fail "found numbers in zeros: $(cat printed)"
"$recorder" info saver_output >info
grep -q 'decoder' info || fail "the recording has no decoder: $(cat info)"
if grep -q 'recogniser' info; then fail "the recording has a recogniser"; fi

if [ -z "$backend" ] || [ ! -f "${KIV_ONNXRUNTIME:-}" ]; then
  echo "skipped: nothing computes here"
  exit 77
fi
# ONNX Runtime leaves some bytes of its own behind.
echo 'leak:libonnxruntime.so' >leaks
export LSAN_OPTIONS=suppressions=$work/leaks:print_suppressions=0
"$client" "$backend" >printed || fail "the client on $backend"
grep -vE '^(map|digits|next|cache):' printed >read || true
diff - read <<'END' || fail "the page reads otherwise"
found 3 numbers
number at 4, 3 of 23 x 7
read 2 0 2 6
then 5
then 4
then 3
then 2
then 1
then 0
number at 40, 5 of 11 x 7
read 7 1
then 0
number at 14, 17 of 23 x 7
read 9 3 5 8
then 7
then 6
then 5
then 4
then 3
then 2
then 1
then 0
END
"$recorder" replay saver_output --backend "$backend" >replayed ||
  fail "the replay: $(cat replayed)"
