#!/usr/bin/env bash
# Makes a small project that uses the library. Usage: tools/new_project.sh DIRECTORY. It is installed as
# tova-new.
#
# The last component of DIRECTORY names the program, its catalog and its settings file.
set -euo pipefail
here=$(dirname "$(realpath "$0")")
command="./run new"
template=$here/new_project
if [[ ! -d $template ]]; then
    command=tova-new
    template=$here/../share/tova/new_project
fi

target=${1:-}
name=$(basename -- "$target")
if [[ ! $name =~ ^[A-Za-z][A-Za-z0-9_]*$ ]]; then
    echo "usage: $command DIRECTORY" >&2
    echo "The directory's name must begin with a letter and hold letters, digits and _ only." >&2
    exit 2
fi
if [[ -e $target ]]; then
    echo "$target exists already; nothing was changed" >&2
    exit 1
fi

mkdir -p "$target"
cp -r "$template/." "$target"
mv "$target/settings.cfg" "$target/$name.cfg"
mv "$target/gitignore" "$target/.gitignore"
find "$target" -type f -exec sed -i "s/@NAME@/$name/g" {} +

cat <<EOF
$target is ready. Build it and run it:

    cd $target
    cmake -B build && cmake --build build
    build/$name
    build/$name -locale=de -user.name=Maria
EOF
