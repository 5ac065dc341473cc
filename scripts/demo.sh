#!/usr/bin/env bash
# demo.sh build-tree picture-folder: plays a short tour of the program on the screen of DISPLAY with a real
# mouse and a picture of each step. Waits for what it wants to see, never for a fixed time.
set -euo pipefail

build=$1
pictures=$2
work=$(mktemp -d "${TMPDIR:-/tmp}/rotika-tour.XXXXXX")
started=()

finish() {
    local pid
    trap - EXIT
    for pid in "${started[@]}"; do
        kill "$pid" 2>/dev/null || :
        wait "$pid" 2>/dev/null || :
    done
    rm -rf "$work"
}
trap 'status=$?; finish; exit $status' EXIT

fail() {
    echo "demo: $*" >&2
    exit 1
}

shot() { import -silent -window root "$1"; }
pixels() { import -silent -window root rgb:- | cksum; }

# until_that what command...: at most 20 s.
until_that() {
    local what=$1 deadline=$((SECONDS + 20))
    shift
    until "$@" >/dev/null 2>&1; do
        [ "$SECONDS" -lt "$deadline" ] || fail "$what did not come about"
        sleep 0.05
    done
}

is_changed() { [ "$(pixels)" != "$before" ]; }

# The first words of the other program's text, left of where the wheel opens.
first_words() { import -silent -window root -crop 160x60+195+215 rgb:- | cksum; }
has_received() { [ "$(first_words)" != "$words_before" ]; }

# A picture that stays the same for three looks is one that nobody is still painting.
is_at_rest() {
    local look first
    first=$(pixels)
    for look in 1 2 3; do
        sleep 0.1
        [ "$(pixels)" = "$first" ] || return 1
    done
}

# picture name: the screen once it has come to rest.
number=0
picture() {
    number=$((number + 1))
    until_that "A screen at rest" is_at_rest
    shot "$pictures/$(printf '%02d' "$number")-$1.png"
}

# after command...: do it, and wait until the screen answers.
after() {
    before=$(pixels)
    "$@"
    until_that "An answer to \"$*\"" is_changed
}

start() {
    "$@" >/dev/null 2>&1 &
    started+=($!)
}

# A window to type into, whose caret does not blink, over a plain pattern.
mkdir -p "$HOME/.config/gtk-3.0"
printf '[Settings]\ngtk-cursor-blink=0\ngtk-enable-animations=0\n' >"$HOME/.config/gtk-3.0/settings.ini"
hsetroot -add '#2c5d7c' -add '#16242f' -gradient 35

# A copy, so that the tour begins from the files that it brings, whatever the build's own folder holds.
cp -r "$build/rotika" "$work/rotika"
cp "$(dirname "${BASH_SOURCE[0]}")/demo_wheels.json" "$work/rotika/default.json"
start "$work/rotika/rotika"
until_that "The main window" xdotool search --onlyvisible --name Rotika
picture main-window

start gtk3-demo-application
until_that "The other program" xdotool search --onlyvisible --class gtk3-demo-application
other=$(xdotool search --onlyvisible --class gtk3-demo-application | tail -n 1)
xdotool windowsize --sync "$other" 900 560
xdotool windowmove --sync "$other" 190 120
xdotool windowactivate --sync "$other"
xdotool mousemove 640 400 click 1
after xdotool type 'Notatki: '
picture another-program

# The virtual cursor starts in the middle of the wheel; the mouse's counts move it pixel by pixel.
mouse=$build/tests/tools/real_mouse
after xdotool key x
picture wheel-open
after "$mouse" move 262 0
picture arrow-under-cursor
after "$mouse" click 1
picture next-page
after "$mouse" click 1
after "$mouse" move -150 50
picture field-under-cursor
words_before=$(first_words)
after "$mouse" click 1
until_that "The field's keys in the other program" has_received
until_that "The end of the field's steps" is_at_rest
picture field-chosen
