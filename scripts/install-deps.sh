#!/usr/bin/env bash
# Installs the Debian packages that building and testing need. Idempotent: when
# everything is present it only asks dpkg and returns at once. With --test it also
# installs the programs that check our files from outside (STL, OBJ/PLY/OFF readers
# and the ray tracer), so that the test run does not have to fetch them itself. With
# --fuzz it installs clang and its sanitizer and libFuzzer runtimes instead.
set -euo pipefail

packages=(cmake make g++ libgtest-dev libgmock-dev libbenchmark-dev libann-dev
          libeigen3-dev libcli11-dev clang-format)
if [ "${1:-}" = "--test" ]; then
    packages+=(admesh assimp-utils povray povray-includes)
elif [ "${1:-}" = "--fuzz" ]; then
    packages+=(clang libclang-rt-dev)
fi

missing=()
for p in "${packages[@]}"; do
    if ! dpkg-query -W -f='${Status}' "$p" 2>/dev/null | grep -q "install ok installed"; then
        missing+=("$p")
    fi
done
[ ${#missing[@]} -eq 0 ] && exit 0

echo "installing: ${missing[*]}"
SUDO=""
[ "$(id -u)" -ne 0 ] && SUDO="sudo"
export DEBIAN_FRONTEND=noninteractive
$SUDO apt-get update -qq
$SUDO apt-get install -y -qq --no-install-recommends "${missing[@]}" >/dev/null
