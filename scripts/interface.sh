#!/bin/bash
# Compares the exported interface of the library with its baseline, share/interface/: interface.sh [--renew] [LIBRARY], by
# default that of the release preset. Every change is told and ends with status 1, additions too, so that none goes
# unseen; --renew makes the library's interface the baseline. The library must have debug information and be made for
# x86_64. Status 77: abigail-tools are not installed.
set -euo pipefail
directory=$(cd "$(dirname "${BASH_SOURCE[0]}")/.." && pwd)
renew=
if [[ ${1-} == --renew ]]; then
    renew=yes
    shift
fi
library=$(realpath "${1:-$directory/build/release/libMoDiffEngine.so}")
baseline=$directory/share/interface/libMoDiffEngine.abi.xz
if ! command -v abidw >/dev/null; then
    echo "NOT RUN: the exported interface is not compared; get abidiff with: apt-get install abigail-tools" >&2
    exit 77
fi

work=$(mktemp -d)
trap 'rm -rf "$work"' EXIT
mkdir "$work/headers"
cp "$directory"/{support,diffengine,diffengine/engines,harness}/*.h "$work/headers" # types of other headers are private
abidw --headers-dir "$work/headers" --suppressions "$directory/share/interface/suppressions.ini" --drop-private-types \
    --drop-undefined-syms --exported-interfaces-only --no-corpus-path --no-comp-dir-path --no-show-locs \
    --no-parameter-names --no-elf-needed --type-id-style hash --out-file "$work/now.abi" "$library"
if [[ $renew ]]; then
    xz -9 -c "$work/now.abi" >"$work/now.xz"
    cp "$work/now.xz" "$baseline"
    echo "$baseline is renewed."
    exit
fi
xz -dc "$baseline" >"$work/baseline.abi"
if ! abidiff --suppressions "$directory/share/interface/suppressions.ini" "$work/baseline.abi" "$work/now.abi"; then
    echo "The exported interface is not the baseline's. If that is meant and compatible: scripts/interface.sh --renew" >&2
    exit 1
fi
echo "The exported interface is the baseline's."
