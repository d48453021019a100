#!/usr/bin/env bash
# Runs every fuzz target of ./build-asan (scripts/build-sanitized.sh) for a
# bounded time, starting from its seeds in tests/fuzz/corpus/<target>/, and
# prints the executions and the coverage each reached. Fails when any target
# crashed; the input that did it is kept in build-asan/fuzz/crashes/<target>/.
# FUZZ_SECONDS sets the total time (default 90), shared evenly; arguments name
# the targets to run (default: all).
set -euo pipefail
cd "$(dirname "$0")/.."
work=build-asan/fuzz
if [ $# -gt 0 ]; then
  targets=("$@")
else
  mapfile -t targets < <(cd build-asan/bin && ls fuzz_* | grep -v '^fuzz_replay$' | sed 's/^fuzz_//')
fi
[ ${#targets[@]} -gt 0 ] || { echo "fuzz: no targets in build-asan/bin" >&2; exit 1; }
seconds=$(( ${FUZZ_SECONDS:-90} / ${#targets[@]} ))
[ "$seconds" -ge 1 ] || seconds=1
export TZ=Europe/Berlin LC_ALL=C.UTF-8 QT_LOGGING_RULES='*.debug=false'
export LSAN_OPTIONS="suppressions=$PWD/scripts/lsan.supp:print_suppressions=0"

failed=()
printf '%-16s %10s %7s %7s  %s\n' target execs cov ft result
for t in "${targets[@]}"; do
  mkdir -p "$work/corpus/$t" "$work/crashes/$t"
  log="$work/$t.log"
  result=ok
  # Found inputs go to the first folder, which is kept between runs.
  build-asan/bin/fuzz_"$t" -max_total_time="$seconds" -print_final_stats=1 -timeout=10 -max_len=8192 \
    -artifact_prefix="$work/crashes/$t/" "$work/corpus/$t" "tests/fuzz/corpus/$t" >"$log" 2>&1 || result=CRASH
  execs=$(sed -n 's/^stat::number_of_executed_units: *//p' "$log" | tail -1)
  cov=$(grep -o 'cov: [0-9]*' "$log" | tail -1 | cut -d' ' -f2)
  ft=$(grep -o 'ft: [0-9]*' "$log" | tail -1 | cut -d' ' -f2)
  printf '%-16s %10s %7s %7s  %s\n' "$t" "${execs:--}" "${cov:--}" "${ft:--}" "$result"
  if [ "$result" != ok ]; then
    failed+=("$t")
    grep -m1 -A25 -E '^==[0-9]+==ERROR|runtime error|deadly signal|ERROR: libFuzzer' "$log" >&2 || tail -30 "$log" >&2
  fi
done
if [ ${#failed[@]} -gt 0 ]; then
  echo "fuzz: crashes in ${failed[*]}; inputs in $work/crashes/" >&2
  exit 1
fi
