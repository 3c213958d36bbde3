#!/bin/sh
# Fuzzes every parser and depacketizer in turn and prints a table of the results. A find ends its target's turn, is kept in
# fuzz/finds/, where the ordinary tests replay it, and makes this script fail.
#
#   scripts/fuzz.sh MINUTES [TARGET...]     MINUTES in all, divided among the targets; without names all of them
set -eu
cd "$(dirname "$0")/.."

[ $# -ge 1 ] || { sed -n '2,5s/^# \{0,1\}//p' "$0"; exit 2; }
minutes=$1
shift
[ $# -gt 0 ] || set -- $(cd fuzz/targets && ls ./*.cpp | sed 's/^\.\///; s/\.cpp$//')
seconds=$((minutes * 60 / $#))
# Wide enough for several messages or packets of the largest size; short inputs are tried first.
longest=8192

if command -v ccache >/dev/null; then
    export CMAKE_C_COMPILER_LAUNCHER=ccache CMAKE_CXX_COMPILER_LAUNCHER=ccache
fi
work=build/fuzz
cmake --preset fuzz >/dev/null
cmake --build --preset fuzz -- --quiet
# A build meanwhile does not disturb what runs.
programs=$(mktemp -d)
trap 'rm -rf "$programs"' EXIT
cp $work/fuzz/fuzz_* "$programs"

# number LOG NAME: the last value of a statistic in the log
number() { sed -n "s/.*$2: *\([0-9]*\).*/\1/p" "$1" | tail -n 1; }

# Sets `processor` to the seconds of processor time that the children took so far. (A subshell would ask about its own.)
ask_processor() {
    times >"$programs/times"
    processor=$(sed -n '2s/[ms]/ /gp' "$programs/times" | awk '{ printf "%d", 60 * ($1 + $3) + $2 + $4 }')
}

all=0
row='%-18s %7s %9s %12s %7s %9s %6s\n'
# shellcheck disable=SC2059  # a format for several lines
printf "$row" target seconds processor executions edges features finds
for target; do
    found=$programs/finds
    mkdir -p "$work/corpus/$target" "$work/logs" "$found"
    log=$work/logs/$target
    inputs=$work/corpus/$target
    for folder in seeds finds; do
        [ ! -d "fuzz/$folder/$target" ] || inputs="$inputs fuzz/$folder/$target"
    done
    case $target in
        headers | messages | sdp | track_headers | session | url) words=-dict=fuzz/words.dict ;;
        *) words="" ;;
    esac
    finds=0
    # The targets themselves bound the processor time of an input; here a busy machine counts as well.
    ask_processor
    before=$processor
    # shellcheck disable=SC2086  # a list of folders, an option or none
    "$programs/fuzz_$target" -max_total_time="$seconds" -max_len=$longest -timeout=600 -rss_limit_mb=2048 \
        -print_final_stats=1 -artifact_prefix="$found/" $words $inputs >"$log" 2>&1 || finds=1
    if [ $finds -ne 0 ]; then
        mkdir -p "fuzz/finds/$target"
        # None when the program ended before it could write one: see the log.
        find "$found" -type f -exec mv {} "fuzz/finds/$target/" \;
    fi
    all=$((all + finds))
    ask_processor
    # shellcheck disable=SC2059
    printf "$row" "$target" "$seconds" $((processor - before)) "$(number "$log" number_of_executed_units)" \
        "$(number "$log" cov)" "$(number "$log" ft)" "$finds" | tee -a $work/figures
    [ $finds -eq 0 ] || grep -E 'does not hold|Assertion failed|ERROR|runtime error|Test unit written' "$log" ||
        tail -n 5 "$log"
done
[ $all -eq 0 ] || { echo "Finds: $all"; exit 1; }
