#!/usr/bin/env bash
# test-long.sh: runs the tests of build/release with many trials, and those of them that take minutes.
# Ends with how long each took.
source "$(dirname -- "${BASH_SOURCE[0]}")/common.sh"
cd "$root"

# The preset's limit is for tests that take seconds.
TARV_TEST_TRIALS=${TARV_TEST_TRIALS:-100} \
    ctest --preset release --parallel "$(nproc)" --timeout 14400
