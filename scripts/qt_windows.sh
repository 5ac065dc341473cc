# Qt for Windows, built once from Debian's own source package into the cache.
# Sourced after common.sh, packages.sh and source_packages.sh.

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

# The version of the source package that it was built from; earlier builds did not note it.
qt_windows_source_version() {
    cat "$(qt_windows_prefix)/source-version" 2>/dev/null || qt_host_version
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
    fetch_source_package "$work" qt6-base "$(qt_host_version)"
    configure_qt_windows "$work"
    nice -n 19 cmake --build "$work/build" --parallel "$jobs"
    rm -rf "$work/install"
    DESTDIR=$work/install cmake --install "$work/build" --strip >"$work/install.log"
    qt_host_version >"$work/install/qt/source-version"
    rm -rf "$prefix"
    mv "$work/install/qt" "$prefix"
    rm -rf "$work"
    note "Qt for Windows is installed in $prefix"
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
