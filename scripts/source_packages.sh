# Debian source packages, fetched without root and without a change to the system's apt. Sourced after common.sh.

# apt-get on separate lists with the deb-src counterparts of the system's package sources. It changes nothing in the
# system's apt and needs no root.
private_apt_get() {
    local apt=$1
    shift
    apt-get -q \
        -o Dir::Etc::sourcelist="$apt/sources.list" -o Dir::Etc::sourceparts="$apt/sources.list.d" \
        -o Dir::State::lists="$apt/lists" -o Dir::Cache="$apt/cache" -o Dir::Cache::pkgcache= \
        -o Dir::Cache::srcpkgcache= -o APT::Sandbox::User="$(id -un)" "$@"
}

write_private_sources() {
    local apt=$1 file
    mkdir -p "$apt/sources.list.d" "$apt/lists/partial" "$apt/cache/archives/partial"
    : >"$apt/sources.list"
    if [ -f /etc/apt/sources.list ]; then
        sed -n 's/^[[:space:]]*deb[[:space:]]/deb-src /p' /etc/apt/sources.list >"$apt/sources.list"
    fi
    for file in /etc/apt/sources.list.d/*.list; do
        [ -f "$file" ] || continue
        sed -n 's/^[[:space:]]*deb[[:space:]]/deb-src /p' "$file" >"$apt/sources.list.d/${file##*/}"
    done
    for file in /etc/apt/sources.list.d/*.sources; do
        [ -f "$file" ] || continue
        sed 's/^[Tt]ypes:.*/Types: deb-src/' "$file" >"$apt/sources.list.d/${file##*/}"
    done
}

# download_source_package work name version: the files of the source package, into work/package.
download_source_package() {
    local work=$1
    write_private_sources "$work/apt"
    # A package source without deb-src fails here, which is harmless if another one has the package.
    private_apt_get "$work/apt" update || note "Some sources could not be read; continuing with the others."
    rm -rf "$work/package"
    mkdir -p "$work/package"
    (cd "$work/package" && private_apt_get "$work/apt" source --download-only "$2=$3")
}

# fetch_source_package work name version: unpacks the source package into work/source, unless it is there already.
fetch_source_package() {
    local work=$1
    [ ! -d "$work/source" ] || return 0
    say "Fetching the source package $2 $3"
    download_source_package "$@"
    rm -rf "$work/source.partial"
    dpkg-source --no-check -x "$work/package/"*.dsc "$work/source.partial"
    mv "$work/source.partial" "$work/source"
}
