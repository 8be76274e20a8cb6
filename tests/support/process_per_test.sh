#!/usr/bin/env bash
# Runs the sample's tests in a process each and looks at what is told of them.
#   process_per_test.sh CASE PROGRAM
set -euo pipefail
program=$2
scratch=$(mktemp -d)
trap 'rm -rf "$scratch"' EXIT
# What a sanitizer makes of a signal is not looked at here.
export ASAN_OPTIONS=detect_leaks=0

fail() {
    printf '%s\n%s\n' "$1" "$told" >&2
    exit 1
}

# run <arguments>: what the program tells, and its status.
run() {
    status=0
    told=$(timeout 60 "$program" "$@" 2>&1 </dev/null) || status=$?
}

# tells <lines>: of the tests, in their order.
tells() {
    [ "$status" -eq 1 ] || fail "status $status"
    diff <(printf '%s\n' "$1") <(grep '^FAILED: \|^skipped: \|^[0-9]* tests, ' <<<"$told") || fail "something else is told"
}

all='skipped: Sample.Skips
FAILED: Sample.Fails (exit code 1)
FAILED: Sample.Exits (it did not come to its end)
FAILED: Sample.ExitsAtOnce (it did not come to its end)
FAILED: Sample.HasDISABLED_InItsName (exit code 1)
FAILED: Sample.LeavesAProcess (signal 14)
FAILED: SampleOfDISABLED_.HasItInTheNameOfItsSuite (exit code 1)
8 tests, 6 failed, 1 skipped'

case $1 in
TellsOfEachTest)
    run --process-per-test
    tells "$all"
    grep -q 'on purpose' <<<"$told" || fail "nothing of what a test has written"
    ;;
HeedsNoVariables)
    for variable in GTEST_REPEAT=0 GTEST_LIST_TESTS=1 GTEST_COLOR=yes GTEST_FILTER=Sample.Passes GTEST_BRIEF=1; do
        export "${variable?}"
        run --process-per-test
        unset "${variable%%=*}"
        tells "$all"
    done
    GTEST_TOTAL_SHARDS=100 GTEST_SHARD_INDEX=99 run --process-per-test
    tells "$all"
    ;;
EndsWhatIsLeft)
    SAMPLE_PROCESS_FILE=$scratch/left run --process-per-test
    left=$(<"$scratch/left")
    # One that nobody has waited for yet has ended as well.
    state=$(sed -n 's/^State:\t\(.\).*/\1/p' "/proc/$left/status" 2>/dev/null || true)
    [ -z "$state" ] || [ "$state" = Z ] || fail "process $left is left in state $state"
    ;;
RefusesOtherArguments)
    for arguments in '--process-per-tset' '--process-per-test more' '--gtest_filter=Sample.Passes --process-per-test' \
        'Sample.Passes'; do
        read -ra words <<<"$arguments"
        run "${words[@]}"
        [ "$status" -eq 2 ] || fail "status $status for $arguments"
        ! grep -q 'RUN' <<<"$told" || fail "$arguments runs tests"
    done
    run --gtest_filter=Sample.Passes
    [ "$status" -eq 0 ] || fail "status $status for one test"
    ;;
*) echo "unknown case $1" >&2; exit 1 ;;
esac
