#!/usr/bin/env bash
# ./test.sh [preset...]
#
# Checks the format of all sources, then builds and tests each preset: debug,
# clang, asan, tsan and windows (under Wine), or those named. The last line sums
# up; the exit status tells whether all passed.
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

check_format() {
  echo "== format"
  if git -c safe.directory="$PWD" ls-files -z -- '*.h' '*.cpp' '*.c' \
    ':!:*golden*/*.c' |
    xargs -0 -r clang-format --dry-run -Werror; then
    passed=$((passed + 1))
  else
    failure "format, see clang-format -i"
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
  echo "== $1"
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
  check_format
  local preset
  for preset in "${presets[@]}"; do run_preset "$preset"; done
  echo "$passed passed, $failed failed"
  [ "$failed" -eq 0 ]
}

main
