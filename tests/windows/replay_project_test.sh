#!/usr/bin/env bash
# The smallest client's recording, cross-compiled through the replay project,
# makes the client's calls. A large recording finds stack enough.
#
#   replay_project_test.sh TREE RUNNER CLIENT SAVER TRACER CONFIGURE_OPTION...
set -euo pipefail
tree=$1 runner=$2 client=$3 saver=$4 tracer=$5
shift 5
# shellcheck source=tests/support/shell_test.sh
source "$(dirname "${BASH_SOURCE[0]}")/../support/shell_test.sh"

replay() { # RECORDING TRACE
  cmake -G Ninja -S "$tree/replay" -B "build_$2" "${options[@]}" \
    -DRECORDING="$work/$1" -DBACKEND="$tracer" >log 2>&1 &&
    cmake --build "build_$2" >>log 2>&1 || { cat log; fail "$1: not built"; }
  KIV_TRACER_OUTPUT="Z:$work/$2" \
    "$runner" "build_$2/replay.exe" -l verbose || fail "$1: status $?"
}
options=("$@")


"$runner" "$client" "Z:$saver"
KIV_TRACER_OUTPUT="Z:$work/direct" "$runner" "$client" "Z:$tracer"
replay saver_output replayed
diff direct replayed || fail "other calls are replayed"

# 48 MB of local variables.
mkdir large
cp saver_output/params.bin large
sed 's/^   Kiv_BackendHandle_t backend_0;/   volatile char large[48 << 20]; \
for (int i = 0; i < (48 << 20); i += 4096) large[i] = 1;\n&/' \
  saver_output/saver_output.c >large/saver_output.c
grep -q 'large\[48' large/saver_output.c || fail "nothing was made larger"
replay large replayed_large
diff direct replayed_large || fail "other calls are replayed"
