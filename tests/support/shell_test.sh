# What shell tests begin with, behind `set -euo pipefail` and their arguments,
# whose paths are absolute: a directory of their own as the current one, which
# goes when they end, and how they fail.
work=$(mktemp -d)
trap 'rm -rf "$work"' EXIT
cd "$work"

fail() { # WHAT
  echo "FAILED: $1"
  exit 1
}
