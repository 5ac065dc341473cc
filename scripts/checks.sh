# ./dev test, attack, format, tidy and doctor. Sourced after builds.sh.

# step name command...: runs the command and records the outcome for the final list. Never call it as a condition, which
# would disable "set -e" in the command; use step_passed afterwards.
outcomes=()
failed_steps=0
last_status=0

step() {
    local name=$1 began=$SECONDS
    shift
    say "$name"
    # In a subshell: a failure anywhere inside ends the step, and only the step.
    set +e
    (
        set -e
        "$@"
    )
    last_status=$?
    set -e
    if step_passed; then
        outcomes+=("passed  $name ($((SECONDS - began)) s)")
    else
        outcomes+=("FAILED  $name ($((SECONDS - began)) s)")
        failed_steps=$((failed_steps + 1))
    fi
}

step_passed() { [ "$last_status" = 0 ]; }

report_outcomes() {
    say "$1"
    printf '   %s\n' "${outcomes[@]}"
    [ "$failed_steps" = 0 ] || die "$failed_steps of ${#outcomes[@]} steps failed."
}

# run_tests [name] [-k case]: all tests, one group, one case of a group, or every group's cases of that name.
run_tests() {
    local name=${1:-linux} only=${3:-} group
    [ "${2:--k}" = -k ] || die "Not a test's name: $2"
    case $name in
        linux) test_linux ;;
        windows) test_windows "$only" ;;
        packages) test_packages "$only" ;;
        style) step "Style" check_style ;;
        unit | shell | contract | scenarios) test_natively "$only" "$name" ;;
        asan | tsan | fuzz) "test_$name" "$only" ;;
        *)
            only=${3:-$name}
            for group in unit shell contract scenarios; do
                if grep -rqE --include='*.cpp' --include='*.py' -- "${only/./.+}" "$root/tests/$group"; then
                    test_natively "$only" "$group"
                fi
            done
            [ "${#outcomes[@]}" -gt 0 ] || die "No test has the name $only."
            ;;
    esac
    report_outcomes "Tests"
}

test_linux() {
    need_packages build test
    prepare_speech
    step "Style" check_style
    test_natively "" all unit shell contract scenarios
    test_asan
    test_fuzz
    test_tsan
}

# Making the voice model takes one processor several minutes, so it runs beside the builds; need_speech waits for it.
prepare_speech() {
    mkdir -p "$root/build"
    need_speech >"$root/build/speech.log" 2>&1 &
}

check_style() {
    need_packages test
    "$root/scripts/check_includes.sh"
    "$root/scripts/check_format.sh"
}

# test_natively case group...: the groups of the Linux build, or one case of them; with "all" it also builds what has no
# tests. A failed build skips its own tests only.
test_natively() {
    local only=$1 group targets=()
    shift
    need_packages build test
    if [ "$1" = all ]; then
        shift
    else
        targets=("${@/#/tests_}")
    fi
    step "Build for Linux" build_preset linux "${targets[@]}"
    step_passed || return 0
    for group in "$@"; do
        if [ "$group" = scenarios ]; then
            step "Speech library and voice model" need_speech
            step "Scenarios" run_scenarios linux "$only"
        else
            step "Tests: $group" run_group linux "$group" "$only"
        fi
    done
}

# run_group preset groups case: by ctest, or one case by running the programs that contain it.
run_group() {
    local preset=$1 group=$2 filter="--gtest_filter=*${3:-}*" program found=
    if [ -z "${3:-}" ]; then
        run_ctest "$preset" "$group"
        return
    fi
    while read -r program; do
        if "$program" --gtest_list_tests "$filter" 2>/dev/null | grep -q '^  '; then
            found=yes
            on_screen --sound "$program" "$filter"
        fi
    done < <(find "$root/build/$preset/tests" -regextype posix-extended -type f -perm -u+x \
        -regex ".*/tests/($group)/(.*/)?rotika_[a-z_]+_tests[a-z_]*")
    [ "$found" ] || die "No test of $group has the name $3."
}

run_ctest() {
    local preset=$1 group=$2
    shift 2
    ctest --test-dir "$root/build/$preset" --output-on-failure --no-tests=error --parallel "$jobs" \
        --label-regex "^($group)\$" "$@"
}

# run_scenarios target case: more processes than processors, since scenarios mostly wait. Each has a private screen.
run_scenarios() {
    desk_python -m pytest -q -n $((jobs + 1)) "$root/tests/scenarios" --target="$1" ${2:+-k "$2"}
}

test_asan() {
    need_packages build test
    step "Build with address and undefined-behaviour sanitizers" build_preset asan tests_unit tests_shell tests_contract
    if step_passed; then
        step "Tests with these sanitizers" run_with_asan "${1:-}"
    fi
}

