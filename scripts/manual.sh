#!/usr/bin/env bash
# manual.sh: makes the manual, build/manual/html, from the pages in docs and the public headers.  Fails
# where a public name has no comment, and where a page refers to what is not there.
source "$(dirname -- "${BASH_SOURCE[0]}")/common.sh"
cd "$root"

rm -rf build/manual
make_folder build/manual
version=$(sed -nE 's/^project\(tarvcore VERSION ([0-9.]+).*/\1/p' CMakeLists.txt)
doxygen - < <(cat docs/Doxyfile && echo "PROJECT_NUMBER = $version") ||
    fail "the manual has faults: see above (comments of headers: docs/contributing.md)"
