#!/usr/bin/env bash
# Makes build/packages/tova-VERSION-Linux-MACHINE.tar.gz with cpack, unpacks it in another place, and builds
# and runs a program with it.
set -euo pipefail
cd "$(dirname "$0")/.."
root=$(mktemp -d "${TMPDIR:-/tmp}/tova_archive_XXXXXX")
trap 'rm -rf "$root"' EXIT
consumers=$PWD/tests/consumers

{ cmake --preset package && cmake --build --preset package -j "${TOVA_JOBS:-$(nproc)}"; } >"$root/log" 2>&1 ||
    { tail -n 40 "$root/log"; exit 1; }
mkdir -p build/packages
archive=build/packages/$(cd build/package && ls tova-*.tar.gz)
mv build/package/tova-*.tar.gz build/packages

tar -xzf "$archive" -C "$root"
prefix=$(echo "$root"/tova-*)
make -s -C "$root" -f "$consumers/plain/Makefile" PREFIX="$prefix" LIBDIR="$prefix/lib"
"$root/consumer" "$root" | diff "$consumers/expected" -
"$prefix/bin/tova-new" "$root/hello" >/dev/null
cmake -S "$root/hello" -B "$root/hello/build" -DCMAKE_PREFIX_PATH="$prefix" >/dev/null
cmake --build "$root/hello/build" >/dev/null
(cd "$root/hello" && build/hello -user.name=Maria) >/dev/null
for program in "$prefix"/bin/*; do
    [[ $program == */tova-new ]] || "$program" --help >/dev/null
done
echo "$archive: programs run with it, and its own run"