run_with_asan() {
    asan_environment
    run_group asan 'unit|shell|contract' "$1"
}

test_tsan() {
    need_packages build test
    step "Build with thread sanitizer" build_preset tsan tests_unit
    if step_passed; then
        step "Unit tests with thread sanitizer" run_with_tsan "${1:-}"
    fi
}

run_with_tsan() {
    export TSAN_OPTIONS="suppressions='$root/scripts/races.supp':second_deadlock_stack=1"
    run_group tsan unit "$1"
}

test_fuzz() {
    need_packages build test
    step "Build the fuzz targets" build_preset asan fuzz_targets
    if step_passed; then
        step "A short fuzz run" run_fuzz 10
    fi
}

# The sanitizer must not handle the faults that tests provoke: the guard around third-party libraries does. Paths are in
# the sanitizers' own quotes, since the checkout's path may contain a space.
asan_environment() {
    export ASAN_OPTIONS=handle_segv=0:handle_sigbus=0:handle_sigfpe=0:handle_sigill=0:detect_stack_use_after_return=1
    export UBSAN_OPTIONS=print_stacktrace=1
    export LSAN_OPTIONS="suppressions='$root/scripts/leaks.supp':print_suppressions=0"
}

# run_fuzz seconds: runs each target that long, from its seeds and the corpus of earlier runs.
run_fuzz() {
    local seconds=$1 target name work=$root/build/asan
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

# run_mutants [word...]: the mutants whose title contains one of the words, or all of them.
run_mutants() {
    need_packages build test windows wine
    need_speech
    use_ccache
    need_archive_windows
    ROTIKA_MUTANTS_CMAKE="-DROTIKA_QT_WINDOWS=$(qt_windows_prefix) -DROTIKA_ARCHIVE_WINDOWS=$(archive_windows_prefix)" \
        python3 -B "$root/tools/mutants.py" "$@"
}

# run_attack seconds [seed]: the random fault campaign, half of the time on each build.
run_attack() {
    [[ $1 =~ ^[0-9]+$ ]] || die "Not a number of seconds: $1"
    need_packages build test
    build_preset linux "${program_targets[@]}"
    build_preset asan "${program_targets[@]}"
    step "Attack on the program" attack linux "$1" "${2:-}"
    asan_environment
    export ASAN_OPTIONS=$ASAN_OPTIONS:detect_leaks=0 # libraries keep memory until the process ends
    step "Attack on the program with address and undefined-behaviour sanitizers" attack asan "$1" "${2:-}"
    report_outcomes "Attack"
}

attack() {
    desk_python "$root/tools/attack.py" "$root/build/$1/rotika" --seconds $(($2 / 2)) \
        ${3:+--seed "$3"} --artefacts "$root/build/artefacts/attack"
}

test_windows() {
    need_packages build test windows wine
    need_qt_windows
    need_archive_windows
    prepare_speech
    step "Wine prefix" "$root/scripts/wine.sh" --prepare
    step "Build for Windows" build_preset windows rotika-engine tests_unit tests_shell tests_contract tests_scenarios \
        -DROTIKA_QT_WINDOWS="$(qt_windows_prefix)" -DROTIKA_ARCHIVE_WINDOWS="$(archive_windows_prefix)" \
        "${windows_options[@]}"
    step_passed || return 0
    if [ -z "$1" ]; then
        step "Tests under Wine: unit, shell" run_under_wine 'unit|shell'
        step "Tests under Wine: contract" run_under_wine contract
    fi
    step "Speech library and voice model" need_speech
    step "Scenarios under Wine" run_scenarios windows "$1"
}

# Wine loses or doubles input, and loses sound, on a busy machine: failed tests are run up to twice more, which is
# reported.
run_under_wine() {
    local failed
    ! run_ctest windows "$1" || return 0
    for _ in 1 2; do
        failed=$(cut -d: -f2 "$root/build/windows/Testing/Temporary/LastTestsFailed.log")
        note "Trying again $(wc -w <<<"$failed"): "$failed
        ! run_ctest windows "$1" --rerun-failed || return 0
    done
    return 1
}

format_sources() {
    need_packages test
    (cd "$root" && source_files | xargs -d '\n' clang-format -i)
    note "Formatted."
}

tidy_sources() {
    need_packages build test
    build_preset tidy "${program_targets[@]}" # for generated sources
    (cd "$root" && run-clang-tidy -quiet -p build/tidy -j "$jobs" -extra-arg=-Wno-unknown-warning-option "^$root/(common|engine|shell|licence)/")
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
    if have dpkg-query && package_is_installed libarchive-dev && archive_windows_is_built; then
        printf '%-16s %s\n' "libarchive" "$(archive_windows_prefix), for Windows"
    else
        printf '%-16s %s\n' "libarchive" "not built for Windows yet; ./dev windows builds it, once"
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
