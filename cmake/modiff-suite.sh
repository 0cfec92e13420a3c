#!/bin/sh
# What the ctest cases of modiff_add_suite run:
#
#   modiff-suite.sh begin OUT
#   modiff-suite.sh shard OUT MODIFF I/N OPTION...
#   modiff-suite.sh merge OUT MODIFF N
#   modiff-suite.sh whole OUT MODIFF OPTION...
set -u

step=$1 out=$2
shift 2

# Whether a run went through, whatever its verdicts.
is_whole() { # RECORD
    tail -n 1 "$1/run.jsonl" 2>/dev/null | grep -q '^{"complete":true'
}

case $step in
begin)
    rm -f "$out"/[0-9]*/run.jsonl "$out/all/run.jsonl" "$out/junit.xml"
    ;;
shard)
    modiff=$1 shard=$2
    shift 2
    "$modiff" run --shard "$shard" --out "$out/${shard%/*}" "$@"
    status=$?
    if ! is_whole "$out/${shard%/*}"; then
        echo "shard $shard ended with status $status and left no whole record"
        exit 1
    fi
    ;;
merge)
    modiff=$1 shards=$2
    set --
    while [ $# -lt "$shards" ]; do
        set -- "$@" "$out/$(($# + 1))"
    done
    "$modiff" merge "$@" --out "$out/all"
    status=$?
    if is_whole "$out/all"; then
        "$modiff" junit --record "$out/all" --out "$out/junit.xml" || status=2
    fi
    exit $status
    ;;
whole)
    modiff=$1
    shift
    mkdir -p "$out"
    exec "$modiff" run --shard 1/1 --out "$out/all" --junit "$out/junit.xml" "$@"
    ;;
esac
