#!/usr/bin/env bash
# Builds the library and runs every test on each build:
#   native    the host build, also compiling the benchmarks
#   sanitize  AddressSanitizer + UndefinedBehaviorSanitizer
#   tsan      ThreadSanitizer
#   ppc       32-bit big-endian PowerPC, tests run under qemu-ppc
# With no arguments all four run; name builds to run only those.
set -euo pipefail
cd "$(dirname "$0")/.."
scripts/deps.sh test

builds=("$@")
[ ${#builds[@]} -gt 0 ] || builds=(native sanitize tsan ppc)
jobs=$(nproc)

# Tests run in a private System V IPC namespace where the machine allows it,
# so that nothing they create can meet other users' objects.
isolate=()
if unshare --ipc true 2>/dev/null; then
  isolate=(unshare --ipc)
elif unshare --user --map-root-user --ipc true 2>/dev/null; then
  isolate=(unshare --user --map-root-user --ipc)
fi

export ASAN_OPTIONS=detect_leaks=1:abort_on_error=0
export UBSAN_OPTIONS=print_stacktrace=1:halt_on_error=1
export TSAN_OPTIONS=halt_on_error=1:second_deadlock_stack=1

timings=()
run() {
  local name=$1; shift
  local start=$SECONDS
  echo "=== $name build"
  cmake -S . -B "build/$name" -G Ninja "$@" >/dev/null
  cmake --build "build/$name" -j "$jobs"
  echo "=== $name tests"
  (cd "build/$name" && "${isolate[@]}" ctest --output-on-failure -j "$jobs")
  timings+=("$name: $((SECONDS - start)) s")
}

for build in "${builds[@]}"; do
  case "$build" in
    native) run native -DCMAKE_BUILD_TYPE=RelWithDebInfo -DZKSUPT_BUILD_BENCH=ON ;;
    sanitize) run sanitize -DCMAKE_BUILD_TYPE=Debug -DZKSUPT_SANITIZE=address,undefined ;;
    tsan) run tsan -DCMAKE_BUILD_TYPE=RelWithDebInfo -DZKSUPT_SANITIZE=thread ;;
    ppc) run ppc -DCMAKE_BUILD_TYPE=RelWithDebInfo -DCMAKE_TOOLCHAIN_FILE=cmake/powerpc-linux-gnu.cmake ;;
    *) echo "unknown build: $build" >&2; exit 2 ;;
  esac
done

echo "=== all tests passed"
printf '  %s\n' "${timings[@]}"
