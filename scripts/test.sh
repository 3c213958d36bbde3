#!/bin/sh
# Builds and tests everything: debug, address and undefined-behaviour sanitizers, thread sanitizer; checks the
# format of the sources and runs clang-tidy. Every step runs even if one before it failed; the last line sums up.
#
#   scripts/test.sh [--quick]      --quick: the debug preset only
set -u
cd "$(dirname "$0")/.."

presets="debug asan tsan"
[ "${1-}" != "--quick" ] || presets="debug"
jobs=$(nproc)
failed=""
closing=""

say() { printf '\n== %s\n' "$*"; }

# step NAME COMMAND...: notes a failure and goes on
step() {
    name=$1
    shift
    say "$name"
    "$@" || failed="$failed [$name]"
}

sources() { git ls-files '*.cpp' '*.hpp' '*.c' '*.h'; }

check_format() { sources | xargs -r clang-format --dry-run -Werror; }

# The tests are left out: the test framework's macros cost more time than all of the product.
check_tidy() {
    git ls-files '*.cpp' | grep -vE '(^|/)tests/|^fuzz/' |
        xargs -r -P "$jobs" -n 4 clang-tidy --quiet -p build/debug 2>&1 |
        grep -vE '^[0-9]+ warnings? generated\.$' >build/tidy.log
    [ ! -s build/tidy.log ] || { cat build/tidy.log; return 1; }
}

configure_and_build() { cmake --preset "$1" >/dev/null && cmake --build --preset "$1" -- --quiet; }

# The media tests wait for media most of the time: more of them than there are processors may run.
run_tests() {
    # A few tests of closing connections and of real media depend on when the machine lets them run: the log tells
    # which needed a second try.
    ctest --preset "$1" -j $((jobs * 2)) --repeat until-pass:3 >"build/$1/ctest.log" 2>&1
    status=$?
    # What passed is not worth reading.
    [ $status -eq 0 ] || grep -vE '^ +Start +[0-9]+: |   Passed  ' "build/$1/ctest.log"
    closing="$closing$1: $(grep -E '^[0-9]+% tests passed' "build/$1/ctest.log")
"
    tail -n 5 "build/$1/ctest.log"
    return $status
}

step "packages" scripts/setup.sh
if command -v ccache >/dev/null; then
    export CMAKE_C_COMPILER_LAUNCHER=ccache CMAKE_CXX_COMPILER_LAUNCHER=ccache
fi
step "format" check_format
for preset in $presets; do
    step "build $preset" configure_and_build "$preset"
    step "test $preset" run_tests "$preset"
done
[ "$presets" = "debug" ] || step "clang-tidy" check_tidy

printf '\n%s' "$closing"
if [ -n "$failed" ]; then
    echo "FAILED:$failed"
    exit 1
fi
echo "All passed."
