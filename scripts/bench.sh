#!/usr/bin/env bash
# bench.sh build-tree: every measurement, each figure in a row with its target.
set -euo pipefail
. "$(dirname "${BASH_SOURCE[0]}")/common.sh"
. "$(dirname "${BASH_SOURCE[0]}")/voice.sh"
build=$1

say "Inside the process, on a screen of its own"
"$root/scripts/on_screen.sh" "$build/bench/engine_bench"
"$build/bench/voice_loop_bench"

say "Grid and labels, on a screen of 3840 by 2160"
ROTIKA_SCREEN=3840x2160 "$root/scripts/on_screen.sh" "$build/bench/pointing_bench"

say "The shell's window, on a screen of its own"
"$root/scripts/on_screen.sh" "$build/bench/shell/shell_bench"

say "The whole program, from outside"
/usr/bin/python3 -B "$root/bench/program_probe.py" --program="$build/rotika"

say "The whole program, with devices"
"$build/bench/device_probe" --target=linux --program="$build/rotika/rotika" \
    --recorder="$(find "$build/tests/e2e" -name rotika_recorder -type f)" --artefacts="$build/bench/artefacts" \
    --doubles="$build/tests/doubles"

say "Labels over another program"
"$build/bench/labels_probe" --target=linux --program="$build/rotika/rotika" \
    --recorder="$(find "$build/tests/e2e" -name rotika_recorder -type f)" --artefacts="$build/bench/artefacts" \
    --doubles="$build/tests/doubles"

say "The whole program, spoken to; some five minutes"
"$build/bench/spoken_probe" --target=linux --program="$build/rotika/rotika" \
    --recorder="$(find "$build/tests/e2e" -name rotika_recorder -type f)" --artefacts="$build/bench/artefacts" \
    --doubles="$build/tests/doubles" --speech="$speech_folder"
