# The Debian package. Sourced by package.sh.

package_linux() {
    package_manual
    build_preset package rotika_package_files -DROTIKA_MANUAL="$release/podrecznik" \
        -DROTIKA_CONTACT="${ROTIKA_CONTACT:-Rotika <kontakt@rotika.example>}"
    say "The Debian package"
    rm -f "$release"/rotika_*.deb
    (cd "$root/build/package" && cpack -B "$root/build/package/cpack") >"$root/build/package/cpack.log" 2>&1 || {
        cat "$root/build/package/cpack.log"
        die "CPack failed."
    }
    mv "$root"/build/package/cpack/rotika_*.deb "$release"
    check_debian_package "$release"/rotika_*.deb
}

# check_debian_package file: by the tools of the distribution and of the desktops.
check_debian_package() (
    content=$(mktemp -d)
    trap 'rm -rf "$content"' EXIT
    dpkg-deb -x "$1" "$content"
    (cd "$content" && find etc usr/share/applications -name '*.desktop' -exec desktop-file-validate {} +)
    appstreamcli validate --no-net "$content"/usr/share/metainfo/*.xml
    LC_ALL=C.UTF-8 man --warnings -l "$content"/usr/share/man/{,pl/}man1/*.gz 2>&1 >/dev/null | { ! grep .; }
    if grep -rqF "$root" "$content"; then
        die "The package contains the path of this build: $(grep -rlF "$root" "$content" | tr '\n' ' ')"
    fi
    # With its notices, which tell of flags that a binary lacks. The guard calls nothing that has a fortified form.
    lintian --allow-root --display-info --fail-on error,warning,info \
        --suppress-tags binary-has-unneeded-section,hardening-no-fortify-functions "$1"
)

test_package_linux() {
    local status=0 artefacts=$root/build/artefacts/packages
    need_bare_debian
    mkdir -p "$artefacts"
    as_root env PYTHONPATH="$root/tests" ROTIKA_CACHE="$cache" ROTIKA_RELEASE="$release" /usr/bin/python3 -B -m pytest \
        -q -p no:cacheprovider "$root/tests/packages/test_linux.py" ${1:+-k "$1"} || status=$?
    as_root chown -R "$(id -u):$(id -g)" "$artefacts"
    return "$status"
}

# A Debian 12 with nothing but its base, for trying the package: made once, from the mirror of this machine's apt.
bare_debian=$cache/debian-bookworm.tar

need_bare_debian() {
    [ -f "$bare_debian" ] || with_lock "$bare_debian.lock" make_bare_debian
    mkdir -p "$cache/debian-archives/partial"
}

debian_mirror() {
    local mirrors
    mirrors=$(apt-get indextargets --format '$(ORIGIN) $(CODENAME) $(REPO_URI)' | sed -n 's/^Debian bookworm //p')
    head -n 1 <<<"$mirrors"
}

make_bare_debian() {
    local mirror partial=$bare_debian.partial
    [ ! -f "$bare_debian" ] || return 0
    mirror=$(debian_mirror)
    [ "$mirror" ] || die "The package sources of this machine name no mirror of Debian 12."
    say "Making a bare Debian 12, once; some minutes"
    as_root rm -rf "$partial" "$partial.tar"
    as_root debootstrap --variant=minbase bookworm "$partial" "$mirror" >"$bare_debian.log" 2>&1 || {
        tail "$bare_debian.log"
        die "debootstrap failed."
    }
    as_root rm -rf "$partial/var/cache/apt/archives" "$partial"/var/log/*
    as_root mkdir -p "$partial/var/cache/apt/archives/partial"
    as_root tar -C "$partial" -cf "$partial.tar" .
    as_root rm -rf "$partial"
    mv "$partial.tar" "$bare_debian"
}
