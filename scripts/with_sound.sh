#!/usr/bin/env bash
# with_sound.sh command...: the command with a sound server of its own. Its only microphone hears what the
# speakers play, a tone of 1000 Hz. PULSE_SERVER leads to it, and the file that ROTIKA_SOUND_PID names holds
# its process id: a server that ends is started again, as a session does. Everything ends with the command,
# whose exit status is passed on.
set -euo pipefail

# Listing the cases of a test program needs no sound.
for argument in "$@"; do
    [ "$argument" != --gtest_list_tests ] || exec "$@"
done

folder=$(mktemp -d "${TMPDIR:-/tmp}/rotika-sound.XXXXXX")
socket=$folder/socket
export ROTIKA_SOUND_PID=$folder/pid

keep_serving() {
    local server=
    trap 'kill -KILL $server; exit' TERM
    while kill -0 $$; do
        rm -f "$socket"
        HOME=$folder XDG_RUNTIME_DIR=$folder pulseaudio -n --daemonize=no --exit-idle-time=-1 --use-pid-file=no \
            --load="module-null-sink sink_name=room rate=16000 channels=1" \
            --load="module-sine sink=room frequency=1000" \
            --load="module-remap-source master=room.monitor source_name=microphone" \
            --load="module-native-protocol-unix auth-anonymous=1 socket=$socket" >>"$folder/log" 2>&1 &
        server=$!
        echo "$server" >"$ROTIKA_SOUND_PID"
        wait "$server" || :
    done
}

finish() {
    trap - EXIT
    kill "$keeper" 2>/dev/null || :
    wait "$keeper" 2>/dev/null || :
    rm -rf "$folder"
}

keep_serving 2>/dev/null &
keeper=$!
trap 'status=$?; finish; exit $status' EXIT
trap 'exit 143' TERM INT HUP

deadline=$((SECONDS + 20))
export PULSE_SERVER=unix:$socket
# Its socket stands a moment before it listens.
until pactl info >/dev/null 2>&1; do
    if [ "$SECONDS" -ge "$deadline" ]; then
        cat "$folder/log" >&2
        exit 1
    fi
    sleep 0.05
done

"$@"
