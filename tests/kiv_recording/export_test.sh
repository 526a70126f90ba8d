#!/usr/bin/env bash
# Networks of recordings as ONNX models: recorded again, they make the same
# calls, and computed, they give the same outputs.
#
#   export_test.sh KIV_RECORDING ONNX_CLIENT ADDING_CLIENT SAVER ADDER NETWORK...
set -euo pipefail

recorder=$1 onnx_client=$2 adding_client=$3 saver=$4 adder=$5
shift 5
# shellcheck source=tests/support/shell_test.sh
source "$(dirname "${BASH_SOURCE[0]}")/../support/shell_test.sh"

run() { # STATUS VERB ARGUMENT...
  local expected=$1 status=0
  shift
  "$recorder" "$@" >output 2>&1 || status=$?
  [ "$status" -eq "$expected" ] ||
    fail "'$*' ended with $status instead of $expected: $(cat output)"
}

prints() { # TEXT
  grep -qF -- "$1" output || fail "no '$1' in: $(cat output)"
}

external=0
for network in "$@"; do
  rm -rf first second model
  "$onnx_client" "$network" --backend "$saver" --output-dir first >/dev/null 2>&1
  run 0 export first -o model --test-data
  [ ! -e model/params.bin ] || external=$((external + 1))
  inputs=()
  for input in model/test_data_set_0/*; do inputs+=(--input "$input"); done
  "$onnx_client" model/model.onnx --backend "$saver" --output-dir second \
    "${inputs[@]}" >/dev/null 2>&1
  run 0 diff first second
done
[ "$external" -ge 1 ] || fail "no network keeps weights in the data file"
cp -r model before
run 1 export first -o model
prints "is there already"
diff -r before model || fail "the model was changed"
[ "$(stat -c %h model/params.bin)" -eq 1 ] || fail "the copy is a link"
run 0 export first -o linked --link
[ "$(stat -c %h linked/params.bin)" -eq 2 ] || fail "no link"
run 1 export first -o none --graph other
prints 'no graph "other"'

# What the client computes with the model is what the replay computes.
"$adding_client" --backend "$saver" --output-dir adding add
run 0 export adding -o model2 --test-data
prints "3 nodes, 1 initializers"
if grep -q "no platform option" output; then fail "the version was recorded: $(cat output)"; fi
"$onnx_client" model2/model.onnx --backend "$adder" --save-outputs saved \
  --shape x=2x3 --input x=model2/test_data_set_0/input_0.pb >shown
grep -qxF 'y: float32 [2 x 3]: 6 7.5 9.75 9 9 9' shown ||
  fail "other outputs: $(cat shown)"
"$recorder" extract adding --execution 0 -o inputs >/dev/null
cp inputs/main%20graph/0/x.npy .
compare() { # STATUS
  local status=0
  "$onnx_client" model2/model.onnx --backend "$adder" --compare saved \
    --input x.npy >shown 2>&1 || status=$?
  [ "$status" -eq "$1" ] || fail "--compare ended with $status: $(cat shown)"
}
compare 0
KIV_ADDER_WRONG=y compare 1
grep -qF '!  y of main graph, execution 0: max 0.5' shown ||
  fail "no difference in $(cat shown)"
head -n 1 saved/outputs.txt | sed 's/y/z/' >>saved/outputs.txt
compare 1
