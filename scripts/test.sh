#!/usr/bin/env bash
# Builds the library and runs every test on each build:
#   native    the host build, also compiling the benchmarks
#   sanitize  AddressSanitizer + UndefinedBehaviorSanitizer
#   tsan      ThreadSanitizer
#   ppc       32-bit big-endian PowerPC, tests run under qemu-ppc
#   fuzz      libFuzzer targets (clang), sharing ZKSUPT_FUZZ_BUDGET seconds (default 720)
#   package   install + consumer test, ABI check, Debian packages (scripts/package-check.sh)
#   docs      the Doxygen HTML reference, which must build without a warning
#   crash     writers killed with SIGKILL at random moments, for ZKSUPT_CRASH_SECONDS
#             (default 180), in the native build's directory
#   alloc     the sanitize build's allocation-failure program alone
#   valgrind  every test under valgrind's memcheck (no sanitizers)
# With no arguments all of them run; name builds to run only those. Every run
# first checks that the sources follow .clang-format, and every build treats
# warnings as errors.
set -euo pipefail
cd "$(dirname "$0")/.."
scripts/deps.sh test

echo "=== format check"
git ls-files -z '*.c' '*.cpp' '*.h' | xargs -0 clang-format --dry-run --Werror

builds=("$@")
[ ${#builds[@]} -gt 0 ] || builds=(native sanitize tsan valgrind ppc crash package docs fuzz)
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
# when there is one) for its share of the budget; a crash fails the run. Each
# target's executions per second come from libFuzzer's final statistics.
fuzz() {
  local start=$SECONDS
  echo "=== fuzz build"
  CC=clang CXX=clang++ cmake -S . -B build/fuzz -G Ninja -DCMAKE_BUILD_TYPE=RelWithDebInfo \
    -DZKSUPT_WERROR=ON -DZKSUPT_BUILD_FUZZ=ON -DZKSUPT_BUILD_TESTS=OFF -DZKSUPT_BUILD_EXAMPLES=OFF >/dev/null
  cmake --build build/fuzz -j "$jobs"
  local targets=(build/fuzz/fuzz/*_fuzz)
  local seconds=${ZKSUPT_FUZZ_SECONDS:-$(( ${ZKSUPT_FUZZ_BUDGET:-720} / ${#targets[@]} ))}
  local rates=()
  for target in "${targets[@]}"; do
    local name corpus
    name=$(basename "$target")
    corpus=$(mktemp -d)
    [ -d "fuzz/corpus/$name" ] && cp -r "fuzz/corpus/$name/." "$corpus/"
    echo "=== fuzz $name ($seconds s)"
    if ! "$target" -max_total_time="$seconds" -print_final_stats=1 "$corpus" >"build/fuzz/$name.log" 2>&1; then
      tail -n 40 "build/fuzz/$name.log"
      rm -rf "$corpus"
      echo "fuzz target $name failed" >&2
      exit 1
    fi
    rm -rf "$corpus"
    rates+=("$name: $(awk '/stat::number_of_executed_units/ {runs=$2} /stat::average_exec_per_sec/ {rate=$2}
      END {print runs " runs, " rate " per second"}' "build/fuzz/$name.log")")
    echo "  ${rates[-1]}"
  done
  printf '  %s\n' "${rates[@]}"
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

# Kills writers of every shared file kind at random moments for a time
# budget, in the native build (built here when it is not yet), and reports
# the kills each kind survived.
crash() {
  local start=$SECONDS
  echo "=== crash build"
  cmake -S . -B build/native -G Ninja -DZKSUPT_WERROR=ON -DCMAKE_BUILD_TYPE=RelWithDebInfo >/dev/null
  cmake --build build/native -j "$jobs" --target test_crash
  echo "=== crash tests"
  ZKSUPT_CRASH_SECONDS=${ZKSUPT_CRASH_SECONDS:-180} "${isolate[@]}" build/native/tests/test_crash \
    | tee build/native/crash.log | grep -E '^crash:|FAILED|Failure' || true
  if ! grep -q '^\[  PASSED  \]' build/native/crash.log || grep -q '^\[  FAILED  \]' build/native/crash.log; then
    echo "crash tests failed" >&2
    exit 1
  fi
  timings+=("crash: $((SECONDS - start)) s")
}

# Every test program under memcheck: ctest wraps each test in valgrind, whose
# errors (and definite leaks) make the test fail; programs the tests execute
# are traced too. The stress tests run at a smaller scale there.
valgrind_build() {
  local start=$SECONDS dir=build/valgrind
  echo "=== valgrind build"
  cmake -S . -B "$dir" -G Ninja -DZKSUPT_WERROR=ON -DCMAKE_BUILD_TYPE=RelWithDebInfo >/dev/null
  cmake --build "$dir" -j "$jobs"
  local options=(--tool=memcheck --error-exitcode=99 --leak-check=full --errors-for-leak-kinds=definite
    --show-leak-kinds=definite --trace-children=yes --trace-children-skip='/bin/*,/usr/bin/*,/sbin/*,/usr/sbin/*'
    --num-callers=30)
  printf '%s\n' "SourceDirectory: $PWD" "BuildDirectory: $PWD/$dir" \
    "MemoryCheckCommand: $(command -v valgrind)" "MemoryCheckCommandOptions: ${options[*]}" \
    "MemoryCheckSuppressionFile: $PWD/scripts/valgrind.supp" >"$dir/DartConfiguration.tcl"
  echo "=== valgrind tests"
  (cd "$dir" && ZKSUPT_STRESS_SCALE=4 "${isolate[@]}" ctest --output-on-failure -j "$jobs" -T memcheck -LE toolchain)
  # The checks that run the compiler and binary tools, not the library (the
  # compiler does not free what it allocates), run plainly.
  (cd "$dir" && ctest --output-on-failure -L toolchain)
  timings+=("valgrind: $((SECONDS - start)) s")
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
    crash) crash ;;
    alloc)
      start=$SECONDS
      cmake -S . -B build/sanitize -G Ninja -DZKSUPT_WERROR=ON -DCMAKE_BUILD_TYPE=Debug -DZKSUPT_SANITIZE=address,undefined >/dev/null
      cmake --build build/sanitize -j "$jobs" --target test_failure
      (cd build/sanitize && "${isolate[@]}" ctest --output-on-failure -R '^failure$')
      timings+=("alloc: $((SECONDS - start)) s") ;;
    valgrind) valgrind_build ;;
    *) echo "unknown build: $build" >&2; exit 2 ;;
  esac
done

echo "=== all tests passed"
printf '  %s\n' "${timings[@]}"
