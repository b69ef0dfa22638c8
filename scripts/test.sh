#!/usr/bin/env bash
# Builds Mirelo and runs every test. Used by the README's test command and by CI.
set -euo pipefail
here="$(cd "$(dirname "$0")/.." && pwd)"
bash "$here/scripts/install-deps.sh"
cmake -S "$here" -B "$here/build" -DCMAKE_BUILD_TYPE=RelWithDebInfo >/dev/null
cmake --build "$here/build" -j"$(nproc)"
ctest --test-dir "$here/build" --output-on-failure --no-tests=error -j"$(nproc)"
