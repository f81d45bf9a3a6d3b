#!/usr/bin/env bash
# Prints the folder of the cache where the built ACE is, or is to be.  Its name tells the version,
# the compiler and everything that decides how it is built, so that a change of any of them leads to
# another folder.
source "$(dirname -- "${BASH_SOURCE[0]}")/common.sh"

compiler=$(i686-w64-mingw32-g++-posix -dumpfullversion 2> /dev/null) ||
    fail "the cross compiler is missing; run scripts/setup.sh"
recipe=$(cat "$root"/cmake/ace/* "$root/cmake/mingw-i686.cmake" | sha256sum)
echo "$cache/ace-7.0.8-gcc-$compiler-${recipe:0:12}"
