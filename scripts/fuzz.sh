#!/usr/bin/env bash
# fuzz.sh: builds the fuzzers of tests/fuzz for this machine, and lets each look for faults for
# FUZZ_SECONDS (20).  What it finds it puts into tests/data/fuzz/TARGET, where the tests replay it.
# Interesting inputs stay in build/fuzz/corpus, where the next run begins with them.
source "$(dirname -- "${BASH_SOURCE[0]}")/common.sh"
cd "$root"
build=build/fuzz

run "configure-fuzz" cmake -S tests/fuzz -B "$build" -G Ninja -DCMAKE_CXX_COMPILER=clang++
run "build-fuzz" cmake --build "$build"

found=()
for program in "$build"/fuzz_*; do
    name=${program##*/fuzz_}
    seeds=tests/data/fuzz/$name
    log=$logs/fuzz-$name.log
    make_folder "$build/corpus/$name"
    if "$program" "$build/corpus/$name" "$seeds" -max_total_time="${FUZZ_SECONDS:-20}" \
        -timeout=10 -artifact_prefix="$seeds/found-" > "$log" 2>&1; then
        say "$name: nothing in $(sed -nE 's/^Done ([0-9]+ runs in [0-9]+) .*/\1 s/p' "$log")"
    else
        grep -E '^(==|SUMMARY|terminate|  what|Test unit written)|runtime error' "$log" | sed 's/^/    /' >&2
        found+=("$name (log: $log)")
    fi
done
((${#found[@]} == 0)) ||
    fail "found: $(printf '%s; ' "${found[@]}")the inputs are in tests/data/fuzz: keep them when the fault is mended"
