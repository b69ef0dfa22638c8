#!/usr/bin/env bash
# Builds the benchmark (optimised, in build/) and prints the table of the hot paths against
# their physical limit. --quick runs every row once on small data, only to show the rows still
# run (CI); other arguments go to the benchmark (--only WORD, --cache FOLDER).
set -euo pipefail
here="$(cd "$(dirname "$0")/.." && pwd)"
build="$here/build"
bash "$here/scripts/install-deps.sh"
cmake -S "$here" -B "$build" -DCMAKE_BUILD_TYPE=RelWithDebInfo >/dev/null
cmake --build "$build" -j"$(nproc)" --target mirelo_bench
QT_QPA_PLATFORM=offscreen "$build/bench/mirelo_bench" "$@"
