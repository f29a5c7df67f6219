#!/usr/bin/env bash
# Compares a built libzksupt.so with the ABI baseline abi/libzksupt.abi, or
# with --update rewrites the baseline from it. Only the types of the public
# headers count, so the baseline does not change with the internal code.
# Any reported change fails: abidiff calls only a removed function
# incompatible, and reports a changed parameter type like a new function, as
# a plain change. A new function belongs under a new symbol version, and
# taking it in is a deliberate update of the baseline (docs/abi.md).
# Usage: scripts/abi-check.sh [--update] LIBRARY
set -euo pipefail
root="$(cd "$(dirname "$0")/.." && pwd)"
baseline="$root/abi/libzksupt.abi"
headers="$root/include/zksupt"

update=0
if [ "${1:-}" = --update ]; then
  update=1
  shift
fi
[ $# -eq 1 ] || { echo "usage: $0 [--update] LIBRARY" >&2; exit 2; }
library=$1

if [ $update -eq 1 ]; then
  # The source paths are the build tree's; the baseline names them relative
  # to the tree so that it does not depend on where the tree was.
  abidw --headers-dir "$headers" --drop-private-types --exported-interfaces-only \
    --no-corpus-path --no-comp-dir-path --no-show-locs "$library" | sed "s|path='$root/|path='|" >"$baseline"
  echo "wrote $baseline"
  exit 0
fi

# abidiff's exit status is a bit set: 1 error, 2 usage error, 4 an ABI change,
# 8 an incompatible ABI change.
status=0
abidiff --headers-dir2 "$headers" --drop-private-types --exported-interfaces-only --fail-no-debug-info \
  "$baseline" "$library" || status=$?
if [ $status -eq 0 ]; then
  echo "ABI of $library matches the baseline"
  exit 0
fi
if [ $((status & 3)) -ne 0 ]; then
  echo "abidiff could not compare $library with $baseline (status $status)" >&2
elif [ $((status & 8)) -ne 0 ]; then
  echo "INCOMPATIBLE ABI change in $library (status $status)" >&2
else
  echo "ABI change in $library; if deliberate, update the baseline (docs/abi.md)" >&2
fi
exit 1
