#!/usr/bin/env bash
# Builds the tree and runs its tests.
#   ./test.sh [-R REGEX]           all tests, or those whose names match
#   ./test.sh asan [-R REGEX]      the same under AddressSanitizer and UndefinedBehaviorSanitizer, with the leak check
#   ./test.sh tsan [-R REGEX]      the same under ThreadSanitizer; in both, names are those of test programs, each of
#                                  which runs its tests in processes of their own
#   ./test.sh languages [-R REGEX] the tests in Latin-1 and in Shift-JIS; alone they run in UTF-8, under asan in Shift-JIS,
#                                  under tsan in Latin-1
#   ./test.sh fuzz [-R REGEX]      every fuzz target for FUZZ_SECONDS (30) seconds over a copy of its kept corpus
#   ./test.sh coverage [-R REGEX]  the tests with branch coverage of the two libraries
#   ./test.sh tidy                 clang-tidy over the two libraries
# TEST_JOBS (2) tests run at a time.
set -euo pipefail
root=$(cd "$(dirname "$0")" && pwd)
. "$root/tools/setup.sh"

usage() {
    sed -n '2,/^set/{/^#/s/^# \{0,1\}//p}' "$0"
    trap - EXIT
    exit "$1"
}

gate=test
case ${1-} in
asan | tsan | languages | fuzz | coverage | tidy) gate=$1; shift ;;
esac
filter=()
regex=
while [ $# -gt 0 ]; do
    case $1 in
    -R) [ $# -ge 2 ] || usage 2 >&2; filter=(-R "$2"); regex=$2; shift 2 ;;
    -h | --help) usage 0 ;;
    *) usage 2 >&2 ;;
    esac
done

base_packages=(cmake ninja-build g++ pkg-config ccache)
test_packages=(libgtest-dev libgmock-dev locales binutils)

export ASAN_OPTIONS=${ASAN_OPTIONS:-detect_leaks=1:strict_string_checks=1:detect_stack_use_after_return=1}
export UBSAN_OPTIONS=${UBSAN_OPTIONS:-print_stacktrace=1:halt_on_error=1}
export TSAN_OPTIONS=${TSAN_OPTIONS:-halt_on_error=1:second_deadlock_stack=1}

# ThreadSanitizer can't lay out its memory on a kernel that randomises addresses widely; such a kernel is asked to keep
# them fixed for the run.
tame_address_space() {
    local probe
    probe=$(mktemp -d)
    echo 'int main() { return 0; }' | g++ -fsanitize=thread -x c++ - -o "$probe/program"
    if ! "$probe/program" 2>/dev/null; then
        if setarch "$(uname -m)" -R "$probe/program" 2>/dev/null; then
            wrap=(setarch "$(uname -m)" -R)
            say "addresses stay fixed for this run: ThreadSanitizer needs it on this kernel"
        else
            rm -rf "$probe"
            die "ThreadSanitizer can't start on this kernel; lower the randomness with: sysctl vm.mmap_rnd_bits=28"
        fi
    fi
    rm -rf "$probe"
}

# run_tests <directory> [LOCALE]: ctest's own closing lines stand at the end of what it prints. The locales are those
# that the build compiles for the tests, so that the machine's have no say.
run_tests() {
    local jobs=${TEST_JOBS:-2} language=${2:-C.UTF-8} status=0
    say "running the tests of $1 in $language, $jobs at a time"
    unset LANGUAGE "${!LC_@}"
    export LANG=$language LOCPATH=$root/$1/test-locales
    "${wrap[@]}" ctest --test-dir "$root/$1" -j"$jobs" --output-on-failure --no-tests=error "${filter[@]}" \
        </dev/null 2>&1 | thin 25 || status=$?
    # Programs that make the processes of their tests themselves count them.
    awk '/^[0-9]+ tests, [0-9]+ failed, [0-9]+ skipped$/ { ++programs; tests += $1; failed += $3; skipped += $5 }
        END { if (programs) print programs " programs with " tests " tests, " failed " failed, " skipped " skipped" }' \
        "$root/$1/Testing/Temporary/LastTest.log"
    return $status
}

finish() {
    local status=$1
    trap - EXIT
    if [ "$status" -eq 0 ]; then
        echo "$me: $gate passed"
    else
        echo "$me: $gate FAILED"
    fi
    exit "$status"
}

