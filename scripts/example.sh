#!/usr/bin/env bash
# Builds the library and runs the example service inside a sandbox
# installation made for the run (nothing under /etc or /usr is read).
set -euo pipefail
cd "$(dirname "$0")/.."
scripts/deps.sh example

cmake -S . -B build/example -G Ninja -DCMAKE_BUILD_TYPE=Release -DZKSUPT_BUILD_TESTS=OFF >/dev/null
cmake --build build/example

sandbox=$(mktemp -d "${TMPDIR:-/tmp}/zksupt-example-XXXXXX")
trap 'rm -rf "$sandbox"' EXIT
mkdir -p "$sandbox/suite/meridian/ini" "$sandbox/var/data/.ipc" "$sandbox/var/log"
cat > "$sandbox/qvreg.cfg" <<REGISTRY
tarn.installpath=$sandbox/suite
Meridian.installpath=$sandbox/suite/meridian
Meridian.inipath=$sandbox/suite/meridian/ini
Meridian.logpath=$sandbox/var/log
Meridian.vardatapath=$sandbox/var/data
keellib.vardatapath=$sandbox/var/data
REGISTRY

ZKSUPT_REGISTRY="$sandbox/qvreg.cfg" build/example/examples/zksupt_service "$sandbox/var/data"
