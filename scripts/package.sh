#!/usr/bin/env bash
# Builds the Debian packages mirelo and mirelo-standin into out/package/, from a copy of the
# tree so that the build's own files stay out of it. Only the programs are built: the tests
# have a build of their own.
set -euo pipefail
here="$(cd "$(dirname "$0")/.." && pwd)"
work="$here/out/package"
bash "$here/scripts/install-deps.sh" --package

version="$(dpkg-parsechangelog -l "$here/debian/changelog" -S Version)"
source="$work/mirelo-$version"
rm -rf "$work"
mkdir -p "$source"
tar -C "$here" --exclude=./.git --exclude='./build*' --exclude=./out -c . | tar -C "$source" -x

if command -v ccache >/dev/null; then
  export CMAKE_CXX_COMPILER_LAUNCHER=ccache CCACHE_BASEDIR="$source"
fi
cd "$source"
# No debug package is made, so the compiler makes no debug information only to be stripped.
DEB_CXXFLAGS_STRIP=-g DEB_BUILD_OPTIONS="nocheck noautodbgsym parallel=$(nproc)" \
  dpkg-buildpackage -b -us -uc
ls "$work"/*.deb
