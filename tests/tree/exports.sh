#!/usr/bin/env bash
# A library exports the given names and no other.
#
#   exports.sh LIBRARY NAME...
set -euo pipefail
library=$1
shift
diff <(nm -D --defined-only "$library" | awk '{print $3}' | sort) \
     <(printf '%s\n' "$@" | sort)
