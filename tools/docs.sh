#!/usr/bin/env bash
# Builds the site in build/docs/html: the guides and the reference. Any warning is an error, and so is
# a public name without a text or an exported symbol without an entry.
set -euo pipefail
cd "$(dirname "$0")/.."

TOVA_VERSION=$(sed -n 's/^project(tova VERSION \([0-9.]*\).*/\1/p' CMakeLists.txt)
export TOVA_VERSION
rm -rf build/docs
mkdir -p build/docs

# A page for each example program.
(cd examples && find . -name '*.cpp' | sed 's|^\./||' | sort) | while read -r example; do
    title=$(sed -n '1s|^// *||p' "examples/$example")
    printf '/** @example %s\n%s */\n' "$example" "$title"
done >build/docs/examples.dox

doxygen docs/Doxyfile
if [[ -s build/docs/warnings.txt ]]; then
    head -50 build/docs/warnings.txt
    echo "docs: $(wc -l <build/docs/warnings.txt) warnings" >&2
    exit 1
fi
docs/site/check_names.py --self-test
docs/site/check_names.py
echo "docs: open build/docs/html/index.html"
