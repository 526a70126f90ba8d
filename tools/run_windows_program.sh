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
mkdir -p "$WINEPREFIX"
used=$WINEPREFIX/used

# The services that Wine's first program starts keep that program's output open
# as long as they run, and they end some time after the last program. So this
# script starts them, with no output, before a program finds none or finds them
# ending: they stay for ten minutes, and are woken after five. One of several
# scripts does so, the others wait.
if [ -z "$(find "$used" -mmin -5 2>/dev/null)" ]; then
  (
    flock 9
    if [ -z "$(find "$used" -mmin -5)" ]; then
      [ -e "$WINEPREFIX/system.reg" ] ||
        { "$wine" wineboot --init; "$server" --wait || true; } 9>&-
      "$server" -p600 9>&- || true
      "$wine" cmd /c exit 9>&-
      touch "$used"
    fi
  ) 9>"$WINEPREFIX/lock" </dev/null >/dev/null 2>&1
fi
touch "$used"
exec "$wine" "$@"
