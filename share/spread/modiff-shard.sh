#!/bin/bash
# Compares one shard of a run that is spread over machines:
#
#     MODIFF_RUN_ID=ID modiff-shard.sh DIR I/N [RUN-OPTION...]
#
# DIR belongs to one run: its record goes to DIR/shard-I, its output to DIR/shard-I.log. A shard of this run that is
# complete is not compared again, so that a scheduler may start it as often as it likes; another ID, other options or
# another modiff are refused, so that nothing of last night passes for today's. modiff-gather.sh joins the shards.
#
# Status 0: the shard is compared, whatever it found, which its record tells. Anything else: it is not, and is to be
# started again: 75 while another process has the shard, 2 for a mistake, otherwise how modiff ended.
#
# MODIFF: the program, otherwise modiff in PATH. MODIFF_SHARD_JOBS: processes on this machine, for -j.
# MODIFF_LOCK_WAIT: seconds, 600 by default, to wait for another process that has the shard.
set -uo pipefail
spread=$(dirname "$(realpath "${BASH_SOURCE[0]}")")
# shellcheck source=share/spread/spread-functions.sh
source "$spread/spread-functions.sh"

[[ $# -ge 2 && $2 =~ ^([1-9][0-9]{0,5})/([1-9][0-9]{0,5})$ ]] || fail "usage: DIR I/N [RUN-OPTION...]"
[[ ${MODIFF_RUN_ID-} ]] || fail "MODIFF_RUN_ID must name the run, by a word that is new for each"
dir=$(realpath -m -- "$1")
index=${BASH_REMATCH[1]} count=${BASH_REMATCH[2]}
shift 2
((index <= count)) || fail "there is no shard $index of $count"
refuse_options "$@"
modiff=${MODIFF:-modiff}
version=$("$modiff" --version) || fail "$modiff does not run"
claim_directory "$dir" "$(describe_run "$MODIFF_RUN_ID" "$count" "$version" "$@")"
record=$dir/shard-$index

# modiff and what it starts inherit the lock, so that it outlives this script for as long as somebody compares.
exec 9>>"$record.lock" || exit 2
if ! flock -w "${MODIFF_LOCK_WAIT:-600}" 9; then
    echo "shard $index of $count: another process has it" >&2
    exit 75
fi
if is_complete "$record"; then
    echo "shard $index of $count: complete already"
    exit 0
fi

jobs=()
[[ ${MODIFF_SHARD_JOBS-} ]] && jobs=(-j "$MODIFF_SHARD_JOBS")
echo "=== $(uname -n), $(date '+%F %T')" >>"$record.log"
"$modiff" run --shard "$index/$count" --out "$record" --progress none "${jobs[@]}" "$@" >>"$record.log" 2>&1 &
child=$!
for signal in TERM INT HUP; do
    trap 'kill -TERM "$child" 2>/dev/null' "$signal"
done
wait "$child"
status=$?
while kill -0 "$child" 2>/dev/null; do # a signal has ended the waiting, not modiff
    wait "$child"
    status=$?
done

# No pair at all is left by the options: there is no record, and gathering must know that none is missing.
if ((status == 3)) && [[ ! -e $record/run.jsonl ]]; then
    mkdir -p -- "$record" && cp -- "$record.log" "$record/nothing"
fi
if ((status <= 3)) && is_complete "$record"; then
    echo "shard $index of $count: compared, status $status"
    exit 0
fi
echo "shard $index of $count: not compared, status $status; $(tail -n 1 "$record.log")" >&2
exit $((status ? status : 2))
