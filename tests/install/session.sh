#!/usr/bin/env bash
# Records and replays with what is installed below a prefix, which pkg-config
# finds for a C compiler. The outside client is the one that is recorded.
#
#   session.sh PREFIX OUTSIDE_SOURCES
#
# Leaves in the current directory the programs, the recording that the client
# makes (saver_output) and Tracer's lines of its calls (traced.txt).
set -euo pipefail
prefix=$1 sources=$2

fail() {
  echo "FAILED: $1"
  exit 1
}

export PKG_CONFIG_PATH=$prefix/lib/pkgconfig
export LD_LIBRARY_PATH=$prefix/lib
read -ra flags < <(pkg-config --cflags --libs kiv-saver)
cc -std=c11 "$sources/client.c" "${flags[@]}" -o recorded
cc -std=c11 "$sources/client.c" "${flags[@]/-lKivSaver/-lKivTracer}" -o traced
version=$(pkg-config --modversion kiv-saver)
objdump -p recorded | grep -q "NEEDED *libKivSaver\.so\.${version%%.*}$" ||
  fail "the program does not ask for the library of version ${version%%.*}"
./recorded
KIV_TRACER_OUTPUT=traced.txt ./traced
[ "$(wc -l <traced.txt)" -eq 4 ] || fail "Tracer prints other calls"

# The command finds its recorder. It prints what Tracer does.
recording=$prefix/bin/kiv-recording
"$recording" record -o recordings -- ./traced
for directory in saver_output recordings/*-0; do
  KIV_TRACER_OUTPUT=replayed.txt "$recording" replay "$directory" \
    --backend "$prefix/lib/libKivTracer.so"
  diff traced.txt replayed.txt || fail "$directory is replayed with other calls"
done
