#!/bin/bash
# Makes the packages of the last commit: packages.sh [DIR], by default build/packages. Builds twice, at two places, and
# fails unless both builds give the same bytes; then asks lintian, where it is installed. SOURCE_DATE_EPOCH overrules the
# time of the commit.
set -euo pipefail
cd "$(dirname "${BASH_SOURCE[0]}")/.."
export PATH=/usr/bin:/bin:$PATH
scripts/install-dependencies.sh

mkdir -p "${1:-build/packages}"
target=$(realpath "${1:-build/packages}")
export SOURCE_DATE_EPOCH=${SOURCE_DATE_EPOCH:-$(git log -1 --format=%ct)}
work=$(mktemp -d)
trap 'rm -rf "$work"' EXIT

# A path of the build directory in a program, for its libraries, would leave its length behind: it is given relatively.
build() { # SOURCE PACKAGES
    local flags
    mkdir -p "$1" "$2"
    git -c tar.umask=0022 archive HEAD | tar -x -C "$1"
    flags=$(cd "$1" && DEB_BUILD_MAINT_OPTIONS=hardening=+all dpkg-buildflags --get CXXFLAGS)
    cmake -S "$1" -B "$1/build" -G Ninja -DCMAKE_BUILD_TYPE=Release -DMODIFF_BUILD_TESTS=OFF \
        -DCMAKE_INSTALL_PREFIX=/usr -DCMAKE_BUILD_RPATH_USE_ORIGIN=ON -DCMAKE_CXX_FLAGS="${flags//-g /}" \
        -DCMAKE_SHARED_LINKER_FLAGS="-Wl,-z,relro,-z,now" -DCMAKE_EXE_LINKER_FLAGS="-Wl,-z,relro,-z,now" >/dev/null
    nice cmake --build "$1/build" ${MODIFF_JOBS:+-j "$MODIFF_JOBS"}
    for generator in DEB TGZ; do
        (cd "$1/build" && cpack -G "$generator" -B "$2" >/dev/null)
    done
    rm -rf "$1" "$2/_CPack_Packages"
}

build "$work/source" "$work/first"
build "$work/a/source/elsewhere" "$work/second"
diff -rq "$work/first" "$work/second" || {
    cp -r "$work/first" "$work/second" "$target"
    echo "The two builds differ; both are in $target." >&2
    exit 1
}
rm -f "$target"/*.deb "$target"/*.tar.gz
cp "$work/first"/* "$target"
if command -v lintian >/dev/null; then
    lintian --fail-on error --tag-display-limit 0 "$target"/*.deb
fi
echo "The same in two builds, in $target:"
(cd "$target" && sha256sum ./*.deb ./*.tar.gz)
