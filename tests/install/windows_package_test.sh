#!/usr/bin/env bash
# CPack's archive for Windows serves the outside client, which is linked through
# the import library, and replays what it recorded.
#
#   windows_package_test.sh BUILD_DIRECTORY OUTSIDE_SOURCES RUNNER C_COMPILER
set -euo pipefail
build=$1 sources=$2 runner=$3 compiler=$4
# shellcheck source=tests/support/shell_test.sh
source "$(dirname "${BASH_SOURCE[0]}")/../support/shell_test.sh"

cpack --config "$build/CPackConfig.cmake" -B "$work" >log 2>&1 ||
  fail "$(cat log)"
mkdir archive && cd archive
cmake -E tar xf ../*.zip
mv ./*/* .
for library in KivSaver KivTracer; do
  "$compiler" "$sources/client.c" -Iinclude/kiv -Llib "-l$library" \
    -o "bin/$library-client.exe"
done
"$runner" bin/KivSaver-client.exe
KIV_TRACER_OUTPUT=direct.txt "$runner" bin/KivTracer-client.exe
[ "$(wc -l <direct.txt)" -eq 4 ] || fail "Tracer prints $(cat direct.txt)"
KIV_TRACER_OUTPUT=replayed.txt "$runner" bin/kiv-recording.exe replay \
  saver_output --backend bin/KivTracer.dll
diff direct.txt replayed.txt || fail "other calls are replayed"
[ -e share/doc/KivSaver/README.md ] || fail "there is no README.md"
