#!/usr/bin/env bash
# Each public header compiles by itself, as C11 and as C++, without a warning.
#
#   headers.sh INCLUDE_DIRECTORY
set -euo pipefail
cd "$1"
flags=(-Wall -Wextra -Wpedantic -Wconversion -Wshadow -Werror -fsyntax-only)
compilers=("gcc -std=c11 -x c" "clang -std=c11 -x c" "g++ -std=c++11 -x c++"
           "clang++ -std=c++20 -x c++")
if command -v x86_64-w64-mingw32-gcc >/dev/null; then
  compilers+=("x86_64-w64-mingw32-gcc -std=c11 -x c")
fi
for header in *.h */*.h; do
  for compiler in "${compilers[@]}"; do
    # shellcheck disable=SC2086  # the flags are words of their own
    $compiler "${flags[@]}" - <<<"#include \"$PWD/$header\"
extern int aDeclaration;" || {
      echo "$header: $compiler"
      exit 1
    }
  done
done
