#!/usr/bin/env bash
# library-location.sh NAME: prints the folder of the cache where the library that cmake/NAME builds
# is, or is to be.  The folder's name tells the version, the compiler and everything that decides how
# it is built, so that a change of any of them leads to another folder.
source "$(dirname -- "${BASH_SOURCE[0]}")/common.sh"
name=$1

compiler=$(i686-w64-mingw32-g++-posix -dumpfullversion 2> /dev/null) ||
    fail "the cross compiler is missing; run scripts/setup.sh"
read -r _ archive < "$root/cmake/$name/source.sha256"
version=$(sed -E 's/^[^_]*_([0-9.]*[0-9]).*/\1/' <<< "$archive")
recipe=$(cat "$root/cmake/$name"/* "$root/cmake/mingw-i686.cmake" | sha256sum)
echo "$cache/$name-$version-gcc-$compiler-${recipe:0:12}"
