#!/bin/sh
# replay_project_test.sh SOURCE_TREE SAMPLE BACKEND C_COMPILER C_FLAGS \
#   WORK_DIRECTORY KIV_RECORDING
#
# Builds and runs recordings through the replay project as a user does. The
# backend prints its calls and refuses the one that KIV_REFUSE names. Whatever
# ends a compiled recording ends kiv-recording replay in the same way.
set -eu

source=$1 sample=$2 backend=$3 compiler=$4 flags=$5 work=$6 recorder=$7

fail() {
  echo "FAILED: $*" >&2
  exit 1
}

configure() { # BUILD OPTIONS...
  build=$1
  shift
  cmake -G Ninja -S "$source/replay" -B "$build" \
    -DCMAKE_C_COMPILER="$compiler" -DCMAKE_C_FLAGS="$flags" \
    -DKIV_RECORDING="$recorder" "$@"
}

# Runs a command and compares its exit status.
expect_status() { # STATUS COMMAND...
  expected=$1
  shift
  status=0
  "$@" >output.txt 2>&1 || status=$?
  [ "$status" -eq "$expected" ] ||
    fail "'$*' returned $status instead of $expected: $(cat output.txt)"
}

expect_output() { # TEXT
  printf '%s\n' "$1" | tr ' ' '\n' | diff - output.txt || fail "other output"
}

expect_in_output() { # TEXT
  tr -s ' \n' '  ' <output.txt | grep -qF -- "$1" ||
    fail "no '$1' in: $(cat output.txt)"
}

# Both ways end with that status and the text in their output.
expect_both() { # STATUS TEXT
  expect_status "$1" build/replay
  expect_in_output "$2"
  expect_status "$1" "$recorder" replay "a recording" --backend "$backend"
  expect_in_output "$2"
}

# Makes the recording one that ends behind the first line with TEXT.
cut_behind() { # TEXT
  sed "/$1/q" "$sample/saver_output.c" >"a recording/saver_output.c"
}

first_calls='backendCreate contextCreate graphCreate tensorCreateGraphTensor
tensorCreateGraphTensor tensorCreateGraphTensor graphAddNode'
calls="$first_calls graphFinalize graphExecute contextFree backendFree"

rm -rf "$work"
mkdir -p "$work/a recording"
cd "$work"
cp "$sample/saver_output.c" "$sample/params.bin" "a recording"

# A complete recording, its path relative to where cmake was called. It finds
# its data, so it runs there.
configure build -DRECORDING="a recording" -DBACKEND="$backend" \
  -DREPLAY_ARGS='-l verbose' >configure.txt
expect_status 0 cmake --build build --target run
expect_in_output "11 calls, nothing changed"
expect_in_output "logCreate backendCreate"
expect_in_output "contextFree backendFree logFree"
expect_status 0 build/replay
expect_output "$calls"

# Arguments and the exit status.
expect_status 255 build/replay --bogus
expect_in_output "Usage: build/replay [options]"
export KIV_REFUSE=graphAddNode KIV_REFUSE_STATUS=7003
line=$(grep -n graphAddNode "a recording/saver_output.c" | cut -d: -f1)
expect_both $((7003 % 256)) \
  "graphAddNode ERROR! Line $line with error value: 7003 "
expect_in_output KIV_TENSOR_ERROR_ALREADY_EXISTS
KIV_REFUSE_STATUS=5120
expect_both 1 'with error value: 5120'
expect_status 1 cmake --build build --target run
KIV_REFUSE_STATUS=1000
expect_both 0 "KIV feature/API not supported graphFinalize"
unset KIV_REFUSE

# A library that will not do is refused before the first call.
KIV_REFUSE=getProviders KIV_REFUSE_STATUS=4000 expect_both 1 4000
for lacked in providers graphFinalize; do
  KIV_LACK=$lacked
  export KIV_LACK
  expect_both 1 "$([ $lacked = providers ] && echo provider || echo $lacked)"
  ! grep -q backendCreate output.txt || fail "a call was made"
done
unset KIV_LACK

# So is a data file that is not the recording's.
truncate -s -1 "a recording/params.bin"
size=$(wc -c <"$sample/params.bin")
expect_both 2 "$((size - 1))"
expect_in_output "$size"
truncate -s +2 "a recording/params.bin"
expect_both 2 "$((size + 1))"
cp "$sample/params.bin" "a recording"

