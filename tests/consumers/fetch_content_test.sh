#!/usr/bin/env bash
# fetch_content_test.sh: builds a project that gets the tree with FetchContent, and runs its program.
set -euo pipefail
source=$(realpath "$(dirname "$0")")
root=$(mktemp -d "${TMPDIR:-/tmp}/tova_fetch_content_XXXXXX")
trap 'rm -rf "$root"' EXIT

cmake -G Ninja -S "$source/fetch_content" -B "$root/build" -DTOVA_FOLDER="$source/../.." \
    -DCMAKE_DISABLE_FIND_PACKAGE_GTest=ON >"$root/log" 2>&1 || { cat "$root/log"; exit 1; }
cmake --build "$root/build" --target consumer >"$root/log" 2>&1 || { tail -n 30 "$root/log"; exit 1; }
"$root/build/consumer" "$root" | diff "$source/expected" -
echo "the program prints the expected output"
