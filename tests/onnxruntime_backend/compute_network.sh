#!/usr/bin/env bash
# Computes a network from its stored inputs and compares the outputs with the
# stored ones: by the client itself, and by the replay of what the client had
# recorded.
#
#   compute_network.sh CLIENT SAVER KIV_RECORDING CHECKING_BACKEND BACKEND NETWORK
#
# The exit status is 77 where the client does not accept the network, and where
# there is no ONNX Runtime.
set -euo pipefail
client=$1 saver=$2 recorder=$3 checking=$4 network=$6
export KIV_CHECKED_BACKEND=$5

work=$(mktemp -d)
trap 'rm -rf "$work"' EXIT

if [ ! -f "${KIV_ONNXRUNTIME:-}" ]; then
  echo "skipped: there is no ONNX Runtime at ${KIV_ONNXRUNTIME:-KIV_ONNXRUNTIME}"
  exit 77
fi

# ONNX Runtime leaves some bytes of its own behind.
echo 'leak:libonnxruntime.so' >"$work/leaks"
export LSAN_OPTIONS=suppressions=$work/leaks:print_suppressions=0

data=$(dirname "$network")/test_data_set_0
export KIV_EXPECTED=$data
inputs=()
for ((i = 0; ; ++i)); do
  [ -f "$data/input_$i.pb" ] || break
  inputs+=(--input "$data/input_$i.pb")
done

# Ends the script unless the step compares outputs.
compute() { # STEP COMMAND...
  local status=0
  "${@:2}" >"$work/out" 2>"$work/err" || status=$?
  if grep -q 'not accepted' "$work/err"; then
    cat "$work/err"
    exit 77
  fi
  if [ "$status" -ne 0 ] || ! grep -qE '^checked [1-9]' "$work/out"; then
    echo "FAILED, $1, status $status:"
    cat "$work/out" "$work/err"
    exit 1
  fi
}

compute client "$client" --backend "$checking" "${inputs[@]}" "$network"
direct=$(grep '^checked' "$work/out")
"$client" --backend "$saver" --output-dir "$work/recording" "${inputs[@]}" \
  "$network" >"$work/out" 2>"$work/err" || {
  echo "FAILED, recording:"
  cat "$work/err"
  exit 1
}
compute replay "$recorder" replay "$work/recording" --backend "$checking"
echo "$direct"
