#!/bin/bash
# Builds the library, the driver and the tests for 32-bit x86 on a 64-bit Debian 12, any warning being an error, and
# runs all tests. The 32-bit libraries are unpacked below build/, with package lists of their own: nothing of the
# machine's package management changes. Where the kernel runs no 32-bit programs, an emulator from the same place does.
# When something cannot be had, the line "i386: NOT RUN: ..." tells why and the status is 77.
set -euo pipefail
cd "$(dirname "${BASH_SOURCE[0]}")/.."
export PATH=/usr/bin:/bin:$PATH # the engines run `python`, which must be the one with Debian's modules

build=$PWD/build/i386
root=$PWD/build/i386-root
libraries=$root/usr/lib/i386-linux-gnu
packages=(libicu72 libicu-dev libmd0 libmd-dev libpugixml1v5 libpugixml-dev)
emulator=() # the command before each 32-bit program

not_run() {
    echo "i386: NOT RUN: $*"
    exit 77
}

probe_compiler() {
    mkdir -p build
    g++ -m32 -x c++ -o build/i386-probe - <<<'#include <string>
        int main() { return static_cast<int>(std::string().size()); }' 2>/dev/null
}

# apt-get in a world of its own, in which 32-bit x86 comes first. The machine's sources and proxies hold.
write_apt_configuration() {
    mkdir -p "$root"/apt/{state/lists,cache/archives}/partial
    : >"$root/apt/status"
    cat >"$root/apt/apt.conf" <<END
#clear APT::Architectures;
#clear APT::Update;
APT::Architecture "i386";
APT::Architectures { "i386"; "amd64"; };
APT::Sandbox::User "";
Dir::State "$root/apt/state";
Dir::State::Lists "$root/apt/state/lists";
Dir::State::status "$root/apt/status";
Dir::Cache "$root/apt/cache";
END
}