# The recording changes: its client died in the middle of a later call.
cut_behind 'graphFinalize'
cp "a recording/saver_output.c" before.c
expect_status 0 cmake --build build
expect_in_output "gave 7 whole calls an end"
expect_status 0 build/replay
expect_output "$first_calls"
cmp before.c "a recording/saver_output.c" || fail "the recording was changed"
cut_behind 'int main'
expect_status 1 cmake --build build
expect_in_output "holds no whole program header"

# Line ends of Windows, other indentation, a footer that says more, a call of
# the person's own: compiled as it is.
sed -e 's/$/\r/; s/^   /\t/' -e "s/fclose(fp)) error = -1;/&\
  puts(\"changed\");/" "$sample/saver_output.c" >"a recording/saver_output.c"
expect_status 0 cmake --build build
expect_in_output "11 calls, nothing changed"
cmp build/replay_program/recorded_program.c "a recording/saver_output.c" ||
  fail "the changed program was changed again"
expect_status 0 build/replay
expect_in_output "$calls changed"

# Local variables of far more than the usual eight megabytes. The address of
# one is passed on, so that it is there whatever the compiler makes of it.
sed 's/^   Kiv_BackendHandle_t backend_0;/   char large[40 << 20]; large[0] = 0;\
&/; s/backendFree(backend_0)/backendFree(large)/' \
  "$sample/saver_output.c" >"a recording/saver_output.c"
expect_status 0 cmake --build build
expect_status 0 build/replay
expect_output "$calls"

# Bytes of more than the 2 GiB that a program usually reaches.
big=''
for i in 0 1 2; do
  big="$big   static uint8_t big_$i[1ul << 30]; big_$i[0] = 1;"
done
sed "s/^   Kiv_BackendHandle_t backend_0;/$big\\
&/" "$sample/saver_output.c" >"a recording/saver_output.c"
expect_status 0 cmake --build build
expect_status 0 build/replay
expect_output "$calls"

# Other names of the model file, and settings that cannot be.
mkdir other empty
cp "$sample/params.bin" other
cp "$sample/saver_output.c" other/first.c
configure named -DRECORDING="$work/other" -DBACKEND="$backend" >configure.txt
expect_status 0 cmake --build named --target run
cp other/first.c other/second.c
expect_refused() { # MESSAGE OPTIONS...
  message=$1
  shift
  expect_status 1 configure refused "$@"
  expect_in_output "$message"
  rm -rf refused
}
expect_refused 'several C files (first.c, second.c)' \
  -DRECORDING=other -DBACKEND="$backend"
expect_refused 'holds no model file third.c' \
  -DRECORDING=other -DBACKEND="$backend" -DMODEL_FILE=third.c
expect_refused 'holds no model file' -DRECORDING=empty -DBACKEND="$backend"
expect_refused "there is no directory $work/nowhere" \
  -DRECORDING=nowhere -DBACKEND="$backend"
expect_refused 'with RECORDING' -DBACKEND="$backend"
expect_refused 'with BACKEND' -DRECORDING=other
expect_refused "there is no file $work/libNothing.so" \
  -DRECORDING=other -DBACKEND=libNothing.so
configure named -DMODEL_FILE=second.c >configure.txt
expect_status 0 cmake --build named --target run
expect_in_output "Reading $work/other/second.c"

# Any character in a path. A library of another name is taken for what it is.
strange='a "b" #c $d | e;f\g '"'h'"
mkdir "$strange"
cp "$sample"/* "$strange"
cp "$backend" "$strange/lib 1.so"
configure strange_build -DRECORDING="$strange" \
  -DBACKEND="$strange/lib 1.so" >configure.txt
expect_status 0 cmake --build strange_build
expect_status 0 strange_build/replay
expect_output "$calls"

# The installed project finds the installed headers.
mkdir -p prefix/share/kiv-saver prefix/include
cp -r "$source/replay" prefix/share/kiv-saver
cp -r "$source/include" prefix/include/kiv
source=$work/prefix/share/kiv-saver
mkdir prefix/bin
cp "$recorder" prefix/bin
recorder=''
configure installed -DRECORDING="$work/other" -DMODEL_FILE=first.c \
  -DBACKEND="$backend" >configure.txt
grep -q "KIV_INCLUDE_DIR:PATH=$work/prefix/include/kiv" installed/CMakeCache.txt ||
  fail "the installed headers were not found"
expect_status 0 cmake --build installed
