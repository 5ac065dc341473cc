# What goes with the packages of a release: the manual, the licence texts, Qt's source, the signed update feed and the
# check sums. Sourced by package.sh.

# The private Ed25519 key that signs updates. Its public half goes into the program, so losing it ends updates for
# everybody who has the program.
need_update_key() {
    [ -n "${ROTIKA_UPDATE_PRIVATE_KEY:-}" ] || die "A release needs the key that signs its updates:" \
        "ROTIKA_UPDATE_PRIVATE_KEY=<file> ./dev package. See \"Releases\" in CONTRIBUTING.md."
    update_key=$(feed_tool key "$ROTIKA_UPDATE_PRIVATE_KEY") ||
        die "Not an Ed25519 private key: $ROTIKA_UPDATE_PRIVATE_KEY"
    [[ $(realpath "$ROTIKA_UPDATE_PRIVATE_KEY") != "$release"/* ]] || die "The key is in the folder to be published."
    [[ ${ROTIKA_UPDATE_FEED:-https://} == https://* ]] || die "The update feed must be at an https address."
    windows_options+=(-DROTIKA_UPDATE_KEY="$update_key")
    [ -z "${ROTIKA_UPDATE_FEED:-}" ] || windows_options+=(-DROTIKA_UPDATE_FEED="$ROTIKA_UPDATE_FEED")
}

make_update_key() { (umask 077 && openssl genpkey -algorithm ed25519 -out "$1"); }

feed_tool() { /usr/bin/python3 -B "$root/packaging/feed.py" "$@"; }

# The sources that the licence of Qt wants beside the program: the program's own, to link it with another Qt, and the
# exact source package of the Qt in it, which is kept in the cache.
package_sources() {
    local folder version
    version=$(qt_windows_source_version)
    folder=$cache/qt-source-$version
    say "The sources"
    [ "$version" = "$(qt_host_version)" ] ||
        die "Qt for Windows was built from version $version, which is outdated. Remove $(qt_windows_prefix) first."
    if [ ! -d "$folder" ]; then
        rm -rf "$folder.work"
        download_source_package "$folder.work" qt6-base "$version"
        mv "$folder.work/package" "$folder"
        rm -rf "$folder.work"
    fi
    rm -rf "$release/source"
    mkdir -p "$release/source"
    cp "$folder"/qt6-base_* "$release/source/"
    (cd "$root" && git ls-files -z) |
        tar -C "$root" --null --files-from=- --sort=name --mtime="@$SOURCE_DATE_EPOCH" --owner=0 --group=0 --numeric-owner \
            --mode=u=rwX,go=rX --transform="s,^,rotika-$(project_version)/," -c |
        gzip -9n >"$release/source/rotika-$(project_version).tar.gz"
}

# The manual as a web page, since few people read Markdown files.
package_manual() {
    local folder=$release/podrecznik
    rm -rf "$folder"
    mkdir -p "$folder/pictures"
    {
        printf '<!DOCTYPE html>\n<html lang="pl">\n<meta charset="utf-8">\n<title>Rotika: podręcznik</title>\n<style>%s</style>\n' \
            'body { max-width: 50em; margin: 2em auto; padding: 0 1em; font: 1.1em/1.5 sans-serif } img { max-width: 100% }
td, th { padding: .3em .6em; border: 1px solid #808080; text-align: left } table { border-collapse: collapse }'
        cmark-gfm -e table "$root/docs/podrecznik.md"
        printf '</html>\n'
    } >"$folder/podrecznik.html"
    sed -n 's/.*(pictures\/\([^)]*\)).*/\1/p' "$root/docs/podrecznik.md" | while read -r picture; do
        cp "$root/docs/pictures/$picture" "$folder/pictures/"
    done
}

package_documents() {
    need_qt_windows
    package_sources
    say "The licence texts and the manual"
    /usr/bin/python3 -B "$root/packaging/notices.py" "$(echo "$release"/source/qt6-base_*.orig.tar.xz)" "$root" \
        "$release/licencje"
    package_manual
}

package_feed() {
    say "The update feed and the check sums"
    [ -n "${ROTIKA_UPDATE_FEED:-}" ] || note "Without ROTIKA_UPDATE_FEED the program looks for no updates."
    feed_tool make "$release" "$(project_version)" "${ROTIKA_UPDATE_FEED:-https://rotika.example/appcast.xml}" \
        "$ROTIKA_UPDATE_PRIVATE_KEY"
    feed_tool check "$release" "$update_key"
}

test_package_feed() {
    desk_python -m pytest -q -p no:cacheprovider "$root/tests/packages/test_feed.py" ${1:+-k "$1"}
}
