# The Debian package. Sourced by package.sh.

package_linux() {
    build_preset package rotika_package_files
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
    lintian --fail-on error,warning --suppress-tags initial-upload-closes-no-bugs --allow-root "$1"
)
