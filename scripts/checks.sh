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

# run_tests [name] [-k case]: all, one group, or what has a case of that name; of a group only that case.
run_tests() {
    local name=${1:-linux} only=${3:-} group
    [ "${2:--k}" = -k ] || die "Not a test's name: $2"
    case $name in
        linux) test_linux ;;
        windows) test_windows "$only" ;;
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
    conclude "Tests"
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

# The voice model takes one processor for minutes: it is made beside the builds. Whoever needs it waits for it.
prepare_speech() {
    mkdir -p "$root/build"
    need_speech >"$root/build/speech.log" 2>&1 &
}

check_style() {
    need_packages test
    "$root/scripts/check_includes.sh"
    "$root/scripts/check_format.sh"
}

# test_natively case group...: the groups of the Linux build, or one case; with "all" what has no tests is built too.
# A build that fails costs its own tests, not those of the others.
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
    step_held || return 0
    for group in "$@"; do
        if [ "$group" = scenarios ]; then
            step "Speech library and voice model" need_speech
            step "Scenarios" run_scenarios linux "$only"
        else
            step "Tests: $group" run_group linux "$group" "$only"
        fi
    done
}

# run_group preset groups case: by ctest; one case by the programs that have it.
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

# run_scenarios target case: each with a screen of its own; most of the time they wait.
run_scenarios() {
    desk_python -m pytest -q -n $((jobs + 1)) "$root/tests/scenarios" --target="$1" ${2:+-k "$2"}
}

test_asan() {
    need_packages build test
    step "Build with address and undefined-behaviour sanitizers" build_preset asan tests_unit tests_shell tests_contract
    if step_held; then
        step "Tests under these" run_with_asan "${1:-}"
    fi
}

run_with_asan() {
    asan_environment
    run_group asan 'unit|shell|contract' "$1"
}

test_tsan() {
    need_packages build test
    step "Build with thread sanitizer" build_preset tsan tests_unit
    if step_held; then
        step "Unit tests under it" run_with_tsan "${1:-}"
    fi
}

run_with_tsan() {
    export TSAN_OPTIONS="suppressions='$root/scripts/races.supp':second_deadlock_stack=1"
    run_group tsan unit "$1"
}

test_fuzz() {
    need_packages build test
    step "Build the fuzz targets" build_preset asan fuzz_targets
    if step_held; then
        step "A short fuzz run" run_fuzz 10
    fi
}

# The sanitizer must leave faults to the guard around foreign libraries, which the tests provoke. Paths stand
# in quotes of the sanitizers' own, since the checkout's may hold a space.
asan_environment() {
    export ASAN_OPTIONS=handle_segv=0:handle_sigbus=0:handle_sigfpe=0:handle_sigill=0:detect_stack_use_after_return=1
    export UBSAN_OPTIONS=print_stacktrace=1
    export LSAN_OPTIONS="suppressions='$root/scripts/leaks.supp':print_suppressions=0"
}

# run_fuzz seconds: each target for so long, from the seeds that are kept with it and what earlier runs found.
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
    build_preset asan "${program_targets[@]}"
    step "Attack on the program" attack linux "$1" "${2:-}"
    asan_environment
    export ASAN_OPTIONS=$ASAN_OPTIONS:detect_leaks=0 # what libraries keep to the end is no harm here
    step "Attack on the program with address and undefined-behaviour sanitizers" attack asan "$1" "${2:-}"
    conclude "Attack"
}

attack() {
    desk_python "$root/tools/attack.py" "$root/build/$1/rotika" --seconds $(($2 / 2)) \
        ${3:+--seed "$3"} --artefacts "$root/build/artefacts/attack"
}

test_windows() {
    need_packages build test windows wine
    need_qt_windows
    prepare_speech
    step "Wine prefix" "$root/scripts/wine.sh" --prepare
    step "Build for Windows" build_preset windows rotika-engine tests_unit tests_shell tests_contract tests_scenarios \
        -DROTIKA_QT_WINDOWS="$(qt_windows_prefix)"
    step_held || return 0
    if [ -z "$1" ]; then
        step "Tests under Wine: unit, shell" run_under_wine 'unit|shell'
        step "Tests under Wine: contract" run_under_wine contract
    fi
    step "Speech library and voice model" need_speech
    step "Scenarios under Wine" run_scenarios windows "$1"
}

# Wine loses or doubles input on a busy machine: what fails gets another try, which is told.
run_under_wine() {
    local failed
    ! run_ctest windows "$1" || return 0
    failed=$(cut -d: -f2 "$root/build/windows/Testing/Temporary/LastTestsFailed.log")
    note "Another try for $(wc -w <<<"$failed"): "$failed
    run_ctest windows "$1" --rerun-failed
}

format_sources() {
    need_packages test
    (cd "$root" && source_files | xargs -d '\n' clang-format -i)
    note "Formatted."
}

tidy_sources() {
    need_packages build test
    build_preset tidy "${program_targets[@]}" # for what is generated
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
