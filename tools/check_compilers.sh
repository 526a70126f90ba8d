#!/usr/bin/env bash
# tools/check_compilers.sh [CMAKE-OPTION...]
#
# Builds everything but the tests with gcc, clang and MinGW, at -O0, -O2 and -O3,
# with and without optimisation at link time, as C++20 and C++23, each into
# build/compilers, and prints the warnings of each build. The exit status is 0 if
# there are none. It takes long; further options go to cmake, for example
# -DKIV_BUILD_TESTS=ON or -DCMAKE_UNITY_BUILD=ON.
set -euo pipefail
export LC_ALL=C

cd "$(dirname "${BASH_SOURCE[0]}")/.."
directory=build/compilers
log=$directory.log
faulty=0

check() { # NAME OPTION...
  local start=$SECONDS warnings
  rm -rf "$directory"
  if ! { cmake -S . -B "$directory" -G Ninja -DKIV_BUILD_TESTS=OFF "${@:2}" &&
    cmake --build "$directory" --parallel 2; } >"$log" 2>&1; then
    echo "$1: does not build"
    tail -20 "$log"
    faulty=$((faulty + 1))
    return
  fi
  # Warnings of a link with optimisation have no option's name.
  warnings=$(grep -cE '(^|[^-])warning:' "$log" || true)
  echo "$1: $warnings warnings, $((SECONDS - start)) s"
  if [ "$warnings" -gt 0 ]; then
    grep -E '(^|[^-])warning:' "$log" | sort -u
    faulty=$((faulty + 1))
  fi
}

check_levels() { # COMPILER OPTION...
  local level lto standard
  for level in 0 2 3; do
    for lto in OFF ON; do
      for standard in 20 23; do
        check "$1 -O$level LTO=$lto C++$standard" "${@:2}" \
          -DCMAKE_BUILD_TYPE=Release -DCMAKE_C_FLAGS_RELEASE="-O$level" \
          -DCMAKE_CXX_FLAGS_RELEASE="-O$level" \
          -DCMAKE_INTERPROCEDURAL_OPTIMIZATION="$lto" \
          -DCMAKE_CXX_STANDARD="$standard"
      done
    done
  done
}

mkdir -p build
check_levels gcc -DCMAKE_C_COMPILER=gcc -DCMAKE_CXX_COMPILER=g++ "$@"
check_levels clang -DCMAKE_C_COMPILER=clang -DCMAKE_CXX_COMPILER=clang++ "$@"
check_levels MinGW -DCMAKE_TOOLCHAIN_FILE=cmake/toolchains/mingw.cmake "$@"
echo "$faulty builds with warnings or failures"
[ "$faulty" -eq 0 ]
