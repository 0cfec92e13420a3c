#!/bin/bash
# Spreads a run over machines by GNU parallel over ssh:
#
#     modiff-parallel.sh [-S HOST,HOST...] [-n SHARDS] --out DIR -- [RUN-OPTION...]
#     modiff-parallel.sh [-S HOST,HOST...] --resume --out DIR
#
# Each host compares one shard at a time, on all its cores. A shard whose process, connection or host dies is compared
# by another host, up to three times in all. Hosts that do not answer at the start are left out; hosts that see another
# modiff, another configuration or another directory are refused. Then the shards are joined in DIR/merged, and the
# status is that of one run over all pairs: 2 when a shard is missing.
#
# -S: as parallel takes it; ":" is this machine without ssh, and the default. -n: by default four shards a host, so that
# a host that dies costs little. --resume: compares the shards that are missing after all, and joins again.
# All hosts must have the tree, DIR and modiff under the same paths. PARALLEL_SSH: the command for ssh.
set -uo pipefail
spread=$(dirname "$(realpath "${BASH_SOURCE[0]}")")/../spread
# shellcheck source=share/spread/spread-functions.sh
source "$spread/spread-functions.sh"
spread=$(realpath -- "$spread")

usage="[-S HOST,HOST...] [-n SHARDS] [--resume] --out DIR -- [RUN-OPTION...]"
hosts=() shards="" dir="" is_resuming=""
while (($#)); do
    case $1 in
    -S) IFS=, read -r -a more <<<"${2-}" && hosts+=("${more[@]}") && shift ;;
    -n) shards=${2-} && shift ;;
    --out) dir=${2-} && shift ;;
    --resume) is_resuming=1 ;;
    -h | --help) sed -n '2,/^set /{/^#/s/^# \{0,1\}//p}' "${BASH_SOURCE[0]}" && exit ;;
    --) shift && break ;;
    *) fail "$1 is no option; usage: $usage" ;;
    esac
    (($#)) && shift
done
[[ $dir ]] || fail "usage: $usage"
[[ $is_resuming && ($shards || $# -gt 0) ]] && fail "a run that is resumed keeps its shards and options"
((${#hosts[@]})) || hosts=(:)
shards=${shards:-$((4 * ${#hosts[@]}))}
[[ $shards =~ ^[1-9][0-9]{0,5}$ ]] || fail "-n $shards is no number of shards"
command -v parallel >/dev/null || fail "GNU parallel is missing; install the package parallel"
# A host that is gone without a word must not hold its shard for ever.
limits="-oConnectTimeout=10 -oServerAliveInterval=10 -oServerAliveCountMax=3"
export PARALLEL_SSH="${PARALLEL_SSH:-ssh} -oBatchMode=yes $limits"

dir=$(realpath -m -- "$dir")
if [[ $is_resuming ]]; then
    shards=$(shards_of "$dir") || exit 2
else
    prepare_run "$dir" "$shards" "$@"
fi
starter=$(shell_word "$dir/shard.sh")

# What a host sees, but for the number of its cores. A host that answers says so first.
look() { # HOST
    timeout 120 parallel --will-cite --plain --nonall -j1 -S "$1" "echo answers; bash $starter look" </dev/null 2>&1
}

# Sets alive to the hosts that answer.
check_hosts() {
    local host seen expected
    expected=$(echo answers && bash "$dir/shard.sh" look) || fail "this machine cannot compare: $expected"
    alive=()
    for host in "${hosts[@]}"; do
        seen=$(look "$host")
        if [[ $seen == "$expected" ]]; then
            alive+=("$host")
        elif [[ $'\n'$seen$'\n' != *$'\nanswers\n'* ]]; then
            echo "note: $host does not answer and is left out: $(tail -n 1 <<<"$seen")" >&2
        else
            diff --label "this machine" --label "$host" -U 0 <(echo "$expected") - <<<"$seen" >&2
            fail "$host sees something else than this machine"
        fi
    done
    ((${#alive[@]})) || fail "no host answers"
}

check_hosts
sshlogins=()
for host in "${alive[@]}"; do
    sshlogins+=(-S "$host")
done
seq "$shards" >"$dir/shards"
parallel --will-cite --plain -j1 "${sshlogins[@]}" --retries 3 --joblog "$dir/joblog" -a "$dir/shards" \
    "bash $starter {}" </dev/null &
child=$!
# The first signal lets parallel wait for its jobs, the second ends them.
trap 'kill -TERM "$child" 2>/dev/null; sleep 1; kill -TERM "$child" 2>/dev/null; ended=1' TERM INT HUP
ended=""
while kill -0 "$child" 2>/dev/null; do
    wait "$child"
done
[[ ! $ended ]] || fail "ended by a signal; --resume goes on"
bash "$dir/shard.sh" gather
status=$?
if [[ ! -e $dir/merged/run.jsonl ]] && ((status == 2)); then
    echo "next: $0 --resume --out $(printf %q "$dir") compares the shards that are missing" >&2
fi
exit "$status"
