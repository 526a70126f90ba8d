#!/usr/bin/env bash
# tools/setup.sh [aarch64]
#
# Installs what the build, the tests and the demo need and what is missing, and
# brings ONNX Runtime into the user's cache. Runs nothing else when all is there.
# With aarch64 also what the preset of that name needs.
set -euo pipefail

packages=(
  g++ clang cmake ninja-build binutils git systemtap-sdt-dev pkgconf dpkg-dev file
  libgtest-dev libgmock-dev valgrind
  libcli11-dev libfmt-dev nlohmann-json3-dev help2man
  libonnx-dev libprotobuf-dev protobuf-compiler libonnx-testdata
  libpng-dev libjpeg-dev
  clang-format clang-tidy
  g++-mingw-w64-x86-64-posix googletest wine wine64
)
case $* in
  '') ;;
  aarch64) packages+=(g++-aarch64-linux-gnu qemu-user) ;;
  *)
    echo "setup.sh: there is nothing for '$*'; aarch64 is the only word" >&2
    exit 2
    ;;
esac

# ONNX Runtime executes networks for the backend in backends/onnxruntime. Its
# package for Node.js holds the library for several systems.
ort_package=onnxruntime-node
ort_version=1.16.3
ort_sha256=5896383cd3449c5838a46fcf1490865ab90487773a3bb018ea6a5f12b17e2667
ort_file=libonnxruntime.so.$ort_version
ort_member=package/bin/napi-v3/linux/x64/$ort_file
ort_directory=${XDG_CACHE_HOME:-$HOME/.cache}/kiv-saver/onnxruntime-$ort_version

# Takes a pattern, too; then one package that fits it is enough.
is_installed() {
  dpkg-query --show --showformat='${db:Status-Status}\n' "$1" 2>/dev/null |
    grep -qx installed
}

# ONNX Runtime is optional: without it the tests that need it are skipped.
without_ort() { # WHY
  echo "setup.sh: there is no ONNX Runtime: $1; tests that need it are skipped" >&2
}

ort_is_wanted() {
  [ "$(uname -sm)" = "Linux x86_64" ] && [ ! -f "$ort_directory/$ort_file" ]
}

install_packages() {
  if ! command -v dpkg-query >/dev/null; then
    echo "setup.sh: no Debian system; needed are: ${packages[*]}" >&2
    return
  fi
  local missing=() package
  for package in "${packages[@]}"; do
    is_installed "$package" || missing+=("$package")
  done
  # clang's sanitizers: the compiler may bring the package of its own version.
  is_installed 'libclang-rt*-dev' || missing+=(libclang-rt-dev)
  # npm may come with another package of Node.js.
  if ort_is_wanted && ! command -v npm >/dev/null; then missing+=(npm); fi
  [ ${#missing[@]} -gt 0 ] || return 0

  local as_root=()
  [ "$(id -u)" -eq 0 ] || as_root=(sudo)
  echo "Installing ${missing[*]}"
  "${as_root[@]}" apt-get update
  "${as_root[@]}" env DEBIAN_FRONTEND=noninteractive \
    apt-get install --yes --no-install-recommends "${missing[@]}"
}

# Leaves the library in a directory, or says why not.
fetch_ort() { # DIRECTORY
  local archive=$1/$ort_package-$ort_version.tgz
  echo "Fetching $ort_package@$ort_version"
  if ! (cd "$1" && npm pack --silent "$ort_package@$ort_version" >/dev/null); then
    without_ort "npm cannot fetch $ort_package@$ort_version"
  elif ! echo "$ort_sha256  $archive" | sha256sum --check --status; then
    without_ort "the package has another SHA-256 than $ort_sha256"
  elif ! tar -xzf "$archive" -C "$1" --strip-components=5 "$ort_member"; then
    without_ort "the package holds no $ort_member"
  else
    return 0
  fi
  return 1
}

# The library appears in the cache whole or not at all.
install_ort() {
  if [ "$(uname -sm)" != "Linux x86_64" ]; then
    without_ort "it is fetched for Linux on x86-64 only"
    return
  fi
  ort_is_wanted || return 0
  if ! command -v npm >/dev/null; then
    without_ort "there is no npm to fetch it with"
    return
  fi
  mkdir -p "$ort_directory"
  local work
  work=$(mktemp -d "$ort_directory/fetching.XXXXXX")
  if fetch_ort "$work"; then
    mv "$work/$ort_file" "$ort_directory/$ort_file"
  fi
  rm -rf "$work"
}

install_packages
install_ort
