# libarchive for Windows, which Debian has no binaries for: built once from Debian's own source package into the cache.
# Sourced after common.sh, packages.sh and source_packages.sh.

# A static library that reads zip files only needs zlib alone. Encrypted archives are refused, so no cryptography.
archive_windows_options=(
    -DBUILD_SHARED_LIBS=OFF -DENABLE_ZLIB=ON -DENABLE_TEST=OFF -DENABLE_TAR=OFF -DENABLE_CPIO=OFF -DENABLE_CAT=OFF
    -DENABLE_ACL=OFF -DENABLE_XATTR=OFF -DENABLE_ICONV=OFF -DENABLE_BZip2=OFF -DENABLE_LZMA=OFF -DENABLE_LZO=OFF
    -DENABLE_ZSTD=OFF -DENABLE_LZ4=OFF -DENABLE_LIBB2=OFF -DENABLE_LIBXML2=OFF -DENABLE_EXPAT=OFF
    -DENABLE_OPENSSL=OFF -DENABLE_MBEDTLS=OFF -DENABLE_NETTLE=OFF -DENABLE_CNG=OFF -DENABLE_PCREPOSIX=OFF
    -DENABLE_WERROR=OFF -DPOSIX_REGEX_LIB=NONE
    # Not the import library of the DLL.
    -DZLIB_LIBRARY=/usr/x86_64-w64-mingw32/lib/libz.a
    # One check runs a program to see how zlib was compiled; CMake crashes when it cannot, and failing is right.
    -DCMAKE_CROSSCOMPILING_EMULATOR=/bin/false
)

# The version must be the host's: the same tests must hold for both systems.
archive_version() {
    dpkg-query -W -f '${source:Version}\n' libarchive-dev
}

archive_windows_prefix() {
    local version
    version=$(archive_version)
    printf '%s\n' "$cache/libarchive-windows-$version"
}

archive_windows_is_built() {
    [ -f "$(archive_windows_prefix)/lib/libarchive.a" ]
}

# need_archive_windows: builds libarchive into archive_windows_prefix unless it is there already.
need_archive_windows() {
    archive_windows_is_built || with_lock "$cache/libarchive-windows.lock" build_archive_windows
}

build_archive_windows() {
    local prefix work
    prefix=$(archive_windows_prefix)
    work=$prefix.work
    ! archive_windows_is_built || return 0
    say "Building libarchive for Windows from source: once, about a minute"
    mkdir -p "$work"
    fetch_source_package "$work" libarchive "$(archive_version)"
    rm -rf "$work/build" "$work/install"
    cmake -G Ninja -S "$work/source" -B "$work/build" -DCMAKE_BUILD_TYPE=Release -DCMAKE_INSTALL_PREFIX=/archive \
        -DCMAKE_TOOLCHAIN_FILE="$root/cmake/windows-toolchain.cmake" \
        "${archive_windows_options[@]}" >"$work/configure.log"
    nice -n 19 cmake --build "$work/build" --target archive_static --parallel "$jobs"
    mkdir -p "$work/install/lib" "$work/install/include" "$work/install/licence"
    cp "$work/build/libarchive/libarchive_static.a" "$work/install/lib/libarchive.a"
    cp "$work/source/libarchive/archive.h" "$work/source/libarchive/archive_entry.h" "$work/install/include/"
    cp "$work/source/COPYING" "$work/install/licence/"
    rm -rf "$prefix"
    mv "$work/install" "$prefix"
    rm -rf "$work"
    note "libarchive for Windows is installed in $prefix"
}
