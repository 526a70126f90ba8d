#!/usr/bin/env bash
# The library notes its static probe, with the message as the one argument.
#
#   probe_test.sh LIBRARY
set -euo pipefail
notes=$(readelf --notes --wide "$1" | sed -n '/Provider:/,/Arguments:/p')
grep -q 'Provider: kiv$' <<<"$notes"
grep -qx ' *Name: message' <<<"$notes"
# Eight bytes: a pointer.
grep -qE '^ *Arguments: 8@[^ ]+$' <<<"$notes"
