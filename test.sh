#!/usr/bin/env bash
# ./test.sh [preset...]
#
# Checks the format of all sources and, with clang-tidy, the sources of the
# product, then builds and tests each preset: debug, clang, asan, tsan and
# windows (under Wine), or the named ones. Each step prints how long it took.
# The last line sums up; the exit status is 0 if all passed.
set -euo pipefail
export LC_ALL=C

cd "$(dirname "${BASH_SOURCE[0]}")"
presets=("$@")
[ $# -gt 0 ] || presets=(debug clang asan tsan windows)
passed=0
failed=0

failure() {
  failed=$((failed + 1))
  echo "FAILED: $*" >&2
}

# Runs a step and prints how long it took.
step() { # NAME COMMAND...
  local start=$SECONDS
  echo "== $1"
  "${@:2}"
  echo "$1 took $((SECONDS - start)) s"
}

# The names of the repository's files, each ended by a zero byte.
files() { # PATTERN...
  git -c safe.directory="$PWD" ls-files -z -- "$@"
}

check_format() {
  if files '*.h' '*.cpp' '*.c' ':!:*golden*/*.c' |
    xargs -0 -r clang-format --dry-run -Werror; then
    passed=$((passed + 1))
  else
    failure "format, see clang-format -i"
  fi
}

# clang-tidy sees the sources as clang compiles them here, so those for Windows
# are left out.
check_tidy() {
  if ! cmake --preset clang -DKIV_WARNINGS_AS_ERRORS=ON ||
    ! cmake --build --preset clang --target kiv_embedded_texts; then
    failure "preparing clang-tidy"
    return
  fi
  if files src/'*.cpp' backends/'*.cpp' examples/'*.c' examples/'*.cpp' \
    arrays/'*.cpp' onnx_model/'*.cpp' recording/'*.cpp' tools/'*.cpp' ':!:*_windows.cpp' |
    xargs -0 -n 4 -P 2 clang-tidy --quiet -p build/clang \
      2> >(grep -vE '^[0-9]+ warnings? generated' >&2); then
    passed=$((passed + 1))
  else
    failure "clang-tidy, see .clang-tidy"
  fi
}

# Adds up the line "100% tests passed, 0 tests failed out of 20", where skipped
# tests count as passed.
count_tests() { # OUTPUT PRESET
  local summary total bad skipped
  summary=$(sed -nE \
    's/^[0-9]+% tests passed, ([0-9]+) tests? failed out of ([0-9]+)$/\1 \2/p' \
    "$1")
  if [ -z "$summary" ]; then
    failure "no tests were run"
    return
  fi
  read -r bad total <<<"$summary"
  skipped=$(grep -cE '\*\*\*Skipped' "$1" || true)
  failed=$((failed + bad))
  passed=$((passed + total - bad - skipped))
  echo "$2: $((total - bad - skipped)) passed, $bad failed, $skipped skipped"
}

run_preset() { # PRESET
  if ! cmake --preset "$1" -DKIV_WARNINGS_AS_ERRORS=ON ||
    ! cmake --build --preset "$1" --parallel 2; then
    failure "building preset $1"
    return
  fi
  local output=build/$1/ctest_output.txt
  ctest --preset "$1" -j2 --output-on-failure 2>&1 | tee "$output" || true
  count_tests "$output" "$1"
}

main() {
  tools/setup.sh
  step format check_format
  step clang-tidy check_tidy
  local preset
  for preset in "${presets[@]}"; do step "$preset" run_preset "$preset"; done
  echo "$passed passed, $failed failed"
  [ "$failed" -eq 0 ]
}

main
