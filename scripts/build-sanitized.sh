#!/usr/bin/env bash
# Configures and builds the libraries, the unit and widget tests and the fuzz
# targets with clang, AddressSanitizer and UndefinedBehaviorSanitizer into
# ./build-asan. The program itself and the integration tests are left out.
set -euo pipefail
cd "$(dirname "$0")/.."
CC=clang CXX=clang++ cmake -S . -B build-asan -DCMAKE_BUILD_TYPE=Debug -DCMAKE_CXX_FLAGS_DEBUG="-O1 -g" \
  -DVELMORA_SANITIZE=ON -DVELMORA_FUZZ=ON -DVELMORA_BUILD_APP=OFF >/dev/null
cmake --build build-asan -j"$(nproc)"
