# ./dev package and ./dev test packages. Sourced after checks.sh.

release=$root/build/release
package_parts=(linux)

for part in "${package_parts[@]}"; do
    . "$root/scripts/package_$part.sh"
done

project_version() { sed -nE 's/^project\(rotika VERSION ([0-9.]+).*/\1/p' "$root/CMakeLists.txt"; }

# release_notes form: the list of changes, see packaging/release_notes.py.
release_notes() { python3 -B "$root/packaging/release_notes.py" --version "$(project_version)" "$1"; }

# run_package [part...]: these parts of the release, or all of them. The date of the release stands for every time in
# it, so that each run gives the same bytes.
run_package() {
    local part parts=("$@")
    [ $# -gt 0 ] || parts=("${package_parts[@]}")
    need_packages build release
    SOURCE_DATE_EPOCH=${SOURCE_DATE_EPOCH:-$(release_notes epoch)}
    export SOURCE_DATE_EPOCH
    umask 022 # folders in packages must be readable by all
    [ $# -gt 0 ] || rm -rf "$release"
    mkdir -p "$release"
    for part in "${parts[@]}"; do
        declare -F "package_$part" >/dev/null || die "No such part of a release: $part"
        "package_$part"
    done
    say "The release"
    (cd "$release" && ls -l)
}

# test_packages case: the packages of build/release, which must have been made; each part has its own test.
test_packages() {
    local part
    need_packages test release
    for part in "${package_parts[@]}"; do
        ! declare -F "test_package_$part" >/dev/null || step "Package: $part" "test_package_$part" "$1"
    done
}
