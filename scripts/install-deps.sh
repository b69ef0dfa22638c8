#!/usr/bin/env bash
# Installs the Debian packages Mirelo needs to build, run and test; with --package also the
# tools that build and check its own Debian packages. Safe to run again: it does nothing when
# everything is already there.
set -euo pipefail

packages=(
  cmake g++ make pkg-config clang-format
  clang libclang-rt-dev
  libxml2-dev libcurl4-openssl-dev libcpp-httplib-dev
  qt6-base-dev qt6-webengine-dev libqt6svg6 qt6-translations-l10n qt6-l10n-tools
  libgtest-dev libgmock-dev poppler-utils
  xvfb xauth
)
if [ "${1:-}" = "--package" ]; then
  packages+=(dpkg-dev debhelper lintian desktop-file-utils librsvg2-bin x11-utils)
fi

missing=()
for package in "${packages[@]}"; do
  if ! dpkg-query -W -f='${Status}' "$package" 2>/dev/null | grep -q "install ok installed"; then
    missing+=("$package")
  fi
done

if [ ${#missing[@]} -eq 0 ]; then
  exit 0
fi

sudo=""
if [ "$(id -u)" -ne 0 ]; then
  sudo="sudo"
fi
export DEBIAN_FRONTEND=noninteractive
$sudo apt-get update -qq
$sudo apt-get install -y -qq --no-install-recommends "${missing[@]}"
