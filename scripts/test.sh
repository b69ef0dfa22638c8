#!/usr/bin/env bash
# Builds Mirelo and runs every test. Used by the README's test command and by CI.
# With --sanitize the build and the run use AddressSanitizer and UndefinedBehaviorSanitizer,
# in a build folder of their own.
set -euo pipefail
here="$(cd "$(dirname "$0")/.." && pwd)"
build="$here/build"
options=(-DCMAKE_BUILD_TYPE=RelWithDebInfo)
if [ "${1:-}" = "--sanitize" ]; then
  build="$here/build-sanitize"
  options+=(-DMIRELO_SANITIZE=ON)
  # Qt and the browser keep some memory until the process ends, and the browser library frees
  # some objects by a size of its own: only errors of our making count here.
  export ASAN_OPTIONS="detect_leaks=0:abort_on_error=1:new_delete_type_mismatch=0"
  export UBSAN_OPTIONS="print_stacktrace=1:halt_on_error=1"
fi
bash "$here/scripts/install-deps.sh"
cmake -S "$here" -B "$build" "${options[@]}" >/dev/null
cmake --build "$build" -j"$(nproc)"
ctest --test-dir "$build" --output-on-failure --no-tests=error --timeout 300 -j"$(nproc)"
