# Sets up a bare Debian 12 in a temporary directory, for the scripts that source this file. Needs root and
# debootstrap. The directory is $root; it is removed when the script ends.

# make_bare_system PACKAGE,...: makes a minimal system with these additional packages.
make_bare_system() {
    root=$(mktemp -d "${TMPDIR:-/tmp}/bare_system_XXXXXX")
    trap remove_bare_system EXIT
    chmod 755 "$root"  # apt downloads as a separate user

    # The bare system uses the package source of the host.
    local source
    source=$(apt-get indextargets --format '$(SITE) $(RELEASE)' | awk '$2 == "bookworm" {print $1; exit}')
    debootstrap --variant=minbase --include="ca-certificates,$1" bookworm "$root" "$source" \
        >"$root.log" 2>&1 || { tail -20 "$root.log"; exit 1; }
    rm -f "$root.log"
    cp /etc/resolv.conf "$root/etc/" 2>/dev/null || true
    cp -r /etc/apt/auth.conf.d "$root/etc/apt/" 2>/dev/null || true
    mount -t proc proc "$root/proc"
}

remove_bare_system() {
    umount "$root/proc" 2>/dev/null || true
    rm -rf --one-file-system "$root"
}

# inside COMMAND: runs a command in the bare system, with a clean environment.
inside() {
    chroot "$root" env -i HOME=/root PATH=/usr/sbin:/usr/bin:/sbin:/bin LANG=C.UTF-8 "$@"
}
