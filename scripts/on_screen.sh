#!/usr/bin/env bash
# on_screen.sh command...: the command on a virtual screen of its own, with a window manager, a
# compositor, a session bus and fresh folders for settings and run-time files. Everything ends with it.
# ROTIKA_SCREEN sets the size, 1280x800 unless told. ROTIKA_COMPOSITOR is picom, or xcompmgr for programs
# under Wine: picom now and then goes on showing what was there before one of their layers came up, and
# xcompmgr does the like with native windows. The command's exit status is passed on.
set -euo pipefail

# Listing the cases of a test program needs no screen.
for argument in "$@"; do
    [ "$argument" != --gtest_list_tests ] || exec "$@"
done

compositor=${ROTIKA_COMPOSITOR:-picom}
folder=$(mktemp -d "${TMPDIR:-/tmp}/rotika-screen.XXXXXX")
helpers=()

finish() {
    local pid
    trap - EXIT
    for ((i = ${#helpers[@]} - 1; i >= 0; --i)); do
        pid=${helpers[i]}
        kill "$pid" 2>/dev/null || :
        wait "$pid" 2>/dev/null || :
    done
    rm -rf "$folder" || :
}
trap 'status=$?; finish; exit $status' EXIT
trap 'exit 143' TERM INT HUP

# wait_for what command...: until the command succeeds, at most 20 s.
wait_for() {
    local what=$1 deadline=$((SECONDS + 20))
    shift
    until "$@" >/dev/null 2>&1; do
        if [ "$SECONDS" -ge "$deadline" ]; then
            echo "on_screen: no $what" >&2
            exit 1
        fi
        sleep 0.05
    done
}

mkdir -p "$folder/run" "$folder/home"
chmod 700 "$folder/run"
export HOME=$folder/home XDG_RUNTIME_DIR=$folder/run XDG_SESSION_TYPE=x11
unset XDG_CONFIG_HOME XDG_DATA_HOME XDG_CACHE_HOME XDG_STATE_HOME WAYLAND_DISPLAY DBUS_SESSION_BUS_ADDRESS

Xvfb -displayfd 3 -screen 0 "${ROTIKA_SCREEN:-1280x800}x24" -nolisten tcp -noreset \
    3>"$folder/display" >"$folder/xvfb.log" 2>&1 &
helpers+=($!)
wait_for "X server" grep -q . "$folder/display"
export DISPLAY=":$(cat "$folder/display")"

dbus-daemon --session --nofork --address="unix:path=$folder/run/bus" >"$folder/bus.log" 2>&1 &
helpers+=($!)
export DBUS_SESSION_BUS_ADDRESS=unix:path=$folder/run/bus
export DBUS_SYSTEM_BUS_ADDRESS=$DBUS_SESSION_BUS_ADDRESS # or a lock of the machine's own session would count
wait_for "session bus" test -S "$folder/run/bus"

openbox --sm-disable >"$folder/openbox.log" 2>&1 &
helpers+=($!)
wait_for "window manager" sh -c 'xprop -root _NET_SUPPORTING_WM_CHECK | grep -q "window id"'

case $compositor in
    picom) picom --backend xrender --config /dev/null >"$folder/compositor.log" 2>&1 & ;;
    xcompmgr) xcompmgr >"$folder/compositor.log" 2>&1 & ;;
    *) echo "on_screen: no such compositor: $compositor" >&2 && exit 1 ;;
esac
helpers+=($!)
wait_for "compositor" sh -c "xprop -root _NET_SUPPORTED >/dev/null && xwininfo -root -tree | grep -qi $compositor"

"$@"
