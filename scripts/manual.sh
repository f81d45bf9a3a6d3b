#!/usr/bin/env bash
# manual.sh: makes the manual, build/manual/html, from the pages in docs and the public headers.  Fails
# where a public name has no comment, and where a page refers to what is not there.
source "$(dirname -- "${BASH_SOURCE[0]}")/common.sh"
cd "$root"

# Doxygen reads a copy, in which comments have marks, and whose folder's name is ASCII.
copy=$(mktemp -d)
trap 'rm -rf "$copy"' EXIT
cp -r --parents docs scripts tarvcore tarvmoduleregistry cmake/layers.txt "$copy"
(cd "$copy" && rm tarvcore/tarvcore.h &&
    scripts/manual_filter.py docs/*.md tarvcore/*.h tarvcore/hardware/*.h \
        tarvcore/impl/{time_base,future_impl}.h tarvmoduleregistry/*.h)

version=$(sed -nE 's/^project\(tarvcore VERSION ([0-9.]+).*/\1/p' CMakeLists.txt)
settings="
PROJECT_NUMBER      = $version
STRIP_FROM_PATH     = $copy
STRIP_FROM_INC_PATH = $copy"
(cd "$copy" && doxygen - < <(cat docs/Doxyfile - <<< "$settings") 2>&1) | sed "s|$copy/||g" >&2 ||
    fail "the manual has faults: see above (comments of headers: docs/contributing.md)"

rm -rf build/manual
make_folder build
mv "$copy/manual" build/manual
