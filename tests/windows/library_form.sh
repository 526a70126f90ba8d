#!/usr/bin/env bash
# A library exports the given names and no other, needs no libraries but the
# system's, and is not too large for its users.
#
#   library_form.sh LIBRARY MOST_BYTES NAME...
set -euo pipefail
library=$1 most=$2
shift 2
stripped=$(mktemp)
trap 'rm -f "$stripped"' EXIT

tables=$(x86_64-w64-mingw32-objdump -p "$library")
diff <(sed -nE '/Name Pointer\] Table/,/^$/s/^\t\[ *[0-9]+\].* (\S+)$/\1/p' \
         <<<"$tables" | sort) \
     <(printf '%s\n' "$@" | sort)

foreign=$(sed -nE 's/^\tDLL Name: (.*)$/\1/p' <<<"$tables" |
  grep -vixE '(KERNEL32|ADVAPI32|msvcrt|ntdll)\.dll' || true)
[ -z "$foreign" ] || { echo "needs $foreign"; exit 1; }

x86_64-w64-mingw32-strip -o "$stripped" "$library"
size=$(stat -c %s "$stripped")
echo "$size bytes"
[ "$size" -le "$most" ] || { echo "more than $most"; exit 1; }
