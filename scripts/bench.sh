#!/bin/bash
# Builds the benchmarks and prints one table: the library beside whole-text ICU, RE2, Perl, Python, cmp and numdiff.
# Takes about a quarter of an hour; with --quick, which leaves out the largest texts, a few minutes. The status is 1
# when a peer gives other bytes, 2 when a benchmark can't be run.
set -euo pipefail
cd "$(dirname "${BASH_SOURCE[0]}")/.."

export PATH=/usr/bin:/bin:$PATH
scripts/install-dependencies.sh libbenchmark-dev libre2-dev pkg-config numdiff diffutils perl || exit 2
cmake --preset bench >&2 || exit 2
cmake --build --preset bench >&2 || exit 2
exec /usr/bin/python3 bench/table.py build/bench "$@"
