# shellcheck shell=bash disable=SC2016,SC2154
# What the scripts share that spread a run over machines; bash reads it, nobody runs it.
# A run's directory holds: run (which run this is), shard.sh (starts a shard on any machine), for each shard I the
# record shard-I/, its output shard-I.log and its lock shard-I.lock, and at the end the joined record merged/.

fail() {
    echo "${0##*/}: $*" >&2
    exit 2
}

# Options that belong to the scripts, that need all pairs in one place, or whose meaning differs between shards.
refuse_options() { # RUN-OPTION...
    local option
    for option in "$@"; do
        case $option in
        --) return ;;
        --shard | --shard=* | --out | --out=* | --resume) fail "$option is given by this script" ;;
        --summary | --summary=* | --junit | --junit=*) fail "$option needs all pairs: make it from the joined record" ;;
        --fail-fast | --fail-fast=*) fail "$option leaves shards incomplete, which cannot be joined" ;;
        --list | --print-config | -h | --help) fail "$option compares nothing" ;;
        esac
    done
}

# The run of a directory, one word of the shell a value, so that two can be compared byte by byte.
describe_run() { # ID SHARDS VERSION [RUN-OPTION...]
    local id=$1 shards=$2 version=$3
    shift 3
    printf 'id %q\nshards %d\nprogram %q\ndirectory %q\noptions' "$id" "$shards" "$version" "$(pwd -P)"
    (($# == 0)) || printf ' %q' "$@"
    echo
}

# Takes a directory for a run, or finds that it is this run's already. A link is made by one machine only, also on NFS.
claim_directory() { # DIR DESCRIPTION
    local dir=$1 description=$2 draft older
    mkdir -p -- "$dir" || fail "cannot make the directory of the run"
    draft=$dir/run.$(uname -n).$$
    older=("$dir"/shard-*)
    printf '%s\n' "$description" >"$draft" || fail "cannot write to the directory of the run"
    if ln -- "$draft" "$dir/run" 2>/dev/null && [[ -e ${older[0]} ]]; then
        rm -f -- "$draft" "$dir/run"
        fail "$(printf %q "$dir") holds shards of an unknown run; take a new directory"
    fi
    rm -f -- "$draft"
    [[ $(<"$dir/run") == "$description" ]] && return
    diff --label "this directory's run" --label "asked for" -U 9 "$dir/run" - <<<"$description" >&2
    fail "$(printf %q "$dir") belongs to another run; take a new directory"
}

# A record is whole when modiff has written its last line.
is_complete() { # RECORD-DIRECTORY
    [[ -e $1/nothing ]] || [[ $(tail -n 1 -- "$1/run.jsonl" 2>/dev/null) == '{"complete":true,'* ]]
}

# One word for shells of any kind, such as the one that sshd starts.
shell_word() { # TEXT
    printf "'%s'" "${1//\'/\'\\\'\'}"
}

# Makes a new directory for a run and, in it, shard.sh, which compares a shard on whichever machine it is started:
# same directory, same program, same options. "shard.sh look" tells what the machine sees instead, "shard.sh gather"
# joins the shards.
prepare_run() { # DIR SHARDS [RUN-OPTION...]
    local dir=$1 shards=$2 id version program
    shift 2
    refuse_options "$@"
    program=$(realpath -- "$(command -v "${MODIFF:-modiff}")" 2>/dev/null) || fail "there is no ${MODIFF:-modiff} here"
    version=$("$program" --version) || fail "$program does not run"
    [[ ! -e $dir/run ]] || fail "$(printf %q "$dir") has a run; take a new directory, or go on with it by --resume"
    id=$(date +%Y%m%dT%H%M%S)-$(uname -n)-$$
    (claim_directory "$dir" "$(describe_run "$id" "$shards" "$version" "$@")") || exit
    {
        echo '#!/bin/bash'
        printf 'cd %q || exit 2\n' "$(pwd -P)"
        printf 'export PATH=%q MODIFF=%q MODIFF_RUN_ID=%q\n' "$PATH" "$program" "$id"
        printf 'options=('
        (($# == 0)) || printf '%q ' "$@"
        printf ')\nif [[ $1 == look ]]; then\n    "$MODIFF" --version\n    cat %q\n' "$dir/run"
        printf '    "$MODIFF" run --print-config "${options[@]}" | grep -v "^jobs ="\n    exit\nfi\n'
        printf '[[ $1 == gather ]] && exec %q %q\n' "$spread/modiff-gather.sh" "$dir"
        printf 'exec %q %q "$1/%d" "${options[@]}"\n' "$spread/modiff-shard.sh" "$dir" "$shards"
    } >"$dir/shard.sh" || fail "cannot write to the directory of the run"
}

shards_of() { # DIR
    local shards
    shards=$(sed -n 's/^shards //p' "$1/run" 2>/dev/null)
    [[ $shards ]] || fail "$(printf %q "$1") is the directory of no run"
    echo "$shards"
}
