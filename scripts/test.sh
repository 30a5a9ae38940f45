#!/usr/bin/env bash
# Runs every test: the whole suite in a plain build and under AddressSanitizer with
# UndefinedBehaviorSanitizer, the concurrency tests under ThreadSanitizer, and every fuzz target
# for 20 seconds.
# VSM_TEST_BUILDS narrows the set, e.g. VSM_TEST_BUILDS="release" for a quick run.
set -euo pipefail
cd "$(dirname "$0")/.."
scripts/setup.sh
scripts/check-format.sh

builds=${VSM_TEST_BUILDS:-"release asan tsan fuzz"}
jobs=$(nproc)

for build in $builds; do
  echo "=== $build"
  case $build in
    release)
      scripts/build.sh build/release -DVSM_BUILD_BENCH=ON
      ctest --test-dir build/release --output-on-failure -j "$jobs"
      ;;
    asan)
      scripts/build.sh build/asan -DVSM_SANITIZE=address
      ASAN_OPTIONS=detect_leaks=1:abort_on_error=0:strict_string_checks=1 \
      UBSAN_OPTIONS=print_stacktrace=1:halt_on_error=1 \
        ctest --test-dir build/asan --output-on-failure -j "$jobs"
      ;;
    tsan)
      scripts/build.sh build/tsan -DVSM_SANITIZE=thread -DVSM_ONLY_CONCURRENCY_TESTS=ON
      TSAN_OPTIONS=halt_on_error=1:second_deadlock_stack=1 \
        ctest --test-dir build/tsan --output-on-failure -j "$jobs" -L concurrency
      ;;
    fuzz)
      scripts/fuzz.sh 20
      ;;
    *)
      echo "unknown build: $build" >&2
      exit 2
      ;;
  esac
done
echo "all tests passed: $builds"
