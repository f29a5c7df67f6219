#!/usr/bin/env bash
# Checks the library as its users get it, from one build:
#   1. builds the Debian packages from a copy of the tree (the package build
#      also compares the library's ABI with the baseline abi/libzksupt.abi),
#      runs lintian on them, lists their contents and checks that they would
#      install;
#   2. installs that build with `cmake --install` to a temporary prefix and
#      builds and runs the consumer program (tests/consumer) against it, once
#      through pkg-config and once through the CMake package;
#   3. does the same against the packages' contents unpacked in a temporary
#      root, and runs the packaged tool.
# Nothing is installed on the host: everything goes to a temporary directory
# removed at the end.
# Usage: scripts/package-check.sh [JOBS]
set -euo pipefail
cd "$(dirname "$0")/.."
jobs=${1:-$(nproc)}
work=$(mktemp -d)
trap 'rm -rf "$work"' EXIT
multiarch=$(dpkg-architecture -qDEB_HOST_MULTIARCH)

# Builds tests/consumer against an installation and runs it:
#   consumer NAME PREFIX LIBDIR PKG-CONFIG-COMMAND...
# CMake looks in PREFIX; pkg-config is run as the command given (with the
# search path it needs).
consumer() {
  local name=$1 prefix=$2 libdir=$3 out="$work/consumer-$1"
  shift 3
  mkdir -p "$out"
  echo "--- consumer against the $name: pkg-config"
  # shellcheck disable=SC2046 # the flags are separate words
  cc -std=c99 -Wall -Wextra -Werror -o "$out/consumer-pc" tests/consumer/consumer.c \
    $("$@" --cflags --libs zksupt)
  LD_LIBRARY_PATH="$libdir" "$out/consumer-pc"
  echo "--- consumer against the $name: find_package"
  cmake -S tests/consumer -B "$out/cmake" -G Ninja -DCMAKE_PREFIX_PATH="$prefix" \
    -DCMAKE_C_FLAGS="-Wall -Wextra -Werror" >/dev/null
  cmake --build "$out/cmake" >/dev/null
  LD_LIBRARY_PATH="$libdir" "$out/cmake/consumer"
}

echo "=== package: Debian packages"
version=$(dpkg-parsechangelog -l debian/changelog -S Version)
source="$work/deb/zksupt-${version%-*}"
mkdir -p "$source"
# The tree as git sees it: tracked and new files, nothing ignored.
git ls-files -z --cached --others --exclude-standard | tar --null -T - -cf - | tar -xf - -C "$source"
if ! (cd "$source" && DEB_BUILD_OPTIONS="nocheck noddebs parallel=$jobs" dpkg-buildpackage -us -uc -b >"$work/deb/build.log" 2>&1); then
  tail -n 60 "$work/deb/build.log"
  echo "Debian package build failed" >&2
  exit 1
fi
grep -E '^ABI of' "$work/deb/build.log"
changes=$(echo "$work"/deb/zksupt_*.changes)
debs=("$work"/deb/*.deb)

echo "--- lintian"
lintian --fail-on error "$changes"

for deb in "${debs[@]}"; do
  echo "--- $(basename "$deb")"
  dpkg-deb -c "$deb" | awk '{print $6 ($7 ? " " $7 " " $8 : "")}'
done

echo "--- installability"
if [ "$(id -u)" -eq 0 ]; then
  apt-get install -s -q "${debs[@]}" | grep -E '^(Inst|Conf)'
else
  for deb in "${debs[@]}"; do dpkg-deb -f "$deb" Package Depends; done
fi

echo "=== package: install to a temporary prefix"
prefix="$work/prefix"
cmake --install "$source/obj-$(dpkg-architecture -qDEB_HOST_GNU_TYPE)" --prefix "$prefix" >/dev/null
(cd "$prefix" && find . -type f -o -type l | sort)
# The pkg-config file names the configured prefix; a relocated one is given.
consumer prefix "$prefix" "$prefix/lib/$multiarch" \
  env PKG_CONFIG_LIBDIR="$prefix/lib/$multiarch/pkgconfig" PKG_CONFIG_PATH="" \
  pkg-config --define-variable=prefix="$prefix"

echo "=== package: the packages unpacked"
unpacked="$work/root"
for deb in "${debs[@]}"; do dpkg -x "$deb" "$unpacked"; done
consumer packages "$unpacked/usr" "$unpacked/usr/lib/$multiarch" \
  env PKG_CONFIG_LIBDIR="$unpacked/usr/lib/$multiarch/pkgconfig" PKG_CONFIG_PATH="" \
  PKG_CONFIG_SYSROOT_DIR="$unpacked" pkg-config
echo "--- the packaged tool"
LD_LIBRARY_PATH="$unpacked/usr/lib/$multiarch" "$unpacked/usr/bin/zksupt" --version
