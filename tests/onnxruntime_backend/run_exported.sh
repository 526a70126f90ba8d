#!/usr/bin/env bash
# Records a network with its stored inputs, exports the recording as a model and
# runs that by ONNX Runtime without the client and the backend: the outputs must
# be the stored ones.
#
#   run_exported.sh CLIENT SAVER KIV_RECORDING RUN_MODEL NETWORK
#
# The exit status is 77 where the client does not accept the network, and where
# there is no ONNX Runtime. It is 2 where ONNX Runtime does not give the stored
# outputs for the network's own file either.
set -euo pipefail
client=$1 saver=$2 recorder=$3 run_model=$4 network=$5

work=$(mktemp -d)
trap 'rm -rf "$work"' EXIT

if [ ! -f "${KIV_ONNXRUNTIME:-}" ]; then
  echo "skipped: there is no ONNX Runtime at ${KIV_ONNXRUNTIME:-KIV_ONNXRUNTIME}"
  exit 77
fi

expected=$(dirname "$network")/test_data_set_0
inputs=()
for ((i = 0; ; ++i)); do
  [ -f "$expected/input_$i.pb" ] || break
  inputs+=(--input "$expected/input_$i.pb")
done

"$client" --backend "$saver" --output-dir "$work/recording" "${inputs[@]}" \
  "$network" >"$work/out" 2>&1 || {
  cat "$work/out"
  if grep -q 'not accepted' "$work/out"; then exit 77; fi
  exit 1
}
"$recorder" export "$work/recording" -o "$work/exported" --test-data \
  >"$work/out" 2>&1 || {
  echo "FAILED, export:"
  cat "$work/out"
  exit 1
}

run() { # MODEL
  "$run_model" "$1" "$work/exported/test_data_set_0" "$expected" \
    >"$work/out" 2>&1 && grep -E '^checked [1-9]' "$work/out"
}

mkdir -p "$work/exported/test_data_set_0"
run "$work/exported/model.onnx" && exit
mv "$work/out" "$work/why"
echo "FAILED, exported: $(cat "$work/why")"
if run "$network" >/dev/null; then exit 1; fi
echo "FAILED, the network's own file: $(cat "$work/out")"
exit 2
