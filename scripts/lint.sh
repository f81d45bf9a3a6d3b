#!/usr/bin/env bash
# lint.sh: clang-tidy over the library and the tool, as .clang-tidy says.  It takes each file's flags
# from the tree build/release and GCC's own C++ library, and so sees what the compiler sees.
source "$(dirname -- "${BASH_SOURCE[0]}")/common.sh"
cd "$root"

gcc=$(dirname "$(i686-w64-mingw32-g++-posix -print-libgcc-file-name)")
headers=$gcc/include/c++
options=(--quiet -p "${1:-build/release}"
    --extra-arg-before=--target=i686-w64-mingw32
    --extra-arg=-nostdinc++
    --extra-arg=-isystem"$headers"
    --extra-arg=-isystem"$headers/i686-w64-mingw32"
    --extra-arg=-isystem"$headers/backward"
    --extra-arg=-Wno-unknown-warning-option
    --extra-arg=-Wno-sign-conversion) # which GCC's -Wconversion does not include

find tarvcore tarvcoremain tarvmoduleregistry tools -name '*.cpp' -print0 |
    xargs -0 --max-procs="$(nproc)" --max-args=2 clang-tidy "${options[@]}" \
        2> >(grep -vE '^[0-9]+ warnings? (generated|treated as errors)' >&2)
