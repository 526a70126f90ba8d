#!/usr/bin/env bash
# What becomes of the outputs of executions, on a network that adds and a
# backend that computes it: saved, compared, with intermediate tensors, timed.
#
#   outputs_test.sh KIV_RECORDING CLIENT SAVER ADDER [RUNNER]
set -euo pipefail

recorder=$1 client=$2 saver=$3 adder=$4 runner=${5:-}
drive=${runner:+Z:}
# shellcheck source=tests/support/shell_test.sh
source "$(dirname "${BASH_SOURCE[0]}")/../support/shell_test.sh"
${runner:+"$runner"} "$client" --backend "$drive$saver" \
  --output-dir "$drive$work/recording" add >/dev/null

# Runs a verb, which must end with that status; both outputs are in `output`.
run() { # STATUS VERB ARGUMENT...
  local expected=$1 status=0
  shift
  ${runner:+"$runner"} "$recorder" "$@" >output.raw 2>&1 || status=$?
  tr -d '\r' <output.raw | tr '\\' / >output
  [ "$status" -eq "$expected" ] ||
    fail "'$*' ended with $status instead of $expected: $(cat output)"
}

replay() { # STATUS ARGUMENT...
  local expected=$1
  shift
  run "$expected" replay recording --backend "$drive$adder" "$@"
}

prints() { # TEXT
  grep -qF -- "$1" output || fail "no '$1' in: $(cat output)"
}

# The values of a .npy file with float32 elements, behind its header of 128.
values() { # FILE
  od -An -v -w24 -tf4 -j128 "$1" | xargs
}

replay 0 --save-outputs plain --repeat 3 --warmup 2
[ "$(cat plain/outputs.txt)" = "main%20graph/0/y.npy
main%20graph/1/y.npy" ] || fail "another list: $(cat plain/outputs.txt)"
[ "$(values plain/main%20graph/0/y.npy)" = "6 7.5 9.75 9 9 9" ] ||
  fail "y is $(values plain/main%20graph/0/y.npy)"

# Compared within and beyond the tolerance, against another number of outputs.
replay 0 --compare plain
prints "2 outputs are within"
KIV_ADDER_WRONG=y replay 1 --compare plain
prints "=> y of main graph, execution 0: max 0.5, mean 0.0833"
prints "first at [0, 1]: 8 instead of 7.5"
KIV_ADDER_WRONG=y replay 0 --compare plain --atol 0.5
head -n 1 plain/outputs.txt >list && mv list plain/outputs.txt
replay 1 --compare plain
prints "execution 1: there is none in"

# Intermediate tensors come in the order of the nodes.
replay 0 --outputs all --save-outputs all
prints 'tensor "open" cannot become an output: its size is not known'
[ "$(cut -d/ -f2- all/outputs.txt | xargs)" = \
  "0/h%2F1.npy 0/y.npy 1/h%2F1.npy 1/y.npy" ] ||
  fail "another list: $(cat all/outputs.txt)"
[ "$(values all/main%20graph/0/h%2F1.npy)" = "2 2.5 3.25 3 3 3" ] ||
  fail "h is $(values all/main%20graph/0/h%2F1.npy)"
KIV_ADDER_WRONG=h/1 replay 0 --outputs h/1 --save-outputs wrong
replay 2 --outputs open --save-outputs none
prints "its size is not known"
replay 2 --outputs nothing --save-outputs none
prints 'no call creates a tensor "nothing"'
replay 2 --outputs w --compare all
prints "extract"
replay 2 --outputs all
[ ! -e none ] || fail "something was saved"

# Data of the recording itself.
run 0 extract recording --tensor w -o w.npy
[ "$(values w.npy)" = "1 0.5 0.25 -1 -2 -3" ] || fail "w is $(values w.npy)"
run 1 extract recording --tensor x -o x.npy
prints "2 arrays of that name"
run 0 extract recording --execution 1 -o second
[ "$(values second/main%20graph/1/x.npy)" = "-1 0 0.25 0.001 1e+06 7" ] ||
  fail "x is $(values second/main%20graph/1/x.npy)"
[ "$(cat second/outputs.txt)" = main%20graph/1/x.npy ] || fail "more is there"
run 0 extract recording --all -o data
[ "$(cut -d/ -f2- data/outputs.txt | xargs)" = \
  "static/w.npy 0/x.npy 1/x.npy" ] || fail "$(cat data/outputs.txt)"
run 1 extract recording --execution 2 -o none2
run 2 extract recording -o none2
run 2 extract recording --all --tensor w -o none2

# compare marks the first output that is over, and sees what is missing.
run 0 compare all all
run 1 compare wrong all
prints "=> h/1 of main graph, execution 0"
prints "!  y of main graph, execution 0"
prints "4 of 4 outputs are over"
run 0 compare wrong all --atol 1.5
run 1 compare all wrong --json
prints '"firstOver"'
run 1 compare plain all
prints "only in all"
run 2 compare all nowhere
printf x >all/main%20graph/0/y.npy
run 1 compare wrong all --atol 1.5
prints "it is no .npy file"

# Every repetition is timed, and no warm-up.
replay 0 --time times.json --repeat 7 --warmup 2
grep -A2 '"executions"' times.json | grep -q '"call"' || fail "no executions"
[ "$(grep -c '"count": 7' times.json)" -eq 2 ] || fail "$(cat times.json)"
grep -A1 '"graphExecute"' times.json | grep -q '"count": 14' ||
  fail "another count: $(cat times.json)"
replay 1 --time nowhere/times.json
