#!/usr/bin/env bash
# tools/package.sh [SYSTEM...]
#
# Makes the packages of the named systems, linux and windows, or of both, and
# leaves them in build/packages: three for Debian and a .tar.gz, and a .zip.
set -euo pipefail
cd "$(dirname "${BASH_SOURCE[0]}")/.."
output=$PWD/build/packages

# Builds the preset's products, in a tree of their own, and packs them.
package() { # PRESET
  local tree=$output/$1
  cmake --preset "$1" -B "$tree" -DKIV_BUILD_TESTS=OFF -DKIV_BUILD_EXAMPLES=OFF
  cmake --build "$tree" --parallel
  cpack --config "$tree/CPackConfig.cmake" -B "$tree/packed"
  find "$tree/packed" -maxdepth 1 -type f -exec mv -t "$output" {} +
}

systems=("$@")
[ $# -gt 0 ] || systems=(linux windows)
for system in "${systems[@]}"; do
  case $system in
    linux) package release ;;
    windows) package windows ;;
    *)
      echo "package.sh: there is no system '$system'; linux and windows are" >&2
      exit 2
      ;;
  esac
done
echo "Packages in build/packages:"
find "$output" -maxdepth 1 -type f -printf '%s bytes  %f\n' | sort -k3
