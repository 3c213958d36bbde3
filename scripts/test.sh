#!/bin/sh
# Builds and tests everything: debug, address and undefined-behaviour sanitizers, thread sanitizer, endurance, 32-bit ARM;
# checks the format of the sources and runs clang-tidy and cppcheck. Every step runs even if one before it failed; the last
# line sums up.
#
#   scripts/test.sh [--quick]      --quick: the debug preset only
set -u
cd "$(dirname "$0")/.."

jobs=$(nproc)
linker=""
niced=""
failed=""
closing=""
times=""

say() { printf '\n== %s\n' "$*"; }

# step NAME COMMAND...: notes a failure and goes on
step() {
    name=$1
    shift
    say "$name"
    begin=$(date +%s)
    "$@" || failed="$failed [$name]"
    times="$times$name: $(($(date +%s) - begin)) s
"
}

# The static checks need processors and nothing else, while the tests wait for media most of the time: they run beside.
begin_checks() {
    check_tidy >build/tidy.out 2>&1 &
    tidy=$!
    check_cppcheck >build/cppcheck.out 2>&1 &
    cppcheck=$!
}

# end_check PROCESS OUTPUT: waits for one of them, shows what it said, and fails as it did
end_check() {
    wait "$1"
    status=$?
    cat "$2"
    return $status
}

sources() { git ls-files '*.cpp' '*.hpp' '*.c' '*.h'; }

check_format() { sources | xargs -r clang-format --dry-run -Werror; }

# The tests are left out of the static checks: the test framework's macros cost more time than all of the product.
product() { git ls-files '*.cpp' | grep -vE '(^|/)tests/|^fuzz/'; }

# The sources of a leg that is not built can't be compiled.
built() { while read -r file; do ! grep -qF "/$file\"" build/debug/compile_commands.json || echo "$file"; done; }

# Of what several write at once, the count of warnings that are not shown may stand on a line of another.
check_tidy() {
    product | built |
        nice -n 19 xargs -r -P "$jobs" -n 4 clang-tidy --quiet -p build/debug --extra-arg=-Wthread-safety 2>&1 |
        grep -vE '^[0-9]* warnings? generated\.$' >build/tidy.log
    [ ! -s build/tidy.log ] || { cat build/tidy.log; return 1; }
}

check_cppcheck() {
    product | nice -n 19 xargs -r cppcheck --quiet --error-exitcode=1 -j "$jobs" --std=c++17 --language=c++ \
        --library=posix,gtk --enable=warning,performance,portability --suppressions-list=.cppcheck \
        -I Player/include -I Player/src -I Parser/include -I Parser/h264/src -I Parser/mpeg4/src \
        -I GStreamer/src -I GStreamer/gst1/include -I tools/virertsp
}

configure_and_build() {
    LDFLAGS=$linker $niced cmake --preset "$1" -D VIRE_PRECOMPILE=ON >/dev/null &&
        $niced cmake --build --preset "$1" -- --quiet
}

# begin_build PRESET: what the tests of the preset before leave of the processors goes to the next build.
begin_build() {
    (case $1 in
        armhf) nice -n 19 scripts/test-armhf.sh --build ;;
        *) niced="nice -n 19"; configure_and_build "$1" ;;
    esac) >"build/$1.out" 2>&1 &
    building=$!
}

# note_results PRESET: for the last lines of all
note_results() {
    closing="$closing$1: $(grep -E '^[0-9]+% tests passed|^UNSTABLE' "build/$1/ctest.log")
"
}

# Nearly two thousand processes of one test each would take longer than the tests themselves, so a few share them.
run_tests() {
    scripts/run-tests.sh "$1" -C Shared -LE '^each$'
    status=$?
    note_results "$1"
    return $status
}

run_armhf_tests() {
    scripts/test-armhf.sh
    status=$?
    note_results armhf
    return $status
}

# The tests of endurance at their full length, and what they saw.
run_long_tests() {
    VIRE_LONG=1 ctest --preset debug -L long -j $((jobs * 2)) --verbose >build/debug/long.log 2>&1
    status=$?
    grep -E ' at the end$|Failure|FAILED|tests passed' build/debug/long.log
    return $status
}

step "packages" scripts/setup.sh
if command -v ccache >/dev/null; then
    export CMAKE_C_COMPILER_LAUNCHER=ccache CMAKE_CXX_COMPILER_LAUNCHER=ccache
    export CCACHE_SLOPPINESS=pch_defines,time_macros
fi
# The test programs are large, and mold links them in less than half the time.
if command -v mold >/dev/null; then linker="-fuse-ld=mold"; fi
step "format" check_format
step "includes" scripts/check-includes.py
mkdir -p build
step "build debug" configure_and_build debug
if [ "${1-}" = "--quick" ]; then
    step "test debug" run_tests debug
else
    step "reference" cmake --build --preset debug --target reference -- --quiet
    begin_build asan
    step "test debug" run_tests debug
    step "build asan" end_check "$building" build/asan.out
    begin_build tsan
    step "test asan" run_tests asan
    step "build tsan" end_check "$building" build/tsan.out
    begin_build armhf
    step "test tsan" run_tests tsan
    step "build armhf" end_check "$building" build/armhf.out
    begin_checks
    step "endurance" run_long_tests
    step "test armhf" run_armhf_tests
    step "clang-tidy" end_check "$tidy" build/tidy.out
    step "cppcheck" end_check "$cppcheck" build/cppcheck.out
fi

printf '\n%s\n%s' "$times" "$closing"
if [ -n "$failed" ]; then
    echo "FAILED:$failed"
    exit 1
fi
echo "All passed."
