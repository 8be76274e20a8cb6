#!/usr/bin/env bash
# Builds the benchmarks beside the peers that they are compared with, runs them and prints one table.
#   ./bench.sh [--all-peers] [--markdown] [FILTER]     FILTER is a regular expression over the benchmarks' names
# Each benchmark runs BENCH_REPETITIONS (9) times in turns with the others, BENCH_MIN_TIME (0.05) seconds a time;
# the table has the medians.
set -euo pipefail
root=$(cd "$(dirname "$0")" && pwd)
. "$root/tools/setup.sh"

table_options=()
filter=.
while [ $# -gt 0 ]; do
    case $1 in
    --all-peers | --markdown) table_options+=("$1") ;;
    -*) sed -n '2,5s/^# \{0,1\}//p' "$0"; trap - EXIT; exit 2 ;;
    *) filter=$1 ;;
    esac
    shift
done

need cmake ninja-build g++ pkg-config ccache python3 libbenchmark-dev libboost-filesystem-dev qt6-base-dev libicu-dev libabsl-dev libspdlog-dev libgoogle-glog-dev
configure bench
build build-bench

reports=$root/build-bench/reports
rm -rf "$reports"
mkdir -p "$reports"
for program in "$root"/build-bench/benchmarks-bin/*; do
    name=$(basename "$program")
    say "$name"
    if ! "$program" --benchmark_filter="$filter" --benchmark_out="$reports/$name.json" --benchmark_out_format=json \
        --benchmark_enable_random_interleaving=true --benchmark_repetitions="${BENCH_REPETITIONS:-9}" \
        --benchmark_min_time="${BENCH_MIN_TIME:-0.05}" --benchmark_report_aggregates_only=true \
        >"$reports/$name.log" 2>&1 </dev/null; then
        # A program that has nothing of that name is no failure.
        grep -q 'Failed to match any benchmarks' "$reports/$name.log" || {
            tail -n 20 "$reports/$name.log" >&2
            die "$name failed; its last lines stand above"
        }
    fi
done
say "medians; ratio is our time by the peer's, below 1 we are faster"
python3 "$root/tools/bench_table.py" "${table_options[@]}" "$reports"/*.json || die "no benchmark matches '$filter'"
trap - EXIT
echo "$me: done; the reports are in build-bench/reports"
