#!/usr/bin/env bash
# run_test.sh COMMAND...: runs a test program, and fails also where it ends before its tests have,
# whatever its status is: GoogleTest takes the file away when they are through.
set -uo pipefail
export TEST_PREMATURE_EXIT_FILE="unfinished-test-$$"
# Where local time is UTC nobody sees which of them is taken.
export TZ=IST-5:30
# Not the caller's pipe: Wine's process for the desktop would inherit it, and may stay for good.
output=$(mktemp)
trap 'rm -f "$TEST_PREMATURE_EXIT_FILE" "$output"' EXIT

"$@" > "$output" 2>&1 &
tail --pid=$! --sleep-interval=0.1 --lines=+1 --follow "$output"
wait $!
status=$?
[[ -e $TEST_PREMATURE_EXIT_FILE ]] || exit "$status"
echo "the program ended before its tests had"
exit 1
