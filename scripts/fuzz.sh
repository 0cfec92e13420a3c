#!/bin/bash
# Runs the fuzz targets under the address and undefined-behaviour sanitizers: fuzz.sh [--short | --seconds N]
# [TARGET...], 10 minutes each unless told otherwise, --short being 10 seconds. Needs clang, which is installed when
# it is missing. An input that breaks a property is saved in build/fuzz/findings and makes the status 1; new inputs
# that reach more code are kept in build/fuzz/corpus.
set -uo pipefail
cd "$(dirname "${BASH_SOURCE[0]}")/.." || exit 1
export PATH=/usr/bin:/bin:$PATH

seconds=600
targets=()
while (($#)); do
    case $1 in
    --short) seconds=10 ;;
    --seconds) seconds=${2-} && shift ;;
    -*) echo "usage: fuzz.sh [--short | --seconds N] [TARGET...]" >&2 && exit 2 ;;
    *) targets+=("$1") ;;
    esac
    shift
done
if [[ ! $seconds =~ ^[1-9][0-9]*$ ]]; then
    echo "fuzz.sh: --seconds takes a number of seconds" >&2
    exit 2
fi
if ((${#targets[@]} == 0)); then
    targets=(normalize text_comparison numbers paths xml_encode dump_rows explain_diff tools_readers)
fi

scripts/install-dependencies.sh --tests clang libclang-rt-14-dev || exit 1
cmake --preset fuzz && cmake --build --preset fuzz || exit 1
programs=$PWD/build/fuzz/fuzz
findings=$PWD/build/fuzz/findings
log=$(mktemp)
trap 'rm -f "$log"' EXIT
mkdir -p "$findings"
status=0

run_target() { # NAME; prints one line for the result
    local corpus=build/fuzz/corpus/$1 executions
    mkdir -p "$corpus"
    if timeout $((seconds + 120)) "$programs/$1" -max_total_time="$seconds" -timeout=60 -rss_limit_mb=2048 \
        -print_final_stats=1 -artifact_prefix="$findings/$1-" "$corpus" "fuzz/corpus/$1" >"$log" 2>&1; then
        executions=$(sed -n 's/^stat::number_of_executed_units: *//p' "$log")
        echo "$1: $executions executions, no findings"
        ((executions > 0))
    else
        grep -v '^#\|^INFO:\|^stat::' "$log" | tail -n 60
        echo "$1: FINDING: $(sed -n 's/^.*Test unit written to //p' "$log")"
        return 1
    fi
}

for target in "${targets[@]}"; do
    if [[ $target == tools_readers ]]; then
        timeout $((seconds + 120)) /usr/bin/python3 fuzz/tools_readers.py --seconds "$seconds" --findings "$findings"
    else
        run_target "$target"
    fi || status=1
done
exit "$status"
