#!/usr/bin/env bash
# Keeps the layers apart by their includes:
#   shell and licence    nothing of the engine but overlay.h
#   the engine's logic   standard headers and the engine's own; no platform's folder, no operating system
#   engine/platform/X    system headers, but no Qt
#   common               nothing of either
# Prints each offending line; fails if there is one.
set -euo pipefail
. "$(dirname "${BASH_SOURCE[0]}")/common.sh"
cd "$root"

failed=0

all_includes=$(source_files | xargs -d '\n' grep -HnP '^\s*#\s*include\s*[<"]' | sed -E 's/#\s*include\s*/#include /')

# forbid why what files [except]: no include in the files whose path matches `files` (and not `except`)
# names what matches `what`, bracket or quote included. All three are Perl patterns, anchored at the start.
forbid() {
    local why=$1 what=$2 files=$3 except=${4:-(?!)} hits
    hits=$(grep -P "^(?!$except)$files[^:]*:[0-9]+:\s*#include $what" <<<"$all_includes" || :)
    if [ -n "$hits" ]; then
        printf '%s:\n%s\n\n' "$why" "$hits"
        failed=1
    fi
}

engine_folders='(core|files|wheel|run|voice|gaze|pointing|editor|platform)'
# What a compiler brings along for C++: lower-case words without a slash or a suffix.
not_standard='<(?![a-z_0-9]+>)'
logic=engine/
platforms='engine/platform/[a-z]+/'

forbid "Shell and licence see only overlay.h of the engine" \
    "[<\"](\\.\\./)*(engine/)?$engine_folders/" '(shell|licence)/'
forbid "The engine's logic includes only standard headers and the engine's own" \
    "$not_standard" "$logic" "$platforms"
forbid "The engine's logic knows no particular platform" \
    '[<"](.*/)?platform/(windows|linux|simulated)/' "$logic" "$platforms"
forbid "No Qt in the engine" '[<"]Q[A-Za-z]*[>"/]' engine/
forbid "Neither shell nor licence belongs in the engine" '[<"](\.\./)*(shell|licence)/' engine/
forbid "What both halves share knows neither" \
    "[<\"](\\.\\./)*((engine|shell|licence|$engine_folders)/|Q)" common/
forbid "Windows headers only in engine/platform/windows" \
    '[<"](windows|windowsx|winuser|objbase|shellapi|mmsystem|gdiplus[a-z]*|commctrl|uiautomation[a-z]*)\.h[>"]' \
    engine/ engine/platform/windows/
forbid "X11, GLib, Cairo and their kin only in engine/platform/linux" \
    '[<"](X11/|cairo|pango|glib|gio/|atspi|pulse/|dlfcn|unistd|sys/)' engine/ engine/platform/linux/
forbid "The simulated desktop touches no real one" "$not_standard" engine/platform/simulated/

[ "$failed" = 0 ] || exit 1
echo "Includes keep the layers apart."
