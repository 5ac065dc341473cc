# The signed update feed, the check sums, the licence texts and Qt's source of a release. Sourced after package.sh.

# The private Ed25519 key that signs updates. Its public half goes into the program, so losing it ends updates for
# everybody who has the program. Made once by: openssl genpkey -algorithm ed25519 -out FILE
need_update_key() {
    [ -n "${ROTIKA_UPDATE_PRIVATE_KEY:-}" ] || die "A release needs the key that signs its updates:" \
        "ROTIKA_UPDATE_PRIVATE_KEY=<file> ./dev package. See \"Releases\" in CONTRIBUTING.md."
    update_key=$(feed_tool key "$ROTIKA_UPDATE_PRIVATE_KEY") ||
        die "Not an Ed25519 private key: $ROTIKA_UPDATE_PRIVATE_KEY"
}

feed_tool() { /usr/bin/python3 -B "$root/packaging/feed.py" "$@"; }

# Address of the update feed; the placeholder makes a program that looks for no updates.
update_feed=${ROTIKA_UPDATE_FEED:-https://rotika.example/appcast.xml}

# Qt's exact source package, which its licence wants beside the program; kept in the cache.
package_qt_source() {
    local folder
    folder=$cache/qt-source-$(qt_host_version)
    if [ ! -d "$folder" ]; then
        rm -rf "$folder.work"
        mkdir -p "$folder.work/package"
        download_source_package "$folder.work" qt6-base "$(qt_host_version)"
        mv "$folder.work/package" "$folder"
        rm -rf "$folder.work"
    fi
    mkdir -p "$release/source"
    cp "$folder"/qt6-base_* "$release/source/"
}

package_notices() {
    /usr/bin/python3 -B "$root/packaging/notices.py" "$(echo "$release"/source/qt6-base_*.orig.tar.xz)" "$root" \
        "$release/licencje"
}

package_feed() {
    feed_tool make "$release" "$version" "$update_feed" "$ROTIKA_UPDATE_PRIVATE_KEY"
    feed_tool check "$release" "$update_key"
}
