#!/usr/bin/env bash
# Installs the packages of build/packages on a bare Debian 12, uses them there and removes them again.
# Needs root and debootstrap. Prints one line for each check.
set -euo pipefail
cd "$(dirname "$0")/.."
source tests/bare_system.sh
make_bare_system make
cp -r tests/consumers tests/debugger build/packages/*.deb "$root/root"
cp packaging/use_packages.sh "$root/root"
inside bash /root/use_packages.sh
