#!/usr/bin/env bash
# What `cmake --install` leaves, once its prefix is moved, serves a project
# outside the tree: through pkg-config, CMake's find_package, and by hand.
#
#   install_test.sh BUILD_DIRECTORY OUTSIDE_SOURCES CXX_COMPILER
set -euo pipefail
build=$1 sources=$2 compiler=$3
here=$(cd "$(dirname "${BASH_SOURCE[0]}")" && pwd)
# shellcheck source=tests/support/shell_test.sh
source "$(dirname "${BASH_SOURCE[0]}")/../support/shell_test.sh"

cmake --install "$build" --prefix "$work/first" >log || fail "$(cat log)"
mv first prefix
prefix=$work/prefix
recording=$prefix/bin/kiv-recording
bash "$here/session.sh" "$prefix" "$sources"

# Programs of the project; each makes or names the calls of the client.
cmake -G Ninja -S "$sources" -B outside -DCMAKE_PREFIX_PATH="$prefix" \
  -DCMAKE_CXX_COMPILER="$compiler" -DRECORDING="$work/saver_output" >log &&
  cmake --build outside >>log || fail "$(cat log)"
mkdir again
(cd again && ../outside/recorded)
diff -r saver_output again/saver_output || fail "another recording"
for program in traced replayed; do
  KIV_TRACER_OUTPUT=calls.txt "outside/$program"
  diff traced.txt calls.txt || fail "other calls of $program"
done

# The reader through pkg-config, too.
read -ra flags < <(PKG_CONFIG_PATH=$prefix/lib/pkgconfig \
  pkg-config --cflags --libs kiv-recording)
"$compiler" -std=c++20 "$sources/reader.cpp" "${flags[@]}" -o reader
for reader in ./reader outside/reader; do
  KIV_TRACER_OUTPUT=calls.txt "$reader" saver_output \
    "$prefix/lib/libKivTracer.so" >names.txt
  diff traced.txt calls.txt || fail "other calls of $reader"
  diff <(sed 's/(.*//' traced.txt) names.txt || fail "other names by $reader"
done

# The program that writes ONNX models is beside the command.
if [ -e "$build/bin/kiv-recording-export" ]; then
  "$recording" export saver_output -o network >output.txt 2>&1 || true
  ! grep -q 'there is no program' output.txt || fail "$(cat output.txt)"
fi

# Completion in bash offers what the command has; a page for each verb.
# shellcheck disable=SC1091
source "$prefix/share/bash-completion/completions/kiv-recording"
complete_words() { # WORD...
  COMP_WORDS=("$recording" "$@") COMP_CWORD=$# COMPREPLY=()
  _kiv_recording
  echo "${COMPREPLY[*]}"
}
verbs=$(complete_words '')
for verb in $verbs; do
  "$recording" "$verb" --help >/dev/null || fail "completion offers $verb"
  [ ! -d "$build/man" ] ||
    [ -s "$prefix/share/man/man1/kiv-recording-$verb.1" ] ||
    fail "$verb has no page"
done
[[ " $verbs " == *" record "*  && " $verbs " == *" replay "* ]] ||
  fail "completion offers only '$verbs'"
[ "$(complete_words rep)" = replay ] || fail "completion of rep"
[ "$(complete_words replay --back)" = --backend ] || fail "completion of --back"
