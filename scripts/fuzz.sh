#!/usr/bin/env bash
# fuzz.sh [SECONDS] [TARGET...]: builds the fuzz targets (clang, AddressSanitizer and
# UndefinedBehaviorSanitizer, libFuzzer) into build/fuzz and runs each target for SECONDS
# (default 60), one after the other, starting from its seed corpus in fuzz/corpus/<target>.
# Prints executions, speed, edges reached and findings per target; fails when any target found
# something. Inputs found along the way are kept in build/fuzz/corpus/<target> for the next run;
# findings go to build/fuzz/findings/.
set -euo pipefail
cd "$(dirname "$0")/.."
# Absolute paths throughout: the archive target moves the working directory of its process.
root=$PWD
seconds=${1:-60}
shift || true

cmake -S . -B build/fuzz -DCMAKE_BUILD_TYPE=RelWithDebInfo \
  -DCMAKE_TOOLCHAIN_FILE=fuzz/clang-toolchain.cmake -DVSM_SANITIZE=address -DVSM_BUILD_FUZZ=ON \
  -DVSM_BUILD_TESTS=OFF >/dev/null
cmake --build build/fuzz -j "$(nproc)" --target fuzzers

targets=("$@")
if [ "${#targets[@]}" -eq 0 ]; then
  for binary in build/fuzz/fuzz/*_fuzzer; do
    targets+=("$(basename "$binary" _fuzzer)")
  done
fi

export ASAN_OPTIONS=detect_leaks=1:abort_on_error=0:strict_string_checks=1
export UBSAN_OPTIONS=print_stacktrace=1:halt_on_error=1
findings_dir=$root/build/fuzz/findings
mkdir -p "$findings_dir"
failed=()
for target in "${targets[@]}"; do
  corpus=$root/build/fuzz/corpus/$target
  log=build/fuzz/$target.log
  mkdir -p "$corpus"
  options=(-max_total_time="$seconds" -timeout=25 -rss_limit_mb=2560 -print_final_stats=1
           -artifact_prefix="$findings_dir/$target-")
  if [ -f "fuzz/$target.dict" ]; then options+=(-dict="$root/fuzz/$target.dict"); fi
  seeds=()
  if [ -d "fuzz/corpus/$target" ]; then seeds+=("$root/fuzz/corpus/$target"); fi
  marker=build/fuzz/$target.started
  touch "$marker"
  status=0
  "build/fuzz/fuzz/${target}_fuzzer" "${options[@]}" "$corpus" "${seeds[@]}" >"$log" 2>&1 ||
    status=$?
  runs=$(sed -n 's/^stat::number_of_executed_units: *//p' "$log" | tail -1)
  speed=$(sed -n 's/^stat::average_exec_per_sec: *//p' "$log" | tail -1)
  edges=$(grep -ao 'cov: [0-9]*' "$log" | tail -1 | cut -d' ' -f2)
  findings=$(find "$findings_dir" -name "$target-*" -newer "$marker" | wc -l)
  printf '%-12s %10s executions %7s/s %6s edges %3s findings\n' \
    "$target" "${runs:-?}" "${speed:-?}" "${edges:-?}" "$findings"
  if [ "$status" -ne 0 ] || [ "$findings" -ne 0 ]; then
    failed+=("$target")
    grep -a -m1 -A3 -E '^(broken:|==[0-9]+==ERROR|SUMMARY)' "$log" || true
  fi
done
if [ "${#failed[@]}" -gt 0 ]; then
  echo "fuzz: findings in ${failed[*]} (inputs in build/fuzz/findings, logs in build/fuzz)" >&2
  exit 1
fi
