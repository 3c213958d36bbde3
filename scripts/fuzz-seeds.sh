#!/bin/sh
# Adds to fuzz/seeds/ what scripts/fuzz.sh has gathered, as far as it reaches edges that no seed reaches: the shortest
# inputs that do, of at most a kilobyte.
set -eu
cd "$(dirname "$0")/.."

short=$(mktemp -d)
trap 'rm -rf "$short"' EXIT
for source in fuzz/targets/*.cpp; do
    target=$(basename "$source" .cpp)
    mkdir -p "$short/$target" "build/fuzz/corpus/$target" "fuzz/seeds/$target"
    find "build/fuzz/corpus/$target" -type f -size -3 -exec cp -t "$short/$target" {} +
    before=$(find "fuzz/seeds/$target" -type f | wc -l)
    "build/fuzz/fuzz/fuzz_$target" -merge=1 -use_counters=0 "fuzz/seeds/$target" "$short/$target" >/dev/null 2>&1
    echo "$target: $(($(find "fuzz/seeds/$target" -type f | wc -l) - before)) inputs more"
done
