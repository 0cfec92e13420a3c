#!/bin/bash
# Measures how much of the code the tests run: prints the line coverage of the library and of the driver, with the
# lines that no test reaches. The status is 1 when a test fails or the library's coverage is below 95 %.
set -uo pipefail
cd "$(dirname "${BASH_SOURCE[0]}")/.." || exit 1
export PATH=/usr/bin:/bin:$PATH

least=95
build=$PWD/build/coverage
scripts/install-dependencies.sh --tests gcovr || exit 1
command -v gcovr >/dev/null || { echo "gcovr is missing; install the package gcovr" >&2 && exit 1; }

cmake -G Ninja -S . -B "$build" -DCMAKE_BUILD_TYPE=Debug -DCMAKE_CXX_COMPILER=g++ \
    -DCMAKE_CXX_FLAGS="--coverage -fprofile-update=atomic -DNDEBUG" && cmake --build "$build" || exit 1
find "$build" -name '*.gcda' -delete # of earlier runs
status=0
ctest --test-dir "$build" --output-on-failure --no-tests=error -j "$(nproc)" || status=1

report() { # TITLE OPTIONS...
    printf '\n=== %s\n' "$1"
    shift
    gcovr --root . --object-directory "$build" --exclude-throw-branches --print-summary \
        --exclude-directories '.*/CompilerIdCXX' --exclude-directories '.*/tests/consumer' "$@" "$build"
}

report "library" --filter 'support/' --filter 'diffengine/' --filter 'harness/' --fail-under-line "$least" || status=1
report "driver" --filter 'driver/' || status=1
exit "$status"
