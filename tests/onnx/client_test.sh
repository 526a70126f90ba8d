#!/bin/sh
# The client as a user runs it: calls, determinism, and failures that end it
# with one line and status 1.
# Usage: client_test.sh CLIENT TRACER REFUSING_BACKEND MODEL SUBGRAPHS
client=$1 tracer=$2 refusing=$3 model=$4 subgraphs=$5

work=$(mktemp -d)
trap 'rm -rf "$work"' EXIT
cd "$work" || exit 1

fail() {
  echo "FAILED: $*"
  exit 1
}

# trace FILE ARGUMENT...: a run on the tracer that must succeed
trace() {
  file=$1
  shift
  KIV_TRACER_OUTPUT=$file "$client" "$model" --backend "$tracer" "$@" \
    >out 2>err || fail "$* ended with $? and $(cat err)"
}

# refuse PATTERN ARGUMENT...: a run that must fail with one matching line
refuse() {
  pattern=$1
  shift
  "$client" "$@" >out 2>err
  status=$?
  [ $status -eq 1 ] || fail "$* ended with $status"
  [ "$(wc -l <err)" -eq 1 ] || fail "$* printed $(cat err)"
  grep -q "^onnx_client: $pattern" err || fail "$* printed $(cat err)"
}

calls() {
  grep -c "^$1(" "$2"
}

# The same arguments make the same calls; another seed gives other inputs only.
trace first --executions 3 --seed 7
grep -q '^network=[^ ]* nodes=471 tensors=472 bytes=539048 executions=3$' out ||
  fail "summary: $(cat out)"
trace again --executions 3 --seed 7
cmp -s first again || fail 'two runs differ'
trace other --executions 3 --seed 8
[ "$(diff first other | grep '^<' | grep -vc graphExecute)" -eq 0 ] ||
  fail 'the seed changes more than the executions'
[ "$(calls graphAddNode first)" -eq 471 ] || fail 'nodes are missing'
[ "$(sort -u first | grep -c '^graphExecute')" -eq 3 ] ||
  fail 'executions repeat their inputs'
[ "$(tail -n 2 first | cut -d '(' -f 1 | tr '\n' ' ')" = \
  'contextFree backendFree ' ] || fail 'not everything is freed'

# Every option reaches the calls that it is for.
head -c 12 "$model" >input
trace options --input input --executions 2 --profile 1 --device --priority 5 \
  --save-binary binary
[ "$(sort -u options | grep -c '^graphExecute')" -eq 1 ] ||
  fail 'executions differ though their input is a file'
[ -s binary ] || fail 'no binary was saved'
for pattern in '^contextCreate(backend#0, device#0, .*priority=5' \
  '^graphCreate(.*priority=5' '^graphFinalize(graph#0, profile#0' \
  '^profileGetEvents(profile#0' '^contextFree(context#0, profile#0' \
  '^profileFree(profile#0)' '^deviceGetPlatformInfo(' '^deviceFree(device#0)'; do
  grep -q "$pattern" options || fail "no call like $pattern"
done

# A binary takes the place of tensors and nodes.
trace loaded --from-binary binary
[ "$(calls contextCreateFromBinary loaded)" -eq 1 ] || fail 'binary not used'
[ "$(calls graphRetrieve loaded)" -eq 1 ] || fail 'graph not retrieved'
[ "$(calls graphAddNode loaded)" -eq 0 ] || fail 'graph built in spite of it'

# z = c ? x + w : -x; both branches are subgraphs and use tensors of the graph,
# which belong to the context then.
KIV_TRACER_OUTPUT=nested "$client" "$subgraphs" --backend "$tracer" >out 2>err ||
  fail "subgraphs: $(cat err)"
[ "$(calls graphCreateSubgraph nested)" -eq 2 ] || fail 'subgraphs are missing'
[ "$(grep '^tensorCreateContextTensor' nested | grep -o 'name="."' |
  tr '\n' ' ')" = 'name="w" name="x" ' ] || fail 'not the shared tensors'
id=$(sed -n 's/^tensorCreateContextTensor(.*name="x".* id=//p' nested)
for graph in 1 2; do
  grep -q "^graphAddNode(graph#$graph,.*id=$id, name=\"x\"" nested ||
    fail "subgraph $graph doesn't use the outer tensor"
done

# What is not there to be done is told, and no failure.
trace told --output-dir elsewhere --no-header
grep -q 'does not record' err || fail "no note about the options: $(cat err)"
[ ! -e elsewhere ] || fail 'the client made the directory'
"$client" "$model" --backend "$refusing" --save-binary none >out 2>err ||
  fail "--save-binary without a binary: $(cat err)"
grep -q 'no binary to save' err || fail "no note about the binary: $(cat err)"
[ ! -e none ] || fail 'a binary was saved that is none'

# Failures.
head -c 1000 "$model" >cut.onnx
refuse 'cut.onnx is not an ONNX network' cut.onnx --backend "$tracer"
: >empty.onnx
refuse 'empty.onnx holds no graph' empty.onnx --backend "$tracer"
refuse 'cannot open none.onnx' none.onnx --backend "$tracer"
refuse 'cannot read' . --backend "$tracer"
refuse 'cannot load the library' "$model" --backend ./none.so
refuse '.*required' "$model"
refuse '.*--bogus' "$model" --backend "$tracer" --bogus
refuse '.*--executions' "$model" --backend "$tracer" --executions -1
refuse 'cut.onnx has 1000 bytes of data, input x takes 12' \
  "$model" --backend "$tracer" --input cut.onnx
refuse 'the network has only 1 inputs' \
  "$model" --backend "$tracer" --input input --input input
cp cut.onnx cut.pb
refuse 'cut.pb' "$model" --backend "$tracer" --input cut.pb

# A failing call is named with its code, and what was opened is freed.
export KIV_REFUSE
for KIV_REFUSE in backendCreate contextCreate graphCreate \
  tensorCreateGraphTensor graphAddNode graphFinalize graphExecute contextFree; do
  refuse "$KIV_REFUSE failed with 5999\$" "$model" --backend "$refusing"
  grep -q '^backendFree$' out || fail "$KIV_REFUSE leaves the backend behind"
  [ "$(grep -c '^contextFree$' out)" -le 1 ] || fail 'context freed twice'
done
KIV_REFUSE=
refuse 'the library has no profileCreate' "$model" --backend "$refusing" \
  --profile 1
