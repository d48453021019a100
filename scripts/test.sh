#!/usr/bin/env bash
# Installs what is missing, builds, and runs every test (unit, widget and the
# Xvfb integration tests); then the unit and widget tests again under the
# sanitizers, and the fuzz targets for a bounded time (VELMORA_SANITIZED=0 skips
# that stage).
set -euo pipefail
cd "$(dirname "$0")/.."
bash scripts/install-deps.sh
bash scripts/build.sh
ctest --test-dir build --output-on-failure -j2 "$@"
if [ "${VELMORA_SANITIZED:-1}" != 0 ]; then
  bash scripts/test-sanitized.sh
fi
