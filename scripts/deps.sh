#!/usr/bin/env bash
# Makes sure the Debian packages a job needs are installed: installs the
# missing ones with apt-get when run as root, else names them and fails.
# Usage: scripts/deps.sh example|test
set -euo pipefail

# The tool's argument parser, JSON writer and man-page generator.
packages=(cmake ninja-build g++ make libcli11-dev nlohmann-json3-dev scdoc)
case "${1:-test}" in
  example) ;;
  test) packages+=(libgtest-dev googletest libbenchmark-dev libboost-dev zlib1g-dev libssl-dev libisal-dev g++-powerpc-linux-gnu qemu-user util-linux clang libclang-rt-14-dev libxml2-utils doxygen valgrind)
    # The package build: Debian packaging, the ABI check, the consumer test.
    packages+=(debhelper dpkg-dev lintian abigail-tools pkgconf) ;;
  *) echo "usage: $0 example|test" >&2; exit 2 ;;
esac
# The test script checks the sources' format first.
[ "${1:-test}" = test ] && packages+=(clang-format)

missing=()
for package in "${packages[@]}"; do
  if ! dpkg-query -W -f='${Status}' "$package" 2>/dev/null | grep -q 'install ok installed'; then
    missing+=("$package")
  fi
done
[ ${#missing[@]} -eq 0 ] && exit 0

if [ "$(id -u)" -ne 0 ]; then
  echo "missing Debian packages: ${missing[*]}" >&2
  echo "install them with: sudo apt-get install ${missing[*]}" >&2
  exit 1
fi
echo "installing: ${missing[*]}"
export DEBIAN_FRONTEND=noninteractive
apt-get update -q
apt-get install -y -q --no-install-recommends "${missing[@]}"
