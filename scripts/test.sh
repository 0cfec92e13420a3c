#!/bin/bash
# Runs all tests on a bare Debian 12 after installing what is missing: release build, address and undefined-behaviour
# sanitizers, thread sanitizer, and what else stands in this directory. A stage that fails doesn't keep the others from
# running. The last line tells how many tests passed and failed; the status is 0 when none failed.
set -uo pipefail
cd "$(dirname "${BASH_SOURCE[0]}")/.." || exit 1
export PATH=/usr/bin:/bin:$PATH # the engines run `python`, which must be the one with Debian's modules

# The sanitizers are clang's, which build faster; the rest is what single tests would be left out without.
scripts/install-dependencies.sh --tests clang libclang-rt-14-dev abigail-tools bash-completion chromium \
    chromium-driver doxygen fish groff python3-selenium zsh || exit 1

output=$(mktemp)
trap 'rm -f "$output"' EXIT
passed=0
failed=0
not_run=()

# Runs a command and adds up the closing lines of ctest in its output. Status 77 means that the machine cannot run it.
stage() { # TITLE COMMAND...
    local title=$1 status=0 before=$failed failures total
    shift
    printf '\n=== %s\n' "$title"
    SECONDS=0
    "$@" 2>&1 | tee "$output" || status=$?
    if ((status == 77)); then
        echo "=== $title: NOT RUN, see above"
        not_run+=("$title")
        return
    fi
    while read -r failures total; do
        failed=$((failed + failures))
        passed=$((passed + total - failures))
    done < <(sed -n 's/^[0-9]*% tests passed, \([0-9]*\) tests failed out of \([0-9]*\)$/\1 \2/p' "$output")
    if ((status != 0 && failed == before)); then
        failed=$((failed + 1)) # the stage itself
    fi
    echo "=== $title: $( ((status)) && echo failed || echo passed) after $SECONDS s"
}

preset() { # NAME
    cmake --preset "$1" && cmake --build --preset "$1" && ctest --preset "$1" -j "$(nproc)"
}

stage "release" preset release
stage "address and undefined-behaviour sanitizers" preset asan
stage "thread sanitizer" preset tsan
[[ -x scripts/test-i386.sh ]] && stage "32-bit" scripts/test-i386.sh
[[ -x scripts/fuzz.sh ]] && stage "fuzz targets, briefly" scripts/fuzz.sh --short

echo
((${#not_run[@]})) && printf 'NOT RUN: %s\n' "${not_run[@]}"
echo "$passed passed, $failed failed"
((failed == 0))
