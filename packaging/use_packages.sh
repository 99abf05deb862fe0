#!/usr/bin/env bash
# check_packages.sh runs this on the bare system, in a directory with the packages and tests/consumers.
set -euo pipefail
cd "$(dirname "$0")"
export DEBIAN_FRONTEND=noninteractive
install() {
    apt-get install -y -q --no-install-recommends "$@" >log 2>&1 || { tail -20 log; exit 1; }
}
fail() {
    echo "packages: $*"
    exit 1
}
apt-get update -qq
before=$(find / -xdev -path /root -prune -o -path /proc -prune -o -iname '*tova*' -print)

# The library alone installs no compiler, and the dynamic linker finds it immediately.
install ./libtova2.18_*.deb
ldconfig -p | grep -q 'libtova.so.2.18 ' || fail "the dynamic linker does not find the library"
! command -v g++ >/dev/null || fail "the library package installs a compiler"
echo "libtova2.18 is installed with $(grep -c '^Setting up' log) packages"

install ./libtova-dev_*.deb ./libtova-doc_*.deb ./tova-tools_*.deb ./libtova2.18-dbgsym_*.deb \
    g++ cmake gdb pkg-config
echo "all packages are installed"

# The consumers, as they are.
library=$(dirname "$(dpkg -L libtova-dev | grep '/libtova.so$')")
mkdir by_cmake by_pkg_config plain
cmake -S consumers/find_package -B by_cmake >log 2>&1 && cmake --build by_cmake >log 2>&1 ||
    { tail -20 log; exit 1; }
make -s -C by_pkg_config -f ../consumers/pkg_config/Makefile >log 2>&1 || { tail -20 log; exit 1; }
make -s -C plain -f ../consumers/plain/Makefile PREFIX=/usr LIBDIR="$library"
for program in by_cmake by_pkg_config plain; do
    "$program/consumer" . | diff consumers/expected - || fail "$program prints something else"
done
echo "three consumers print the expected output"

# tova-new makes a project that builds and runs.
tova-new hello >/dev/null
cmake -S hello -B hello/build >log 2>&1 && cmake --build hello/build >log 2>&1 ||
    { tail -20 log; exit 1; }
printed=$(cd hello && build/hello -locale=de -user.name=Maria)
[[ $printed == $'Hallo, Maria!\nSie belegen 48.3 GB.' ]] || fail "the new project prints $printed"
echo "tova-new makes a project that runs"

# gdb loads the printers automatically, and the debug symbols describe the library.
g++ -std=c++14 -g debugger/values.cpp -ltova -o values
gdb -nx -batch -ex 'break look_here' -ex run -ex up -ex 'print v_double' -ex 'print catalog.m_name' \
    -ex 'print settings' -ex 'ptype TOVA_2_18::config::config_tree' ./values >log 2>&1
for line in '$1 = double 2.25' '$2 = "app"' '["port"] = config_tree int 8080' 'm_children;'; do
    grep -qF -- "$line" log || { cat log; fail "gdb does not show $line"; }
done
echo "gdb shows the types"

[[ -f /usr/share/doc/libtova-doc/html/index.html ]] || fail "there is no manual"
for name in $(dpkg -L tova-tools | grep '^/usr/bin/.'); do
    [[ -f /usr/share/man/man1/$(basename "$name").1.gz ]] || fail "$name has no manual page"
    case $name in
    */tova-new) ;;
    *) "$name" --help >log || fail "$name --help fails" ;;
    esac
    echo "$name is there, with its manual page"
done

apt-get purge -y -q 'libtova*' 'tova-*' >log 2>&1 || { tail -20 log; exit 1; }
after=$(find / -xdev -path /root -prune -o -path /proc -prune -o -iname '*tova*' -print |
    grep -v '^/var/cache/apt\|^/var/lib/apt' || true)
[[ $before == "$after" ]] || fail "the removal left $after"
echo "nothing is left after their removal"
