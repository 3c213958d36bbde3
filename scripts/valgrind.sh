#!/bin/sh
# Runs the element's tests, for each GStreamer that is there, under memcheck: reads of what was never written, use of
# what is freed, leaks. Tests that wait for the element's own seconds, and those that take long, are left out.
#
#   scripts/valgrind.sh [FILTER]      FILTER: as for --gtest_filter
set -u
cd "$(dirname "$0")/.." || exit 1

filter=${1-"-*Slow.*:*Long.*"}
# The tests wait most of the time.
shards=$(($(nproc) * 2))
logs=build/debug/valgrind
ours=$PWD/GStreamer/tests/support/valgrind.supp
glib=$(pkg-config --variable=prefix glib-2.0)/share/glib-2.0/valgrind/glib.supp

# memory TESTS SHARD LOG: one process that runs every so many-th test.
memory() {
    # Without GLib's own pools every block is seen. What is reached only by a pointer into its middle, "possibly
    # lost", is the way in which GObject and the C library's threads keep things.
    G_SLICE=always-malloc G_DEBUG=gc-friendly GTEST_TOTAL_SHARDS=$shards GTEST_SHARD_INDEX=$2 \
        valgrind --quiet --fair-sched=yes --num-callers=40 --error-exitcode=1 \
        --leak-check=full --show-leak-kinds=definite --errors-for-leak-kinds=definite \
        --suppressions="$ours" --suppressions="$glib" "$1" --gtest_filter="$filter" >"$3" 2>&1
}

cmake --preset debug >/dev/null || exit 1
failed=""
mkdir -p "$logs"
for leg in 1.0 0.10; do
    grep -q "element_tests_$leg:" build/debug/build.ninja || continue
    cmake --build --preset debug --target "element_tests_$leg" >/dev/null || exit 1
    shard=0
    processes=""
    while [ $shard -lt "$shards" ]; do
        memory "build/debug/GStreamer/element_tests_$leg" $shard "$logs/$leg.$shard.log" &
        processes="$processes $!"
        shard=$((shard + 1))
    done
    shard=0
    for process in $processes; do
        wait "$process" || failed="$failed $logs/$leg.$shard.log"
        shard=$((shard + 1))
    done
    echo "GStreamer $leg: $(cat "$logs/$leg".*.log | grep -c '^\[       OK') tests run"
done

# What passed is not worth reading.
for log in $failed; do
    grep -E '^==|Failure|FAILED' "$log"
done
[ -z "$failed" ] || { echo "FAILED:$failed"; exit 1; }
