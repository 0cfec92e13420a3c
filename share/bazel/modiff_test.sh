#!/bin/sh
# What a modiff_test runs, in the variables that Bazel sets: modiff_test.sh CONFIG MODIFF [OPTION...]
#
# modiff itself reads which shard it is and touches TEST_SHARD_STATUS_FILE. A shard for which no pair is left passes, a
# suite without any pair ends with status 3.
set -u

config=$1 modiff=$2
shift 2
case $modiff in
*/*) modiff=$PWD/$modiff ;; # one of the runfiles
esac
[ -z "${TESTBRIDGE_TEST_ONLY-}" ] || set -- "$@" "$TESTBRIDGE_TEST_ONLY"
TMPDIR=${TEST_TMPDIR:-${TMPDIR:-/tmp}}
export TMPDIR
outputs=${TEST_UNDECLARED_OUTPUTS_DIR:-$(mktemp -d)} || exit
record=$outputs/record

"$modiff" run --config "$config" --out "$record" ${XML_OUTPUT_FILE:+--junit "$XML_OUTPUT_FILE"} "$@"
status=$?
if [ -f "$record/run.jsonl" ]; then
    "$modiff" report --record "$record" --out "$outputs/pages" || [ $status -ne 0 ] || status=2
fi
exit $status
