#!/bin/bash
# Tries share/slurm for real: trial-slurm.sh [MODIFF]. A cluster of three nodes with a processor each is set up on this
# machine: munged, slurmctld and three slurmd, with a key and a configuration that lie in the trial's directory. The
# samples are compared in four shards while a process is killed and a node dies, and must give what one local run gives.
# Needs root and the packages slurm-wlm and munge; status 77 without them.
set -uo pipefail
cd "$(dirname "${BASH_SOURCE[0]}")/.." || exit 1
# shellcheck source=scripts/trial-functions.sh
source scripts/trial-functions.sh
trap end_all EXIT
trap 'exit 1' INT TERM HUP

declare -A daemon=()

# The processes of a job end with the job; only then may the daemons that know them.
end_all() {
    local name
    if [[ ${daemon[slurmctld]-} ]]; then
        timeout 10 scancel --me 2>/dev/null
        for ((tries = 0; tries < 50; ++tries)); do
            [[ $(timeout 10 squeue -h 2>/dev/null) ]] || break
            sleep 0.2
        done
    fi
    for name in "${!daemon[@]}"; do
        kill_family "${daemon[$name]}"
    done
    for name in $(pgrep -f "^slurmstepd: \[[0-9]*\.batch\]\$"); do
        ! tr '\0' '\n' <"/proc/$name/environ" 2>/dev/null | grep -qx "SLURM_CONF=$SLURM_CONF" || kill_family "$name"
    done
    end_trial
}

for program in munged slurmctld slurmd sbatch; do
    command -v "$program" >/dev/null || { echo "NOT RUN: there is no $program here" >&2 && exit 77; }
done
((EUID == 0)) || { echo "NOT RUN: needs root" >&2 && exit 77; }

start() { # NAME COMMAND...
    local name=$1
    shift
    "$@" >>"$work/$name.out" 2>&1 </dev/null &
    daemon[$name]=$!
}

start_node() { # NODE
    start "$1" slurmd -D -N "$1"
}

make_cluster() {
    local ports node
    read -r -a ports < <(python3 -c '
import socket
sockets = [socket.create_server(("127.0.0.1", 0)) for _ in range(4)]
print(*(s.getsockname()[1] for s in sockets))')
    (umask 077 && head -c 128 /dev/urandom >"$work/munge.key")
    export SLURM_CONF=$work/slurm.conf
    cat >"$SLURM_CONF" <<END
ClusterName=trial
SlurmctldHost=$(hostname -s)(127.0.0.1)
SlurmctldPort=${ports[0]}
SlurmUser=root
AuthType=auth/munge
AuthInfo=socket=$work/munge.socket
CredType=cred/munge
StateSaveLocation=$work/state
SlurmdSpoolDir=$work/spool.%n
SlurmctldPidFile=$work/slurmctld.pid
SlurmdPidFile=$work/slurmd.%n.pid
SlurmctldLogFile=$work/slurmctld.log
SlurmdLogFile=$work/slurmd.%n.log
ProctrackType=proctrack/linuxproc
TaskPlugin=task/none
JobAcctGatherType=jobacct_gather/none
MpiDefault=none
SelectType=select/cons_tres
SelectTypeParameters=CR_CPU
SlurmdParameters=config_overrides
SlurmdTimeout=10
KillWait=5
ReturnToService=2
NodeName=one Port=${ports[1]} NodeHostname=$(hostname -s) NodeAddr=127.0.0.1 CPUs=1
NodeName=two Port=${ports[2]} NodeHostname=$(hostname -s) NodeAddr=127.0.0.1 CPUs=1
NodeName=three Port=${ports[3]} NodeHostname=$(hostname -s) NodeAddr=127.0.0.1 CPUs=1
PartitionName=trial Nodes=one,two,three Default=YES MaxTime=10 State=UP
END
    mkdir "$work/state"
    start munged munged --foreground --force --key-file="$work/munge.key" --socket="$work/munge.socket" \
        --pid-file="$work/munged.pid" --log-file="$work/munged.log" --seed-file="$work/munged.seed" --num-threads=2
    wait_until test -S "$work/munge.socket"
    start slurmctld slurmctld -D -c
    for node in one two three; do
        mkdir "$work/spool.$node"
        start_node "$node"
    done
}

idle_nodes() { # COUNT
    (($(sinfo -h -N -t idle -o %N | wc -l) == $1))
}

spread_run() { # DIR
    exec "$source_directory/share/slurm/modiff-slurm.sh" -n 4 --out "$1" --wait --time=5 --
}
export -f spread_run
export source_directory

# The process of slurmstepd above a process: a step outlives the slurmd of its node.
step_of() { # PID
    local pid=$1
    while ((pid > 1)); do
        [[ $(</proc/"$pid"/comm) == slurmstepd* ]] && echo "$pid" && return
        pid=$(awk '/^PPid:/ { print $2 }' "/proc/$pid/status")
    done
    return 1
}

prepare_trial "${1-}"
make_cluster
wait_until idle_nodes 3
sinfo -N -o '%N %c %T'

say "Four shards on three nodes"
expect 1 plain.log bash -c 'spread_run "$@"' - "$work/plain"
check_joined "$work/plain"

say "A process of modiff is killed"
expect 1 killed.log bash -c 'spread_run "$@"' - "$work/killed" &
trial=$!
wait_until shard_process "$work/killed" 2
sleep 1
kill -KILL "$(shard_process "$work/killed" 2)" || fail "nothing to kill"
wait "$trial" || fail "see $work/killed.log"
(($(attempts "$work/killed" 2) == 2 && $(attempts "$work/killed" 1) == 1)) || fail "not only shard 2 was started again"
check_joined "$work/killed"

say "A node dies"
expect 1 node.log bash -c 'spread_run "$@"' - "$work/node" &
trial=$!
wait_until shard_process "$work/node" 3
sleep 1
shard=$(shard_process "$work/node" 3) || fail "nothing to kill"
step=$(step_of "$shard") || fail "no step has shard 3"
victim=$(tr '\0' '\n' <"/proc/$shard/environ" | sed -n 's/^SLURMD_NODENAME=//p')
kill_family "${daemon[$victim]}"
kill_family "$step"
wait "$trial" || fail "see $work/node.log"
grep -h -i -E "node $victim|Requeue|nodes $victim" "$work/slurmctld.log" | tail -n 4
(($(attempts "$work/node" 3) == 2)) || fail "shard 3 was not started again"
check_joined "$work/node"
start_node "$victim"

say "A shard is missing"
rm -rf "$work/plain/shard-3" "$work/plain/merged"
expect 2 missing.log "$source_directory/share/spread/modiff-gather.sh" "$work/plain"
[[ ! -e $work/plain/merged/run.jsonl ]] || fail "a record was joined without shard 3"
expect 1 resumed.log "$source_directory/share/slurm/modiff-slurm.sh" --resume --out "$work/plain" --wait
check_joined "$work/plain"

say "A task is cancelled before it runs, and the joining fails"
"$source_directory/share/slurm/modiff-slurm.sh" -n 4 --out "$work/cancelled" -- | tee "$work/cancelled.log"
scancel "$(sed -n 's/^shards *job \([0-9]*\),.*/\1/p' "$work/cancelled.log")_4" || fail "nothing to cancel"
wait_until test -s "$work/cancelled/status"
tail -n 1 "$work/cancelled/merge.log"
[[ $(<"$work/cancelled/status") == 2 && ! -e $work/cancelled/merged ]] || fail "a record was joined without shard 4"

say "Spreading by Slurm is all right"
