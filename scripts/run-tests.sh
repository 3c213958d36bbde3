#!/bin/sh
# Runs the tests of a preset that is built, and shows what failed.
#
#   scripts/run-tests.sh PRESET [CTEST-OPTION...]
#
# Many tests play in real time, on machines that have other work. Where only one or two fail they run once more, alone:
# what fails again has failed, and what passes is named as UNSTABLE, for that test waits for too little or the product has
# a race. Crashes, hangs and findings of the sanitizers have no second try.
set -u
cd "$(dirname "$0")/.."

preset=$1
shift
log=build/$preset/ctest.log
second=build/$preset/ctest-second.log

# What passed is not worth reading.
show() { grep -vE '^ +Start +[0-9]+: |   Passed  ' "$1"; }

# "17:NAME" for each test that failed in the last run.
names_of_failed() { sed 's/^[0-9]*://' "build/$preset/Testing/Temporary/LastTestsFailed.log"; }

may_try_again() {
    [ "$(names_of_failed | wc -l)" -le 2 ] &&
        ! grep -qE 'Sanitizer:|runtime error:|\((SEGFAULT|ILLEGAL|NUMERICAL|BUS|Timeout|Subprocess [a-z]+|OTHER_FAULT|Not Run)\)' "$log"
}

# The media tests wait for media most of the time: more of them than there are processors may run.
status=0
ctest --preset "$preset" -j $(($(nproc) * 2)) "$@" >"$log" 2>&1 || status=$?
if [ $status -ne 0 ]; then
    show "$log"
    if may_try_again; then
        failed=$(names_of_failed | tr '\n' ' ')
        status=0
        ctest --preset "$preset" "$@" --rerun-failed -j 1 >"$second" 2>&1 || status=$?
        [ $status -eq 0 ] || show "$second"
        [ $status -ne 0 ] || echo "UNSTABLE: $failed" >>"$log"
    fi
fi
grep -E '^[0-9]+% tests passed|^Total Test time|^UNSTABLE' "$log"
exit $status
