#!/usr/bin/env bash
# headers_test.sh INCLUDE_FOLDER: compiles every public header alone, like a program's own header (-I, not
# -isystem), with every warning that a careful project enables. g++ compiles all of them as C++14. Every
# compiler compiles the two umbrella headers with every standard. A warning is an error. Each header must
# also declare the short name of the namespace, and the umbrella headers must include all others.
set -euo pipefail
include=$(realpath "$1")
root=$(mktemp -d "${TMPDIR:-/tmp}/tova_headers_XXXXXX")
trap 'rm -rf "$root"' EXIT
warnings=(-Wall -Wextra -Wpedantic -Wshadow -Wconversion -Wsign-conversion -Wold-style-cast
    -Wnon-virtual-dtor -Werror)

# compile COMPILER STANDARD HEADER
compile() {
    printf '#include <%s>\nnamespace alone = tova;\n' "$3" |
        "$1" "-std=c++$2" "${warnings[@]}" -I "$include" -fsyntax-only -x c++ - ||
        { echo "$1, C++$2: <$3>"; exit 1; }
}

headers=0
while read -r header; do
    compile g++ 14 "$header"
    headers=$((headers + 1))
    case $header in
    tova/tova.hpp | tova/extras.hpp | */_private/*) ;;
    tova/extras/*) grep -q "<$header>" "$include/tova/extras.hpp" ||
        { echo "extras.hpp does not include <$header>"; exit 1; } ;;
    *) grep -q "<$header>" "$include/tova/tova.hpp" ||
        { echo "tova.hpp does not include <$header>"; exit 1; } ;;
    esac
done < <(cd "$include" && find tova -name '*.hpp' | sort)
((headers > 50)) || { echo "only $headers headers"; exit 1; }

umbrellas=0
for compiler in g++ clang++ clang++-19; do
    for standard in 14 17 20 2b; do
        for header in tova/tova.hpp tova/extras.hpp; do
            compile "$compiler" "$standard" "$header"
            umbrellas=$((umbrellas + 1))
        done
    done
done
echo "$headers headers compile alone, $umbrellas times an umbrella, 0 warnings"
