#!/usr/bin/env bash
# What a relay puts beside a recording, shown and used: the backend's answers and
# its outputs, on a network that adds.
#
#   beside_test.sh KIV_RECORDING CLIENT RELAY ADDER [RUNNER]
set -euo pipefail

recorder=$1 client=$2 relay=$3 adder=$4 runner=${5:-}
drive=${runner:+Z:}
# shellcheck source=tests/support/shell_test.sh
source "$(dirname "${BASH_SOURCE[0]}")/../support/shell_test.sh"
export KIV_RELAY_BACKEND=$drive$adder

record() { # STATUS DIRECTORY VARIABLE=VALUE...
  local status=0
  env "${@:3}" ${runner:+"$runner"} "$client" --backend "$drive$relay" \
    --output-dir "$drive$work/$2" add >/dev/null 2>&1 || status=$?
  [ "$status" -eq "$1" ] || fail "the client ends with $status for $2"
}

# Runs a verb, which must end with that status; both outputs are in `output`.
run() { # STATUS VERB ARGUMENT...
  local expected=$1 status=0
  shift
  ${runner:+"$runner"} "$recorder" "$@" >output.raw 2>&1 || status=$?
  tr -d '\r' <output.raw | tr '\\' / >output
  [ "$status" -eq "$expected" ] ||
    fail "'$*' ended with $status instead of $expected: $(cat output)"
}

prints() { # TEXT
  grep -qF -- "$1" output || fail "no '$1' in: $(cat output)"
}

# Outputs that were kept are those that a replay is compared with.
record 0 kept KIV_RELAY_KEEP_OUTPUTS=1
run 0 replay kept -b "$drive$adder" --compare
prints "2 outputs are within"
KIV_ADDER_WRONG=y run 1 replay kept -b "$drive$adder" --compare
prints "=> y of main graph, execution 0"
run 0 info kept
prints "KIV_ADDER (0), API 2.0.0, its own 0.0.0"
prints "2 outputs were kept in kept/outputs"

# Those behind the limit are passed over; without any there is nothing to compare.
record 0 part KIV_RELAY_KEEP_OUTPUTS=1 KIV_RELAY_KEEP_BYTES=30
run 0 replay part -b "$drive$adder" --compare
prints "1 outputs are within"
run 0 info part
prints "from call 14 on, outputs were dropped: the limit of 30 bytes is reached"
record 0 none KIV_RELAY_KEEP_OUTPUTS=0
run 2 replay none -b "$drive$adder" --compare
prints "the recording has no outputs of its own"

# A call that the backend refused may be refused again, and no other code.
record 1 refused KIV_ADDER_REFUSES=1
run 0 info refused
prints "call 12     graphFinalize                  6004 (KIV_GRAPH_ERROR_INVALID"
run 0 info refused --json
tr -d ' \n' <output >packed
grep -qF '"refused":[{"call":12,"function":"graphFinalize","code":6004}]' packed ||
  fail "the refused call as JSON: $(cat packed)"
KIV_ADDER_REFUSES=1 run 0 replay refused -b "$drive$adder"
prints "1 calls failed as they did when they were recorded"
run 0 replay refused -b "$drive$adder"
sed 's/6004/6001/' refused/answers.json >other && mv other refused/answers.json
KIV_ADDER_REFUSES=1 run 116 replay refused -b "$drive$adder"

# Answers of another recording.
sed -i 's/graphFinalize/graphAddNode/' refused/answers.json
KIV_ADDER_REFUSES=1 run 116 replay refused -b "$drive$adder"
prints "answers.json: it belongs to another recording and is passed over"
