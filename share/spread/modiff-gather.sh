#!/bin/bash
# Joins the shards of a run that was spread over machines: modiff-gather.sh DIR. The joined record goes to DIR/merged,
# the status to DIR/status. It is that of one run over all pairs; 2 when a shard is missing or incomplete.
set -uo pipefail
spread=$(dirname "$(realpath "${BASH_SOURCE[0]}")")
# shellcheck source=share/spread/spread-functions.sh
source "$spread/spread-functions.sh"

(($# == 1)) || fail "usage: DIR"
dir=$(realpath -- "$1") || exit 2
shards=$(shards_of "$dir") || exit 2
rm -f -- "$dir/status"
records=()
nothing=0
for ((index = 1; index <= shards; ++index)); do
    records+=("$dir/shard-$index")
    [[ -e $dir/shard-$index/nothing ]] && nothing=$((nothing + 1))
done
if ((nothing == shards)); then
    tail -n 1 -- "$dir/shard-1/nothing" >&2
    status=3
else
    "${MODIFF:-modiff}" merge "${records[@]}" --out "$dir/merged"
    status=$?
fi
echo "$status" >"$dir/status.part" && mv -- "$dir/status.part" "$dir/status" || exit 2
exit "$status"
