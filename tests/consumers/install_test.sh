#!/usr/bin/env bash
# install_test.sh BUILD_DIRECTORY: installs the built library into a private prefix and builds programs
# against it, outside the tree: with find_package, with pkg-config, with only -I and -l, and with g++ and
# two versions of clang++ for every standard. All of them run with the same binary and print the contents of
# `expected`. The program of the README and the project of ./run new are built, too.
set -euo pipefail
build=$(realpath "$1")
source=$(realpath "$(dirname "$0")")
root=$(mktemp -d "${TMPDIR:-/tmp}/tova_install_XXXXXX")
trap 'rm -rf "$root"' EXIT

for component in tova-runtime tova-development; do
    cmake --install "$build" --component $component --prefix "$root/prefix" >/dev/null
done
library=$(dirname "$(find "$root/prefix" -name libtova.so)")
soname=$(readelf -d "$library/libtova.so" | sed -n 's/.*SONAME.*\[\(.*\)\]/\1/p')
[[ $soname == libtova.so.2.18 ]] || { echo "SONAME is $soname"; exit 1; }
needed=$(readelf -d "$library/libtova.so" | sed -n 's/.*NEEDED.*\[\(.*\)\]/\1/p')
while read -r name; do
    case $name in
    libc.so.* | libm.so.* | libgcc_s.so.* | ld-linux* | libstdc++.so.* | libboost_filesystem.so.* | \
        libboost_system.so.*) ;;
    *) echo "the library needs $name"; exit 1 ;;
    esac
done <<<"$needed"

runs=0
run() {
    LD_LIBRARY_PATH=$library "$1" "$root" | diff "$source/expected" - || { echo "$1 failed"; exit 1; }
    runs=$((runs + 1))
}

cmake -G Ninja -S "$source/find_package" -B "$root/by_cmake" -DCMAKE_PREFIX_PATH="$root/prefix" >/dev/null
cmake --build "$root/by_cmake" >/dev/null
run "$root/by_cmake/consumer"

cmake -G Ninja -S "$source/versions" -B "$root/versions" -DCMAKE_PREFIX_PATH="$root/prefix" \
    >"$root/log" 2>&1 || { cat "$root/log"; exit 1; }

export PKG_CONFIG_PATH=$library/pkgconfig
mkdir "$root/by_pkg_config" "$root/plain"
make -s -C "$root/by_pkg_config" -f "$source/pkg_config/Makefile"
run "$root/by_pkg_config/consumer"
make -s -C "$root/plain" -f "$source/plain/Makefile" PREFIX="$root/prefix" LIBDIR="$library"
run "$root/plain/consumer"

read -ra flags <<<"$(pkg-config --cflags tova)"
read -ra libraries <<<"$(pkg-config --libs tova)"
warnings=(-Wall -Wextra -Wpedantic -Wshadow -Wnon-virtual-dtor -Wconversion -Wsign-conversion
    -Wold-style-cast -Werror)
for compiler in g++ clang++ clang++-19; do
    for standard in 14 17 20 2b; do
        program=$root/consumer-$compiler-$standard
        "$compiler" -std=c++$standard "${warnings[@]}" "${flags[@]}" "$source/main.cpp" \
            "${libraries[@]}" -o "$program"
        run "$program"
    done
done

# The program and the catalog from the README, built against the installed library, print the output that
# the README shows. block LANGUAGE: the first fenced block of that language.
block() {
    awk -v fence='```'"$1" '$0 == fence {on = 1; next} on && /^```/ {exit} on' \
        "$source/../../README.md"
}
block cpp >"$root/readme.cpp"
g++ -std=c++14 "${warnings[@]}" "${flags[@]}" "$root/readme.cpp" "${libraries[@]}" \
    -o "$root/readme"
mkdir "$root/catalogs"
block xml >"$root/catalogs/report.xmc"
printed=$(cd "$root" && export LD_LIBRARY_PATH=$library && ./readme && ./readme de_AT)
[[ $printed == "$(block output)" ]] || { echo "the README's program prints: $printed"; exit 1; }

# The project that ./run new makes builds and runs without changes.
"$source/../../tools/new_project.sh" "$root/hello" >/dev/null
cmake -G Ninja -S "$root/hello" -B "$root/hello/build" -DCMAKE_PREFIX_PATH="$root/prefix" >/dev/null
cmake --build "$root/hello/build" >/dev/null
printed=$(cd "$root/hello" && export LD_LIBRARY_PATH=$library &&
    env -u LOCALE build/hello && build/hello -locale=de -user.name=Maria)
expected=$'Hello, Mia!\nYou use 48.3 GB.\nHallo, Maria!\nSie belegen 48.3 GB.'
[[ $printed == "$expected" ]] || { echo "the new project prints: $printed"; exit 1; }
! "$source/../../tools/new_project.sh" "$root/hello" 2>/dev/null ||
    { echo "an existing directory was taken for a new project"; exit 1; }
! "$source/../../tools/new_project.sh" "$root/no-name" 2>/dev/null ||
    { echo "a name that is no identifier was taken"; exit 1; }

echo "$runs programs ran against the installed copy"
