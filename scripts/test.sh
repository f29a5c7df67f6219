#!/usr/bin/env bash
# Builds the library and runs every test on each build:
#   native    the host build, also compiling the benchmarks
#   sanitize  AddressSanitizer + UndefinedBehaviorSanitizer
#   tsan      ThreadSanitizer
#   ppc       32-bit big-endian PowerPC, tests run under qemu-ppc
#   fuzz      libFuzzer targets (clang), each run for ZKSUPT_FUZZ_SECONDS (default 20)
#   package   install + consumer test, ABI check, Debian packages (scripts/package-check.sh)
#   docs      the Doxygen HTML reference, which must build without a warning
# With no arguments all of them run; name builds to run only those. Every run
# first checks that the sources follow .clang-format, and every build treats
# warnings as errors.
set -euo pipefail
cd "$(dirname "$0")/.."
scripts/deps.sh test

echo "=== format check"
git ls-files -z '*.c' '*.cpp' '*.h' | xargs -0 clang-format --dry-run --Werror

builds=("$@")
[ ${#builds[@]} -gt 0 ] || builds=(native sanitize tsan ppc fuzz package docs)
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
  cmake -S . -B "build/$name" -G Ninja -DZKSUPT_WERROR=ON "$@" >/dev/null
  cmake --build "build/$name" -j "$jobs"
  echo "=== $name tests"
  (cd "build/$name" && "${isolate[@]}" ctest --output-on-failure -j "$jobs")
  timings+=("$name: $((SECONDS - start)) s")
}

# Builds the fuzz targets and runs each on its seed corpus (fuzz/corpus/<name>,
# when there is one) for a bounded time; a crash fails the run.
fuzz() {
  local start=$SECONDS
  echo "=== fuzz build"
  CC=clang CXX=clang++ cmake -S . -B build/fuzz -G Ninja -DCMAKE_BUILD_TYPE=RelWithDebInfo \
    -DZKSUPT_WERROR=ON -DZKSUPT_BUILD_FUZZ=ON -DZKSUPT_BUILD_TESTS=OFF -DZKSUPT_BUILD_EXAMPLES=OFF >/dev/null
  cmake --build build/fuzz -j "$jobs"
  for target in build/fuzz/fuzz/*_fuzz; do
    local name corpus
    name=$(basename "$target")
    corpus=$(mktemp -d)
    [ -d "fuzz/corpus/$name" ] && cp -r "fuzz/corpus/$name/." "$corpus/"
    echo "=== fuzz $name"
    if ! "$target" -max_total_time="${ZKSUPT_FUZZ_SECONDS:-20}" "$corpus" >"build/fuzz/$name.log" 2>&1; then
      tail -n 40 "build/fuzz/$name.log"
      rm -rf "$corpus"
      echo "fuzz target $name failed" >&2
      exit 1
    fi
    tail -n 1 "build/fuzz/$name.log"
    rm -rf "$corpus"
  done
  timings+=("fuzz: $((SECONDS - start)) s")
}

# Builds the HTML reference of the public headers (build/docs/docs/html);
# Doxygen fails on any warning.
docs() {
  local start=$SECONDS
  echo "=== docs build"
  cmake -S . -B build/docs -G Ninja -DZKSUPT_BUILD_DOCS=ON -DZKSUPT_BUILD_TESTS=OFF -DZKSUPT_BUILD_EXAMPLES=OFF >/dev/null
  cmake --build build/docs --target docs
  timings+=("docs: $((SECONDS - start)) s")
}

for build in "${builds[@]}"; do
  case "$build" in
    native) run native -DCMAKE_BUILD_TYPE=RelWithDebInfo -DZKSUPT_BUILD_BENCH=ON ;;
    sanitize) run sanitize -DCMAKE_BUILD_TYPE=Debug -DZKSUPT_SANITIZE=address,undefined ;;
    tsan) run tsan -DCMAKE_BUILD_TYPE=RelWithDebInfo -DZKSUPT_SANITIZE=thread ;;
    ppc) run ppc -DCMAKE_BUILD_TYPE=RelWithDebInfo -DCMAKE_TOOLCHAIN_FILE=cmake/powerpc-linux-gnu.cmake ;;
    fuzz) fuzz ;;
    package)
      start=$SECONDS
      scripts/package-check.sh "$jobs"
      timings+=("package: $((SECONDS - start)) s")
      ;;
    docs) docs ;;
    *) echo "unknown build: $build" >&2; exit 2 ;;
  esac
done

echo "=== all tests passed"
printf '  %s\n' "${timings[@]}"
