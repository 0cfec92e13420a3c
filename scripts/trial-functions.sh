# shellcheck shell=bash disable=SC2034
# What the trials of spreading share; bash reads it, nobody runs it. They try on one machine what takes several: the
# sample reports, whose scripts are made slow, so that there is time to kill something, and a local run to compare with.

export PATH=/usr/bin:/bin:/usr/sbin:/sbin # the engines run `python`, which must be the one with Debian's modules
source_directory=$PWD
work=$(mktemp -d)
chmod 755 "$work"
has_failed=""

say() {
    printf '\n=== %s\n' "$*"
}

# Ends the trial; what it wrote stays.
fail() {
    echo "FAILED: $*" >&2
    has_failed=1
    exit 1
}

# Makes the tree and the local run's record $work/one; enters the working directory.
prepare_trial() { # MODIFF
    modiff=$(realpath -- "${1:-build/release/driver/modiff}")
    "$modiff" --version >/dev/null || fail "there is no $modiff; build it, or name another"
    export MODIFF=$modiff
    cp -rL samples/server samples/src "$work"
    echo 'import time; time.sleep(5)' >>"$work/src/kavu/Builds/tools/modifftools/__init__.py"
    cd "$work/server/run" || exit 1
    local status=0
    timeout 120 "$modiff" run --out "$work/one" >"$work/one.log" 2>&1 || status=$?
    ((status == 1)) || fail "the local run ends with $status"
}

# Runs a command within a time, its output in a log, and checks how it ends.
expect() { # STATUS LOG COMMAND...
    local wanted=$1 log=$work/$2 status=0
    shift 2
    timeout --kill-after 10 300 "$@" >"$log" 2>&1 || status=$?
    grep -E '^(shard|note:|next:|[0-9]+ pairs|[a-z.-]+:) ' "$log"
    ((status == wanted)) || fail "$1 ends with $status instead of $wanted; see $log"
}

# The joined record tells what the local run told: outcomes of all pairs, counts, and nothing twice.
check_joined() { # DIR
    python3 - "$work/one/run.jsonl" "$1/merged/run.jsonl" <<'END' || fail "$1/merged is not what the local run told"
import json, sys
told = []
for name in sys.argv[1:]:
    lines = [json.loads(line) for line in open(name, encoding="utf-8")]
    told.append((sorted((line["id"], line["outcome"]) for line in lines if "id" in line), lines[-1]["counts"]))
print("outcomes of", len(told[1][0]), "pairs as in the local run:", {k: n for k, n in told[1][1].items() if n})
sys.exit(told[0] != told[1] or not told[0][0])
END
}

# Waits, for a minute at most, until a command succeeds.
wait_until() { # COMMAND...
    local tries
    for ((tries = 0; tries < 300; ++tries)); do
        "$@" >/dev/null 2>&1 && return
        sleep 0.2
    done
    fail "it takes too long until: $*"
}

# The process of modiff that compares a shard, the first of them: its workers have the same command line.
shard_process() { # DIR SHARD
    pgrep -o -f -- "^$modiff run --shard $2/[0-9]+ --out $1/shard-$2 "
}

attempts() { # DIR SHARD
    grep -c '^===' "$1/shard-$2.log"
}

# A process and all that it started, by their numbers.
family() { # PID
    local child
    echo "$1"
    for child in $(pgrep -P "$1"); do
        family "$child"
    done
}

kill_family() { # PID
    local pid
    for pid in $(family "$1"); do
        kill -KILL "$pid" 2>/dev/null
    done
    wait "$1" 2>/dev/null
}

# The last lines of a trial: what it wrote goes when all was right.
end_trial() {
    if [[ $has_failed ]]; then
        echo "What was written is in $work" >&2
    else
        rm -rf "$work"
    fi
}
