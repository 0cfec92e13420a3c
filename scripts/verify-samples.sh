#!/bin/bash
# Builds modiff and compares the sample reports with it, on a bare Debian 12 after installing what is missing; then runs
# the sample test script. Ends with status 0 when every result is the one that samples/expected.txt tells and the
# script's only failure is the deliberate one. MODIFF names a driver that is to be used instead of building one; options
# are those of `modiff run`.
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
trap 'rm -rf "$work"' EXIT
failures=0

fail() {
    echo "UNEXPECTED: $*"
    failures=$((failures + 1))
}

# The outcome and the id of each pair: as samples/expected.txt tells them, and as a record does.
expected_results() {
    awk -F '\t' '{ print $4 "\t" $1 ":" $5 }' "$expected" | sort -u
}
recorded_results() { # RECORD
    python3 - "$1" <<'END' | sort
import json, sys
for line in open(sys.argv[1], encoding="utf-8"):
    pair = json.loads(line)
    if "id" in pair:
        normalized = pair["detail"].endswith("of the normalized texts")
        word = {"passed": "pass", "different": "normalized" if normalized else "different"}
        print(word.get(pair["outcome"], pair["outcome"]), pair["id"], sep="\t")
END
}

echo
echo '$ cd samples/server/run; modiff run'
status=0
(cd samples/server/run && "$MODIFF" run --out "$work/record" "$@") || status=$?
((status == 1)) || fail "status $status instead of 1: some samples differ"
expected_results >"$work/expected"
recorded_results "$work/record/run.jsonl" >"$work/recorded"
diff "$work/expected" "$work/recorded" || fail "these results differ from samples/expected.txt (< expected, > recorded)"

if [[ $script ]]; then
    printf '\n$ samples/script.cpp, compiled\n'
    "$script" "$work" || fail "the sample script ends with status $?"
fi

echo
if ((failures)); then
    echo "The sample results are not as expected."
    exit 1
fi
echo "All $(wc -l <"$work/expected") sample results are as expected."
