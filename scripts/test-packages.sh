#!/bin/bash
# Tries the packages of scripts/packages.sh on a bare Debian 12: test-packages.sh [DIR], by default build/packages. They
# are installed, verify the sample tree with every result that samples/expected.txt tells, and are removed without a
# trace; the archive runs where it was unpacked. Takes root, debootstrap and the mirror of this machine's apt sources. The
# bare system is kept in build/debian12.tar for the next time. Status 77: this machine cannot do it.
set -euo pipefail
cd "$(dirname "${BASH_SOURCE[0]}")/.."
packages=$(realpath "${1:-build/packages}")
base=$PWD/build/debian12.tar
work=$(mktemp -d)
trap 'rm -rf "$work"' EXIT
root=$work/root

if ((EUID != 0)) || ! command -v debootstrap >/dev/null; then
    echo "NOT RUN: needs root and debootstrap" >&2
    exit 77
fi

fail() {
    echo "FAILED: $*" >&2
    exit 1
}

# In the bare system, with its own processes; what it mounts and starts ends with the command.
inside() {
    unshare --mount --pid --fork --root="$root" --mount-proc /usr/bin/env -i PATH=/usr/sbin:/usr/bin:/sbin:/bin \
        HOME=/root LC_ALL=C.UTF-8 DEBIAN_FRONTEND=noninteractive "$@"
}
as_user() {
    inside runuser -u tester -- bash -c "cd && $1"
}

make_bare_system() {
    local mirror
    mirror=$(cat /etc/apt/sources.list.d/debian.sources /etc/apt/sources.list 2>/dev/null |
        sed -nE 's/^URIs: *([^ ]+).*/\1/p; s/^deb (\[[^]]*\] )?([^ ]+).*/\2/p' | head -n 1)
    debootstrap --variant=minbase bookworm "$root" "$mirror" >"$work/log" || fail "debootstrap: $(tail -n 3 "$work/log")"
    mkdir -p "$(dirname "$base")"
    tar -C "$root" -cf "$base.part" . && mv "$base.part" "$base"
}

check_results() { # RECORD
    python3 - "$1" samples/expected.txt <<'END' || fail "these results differ from samples/expected.txt"
import json, sys
words = {"pass": "passed", "normalized": "different"}
rows = [line.rstrip("\n").split("\t") for line in open(sys.argv[2], encoding="utf-8")]
expected = {(f"{row[0]}:{row[4]}", words.get(row[3], row[3])) for row in rows}
lines = map(json.loads, open(sys.argv[1], encoding="utf-8"))
recorded = {(line["id"], line["outcome"]) for line in lines if "id" in line}
print(*sorted(expected ^ recorded), sep="\n")
sys.exit(not recorded or expected != recorded)
END
}

# Status 1 is right: some samples differ.
check_run() { # TREE COMMAND
    local status=0
    as_user "cd $1/run && rm -rf modiff-run && $2" >"$work/log" 2>&1 || status=$?
    ((status == 1)) || fail "$2 ends with $status: $(tail -n 5 "$work/log")"
    check_results "$root/home/tester/$1/run/modiff-run/run.jsonl"
}

echo "=== A bare Debian 12"
mkdir "$root"
if [[ -f $base ]]; then
    tar -C "$root" -xf "$base"
else
    make_bare_system
fi
cp /etc/resolv.conf /etc/hosts "$root/etc/"
inside useradd -m tester

echo "=== apt install"
mkdir "$root/packages"
cp "$packages"/*.deb "$packages"/*.tar.gz "$root/packages"
inside apt-get -q update >"$work/log" 2>&1 || fail "apt-get update: $(tail -n 3 "$work/log")"
inside bash -c 'apt-get -q -y install /packages/*.deb bash-completion' >"$work/log" 2>&1 || fail "$(tail -n 5 "$work/log")"

echo "=== modiff run on the samples"
as_user 'tar -xf /usr/share/doc/modiff/examples/server.tar.gz && modiff install-tools . >/dev/null'
as_user 'cd server/run && modiff doctor' >"$work/log" 2>&1 || fail "modiff doctor: $(cat "$work/log")"
check_run server "modiff run"
as_user 'cp -r server bare && rm -rf bare/run/modiff.toml bare/run/modiff-run'
check_run bare "modiff init && modiff run"

echo "=== Manual and completion"
for command in $(as_user 'modiff --complete ""' | cut -f 1); do
    [[ -s $root/usr/share/man/man1/modiff-$command.1.gz ]] || fail "no manual page for $command"
done
for page in man1/modiff.1 man5/modiff.toml.5 man3/libMoDiffEngine.3; do
    [[ -s $root/usr/share/man/$page.gz ]] || fail "no manual page $page"
done
as_user 'source /usr/share/bash-completion/bash_completion; _completion_loader modiff; complete -p modiff' |
    grep -q 'complete -F _modiff modiff' || fail "bash does not complete modiff"

echo "=== A program that uses the library"
for package in "$packages"/libmodiffengine*.deb; do
    dpkg-deb -x "$package" "$work/library"
done
pc=$(dirname "$(find "$work/library" -name MoDiffEngine.pc)")
(cd "$work" && sed -n '/^```cpp$/,/^```$/{/^```/d;p}' "$OLDPWD/docs/embedding.md" >consumer.cpp &&
    g++ -std=c++17 consumer.cpp $(PKG_CONFIG_PATH=$pc pkg-config --cflags --libs MoDiffEngine) -o consumer) ||
    fail "a program cannot be built with the package"

echo "=== Removal, and the archive somewhere else"
inside apt-get -q -y purge modiff 'libmodiffengine*' >"$work/log" 2>&1 || fail "$(tail -n 5 "$work/log")"
inside find / -xdev -ipath '*modiff*' -not -path '/home/*' -not -path '/packages*' -not -path '/var/log/*' \
    -not -path '/var/lib/apt/*' -not -path '/var/cache/*' >"$work/left"
[[ ! -s $work/left ]] || fail "removal leaves $(head "$work/left")"
as_user 'mkdir -p "some where" && tar -C "some where" -xf /packages/*.tar.gz && mv "some where"/modiff* "some where/modiff"'
check_run server '"$HOME/some where/modiff/bin/modiff" run'
echo "The packages of $packages are all right."
