#!/usr/bin/env bash
# Follows the README word for word on a bare Debian 12 that has git and nothing else.
#
# tests/first_contact.sh [COMMIT]: makes such a system in a temporary directory (root and debootstrap
# are needed), clones COMMIT into it, runs the README's commands one by one and compares what they
# print with what the README shows. The time without the download and set-up of packages is printed,
# with a note if it is more than two minutes: a busy machine is not an error in the README.
set -euo pipefail
cd "$(dirname "$0")/.."
commit=$(git rev-parse "${1:-HEAD}")
limit=120  # seconds

source tests/bare_system.sh
make_bare_system git
git clone -q --bare . "$root/tova.git"
inside git clone -q /tova.git /root/tova
inside git -C /root/tova checkout -q "$commit"

# The commands of the README, and what the project that it makes prints.
blocks() {
    awk -v fence='```'"$1" '$0 == fence {on = 1; next} /^```/ {on = 0} on' README.md
}
blocks sh >"$root/root/commands"
awk '$0 == "```output" {on = 1; n++; next} /^```/ {on = 0} on && n == 2' README.md >"$root/expected"

# Each line runs as typed, in one shell. The clock stops while packages are installed.
cat >"$root/root/follow" <<'END'
set -e
cd /root/tova
stamp() {
    while IFS= read -r line; do
        printf '%s %s\n' "$(date +%s)" "$line"
    done
}
{ set -x; source /root/commands; } 2>&1 | tee >(stamp >/root/stamped) 
END
start=$(date +%s)
inside bash /root/follow >"$root/printed" 2>&1 || { tail -40 "$root/printed"; exit 1; }
total=$(($(date +%s) - start))
sleep 1

# From "==> Installing" up to the next "==> " line, packages are downloaded and set up.
packages=$(awk '/==> Installing/ {begin = $1; next}
                begin && /==> / {sum += $1 - begin; begin = 0}
                END {print sum + 0}' "$root/root/stamped")
own=$((total - packages))

# The shell shows each command after a "+".
grep -v '^+' "$root/printed" | tail -4 | diff "$root/expected" - ||
    { echo "first contact: the README shows something else"; exit 1; }
for sentence in "One program, six languages" "==> Installed below /usr/local"; do
    grep -qF "$sentence" "$root/printed" || { echo "first contact: nothing says $sentence"; exit 1; }
done
commands=$(grep -c . "$root/root/commands")
echo "first contact: $commands lines of commands, $own s beside $packages s of package installation"
((own <= limit)) || echo "first contact: more than $limit s"
