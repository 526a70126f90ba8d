#!/usr/bin/env bash
# tools/check_compilers.sh [COMPILER...]
#
# Builds everything but the tests with gcc, clang and MinGW, or with the named
# ones, at -O0, -O2 and -O3, with and without optimisation at link time, as C++20
# and C++23, and prints each build's warnings. A compiler's first build compiles
# the sources one by one, so that it sees what one of them lacks; the others
# compile those of a folder together. The output of a build with warnings stays in
# build/compilers. The exit status is 0 if none has any. All 36 builds take an
# hour or more on two cores.
set -euo pipefail
export LC_ALL=C

cd "$(dirname "${BASH_SOURCE[0]}")/.."
directory=build/compilers
faulty=0

check() { # NAME OPTION...
  local start=$SECONDS log="$directory/$1.txt" tree=$directory/tree warnings
  rm -rf "$tree"
  if ! { cmake -S . -B "$tree" -G Ninja -DKIV_BUILD_TESTS=OFF \
    -DCMAKE_UNITY_BUILD_BATCH_SIZE=32 "${@:2}" &&
    cmake --build "$tree" --parallel 2; } >"$log" 2>&1; then
    echo "$1: does not build, see $log"
    faulty=$((faulty + 1))
    return
  fi
  # Warnings of a link with optimisation have no option's name.
  warnings=$(grep -E '(^|[^-])warning:' "$log" | sort -u || true)
  if [ -n "$warnings" ]; then
    echo "$1: warnings, see $log"
    echo "$warnings"
    faulty=$((faulty + 1))
    return
  fi
  rm "$log"
  echo "$1: no warnings, $((SECONDS - start)) s"
}

check_levels() { # COMPILER OPTION...
  local level lto standard together=OFF
  for level in 0 2 3; do
    for lto in OFF ON; do
      for standard in 20 23; do
        check "$1 -O$level LTO=$lto C++$standard" "${@:2}" \
          -DCMAKE_BUILD_TYPE=Release -DCMAKE_C_FLAGS_RELEASE="-O$level" \
          -DCMAKE_CXX_FLAGS_RELEASE="-O$level" \
          -DCMAKE_INTERPROCEDURAL_OPTIMIZATION="$lto" \
          -DCMAKE_CXX_STANDARD="$standard" -DCMAKE_UNITY_BUILD="$together"
        together=ON
      done
    done
  done
}

compilers=("$@")
[ $# -gt 0 ] || compilers=(gcc clang MinGW)
mkdir -p "$directory"
for compiler in "${compilers[@]}"; do
  case $compiler in
    gcc) check_levels gcc -DCMAKE_C_COMPILER=gcc -DCMAKE_CXX_COMPILER=g++ ;;
    clang)
      check_levels clang -DCMAKE_C_COMPILER=clang -DCMAKE_CXX_COMPILER=clang++
      ;;
    MinGW)
      check_levels MinGW -DCMAKE_TOOLCHAIN_FILE=cmake/toolchains/mingw.cmake
      ;;
    *)
      echo "check_compilers.sh: there is no compiler '$compiler'; gcc, clang" \
        "and MinGW are" >&2
      exit 2
      ;;
  esac
done
echo "$faulty builds with warnings or failures"
[ "$faulty" -eq 0 ]
