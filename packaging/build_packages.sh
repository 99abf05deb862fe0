#!/usr/bin/env bash
# Builds the Debian packages into build/packages and checks them with lintian. The sources are the current
# versions of the files that git knows. The build writes no file of the tree.
set -euo pipefail
cd "$(dirname "$0")/.."
version=$(sed -n '1s/^tova (\([0-9.]*\)-.*/\1/p' packaging/debian/changelog)
grep -q "^project(tova VERSION $version " CMakeLists.txt ||
    { echo "packaging/debian/changelog is about another version"; exit 1; }

out=$PWD/build/packages
rm -rf "$out"
mkdir -p "$out/tova-$version"
git ls-files -z | tar --null -T - -c | tar -x -C "$out/tova-$version"
cp -r packaging/debian "$out/tova-$version/debian"
cd "$out/tova-$version"
# dpkg-buildpackage sets another home directory, in which ccache would find nothing.
if command -v ccache >/dev/null; then
    CCACHE_DIR=$(ccache --get-config cache_dir)
    export CCACHE_DIR
fi
DEB_BUILD_OPTIONS=parallel=${TOVA_JOBS:-$(nproc)} dpkg-buildpackage -b -us -uc >"$out/log" 2>&1 || {
    tail -n 60 "$out/log"
    exit 1
}
cd "$out"
rm -rf "tova-$version"
lintian --allow-root --fail-on error --tag-display-limit 3 ./*.changes
ls ./*.deb