fuzz() {
    local seconds=${FUZZ_SECONDS:-30} target name status=0 count=0 work log
    # What the targets find stays here; the kept corpus is only read.
    work=$root/build-fuzz/fuzz-run
    rm -rf "$work"
    for target in "$root"/build-fuzz/fuzz-bin/*; do
        name=$(basename "$target")
        [ -f "$target" ] && [ -x "$target" ] || continue
        [[ $name =~ $regex ]] || continue
        count=$((count + 1))
        mkdir -p "$work/$name/corpus" "$work/$name/crashes"
        if [ -d "$root/fuzz/corpus/$name" ]; then
            cp -r "$root/fuzz/corpus/$name/." "$work/$name/corpus"
        fi
        local dictionary=()
        if [ -f "$root/fuzz/dictionaries/$name.dict" ]; then
            dictionary=(-dict="$root/fuzz/dictionaries/$name.dict")
        fi
        say "$name for $seconds s"
        log=$work/$name/log
        if (cd "$work/$name" && "$target" -max_total_time="$seconds" -timeout=10 -rss_limit_mb=2560 -print_final_stats=1 \
            -artifact_prefix=crashes/ "${dictionary[@]}" corpus) >"$log" 2>&1 </dev/null; then
            grep -E '^stat::number_of_executed_units|^Done' "$log" | tail -n 1
        else
            status=1
            tail -n 60 "$log"
            printf '%s: %s crashed; its input is in %s\n' "$me" "$name" "$work/$name/crashes" >&2
        fi
    done
    [ $count -gt 0 ] || die "no fuzz target of that name was built"
    return $status
}

tidy() {
    local sources tidy_status=0
    # Only the compile commands are wanted; nothing is built.
    mapfile -t sources < <(cd "$root" && find SystemTS SystemMT -name '*.cpp' | sort)
    [ ${#sources[@]} -gt 0 ] || die "no source file found"
    say "clang-tidy over ${#sources[@]} files"
    (cd "$root" && printf '%s\0' "${sources[@]}" | xargs -0 -n 1 -P "$(nproc)" sh -c '
        report=$(clang-tidy -p build-test --quiet --extra-arg=-Wno-unknown-warning-option "$1" 2>/dev/null)
        status=$?
        if [ $status -ne 0 ] || [ -n "$report" ]; then
            printf "%s\n%s\n" "-- $1" "$report"
            exit 1
        fi' tidy) || tidy_status=1
    return $tidy_status
}

status=0
case $gate in
test)
    need "${base_packages[@]}" "${test_packages[@]}"
    configure test
    build build-test
    run_tests build-test || status=$?
    ;;
languages)
    need "${base_packages[@]}" "${test_packages[@]}"
    configure test
    build build-test
    for language in de_DE.ISO-8859-1 ja_JP.SHIFT_JIS; do
        run_tests build-test $language || status=$?
    done
    ;;
asan)
    need "${base_packages[@]}" "${test_packages[@]}"
    configure asan
    build build-asan
    run_tests build-asan ja_JP.SHIFT_JIS || status=$?
    ;;
tsan)
    need "${base_packages[@]}" "${test_packages[@]}"
    tame_address_space
    configure tsan
    build build-tsan
    run_tests build-tsan de_DE.ISO-8859-1 || status=$?
    ;;
coverage)
    need "${base_packages[@]}" "${test_packages[@]}" gcovr
    configure coverage
    build build-coverage
    find "$root/build-coverage" -name '*.gcda' -delete
    run_tests build-coverage || status=$?
    say "branch coverage"
    (cd "$root/build-coverage" &&
        gcovr --root .. --filter ../SystemTS/ --filter ../SystemMT/ --exclude-throw-branches \
            --exclude-unreachable-branches --branches -j "$(nproc)" --txt coverage.txt --print-summary SystemTS SystemMT \
            >summary.txt && cat coverage.txt summary.txt) || status=$?
    ;;
fuzz)
    need "${base_packages[@]}" clang libclang-rt-14-dev
    configure fuzz
    build build-fuzz
    fuzz || status=$?
    ;;
tidy)
    need "${base_packages[@]}" "${test_packages[@]}" clang-tidy
    configure test
    tidy || status=$?
    ;;
esac
finish $status
