#!/usr/bin/env bash
# bench.sh [ROWS]: measures what build/bench holds and prints the table; with ROWS, a regular
# expression, only the rows that it fits.  REPETITIONS changes how long it takes.
source "$(dirname -- "${BASH_SOURCE[0]}")/common.sh"
build=$root/build/bench
results=$build/results.json

# Many short repetitions of all benchmarks in random order: a disturbance of the machine falls on
# ours and on the peers alike, and leaves each some repetitions alone.  The table shows the fastest.
run "measure" "$root/scripts/wine-run" "$build" "$build/bin/tarvcore_bench.exe" \
    --benchmark_filter="^[^/]*(${1:-.})" \
    --benchmark_enable_random_interleaving=true \
    --benchmark_repetitions="${REPETITIONS:-100}" \
    --benchmark_report_aggregates_only=true \
    --benchmark_out="Z:${results//\//\\}" --benchmark_out_format=json
"$root/scripts/bench_table.py" "$results"
