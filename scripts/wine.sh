#!/usr/bin/env bash
# wine.sh program.exe [arguments]: runs a Windows program in the project's own Wine prefix, which the first call
# creates. "wine.sh --prepare" only creates it; "wine.sh --alone program.exe" first ends everything else in the prefix
# and leaves nothing running. WINEPREFIX selects another prefix.
set -euo pipefail
. "$(dirname "${BASH_SOURCE[0]}")/common.sh"

export WINEPREFIX=${WINEPREFIX:-$root/build/wine-prefix} WINEDEBUG=${WINEDEBUG:--all}
# In the C locale Wine cannot create files with non-ASCII names.
export LC_ALL=C.UTF-8
# No prompt for the two browser and .NET add-ons, and no menu entries on the host's desktop.
export WINEDLLOVERRIDES="mscoree=;mshtml=;winemenubuilder.exe=${WINEDLLOVERRIDES:+;$WINEDLLOVERRIDES}"

# Debian's "wine" is a wrapper that warns about the missing 32-bit part.
if [ -x /usr/lib/wine/wine64 ]; then
    wine=/usr/lib/wine/wine64 wineserver=/usr/lib/wine/wineserver64
else
    wine=wine wineserver=wineserver
fi
[ -x "$wineserver" ] || wineserver=wineserver

# The finished prefix is renamed into place, so that an interrupted run leaves no partial one. Liberation Sans replaces
# the program's fonts, such as Segoe UI, which Wine does not have.
make_prefix() {
    [ ! -d "$1" ] || return 0
    local partial=$1.partial font
    rm -rf "$partial"
    mkdir -p "$(dirname "$1")"
    (
        export WINEPREFIX=$partial
        unset DISPLAY
        "$wine" wineboot --init
        for font in "Segoe UI" "Microsoft Sans Serif" Arial Tahoma; do
            "$wine" reg add 'HKCU\Software\Wine\Fonts\Replacements' /v "$font" /d "Liberation Sans" /f
        done
        "$wineserver" -k || :
        "$wineserver" -w
    ) >"$1.log" 2>&1
    mv "$partial" "$1"
}

if [ ! -d "$WINEPREFIX" ]; then
    with_lock "$WINEPREFIX.lock" make_prefix "$WINEPREFIX"
fi

case "${1:-}" in
    --prepare) ;;
    --alone)
        shift
        # A process that a killed program was just starting stays forever, and with it Wine's services, which keep
        # this run's output open and are bound to a screen that no longer exists in the next run.
        end_session() { "$wineserver" -k || :; }
        trap end_session EXIT
        end_session
        "$wineserver" -w
        "$wine" "$@"
        ;;
    *) exec "$wine" "$@" ;;
esac
