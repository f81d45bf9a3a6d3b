#!/usr/bin/env bash
# coverage.sh: runs the tests of build/coverage and reports which lines and branches of the library
# they reach: a table here, the source in build/coverage/report/index.html.
source "$(dirname -- "${BASH_SOURCE[0]}")/common.sh"
cd "$root"

find build/coverage -name '*.gcda' -delete
ctest --preset coverage -j "$(nproc)" || fail "the tests fail: see above"
mkdir -p build/coverage/report
# What only an exception's way out of a call would reach is no branch of ours.  Wine's folder has
# links to the whole machine.  Threads count without waiting for each other, and now and then come to
# less than nothing, which is a parse error.
gcovr --gcov-executable i686-w64-mingw32-gcov-posix --root . --exclude-directories ".*/wine$" \
    --gcov-ignore-parse-errors --filter tarvcore/ --filter tools/ \
    --branches --exclude-throw-branches --exclude-unreachable-branches \
    --txt --print-summary --html-details build/coverage/report/index.html build/coverage ||
    fail "the report cannot be made: see above"
