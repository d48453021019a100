#!/usr/bin/env bash
# Builds ./build-asan (clang, AddressSanitizer, UndefinedBehaviorSanitizer,
# LeakSanitizer), runs the unit and widget tests in it, then every fuzz target
# for a bounded time (scripts/fuzz.sh). Arguments go to ctest.
set -euo pipefail
cd "$(dirname "$0")/.."
bash scripts/build-sanitized.sh
export ASAN_OPTIONS=detect_leaks=1
export UBSAN_OPTIONS=print_stacktrace=1
export LSAN_OPTIONS="suppressions=$PWD/scripts/lsan.supp:print_suppressions=0"
ctest --test-dir build-asan --output-on-failure -j2 -LE integration "$@"
bash scripts/fuzz.sh
