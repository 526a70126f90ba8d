#!/bin/sh
# The client as a user runs it: calls, determinism, and failures that end it
# with one line and status 1.
# Usage: onnx_client_test.sh CLIENT TRACER REFUSING_BACKEND MODEL SUBGRAPHS
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
  KIV_TRACER_OUTPUT=$1
  export KIV_TRACER_OUTPUT
  shift
  "$client" --backend "$tracer" "$@" >out 2>err ||
    fail "$* ended with $? and $(cat err)"
}

# refuse PATTERN ARGUMENT...: a run that must fail with one matching line, below
# notes on open sizes if there are any
refuse() {
  pattern=$1
  shift
  "$client" "$@" >out 2>err
  status=$?
  [ $status -eq 1 ] || fail "$* ended with $status"
  [ "$(grep -vc 'are taken as 1$' err)" -eq 1 ] || fail "$* printed $(cat err)"
  grep -q "^onnx_client: $pattern" err || fail "$* printed $(cat err)"
}

# lines FILE COUNT PATTERN: how many different lines of a file match
lines() {
  count=$(sort -u "$1" | grep -c -- "$3")
  [ "$count" -eq "$2" ] || fail "$count lines of $1 are like $3: $(cat "$1")"
}

# The same arguments make the same calls; another seed gives other inputs only.
trace first "$model" --executions 3 --seed 7
lines out 1 '^network=[^ ]* nodes=471 tensors=472 bytes=539048 executions=3$'
lines err 2 'are taken as 1$'
trace again "$model" --executions 3 --seed 7
cmp -s first again || fail 'two runs differ'
trace other "$model" --executions 3 --seed 8
diff first other | grep '^<' >changed
lines changed 3 .
lines changed 3 '^< graphExecute('
lines first 471 '^graphAddNode('
lines first 1 '^backendCreate(.*platform="onnx.opset:9"}\]'
[ "$(tail -n 2 first | cut -d '(' -f 1 | tr '\n' ' ')" = \
  'contextFree backendFree ' ] || fail 'not everything is freed'

# Every option reaches the calls that it is for.
head -c 12 "$model" >input
trace options "$model" --input input --executions 2 --profile 1 --device \
  --priority 5 --save-binary binary
for pattern in '^contextCreate(backend#0, device#0, .*priority=5' \
  '^graphCreate(.*priority=5' '^graphFinalize(graph#0, profile#0' \
  '^graphExecute' '^profileGetEvents(profile#0' '^profileFree(profile#0)' \
  '^contextFree(context#0, profile#0' '^deviceFree(device#0)'; do
  lines options 1 "$pattern"
done

# A binary takes the place of tensors and nodes.
trace loaded "$model" --from-binary binary
lines loaded 1 '^contextCreateFromBinary('
lines loaded 1 '^graphRetrieve('
lines loaded 0 '^graphAddNode('

# z = c ? x + w : -x; both branches are subgraphs and use tensors of the graph,
# which belong to the context then.
trace nested "$subgraphs"
lines nested 2 '^graphCreateSubgraph('
lines nested 2 '^tensorCreateContextTensor(.*name="[wx]"'
id=$(sed -n 's/^tensorCreateContextTensor(.*name="x".* id=//p' nested)
lines nested 2 "^graphAddNode(graph#[12],.*id=$id, name=\"x\""

# What is not there to be done is told, and no failure.
trace told "$model" --output-dir elsewhere --no-header
lines err 1 'does not record'
[ ! -e elsewhere ] || fail 'the client made the directory'
"$client" "$model" --backend "$refusing" --save-binary none >out 2>err
lines err 1 'no binary to save'

# Failures.
head -c 1000 "$model" >cut.onnx
: >empty.onnx
refuse 'cut.onnx is not an ONNX network' cut.onnx --backend "$tracer"
refuse 'empty.onnx holds no graph' empty.onnx --backend "$tracer"
refuse 'cannot read' . --backend "$tracer"
refuse 'cannot load the library' "$model" --backend ./none.so
refuse 'cut.onnx has 1000 bytes of data, input x takes 12' \
  "$model" --backend "$tracer" --input cut.onnx
refuse 'the network has only 1 inputs' \
  "$model" --backend "$tracer" --input input --input input

# A failing call is named with its code, and what was opened is freed.
export KIV_REFUSE KIV_REFUSE_STATUS=5999
for KIV_REFUSE in backendCreate contextCreate graphCreate \
  tensorCreateGraphTensor graphAddNode graphFinalize graphExecute contextFree; do
  refuse "$KIV_REFUSE failed with 5999\$" "$model" --backend "$refusing"
  lines out 1 '^backendFree$'
  [ -z "$(grep Free out | uniq -d)" ] || fail "$KIV_REFUSE frees twice"
done
KIV_REFUSE=
refuse 'the library has no profileCreate' "$model" --backend "$refusing" \
  --profile 1
