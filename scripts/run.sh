#!/usr/bin/env bash
# Installs what is missing, builds, lays out Mirelo with its inbox and data folder, starts the
# stand-in Korvalo service on this machine with a few sample prescriptions, and starts Mirelo.
# The service runs until Mirelo has ended and the last browser window it opened is closed, or
# until Ctrl+C ends the demo.
set -euo pipefail
here="$(cd "$(dirname "$0")/.." && pwd)"
port="${KORVALO_PORT:-8642}"
install_dir="$here/out/mirelo"

bash "$here/scripts/install-deps.sh"
cmake -S "$here" -B "$here/build" -DCMAKE_BUILD_TYPE=RelWithDebInfo >/dev/null
cmake --build "$here/build" -j"$(nproc)" --target mirelo mirelo-browser korvalo

# An installation: the program and its hand-over browser with in/ and data/ beside them.
mkdir -p "$install_dir/in" "$install_dir/data" "$install_dir/System"
cp "$here/build/app/mirelo" "$install_dir/mirelo"
cp "$here/build/browser/mirelo-browser" "$install_dir/mirelo-browser"

# As an installer would: point a new installation at the service, never overwrite settings.
settings="$install_dir/System/Settings.xml"
if [ ! -f "$settings" ]; then
  cat >"$settings" <<XML
<?xml version="1.0" encoding="ISO-8859-1"?>
<Settings>
	<Username></Username>
	<SaveUsername>0</SaveUsername>
	<DataPath>$install_dir/data/</DataPath>
	<Server>http://127.0.0.1:$port</Server>
	<LoginUrl>/Public/Mirelo/Login.aspx</LoginUrl>
	<InitXmlUrl>/Public/Mirelo/InitXML.aspx</InitXmlUrl>
</Settings>
XML
fi

# A few prescriptions are waiting in the inbox, so patients arrive soon after logging in.
"$here/build/korvalo/korvalo" --inbox "$install_dir/in" --samples 3 >/dev/null
"$here/build/korvalo/korvalo" --port "$port" --inbox "$install_dir/in" &
korvalo_pid=$!
trap 'kill "$korvalo_pid" 2>/dev/null || true; wait "$korvalo_pid" 2>/dev/null || true' EXIT

# The browser's own sandbox refuses to start for the superuser, as a fresh machine's user often is.
if [ "$(id -u)" -eq 0 ]; then
  export QTWEBENGINE_DISABLE_SANDBOX=1
fi

if [ -z "${DISPLAY:-}${WAYLAND_DISPLAY:-}" ] && [ -z "${QT_QPA_PLATFORM:-}" ]; then
  echo "No display found: starting Mirelo under a virtual X server." >&2
  xvfb-run -a "$install_dir/mirelo" || true
else
  "$install_dir/mirelo" || true
fi

# A browser window that Mirelo opened outlives it, and its pages still post to the service.
browser_open() {
  local exe
  for exe in /proc/[0-9]*/exe; do
    if [ "$(readlink "$exe" 2>/dev/null)" = "$install_dir/mirelo-browser" ]; then
      return 0
    fi
  done
  return 1
}
if browser_open; then
  echo "Mirelo has ended; the service runs on until the last browser window is closed." >&2
  echo "Press Ctrl+C to end the demo now." >&2
  while browser_open; do
    sleep 2
  done
fi
