#!/usr/bin/env bash
# What each verb of kiv-recording prints and how it ends, on the golden
# recording and on damaged copies of it. With KIV_ACCEPT_GOLDEN=1 in the
# environment what is printed becomes what is expected.
#
#   verbs_test.sh TREE KIV_RECORDING TRACER [RUNNER]
set -euo pipefail

tree=$1 recorder=$2 tracer=$3 runner=${4:-}
drive=${runner:+Z:}
golden=$tree/tests/kiv_recording/golden
# shellcheck source=tests/support/shell_test.sh
source "$(dirname "${BASH_SOURCE[0]}")/../support/shell_test.sh"
cp -r "$tree/tests/golden" recording
rm recording/*.cpp recording/*.h

# Runs a verb, which must end with that status; both outputs are in `output`.
run() { # STATUS VERB ARGUMENT...
  local expected=$1 status=0
  shift
  ${runner:+"$runner"} "$recorder" "$@" >output 2>&1 || status=$?
  tr -d '\r' <output | tr '\\' / >output.text
  [ "$status" -eq "$expected" ] ||
    fail "'$*' ended with $status instead of $expected: $(cat output)"
}

prints() { # TEXT
  grep -qF -- "$1" output.text || fail "no '$1' in: $(cat output)"
}

prints_golden() { # NAME
  if [ "${KIV_ACCEPT_GOLDEN:-}" = 1 ]; then cp output.text "$golden/$1"; fi
  diff "$golden/$1" output.text || fail "it prints something else than $1"
}

# A copy of the recording whose program is changed by sed.
changed() { # SED_SCRIPT
  rm -rf changed
  cp -r recording changed
  sed -i "$1" changed/saver_output.c
}

# dump prints what Tracer prints.
run 0 dump recording
diff "$tree/tests/tracer/golden_session.txt" output || fail "dump differs"
run 0 dump recording --calls 17-18
sed -n 17,18p "$tree/tests/tracer/golden_session.txt" | diff - output
run 0 dump recording --graph 'main graph'
[ "$(grep -c '^graph' output)" -gt 4 ] || fail "calls of a graph are missing"
! grep -qE '^(backend|profile|device)' output || fail "calls of others"
run 2 dump recording --calls 9-8

run 0 info recording
prints_golden info.txt
run 0 info recording --json
prints '"Conv2d": 1'

# diff looks at values, not at names.
run 0 diff recording recording
changed 's/backend_0/first/g'
run 0 diff recording changed
changed 's/(KivProfile_Level_t)2/(KivProfile_Level_t)1/'
run 1 diff recording changed
prints_golden diff.txt
run 1 diff recording changed --json
prints '"equal": false'
changed ''
printf x | dd of=changed/params.bin bs=1 seek=40 conv=notrunc status=none
run 1 diff recording changed

# check finds everything at once.
run 0 check recording
prints 'No faults: 67 calls'
changed '/graphFinalize(loop_body/,$d
s/"main graph"/"main "graph""/
s/^   Kiv_DeviceHandle_t device_0;/&\
   Kiv_BackendHandle_t backend_0;\
   system("echo no");/'
truncate -s 2 changed/params.bin
run 1 check changed
prints_golden check.txt
run 1 check changed --json
prints '"keepsFromCompiling": true'

# complete leaves the recording alone and gives a copy its end.
changed '/graphFinalize(loop_body/q'
echo 'more' >>changed/params.bin
cp -r changed before
run 0 complete changed -o whole
diff -r before changed || fail "the recording was changed"
run 0 check whole
run 0 dump whole
head -n "$(wc -l <output)" "$tree/tests/tracer/golden_session.txt" |
  diff - output || fail "other calls"
run 1 complete changed -o whole

run 0 prepare recording -o program.c
prints_golden prepare.txt
run 2 prepare recording -o recording/saver_output.c
cmp recording/saver_output.c "$tree/tests/golden/saver_output.c"

# replay, on a backend and on what is none.
export KIV_TRACER_CUSTOM=gpu KIV_TRACER_OUTPUT="$drive$work/trace"
run 0 replay recording -b "$drive$tracer" --repeat 3 --output-dir saved
prints executions
[ "$(grep -c ^graphExecute trace)" -eq 9 ] || fail "3 x 3 executions"
grep -q 'KIV_TRACER' saved/context_0.bin || fail "no binary was saved"
run 2 replay recording -b "$drive$tracer" -l loud
run 1 replay recording -b "$drive$work/recording/params.bin"
run 2 replay changed -b "$drive$work/nothing" --repeat 0

# Usage, and what is no recording.
run 2
run 2 nonsense
run 2 info
run 2 info nowhere
prints nowhere
cp recording/saver_output.c recording/other.c
mv recording/saver_output.c recording/first.c
run 2 info recording
run 0 info recording --model-file first.c
run 0 info recording/first.c
for verb in replay info check dump diff complete prepare compare extract \
  export; do
  run 0 "$verb" --help
  prints Example
done
