#!/usr/bin/env bash
# ./test.sh [quick | preset...]
#
# Checks the format of all sources and, with clang-tidy, the sources of the
# product, then builds and tests each preset: debug, asan, tsan and windows
# (under Wine), or the named ones; clang is one more. Each step prints how long
# it took. The last lines are the slowest tests and the sum; the exit status is
# 0 if all passed.
#
# ./test.sh quick checks the format and runs the tests of the recorder, of
# Tracer and of the reader, for the minutes between two changes.
set -euo pipefail
export LC_ALL=C

cd "$(dirname "${BASH_SOURCE[0]}")"
passed=0
failed=0
slowest=$(mktemp)
trap 'rm -f "$slowest"' EXIT

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

configure() { # PRESET OPTION...
  cmake --preset "$1" -DKIV_WARNINGS_AS_ERRORS=ON "${@:2}"
}

check_format() {
  if files '*.h' '*.cpp' '*.c' ':!:*golden*/*.c' |
    xargs -0 -r clang-format --dry-run -Werror; then
    passed=$((passed + 1))
  else
    failure "format, see clang-format -i"
  fi
}

# The product's sources as cmake puts them together for one compilation. Those
# for Windows are left out. What takes longest comes first.
sources_together() { # DIRECTORY
  (cd "$1" && find tools recording backends examples onnx_model arrays src \
    -path '*/Unity/*.cxx' -printf "$1/%p\\0")
}

# clang-tidy reads what is compiled together, each header once. Its analyzer
# skips files that are included, but for those of a main file whose path holds
# the word UnifiedSource. It follows calls a few steps only, and gives up on a
# function after 20,000 states: followed to their ends they take many times as
# long. The check for parameters that are copied takes a third of all the others'
# time; it is left to editors.
check_tidy() {
  local directory=build/UnifiedSource
  if ! configure clang -B "$directory" ||
    ! cmake --build "$directory" --target kiv_embedded_texts; then
    failure "preparing clang-tidy"
    return
  fi
  if sources_together "$directory" |
    xargs -0 -n 1 -P 2 clang-tidy --quiet -p "$directory" \
      --checks=-performance-unnecessary-value-param \
      --extra-arg=-Xclang --extra-arg=-analyzer-config \
      --extra-arg=-Xclang --extra-arg=mode=shallow,max-nodes=20000 \
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
  sed -nE "s/^ *[0-9]+\/[0-9]+ Test +#[0-9]+: ([^ ]+) .* ([0-9.]+) sec.*/\2 s  $2: \1/p" \
    "$1" >>"$slowest"
}

run_preset() { # PRESET [quick]
  local options=() build=() tests=()
  [ "$1" != windows ] || options=(-DKIV_OPTIMIZE_RECORDER_ONLY=ON)
  if [ "${2:-}" = quick ]; then
    build=(--target kiv_quick_tests)
    tests=(-L quick)
  fi
  if ! configure "$1" "${options[@]}" ||
    ! cmake --build --preset "$1" --parallel 2 "${build[@]}"; then
    failure "building preset $1"
    return
  fi
  local output=build/$1/ctest_output.txt
  # Three at a time, since some wait more than they work.
  ctest --preset "$1" -j3 --output-on-failure "${tests[@]}" 2>&1 |
    tee "$output" || true
  count_tests "$output" "$1"
}

main() {
  tools/setup.sh
  step format check_format
  if [ "${1:-}" = quick ]; then
    step debug run_preset debug quick
  else
    step clang-tidy check_tidy
    local presets=("$@") preset
    [ $# -gt 0 ] || presets=(debug asan tsan windows)
    for preset in "${presets[@]}"; do
      step "$preset" run_preset "$preset"
    done
  fi
  echo "the slowest tests:"
  sort -rn "$slowest" | sed -n 1,10p
  echo "$passed passed, $failed failed in $((SECONDS / 60)) min $((SECONDS % 60)) s"
  [ "$failed" -eq 0 ]
}

main "$@"
