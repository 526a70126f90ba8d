#!/usr/bin/env bash
# Installs what the build, the tests and the demo need and what is missing.
# Runs nothing else when all is there.
set -euo pipefail

packages=(
  g++ clang cmake ninja-build binutils git systemtap-sdt-dev
  libgtest-dev libgmock-dev valgrind
  libcli11-dev libfmt-dev nlohmann-json3-dev help2man
  libonnx-dev libprotobuf-dev protobuf-compiler libonnx-testdata
  libpng-dev libjpeg-dev
  clang-format clang-tidy
  g++-mingw-w64-x86-64-posix googletest wine wine64
)

# Takes a pattern, too; then one package that fits it is enough.
is_installed() {
  dpkg-query --show --showformat='${db:Status-Status}\n' "$1" 2>/dev/null |
    grep -qx installed
}

if ! command -v dpkg-query >/dev/null; then
  echo "setup.sh: no Debian system; needed are: ${packages[*]}" >&2
  exit 0
fi

missing=()
for package in "${packages[@]}"; do
  is_installed "$package" || missing+=("$package")
done
# clang's sanitizers: the compiler may bring the package of its own version.
is_installed 'libclang-rt*-dev' || missing+=(libclang-rt-dev)
[ ${#missing[@]} -eq 0 ] && exit 0

as_root=()
[ "$(id -u)" -eq 0 ] || as_root=(sudo)
echo "Installing ${missing[*]}"
"${as_root[@]}" apt-get update
"${as_root[@]}" env DEBIAN_FRONTEND=noninteractive \
  apt-get install --yes --no-install-recommends "${missing[@]}"
