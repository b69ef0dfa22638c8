#!/usr/bin/env bash
# Checks the Debian packages that scripts/package.sh left in out/package/: their version is the
# program's, lintian finds no error, the desktop entry is valid, each package holds exactly its
# files and mirelo never needs the stand-in. Then it installs them on this machine with dpkg, as
# root (or through sudo): the launcher starts Mirelo at its login screen with a fresh user
# folder, the window's class is the one the menu entry names and it carries the mark, the
# stand-in's launcher writes into that folder's inbox, and neither an upgrade nor the removal
# touches the folder. An installed mirelo is replaced; the machine is left without both.
set -euo pipefail
here="$(cd "$(dirname "$0")/.." && pwd)"
work="$here/out/package"
version="$(dpkg-parsechangelog -l "$here/debian/changelog" -S Version)"
arch="$(dpkg --print-architecture)"
mirelo_deb="$work/mirelo_${version}_${arch}.deb"
standin_deb="$work/mirelo-standin_${version}_${arch}.deb"
sudo=""
if [ "$(id -u)" -ne 0 ]; then
  sudo="sudo"
fi
scratch="$(mktemp -d)"
home="$scratch/home"
folder="$home/mirelo"
trap '$sudo dpkg -r mirelo mirelo-standin >/dev/null 2>&1 || true; rm -rf "$scratch"' EXIT

passed=0
failed=0
# Runs one check, its output kept unless it fails.
check() {
  local name="$1"
  shift
  if "$@" >"$scratch/check.log" 2>&1; then
    echo "ok: $name"
    passed=$((passed + 1))
  else
    echo "FAILED: $name"
    cat "$scratch/check.log"
    failed=$((failed + 1))
  fi
}

same_version() {
  grep -q "^project(mirelo VERSION $version " "$here/CMakeLists.txt"
}

# The files of a package, directories left out, each link with its target.
files_of() {
  dpkg-deb -c "$1" | awk '$1 !~ /^d/ { print $6 ($7 == "->" ? " -> " $8 : "") }' | sort
}

holds_exactly() {
  diff <(files_of "$1") <(sort)
}

mirelo_files() {
  holds_exactly "$mirelo_deb" <<EOF
./usr/bin/mirelo -> ../lib/mirelo/mirelo
./usr/lib/mirelo/mirelo
./usr/lib/mirelo/mirelo-browser
./usr/share/applications/mirelo.desktop
./usr/share/doc/mirelo/changelog.gz
./usr/share/doc/mirelo/copyright
./usr/share/icons/hicolor/128x128/apps/mirelo.png
./usr/share/icons/hicolor/16x16/apps/mirelo.png
./usr/share/icons/hicolor/256x256/apps/mirelo.png
./usr/share/icons/hicolor/32x32/apps/mirelo.png
./usr/share/icons/hicolor/48x48/apps/mirelo.png
./usr/share/icons/hicolor/scalable/apps/mirelo.svg
./usr/share/man/man1/mirelo.1.gz
EOF
}

standin_files() {
  holds_exactly "$standin_deb" <<EOF
./usr/bin/mirelo-standin
./usr/lib/mirelo-standin/korvalo
./usr/share/doc/mirelo-standin/changelog.gz
./usr/share/doc/mirelo-standin/copyright
./usr/share/man/man1/mirelo-standin.1.gz
EOF
}

# The libraries come from the binaries; what they can't show is named: the pictures' module.
dependencies() {
  local needs
  needs="$(dpkg-deb -f "$mirelo_deb" Pre-Depends Depends Recommends)"
  echo "$needs"
  grep -q libqt6widgets6 <<<"$needs" && grep -q libqt6svg6 <<<"$needs" &&
    ! grep -q mirelo-standin <<<"$needs"
}

valid_desktop_entry() {
  dpkg-deb -x "$mirelo_deb" "$scratch/extracted"
  desktop-file-validate "$scratch/extracted/usr/share/applications/mirelo.desktop"
}

