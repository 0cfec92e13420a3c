#!/bin/bash
# Runs the fuzz targets under the address and undefined-behaviour sanitizers: fuzz.sh [--short | --seconds N]
# [TARGET...], 10 minutes each unless told otherwise, --short being 10 seconds, as many at once as there are cores.
# Needs clang, which is installed when it is missing. An input that breaks a property is saved in build/fuzz/findings
# and makes the status 1; new inputs that reach more code are kept in build/fuzz/corpus.
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
    targets=(normalize cleanse_list text_comparison numbers paths xml_encode dump_rows explain_diff tools_readers)
fi

scripts/install-dependencies.sh --tests clang libclang-rt-14-dev || exit 1
cmake --preset fuzz && cmake --build --preset fuzz || exit 1
export programs=$PWD/build/fuzz/fuzz findings=$PWD/build/fuzz/findings seconds
mkdir -p "$findings"

search() { # TARGET; prints one line for the result, and what was found
    local corpus=build/fuzz/corpus/$1 output executions
    if [[ $1 == tools_readers ]]; then
        timeout $((seconds + 120)) /usr/bin/python3 fuzz/tools_readers.py --seconds "$seconds" --findings "$findings"
        return
    fi
    mkdir -p "$corpus"
    if output=$(timeout $((seconds + 120)) "$programs/$1" -max_total_time="$seconds" -timeout=60 -rss_limit_mb=2048 \
        -print_final_stats=1 -artifact_prefix="$findings/$1-" "$corpus" "fuzz/corpus/$1" 2>&1); then
        executions=$(sed -n 's/^stat::number_of_executed_units: *//p' <<<"$output")
        echo "$1: $executions executions, no findings"
        ((executions > 0))
    else
        grep -v '^#\|^INFO:\|^stat::' <<<"$output" | tail -n 60
        echo "$1: FINDING: $(sed -n 's/^.*Test unit written to //p' <<<"$output")"
        return 1
    fi
}
export -f search

printf '%s\n' "${targets[@]}" | xargs -P "$(nproc)" -I TARGET bash -c 'search TARGET'
