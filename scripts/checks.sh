# ./dev test, attack, format, tidy and doctor. Sourced after builds.sh.

# step name command...: run it and keep the outcome for the closing list. Never call it as a condition, which
# would take "set -e" from the command; ask step_held afterwards.
outcomes=()
failed_steps=0
last_status=0

step() {
    local name=$1 began=$SECONDS
    shift
    say "$name"
    # In a shell of its own: a failure anywhere inside ends the step, and only the step.
    set +e
    (
        set -e
        "$@"
    )
    last_status=$?
    set -e
    if step_held; then
        outcomes+=("passed  $name ($((SECONDS - began)) s)")
    else
        outcomes+=("FAILED  $name ($((SECONDS - began)) s)")
        failed_steps=$((failed_steps + 1))
    fi
}

step_held() { [ "$last_status" = 0 ]; }

conclude() {
    say "$1"
    printf '   %s\n' "${outcomes[@]}"
    [ "$failed_steps" = 0 ] || die "$failed_steps of ${#outcomes[@]} steps failed."
}

# Tests that play real input on a virtual screen. Under Wine they get another try: it loses or doubles input on a busy
# machine. On Linux they must pass at once, but for CI, where one late window must not turn a landing away.
on_screen_labels='contract|e2e'

run_ctest() {
    local preset=$1
    shift
    ctest --test-dir "$root/build/$preset" --output-on-failure --no-tests=error --parallel "$jobs" "$@"
}

# A build that fails costs its own tests, not those of the others.
test_linux() {
    need_packages build test
    step "Speech library and voice model" need_speech
    step "Build for Linux" build_preset linux
    if step_held; then
        step "Tests: style, unit, shell" run_ctest linux --label-exclude "$on_screen_labels"
        step "Tests on a screen: contract, end to end" run_ctest linux --label-regex '^(contract|e2e)$' \
            ${CI:+--repeat until-pass:2}
    fi
    step "Build with address and undefined-behaviour sanitizers" build_preset asan
    if step_held; then
        step "Tests under these" test_with_asan
    fi
    step "Build with thread sanitizer" build_preset tsan rotika_unit_tests
    if step_held; then
        step "Unit tests under it" test_with_tsan
    fi
    step "Build the fuzz targets" build_preset fuzz fuzz_targets
    if step_held; then
        step "A short fuzz run" run_fuzz 20
    fi
    conclude "Linux"
}

# The sanitizer must leave faults to the guard around foreign libraries, which the tests provoke. Paths stand
# in quotes of the sanitizers' own, since the checkout's may hold a space.
asan_environment() {
    export ASAN_OPTIONS=handle_segv=0:handle_sigbus=0:handle_sigfpe=0:handle_sigill=0:detect_stack_use_after_return=1
    export UBSAN_OPTIONS=print_stacktrace=1
    export LSAN_OPTIONS="suppressions='$root/scripts/leaks.supp':print_suppressions=0"
}

test_with_asan() {
    asan_environment
    run_ctest asan ${CI:+--repeat until-pass:2}
}

test_with_tsan() {
    export TSAN_OPTIONS="suppressions='$root/scripts/races.supp':second_deadlock_stack=1"
    run_ctest tsan --label-regex unit
}

