#!/usr/bin/env bash
# bench.sh build-tree: every measurement, each figure against its target. Run it on a machine that has
# nothing else to do.
set -euo pipefail

here=$(dirname "${BASH_SOURCE[0]}")
build=$1

echo "Inside the engine, on a private screen with a compositor"
"$here/on_screen.sh" "$build/bench/engine_bench"
echo
echo "The whole program, from outside"
"$build/bench/program_probe" --target=linux --program="$build/rotika/rotika" \
    --recorder="$build/tests/e2e/recorder/rotika_recorder" --artefacts="$build/artefacts"
