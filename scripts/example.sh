#!/usr/bin/env bash
# Builds the library and its tool, makes a sandbox installation (a registry
# file naming directories in a temporary tree; nothing under /etc or /usr is
# read), runs the example service in it twice, and shows with the zksupt tool
# what the service left behind: its settings, its published SDO and its
# events.
set -euo pipefail
cd "$(dirname "$0")/.."
scripts/deps.sh example

cmake -S . -B build/example -G Ninja -DCMAKE_BUILD_TYPE=Release -DZKSUPT_BUILD_TESTS=OFF >/dev/null
cmake --build build/example
service=build/example/examples/zksupt_service
zksupt=build/example/tools/zksupt/zksupt

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
export ZKSUPT_REGISTRY="$sandbox/qvreg.cfg"

echo "=== registry file the library reads: $("$zksupt" registry)"
settings="$sandbox/suite/meridian/ini/ini/service.ini"
echo "=== service, run 1"
"$service"
echo "=== renaming the service in its settings, then run 2"
"$zksupt" ini set "$settings" Service name "Node Steward (renamed)"
"$service"
echo "=== its settings ($settings)"
"$zksupt" ini list "$settings" Service
echo "=== its published state"
"$zksupt" sdo dump "$sandbox/var/data/service-state.sdo"
echo "=== its events ($("$zksupt" log path))"
"$zksupt" log show
