#!/usr/bin/env bash
# Saves PNG pictures of the login screen, the main frame, the medication view and every dialog
# into out/screenshots (or the folder given), drawn off screen.
set -euo pipefail
here="$(cd "$(dirname "$0")/.." && pwd)"
target="${1:-$here/out/screenshots}"
bash "$here/scripts/install-deps.sh"
cmake -S "$here" -B "$here/build" -DCMAKE_BUILD_TYPE=RelWithDebInfo >/dev/null
cmake --build "$here/build" -j"$(nproc)" --target mirelo_screenshots
QT_QPA_PLATFORM=offscreen "$here/build/tests/mirelo_screenshots" "$target"
