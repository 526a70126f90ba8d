#!/usr/bin/env bash
# run_windows_program.sh PROGRAM ARGUMENT...
#
# Runs a Windows program under Wine, quietly, without a display, and with a
# configuration of the project's own (WINEPREFIX, else build/wine), which the
# first run creates.
set -euo pipefail

tree=$(cd "$(dirname "${BASH_SOURCE[0]}")/.." && pwd)
export WINEPREFIX=${WINEPREFIX:-$tree/build/wine}
export WINEDEBUG=${WINEDEBUG:--all}
# Neither .NET nor a browser is installed or asked for.
export WINEDLLOVERRIDES="mscoree,mshtml="
unset DISPLAY

wine=$(PATH=$PATH:/usr/lib/wine command -v wine64) || {
  echo "run_windows_program.sh: wine64 is not installed" >&2
  exit 1
}
server=${wine%64}server
if [ ! -e "$WINEPREFIX/system.reg" ]; then
  mkdir -p "$WINEPREFIX"
  # One of several first runs creates the configuration, the others wait.
  (
    flock 9
    [ -e "$WINEPREFIX/system.reg" ] ||
      { "$wine" wineboot --init; "$server" --wait || true; }
  ) 9>"$WINEPREFIX/lock" >/dev/null 2>&1
fi
# A program that starts just when the server of the last one ends comes to
# nothing, so the server stays for a while. The services that the first program
# starts must not keep this one's output open.
if "$server" -p60 >/dev/null 2>&1; then
  "$wine" cmd /c exit </dev/null >/dev/null 2>&1
fi
exec "$wine" "$@"
