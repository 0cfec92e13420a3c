#!/bin/bash
# Tries share/parallel for real: trial-parallel.sh [MODIFF]. Several sshd on the loopback, each with a port of its own,
# are the hosts; keys and configuration are made for the trial and lie in its directory. The samples are compared in
# four shards while a port is closed, a process is killed and a host dies, and must give what one local run gives.
# Needs the packages parallel and openssh-server; status 77 without them.
set -uo pipefail
cd "$(dirname "${BASH_SOURCE[0]}")/.." || exit 1
# shellcheck source=scripts/trial-functions.sh
source scripts/trial-functions.sh
trap end_all EXIT
trap 'exit 1' INT TERM HUP

declare -A port=() daemon=()

end_all() {
    local host
    for host in "${!daemon[@]}"; do
        kill_family "${daemon[$host]}"
    done
    wait
    end_trial
}

for program in parallel sshd ssh; do
    command -v "$program" >/dev/null || { echo "NOT RUN: there is no $program here" >&2 && exit 77; }
done

start_host() { # HOST
    /usr/sbin/sshd -D -f "$work/sshd_config" -p "${port[$1]}" -o PidFile=none 2>>"$work/sshd-$1.log" </dev/null &
    daemon[$1]=$!
}

make_hosts() { # HOST...
    local host key
    ((EUID != 0)) || mkdir -p /run/sshd
    for key in host user; do
        ssh-keygen -q -t ed25519 -N '' -f "$work/${key}_key" || fail "no keys can be made"
    done
    cp "$work/user_key.pub" "$work/authorized_keys"
    printf '%s\n' "ListenAddress 127.0.0.1" "HostKey $work/host_key" "AuthorizedKeysFile $work/authorized_keys" \
        "StrictModes no" "UsePAM no" "PasswordAuthentication no" "PermitRootLogin prohibit-password" \
        >"$work/sshd_config"
    read -r -a ports < <(python3 -c '
import socket, sys
sockets = [socket.create_server(("127.0.0.1", 0)) for _ in sys.argv[1:]]
print(*(s.getsockname()[1] for s in sockets))' "$@")
    for host in "$@"; do
        port[$host]=${ports[${#port[@]}]}
        printf '%s\n' "Host $host" "HostName 127.0.0.1" "Port ${port[$host]}" "User $(id -un)" \
            "IdentityFile $work/user_key" "IdentitiesOnly yes" "UserKnownHostsFile $work/known_hosts" \
            >>"$work/ssh_config"
        echo "[127.0.0.1]:${port[$host]} $(<"$work/host_key.pub")" >>"$work/known_hosts"
    done
    export PARALLEL_SSH="ssh -F $work/ssh_config"
}

spread_run() { # DIR HOSTS [RUN-OPTION...]
    local dir=$1 hosts=$2
    shift 2
    exec "$source_directory/share/parallel/modiff-parallel.sh" -S "$hosts" -n 4 --out "$dir" -- "$@"
}
export -f spread_run
export source_directory

prepare_trial "${1-}"
make_hosts one two three dead
for host in one two three; do
    start_host "$host"
done
for host in one two three; do
    wait_until ssh -F "$work/ssh_config" "$host" true
done

say "Four shards on three hosts; a fourth host does not answer"
expect 1 plain.log bash -c 'spread_run "$@"' - "$work/plain" one,two,three,dead
grep -q '^note: dead does not answer' "$work/plain.log" || fail "the dead host is not told"
check_joined "$work/plain"
cut -f 2,7,9 "$work/plain/joblog"

say "A process of modiff is killed"
expect 1 killed.log bash -c 'spread_run "$@"' - "$work/killed" one,two,three &
trial=$!
wait_until shard_process "$work/killed" 2
sleep 1
kill -KILL "$(shard_process "$work/killed" 2)" || fail "nothing to kill"
wait "$trial" || fail "see $work/killed.log"
(($(attempts "$work/killed" 2) == 2 && $(attempts "$work/killed" 1) == 1)) || fail "not only shard 2 was started again"
check_joined "$work/killed"

# Finds the host that compares shard 3, leaves its name in victim, and lets it perish in some way.
lose_host() { # DIR COMMAND
    local host shard
    wait_until shard_process "$1" 3
    shard=$(shard_process "$1" 3)
    sleep 1
    for host in one two three; do
        if family "${daemon[$host]}" | grep -x "$shard" >/dev/null; then
            victim=$host
            "$2" "${daemon[$host]}"
            return
        fi
    done
    fail "no host has shard 3"
}

# Its processes end, for their locks must be gone as those of a lost machine are; its connections stay and are silent.
silence() { # PID
    local pid
    for pid in $(family "$1"); do
        if [[ $(</proc/"$pid"/comm) == sshd ]]; then
            kill -STOP "$pid"
        else
            kill -KILL "$pid"
        fi
    done
}

check_lost_host() { # DIR
    (($(attempts "$1" 3) == 2)) || fail "shard 3 was not started again"
    cut -f 2,7,9 "$1/joblog"
    grep -q "^[0-9]*	$victim	.*shard.sh' 3\$" "$1/joblog" && fail "shard 3 is told to have run on the lost host $victim"
    check_joined "$1"
    kill_family "${daemon[$victim]}"
    start_host "$victim"
    wait_until ssh -F "$work/ssh_config" "$victim" true
}

for way in kill_family silence; do
    say "A host is lost: $way"
    expect 1 $way.log bash -c 'spread_run "$@"' - "$work/$way" one,two,three &
    trial=$!
    lose_host "$work/$way" $way
    wait "$trial" || fail "see $work/$way.log"
    check_lost_host "$work/$way"
done

say "A shard is missing"
rm -rf "$work/plain/shard-3" "$work/plain/merged"
expect 2 missing.log "$source_directory/share/spread/modiff-gather.sh" "$work/plain"
[[ ! -e $work/plain/merged/run.jsonl ]] || fail "a record was joined without shard 3"
expect 1 resumed.log "$source_directory/share/parallel/modiff-parallel.sh" -S one,two,three --resume --out "$work/plain"
check_joined "$work/plain"

say "Spreading by GNU parallel is all right"
