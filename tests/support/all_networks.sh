#!/usr/bin/env bash
# Shell functions for scripts that take every network below a directory:
#
#   source all_networks.sh
#   examine() { bash compare_calls.sh ... "$1"; }
#   all_networks examine identical /usr/share/libonnx-testdata
#
# prints how many networks there are, how many the client accepted, which are
# those for which the function did not end with 77, and how many were
# "identical", for which it ended with 0; then a line for each of the others: "-"
# was refused, "~" fails for a reason outside (2), and "!" is wrong. The status
# is 0 if none is wrong.

# Runs the function for one network, on its own, and keeps what it printed.
one_network() { # FUNCTION RESULTS NETWORKS NETWORK
  local status=0 name
  name=$(tr / _ <<<"${4#"$3"/}")
  "$1" "$4" >"$2/$name" 2>&1 || status=$?
  echo "$status" >"$2/$name.status"
}

all_networks() { # FUNCTION WORD NETWORKS
  local results status mark good refused outside total
  results=$(mktemp -d)
  export -f one_network "${1?}"
  find "$3" -name '*.onnx' -print0 | sort -z |
    xargs -0 -P "$(nproc)" -I{} bash -c 'one_network "$@"' _ "$1" "$results" "$3" {}
  good=$(cat "$results"/*.status | grep -cx 0 || true)
  refused=$(cat "$results"/*.status | grep -cx 77 || true)
  outside=$(cat "$results"/*.status | grep -cx 2 || true)
  total=$(find "$results" -name '*.status' | wc -l)
  echo "networks: $total, accepted: $((total - refused)), $2: $good," \
    "fail for a reason outside: $outside"
  for status in "$results"/*.status; do
    case $(cat "$status") in
      0) continue ;;
      2) mark='~' ;;
      77) mark='-' ;;
      *) mark='!' ;;
    esac
    echo "$mark $(basename "${status%.status}"):" \
      "$(tr '\n' ' ' <"${status%.status}" | cut -c 1-400)"
  done
  rm -rf "$results"
  [ "$((good + refused + outside))" -eq "$total" ]
}
