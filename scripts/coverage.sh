#!/usr/bin/env bash
# coverage.sh: runs the tests of build/coverage and prints which lines and branches of the library and
# the tool they reach; what they do not reach goes to build/coverage/unreached.txt.
source "$(dirname -- "${BASH_SOURCE[0]}")/common.sh"
cd "$root"

find build/coverage -name '*.gcda' -delete
ctest --preset coverage -j "$(nproc)" || fail "the tests fail: see above"
scripts/coverage.py build/coverage
