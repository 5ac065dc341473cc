#!/usr/bin/env bash
# bench.sh build-tree: runs every benchmark and prints each figure with its target.
set -euo pipefail
. "$(dirname "${BASH_SOURCE[0]}")/common.sh"
. "$(dirname "${BASH_SOURCE[0]}")/voice.sh"
build=$1

probe() {
    say "$1"
    desk_python "$root/bench/$2_probe.py" --program="$build/rotika" --doubles="$build/tests/doubles" \
        --full-window="$build/bench/full_window" --speech="$speech_folder"
}

say "The engine, in-process on a private screen"
on_screen "$build/bench/engine_bench"
"$build/bench/voice_loop_bench"
say "Grid and labels, on a private screen of 3840 by 2160"
on_screen --size 3840x2160 "$build/bench/pointing_bench"
say "The shell's window, on a private screen"
on_screen "$build/bench/shell/shell_bench"
probe "The whole program, from outside" program
probe "The whole program, with devices" device
probe "Labels over another program" labels
probe "The whole program, controlled by speech; about five minutes" spoken
