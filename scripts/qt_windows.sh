# Qt for Windows, built once from Debian's own source package into the cache.
# Sourced after common.sh and packages.sh.

# Only Core, Gui, Widgets and Test: everything else off, bundled copies of the third-party libraries on.
# OpenGL is disabled by its input variable, since the feature alone leaves dynamic OpenGL partly enabled; tablet events
# are off because the package strips wintab. Direct2D and DirectWrite stay: the platform plugin needs them to link.
qt_windows_options=(
    -DBUILD_SHARED_LIBS=OFF -DQT_BUILD_TESTS=OFF -DQT_BUILD_EXAMPLES=OFF -DQT_BUILD_TOOLS_BY_DEFAULT=OFF
    -DINPUT_opengl=no -DFEATURE_vulkan=OFF -DFEATURE_network=OFF -DFEATURE_sql=OFF -DFEATURE_dbus=OFF
    -DFEATURE_printsupport=OFF -DFEATURE_xml=OFF -DFEATURE_concurrent=OFF -DFEATURE_glib=OFF
    -DFEATURE_icu=OFF -DFEATURE_tabletevent=OFF -DFEATURE_graphicsview=OFF
    -DFEATURE_system_zlib=OFF -DFEATURE_system_png=OFF -DFEATURE_system_jpeg=OFF
    -DFEATURE_system_freetype=OFF -DFEATURE_system_harfbuzz=OFF -DFEATURE_system_pcre2=OFF
    -DFEATURE_system_doubleconversion=OFF -DFEATURE_androiddeployqt=OFF -DFEATURE_testlib=ON
)

# The version must be the host's: its code generators are used for the Windows build.
qt_host_version() {
    dpkg-query -W -f '${source:Version}\n' qt6-base-dev
}

qt_windows_prefix() {
    local version
    version=$(qt_host_version)
    version=${version%%+dfsg*}
    printf '%s\n' "$cache/qt-windows-${version%-*}"
}

qt_windows_is_built() {
    [ -f "$(qt_windows_prefix)/lib/cmake/Qt6/qt.toolchain.cmake" ]
}

# need_qt_windows: builds Qt into qt_windows_prefix unless it is there already.
need_qt_windows() {
    qt_windows_is_built || with_lock "$cache/qt-windows.lock" build_qt_windows
}

# Works in a work folder, where an interrupted run is resumed, and renames it at the end.
build_qt_windows() {
    local prefix work
    prefix=$(qt_windows_prefix)
    work=$prefix.work
    # Another run may have finished it while this one waited for the lock.
    ! qt_windows_is_built || return 0
    say "Building Qt for Windows from source: once, about 25 minutes on two cores ($work)"
    mkdir -p "$work"
    fetch_qt_source "$work"
    configure_qt_windows "$work"
    nice -n 19 cmake --build "$work/build" --parallel "$jobs"
    rm -rf "$work/install"
    DESTDIR=$work/install cmake --install "$work/build" --strip >"$work/install.log"
    rm -rf "$prefix"
    mv "$work/install/qt" "$prefix"
    rm -rf "$work"
    note "Qt for Windows is installed in $prefix"
}

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

fetch_qt_source() {
    local work=$1 version
    [ ! -d "$work/source" ] || return 0
    version=$(qt_host_version)
    say "Fetching the source package of Qt $version"
    download_source_package "$work" qt6-base "$version"
    rm -rf "$work/source.partial"
    dpkg-source --no-check -x "$work/package/"*.dsc "$work/source.partial"
    mv "$work/source.partial" "$work/source"
}

# The prefix is a placeholder "/qt", installed under DESTDIR: the result is relocatable.
configure_qt_windows() {
    local work=$1
    [ ! -f "$work/build/configured" ] || return 0
    rm -rf "$work/build"
    cmake -G Ninja -S "$work/source" -B "$work/build" -DCMAKE_BUILD_TYPE=Release -DCMAKE_INSTALL_PREFIX=/qt \
        -DCMAKE_TOOLCHAIN_FILE="$root/cmake/windows-toolchain.cmake" \
        "${qt_windows_options[@]}"
    touch "$work/build/configured"
}
