#!/usr/bin/env bash
# subproject_test.sh: adds the tree to a small project with add_subdirectory, both with and without
# EXCLUDE_FROM_ALL. The project must get the library and nothing else: no test, no install rule, no cache
# entry without the prefix, no changed setting.
set -euo pipefail
source=$(realpath "$(dirname "$0")")
tree=$(realpath "$source/../..")
root=$(mktemp -d "${TMPDIR:-/tmp}/tova_subproject_XXXXXX")
trap 'rm -rf "$root"' EXIT
# Clear these variables, so that only the parent project can set them.
unset CMAKE_CXX_COMPILER_LAUNCHER CMAKE_BUILD_TYPE CMAKE_EXPORT_COMPILE_COMMANDS

fail() {
    printf '%s\n' "$@"
    exit 1
}

# Neither the library nor its install rules need GoogleTest.
configure() {
    local folder=$1
    shift
    cmake -G Ninja -S "$source/add_subdirectory" -B "$root/$folder" \
        -DCMAKE_DISABLE_FIND_PACKAGE_GTest=ON "$@" >"$root/log" 2>&1 ||
        { cat "$root/log"; exit 1; }
}

# The names of the cache entries of a build folder.
entries() {
    sed -n 's/^\([A-Za-z_][^:]*\):.*/\1/p' "$root/$1/CMakeCache.txt" | grep -v -- '-ADVANCED$' | sort -u
}

configure without "-DTOVA_FOLDER=" "-DTOVA_EXTRA="
for extra in "" EXCLUDE_FROM_ALL; do
    folder=with_$extra
    configure "$folder" "-DTOVA_FOLDER=$tree" "-DTOVA_EXTRA=$extra"

    # Boost's package files create the other entries.
    added=$(comm -13 <(entries without) <(entries "$folder") |
        grep -vE '^(TOVA_|tova_|Boost_|boost_|_?Boost|FIND_PACKAGE_MESSAGE_DETAILS_Boost$)' || true)
    [[ -z $added ]] || fail "cache entries without the prefix:" "$added"

    tests=$(ctest --test-dir "$root/$folder" -N | sed -n 's/^Total Tests: //p')
    [[ $tests == 0 ]] || fail "the project has $tests tests of tova"

    targets=$(ninja -C "$root/$folder" -t targets all | grep -E '(_test|_example[^/]*|bench_[^/]*|fuzz_[^/]*): phony' || true)
    [[ -z $targets ]] || fail "unexpected targets:" "$targets"
done

# Only one of the two is built. They differ only in the target `all`.
cmake --build "$root/with_EXCLUDE_FROM_ALL" >"$root/log" 2>&1 || { tail -n 30 "$root/log"; exit 1; }
"$root/with_EXCLUDE_FROM_ALL/consumer" "$root" | diff "$source/expected" - || fail "the program failed"

cmake --install "$root/with_EXCLUDE_FROM_ALL" --prefix "$root/prefix" >/dev/null
installed=$(cd "$root/prefix" && find . -type f)
[[ $installed == ./bin/consumer ]] || fail "installed:" "$installed"

# A parent project can still turn the options on.
configure install "-DTOVA_FOLDER=$tree" "-DTOVA_EXTRA=" -DTOVA_INSTALL=ON
grep -q libtova "$root/install/tova/cmake_install.cmake" || fail "TOVA_INSTALL=ON installs nothing"
configure tests "-DTOVA_FOLDER=$tree" "-DTOVA_EXTRA=" -DTOVA_BUILD_TESTS=ON -DBUILD_TESTING=OFF
tests=$(ctest --test-dir "$root/tests" -N | sed -n 's/^Total Tests: //p')
[[ $tests == 0 ]] || fail "BUILD_TESTING=OFF leaves $tests tests"
echo "the project gets the library and nothing else"
