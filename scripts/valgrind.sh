#!/bin/bash
# Runs the tests and the driver under valgrind's memcheck; the status is 1 when it finds an error or a leak, or when a
# test fails. Left out are the tests that compare thousands of random expressions, which take hours under valgrind and
# are run by the sanitizers, and those that measure the heap, which valgrind replaces.
set -uo pipefail
cd "$(dirname "${BASH_SOURCE[0]}")/.." || exit 1
export PATH=/usr/bin:/bin:$PATH # the engines run `python`, which must be the one with Debian's modules

build=$PWD/build/valgrind
scripts/install-dependencies.sh --tests valgrind || exit 1
command -v valgrind >/dev/null || { echo "valgrind is missing; install the package valgrind" >&2 && exit 1; }
cmake --preset debug -B "$build" && cmake --build "$build" || exit 1

# The tests' own operator new, which fails on demand, is to stay in place.
memcheck=(valgrind --quiet --error-exitcode=99 --leak-check=full --soname-synonyms=somalloc=nouserintercepts)
left_out="PatternDifferential.*:HarnessTimers.leaked_bytes_*:HarnessMemory.*:KLTUtMemory.shows_a_leak_*"
status=0
"${memcheck[@]}" "$build/tests/modiff_tests" --gtest_brief=1 --gtest_filter="-$left_out" || status=1

echo "The driver on the samples:"
modiff=$(mktemp)
trap 'rm -f "$modiff"' EXIT
printf '#!/bin/sh\nexec %s %s "$@"\n' "${memcheck[*]}" "$build/driver/modiff" >"$modiff"
chmod +x "$modiff"
MODIFF=$modiff scripts/verify-samples.sh --time-limit none --memory-limit none || status=1
((status == 0)) && echo "valgrind: no errors"
exit "$status"