# run_fuzz seconds: each target for so long, from the seeds that are kept with it and what earlier runs found.
run_fuzz() {
    local seconds=$1 target name work=$root/build/fuzz
    for target in "$work"/tests/fuzz/fuzz_*; do
        [ -x "$target" ] && [ -f "$target" ] || continue
        name=${target##*/}
        mkdir -p "$work/corpus/$name"
        if ! "$target" -max_total_time="$seconds" -timeout=10 -rss_limit_mb=2048 -max_len=4096 \
            -artifact_prefix="$work/$name-" "$work/corpus/$name" "$root/tests/fuzz/seeds" >"$work/$name.log" 2>&1; then
            grep -v Uses: "$work/$name.log" | tail -n 60
            return 1
        fi
        note "$name: $(grep '^Done' "$work/$name.log")"
    done
}

# run_mutants [word...]: the mutants that have one of the words, or all of them.
run_mutants() {
    need_packages build test windows wine
    need_speech
    use_ccache
    ROTIKA_MUTANTS_CMAKE="-DROTIKA_QT_WINDOWS=$(qt_windows_prefix)" python3 -B "$root/tools/mutants.py" "$@"
}

# run_attack seconds [seed]: the fault campaign, half of the time on either build.
run_attack() {
    [[ $1 =~ ^[0-9]+$ ]] || die "Not a number of seconds: $1"
    need_packages build test
    build_preset linux "${program_targets[@]}"
    build_preset asan-program "${program_targets[@]}"
    step "Attack on the program" attack linux "$1" "${2:-}"
    asan_environment
    export ASAN_OPTIONS=$ASAN_OPTIONS:detect_leaks=0 # what libraries keep to the end is no harm here
    step "Attack on the program with address and undefined-behaviour sanitizers" attack asan-program "$1" "${2:-}"
    conclude "Attack"
}

attack() {
    PYTHONPATH=$root/tests /usr/bin/python3 -B -m desk.attack "$root/build/$1/rotika" --seconds $(($2 / 2)) \
        ${3:+--seed "$3"} --artefacts "$root/build/artefacts/attack"
}

test_windows() {
    need_packages build test windows wine
    need_qt_windows
    step "Speech library and voice model" need_speech
    step "Wine prefix" "$root/scripts/wine.sh" --prepare
    step "Build for Windows" build_preset windows -DROTIKA_QT_WINDOWS="$(qt_windows_prefix)"
    if step_held; then
        step "Tests under Wine: unit, shell" run_ctest windows --verbose --label-exclude "$on_screen_labels"
        step "Tests under Wine on a screen: contract" run_ctest windows --verbose --label-regex contract \
            --repeat until-pass:2
        step "Build the end-to-end driver" build_preset linux
    fi
    if step_held; then
        step "The Windows program end to end, under Wine" run_ctest linux --label-regex e2e_windows \
            --repeat until-pass:3
    fi
    conclude "Windows"
}

format_sources() {
    need_packages test
    (cd "$root" && source_files | xargs -d '\n' clang-format -i)
    note "Formatted."
}

tidy_sources() {
    need_packages build test
    build_preset linux "${program_targets[@]}" # for what is generated
    (cd "$root" && run-clang-tidy -quiet -p build/linux -j "$jobs" -extra-arg=-Wno-unknown-warning-option "^$root/(common|engine|shell|licence)/")
}

show_doctor() {
    local wanted missing
    for wanted in "${package_sets[@]}"; do
        if [ "$wanted" = npm ] && have npm; then
            printf '%-16s %s\n' npm "complete"
        elif have dpkg-query; then
            missing=$(missing_packages "$wanted" | tr '\n' ' ')
            printf '%-16s %s\n' "$wanted" "${missing:+missing: }${missing:-complete}"
        else
            printf '%-16s cannot tell without dpkg; on Debian: %s\n' "$wanted" "$(packages_of "$wanted" | tr '\n' ' ')"
        fi
    done
    printf '%-16s %s\n' "cache" "$cache"
    if have dpkg-query && package_is_installed qt6-base-dev && qt_windows_is_built; then
        printf '%-16s %s\n' "Qt for Windows" "$(qt_windows_prefix)"
    else
        printf '%-16s %s\n' "Qt for Windows" "not built yet; ./dev windows builds it, once"
    fi
    show_speech
    show_program "for Linux" "$root/build/linux/rotika/rotika"
    show_speech_beside "$root/build/linux/rotika/rotika" libvosk.so
    show_program "for Windows" "$root/build/windows/rotika/rotika.exe"
    show_speech_beside "$root/build/windows/rotika/rotika.exe" libvosk.dll
}

show_program() {
    if [ -f "$2" ]; then
        printf '%-16s %s\n' "$1" "$2, of $(date -r "$2" '+%Y-%m-%d %H:%M')"
    else
        printf '%-16s %s\n' "$1" "not built yet"
    fi
}
