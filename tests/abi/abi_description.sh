#!/usr/bin/env bash
# abi_description.sh check|update LIBRARY: compares the sizes, members, bases, slots and signatures in
# the library's debug information with the stored description, or stores them anew. A difference is a
# change of the binary interface: programs built before it no longer work.
set -euo pipefail
here=$(realpath "$(dirname "$0")")
mode=$1
library=$(realpath "$2")
headers=$(realpath "$here/../../include")
stored=$here/libtova.abi.gz
work=$(mktemp -d "${TMPDIR:-/tmp}/tova_abi_XXXXXX")
trap 'rm -rf "$work"' EXIT

case $mode in
update)
    abidw --no-corpus-path --no-comp-dir-path --no-show-locs --drop-private-types \
        --exported-interfaces-only --headers-dir "$headers" "$library" --out-file "$work/libtova.abi"
    gzip -9 -n -c "$work/libtova.abi" >"$stored"
    echo "stored $(grep -c '<function-decl' "$work/libtova.abi") functions"
    ;;
check)
    gunzip -c "$stored" >"$work/libtova.abi"
    abidiff --headers-dir2 "$headers" "$work/libtova.abi" "$library" || {
        echo "the binary interface differs from tests/abi/libtova.abi.gz; if this is intended:"
        echo "    tests/abi/abi_description.sh update build/release/libtova.so"
        exit 1
    }
    echo "the binary interface equals its stored description"
    ;;
esac
