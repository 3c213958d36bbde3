#!/bin/sh
# Replays the seeds, the finds and what scripts/fuzz.sh has gathered, and prints which part of the lines of each source
# file that reached. Needs clang and llvm.
set -eu
cd "$(dirname "$0")/.."

if command -v ccache >/dev/null; then
    export CMAKE_C_COMPILER_LAUNCHER=ccache CMAKE_CXX_COMPILER_LAUNCHER=ccache
fi
work=build/fuzz-coverage
cmake --preset fuzz-coverage >/dev/null
cmake --build --preset fuzz-coverage -- --quiet
mkdir -p $work/profiles
rm -rf $work/corpus
# Without it the seeds alone are measured.
if [ -d build/fuzz/corpus ]; then
    cp -r build/fuzz/corpus $work/corpus || echo "A fuzzer that runs took some of the inputs away meanwhile."
fi

objects=""
for source in fuzz/targets/*.cpp; do
    target=$(basename "$source" .cpp)
    inputs=""
    for folder in "fuzz/seeds/$target" "fuzz/finds/$target" "$work/corpus/$target"; do
        [ ! -d "$folder" ] || inputs="$inputs $folder"
    done
    # shellcheck disable=SC2086  # a list of folders
    LLVM_PROFILE_FILE="$work/profiles/$target.profraw" "$work/fuzz/fuzz_$target" $inputs | tail -n 1 |
        sed "s/^/$target: /"
    # The first one is given without the option.
    objects="$objects${objects:+ -object }$work/fuzz/fuzz_$target"
done
llvm-profdata merge -o $work/all.profdata $work/profiles/*.profraw
# shellcheck disable=SC2086
llvm-cov report $objects -instr-profile=$work/all.profdata -ignore-filename-regex='^/usr/|fuzz/(support|targets)/' \
    >$work/report 2>/dev/null
# File, lines, lines missed, share.
awk '/\.(cpp|hpp) |^TOTAL/ { sub(/.*\.\.\//, "", $1); printf "%-55s %6s %6s %8s\n", $1, $8, $9, $10 }' $work/report
