# Building the program for either system, starting it, the demo and the benchmarks. Sourced after common.sh,
# packages.sh, qt_windows.sh, archive_windows.sh and voice.sh.

use_ccache() {
    have ccache || return 0
    export CMAKE_C_COMPILER_LAUNCHER=ccache CMAKE_CXX_COMPILER_LAUNCHER=ccache
    export CCACHE_SLOPPINESS=pch_defines,time_macros # required for cache hits with precompiled headers
}

# The build targets of the program.
program_targets=(rotika rotika-guard)

# build_preset preset [target...] [-Doption...]: configures a preset and builds the named targets, or all of them.
build_preset() {
    local preset=$1 targets=()
    shift
    while [ $# -gt 0 ] && [[ $1 != -* ]]; do
        targets+=("$1")
        shift
    done
    use_ccache
    say "Building $preset"
    mkdir -p "$root/build"
    # The output of the configuration is shown only when it fails.
    if ! (cd "$root" && cmake --preset "$preset" "$@") >"$root/build/$preset.configure.log" 2>&1; then
        cat "$root/build/$preset.configure.log"
        return 1
    fi
    cmake --build "$root/build/$preset" --target "${targets[@]:-all}" --parallel "$jobs"
}

build_linux() {
    need_packages build
    build_preset linux "${program_targets[@]}"
    note "The program: $root/build/linux/rotika/rotika"
}

# For each build in this folder, so that none keeps the key of a release. More go at the end.
windows_options=(-DROTIKA_UPDATE_KEY= -DROTIKA_UPDATE_FEED=https://rotika.example/appcast.xml)

build_windows() {
    need_packages windows
    need_qt_windows
    need_archive_windows
    build_preset windows "${program_targets[@]}" rotika-engine -DROTIKA_QT_WINDOWS="$(qt_windows_prefix)" \
        -DROTIKA_ARCHIVE_WINDOWS="$(archive_windows_prefix)" "${windows_options[@]}"
    [ -n "${update_key:-}" ] || note "A developer's build, without a key for updates: it looks for none."
    note "The program: $root/build/windows/rotika/rotika.exe"
    note "The engine alone: $root/build/windows/rotika/rotika-engine.exe"
}

run_program() {
    if [ -z "${DISPLAY:-}" ]; then
        note "No display: running the scripted demo on a private screen instead."
        run_demo
        return
    fi
    build_linux
    say "Starting Rotika"
    exec "$root/build/linux/rotika/rotika"
}

run_demo() {
    need_packages build test
    build_preset linux "${program_targets[@]}"
    say "The demo, on a private screen"
    desk_python "$root/tools/demo.py" "$root/build/linux/rotika" "$root/build/demo"
    note "Pictures:"
    ls -1 "$root"/build/demo/*.png
}

run_bench() {
    need_packages build test
    need_speech
    build_preset linux
    "$root/scripts/bench.sh" "$root/build/linux"
}
