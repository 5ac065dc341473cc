# ./dev package and ./dev test packages. Sourced after checks.sh.

release=$root/build/release
package_parts=(documents linux windows feed) # in this order: the packages contain the documents

. "$root/scripts/package_linux.sh"
. "$root/scripts/package_windows.sh"
. "$root/scripts/package_feed.sh"

project_version() { sed -nE 's/^project\(rotika VERSION ([0-9.]+).*/\1/p' "$root/CMakeLists.txt"; }

# release_notes form: the list of changes, see packaging/release_notes.py.
release_notes() { python3 -B "$root/packaging/release_notes.py" --version "$(project_version)" "$1"; }

# run_package [part...]: these parts of the release, or all of them. The date of the release stands for every time in
# it, so that each run gives the same bytes.
run_package() {
    local part parts=("$@")
    [ $# -gt 0 ] || parts=("${package_parts[@]}")
    need_packages build release
    if [ "${parts[*]}" != linux ]; then # a Linux system's package manager checks its packages itself
        need_packages windows
        need_update_key
    fi
    SOURCE_DATE_EPOCH=${SOURCE_DATE_EPOCH:-$(release_notes epoch)}
    export SOURCE_DATE_EPOCH
    export LC_ALL=C.UTF-8 # CPack and makensis read names of files in it
    umask 022 # folders in packages must be readable by all
    [ $# -gt 0 ] || rm -rf "$release"
    rm -f "$release"/appcast.xml "$release"/SHA256SUMS*
    mkdir -p "$release"
    if [ "${parts[0]}" = windows ]; then
        package_documents
    fi
    for part in "${parts[@]}"; do
        declare -F "package_$part" >/dev/null || die "No such part of a release: $part"
        "package_$part"
    done
    say "The release"
    (cd "$release" && ls -l)
}

# test_packages case: makes the packages, those of ROTIKA_UPDATE_PRIVATE_KEY or, without one, others that are signed by
# a key for tests; then installs and removes them.
test_packages() {
    local part
    need_packages build test windows wine release
    if [ -z "${ROTIKA_UPDATE_PRIVATE_KEY:-}" ]; then
        release=$root/build/release-for-tests
        export ROTIKA_UPDATE_FEED=https://updates.example/appcast.xml
        export ROTIKA_UPDATE_PRIVATE_KEY=$root/build/update-key-for-tests.pem
        export ROTIKA_UPDATE_LIBRARY=$root/build/update-library-for-tests
        make_update_library "$ROTIKA_UPDATE_LIBRARY"
        [ -f "$ROTIKA_UPDATE_PRIVATE_KEY" ] || make_update_key "$ROTIKA_UPDATE_PRIVATE_KEY"
    fi
    step "Release" run_package
    step_passed || return 0
    for part in feed linux windows; do
        if [ -z "$1" ] || grep -q -- "$1" "$root/tests/packages/test_$part.py"; then
            step "Package test: $part" "test_package_$part" "$1"
        fi
    done
}
