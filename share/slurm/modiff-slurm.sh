#!/bin/bash
# Spreads a run over the nodes of a Slurm cluster:
#
#     modiff-slurm.sh [-n SHARDS] --out DIR [--wait] [SBATCH-OPTION...] -- [RUN-OPTION...]
#     modiff-slurm.sh --resume --out DIR [--wait] [SBATCH-OPTION...]
#
# An array job compares the shards, on the processors that Slurm gives it (--cpus-per-task=4, say); a second job joins
# them in DIR/merged when all have ended. A shard whose process dies is compared again at once, three times in all; one
# whose node dies is queued again by Slurm. A shard that is missing in the end fails the second job. The status is 0
# when both are queued; with --wait that of one run over all pairs, 2 when a shard is missing.
#
# -n: 8 by default. --resume: queues a run whose shards are missing after all; those that are complete stay.
# All nodes must have the tree, DIR and modiff under the same paths.
set -uo pipefail
spread=$(realpath -- "$(dirname "$(realpath "${BASH_SOURCE[0]}")")/../spread")
# shellcheck source=share/spread/spread-functions.sh
source "$spread/spread-functions.sh"

shards="" dir="" is_waiting="" is_resuming="" options=()
while (($#)); do
    case $1 in
    -n) shards=${2-} && shift ;;
    --out) dir=${2-} && shift ;;
    --wait) is_waiting=1 ;;
    --resume) is_resuming=1 ;;
    -h | --help) sed -n '2,/^set /{/^#/s/^# \{0,1\}//p}' "${BASH_SOURCE[0]}" && exit ;;
    --) shift && break ;;
    --array* | -a | --dependency* | -d | --wrap*) fail "$1 is given by this script" ;;
    *) options+=("$1") ;;
    esac
    (($#)) && shift
done
[[ $dir ]] || fail "usage: [-n SHARDS] --out DIR [--wait] [--resume] [SBATCH-OPTION...] -- [RUN-OPTION...]"
[[ $is_resuming && ($shards || $# -gt 0) ]] && fail "a run that is resumed keeps its shards and options"
shards=${shards:-8}
[[ $shards =~ ^[1-9][0-9]{0,5}$ ]] || fail "-n $shards is no number of shards"
command -v sbatch >/dev/null || fail "there is no sbatch here"

dir=$(realpath -m -- "$dir")
if [[ $is_resuming ]]; then
    shards=$(shards_of "$dir") || exit 2
else
    prepare_run "$dir" "$shards" "$@"
fi
rm -f -- "$dir/status"
# In names of log files Slurm replaces what begins with %.
logs=${dir//%/%%}
submit=(sbatch --parsable --requeue --job-name=modiff --open-mode=append "${options[@]}")

array=$("${submit[@]}" --array="1-$shards" --output="$logs/slurm-%a.log" <<END
#!/bin/bash
starter=$(printf %q "$dir/shard.sh")
export MODIFF_SHARD_JOBS=\$SLURM_CPUS_ON_NODE
for attempt in 1 2 3; do
    bash "\$starter" "\$SLURM_ARRAY_TASK_ID" && exit
    status=\$?
done
exit \$status
END
) || fail "the shards cannot be queued"
array=${array%%;*}
echo "shards     job $array, tasks 1 to $shards"

gather() { # OPTION...
    "${submit[@]}" --dependency="afterany:$array" --output="$logs/merge.log" "$@" <<END
#!/bin/bash
exec bash $(printf %q "$dir/shard.sh") gather
END
}
if [[ ! $is_waiting ]]; then
    merge=$(gather) || { scancel "$array"; fail "the joining cannot be queued"; }
    echo "joining    job ${merge%%;*}, status in $(printf %q "$dir/status"), output in $(printf %q "$dir/merge.log")"
    exit 0
fi

: >"$dir/merge.log"
gather --wait >"$dir/merge.id" &
child=$!
trap 'ended=1; kill "$child" 2>/dev/null' TERM INT HUP
ended=""
wait "$child"
merge=$(<"$dir/merge.id")
if [[ $ended ]]; then
    scancel "$array" "${merge%%;*}"
    fail "ended by a signal, and the jobs with it; --resume goes on"
fi
# What another machine has written may be seen some seconds later here.
for ((seconds = 0; seconds < 60; ++seconds)); do
    [[ ! -s $dir/status ]] || break
    sleep 1
done
cat -- "$dir/merge.log"
status=$(cat -- "$dir/status" 2>/dev/null) || fail "job ${merge%%;*}, which joins the shards, has left no status"
exit "$status"
