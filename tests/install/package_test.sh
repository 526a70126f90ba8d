#!/usr/bin/env bash
# CPack's packages serve the outside client where they are unpacked: the archive
# in any directory, Debian's in a copy of this system, in which dpkg installs
# them. A user who may not have such a copy gets them unpacked.
#
#   package_test.sh BUILD_DIRECTORY OUTSIDE_SOURCES
set -euo pipefail
build=$1 sources=$2
here=$(cd "$(dirname "${BASH_SOURCE[0]}")" && pwd)
work=$(mktemp -d)
trap 'rm -rf "$work"' EXIT
cd "$work"
if ! command -v dpkg-shlibdeps >/dev/null; then
  echo "SKIPPED: there is no dpkg-shlibdeps (Debian's dpkg-dev)"
  exit 77
fi

cpack --config "$build/CPackConfig.cmake" -B "$work" >log 2>&1 || {
  cat log
  exit 1
}
mkdir archive && tar -xzf ./*.tar.gz -C archive --strip-components=1
mkdir archive_session && cd archive_session
bash "$here/session.sh" "$work/archive" "$sources"
cd ..

# The copy is the system with a layer above it, for this process alone.
install_in_copy() {
  mount -t tmpfs tmpfs layer && mkdir layer/{above,work,root} &&
    mount -t overlay overlay layer/root \
      -o lowerdir=/,upperdir=layer/above,workdir=layer/work &&
    mount --rbind /proc layer/root/proc &&
    mount --rbind /dev layer/root/dev || return 77
  local packages=layer/root/packages
  mkdir "$packages"
  cp ./*.deb "$here/session.sh" "$sources"/* "$packages"
  # Clients open the library by its plain name without the headers.
  chroot layer/root bash -euc 'cd /packages
    { dpkg --install ./libkiv-saver1_*.deb && test -e /usr/lib/libKivSaver.so &&
      dpkg --install ./*.deb; } >log 2>&1 || { cat log; exit 1; }
    bash session.sh /usr .'
}
export -f install_in_copy
export here sources
mkdir layer
status=77
if unshare --mount true; then
  status=0
  unshare --mount bash -c install_in_copy || status=$?
fi
if [ "$status" -eq 77 ]; then
  echo "This user may not mount a copy of the system: dpkg is not tried."
  for package in ./*.deb; do dpkg-deb -x "$package" unpacked; done
  bash "$here/session.sh" "$work/unpacked/usr" "$sources"
  exit
fi
exit "$status"
