#!/bin/bash
# Builds modiff and verifies the sample reports with it, on a bare Debian 12 after installing what is missing; then runs
# the sample test script. Ends with status 0 when every result is the one that samples/expected.txt tells and the
# script's only failure is the deliberate one. MODIFF names a driver that is to be used instead of building one.
set -euo pipefail
cd "$(dirname "${BASH_SOURCE[0]}")/.."
export PATH=/usr/bin:/bin:$PATH # the engines run `python`, which must be the one with Debian's modules

script=
if [[ -z ${MODIFF-} ]]; then
    scripts/install-dependencies.sh
    cmake --preset release -DMODIFF_BUILD_TESTS=OFF -B build/samples
    cmake --build build/samples
    MODIFF=$PWD/build/samples/driver/modiff
    script=$PWD/build/samples/script
    g++ -std=c++17 -O2 -Isupport -Idiffengine -Idiffengine/engines -Iharness samples/script.cpp -o "$script" \
        -Lbuild/samples -lMoDiffEngine -Wl,-rpath,"$PWD/build/samples"
fi

expected=$PWD/samples/expected.txt
work=$(mktemp -d)
output=$work/output
trap 'rm -rf "$work"' EXIT
failures=0
results=0

fail() {
    echo "UNEXPECTED: $*"
    failures=$((failures + 1))
}

# Compares the last output of modiff and its status with the lines of a group.
check_group() { # FORMAT OPTIONS STATUS
    local format options outcome master word line awaited=0 lines=0
    while IFS=$'\t' read -r format options _ outcome master; do
        [[ $format == "$1" && $options == "$2" ]] || continue
        lines=$((lines + 1))
        case $outcome in
        pass) word=passed ;;
        normalized) word=different awaited=1 ;;
        *) word=$outcome awaited=1 ;;
        esac
        printf -v word '%-11s' "$word"
        line=$(grep -F -- "$word$master  " "$output" || true)
        if [[ -z $line ]]; then
            fail "$master is not reported as $outcome"
        elif [[ $outcome == normalized && $line != *"of the normalized texts" ]]; then
            fail "$master does not differ after normalization"
        elif [[ $outcome == different && $line == *"of the normalized texts" ]]; then
            fail "$master was normalized"
        fi
    done <"$expected"
    grep -q "^$lines master.* compared: " "$output" || fail "$1 $2 should give $lines results"
    (($3 == awaited)) || fail "status $3 instead of $awaited"
    results=$((results + lines))
}

cd samples/server/run
while IFS=$'\t' read -r format options; do
    mapfile -t reports < <(awk -F '\t' -v f="$format" -v o="$options" '$1 == f && $2 == o && !seen[$3]++ { print $3 }' \
        "$expected")
    words=()
    [[ $options == - ]] || read -ra words <<<"$options"
    echo
    printf '$ modiff verify --format %s %s...\n' "$format" "${words[*]:+${words[*]} }"
    status=0
    "$MODIFF" verify --format "$format" "${words[@]}" -- "${reports[@]}" >"$output" || status=$?
    cat "$output"
    check_group "$format" "$options" "$status"
done < <(cut -f 1,2 "$expected" | awk '!seen[$0]++')

if [[ $script ]]; then
    printf '\n$ samples/script.cpp, compiled\n'
    "$script" "$work" || fail "the sample script ends with status $?"
fi

echo
if ((failures)); then
    echo "$failures of the sample results are not as expected."
    exit 1
fi
echo "All $results sample results are as expected."
