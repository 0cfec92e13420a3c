#!/bin/bash
# Installs the Debian packages that are missing: install-dependencies.sh [--tests] [PACKAGE...], which means what
# building and running modiff takes, with --tests what the tests take, and the packages named. Does nothing when all
# are there. Needs root or sudo only when something is missing.
set -euo pipefail

packages=(g++ cmake ninja-build libicu-dev libcli11-dev libtomlplusplus-dev libxxhash-dev libmd-dev nlohmann-json3-dev
    python-is-python3 python3-openpyxl python3-defusedxml python3-pil poppler-utils
    poppler-data qpdf)
if [[ ${1-} == --tests ]]; then
    shift
    packages+=(git make pkg-config libgtest-dev libgmock-dev libpugixml-dev python3-jsonschema python3-yaml locales parallel)
fi
packages+=("$@")

is_installed() {
    [[ $(dpkg-query -W -f '${db:Status-Status}' "$1" 2>/dev/null) == installed ]]
}

missing=()
for package in "${packages[@]}"; do
    is_installed "$package" || missing+=("$package")
done
if ((${#missing[@]} == 0)); then
    exit 0
fi

as_root=()
if ((EUID != 0)); then
    if ! command -v sudo >/dev/null; then
        echo "These packages are missing and only root can install them: ${missing[*]}" >&2
        exit 1
    fi
    as_root=(sudo)
fi

echo "Installing ${missing[*]}"
# Foreign package sources that are out of step don't matter as long as Debian's own packages can be had.
"${as_root[@]}" apt-get -q update || echo "apt-get update failed; trying with the package lists at hand" >&2
"${as_root[@]}" env DEBIAN_FRONTEND=noninteractive \
    apt-get -q -y -o Dpkg::Use-Pty=0 install --no-install-recommends "${missing[@]}"