unpack_packages() {
    local archive
    write_apt_configuration
    # Sources that have nothing for this architecture, or are out of step, don't matter when the download succeeds.
    timeout 600 apt-get -q -c "$root/apt/apt.conf" update >"$root/apt/log" 2>&1 || true
    (cd "$root/apt" && timeout 600 apt-get -q -c "$root/apt/apt.conf" download "${packages[@]}") >>"$root/apt/log" 2>&1 ||
        return 1
    for archive in "$root"/apt/*.deb; do
        dpkg -x "$archive" "$root"
    done
    if [[ -d $root/usr/bin ]]; then
        find "$root/usr/bin" -name 'qemu-*' ! -name qemu-i386-static -delete # 400 MB for other processors
    fi
}

build_googletest() {
    cmake -G Ninja -S /usr/src/googletest -B build/i386-googletest -DCMAKE_BUILD_TYPE=Release -DCMAKE_CXX_FLAGS=-m32 \
        -DCMAKE_INSTALL_PREFIX="$root/usr" && cmake --build build/i386-googletest && cmake --install build/i386-googletest
}

prepare_root() {
    local stamp="$root/complete: ${packages[*]}"
    if ! build/i386-probe 2>/dev/null; then
        packages+=(qemu-user-static:amd64)
        emulator=("$root/usr/bin/qemu-i386-static")
        stamp+=" and qemu"
    fi
    [[ -e $stamp ]] && return
    rm -rf "$root" build/i386-googletest "$build"
    unpack_packages || not_run "the packages ${packages[*]} cannot be had for i386; see $root/apt/log"
    rm -rf "$root"/apt/*.deb "$root"/apt/{state,cache}
    build_googletest
    touch "$stamp"
}

# Runs modiff on a report of which one side is a file of 3 GiB without contents, beyond what fits into memory here.
check_large_file() { # SIDE FORMAT ACTUALS:MASTERS STATUS TEXT
    local tree=$build/large/$1-$2 status=0 output
    local masters=$tree/run/Masters${3#*:} actuals=$tree/webcontent/${3%:*}
    rm -rf "$tree"
    mkdir -p "$masters" "$actuals"
    echo small | tee "$masters/large.$2" >"$actuals/large.$2"
    truncate -s 3G "$(if [[ $1 == master ]]; then echo "$masters"; else echo "$actuals"; fi)/large.$2"
    output=$(cd "$tree/run" && timeout 300 "${emulator[@]}" "$build/driver/modiff" verify --format "$2" -- "large.$2" 2>&1) || status=$?
    if [[ $status == "$4" && $output == *"$5"* ]]; then
        echo "passed: large $1, format $2: $5"
    else
        printf 'FAILED: large %s, format %s: status %s instead of %s, or no "%s" in\n%s\n' "$1" "$2" "$status" "$4" "$5" \
            "$output"
        return 1
    fi
}

check_large_files() {
    local failures=0 whole="File is small enough to be read whole"
    check_large_file master html v5DebugHTML: 2 "$whole" || failures=1
    check_large_file actual html v5DebugHTML: 2 "$whole" || failures=1
    check_large_file master csv v5DebugCSV:/CSV 1 "0 passed, 1 different, 0 missing" || failures=1
    rm -rf "$build/large"
    return "$failures"
}

run_tests() { # OPTIONS...
    ctest --test-dir "$build" --output-on-failure --no-tests=error -j "$(nproc)" "$@"
}

# What starts 32-bit programs itself, or depends on the system's signals and limits in a way that the emulator changes.
beyond_emulator='driver.*|consumer|MoDiffLib.a_read_error_fails_whatever_its_reason'
beyond_emulator+='|RunTest.(AnyWorkerMayDieAtAnyMoment|ATimeLimitEndsAScriptWithAllItStarted)'

run_driver_tests() {
    printf '#!/bin/sh\nexec %s %s "$@"\n' "${emulator[*]}" "$build/driver/modiff" >"$build/modiff"
    chmod +x "$build/modiff"
    for program in tests/driver/test_{commands,verify,verify_corners,run}.py; do
        /usr/bin/python3 "$program" "$build/modiff" || return 1
    done
}

if [[ $(uname -m) != x86_64 ]]; then
    not_run "this is no 64-bit x86 machine"
fi
scripts/install-dependencies.sh --tests g++-multilib || not_run "packages are missing"
probe_compiler || not_run "g++ -m32 builds no program; the package g++-multilib is missing"
prepare_root

# The old kind of run path also serves the libraries' own libraries, and ICU has two that need each other.
cmake -G Ninja -S . -B "$build" -DCMAKE_BUILD_TYPE=RelWithDebInfo -DCMAKE_CXX_FLAGS_RELWITHDEBINFO=-O1 \
    -DCMAKE_CXX_FLAGS="-m32 -Wall -Wextra -Wpedantic -Wconversion -Werror -Wl,--disable-new-dtags,-rpath-link,$libraries" \
    -DCMAKE_LIBRARY_ARCHITECTURE=i386-linux-gnu -DCMAKE_PREFIX_PATH="$root/usr" -DICU_ROOT="$root/usr" \
    -DCMAKE_INSTALL_RPATH="$libraries" -DCMAKE_CROSSCOMPILING_EMULATOR="${emulator[*]}" -DMODIFF_BUILD_FUZZ=ON -DMODIFF_IPO=OFF -DMODIFF_PRECOMPILE=ON
cmake --build "$build"
export LD_LIBRARY_PATH=$libraries   # for the installed driver, whose run path is its own
export CMAKE_LIBRARY_PATH=$libraries # for the projects that tests configure
status=0
if ((${#emulator[@]} == 0)); then
    run_tests --label-exclude once || status=1
else
    echo "This kernel runs no 32-bit programs; ${emulator[0]} runs them."
    run_tests --label-exclude once --exclude-regex "^($beyond_emulator)\$" || status=1
    run_driver_tests || status=1
    echo "i386: NOT RUN, since the emulator cannot: $beyond_emulator"
fi
check_large_files || status=1
exit "$status"
