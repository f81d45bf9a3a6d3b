#!/usr/bin/env bash
# run_test.sh COMMAND...: runs a test program, and fails also where it ends before its tests have,
# whatever its status is: GoogleTest takes the file away when they are through.
set -uo pipefail
export TEST_PREMATURE_EXIT_FILE="unfinished-test-$$"
trap 'rm -f "$TEST_PREMATURE_EXIT_FILE"' EXIT

"$@"
status=$?
[[ -e $TEST_PREMATURE_EXIT_FILE ]] || exit "$status"
echo "the program ended before its tests had"
exit 1
