# The beginning of a shell test, which sources it behind `set -euo pipefail` and
# its arguments; paths among these are absolute. The test gets a directory of its
# own as the current one, removed when it ends, and the function fail.
work=$(mktemp -d)
trap 'rm -rf "$work"' EXIT
cd "$work"

fail() { # WHAT
  echo "FAILED: $1"
  exit 1
}
