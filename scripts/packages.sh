# Debian packages in sets by purpose. Only missing packages are installed.

package_sets=(build test speech npm windows wine release)

# Compiling the program and its tests for Linux.
packages_build="
    cmake ninja-build g++ pkg-config ccache librsvg2-bin icoutils
    qt6-base-dev
    libx11-dev libxext-dev libxi-dev libxfixes-dev libxtst-dev libxrandr-dev libxdamage-dev libxkbcommon-dev
    libcairo2-dev libpango1.0-dev libgdk-pixbuf-2.0-dev libglib2.0-dev libatspi2.0-dev libpulse-dev
    libarchive-dev
    libgtest-dev libbenchmark-dev"

# Running the tests, the demo and the benchmarks on a private screen.
packages_test="
    clang libclang-rt-dev clang-format clang-tidy
    xvfb openbox picom xdotool imagemagick x11-utils x11-xserver-utils x11-xkb-utils xterm
    dbus at-spi2-core libatk-adaptor gtk-3-examples designer-qt6
    pulseaudio pulseaudio-utils espeak-ng
    hsetroot fonts-dejavu-core trayer
    python3-pytest python3-pytest-xdist python3-pytest-timeout python3-numpy python3-gi"

# Making the voice model for the speech tests.
packages_speech="python3 python3-numpy libopenblas0-pthread libespeak-ng1"

# Fetching the speech library. About 300 MB with npm's dependencies; not installed where another npm is present.
packages_npm="npm"

# Cross-building for Windows, Qt included.
packages_windows="
    g++-mingw-w64-x86-64-posix mingw-w64-x86-64-dev libwine-dev
    cmake ninja-build pkg-config ccache librsvg2-bin icoutils imagemagick
    qt6-base-dev qt6-base-dev-tools googletest
    libarchive-dev libz-mingw-w64-dev
    dpkg-dev perl"

# Running the Windows build under Wine.
packages_wine="wine wine64 fonts-liberation"

# Making and checking the packages of a release, and trying them on a bare system.
packages_release="
    dpkg-dev fakeroot lintian desktop-file-utils appstream cmark-gfm man-db groff gzip python3 debootstrap
    nsis libarchive-dev libarchive-tools libz-mingw-w64-dev openssl"

packages_of() {
    local name=packages_$1
    printf '%s\n' ${!name}
}

package_is_installed() {
    local status
    status=$(dpkg-query -W -f '${db:Status-Status}\n' "$1" 2>/dev/null) && grep -qx installed <<<"$status"
}

# missing_packages set...: prints the packages that are not installed, one per line.
missing_packages() {
    local wanted package
    for wanted in "$@"; do
        for package in $(packages_of "$wanted"); do
            package_is_installed "$package" || printf '%s\n' "$package"
        done
    done | sort -u
}

# need_packages set...: installs the missing packages of these sets.
need_packages() {
    if ! have dpkg-query || ! have apt-get; then
        die "This system has no apt. Install the equivalents of these Debian packages:" \
            "$(for wanted in "$@"; do packages_of "$wanted"; done | sort -u | tr '\n' ' ')"
    fi
    with_lock "$cache/packages.lock" install_missing "$@"
}

install_missing() {
    local missing
    mapfile -t missing < <(missing_packages "$@")
    [ "${#missing[@]}" -gt 0 ] || return 0
    say "Installing ${missing[*]}"
    as_root apt-get update -q || note "Some package sources could not be read; continuing with the others."
    as_root env DEBIAN_FRONTEND=noninteractive apt-get install -q -y --no-install-recommends "${missing[@]}"
}