# Waits up to 30 s for a file that a process makes, as long as the process lives.
await_file() {
  local file="$1" pid="$2"
  for _ in $(seq 300); do
    [ -e "$file" ] && return 0
    kill -0 "$pid" 2>/dev/null || return 1
    sleep 0.1
  done
  return 1
}

# The settings check of the login screen writes the file, then the screen waits for the user.
first_start() {
  XDG_DATA_HOME="$home" QT_QPA_PLATFORM=offscreen /usr/bin/mirelo &
  local pid=$!
  await_file "$folder/System/Settings.xml" "$pid" && sleep 1 && kill -0 "$pid"
  local running=$?
  kill "$pid" 2>/dev/null
  wait "$pid" 2>/dev/null
  ls -A "$folder" "$folder/in" "$folder/data"
  grep "<DataPath>$folder/data/</DataPath>" "$folder/System/Settings.xml" &&
    [ "$(LC_ALL=C ls -A "$folder")" = "$(printf 'System\ndata\nin')" ] && [ "$running" -eq 0 ]
}

# The login window as a desktop sees it, on a virtual display.
window_as_seen() {
  XDG_DATA_HOME="$home" xvfb-run -a bash -c '
    /usr/bin/mirelo & pid=$!
    for _ in $(seq 300); do
      xprop -name "Mirelo Inloggning" WM_CLASS _NET_WM_ICON >"$1" 2>/dev/null && break
      sleep 0.1
    done
    kill "$pid"' _ "$scratch/window"
  head -c 300 "$scratch/window"
  local class
  class="$(grep -m1 '^StartupWMClass=' /usr/share/applications/mirelo.desktop)"
  grep -q "^WM_CLASS(STRING) = \"[^\"]*\", \"${class#*=}\"$" "$scratch/window" &&
    grep -q 'Icon (' "$scratch/window"
}

standin_writes_the_inbox() {
  XDG_DATA_HOME="$home" /usr/bin/mirelo-standin --samples 2
  [ "$(ls "$folder/in" | wc -l)" -eq 2 ]
}

# The user's folder as it stands: every file's name, size and bytes.
folder_state() {
  (cd "$folder" && find . -type f -exec sha256sum {} + | sort)
}

# A newer package of the same programs, as an upgrade brings it.
upgrade_keeps_the_folder() {
  dpkg-deb -R "$mirelo_deb" "$scratch/next"
  sed -i "s/^Version: .*/Version: $version+1/" "$scratch/next/DEBIAN/control"
  dpkg-deb --root-owner-group -b "$scratch/next" "$scratch/next.deb"
  $sudo dpkg -i "$scratch/next.deb"
  [ "$(dpkg-query -W -f='${Version}' mirelo)" = "$version+1" ] &&
    [ "$(folder_state)" = "$before" ]
}

removal_keeps_the_folder() {
  $sudo dpkg -r mirelo mirelo-standin
  [ ! -e /usr/lib/mirelo ] && [ ! -e /usr/bin/mirelo ] && [ "$(folder_state)" = "$before" ]
}

check "the package's version is the program's ($version)" same_version
check "lintian finds no error" lintian --fail-on error "$mirelo_deb" "$standin_deb"
check "mirelo holds its programs, launcher, entry, icons and manual page" mirelo_files
check "mirelo-standin holds its service, launcher and manual page" standin_files
check "mirelo's dependencies come from its binaries and leave the stand-in out" dependencies
check "the desktop entry is valid" valid_desktop_entry
check "dpkg installs both packages" $sudo dpkg -i "$mirelo_deb" "$standin_deb"
check "the launcher's first start makes the user's folder and waits at the login" first_start
check "the login window has the menu entry's class and the mark" window_as_seen
check "the stand-in's launcher writes into the user's inbox" standin_writes_the_inbox
before="$(folder_state)"
check "an upgrade keeps the user's folder" upgrade_keeps_the_folder
check "the removal keeps the user's folder" removal_keeps_the_folder

echo "package: $passed passed, $failed failed"
[ "$failed" -eq 0 ]
