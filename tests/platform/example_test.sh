#!/usr/bin/env bash
# The smallest client makes the same recording on every system.
#
#   example_test.sh CLIENT LIBRARY [RUNNER]
set -euo pipefail
golden=$(cd "$(dirname "${BASH_SOURCE[0]}")" && pwd)/golden
work=$(mktemp -d)
trap 'rm -rf "$work"' EXIT
cd "$work"

[ "$(${3:+"$3"} "$1" "$2" | tr -d '\r')" = 'y = (0, 0)' ]
cmp "$golden/saver_output.c" saver_output/saver_output.c
cmp "$golden/params.bin" saver_output/params.bin
